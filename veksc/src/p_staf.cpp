// Short-term analysis filter of GSM full rate.
#include "vkc.h"

namespace {

vkVector pRc;
vkVector pSrcDstSpch;
vkVector pMem;
krStepIterator<int> len;
vkcGrid grid;

constexpr int order = 8;

class TimStafGSMFR : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return static_cast<double>(len.value()) * order; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimStafGSMFR::canStart() {
    vkcRebuild(len, "length").setList({13, 14, 120});
    grid.begin({&len});
    for (vkVector* vector : {&pRc, &pSrcDstSpch, &pMem}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimStafGSMFR::makeData() {
    return pRc.createVector(order, setValue, 1, 0) && pSrcDstSpch.createVector(len.value(), setZero, 0, 0) &&
           pMem.createVector(order, setZero, 0, 0);
}

void TimStafGSMFR::flushData() {
    for (vkVector* vector : {&pMem, &pSrcDstSpch, &pRc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimStafGSMFR, veksShortTermAnalysisFilter_GSMFR_16s_I,
       veksShortTermAnalysisFilter_GSMFR_16s_I(pRc.m_16s, pSrcDstSpch.m_16s, len.value(), pMem.m_16s))
