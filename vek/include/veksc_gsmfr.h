// Speech coding library of Vek: GSM full rate (GSM 06.10), the steps of its coder and decoder.
//
// All functions: vekStsNullPtrErr for a null pointer and vekStsSizeErr for a length below 1 or above 65536, before
// anything is written. Sums and products saturate as GSM 06.10 5.1 tells. A frame has 160 samples, a subframe 40.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Downscaling of PCM of 13 bits, left justified, and offset compensation: GSM 06.10 5.2.1, 5.2.2. pMem holds the last
// scaled sample and the recursion's sum, both 0 at the start.
VEK_API VekStatus veksHighPassFilter_GSMFR_16s(const Vek16s* pSrc, Vek16s* pDst, int len, Vek32s* pMem);

// y[n] = x[n] - 0.86 x[n-1]: GSM 06.10 5.2.3. *pMem is the last input, 0 at the start.
VEK_API VekStatus veksPreemphasize_GSMFR_16s(const Vek16s* pSrc, Vek16s* pDst, int len, Vek16s* pMem);

// y[n] = x[n] + 0.86 y[n-1], doubled and cut to 13 bits: GSM 06.10 5.3.5 to 5.3.7. *pMem is the last sum before the
// doubling, 0 at the start.
VEK_API VekStatus veksDeemphasize_GSMFR_16s_I(Vek16s* pSrcDst, int len, Vek16s* pMem);

// Schur recursion: the reflection coefficients pDst[0..lenDst-1], Q15, of the autocorrelation pSrc[0..lenDst]:
// GSM 06.10 5.2.5. lenDst is 1..8, else vekStsSizeErr. An autocorrelation of zeros, or one that is none from some
// coefficient on, gives zeros from there.
VEK_API VekStatus veksSchur_GSMFR_32s16s(const Vek32s* pSrc, Vek16s* pDst, int lenDst);

// Lattice filter of eight stages in place: GSM 06.10 5.2.10. pRc are reflection coefficients in Q15, pMem the stages'
// states, 8 words, 0 at the start.
VEK_API VekStatus veksShortTermAnalysisFilter_GSMFR_16s_I(const Vek16s* pRc, Vek16s* pSrcDstSpch, int len,
                                                          Vek16s* pMem);

// The inverse lattice: GSM 06.10 5.3.4. pRc has 8 coefficients in Q15, pMem 9 words. pDstSpch may be pSrcResidual.
VEK_API VekStatus veksShortTermSynthesisFilter_GSMFR_16s(const Vek16s* pRc, const Vek16s* pSrcResidual,
                                                         Vek16s* pDstSpch, int len, Vek16s* pMem);

// The largest of the sums of pSrc1[i] * pSrc2[i+k], i = 0..len-1, for k = 0..lag-1, and its k; of equal sums the last
// one, which is the shortest delay where pSrc2 is the past: GSM 06.10 5.2.11 with pSrc2 120 samples back and lag 81.
// Delays are compared by exact sums; *pMax saturates at 32 bits. pSrc2[0..len+lag-2] is read. vekStsRangeErr for a lag
// below 1 or above 65536.
VEK_API VekStatus veksCrossCorrLagMax_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, int lag, Vek32s* pMax,
                                          int* pMaxLag);

// Block filter of 11 taps, the frame's samples in the middle: GSM 06.10 5.2.13. pSrc[-5..len+4] is read.
VEK_API VekStatus veksWeightingFilter_GSMFR_16s(const Vek16s* pSrc, Vek16s* pDst, int len);

// Inverse block quantisation of 13 pulses: pSrc are the codes 0..7 of the pulses, ampl and amplSfs the mantissa 0..7
// and the exponent -4..6 of the block's maximum: GSM 06.10 5.2.16. vekStsRangeErr outside.
VEK_API VekStatus veksRPEQuantDecode_GSMFR_16s(const Vek16s* pSrc, Vek16s ampl, Vek16s amplSfs, Vek16s* pDst);

#ifdef __cplusplus
}
#endif
