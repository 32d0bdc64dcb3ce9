// Speech coding library of Vek: G.722, G.722.1 and G.726.
//
// All functions: vekStsNullPtrErr for a null pointer and vekStsSizeErr for a length that is no frame, before anything
// is written. States live in memory of the caller, of the size that the GetStateSize function tells, at any address.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// States of ADPCM coders; their contents are the library's.
typedef struct VeksCodecState_G726 VeksCodecState_G726;

// Bytes of a state.
VEK_API VekStatus veksEncodeGetStateSize_G726_16s8u(int* pSize);
VEK_API VekStatus veksDecodeGetStateSize_G726_8u16s(int* pSize);

// Start of a stream. rate is 16, 24, 32 or 40 kbit/s, else vekStsBitRateErr; law tells what the decoder's samples have
// to be codes of, with the synchronous coding adjustment for the two laws of G.711, else vekStsLawErr.
VEK_API VekStatus veksEncodeInit_G726_16s8u(VeksCodecState_G726* pEncMem, VekSpchBitRate rate);
VEK_API VekStatus veksDecodeInit_G726_8u16s(VeksCodecState_G726* pDecMem, VekSpchBitRate rate, VekPCMLaw law);

// One code a sample, in the low bits of a byte: G.726 2. The samples have 16 bits, of which the codec sees the upper
// 14; for PCM of A-law or mu-law they are the expanded codes. vekStsStateErr for a state without a start.
VEK_API VekStatus veksEncode_G726_16s8u(VeksCodecState_G726* pEncMem, const Vek16s* pSrc, Vek8u* pDst, int len);

// The samples of 16 bits: G.726 3; for a law of G.711 the expansion of the adjusted code. Bits above the code are
// ignored.
VEK_API VekStatus veksDecode_G726_8u16s(VeksCodecState_G726* pDecMem, const Vek8u* pSrc, Vek16s* pDst, int len);

// Split into two bands and their reunion by a quadrature mirror filter of 24 taps: G.722 3.1 and 4.4. len samples of 16
// kHz, even, stand for len / 2 pairs of a low and a high sample, low first. delay holds the 22 samples or sums before,
// oldest first, 0 at the start.
VEK_API VekStatus veksQMFEncode_G722_16s(const Vek16s* pSrc, Vek16s* pDst, int len, Vek16s* delay);
VEK_API VekStatus veksQMFDecode_G722_16s(const Vek16s* pSrc, Vek16s* pDst, int len, Vek16s* delay);

// States of the sub-band coders.
typedef struct VeksCodecState_G722 VeksCodecState_G722;
VEK_API VekStatus veksSBADPCMEncodeStateSize_G722_16s(int* pSize);
VEK_API VekStatus veksSBADPCMDecodeStateSize_G722_16s(int* pSize);
VEK_API VekStatus veksSBADPCMEncodeInit_G722_16s(VeksCodecState_G722* pEncMem);
VEK_API VekStatus veksSBADPCMDecodeInit_G722_16s(VeksCodecState_G722* pDecMem);

// Sub-band ADPCM: len samples, in pairs of a low and a high one, become len / 2 codes of 8 bits: G.722 3.2 to 3.6. len
// is even. vekStsStateErr for a state without a start.
VEK_API VekStatus veksSBADPCMEncode_G722_16s(const Vek16s* pSrc, Vek16s* pDst, int len, VeksCodecState_G722* pEncMem);

// len / 2 codes become len samples in pairs, apart from the codes: G.722 4.1 to 4.3. mode 1, 2, 3 uses 6, 5 or 4 bits
// of the low band (64, 56, 48 kbit/s); the bits below are not looked at. vekStsModeErr for another mode.
VEK_API VekStatus veksSBADPCMDecode_G722_16s(const Vek16s* pSrc, Vek16s* pDst, int len, int mode,
                                             VeksCodecState_G722* pDecMem);

// Every fourth sample of the signal below 1 kHz of an 8 kHz band, len / 4 in all, for the pitch analysis of a concealed
// frame: symmetric FIR filter of 11 taps. pSrc[-5..len+1] is read; len is a multiple of 4. After G.722 Appendix IV,
// with a filter of our own: a Hamming-windowed sinc of cut-off 0.125.
VEK_API VekStatus veksDownsampleFilter_G722_16s(const Vek16s* pSrc, int len, Vek16s* pDst);

// Takes the direct current from a concealed high band: y[n] = x[n] - x[n-1] + 0.96 y[n-1]. mem is the last input and
// output. After G.722 Appendix IV, with a pole of our own.
VEK_API VekStatus veksFilterHighband_G722_16s_I(Vek16s* pSrcDst, int len, Vek16s* mem);

// Class of the signal before a lost frame, from its last pitch period of valDelay samples, 16..1024, and the scale
// factors of the decoder: how a concealment has to go on. In all classes but voiced, peaks above twice the mean
// magnitude of the period are cut to that, in place, so that a peak is not repeated. pSrcDst[-1..valDelay-1] is read.
// After the classes of G.722 Appendix IV, with decision levels of our own (zero crossings, energies of the halves,
// correlation of neighbours, scale factors).
typedef enum {
    VEK_G722_TRANSIENT,
    VEK_G722_UNVOICED,
    VEK_G722_UNVOICED_TO_VOICED,
    VEK_G722_WEAKLY_VOICED,
    VEK_G722_VOICED
} VekG722FrameClass;
VEK_API VekStatus veksClassifyFrame_G722_16s_I(Vek16s* pSrcDst, int valDelay, int* pFrameClass,
                                               const VeksCodecState_G722* pDecMem);

// Quantisation and entropy coding of a region of 20 coefficients of the modulated lapped transform: G.722.1 3.5, 3.6.
// category 0..7 (7 codes nothing); qntAmpEnvIndex is the region's level in steps of 3 dB, -8..31; the step of category
// c is 2^((c + index - 3) / 2). The words of the vectors, each with the signs of its components, stand from the highest
// bit of pDstCode[0] on; pDstCode has 4 words, *pCodeLength the bits. A vector that the tables have no word for is
// coded with its largest component lowered. vekStsRangeErr for arguments outside, vekStsOutOfRangeErr where the region
// needs more than 128 bits, as it can only with a level that is not its own.
VEK_API VekStatus veksHuffmanEncode_G722_16s32u(int category, int qntAmpEnvIndex, const Vek16s* pSrcMLTCoeffs,
                                                Vek32u* pDstCode, int* pCodeLength);

#ifdef __cplusplus
}
#endif
