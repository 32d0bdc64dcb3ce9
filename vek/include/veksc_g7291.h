// Speech coding library of Vek: G.729.1.
// A frame has 160 samples of 8 kHz in each of two bands, the lower one coded in four subframes of 40. Its first layer
// is the code of G.729 (veksc_g729*.h); the second adds four pulses a subframe, the higher ones band extension and
// transform coding.
//
// All functions: vekStsNullPtrErr for a null pointer and vekStsRangeErr for a value out of the range given, before
// anything is written. States are opaque buffers of the size that GetStateSize tells, without alignment, set up by Init
// (silence before), else vekStsStateErr.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// --- core: pitch ---

// Closed-loop search of the adaptive codebook in a subframe, over the whole delays lagMin..lagMax within 20..143.
// subFrame is where the subframe begins in the frame: 0, 40, 80 or 120; at 40 and 120, which are coded by
// their distance from the delay before, all delays have thirds, at 0 and 80 those up to 84. Target Q0, impulse response
// Q12. pSrcPrevExcitation holds 154 samples of excitation, oldest first, and after them the 40 of the residual.
// pDstDelay receives the whole delay and the thirds (-1..1). G.729.1 6.5, G.729 3.7.
VEK_API VekStatus veksAdaptiveCodebookSearch_G7291_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcImpulseResponse,
                                                       const Vek16s* pSrcPrevExcitation, Vek16s* pDstDelay,
                                                       Vek16s lagMin, Vek16s lagMax, Vek16s subFrame);

// Filtered adaptive codebook vector pDstFltAdptVector, and its gain to the target, Q14, 0..19661 (1.2). Target and
// vector Q0, impulse response Q12, 40 elements each. The product of target and vector saturates at 2^32: beyond it the
// gain comes out low. G.729.1 6.5, G.729 3.7.3.
VEK_API VekStatus veksAdaptiveCodebookGain_G7291_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcImpulseResponse,
                                                     const Vek16s* pSrcAdptVector, Vek16s* pDstFltAdptVector,
                                                     Vek16s* pResultAdptGain);

// --- core: spectrum, second layer's gain, level and tilt of the post filter ---

// Spectral frequencies of a frame of 10 ms by G.729's quantiser: pQuantIndex are predictor 0..1, first stage 0..127,
// lower and upper half 0..31. pSrcDstPrevLSF holds the last four code vectors, newest first, 40 elements, and is
// brought up to date; pSrcDstLSF receives the ten frequencies, Q13. See veksLSFDecode_G729_16s. G.729.1 6.3,
// G.729 3.2.4.
VEK_API VekStatus veksLSFDecode_G7291_16s(const Vek16s* pQuantIndex, Vek16s* pSrcDstPrevLSF, Vek16s* pSrcDstLSF);

// Gain of the second layer's code vector, from its target (Q0) and the filtered vector (Q12). It is coded over the gain
// valSrcQGain of the first layer (Q1, 0 or more), with three bits in the subframes 1 and 3 and two in 2 and 4: the
// level of least error of valSrcQGain * 2^((k-6)/2), k = 0..7, or 2^((2k-5)/2), k = 0..3, the product rounded and
// saturated. pDstQGain receives it, Q1, pDstQGainIndex the code k. A vector of zeros takes the lowest. G.729.1 6.8.
VEK_API VekStatus veksGainQuant_G7291_16s(const Vek16s* pSrcFixedTarget, const Vek16s* pSrcFltFixedVector,
                                          Vek16s valSrcQGain, Vek16s* pDstQGainIndex, Vek16s* pDstQGain,
                                          Vek16s subFrame);

// Gain control of a subframe: the post filter's output pSrcDst is brought to the sum of magnitudes of its input pSrc by
// the gain g[n] = (1 - val) * g[n-1] + val * level. val is Q15, 0 or more; 410 (0.0125) in G.729. *pGain is the gain of
// the last sample before and after, Q14, 0 or more. The level is the ratio of the sums, Q14, at most 2, where the
// output has the wide band (NBFlag 0); with the narrow band (NBFlag 1) it moves on with a quarter of the ratio from
// *pSmoothLevel, the level of the subframe before, which receives it in either case. An output of zeros makes the gain
// 0 and is left alone. G.729.1 7.3, G.729 4.2.4.
VEK_API VekStatus veksGainControl_G7291_16s_I(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pGain, Vek16s val,
                                              Vek16s NBFlag, Vek16s* pSmoothLevel);

