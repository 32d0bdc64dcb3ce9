// Speech coding library of Vek: echo cancellation.
// Adaptive filters of the full band and of subbands, the subband analysis and synthesis, the detector of the tone that
// switches cancellers off, and the controllers that choose step sizes and move coefficients between the two filters.
//
// Two filters work side by side: the adaptive one learns without pause, the fixed one makes the output; a controller
// copies from one to the other by their errors. Levels of 32f samples: full scale is 1.0.
// All functions give vekStsNullPtrErr, vekStsSizeErr and vekStsStateErr (a state that Init has not made) before they
// write anything; vekStsRangeErr and vekStsScaleRangeErr where a value or a scale factor is limited. States may lie at
// any address, but must not be moved. Nothing is allocated.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// ---- Full band ----

// Most taps of FIR and NLMS.
enum { VEK_EC_MAX_TAPS = 4096 };

// What the echo path's model leaves: pDst[i] = pSrc[i] - sum of coef[j] * ref[i-j], j = 0..tapLen-1.
// ref[-(tapLen-1)..len-1] is read. 16s: coefficients in Q15, exact sum, one rounding, saturated.
// len 1..65536, tapLen 1..4096, else vekStsSizeErr.
VEK_API VekStatus veksFIR_EC_16s(const Vek16s* pSrcSpchRef, const Vek16s* pSrcSpch, Vek16s* pDstSpch, int len,
                                 const Vek16s* pSrcCoef, int tapLen);
VEK_API VekStatus veksFIR_EC_32f(const Vek32f* pSrcSpchRef, const Vek32f* pSrcSpch, Vek32f* pDstSpch, int len,
                                 const Vek32f* pSrcCoef, int tapLen);

// Normalised LMS. For each sample i: first the coefficients learn from the error before it,
//   coef[j] += step[i] * err * ref[i-1-j] / (energy of ref[i-1..i-tapLen] + d),
// then err = pDst[i] = pSrc[i] - sum of coef[j] * ref[i-j]. *pErr: the error of the sample before the first one in, of
// the last one out. ref[-tapLen..len-1] is read. Steps are relative, 0..1 (16s: Q15, not negative);
// d is tapLen * 16 (16s) or tapLen * 1e-9 (32f). 16s: coefficients in Q15, saturated; the factor of an update is
// rounded to 15 significant bits and bounded by 32767.
VEK_API VekStatus veksNLMS_EC_16s(const Vek16s* pSrcSpchRef, const Vek16s* pSrcSpch, const Vek16s* pStepSize,
                                  Vek16s* pDstSpch, int len, Vek16s* pSrcDstCoef, int tapLen, Vek16s* pErr);
VEK_API VekStatus veksNLMS_EC_32f(const Vek32f* pSrcSpchRef, const Vek32f* pSrcSpch, const Vek32f* pStepSize,
                                  Vek32f* pDstSpch, int len, Vek32f* pSrcDstCoef, int tapLen, Vek32f* pErr);

// ---- Detector of the tone that switches cancellers off (G.164, G.165 4, G.168 6.4, V.25) ----

typedef struct VeksToneDetectState_EC_16s VeksToneDetectState_EC_16s;
typedef struct VeksToneDetectState_EC_32f VeksToneDetectState_EC_32f;

// Bytes of a state. freq: 8000 or 16000, else vekStsBadArgErr.
VEK_API VekStatus veksToneDetectGetStateSize_EC_16s(int freq, int* pSize);
VEK_API VekStatus veksToneDetectGetStateSize_EC_32f(int freq, int* pSize);
VEK_API VekStatus veksToneDetectInit_EC_16s(VeksToneDetectState_EC_16s* pState, int freq);
VEK_API VekStatus veksToneDetectInit_EC_32f(VeksToneDetectState_EC_32f* pState, int freq);

// *pResult: 1 from the second phase reversal on (2100 Hz, reversals 425 to 475 ms apart with 25 ms of tolerance) until
// 250 ms have been below -36 dBm0; else 0. The tone must hold three quarters of the power, and be above -34 dBm0, and
// turn by 180 degrees, 45 either way. Judged every 10 ms; a call may bring any number of samples. len 1..65536.
VEK_API VekStatus veksToneDetect_EC_16s(const Vek16s* pSignal, int len, int* pResult,
                                        VeksToneDetectState_EC_16s* pState);
VEK_API VekStatus veksToneDetect_EC_32f(const Vek32f* pSignal, int len, int* pResult,
                                        VeksToneDetectState_EC_32f* pState);

// ---- Subband analysis and synthesis: a windowed fold and a real Fourier transform ----

typedef struct VeksSubbandProcessState_16s VeksSubbandProcessState_16s;
typedef struct VeksSubbandProcessState_32f VeksSubbandProcessState_32f;

