// Searches for pulses in floating point. The eight lanes of a track are worked on together: each keeps its best, and
// these meet by halves. All levels do the same operations in the same order, so that they give the same bits.
#include "sc/kernels/floatpulses.h"

#include "sc/kernels/numbers.h"

namespace vek {
namespace {

using namespace numbers;

constexpr int kTracks = 5;
constexpr int kLanes = 8;
constexpr int kLen = kPulsePositions;

alignas(32) constexpr float kLane[kLanes] = {0, 1, 2, 3, 4, 5, 6, 7};

// Completes the correlations of two tracks: those of a position with later ones mirror those of the later ones.
void mirrorTracks(FloatPulseField& field, int first, int second) {
    F8 r[kLanes];
    for (int a = 0; a < kLanes; ++a) {
        r[a] = load(field.row(second * kLanes + a) + first * kLanes);
    }
    transpose(r);
    for (int a = 0; a < kLanes; ++a) {
        float* const own = field.row(first * kLanes + a) + second * kLanes;
        r[a] = choose(set1(static_cast<float>(a)), load(kLane), load(own), r[a]);
        store(own, r[a]);
    }
    if (first != second) {
        transpose(r);
        for (int a = 0; a < kLanes; ++a) {
            store(field.row(second * kLanes + a) + first * kLanes, r[a]);
        }
    }
}

// From the last position on. The correlations of a position with the earlier positions of a track are one run of
// distances, the largest first, five apart: sums that grow by a product from position to position.
void field(const float* h, const float* sign, FloatPulseField& field) {
    // Every fifth element of the response, the last first, behind zeros.
    float back[kTracks][2 * kLanes] = {};
    float turn[kLanes + kLen] = {};
    for (int i = 0; i < kLen; ++i) {
        back[i % kTracks][2 * kLanes - 1 - i / kTracks] = h[i];
        turn[kLanes + i] = sign[i];
    }
    F8 sums[kTracks];
    for (F8& sum : sums) {
        sum = set1(0.0F);
    }
    for (int b = 0; b < kLanes; ++b) {
        const int lane = kLanes - 1 - b;
#pragma GCC unroll 5
        for (int i = 0; i < kTracks; ++i) {
            const int own = kTracks - 1 - i;
            const int slot = own * kLanes + lane;
            const F8 factor = set1(h[kTracks * b + i]);
            const F8 ownSign = set1(sign[slot]);
            // What is written in front of a track's first lane is overwritten by the track before, or is padding.
#pragma GCC unroll 5
            for (int track = kTracks - 1; track >= 0; --track) {
                const int distance = (own - track + kTracks) % kTracks;
                F8& sum = sums[distance];
                sum = sum + factor * load(back[(i + distance) % kTracks] + kLanes - b - (i + distance) / kTracks);
                // The last lane of the track that is not behind the position stands last.
                const int at = kLanes * track + (track > own ? -1 : 0) - b;
                store(field.row(slot) + at, sum * load(turn + kLanes + at) * ownSign);
            }
        }
    }
    for (int first = 0; first < kTracks; ++first) {
        for (int second = first; second < kTracks; ++second) {
            mirrorTracks(field, first, second);
        }
    }
}

// What is compared, by its cross products, and the number of the pair in the order of the search.
struct Ratios {
    F8 square = set1(-1.0F);
    F8 energy = set1(1.0F);
    F8 place = set1(0.0F);

