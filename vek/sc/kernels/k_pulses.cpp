// Searches for pulses on tracks. A track's lanes are worked on together, and the best of them is found by halves,
// without a branch to guess: the first of equals wins as in the recommendation. Where an energy is not positive, which
// no signal but silence gives, the order in which the recommendation compares matters, and lanes are gone through in
// it.
#include "sc/kernels/pulses.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/lanes.h"

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

#if VEK_LEVEL > 0

using namespace lanes;

// Four candidates with positive energies, and the place of each in the order of the recommendation.
struct Four {
    __m128i sq, energy, place;

    // Lane by lane the better one; of equals the one that comes first.
    VEK_INLINE void meet(const Four& other) {
        const __m128i own = _mm_madd_epi16(sq, other.energy);
        const __m128i theirs = _mm_madd_epi16(other.sq, energy);
        const __m128i later = _mm_cmpgt_epi32(place, other.place);
        const __m128i change = _mm_cmpgt_epi32(theirs, _mm_add_epi32(own, later));
        sq = _mm_blendv_epi8(sq, other.sq, change);
        energy = _mm_blendv_epi8(energy, other.energy, change);
        place = _mm_blendv_epi8(place, other.place, change);
    }
    template <int Order>
    VEK_INLINE Four shuffled() const {
        return {_mm_shuffle_epi32(sq, Order), _mm_shuffle_epi32(energy, Order), _mm_shuffle_epi32(place, Order)};
    }
};

// As many as a register has.
struct Candidates {
    V sq, energy, place;

    // Those measured replace the ones that they are better than; they come later.
    VEK_INLINE void meet(V newSq, V newEnergy, V newPlace) {
        const V change = less(madd(sq, newEnergy), madd(energy, newSq));
        sq = choose(change, newSq, sq);
        energy = choose(change, newEnergy, energy);
        place = choose(change, newPlace, place);
    }
    VEK_INLINE Four best() const {
#if VEK_LEVEL == 1
        return {sq, energy, place};
#else
        Four low = {_mm256_castsi256_si128(sq), _mm256_castsi256_si128(energy), _mm256_castsi256_si128(place)};
        low.meet(
            {_mm256_extracti128_si256(sq, 1), _mm256_extracti128_si256(energy, 1), _mm256_extracti128_si256(place, 1)});
        return low;
#endif
    }
};

// The best of all; its place comes with it.
template <int N>
VEK_INLINE Best bestOf(const Candidates (&all)[N], int& place) {
    Four four = all[0].best();
    for (int n = 1; n < N; ++n) {
        four.meet(all[n].best());
    }
    four.meet(four.shuffled<0x4e>());
    four.meet(four.shuffled<0xb1>());
    place = _mm_cvtsi128_si32(four.place);
    return {_mm_cvtsi128_si32(four.sq), _mm_cvtsi128_si32(four.energy), 0};
}

VEK_INLINE V wordsAt(const int32_t* p) {
    return loadAll(reinterpret_cast<const int16_t*>(p));
}

VEK_INLINE V saturated16(V v) {
    return most32(least32(v, spread(32767)), spread(-32768));
}

// Squares of correlations that fit 16 bits.
VEK_INLINE V squared(V ps) {
    return least32(down<15>(madd(ps, lowHalf(ps))), spread(32767));
}

#endif

// Eight sums of products with one product more each, and what they give with the signs taken out. The sums begin with
// the half that rounds them.
#if VEK_LEVEL == 0

void addToRow(int factor, const int16_t* part, const int16_t* turn, int32_t* sum, int16_t* to) {
    for (int x = 0; x < 8; ++x) {
        sum[x] += factor * part[x];
        const int r = sum[x] >> 15;
        to[x] = static_cast<int16_t>(((r > 32767 ? 32767 : r) * turn[x]) >> 15);
    }
}

#else

