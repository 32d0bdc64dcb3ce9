// Two kernels through Highway, one body for all widths; compiled once for each set of registers.
#include "trial.h"

#include <hwy/highway.h>

namespace vek {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using D32 = hn::ScalableTag<int32_t>;
using D64 = hn::RepartitionToWide<D32>;
using V32 = hn::Vec<D32>;

constexpr D32 d32;
constexpr D64 d64;

using E64 = hn::Vec<D64>;

// Q30 of two 64-bit sums of the even and of the odd lanes.
HWY_INLINE V32 join(E64 even, E64 odd) {
    const hn::RebindToUnsigned<D64> du64;
    const auto half = hn::Set(d64, 1 << 29);
    const auto e = hn::ShiftRight<30>(hn::BitCast(du64, hn::Add(even, half)));
    const auto o = hn::ShiftLeft<2>(hn::BitCast(du64, hn::Add(odd, half)));
    return hn::OddEven(hn::BitCast(d32, o), hn::BitCast(d32, e));
}
HWY_INLINE E64 mulOdd(V32 a, V32 b) {
    return hn::MulEven(hn::DupOdd(a), hn::DupOdd(b));
}

// The lower half gets the sums, the upper one the differences, rotated.
void butterflies(int32_t* re, int32_t* im, const int32_t* wRe, const int32_t* wIm, int half) {
    const int step = static_cast<int>(hn::Lanes(d32));
    for (int i = 0; i < half; i += step) {
        const V32 aRe = hn::Load(d32, re + i);
        const V32 aIm = hn::Load(d32, im + i);
        const V32 bRe = hn::Load(d32, re + half + i);
        const V32 bIm = hn::Load(d32, im + half + i);
        const V32 cRe = hn::Load(d32, wRe + i);
        const V32 cIm = hn::Load(d32, wIm + i);
        const V32 x = hn::Sub(aRe, bRe);
        const V32 y = hn::Sub(aIm, bIm);
        hn::Store(hn::Add(aRe, bRe), d32, re + i);
        hn::Store(hn::Add(aIm, bIm), d32, im + i);
        hn::Store(join(hn::Sub(hn::MulEven(x, cRe), hn::MulEven(y, cIm)), hn::Sub(mulOdd(x, cRe), mulOdd(y, cIm))), d32,
                  re + half + i);
        hn::Store(join(hn::Add(hn::MulEven(x, cIm), hn::MulEven(y, cRe)), hn::Add(mulOdd(x, cIm), mulOdd(y, cRe))), d32,
                  im + half + i);
    }
}

struct Best {
    int sq = -1;
    int energy = 1;
    int ps = 0;
};

int addPulse(const PulseField& field, int track, const Pulse* fixed, int count, int energy, int unit, Best& best) {
    constexpr int width = 8;
    const hn::CappedTag<int32_t, width> d;
    const hn::Rebind<int16_t, decltype(d)> narrow;
    alignas(32) int ps[width];
    alignas(32) int energies[width];
    alignas(32) int sq[width];
    const auto top = hn::Set(d, 32767);
    const auto bottom = hn::Set(d, -32768);
    for (size_t k = 0; k < width; k += hn::Lanes(d)) {
        const auto at = [&](const int16_t* p) { return hn::PromoteTo(d, hn::LoadU(narrow, p + k)); };
        auto cross = hn::Zero(d);
        for (int i = 0; i < count; ++i) {
            cross = hn::Add(cross,
                            at(field.rr + (fixed[i].track * width + fixed[i].lane) * kPulsePositions + track * width));
        }
        const auto p = hn::Max(hn::Min(hn::Add(hn::Set(d, best.ps), at(field.dn + track * width)), top), bottom);
        auto e = hn::Add(hn::Add(hn::Set(d, energy + (1 << (15 - unit))), at(field.energy + track * width)),
                         hn::ShiftLeft<1>(cross));
        e = hn::Max(hn::Min(hn::ShiftRightSame(e, 16 - unit), top), bottom);
        hn::Store(p, d, ps + k);
        hn::Store(e, d, energies + k);
        hn::Store(hn::Min(hn::ShiftRight<15>(hn::Mul(p, p)), top), d, sq + k);
    }
    best = Best();
    int lane = 0;
    for (int k = 0; k < width; ++k) {
        if (best.energy * sq[k] > best.sq * energies[k]) {
            best = {sq[k], energies[k], ps[k]};
            lane = k;
        }
    }
    return lane;
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
            at[1] = {tracks[1], static_cast<int8_t>(addPulse(field, tracks[1], at, 1, field.energy[slot], 14, now))};
            if (pulses > 2) {
                at[2] = {tracks[2], static_cast<int8_t>(addPulse(field, tracks[2], at, 2, now.energy * 4, 12, now))};
            }
            if (pulses > 3) {
                at[3] = {tracks[3], static_cast<int8_t>(addPulse(field, tracks[3], at, 3, now.energy * 16, 12, now))};
            }
            if (most.energy * now.sq > most.sq * now.energy) {
                most = now;
                for (int i = 0; i < pulses; ++i) {
                    best[i] = at[i];
                }
            }
        }
    }
}

} // namespace

const TrialKernels TRIAL_KERNELS = {butterflies, chains};

} // namespace vek
