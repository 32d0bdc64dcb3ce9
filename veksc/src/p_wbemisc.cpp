// Measures, gain and high-band frequencies of the extended wide-band codec.
#include "vkc.h"

#include <iterator>

namespace ns_MiscFuns_wbe {

static vkVector pVector1, pVector2, pVector3;
static krStepIterator<int> stepCounter1, stepCounter2;
static Vek16s snrVal, quantIdx_16s, quantIdxs[2];
static Vek32s gain_32s, valRMS;

// Vector and segment.
static constexpr int lenSNR[] = {128, 64, 256, 64, 512, 64, 1024, 64, 40, 40, 80, 40, 160, 40};
static constexpr int lenTCX[] = {48, 96, 192, 288, 576, 1152};
static constexpr int lenISF = 8;

static const auto vectors = {&pVector1, &pVector2, &pVector3};

class krSNR_wbe : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(stepCounter2, "LengthCounter").set(0, 6, 1, '+');
        initVectors(vectors, vk16s);
        return walk({&stepCounter2});
    }

    bool makeData() override {
        if (!vkcCounts(stepCounter2, std::size(lenSNR) / 2)) {
            return false;
        }
        const int size = lenSNR[stepCounter2.value() * 2];
        return pVector1.createVector(size, setValue, 2, 0) && pVector2.createVector(size, setValue, 1, 0);
    }

    double getDivisor() override { return lenSNR[stepCounter2.value() * 2]; }
};

class krGainQuantTCX_wbe : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(stepCounter1, "quantFlag").set(0, 1, 1, '+');
        vkcRebuild(stepCounter2, "LengthCounter").set(0, 5, 1, '+');
        initVectors(vectors, vk16s);
        return walk({&stepCounter1, &stepCounter2});
    }

    bool makeData() override {
        if (!vkcCounts(stepCounter2, std::size(lenTCX))) {
            return false;
        }
        const int size = lenTCX[stepCounter2.value()];
        return pVector1.createVector(size, setValue, 1, 0) && pVector3.createVector(size, setValue, 1, 0);
    }

    double getDivisor() override { return lenTCX[stepCounter2.value()]; }
};

class krGainDecodeTCX_wbe : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(stepCounter2, "LengthCounter").set(0, 5, 1, '+');
        initVectors(vectors, vk16s);
        quantIdx_16s = 0;
        valRMS = 0;
        return walk({&stepCounter2});
    }

    bool makeData() override {
        return vkcCounts(stepCounter2, std::size(lenTCX)) &&
               pVector3.createVector(lenTCX[stepCounter2.value()], setValue, 1, 0);
    }

    double getDivisor() override { return lenTCX[stepCounter2.value()]; }
};

class krISFQuantHighBand_wbe : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(stepCounter1, "pitchAdjust").set(0, 1, 1, '+');
        initVectors(vectors, vk16s);
        return walk({&stepCounter1});
    }

    bool makeData() override {
        return pVector1.createVector(lenISF, setValue, 1, 0) && pVector2.createVector(lenISF, setValue, 1, 0) &&
               pVector3.createVector(lenISF, setValue, 1, 0);
    }

    double getDivisor() override { return lenISF; }
};

class krISFQuantDecodeHighBand_wbe : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(stepCounter2, "bfi").set(0, 1, 1, '+');
        vkcRebuild(stepCounter1, "pitchAdjust").set(0, 1, 1, '+');
        initVectors(vectors, vk16s);
        return walk({&stepCounter2, &stepCounter1});
    }

    bool makeData() override {
        return pVector1.createVector(2, setValue, 1, 0) && pVector2.createVector(lenISF, setValue, 1, 0) &&
               pVector3.createVector(lenISF, setValue, 1, 0);
    }

    double getDivisor() override { return lenISF; }
};

VK_REG(krSNR_wbe, veksSNR_AMRWBE_16s,
       veksSNR_AMRWBE_16s(pVector1.m_16s, pVector2.m_16s, lenSNR[stepCounter2.value() * 2],
                          lenSNR[stepCounter2.value() * 2 + 1], &snrVal))
VK_REG(krGainQuantTCX_wbe, veksGainQuantTCX_AMRWBE_16s,
       veksGainQuantTCX_AMRWBE_16s(pVector1.m_16s, 1, pVector3.m_16s, lenTCX[stepCounter2.value()],
                                   stepCounter1.value(), &gain_32s, &quantIdx_16s))
VK_REG(krGainDecodeTCX_wbe, veksGainDecodeTCX_AMRWBE_16s,
       veksGainDecodeTCX_AMRWBE_16s(pVector3.m_16s, lenTCX[stepCounter2.value()], quantIdx_16s, 0, &valRMS, &gain_32s))
VK_REG(krISFQuantHighBand_wbe, veksISFQuantHighBand_AMRWBE_16s,
       veksISFQuantHighBand_AMRWBE_16s(pVector1.m_16s, pVector2.m_16s, pVector3.m_16s, quantIdxs, stepCounter1.value()))
VK_REG(krISFQuantDecodeHighBand_wbe, veksISFQuantDecodeHighBand_AMRWBE_16s,
       veksISFQuantDecodeHighBand_AMRWBE_16s(pVector1.m_16s, pVector2.m_16s, pVector3.m_16s, stepCounter2.value(),
                                             stepCounter1.value()))

} // namespace ns_MiscFuns_wbe
