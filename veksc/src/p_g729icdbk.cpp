// Pulse searches of G.729 Annexes D and E.
#include "vkc.h"

namespace {

vkVector pSrcFixed, pSrcLtpResidual, pSrcImpulseResponse, pDstFixedVector, pDstFltFixedVector, pDstFixedIndex, pTmp,
    pSrcDst;
krStepIterator<int> mode;
Vek16s pDstSign, dstIndex;
int dataSize;

constexpr int subframe = 40;
constexpr int matrixSize = 616;

class TimICdbk : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcSwitch(mode, "mode", m_func.contains("G729E"));
        const vkType element = m_func.contains("_32f") ? vk32f : vk16s;
        initVectors({&pSrcFixed, &pSrcLtpResidual, &pSrcImpulseResponse, &pDstFixedVector, &pDstFltFixedVector, &pTmp,
                     &pSrcDst},
                    element);
        initVectors({&pDstFixedIndex}, vk16s);
        return walk({&mode});
    }

    bool makeData() override {
        if (!pSrcFixed.createVector(subframe, setRand, -4096, 4096) ||
            !pSrcLtpResidual.createVector(subframe, setRand, -4096, 4096) ||
            !pSrcImpulseResponse.createVector(subframe, setRand, -4096, 4096) ||
            !pDstFixedVector.createVector(subframe, setZero, 0, 0) ||
            !pDstFltFixedVector.createVector(subframe, setZero, 0, 0) ||
            !pDstFixedIndex.createVector(5, setZero, 0, 0) || !pTmp.createVector(matrixSize, setRand, 0, 4096) ||
            !pSrcDst.createVector(matrixSize, setZero, 0, 0)) {
            return false;
        }
        dataSize = matrixSize * static_cast<int>(m_func.contains("_32f") ? sizeof(Vek32f) : sizeof(Vek16s));
        return setData();
    }

    double getDivisor() override { return subframe; }

    // The matrix of the response, for the search that takes one.
    virtual bool setData() {
        return m_func.contains("_32f") ? vkcDone(veksToeplizMatrix_G729_32f(pSrcImpulseResponse.m_32f, pTmp.m_32f))
                                       : vkcDone(veksToeplizMatrix_G729_16s(pSrcImpulseResponse.m_16s, pTmp.m_16s));
    }
};

} // namespace

VK_REG_I(TimICdbk, veksFixedCodebookSearch_G729E_32f,
         veksFixedCodebookSearch_G729E_32f(mode.value(), pSrcFixed.m_32f, pSrcLtpResidual.m_32f,
                                           pSrcImpulseResponse.m_32f, pDstFixedVector.m_32f, pDstFltFixedVector.m_32f,
                                           pDstFixedIndex.m_16s),
         vkcRestore(pSrcDst.m_32f, pTmp.m_32f, dataSize))
VK_REG_I(TimICdbk, veksFixedCodebookSearch_G729D_32f,
         veksFixedCodebookSearch_G729D_32f(pSrcFixed.m_32f, pSrcDst.m_32f, pSrcImpulseResponse.m_32f,
                                           pDstFixedVector.m_32f, pDstFltFixedVector.m_32f, pDstFixedIndex.m_16s),
         vkcRestore(pSrcDst.m_32f, pTmp.m_32f, dataSize))
VK_REG(TimICdbk, veksFixedCodebookSearch_G729E_16s,
       veksFixedCodebookSearch_G729E_16s(mode.value(), pSrcFixed.m_16s, pSrcLtpResidual.m_16s,
                                         pSrcImpulseResponse.m_16s, pDstFixedVector.m_16s, pDstFltFixedVector.m_16s,
                                         pDstFixedIndex.m_16s))
VK_REG(TimICdbk, veksFixedCodebookSearch_G729D_16s,
       veksFixedCodebookSearch_G729D_16s(pSrcFixed.m_16s, pSrcImpulseResponse.m_16s, pDstFixedVector.m_16s,
                                         pDstFltFixedVector.m_16s, &pDstSign, &dstIndex))
