// Search of the algebraic codebook of GSM AMR, by rate and subframe.
#include "vkc.h"

namespace {

vkVector pSrcFixedTarget, pSrcLtpResidual, pSrcDstImpulseResponse, pDstFixedVector, pDstFltFixedVector, pDstEncPosSign,
    pTmp;
krStepIterator<int> subFrame;
krEnumIterator<VekSpchBitRate> mode;
int dataSize;

constexpr int subframeLength = 40;
constexpr int responseLength = 80;
// Elements before the response that the call takes.
constexpr int before = 40;
constexpr Vek16s valIntPitchLag = 30;
constexpr Vek16s valBoundQAdptGain = 8192;

class TimAfc : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(subFrame, "SubFrame").set(0, 3, 1, '+');
        vkcModes(vkcRebuild(mode, "BitRate"), vkcRatesGSMAMR, vkcSilence);
        initVectors({&pSrcFixedTarget, &pSrcLtpResidual, &pSrcDstImpulseResponse, &pDstFixedVector, &pDstFltFixedVector,
                     &pDstEncPosSign, &pTmp},
                    vkArg::src);
        return walk({&mode, &subFrame});
    }

    bool makeData() override {
        dataSize = responseLength * vkVector::item(m_func);
        if (!pSrcFixedTarget.createVector(subframeLength, setRand, -2048, 2048) ||
            !pSrcLtpResidual.createVector(subframeLength, setRand, -2048, 2048) ||
            !pSrcDstImpulseResponse.createVector(responseLength, setZero, 0, 0) ||
            !pDstFixedVector.createVector(subframeLength, setZero, 0, 0) ||
            !pDstFltFixedVector.createVector(subframeLength, setZero, 0, 0) ||
            !pDstEncPosSign.createVector(10, setZero, 0, 0) ||
            !pTmp.createVector(responseLength, setRand, -2048, 2048)) {
            return false;
        }
        setDataImpulse();
        return true;
    }

    double getDivisor() override { return subframeLength; }

    // What each call finds: the response is restored from here.
    virtual void setDataImpulse() {
        Vek16s* const response = pTmp.m_16s + before;
        veksZero_16s(response, responseLength - before);
        response[0] = 4096;
    }
};

} // namespace

VK_REG_I(TimAfc, veksAlgebraicCodebookSearch_GSMAMR_16s,
         veksAlgebraicCodebookSearch_GSMAMR_16s(valIntPitchLag, valBoundQAdptGain, pSrcFixedTarget.m_16s,
                                                pSrcLtpResidual.m_16s, pSrcDstImpulseResponse.m_16s + before,
                                                pDstFixedVector.m_16s, pDstFltFixedVector.m_16s, pDstEncPosSign.m_16s,
                                                static_cast<Vek16s>(subFrame.value()), mode.value()),
         vkcRestore(pSrcDstImpulseResponse.m_16s, pTmp.m_16s, dataSize))
