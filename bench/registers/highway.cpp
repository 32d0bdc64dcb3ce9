// Five kernels through Highway, one body for all widths; compiled once for each set of registers.
#include "five.h"

#include <hwy/highway.h>

namespace vek {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using D16 = hn::ScalableTag<int16_t>;
using D32 = hn::RepartitionToWide<D16>;
using D64 = hn::RepartitionToWide<D32>;
using V32 = hn::Vec<D32>;

constexpr D16 d16;
constexpr D32 d32;
constexpr D64 d64;

// sum + a * b of pairs of neighbours
HWY_INLINE V32 madd(hn::Vec<D16> a, hn::Vec<D16> b, V32 sum) {
    V32 none = hn::Zero(d32);
    return hn::Add(hn::ReorderWidenMulAccumulate(d32, a, b, sum, none), none);
}

int64_t dot16(const int16_t* a, const int16_t* b, int n) {
    const hn::RebindToUnsigned<D64> du64;
    const int step = static_cast<int>(hn::Lanes(d16));
    const V32 bias = hn::Set(d32, 0x7fff0000);
    const auto low = hn::Set(du64, 0xffffffffU);
    auto s0 = hn::Zero(du64);
    auto s1 = s0;
    int i = 0;
    for (; i + step <= n; i += step) {
        const auto p = hn::BitCast(du64, madd(hn::LoadU(d16, a + i), hn::LoadU(d16, b + i), bias));
        s0 = hn::Add(s0, hn::And(p, low));
        s1 = hn::Add(s1, hn::ShiftRight<32>(p));
    }
    int pairs = i / 2;
    if (i > 0 && i < n) {
        const auto old = hn::FirstN(d16, static_cast<size_t>(step - (n - i)));
        const auto x = hn::IfThenZeroElse(old, hn::LoadU(d16, a + n - step));
        const auto p = hn::BitCast(du64, madd(x, hn::LoadU(d16, b + n - step), bias));
        s0 = hn::Add(s0, hn::And(p, low));
        s1 = hn::Add(s1, hn::ShiftRight<32>(p));
        pairs += step / 2;
        i = n;
    }
    auto s = static_cast<int64_t>(hn::GetLane(hn::SumOfLanes(du64, hn::Add(s0, s1)))) -
             static_cast<int64_t>(pairs) * 0x7fff0000;
    for (; i < n; ++i) {
        s += a[i] * b[i];
    }
    return s;
}

void corr32(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out) {
    const int step = static_cast<int>(hn::Lanes(d16));
    for (int k = 0; k < lags; k += 4) {
        V32 s0 = hn::Zero(d32);
        V32 s1 = s0;
        V32 s2 = s0;
        V32 s3 = s0;
        const int16_t* x = a + k;
        for (int i = 0; i < n - k; i += step) {
            const auto y = hn::LoadU(d16, b + i);
            s0 = madd(y, hn::LoadU(d16, x + i), s0);
            s1 = madd(y, hn::LoadU(d16, x + i + 1), s1);
            s2 = madd(y, hn::LoadU(d16, x + i + 2), s2);
            s3 = madd(y, hn::LoadU(d16, x + i + 3), s3);
        }
        const int32_t r[4] = {hn::GetLane(hn::SumOfLanes(d32, s0)), hn::GetLane(hn::SumOfLanes(d32, s1)),
                              hn::GetLane(hn::SumOfLanes(d32, s2)), hn::GetLane(hn::SumOfLanes(d32, s3))};
        for (int j = k; j < lags && j < k + 4; ++j) {
            out[j] = r[j - k];
        }
    }
}

constexpr int kMaxPairs = 21;

template <class D>
HWY_INLINE void firBlock(D d, const int32_t* c, int order, const int16_t* x, int16_t* y, int half, int q) {
    const hn::RepartitionToWide<D> wide;
    auto none = hn::Zero(wide);
    auto lo = hn::Set(wide, half);
    auto hi = lo;
    for (int j = 0; j <= order; j += 2) {
        const auto u = hn::LoadU(d, x - j);
        const auto v = j < order ? hn::LoadU(d, x - j - 1) : u;
        const auto k = hn::BitCast(d, hn::Set(wide, c[j / 2]));
        lo = hn::ReorderWidenMulAccumulate(wide, hn::InterleaveLower(d, u, v), k, lo, none);
        hi = hn::ReorderWidenMulAccumulate(wide, hn::InterleaveUpper(d, u, v), k, hi, none);
    }
    hn::StoreU(hn::ReorderDemote2To(d, hn::ShiftRightSame(lo, q), hn::ShiftRightSame(hi, q)), d, y);
}

template <int Fixed>
void firOf(const int16_t* a, int given, const int16_t* x, int16_t* y, int n, int q) {
    const int order = Fixed > 0 ? Fixed : given;
    int32_t c[kMaxPairs];
    for (int j = 0; j <= order; j += 2) {
        const auto second = static_cast<uint16_t>(j < order ? a[j + 1] : 0);
        c[j / 2] = static_cast<int32_t>(static_cast<uint16_t>(a[j]) | static_cast<uint32_t>(second) << 16);
    }
    const int half = q > 0 ? 1 << (q - 1) : 0;
    const int step = static_cast<int>(hn::Lanes(d16));
    int i = 0;
    for (; i + step <= n; i += step) {
        firBlock(d16, c, order, x + i, y + i, half, q);
    }
    const hn::CappedTag<int16_t, 8> eight;
    for (; i + 8 <= n; i += 8) {
        firBlock(eight, c, order, x + i, y + i, half, q);
    }
    for (; i < n; ++i) {
        uint32_t s = 0;
        for (int j = 0; j <= order; ++j) {
            s += static_cast<uint32_t>(a[j] * x[i - j]);
        }
        const int32_t r = static_cast<int32_t>(s + static_cast<uint32_t>(half)) >> q;
        y[i] = static_cast<int16_t>(r > 32767 ? 32767 : r < -32768 ? -32768 : r);
    }
}

void fir16(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q) {
    switch (order) {
    case 10:
        return firOf<10>(a, order, x, y, n, q);
    case 16:
        return firOf<16>(a, order, x, y, n, q);
    default:
        return firOf<0>(a, order, x, y, n, q);
    }
}

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

const FiveKernels FIVE_KERNELS = {dot16, corr32, fir16, butterflies, chains};

} // namespace vek
