// Speech coding library of Vek: band split, band join and resampling of AMR-WB+ (TS 26.290).
//
// All functions: vekStsNullPtrErr for a null pointer, vekStsSizeErr for an impossible length, vekStsRangeErr for a
// value out of range; all before anything is written. Nothing is allocated. Sources and destinations apart. Results are
// rounded and saturated. Memories are 0 at the start; frames one after the other give the samples of the signal in one
// piece.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// ---- Very low band and the rest ----

// pSrc: 128 samples before the frame and the len of it. pSrcDstLow: 20 low samples of the frame before, then this
// one's, 5 for 32, 64 samples of the source late; at first the last 20 move to the front. pDstHigh (len): the signal,
// 128 samples late, less what the join makes of the low band. len: 128..1024, a multiple of 128.
VEK_API VekStatus veksBandSplit_AMRWBE_16s(const Vek16s* pSrc, Vek16s* pSrcDstLow, Vek16s* pDstHigh, int len);
// The signal from both bands, pSrcLow as the split has left it: its source, 128 samples late, to the bit where nothing
// was saturated.
VEK_API VekStatus veksBandJoin_AMRWBE_16s(const Vek16s* pSrcLow, const Vek16s* pSrcHigh, Vek16s* pDst, int len);

// ---- Half the rate ----

// One half of the band at half the rate, by the 24 taps of G.722's quadrature mirror filter: bandIdx 0 the lower, 1 the
// upper half, whose frequencies come mirrored. pDst: lenSrc / 2. pSrcDstMem: the last 24 samples, of this band's own.
// lenSrc: 24..8192, even.
VEK_API VekStatus veksDownsample_AMRWBE_16s(const Vek16s* pSrc, int lenSrc, Vek16s* pDst, Vek16s* pSrcDstMem,
                                            int bandIdx);
// The way back: lenDst / 2 samples of one half. addFlag 1 adds to what stands in pDst: both halves together are the
// signal, 22 samples late. pSrcDstMem: 24, the last 12 samples of the lower half and the last 12 of the upper; a call
// touches those of its half. lenDst: 24..8192, even.
VEK_API VekStatus veksUpsample_AMRWBE_16s(const Vek16s* pSrc, Vek16s* pDst, int lenDst, Vek16s* pSrcDstMem, int bandIdx,
                                          int addFlag);

// ---- Between the rates of files and the internal one ----
//
// The internal rate is freqScale / 96 times 25.6 kHz, freqScale 48, 54, 60, 64, 72, 80, 90, 96, 108, 120, 128, 135 or
// 144. A frame of it has two halves of 1024 samples at half the rate. *pSrcDstFrac is the place between two samples
// of the source, in units of 1 / (8 freqScale) for the split and of 8 freqScale / 1440 (44.1 kHz: 1323) for the join.

// lenSrc: 7680 for 48 kHz, 7056 for 44.1 kHz, twice the samples of 80 ms: what the lowest internal rate takes for its
// frame. *pDstCount: the samples that were taken, lenSrc * 48 / freqScale but for the fraction carried. len 1024. Both
// halves as veksDownsample_AMRWBE_16s has them. pSrcDstMem: 48 samples of source, then 24 of the internal rate.
VEK_API VekStatus veksBandSplitDownsample_AMRWBE_16s(const Vek16s* pSrc, int lenSrc, Vek16s* pDstLow, Vek16s* pDstHigh,
                                                     int len, Vek16s* pSrcDstMem, Vek16s* pSrcDstFrac, int* pDstCount,
                                                     int freqScale);
// lenDst: 3840 for 48 kHz, 3528 for 44.1 kHz, the samples of 80 ms. *pDstCount: the samples made of the frame,
// lenDst * 96 / freqScale but for the fraction carried, at most 2 * lenDst, for which pDst has room. pSrcDstMem: 12
// samples of the low and 12 of the high half, then 48 of the internal rate.
VEK_API VekStatus veksBandJoinUpsample_AMRWBE_16s(const Vek16s* pSrcLow, const Vek16s* pSrcHigh, int len, Vek16s* pDst,
                                                  int lenDst, Vek16s* pSrcDstMem, Vek16s* pSrcDstFrac, int* pDstCount,
                                                  int freqScale);

// ---- Rates with a small ratio ----

// Between a low rate and a high one, low : high = factor : base; base 12, factor 2, 3, 4, 6 or 8. With lenDst greater
// than lenSrc from low to high, else from high to low. *pSrcDstFrac: the place of the next sample after the last one of
// the source, in units of 1 / base (to low: 1 / factor). lenDst is the number of samples that fall into the source, so
// the fraction is below factor (to low: base) after the call as it has to be before it; it is 0 from frame to frame if
// the lengths are as the rates. pSrcDstMem: the last samples of the source, 24 to the high rate, 288 / factor to the
// low one. Filter: 24 samples of the low rate, so the delay is 12 of them. lenSrc: 12..8192.
VEK_API VekStatus veksResamplePolyphase_AMRWBE_16s(const Vek16s* pSrc, int lenSrc, int factor, int base,
                                                   Vek16s* pSrcDstFrac, Vek16s* pSrcDstMem, Vek16s* pDst, int lenDst);

#ifdef __cplusplus
}
#endif
