// Short-term synthesis filter of GSM full rate.
#include "vkc.h"

namespace {

vkVector pRc;
vkVector pDstSpch;
vkVector pSrcResidual;
vkVector pMem;
krStepIterator<int> len;
vkcGrid grid;

constexpr int order = 8;

class TimStafSyntGSMFR : public prTest {
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

bool TimStafSyntGSMFR::canStart() {
    vkcRebuild(len, "length").setList({13, 14, 120});
    grid.begin({&len});
    for (vkVector* vector : {&pRc, &pDstSpch, &pSrcResidual, &pMem}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimStafSyntGSMFR::makeData() {
    return pRc.createVector(order + 1, setValue, 1, 0) && pDstSpch.createVector(len.value(), setZero, 0, 0) &&
           pSrcResidual.createVector(len.value(), setZero, 0, 0) && pMem.createVector(order + 2, setZero, 0, 0);
}

void TimStafSyntGSMFR::flushData() {
    for (vkVector* vector : {&pMem, &pSrcResidual, &pDstSpch, &pRc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimStafSyntGSMFR, veksShortTermSynthesisFilter_GSMFR_16s,
       veksShortTermSynthesisFilter_GSMFR_16s(pRc.m_16s, pSrcResidual.m_16s, pDstSpch.m_16s, len.value(), pMem.m_16s))
