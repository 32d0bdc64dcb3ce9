// The filter room's kernels, once per instruction level.
// Element-wise loops, of which codecs' ten to sixty elements leave a rest behind whole registers that takes the time,
// the FIR, the all-pole recursion, the circular convolution and the rows of correlations are written out. All levels
// give the same integers.
#include "sc/kernels/filter.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

constexpr int kSub = 40;

// Elements times a wrapping sum: the products of 16 bits fit in 32, their sums may wrap.
inline uint32_t prod(int a, int b) {
    return static_cast<uint32_t>(a * b);
}

inline int16_t roundTo16(uint32_t s, uint32_t half, int q) {
    return fix::sat16(static_cast<int32_t>(s + half) >> q);
}

inline uint32_t halfOf(int q) {
    return q > 0 ? 1U << (q - 1) : 0;
}

inline int magnitude(int v) {
    return v < 0 ? -v : v;
}

inline uint32_t firAt(const int16_t* a, int order, const int16_t* x) {
    uint32_t s = 0;
    for (int j = 0; j <= order; j++) {
        s += prod(a[j], x[-j]);
    }
    return s;
}

// Output i of the recursion. Like all of it unused at 512 bits (allPole256).
[[maybe_unused]] VEK_INLINE void allPoleAt(const int16_t* a, int order, int32_t* f, int16_t* y, int i, uint32_t half,
                                           int q) {
    auto s = static_cast<uint32_t>(f[i]);
    for (int j = order; j > 0; j--) {
        s -= prod(a[j], y[i - j]);
    }
    f[i] = static_cast<int32_t>(s);
    y[i] = roundTo16(s, half, q);
}

inline int16_t scaledAdded(int x, int d, int b, int half) {
    return fix::sat16(x + ((d * b + half) >> 15));
}

inline int16_t meanOf(int x1, int x2) {
    return static_cast<int16_t>((x1 >> 1) + (x2 >> 1));
}

inline int16_t multRounded(int a, int b) {
    return static_cast<int16_t>((a * b + 0x4000) >> 15);
}

// Element by element, at the plain level and of a few elements at all levels.
[[gnu::noinline]] VekStatus addScaledFew(const int16_t* x, const int16_t* d, int b, int16_t* y, int n, int half) {
    registers::oneByOne(n, [=](int i) { y[i] = scaledAdded(x[i], d[i], b, half); });
    return vekStsNoErr;
}

[[gnu::noinline]] VekStatus meanFew(const int16_t* x1, const int16_t* x2, int16_t* y, int n) {
    registers::oneByOne(n, [=](int i) { y[i] = meanOf(x1[i], x2[i]); });
    return vekStsNoErr;
}

[[gnu::noinline]] VekStatus mulFew(const int16_t* x1, const int16_t* x2, int16_t* y, int n, int q) {
    registers::oneByOne(n, [=](int i) { y[i] = roundTo16(prod(x1[i], x2[i]), halfOf(q), q); });
    return vekStsNoErr;
}

[[gnu::noinline]] VekStatus mulCFew(const int16_t* x, int v, int16_t* y, int n, int q) {
    registers::oneByOne(n, [=](int i) { y[i] = roundTo16(prod(x[i], v), halfOf(q), q); });
    return vekStsNoErr;
}

#if VEK_LEVEL > 0

using namespace registers;

constexpr int kLeast = kLeastFill<int16_t>;

// Largest magnitude of at least as many as `d` has lanes: as numbers without a sign magnitudes have room for 32768.
template <class D>
VEK_INLINE int maxAbsBy(D d, const int16_t* x, int n) {
    constexpr int lanes = kLanesOf<D>;
    const hn::RebindToUnsigned<D> bits;
    const auto at = [=](int i) { return hn::BitCast(bits, hn::Abs(hn::LoadU(d, x + i))); };
    auto most = at(n - lanes);
    for (int i = 0; i < n - lanes; i += lanes) {
        most = hn::Max(most, at(i));
    }
    if constexpr (lanes > 8) {
        const hn::Half<decltype(bits)> half;
        return hn::GetLane(hn::MaxOfLanes(half, hn::Max(hn::LowerHalf(most), hn::UpperHalf(half, most))));
    } else {
        return hn::GetLane(hn::MaxOfLanes(bits, most));
    }
}

