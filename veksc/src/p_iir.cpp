// Perceptual weighting filters of G.729.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
vkVector pCoeffs;
vkVector pMem;
krStepIterator<int> lenght;
vkcGrid grid;

constexpr int coeffCount = 22;
constexpr int memLength = 21;

class TimIIR2 : public prTest {
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

bool TimIIR2::canStart() {
    vkcRebuild(lenght, "lenght").setList({50});
    grid.begin({&lenght});
    for (vkVector* vector : {&pSrc, &pDst, &pCoeffs, &pMem}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimIIR2::makeData() {
    return pSrc.createVector(grid.room(lenght), setRand, 0, 512) &&
           pDst.createVector(grid.room(lenght), setZero, 0, 0) && pCoeffs.createVector(coeffCount, setRand, 0, 512) &&
           pMem.createVector(memLength, setRand, 0, 512);
}

void TimIIR2::flushData() {
    for (vkVector* vector : {&pMem, &pCoeffs, &pDst, &pSrc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimIIR2, veksIIR16sLow_G729_16s, veksIIR16sLow_G729_16s(pCoeffs.m_16s, pSrc.m_16s, pDst.m_16s, pMem.m_16s))
VK_REG(TimIIR2, veksIIR16s_G729_16s, veksIIR16s_G729_16s(pCoeffs.m_16s, pSrc.m_16s, pDst.m_16s, pMem.m_16s))
