// Weighting filter of GSM full rate.
#include "vkc.h"

namespace {

vkVector pSrc, pDst;
krStepIterator<int> dstLen;

// Samples that the filter reads before and after the destination.
constexpr int beside = 5;

class TimWFiltGSMFR : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(dstLen, "dstLength").set(30, 60, 10, '+');
        initVectors({&pSrc, &pDst}, vkArg::src);
        return walk({&dstLen});
    }

    bool makeData() override {
        return pSrc.createVector(vkcSize(dstLen) + 2 * beside, setValue, 1, 0) &&
               pDst.createVector(dstLen.value(), setZero, 0, 0);
    }

    double getDivisor() override { return dstLen.value(); }
};

} // namespace

VK_REG(TimWFiltGSMFR, veksWeightingFilter_GSMFR_16s,
       veksWeightingFilter_GSMFR_16s(pSrc.m_16s + beside, pDst.m_16s, dstLen.value()))
