// Searches for pulses on tracks. A track's lanes are worked on together, and the best of them is found by halves,
// without a branch to guess: the first of equals wins as in the recommendation. Where an energy is not positive, which
// no signal but silence gives, the order in which the recommendation compares matters, and lanes are gone through in
// it.
#include "sc/kernels/pulses.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

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

using namespace registers;

// A candidate is 32 bits: below, its squared correlation, above, its energy; both are positive and below 2^15. Turned,
// it has the energy below and the square, negative, above.
using Wide = hn::CappedTag<int32_t, 8>;
using Narrow = hn::RepartitionToNarrow<Wide>;

// Worse than any.
constexpr int32_t kNoCandidate = 0x0001ffff;

template <class V>
VEK_INLINE V turned(V candidate) {
    const hn::DFromV<V> d;
    const hn::RepartitionToNarrow<hn::DFromV<V>> halves;
    const auto swapped = hn::Reverse2(halves, hn::BitCast(halves, candidate));
    return hn::BitCast(d, hn::OddEven(hn::Neg(swapped), swapped));
}

// Negative where the one that is turned is better, 0 where they are equal.
template <class V>
VEK_INLINE V lead(V candidate, V otherTurned) {
    const hn::RepartitionToNarrow<hn::DFromV<V>> halves;
    return pairSums(hn::BitCast(halves, candidate), hn::BitCast(halves, otherTurned));
}

// The squares of correlations over 2^15, at most 32767.
template <class V>
VEK_INLINE V squared(V ps) {
    const hn::RebindToUnsigned<hn::DFromV<V>> d;
    const auto magnitude = hn::BitCast(d, hn::Abs(ps));
    return hn::BitCast(hn::DFromV<V>(), hn::MulHigh(magnitude, hn::SaturatedAdd(magnitude, magnitude)));
}

// Candidates of the lanes, and the place of each in the order of the recommendation.
template <class D>
struct Candidates {
    hn::Vec<D> candidate;
    hn::Vec<D> place;

    // Those that come later replace the ones that they are better than.
    // Negative where they do.
    VEK_INLINE hn::Vec<D> meetLater(const Candidates& other, hn::Vec<D> otherTurned) {
        const auto ahead = lead(candidate, otherTurned);
        candidate = hn::IfNegativeThenElse(ahead, other.candidate, candidate);
        place = hn::IfNegativeThenElse(ahead, other.place, place);
        return ahead;
    }
    // Lane by lane the better one; of equals the one that comes first.
    VEK_INLINE void meet(const Candidates& other) {
        const auto later = hn::VecFromMask(D(), place > other.place);
        const auto ahead = lead(candidate, turned(other.candidate)) + later;
        candidate = hn::IfNegativeThenElse(ahead, other.candidate, candidate);
        place = hn::IfNegativeThenElse(ahead, other.place, place);
    }
};

template <class D>
VEK_INLINE Candidates<FourOf32> fourOf(const Candidates<D>& all) {
    if constexpr (kLanesOf<D> == 4) {
        return {all.candidate, all.place};
    } else {
        Candidates<FourOf32> four = {hn::LowerHalf(all.candidate), hn::LowerHalf(all.place)};
        four.meet({hn::UpperHalf(kFourOf32, all.candidate), hn::UpperHalf(kFourOf32, all.place)});
        return four;
    }
}

// What is compared of the one in the first lane.
VEK_INLINE Best bestIn(hn::Vec<FourOf32> candidates) {
    const int32_t first = hn::GetLane(candidates);
    return {first & 0xffff, first >> 16, 0};
}

// The best of all; its place comes with it.
template <int N>
VEK_INLINE Best bestOf(const Candidates<Wide> (&all)[N], int& place) {
    Candidates<Wide> most = all[0];
    for (int n = 1; n < N; ++n) {
        most.meet(all[n]);
    }
    Candidates<FourOf32> four = fourOf(most);
    four.meet({hn::Shuffle1032(four.candidate), hn::Shuffle1032(four.place)});
    four.meet({hn::Shuffle2301(four.candidate), hn::Shuffle2301(four.place)});
    place = hn::GetLane(four.place);
    return bestIn(four.candidate);
}

