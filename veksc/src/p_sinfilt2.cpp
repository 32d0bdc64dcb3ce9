// Synthesis filters of G.723.1.
#include "vkc.h"

#include <algorithm>

namespace {

vkVector pLPC;
vkVector pTmp;
vkVector pSrcDst;
vkVector pMem;
vkVector pSrc;
vkVector pDst;
krStepIterator<int> lenght;
krStepIterator<int> lenght_lpc;
vkcGrid grid;

constexpr int lpcWords = 11;

class TimSinFilt2 : public prTest {
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
    virtual void SetData_LPC();
};

bool TimSinFilt2::canStart() {
    vkcRebuild(lenght, "lenght").setList({60});
    vkcRebuild(lenght_lpc, "lenght LPC").setList({10});
    grid.begin({&lenght, &lenght_lpc});
    for (vkVector* vector : {&pLPC, &pTmp, &pSrcDst, &pMem, &pSrc}) {
        vector->init(m_func, vkArg::src);
    }
    pDst.init(m_func, vkArg::dst);
    return true;
}

void TimSinFilt2::SetData_LPC() {
    static constexpr Vek16s lpc[lpcWords] = {4096, -1315, 1099, -527, 427, -135, 97, -33, 17, -4, 2};
    std::memcpy(pLPC.m_16s, lpc, sizeof lpc);
}

bool TimSinFilt2::makeData() {
    if (!pLPC.createVector(std::max<long long>(grid.room(lenght_lpc), lpcWords), setZero, 0, 0) ||
        !pTmp.createVector(grid.room(lenght), setValue, 4, 0) ||
        !pSrcDst.createVector(grid.room(lenght), setZero, 0, 0) ||
        !pMem.createVector(grid.room(lenght_lpc), setOne, 0, 0) ||
        !pSrc.createVector(grid.room(lenght), setValue, 4, 0) || !pDst.createVector(grid.room(lenght), setZero, 0, 0)) {
        return false;
    }
    vkcRestore(pSrcDst.m_16s, pTmp.m_16s, pTmp.size());
    SetData_LPC();
    return true;
}

void TimSinFilt2::flushData() {
    for (vkVector* vector : {&pDst, &pSrc, &pMem, &pSrcDst, &pTmp, &pLPC}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimSinFilt2, veksSynthesisFilter_G723_16s,
       veksSynthesisFilter_G723_16s(pLPC.m_16s, pSrc.m_16s, pMem.m_16s, pDst.m_16s))
VK_REG(TimSinFilt2, veksSynthesisFilter_G723_16s32s,
       veksSynthesisFilter_G723_16s32s(pLPC.m_16s, pSrc.m_16s, pDst.m_32s, pMem.m_16s))
