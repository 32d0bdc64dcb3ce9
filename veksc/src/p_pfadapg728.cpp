// Adaptation of the postfilter of G.728: residual and pitch period.
#include "vkc.h"

namespace {

vkVector pSrc, pDst, pCoeffs;
krStepIterator<int> lenght;
int dataSize, period;
VeksPostFilterAdapterState_G728* pMem;

// Samples before the window of analysis, and in it; the period at the start.
constexpr int before = 140;
constexpr int window = 100;
constexpr int startPeriod = 50;

class TimPfadap728 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "").setList({m_pitch ? 241 : 5});
        initVectors({&pSrc, &pDst, &pCoeffs}, vkArg::src);
        return walk({&lenght}) && vkcDone(veksPostFilterAdapterGetStateSize_G728(&dataSize));
    }

    bool makeData() override {
        return hold(pMem, veksMalloc_8u(dataSize), veksFree) && vkcDone(veksPostFilterAdapterInit_G728(pMem)) &&
               pSrc.createVector(m_grid.room(lenght), setRand, -10, 10) &&
               pDst.createVector(m_grid.room(lenght), setZero, 0, 0) && pCoeffs.createVector(10, setOne, 0, 0);
    }

    double getDivisor() override { return m_pitch ? window : lenght.value(); }

private:
    const bool m_pitch = m_func.contains("PitchPeriod");
};

} // namespace

VK_REG_I(TimPfadap728, veksPitchPeriodExtraction_G728_16s,
         veksPitchPeriodExtraction_G728_16s(pSrc.m_16s + before, &period, pMem), period = startPeriod)
VK_REG(TimPfadap728, veksLPCInverseFilter_G728_16s,
       veksLPCInverseFilter_G728_16s(pSrc.m_16s, pCoeffs.m_16s, pDst.m_16s, pMem))
