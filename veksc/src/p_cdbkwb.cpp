// Algebraic and adaptive codebooks of the wide-band codec, by rate.
#include "vkc.h"

namespace {

vkVector pSrcIdxs, pDstFixedCodevec, pSrcFixedTarget, pSrcLtpResidual, pSrcDstImpulseResponse, pTmp, pDstFixedVector,
    pDstFltFixedVector, pDstIndex, pSrcDstExcitation, pResultPrevIntPitchLagBounds, pSrcAdptTarget, pSrcImpulseResponse,
    pSrcOpenLoopLag, pPitchLag, pPitchLagBounds, pAdptIndex, stateMemory;
krStepIterator<int> len, bfi, unusableFrame, Subframe;
krEnumIterator<VekSpchBitRate> mode;
Vek16s pFracPitchLag, pResultIntPitchLag;
VekAdaptiveCodebookState_AMRWB* pState;
int dataSize;

constexpr int words = 8;
constexpr int excitation = 505;
constexpr int past = 248;
// Fits the narrowest field.
constexpr int valAdptIndex = 19;

class TimACSWB : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").setList({64});
        vkcModes(vkcRebuild(mode, "BitRate"), vkcRatesAMRWB, vkcSilence);
        initVectors({&pSrcIdxs, &pDstFixedCodevec, &pSrcFixedTarget, &pSrcLtpResidual, &pSrcDstImpulseResponse, &pTmp,
                     &pDstFixedVector, &pDstFltFixedVector},
                    vkArg::src);
        // The eight words of the higher rates in four elements.
        initVectors({&pDstIndex}, vk32s);
        return walk({&len, &mode});
    }

    bool makeData() override {
        if (!pSrcIdxs.createVector(words, setRand, -32768, 32767) ||
            !vkcCreate({&pDstFixedCodevec, &pSrcFixedTarget, &pSrcLtpResidual, &pSrcDstImpulseResponse, &pTmp,
                        &pDstFixedVector, &pDstFltFixedVector},
                       m_grid.room(len), setZero, 0, 0) ||
            !pDstIndex.createVector(4, setZero, 0, 0)) {
            return false;
        }
        dataSize = pTmp.size();
        setData();
        return true;
    }

    double getDivisor() override { return len.value(); }

    // A target and a residual without order, and a decaying response.
    virtual void setData() {
        for (int i = 0; i < len.value(); ++i) {
            pSrcFixedTarget.m_16s[i] = static_cast<Vek16s>(i * 7919 % 2001 - 1000);
            pSrcLtpResidual.m_16s[i] = static_cast<Vek16s>(i * 6101 % 1601 - 800);
            pTmp.m_16s[i] = static_cast<Vek16s>(i == 0 ? 4096 : (i * 4999 % 4001 - 2000) * 5 / (5 + i));
        }
    }
};

class TimADCSWB : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        const bool decode = m_func.contains("Decode");
        vkcRebuild(len, "Lenght").setList({64});
        vkcFix(bfi, 0);
        vkcFix(unusableFrame, 0);
        if (decode) {
            vkcRebuild(bfi, "bfi").set(0, 1, 1, '+');
            vkcRebuild(unusableFrame, "unusableFrame").set(0, 1, 1, '+');
        }
        vkcRebuild(Subframe, "Subframe").set(0, 3, 1, '+');
        vkcModes(vkcRebuild(mode, "BitRate"), vkcRatesAMRWB, vkcSilence);
        initVectors({&pSrcDstExcitation, &pResultPrevIntPitchLagBounds, &pSrcAdptTarget, &pSrcImpulseResponse,
                     &pSrcOpenLoopLag, &pPitchLag, &pPitchLagBounds, &pAdptIndex},
                    vkArg::src);
        initVectors({&stateMemory}, vk32s);
        return walk({&len, &bfi, &unusableFrame, &Subframe, &mode});
    }

    bool makeData() override {
        return pSrcDstExcitation.createVector(excitation, setRand, -4096, 4096) &&
               pResultPrevIntPitchLagBounds.createVector(2, setZero, 0, 0) &&
               pSrcAdptTarget.createVector(m_grid.room(len), setRand, -4096, 4096) &&
               pSrcImpulseResponse.createVector(m_grid.room(len), setRand, -4096, 4096) &&
               pSrcOpenLoopLag.createVector(2, setRand, 17, 115) && pPitchLag.createVector(2, setZero, 0, 0) &&
               pPitchLagBounds.createVector(2, setRand, 17, 115) && pAdptIndex.createVector(1, setZero, 0, 0) &&
               setState();
    }

    double getDivisor() override { return len.value(); }

    virtual bool setState() {
        int size = 0;
        if (!vkcDone(veksAdaptiveCodebookDecodeGetSize_AMRWB_16s(&size)) ||
            !stateMemory.createVector((size + 3) / 4, setZero, 0, 0)) {
            return false;
        }
        pState = reinterpret_cast<VekAdaptiveCodebookState_AMRWB*>(stateMemory.m_32s);
        return vkcDone(veksAdaptiveCodebookDecodeInit_AMRWB_16s(pState));
    }
};

} // namespace

VK_REG(TimACSWB, veksAlgebraicCodebookDecode_AMRWB_16s,
       veksAlgebraicCodebookDecode_AMRWB_16s(pSrcIdxs.m_16s, pDstFixedCodevec.m_16s, mode.value()))
VK_REG_I(TimACSWB, veksAlgebraicCodebookSearch_AMRWB_16s,
         veksAlgebraicCodebookSearch_AMRWB_16s(pSrcFixedTarget.m_16s, pSrcLtpResidual.m_16s,
                                               pSrcDstImpulseResponse.m_16s, pDstFixedVector.m_16s,
                                               pDstFltFixedVector.m_16s, mode.value(),
                                               reinterpret_cast<Vek16s*>(pDstIndex.m_32s)),
         vkcRestore(pSrcDstImpulseResponse.m_16s, pTmp.m_16s, dataSize))
VK_REG(TimADCSWB, veksAdaptiveCodebookDecode_AMRWB_16s,
       veksAdaptiveCodebookDecode_AMRWB_16s(valAdptIndex, &pFracPitchLag, pSrcDstExcitation.m_16s + past,
                                            &pResultIntPitchLag, pResultPrevIntPitchLagBounds.m_16s, Subframe.value(),
                                            bfi.value(), unusableFrame.value(), mode.value(), pState))
VK_REG(TimADCSWB, veksAdaptiveCodebookSearch_AMRWB_16s,
       veksAdaptiveCodebookSearch_AMRWB_16s(pSrcAdptTarget.m_16s, pSrcImpulseResponse.m_16s, pSrcOpenLoopLag.m_16s,
                                            pPitchLag.m_16s, pPitchLagBounds.m_16s, pSrcDstExcitation.m_16s + past,
                                            &pFracPitchLag, pAdptIndex.m_16s, Subframe.value(), mode.value()))
