// Linear prediction of G.729 and its annexes: pre-emphasis, Levinson-Durbin recursion, conversions between prediction
// coefficients, line spectral pairs and line spectral frequencies, and their quantiser. Filters and interpolations are
// in veksc_filter.h, the autocorrelation in veksc_signal.h.
//
// All functions: vekStsNullPtrErr for a null pointer, before anything is written.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// y[i] = x[i] - gamma * x[i-1], the tilt of the short-term post filter: G.729 A.4.2.3. gamma Q15; the product is cut
// off, difference and product saturate. pMem[0] holds x[-1] and receives the last input. len 1..65536, else
// vekStsSizeErr. pDst is apart from pSrc; the _I forms work in place.
VEK_API VekStatus veksPreemphasize_G729A_16s(Vek16s gamma, const Vek16s* pSrc, Vek16s* pDst, int len, Vek16s* pMem);
VEK_API VekStatus veksPreemphasize_G729A_16s_I(Vek16s gamma, Vek16s* pSrcDst, int len, Vek16s* pMem);
VEK_API VekStatus veksPreemphasize_32f_I(Vek32f* pSrcDst, int len, Vek32f* pMem, Vek32f gamma);

// Conversions of order 10. LPC: 11 coefficients, the leading 1.0 first; fixed point Q12. LSP: 10 falling cosines in
// -1..1; fixed point Q15.

// Roots of the sum and difference filters: on a grid of 60 points with four bisections (50 and two for G729A), then by
// a straight line. G.729 3.2.3, A.3.2.3, TS 26.090 5.2.3. Where fewer than ten are found, pDstLSP receives pSrcPrevLSP,
// and the status is vekStsUnstableFilter. pDstLSP may be pSrcPrevLSP.
VEK_API VekStatus veksLPCToLSP_G729_16s(const Vek16s* pSrcLPC, const Vek16s* pSrcPrevLSP, Vek16s* pDstLSP);
VEK_API VekStatus veksLPCToLSP_G729A_16s(const Vek16s* pSrcLPC, const Vek16s* pSrcPrevLSP, Vek16s* pDstLSP);
VEK_API VekStatus veksLPCToLSP_GSMAMR_16s(const Vek16s* pSrcLPC, const Vek16s* pSrcPrevLSP, Vek16s* pDstLSP);
VEK_API VekStatus veksLPCToLSP_G729_32f(const Vek32f* pSrcLPC, const Vek32f* pSrcPrevLSP, Vek32f* pDstLSP);
VEK_API VekStatus veksLPCToLSP_G729A_32f(const Vek32f* pSrcLPC, const Vek32f* pSrcPrevLSP, Vek32f* pDstLSP);

// G.729 3.2.6. Fixed point: split words, each sum saturates.
VEK_API VekStatus veksLSPToLPC_G729_16s(const Vek16s* pSrcLSP, Vek16s* pDstLPC);
VEK_API VekStatus veksLSPToLPC_G729_32f(const Vek32f* pSrcLSP, Vek32f* pDstLPC);

// Arc cosine by table and straight lines: to 0..16384 for 0..pi (Norm), and to radians in Q13. G.729 3.2.4.
VEK_API VekStatus veksLSPToLSF_Norm_G729_16s(const Vek16s* pSrcLSP, Vek16s* pDstLSF);
VEK_API VekStatus veksLSPToLSF_G729_16s(const Vek16s* pSrcLSP, Vek16s* pDstLSF);

// Cosine of radians in Q13, 0..25735, saturated; what is above repeats the table's last line. vekStsRangeErr for a
// negative frequency. G.729 3.2.4. May work in place.
VEK_API VekStatus veksLSFToLSP_G729_16s(const Vek16s* pSrcLSF, Vek16s* pDstLSP);

// From the autocorrelations pSrc[0..order] to the prediction coefficients pDstLPC[0..order] (the leading 1.0 first),
// the reflection coefficients pDstRC[0..order-1] and the prediction error. G.729 3.2.2, B.3. order 1..32, else
// vekStsSizeErr; 10 for G729B.
// Fixed point: pSrc is normalised (pSrc[0] from 2^30 on, else vekStsRangeErr); coefficients Q12, reflections Q15, error
// in units of 2^16 of pSrc. Floating point: pSrc[0] above 0, else vekStsRangeErr.
// Where a reflection leaves the unit circle (fixed point: 32750 of 2^15), nothing is written, so that the vectors keep
// the last stable filter, and the status is vekStsUnstableFilter.
VEK_API VekStatus veksLevinsonDurbin_G729_32s16s(const Vek32s* pSrc, int order, Vek16s* pDstLPC, Vek16s* pDstRC,
                                                 Vek16s* pResultErr);
VEK_API VekStatus veksLevinsonDurbin_G729B(const Vek32s* pSrc, Vek16s* pDstLPC, Vek16s* pDstRC, Vek16s* pResultErr);
VEK_API VekStatus veksLevinsonDurbin_G729_32f(const Vek32f* pSrc, int order, Vek32f* pDstLPC, Vek32f* pDstRC,
                                              Vek32f* pResultErr);

// Quantiser of the line spectral frequencies: a predictor of moving average over the last four code vectors, and two
// stages of codebooks. G.729 3.2.4. Frequencies are 10 rising radians in Q13. pPrevLSF holds the last four code
// vectors, newest first, 40 elements, and is brought up to date; at the start of a codec each is k * pi / 11. Indices:
// predictor 0..1, first stage 0..127, lower half 0..31, upper half 0..31. For background noise (G729B, Annex B.4.2.2)
// three: predictor 0..1, first stage 0..31, second stage 0..15. The quantised frequencies are rounded, in order, 321
// apart and within 40..25681.

// vekStsRangeErr for an index out of range.
VEK_API VekStatus veksLSFDecode_G729_16s(const Vek16s* pSrcIndex, Vek16s* pPrevLSF, Vek16s* pDstQLSF);
VEK_API VekStatus veksLSFDecode_G729B_16s(const Vek16s* pSrcIndex, Vek16s* pPrevLSF, Vek16s* pDstQLSF);

// An erased frame repeats the frequencies pSrcQLSF of the last good one; the code vector that would have given them
// with the predictor maIndex of that frame goes into pPrevLSF. G.729 4.4.1.
VEK_API VekStatus veksLSFDecodeErased_G729_16s(int maIndex, Vek16s* pPrevLSF, const Vek16s* pSrcQLSF);

// Searches the indices: the first stage by plain distance, the second by distance weighted as in eq 22, the predictor
// by the weighted distance of the whole.
VEK_API VekStatus veksLSFQuant_G729_16s(const Vek16s* pSrcLSF, Vek16s* pPrevLSF, Vek16s* pDstQLSF, Vek16s* pDstIndex);
VEK_API VekStatus veksLSFQuant_G729B_16s(const Vek16s* pSrcLSF, Vek16s* pPrevLSF, Vek16s* pDstQLSF, Vek16s* pDstIndex);

// The same from line spectral pairs to line spectral pairs. The two words of pDstQLSPIndex are those of the bit stream:
// predictor and first stage (8 bits), lower and upper half (10 bits).
VEK_API VekStatus veksLSPQuant_G729_16s(const Vek16s* pSrcLSP, Vek16s* pPrevLSF, Vek16s* pDstQLSP,
                                        Vek16s* pDstQLSPIndex);

#ifdef __cplusplus
}
#endif
