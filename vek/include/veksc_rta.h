// Speech coding library of Vek: the real-time audio codec, in floating point.
//
// No text of this codec is published; what each function does, and by which rules its filters and codebooks are made,
// is said here. All functions: vekStsNullPtrErr for a null pointer and vekStsSizeErr for a length or an order outside
// its range, before anything is written. Lengths are 1..65536 unless said otherwise. Prediction coefficients stand with
// the leading 1.0 first, order + 1 of them. States live in memory of the caller, of the size that the GetStateSize
// function tells, at any address; vekStsStateErr for a state without a start.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Levinson-Durbin recursion from the autocorrelations pSrcAutoCorr[0..order] to the coefficients pDstLPC[0..order] and
// the reflections pDstRC[0..order-1], order 1..32. vekStsRangeErr for pSrcAutoCorr[0] not above 0. Where a reflection
// leaves the unit circle nothing is written, and the status is vekStsUnstableFilter.
VEK_API VekStatus veksLevinsonDurbin_RTA_32f(const Vek32f* pSrcAutoCorr, Vek32f* pDstLPC, Vek32f* pDstRC, int order);

// Butterworth high-pass filter of order 4 or 5 with its corner at 80 Hz, by bilinear transform for the sampling
// frequency freq. pMem holds 12 elements, 0 at the start. pDst may be pSrc. vekStsFilterOrderErr for another order,
// vekStsRangeErr for another frequency.
VEK_API VekStatus veksHighPassFilter_RTA_32f(const Vek32f* pSrc, Vek32f* pDst, int len, int order, VekPCMFrequency freq,
                                             Vek32f* pMem);

// Band-pass filter from 1/40 to 17/40 of the sampling frequency (200 to 3400 Hz of 8 kHz): Butterworth high-pass of
// order 1 and low-pass of order 2, by bilinear transform. pMem holds 3 elements, 0 at the start.
VEK_API VekStatus veksBandPassFilter_RTA_32f_I(Vek32f* pSrcDst, int len, Vek32f* pMem);

// Line spectral pairs are rising frequencies in radians, between 0 and pi. Orders: even, 2..16.

// Zeros of the sum and difference filters. Where they can't be told apart on a grid of 1024 points, or do not
// alternate, nothing is written, and the status is vekStsUnstableFilter.
VEK_API VekStatus veksLPCToLSP_RTA_32f(const Vek32f* pSrcLPC, Vek32f* pDstLSP, int order);

VEK_API VekStatus veksLSPToLPC_RTA_32f(const Vek32f* pSrcLSP, Vek32f* pDstLPC, int order);

// Quantiser of line spectral pairs: stages of 64 vectors one after the other, searched with `complexity` survivors,
// 1..16. For order 10 at 8000 Hz four stages, for orders 6 and 4 at 16000 Hz three; vekStsRangeErr for another pair or
// complexity. The error is weighted with 1 / |A| of pSrcLPC at each frequency. pDstLSPIndex receives an index a stage;
// pDstLSP, the sum of the vectors, is held 0.02 apart and from the ends. The input need not be rising.
// The vectors: stage s around k * pi / (order + 1), Gaussian numbers of a congruential generator in cosines, the
// variance of the cosine of index m as 1 / (m + 1), the deviation 0.5 * 0.72^s of the mean distance.
VEK_API VekStatus veksLSPQuant_RTA_32f(const Vek32f* pSrcLSP, const Vek32f* pSrcLPC, Vek32f* pDstLSP, int order,
                                       int* pDstLSPIndex, VekPCMFrequency freq, int complexity);

// Adaptive codebook. pSrcBoundary holds five rising whole numbers: lags of the four regions between them are searched
// in steps of 1, 1/3, 1/2 and 1, the last number included. The first is at least 1, the second 8, the last at most 256,
// else vekStsRangeErr. The vector of a lag is the past excitation at that distance, by a sine cardinal of 16 taps in a
// Hann window; where the past ends it goes on with the vector itself. The lag wins whose vector, filtered by the
// impulse response, has the largest correlation with the target over the root of its energy.
// searchFlag 0: all lags; 1: deltaSearchRange lags in a row (at least 1) around the one nearest to *pSrcDstLag, a last
// lag of any value; else vekStsBadArgErr. *pDstAdptIndex is the lag's number in the grid, or among the searched ones.
// pSrcDstExc[-(last boundary + 8)..-1] is read, pSrcDstExc[0..subFrameSize-1] receives the vector,
// pDstAdptContribution the filtered one. subFrameSize 4..160.
VEK_API VekStatus veksAdaptiveCodebookSearch_RTA_32f(const Vek32f* pSrcAdptTarget, const Vek32f* pSrcImpulseResponse,
                                                     int subFrameSize, const Vek32f* pSrcBoundary, Vek32f* pSrcDstExc,
                                                     Vek32f* pSrcDstLag, int* pDstAdptIndex,
                                                     Vek32f* pDstAdptContribution, int deltaSearchRange,
                                                     int searchFlag);

