// Speech coding library of Vek: codebook searches and decoders, open-loop pitch and gains of AMR-WB (TS 26.190, the
// arithmetic of TS 26.173). Subframes have 64 samples.
//
// All functions: vekStsNullPtrErr for a null pointer, vekStsBitRateErr for a rate that is none of the codec's,
// vekStsRangeErr for a value out of range, vekStsSizeErr for an impossible length; all before anything is written.
// `mode` is one of the nine rates; VEK_SPCHBR_DTX counts as 23.85 kbit/s.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Vector of the algebraic codebook, 64 elements in Q9, from the words of the bit stream: TS 26.190 6.1. One word at
// 6.6 kbit/s, four up to 15.85 kbit/s, eight above: the upper bits of the four tracks, then the lower. Bits beyond a
// word's field are not looked at.
VEK_API VekStatus veksAlgebraicCodebookDecode_AMRWB_16s(const Vek16s* pSrcIdxs, Vek16s* pDstFixedCodevec,
                                                        VekSpchBitRate mode);

// Search of the algebraic codebook: TS 26.190 5.8. Target Q0, residual after long-term prediction scaled alike
// (12 bits), impulse response of the weighted synthesis, sharpened by the caller, Q12; it is kept as it is. The vector
// and the filtered vector are Q9; from 15.85 kbit/s on a response with an energy above 2 is halved, and both vectors
// with it. pDstIndex receives the words that the decoder above takes. At 23.05 kbit/s two starts are tried, at
// 23.85 kbit/s one.
VEK_API VekStatus veksAlgebraicCodebookSearch_AMRWB_16s(const Vek16s* pSrcFixedTarget, const Vek16s* pSrcLtpResidual,
                                                        const Vek16s* pSrcDstImpulseResponse, Vek16s* pDstFixedVector,
                                                        Vek16s* pDstFltFixedVector, VekSpchBitRate mode,
                                                        Vek16s* pDstIndex);

// What the concealment of lost lags remembers: the last five lags and gains, and a random seed.
typedef struct VekAdaptiveCodebookState_AMRWB VekAdaptiveCodebookState_AMRWB;
// Size in bytes of that state, which may lie at any address, and its value at the start of decoding (lags of 64, gains
// of 0). The gain of each subframe, Q14, is given by the third, once it is decoded.
VEK_API VekStatus veksAdaptiveCodebookDecodeGetSize_AMRWB_16s(int* pSize);
VEK_API VekStatus veksAdaptiveCodebookDecodeInit_AMRWB_16s(VekAdaptiveCodebookState_AMRWB* pState);
VEK_API VekStatus veksAdaptiveCodebookDecodeGain_AMRWB_16s(Vek16s valPitchGain, VekAdaptiveCodebookState_AMRWB* pState);

// Vector of the adaptive codebook from the index of the bit stream: TS 26.190 6.1, and with bfi 1 the substitution of
// TS 26.191 for a bad frame, for a lost one with unusableFrame 1. The bounds hold the first and last lag of a relative
// index; those of an absolute one are set, and the first is brought into 34..216. The index must fit its field: at 6.6
// and 8.85 kbit/s 8 bits, relative 5, else 9 and 6; relative are subframes 1 and 3, at 6.6 kbit/s 2 as well. bfi and
// unusableFrame 0..1, Subframe 0..3. pSrcDstExcitation points at the subframe: 248 samples before it are read, 65 from
// it on written. The results are the lag and its quarters (0..3).
VEK_API VekStatus veksAdaptiveCodebookDecode_AMRWB_16s(int valAdptIndex, Vek16s* pFracPitchLag,
                                                       Vek16s* pSrcDstExcitation, Vek16s* pResultIntPitchLag,
                                                       Vek16s* pResultPrevIntPitchLagBounds, int Subframe, int bfi,
                                                       int unusableFrame, VekSpchBitRate mode,
                                                       VekAdaptiveCodebookState_AMRWB* pState);

// Closed-loop search of the adaptive codebook: TS 26.190 5.7. Target Q0, response Q15 as the recommendation scales it.
// pSrcOpenLoopLag holds the lags of the half frames as the open-loop search gives them, at half the sampling rate;
// pPitchLagBounds the first and last of the sixteen lags of a relative search (the first counts, brought into 34..216),
// and receives those of the subframe to come. The excitation is as above, the subframe holding the residual; it
// receives 65 samples of the vector. The results are the lag, its quarters and the index of the bit stream.
VEK_API VekStatus veksAdaptiveCodebookSearch_AMRWB_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcImpulseResponse,
                                                       const Vek16s* pSrcOpenLoopLag, Vek16s* pPitchLag,
                                                       Vek16s* pPitchLagBounds, Vek16s* pSrcDstExcitation,
                                                       Vek16s* pFracPitchLag, Vek16s* pAdptIndex, int Subframe,
                                                       VekSpchBitRate mode);

