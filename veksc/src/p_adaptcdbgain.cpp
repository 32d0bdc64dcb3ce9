// Target of the fixed codebook search of G.729: the adaptive codebook's share taken off.
#include "vkc.h"

namespace {

vkVector pFltAdptVector;
vkVector pSrcAdptTarget;
vkVector pDstAdptTarget;
krStepIterator<int> len;
vkcGrid grid;

class TimAdaptiveCodebookContribute : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimAdaptiveCodebookContribute::canStart() {
    vkcRebuild(len, "Lenght").setList({40});
    grid.begin({&len});
    for (vkVector* vector : {&pFltAdptVector, &pSrcAdptTarget, &pDstAdptTarget}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimAdaptiveCodebookContribute::makeData() {
    return pFltAdptVector.createVector(grid.room(len), setRand, -16384, 16384) &&
           pSrcAdptTarget.createVector(grid.room(len), setRand, -16384, 16384) &&
           pDstAdptTarget.createVector(grid.room(len), setZero, 0, 0);
}

void TimAdaptiveCodebookContribute::flushData() {
    for (vkVector* vector : {&pDstAdptTarget, &pSrcAdptTarget, &pFltAdptVector}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimAdaptiveCodebookContribute, veksAdaptiveCodebookContribution_G729_32f,
       veksAdaptiveCodebookContribution_G729_32f(1, pFltAdptVector.m_32f, pSrcAdptTarget.m_32f, pDstAdptTarget.m_32f))
VK_REG(TimAdaptiveCodebookContribute, veksAdaptiveCodebookContribution_G729_16s,
       veksAdaptiveCodebookContribution_G729_16s(1, pFltAdptVector.m_16s, pSrcAdptTarget.m_16s, pDstAdptTarget.m_16s))
