// Searches for pulses on tracks. A track's lanes are worked on together; only where one of them beats the best so far
// are they gone through in order, so that the first of equals wins as in the recommendation.
#include "sc/kernels/pulses.h"

#include "sc/common/fixmath.h"

namespace vek {
namespace {

using fix::sat16;

constexpr int kLen = kPulsePositions;

// What is compared: the squared correlation over the energy, and the correlation to go on with.
struct Best {
    int sq = -1;
    int energy = 1;
    int ps = 0;
};

template <int Width>
struct Lanes {
    alignas(32) int ps[Width];
    alignas(32) int energy[Width];
    alignas(32) int sq[Width];

    // Energies come in units of 2^unit, so that no sum of them leaves 32 bits.
    void measure(int unit) {
        const int half = 1 << (15 - unit);
        for (int k = 0; k < Width; ++k) {
            ps[k] = ps[k] > 32767 ? 32767 : ps[k] < -32768 ? -32768 : ps[k];
            energy[k] = (energy[k] + half) >> (16 - unit);
            energy[k] = energy[k] > 32767 ? 32767 : energy[k] < -32768 ? -32768 : energy[k];
            sq[k] = (ps[k] * ps[k]) >> 15;
            sq[k] = sq[k] > 32767 ? 32767 : sq[k];
        }
    }
    bool beat(const Best& best) const {
        int any = 0;
        for (int k = 0; k < Width; ++k) {
            any |= best.energy * sq[k] > best.sq * energy[k] ? 1 : 0;
        }
        return any != 0;
    }
    // The lane of the best, -1 if none is better.
    int pick(Best& best, int count) const {
        int lane = -1;
        for (int k = 0; k < count; ++k) {
            if (best.energy * sq[k] > best.sq * energy[k]) {
                best = {sq[k], energy[k], ps[k]};
                lane = k;
            }
        }
        return lane;
    }
};

bool better(const Best& a, const Best& b) {
    return b.energy * a.sq > b.sq * a.energy;
}

void signRows(const int32_t* rows, const int16_t* sign, int16_t* out) {
    // The sign products: equal signs give 32766, unlike ones -32767.
    int turned[2 * kLen] = {};
    for (int i = 0; i < kLen; ++i) {
        turned[i] = sign[kLen - 1 - i];
    }
    for (int j = 0; j < kLen; ++j) {
        const int32_t* row = rows + (kLen - 1 - j) * kLen;
        const int* other = turned + kLen - 1 - j;
        const int own = sign[j];
        int16_t* to = out + j * kLen;
        for (int d = 0; d < kLen; ++d) {
            int r = (row[d] + 0x4000) >> 15;
            r = r > 32767 ? 32767 : r;
            const int product = (own * other[d]) >> 15;
            to[d] = static_cast<int16_t>((r * product) >> 15);
        }
        const int r = (row[0] + 0x4000) >> 15;
        to[0] = static_cast<int16_t>(r > 32767 ? 32767 : r);
    }
}

// One pulse more on a track: the best of its lanes.
int addPulse(const PulseField& field, int track, const Pulse* fixed, int count, int energy, int unit, Best& best) {
    constexpr int width = 8;
    Lanes<width> lanes;
    alignas(32) int cross[width] = {};
    for (int i = 0; i < count; ++i) {
        const int16_t* row = field.rr + (fixed[i].track * width + fixed[i].lane) * kLen + track * width;
        for (int k = 0; k < width; ++k) {
            cross[k] += row[k];
        }
    }
    const int16_t* dn = field.dn + track * width;
    const int16_t* own = field.energy + track * width;
    for (int k = 0; k < width; ++k) {
        lanes.ps[k] = best.ps + dn[k];
        lanes.energy[k] = energy + own[k] + 2 * cross[k];
    }
    lanes.measure(unit);
    best = Best();
    const int lane = lanes.pick(best, width);
    return lane < 0 ? 0 : lane;
}

void chains(const PulseField& field, const PulseChain* list, int count, int pulses, Pulse* best) {
    Best most;
    for (int i = 0; i < pulses; ++i) {
        best[i] = {static_cast<int8_t>(i), 0};
    }
    for (int c = 0; c < count; ++c) {
        const int8_t* tracks = list[c].tracks;
        for (int first = 0; first < 8; ++first) {
            const int slot = tracks[0] * 8 + first;
            if (!field.kept[slot]) {
                continue;
            }
            Pulse at[4] = {{tracks[0], static_cast<int8_t>(first)}};
            Best now;
            now.ps = field.dn[slot];
            // Energies are in quarters of two pulses, then in sixteenths.
            at[1] = {tracks[1], static_cast<int8_t>(addPulse(field, tracks[1], at, 1, field.energy[slot], 14, now))};
            if (pulses > 2) {
                at[2] = {tracks[2], static_cast<int8_t>(addPulse(field, tracks[2], at, 2, now.energy * 4, 12, now))};
            }
            if (pulses > 3) {
                at[3] = {tracks[3], static_cast<int8_t>(addPulse(field, tracks[3], at, 3, now.energy * 16, 12, now))};
            }
            if (better(now, most)) {
                most = now;
                for (int i = 0; i < pulses; ++i) {
                    best[i] = at[i];
                }
            }
        }
    }
}

// Scales of a stage: the unit of its energies, the rounding and the weight of those of the second pulse.
struct Stage {
    int unit;
    int roundShift;
    int weightShift;
};
constexpr Stage kStages[kMostPulses / 2 - 1] = {{12, 3, 15}, {11, 3, 14}, {10, 4, 14}, {9, 4, 13}, {8, 5, 13}};

template <int Tracks, int Count, int Width>
struct Nest {
    static constexpr int kStride = Tracks * Width;
    const PulseField& field;
    // Sums of the rows of the pulses that are fixed.
    alignas(32) int cross[kStride];

