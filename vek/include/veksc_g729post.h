// Speech coding library of Vek: wide-order filters, hybrid window, LSP quantiser of Annex E, post-filters and tilt of
// G.729.
//
// All functions: vekStsNullPtrErr for a null pointer, before anything is written. Subframes have 40 samples. LPC
// vectors hold the leading coefficient (4096 in Q12, 1.0) first. len 1..65536, else vekStsSizeErr.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Filters of Annex E, G.729 E.3.2 and E.4.1: Q12 coefficients, rounded, each step saturates. order even, 4..40 (10
// forward, 30 backward), else vekStsFilterOrderErr. pSrcLpc has order + 1 elements.
//
// pDst[n] = sum of pSrcLpc[j] * pSrc[n-j], j = 0..order; reads pSrc[-order..len-1]. pDst is apart from pSrc.
VEK_API VekStatus veksResidualFilter_G729E_16s(const Vek16s* pSrcLpc, int order, const Vek16s* pSrc, Vek16s* pDst,
                                               int len);
// pDst[n] = pSrcLpc[0] * pSrc[n] - sum of pSrcLpc[j] * pDst[n-j], j = 1..order. pSrcDstSynFltMemory holds the order
// outputs before, oldest first, and receives the last ones. pDst may be pSrc.
VEK_API VekStatus veksSynthesisFilter_G729E_16s(const Vek16s* pSrcLpc, int order, const Vek16s* pSrc, Vek16s* pDst,
                                                int len, Vek16s* pSrcDstSynFltMemory);
VEK_API VekStatus veksSynthesisFilter_G729E_16s_I(const Vek16s* pSrcLpc, int order, Vek16s* pSrcDst, int len,
                                                  Vek16s* pSrcDstSynFltMemory);

// The same recursion in floating point, any order 1..40, else vekStsFilterOrderErr; the memory is not changed. Eight
// outputs are made together, so that a sum's order differs from the plain one. G.729 4.1.6, Annex C.
VEK_API VekStatus veksSynthesisFilter_G729_32f(const Vek32f* pSrcLpc, int order, const Vek32f* pSrc, Vek32f* pDst,
                                               int len, const Vek32f* pSrcSynFltMemory);

// Open-loop delay of a frame of 80 samples of weighted speech, 20..143, over every second sample; pSrc[-143..-1] must
// be there. G.729 A.3.4, Annex C.
VEK_API VekStatus veksOpenLoopPitchSearch_G729A_32f(const Vek32f* pSrc, int* pBestLag);

// Largest sum of pSrc[n] * pSrc[n-k], n = 0..len-1, over the delays k = lowerLag..upperLag, and its delay; of equal
// ones the smallest. pSrc[-upperLag..len-1] is read. 0 <= lowerLag <= upperLag <= 65536, else vekStsRangeErr.
// G.729 3.4.
VEK_API VekStatus veksAutoCorrLagMax_32f(const Vek32f* pSrc, int len, int lowerLag, int upperLag, Vek32f* pMax,
                                         int* pMaxLag);

// Largest sum of pSrc1[n] * pSrc2[n+k], n = 0..len-1, over k = 0..lags-1, in double precision, and its k; of equal ones
// the smallest. pSrc2[0..len+lags-2] is read. lags 1..65536, else vekStsSizeErr.
VEK_API VekStatus veksCrossCorrLagMax_32f64f(const Vek32f* pSrc1, const Vek32f* pSrc2, int len, int lags, Vek64f* pMax,
                                             int* pMaxLag);

// Gain control of a subframe: the post filter's output pSrcDst is brought to the sum of magnitudes of its input pSrc by
// the gain g[n] = 0.9875 * g[n-1] + 0.0125 * ratio; *pGain is the gain of the last sample before and after. An input of
// zeros lets the gain decay, an output of zeros makes it 0 and is left alone. G.729 4.2.4, Annex C.
VEK_API VekStatus veksGainControl_G729_32f_I(const Vek32f* pSrc, Vek32f* pSrcDst, Vek32f* pGain);

