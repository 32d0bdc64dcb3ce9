// Speech coding library of Vek: DTX, open-loop pitch, LSP quantiser and voice activity of GSM AMR.
//
// All functions: vekStsNullPtrErr for a null pointer, vekStsBitRateErr for a rate that AMR does not have, before
// anything is written. A frame has 160 samples, a subframe 40; spectra have 10 elements. `mode` is one of the eight
// rates from VEK_SPCHBR_4750 to VEK_SPCHBR_12200, and where stated VEK_SPCHBR_DTX.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Enters a frame into the histories of the last eight: the spectrum (LSF in the decoder, LSP in the encoder) and the
// logarithm to the base 2 of the mean energy of the 160 samples, Q10 in the decoder, Q9 in the encoder.
// *pValResultUpdateIndex, 0..7 (else vekStsRangeErr), is the place last written, 7 at first; the next one, in a ring,
// is written. The spectra have 8 x 10 elements, the energies 8. TS 26.092 5, 26.093.
VEK_API VekStatus veksDecDTXBuffer_GSMAMR_16s(const Vek16s* pSrcSpch, const Vek16s* pSrcLsf,
                                              Vek16s* pValResultUpdateIndex, Vek16s* pSrcDstLsfBuffer,
                                              Vek16s* pSrcDstLogEnergyBuffer);
VEK_API VekStatus veksEncDTXBuffer_GSMAMR_16s(const Vek16s* pSrcSpch, const Vek16s* pSrcLsp,
                                              Vek16s* pValResultUpdateIndex, Vek16s* pSrcDstLspBuffer,
                                              Vek16s* pSrcDstLogEnergyBuffer);

// Decides by a frame's voice activity (vadFlag, 0 is silence) whether it is one of silence: *pValResultUsedMode becomes
// VEK_SPCHBR_DTX then and is left alone else. *pResultSidFlag is 1 when the hangover is over, so that a new description
// of the noise may be made. The two counters are the handler's memory, 0 and 32767 at first: frames of hangover left
// (not negative, else vekStsRangeErr), frames since the decoder has last had one. TS 26.093 5.1.
VEK_API VekStatus veksEncDTXHandler_GSMAMR_16s(Vek16s* pValResultHangOverCount, Vek16s* pValResultDtxElapseCount,
                                               VekSpchBitRate* pValResultUsedMode, Vek16s* pResultSidFlag,
                                               Vek16s vadFlag);

// The frame of silence: mean energy (6 bits, *pValResultLogEnergyIndex) and mean spectrum (*pValResultDtxLsfRefIndex,
// 0..7, the start residual; pSrcDstDtxQLsfIndex, the three parts of the codebook) of the histories above. The four last
// errors of the gain predictors (dB, Q10; for 12.2 log2, Q10) are set to go on from that energy. Without sidFlag the
// last values stay, unless the energy's index is 0. The residual for the LSP quantiser's next frame is row
// *pValResultDtxLsfRefIndex's, as veksLSPQuant_GSMAMR_16s at VEK_SPCHBR_DTX leaves it. TS 26.092 5.1.
VEK_API VekStatus veksEncDTXSID_GSMAMR_16s(const Vek16s* pSrcLspBuffer, const Vek16s* pSrcLogEnergyBuffer,
                                           Vek16s* pValResultLogEnergyIndex, Vek16s* pValResultDtxLsfRefIndex,
                                           Vek16s* pSrcDstDtxQLsfIndex, Vek16s* pSrcDstPredQErr,
                                           Vek16s* pSrcDstPredQErrMR122, Vek16s sidFlag);

// What the closed-loop searches of a subframe start from. pSrcSpch[-10..39] is speech; pSrcWgtLpc1 and pSrcWgtLpc2
// (11 coefficients, Q12) are numerator and denominator of the perceptual weighting, pSrcQLpc the quantised predictor.
// pSrcSynFltState holds ten outputs of 1/pSrcQLpc before the subframe (speech minus its synthesis), pSrcWgtFltState ten
// of the weighting's denominator, oldest first; both are only read. Results of 40: response of the weighted synthesis
// (Q12), residual of the speech, target of the adaptive codebook. TS 26.090 5.4, 5.5.
VEK_API VekStatus veksImpulseResponseTarget_GSMAMR_16s(const Vek16s* pSrcSpch, const Vek16s* pSrcWgtLpc1,
                                                       const Vek16s* pSrcWgtLpc2, const Vek16s* pSrcQLpc,
                                                       const Vek16s* pSrcSynFltState, const Vek16s* pSrcWgtFltState,
                                                       Vek16s* pDstImpulseResponse, Vek16s* pDstLpResidual,
                                                       Vek16s* pDstAdptTarget);

