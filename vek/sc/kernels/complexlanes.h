// Complex numbers in vectors, real and imaginary parts apart, and what Fourier transforms of a few of them share, in
// integers and in floating point. Only for the files k_*.cpp.
#pragma once

#include "sc/kernels/numbers.h"

namespace vek::numbers {
inline namespace VEK_LEVEL_NS {

template <class V>
struct Complex {
    V re, im;
};

template <class V>
VEK_INLINE Complex<V> operator+(Complex<V> a, Complex<V> b) {
    return {a.re + b.re, a.im + b.im};
}
template <class V>
VEK_INLINE Complex<V> operator-(Complex<V> a, Complex<V> b) {
    return {a.re - b.re, a.im - b.im};
}
// a + j b and a - j b.
template <class V>
VEK_INLINE Complex<V> plusJ(Complex<V> a, Complex<V> b) {
    return {a.re - b.im, a.im + b.re};
}
template <class V>
VEK_INLINE Complex<V> minusJ(Complex<V> a, Complex<V> b) {
    return {a.re + b.im, a.im - b.re};
}

template <class C>
VEK_INLINE void fft4(C* x) {
    const C a = x[0] + x[2];
    const C b = x[0] - x[2];
    const C c = x[1] + x[3];
    const C d = x[1] - x[3];
    x[0] = a + c;
    x[1] = minusJ(b, d);
    x[2] = a - c;
    x[3] = plusJ(b, d);
}

// A transform of eight numbers from those of the even and of the odd ones, without the lines 3 and 7; `o1` is odd[1]
// turned by an eighth.
template <class C>
VEK_INLINE void joinHalves(C* x, const C* even, const C* odd, C o1) {
    x[0] = even[0] + odd[0];
    x[4] = even[0] - odd[0];
    x[1] = even[1] + o1;
    x[5] = even[1] - o1;
    x[2] = minusJ(even[2], odd[2]);
    x[6] = plusJ(even[2], odd[2]);
}

// The second half of a transform of 8 M points: `mid` holds M rows of eight numbers, filled up with zeros to a multiple
// of eight; `fft8` transforms the eight numbers of each row. dst gets the lines in natural order and has room for 8
// more.
template <int M, class V, class T, class Fft8>
VEK_INLINE_WIDE void transformRows(const T* midRe, const T* midIm, T* dstRe, T* dstIm, Fft8 fft8) {
    constexpr int rows = (M + 7) / 8 * 8;
    // From the last block down: what a block that is not full writes too much, the next one overwrites.
    for (int k1 = rows - 8; k1 >= 0; k1 -= 8) {
        V re[8];
        V im[8];
        for (int i = 0; i < 8; ++i) {
            re[i] = load(midRe + 8 * (k1 + i));
            im[i] = load(midIm + 8 * (k1 + i));
        }
        transpose(re);
        transpose(im);
        Complex<V> x[8];
        for (int i = 0; i < 8; ++i) {
            x[i] = {re[i], im[i]};
        }
        fft8(x);
        for (int k2 = 0; k2 < 8; ++k2) {
            store(dstRe + M * k2 + k1, x[k2].re);
            store(dstIm + M * k2 + k1, x[k2].im);
        }
    }
}

} // namespace VEK_LEVEL_NS
} // namespace vek::numbers
