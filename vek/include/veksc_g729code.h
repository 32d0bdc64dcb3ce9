// Speech coding library of Vek: fixed codebook searches, noise excitation and gains of G.729, its annexes D, E and I
// among them.
//
// All functions: vekStsNullPtrErr for a null pointer, before anything is written. Subframes have 40 samples; track t
// holds the positions 5k + t. The impulse response of a search is to contain the pitch filter already (3.8 eq 49); the
// code vectors do not contain it.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Search of four signed pulses, 17 bits. pSrc is the correlation of target and response (13 bits and a sign, as
// veksCrossCorr_NormM_16s gives it), pSrcDst the matrix of the response from veksToeplizMatrix_G729 (616 elements),
// which leaves with the signs of the correlations multiplied in. pDst receives the code vector: pulses of 8191 or -8192
// (Q13), of 1.0 or -1.0 in floating point. pDstIndex receives the codeword of the positions (13 bits, 3.8.2 eq 62) and
// that of the signs (4 bits, 1 is positive, eq 61). Energies are exact.
//
// Nested loops, the last of which is entered above a threshold of 0.4 between mean and maximum of the correlations:
// 3.8.1. pSearchTimes counts how often it may yet be entered: in subframe 0 (subFrame) it is set to 30 before, what is
// left of 75 and this stands there after the search. In subframe 1 what it holds is granted beyond the 75, at most 105
// and at least 0. subFrame 0 or 1, else vekStsRangeErr. No entry gives the first position of each track.
VEK_API VekStatus veksFixedCodebookSearch_G729_16s(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pDst, Vek16s* pDstIndex,
                                                   Vek16s* pSearchTimes, Vek16s subFrame);
VEK_API VekStatus veksFixedCodebookSearch_G729_32s16s(const Vek16s* pSrc, Vek32s* pSrcDst, Vek16s* pDst,
                                                      Vek16s* pDstIndex, Vek16s* pSearchTimes, Vek16s subFrame);
VEK_API VekStatus veksFixedCodebookSearch_G729_32f(const Vek32f* pSrc, Vek32f* pSrcDst, Vek32f* pDst, Vek16s* pDstIndex,
                                                   Vek16s* pSearchTimes, Vek16s subFrame);
// Depth first, two pulses at a time: A.3.8.1.
VEK_API VekStatus veksFixedCodebookSearch_G729A_16s(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pDst,
                                                    Vek16s* pDstIndex);
VEK_API VekStatus veksFixedCodebookSearch_G729A_32s16s(const Vek16s* pSrc, Vek32s* pSrcDst, Vek16s* pDst,
                                                       Vek16s* pDstIndex);
VEK_API VekStatus veksFixedCodebookSearch_G729A_32f(const Vek32f* pSrc, Vek32f* pSrcDst, Vek32f* pDst,
                                                    Vek16s* pDstIndex);

// Search of two signed pulses, 11 bits: one on the tracks 1 and 3, one on 0, 1, 2 and 4, all pairs. D.3.8. The code
// vector is as above (two pulses on one position add up), pDstFltFixedVector receives its convolution with the
// response. The index has 4 and above these 5 bits of Gray coded positions; the signs are bits 0 and 1, 1 is positive.
//
// Target Q0, response Q12.
VEK_API VekStatus veksFixedCodebookSearch_G729D_16s(const Vek16s* pSrcFixed, const Vek16s* pSrcImpulseResponse,
                                                    Vek16s* pDstFixedVector, Vek16s* pDstFltFixedVector,
                                                    Vek16s* pDstSign, Vek16s* pDstIndex);
// pSrcFixed is the correlation of target and response here, pSrcDst the matrix of veksToeplizMatrix_G729_32f, which
// leaves with the signs multiplied in; the pairs that it lacks come from the response. pDstFixedIndex receives index
// and signs.
VEK_API VekStatus veksFixedCodebookSearch_G729D_32f(const Vek32f* pSrcFixed, Vek32f* pSrcDst,
                                                    const Vek32f* pSrcImpulseResponse, Vek32f* pDstFixedVector,
                                                    Vek32f* pDstFltFixedVector, Vek16s* pDstFixedIndex);

// Search of ten pulses, two on each track (mode 0, 35 bits), or of twelve, three on each of two neighbouring tracks
// (mode 1, 44 bits), depth first from the largest of target correlation and residual together. E.3.8. Other modes:
// vekStsModeErr. Target and residual Q0, response Q12; a pulse is 8192 (Q13) or 1.0, and pulses on one position add up;
// pDstFltFixedVector is the convolution of the code vector with the response.
// pDstFixedIndex receives five words. A word of two pulses (p, q) is p + 8q + 64s with positions 0..7 within the track
// and s = 1 for a positive first pulse; a next pulse has the sign of the one before it unless its position is smaller.
// A word of three is p + 8q + 64r + 512s by the same rule. Mode 0: the tracks 0 to 4. Mode 1: 1024 times the first
// track t of three pulses plus its word, then the words of the tracks t+1 to t+4, round.
VEK_API VekStatus veksFixedCodebookSearch_G729E_16s(int mode, const Vek16s* pSrcFixed, const Vek16s* pSrcLtpResidual,
                                                    const Vek16s* pSrcImpulseResponse, Vek16s* pDstFixedVector,
                                                    Vek16s* pDstFltFixedVector, Vek16s* pDstFixedIndex);
