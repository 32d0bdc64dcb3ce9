// Filters and element-wise arithmetic that the codecs share: harmonic, residual and synthesis filters, pole-zero
// filters, products, interpolation, inverse square root, lag window.
// Correlation, convolution, scaling and transforms are in veksc_signal.h.
//
// All functions: vekStsNullPtrErr for a null pointer, vekStsSizeErr for a length below 1 (above 65536 too), before
// anything is written. "Rounded" means half of the last place added before the cut, results saturate to 16 bits.
// Coefficients of order 10 are 11 elements, the first being 1.0 in the format of the vector. "Saturating steps" means
// that each addition to the 32-bit sum of doubled products saturates, as the recommendations' basic operators do.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Harmonic filters (pitch sharpening): a multiple of the sample T before is added. pSrc[-T..-1] must be there.
// T 0..65536, else vekStsRangeErr.

// pDst[n] = pSrc[n] + beta * pSrc[n-T], beta Q15, rounded once. With pDst equal to pSrc the output is fed back, sample
// by sample; the two may not overlap otherwise. TS 26.190 5.8.2.
VEK_API VekStatus veksHarmonicFilter_NR_16s(Vek16s beta, int T, const Vek16s* pSrc, Vek16s* pDst, int len);

// pSrcDst[n] += beta * pSrcDst[n-T] with feedback; beta Q15, the product is cut off. G.729 3.8 eq 46.
VEK_API VekStatus veksHarmonicFilter_16s_I(Vek16s beta, int T, Vek16s* pSrcDst, int len);
VEK_API VekStatus veksHarmonicFilter_32f_I(int T, Vek32f* pSrcDst, int len, Vek32f beta);

// Residual of order 10 of a subframe of 40 samples: pDst[n] = sum of pLPC[j] * pSrc[n-j], j = 0..10, pLPC Q12, rounded,
// saturating steps. pSrc[-10..-1] must be there; pDst may not overlap the source. G.729 3.5.
VEK_API VekStatus veksResidualFilter_G729_16s(const Vek16s* pSrc, const Vek16s* pLPC, Vek16s* pDst);

// Synthesis of order 10: y[n] = (pLPC[0] * x[n] - sum of pLPC[j] * y[n-j], j = 1..10) * 2^-scaleFactor, rounded.
// scaleFactor is the format of pLPC (12 for Q12), 0..15, else vekStsScaleRangeErr. pMem holds the ten outputs before,
// oldest first; it is not changed: the last ten outputs are the next call's. Saturating steps. G.729 3.5, 4.1.6.
VEK_API VekStatus veksSynthesisFilter_NR_16s_Sfs(const Vek16s* pLPC, const Vek16s* pSrc, Vek16s* pDst, int len,
                                                 int scaleFactor, const Vek16s* pMem);
VEK_API VekStatus veksSynthesisFilter_NR_16s_ISfs(const Vek16s* pLPC, Vek16s* pSrcDst, int len, int scaleFactor,
                                                  const Vek16s* pMem);

// The same with a 32-bit sum that wraps: for signals that are known not to overflow it, where it gives the same bits.
VEK_API VekStatus veksSynthesisFilterLow_NR_16s_ISfs(const Vek16s* pLPC, Vek16s* pSrcDst, int len, int scaleFactor,
                                                     const Vek16s* pMem);

// Response of the synthesis filter at rest to one impulse of 1.0 in Q12 (4096); pDst Q12. G.729 3.5.
VEK_API VekStatus veksSynthesisFilterZeroStateResponse_NR_16s(const Vek16s* pLPC, Vek16s* pDst, int len,
                                                              int scaleFactor);

// High-pass filters of G.729, second order. The scale factor names the filter by its total shift with coefficients near
// 2.0 in Q12: 13 is the pre-processing filter of 140 Hz, which halves the signal (3.1); 12 is the post-processing
// filter of 100 Hz, which doubles it (4.2.5); others vekStsScaleRangeErr. The memory is veksHighPassFilterSize_G729
// bytes of any alignment; all zeros is the state of rest, as veksHighPassFilterInit_G729 sets it.
VEK_API VekStatus veksHighPassFilterSize_G729(int* pSize);
VEK_API VekStatus veksHighPassFilterInit_G729(char* pMem);
VEK_API VekStatus veksHighPassFilter_G729_16s_ISfs(Vek16s* pSrcDst, int len, int scaleFactor, char* pMemUpdated);

// Pole-zero filters of G.723.1 2.8 and 3.8 on a subframe of 60 samples:
// y[n] = x[n] - sum of c[j] * x[n-1-j] + sum of c[10+j] * y[n-1-j], j = 0..9, with pCoeffs c of 20 elements in Q13 and
// one rounding; saturating steps. pMem has 20 elements: ten inputs, then ten outputs, newest first; it is brought
// forward.

VEK_API VekStatus veksIIR16s_G723_16s_I(const Vek16s* pCoeffs, Vek16s* pSrcDst, Vek16s* pMem);