// Tilt compensation of the post filter at a given k = val, Q15: y[n] = (x[n] + mu x[n-1]) / (1 - |mu|), mu is 0.2 k for
// k above 0, else 0.9 k. pSrc[0] is the last input of the subframe before, pSrc[1..40] the subframe, pDst receives 40
// samples. G.729.1 7.3, G.729 4.2.3.
VEK_API VekStatus veksTiltCompensation_G7291_16s(const Vek16s* pSrc, Vek16s* pDst, Vek16s val);

// --- core: fixed codebooks ---
//
// Four signed pulses of 40 on the tracks of G.729 3.8, 17 bits: pDstCodebookIdx receives the codeword of the positions
// (13 bits, G.729 3.8.2 eq 62) and that of the signs (4 bits, 1 is positive, eq 61). The pulses have the signs of the
// correlations of target and response. The search goes from that of Annex A, and from the peaks of correlation and
// pSrcLtpResidual, each over its root of energy; single pulses are then exchanged as long as the criterion grows
// (global pulse replacement). Targets and residual Q0, responses Q12. pDstFixedVector receives the code vector (Q13),
// pDstFltFixedVector its convolution with the response (Q12).

// First layer: pSrcFixedTarget is the target of the pitch search, from which the share of the adaptive codebook is
// taken: pSrcDstFltAdptVector is its filtered vector and receives pitchGain (Q14, 0..19661) times it. Below a pitchLag
// (20..143) of 40 response and code vector are sharpened by P(z) = 1 / (1 - b z^-pitchLag), b = pitchGain within
// 0.2..0.7945; pSrcDstImpulseResponse receives the sharpened response. G.729.1 6.6, G.729 3.8.
VEK_API VekStatus veksAlgebraicCodebookSearchL1_G7291_16s(const Vek16s* pSrcFixedTarget, const Vek16s* pSrcLtpResidual,
                                                          Vek16s* pSrcDstFltAdptVector, Vek16s* pSrcDstImpulseResponse,
                                                          Vek16s pitchLag, Vek16s pitchGain, Vek16s* pDstFixedVector,
                                                          Vek16s* pDstFltFixedVector, Vek16s* pDstCodebookIdx);

// Second layer, for what the first has left of the target: the pulses go through F(z) = 1 - m z^-1 with
// m = (1 + voiceFactor) / 4, which takes the more from the low frequencies the more voiced the subframe is; voiceFactor
// is Q15, -1.0 unvoiced, 1.0 voiced. G.729.1 6.7.
VEK_API VekStatus veksAlgebraicCodebookSearchL2_G7291_16s(const Vek16s* pSrcFixedTarget, const Vek16s* pSrcLtpResidual,
                                                          const Vek16s* pSrcImpulseResponse, Vek16s voiceFactor,
                                                          Vek16s* pDstFixedVector, Vek16s* pDstFltFixedVector,
                                                          Vek16s* pDstCodebookIdx);

// --- core: filters ---

// Split into two bands of half the rate and their reunion by a quadrature mirror filter of 64 taps. The higher band
// comes with its frequencies reversed, as the decimation leaves them. Behind each other the two delay by 62 samples.
// One kind of state serves both. G.729.1 6.1, 7.7, with a filter of our own: a Kaiser-windowed sinc; the sum of the
// bands' squares is within 0.06 dB of 1, the stop band from 4600 of 16000 Hz is down by 55 dB.
VEK_API VekStatus veksQMFGetStateSize_G7291_16s(int* pSize);
VEK_API VekStatus veksQMFInit_G7291_16s(void* pState);
// len samples, even, become len / 2 in each band. len 2..65536, else vekStsSizeErr.
VEK_API VekStatus veksQMFEncode_G7291_16s(const Vek16s* pSrc, int len, Vek16s* pDstLowBand, Vek16s* pDstHighBand,
                                          void* pState);
// len samples of each band become 2 * len in pDst. The higher one is taken times GainSwitching, Q14, 0..16384 (1.0),
// with which it comes and goes when the rate changes. len 1..65536, else vekStsSizeErr.
VEK_API VekStatus veksQMFDecode_G7291_16s(const Vek16s* pSrcLowBand, const Vek16s* pSrcHighBand, Vek16s GainSwitching,
                                          int len, Vek16s* pDst, void* pState);

// High-pass of the lower band, in place: an elliptic filter of second order, edge 50 Hz. The output is rounded to
// y * 2^-scaleFactor and saturated; scaleFactor -8..8, else vekStsScaleRangeErr; len 1..65536, else vekStsSizeErr.
// G.729.1 6.2; the coefficients are ours, from ripple 0.25 dB and stop band 40 dB.
VEK_API VekStatus veksFilterHighpassGetStateSize_G7291_16s(int* pSize);
VEK_API VekStatus veksFilterHighpassInit_G7291_16s(void* pState);
VEK_API VekStatus veksFilterHighpass_G7291_16s_ISfs(Vek16s* pSrcDst, int len, void* pStateHi, int scaleFactor);

