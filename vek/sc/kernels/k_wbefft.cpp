// Real Fourier transforms of 16 * M samples, M = 3, 6, 12, 18, 36, 72: a complex transform of 8 * M points by eight
// transforms of M points side by side, a rotation, and M transforms of eight points. M points go by the prime factor
// map R x Q, R a power of two up to 8 and Q 3 or 9.
#include "sc/kernels/wbefft.h"

#include "sc/kernels/simdf.h"

namespace vek {
namespace {

using namespace simd;

struct Cf8 {
    F8 re, im;
};

VEK_INLINE Cf8 operator+(Cf8 a, Cf8 b) {
    return {a.re + b.re, a.im + b.im};
}
VEK_INLINE Cf8 operator-(Cf8 a, Cf8 b) {
    return {a.re - b.re, a.im - b.im};
}
VEK_INLINE Cf8 operator*(Cf8 a, F8 b) {
    return {a.re * b, a.im * b};
}
// a + j b and a - j b.
VEK_INLINE Cf8 plusJ(Cf8 a, Cf8 b) {
    return {a.re - b.im, a.im + b.re};
}
VEK_INLINE Cf8 minusJ(Cf8 a, Cf8 b) {
    return {a.re + b.im, a.im - b.re};
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

VEK_INLINE void dft(Cf8 (&)[1]) {
}
VEK_INLINE void dft(Cf8 (&x)[2]) {
    const Cf8 a = x[0];
    x[0] = a + x[1];
    x[1] = a - x[1];
}
VEK_INLINE void dft(Cf8 (&x)[3]) {
    const Cf8 sum = x[1] + x[2];
    const Cf8 side = (x[1] - x[2]) * setf(0.866025404F); // sin(2 pi / 3)
    const Cf8 middle = x[0] - sum * setf(0.5F);
    x[0] = x[0] + sum;
    x[1] = minusJ(middle, side);
    x[2] = plusJ(middle, side);
}
VEK_INLINE void dft(Cf8 (&x)[4]) {
    const Cf8 a = x[0] + x[2];
    const Cf8 b = x[0] - x[2];
    const Cf8 c = x[1] + x[3];
    const Cf8 d = x[1] - x[3];
    x[0] = a + c;
    x[1] = minusJ(b, d);
    x[2] = a - c;
    x[3] = plusJ(b, d);
}
VEK_INLINE void dft(Cf8 (&x)[8]) {
    Cf8 even[4] = {x[0], x[2], x[4], x[6]};
    Cf8 odd[4] = {x[1], x[3], x[5], x[7]};
    dft(even);
    dft(odd);
    const F8 r = setf(0.707106781F);
    const Cf8 o1 = {(odd[1].re + odd[1].im) * r, (odd[1].im - odd[1].re) * r};
    const Cf8 o3 = {(odd[3].im - odd[3].re) * r, (odd[3].re + odd[3].im) * r}; // the second one negative
    x[0] = even[0] + odd[0];
    x[4] = even[0] - odd[0];
    x[1] = even[1] + o1;
    x[5] = even[1] - o1;
    x[2] = minusJ(even[2], odd[2]);
    x[6] = plusJ(even[2], odd[2]);
    x[3] = {even[3].re + o3.re, even[3].im - o3.im};
    x[7] = {even[3].re - o3.re, even[3].im + o3.im};
}
VEK_INLINE void dft(Cf8 (&x)[9]) {
    Cf8 row0[3] = {x[0], x[3], x[6]};
    Cf8 row1[3] = {x[1], x[4], x[7]};
    Cf8 row2[3] = {x[2], x[5], x[8]};
    dft(row0);
    dft(row1);
    dft(row2);
    // exp(-2 pi j k / 9) for k = 1, 2, 4.
    row1[1] = rotate(row1[1], setf(0.766044443F), setf(-0.642787610F));
    row1[2] = rotate(row1[2], setf(0.173648178F), setf(-0.984807753F));
    row2[1] = rotate(row2[1], setf(0.173648178F), setf(-0.984807753F));
    row2[2] = rotate(row2[2], setf(-0.939692621F), setf(-0.342020143F));
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
    // From the last block down: what a block that is not full writes too much, the next one overwrites.
    for (int k1 = rows - 8; k1 >= 0; k1 -= 8) {
        F8 re[8];
        F8 im[8];
        for (int i = 0; i < 8; ++i) {
            re[i] = load(midRe + 8 * (k1 + i));
            im[i] = load(midIm + 8 * (k1 + i));
        }
        transpose(re);
        transpose(im);
        Cf8 x[8];
        for (int i = 0; i < 8; ++i) {
            x[i] = {re[i], im[i]};
        }
        dft(x);
        for (int k2 = 0; k2 < 8; ++k2) {
            storeC(dstRe + M * k2 + k1, dstIm + M * k2 + k1, x[k2]);
        }
    }
}

template <int M>
void forwardOf(const RealFftTable<M>& t, const int16_t* src, int16_t* dst) {
    constexpr int half = 8 * M;
    alignas(32) float re[half];
    alignas(32) float im[half];
    alignas(32) float zRe[half + 8];
    alignas(32) float zIm[half + 8];
    for (int n = 0; n < half; n += 8) {
        V8 even;
        V8 odd;
        loadPairs(src + 2 * n, even, odd);
        storeC(re + n, im + n, {toFloat(even), toFloat(odd)});
    }
    complexFft<M>(t, re, im, zRe, zIm);
    zRe[half] = zRe[0];
    zIm[half] = zIm[0];
    const F8 scale = setf(t.scale * 0.5F);
    for (int k = 0; k < half; k += 8) {
        const Cf8 z = loadC(zRe + k, zIm + k);
        const Cf8 m = {reverse(load(zRe + half - 7 - k)), reverse(load(zIm + half - 7 - k))}; // Z(half - k)
        const Cf8 even = {z.re + m.re, z.im - m.im};
        const Cf8 odd = {z.im + m.im, m.re - z.re};
        const Cf8 x = (even + rotate(odd, load(t.splitRe + k), load(t.splitIm + k))) * scale;
        storePairs(dst + 2 * k, toInt(x.re), toInt(x.im));
    }
    int16_t nyquist[16];
    const V8 difference = toInt((setf(zRe[0]) - setf(zIm[0])) * setf(t.scale));
    storePairs(nyquist, difference, difference);
    dst[1] = nyquist[0];
}

// By the forward transform with real and imaginary parts exchanged.
template <int M>
void inverseOf(const RealFftTable<M>& t, const int16_t* src, int16_t* dst) {
    constexpr int half = 8 * M;
    alignas(32) float re[half + 8];
    alignas(32) float im[half + 8];
    alignas(32) float zRe[half + 8];
    alignas(32) float zIm[half + 8];
    for (int n = 0; n < half; n += 8) {
        V8 even;
        V8 odd;
        loadPairs(src + 2 * n, even, odd);
        storeC(re + n, im + n, {toFloat(even), toFloat(odd)});
    }
    re[half] = im[0];
    im[half] = 0;
    im[0] = 0;
    const F8 scale = setf(t.scale);
    for (int k = 0; k < half; k += 8) {
        const Cf8 x = loadC(re + k, im + k);
        const Cf8 m = {reverse(load(re + half - 7 - k)), reverse(load(im + half - 7 - k))}; // X(half - k)
        const Cf8 even = {x.re + m.re, x.im - m.im};
        const Cf8 odd = {x.re - m.re, x.im + m.im};
        const F8 wRe = load(t.splitRe + k);
        const F8 wIm = load(t.splitIm + k);
        const Cf8 turned = {odd.re * wRe + odd.im * wIm, odd.im * wRe - odd.re * wIm};
        storeC(zIm + k, zRe + k, plusJ(even, turned) * scale);
    }
    complexFft<M>(t, zRe, zIm, re, im);
    for (int n = 0; n < half; n += 8) {
        storePairs(dst + 2 * n, toInt(load(im + n)), toInt(load(re + n)));
    }
}

void forward(const int16_t* src, int16_t* dst, int len) {
    switch (len) {
    case 48:
        forwardOf(g_realFft48, src, dst);
        break;
    case 96:
        forwardOf(g_realFft96, src, dst);
        break;
    case 192:
        forwardOf(g_realFft192, src, dst);
        break;
    case 288:
        forwardOf(g_realFft288, src, dst);
        break;
    case 576:
        forwardOf(g_realFft576, src, dst);
        break;
    default:
        forwardOf(g_realFft1152, src, dst);
        break;
    }
}

void inverse(const int16_t* src, int16_t* dst, int len) {
    switch (len) {
    case 48:
        inverseOf(g_realFft48, src, dst);
        break;
    case 96:
        inverseOf(g_realFft96, src, dst);
        break;
    case 192:
        inverseOf(g_realFft192, src, dst);
        break;
    case 288:
        inverseOf(g_realFft288, src, dst);
        break;
    case 576:
        inverseOf(g_realFft576, src, dst);
        break;
    default:
        inverseOf(g_realFft1152, src, dst);
        break;
    }
}

} // namespace

VEK_KERNEL_TABLE(WbeFftKernels, wbeFftKernels) = {forward, inverse};

} // namespace vek
