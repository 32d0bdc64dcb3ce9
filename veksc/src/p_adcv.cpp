// Adaptive codebook of GSM AMR: closed-loop search and decoding, by rate and subframe.
#include "vkc.h"

namespace {

vkVector pSrcAdptTarget, pSrcImpulseResponse, pSrcOpenLoopLag, pSrcDstExcitation, pDstAdptVector, pTmp;
krStepIterator<int> subFrame;
krEnumIterator<VekSpchBitRate> mode;
krStepIterator<int> bfi;
Vek16s pValResultPrevIntPitchLag, pResultIntPitchLag, pResultFracPitchLag, pResultAdptIndex;
int dataSize;

constexpr int subframeLength = 40;
constexpr int excitation = 194;
constexpr Vek16s formerLag = 60;
constexpr Vek16s valAdptIndex = 9;
constexpr Vek16s inBgNoise = 0;
constexpr Vek16s voicedHangover = 0;

class TimAdcv : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(subFrame, "SubFrame").set(0, 3, 1, '+');
        vkcModes(vkcRebuild(mode, "BitRate"), vkcRatesGSMAMR);
        vkcRebuild(bfi, "Bfi").set(m_func.contains("Decode") ? 0 : 1, 1, 1, '+');
        initVectors(
            {&pSrcAdptTarget, &pSrcImpulseResponse, &pSrcOpenLoopLag, &pSrcDstExcitation, &pDstAdptVector, &pTmp},
            vkArg::src);
        return walk({&bfi, &mode, &subFrame});
    }

    bool makeData() override {
        dataSize = excitation * vkVector::item(m_func);
        return pSrcAdptTarget.createVector(subframeLength, setRand, -2048, 2048) &&
               pSrcImpulseResponse.createVector(subframeLength, setRand, -2048, 2048) &&
               pSrcOpenLoopLag.createVector(2, setRand, -2048, 2048) &&
               pSrcDstExcitation.createVector(excitation, setZero, 0, 0) &&
               pDstAdptVector.createVector(subframeLength, setZero, 0, 0) &&
               pTmp.createVector(excitation, setRand, -2048, 2048);
    }

    double getDivisor() override { return subframeLength; }
};

// The lag of the subframe before is rewritten with the excitation.
void restore() {
    vkcRestore(pSrcDstExcitation.m_16s, pTmp.m_16s, dataSize);
    pValResultPrevIntPitchLag = formerLag;
}

} // namespace

VK_REG_I(TimAdcv, veksAdaptiveCodebookDecode_GSMAMR_16s,
         veksAdaptiveCodebookDecode_GSMAMR_16s(valAdptIndex, &pValResultPrevIntPitchLag, &pResultIntPitchLag,
                                               pSrcDstExcitation.m_16s, pDstAdptVector.m_16s,
                                               static_cast<Vek16s>(subFrame.value()), static_cast<Vek16s>(bfi.value()),
                                               inBgNoise, voicedHangover, mode.value()),
         restore())
VK_REG_I(TimAdcv, veksAdaptiveCodebookSearch_GSMAMR_16s,
         veksAdaptiveCodebookSearch_GSMAMR_16s(pSrcAdptTarget.m_16s, pSrcImpulseResponse.m_16s, pSrcOpenLoopLag.m_16s,
                                               &pValResultPrevIntPitchLag, pSrcDstExcitation.m_16s,
                                               &pResultFracPitchLag, &pResultAdptIndex, pDstAdptVector.m_16s,
                                               static_cast<Vek16s>(subFrame.value()), mode.value()),
         restore())