    // Those that come later replace the ones that they are better than.
    VEK_INLINE void meetLater(const Ratios& other) {
        const F8 theirs = other.square * energy;
        const F8 ours = square * other.energy;
        square = choose(theirs, ours, other.square, square);
        energy = choose(theirs, ours, other.energy, energy);
        place = choose(theirs, ours, other.place, place);
    }
    // The better one; of equals the one that comes first.
    VEK_INLINE void meet(const Ratios& other) {
        const F8 theirs = other.square * energy;
        const F8 ours = square * other.energy;
        const F8 none = set1(0.0F);
        const F8 one = set1(1.0F);
        const F8 taken = choose(theirs, ours, one, choose(ours, theirs, none, choose(place, other.place, one, none)));
        square = choose(taken, none, other.square, square);
        energy = choose(taken, none, other.energy, energy);
        place = choose(taken, none, other.place, place);
    }
    // All lanes the best of all.
    VEK_INLINE void settle() {
        meet({swapHalves(square), swapHalves(energy), swapHalves(place)});
        meet({swapPairs(square), swapPairs(energy), swapPairs(place)});
        meet({swapOnes(square), swapOnes(energy), swapOnes(place)});
    }
};

VEK_INLINE float firstOf(F8 a) {
    float all[kLanes];
    store(all, a);
    return all[0];
}

// One order of the tracks, from two pulses on.
VEK_INLINE_WIDE void nest(const FloatPulseField& field, const int8_t* tracks, int pulses, Pulse* at, float& square,
                          float& energy) {
    const auto slotOf = [](Pulse p) { return p.track * kLanes + p.lane; };
    const float* const first = field.row(slotOf(at[0]));
    const float* const second = field.row(slotOf(at[1]));
    float c = field.d[slotOf(at[0])] + field.d[slotOf(at[1])];
    energy = first[slotOf(at[0])] + second[slotOf(at[1])] + 2 * first[slotOf(at[1])];
    // Sums of the rows of the pulses that are fixed, and the energies.
    alignas(32) float cross[kLen];
    alignas(32) float own[kLen];
    for (int t = 0; t < kLen; t += kLanes) {
        store(cross + t, load(first + t) + load(second + t));
        for (int k = t; k < t + kLanes; ++k) {
            own[k] = field.row(k)[k];
        }
    }
    const F8 two = set1(2.0F);
    for (int n = 2; n < pulses; n += 2) {
        const int a = tracks[n] * kLanes;
        const int b = tracks[n + 1] * kLanes;
        const F8 dB = load(field.d + b);
        const F8 energyB = load(own + b) + two * load(cross + b);
        alignas(32) float energyA[kLanes];
        store(energyA, set1(energy) + load(own + a) + two * load(cross + a));
        Ratios best;
        for (int i = 0; i < kLanes; ++i) {
            const F8 sum = set1(c + field.d[a + i]) + dB;
            const F8 e = set1(energyA[i]) + energyB + two * load(field.row(a + i) + b);
            best.meetLater({sum * sum, e, set1(static_cast<float>(kLanes * i)) + load(kLane)});
        }
        best.settle();
        const int place = static_cast<int>(firstOf(best.place));
        square = firstOf(best.square);
        energy = firstOf(best.energy);
        at[n] = {tracks[n], static_cast<int8_t>(place / kLanes)};
        at[n + 1] = {tracks[n + 1], static_cast<int8_t>(place % kLanes)};
        c = square < 0 ? c : c + field.d[slotOf(at[n])] + field.d[slotOf(at[n + 1])];
        for (int t = 0; t < kLen; t += kLanes) {
            store(cross + t,
                  load(cross + t) + load(field.row(slotOf(at[n])) + t) + load(field.row(slotOf(at[n + 1])) + t));
        }
    }
}

void pairs(const FloatPulseField& field, const int8_t* order, const int8_t* peaks, int pulses, Pulse* best) {
    int8_t tracks[kMostPulses] = {};
    for (int i = 0; i < pulses; ++i) {
        tracks[i] = order[i];
        best[i] = {static_cast<int8_t>(i % kTracks), static_cast<int8_t>(i / kTracks)};
    }
    float mostSquare = -1;
    float mostEnergy = 1;
    for (int turn = 1; turn < kTracks; ++turn) {
        Pulse at[kMostPulses] = {{tracks[0], peaks[tracks[0]]}, {tracks[1], peaks[tracks[1]]}};
        float square = -1;
        float energy = 1;
        nest(field, tracks, pulses, at, square, energy);
        if (square * mostEnergy > mostSquare * energy) {
            mostSquare = square;
            mostEnergy = energy;
            for (int i = 0; i < pulses; ++i) {
                best[i] = at[i];
            }
        }
        turnTracks(tracks, pulses);
    }
}

} // namespace

VEK_KERNEL_TABLE(FloatPulseKernels, floatPulseKernels) = {field, pairs};

} // namespace vek
