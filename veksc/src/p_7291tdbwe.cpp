// Time-domain band extension of G.729.1: envelopes, their quantiser, and the synthesis of the upper band.
#include "vkc.h"

namespace {

vkVector pSrcDst, pCdbkIndices, pIntPitchLag, pFracPitchLag, pLtpPower, pFixPower, pDst, pSrcTimeEnvelope, pMem, pSrc,
    pSrcFreqEnvelope, pFilterCoeffs, pDstFreqEnvelope, pDstTimeEnvelope;
krStepIterator<int> len, nls;
Vek16s pGain, pNorm;
Vek16s* pMemory;

// Bytes of pSrc before the frame that shaping by the frequency envelope looks back at.
constexpr int history = 96;

class Tim7291TDBWE : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "len");
        vkcFix(nls, 0);
        if (m_quant) {
            len.setList({6});
        } else if (m_excitation || m_compress || m_shapeFreq) {
            len.setList({160});
        } else if (m_shapeTime) {
            len.setList({80});
        } else if (m_envelopFreq) {
            len.setList({12});
        } else {
            len.set(8, 16, 8, '+');
            vkcRebuild(nls, "nls").set(0, 12, 12, '+');
        }
        initVectors({&pSrcDst, &pCdbkIndices, &pIntPitchLag, &pFracPitchLag, &pDst, &pSrcTimeEnvelope, &pMem, &pSrc,
                     &pSrcFreqEnvelope, &pFilterCoeffs, &pDstFreqEnvelope, &pDstTimeEnvelope},
                    vkArg::src);
        // Energies of a subframe take 32 bits.
        initVectors({&pLtpPower, &pFixPower}, vk32s);
        return walk({&len, &nls});
    }

    bool makeData() override {
        if (m_quant) {
            return pSrcDst.createVector(28, setRand, -2048, 2048) && pCdbkIndices.createVector(6, setZero, 0, 0);
        }
        if (m_excitation) {
            return pIntPitchLag.createVector(4, setRand, 0, 144) && pFracPitchLag.createVector(4, setRand, 0, 1) &&
                   pLtpPower.createVector(4, setRand, -2048, 2048) && pFixPower.createVector(4, setRand, -2048, 2048) &&
                   pDst.createVector(m_grid.room(len), setZero, 0, 0) &&
                   initState(pMemory, veksGenerateExcitationGetStateSize_G7291_16s,
                             veksGenerateExcitationInit_G7291_16s);
        }
        if (m_compress) {
            return pSrcTimeEnvelope.createVector(28, setRand, -1024, 1024) &&
                   pSrcDst.createVector(m_grid.room(len), setRand, -1024, 1024) && pMem.createVector(2, setZero, 0, 0);
        }
        if (m_shapeFreq) {
            return pSrc.createVector(208, setRand, -512, 512) &&
                   pSrcFreqEnvelope.createVector(12, setRand, -1024, 1024) &&
                   pDst.createVector(m_grid.room(len), setZero, 0, 0) &&
                   pFilterCoeffs.createVector(33, setZero, 0, 0) && pMem.createVector(32, setZero, 0, 0);
        }
        if (m_shapeTime) {
            pGain = 0;
            pNorm = 0;
            return pSrc.createVector(80, setRand, -1024, 1024) &&
                   pSrcTimeEnvelope.createVector(8, setRand, -1024, 1024) &&
                   pDst.createVector(m_grid.room(len), setZero, 0, 0);
        }
        if (m_envelopFreq) {
            return pSrc.createVector(128, setRand, -2048, 2048) &&
                   pDstFreqEnvelope.createVector(m_grid.room(len), setZero, 0, 0);
        }
        // Each value of the envelope is of ten samples.
        return pSrc.createVector(10 * m_grid.room(len), setRand, -2048, 2048) &&
               pDstTimeEnvelope.createVector(m_grid.room(len), setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }

private:
    const bool m_quant = m_func.contains("veksQuantParam_G7291_16s");
    const bool m_excitation = m_func.contains("veksGenerateExcitation_G7291_16s");
    const bool m_compress = m_func.contains("veksCompressEnvelopTime_G7291_16s");
    const bool m_shapeFreq = m_func.contains("veksShapeEnvelopFrequency_G7291_16s");
    const bool m_shapeTime = m_func.contains("veksShapeEnvelopTime_G7291_16s");
    const bool m_envelopFreq = m_func.contains("veksEnvelopFrequency_G7291_16s");
};

} // namespace

VK_REG(Tim7291TDBWE, veksQuantParam_G7291_16s, veksQuantParam_G7291_16s(pSrcDst.m_16s, pCdbkIndices.m_16s))
VK_REG(Tim7291TDBWE, veksGenerateExcitation_G7291_16s,
       veksGenerateExcitation_G7291_16s(pIntPitchLag.m_16s, pFracPitchLag.m_16s, pLtpPower.m_32s, pFixPower.m_32s,
                                        pDst.m_16s, pMemory))
VK_REG(Tim7291TDBWE, veksCompressEnvelopTime_G7291_16s,
       veksCompressEnvelopTime_G7291_16s(pSrcTimeEnvelope.m_16s, pSrcDst.m_16s, pMem.m_16s))
VK_REG(Tim7291TDBWE, veksShapeEnvelopFrequency_G7291_16s,
       veksShapeEnvelopFrequency_G7291_16s(pSrc.m_16s + history / sizeof(Vek16s), pSrcFreqEnvelope.m_16s, pDst.m_16s,
                                           pFilterCoeffs.m_16s, pMem.m_16s))
VK_REG(Tim7291TDBWE, veksShapeEnvelopTime_G7291_16s,
       veksShapeEnvelopTime_G7291_16s(pSrc.m_16s, pSrcTimeEnvelope.m_16s, &pGain, &pNorm, pDst.m_16s))
VK_REG(Tim7291TDBWE, veksEnvelopFrequency_G7291_16s, veksEnvelopFrequency_G7291_16s(pSrc.m_16s, pDstFreqEnvelope.m_16s))
VK_REG(Tim7291TDBWE, veksEnvelopTime_G7291_16s,
       veksEnvelopTime_G7291_16s(pSrc.m_16s, nls.value(), pDstTimeEnvelope.m_16s, len.value()))
