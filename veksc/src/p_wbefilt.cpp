// Mid-band prediction and low-band post-filter of the extended wide-band codec.
#include "vkc.h"

namespace {

vkVector pSrc1, pSrc2, pDst;

constexpr int lenFrame = 320;
constexpr int lenHistory = 8;

class krFIRGenMidBand_wbe : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        initVectors({&pSrc1, &pSrc2, &pDst}, vk16s);
        return true;
    }

    // The target is the other channel through a short filter.
    bool makeData() override {
        if (!pSrc1.createVector(lenFrame + lenHistory, setRand, -4096, 4096) ||
            !pSrc2.createVector(lenFrame, setZero, 0, 0) || !pDst.createVector(9, setZero, 0, 0)) {
            return false;
        }
        for (int i = 0; i < lenFrame; ++i) {
            const Vek16s* x = pSrc1.m_16s + lenHistory + i;
            pSrc2.m_16s[i] = static_cast<Vek16s>((x[0] * 3 + x[-1] * 2 - x[-4]) / 8);
        }
        return true;
    }

    double getDivisor() override { return 256; }
};

} // namespace

VK_REG(krFIRGenMidBand_wbe, veksFIRGenMidBand_AMRWBE_16s,
       veksFIRGenMidBand_AMRWBE_16s(pSrc1.m_16s + lenHistory, pSrc2.m_16s, pDst.m_16s))

namespace nsPostFilterLowBand_ld {

static vkVector pLags, pGains, pSrcDst, pSrcDstWrk, pSynth, pSynthWrk, pNoise, pNoiseWrk;
static krStepIterator<int> itRangeData, itLags, itPitchAdjust;
static Vek16s filterScale;

static constexpr int lenSubframes = 16;
static constexpr int lenFrame = 1024;
static constexpr int lenSynth = 503;
static constexpr int lenNoise = 24;

class krPostFilterLowBand_wbe : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(itRangeData, "itRangeData").setList({128, 8192});
        vkcRebuild(itLags, "itLags").set(17, 117, 20, '+');
        vkcRebuild(itPitchAdjust, "itPitchAdjust").setList({0, 1});
        initVectors({&pLags, &pGains, &pSrcDst, &pSrcDstWrk, &pSynth, &pSynthWrk, &pNoise, &pNoiseWrk}, vk16s);
        return walk({&itRangeData, &itLags, &itPitchAdjust});
    }

    bool makeData() override {
        return pLags.createVector(lenSubframes, setValue, itLags.value(), 0) &&
               pGains.createVector(lenSubframes, setValue, 16400, 0) &&
               pSrcDst.createVector(lenFrame, setValue, itRangeData.value(), 0) &&
               pSrcDstWrk.createVector(lenFrame, setZero, 0, 0) && pSynth.createVector(lenSynth, setValue, 128, 0) &&
               pSynthWrk.createVector(lenSynth, setZero, 0, 0) && pNoise.createVector(lenNoise, setValue, 16, 0) &&
               pNoiseWrk.createVector(lenNoise, setZero, 0, 0);
    }

    double getDivisor() override { return lenFrame; }
};

static void restore() {
    veksCopy_16s(pSrcDst.m_16s, pSrcDstWrk.m_16s, lenFrame);
    veksCopy_16s(pSynth.m_16s, pSynthWrk.m_16s, lenSynth);
    veksCopy_16s(pNoise.m_16s, pNoiseWrk.m_16s, lenNoise);
    filterScale = 0;
}

VK_REG_I(krPostFilterLowBand_wbe, veksPostFilterLowBand_AMRWBE_16s,
         veksPostFilterLowBand_AMRWBE_16s(pLags.m_16s, pGains.m_16s, pSrcDstWrk.m_16s, pSynthWrk.m_16s, pNoiseWrk.m_16s,
                                          &filterScale, itPitchAdjust.value()),
         restore())

} // namespace nsPostFilterLowBand_ld
