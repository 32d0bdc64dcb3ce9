// Hybrid window of the backward prediction of G.729 Annex E.
#include "vkc.h"

namespace {

vkVector pSrcSynthSpeech;
vkVector pDstInvAutoCorr;
krStepIterator<int> lenght;
vkcGrid grid;
Vek8u* pMem;

class TimIHW : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return lenght.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimIHW::canStart() {
    vkcRebuild(lenght, "lenght").setList({145});
    grid.begin({&lenght});
    pSrcSynthSpeech.init(m_func, vkArg::src);
    pDstInvAutoCorr.init(m_func, vkArg::dst);
    return true;
}

bool TimIHW::makeData() {
    return vkcMakeState(pMem, veksWinHybridGetStateSize_G729E_16s, veksWinHybridInit_G729E_16s) &&
           pSrcSynthSpeech.createVector(grid.room(lenght), setRand, -4096, 4096) &&
           pDstInvAutoCorr.createVector(31, setZero, 0, 0);
}

void TimIHW::flushData() {
    pDstInvAutoCorr.deleteVector();
    pSrcSynthSpeech.deleteVector();
    veksFree(pMem);
    pMem = nullptr;
}

} // namespace

VK_REG(TimIHW, veksWinHybrid_G729E_16s32s,
       veksWinHybrid_G729E_16s32s(pSrcSynthSpeech.m_16s, pDstInvAutoCorr.m_32s, pMem))
