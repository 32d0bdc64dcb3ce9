// Short-term analysis filter of GSM full rate.
#include "vkc.h"

namespace {

vkVector pRc, pSrcDstSpch, pMem;
krStepIterator<int> len;

constexpr int order = 8;

class TimStafGSMFR : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "length").setList({13, 14, 120});
        initVectors({&pRc, &pSrcDstSpch, &pMem}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        return pRc.createVector(order, setValue, 1, 0) && pSrcDstSpch.createVector(len.value(), setZero, 0, 0) &&
               pMem.createVector(order, setZero, 0, 0);
    }

    double getDivisor() override { return static_cast<double>(len.value()) * order; }
};

} // namespace

VK_REG(TimStafGSMFR, veksShortTermAnalysisFilter_GSMFR_16s_I,
       veksShortTermAnalysisFilter_GSMFR_16s_I(pRc.m_16s, pSrcDstSpch.m_16s, len.value(), pMem.m_16s))