// Sixteen bytes, or twice as many of which the second ones begin Gap elements behind the first ones.
template <int Gap, class D>
VEK_INLINE hn::Vec<D> loadBlocks(D d, const hn::TFromD<D>* p) {
    if constexpr (sizeof(hn::TFromD<D>) * kLanesOf<D> <= 16 || 2 * Gap == kLanesOf<D>) {
        return hn::LoadU(d, p);
    } else {
        const hn::Half<D> half;
        return hn::Combine(d, hn::LoadU(half, p + Gap), hn::LoadU(half, p));
    }
}

// The value of a row in all its lanes, for one row or two.
template <int Rows, class D>
VEK_INLINE hn::Vec<D> setRows(D d, const hn::TFromD<D>* p) {
    if constexpr (Rows == 1) {
        return hn::Set(d, p[0]);
    } else {
        const hn::Half<D> half;
        return hn::Combine(d, hn::Set(half, p[1]), hn::Set(half, p[0]));
    }
}

#endif

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

// The bits that energies lose with the pulse that comes after `fixed` ones: they are in quarters of two pulses, then in
// sixteenths.
constexpr int lostBits(int fixed) {
    return fixed == 1 ? 2 : 4;
}

// From the first pulse on the best on each further track.
template <int Pulses>
Best followInOrder(const PulseField& field, const int8_t* tracks, Pulse* at) {
    const int slot = at[0].track * 8 + at[0].lane;
    Best now;
    now.ps = field.dn[slot];
    now.energy = field.energy[slot];
    for (int i = 1; i < Pulses; ++i) {
        const int energy = i == 1 ? now.energy : now.energy * (1 << lostBits(i - 1));
        at[i] = {tracks[i],
                 static_cast<int8_t>(addPulseInOrder(field, tracks[i], at, i, energy, 16 - lostBits(i), now))};
    }
    return now;
}

#if VEK_LEVEL == 0

template <int Pulses>
Best follow(const PulseField& field, const int8_t* tracks, Pulse* at) {
    return followInOrder<Pulses>(field, tracks, at);
}

#else

using Row = hn::Vec<EightOf16>;

// The bytes of the even lanes of a track, each twice, and of the odd ones.
alignas(16) constexpr uint8_t kEvenLanes[16] = {0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13};
alignas(16) constexpr uint8_t kOddLanes[16] = {2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15};

VEK_INLINE hn::Vec<FourOf32> bytesOf(const uint8_t (&lanes)[16]) {
    return hn::BitCast(kFourOf32, hn::Load(hn::FixedTag<uint8_t, 16>(), lanes));
}

// Of neighbours those in front: of `a` below, of `b` above; and those behind.
VEK_INLINE hn::Vec<FourOf32> evenOnes(Row a, Row b) {
    return hn::BitCast(kFourOf32,
                       hn::OddEven(hn::BitCast(kEightOf16, hn::ShiftLeft<16>(hn::BitCast(kFourOf32, b))), a));
}
VEK_INLINE hn::Vec<FourOf32> oddOnes(Row a, Row b) {
    const hn::FixedTag<uint32_t, 4> bits;
    return hn::BitCast(kFourOf32, hn::OddEven(b, hn::BitCast(kEightOf16, hn::ShiftRight<16>(hn::BitCast(bits, a)))));
}

// Pulses so far: their correlation and energy in all lanes, what is compared of them in the first lane, the least
// energies of all that were tried, and the rows of three.
struct Chain {
    Row ps;
    hn::Vec<FourOf32> energy;
    hn::Vec<FourOf32> found;
    Row lowest;
    const int16_t* rows[3];

