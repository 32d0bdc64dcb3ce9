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

// ---- Lattice quantiser of the transform-coded spectrum ----

// Points of the lattice RE8 for 8 * count lines, divided by the least gain (1 or more) that was found to keep nBits: a
// point of codebook n costs 5 n bits, the origin one, origins alone nothing. *pNoiseFactor: RMS of
// the divided lines that became origins, Q15. count 1..144, nBits 0..65536. pDst: 8 * count; it may be pSrc.
VEK_API VekStatus veksQuantTCX_AMRWBE_16s(const Vek16s* pSrc, Vek16s* pDst, int count, int nBits, Vek16s* pNoiseFactor);

// Points of RE8 to packets and back. Packet p of nPackets (1..4) has pNumBits[p] bits (0..4096), four in an element,
// the first in the highest of them, and begins with a new element. It holds the numbers of the codebooks of the points
// p, p + nPackets, ... (n - 1 ones and a zero), then their indices of 4 n bits as far as they fit; the other indices
// stand in what all packets have left. What finds no place, or was in a lost packet (pBfi[p] not 0), is the origin.
// Numbers above 34 count as 0. A vector outside the lattice is a vekStsRangeErr.
VEK_API VekStatus veksEncodeMux_AMRWBE_16s(const Vek16s* pSrc, const int* pNumBits, int nPackets, Vek16s* pDst,
                                           int count);
VEK_API VekStatus veksDecodeDemux_AMRWBE_16s(const Vek16s* pSrc, const int* pNumBits, const int* pBfi, int nPackets,
                                             Vek16s* pDst, int count);

#ifdef __cplusplus
}
#endif
