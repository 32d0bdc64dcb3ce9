// The two fixed codebooks of G.729.1.
#include "vkc.h"

namespace {

vkVector pSrcDstImpulseResponse, pSrcDstFltAdptVector, pSrcFixedTarget, pSrcLtpResidual, pDstFixedVector,
    pDstFltFixedVector, pDstCodebookIdx, pSrcImpulseResponse;
krStepIterator<int> len;

// A lag beyond the subframe leaves the response as it is from call to call.
constexpr Vek16s pitchLag = 60;
constexpr Vek16s pitchGain = 8192;
constexpr Vek16s voiceFactor = 8192;

class Tim7291cdbk : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "len").setList({40});
        initVectors({&pSrcDstImpulseResponse, &pSrcDstFltAdptVector, &pSrcFixedTarget, &pSrcLtpResidual,
                     &pDstFixedVector, &pDstFltFixedVector, &pDstCodebookIdx, &pSrcImpulseResponse},
                    vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        return pDstCodebookIdx.createVector(2, setZero, 0, 0) && SetData_Cdbk(m_grid.room(len), pDstCodebookIdx.m_16s);
    }

    double getDivisor() override { return len.value(); }

    // What both searches take; a layer's own response and vector go with it.
    bool SetData_Cdbk(long long size, short* pIndex) {
        pIndex[0] = 0;
        pIndex[1] = 0;
        const bool own = m_func.contains("veksAlgebraicCodebookSearchL1_G7291_16s")
                             ? pSrcDstImpulseResponse.createVector(size, setRand, -2048, 2048) &&
                                   pSrcDstFltAdptVector.createVector(size, setRand, -2048, 2048)
                             : pSrcImpulseResponse.createVector(size, setRand, -2048, 2048);
        return own && pSrcFixedTarget.createVector(size, setRand, -2048, 2048) &&
               pSrcLtpResidual.createVector(size, setRand, -2048, 2048) &&
               pDstFixedVector.createVector(size, setZero, 0, 0) &&
               pDstFltFixedVector.createVector(size, setZero, 0, 0);
    }
};

} // namespace

VK_REG(Tim7291cdbk, veksAlgebraicCodebookSearchL1_G7291_16s,
       veksAlgebraicCodebookSearchL1_G7291_16s(pSrcFixedTarget.m_16s, pSrcLtpResidual.m_16s, pSrcDstFltAdptVector.m_16s,
                                               pSrcDstImpulseResponse.m_16s, pitchLag, pitchGain, pDstFixedVector.m_16s,
                                               pDstFltFixedVector.m_16s, pDstCodebookIdx.m_16s))
VK_REG(Tim7291cdbk, veksAlgebraicCodebookSearchL2_G7291_16s,
       veksAlgebraicCodebookSearchL2_G7291_16s(pSrcFixedTarget.m_16s, pSrcLtpResidual.m_16s, pSrcImpulseResponse.m_16s,
                                               voiceFactor, pDstFixedVector.m_16s, pDstFltFixedVector.m_16s,
                                               pDstCodebookIdx.m_16s))