// Bytes of the state, points of the transform (2^order) and bytes of the work buffer that each call takes. order 5 or
// 6, else vekStsFftOrderErr; windowLen: 1 to 16 times the points, else vekStsSizeErr.
VEK_API VekStatus veksSubbandProcessGetSize_16s(int order, int windowLen, int* pStateSize, int* pFFTSize,
                                                int* pBufSize);
VEK_API VekStatus veksSubbandProcessGetSize_32f(int order, int windowLen, int* pStateSize, int* pFFTSize,
                                                int* pBufSize);
// frameSize: 1..windowLen, else vekStsSizeErr. pWindow: windowLen elements (16s: Q15). pInitBuf: a work buffer.
// The window of the synthesis is w[n] / sum of w[n + m * frameSize]^2. For windows as long as the transform analysis
// and synthesis give the signal back, windowLen - frameSize samples later; for longer ones as nearly as the window's
// correlation vanishes at multiples of the transform's points.
VEK_API VekStatus veksSubbandProcessInit_16s(VeksSubbandProcessState_16s* pState, int order, int frameSize,
                                             int windowLen, const Vek16s* pWindow, Vek8u* pInitBuf);
VEK_API VekStatus veksSubbandProcessInit_32f(VeksSubbandProcessState_32f* pState, int order, int frameSize,
                                             int windowLen, const Vek32f* pWindow, Vek8u* pInitBuf);

// frameSize samples in, 2^(order-1) + 1 subbands out: the windowLen newest samples times the window, folded, forward
// transform without factor. Sfs: the result times 2^-scaleFactor, to the nearest, saturated; scaleFactor -31..31.
VEK_API VekStatus veksSubbandAnalysis_16s32sc_Sfs(const Vek16s* pSignal, Vek32sc* pSubbands,
                                                  VeksSubbandProcessState_16s* pState, int scaleFactor, Vek8u* pBuf);
VEK_API VekStatus veksSubbandAnalysis_32f32fc(const Vek32f* pSignal, Vek32fc* pSubbands,
                                              VeksSubbandProcessState_32f* pState, Vek8u* pBuf);
// The reverse, by overlap and add; a scale factor of the analysis is undone by its negative. The imaginary parts of the
// first and the last subband are not read. One state may serve an analysis and a synthesis.
VEK_API VekStatus veksSubbandSynthesis_32sc16s_Sfs(const Vek32sc* pSubbands, Vek16s* pSignal,
                                                   VeksSubbandProcessState_16s* pState, int scaleFactor, Vek8u* pBuf);
VEK_API VekStatus veksSubbandSynthesis_32fc32f(const Vek32fc* pSubbands, Vek32f* pSignal,
                                               VeksSubbandProcessState_32f* pState, Vek8u* pBuf);

// ---- Filters of subbands: one filter of numSegments coefficients for each of len subbands ----
// A row holds one segment, newest first. numSegments 1..256, len 1..4096, startSubband 0..len-1, else vekStsSizeErr.

// pDst[k] = sum over s of signal[s][k] * coefs[s][k], times 2^-scaleFactor (-31..31), cut off, saturated.
// The full form sums in 128 bits. The low form sums in 64 bits that wrap, and leaves subbands below startSubband alone.
VEK_API VekStatus veksFIRSubband_EC_32sc_Sfs(const Vek32sc* const* ppSrcSignalIn, const Vek32sc* const* ppSrcCoefs,
                                             Vek32sc* pDstSignalOut, int numSegments, int len, int scaleFactor);
VEK_API VekStatus veksFIRSubbandLow_EC_32sc_Sfs(const Vek32sc* const* ppSrcSignalIn, const Vek32sc* const* ppSrcCoefs,
                                                int numSegments, Vek32sc* pDstSignalOut, int startSubband, int len,
                                                int scaleFactor);

// p[k] = step[k] * error[k] * 2^-15; coefs[s][k] += conj(input[s][k]) * p[k] * 2^-scaleFactorCoef, for all s.
// scaleFactorCoef 1..31, else vekStsScaleRangeErr. The full form rounds and saturates both (p to +-(2^31 - 1)).
// The low form cuts off and wraps, gives p in prodStepErrQ, and leaves subbands below startSubband alone.
VEK_API VekStatus veksFIRSubbandCoeffUpdate_EC_32sc_I(const Vek32s* pStepSize, const Vek32sc* const* ppSrcFilterInput,
                                                      const Vek32sc* pSrcError, Vek32sc** ppSrcDstCoefsQ15,
                                                      int numSegments, int len, int scaleFactorCoef);
VEK_API VekStatus veksFIRSubbandLowCoeffUpdate_EC_32sc_I(const Vek32sc* const* ppSrcFilterInput,
                                                         const Vek32sc* pSrcError, Vek32sc** ppSrcDstCoefsQ15,
                                                         int numSegments, Vek32sc* prodStepErrQ,
                                                         const Vek32s* pStepSize, int startSubband, int len,
                                                         int scaleFactorCoef);

