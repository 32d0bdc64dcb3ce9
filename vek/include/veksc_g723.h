// Speech coding library of Vek: G.723.1.
// A frame has 240 samples in four subframes (0..3) of 60. An excitation history has 148 elements, newest last. The
// filters that the codec shares with others are in veksc_filter.h, its autocorrelations in veksc_signal.h.
//
// All functions: vekStsNullPtrErr for a null pointer, vekStsRangeErr for a delay, subframe or index out of range, and
// vekStsBitRateErr for a rate other than VEK_SPCHBR_5300 and VEK_SPCHBR_6300, before anything is written.
// Prediction coefficients are a[1..10] of A(z) = 1 - sum of a[j] z^-j, Q13. LSFs are in 32768 to half the sampling
// rate.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// --- linear prediction ---

// Ten prediction coefficients from the autocorrelations of the lags 1..10 (pSrc). pSrcDstErr holds lag 0 before and the
// energy of the prediction error after. pResultPk2 receives the second reflection coefficient of the error filter, Q15,
// near 32767 for a sine; 32767 when the recursion breaks off because a coefficient is not below one, which leaves the
// later prediction coefficients zero. 2.4.
VEK_API VekStatus veksLevinsonDurbin_G723_16s(const Vek16s* pSrc, Vek16s* pResultPk2, Vek16s* pSrcDstErr, Vek16s* pLPC);

// LSFs of prediction coefficients with a bandwidth expansion of 0.994: zero crossings on a grid of 256 steps. Where
// there are not ten of them pDstLsf receives pSrcPrevLsf. 2.5.
VEK_API VekStatus veksLPCToLSF_G723_16s(const Vek16s* pSrcLpc, const Vek16s* pSrcPrevLsf, Vek16s* pDstLsf);

// Split vector quantisation of the LSFs in bands of 3, 3 and 4, predicted from the quantised ones of the last frame
// (0.375 of their distance from the mean), with weights from the distance to the nearest neighbour.
// The indices stand in one word of 24 bits, the lowest band uppermost. 2.5.
VEK_API VekStatus veksLSFQuant_G723_16s32s(const Vek16s* pSrcLsf, const Vek16s* pSrcPrevLsf, Vek32s* pResultQLsfIndex);

// The LSFs of three indices 0..255, lowest band first, and of the last frame's; least distances are kept. erase 1: the
// indices are not used (they may be anything), the prediction is 0.71875 and the least distance twice as large; else 0.
// Where no order comes about in ten rounds pQuantLSF receives pPrevLSF and the status is
// vekStsUnstableFilter. 2.6, 3.2.
VEK_API VekStatus veksLSFDecode_G723_16s(const Vek16s* quantIndex, const Vek16s* pPrevLSF, int erase,
                                         Vek16s* pQuantLSF);

// Prediction coefficients of ten LSFs. 2.7, 3.3.
VEK_API VekStatus veksLSFToLPC_G723_16s(const Vek16s* pSrcLsf, Vek16s* pDstLpc);
VEK_API VekStatus veksLSFToLPC_G723_16s_I(Vek16s* pSrcDst);

// --- filters ---

// High-pass filter of a frame: H(z) = (1 - z^-1) / (1 - 127/128 z^-1), halved. pMem has two elements: the last input,
// and the last output with its fraction, Q16. pDst may be pSrc. 2.3.
VEK_API VekStatus veksHighPassFilter_G723_16s(const Vek16s* pSrc, Vek16s* pDst, Vek32s* pMem);

// A subframe through 1 / A(z), halved: y[n] = x[n] / 2 + sum of a[j] y[n-j], with pMem the ten outputs before, newest
// first, which is brought forward. pDst may be pSrc in the first form. 3.7.
VEK_API VekStatus veksSynthesisFilter_G723_16s(const Vek16s* pLPC, const Vek16s* pSrc, Vek16s* pMem, Vek16s* pDst);
// The same filter with the sums before the rounding, saturated: the sample in the upper half, its fraction below. What
// is fed back and kept is the rounded sample. 2.12.
VEK_API VekStatus veksSynthesisFilter_G723_16s32s(const Vek16s* pLPC, const Vek16s* pSrc, Vek32s* pDst, Vek16s* pMem);

