// Decimation-like arithmetic with a destination shorter than its source. The class is complete, and no function of this
// library is measured by it.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pSrcDst;
vkVector pTmp;
krStepIterator<int> lenght;
krStepIterator<int> lenght_dst;
vkcGrid grid;

} // namespace

class TimMath2 : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return lenght_dst.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimMath2::canStart() {
    vkcRebuild(lenght, "lenght").setList({200});
    vkcRebuild(lenght_dst, "lenght DST").set(10, 60, 10, '+');
    grid.begin({&lenght, &lenght_dst});
    for (vkVector* vector : {&pSrc, &pSrcDst, &pTmp}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimMath2::makeData() {
    return pSrc.createVector(grid.room(lenght), setRand, -4092, 4092) &&
           pSrcDst.createVector(grid.room(lenght), setZero, 0, 0) &&
           pTmp.createVector(grid.room(lenght), setValue, 4092, 0);
}

void TimMath2::flushData() {
    for (vkVector* vector : {&pTmp, &pSrcDst, &pSrc}) {
        vector->deleteVector();
    }
}