// Affine projection: coefs[s][k] += sum over p of conj(input[s+p][k]) * error[p][k] * step[p][k], p = 0..apOrder-1.
// Input has numSegments + apOrder - 1 rows, errors and steps apOrder. apOrder 1..16.
VEK_API VekStatus veksFIRSubbandAPCoeffUpdate_EC_32fc_I(const Vek64f* const* ppStepSize,
                                                        const Vek32fc* const* ppSrcFilterInput,
                                                        const Vek32fc* const* ppSrcError, Vek32fc** ppSrcDstCoefsQ15,
                                                        int numSegments, int len, int apOrder);

// ---- Controllers ----
// Step sizes fall towards 1/64 of their largest value within 4 frames of double talk and rise again within about 10.
// Double talk is held for 60 ms after either sign of it: the near end louder than the echo of the far end can be (peak
// of the near end above 0.9 of the far end's in the last 100 ms; with DT powers instead), or the fixed filter's error
// far above the best it has reached (6 times, once that is below -6 dB). When the second sign stands for a second, the
// echo path has changed and learning starts anew. With a silent far end (below -70 dB of full scale) steps are 0.
// The adaptive filter's coefficients go to the fixed one when its error (32 ms mean) is 1.5 dB lower and no double talk
// is on, and back when the fixed one's is 3 dB lower. The suppression gain falls, while only the far end talks, to the
// amplitude that the filter leaves of the echo, at least 0.1; else it rises to 1.

typedef struct VeksFullbandControllerState_EC_16s VeksFullbandControllerState_EC_16s;
typedef struct VeksFullbandControllerState_EC_32f VeksFullbandControllerState_EC_32f;

// frameSize 1..4096, tapLen 1..4096, else vekStsSizeErr; sampleFreq 8000 or 16000, else vekStsBadArgErr.
VEK_API VekStatus veksFullbandControllerGetSize_EC_16s(int frameSize, int tapLen, int sampleFreq, int* pSize);
VEK_API VekStatus veksFullbandControllerGetSize_EC_32f(int frameSize, int tapLen, int sampleFreq, int* pSize);
VEK_API VekStatus veksFullbandControllerInit_EC_16s(VeksFullbandControllerState_EC_16s* pState, int frameSize,
                                                    int tapLen, int sampleFreq);
VEK_API VekStatus veksFullbandControllerInit_EC_32f(VeksFullbandControllerState_EC_32f* pState, int frameSize,
                                                    int tapLen, int sampleFreq);
// Step sizes for the NLMS of the frame that begins at the pointers: frameSize of them, 0..0.5 (16s: Q15).
// pSrcRin[-tapLen..frameSize-1] is read.
VEK_API VekStatus veksFullbandControllerUpdate_EC_16s(const Vek16s* pSrcRin, const Vek16s* pSrcSin,
                                                      Vek16s* pDstStepSize, VeksFullbandControllerState_EC_16s* pState);
VEK_API VekStatus veksFullbandControllerUpdate_EC_32f(const Vek32f* pSrcRin, const Vek32f* pSrcSin,
                                                      Vek32f* pDstStepSize, VeksFullbandControllerState_EC_32f* pState);
// After both filters: frameSize errors each, tapLen coefficients each. Gain 0.1..1 (16s: Q15, 1 is 32767).
VEK_API VekStatus veksFullbandController_EC_16s(const Vek16s* pAdaptiveFilterErr, const Vek16s* pFixedFilterErr,
                                                Vek16s* pAdaptiveCoefs, Vek16s* pFixedCoefs, Vek16s* pSGain,
                                                VeksFullbandControllerState_EC_16s* pState);
VEK_API VekStatus veksFullbandController_EC_32f(const Vek32f* pAdaptiveFilterErr, const Vek32f* pFixedFilterErr,
                                                Vek32f* pAdaptiveCoefs, Vek32f* pFixedCoefs, Vek32f* pSGain,
                                                VeksFullbandControllerState_EC_32f* pState);

typedef struct VeksSubbandControllerState_EC_16s VeksSubbandControllerState_EC_16s;
typedef struct VeksSubbandControllerState_EC_32f VeksSubbandControllerState_EC_32f;

// numSubbands 1..4096, frameSize 1..4096, numSegments 1..256 (the size is the same for all); sampleFreq as above.
VEK_API VekStatus veksSubbandControllerGetSize_EC_16s(int numSubbands, int frameSize, int numSegments, int sampleFreq,
                                                      int* pSize);
VEK_API VekStatus veksSubbandControllerGetSize_EC_32f(int numSubbands, int frameSize, int numSegments, int sampleFreq,
                                                      int* pSize);