// Takes away from the signal what the harmonic noise shaping filter of the delay T (1..148) and the gain val (Q15)
// makes of pSrc_H: pSrcDst[n] -= pSrc_H[n] - val * pSrc_H[n-T], rounded, 60 samples; pSrc_H[-T..59] is
// read. 2.11, 2.13.
VEK_API VekStatus veksHarmonicNoiseSubtract_G723_16s_I(Vek16s val, int T, const Vek16s* pSrc_H, Vek16s* pSrcDst);

// Tilt compensation: pDst[n] = pSrc[n+1] + val * pSrc[n], 60 samples from 61, the first of which is the one before;
// samples of pSrc are Q16, the neighbour is rounded first, val Q15. 3.8.
VEK_API VekStatus veksTiltCompensation_G723_32s16s(Vek16s val, const Vek32s* pSrc, Vek16s* pDst);

// Gives a subframe the energy before the formant post-filter, doubled: each sample times the smoothed gain, 15/16 of
// the last and 1/16 of the root of the ratio of energies, times 17/8. pSrcDstGain is the smoothed gain, Q12 (4096
// at the begin); energy is an eighth of the sum of squares wanted; negative: vekStsRangeErr. 3.9.
VEK_API VekStatus veksGainControl_G723_16s_I(Vek32s energy, Vek16s* pSrcDst, Vek16s* pSrcDstGain);

// --- pitch ---

// Open-loop delay of 120 samples of weighted speech, 18..142; pSrc[-142..119] is read. A longer delay wins over one
// less than 18 below by the criterion, over a shorter one by 1.25 dB. 2.9.
VEK_API VekStatus veksOpenLoopPitchSearch_G723_16s(const Vek16s* pSrc, Vek16s* pResultOpenDelay);

// Delay and gain (Q15, 0 or up to 10240) of the harmonic noise shaping filter of a subframe, around the open-loop delay
// 18..145: within 3; pSrc[-148..59] is read. 2.11.
VEK_API VekStatus veksHarmonicSearch_G723_16s(Vek16s valOpenDelay, const Vek16s* pSrc, Vek16s* pResultHarmonicDelay,
                                              Vek16s* pResultHarmonicGain);

// Pitch post-filter of a subframe: the share of the excitation some samples ahead (positive delay) or back.
// pSrcResidual points to the begin of the frame, scaled to a headroom of three bits or more; 145 samples before it
// and 240 of the frame are read at most. valBaseDelay 18..145. The post-filtered sample is pResultScalingGain * e[n] +
// pResultPitchGain * e[n + pResultDelay], Q15. Without a share: delay 0 or as found, gains 0 and 32767. 3.6.
VEK_API VekStatus veksPitchPostFilter_G723_16s(Vek16s valBaseDelay, const Vek16s* pSrcResidual, Vek16s* pResultDelay,
                                               Vek16s* pResultPitchGain, Vek16s* pResultScalingGain, Vek16s subFrame,
                                               VekSpchBitRate mode);

// --- adaptive codebook ---

// Excitation of 60 samples from the history with five gains of the codebook; the delay is valBaseDelay (18..145) +
// valCloseLag (0..3) - 1, at most 146. The codebook has 85 entries at 6.3 kbit/s with valBaseDelay < 58, else
// 170. 2.14, 3.5.
VEK_API VekStatus veksDecodeAdaptiveVector_G723_16s(Vek16s valBaseDelay, Vek16s valCloseLag, Vek16s valAdptGainIndex,
                                                    const Vek16s* pSrcPrevExcitation, Vek16s* pDstAdptVector,
                                                    VekSpchBitRate mode);

// Closed-loop search for delay and gains: the target of 60 samples, the impulse response Q13, the history. In the even
// subframes the base delay (18..145, open loop) is first brought into 19..140 and three delays are tried around it; in
// the odd ones four, from the delay of the subframe before (valBaseDelay) - 1. pResultCloseLag counts from the first
// tried. pSrcPrevError has the error bounds of five zones of 30 samples of the history, Q2: how many gain vectors are
// allowed sinks as they grow to 2^30, and to the least with a sine detected (sineDtct negative). 2.14.
VEK_API VekStatus veksAdaptiveCodebookSearch_G723(Vek16s valBaseDelay, const Vek16s* pSrcAdptTarget,
                                                  const Vek16s* pSrcImpulseResponse, const Vek16s* pSrcPrevExcitation,
                                                  const Vek32s* pSrcPrevError, Vek16s* pResultCloseLag,
                                                  Vek16s* pResultAdptGainIndex, Vek16s subFrame, Vek16s sineDtct,
                                                  VekSpchBitRate mode);

// --- fixed codebooks ---

