// Speech coding library of Vek: codebook searches and decoders, pitch gains, conversions and post-filter of GSM AMR
// (TS 26.090). Subframes have 40 samples, frames 160.
//
// All functions: vekStsNullPtrErr for a null pointer, vekStsBitRateErr for a rate that is none of the codec's,
// vekStsRangeErr for a value out of range; all before anything is written. Unless stated otherwise `mode` is one of the
// eight rates of speech, and subFrame 0..3.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Closed-loop search of the adaptive codebook in a subframe: TS 26.090 5.6. pSrcOpenLoopLag holds the open-loop lags
// of the two halves of the frame, *pValResultPrevIntPitchLag the whole lag of the subframe before; lags outside the
// codec's range are brought into it. Target Q0, impulse response Q12. pSrcDstExcitation holds 154 samples of
// excitation and after them the 40 of the residual; these receive the adaptive codebook vector, as pDstAdptVector
// does. The results are the whole lag, its fraction (-2..3 sixths at 12.2 kbit/s, else -1..1 thirds) and the index of
// the bit stream. Sums are exact and saturate once.
VEK_API VekStatus veksAdaptiveCodebookSearch_GSMAMR_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcImpulseResponse,
                                                        const Vek16s* pSrcOpenLoopLag,
                                                        Vek16s* pValResultPrevIntPitchLag, Vek16s* pSrcDstExcitation,
                                                        Vek16s* pResultFracPitchLag, Vek16s* pResultAdptIndex,
                                                        Vek16s* pDstAdptVector, Vek16s subFrame, VekSpchBitRate mode);

// Adaptive codebook vector of a subframe from the index of the bit stream: TS 26.090 6.1, and where bfi is 1 the
// substitution of TS 26.091 for a bad frame: the former lag, at rates below 12.2 kbit/s one longer; at 4.75, 5.15 and
// 5.9 kbit/s the index still tells the lag when inBgNoise is not 0 and voicedHangover is above 4. At 12.2 kbit/s an
// index of subframe 1 or 3 above 60 counts as bad. *pValResultPrevIntPitchLag (17..144) is the whole lag of the
// subframe before, and receives the one used; *pResultIntPitchLag receives the one that the index tells. The index
// must fit its field: 9 bits at 12.2 kbit/s, else 8, in the subframes 0 and 2 (0 alone at 4.75 and 5.15 kbit/s); in
// the others 6 bits at 12.2 and 7.95, 5 at 10.2 and 7.4, else 4. bfi 0..1. pSrcDstExcitation holds 154 samples and
// receives 40 after them, as pDstAdptVector does.
VEK_API VekStatus veksAdaptiveCodebookDecode_GSMAMR_16s(Vek16s valAdptIndex, Vek16s* pValResultPrevIntPitchLag,
                                                        Vek16s* pResultIntPitchLag, Vek16s* pSrcDstExcitation,
                                                        Vek16s* pDstAdptVector, Vek16s subFrame, Vek16s bfi,
                                                        Vek16s inBgNoise, Vek16s voicedHangover, VekSpchBitRate mode);

// Search of the algebraic codebook in a subframe: TS 26.090 5.7. valIntPitchLag 17..144 is the whole lag of the
// subframe, valBoundQAdptGain the bounded quantised gain of the adaptive codebook, Q14, not negative: it sharpens the
// response pSrcDstImpulseResponse (Q12, 40 elements), which is changed by it, and the vector. Target and residual Q0;
// the residual serves the signs at 10.2 and 12.2 kbit/s. The vector is Q13 (Q12 at 12.2), the filtered vector Q12
// (Q10). pDstEncPosSign receives what the bit stream takes, at most ten words: below 10.2 kbit/s the positions, then
// the signs; at 10.2 four signs and three words of positions; at 12.2 ten positions, the first five with signs.
// VEK_SPCHBR_DTX searches as 12.2 kbit/s does.
VEK_API VekStatus veksAlgebraicCodebookSearch_GSMAMR_16s(Vek16s valIntPitchLag, Vek16s valBoundQAdptGain,
                                                         const Vek16s* pSrcFixedTarget, const Vek16s* pSrcLtpResidual,
                                                         Vek16s* pSrcDstImpulseResponse, Vek16s* pDstFixedVector,
                                                         Vek16s* pDstFltFixedVector, Vek16s* pDstEncPosSign,
                                                         Vek16s subFrame, VekSpchBitRate mode);

