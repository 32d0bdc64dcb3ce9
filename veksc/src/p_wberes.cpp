// Band split, band join and resampling of the extended wide-band codec.
#include "vkc.h"

#include <iterator>

namespace {

vkVector pSrc1, pSrc2, pSrcDst, pDst, pDst2;
krStepIterator<int> bandIdx, cntLen, addFlag, cntFS, length;
Vek16s fracMem;
int cntSamp;

constexpr int lenFrame = 1024;
constexpr int lenSrcDownsample[] = {640, 1280, 1920};
constexpr int lenDstUpsample[] = {80, 640, 1280, 1920};
constexpr Vek16s scaleFreq[] = {0, 48, 54, 60, 64, 72, 80, 90, 96, 108, 120, 128, 135, 144};

const auto vectors = {&pSrc1, &pSrc2, &pSrcDst, &pDst, &pDst2};

class krBandResample_wbe : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        initVectors(vectors, vk16s);
        return true;
    }

    bool makeData() override {
        constexpr int lenSource = 1152;
        constexpr int lenLow = 180;
        if (!pDst.createVector(lenFrame, setZero, 0, 0)) {
            return false;
        }
        if (m_name == "veksBandSplit_AMRWBE_16s") {
            return pSrc1.createVector(lenSource, setRand, -1, 1) && pSrcDst.createVector(lenLow, setRand, -1, 1);
        }
        return pSrc1.createVector(lenLow, setRand, -1, 1) && pSrc2.createVector(lenSource, setRand, -1, 1);
    }

    double getDivisor() override { return lenFrame; }
};

class krUpDownResample_wbe : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(bandIdx, "bandIdx").setList({0, 1});
        vkcRebuild(cntLen, "cntLen");
        initVectors(vectors, vk16s);
        if (m_down) {
            cntLen.setList({0, 1, 2});
            return walk({&bandIdx, &cntLen});
        }
        cntLen.setList({0, 1, 2, 3});
        vkcRebuild(addFlag, "addFlag").setList({0, 1});
        return walk({&bandIdx, &cntLen, &addFlag});
    }

    bool makeData() override {
        return vkcCounts(cntLen, m_down ? std::size(lenSrcDownsample) : std::size(lenDstUpsample)) &&
               pSrc1.createVector(frame(), setRand, -1, 1) &&
               pDst.createVector(m_down ? lenFrame : frame(), setZero, 0, 0) &&
               pSrcDst.createVector(24, setRand, -1, 1);
    }

    double getDivisor() override { return frame(); }

private:
    int frame() const { return m_down ? lenSrcDownsample[cntLen.value()] : lenDstUpsample[cntLen.value()]; }
    const bool m_down = m_name == "veksDownsample_AMRWBE_16s";
};

class krBandUpDownResample_wbe : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(cntFS, "cntFS").set(1, 13, 1, '+');
        vkcRebuild(length, "length").setList({3528, 3840});
        initVectors(vectors, vk16s);
        return walk({&cntFS, &length});
    }

    // The lowest internal rate takes, and gives, twice the nominal length.
    bool makeData() override {
        fracMem = 0;
        cntSamp = 0;
        if (!vkcCounts(cntFS, std::size(scaleFreq)) || !pSrcDst.createVector(72, setRand, -1, 1)) {
            return false;
        }
        if (m_name == "veksBandSplitDownsample_AMRWBE_16s") {
            return pSrc1.createVector(2 * vkcSize(length), setRand, -1, 1) &&
                   pDst.createVector(lenFrame, setZero, 0, 0) && pDst2.createVector(lenFrame, setZero, 0, 0);
        }
        return pSrc1.createVector(lenFrame, setRand, -1, 1) && pSrc2.createVector(lenFrame, setRand, -1, 1) &&
               pDst.createVector(2 * vkcSize(length), setZero, 0, 0);
    }

    double getDivisor() override { return length.value() * 2.0; }
};

} // namespace

VK_REG(krBandResample_wbe, veksBandJoin_AMRWBE_16s,
       veksBandJoin_AMRWBE_16s(pSrc1.m_16s, pSrc2.m_16s, pDst.m_16s, lenFrame))
VK_REG(krBandResample_wbe, veksBandSplit_AMRWBE_16s,
       veksBandSplit_AMRWBE_16s(pSrc1.m_16s, pSrcDst.m_16s, pDst.m_16s, lenFrame))
VK_REG(krUpDownResample_wbe, veksDownsample_AMRWBE_16s,
       veksDownsample_AMRWBE_16s(pSrc1.m_16s, lenSrcDownsample[cntLen.value()], pDst.m_16s, pSrcDst.m_16s,
                                 bandIdx.value()))