int maxAbs16(const int16_t* x, int n) {
    if (n >= kLanesOf<Short16>) {
        return maxAbsBy(Short16(), x, n);
    }
    if (n >= kLanesOf<EightOf16>) {
        return maxAbsBy(kEightOf16, x, n);
    }
    int most = 0;
    for (int i = 0; i < n; ++i) {
        most = magnitude(x[i]) > most ? magnitude(x[i]) : most;
    }
    return most;
}

int sumAbs16(const int16_t* x, int n) {
    auto sums = hn::Zero(kFourOf32);
    int i = 0;
    for (; i + kLanesOf<EightOf16> <= n; i += kLanesOf<EightOf16>) {
        const auto v = hn::LoadU(kEightOf16, x + i);
        sums = plusPairs(sums, v, hn::ShiftRight<15>(v) | hn::Set(kEightOf16, 1));
    }
    int s = hn::GetLane(hn::SumOfLanes(kFourOf32, sums));
    for (; i < n; ++i) {
        s += magnitude(x[i]);
    }
    return s;
}

bool isShort(int v) {
    return v == static_cast<int16_t>(v);
}

// How a product in Q15 loses the rest.
enum class Cut { down, nearest, up };

template <Cut cut>
VekStatus addScaledBy(const int16_t* x, const int16_t* d, int b, int16_t* y, int n) {
    fillBy(Short16(), y, n, [=](auto lanes, int i) {
        const auto from = hn::LoadU(lanes, x + i);
        const auto more = hn::LoadU(lanes, d + i);
        const auto k = [=](int factor) { return hn::Set(lanes, static_cast<int16_t>(factor)); };
        if constexpr (cut == Cut::down) {
            return hn::SaturatedAdd(from, multCut(more, k(b)));
        } else if constexpr (cut == Cut::nearest) {
            return hn::SaturatedAdd(from, hn::MulFixedPoint15(more, k(b)));
        } else {
            return hn::SaturatedSub(from, multCut(more, k(-b)));
        }
    });
    return vekStsNoErr;
}

VekStatus addScaled(const int16_t* x, const int16_t* d, int b, int16_t* y, int n, int half) {
    if (n >= kLeast && isShort(b) && b != -32768) {
        switch (half) {
        case 0:
            return addScaledBy<Cut::down>(x, d, b, y, n);
        case 0x4000:
            return addScaledBy<Cut::nearest>(x, d, b, y, n);
        case 0x7fff:
            return addScaledBy<Cut::up>(x, d, b, y, n);
        default:
            break;
        }
    }
    return addScaledFew(x, d, b, y, n, half);
}

VekStatus mean(const int16_t* x1, const int16_t* x2, int16_t* y, int n) {
    if (n < kLeast) {
        return meanFew(x1, x2, y, n);
    }
    fillBy(Short16(), y, n, [=](auto d, int i) {
        return hn::ShiftRight<1>(hn::LoadU(d, x1 + i)) + hn::ShiftRight<1>(hn::LoadU(d, x2 + i));
    });
    return vekStsNoErr;
}

VekStatus mul(const int16_t* x1, const int16_t* x2, int16_t* y, int n, int q) {
    if (n < kLeast) {
        return mulFew(x1, x2, y, n, q);
    }
    if (q == 15) {
        // Two of -32768 alone give -32768.
        fillBy(Short16(), y, n, [=](auto d, int i) {
            const auto p = hn::MulFixedPoint15(hn::LoadU(d, x1 + i), hn::LoadU(d, x2 + i));
            return p ^ hn::VecFromMask(d, hn::Eq(p, hn::Set(d, int16_t{-32768})));
        });
    } else {
        const auto half = static_cast<int>(halfOf(q));
        fillBy(Short16(), y, n,
               [=](auto d, int i) { return multShifted(hn::LoadU(d, x1 + i), hn::LoadU(d, x2 + i), half, q); });
    }
    return vekStsNoErr;
}

VekStatus mulC(const int16_t* x, int v, int16_t* y, int n, int q) {
    if (n < kLeast) {
        return mulCFew(x, v, y, n, q);
    }
    // The same products in Q15, where none of them saturates.
    const int inQ15 = q <= 15 ? v * (1 << (15 - q)) : -32768;
    if (isShort(inQ15) && inQ15 != -32768) {
        fillBy(Short16(), y, n, [=](auto d, int i) {
            return hn::MulFixedPoint15(hn::LoadU(d, x + i), hn::Set(d, static_cast<int16_t>(inQ15)));
        });
    } else {
        const auto half = static_cast<int>(halfOf(q));
        fillBy(Short16(), y, n, [=](auto d, int i) {
            return multShifted(hn::LoadU(d, x + i), hn::Set(d, static_cast<int16_t>(v)), half, q);
        });
    }
    return vekStsNoErr;
}

