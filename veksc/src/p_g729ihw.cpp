// Hybrid window of the backward prediction of G.729 Annex E.
#include "vkc.h"

namespace {

vkVector pSrcSynthSpeech, pDstInvAutoCorr;
krStepIterator<int> lenght;
Vek8u* pMem;

class TimIHW : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({145});
        initVectors({&pSrcSynthSpeech}, vkArg::src);
        initVectors({&pDstInvAutoCorr}, vkArg::dst);
        return walk({&lenght});
    }

    bool makeData() override {
        return initState(pMem, veksWinHybridGetStateSize_G729E_16s, veksWinHybridInit_G729E_16s) &&
               pSrcSynthSpeech.createVector(m_grid.room(lenght), setRand, -4096, 4096) &&
               pDstInvAutoCorr.createVector(31, setZero, 0, 0);
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG(TimIHW, veksWinHybrid_G729E_16s32s,
       veksWinHybrid_G729E_16s32s(pSrcSynthSpeech.m_16s, pDstInvAutoCorr.m_32s, pMem))