VEK_API VekStatus veksFixedCodebookSearch_G729E_32f(int mode, const Vek32f* pSrcFixed, const Vek32f* pSrcLtpResidual,
                                                    const Vek32f* pSrcImpulseResponse, Vek32f* pDstFixedVector,
                                                    Vek32f* pDstFltFixedVector, Vek16s* pDstFixedIndex);

// Noise near a Gaussian one: each sample is the sum of twelve random numbers of 16 bits over 128, cut off in the
// integer form. The generator is seed = 31821 * seed + 13849 modulo 2^16; *pSeed is its state before and after.
// len 1..65536, else vekStsSizeErr. B.4.4.
VEK_API VekStatus veksRandomNoiseExcitation_G729B_16s(Vek16s* pSeed, Vek16s* pExc, int len);
VEK_API VekStatus veksRandomNoiseExcitation_G729B_16s32f(Vek16s* pSeed, Vek32f* pExc, int len);

// Gains of a subframe from their two codes: pGain receives those of the adaptive (Q14) and of the fixed codebook (Q1).
// energy is the sum of squares of the code vector, Q26 (as veksDotProd_G729A_16s32s gives it for Q13), not negative.
// pPastEnergy holds the last four prediction errors in dB, Q10, the newest first, and is moved on; it begins with
// -14336. The low 3 bits of quaIndex[0] and the low 4 of quaIndex[1] count; both lie in 0..127. Else vekStsRangeErr.
// G.729 3.9, 4.1.5.
VEK_API VekStatus veksDecodeGain_G729_16s(Vek32s energy, Vek16s* pPastEnergy, const Vek16s* quaIndex, Vek16s* pGain);

// The same with frames lost: quaIndex[0] = -1 says that the codes are missing. Then the gains of the subframe before,
// which pGain holds, are taken: the fixed codebook's times valGainAttenuation (Q15, 0..32767, 32113 in 4.4.2), the
// adaptive one's times 0.9, at most 0.9; pPastEnergy goes on with its mean less 4 dB, at least -14 dB. 4.4.2, 4.4.3.
VEK_API VekStatus veksDecodeGain_G729I_16s(Vek32s energy, Vek16s valGainAttenuation, Vek16s* pPastEnergy,
                                           const Vek16s* quaIndex, Vek16s* pGain);

// Gains of a subframe: target (Q0), filtered adaptive vector (Q0), code vector (Q13), filtered code vector (Q12).
// pDstQGain receives both gains as the decoder has them (Q14, Q1), pDstIndex the two codes, pPastEnergy is moved on. Of
// each codebook those entries are tried that lie around the gains of least error. tameflag 1 keeps the adaptive gain
// below 1.0; 0 or 1, else vekStsRangeErr. Sums are exact; errors are weighed with weights of 32 bits.
//
// 3 and 4 bits, 4 and 8 entries tried: 3.9. 3 and 3 bits, 6 and 6 entries tried: D.3.9.
VEK_API VekStatus veksGainQuant_G729_16s(const Vek16s* pSrcTarget, const Vek16s* pSrcFltAdptVector,
                                         const Vek16s* pSrcFixedVector, const Vek16s* pSrcFltFixedVector,
                                         Vek16s* pPastEnergy, Vek16s* pDstQGain, Vek16s* pDstIndex, Vek16s tameflag);
VEK_API VekStatus veksGainQuant_G729D_16s(const Vek16s* pSrcTarget, const Vek16s* pSrcFltAdptVector,
                                          const Vek16s* pSrcFixedVector, const Vek16s* pSrcFltFixedVector,
                                          Vek16s* pPastEnergy, Vek16s* pDstQGain, Vek16s* pDstIndex, Vek16s tameflag);

// The search alone. pSrc: the terms yy, -2xy, zz, -2xz, 2yz of the error in the gains (target x, filtered adaptive
// vector y, filtered code vector z). pSrcCand: the first entries tried, counted in order of the fixed gain in the first
// codebook (0..4, Annex D 0..2) and of the adaptive gain in the second (0..8, Annex D 0..2). pDstIdxs receives the two
// codes. valTimeFlag as tameflag. Others: vekStsRangeErr.
VEK_API VekStatus veksGainCodebookSearch_G729_32f(const Vek32f* pSrc, const Vek16s* pSrcCand, Vek16s* pDstIdxs,
                                                  int valTimeFlag, Vek32f valPredictedCodebookGain);
VEK_API VekStatus veksGainCodebookSearch_G729D_32f(const Vek32f* pSrc, const Vek16s* pSrcCand, Vek16s* pDstIdxs,
                                                   int valTimeFlag, Vek32f valPredictedCodebookGain);

#ifdef __cplusplus
}
#endif
