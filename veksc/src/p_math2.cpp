// Decimation-like arithmetic with a destination shorter than its source. The class is complete, and no function of this
// library is measured by it.
#include "vkc.h"

namespace {

vkVector pSrc, pSrcDst, pTmp;
krStepIterator<int> lenght, lenght_dst;

} // namespace

class TimMath2 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({200});
        vkcRebuild(lenght_dst, "lenght DST").set(10, 60, 10, '+');
        initVectors({&pSrc, &pSrcDst, &pTmp}, vkArg::src);
        return walk({&lenght, &lenght_dst});
    }

    bool makeData() override {
        return pSrc.createVector(m_grid.room(lenght), setRand, -4092, 4092) &&
               pSrcDst.createVector(m_grid.room(lenght), setZero, 0, 0) &&
               pTmp.createVector(m_grid.room(lenght), setValue, 4092, 0);
    }

    double getDivisor() override { return lenght_dst.value(); }
};
