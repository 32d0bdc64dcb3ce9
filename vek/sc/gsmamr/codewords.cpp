// Pulses to words and back. Two pulses of one track tell their signs by their order.
#include "sc/gsmamr/codewords.h"

#include <algorithm>

namespace vek::gsmamr {
namespace {

constexpr int kTracks = 5;
constexpr int kGray[8] = {0, 1, 3, 2, 6, 4, 5, 7};
constexpr int kFromGray[8] = {0, 1, 3, 2, 5, 6, 4, 7};

// First tracks of the two pulses of 9 bits by subframe, for both values of the choosing bit.
constexpr int kPairTracks[2][4][2] = {{{0, 2}, {0, 3}, {0, 2}, {0, 3}}, {{1, 3}, {2, 4}, {1, 4}, {1, 4}}};

bool plus(const PulsesFound& found, int pulse) {
    return found.sign[found.positions[pulse]] > 0;
}

void put(Vek16s* words, int index, int signs) {
    words[0] = static_cast<Vek16s>(index);
    words[1] = static_cast<Vek16s>(signs);
}

// Pulses that stand alone: a sign bit each.
void place(const int* positions, int pulses, int signs, Vek16s* vector) {
    for (int k = 0; k < pulses; ++k) {
        vector[positions[k]] = static_cast<Vek16s>((signs >> k & 1) != 0 ? 8191 : -8192);
    }
}

// Two pulses of a track: the second has the other sign if it comes before the first.
void placeBoth(int first, int second, int value, Vek16s* vector) {
    vector[first] = static_cast<Vek16s>(value);
    vector[second] = static_cast<Vek16s>(vector[second] + (second < first ? -value : value));
}

// The order of the two pulses of a track that tells the second's sign.
struct Ordered {
    int first = 0;
    int second = 0;
    bool plus = true;