// Autocorrelation of past synthesis for backward prediction of order 30: the 145 newest samples, the oldest first,
// through the hybrid window. The window is sin(c m) for the newest 35 (m = 1 the newest) and b * (3/4)^((m - 36) / 40)
// behind, b and c such that both meet with the same slope; the sum over the exponential part goes on from frame to
// frame of 80 samples. pDstInvAutoCorr receives the lags 0..30. G.729 E.3.2.1.
//
// The state is an opaque buffer of *pSize bytes without alignment, set up by Init (silence before), else
// vekStsStateErr. Fixed point: windowed samples are rounded, sums exact, the result normalised so that lag 0 is 2^30 or
// more; silence gives 2^30 and zeros.
VEK_API VekStatus veksWinHybridGetStateSize_G729E_16s(int* pSize);
VEK_API VekStatus veksWinHybridInit_G729E_16s(void* pMem);
VEK_API VekStatus veksWinHybrid_G729E_16s32s(const Vek16s* pSrcSynthSpeech, Vek32s* pDstInvAutoCorr, void* pMem);
VEK_API VekStatus veksWinHybridGetStateSize_G729E_32f(int* pSize);
VEK_API VekStatus veksWinHybridInit_G729E_32f(void* pMem);
VEK_API VekStatus veksWinHybrid_G729E_32f(const Vek32f* pSrcSynthSpeech, Vek32f* pDstInvAutoCorr, void* pMem);

// Quantiser of line spectral pairs of the forward mode, G.729 3.2.4, E.3.2.4: 10 falling cosines to the quantised
// frequencies, their cosines, and the two words of the bit stream: predictor and first stage (8 bits), lower and upper
// half (10 bits). pSrcDstPrevFreq holds the last four code vectors, newest first, 40 elements, and is brought up to
// date. Fixed point: pairs Q15, frequencies Q13, the same choice as veksLSPQuant_G729_16s. Floating point: frequencies
// in radians; vekStsRangeErr for a cosine outside -1..1.
VEK_API VekStatus veksLSPQuant_G729E_16s(const Vek16s* pSrcLsp, Vek16s* pSrcDstPrevFreq, Vek16s* pDstQLsf,
                                         Vek16s* pDstQLsp, Vek16s* pDstQLspIndex);
VEK_API VekStatus veksLSPQuant_G729E_32f(const Vek32f* pSrcLsp, Vek32f* pSrcDstPrevFreq, Vek32f* pDstQLsf,
                                         Vek32f* pDstQLsp, Vek32s* pDstQLspIndex);

// Post filters of a subframe, 4.2.1 to 4.2.3 and A.4.2.1 to A.4.2.3. A(z) are the 11 decoded coefficients, Q12; the
// functions weight them by 0.55 (numerator) and 0.70 (denominator). Delays are whole ones, 20..143, else
// vekStsRangeErr. Order of calls in the main body: residual and long-term, short-term, tilt, gain control; in Annex A:
// long-term, tilt, short-term, gain control.

// Long-term, by whole delays within 3 of valDelay (Annex A): pSrc[-10..39] is the decoded speech. pSrcDstResidual holds
// 154 samples of residual of the subframes before and receives the 40 of this one after them. Below 3 dB of prediction
// gain pDst is the residual.
VEK_API VekStatus veksLongTermPostFilter_G729A_16s(Vek16s valDelay, const Vek16s* pSrc, const Vek16s* pSrcLpc,
                                                   Vek16s* pSrcDstResidual, Vek16s* pDst);
// Long-term, by eighths of a sample within 1 of valDelay: pSrcResidual[-152..39] is the residual through A(z/0.55).
// valGamma is the share of the delayed signal at the most, Q15, 0 or more, else vekStsRangeErr. *pResultVoice is the
// delay, or 0 where less than half of the energy is predicted and pDst is the residual.
VEK_API VekStatus veksLongTermPostFilter_G729_16s(Vek16s valGamma, Vek16s valDelay, const Vek16s* pSrcResidual,
                                                  Vek16s* pDst, Vek16s* pResultVoice);
