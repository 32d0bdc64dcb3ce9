// Short-term synthesis filter of GSM full rate.
#include "vkc.h"

namespace {

vkVector pRc, pDstSpch, pSrcResidual, pMem;
krStepIterator<int> len;

constexpr int order = 8;

class TimStafSyntGSMFR : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "length").setList({13, 14, 120});
        initVectors({&pRc, &pDstSpch, &pSrcResidual, &pMem}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        return pRc.createVector(order + 1, setValue, 1, 0) && pDstSpch.createVector(len.value(), setZero, 0, 0) &&
               pSrcResidual.createVector(len.value(), setZero, 0, 0) && pMem.createVector(order + 2, setZero, 0, 0);
    }

    double getDivisor() override { return static_cast<double>(len.value()) * order; }
};

} // namespace

VK_REG(TimStafSyntGSMFR, veksShortTermSynthesisFilter_GSMFR_16s,
       veksShortTermSynthesisFilter_GSMFR_16s(pRc.m_16s, pSrcResidual.m_16s, pDstSpch.m_16s, len.value(), pMem.m_16s))
