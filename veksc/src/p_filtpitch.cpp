// Pitch post-filter of G.723.1.
#include "vkc.h"

namespace {

vkVector pSrcResidual;
krStepIterator<int> subFrame;
krEnumIterator<VekSpchBitRate> mode;
Vek16s pResultDelay, pResultPitchGain, pResultScalingGain;

constexpr int history = 145;
constexpr Vek16s valBaseDelay = 60;

class TimPPFilt : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(subFrame, "SubFrame").set(0, 3, 1, '+');
        vkcRebuild(mode, "BitRate").resetValidation();
        vkcModes(mode, {VEK_SPCHBR_5300, VEK_SPCHBR_6300});
        initVectors({&pSrcResidual}, vkArg::src);
        return walk({&subFrame, &mode});
    }

    bool makeData() override { return pSrcResidual.createVector(history + 240, setRand, -2048, 2048); }
    double getDivisor() override { return 40; }
};

} // namespace

VK_REG(TimPPFilt, veksPitchPostFilter_G723_16s,
       veksPitchPostFilter_G723_16s(valBaseDelay, pSrcResidual.m_16s + history, &pResultDelay, &pResultPitchGain,
                                    &pResultScalingGain, static_cast<Vek16s>(subFrame.value()), mode.value()))