    Ordered(int lane, bool lanePlus, int other, bool otherPlus) : first(lane), second(other), plus(lanePlus) {
        const bool swap = lanePlus == otherPlus ? other < lane : other >= lane;
        if (swap) {
            first = other;
            second = lane;
            plus = otherPlus;
        }
    }
};

// The lanes of both pulses of each track, in the order of the pulses.
template <int Tracks>
void byTrack(const PulsesFound& found, int* first, int* second) {
    std::fill_n(first, Tracks, -1);
    for (int k = 0; k < 2 * Tracks; ++k) {
        int* place = first + found.positions[k] % Tracks;
        *(*place < 0 ? place : second + found.positions[k] % Tracks) = found.positions[k] / Tracks;
    }
}

// Three lanes of ten in ten bits: halves in fives, then the odd bits.
int packThree(int a, int b, int c) {
    return (a / 2 + b / 2 * 5 + c / 2 * 25) * 8 + (a & 1) + (b & 1) * 2 + (c & 1) * 4;
}

void unpackThree(int word, int& a, int& b, int& c) {
    const int halves = std::min(word >> 3 & 0x7f, 124);
    a = halves % 5 * 2 + (word & 1);
    b = halves / 5 % 5 * 2 + (word >> 1 & 1);
    c = halves / 25 * 2 + (word >> 2 & 1);
}

} // namespace

void encodePair9(const PulsesFound& found, int subFrame, Vek16s* words) {
    const int* at = found.positions;
    const int choice = at[0] % kTracks == kPairTracks[0][subFrame][0] ? 0 : 64;
    put(words, at[0] / kTracks + at[1] / kTracks * 8 + choice, (plus(found, 0) ? 1 : 0) + (plus(found, 1) ? 2 : 0));
}

void decodePair9(const Vek16s* words, int subFrame, Vek16s* vector) {
    const int* tracks = kPairTracks[words[0] >> 6 & 1][subFrame];
    const int at[2] = {(words[0] & 7) * kTracks + tracks[0], (words[0] >> 3 & 7) * kTracks + tracks[1]};
    place(at, 2, words[1], vector);
}

void encodePair11(const PulsesFound& found, Vek16s* words) {
    const int* at = found.positions;
    const int firstTrack = at[0] % kTracks == 3 ? 1 : 0;
    const int secondTrack = std::min(at[1] % kTracks, 3);
    put(words, firstTrack + at[0] / kTracks * 2 + secondTrack * 16 + at[1] / kTracks * 64,
        (plus(found, 0) ? 1 : 0) + (plus(found, 1) ? 2 : 0));
}

void decodePair11(const Vek16s* words, Vek16s* vector) {
    const int secondTrack = words[0] >> 4 & 3;
    const int at[2] = {(words[0] >> 1 & 7) * kTracks + 1 + (words[0] & 1) * 2,
                       (words[0] >> 6 & 7) * kTracks + (secondTrack == 3 ? 4 : secondTrack)};
    place(at, 2, words[1], vector);
}

void encodeThree14(const PulsesFound& found, Vek16s* words) {
    int index = 0;
    int signs = 0;
    for (int k = 0; k < 3; ++k) {
        const int track = found.positions[k] % kTracks;
        const int lane = found.positions[k] / kTracks;
        const int pulse = track > 2 ? track - 2 : track;
        constexpr int shift[3] = {0, 4, 8};
        index += (lane << shift[pulse]) + (track == 3 ? 8 : track == 4 ? 128 : 0);
        signs += plus(found, k) ? 1 << pulse : 0;
    }
    put(words, index, signs);
}

void decodeThree14(const Vek16s* words, Vek16s* vector) {
    const int index = words[0];
    const int at[3] = {(index & 7) * kTracks, (index >> 4 & 7) * kTracks + 1 + (index >> 3 & 1) * 2,
                       (index >> 8 & 7) * kTracks + 2 + (index >> 7 & 1) * 2};
    place(at, 3, words[1], vector);
}

void encodeFour17(const PulsesFound& found, Vek16s* words) {
    int index = 0;
    int signs = 0;
    for (int k = 0; k < 4; ++k) {
        const int track = found.positions[k] % kTracks;
        const int pulse = std::min(track, 3);
        const int code = kGray[found.positions[k] / kTracks];
        index += pulse == 3 ? (code << 10) + (track == 4 ? 512 : 0) : code << (3 * pulse);
        signs += plus(found, k) ? 1 << pulse : 0;
    }
    put(words, index, signs);
}

void decodeFour17(const Vek16s* words, Vek16s* vector) {
    const int index = words[0];
    int at[4];
    for (int k = 0; k < 3; ++k) {
        at[k] = kFromGray[index >> (3 * k) & 7] * kTracks + k;
    }
    at[3] = kFromGray[index >> 10 & 7] * kTracks + 3 + (index >> 9 & 1);
    place(at, 4, words[1], vector);
}

void encodeEight31(const PulsesFound& found, Vek16s* words) {
    constexpr int tracks = 4;
    int lane[2 * tracks];
    byTrack<tracks>(found, lane, lane + tracks);
    for (int t = 0; t < tracks; ++t) {
        const Ordered both(lane[t], found.sign[lane[t] * tracks + t] > 0, lane[tracks + t],
                           found.sign[lane[tracks + t] * tracks + t] > 0);
        lane[t] = both.first;
        lane[tracks + t] = both.second;
        words[t] = both.plus ? 0 : 1;
    }
    words[4] = static_cast<Vek16s>(packThree(lane[0], lane[4], lane[1]));
    words[5] = static_cast<Vek16s>(packThree(lane[2], lane[6], lane[5]));
    // Two lanes in seven bits: 25 pairs of halves, in a winding line, spread over 32.
    const int half = lane[7] / 2;
    const int other = lane[3] / 2;
    const int pair = half * 5 + ((half & 1) != 0 ? 4 - other : other);
    words[6] = static_cast<Vek16s>((pair * 32 + 12) / 25 * 4 + (lane[3] & 1) + (lane[7] & 1) * 2);
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

void encodeTen35(const PulsesFound& found, Vek16s* words) {
    int lane[2 * kTracks];
    byTrack<kTracks>(found, lane, lane + kTracks);
    for (int t = 0; t < kTracks; ++t) {
        const Ordered both(lane[t], found.sign[lane[t] * kTracks + t] > 0, lane[kTracks + t],
                           found.sign[lane[kTracks + t] * kTracks + t] > 0);
        words[t] = static_cast<Vek16s>(kGray[both.first] + (both.plus ? 0 : 8));
        words[kTracks + t] = static_cast<Vek16s>(kGray[both.second]);
    }
}

void decodeTen35(const Vek16s* words, Vek16s* vector) {
    for (int t = 0; t < kTracks; ++t) {
        placeBoth(kFromGray[words[t] & 7] * kTracks + t, kFromGray[words[kTracks + t] & 7] * kTracks + t,
                  (words[t] & 8) == 0 ? 4096 : -4096, vector);
    }
}

} // namespace vek::gsmamr
