// Signal kernels that the codecs share: correlation, convolution, dot product, scaling, transforms.
// Filters, multiplication and interpolation are in veksc_filter.h.
//
// All functions: vekStsNullPtrErr for a null pointer, vekStsSizeErr for a length below 1 (above 65536 too), before
// anything is written. Sums are exact and saturate once, at the end. "Scale factor s" divides by 2^s with the
// fraction cut off (towards minus infinity); a negative s multiplies; outside -31..31 vekStsScaleRangeErr.
// Source and destination may not overlap unless the name ends in _I. No function of this file keeps state.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Autocorrelation. r(k) = sum of pSrc[i] * pSrc[i-k] for i = k..len-1, k = 0..lenDst-1; lags from len on give 0.
// G.729 3.2.1, GSM 06.10 5.2.4.

// pDst[k] = r(k), saturated to 32 bits.
VEK_API VekStatus veksAutoCorr_16s32s(const Vek16s* pSrc, int len, Vek32s* pDst, int lenDst);

// pDst[k] = r(k) * 2^pNorm, with pNorm such that 2^30 <= pDst[0] < 2^31 (0 for a source of zeros). pNorm is negative
// where r(0) exceeds 31 bits; the fraction is cut off then.
VEK_API VekStatus veksAutoCorr_NormE_16s32s(const Vek16s* pSrc, int len, Vek32s* pDst, int lenDst, int* pNorm);

// The upper 16 bits of veksAutoCorr_NormE_16s32s, rounded and saturated; same pNorm.
VEK_API VekStatus veksAutoCorr_NormE_NR_16s(const Vek16s* pSrc, int len, Vek16s* pDst, int lenDst, int* pNorm);

// veksAutoCorr_NormE_NR_16s of an analysis window of 180 samples with the lags 0..9. G.723.1 2.4.
VEK_API VekStatus veksAutoCorr_NormE_G723_16s(const Vek16s* pSrc, Vek16s* pDst, int* pNorm);

// LPC analysis of G.723.1 2.4: 180 samples under a Hamming window, lags 0..10, r(0) raised by 1/1024, normalised,
// rounded to 16 bits, binomial lag window. pNorm as above, for the windowed samples.
VEK_API VekStatus veksAutoCorr_G723_16s(const Vek16s* pSrc, int* pNorm, Vek16s* pDst);

// Shifts a vector so that its largest magnitude keeps pScale redundant sign bits. On entry pScale is that number, 0 to
// 15 (vekStsScaleRangeErr); on exit the shift that was made, positive to the left. To the right the fraction is cut
// off. A vector of zeros is left as it is, with shift 0. G.723.1 2.4.
VEK_API VekStatus veksAutoScale_16s(const Vek16s* pSrc, Vek16s* pDst, int len, int* pScale);
VEK_API VekStatus veksAutoScale_16s_I(Vek16s* pSrcDst, int len, int* pScale);

// Causal convolution. y(n) = sum of pSrc1[i] * pSrc2[n-i] for i = 0..n, n = 0..len-1.

// pDst[n] = y(n), saturated to 32 bits.
VEK_API VekStatus veksConvPartial_16s32s(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek32s* pDst, int len);

// pDst[n] = y(n) * 2^-scaleFactor, cut off, saturated to 16 bits. With 12: G.729 3.7.
VEK_API VekStatus veksConvPartial_16s_Sfs(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len,
                                          int scaleFactor);

// pDst[n] = y(n) * 2^-15, rounded, saturated to 16 bits. TS 26.190 5.7.
VEK_API VekStatus veksConvPartial_NR_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len);

// Correlation of two vectors of len elements. d(k) = sum of pSrc1[i] * pSrc2[i-k] for i = k..len-1.

// pDst[k] = d(k) * 2^-scaleFactor, cut off, saturated, k = 0..len-1. G.729 3.8 (backward filtered target).
VEK_API VekStatus veksCrossCorr_16s32s_Sfs(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, Vek32s* pDst,
                                           int scaleFactor);

