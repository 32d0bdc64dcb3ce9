// Searches of the adaptive and of the multi-pulse codebook of G.723.1.
#include "vkc.h"

namespace {

vkVector pSrcAdptTarget, pSrcImpulseResponse, pSrcPrevExcitation, pSrcPrevError, pSrcResidualTraget, pDstFixedVector;
krStepIterator<int> subFrame;
krEnumIterator<VekSpchBitRate> mode;
Vek16s pResultCloseLag, pResultAdptGainIndex, pResultGrid, pResultTrainDirac, pResultAmpIndex, pResultAmplitude;
Vek32s pResultPosition;

constexpr int subframeLength = 60;
constexpr int excitation = 148;
constexpr int zones = 5;
constexpr Vek16s valBaseDelay = 40;
constexpr Vek16s sineDtct = 0;

class TimAdap2 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        // The multi-pulse codebook is that of one rate.
        const bool multiPulse = m_func.contains("veksMPMLQFixedCodebookSearch_G723");
        vkcRebuild(subFrame, "subFrame").set(0, 3, 1, '+');
        vkcRebuild(mode, "BitRate").resetValidation();
        for (const VekSpchBitRate rate : {VEK_SPCHBR_6300, VEK_SPCHBR_5300}) {
            if (!multiPulse || rate == VEK_SPCHBR_6300) {
                mode.add(rate);
            }
            mode.addValidation(rate);
        }
        // The names tell no element type.
        initVectors({&pSrcAdptTarget, &pSrcImpulseResponse, &pSrcPrevExcitation, &pSrcResidualTraget, &pDstFixedVector},
                    vk16s);
        initVectors({&pSrcPrevError}, vk32s);
        return walk({&subFrame, &mode});
    }

    bool makeData() override {
        if (!pSrcAdptTarget.createVector(subframeLength, setRand, -2048, 2048) ||
            !pSrcImpulseResponse.createVector(subframeLength, setRand, -4096, 4096) ||
            !pSrcPrevExcitation.createVector(excitation, setRand, -4096, 4096) ||
            !pSrcPrevError.createVector(zones, setRand, 4, 300) ||
            !pSrcResidualTraget.createVector(subframeLength, setRand, -2048, 2048) ||
            !pDstFixedVector.createVector(subframeLength, setZero, 0, 0)) {
            return false;
        }
        setData();
        return true;
    }

    double getDivisor() override { return subframeLength; }
    // The response begins with its largest value.
    virtual void setData() { pSrcImpulseResponse.m_16s[0] = 8192; }
};

} // namespace

VK_REG(TimAdap2, veksMPMLQFixedCodebookSearch_G723,
       veksMPMLQFixedCodebookSearch_G723(valBaseDelay, pSrcImpulseResponse.m_16s, pSrcResidualTraget.m_16s,
                                         pDstFixedVector.m_16s, &pResultGrid, &pResultTrainDirac, &pResultAmpIndex,
                                         &pResultAmplitude, &pResultPosition, static_cast<Vek16s>(subFrame.value())))
VK_REG(TimAdap2, veksAdaptiveCodebookSearch_G723,
       veksAdaptiveCodebookSearch_G723(valBaseDelay, pSrcAdptTarget.m_16s, pSrcImpulseResponse.m_16s,
                                       pSrcPrevExcitation.m_16s, pSrcPrevError.m_32s, &pResultCloseLag,
                                       &pResultAdptGainIndex, static_cast<Vek16s>(subFrame.value()), sineDtct,
                                       mode.value()))
