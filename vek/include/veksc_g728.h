// Speech coding library of Vek: G.728, low-delay CELP, in the arithmetic of its fixed-point Annex G.
//
// All functions: vekStsNullPtrErr for a null pointer before anything is written. A vector has 5 samples. Signals stand
// in the recommendation's scale of +-4095, either in Q2 or as a mantissa with a scale factor, the number of its left
// shifts: value = mantissa * 2^-sfs. Predictors leave out their first coefficient, which is 1. States live in memory of
// the caller, of the size that the GetStateSize function tells, at any address; vekStsStateErr for one without a start.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Filters.

typedef struct VeksIIRState_G728 VeksIIRState_G728;
typedef struct VeksSynthesisFilterState_G728 VeksSynthesisFilterState_G728;
typedef struct VeksCombinedFilterState_G728 VeksCombinedFilterState_G728;

// Bytes of a state, and its start at rest.
VEK_API VekStatus veksIIR16sGetStateSize_G728_16s(int* pSize);
VEK_API VekStatus veksIIR16sInit_G728_16s(VeksIIRState_G728* pMem);
VEK_API VekStatus veksSynthesisFilterGetStateSize_G728_16s(int* pSize);
VEK_API VekStatus veksSynthesisFilterInit_G728_16s(VeksSynthesisFilterState_G728* pMem);
VEK_API VekStatus veksCombinedFilterGetStateSize_G728_16s(int* pSize);
VEK_API VekStatus veksCombinedFilterInit_G728_16s(VeksCombinedFilterState_G728* pMem);

// Perceptual weighting filter, block 4: y[n] = x[n] + sum z[i] x[n-i] - sum p[i] y[n-i], i = 1..10. pCoeffs holds the
// ten z, then the ten p, Q14. len 1..65536, else vekStsSizeErr. Saturates.
VEK_API VekStatus veksIIR16s_G728_16s(const Vek16s* pCoeffs, const Vek16s* pSrc, Vek16s* pDstWgtSpeech, int len,
                                      VeksIIRState_G728* pMem);

// Synthesis filter of the decoder, block 32: the response to what lies in the memory (zero-input), to which the
// response to the excitation is added. pSrcLPC: 50 coefficients, Q14. pSrcDstExc: 5 samples with the scale factor
// excSfs, 0..15, else vekStsScaleRangeErr; on return the excitation's own response at the same scale, saturated. The
// sum, clipped to +-4095, is the speech in pDstSpeech and *pSpeechSfs, with mantissas of 14 bits and a sign.
VEK_API VekStatus veksSyntesisFilterZeroInput_G728_16s(const Vek16s* pSrcLPC, Vek16s* pSrcDstExc, int excSfs,
                                                       Vek16s* pDstSpeech, Vek16s* pSpeechSfs,
                                                       VeksSynthesisFilterState_G728* pMem);

// Synthesis and weighting filter in cascade, of the coder: blocks 9 and 10. pCoeffs is the weighting filter as above.
// ZeroInput gives the response to the memories, 5 samples in Q2, and leaves them as after a vector without excitation;
// the samples in between stay below +-8192. ZeroState then adds the response to the excitation to the memories and
// gives the speech; arguments and results as of the decoder's filter, whose speech it equals to the bit.
VEK_API VekStatus veksCombinedFilterZeroInput_G728_16s(const Vek16s* pSrcLPC, const Vek16s* pCoeffs, Vek16s* pDst,
                                                       VeksCombinedFilterState_G728* pMem);
VEK_API VekStatus veksCombinedFilterZeroState_G728_16s(const Vek16s* pSrcLPC, const Vek16s* pCoeffs, Vek16s* pSrcDstExc,
                                                       int excSfs, Vek16s* pDstSpeech, Vek16s* pSpeechSfs,
                                                       VeksCombinedFilterState_G728* pMem);

// Backward adaptation.

