// Speech coding library of Vek: filters, conversions, ISF quantisers, voice activity and DTX of AMR-WB.
//
// All functions: vekStsNullPtrErr for a null pointer, vekStsSizeErr for a length out of 1..65536, before anything is
// written. Immittance spectra have 16 elements: pairs (ISP) in the cosine domain, Q15, frequencies (ISF) in Q15 of the
// sampling rate, the last of which is half as large as it counts. `mode` is one of the nine rates from VEK_SPCHBR_6600
// to VEK_SPCHBR_23850, else vekStsBitRateErr.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Residual: pDst[n] = (sum of pSrcLpc[j] * pSrc[n-j], j = 0..order) * 2^-scaleFactor, rounded. pSrc[-order..-1] is
// read, pDst is apart from it. order 1..40, else vekStsFilterOrderErr; scaleFactor 0..15, else vekStsScaleRangeErr: 12
// for coefficients in Q12, 11 for the doubled residual of the codec. The sum saturates at each step, in the Low form it
// wraps. TS 26.190 5.3.
VEK_API VekStatus veksResidualFilter_Low_16s_Sfs(const Vek16s* pSrcLpc, int order, const Vek16s* pSrc, Vek16s* pDst,
                                                 int len, int scaleFactor);
VEK_API VekStatus veksResidualFilter_AMRWB_16s_Sfs(const Vek16s* pSrcLpc, int order, const Vek16s* pSrc, Vek16s* pDst,
                                                   int len, int scaleFactor);

// y[n] = (x[n] - gamma * x[n-1]) * 2^(15 - scaleFactor), gamma Q15, rounded. *pMem is the sample before, and becomes
// the last. scaleFactor 15 keeps the level, 14 doubles it as the coder does; 0..15, else vekStsScaleRangeErr.
// TS 26.190 5.1.
VEK_API VekStatus veksPreemphasize_AMRWB_16s_ISfs(Vek16s gamma, Vek16s* pSrcDst, int len, int scaleFactor,
                                                  Vek16s* pMem);

// y[n] = x[n] + gamma * y[n-1], gamma Q15, rounded. *pMem is the output before, and becomes the last. From 32 bits x is
// in Q12, without its low four bits; the NR form halves x; the scaled one multiplies it by 2^(scale - 15), scale
// 13..15, else vekStsScaleRangeErr. TS 26.190 6.1, TS 26.290 6.
VEK_API VekStatus veksDeemphasize_AMRWB_32s16s(Vek16s gamma, const Vek32s* pSrc, Vek16s* pDst, int len, Vek16s* pMem);
VEK_API VekStatus veksDeemphasize_AMRWB_NR_16s_I(Vek16s gamma, Vek16s* pSrcDst, int len, Vek16s* pMem);
VEK_API VekStatus veksDeemphasize_AMRWBE_NR_16s_I(Vek16s gamma, int scale, Vek16s* pSrcDst, int len, Vek16s* pMem);

// Synthesis with 28 bits of precision: y[n] = pSrcLpc[0] * x[n] - sum of pSrcLpc[j] * y[n-j], j = 1..order, with the
// coefficients in Q12 (pSrcLpc[0] without its low four bits) and y in Q12, so that its upper half is 1/16 of it. The
// codec passes 4096 * 2^-q as pSrcLpc[0] for an excitation in Qq. pSrcDst[-order..-1] holds the outputs before; the low
// four bits of outputs are 0 and not read. order 1..40, else vekStsFilterOrderErr. TS 26.190 6.1, TS 26.290 6.
VEK_API VekStatus veksSynthesisFilter_AMRWB_16s32s_I(const Vek16s* pSrcLpc, int order, const Vek16s* pSrcExcitation,
                                                     Vek32s* pSrcDst, int len);
VEK_API VekStatus veksSynthesisFilter_AMRWBE_16s32s_I(const Vek16s* pSrcLpc, int order, const Vek16s* pSrcExcitation,
                                                      Vek32s* pSrcDst, int len);

// High-pass filters of second order at 12.8 kHz: scaleFactor 14 is the one of 50 Hz, 12 the one of 400 Hz, which
// divides by 16; others vekStsScaleRangeErr. The memory is veksHighPassFilterGetSize_AMRWB_16s bytes of any alignment;
// veksHighPassFilterInit_AMRWB_16s brings it to rest. TS 26.190 5.1, 6.2.
VEK_API VekStatus veksHighPassFilterGetSize_AMRWB_16s(int* pSize);
VEK_API VekStatus veksHighPassFilterInit_AMRWB_16s(char* pMem);
VEK_API VekStatus veksHighPassFilter_AMRWB_16s_ISfs(Vek16s* pSrcDst, int len, char* pMemUpdated, int scaleFactor);
VEK_API VekStatus veksHighPassFilter_AMRWB_16s_Sfs(const Vek16s* pSrc, Vek16s* pDst, int len, char* pMemUpdated,
                                                   int scaleFactor);

// Symmetric filter of three taps: y[n] = pCoeff[0] * (x[n-1] + x[n+1]) + pCoeff[1] * x[n], Q15, rounded; pDst is apart
// from pSrc. bounds 1 reads one sample on each side of the vector, 0 takes them as zero; else vekStsRangeErr.
// TS 26.190 5.7 (5898 and 20972), 6.1.
VEK_API VekStatus veksHighPassFilter_Direct_AMRWB_16s(const Vek16s* pCoeff, const Vek16s* pSrc, Vek16s* pDst, int len,
                                                      int bounds);

