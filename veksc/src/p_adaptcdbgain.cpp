// Target of the fixed codebook search of G.729: the adaptive codebook's share taken off.
#include "vkc.h"

namespace {

vkVector pFltAdptVector, pSrcAdptTarget, pDstAdptTarget;
krStepIterator<int> len;

class TimAdaptiveCodebookContribute : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").setList({40});
        initVectors({&pFltAdptVector, &pSrcAdptTarget, &pDstAdptTarget}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        return pFltAdptVector.createVector(m_grid.room(len), setRand, -16384, 16384) &&
               pSrcAdptTarget.createVector(m_grid.room(len), setRand, -16384, 16384) &&
               pDstAdptTarget.createVector(m_grid.room(len), setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG(TimAdaptiveCodebookContribute, veksAdaptiveCodebookContribution_G729_32f,
       veksAdaptiveCodebookContribution_G729_32f(1, pFltAdptVector.m_32f, pSrcAdptTarget.m_32f, pDstAdptTarget.m_32f))
VK_REG(TimAdaptiveCodebookContribute, veksAdaptiveCodebookContribution_G729_16s,
       veksAdaptiveCodebookContribution_G729_16s(1, pFltAdptVector.m_16s, pSrcAdptTarget.m_16s, pDstAdptTarget.m_16s))
