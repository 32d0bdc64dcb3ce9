// Weighting filter of GSM full rate.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
krStepIterator<int> dstLen;
vkcGrid grid;

// Samples that the filter reads before and behind the destination.
constexpr int beside = 5;

class TimWFiltGSMFR : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return dstLen.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimWFiltGSMFR::canStart() {
    vkcRebuild(dstLen, "dstLength").set(30, 60, 10, '+');
    grid.begin({&dstLen});
    for (vkVector* vector : {&pSrc, &pDst}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimWFiltGSMFR::makeData() {
    return pSrc.createVector(vkcSize(dstLen) + 2 * beside, setValue, 1, 0) &&
           pDst.createVector(dstLen.value(), setZero, 0, 0);
}

void TimWFiltGSMFR::flushData() {
    for (vkVector* vector : {&pDst, &pSrc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimWFiltGSMFR, veksWeightingFilter_GSMFR_16s,
       veksWeightingFilter_GSMFR_16s(pSrc.m_16s + beside, pDst.m_16s, dstLen.value()))
