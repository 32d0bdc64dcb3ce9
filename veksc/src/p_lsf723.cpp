// Line spectral frequencies of G.723.1: quantiser and conversions.
#include "vkc.h"

namespace {

vkVector pSrcLpc, pSrcPrevLsf, pDstLsf, pSrcLsf, pDstLpc;
krStepIterator<int> len;
Vek32s pResultQLsfIndex;

class TimLSF_723 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").setList({10});
        initVectors({&pSrcLpc, &pSrcPrevLsf, &pDstLsf, &pSrcLsf, &pDstLpc}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        if (!pDstLsf.createVector(m_grid.room(len), setZero, 0, 0) ||
            !pDstLpc.createVector(m_grid.room(len), setZero, 0, 0) ||
            !vkcCreate({&pSrcLpc, &pSrcPrevLsf, &pSrcLsf}, m_grid.room(len), setRand, -2048, 2048)) {
            return false;
        }
        SetData_LSF();
        return true;
    }

    double getDivisor() override { return len.value(); }

    virtual void SetData_LSF() {
        static constexpr Vek16s lsf[] = {3244, 4648, 7441, 11200, 13758, 16670, 19822, 22012, 25916, 27949};
        std::memcpy(pSrcLsf.m_16s, lsf, sizeof lsf);
    }
};

} // namespace

VK_REG(TimLSF_723, veksLSFQuant_G723_16s32s,
       veksLSFQuant_G723_16s32s(pSrcLsf.m_16s, pSrcPrevLsf.m_16s, &pResultQLsfIndex))
VK_REG(TimLSF_723, veksLSFToLPC_G723_16s, veksLSFToLPC_G723_16s(pSrcLsf.m_16s, pDstLpc.m_16s))
VK_REG(TimLSF_723, veksLPCToLSF_G723_16s, veksLPCToLSF_G723_16s(pSrcLpc.m_16s, pSrcPrevLsf.m_16s, pDstLsf.m_16s))
