// Pulses to words. Two pulses of one track tell their signs by their order.
#include "sc/gsmamr/codewords.h"

#include <algorithm>

namespace vek::gsmamr {
namespace {

constexpr int kGray[8] = {0, 1, 3, 2, 6, 4, 5, 7};

bool plus(const PulsesFound& found, int pulse) {
    return found.sign[found.positions[pulse]] > 0;
}

void put(Vek16s* words, int index, int signs) {
    words[0] = static_cast<Vek16s>(index);
    words[1] = static_cast<Vek16s>(signs);
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

} // namespace

void encodePair9(const PulsesFound& found, int subFrame, Vek16s* words) {
    const int* at = found.positions;
    const int choice = at[0] % kTracks == kPairTracks[0][subFrame][0] ? 0 : 64;
    put(words, at[0] / kTracks + at[1] / kTracks * 8 + choice, (plus(found, 0) ? 1 : 0) + (plus(found, 1) ? 2 : 0));
}

void encodePair11(const PulsesFound& found, Vek16s* words) {
    const int* at = found.positions;
    const int firstTrack = at[0] % kTracks == 3 ? 1 : 0;
    const int secondTrack = std::min(at[1] % kTracks, 3);
    put(words, firstTrack + at[0] / kTracks * 2 + secondTrack * 16 + at[1] / kTracks * 64,
        (plus(found, 0) ? 1 : 0) + (plus(found, 1) ? 2 : 0));
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

} // namespace vek::gsmamr
