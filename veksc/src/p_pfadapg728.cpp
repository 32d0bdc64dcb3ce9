// Adaptation of the postfilter of G.728: residual and pitch period.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
vkVector pCoeffs;
krStepIterator<int> lenght;
int dataSize;
int period;
VeksPostFilterAdapterState_G728* pMem;

// Samples before the window of analysis, and in it; the period at the start.
constexpr int before = 140;
constexpr int window = 100;
constexpr int startPeriod = 50;

class TimPfadap728 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        m_pitch = m_func.contains("PitchPeriod");
        vkcRebuild(lenght, "").setList({m_pitch ? 241 : 5});
        m_grid.begin({&lenght});
        initVectors({&pSrc, &pDst, &pCoeffs}, vkArg::src);
        return vkcDone(veksPostFilterAdapterGetStateSize_G728(&dataSize));
    }

    bool makeData() override {
        pMem = reinterpret_cast<VeksPostFilterAdapterState_G728*>(veksMalloc_8u(dataSize));
        return pMem != nullptr && vkcDone(veksPostFilterAdapterInit_G728(pMem)) &&
               pSrc.createVector(m_grid.room(lenght), setRand, -10, 10) &&
               pDst.createVector(m_grid.room(lenght), setZero, 0, 0) && pCoeffs.createVector(10, setOne, 0, 0);
    }

    void flushData() override {
        vkcFree(pMem);
        vkcGridTest::flushData();
    }

    double getDivisor() override { return m_pitch ? window : lenght.value(); }

private:
    bool m_pitch = false;
};

} // namespace

VK_REG_I(TimPfadap728, veksPitchPeriodExtraction_G728_16s,
         veksPitchPeriodExtraction_G728_16s(pSrc.m_16s + before, &period, pMem), period = startPeriod)
VK_REG(TimPfadap728, veksLPCInverseFilter_G728_16s,
       veksLPCInverseFilter_G728_16s(pSrc.m_16s, pCoeffs.m_16s, pDst.m_16s, pMem))
