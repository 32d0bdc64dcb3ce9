// Functions of the G.729 family: correlation matrix of the fixed codebook search, phase dispersion of Annex D.
// The filters and interpolations that G.729 shares with other codecs are in veksc_filter.h.
//
// All functions: vekStsNullPtrErr for a null pointer, before anything is written. Subframes have 40 samples.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Correlations of the impulse response h of 40 elements: phi(i,j) = sum of h[n-i] * h[n-j], n = max(i,j)..39, in the
// order of the fixed codebook searches. Track t holds the positions 5k + t, k = 0..7. The 616 elements of pDst:
//   0..39    the diagonals of the tracks 0..4, 8 each: phi(5k+t, 5k+t)
//   40..615  nine blocks of 64 for the pairs of tracks (0,1) (0,2) (0,3) (0,4) (1,2) (1,3) (1,4) (2,3) (2,4):
//            element 8k + l of the pair (t,u) is phi(5k+t, 5l+u)
// G.729 3.8.1 eq 51.
//
// Fixed point: h is first scaled by a power of 2 to the largest size that its energy allows (halved when twice the
// energy exceeds 32000 * 2^16), so that only the ratios of elements count. The sums are those of doubled products, each
// step saturating: the whole 32 bits, or their upper halves, cut off.
VEK_API VekStatus veksToeplizMatrix_G729_16s(const Vek16s* pSrc, Vek16s* pDst);
VEK_API VekStatus veksToeplizMatrix_G729_16s32s(const Vek16s* pSrc, Vek32s* pDst);

// Floating point: the plain sums, not scaled.
VEK_API VekStatus veksToeplizMatrix_G729_32f(const Vek32f* pSrc, Vek32f* pDst);

// Phase dispersion at 6.4 kbit/s. G.729 Annex D.4. The state is an opaque buffer of *pSize bytes without alignment,
// set up by Init (a subframe without dispersion before, gains of zero).
VEK_API VekStatus veksPhaseDispersionGetStateSize_G729D_16s(int* pSize);
VEK_API VekStatus veksPhaseDispersionInit_G729D_16s(void* pPhDMem);

// One subframe. The gains (codebook Q1, pitch Q14) decide on strong, mild or no dispersion; the innovation (Q13) is
// convolved in a circle with that filter, and its share in the excitation is exchanged:
// pDstFltExcSignal = pSrcExcSignal - gain * innovation + gain * dispersed innovation, Q0, each share rounded,
// saturated. pSrcDstInnovation receives the dispersed innovation. pDstFltExcSignal may be pSrcExcSignal. vekStsStateErr
// for a state that Init has not set up.
VEK_API VekStatus veksPhaseDispersion_G729D_16s(const Vek16s* pSrcExcSignal, Vek16s* pDstFltExcSignal,
                                                Vek16s valCodebookGain, Vek16s valPitchGain, Vek16s* pSrcDstInnovation,
                                                void* pPhDMem);

#ifdef __cplusplus
}
#endif