// x[n] = pSrc[n] * 2^-sFs, rounded and saturated to 16 bits; sFs 0..31, else vekStsScaleRangeErr.
VEK_API VekStatus veksIIR16s_G723_32s16s_Sfs(const Vek16s* pCoeffs, const Vek32s* pSrc, int sFs, Vek16s* pDst,
                                             Vek16s* pMem);

// pDst[n] is the sum before the rounding, saturated to 32 bits: the sample in the upper half, its fraction below. What
// is fed back and kept is the rounded sample.
VEK_API VekStatus veksIIR16s_G723_16s32s(const Vek16s* pCoeffs, const Vek16s* pSrc, Vek32s* pDst, Vek16s* pMem);

// Perceptual weighting of G.729 3.3 on a subframe of 40 samples: residual by pCoeffs[0..10], rounded to 16 bits, then
// synthesis by pCoeffs[11..21], both of order 10 in Q12. pMem has 20 elements: ten inputs, then ten outputs, oldest
// first; it is brought forward. pDst may be pSrc. Saturating steps, or sums that wrap in the Low form.
VEK_API VekStatus veksIIR16s_G729_16s(const Vek16s* pCoeffs, const Vek16s* pSrc, Vek16s* pDst, Vek16s* pMem);
VEK_API VekStatus veksIIR16sLow_G729_16s(const Vek16s* pCoeffs, const Vek16s* pSrc, Vek16s* pDst, Vek16s* pMem);

// pSrcDst[n] = 2^30 / sqrt(pSrcDst[n]), by a table of 49 entries and linear interpolation (within 0.04 % of the
// root); 0x3fffffff for values below 1. G.729 and TS 26.073 inv_sqrt.
VEK_API VekStatus veksInvSqrt_32s_I(Vek32s* pSrcDst, int len);

// pDst[n] = (val1 * pSrc1[n] + val2 * pSrc2[n]) * 2^-scaleFactor, the sum exact, rounded (NR) or cut off; scaleFactor
// 0..15, else vekStsScaleRangeErr. pDst may be either source. G.729 3.7.1, 3.10.
VEK_API VekStatus veksInterpolateC_NR_G729_16s_Sfs(const Vek16s* pSrc1, Vek16s val1, const Vek16s* pSrc2, Vek16s val2,
                                                   Vek16s* pDst, int len, int scaleFactor);
VEK_API VekStatus veksInterpolateC_G729_16s_Sfs(const Vek16s* pSrc1, Vek16s val1, const Vek16s* pSrc2, Vek16s val2,
                                                Vek16s* pDst, int len, int scaleFactor);
VEK_API VekStatus veksInterpolateC_G729_32f(const Vek32f* pSrc1, const Vek32f* pSrc2, Vek32f* pDst, int len,
                                            Vek32f val1, Vek32f val2);

// pDst[n] = pSrc1[n] / 2 + pSrc2[n] / 2, each half cut off. G.729 3.2.5.
VEK_API VekStatus veksInterpolate_G729_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len);

// Autocorrelations of the lags 1..len times the lag window (60 Hz, noise correction 1.0001 of lag 0), in the split
// arithmetic of 32 x 32 bits. The pointer is to lag 1. len 1..10. G.729 3.2.1 eq 6, 7.
VEK_API VekStatus veksLagWindow_G729_32s_I(Vek32s* pSrcDst, int len);

// Products * 2^-scaleFactor, rounded, saturated; scaleFactor 0..30, else vekStsScaleRangeErr. pDst may be a source.
VEK_API VekStatus veksMulC_NR_16s_Sfs(const Vek16s* pSrc, Vek16s val, Vek16s* pDst, int len, int scaleFactor);
VEK_API VekStatus veksMulC_NR_16s_ISfs(Vek16s val, Vek16s* pSrcDst, int len, int scaleFactor);
VEK_API VekStatus veksMul_NR_16s_Sfs(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len, int scaleFactor);
VEK_API VekStatus veksMul_NR_16s_ISfs(const Vek16s* pSrc, Vek16s* pSrcDst, int len, int scaleFactor);

// pDst[n] = pSrc[n] * p(n), p(0) = 1, p(1) = val, p(n+1) = p(n) * val, each product * 2^-scaleFactor, rounded,
// saturated; scaleFactor 0..15, else vekStsScaleRangeErr. With 15: bandwidth expansion of LPC coefficients. pDst may be
// pSrc. G.729 3.3.
VEK_API VekStatus veksMulPowerC_NR_16s_Sfs(const Vek16s* pSrc, Vek16s val, Vek16s* pDst, int len, int scaleFactor);

// Filtered excitation of the next longer delay: pSrcDst[n] = pSrcDst[n-1] + val * pSrc[n] for n = len-1..1,
// pSrcDst[0] = val * pSrc[0]; pSrc is the impulse response, val the excitation's sample that comes in. G.729 3.7 eq 40.
VEK_API VekStatus veksFilteredExcitation_G729_32f(const Vek32f* pSrc, Vek32f* pSrcDst, int len, Vek32f val);

#ifdef __cplusplus
}
#endif