    // One pulse more behind `Fixed` ones: the best of a track's lanes.
    template <int Fixed>
    VEK_INLINE int add(const PulseField& field, int track) {
        constexpr int lost = lostBits(Fixed);
        const auto at = [track](const int16_t* p) { return hn::LoadU(kEightOf16, p + track * 8); };
        // Twice the correlations with the fixed pulses, and the energies.
        const auto half = hn::Set(kFourOf32, 1 << (lost - 1));
        auto lower = energy + half;
        auto upper = lower;
        addRows<2, 1>(at(rows[0]), at(field.energy), lower, upper);
        if constexpr (Fixed == 2) {
            addRows<1, 1>(at(rows[1]), at(rows[1]), lower, upper);
        } else if constexpr (Fixed == 3) {
            addRows<2, 2>(at(rows[1]), at(rows[2]), lower, upper);
        }
        const auto e = hn::ReorderDemote2To(kEightOf16, hn::ShiftRight<lost>(lower), hn::ShiftRight<lost>(upper));
        lowest = hn::Min(lowest, e);
        const auto sum = hn::SaturatedAdd(ps, at(field.dn));
        const auto sq = squared(sum);
        const auto minus = hn::Neg(sq);
        // Neighbours meet, then pairs of them, then halves: what is in front, and kept of equals, comes first in the
        // order of the recommendation too.
        Candidates<FourOf32> best = {evenOnes(sq, e), bytesOf(kEvenLanes)};
        const auto odd = oddOnes(e, minus);
        const auto ahead = best.meetLater({oddOnes(sq, e), bytesOf(kOddLanes)}, odd);
        auto inverse = hn::IfNegativeThenElse(ahead, odd, evenOnes(e, minus));
        const auto right = hn::Shuffle2301(inverse);
        const auto behind = best.meetLater({hn::Shuffle2301(best.candidate), hn::Shuffle2301(best.place)}, right);
        inverse = hn::IfNegativeThenElse(behind, right, inverse);
        best.meetLater({hn::Shuffle1032(best.candidate), hn::Shuffle1032(best.place)}, hn::Shuffle1032(inverse));
        found = best.candidate;
        ps = hn::TableLookupBytes(sum, hn::BitCast(kEightOf16, hn::Broadcast<0>(best.place)));
        energy = hn::ShiftLeft<lost>(hn::ShiftRight<16>(hn::Broadcast<0>(found)));
        return (hn::GetLane(best.place) & 0xff) / 2;
    }

    template <int A, int B>
    VEK_INLINE static void addRows(Row a, Row b, hn::Vec<FourOf32>& lower, hn::Vec<FourOf32>& upper) {
        const auto factors = hn::BitCast(kEightOf16, hn::Set(kFourOf32, B * 65536 + A));
        lower = plusPairs(lower, hn::InterleaveLower(kEightOf16, a, b), factors);
        upper = plusPairs(upper, hn::InterleaveUpper(kEightOf16, a, b), factors);
    }
};

template <int Pulses>
VEK_INLINE Best follow(const PulseField& field, const int8_t* tracks, Pulse* at) {
    const int slot = at[0].track * 8 + at[0].lane;
    Chain chain = {hn::Set(kEightOf16, field.dn[slot]),
                   hn::Set(kFourOf32, field.energy[slot]),
                   hn::Zero(kFourOf32),
                   hn::Set(kEightOf16, INT16_MAX),
                   {field.rr + slot * kLen}};
    const auto fix = [&](int i, int lane) {
        at[i] = {tracks[i], static_cast<int8_t>(lane)};
        if (i < 3) {
            chain.rows[i] = field.rr + (tracks[i] * 8 + lane) * kLen;
        }
    };
    fix(1, chain.add<1>(field, tracks[1]));
    if constexpr (Pulses > 2) {
        fix(2, chain.add<2>(field, tracks[2]));
    }
    if constexpr (Pulses > 3) {
        fix(3, chain.add<3>(field, tracks[3]));
    }
    if (!hn::AllTrue(kEightOf16, chain.lowest > hn::Zero(kEightOf16))) [[unlikely]] {
        return followInOrder<Pulses>(field, tracks, at);
    }
    return bestIn(chain.found);
}

#endif

template <int Pulses>
void chainsOf(const PulseField& field, const PulseChain* list, int count, Pulse* best) {
    Best most;
    for (int i = 0; i < Pulses; ++i) {
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
            Pulse at[Pulses] = {{tracks[0], static_cast<int8_t>(kept[start])}};
            const Best now = follow<Pulses>(field, tracks, at);
            if (better(now, most)) {
                most = now;
                for (int i = 0; i < Pulses; ++i) {
                    best[i] = at[i];
                }
            }
        }
    }
}