VEK_INLINE __m128i load8(const int16_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
VEK_INLINE void store8(int16_t* p, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

VEK_INLINE void addToRow(int factor, const int16_t* part, const int16_t* turn, int32_t* sum, int16_t* to) {
    const __m128i f = _mm_set1_epi16(static_cast<int16_t>(factor));
    const __m128i low = _mm_mullo_epi16(load8(part), f);
    const __m128i high = _mm_mulhi_epi16(load8(part), f);
    auto* const s = reinterpret_cast<__m128i*>(sum);
    const __m128i s0 = _mm_add_epi32(_mm_load_si128(s), _mm_unpacklo_epi16(low, high));
    const __m128i s1 = _mm_add_epi32(_mm_load_si128(s + 1), _mm_unpackhi_epi16(low, high));
    _mm_store_si128(s, s0);
    _mm_store_si128(s + 1, s1);
    const __m128i r = _mm_packs_epi32(_mm_srai_epi32(s0, 15), _mm_srai_epi32(s1, 15));
    const __m128i t = load8(turn);
    store8(to, _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(r, t), 1), _mm_srli_epi16(_mm_mullo_epi16(r, t), 15)));
}

VEK_INLINE void transpose8(__m128i (&r)[8]) {
    __m128i t[8];
    for (int i = 0; i < 4; ++i) {
        t[2 * i] = _mm_unpacklo_epi16(r[2 * i], r[2 * i + 1]);
        t[2 * i + 1] = _mm_unpackhi_epi16(r[2 * i], r[2 * i + 1]);
    }
    __m128i u[8];
    for (int i = 0; i < 2; ++i) {
        u[4 * i] = _mm_unpacklo_epi32(t[4 * i], t[4 * i + 2]);
        u[4 * i + 1] = _mm_unpackhi_epi32(t[4 * i], t[4 * i + 2]);
        u[4 * i + 2] = _mm_unpacklo_epi32(t[4 * i + 1], t[4 * i + 3]);
        u[4 * i + 3] = _mm_unpackhi_epi32(t[4 * i + 1], t[4 * i + 3]);
    }
    for (int i = 0; i < 4; ++i) {
        r[2 * i] = _mm_unpacklo_epi64(u[i], u[i + 4]);
        r[2 * i + 1] = _mm_unpackhi_epi64(u[i], u[i + 4]);
    }
}

// Completes the correlations of two tracks of five: those of a position with later ones mirror those of the later ones.
VEK_INLINE void mirrorTracks(int16_t* rr, int first, int second) {
    constexpr int lanes = 8;
    int16_t* const own = rr + first * lanes * kLen + second * lanes;
    int16_t* const other = rr + second * lanes * kLen + first * lanes;
    const __m128i lane = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
    __m128i r[lanes];
    for (int a = 0; a < lanes; ++a) {
        r[a] = load8(other + a * kLen);
    }
    transpose8(r);
    for (int a = 0; a < lanes; ++a) {
        const __m128i earlier = _mm_cmpgt_epi16(_mm_set1_epi16(static_cast<int16_t>(a)), lane);
        r[a] = _mm_blendv_epi8(r[a], load8(own + a * kLen), earlier);
        store8(own + a * kLen, r[a]);
    }
    if (first != second) {
        transpose8(r);
        for (int a = 0; a < lanes; ++a) {
            store8(other + a * kLen, r[a]);
        }
    }
}

#endif

template <int Tracks, int Count, int Width>
void mirror(int16_t* rr) {
#if VEK_LEVEL > 0
    if constexpr (Width == 8) {
        for (int first = 0; first < Tracks; ++first) {
            for (int second = first; second < Tracks; ++second) {
                mirrorTracks(rr, first, second);
            }
        }
        return;
    }
#endif
    for (int i = 1; i < kLen; ++i) {
        const int slot = i % Tracks * Width + i / Tracks;
        const int16_t* const row = rr + (i % Tracks * Count + i / Tracks) * Tracks * Width;
        for (int track = 0; track < Tracks; ++track) {
            int16_t* const column = rr + track * Count * Tracks * Width + slot;
            const int earlier = i / Tracks + (track < i % Tracks ? 1 : 0);
            for (int lane = 0; lane < earlier; ++lane) {
                column[lane * Tracks * Width] = row[track * Width + lane];
            }
        }
    }
}