// pDst[k] = d(k) * 2^-15, rounded, saturated to 16 bits, k = 0..lenDst-1; lags from len on give 0.
VEK_API VekStatus veksCrossCorr_NR_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, Vek16s* pDst, int lenDst);

// pDst[k] = d(k) shifted by one number of bits for all k = 0..len-1, such that the largest magnitude lies within
// 2^12..2^13 (room for eight pulses in 16 bits); small correlations are doubled at most 14 times, cut off.
// G.729 3.8.1, TS 26.090 5.7.
VEK_API VekStatus veksCrossCorr_NormM_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, Vek16s* pDst);

// Modulated lapped transform of G.722.1 3.2 and 4.5, in two steps: window and fold, then a cosine transform of
// type IV. len is 320 or 640 (Annex C), the G722 forms are those of 320 samples. vekStsLengthErr for another len.
// The window is sin(pi (n + 1/2) / (2 len)) in Q15.

// Window and fold: pSrc is the new frame, pSrcDstOld the frame before, which the new one then replaces. Same Q as the
// source, rounded, saturated. pDst may be pSrc.
VEK_API VekStatus veksDecomposeMLTToDCT_G7221_16s(const Vek16s* pSrc, Vek16s* pSrcDstOld, Vek16s* pDst, int len);
VEK_API VekStatus veksDecomposeMLTToDCT_G722_16s(const Vek16s* pSrc, Vek16s* pSrcDstOld, Vek16s* pDst);

// Unfold, window and overlap: pSrc is the new transformed block, pSrcDstOld the block before (len elements), which the
// new one then replaces. The frame at pDst is the one before the frame that was folded last. Rounded, saturated.
VEK_API VekStatus veksDecomposeDCTToMLT_G7221_16s(const Vek16s* pSrc, Vek16s* pSrcDstOld, Vek16s* pDst, int len);
VEK_API VekStatus veksDecomposeDCTToMLT_G722_16s(const Vek16s* pSrc, Vek16s* pSrcDstOld, Vek16s* pDst);

// Cosine transform of type IV with the factor sqrt(2/len), which makes it its own inverse: the two directions are the
// same arithmetic. y(m) = sqrt(2/len) * sum of x(n) cos(pi/len (n + 1/2)(m + 1/2)), same Q as the source, saturated.
// 32-bit arithmetic inside: within 1 of the exact value. pDst may be pSrc.
VEK_API VekStatus veksDCTFwd_G7221_16s(const Vek16s* pSrc, Vek16s* pDst, int len);
VEK_API VekStatus veksDCTInv_G7221_16s(const Vek16s* pSrc, Vek16s* pDst, int len);
VEK_API VekStatus veksDCTFwd_G722_16s(const Vek16s* pSrc, Vek16s* pDst);
VEK_API VekStatus veksDCTInv_G722_16s(const Vek16s* pSrc, Vek16s* pDst);

// Dot product of two vectors.

// pDp = the sum, saturated to 32 bits.
VEK_API VekStatus veksDotProd_G729A_16s32s(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, Vek32s* pDp);

// pDp = the sum in single precision; order of summation not settled, relative error to the sum of magnitudes < 2^-20.
VEK_API VekStatus veksDotProd_G729A_32f(const Vek32f* pSrc1, const Vek32f* pSrc2, int len, Vek32f* pDp);

// pDp = sum * 2^-pSfs, cut off, with the least pSfs >= 0 that lets it fit 32 bits.
VEK_API VekStatus veksDotProdAutoScale_16s32s_Sfs(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, Vek32s* pDp,
                                                  int* pSfs);

// Fourier transform of 128 real samples in place, divided by 128, rounded, so that nothing saturates. Permuted result:
// re X(0), re X(64), re X(1), im X(1), re X(2), im X(2), ... im X(63); X(k) = sum of x(n) exp(-j 2 pi nk / 128).
// Within 1 of the exact value. TS 26.094, option 2.
VEK_API VekStatus veksFFTFwd_RToPerm_GSMAMR_16s_I(Vek16s* pSrcDst);

#ifdef __cplusplus
}
#endif
