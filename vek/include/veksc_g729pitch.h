// Pitch and gain steps of G.729 and its annexes A and B: gain control of the post filters, share of the adaptive
// codebook, open-loop and closed-loop search, correlation maxima, adaptive codebook vector and gain. The pulses are
// elsewhere.
//
// All functions: vekStsNullPtrErr for a null pointer, before anything is written. Subframes have 40 samples, frames 80.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Gain control of a subframe: the post filter's output pSrcDst is brought to the level of its input pSrc by a gain that
// moves from sample to sample. *pGain is the gain of the last sample before and after; an output of zeros makes it 0
// and is left alone (in the G729 form an input of zeros goes first: the gain decays then).
//
// Level by energy, gain Q12 (4096 is 1.0), g[n] = 0.9 * g[n-1] + 0.1 * ratio: G.729 A.4.2.4. Energies of the samples
// without their last two bits; a ratio below 0.044 counts as 0.044.
VEK_API VekStatus veksGainControl_G729A_16s_I(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pGain);

// Level by sum of magnitudes, gain Q14 (16384 is 1.0), g[n] = 0.9875 * g[n-1] + 0.0125 * ratio: G.729 4.2.4.
VEK_API VekStatus veksGainControl_G729_16s_I(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pGain);

// Target of the fixed codebook search: pDst[n] = pSrcTarget[n] - gain * pFltAdptVector[n]. G.729 3.8 eq 50. The gain is
// Q14, the product is cut off; product and difference saturate. pDst may be pSrcTarget.
VEK_API VekStatus veksAdaptiveCodebookContribution_G729_16s(Vek16s gain, const Vek16s* pFltAdptVector,
                                                            const Vek16s* pSrcTarget, Vek16s* pDst);
VEK_API VekStatus veksAdaptiveCodebookContribution_G729_32f(Vek32f gain, const Vek32f* pFltAdptVector,
                                                            const Vek32f* pSrcTarget, Vek32f* pDst);

// Open-loop delay of a frame of 80 samples of weighted speech, 20..143. pSrc points to the frame; pSrc[-143..-1] must
// be there. The signal is first divided by 8 when the sum of its doubled energy does not fit 32 bits, multiplied by 8
// when that sum is below 2^20; sums saturate at each step.
//
// Best of the ranges 143..80, 79..40 and 39..20 by normalised correlation, a shorter delay being taken when it reaches
// more than 0.85 of the best: G.729 3.4.
VEK_API VekStatus veksOpenLoopPitchSearch_G729_16s(const Vek16s* pSrc, Vek16s* pBestLag);

// The same over every second sample, in 80..143 over the even delays first and then beside the best of them; delays
// with a multiple in the next range are favoured: G.729 A.3.4. The energy that scales the signal counts every second
// sample from pSrc[-143] on.
VEK_API VekStatus veksOpenLoopPitchSearch_G729A_16s(const Vek16s* pSrc, Vek16s* pBestLag);

// Largest correlation over the delays lowerLag..upperLag, and its delay; of equal ones the smallest delay. *pMax is the
// doubled sum of pSrc[n] * pSrc[n+k] (Fwd, reads pSrc[0..len+upperLag-1]) or pSrc[n] * pSrc[n-k] (Inv, reads
// pSrc[-upperLag..len-1]) over n = 0..len-1, saturated to 32 bits. len 1..65536, else vekStsSizeErr;
// 0 <= lowerLag <= upperLag <= 65536, else vekStsRangeErr. G.729 3.4.
VEK_API VekStatus veksAutoCorrLagMax_Fwd_16s(const Vek16s* pSrc, int len, int lowerLag, int upperLag, Vek32s* pMax,
                                             int* pMaxLag);
VEK_API VekStatus veksAutoCorrLagMax_Inv_16s(const Vek16s* pSrc, int len, int lowerLag, int upperLag, Vek32s* pMax,
                                             int* pMaxLag);

// Adaptive codebook vector of a subframe: the excitation before it, delayed by pSrcDelay[0] + pSrcDelay[1] / 3 samples
// through the interpolation filter of 20 taps. G.729 3.7.1 eq 40. Delay 0..143 (20..143 in a codec) and fraction -1..1,
// else vekStsRangeErr. Samples of the vector serve as excitation for its later ones; a delay below 11 makes the filter
// reach up to 11 samples further on than that, which must be there then. Rounded, saturating steps.
//
// pSrcDst holds 154 samples of excitation, the oldest first, and after them receives the 40 of the vector.
VEK_API VekStatus veksDecodeAdaptiveVector_G729_16s_I(const Vek16s* pSrcDelay, Vek16s* pSrcDst);
// The same, and pDst receives the vector too.
VEK_API VekStatus veksDecodeAdaptiveVector_G729_16s(const Vek16s* pSrcDelay, Vek16s* pSrcDst, Vek16s* pDst);
// pSrcDst points to the subframe: pSrcDst[-delay-10..-1] is the excitation, pSrcDst[0..39] receives the vector.
VEK_API VekStatus veksDecodeAdaptiveVector_G729_32f_I(const Vek32s* pSrcDelay, Vek32f* pSrcDst);

// Closed-loop search of the adaptive codebook in a subframe. subFrame 0: valOpenDelay is the open-loop delay, searched
// are the 7 whole delays around it; subFrame 1: valOpenDelay is the whole delay of the first subframe, searched are the
// 10 from 5 below it; within 20..143, in thirds below 85 or in subframe 1. valOpenDelay 19..144 and subFrame 0..1, else
// vekStsRangeErr. Target Q0, impulse response Q12. pSrcDstPrevExcitation holds 154 samples of excitation and after
// them the 40 of the residual; these receive the adaptive codebook vector, as pDstAdptVector does. pDstDelay receives
// the whole delay and the thirds (-1..1). Sums are exact and saturate once.
//
// Normalised correlation of target and filtered excitation, interpolated at thirds: G.729 3.7.
VEK_API VekStatus veksAdaptiveCodebookSearch_G729_16s(Vek16s valOpenDelay, const Vek16s* pSrcAdptTarget,
                                                      const Vek16s* pSrcImpulseResponse, Vek16s* pSrcDstPrevExcitation,
                                                      Vek16s* pDstDelay, Vek16s* pDstAdptVector, Vek16s subFrame);
// Correlation of the excitation with the target filtered backwards: G.729 A.3.7.
VEK_API VekStatus veksAdaptiveCodebookSearch_G729A_16s(Vek16s valOpenDelay, const Vek16s* pSrcAdptTarget,
                                                       const Vek16s* pSrcImpulseResponse, Vek16s* pSrcDstPrevExcitation,
                                                       Vek16s* pDstDelay, Vek16s* pDstAdptVector, Vek16s subFrame);

// Filtered adaptive codebook vector pDstAdptVector, and its gain to the target, Q14, 0..19661 (1.2): G.729 3.7.3. The
// filter is the impulse response (Q12), or the synthesis by pSrcLpc (Q12, 11 elements) from rest. The product of target
// and vector saturates at 2^32: beyond it the gain comes out low.
VEK_API VekStatus veksAdaptiveCodebookGain_G729_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcImpulseResponse,
                                                    const Vek16s* pSrcAdptVector, Vek16s* pDstAdptVector,
                                                    Vek16s* pResultAdptGain);
VEK_API VekStatus veksAdaptiveCodebookGain_G729A_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcLpc,
                                                     const Vek16s* pSrcAdptVector, Vek16s* pDstAdptVector,
                                                     Vek16s* pResultAdptGain);

#ifdef __cplusplus
}
#endif