void chains(const PulseField& field, const PulseChain* list, int count, int pulses, Pulse* best) {
    switch (pulses) {
    case 2:
        return chainsOf<2>(field, list, count, best);
    case 3:
        return chainsOf<3>(field, list, count, best);
    default:
        return chainsOf<4>(field, list, count, best);
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
    void fix(Pulse p, Pulse q) {
        const int16_t* a = row(p);
        const int16_t* b = row(q);
        for (int k = 0; k < kStride; ++k) {
            cross[k] += a[k] + b[k];
        }
    }

    // The best pair on two tracks beside what is fixed.
    Best pair(const Stage& stage, int ps, int energy, Pulse& a, Pulse& b) const {
#if VEK_LEVEL > 0
        Best best;
        if (pairByLanes(stage, ps, energy, a, b, best)) [[likely]] {
            return best;
        }
#endif
        return pairInOrder(stage, ps, energy, a, b);
    }

    Best pairInOrder(const Stage& stage, int ps, int energy, Pulse& a, Pulse& b) const {
        const int atA = a.track * Width;
        const int atB = b.track * Width;
        const int half = 1 << (stage.roundShift - 1);
        int energyB[Count];
        for (int k = 0; k < Count; ++k) {
            int r = (field.energy[atB + k] + 2 * cross[atB + k] + half) >> stage.roundShift;
            r = r > 32767 ? 32767 : r < -32768 ? -32768 : r;
            energyB[k] = r * (1 << (stage.weightShift - stage.unit));
        }
        a.lane = 0;
        b.lane = 0;
        const int16_t* both = field.rr + a.track * Count * kStride + atB;
        Best best;
        for (int i = 0; i < Count; ++i, both += kStride) {
            const int psA = sat16(ps + field.dn[atA + i]);
            const int energyA = energy + field.energy[atA + i] + 2 * cross[atA + i];
            Lanes<Count> lanes;
            for (int k = 0; k < Count; ++k) {
                lanes.ps[k] = psA + field.dn[atB + k];
                lanes.energy[k] = energyA + energyB[k] + 2 * both[k];
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

#if VEK_LEVEL > 0
    // A register has two rows of eight lanes, a row, or a part of it.
    static constexpr int kRows = kLanesOf<Narrow> > Width ? kLanesOf<Narrow> / Width : 1;
    static constexpr int kParts = Width > kLanesOf<Narrow> ? Width / kLanesOf<Narrow> : 1;
    // From one block of eight to the next within a row of its own, and within the matrix.
    static constexpr int kGap = kRows > 1 ? 0 : 8;
    static constexpr int kMatrixGap = kRows > 1 ? kStride : 8;

    // Of a register of 16-bit lanes, as they are interleaved, the numbers of the lower ones.
    VEK_INLINE static hn::Vec<Wide> lowerLanes() {
        alignas(32) static constexpr int32_t numbers[8] = {0, 1, 2, 3, 8, 9, 10, 11};
        return hn::Load(Wide(), numbers);
    }

    // Whether all energies are positive; if one is not, what was found does not count.
    bool pairByLanes(const Stage& stage, int ps, int energy, Pulse& a, Pulse& b, Best& best) const {
        constexpr int lanes = kLanesOf<Narrow>;
        const Wide d;
        const Narrow d16;
        const int atA = a.track * Width;
        const int atB = b.track * Width;
        alignas(32) int16_t psA[Width];
        alignas(32) int energyA[Width];
        const int rounding = 1 << (15 - stage.unit);
        for (int k = 0; k < Width; ++k) {
            psA[k] = sat16(ps + field.dn[atA + k]);
            energyA[k] = energy + rounding + field.energy[atA + k] + 2 * cross[atA + k];
        }
        const auto factors = hn::BitCast(d16, hn::Set(d, 2 + ((1 << (stage.weightShift - stage.unit)) << 16)));
        const auto half = hn::Set(d, 1 << (stage.roundShift - 1));
        const auto none = hn::Set(d, kNoCandidate);
        Candidates<Wide> all[2 * kParts];
        auto lowest = hn::Set(d16, INT16_MAX);
        for (int part = 0; part < kParts; ++part) {
            const int slot = atB + part * lanes;
            const auto own = loadBlocks<kGap>(d16, field.energy + slot);
            const auto crossLower = hn::ShiftLeft<1>(loadBlocks<kGap>(d, cross + slot));
            const auto crossUpper = hn::ShiftLeft<1>(loadBlocks<kGap>(d, cross + slot + 4));
            const auto once = hn::Set(d16, 1);
            const auto zero = hn::Zero(d16);
            const auto energyB = hn::ReorderDemote2To(
                d16,
                hn::ShiftRightSame(plusPairs(crossLower + half, hn::InterleaveLower(d16, own, zero), once),
                                   stage.roundShift),
                hn::ShiftRightSame(plusPairs(crossUpper + half, hn::InterleaveUpper(d16, own, zero), once),
                                   stage.roundShift));
            const auto psB = loadBlocks<kGap>(d16, field.dn + slot);
            const int16_t* both = field.rr + a.track * Count * kStride + slot;
            Candidates<Wide> lower = {none, hn::Zero(d)};
            Candidates<Wide> upper = lower;
            auto place = hn::Zero(d);
            for (int i = 0; i < Count; i += kRows, both += kRows * kStride) {
                const auto shared = loadBlocks<kMatrixGap>(d16, both);
                const auto base = setRows<kRows>(d, energyA + i);
                const auto e = hn::ReorderDemote2To(
                    d16,
                    hn::ShiftRightSame(plusPairs(base, hn::InterleaveLower(d16, shared, energyB), factors),
                                       16 - stage.unit),
                    hn::ShiftRightSame(plusPairs(base, hn::InterleaveUpper(d16, shared, energyB), factors),
                                       16 - stage.unit));
                lowest = hn::Min(lowest, e);
                const auto sq = squared(hn::SaturatedAdd(setRows<kRows>(d16, psA + i), psB));
                const auto minus = hn::Neg(sq);
                lower.meetLater({hn::BitCast(d, hn::InterleaveLower(d16, sq, e)), place},
                                hn::BitCast(d, hn::InterleaveLower(d16, e, minus)));
                upper.meetLater({hn::BitCast(d, hn::InterleaveUpper(d16, sq, e)), place},
                                hn::BitCast(d, hn::InterleaveUpper(d16, e, minus)));
                place = place + hn::Set(d, kRows * Width);
            }
            const auto numbers = lowerLanes() + hn::Set(d, part * lanes);
            all[2 * part] = real(lower, numbers);
            all[2 * part + 1] = real(upper, numbers + hn::Set(d, 4));
        }
        int found = 0;
        best = bestOf(all, found);
        a.lane = static_cast<int8_t>(found / Width);
        b.lane = static_cast<int8_t>(found % Width);
        best.ps = sat16(psA[a.lane] + field.dn[atB + b.lane]);
        return hn::AllTrue(d16, lowest > hn::Zero(d16));
    }

    // The places of candidates by their numbers within the register; what pads a track is none.
    VEK_INLINE static Candidates<Wide> real(const Candidates<Wide>& all, hn::Vec<Wide> numbers) {
        const Wide d;
        auto candidate = all.candidate;
        if constexpr (Count < Width) {
            candidate = hn::IfThenElse(hn::Lt(numbers, hn::Set(d, Count)), candidate, hn::Set(d, kNoCandidate));
        }
        return {candidate, all.place + numbers};
    }
#endif

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
            fix(at[0], at[1]);
            Best now;
            for (int s = 0; 2 * s + 2 < pulses; ++s) {
                Pulse* p = at + 2 * s + 2;
                if (s > 0) {
                    energy = now.energy * (1 << (15 - kStages[s].unit));
                }
                p[0].track = tracks[2 * s + 2];
                p[1].track = tracks[2 * s + 3];
                now = pair(kStages[s], ps, energy, p[0], p[1]);
                ps = now.ps;
                if (2 * s + 4 < pulses) {
                    fix(p[0], p[1]);
                }
            }
            if (better(now, most)) {
                most = now;
                for (int i = 0; i < pulses; ++i) {
                    best[i] = at[i];
                }
            }
            turnTracks(tracks, pulses);
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

VEK_KERNEL_TABLE(PulseKernels, pulseKernels) = {chains, pairs};

} // namespace vek