// Open-loop delays of a frame, one for each half (at 4.75 and 5.15 one for both), 20..143, from 18 on at 12.2. The
// speech pSrcSpch[-10..159] is first weighted by four rows of 11 coefficients each, Q12: numerators pSrcWgtLpc1,
// denominators pSrcWgtLpc2. pSrcDstPrevWgtSpch has 303 elements: 143 of weighted speech before the frame, which are
// brought forward, and room for the frame's, which stays after them. At 10.2 the correlation is weighted towards short
// delays and the median *pValResultPrevMidPitchLag of the last five voiced ones (pSrcDstPrevPitchLag, newest first; 40
// at first; beyond 20..143 it counts as the nearest of these) while the strength *pValResultVvalue (Q15, 0 at first) is
// at least 0.3; other rates leave these three alone. pDstOpenLoopGain receives, at 10.2, correlation minus 0.4 energy
// of each half in the upper 16 bits, above 0 for a voiced one; else 0. TS 26.090 5.3.
VEK_API VekStatus veksOpenLoopPitchSearchNonDTX_GSMAMR_16s(const Vek16s* pSrcWgtLpc1, const Vek16s* pSrcWgtLpc2,
                                                           const Vek16s* pSrcSpch, Vek16s* pValResultPrevMidPitchLag,
                                                           Vek16s* pValResultVvalue, Vek16s* pSrcDstPrevPitchLag,
                                                           Vek16s* pSrcDstPrevWgtSpch, Vek16s* pDstOpenLoopLag,
                                                           Vek16s* pDstOpenLoopGain, VekSpchBitRate mode);

// The same with what voice activity option 1 takes: *pValResultToneFlag, 15 flags of the searches before, the newest in
// bit 14, gets those of this frame; *pResultMaxHpCorr is the largest high-passed correlation of the second half, Q15.
// TS 26.094 3.3.
VEK_API VekStatus veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(const Vek16s* pSrcWgtLpc1, const Vek16s* pSrcWgtLpc2,
                                                            const Vek16s* pSrcSpch, Vek16s* pValResultToneFlag,
                                                            Vek16s* pValResultPrevMidPitchLag, Vek16s* pValResultVvalue,
                                                            Vek16s* pSrcDstPrevPitchLag, Vek16s* pSrcDstPrevWgtSpch,
                                                            Vek16s* pResultMaxHpCorr, Vek16s* pDstOpenLoopLag,
                                                            Vek16s* pDstOpenLoopGain, VekSpchBitRate mode);

// The same with what voice activity option 2 takes: the correlations at the delays found and the energies of the
// delayed signal there, both doubled sums over the (scaled) weighted speech, added up over the frame. The long-term
// predictor's flag is their ratio above 0.55 at 4.75 and 5.15, 0.60 at 10.2, else 0.65. TS 26.094 4.3.
VEK_API VekStatus veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s(
    const Vek16s* pSrcWgtLpc1, const Vek16s* pSrcWgtLpc2, const Vek16s* pSrcSpch, Vek16s* pValResultPrevMidPitchLag,
    Vek16s* pValResultVvalue, Vek16s* pSrcDstPrevPitchLag, Vek16s* pSrcDstPrevWgtSpch, Vek32s* pResultMaxCorr,
    Vek32s* pResultWgtEnergy, Vek16s* pDstOpenLoopLag, Vek16s* pDstOpenLoopGain, VekSpchBitRate mode);

// Quantised pairs of the four subframes, 4 x 10, from a frame's indices: three, at 12.2 five, at VEK_SPCHBR_DTX the
// start residual and three; vekStsOutOfRangeErr for one beyond its codebook. bfi 1 (0 or 1, else vekStsRangeErr) leaves
// the indices unread and draws the last frequencies towards their mean. The three in-out vectors are the last residual,
// the last quantised frequencies (Q15 of the sampling rate) and pairs. TS 26.090 5.2.5, 6.1; TS 26.091.
VEK_API VekStatus veksQuantLSPDecode_GSMAMR_16s(const Vek16s* pSrcIndex, Vek16s* pSrcDstPrevQLsfResidual,
                                                Vek16s* pSrcDstPrevQLsf, Vek16s* pSrcDstPrevQLsp, Vek16s* pDstQLsp,
                                                Vek16s bfi, VekSpchBitRate mode);

