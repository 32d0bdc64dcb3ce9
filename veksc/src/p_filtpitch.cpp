// Pitch post-filter of G.723.1.
#include "vkc.h"

namespace {

vkVector pSrcResidual;
krStepIterator<int> subFrame;
krEnumIterator<VekSpchBitRate> mode;
vkcGrid grid;
Vek16s pResultDelay;
Vek16s pResultPitchGain;
Vek16s pResultScalingGain;

constexpr int history = 145;
constexpr Vek16s valBaseDelay = 60;

class TimPPFilt : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return 40; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimPPFilt::canStart() {
    vkcRebuild(subFrame, "SubFrame").set(0, 3, 1, '+');
    vkcRebuild(mode, "BitRate").resetValidation();
    for (const VekSpchBitRate rate : {VEK_SPCHBR_5300, VEK_SPCHBR_6300}) {
        mode.add(rate);
        mode.addValidation(rate);
    }
    grid.begin({&subFrame, &mode});
    pSrcResidual.init(m_func, vkArg::src);
    return true;
}

bool TimPPFilt::makeData() {
    return pSrcResidual.createVector(history + 240, setRand, -2048, 2048);
}

void TimPPFilt::flushData() {
    for (vkVector* vector : {&pSrcResidual}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimPPFilt, veksPitchPostFilter_G723_16s,
       veksPitchPostFilter_G723_16s(valBaseDelay, pSrcResidual.m_16s + history, &pResultDelay, &pResultPitchGain,
                                    &pResultScalingGain, static_cast<Vek16s>(subFrame.value()), mode.value()))