// The three hybrid windows: order 50, frames of 20 samples (synthesis filter, block 49); order 10, frames of 20
// samples (weighting filter, block 36); order 10, frames of 4 samples (logarithmic gain, block 43).
typedef enum { VEK_G728_WINDOW_SYNTHESIS, VEK_G728_WINDOW_WEIGHTING, VEK_G728_WINDOW_GAIN } VekG728Window;

typedef struct VeksWinHybridState_G728 VeksWinHybridState_G728;
VEK_API VekStatus veksWinHybridGetStateSize_G728_16s(int* pSize);
// vekStsModeErr for a window that does not exist.
VEK_API VekStatus veksWinHybridInit_G728_16s(VekG728Window window, VeksWinHybridState_G728* pMem);

// Takes a frame into the history and gives the autocorrelation of the windowed history, order + 1 values with the white
// noise correction of 257/256, scaled together so that the first one fills 16 bits; all 0 for silence. A frame that is
// marked bad (bfi 1) enters the history, but no autocorrelation is given, since no filter is adapted to it;
// vekStsRangeErr for bfi neither 0 nor 1. WinHybrid: samples of 16 bits in one format. WinHybridBlock: 20 samples in
// four blocks of 5 with a scale factor each, 0..15, else vekStsScaleRangeErr; vekStsStateErr for the window of frames
// of 4 samples.
VEK_API VekStatus veksWinHybrid_G728_16s(int bfi, const Vek16s* pSrc, Vek16s* pDst, VeksWinHybridState_G728* pMem);
VEK_API VekStatus veksWinHybridBlock_G728_16s(int bfi, const Vek16s* pSrc, const Vek16s* pSrcSfs, Vek16s* pDst,
                                              VeksWinHybridState_G728* pMem);

// Levinson-Durbin recursion: blocks 37, 44, 50. order is 1..50, else vekStsFilterOrderErr; pSrcAutoCorr has order + 1
// values. The coefficients come in Q15, Q14 or Q13, as the largest one of any order needs: *pDstScaleFactor tells the
// Q. *pDstResidualEnergy is the energy left, in the scale of pSrcAutoCorr times 2^16; *pDstRC1 the first reflection
// coefficient, Q15. vekStsUnstableFilter, with nothing written, for values that are no autocorrelation or coefficients
// beyond Q13: the filter before goes on then.
VEK_API VekStatus veksLevinsonDurbin_G728_16s_Sfs(const Vek16s* pSrcAutoCorr, int order, Vek16s* pDstLPC,
                                                  Vek16s* pDstRC1, Vek32s* pDstResidualEnergy, Vek16s* pDstScaleFactor);
// The same from order numSrcLPC on, 0..order-1, else vekStsRangeErr, also for an energy or a Q that no recursion
// leaves: coefficients, energy and Q of that order come in and those of `order` go out.
VEK_API VekStatus veksLevinsonDurbin_G728_16s_ISfs(const Vek16s* pSrcAutoCorr, int numSrcLPC, int order,
                                                   Vek16s* pSrcDstLPC, Vek32s* pSrcDstResidualEnergy,
                                                   Vek16s* pSrcDstScaleFactor);

// Excitation.

// Energies of the 128 filtered shapes, block 14: pSrcImpulse, 5 samples, Q13; pEnergy in Q5. Saturates.
VEK_API VekStatus veksImpulseResponseEnergy_G728_16s(const Vek16s* pSrcImpulse, Vek16s* pEnergy);

// The shape j and the gain g for which g^2 E(j) - 2 g sum p[k] y(j,k) is least, blocks 17 and 18; of equal ones the
// first. pSrc is the time-reversed convolution p of the target with the impulse response, Q7; pEnergy the 128 energies,
// of which negative ones count as 0. *pDstShapeIdx is the row among the 128 shapes, *pDstGainIdx among the 8 gains
// (from 4 on the negative ones), *pDstCodebookIdx the code word. At 16000 bit/s it is shape * 8 + gain, 10 bits. The
// lower rates of Annex H use subsets of our own: at 12800 bit/s 64 shapes, at 9600 bit/s 16 of them, both with the
// gains 1, 2, 5 and 6; the code word is place * 4 + place in the subsets, 8 and 6 bits. The subsets begin with shape 0,
// and each next one is the shape whose direction, signs aside, is farthest from all before. vekStsBitRateErr for
// another rate.
VEK_API VekStatus veksCodebookSearch_G728_16s(const Vek16s* pSrc, const Vek16s* pEnergy, Vek16s* pDstShapeIdx,
                                              Vek16s* pDstGainIdx, Vek16s* pDstCodebookIdx, VekSpchBitRate rate);