    explicit Nest(const PulseField& f) : field(f) {}

    const int16_t* row(Pulse p) const { return field.rr + (p.track * Count + p.lane) * kStride; }
    int slot(Pulse p) const { return p.track * Width + p.lane; }

    void clear() {
        for (int& c : cross) {
            c = 0;
        }
    }
    void fix(Pulse p) {
        const int16_t* r = row(p);
        for (int k = 0; k < kStride; ++k) {
            cross[k] += r[k];
        }
    }

    // The best pair on two tracks beside what is fixed.
    Best pair(int trackA, int trackB, const Stage& stage, int ps, int energy, Pulse& a, Pulse& b) {
        alignas(32) int psA[Width];
        alignas(32) int energyA[Width];
        alignas(32) int dnB[Width];
        alignas(32) int energyB[Width];
        const int atA = trackA * Width;
        const int atB = trackB * Width;
        const int half = 1 << (stage.roundShift - 1);
        for (int k = 0; k < Width; ++k) {
            const int p = ps + field.dn[atA + k];
            psA[k] = p > 32767 ? 32767 : p < -32768 ? -32768 : p;
            energyA[k] = energy + field.energy[atA + k] + 2 * cross[atA + k];
            int r = (field.energy[atB + k] + 2 * cross[atB + k] + half) >> stage.roundShift;
            r = r > 32767 ? 32767 : r < -32768 ? -32768 : r;
            energyB[k] = r * (1 << (stage.weightShift - stage.unit));
            dnB[k] = field.dn[atB + k];
        }
        Best best;
        a = {static_cast<int8_t>(trackA), 0};
        b = {static_cast<int8_t>(trackB), 0};
        for (int i = 0; i < Count; ++i) {
            const int16_t* both = field.rr + (trackA * Count + i) * kStride + atB;
            Lanes<Count> lanes;
            for (int k = 0; k < Count; ++k) {
                lanes.ps[k] = psA[i] + dnB[k];
                lanes.energy[k] = energyA[i] + energyB[k] + 2 * both[k];
            }
            lanes.measure(stage.unit);
            if (lanes.beat(best)) {
                const int lane = lanes.pick(best, Count);
                if (lane >= 0) {
                    a.lane = static_cast<int8_t>(i);
                    b.lane = static_cast<int8_t>(lane);
                }
            }
        }
        return best;
    }

    void search(const int8_t* order, const int8_t* peaks, int pulses, Pulse* best) {
        int8_t tracks[kMostPulses];
        for (int i = 0; i < pulses; ++i) {
            tracks[i] = order[i];
            best[i] = {static_cast<int8_t>(i % Tracks), static_cast<int8_t>(i / Tracks)};
        }
        Best most;
        for (int turn = 1; turn < Tracks; ++turn) {
            Pulse at[kMostPulses];
            at[0] = {tracks[0], peaks[tracks[0]]};
            at[1] = {tracks[1], peaks[tracks[1]]};
            int ps = sat16(field.dn[slot(at[0])] + field.dn[slot(at[1])]);
            int energy = field.energy[slot(at[0])] + field.energy[slot(at[1])] + 2 * row(at[0])[slot(at[1])];
            clear();
            fix(at[0]);
            fix(at[1]);
            Best now;
            for (int s = 0; 2 * s + 2 < pulses; ++s) {
                Pulse* p = at + 2 * s + 2;
                if (s > 0) {
                    energy = now.energy * (1 << (15 - kStages[s].unit));
                }
                now = pair(tracks[2 * s + 2], tracks[2 * s + 3], kStages[s], ps, energy, p[0], p[1]);
                ps = now.ps;
                fix(p[0]);
                fix(p[1]);
            }
            if (better(now, most)) {
                most = now;
                for (int i = 0; i < pulses; ++i) {
                    best[i] = at[i];
                }
            }
            const int8_t first = tracks[1];
            for (int i = 1; i < pulses - 1; ++i) {
                tracks[i] = tracks[i + 1];
            }
            tracks[pulses - 1] = first;
        }
    }
};

void pairs(const PulseField& field, const int8_t* tracks, const int8_t* peaks, int pulses, Pulse* best) {
    if (pulses == 8) {
        Nest<4, 10, 16>(field).search(tracks, peaks, pulses, best);
    } else {
        Nest<5, 8, 8>(field).search(tracks, peaks, pulses, best);
    }
}

} // namespace

VEK_KERNEL_TABLE(PulseKernels, pulseKernels) = {signRows, chains, pairs};

} // namespace vek
