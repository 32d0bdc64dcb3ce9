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

#ifdef __cplusplus
}
#endif