VEK_API VekStatus veksSubbandControllerInit_EC_16s(VeksSubbandControllerState_EC_16s* pState, int numSubbands,
                                                   int frameSize, int numSegments, int sampleFreq);
VEK_API VekStatus veksSubbandControllerInit_EC_32f(VeksSubbandControllerState_EC_32f* pState, int numSubbands,
                                                   int frameSize, int numSegments, int sampleFreq);
// Frames of both ends, the far end's subbands of numSegments frames (newest first), the near end's subbands.
// Step of subband k: m / (its power over the history + 1e-4 of the mean power), m 0..0.5. 16s: times 2^46, cut off,
// saturated, so that veksFIRSubbandCoeffUpdate_EC_32sc_I with scaleFactorCoef 16 learns coefficients in Q15.
VEK_API VekStatus veksSubbandControllerUpdate_EC_16s(const Vek16s* pSrcRin, const Vek16s* pSrcSin,
                                                     const Vek32sc* const* ppSrcRinSubbandsHistory,
                                                     const Vek32sc* pSrcSinSubbands, Vek32s* pDstStepSize,
                                                     VeksSubbandControllerState_EC_16s* pState);
VEK_API VekStatus veksSubbandControllerUpdate_EC_32f(const Vek32f* pSrcRin, const Vek32f* pSrcSin,
                                                     const Vek32fc* const* ppSrcRinSubbandsHistory,
                                                     const Vek32fc* pSrcSinSubbands, Vek32f* pDstStepSize,
                                                     VeksSubbandControllerState_EC_32f* pState);
// After both filters; each subband is copied by its own errors. Gain as in the full band.
VEK_API VekStatus veksSubbandController_EC_16s(const Vek32sc* pSrcAdaptiveFilterErr, const Vek32sc* pSrcFixedFilterErr,
                                               Vek32sc** ppDstAdaptiveCoefs, Vek32sc** ppDstFixedCoefs,
                                               Vek16s* pDstSGain, VeksSubbandControllerState_EC_16s* pState);
VEK_API VekStatus veksSubbandController_EC_32f(const Vek32fc* pSrcAdaptiveFilterErr, const Vek32fc* pSrcFixedFilterErr,
                                               Vek32fc** ppDstAdaptiveCoefs, Vek32fc** ppDstFixedCoefs,
                                               Vek32f* pDstSGain, VeksSubbandControllerState_EC_32f* pState);

// The same with the decision on double talk given, on subbands from startSubband (0..numSubbands-1) on; what belongs to
// those below is left alone.
typedef struct VeksSubbandControllerDTState_EC_16s VeksSubbandControllerDTState_EC_16s;

VEK_API VekStatus veksSubbandControllerDTGetSize_EC_16s(int numSubbands, int frameSize, int numSegments, int sampleFreq,
                                                        int* pSize);
VEK_API VekStatus veksSubbandControllerDTInit_EC_16s(VeksSubbandControllerDTState_EC_16s* pState, int numSubbands,
                                                     int frameSize, int numSegments, int sampleFreq);
// pSrcFilterErr: the fixed filter's error. *pIsDT: 1 in double talk. *pDisableNLP: 1 when the near end may be talking
// and the residual must not be suppressed: in double talk, or with a silent far end.
VEK_API VekStatus veksSubbandControllerDTUpdate_EC_16s(const Vek32sc* const* ppSrcRinSubbandsHistory,
                                                       const Vek32sc* pSrcSinSubbands, const Vek32sc* pSrcFilterErr,
                                                       Vek32s* pDstStepSize, int* pIsDT, int* pDisableNLP,
                                                       int startSubband, VeksSubbandControllerDTState_EC_16s* pState);
// *pSrcDstFilterPwr: power of the fixed filter before in, after out, in 1/256 dB of one coefficient of 1 (Q15, so 1 is
// 2^15), -32768 for none. A copy to the fixed filter needs FilterUpdateEnabled, and that the power grows by at most
// PwrDelta (1/256 dB; 0 sets no bound); one to the adaptive filter needs AdaptationEnabled.
// *pDstStsAdapt: 1 when a subband went to the fixed filter, plus 2 when one went back.
VEK_API VekStatus veksSubbandControllerDT_EC_16s(const Vek32sc* pSrcAdaptiveFilterErr,
                                                 const Vek32sc* pSrcFixedFilterErr, Vek32sc** ppDstAdaptiveCoefs,
                                                 Vek32sc** ppDstFixedCoefs, Vek32s* pSrcDstFilterPwr, int* pDstStsAdapt,
                                                 int PwrDelta, int FilterUpdateEnabled, int AdaptationEnabled,
                                                 int startSubband, VeksSubbandControllerDTState_EC_16s* pState);

#ifdef __cplusplus
}
#endif
