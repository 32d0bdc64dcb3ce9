// Cosine transform of type IV (160, 320, 640) and real Fourier transform (64, 128) of 16-bit samples in 32-bit
// arithmetic. The core is a complex transform of 8 * M points, M = 4, 8, 10, 20, 40: eight transforms of M points side
// by side, one a lane, a rotation, and M transforms of eight points, again eight at a time. 10, 20 and 40 points go by
// the prime factor map 2 x 5, 4 x 5 and 8 x 5, which needs no rotation.
#include "sc/kernels/transform.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/complexlanes.h"

namespace vek {
namespace {

using namespace numbers;

using C8 = Complex<V8>;

VEK_INLINE C8 rotate(C8 a, V8 wRe, V8 wIm) {
    return {mulDiff(a.re, wRe, a.im, wIm), mulSum(a.re, wIm, a.im, wRe)};
}
VEK_INLINE C8 loadC(const int32_t* re, const int32_t* im) {
    return {load(re), load(im)};
}
VEK_INLINE void storeC(int32_t* re, int32_t* im, C8 a) {
    store(re, a.re);
    store(im, a.im);
}

VEK_INLINE_WIDE void fft8(C8 (&x)[8]) {
    C8 even[4] = {x[0], x[2], x[4], x[6]};
    C8 odd[4] = {x[1], x[3], x[5], x[7]};
    fft4(even);
    fft4(odd);
    const V8 r = set1(759250125); // sqrt(1/2)
    const C8 o1 = {mul(odd[1].re + odd[1].im, r), mul(odd[1].im - odd[1].re, r)};
    const C8 o3 = {mul(odd[3].im - odd[3].re, r), mul(odd[3].re + odd[3].im, r)}; // the second one negative
    joinHalves(x, even, odd, o1);
    x[3] = {even[3].re + o3.re, even[3].im - o3.im};
    x[7] = {even[3].re - o3.re, even[3].im + o3.im};
}

struct Fft8 {
    VEK_INLINE_WIDE void operator()(C8 (&x)[8]) const { fft8(x); }
};

VEK_INLINE_WIDE void fft5(C8 (&x)[5]) {
    const V8 c1 = set1(331804471);  // cos(2 pi / 5)
    const V8 c2 = set1(-868675383); // cos(4 pi / 5)
    const V8 s1 = set1(1021189159); // sin(2 pi / 5)
    const V8 s2 = set1(631129609);  // sin(4 pi / 5)
    const C8 a = x[1] + x[4];
    const C8 b = x[2] + x[3];
    const C8 c = x[1] - x[4];
    const C8 d = x[2] - x[3];
    const C8 m1 = x[0] + C8{mulSum(a.re, c1, b.re, c2), mulSum(a.im, c1, b.im, c2)};
    const C8 m2 = x[0] + C8{mulSum(a.re, c2, b.re, c1), mulSum(a.im, c2, b.im, c1)};
    const C8 n1 = {mulSum(c.re, s1, d.re, s2), mulSum(c.im, s1, d.im, s2)};
    const C8 n2 = {mulDiff(c.re, s2, d.re, s1), mulDiff(c.im, s2, d.im, s1)};
    x[0] = x[0] + a + b;
    x[1] = minusJ(m1, n1);
    x[4] = plusJ(m1, n1);
    x[2] = minusJ(m2, n2);
    x[3] = plusJ(m2, n2);
}

// Transforms the columns of a row-major matrix of M x 8, in: rows of time, out: rows of frequency, rotated.
template <int M>
VEK_INLINE void columnOut(const TransformTable<M>& t, int32_t* re, int32_t* im, int k, C8 x) {
    storeC(re + 8 * k, im + 8 * k, rotate(x, load(t.twiddleRe + 8 * k), load(t.twiddleIm + 8 * k)));
}

template <int M>
VEK_INLINE_WIDE void columns(const TransformTable<M>& t, const int32_t* srcRe, const int32_t* srcIm, int32_t* re,
                             int32_t* im) {
    if constexpr (M <= 8) {
        C8 x[M];
        for (int n = 0; n < M; ++n) {
            x[n] = loadC(srcRe + 8 * n, srcIm + 8 * n);
        }
        if constexpr (M == 4) {
            fft4(x);
        } else {
            fft8(x);
        }
        for (int k = 0; k < M; ++k) {
            columnOut<M>(t, re, im, k, x[k]);
        }
    } else {
        constexpr int R = M / 5;
        alignas(32) int32_t midRe[8 * M];
        alignas(32) int32_t midIm[8 * M];
        for (int b = 0; b < 5; ++b) {
            C8 x[R];
            for (int a = 0; a < R; ++a) {
                const int n = (5 * a + R * b) % M;
                x[a] = loadC(srcRe + 8 * n, srcIm + 8 * n);
            }
            if constexpr (R == 2) {
                const C8 sum = x[0] + x[1];
                x[1] = x[0] - x[1];
                x[0] = sum;
            } else if constexpr (R == 4) {
                fft4(x);
            } else {
                fft8(x);
            }
            for (int a = 0; a < R; ++a) {
                storeC(midRe + 8 * (5 * a + b), midIm + 8 * (5 * a + b), x[a]);
            }
        }
        // Row k with k mod R = a and k mod 5 = b: k = (5 i a + R j b) mod M, where 5 i = 1 mod R and R j = 1 mod 5.
        constexpr int fromA = R == 8 ? 25 : 5;
        constexpr int fromB = 16;
        for (int a = 0; a < R; ++a) {
            C8 x[5];
            for (int b = 0; b < 5; ++b) {
                x[b] = loadC(midRe + 8 * (5 * a + b), midIm + 8 * (5 * a + b));
            }
            fft5(x);
            for (int b = 0; b < 5; ++b) {
                columnOut<M>(t, re, im, (fromA * a + fromB * b) % M, x[b]);
            }
        }
    }
}

// The complex transform: src holds 8 M numbers, dst gets them in natural order. dst has room for 8 more.
template <int M>
VEK_INLINE_WIDE void complexFft(const TransformTable<M>& t, const int32_t* srcRe, const int32_t* srcIm, int32_t* dstRe,
                                int32_t* dstIm) {
    constexpr int rows = (M + 7) / 8 * 8;
    alignas(32) int32_t midRe[8 * rows];
    alignas(32) int32_t midIm[8 * rows];
    for (int i = 8 * M; i < 8 * rows; ++i) {
        midRe[i] = 0;
        midIm[i] = 0;
    }
    columns<M>(t, srcRe, srcIm, midRe, midIm);
    transformRows<M, V8>(midRe, midIm, dstRe, dstIm, Fft8{});
}

VEK_INLINE void loadWords(const int16_t* p, V8& even, V8& odd) {
    loadPairs(p, even, odd);
}
VEK_INLINE void loadWords(const int32_t* p, V8& even, V8& odd) {
    loadSplit(p, even, odd);
}

// The even samples forwards, the odd ones backwards.
template <int half, typename T>
VEK_INLINE_WIDE void foldPairs(const T* samples, int32_t* re, int32_t* im) {
    for (int n = 0; n < half; n += 8) {
        V8 even;
        V8 odd;
        loadWords(samples + 2 * n, even, odd);
        store(re + n, even);
        store(im + half - 8 - n, reverse(odd));
    }
}

// 10 bits behind the point: full scale grows to 2^19.7 over the orthonormal transform of 640.
template <int M>
VEK_INLINE_WIDE void dct4(const TransformTable<M>& t, const int16_t* src, int16_t* dst) {
    constexpr int half = 8 * M;
    constexpr int guard = 10;
    alignas(32) int32_t re[half + 8];
    alignas(32) int32_t im[half + 8];
    alignas(32) int32_t outRe[half + 8];
    alignas(32) int32_t outIm[half + 8];
    foldPairs<half>(src, re, im);
    for (int n = 0; n < half; n += 8) {
        const C8 x = {shiftLeft<guard>(load(re + n)), shiftLeft<guard>(load(im + n))};
        storeC(re + n, im + n, rotate(x, load(t.preRe + n), load(t.preIm + n)));
    }
    complexFft<M>(t, re, im, outRe, outIm);
    for (int n = 0; n < half; n += 8) {
        const C8 y = rotate(loadC(outRe + n, outIm + n), load(t.postRe + n), load(t.postIm + n));
        store(re + n, shiftRightRounded<guard>(y.re));
        store(im + half - 8 - n, reverse(shiftRightRounded<guard>(set1(0) - y.im)));
    }
    for (int n = 0; n < half; n += 8) {
        storePairs(dst + 2 * n, load(re + n), load(im + n));
    }
}

void dct320(const int16_t* src, int16_t* dst) {
    dct4<20>(g_dct320, src, dst);
}

void dct640(const int16_t* src, int16_t* dst) {
    dct4<40>(g_dct640, src, dst);
}

// Orthonormal, of samples below 2^27.
void dct160(int32_t* u) {
    constexpr int half = 80;
    alignas(32) int32_t re[half + 8];
    alignas(32) int32_t im[half + 8];
    alignas(32) int32_t outRe[half + 8];
    alignas(32) int32_t outIm[half + 8];
    foldPairs<half>(u, re, im);
    for (int n = 0; n < half; n += 8) {
        storeC(re + n, im + n, rotate(loadC(re + n, im + n), load(g_dct160.preRe + n), load(g_dct160.preIm + n)));
    }
    complexFft<10>(g_dct160, re, im, outRe, outIm);
    for (int n = 0; n < half; n += 8) {
        const C8 y = rotate(loadC(outRe + n, outIm + n), load(g_dct160.postRe + n), load(g_dct160.postIm + n));
        store(re + n, y.re);
        store(im + half - 8 - n, reverse(set1(0) - y.im));
    }
    for (int n = 0; n < half; n += 8) {
        storeMerged(u + 2 * n, load(re + n), load(im + n));
    }
}

constexpr int kFrame = 160;
constexpr int kHalfFrame = kFrame / 2;

// The fold: sums of two products of 47 bits, the lowest kFoldBits apart, then in as many of 26 bits as they need.
int mdct160(const int16_t* fresh, const int16_t* old, const FoldWeights& w, int32_t* u) {
    constexpr int bits = 26;
    constexpr int32_t lowest = (1 << kFoldBits) - 1;
    alignas(32) int16_t pairs[2 * kFrame];
    for (int n = 0; n < kHalfFrame; ++n) {
        pairs[2 * n] = fresh[kHalfFrame - 1 - n];
        pairs[2 * n + 1] = fresh[kHalfFrame + n];
    }
    for (int n = 0; n < kHalfFrame; ++n) {
        pairs[kFrame + 2 * n] = old[n];
        pairs[kFrame + 2 * n + 1] = old[kFrame - 1 - n];
    }
    alignas(32) int32_t upper[kFrame];
    alignas(32) int32_t lower[kFrame];
    int32_t used = 0;
#if VEK_LEVEL == 0
    for (int n = 0; n < kFrame; ++n) {
        const int32_t below = pairs[2 * n] * w.lower[2 * n] + pairs[2 * n + 1] * w.lower[2 * n + 1];
        upper[n] = pairs[2 * n] * w.upper[2 * n] + pairs[2 * n + 1] * w.upper[2 * n + 1] + (below >> kFoldBits);
        lower[n] = below & lowest;
        used |= upper[n] ^ (upper[n] >> 31);
    }
#else
    using namespace registers;
    constexpr hn::RepartitionToWide<D16> wide;
    auto seen = hn::Zero(wide);
    for (int n = 0; n < kFrame; n += kLanesOf<decltype(wide)>) {
        const auto x = hn::LoadU(d16, pairs + 2 * n);
        const auto below = pairSums(x, hn::LoadU(d16, w.lower + 2 * n));
        const auto sum = pairSums(x, hn::LoadU(d16, w.upper + 2 * n)) + hn::ShiftRight<kFoldBits>(below);
        seen = seen | (sum ^ hn::ShiftRight<31>(sum));
        hn::StoreU(sum, wide, upper + n);
        hn::StoreU(below & hn::Set(wide, lowest), wide, lower + n);
    }
    int32_t all[kLanesOf<decltype(wide)>];
    hn::StoreU(seen, wide, all);
    for (const int32_t v : all) {
        used |= v;
    }
#endif
    const int most = used != 0 ? kFoldBits + 31 - fix::norm_l(used) : 0;
    const int excess = most > bits ? most - bits : 0;
    // Rounded upwards at the half.
    const int32_t half = excess > 0 ? 1 << ((excess - 1) % kFoldBits) : 0;
    if (excess > kFoldBits) {
        for (int n = 0; n < kFrame; ++n) {
            u[n] = (upper[n] + half) >> (excess - kFoldBits);
        }
    } else {
        for (int n = 0; n < kFrame; ++n) {
            u[n] = upper[n] * (1 << (kFoldBits - excess)) + ((lower[n] + half) >> excess);
        }
    }
    dct160(u);
    return excess;
}

// Sums of 64 bits, for all shifts.
void overlap(const int32_t* u, int16_t* previous, const int32_t* w, int shift, int16_t* y) {
    const auto weighted = [shift](int32_t v, int32_t window) {
        return (int64_t{v} * window + (int64_t{1} << (29 + shift))) >> (30 + shift);
    };
    for (int n = 0; n < kFrame; ++n) {
        const bool first = n < kHalfFrame;
        const int32_t now = first ? u[kHalfFrame + n] : -u[kFrame + kHalfFrame - 1 - n];
        const int32_t next = first ? -u[kHalfFrame - 1 - n] : -u[n - kHalfFrame];
        y[n] = fix::sat16_64(previous[n] + weighted(now, w[n]));
        previous[n] = fix::sat16_64(weighted(next, w[kFrame - 1 - n]));
    }
}

#if VEK_LEVEL > 0

constexpr int kLeastWideShift = 2;

using EightOf32 = hn::CappedTag<int32_t, 8>;
constexpr EightOf32 kEightOf32;

// The upper 32 bits of the products of all lanes, `half` added to their 64.
VEK_INLINE hn::Vec<EightOf32> timesHigh(hn::Vec<EightOf32> a, hn::Vec<EightOf32> b, int64_t half) {
    const hn::RepartitionToWide<EightOf32> d64;
    const hn::RebindToUnsigned<decltype(d64)> bits;
    const auto h = hn::Set(d64, half);
    const auto even = hn::ShiftRight<32>(hn::BitCast(bits, hn::MulEven(a, b) + h));
    return hn::OddEven(hn::BitCast(kEightOf32, mulOdd(a, b) + h), hn::BitCast(kEightOf32, even));
}

// The same of the upper 32 bits of the sums, which hold what shifts from kLeastWideShift on leave.
void overlapWide(const int32_t* u, int16_t* previous, const int32_t* w, int shift, int16_t* y) {
    using V = hn::Vec<EightOf32>;
    constexpr int lanes = kLanesOf<EightOf32>;
    const hn::Rebind<int16_t, EightOf32> samples;
    const int64_t half = int64_t{1} << (29 + shift);
    const auto at = [](const int32_t* p) { return hn::LoadU(kEightOf32, p); };
    const auto backwards = [](const int32_t* p) { return reverse(hn::LoadU(kEightOf32, p - lanes + 1)); };
    const auto minus = [](V v) { return hn::Zero(kEightOf32) - v; };
    const auto weighted = [half, shift](V v, V window) {
        return hn::ShiftRightSame(timesHigh(v, window, half), shift - kLeastWideShift);
    };
    for (int n = 0; n < kFrame; n += lanes) {
        const bool first = n < kHalfFrame;
        const V now = first ? at(u + kHalfFrame + n) : minus(backwards(u + kFrame + kHalfFrame - 1 - n));
        const V next = minus(first ? backwards(u + kHalfFrame - 1 - n) : at(u + n - kHalfFrame));
        const V sum = hn::PromoteTo(kEightOf32, hn::LoadU(samples, previous + n)) + weighted(now, at(w + n));
        hn::StoreU(hn::DemoteTo(samples, sum), samples, y + n);
        hn::StoreU(hn::DemoteTo(samples, weighted(next, backwards(w + kFrame - 1 - n))), samples, previous + n);
    }
}

#endif

void mdctInverse160(int32_t* u, int16_t* previous, const int32_t* w, int shift, int16_t* y) {
    dct160(u);
#if VEK_LEVEL > 0
    if (shift >= kLeastWideShift) {
        return overlapWide(u, previous, w, shift, y);
    }
#endif
    overlap(u, previous, w, shift, y);
}

void narrow(const int32_t* x, int n, int shift, int16_t* y) {
    const int32_t half = 1 << (shift - 1);
    for (int k = 0; k < n; ++k) {
        y[k] = fix::sat16((x[k] + half) >> shift);
    }
}

int32_t largest(const int32_t* x, int n) {
    int32_t most = 0;
    for (int k = 0; k < n; ++k) {
        const int32_t v = x[k] < 0 ? -x[k] : x[k];
        most = v > most ? v : most;
    }
    return most;
}

// Lines k to k + 7 of the real transform of 16 M samples, doubled, from those of z, the complex one of its pairs, and
// from those opposite, z[8 M - k] to z[8 M - k - 7].
template <int M>
VEK_INLINE C8 realLines(const TransformTable<M>& t, int k, C8 z, C8 opposite) {
    const C8 even = {z.re + opposite.re, z.im - opposite.im};
    const C8 odd = {z.im + opposite.im, opposite.re - z.re};
    return even + rotate(odd, load(t.postRe + k), load(t.postIm + k));
}

// 7 bits behind the point: with the gain of 128 and the doubling of the split a full scale fills 31 bits.
void fft128(int16_t* srcDst) {
    constexpr int guard = 7;
    alignas(32) int32_t re[64];
    alignas(32) int32_t im[64];
    alignas(32) int32_t zRe[72];
    alignas(32) int32_t zIm[72];
    for (int n = 0; n < 64; n += 8) {
        V8 even;
        V8 odd;
        loadPairs(srcDst + 2 * n, even, odd);
        storeC(re + n, im + n, {shiftLeft<guard>(even), shiftLeft<guard>(odd)});
    }
    complexFft<8>(g_fft128, re, im, zRe, zIm);
    zRe[64] = zRe[0];
    zIm[64] = zIm[0];
    for (int k = 0; k < 64; k += 8) {
        const C8 opposite = {reverse(load(zRe + 57 - k)), reverse(load(zIm + 57 - k))};
        const C8 x = realLines(g_fft128, k, loadC(zRe + k, zIm + k), opposite);
        storePairs(srcDst + 2 * k, shiftRightRounded<guard + 8>(x.re), shiftRightRounded<guard + 8>(x.im));
    }
    int16_t nyquist[16];
    const V8 difference = shiftRightRounded<guard + 7>(set1(zRe[0]) - set1(zIm[0]));
    storePairs(nyquist, difference, difference);
    srcDst[1] = nyquist[0];
}

// Samples of 23 bits: the gain of 64 and the doubling of the split fill 30.
int foldedFft64(const int16_t* samples, const int16_t* w, int32_t* re, int32_t* im) {
    constexpr int half = 32;
    constexpr int bits = 23;
    int32_t folded[2 * half];
    int32_t used = 0;
    for (int n = 0; n < 2 * half; ++n) {
        folded[n] = w[n] * samples[n] + w[n + 2 * half] * samples[n + 2 * half];
        used |= folded[n] ^ (folded[n] >> 31);
    }
    // A shift of 8 to the right, that of a full scale, and then as many to the left as there is room for.
    const int left = used != 0 ? fix::norm_l(used) : 0;
    constexpr int right = 31 - bits;
    for (int32_t& v : folded) {
        v = (v << left) >> right;
    }
    alignas(32) int32_t srcRe[half];
    alignas(32) int32_t srcIm[half];
    for (int n = 0; n < half; n += 8) {
        V8 even;
        V8 odd;
        loadSplit(folded + 2 * n, even, odd);
        storeC(srcRe + n, srcIm + n, {even, odd});
    }
    alignas(32) int32_t midRe[half];
    alignas(32) int32_t midIm[half];
    columns<4>(g_fft64, srcRe, srcIm, midRe, midIm);
    V8 rowsRe[8];
    V8 rowsIm[8];
    for (int i = 0; i < 8; ++i) {
        rowsRe[i] = i < 4 ? load(midRe + 8 * i) : set1(0);
        rowsIm[i] = i < 4 ? load(midIm + 8 * i) : set1(0);
    }
    transpose(rowsRe);
    transpose(rowsIm);
    C8 x[8];
    for (int i = 0; i < 8; ++i) {
        x[i] = {rowsRe[i], rowsIm[i]};
    }
    fft8(x);
    // Four lines in each.
    C8 z[4];
    for (int j = 0; j < 4; ++j) {
        z[j] = {joinLower(x[2 * j].re, x[2 * j + 1].re), joinLower(x[2 * j].im, x[2 * j + 1].im)};
    }
    for (int j = 0; j < 4; ++j) {
        const C8& last = z[3 - j];
        const C8& first = z[(4 - j) % 4];
        const C8 opposite = {mirrored(last.re, first.re), mirrored(last.im, first.im)};
        storeC(re + 8 * j, im + 8 * j, realLines(g_fft64, 8 * j, z[j], opposite));
    }
    return left - right + 1;
}

} // namespace

VEK_KERNEL_TABLE(TransformKernels, transformKernels) = {dct320,  dct640,         fft128, foldedFft64,
                                                        mdct160, mdctInverse160, narrow, largest};

} // namespace vek
