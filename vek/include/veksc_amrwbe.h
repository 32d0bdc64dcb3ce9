// Speech coding library of Vek: transforms, resampling and quantisers of AMR-WB+ (TS 26.290).
//
// All functions: vekStsNullPtrErr for a null pointer, vekStsSizeErr for an impossible length, vekStsRangeErr for a
// value out of range; all before anything is written. Nothing is allocated. Results are rounded and saturated.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// ---- Transforms of the transform-coded excitation ----

// Orthonormal Fourier transform of len real samples, X(k) = 1 / sqrt(len) * sum of x(n) * exp(-2 pi j n k / len), and
// its inverse. Order of the spectrum: re 0, re len/2, re 1, im 1, re 2, im 2, ... Single precision inside, rounded
// once, the same bits at every level; the pair gives the signal back. In place or not. len 48, 96, 192, 288, 576 or
// 1152, else vekStsFftOrderErr.
VEK_API VekStatus veksFFTFwd_RToPerm_AMRWBE_16s(const Vek16s* pSrc, Vek16s* pDst, int len);
VEK_API VekStatus veksFFTInv_PermToR_AMRWBE_16s(const Vek16s* pSrc, Vek16s* pDst, int len);

// ---- Measures and gain of the transform-coded excitation ----

// Mean over the segments of 10 log10(energy of the signal / energy of the difference), in dB, Q8; an energy of 0 counts
// as 1. len 1..65536, a multiple of lenSegment.
VEK_API VekStatus veksSNR_AMRWBE_16s(const Vek16s* pSrcSignal, const Vek16s* pSrcSynth, int len, int lenSegment,
                                     Vek16s* pResultSNR);

// *pGain, Q16: the gain with which pSrcQuant comes closest to pSrc / 2^scaleFactor, not below 0; 0 for a vector of
// zeros. With quantFlag 1 it is quantised: the level, gain times RMS of pSrcQuant, is 10^(index / 28), *pQuantIndex
// 0..127; with 0 the index is not touched. len 48, 96, 192, 288, 576 or 1152; scaleFactor 0..15.
VEK_API VekStatus veksGainQuantTCX_AMRWBE_16s(const Vek16s* pSrc, int scaleFactor, const Vek16s* pSrcQuant, int len,
                                              int quantFlag, Vek32s* pGain, Vek16s* pQuantIndex);
// The gain, Q16, from the index. *pSrcDstRMS, Q15: the level; a lost frame (bfi 1) has 0.7 of the last one, and its
// index is not looked at.
VEK_API VekStatus veksGainDecodeTCX_AMRWBE_16s(const Vek16s* pSrcQuant, int len, Vek16s valQuantIndex, int bfi,
                                               Vek32s* pSrcDstRMS, Vek32s* pGain);

// ---- Immittance spectral frequencies of the high band ----

// Eight frequencies, 16384 = 6400 Hz, with 9 bits: pDstQIsfIndex[0] 0..3, [1] 0..127, by a full search. The past
// residual (8) is the codec's memory, 0 at the start. The results ascend by 128 at least. mode picks the tables: 0 for
// the low internal rates, 1 for the others. pDstQIsf may be pSrcIsf.
VEK_API VekStatus veksISFQuantHighBand_AMRWBE_16s(const Vek16s* pSrcIsf, Vek16s* pDstQIsf, Vek16s* pSrcDstPastResidual,
                                                  Vek16s* pDstQIsfIndex, int mode);
// The frequencies from the two indices. bfi 1: nine tenths of those that stand in pSrcDstQIsf and one of the mean.
VEK_API VekStatus veksISFQuantDecodeHighBand_AMRWBE_16s(const Vek16s* pSrcIdxs, Vek16s* pSrcDstQIsf,
                                                        Vek16s* pSrcDstPastResidual, int bfi, int mode);

// ---- Filters ----

// The nine taps, Q12, that bring pSrcMid closest to pSrcTarget over 320 samples: the least of the sum of
// (target[n] - sum of h[k] * mid[n - k])^2, by the covariances. pSrcMid[-8..319] is read.
VEK_API VekStatus veksFIRGenMidBand_AMRWBE_16s(const Vek16s* pSrcMid, const Vek16s* pSrcTarget, Vek16s* pDstFilter);

// Takes the noise between the harmonics, up to 500 Hz, out of 1024 samples of synthesis, 16 subframes each with a lag
// (0: no pitch; 1..375) and a gain (Q14, bounded by 0 and 1). The difference between a sample and the mean of those a
// lag before and after it (lags above 128: half that from the one before) is weighted by the gain and by
// usual / (usual + its RMS), passed through a low-pass filter and subtracted. pitchAdjust 1: a lag is halved where the
// signal repeats after half of it. The output is 140 samples late. Memories, 0 at the start: pSrcDstSynth, the last
// 503 samples of input; pSrcDstNoise, the last 24 of the difference; *pSrcDstFilterScale, its usual level in dB, Q8.
VEK_API VekStatus veksPostFilterLowBand_AMRWBE_16s(const Vek16s* pSrcPitchLag, const Vek16s* pSrcPitchGain,
                                                   Vek16s* pSrcDstSignal, Vek16s* pSrcDstSynth, Vek16s* pSrcDstNoise,
                                                   Vek16s* pSrcDstFilterScale, int pitchAdjust);

#ifdef __cplusplus
}
#endif
