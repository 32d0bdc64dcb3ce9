// Line spectral frequencies of G.723.1: quantiser and conversions.
#include "vkc.h"

namespace {

vkVector pSrcLpc;
vkVector pSrcPrevLsf;
vkVector pDstLsf;
vkVector pSrcLsf;
vkVector pDstLpc;
krStepIterator<int> len;
vkcGrid grid;
Vek32s pResultQLsfIndex;

class TimLSF_723 : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
    virtual void SetData_LSF();
};

bool TimLSF_723::canStart() {
    vkcRebuild(len, "Lenght").setList({10});
    grid.begin({&len});
    for (vkVector* vector : {&pSrcLpc, &pSrcPrevLsf, &pDstLsf, &pSrcLsf, &pDstLpc}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

void TimLSF_723::SetData_LSF() {
    static constexpr Vek16s lsf[] = {3244, 4648, 7441, 11200, 13758, 16670, 19822, 22012, 25916, 27949};
    std::memcpy(pSrcLsf.m_16s, lsf, sizeof lsf);
}

bool TimLSF_723::makeData() {
    if (!pDstLsf.createVector(grid.room(len), setZero, 0, 0) || !pDstLpc.createVector(grid.room(len), setZero, 0, 0)) {
        return false;
    }
    for (vkVector* vector : {&pSrcLpc, &pSrcPrevLsf, &pSrcLsf}) {
        if (!vector->createVector(grid.room(len), setRand, -2048, 2048)) {
            return false;
        }
    }
    SetData_LSF();
    return true;
}

void TimLSF_723::flushData() {
    for (vkVector* vector : {&pDstLpc, &pSrcLsf, &pDstLsf, &pSrcPrevLsf, &pSrcLpc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimLSF_723, veksLSFQuant_G723_16s32s,
       veksLSFQuant_G723_16s32s(pSrcLsf.m_16s, pSrcPrevLsf.m_16s, &pResultQLsfIndex))
VK_REG(TimLSF_723, veksLSFToLPC_G723_16s, veksLSFToLPC_G723_16s(pSrcLsf.m_16s, pDstLpc.m_16s))
VK_REG(TimLSF_723, veksLPCToLSF_G723_16s, veksLPCToLSF_G723_16s(pSrcLpc.m_16s, pSrcPrevLsf.m_16s, pDstLsf.m_16s))
