// Open-loop pitch of AMR and what its closed-loop searches start from.
#include "vkc.h"

namespace {

vkVector pSrcSpch, pSrcWgtLpc1, pSrcWgtLpc2, pSrcQLpc, pSrcSynFltState, pSrcWgtFltState, pDstImpulseResponse,
    pDstLpResidual, pDstAdptTarget, pSrcDstPrevPitchLag, pSrcDstPrevWgtSpch, pDstOpenLoopLag, pDstOpenLoopGain, pTmp_1,
    pTmp_2;
krEnumIterator<VekSpchBitRate> mode;
Vek16s pValResultPrevMidPitchLag, pValResultVvalue, pValResultToneFlag, pResultMaxHpCorr;
Vek32s pResultMaxCorr, pResultWgtEnergy;
int dataSize_1, dataSize_2;

constexpr int history = 10;
constexpr int lpc = 44;
constexpr int weighted = 303;
constexpr int results = 60;

class TimOlps : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcModes(vkcRebuild(mode, "BitRate"), vkcRatesGSMAMR);
        initVectors({&pSrcSpch, &pSrcWgtLpc1, &pSrcWgtLpc2, &pSrcQLpc, &pSrcSynFltState, &pSrcWgtFltState,
                     &pDstImpulseResponse, &pDstLpResidual, &pDstAdptTarget, &pSrcDstPrevPitchLag, &pSrcDstPrevWgtSpch,
                     &pDstOpenLoopLag, &pDstOpenLoopGain, &pTmp_1, &pTmp_2},
                    vkArg::src);
        return walk({&mode});
    }

    bool makeData() override {
        dataSize_1 = 5 * vkVector::item(m_func);
        dataSize_2 = weighted * vkVector::item(m_func);
        pValResultPrevMidPitchLag = 40;
        pValResultVvalue = 0;
        pValResultToneFlag = 0;
        if (!vkcCreate({&pSrcWgtLpc1, &pSrcWgtLpc2, &pSrcQLpc}, lpc, setZero, 0, 0) ||
            !vkcCreate({&pDstImpulseResponse, &pDstLpResidual, &pDstAdptTarget, &pDstOpenLoopLag, &pDstOpenLoopGain},
                       results, setZero, 0, 0) ||
            !pSrcSpch.createVector(170, setRand, -2048, 2048) ||
            !pSrcSynFltState.createVector(history, setRand, -2048, 2048) ||
            !pSrcWgtFltState.createVector(history, setRand, -2048, 2048) ||
            !pSrcDstPrevPitchLag.createVector(5, setZero, 0, 0) ||
            !pSrcDstPrevWgtSpch.createVector(weighted, setZero, 0, 0) || !pTmp_1.createVector(5, setValue, 5, 0) ||
            !pTmp_2.createVector(weighted, setRand, -2048, 2048)) {
            return false;
        }
        setData_Wgt();
        setData_QLpc();
        return true;
    }

    double getDivisor() override { return weighted + results; }

    virtual void setData_Wgt() {
        static constexpr Vek16s numerators[lpc] = {
            4096, 5085,  7738, -4614, 4425, -2660, 4499, -2928, 3789, 1384, 6439, //
            4096, -3850, 905,  512,   -380, 221,   -160, 95,    -61,  33,   -18,  //
            4096, -4620, 2310, -616,  205,  -144,  103,  -72,   41,   -21,  10,   //
            4096, -2053, 1010, -482,  251,  -133,  62,   -31,   20,   -10,  5};
        static constexpr Vek16s denominators[lpc] = {4096, -2458, 922, -221, 66,  -33, 20,  -12, 7,  -4, 2, //
                                                     4096, -2400, 360, 127,  -61, 23,  -11, 4,   -2, 1,  0, //
                                                     4096, -2880, 920, -153, 33,  -15, 7,   -3,  1,  0,  0, //
                                                     4096, -1280, 402, -120, 40,  -14, 4,   -1,  1,  0,  0};
        for (int i = 0; i < lpc; ++i) {
            pSrcWgtLpc1.m_16s[i] = numerators[i];
            pSrcWgtLpc2.m_16s[i] = denominators[i];
        }
    }

    virtual void setData_QLpc() {
        static constexpr Vek16s predictors[lpc] = {4096, -4096, 1638, -410, 164,  -123, 82,   -61, 41,  -20, 10,  //
                                                   4096, -4015, 1004, 553,  -430, 246,  -184, 102, -61, 41,  -20, //
                                                   4096, -4792, 2560, -696, 225,  -164, 123,  -82, 41,  -20, 10,  //
                                                   4096, -2130, 1126, -532, 287,  -143, 72,   -41, 20,  -10, 5};
        for (int i = 0; i < lpc; ++i) {
            pSrcQLpc.m_16s[i] = predictors[i];
        }
    }
};

void restore() {
    vkcRestore(pSrcDstPrevPitchLag.m_16s, pTmp_1.m_16s, dataSize_1);
    vkcRestore(pSrcDstPrevWgtSpch.m_16s, pTmp_2.m_16s, dataSize_2);
}

} // namespace

VK_REG(TimOlps, veksImpulseResponseTarget_GSMAMR_16s,
       veksImpulseResponseTarget_GSMAMR_16s(pSrcSpch.m_16s + history, pSrcWgtLpc1.m_16s, pSrcWgtLpc2.m_16s,
                                            pSrcQLpc.m_16s, pSrcSynFltState.m_16s, pSrcWgtFltState.m_16s,
                                            pDstImpulseResponse.m_16s, pDstLpResidual.m_16s, pDstAdptTarget.m_16s))
VK_REG_I(TimOlps, veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s,
         veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s(pSrcWgtLpc1.m_16s, pSrcWgtLpc2.m_16s, pSrcSpch.m_16s + history,
                                                      &pValResultPrevMidPitchLag, &pValResultVvalue,
                                                      pSrcDstPrevPitchLag.m_16s, pSrcDstPrevWgtSpch.m_16s,
                                                      &pResultMaxCorr, &pResultWgtEnergy, pDstOpenLoopLag.m_16s,
                                                      pDstOpenLoopGain.m_16s, mode.value()),
         restore())
VK_REG_I(TimOlps, veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s,
         veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(pSrcWgtLpc1.m_16s, pSrcWgtLpc2.m_16s, pSrcSpch.m_16s + history,
                                                   &pValResultToneFlag, &pValResultPrevMidPitchLag, &pValResultVvalue,
                                                   pSrcDstPrevPitchLag.m_16s, pSrcDstPrevWgtSpch.m_16s,
                                                   &pResultMaxHpCorr, pDstOpenLoopLag.m_16s, pDstOpenLoopGain.m_16s,
                                                   mode.value()),
         restore())
VK_REG_I(TimOlps, veksOpenLoopPitchSearchNonDTX_GSMAMR_16s,
         veksOpenLoopPitchSearchNonDTX_GSMAMR_16s(pSrcWgtLpc1.m_16s, pSrcWgtLpc2.m_16s, pSrcSpch.m_16s + history,
                                                  &pValResultPrevMidPitchLag, &pValResultVvalue,
                                                  pSrcDstPrevPitchLag.m_16s, pSrcDstPrevWgtSpch.m_16s,
                                                  pDstOpenLoopLag.m_16s, pDstOpenLoopGain.m_16s, mode.value()),
         restore())