// Gain of the adaptive codebook, Q14, 0..19661, and the correlations it comes from: pDstGainCoeff[0] is the energy of
// the filtered vector, [2] its product with the target, both normalised with the exponents [1] and [3]. TS 26.190 5.7.
VEK_API VekStatus veksAdaptiveCodebookGainCoeff_AMRWB_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcFltAdptVector,
                                                          Vek16s* pDstGainCoeff, Vek16s* pResultAdptGain, int len);

// Conversions of len elements: len is 16, or 20 for the band up to 8 kHz; even and 4..20, else vekStsSizeErr.
// Pairs fall from the first to the last but one. Frequencies outside 0..0.5 count as the nearest of these. pDstLpc has
// len + 1 coefficients, Q12; where they do not fit, all of them, pDstLpc[0] = 4096 too, are halved until they do.
// TS 26.190 5.2.4, 5.2.5.
VEK_API VekStatus veksISPToISF_Norm_AMRWB_16s(const Vek16s* pSrcIsp, Vek16s* pDstIsf, int len);
VEK_API VekStatus veksISFToISP_AMRWB_16s(const Vek16s* pSrcIsf, Vek16s* pDstIsp, int len);
VEK_API VekStatus veksISPToLPC_AMRWB_16s(const Vek16s* pSrcIsp, Vek16s* pDstLpc, int len);

// Pairs of the 17 coefficients pSrcLpc, Q12; where not all are found, pSrcPrevIsp and vekStsUnstableFilter.
// TS 26.190 5.2.3.
VEK_API VekStatus veksLPCToISP_AMRWB_16s(const Vek16s* pSrcLpc, Vek16s* pDstIsp, const Vek16s* pSrcPrevIsp);

// Quantises frequencies, four survivors of the first stage: five indices at 6.6 kbit/s, else seven. pSrcDstResidual is
// the last frame's quantised residual, and becomes this one's. TS 26.190 5.2.5.
VEK_API VekStatus veksISFQuant_AMRWB_16s(const Vek16s* pSrcIsf, Vek16s* pSrcDstResidual, Vek16s* pDstQIsf,
                                         Vek16s* pDstQIsfIndex, VekSpchBitRate mode);

// Frequencies of a frame's indices (vekStsOutOfRangeErr for one beyond its codebook) and of the last residual.
// pSrcDstIsfMemory holds the frequencies of the last three good frames, newest first, and gets this one's. bfi 1 (0 or
// 1, else vekStsRangeErr) leaves the indices unread and draws the last frequencies pSrcPrevQntIsf towards the mean of
// the memory. pDstQIsf may be pSrcPrevQntIsf. TS 26.190 6.1, TS 26.191.
VEK_API VekStatus veksISFQuantDecode_AMRWB_16s(const Vek16s* pSrcIdxs, Vek16s* pDstQIsf, Vek16s* pSrcDstResidual,
                                               const Vek16s* pSrcPrevQntIsf, Vek16s* pSrcDstIsfMemory, int bfi,
                                               VekSpchBitRate mode);

// The quantiser of comfort noise: five indices. vekStsOutOfRangeErr for one beyond its codebook. TS 26.192 5.1.
VEK_API VekStatus veksISFQuantDTX_AMRWB_16s(const Vek16s* pSrcIsf, Vek16s* pDstQIsf, Vek16s* pDstQIsfIndex);
VEK_API VekStatus veksISFQuantDecodeDTX_AMRWB_16s(const Vek16s* pSrcIdxs, Vek16s* pDstQIsf);

// Enters a frame into the histories of the last eight: its spectrum, and the logarithm to the base 2 of the mean energy
// of the 256 samples (Q7; in the encoder the residual's, less what the published table gives for the rate, where
// VEK_SPCHBR_DTX counts as the highest one). *pUpdateIndex, 0..7 (else vekStsRangeErr), is the place last written, 7 at
// first; the next one, in a ring, is written. The spectra have 8 x 16 elements, the energies 8. TS 26.192 5, 26.193.
VEK_API VekStatus veksDecDTXBuffer_AMRWB_16s(const Vek16s* pSrcSpch, const Vek16s* pSrcIsp, Vek16s* pUpdateIndex,
                                             Vek16s* pSrcDstIspBuffer, Vek16s* pSrcDstLogEnergyBuffer);
VEK_API VekStatus veksEncDTXBuffer_AMRWB_16s(const Vek16s* pSrcSpch, const Vek16s* pSrcIsp, Vek16s* pUpdateIndex,
                                             Vek16s* pSrcDstIspBuffer, Vek16s* pSrcDstLogEnergyBuffer,
                                             VekSpchBitRate mode);

// Voice activity of a frame of 256 samples at 12.8 kHz: *pResultVadFlag 1 for speech. *pToneFlag holds the flags of the
// open-loop search, the newest in bit 14; a quiet frame clears the two newest. The state is veksVADGetSize_AMRWB_16s
// bytes of any alignment; vekStsStateErr for one that veksVADInit_AMRWB_16s has not set up. TS 26.194.
VEK_API VekStatus veksVADGetSize_AMRWB_16s(int* pSize);
VEK_API VekStatus veksVADInit_AMRWB_16s(char* pState);
VEK_API VekStatus veksVAD_AMRWB_16s(const Vek16s* pSrcSpch, char* pSrcDstVadState, Vek16s* pToneFlag,
                                    Vek16s* pResultVadFlag);

#ifdef __cplusplus
}
#endif