// Vector of the algebraic codebook from the words that the search gives, before it is sharpened: TS 26.090 6.1. Bits
// beyond a word's field are not looked at; a word of 10.2 kbit/s beyond its last code counts as that one.
// VEK_SPCHBR_DTX has the ten pulses of 12.2 kbit/s.
VEK_API VekStatus veksFixedCodebookDecode_GSMAMR_16s(const Vek16s* pSrcFixedIndex, Vek16s* pDstFixedVector,
                                                     Vek16s subFrame, VekSpchBitRate mode);

// Gain of the adaptive codebook, Q14, 0..19661 (1.2), from the target and the filtered vector: TS 26.090 5.6. The
// coder of 12.2 kbit/s leaves out the last two bits of it.
VEK_API VekStatus veksAdaptiveCodebookGain_GSMAMR_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcFltAdptVector,
                                                      Vek16s* pResultAdptGain);
// The same, and pResultAdptGainCoeffs receives the energy of the vector and its product with the target, each as
// mantissa and exponent: the sum is mantissa * 2^(exponent + 1).
VEK_API VekStatus veksAdaptiveCodebookGainCoeffs_GSMAMR_16s(const Vek16s* pSrcAdptTarget,
                                                            const Vek16s* pSrcFltAdptVector, Vek16s* pResultAdptGain,
                                                            Vek16s* pResultAdptGainCoeffs);

// y[i] = x[i] - gamma * x[i-1], the tilt compensation of the post filter: TS 26.090 6.2.1. gamma Q15; the product is
// cut off, difference and product saturate. *pMem holds x[-1] and receives the last input. len 1..65536, else
// vekStsSizeErr. pDst is apart from pSrc.
VEK_API VekStatus veksPreemphasize_GSMAMR_16s(Vek16s gamma, const Vek16s* pSrc, Vek16s* pDst, int len, Vek16s* pMem);

// pDst[i] = pSrc1[i] / 4 + pSrc2[i] * 3 / 4, each quarter cut off by itself: TS 26.090 5.2.6. len 1..65536, else
// vekStsSizeErr. pDst may be one of the sources.
VEK_API VekStatus veksInterpolate_GSMAMR_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len);

// Ten line spectral frequencies (0..16384 for 0..pi) to line spectral pairs, their cosines in Q15, by table and
// straight lines: TS 26.090 5.2.5. May work in place.
VEK_API VekStatus veksLSFToLSP_GSMAMR_16s(const Vek16s* pLSF, Vek16s* pLSP);

// Post filter of a frame: formant filter, tilt compensation, gain control. TS 26.090 6.2. pSrcQLpc holds the
// coefficients of the four subframes (Q12, 11 each), pSrcSpch and pDstFltSpch 160 samples, apart from each other.
// *pValResultPrevResidual is the last sample before the tilt compensation, *pValResultPrevScalingGain the gain (Q12),
// the states hold the last ten samples of speech and of the synthesis; all are brought up to date. VEK_SPCHBR_DTX
// filters as the rates below 10.2 kbit/s do.
VEK_API VekStatus veksPostFilter_GSMAMR_16s(const Vek16s* pSrcQLpc, const Vek16s* pSrcSpch,
                                            Vek16s* pValResultPrevResidual, Vek16s* pValResultPrevScalingGain,
                                            Vek16s* pSrcDstFormantFIRState, Vek16s* pSrcDstFormantIIRState,
                                            Vek16s* pDstFltSpch, VekSpchBitRate mode);

#ifdef __cplusplus
}
#endif
