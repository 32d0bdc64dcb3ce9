// Perceptual weighting filters of G.729.
#include "vkc.h"

namespace {

vkVector pSrc, pDst, pCoeffs, pMem;
krStepIterator<int> lenght;

constexpr int coeffCount = 22;
constexpr int memLength = 21;

class TimIIR2 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({50});
        initVectors({&pSrc, &pDst, &pCoeffs, &pMem}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        return pSrc.createVector(m_grid.room(lenght), setRand, 0, 512) &&
               pDst.createVector(m_grid.room(lenght), setZero, 0, 0) &&
               pCoeffs.createVector(coeffCount, setRand, 0, 512) && pMem.createVector(memLength, setRand, 0, 512);
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG(TimIIR2, veksIIR16sLow_G729_16s, veksIIR16sLow_G729_16s(pCoeffs.m_16s, pSrc.m_16s, pDst.m_16s, pMem.m_16s))
VK_REG(TimIIR2, veksIIR16s_G729_16s, veksIIR16s_G729_16s(pCoeffs.m_16s, pSrc.m_16s, pDst.m_16s, pMem.m_16s))