// The same with a share of 0.5 from the decoded speech (see the form of Annex A for pSrc and pSrcDstResidual), for
// frames that may be noise: frameType 1 is active speech, 0 and 2 pass the residual on with *pResultVoice 0; others
// vekStsRangeErr. B.4.5.
VEK_API VekStatus veksLongTermPostFilter_G729B_16s(Vek16s valDelay, const Vek16s* pSrc, const Vek16s* pSrcLpc,
                                                   Vek16s* pSrcDstResidual, Vek16s* pDst, Vek16s* pResultVoice,
                                                   Vek16s frameType);

// Short-term, the recursive half 1 / A(z/0.70): pSrc are 40 samples of residual after the long-term filter,
// pSrcDst[-10..-1] the outputs before, pSrcDst[0..39] receives the output. The form of the main body first divides by
// the sum of magnitudes of the impulse response of the whole filter where that exceeds 1; its 20 first samples, Q12, go
// to pDstImpulseResponse.
VEK_API VekStatus veksShortTermPostFilter_G729_16s(const Vek16s* pSrcLpc, const Vek16s* pSrc, Vek16s* pSrcDst,
                                                   Vek16s* pDstImpulseResponse);
VEK_API VekStatus veksShortTermPostFilter_G729A_16s(const Vek16s* pSrcLpc, const Vek16s* pSrc, Vek16s* pSrcDst);

// Tilt, in place: pSrcDst[-1] holds the last input of the subframe before and receives that of this one.
// Main body: from the impulse response of 20 samples; k = -r(1) / r(0), y[n] = (x[n] + mu x[n-1]) / (1 - |mu|), mu is
// 0.2 k for k above 0, else 0.9 k.
VEK_API VekStatus veksTiltCompensation_G729_16s(const Vek16s* pSrcImpulseResponse, Vek16s* pSrcDst);
// Annex A: from A(z), whose response is made here to 22 samples; y[n] = x[n] + 0.8 k x[n-1], only for k below 0.
VEK_API VekStatus veksTiltCompensation_G729A_16s(const Vek16s* pSrcLpc, Vek16s* pSrcDst);
// The filter of the main body at a given k = val, Q15. pSrc[0] is the last input of the subframe before, pSrc[1..40]
// the subframe, pDst receives 40. E.4.2.
VEK_API VekStatus veksTiltCompensation_G729E_16s(Vek16s val, const Vek16s* pSrc, Vek16s* pDst);

// Autocorrelation of the speech analysis with the lags of voice activity detection: 240 samples through the window of
// G.729 3.2.1, lags 0..12, normalised so that lag 0 is 2^30 or more. A sum that does not fit 32 bits is made of
// quarters of the samples. Lag k without the window's scaling is pDstAutoCorr[k] * 2^(exponent - 2); lag 0 is 1/2 more,
// so that silence is white. G.729 3.2.1, B.3.1.
VEK_API VekStatus veksAutoCorr_G729B(const Vek16s* pSrcSpch, Vek16s* pResultAutoCorrExp, Vek32s* pDstAutoCorr);

// Closed-loop search of the adaptive codebook at 6.4 kbit/s, D.3.7. As veksAdaptiveCodebookSearch_G729_16s, which tells
// the arguments; in subFrame 1, of the 10 whole delays, thirds are only from 5/3 below the centre to 2/3 above it. The
// vector goes to pSrcDstPrevExcitation alone.
VEK_API VekStatus veksAdaptiveCodebookSearch_G729D_16s(Vek16s valOpenDelay, const Vek16s* pSrcAdptTarget,
                                                       const Vek16s* pSrcImpulseResponse, Vek16s* pSrcDstPrevExcitation,
                                                       Vek16s subFrame, Vek16s* pDstDelay);

#ifdef __cplusplus
}
#endif
