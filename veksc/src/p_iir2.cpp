// Pole-zero filters of G.723.1.
#include "vkc.h"

namespace {

vkVector pTmp;
vkVector pSrcDst;
vkVector pSrc;
vkVector pDst;
vkVector pCoeffs;
vkVector pMem;
krStepIterator<int> lenght;
vkcGrid grid;
int dataSize;

constexpr int coeffCount = 21;
constexpr int sFs = 14;

class TimIIR : public prTest {
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

bool TimIIR::canStart() {
    vkcRebuild(lenght, "lenght").setList({61});
    grid.begin({&lenght});
    for (vkVector* vector : {&pTmp, &pSrcDst, &pSrc}) {
        vector->init(m_func, vkArg::src);
    }
    pDst.init(m_func, vkArg::dst);
    pCoeffs.init(vk16s);
    pMem.init(vk16s);
    return true;
}

bool TimIIR::makeData() {
    const bool made =
        pTmp.createVector(grid.room(lenght), setRand, 0, 0) && pSrcDst.createVector(grid.room(lenght), setZero, 0, 0) &&
        pSrc.createVector(grid.room(lenght), setRand, 0, 0) && pDst.createVector(grid.room(lenght), setZero, 0, 0) &&
        pCoeffs.createVector(coeffCount, setRand, -2048, 2048) && pMem.createVector(coeffCount, setRand, 0, 0);
    dataSize = pTmp.size();
    return made;
}

void TimIIR::flushData() {
    for (vkVector* vector : {&pMem, &pCoeffs, &pDst, &pSrc, &pSrcDst, &pTmp}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG_I(TimIIR, veksIIR16s_G723_16s_I, veksIIR16s_G723_16s_I(pCoeffs.m_16s, pSrcDst.m_16s, pMem.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
VK_REG(TimIIR, veksIIR16s_G723_32s16s_Sfs,
       veksIIR16s_G723_32s16s_Sfs(pCoeffs.m_16s, pSrc.m_32s, sFs, pDst.m_16s, pMem.m_16s))
VK_REG(TimIIR, veksIIR16s_G723_16s32s, veksIIR16s_G723_16s32s(pCoeffs.m_16s, pSrc.m_16s, pDst.m_32s, pMem.m_16s))
