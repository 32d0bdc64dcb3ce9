// Conversions between prediction coefficients, line spectral pairs and line spectral frequencies.
#include "vkc.h"

namespace {

vkVector pLSF;
vkVector pLSP;
vkVector pPrevLSP;
vkVector pLPC;
krStepIterator<int> lenght;
vkcGrid grid;

class TimLpCnv : public prTest {
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

private:
    bool m_toLsp = false;
};

bool TimLpCnv::canStart() {
    m_toLsp = m_func.contains("ToLSP");
    vkcRebuild(lenght, "lenght").setList({11});
    grid.begin({&lenght});
    for (vkVector* vector : {&pLSF, &pLSP, &pPrevLSP, &pLPC}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimLpCnv::makeData() {
    return pLSF.createVector(grid.room(lenght), setZero, 0, 0) &&
           pLSP.createVector(grid.room(lenght), m_toLsp ? setZero : setOne, 0, 0) &&
           pPrevLSP.createVector(grid.room(lenght), setValue, 2000, 0) &&
           pLPC.createVector(grid.room(lenght), setZero, 0, 0);
}

void TimLpCnv::flushData() {
    for (vkVector* vector : {&pLPC, &pPrevLSP, &pLSP, &pLSF}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimLpCnv, veksLSPToLPC_G729_32f, veksLSPToLPC_G729_32f(pLSP.m_32f, pLPC.m_32f))
VK_REG(TimLpCnv, veksLPCToLSP_G729A_32f, veksLPCToLSP_G729A_32f(pLPC.m_32f, pPrevLSP.m_32f, pLSP.m_32f))
VK_REG(TimLpCnv, veksLPCToLSP_G729_32f, veksLPCToLSP_G729_32f(pLPC.m_32f, pPrevLSP.m_32f, pLSP.m_32f))
VK_REG(TimLpCnv, veksLSPToLPC_G729_16s, veksLSPToLPC_G729_16s(pLSP.m_16s, pLPC.m_16s))
VK_REG(TimLpCnv, veksLPCToLSP_G729A_16s, veksLPCToLSP_G729A_16s(pLPC.m_16s, pPrevLSP.m_16s, pLSP.m_16s))
VK_REG(TimLpCnv, veksLPCToLSP_GSMAMR_16s, veksLPCToLSP_GSMAMR_16s(pLPC.m_16s, pPrevLSP.m_16s, pLSP.m_16s))
VK_REG(TimLpCnv, veksLPCToLSP_G729_16s, veksLPCToLSP_G729_16s(pLPC.m_16s, pPrevLSP.m_16s, pLSP.m_16s))
VK_REG(TimLpCnv, veksLSPToLSF_Norm_G729_16s, veksLSPToLSF_Norm_G729_16s(pLSP.m_16s, pLSF.m_16s))
VK_REG(TimLpCnv, veksLSPToLSF_G729_16s, veksLSPToLSF_G729_16s(pLSP.m_16s, pLSF.m_16s))
VK_REG(TimLpCnv, veksLSFToLSP_G729_16s, veksLSFToLSP_G729_16s(pLSF.m_16s, pLSP.m_16s))
