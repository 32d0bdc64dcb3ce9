// Line spectral frequencies of G.723.1: decoded, and to prediction coefficients in place.
#include "vkc.h"

namespace {

vkVector prevLSP, pTmp, pSrcDst, pLPC, pDst, pPrevLSF, pQuantLSF, quantIndex;
krStepIterator<int> erase;
int dataSize;

constexpr int order = 12;
constexpr int memory = 20;

class TimLpCnv2 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcSwitch(erase, "Erase", m_func.contains("Decode"));
        initVectors({&prevLSP, &pTmp, &pSrcDst, &pLPC, &pDst, &pPrevLSF, &pQuantLSF, &quantIndex}, vkArg::src);
        return walk({&erase});
    }

    bool makeData() override {
        if (!vkcCreate({&prevLSP, &pTmp, &pLPC}, order, setRand, 0, 0) || !pSrcDst.createVector(order, setZero, 0, 0) ||
            !pDst.createVector(order, setZero, 0, 0) || !pPrevLSF.createVector(memory, setValue, 16384, 0) ||
            !pQuantLSF.createVector(memory, setZero, 0, 0) || !quantIndex.createVector(3, setZero, 0, 0)) {
            return false;
        }
        dataSize = order * vkVector::item(m_func);
        SetData_LSF();
        SetData_LPC();
        return true;
    }

    double getDivisor() override { return order; }

    virtual void SetData_LSF() {
        static constexpr Vek16s lsf[] = {3244, 4648, 7441, 11200, 13758, 16670, 19822, 22012, 25916, 27949, -13108};
        std::memcpy(pTmp.m_16s, lsf, sizeof lsf);
        std::memcpy(pQuantLSF.m_16s, lsf, sizeof lsf);
    }

    virtual void SetData_LPC() {
        static constexpr Vek16s lpc[] = {4143, 733, 14, -39, -29, -61, -903, -6692, 4084, 428};
        std::memcpy(pLPC.m_16s, lpc, sizeof lpc);
    }
};

} // namespace

VK_REG_I(TimLpCnv2, veksLSFToLPC_G723_16s_I, veksLSFToLPC_G723_16s_I(pSrcDst.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
VK_REG(TimLpCnv2, veksLSFDecode_G723_16s,
       veksLSFDecode_G723_16s(quantIndex.m_16s, pPrevLSF.m_16s, erase.value(), pQuantLSF.m_16s))
