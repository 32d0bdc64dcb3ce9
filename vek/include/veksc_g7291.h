// Speech coding library of Vek: G.729.1.
// A frame has 160 samples of 8 kHz in each of two bands, the lower one coded in four subframes of 40. Its first layer
// is the code of G.729 (veksc_g729*.h); the second adds four pulses a subframe, the higher ones band extension and
// transform coding.
//
// All functions: vekStsNullPtrErr for a null pointer and vekStsRangeErr for a value out of the range told, before
// anything is written. States are opaque buffers of the size that GetStateSize tells, without alignment, set up by Init
// (silence before), else vekStsStateErr.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// --- core: pitch ---

// Closed-loop search of the adaptive codebook in a subframe, over the whole delays lagMin..lagMax (20 <= lagMin <=
// lagMax
// <= 143). subFrame is where the subframe begins in the frame: 0, 40, 80 or 120; at 40 and 120, which are coded by
// their distance from the delay before, all delays have thirds, at 0 and 80 those up to 84. Target Q0, impulse response
// Q12. pSrcPrevExcitation holds 154 samples of excitation, oldest first, and behind them the 40 of the residual.
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

#ifdef __cplusplus
}
#endif