// Fixed codebook of numPulses pulses, 1..10, pulse i on track i mod 5: the positions of a track are those whose
// remainder by 5 is the track. subFrameSize 10..80, a multiple of 5. Pulses are set one after the other, from each of
// the five tracks on; then each is set again `refine` times, 0..8 (vekStsBadArgErr). The best of the five wins by its
// correlation with the target over the root of its energy. pDstFixedVector receives the pulses, 1 or -1 each and adding
// up, *pDstGain the best gain, pDstFixedIndex a word a track, five in all: for each of its pulses five bits, from the
// lowest on, the position / 5 and above it 16 for a negative sign.
VEK_API VekStatus veksFixedCodebookSearch_RTA_32f(const Vek32f* pSrcFixedTarget, const Vek32f* pSrcImpulseResponse,
                                                  Vek32f* pDstFixedVector, int subFrameSize, int* pDstFixedIndex,
                                                  Vek32f* pDstGain, int numPulses, int refine);

// Random codebook: nStage + 1 stages, nStage 0..2, of codebookSize vectors, 1..256; vekStsRangeErr outside. A stage's
// vectors overlap: vector k are the elements from 510 - 2 k on of Gaussian numbers of a congruential generator. Stage s
// adds its vector, with either sign and 2^-s times, to those before; each stage is searched for the largest correlation
// of the sum with the target over the root of its energy. pDstFixedVector receives the sum, pDstFixedIndex an index a
// stage, 2 k and 1 more for a negative sign, *pDstGain the best gain. A gainLimit above 0, up to 20, holds the energy
// of the filtered vector 3 dB times that below the target's. subFrameSize 4..160.
VEK_API VekStatus veksFixedCodebookSearchRandom_RTA_32f(const Vek32f* pSrcFixedTarget,
                                                        const Vek32f* pSrcImpulseResponse, Vek32f* pDstFixedVector,
                                                        int subFrameSize, int* pDstFixedIndex, Vek32f* pDstGain,
                                                        int codebookSize, int nStage, int gainLimit);

// Short-term post-filter A(z/n) / A(z/d), (n, d) = (0.65, 0.75), (0.55, 0.75), (0.5, 0.8) for apfIdx 1..3, else
// vekStsBadArgErr; the tilt of its impulse response taken out by half, and the level of each 40 samples brought back as
// by veksGainControl_G729_32f_I, with a gain that silence does not bring below 0.01. order 1..17; len a multiple of 40.
// pSTApfMem holds 51 elements, 0 at the start: the last 17 inputs and the last 17 outputs of the filter; the rest is
// left alone.
typedef struct VeksPostFilterState_RTA_32f VeksPostFilterState_RTA_32f;
VEK_API VekStatus veksPostFilterGetStateSize_RTA_32f(int* pSize);
VEK_API VekStatus veksPostFilterInit_RTA_32f(VeksPostFilterState_RTA_32f* pMem);
VEK_API VekStatus veksPostFilter_RTA_32f_I(const Vek32f* pSrcLPC, int order, Vek32f* pSrcDstSpeech, int len, int apfIdx,
                                           Vek32f* pSTApfMem, VeksPostFilterState_RTA_32f* pMem);

// Quadrature mirror filter of 64 taps: a Kaiser-windowed sine cardinal whose square is half at a quarter of the
// sampling frequency. The split takes len samples, even, to len / 2 of each band; the reunion takes len of each band to
// 2 len samples, 62 later than they went in.
typedef struct VeksQMFState_RTA_32f VeksQMFState_RTA_32f;
VEK_API VekStatus veksQMFGetStateSize_RTA_32f(int* pSize);
VEK_API VekStatus veksQMFInit_RTA_32f(VeksQMFState_RTA_32f* pQMFMem);
VEK_API VekStatus veksQMFEncode_RTA_32f(const Vek32f* pSrc, int len, Vek32f* pDstLow, Vek32f* pDstHigh,
                                        VeksQMFState_RTA_32f* pQMFMem);
VEK_API VekStatus veksQMFDecode_RTA_32f(const Vek32f* pSrcLow, const Vek32f* pSrcHigh, int len, Vek32f* pDst,
                                        VeksQMFState_RTA_32f* pQMFMem);

#ifdef __cplusplus
}
#endif
