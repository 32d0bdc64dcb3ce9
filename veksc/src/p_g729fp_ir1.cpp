// Hybrid window of the backward prediction of G.729 Annex E, floating.
#include "vkc.h"

namespace {

vkVector pSrcSynthSpeech;
vkVector pDstInvAutoCorr;
krStepIterator<int> len;
vkcGrid grid;
Vek8u* pMem;

class Timg729fpWinH : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return 2545; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool Timg729fpWinH::canStart() {
    vkcRebuild(len, "len").setList({145});
    grid.begin({&len});
    pSrcSynthSpeech.init(m_func, vkArg::src);
    pDstInvAutoCorr.init(m_func, vkArg::dst);
    return true;
}

bool Timg729fpWinH::makeData() {
    return vkcMakeState(pMem, veksWinHybridGetStateSize_G729E_32f, veksWinHybridInit_G729E_32f) &&
           pSrcSynthSpeech.createVector(grid.room(len), setOne, 0, 0) &&
           pDstInvAutoCorr.createVector(31, setZero, 0, 0);
}

void Timg729fpWinH::flushData() {
    pDstInvAutoCorr.deleteVector();
    pSrcSynthSpeech.deleteVector();
    veksFree(pMem);
    pMem = nullptr;
}

} // namespace

VK_REG(Timg729fpWinH, veksWinHybrid_G729E_32f,
       veksWinHybrid_G729E_32f(pSrcSynthSpeech.m_32f, pDstInvAutoCorr.m_32f, pMem))
