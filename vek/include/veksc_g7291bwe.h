// Speech coding library of Vek: time-domain band extension of G.729.1.
// The band above 4 kHz, folded down and cut off at 3 kHz, is described by envelopes in time and frequency for each
// frame of 160 samples at 8 kHz, and made anew from an excitation that the decoder has of the band below.
//
// Envelopes are logarithms to base 2 of a root of energy, Q10: 1024 are 6.02 dB. A time envelope has a value for each
// segment of ten samples, a frequency envelope twelve for bands of 250 Hz that overlap. Logarithms and powers are those
// of the recommendation's tables.
//
// All functions: vekStsNullPtrErr for a null pointer, vekStsSizeErr for a length and vekStsRangeErr for a value out of
// the range given, before anything is written. The state is an opaque buffer of the size that GetStateSize tells,
// without alignment, set up by Init (silence before), else vekStsStateErr.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// --- envelopes ---

// Time envelope of len segments (1..16): pDstTimeEnvelope[i] = 1/2 log2(sum of squares of the segment) - nls, where nls
// (0..15) tells by how many bits the 10 * len samples of pSrc were shifted to the left. A segment of zeros counts as
// one of energy 1. G.729.1 6.
VEK_API VekStatus veksEnvelopTime_G7291_16s(const Vek16s* pSrc, int nls, Vek16s* pDstTimeEnvelope, int len);

// Frequency envelope of 128 samples, 12 values. They go through a window that rises as a raised cosine over 72 samples
// and falls over 56; pDstFreqEnvelope[j] = 1/2 log2(S[2j] / 2 + S[2j+1] + S[2j+2] / 2), where S[k] is the squared
// magnitude of their Fourier sum at k * 125 Hz. The transform is that of 128 points, by 16 bits of the scaled signal:
// what lies 70 dB under the strongest frequency drowns. Not below 0. G.729.1 6.
VEK_API VekStatus veksEnvelopFrequency_G7291_16s(const Vek16s* pSrc, Vek16s* pDstFreqEnvelope);

// Quantises a frame's 28 values, 16 of the time envelope and 12 of the frequency envelope, in place. pCdbkIndices
// receives six indices: the mean of the time values in steps of 3 dB (5 bits, not below 0); then, of what the mean
// leaves, the two halves of the time values (7 bits each, one codebook) and the three thirds of the frequency values
// (5, 5, 4 bits). The codebooks are grids of the first three coefficients of the cosine transform, of 8 x 4 x 4, 4 x 4
// x 2 and 4 x 2 x 2 levels, those of the best quantisers of a normal variable. G.729.1 6.
VEK_API VekStatus veksQuantParam_G7291_16s(Vek16s* pSrcDst, Vek16s* pCdbkIndices);

// --- synthesis ---

VEK_API VekStatus veksGenerateExcitationGetStateSize_G7291_16s(int* pSize);
VEK_API VekStatus veksGenerateExcitationInit_G7291_16s(void* pMemory);
// Excitation of a frame, 160 samples of a power near 1774^2, from what the core layers have in each of four subframes:
// whole delay (0..144, below 20 it counts as 20), its thirds (-1..1) and the energies of the adaptive and the fixed
// codebook's part (below 0 they count as 0). Pulses a delay apart make the voiced part, noise the rest; the share of
// pulses in the power is p^2 / (p^2 + p f + f^2) of the energies p and f, averaged with that of the subframe before. A
// delay within a tenth of a multiple of the one before is divided, and goes into the mean of both. Each pulse has the
// shape of a low pass of 3 kHz in sixths of a sample, 41 long; every other sample changes its sign, since the band is
// turned round. G.729.1 7.
VEK_API VekStatus veksGenerateExcitation_G7291_16s(const Vek16s* pIntPitchLag, const Vek16s* pFracPitchLag,
                                                   const Vek32s* pLtpPower, const Vek32s* pFixPower, Vek16s* pDst,
                                                   void* pMemory);

// Gives 80 samples the time envelope of eight values: each segment by the gain from its own envelope to that wanted,
// with a transition of half a raised cosine over its first five samples. *pGain * 2^-*pNorm is the gain of the last
// segment before and after (pGain 0 or more, pNorm -32..63). A segment of zeros keeps the gain. pDst may be pSrc.
// G.729.1 7.
VEK_API VekStatus veksShapeEnvelopTime_G7291_16s(const Vek16s* pSrc, const Vek16s* pSrcTimeEnvelope, Vek16s* pGain,
                                                 Vek16s* pNorm, Vek16s* pDst);

// Gives 160 samples the frequency envelope of twelve values, by a filter for each half of the frame with linear phase:
// twelve bands of 33 taps, each times the gain from the signal's own envelope to that wanted, at most 8. The own
// envelope is that of 128 samples around the half: pSrc[-48..159] is read. pFilterCoeffs is the last half's filter,
// Q12, before and after; the first half's goes halfway there from its own. pMem holds the 32 samples before the frame,
// oldest first, and is brought up to date. pDst lags pSrc by 16 samples, and apart from it. G.729.1 7.
VEK_API VekStatus veksShapeEnvelopFrequency_G7291_16s(const Vek16s* pSrc, const Vek16s* pSrcFreqEnvelope, Vek16s* pDst,
                                                      Vek16s* pFilterCoeffs, Vek16s* pMem);

// Compresses samples that stick out of the time envelope of a frame. With e = 2^envelope, which no sample of a segment
// of that energy exceeds: up to e/2 a sample stays; what is above counts half up to e, a sixteenth beyond. The 160
// samples lag the envelope by 16 of 16 values; pMem has the two values before it, and receives the last two.
// G.729.1 7.
VEK_API VekStatus veksCompressEnvelopTime_G7291_16s(const Vek16s* pSrcTimeEnvelope, Vek16s* pSrcDst, Vek16s* pMem);

#ifdef __cplusplus
}
#endif
