// Adaptation of the postfilter of G.728: residual and pitch period.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
vkVector pCoeffs;
krStepIterator<int> lenght;
vkcGrid grid;
int dataSize;
int period;
VeksPostFilterAdapterState_G728* pMem;

// Samples before the window of analysis, and in it; the period at the start.
constexpr int before = 140;
constexpr int window = 100;
constexpr int startPeriod = 50;

class TimPfadap728 : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return m_pitch ? window : lenght.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }

private:
    bool m_pitch = false;
};

bool TimPfadap728::canStart() {
    m_pitch = m_func.contains("PitchPeriod");
    vkcRebuild(lenght, "").setList({m_pitch ? 241 : 5});
    grid.begin({&lenght});
    for (vkVector* vector : {&pSrc, &pDst, &pCoeffs}) {
        vector->init(m_func, vkArg::src);
    }
    return vkcDone(veksPostFilterAdapterGetStateSize_G728(&dataSize));
}

bool TimPfadap728::makeData() {
    pMem = reinterpret_cast<VeksPostFilterAdapterState_G728*>(veksMalloc_8u(dataSize));
    return pMem != nullptr && vkcDone(veksPostFilterAdapterInit_G728(pMem)) &&
           pSrc.createVector(grid.room(lenght), setRand, -10, 10) &&
           pDst.createVector(grid.room(lenght), setZero, 0, 0) && pCoeffs.createVector(10, setOne, 0, 0);
}

void TimPfadap728::flushData() {
    for (vkVector* vector : {&pCoeffs, &pDst, &pSrc}) {
        vector->deleteVector();
    }
    veksFree(pMem);
    pMem = nullptr;
}

} // namespace

VK_REG_I(TimPfadap728, veksPitchPeriodExtraction_G728_16s,
         veksPitchPeriodExtraction_G728_16s(pSrc.m_16s + before, &period, pMem), period = startPeriod)
VK_REG(TimPfadap728, veksLPCInverseFilter_G728_16s,
       veksLPCInverseFilter_G728_16s(pSrc.m_16s, pCoeffs.m_16s, pDst.m_16s, pMem))