// Open-loop pitch at half the sampling rate, and what goes with it: TS 26.190 5.4. len (1..256) samples of the weighted
// speech and of the same high-passed, 115 of each before them. The lag is 18..115; the gain Q15. *pToneFlag loses its
// oldest bit and gains one for a strong tone. *pPrevMidPitchLag is the median lag (0..115), *pAdaptiveParam its
// strength in Q15, pSrcDstPrevPitchLag the last five lags, *pLagSwitcher (0 or 1) whether the neighbourhood of the
// median is preferred.
VEK_API VekStatus veksOpenLoopPitchSearch_AMRWB_16s(const Vek16s* pSrcWgtSpch, const Vek16s* pSrcFltWgtSpch,
                                                    Vek16s* pPrevMidPitchLag, Vek16s* pAdaptiveParam,
                                                    Vek16s* pDstOpenLoopLag, Vek16s* pToneFlag,
                                                    Vek16s* pDstOpenLoopGain, Vek16s* pSrcDstPrevPitchLag,
                                                    Vek16s* pLagSwitcher, int len);
// The same of AMR-WB+ (TS 26.290 5.3), whose sampling rate scales the lags: minPitLag..maxPitLag, 1..213, at most 198
// apart; maxPitLag samples are read before the signals, the lag is above minPitLag.
VEK_API VekStatus veksOpenLoopPitchSearch_AMRWBE_16s(const Vek16s* pSrcWgtSpch, const Vek16s* pSrcFltWgtSpch,
                                                     Vek16s* pPrevMidPitchLag, Vek16s* pAdaptiveParam,
                                                     Vek16s* pDstOpenLoopLag, Vek16s* pToneFlag,
                                                     Vek16s* pDstOpenLoopGain, Vek16s* pSrcDstPrevPitchLag,
                                                     Vek16s* pLagSwitcher, int len, int minPitLag, int maxPitLag);

// Both gains of a subframe, quantised together by 6 bits (6.6 and 8.85 kbit/s) or 7: TS 26.190 5.9. Target and filtered
// adaptive vector in the format valFormat (-15..15), fixed vector and its filtered form Q9; pSrcCorr holds mantissa and
// exponent of the energy of the filtered adaptive vector, then of its product with the target. pSrcDstEnergyErr holds
// the last four energies of the code gain, Q10. *pSrcDstPitchGain, the gain before quantisation, and the result are
// Q14, the code gain Q16. valClipFlag 1 leaves out the pitch gains above 1. len 1..64.
VEK_API VekStatus veksGainQuant_AMRWB_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcFltAdptVector, int valFormat,
                                          const Vek16s* pSrcFixedVector, const Vek16s* pSrcFltFixedVector,
                                          const Vek16s* pSrcCorr, Vek16s* pSrcDstEnergyErr, Vek16s* pSrcDstPitchGain,
                                          Vek32s* pDstCodeGain, int valClipFlag, Vek16s* pDstQGainIndex, int len,
                                          VekSpchBitRate mode);
// The same of AMR-WB+ (TS 26.290 5.3): 7 bits, the code gain predicted by valMeanEnergy (dB, Q8) alone, all 128 entries
// tried. The pitch gain is a result. *pDstCorrFactor receives the correction of the predicted code gain, Q11.
VEK_API VekStatus veksGainQuant_AMRWBE_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcFltAdptVector, int valFormat,
                                           const Vek16s* pSrcFixedVector, const Vek16s* pSrcFltFixedVector, int len,
                                           const Vek16s* pSrcCorr, Vek16s valMeanEnergy, Vek16s* pSrcDstPitchGain,
                                           Vek16s* pDstCorrFactor, Vek32s* pDstCodeGain, Vek16s* pDstQGainIndex);

// Gains of a subframe from their index: TS 26.190 6.1. valQIndex fits 6 bits (6.6 and 8.85 kbit/s) or 7; valEnergy is
// the inverse root of the fixed vector's energy a sample, Q12, not negative. Pitch gain Q14, code gain Q16.
// pSrcDstPastEnergy as above. *pPrevCodeGain, Q3, bounds the code gain after a bad frame (prevBfi 1) to 1.25 of it and
// receives the new one, as *pSrcDstPastCodeGain does. With bfi 1 the index is not looked at: the code gain is
// *pSrcDstPastCodeGain, which the caller has faded, the pitch gain the one that the caller has put there, at most
// 0.95; the energies fall by 3 dB.
VEK_API VekStatus veksDecodeGain_AMRWB_16s(int valQIndex, Vek16s valEnergy, Vek16s* pDstPitchGain, Vek32s* pDstCodeGain,
                                           int bfi, int prevBfi, Vek16s* pSrcDstPastEnergy, Vek16s* pPrevCodeGain,
                                           Vek16s* pSrcDstPastCodeGain, VekSpchBitRate mode);

// pDst[i] = (pSrc1[i] * val1 * 2^scaleFactor1 + pSrc2[i] * val2 * 2^scaleFactor2) / 65536, rounded: the excitation from
// its two parts, TS 26.190 6.1 (7 for the code Q9 with its gain Q0, 2 for the adaptive vector with its gain Q14).
// Products and sum saturate at 32 bits. Scale factors 0..15, else vekStsScaleRangeErr; len 1..65536; pDst may be one of
// the sources.
VEK_API VekStatus veksInterpolateC_NR_16s(const Vek16s* pSrc1, Vek16s val1, int scaleFactor1, const Vek16s* pSrc2,
                                          Vek16s val2, int scaleFactor2, Vek16s* pDst, int len);

#ifdef __cplusplus
}
#endif
