// Conversions between prediction coefficients, line spectral pairs and line spectral frequencies.
#include "vkc.h"

namespace {

vkVector pLSF, pLSP, pPrevLSP, pLPC;
krStepIterator<int> lenght;

class TimLpCnv : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({11});
        initVectors({&pLSF, &pLSP, &pPrevLSP, &pLPC}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        return pLSF.createVector(m_grid.room(lenght), setZero, 0, 0) &&
               pLSP.createVector(m_grid.room(lenght), m_func.contains("ToLSP") ? setZero : setOne, 0, 0) &&
               pPrevLSP.createVector(m_grid.room(lenght), setValue, 2000, 0) &&
               pLPC.createVector(m_grid.room(lenght), setZero, 0, 0);
    }

    double getDivisor() override { return lenght.value(); }
};

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