// Each power is made in all lanes of a register, where the rounded product takes three clocks, and eight of them then
// share one.
VekStatus powers(const int16_t* x, int c, int16_t* y, int n) {
    y[0] = x[0];
    const auto factor = hn::Set(kEightOf16, static_cast<int16_t>(c));
    auto power = factor;
    const auto next = [&] {
        const auto now = power;
        power = hn::MulFixedPoint15(power, factor);
        return now;
    };
    int i = 1;
    for (; i + 8 <= n; i += 8) {
        hn::StoreU(hn::MulFixedPoint15(hn::LoadU(kEightOf16, x + i), firstLanes(next)), kEightOf16, y + i);
    }
    for (; i < n; ++i) {
        y[i] = multRounded(x[i], hn::GetLane(next()));
    }
    return vekStsNoErr;
}

constexpr int kMaxPairs = kMaxLpOrder / 2 + 1;

// Neighbouring coefficients as one 32-bit element, the last one completed with 0.
inline void pairUp(const int16_t* a, int order, int32_t* c) {
    for (int j = 0; j <= order; j += 2) {
        const auto second = static_cast<uint16_t>(j < order ? a[j + 1] : 0);
        c[j / 2] = static_cast<int32_t>(static_cast<uint16_t>(a[j]) | static_cast<uint32_t>(second) << 16);
    }
}

// Sums of as many neighbouring outputs as `d` has lanes: of each eight the lower four and the upper four. A fixed order
// lets the compiler keep the coefficients in registers.
template <int Fixed, class D, class Sums>
VEK_INLINE void firSums(D d, const int32_t* c, int order, const int16_t* x, Sums& lower, Sums& upper) {
    const int m = Fixed > 0 ? Fixed : order;
    for (int j = 0; j <= m; j += 2) {
        const auto u = hn::LoadU(d, x - j);
        const auto v = j < m ? hn::LoadU(d, x - j - 1) : u;
        const auto k = hn::BitCast(d, hn::Set(hn::RepartitionToWide<D>(), c[j / 2]));
        lower = plusPairs(lower, hn::InterleaveLower(d, u, v), k);
        upper = plusPairs(upper, hn::InterleaveUpper(d, u, v), k);
        // In this order: regrouped, the products of all pairs would want registers at once, of which there are few
        // below 512 bits.
        if constexpr (VEK_LEVEL < 3) {
            __asm__("" : "+v"(lower.raw), "+v"(upper.raw));
        }
    }
}

// From output i on what fills registers, then shorter ones; gives the first output that is left.
template <int Fixed, class D>
VEK_INLINE int fir16By(D d, const int32_t* c, int order, const int16_t* x, int16_t* y, int i, int n, int q) {
    for (; i + kLanesOf<D> <= n; i += kLanesOf<D>) {
        auto lower = hn::Set(hn::RepartitionToWide<D>(), static_cast<int>(halfOf(q)));
        auto upper = lower;
        firSums<Fixed>(d, c, order, x + i, lower, upper);
        storeSaturated(d, y + i, hn::ShiftRightSame(lower, q), hn::ShiftRightSame(upper, q));
    }
    if constexpr (kLanesOf < D >> kLanesOf<EightOf16>) {
        return fir16By<Fixed>(hn::Half<D>(), c, order, x, y, i, n, q);
    } else {
        return i;
    }
}

template <int Fixed>
void fir16Of(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q) {
    int32_t c[kMaxPairs];
    pairUp(a, order, c);
    for (int i = fir16By<Fixed>(d16, c, order, x, y, 0, n, q); i < n; i++) {
        y[i] = roundTo16(firAt(a, order, x + i), halfOf(q), q);
    }
}

template <int Fixed>
void fir32Of(const int16_t* a, int order, const int16_t* x, int32_t* f, int n) {
    int32_t c[kMaxPairs];
    pairUp(a, order, c);
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        auto lower = hn::Zero(kFourOf32);
        auto upper = lower;
        firSums<Fixed>(kEightOf16, c, order, x + i, lower, upper);
        hn::StoreU(lower, kFourOf32, f + i);
        hn::StoreU(upper, kFourOf32, f + i + 4);
    }
    for (; i < n; i++) {
        f[i] = static_cast<int32_t>(firAt(a, order, x + i));
    }
}

template <size_t N, class V>
VEK_INLINE uint32_t lane(V v) {
    return static_cast<uint32_t>(hn::ExtractLane(v, N));
}

