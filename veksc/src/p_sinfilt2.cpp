// Synthesis filters of G.723.1.
#include "vkc.h"

#include <algorithm>

namespace {

vkVector pLPC, pTmp, pSrcDst, pMem, pSrc, pDst;
krStepIterator<int> lenght, lenght_lpc;

constexpr int lpcWords = 11;

class TimSinFilt2 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({60});
        vkcRebuild(lenght_lpc, "lenght LPC").setList({10});
        initVectors({&pLPC, &pTmp, &pSrcDst, &pMem, &pSrc}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        return walk({&lenght, &lenght_lpc});
    }

    bool makeData() override {
        if (!pLPC.createVector(std::max<long long>(m_grid.room(lenght_lpc), lpcWords), setZero, 0, 0) ||
            !pTmp.createVector(m_grid.room(lenght), setValue, 4, 0) ||
            !pSrcDst.createVector(m_grid.room(lenght), setZero, 0, 0) ||
            !pMem.createVector(m_grid.room(lenght_lpc), setOne, 0, 0) ||
            !pSrc.createVector(m_grid.room(lenght), setValue, 4, 0) ||
            !pDst.createVector(m_grid.room(lenght), setZero, 0, 0)) {
            return false;
        }
        vkcRestore(pSrcDst.m_16s, pTmp.m_16s, pTmp.size());
        SetData_LPC();
        return true;
    }

    double getDivisor() override { return lenght.value(); }

    virtual void SetData_LPC() {
        static constexpr Vek16s lpc[lpcWords] = {4096, -1315, 1099, -527, 427, -135, 97, -33, 17, -4, 2};
        std::memcpy(pLPC.m_16s, lpc, sizeof lpc);
    }
};

} // namespace

VK_REG(TimSinFilt2, veksSynthesisFilter_G723_16s,
       veksSynthesisFilter_G723_16s(pLPC.m_16s, pSrc.m_16s, pMem.m_16s, pDst.m_16s))
VK_REG(TimSinFilt2, veksSynthesisFilter_G723_16s32s,
       veksSynthesisFilter_G723_16s32s(pLPC.m_16s, pSrc.m_16s, pDst.m_32s, pMem.m_16s))