VK_REG(krUpDownResample_wbe, veksUpsample_AMRWBE_16s,
       veksUpsample_AMRWBE_16s(pSrc1.m_16s, pDst.m_16s, lenDstUpsample[cntLen.value()], pSrcDst.m_16s, bandIdx.value(),
                               addFlag.value()))
VK_REG(krBandUpDownResample_wbe, veksBandSplitDownsample_AMRWBE_16s,
       veksBandSplitDownsample_AMRWBE_16s(pSrc1.m_16s, 2 * vkcSize(length), pDst.m_16s, pDst2.m_16s, lenFrame,
                                          pSrcDst.m_16s, &fracMem, &cntSamp, scaleFreq[cntFS.value()]))
VK_REG(krBandUpDownResample_wbe, veksBandJoinUpsample_AMRWBE_16s,
       veksBandJoinUpsample_AMRWBE_16s(pSrc1.m_16s, pSrc2.m_16s, lenFrame, pDst.m_16s, length.value(), pSrcDst.m_16s,
                                       &fracMem, &cntSamp, scaleFreq[cntFS.value()]))

namespace {

// Frames of 80 ms at the low rates, and these rates in twelfths of the high one.
constexpr int frameSize[] = {640, 1280, 1920, 2560, 882, 1764};
constexpr Vek16s resampFactor[] = {2, 4, 6, 8, 3, 6};
constexpr int resampBase = 12;
krStepIterator<int> cntFact;
int lenSrcPoly, lenDstPoly;

// What both modes of the one function share; a row tells its mode.
class PolyResample : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(cntFact, "cntFact").set(0, 5, 1, '+');
        initVectors(vectors, vk16s);
        return walk({&cntFact});
    }

    double getDivisor() override { return frameSize[cntFact.value()]; }

    void parmsToOstrm() override {
        prTest::parmsToOstrm();
        g_ostrm << mode();
    }

    void parmsToCstrm() override {
        prTest::parmsToCstrm();
        g_cstrm << mode();
    }

protected:
    virtual const char* mode() const = 0;

    bool createVectors(int lenMemory) {
        fracMem = 0;
        return pSrc1.createVector(lenSrcPoly, setRand, -1, 1) && pDst.createVector(lenDstPoly, setZero, 0, 0) &&
               pSrcDst.createVector(lenMemory, setRand, -1, 1);
    }
};

} // namespace

namespace ns_PolyResample_Over_wbe {

class krPolyResample_Over_wbe : public PolyResample {
public:
    using PolyResample::PolyResample;

    bool makeData() override {
        if (!vkcCounts(cntFact, std::size(frameSize))) {
            return false;
        }
        lenSrcPoly = frameSize[cntFact.value()];
        lenDstPoly = lenSrcPoly * resampBase / resampFactor[cntFact.value()];
        return createVectors(24);
    }

protected:
    const char* mode() const override { return "(oversamp)"; }
};

VK_REG_MODE(krPolyResample_Over_wbe, veksResamplePolyphase_AMRWBE_16s,
            veksResamplePolyphase_AMRWBE_16s(pSrc1.m_16s, lenSrcPoly, resampFactor[cntFact.value()], resampBase,
                                             &fracMem, pSrcDst.m_16s, pDst.m_16s, lenDstPoly),
            "oversampling mode")

} // namespace ns_PolyResample_Over_wbe

namespace ns_PolyResample_Decim_wbe {

class krPolyResample_Decim_wbe : public PolyResample {
public:
    using PolyResample::PolyResample;

    bool canStart() override {
        vkcRebuild(cntFS, "cntFS").set(1, 13, 1, '+');
        return PolyResample::canStart() && walk({&cntFS});
    }

    // A frame of the internal rate lasts 80 ms * 96 / scale; whole twelfths of it leave no fraction.
    bool makeData() override {
        if (!vkcCounts(cntFact, std::size(frameSize)) || !vkcCounts(cntFS, std::size(scaleFreq)) ||
            cntFS.value() == 0) {
            return false;
        }
        const int factor = resampFactor[cntFact.value()];
        const int high = frameSize[cntFact.value()] * resampBase / factor;
        lenSrcPoly = high * 96 / scaleFreq[cntFS.value()] / resampBase * resampBase;
        lenDstPoly = lenSrcPoly * factor / resampBase;
        return createVectors(144);
    }

protected:
    const char* mode() const override { return "(decimate)"; }
};

VK_REG_MODE(krPolyResample_Decim_wbe, veksResamplePolyphase_AMRWBE_16s,
            veksResamplePolyphase_AMRWBE_16s(pSrc1.m_16s, lenSrcPoly, resampFactor[cntFact.value()], resampBase,
                                             &fracMem, pSrcDst.m_16s, pDst.m_16s, lenDstPoly),
            "decimating mode")

} // namespace ns_PolyResample_Decim_wbe