// Low-pass of the higher band, in place: an elliptic filter of edge 3000 Hz in 1 or 2 sections of second order, else
// vekStsFilterOrderErr; len 1..65536, else vekStsSizeErr. G.729.1 6.2; the coefficients are ours: one section has
// ripple 0.5 and stop band 20 dB, two have 0.25 and 50 dB.
VEK_API VekStatus veksFilterLowpassGetStateSize_G7291_16s(int* pSize);
VEK_API VekStatus veksFilterLowpassInit_G7291_16s(void* pState);
VEK_API VekStatus veksFilterLowpass_G7291_16s_I(Vek16s* pSrcDst, int len, void* pStateLo, int sections);

// --- TDAC: transform coding of both bands ---

// Modulated lapped transform of a band under the sine window w(n) = sin((n + 1/2) pi / 320), with time domain alias
// cancellation: X(k) = sqrt(2/160) * sum of w(n) x(n) cos((n + 80.5) (k + 1/2) pi / 160), n = 0..319, k = 0..159.
// G.729.1 6.9, 7.4.
//
// pSrc are the 160 new samples, pSrcDst the 160 before, which it receives the new ones in place of. The coefficients
// leave as X(k) * 2^*pNormFactor, rounded: as large as they may be for `headroom` (0..8) bits to spare, 11 at the most;
// of a silent frame the factor is 0.
VEK_API VekStatus veksMDCTFwd_G7291_16s(const Vek16s* pSrc, Vek16s* pSrcDst, int* pNormFactor, Vek16s* pMDCTCoeffs,
                                        int headroom);
// 160 samples from the coefficients X(k) * 2^normFactor, normFactor -15..15, else vekStsScaleRangeErr. pMDCTPrevCoeffs
// is the windowed second half of the frame before, 0 at the start, and receives that of this one. Both are rounded and
// saturated.
VEK_API VekStatus veksMDCTInv_G7291_16s(const Vek16s* pMDCTCoeffs, Vek16s* pMDCTPrevCoeffs, Vek16s* pDst,
                                        int normFactor);

// Post-processing of the 160 decoded coefficients of the higher band, in place: each is taken times
// 1 + a (|X(k)| / mean - 1), where the mean is that of the magnitudes of the up to 7 neighbours on each side and its
// own and the ratio at most 2, and all times one factor that keeps their sum of magnitudes. a = (12 - rate) / 24: the
// fewer bits, the more. rate 0..11 counts the codec's rates from 8 and 12 in steps of 2 to 32 kbit/s. G.729.1 7.5; the
// formula is ours.
VEK_API VekStatus veksMDCTPostProcess_G7291_16s(Vek16s* pMDCTCoeffs, int rate);

// Spherical vector quantiser of 280 coefficients in 18 bands, 17 of 16 and the last of 8; pBitsNumber tells the bits of
// each, 0..16. A band's point is the signed arrangement of a leader that lies nearest in direction. A codebook of b
// bits takes the leaders, whole numbers in falling order without a common divisor, in the order of their sum of
// squares, within it by falling elements, each with all its arrangements and signs if these still fit into 2^b. A
// point's number is that of the first one of its leader + 2^m * rank + signs: the rank counts the arrangements of the
// magnitudes, larger numbers first, the m signs of elements that are not 0 stand first to last from the uppermost bit,
// 1 is negative. Fewer bits than the first leader needs (5, in the last band 4) code nothing. G.729.1 6.9, 7.4; the
// codebooks are ours.
//
// The 11 words of pDst receive the numbers band after band from the uppermost bit of the first word, then zeros.
VEK_API VekStatus veksMDCTQuantFwd_G7291_16s32u(const Vek16s* pMDCTCoeffs, const Vek16s* pBitsNumber, Vek32u* pDst);
// The points of those numbers, at the root mean square 2^(pQuantSpecEnv/2) that the spectral envelope tells for each of
// 18 bands, its index taken as the nearest of -11..20. pMDCTCoeffs receives 320 coefficients, zeros from 280 on and for
// a number that no point has.
VEK_API VekStatus veksMDCTQuantInv_G7291_32u16s(const Vek32u* pSrc, const Vek16s* pBitsNumber,
                                                const Vek16s* pQuantSpecEnv, Vek16s* pMDCTCoeffs);

#ifdef __cplusplus
}
#endif