// The cut on the chain from output to output: a branch that is hardly ever taken costs it nothing, and the empty
// statement keeps the compiler from gathering the scalars into a vector.
[[maybe_unused]] inline int cutScalar(uint32_t& sum, int q) {
    __asm__("" : "+r"(sum));
    int v = static_cast<int32_t>(sum) >> q;
    if (v != static_cast<int16_t>(v)) [[unlikely]] {
        v = v < 0 ? -32768 : 32767;
    }
    return v;
}

// Four outputs a step. What older outputs than the last four give is summed for all four at once and waits in `f`; the
// last four and the new ones go through scalar registers, where the chain from output to output is shortest.
// The four results are stored as one word, so that the later loads of pairs need not wait for it.
template <int Fixed>
void allPoleOf(const int16_t* a, int order, int32_t* f, int16_t* y, int n, int q) {
    const int m = Fixed > 0 ? Fixed : order;
    const int pairs = (m - 4) / 2;
    hn::Vec<EightOf16> c[kMaxLpOrder / 2];
    for (int p = 0; p < pairs; p++) {
        alignas(16) int16_t k[8];
        for (int i = 0; i < 4; i++) {
            const int j = 5 + 2 * p + i; // tap on the younger of the pair
            k[2 * i] = j + 1 <= m ? a[j + 1] : static_cast<int16_t>(0);
            k[2 * i + 1] = j <= m ? a[j] : static_cast<int16_t>(0);
        }
        c[p] = hn::Load(kEightOf16, k);
    }
    int t[8];
    for (int j = 1; j < 8; j++) {
        t[j] = j <= m ? a[j] : 0;
    }
    const uint32_t half = halfOf(q);
    int w0 = y[-4];
    int w1 = y[-3];
    int w2 = y[-2];
    int w3 = y[-1];
    int i = 0;
    for (; i + 4 <= n; i += 4) {
        auto s = hn::LoadU(kFourOf32, f + i) + hn::Set(kFourOf32, static_cast<int>(half));
        for (int p = pairs - 1; p >= 0; p--) {
            int32_t older;
            __builtin_memcpy(&older, y + i - 6 - 2 * p, sizeof older);
            s = s - pairSums(hn::BitCast(kEightOf16, hn::Set(kFourOf32, older)), c[p]);
        }
        uint32_t r0 = lane<0>(s) - prod(t[4], w0) - prod(t[3], w1) - prod(t[2], w2);
        uint32_t r1 = lane<1>(s) - prod(t[5], w0) - prod(t[4], w1) - prod(t[3], w2) - prod(t[2], w3);
        uint32_t r2 = lane<2>(s) - prod(t[6], w0) - prod(t[5], w1) - prod(t[4], w2) - prod(t[3], w3);
        uint32_t r3 = lane<3>(s) - prod(t[7], w0) - prod(t[6], w1) - prod(t[5], w2) - prod(t[4], w3);
        r0 -= prod(t[1], w3);
        w0 = cutScalar(r0, q);
        r1 -= prod(t[1], w0);
        r2 -= prod(t[2], w0);
        r3 -= prod(t[3], w0);
        w1 = cutScalar(r1, q);
        r2 -= prod(t[1], w1);
        r3 -= prod(t[2], w1);
        w2 = cutScalar(r2, q);
        r3 -= prod(t[1], w2);
        w3 = cutScalar(r3, q);
        f[i] = static_cast<int32_t>(r0 - half);
        f[i + 1] = static_cast<int32_t>(r1 - half);
        f[i + 2] = static_cast<int32_t>(r2 - half);
        f[i + 3] = static_cast<int32_t>(r3 - half);
        const uint64_t word = static_cast<uint64_t>(static_cast<uint16_t>(w0)) |
                              static_cast<uint64_t>(static_cast<uint16_t>(w1)) << 16 |
                              static_cast<uint64_t>(static_cast<uint16_t>(w2)) << 32 |
                              static_cast<uint64_t>(static_cast<uint16_t>(w3)) << 48;
        __builtin_memcpy(y + i, &word, sizeof word);
    }
    for (; i < n; i++) {
        allPoleAt(a, m, f, y, i, half, q);
    }
}

