// Autocorrelation of the G.723.1 analysis window.
#include "vkc.h"

namespace {

vkVector pSrc, pSrc1, pSrc2, pTmp, pSrcDst, pDst;
krStepIterator<int> lenght;
int norm[1];

constexpr int windowLength = 180;
constexpr int subframe = 60;

class TimCorr2 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({10});
        initVectors({&pSrc, &pSrc1, &pSrc2, &pTmp, &pSrcDst, &pDst}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        return pSrc.createVector(windowLength, setRand, -4092, 4092) &&
               pSrc1.createVector(subframe, setRand, -8192, 8192) &&
               pSrc2.createVector(subframe, setRand, -8192, 8192) &&
               pTmp.createVector(subframe, setRand, -8192, 8192) && pSrcDst.createVector(subframe, setZero, 0, 0) &&
               pDst.createVector(m_grid.room(lenght), setZero, 0, 0);
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG(TimCorr2, veksAutoCorr_NormE_G723_16s, veksAutoCorr_NormE_G723_16s(pSrc.m_16s, pDst.m_16s, norm))