// Multi-pulse search of one impulse response (60 elements, Q13) for a target of 60: Np pulses (1..6) of one amplitude
// on one of two grids. pSrcDstMaxErr holds the best measure so far (twice the correlation with the target less the
// energy of the filtered pulses); where it is surpassed it is replaced, pDstLoc receives the positions, pDstLocAmp the
// signed amplitudes in the order found, pResultGrid 0 or 1, pResultAmp the index of the amplitude 0..23 and pIsBest 1.
// Else pIsBest is 0 and nothing else is written. 2.15.
VEK_API VekStatus veksGainQuant_G723_16s(const Vek16s* pImp, const Vek16s* pVec, Vek16s* pDstLoc, Vek16s* pDstLocAmp,
                                         Vek32s* pSrcDstMaxErr, Vek16s* pResultGrid, Vek16s* pResultAmp, Vek16s Np,
                                         Vek16s* pIsBest);

// Search of the fixed codebook of 6.3 kbit/s: six pulses in the even subframes, five in the odd ones, also as trains of
// the base delay (18..145) if that is below 58. pDstFixedVector receives the excitation, pResultTrainDirac 1 for
// trains, pResultAmpIndex the amplitude's index, pResultAmplitude the signs (the first pulse uppermost, 1 is negative)
// and pResultPosition the number of the set of positions. 2.15.
VEK_API VekStatus veksMPMLQFixedCodebookSearch_G723(Vek16s valBaseDelay, const Vek16s* pSrcImpulseResponse,
                                                    const Vek16s* pSrcResidualTarget, Vek16s* pDstFixedVector,
                                                    Vek16s* pResultGrid, Vek16s* pResultTrainDirac,
                                                    Vek16s* pResultAmpIndex, Vek16s* pResultAmplitude,
                                                    Vek32s* pResultPosition, Vek16s subFrame);

// Correlations of the impulse response h of 60 elements at the even positions, phi(i,j) = sum of h[n-i] * h[n-j],
// n = max(i,j)..59, zero from 60 on. Track t holds the positions 8k + 2t, k = 0..7. The 416 elements of pDst:
//   0..31    the diagonals of the tracks 0..3, 8 each
//   32..415  six blocks of 64 for the pairs of tracks (0,1) (0,2) (0,3) (1,2) (1,3) (2,3): element 8k + l is
//            phi(8k+2t, 8l+2u)
// h is first scaled by a power of 2 to the largest size that its energy allows (halved when twice the energy exceeds
// 32000 * 2^16). Doubled sums with saturation: their upper halves, cut off, or all 32 bits. 2.16.
VEK_API VekStatus veksToeplizMatrix_G723_16s(const Vek16s* pSrc, Vek16s* pDst);
VEK_API VekStatus veksToeplizMatrix_G723_16s32s(const Vek16s* pSrc, Vek32s* pDst);

// Search of the fixed codebook of 5.3 kbit/s: four pulses, one a track, all shifted by 0 or 1 (pDstGrid).
// pSrcFixedCorr has 64 correlations of target and response, zero from 60 on; pSrcMatrix is that of
// veksToeplizMatrix_G723, whose energies serve for the odd positions too. The sign of a position and its neighbour is
// that of the larger correlation. pDstFixedVector receives 60 elements with pulses of 1 and -1, pDstFixedPosition three
// bits and pDstFixedSign one bit (1 is positive) for each track, track 0 lowest; pulses beyond 59 are none. The last of
// four nested loops is entered where three pulses reach the middle of mean and maximum, and as long as pSearchTimes
// lasts: 120 and what it holds (0..30000); it receives what is left, at most 30000. 2.16.
VEK_API VekStatus veksACELPFixedCodebookSearch_G723_16s(const Vek16s* pSrcFixedCorr, const Vek16s* pSrcMatrix,
                                                        Vek16s* pDstFixedSign, Vek16s* pDstFixedPosition,
                                                        Vek16s* pDstGrid, Vek16s* pDstFixedVector,
                                                        Vek16s* pSearchTimes);
VEK_API VekStatus veksACELPFixedCodebookSearch_G723_32s16s(const Vek16s* pSrcFixedCorr, const Vek32s* pSrcMatrix,
                                                           Vek16s* pDstFixedSign, Vek16s* pDstFixedPosition,
                                                           Vek16s* pDstGrid, Vek16s* pDstFixedVector,
                                                           Vek16s* pSearchTimes);

#ifdef __cplusplus
}
#endif