// Quantises the pairs of a frame, Q15: at 12.2 two sets of ten to two, with five indices; else one to one, with three,
// at VEK_SPCHBR_DTX the start residual's before them. pSrcDstPrevQLsfResidual is the last frame's residual and receives
// this one's. TS 26.090 5.2.5, TS 26.092 5.1.
VEK_API VekStatus veksLSPQuant_GSMAMR_16s(const Vek16s* pSrcLsp, Vek16s* pSrcDstPrevQLsfResidual, Vek16s* pDstQLsp,
                                          Vek16s* pDstIndex, VekSpchBitRate mode);

// Autocorrelation of 240 windowed samples for the lags 0..10, shifted so that lag 0, which counts 1 more, fills 31
// bits. At 12.2 two windows give 22 elements; else, VEK_SPCHBR_DTX included, one gives 11. TS 26.090 5.2.1.
VEK_API VekStatus veksAutoCorr_GSMAMR_16s32s(const Vek16s* pSrcSpch, Vek32s* pDstAutoCorr, VekSpchBitRate mode);

// Memory of voice activity option 1. Set up: 0, but 150 in the second to fourth vector and 13106 in corrHpFast.
typedef struct {
    Vek16s subLevel[9];   // levels over the look-ahead
    Vek16s bckrEst[9];    // background noise, 40..16000
    Vek16s aveLevel[9];   // levels smoothed for the measure of stationarity
    Vek16s oldLevel[9];   // levels of the last frame
    Vek16s filter5[3][2]; // filter bank
    Vek16s filter3[5];
    Vek16s burstCount;
    Vek16s hangCount;
    Vek16s statCount;
    Vek16s vadReg;      // flags of the intermediate decisions, the newest in bit 14
    Vek16s pitch;       // flags of the pitch detector, likewise; the codec enters them after the open-loop search
    Vek16s complexHigh; // flags of complex signals, likewise
    Vek16s complexLow;
    Vek16s complexHangCount;
    Vek16s complexHangTimer;
    Vek16s corrHpFast;  // smoothed high-passed correlation, Q15
    Vek16s vadDecision; // the last result
} VeksVAD1State_GSMAMR;

// Voice activity of a frame, option 1: *pResultVadFlag 1 for speech. pSrcSpch has 200 elements: 40 samples before the
// frame and its 160. maxHpCorr and toneFlag are the last frame's of veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s.
// vekStsStateErr for a memory whose noise is out of its range. TS 26.094 3.
VEK_API VekStatus veksVAD1_GSMAMR_16s(const Vek16s* pSrcSpch, VeksVAD1State_GSMAMR* pSrcDstVad1State,
                                      Vek16s* pResultVadFlag, Vek16s maxHpCorr, Vek16s toneFlag);

// Memory of voice activity option 2. Set up: 0.
typedef struct {
    Vek16s preEmphasis;
    Vek16s updateCount;
    Vek16s hysteresisCount;
    Vek16s lastUpdateCount;
    Vek16s longTermDb[16]; // long-term energies of the channels, dB in Q8
    Vek32s frameCount;
    Vek32s energy[16]; // energies of the channels, Q9, or Q4 when loud
    Vek32s noise[16];  // noise of the channels, Q9
    Vek16s lastShift;
    Vek16s peakRatio; // long-term peak ratio of signal to noise, dB in Q8
    Vek16s hangover;
    Vek16s burstCount;
    Vek16s forcedUpdate;
    Vek16s negativeVariance;
    Vek16s negativeBias;
    Vek16s loud; // 1: energies are Q4
} VeksVAD2State_GSMAMR;

// Voice activity of a frame, option 2: *pResultVadFlag 1 for speech in one of the two halves of pSrcSpch's 160 samples.
// ltpFlag, not 0 for a strong long-term predictor, keeps the noise from being updated by force. vekStsStateErr for a
// memory that no call leaves. TS 26.094 4.
VEK_API VekStatus veksVAD2_GSMAMR_16s(const Vek16s* pSrcSpch, VeksVAD2State_GSMAMR* pSrcDstVad2State,
                                      Vek16s* pResultVadFlag, Vek16s ltpFlag);

#ifdef __cplusplus
}
#endif
