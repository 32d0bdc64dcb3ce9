// Hybrid window of the backward prediction of G.729 Annex E, floating.
#include "vkc.h"

namespace {

vkVector pSrcSynthSpeech, pDstInvAutoCorr;
krStepIterator<int> len;
Vek8u* pMem;

class Timg729fpWinH : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "len").setList({145});
        initVectors({&pSrcSynthSpeech}, vkArg::src);
        initVectors({&pDstInvAutoCorr}, vkArg::dst);
        return walk({&len});
    }

    bool makeData() override {
        return initState(pMem, veksWinHybridGetStateSize_G729E_32f, veksWinHybridInit_G729E_32f) &&
               pSrcSynthSpeech.createVector(m_grid.room(len), setOne, 0, 0) &&
               pDstInvAutoCorr.createVector(31, setZero, 0, 0);
    }

    double getDivisor() override { return 2545; }
};

} // namespace

VK_REG(Timg729fpWinH, veksWinHybrid_G729E_32f,
       veksWinHybrid_G729E_32f(pSrcSynthSpeech.m_32f, pDstInvAutoCorr.m_32f, pMem))
