// Pole-zero filters of G.723.1.
#include "vkc.h"

namespace {

vkVector pTmp, pSrcDst, pSrc, pDst, pCoeffs, pMem;
krStepIterator<int> lenght;
int dataSize;

constexpr int coeffCount = 21;
constexpr int sFs = 14;

class TimIIR : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({61});
        initVectors({&pTmp, &pSrcDst, &pSrc}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        initVectors({&pCoeffs, &pMem}, vk16s);
        return walk({&lenght});
    }

    bool makeData() override {
        const bool made = pTmp.createVector(m_grid.room(lenght), setRand, 0, 0) &&
                          pSrcDst.createVector(m_grid.room(lenght), setZero, 0, 0) &&
                          pSrc.createVector(m_grid.room(lenght), setRand, 0, 0) &&
                          pDst.createVector(m_grid.room(lenght), setZero, 0, 0) &&
                          pCoeffs.createVector(coeffCount, setRand, -2048, 2048) &&
                          pMem.createVector(coeffCount, setRand, 0, 0);
        dataSize = pTmp.size();
        return made;
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG_I(TimIIR, veksIIR16s_G723_16s_I, veksIIR16s_G723_16s_I(pCoeffs.m_16s, pSrcDst.m_16s, pMem.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
VK_REG(TimIIR, veksIIR16s_G723_32s16s_Sfs,
       veksIIR16s_G723_32s16s_Sfs(pCoeffs.m_16s, pSrc.m_32s, sFs, pDst.m_16s, pMem.m_16s))
VK_REG(TimIIR, veksIIR16s_G723_16s32s, veksIIR16s_G723_16s32s(pCoeffs.m_16s, pSrc.m_16s, pDst.m_32s, pMem.m_16s))
