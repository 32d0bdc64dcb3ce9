// Vector of the algebraic codebook from the words of the bit stream: the reverse of codewords.cpp.
#include <algorithm>

#include "sc/common/signal_check.h"
#include "sc/gsmamr/codewords.h"
#include "sc/gsmamr/speechrates.h"
#include "veksc_gsmamr.h"

using namespace vek::gsmamr;

namespace {

// The positions of the first track in the order of their codes; those of the others follow.
constexpr Vek8u kFromGray[8] = {0, 5, 15, 10, 25, 30, 20, 35};

// Pulses that stand alone: a sign bit each.
template <int Pulses>
void place(const int (&positions)[Pulses], int signs, Vek16s* vector) {
#pragma GCC unroll 4
    for (int k = 0; k < Pulses; ++k) {
        vector[positions[k]] = static_cast<Vek16s>(8191 ^ ((signs >> k & 1) - 1)); // or -8192
    }
}

// Two pulses of a track: the second has the other sign if it comes before the first. No store waits for one before.
void placeBoth(int first, int second, int value, Vek16s* vector) {
    vector[first] = static_cast<Vek16s>(value);
    vector[second] = static_cast<Vek16s>(second == first ? 2 * value : second < first ? -value : value);
}

void unpackThree(int word, int& a, int& b, int& c) {
    const int halves = std::min(word >> 3 & 0x7f, 124);
    a = halves % 5 * 2 + (word & 1);
    b = halves / 5 % 5 * 2 + (word >> 1 & 1);
    c = halves / 25 * 2 + (word >> 2 & 1);
}

void decodePair9(const Vek16s* words, int subFrame, Vek16s* vector) {
    const int* tracks = kPairTracks[words[0] >> 6 & 1][subFrame];
    const int at[2] = {(words[0] & 7) * kTracks + tracks[0], (words[0] >> 3 & 7) * kTracks + tracks[1]};
    place(at, words[1], vector);
}

void decodePair11(const Vek16s* words, Vek16s* vector) {
    const int secondTrack = words[0] >> 4 & 3;
    const int at[2] = {(words[0] >> 1 & 7) * kTracks + 1 + (words[0] & 1) * 2,
                       (words[0] >> 6 & 7) * kTracks + (secondTrack == 3 ? 4 : secondTrack)};
    place(at, words[1], vector);
}

void decodeThree14(const Vek16s* words, Vek16s* vector) {
    const int index = words[0];
    const int at[3] = {(index & 7) * kTracks, (index >> 4 & 7) * kTracks + 1 + (index >> 3 & 1) * 2,
                       (index >> 8 & 7) * kTracks + 2 + (index >> 7 & 1) * 2};
    place(at, words[1], vector);
}

void decodeFour17(const Vek16s* words, Vek16s* vector) {
    const int index = words[0];
    int at[4];
#pragma GCC unroll 3
    for (int k = 0; k < 3; ++k) {
        at[k] = kFromGray[index >> (3 * k) & 7] + k;
    }
    at[3] = kFromGray[index >> 10 & 7] + 3 + (index >> 9 & 1);
    place(at, words[1], vector);
}

void decodeEight31(const Vek16s* words, Vek16s* vector) {
    constexpr int tracks = 4;
    int lane[2 * tracks];
    unpackThree(words[4], lane[0], lane[4], lane[1]);
    unpackThree(words[5], lane[2], lane[6], lane[5]);
    const int pair = ((words[6] >> 2 & 0x1f) * 25 + 12) >> 5;
    const int half = pair / 5;
    const int other = (half & 1) != 0 ? 4 - pair % 5 : pair % 5;
    lane[3] = other * 2 + (words[6] & 1);
    lane[7] = half * 2 + (words[6] >> 1 & 1);
    for (int t = 0; t < tracks; ++t) {
        placeBoth(lane[t] * tracks + t, lane[tracks + t] * tracks + t, (words[t] & 1) == 0 ? 8191 : -8191, vector);
    }
}

void decodeTen35(const Vek16s* words, Vek16s* vector) {
#pragma GCC unroll 5
    for (int t = 0; t < kTracks; ++t) {
        placeBoth(kFromGray[words[t] & 7] + t, kFromGray[words[kTracks + t] & 7] + t,
                  (words[t] & 8) == 0 ? 4096 : -4096, vector);
    }
}

} // namespace

VekStatus veksFixedCodebookDecode_GSMAMR_16s(const Vek16s* pSrcFixedIndex, Vek16s* pDstFixedVector, Vek16s subFrame,
                                             VekSpchBitRate mode) {
    if (anyNull(pSrcFixedIndex, pDstFixedVector)) {
        return vekStsNullPtrErr;
    }
    if (!isRateOrDtx(mode)) {
        return vekStsBitRateErr;
    }
    if (!isSubframe(subFrame)) {
        return vekStsRangeErr;
    }
    std::fill_n(pDstFixedVector, kSubframe, Vek16s{0});
    switch (mode) {
    case VEK_SPCHBR_4750:
    case VEK_SPCHBR_5150:
        decodePair9(pSrcFixedIndex, subFrame, pDstFixedVector);
        break;
    case VEK_SPCHBR_5900:
        decodePair11(pSrcFixedIndex, pDstFixedVector);
        break;
    case VEK_SPCHBR_6700:
        decodeThree14(pSrcFixedIndex, pDstFixedVector);
        break;
    case VEK_SPCHBR_7400:
    case VEK_SPCHBR_7950:
        decodeFour17(pSrcFixedIndex, pDstFixedVector);
        break;
    case VEK_SPCHBR_10200:
        decodeEight31(pSrcFixedIndex, pDstFixedVector);
        break;
    default:
        decodeTen35(pSrcFixedIndex, pDstFixedVector);
        break;
    }
    return vekStsNoErr;
}