// Trellis-coded quantisation of a vector, after Annex J, 5 bits a sample. pSrc: speech, Q2. pSrcLPC: 50 coefficients,
// Q14, of which a vector sees the first four. pSrcDstWindow: in, the response of the synthesis filter to its memory;
// out, the quantised speech. pSrcDstResidual: in, what each residual has to carry besides (the response of a filter of
// noise feedback; 0 without one); out, the quantised excitation, both Q2. *pSrcDstBestNode: the node, 0..7, that the
// path leaves and the one it reaches, else vekStsRangeErr. invGain, Q30, and excGain, Q3, both positive, else
// vekStsRangeErr: the gain of the excitation and its inverse. pDst: per sample bit 4 the branch, bits 0..3 the place in
// its subset. The trellis has 8 states, with the parity polynomials 13 and 4 (octal); the 64 levels are those of the
// least mean square error for a normal distribution, in turn of the subsets 0..3; both are of our own choice.
VEK_API VekStatus veksCodebookSearchTCQ_G728_16s8u(const Vek16s* pSrc, const Vek16s* pSrcLPC, Vek8u* pDst,
                                                   Vek16s* pSrcDstWindow, Vek16s* pSrcDstResidual, int* pSrcDstBestNode,
                                                   Vek32s invGain, Vek16s excGain);

// Postfilter.

typedef struct VeksPostFilterState_G728 VeksPostFilterState_G728;
typedef struct VeksPostFilterAdapterState_G728 VeksPostFilterAdapterState_G728;
VEK_API VekStatus veksPostFilterGetStateSize_G728_16s(int* pSize);
VEK_API VekStatus veksPostFilterInit_G728_16s(VeksPostFilterState_G728* pMem);
VEK_API VekStatus veksPostFilterAdapterGetStateSize_G728(int* pSize);
VEK_API VekStatus veksPostFilterAdapterInit_G728(VeksPostFilterAdapterState_G728* pMem);

// Residual of the speech by the predictor of order 10, block 81: 5 samples; pCoeffs in Q13; the speech before them is
// kept. Saturates.
VEK_API VekStatus veksLPCInverseFilter_G728_16s(const Vek16s* pSrc, const Vek16s* pCoeffs, Vek16s* pDst,
                                                VeksPostFilterAdapterState_G728* pMem);

// Pitch period of the residual, block 82: of the frame pSrc[80..99], which is filtered and decimated, and the samples
// before it, from pSrc[-140] on. *pSrcDstPitch is the period of the frame before, 50 at the start, 20..140, else
// vekStsRangeErr, and becomes that of this one.
VEK_API VekStatus veksPitchPeriodExtraction_G728_16s(const Vek16s* pSrc, int* pSrcDstPitch,
                                                     VeksPostFilterAdapterState_G728* pMem);

// Long-term and short-term postfilter with gain control, blocks 71 to 77, on 5 samples: gl (s[n] + b s[n-kp]), the
// filter of poles and zeros with its tilt, and the level of the input. gl Q14, glb = gl * b Q16, tiltz Q14; pCoeffs:
// ten zeros and ten poles, Q14. pSrc[-kp..4] is read; kp is 20..140, else vekStsRangeErr. Saturates.
VEK_API VekStatus veksPostFilter_G728_16s(Vek16s gl, Vek16s glb, int kp, Vek16s tiltz, const Vek16s* pCoeffs,
                                          const Vek16s* pSrc, Vek16s* pDst, VeksPostFilterState_G728* pMem);

#ifdef __cplusplus
}
#endif