// 32 outputs in the level's registers, and eight.
void circular40(const int16_t* c, const int16_t* f2, int16_t* y) {
    constexpr int parts = 32 / kLanesOf<D16>;
    hn::Vec<D16> s[parts];
    for (auto& v : s) {
        v = hn::Zero(d16);
    }
    auto last = hn::Zero(kEightOf16);
    for (int i = 0; i < kSub; i++) {
        if (c[i] == 0) {
            continue;
        }
        const int16_t* const f = f2 + kSub - i;
        for (int p = 0; p < parts; p++) {
            s[p] = hn::SaturatedAdd(s[p], multCut(hn::Set(d16, c[i]), hn::LoadU(d16, f + p * kLanesOf<D16>)));
        }
        last = hn::SaturatedAdd(last, multCut(hn::Set(kEightOf16, c[i]), hn::LoadU(kEightOf16, f + 32)));
    }
    for (int p = 0; p < parts; p++) {
        hn::StoreU(s[p], d16, y + p * kLanesOf<D16>);
    }
    hn::StoreU(last, kEightOf16, y + 32);
}

// Rows of up to Groups registers, for as many values of the response as a register has lanes; the rows grow shorter.
// Rows of 40 are no multiple of more lanes than eight.
using RowPart = hn::CappedTag<int32_t, 8>;

template <int Groups>
void corrRowsOf(const int32_t* wide, int m, hn::Vec<RowPart>* sums, int32_t* rows) {
    const RowPart d;
    const hn::RepartitionToNarrow<RowPart> halves;
    for (const int last = m + kLanesOf<RowPart>; m < last; ++m) {
        // Products of the lower halves: those of the upper ones have a zero.
        const auto k = hn::BitCast(halves, hn::Set(d, wide[m] & 0xffff));
        for (int g = 0; g < Groups; ++g) {
            const auto x = hn::BitCast(halves, hn::LoadU(d, wide + m + g * kLanesOf<RowPart>));
            sums[g] = plusPairs(sums[g], k, x);
            hn::StoreU(sums[g], d, rows + m * kSub + g * kLanesOf<RowPart>);
        }
    }
    if constexpr (Groups > 1) {
        corrRowsOf<Groups - 1>(wide, m, sums, rows);
    }
}

void corrRows16(const int16_t* h, int32_t* rows) {
    constexpr int groups = kSub / kLanesOf<RowPart>;
    int32_t wide[2 * kSub] = {};
    for (int i = 0; i < kSub; i++) {
        wide[i] = h[i];
    }
    hn::Vec<RowPart> sums[groups];
    for (auto& s : sums) {
        s = hn::Zero(RowPart());
    }
    corrRowsOf<groups>(wide, 0, sums, rows);
}

#else

int maxAbs16(const int16_t* x, int n) {
    int16_t hi = 0;
    int16_t lo = 0;
    for (int i = 0; i < n; i++) {
        hi = x[i] > hi ? x[i] : hi;
        lo = x[i] < lo ? x[i] : lo;
    }
    return hi > -lo ? hi : -lo;
}

int sumAbs16(const int16_t* x, int n) {
    int s = 0;
    for (int i = 0; i < n; i++) {
        s += magnitude(x[i]);
    }
    return s;
}

constexpr auto addScaled = addScaledFew;
constexpr auto mean = meanFew;
constexpr auto mul = mulFew;
constexpr auto mulC = mulCFew;

VekStatus powers(const int16_t* x, int c, int16_t* y, int n) {
    y[0] = x[0];
    int power = c;
    for (int i = 1; i < n; i++) {
        y[i] = multRounded(x[i], power);
        power = multRounded(power, c);
    }
    return vekStsNoErr;
}

template <int Fixed>
void fir16Of(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q) {
    const int m = Fixed > 0 ? Fixed : order;
    const uint32_t half = halfOf(q);
    for (int i = 0; i < n; i++) {
        y[i] = roundTo16(firAt(a, m, x + i), half, q);
    }
}

template <int Fixed>
void fir32Of(const int16_t* a, int order, const int16_t* x, int32_t* f, int n) {
    const int m = Fixed > 0 ? Fixed : order;
    for (int i = 0; i < n; i++) {
        f[i] = static_cast<int32_t>(firAt(a, m, x + i));
    }
}

template <int Fixed>
void allPoleOf(const int16_t* a, int order, int32_t* f, int16_t* y, int n, int q) {
    const int m = Fixed > 0 ? Fixed : order;
    const uint32_t half = halfOf(q);
    for (int i = 0; i < n; i++) {
        allPoleAt(a, m, f, y, i, half, q);
    }
}