// The correlations of a response whose sums fit 32 bits, in the order of tracks. Those of a position with the earlier
// positions of a track are one run of distances, the largest first, so that they come from one run of every Tracks-th
// element of the response.
template <int Tracks, int Count, int Width>
void fieldOn(const int16_t* h, const int16_t* sign, PulseField& field) {
    constexpr int stride = Tracks * Width;
    // Every Tracks-th element of the response before a track's, the last first, behind zeros.
    int16_t back[Tracks][Width + Count] = {};
    // The sign products by the own sign: equal signs give 32766, unlike ones -32767.
    int16_t turned[2][Width + stride] = {};
    for (int i = 0; i < kLen; ++i) {
        const int track = i % Tracks;
        const int lane = i / Tracks;
        back[Tracks - 1 - track][Width + Count - 1 - lane] = h[i];
        turned[0][Width + track * Width + lane] = sign[i] > 0 ? 32766 : -32767;
        turned[1][Width + track * Width + lane] = sign[i] > 0 ? -32767 : 32766;
    }
    alignas(32) int32_t sums[Tracks][Width];
    for (auto& sum : sums) {
        for (int32_t& s : sum) {
            s = 0x4000;
        }
    }
    int16_t edge[Width + stride];
    for (int m = 0; m < kLen; ++m) {
        const int lane = (kLen - 1 - m) / Tracks;
        const int own = (kLen - 1 - m) % Tracks;
        int16_t* const row = field.rr + (own * Count + lane) * stride;
        const int16_t* const turn = turned[sign[kLen - 1 - m] > 0 ? 0 : 1] + Width;
        // What is written in front of a track's first lane is overwritten by the track before or by a later row; the
        // first rows of the tracks have none, and get the little that is theirs from elsewhere.
        int16_t* const to = lane > 0 ? row : edge + Width;
        for (int track = Tracks - 1; track >= 0; --track) {
            // The last lane of the track that is not behind the position.
            const int last = track > own ? lane - 1 : lane;
            int32_t* const sum = sums[track > own ? own - track + Tracks : own - track];
            for (int x = 0; x < Width; x += 8) {
                const int at = track * Width + last - (Width - 1) + x;
                addToRow(h[m], back[track] + 1 + last + x, turn + at, sum + x, to + at);
            }
        }
        for (int track = 0; lane == 0 && track < own; ++track) {
            row[track * Width] = to[track * Width];
        }
        const int r = sums[0][Width - 1] >> 15;
        row[own * Width + lane] = static_cast<int16_t>(r > 32767 ? 32767 : r);
        field.energy[own * Width + lane] = row[own * Width + lane];
    }
    mirror<Tracks, Count, Width>(field.rr);
}

void field(const int16_t* h, const int16_t* sign, int tracks, PulseField& field) {
    if (tracks == 4) {
        fieldOn<4, 10, 16>(h, sign, field);
    } else {
        fieldOn<5, 8, 8>(h, sign, field);
    }
}

