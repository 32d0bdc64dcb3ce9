// Autocorrelation of the G.723.1 analysis window.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pSrc1;
vkVector pSrc2;
vkVector pTmp;
vkVector pSrcDst;
vkVector pDst;
krStepIterator<int> lenght;
vkcGrid grid;
int norm[1];

constexpr int windowLength = 180;
constexpr int subframe = 60;

class TimCorr2 : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return lenght.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimCorr2::canStart() {
    vkcRebuild(lenght, "lenght").setList({10});
    grid.begin({&lenght});
    for (vkVector* vector : {&pSrc, &pSrc1, &pSrc2, &pTmp, &pSrcDst, &pDst}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimCorr2::makeData() {
    return pSrc.createVector(windowLength, setRand, -4092, 4092) &&
           pSrc1.createVector(subframe, setRand, -8192, 8192) && pSrc2.createVector(subframe, setRand, -8192, 8192) &&
           pTmp.createVector(subframe, setRand, -8192, 8192) && pSrcDst.createVector(subframe, setZero, 0, 0) &&
           pDst.createVector(grid.room(lenght), setZero, 0, 0);
}

void TimCorr2::flushData() {
    for (vkVector* vector : {&pDst, &pSrcDst, &pTmp, &pSrc2, &pSrc1, &pSrc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimCorr2, veksAutoCorr_NormE_G723_16s, veksAutoCorr_NormE_G723_16s(pSrc.m_16s, pDst.m_16s, norm))