void circular40(const int16_t* c, const int16_t* f2, int16_t* y) {
    int16_t s[kSub] = {};
    for (int i = 0; i < kSub; i++) {
        if (c[i] == 0) {
            continue;
        }
        for (int k = 0; k < kSub; k++) {
            s[k] = fix::add(s[k], static_cast<int16_t>((c[i] * f2[kSub + k - i]) >> 15));
        }
    }
    for (int k = 0; k < kSub; k++) {
        y[k] = s[k];
    }
}

void corrRows16(const int16_t* h, int32_t* rows) {
    uint32_t s[kSub] = {};
    for (int m = 0; m < kSub; m++) {
        for (int d = 0; d < kSub - m; d++) {
            s[d] += static_cast<uint32_t>(h[m] * h[m + d]);
            rows[m * kSub + d] = static_cast<int32_t>(s[d]);
        }
    }
}

#endif

void firByOrder16(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q) {
    switch (order) {
    case 10:
        return fir16Of<10>(a, order, x, y, n, q);
    case 16:
        return fir16Of<16>(a, order, x, y, n, q);
    case 30:
        return fir16Of<30>(a, order, x, y, n, q);
    default:
        return fir16Of<0>(a, order, x, y, n, q);
    }
}

// The last outputs, too few for a register of 128 bits, go by one with some before them.
void fir16(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q) {
    constexpr int lanes = 8;
    const int over = VEK_LEVEL > 0 && n > lanes ? n % lanes : 0;
    if (over != 0) {
        firByOrder16(a, order, x + n - lanes, y + n - lanes, lanes, q);
        n -= over;
    }
    firByOrder16(a, order, x, y, n, q);
}

void scale32(int a, const int16_t* x, int32_t* f, int n) {
    for (int i = 0; i < n; i++) {
        f[i] = a * x[i];
    }
}

void fir32(const int16_t* a, int order, const int16_t* x, int32_t* f, int n) {
    switch (order) {
    case 0:
        return scale32(a[0], x, f, n);
    case 10:
        return fir32Of<10>(a, order, x, f, n);
    default:
        return fir32Of<0>(a, order, x, f, n);
    }
}

#if VEK_LEVEL < 3

void allPole(const int16_t* a, int order, int32_t* f, int16_t* y, int n, int q) {
    switch (order) {
    case 10:
        return allPoleOf<10>(a, order, f, y, n, q);
    case 16:
        return allPoleOf<16>(a, order, f, y, n, q);
    case 30:
        return allPoleOf<30>(a, order, f, y, n, q);
    default:
        return allPoleOf<0>(a, order, f, y, n, q);
    }
}

#endif

void weighted(const int16_t* x1, int v1, const int16_t* x2, int v2, int16_t* y, int n, int q, int half) {
    for (int i = 0; i < n; i++) {
        y[i] = fix::sat16((x1[i] * v1 + x2[i] * v2 + half) >> q);
    }
}

void corrRows32f(const float* h, float* rows) {
    float wide[2 * kSub] = {};
    float s[kSub] = {};
    for (int i = 0; i < kSub; i++) {
        wide[i] = h[i];
    }
    for (int m = 0; m < kSub; m++) {
        const float k = wide[m];
        for (int d = 0; d < kSub; d++) {
            s[d] += k * wide[m + d];
            rows[m * kSub + d] = s[d];
        }
    }
}

// Eight at a time take three quarters of the clocks; of 16 bits, stored apart, they would take more than one by one.
void gather32(const int32_t* rows, const uint16_t* index, int32_t* dst, int n) {
    for (int i = 0; i < n; i += kGathered) {
        for (int k = i; k < i + kGathered; k++) {
            dst[k] = static_cast<int32_t>(static_cast<uint32_t>(rows[index[k]]) << 1);
        }
    }
}

void gather16(const int32_t* rows, const uint16_t* index, int16_t* dst, int n) {
    for (int i = 0; i < n; i++) {
        dst[i] = static_cast<int16_t>(rows[index[i]] >> 15);
    }
}

} // namespace

#if VEK_LEVEL == 2
void allPole256(const int16_t* a, int order, int32_t* f, int16_t* y, int n, int q) {
    allPole(a, order, f, y, n, q);
}
#elif VEK_LEVEL == 3
constexpr auto allPole = allPole256;
#endif

VEK_KERNEL_TABLE_512(FilterKernels, filterKernels) = {
    maxAbs16,  sumAbs16, fir16,      fir32,       allPole,  weighted, mul,        mulC,
    addScaled, mean,     corrRows16, corrRows32f, gather32, gather16, circular40, powers,
};

} // namespace vek