// One pulse more on a track: the best of its lanes, tried in their order.
int addPulseInOrder(const PulseField& field, int track, const Pulse* fixed, int count, int energy, int unit,
                    Best& best) {
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

#if VEK_LEVEL == 0

int addPulse(const PulseField& field, int track, const Pulse* fixed, int count, int energy, int unit, Best& best) {
    return addPulseInOrder(field, track, fixed, count, energy, unit, best);
}

#else

int addPulse(const PulseField& field, int track, const Pulse* fixed, int count, int energy, int unit, Best& best) {
    constexpr int width = 8;
    constexpr int registers = width / kLanes;
    const int16_t* dn = field.dn + track * width;
    Candidates all[registers];
    V place = counting();
    V silent = spread(0);
    for (int n = 0; n < registers; ++n) {
        V cross = spread(0);
        for (int i = 0; i < count; ++i) {
            const int16_t* row = field.rr + (fixed[i].track * width + fixed[i].lane) * kLen + track * width;
            cross = plus(cross, widened(row + n * kLanes));
        }
        V e = plus(up<1>(cross), widened(field.energy + track * width + n * kLanes));
        e = downBy(plus(e, spread(energy + (1 << (15 - unit)))), 16 - unit);
        const V ps = saturated16(plus(spread(best.ps), widened(dn + n * kLanes)));
        all[n] = {squared(ps), least32(e, spread(32767)), place};
        silent = orBits(silent, less(e, spread(1)));
        place = plus(place, spread(kLanes));
    }
    if (!none(silent)) [[unlikely]] {
        return addPulseInOrder(field, track, fixed, count, energy, unit, best);
    }
    int lane = 0;
    const int ps = best.ps;
    best = bestOf(all, lane);
    best.ps = sat16(ps + dn[lane]);
    return lane;
}

#endif

void chains(const PulseField& field, const PulseChain* list, int count, int pulses, Pulse* best) {
    Best most;
    for (int i = 0; i < pulses; ++i) {
        best[i] = {static_cast<int8_t>(i), 0};
    }
    for (int c = 0; c < count; ++c) {
        const int8_t* tracks = list[c].tracks;
        int kept[8];
        int starts = 0;
        for (int lane = 0; lane < 8; ++lane) {
            kept[starts] = lane;
            starts += field.kept[tracks[0] * 8 + lane] ? 1 : 0;
        }
        for (int start = 0; start < starts; ++start) {
            const int first = kept[start];
            const int slot = tracks[0] * 8 + first;
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
        a = {static_cast<int8_t>(trackA), 0};
        b = {static_cast<int8_t>(trackB), 0};
        const int16_t* const both = field.rr + trackA * Count * kStride + atB;
#if VEK_LEVEL > 0
        constexpr int registers = Width / kLanes;
        Candidates all[registers];
        V place = counting();
        V lowest = spread(1);
        for (Candidates& c : all) {
            c = {spread(-1), spread(1), place};
        }
        const int rounding = 1 << (15 - stage.unit);
        for (int i = 0; i < Count; ++i) {
            for (int n = 0; n < registers; ++n) {
                const V shared = up<1>(widened(both + i * kStride + n * kLanes));
                V e = plus(plus(spread(energyA[i] + rounding), wordsAt(energyB + n * kLanes)), shared);
                e = least32(downBy(e, 16 - stage.unit), spread(32767));
                all[n].meet(squared(saturated16(plus(spread(psA[i]), wordsAt(dnB + n * kLanes)))), e, place);
                lowest = least32(lowest, e);
                place = plus(place, spread(kLanes));
            }
        }
        if (none(less(lowest, spread(1)))) [[likely]] {
            for (int n = 0; n < registers && Count < Width; ++n) {
                const V real = less(counting(), spread(Count - n * kLanes));
                all[n].sq = choose(real, all[n].sq, spread(-1));
                all[n].energy = choose(real, all[n].energy, spread(1));
            }
            int found = 0;
            Best best = bestOf(all, found);
            a.lane = static_cast<int8_t>(found / Width);
            b.lane = static_cast<int8_t>(found % Width);
            best.ps = sat16(psA[a.lane] + dnB[b.lane]);
            return best;
        }
#endif
        Best best;
        for (int i = 0; i < Count; ++i) {
            Lanes<Count> lanes;
            for (int k = 0; k < Count; ++k) {
                lanes.ps[k] = psA[i] + dnB[k];
                lanes.energy[k] = energyA[i] + energyB[k] + 2 * both[i * kStride + k];
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
        int8_t tracks[kMostPulses] = {};
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
                if (2 * s + 4 < pulses) {
                    fix(p[0]);
                    fix(p[1]);
                }
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

VEK_KERNEL_TABLE(PulseKernels, pulseKernels) = {field, chains, pairs};

} // namespace vek
