// Real Fourier transforms of 16 * M samples, M = 3, 6, 12, 18, 36, 72: a complex transform of 8 * M points by eight
// transforms of M points side by side, a rotation, and M transforms of eight points. M points go by the prime factor
// map R x Q, R a power of two up to 8 and Q 3 or 9. The shortest, M = 3, has its eight points in vectors that hold real
// and imaginary parts side by side.
#include "sc/kernels/wbefft.h"

#include <cstring>

#include "sc/kernels/complexlanes.h"

namespace vek {
namespace {

using namespace numbers;

using Cf8 = Complex<F8>;

VEK_INLINE Cf8 operator*(Cf8 a, F8 b) {
    return {a.re * b, a.im * b};
}
VEK_INLINE Cf8 rotate(Cf8 a, F8 wRe, F8 wIm) {
    return {a.re * wRe - a.im * wIm, a.re * wIm + a.im * wRe};
}
VEK_INLINE Cf8 loadC(const float* re, const float* im) {
    return {load(re), load(im)};
}
VEK_INLINE void storeC(float* re, float* im, Cf8 a) {
    store(re, a.re);
    store(im, a.im);
}

// Up to four numbers, the real parts in the lower half of the vector, the imaginary ones in the upper.
struct Halves {
    F8 v;
};

VEK_INLINE Halves operator+(Halves a, Halves b) {
    return {a.v + b.v};
}
VEK_INLINE Halves operator-(Halves a, Halves b) {
    return {a.v - b.v};
}
VEK_INLINE Halves operator*(Halves a, F8 b) {
    return {a.v * b};
}
VEK_INLINE F8 timesJ(Halves a) {
    alignas(32) static constexpr float sign[8] = {-1, -1, -1, -1, 1, 1, 1, 1};
    return swapHalves(a.v) * load(sign);
}
VEK_INLINE Halves plusJ(Halves a, Halves b) {
    return {a.v + timesJ(b)};
}
VEK_INLINE Halves minusJ(Halves a, Halves b) {
    return {a.v - timesJ(b)};
}

// Fourier transforms of a few numbers.
template <class C>
VEK_INLINE_WIDE void dft(C (&)[1]) {
}
template <class C>
VEK_INLINE_WIDE void dft(C (&x)[2]) {
    const C a = x[0];
    x[0] = a + x[1];
    x[1] = a - x[1];
}
template <class C>
VEK_INLINE_WIDE void dft(C (&x)[3]) {
    const C sum = x[1] + x[2];
    const C side = (x[1] - x[2]) * set1(0.866025404F); // sin(2 pi / 3)
    const C middle = x[0] - sum * set1(0.5F);
    x[0] = x[0] + sum;
    x[1] = minusJ(middle, side);
    x[2] = plusJ(middle, side);
}
template <class C>
VEK_INLINE_WIDE void dft(C (&x)[4]) {
    fft4(x);
}
template <class C>
VEK_INLINE_WIDE void dft(C (&x)[8]) {
    C even[4] = {x[0], x[2], x[4], x[6]};
    C odd[4] = {x[1], x[3], x[5], x[7]};
    dft(even);
    dft(odd);
    const F8 r = set1(0.707106781F);
    const C o1 = minusJ(odd[1], odd[1]) * r;
    const C o3 = plusJ(odd[3], odd[3]) * r; // negative
    joinHalves(x, even, odd, o1);
    x[3] = even[3] - o3;
    x[7] = even[3] + o3;
}
struct Dft8 {
    VEK_INLINE_WIDE void operator()(Cf8 (&x)[8]) const { dft(x); }
};
VEK_INLINE_WIDE void dft(Cf8 (&x)[9]) {
    Cf8 row0[3] = {x[0], x[3], x[6]};
    Cf8 row1[3] = {x[1], x[4], x[7]};
    Cf8 row2[3] = {x[2], x[5], x[8]};
    dft(row0);
    dft(row1);
    dft(row2);
    // exp(-2 pi j k / 9) for k = 1, 2, 4.
    row1[1] = rotate(row1[1], set1(0.766044443F), set1(-0.642787610F));
    row1[2] = rotate(row1[2], set1(0.173648178F), set1(-0.984807753F));
    row2[1] = rotate(row2[1], set1(0.173648178F), set1(-0.984807753F));
    row2[2] = rotate(row2[2], set1(-0.939692621F), set1(-0.342020143F));
    for (int c = 0; c < 3; ++c) {
        Cf8 y[3] = {row0[c], row1[c], row2[c]};
        dft(y);
        x[c] = y[0];
        x[c + 3] = y[1];
        x[c + 6] = y[2];
    }
}

// The step of the output's prime factor map: 1 modulo `one`, 0 modulo `zero`.
constexpr int mapStep(int one, int zero) {
    int step = 0;
    while (step % one != 1 % one) {
        step += zero;
    }
    return step;
}

// Transforms the columns of a row-major matrix of M x 8, in: rows of time, out: rows of frequency, rotated.
template <int M>
inline void columns(const RealFftTable<M>& t, const float* srcRe, const float* srcIm, float* re, float* im) {
    constexpr int Q = M % 9 == 0 ? 9 : 3;
    constexpr int R = M / Q;
    constexpr int fromA = mapStep(R, Q);
    constexpr int fromB = mapStep(Q, R);
    alignas(32) float midRe[8 * M];
    alignas(32) float midIm[8 * M];
    for (int b = 0; b < Q; ++b) {
        Cf8 x[R];
        for (int a = 0; a < R; ++a) {
            const int n = (Q * a + R * b) % M;
            x[a] = loadC(srcRe + 8 * n, srcIm + 8 * n);
        }
        dft(x);
        for (int a = 0; a < R; ++a) {
            storeC(midRe + 8 * (Q * a + b), midIm + 8 * (Q * a + b), x[a]);
        }
    }
    for (int a = 0; a < R; ++a) {
        Cf8 x[Q];
        for (int b = 0; b < Q; ++b) {
            x[b] = loadC(midRe + 8 * (Q * a + b), midIm + 8 * (Q * a + b));
        }
        dft(x);
        for (int b = 0; b < Q; ++b) {
            const int k = (fromA * a + fromB * b) % M;
            storeC(re + 8 * k, im + 8 * k, rotate(x[b], load(t.twiddleRe + 8 * k), load(t.twiddleIm + 8 * k)));
        }
    }
}

// The complex transform: src holds 8 M numbers, dst gets them in natural order. dst has room for 8 more.
template <int M>
void complexFft(const RealFftTable<M>& t, const float* srcRe, const float* srcIm, float* dstRe, float* dstIm) {
    constexpr int rows = (M + 7) / 8 * 8;
    alignas(32) float midRe[8 * rows];
    alignas(32) float midIm[8 * rows];
    for (int i = 8 * M; i < 8 * rows; ++i) {
        midRe[i] = 0;
        midIm[i] = 0;
    }
    columns<M>(t, srcRe, srcIm, midRe, midIm);
    transformRows<M, F8>(midRe, midIm, dstRe, dstIm, Dft8{});
}

// The shortest one: number 3 * k + i of the result is in the lanes i and 4 + i of rows[k], i = 0..2.
VEK_INLINE void complexFft24(const RealFftTable<3>& t, const float* srcRe, const float* srcIm, F8 (&rows)[8]) {
    Halves x[8];
    Cf8 y[3] = {loadC(srcRe, srcIm), loadC(srcRe + 8, srcIm + 8), loadC(srcRe + 16, srcIm + 16)};
    dft(y);
    for (int k = 0; k < 3; ++k) {
        const Cf8 turned = rotate(y[k], load(t.twiddleRe + 8 * k), load(t.twiddleIm + 8 * k));
        rows[k] = turned.re;
        rows[4 + k] = turned.im;
    }
    rows[3] = set1(0.0F);
    rows[7] = set1(0.0F);
    transpose(rows);
    for (int k = 0; k < 8; ++k) {
        x[k] = {rows[k]};
    }
    dft(x);
    for (int k = 0; k < 8; ++k) {
        rows[k] = x[k].v;
    }
}

// Eight pairs of samples, or lines of a spectrum.
VEK_INLINE Cf8 loadNumbers(const int16_t* p) {
    V8 re;
    V8 im;
    loadPairs(p, re, im);
    return {toFloat(re), toFloat(im)};
}
VEK_INLINE Cf8 reversed(Cf8 a) {
    return {reverse(a.re), reverse(a.im)};
}
VEK_INLINE Cf8 loadReversed(const int16_t* p) {
    V8 re;
    V8 im;
    loadPairsReversed(p, re, im);
    return {toFloat(re), toFloat(im)};
}

template <int M>
void forwardOf(const RealFftTable<M>& t, const int16_t* src, int16_t* dst) {
    constexpr int half = 8 * M;
    alignas(32) float re[half];
    alignas(32) float im[half];
    for (int n = 0; n < half; n += 8) {
        storeC(re + n, im + n, loadNumbers(src + 2 * n));
    }
    const F8 scale = set1(t.scale * 0.5F);
    const auto put = [](int16_t* to, Cf8 x) { storePairs(to, toInt(x.re), toInt(x.im)); };
    // The lines k..k+7, and half - k down by the same sums.
    const auto split = [&](int k, Cf8 z, Cf8 m, int16_t* opposite) { // m: Z(half - k)
        const Cf8 even = {z.re + m.re, z.im - m.im};
        const Cf8 odd = {z.im + m.im, m.re - z.re};
        const Cf8 turned = rotate(odd, load(t.splitRe + k), load(t.splitIm + k));
        put(dst + 2 * k, (even + turned) * scale);
        if (opposite != nullptr) {
            const Cf8 x = {even.re - turned.re, turned.im - even.im};
            put(opposite, reversed(x * scale));
        }
    };
    int16_t last[16];
    if constexpr (M == 3) {
        F8 x[8];
        F8 zRe[3];
        F8 zIm[3];
        complexFft24(t, re, im, x);
        joinTriples(x, zRe, zIm);
        split(0, {zRe[0], zIm[0]}, {mirrored(zRe[2], zRe[0]), mirrored(zIm[2], zIm[0])}, last);
        split(8, {zRe[1], zIm[1]}, {mirrored(zRe[1], zRe[2]), mirrored(zIm[1], zIm[2])}, dst + 18);
    } else {
        alignas(32) float zRe[half + 8];
        alignas(32) float zIm[half + 8];
        complexFft<M>(t, re, im, zRe, zIm);
        zRe[half] = zRe[0];
        zIm[half] = zIm[0];
        const auto at = [&](int k, int16_t* opposite) {
            const int m = half - 7 - k;
            split(k, loadC(zRe + k, zIm + k), reversed(loadC(zRe + m, zIm + m)), opposite);
        };
        at(0, last);
        for (int k = 8; k < half / 2; k += 8) {
            at(k, dst + 2 * (half - 7 - k));
        }
        at(half / 2, nullptr);
    }
    std::memcpy(dst + 2 * half - 14, last, 14 * sizeof(int16_t));
    dst[1] = last[14]; // the line `half`, which is real
}

// By the forward transform with real and imaginary parts exchanged.
template <int M>
void inverseOf(const RealFftTable<M>& t, const int16_t* src, int16_t* dst) {
    constexpr int half = 8 * M;
    alignas(32) float zRe[half + 8];
    alignas(32) float zIm[half + 8];
    // The two ends, where the real line half stands beside the line 0.
    int16_t first[16];
    int16_t last[16];
    for (int i = 0; i < 16; ++i) {
        first[i] = src[i];
        last[i] = i < 14 ? src[2 * half - 14 + i] : 0;
    }
    first[1] = 0;
    last[14] = src[1];
    const F8 scale = set1(t.scale);
    // The numbers k..k+7, and half - k down by the same sums.
    const auto unsplit = [&](int k, Cf8 x, Cf8 m, bool opposite) { // m: X(half - k)
        const Cf8 even = {x.re + m.re, x.im - m.im};
        const Cf8 odd = {x.re - m.re, x.im + m.im};
        const F8 wRe = load(t.splitRe + k);
        const F8 wIm = load(t.splitIm + k);
        const Cf8 turned = {odd.re * wRe + odd.im * wIm, odd.im * wRe - odd.re * wIm};
        storeC(zIm + k, zRe + k, plusJ(even, turned) * scale);
        if (opposite) {
            const Cf8 z = {even.re + turned.im, turned.re - even.im};
            storeC(zIm + half - 7 - k, zRe + half - 7 - k, reversed(z * scale));
        }
    };
    const auto at = [&](int k, bool opposite) {
        unsplit(k, loadNumbers(src + 2 * k), loadReversed(src + 2 * (half - 7 - k)), opposite);
    };
    // The shortest ones would wait for what is stored in the opposite order and loaded across it at once.
    constexpr bool both = M > 6;
    if constexpr (both) {
        at(half / 2, false);
    }
    for (int k = 8; k < (both ? half / 2 : half); k += 8) {
        at(k, both);
    }
    unsplit(0, loadNumbers(first), loadReversed(last), both);
    if constexpr (M == 3) {
        F8 x[8];
        complexFft24(t, zRe, zIm, x);
        // Each one writes a pair too many, which the next one overwrites.
        for (int k = 0; k < 7; ++k) {
            storeHalfPairs(dst + 6 * k, toInt(x[k]));
        }
        int16_t end[8];
        storeHalfPairs(end, toInt(x[7]));
        std::memcpy(dst + 42, end, 6 * sizeof(int16_t));
    } else {
        alignas(32) float re[half + 8];
        alignas(32) float im[half + 8];
        complexFft<M>(t, zRe, zIm, re, im);
        for (int n = 0; n < half; n += 8) {
            storePairs(dst + 2 * n, toInt(load(im + n)), toInt(load(re + n)));
        }
    }
}

// One transform of the length, in the direction that `Inverse` tells.
template <bool Inverse, int M>
void transformOf(const RealFftTable<M>& t, const int16_t* src, int16_t* dst) {
    if constexpr (Inverse) {
        inverseOf(t, src, dst);
    } else {
        forwardOf(t, src, dst);
    }
}

template <bool Inverse>
void transform(const int16_t* src, int16_t* dst, int len) {
    switch (len) {
    case 48:
        return transformOf<Inverse>(g_realFft48, src, dst);
    case 96:
        return transformOf<Inverse>(g_realFft96, src, dst);
    case 192:
        return transformOf<Inverse>(g_realFft192, src, dst);
    case 288:
        return transformOf<Inverse>(g_realFft288, src, dst);
    case 576:
        return transformOf<Inverse>(g_realFft576, src, dst);
    default:
        return transformOf<Inverse>(g_realFft1152, src, dst);
    }
}

} // namespace

VEK_KERNEL_TABLE(WbeFftKernels, wbeFftKernels) = {transform<false>, transform<true>};

} // namespace vek
