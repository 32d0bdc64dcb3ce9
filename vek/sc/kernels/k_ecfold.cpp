// Windowed fold and real Fourier transform of 32 or 64 points, four numbers at a time: the complex transform of half
// the points is one of 4 or 8 points down the rows, a rotation, a transposition and one of 4 points.
// All levels do the same operations in the same order, so that they give the same bits.
#include "sc/kernels/ec.h"

#include "sc/kernels/complexlanes.h"

namespace vek {
namespace {

using namespace numbers;

template <typename T>
struct Kind;
template <>
struct Kind<float> {
    using Vector = Numbers<float, 4>;
    using Complex = Vek32fc;
};
template <>
struct Kind<double> {
    using Vector = Numbers<double, 4>;
    using Complex = Vek64fc;
};

template <typename T, typename V>
VEK_INLINE_WIDE void fft8(Complex<V>* x) {
    Complex<V> even[4] = {x[0], x[2], x[4], x[6]};
    Complex<V> odd[4] = {x[1], x[3], x[5], x[7]};
    fft4(even);
    fft4(odd);
    const V r = set1<4>(static_cast<T>(0.70710678118654752440));
    const Complex<V> o1 = {r * (odd[1].re + odd[1].im), r * (odd[1].im - odd[1].re)};
    const Complex<V> o3 = {r * (odd[3].im - odd[3].re), r * (odd[3].re + odd[3].im)}; // the second one negative
    joinHalves(x, even, odd, o1);
    x[3] = {even[3].re + o3.re, even[3].im - o3.im};
    x[7] = {even[3].re - o3.re, even[3].im + o3.im};
}

template <int Rows, typename T, typename V>
VEK_INLINE_WIDE void fourRows(Complex<V>* x, T* outRe, T* outIm) {
    transpose(x[0].re, x[1].re, x[2].re, x[3].re);
    transpose(x[0].im, x[1].im, x[2].im, x[3].im);
    fft4(x);
    for (int k = 0; k < 4; ++k) {
        store(outRe + Rows * k, x[k].re);
        store(outIm + Rows * k, x[k].im);
    }
}

// Forward transform of 4 * Rows points; the backward one with the parts of each number exchanged.
template <int Rows, typename T>
VEK_INLINE_WIDE void transform(const FoldTable<T>& t, const T* re, const T* im, T* outRe, T* outIm) {
    using V = typename Kind<T>::Vector;
    Complex<V> x[Rows];
    for (int r = 0; r < Rows; ++r) {
        x[r] = {load<4>(re + 4 * r), load<4>(im + 4 * r)};
    }
    if constexpr (Rows == 4) {
        fft4(x);
    } else {
        fft8<T>(x);
    }
    for (int k = 1; k < Rows; ++k) {
        const V wRe = load<4>(t.twiddleRe + 4 * k);
        const V wIm = load<4>(t.twiddleIm + 4 * k);
        x[k] = {x[k].re * wRe - x[k].im * wIm, x[k].re * wIm + x[k].im * wRe};
    }
    fourRows<Rows>(x, outRe, outIm);
    if constexpr (Rows == 8) {
        fourRows<Rows>(x + 4, outRe + 4, outIm + 4);
    }
}

// What a number and the conjugate of the opposite one have in common, and what they differ by: four numbers of each.
template <typename V>
struct Parts {
    Complex<V> even, odd;
};

// Of the numbers k..k+3 and 4 * Rows - k down. `first` holds the number 4 * Rows - k in front and gets the next one:
// all loads are of whole vectors as they were stored.
template <int Rows, typename T, typename V>
VEK_INLINE_WIDE Parts<V> parts(const T* re, const T* im, int k, Complex<V>& first) {
    constexpr int last = 4 * Rows - 4;
    const Complex<V> a = {load<4>(re + k), load<4>(im + k)};
    const Complex<V> lower = {load<4>(re + last - k), load<4>(im + last - k)};
    const Complex<V> b = {mirrored(lower.re, first.re), mirrored(lower.im, first.im)};
    first = lower;
    return {{a.re + b.re, a.im - b.im}, {a.re - b.re, a.im + b.im}};
}

// Four times four lines of the real transform from those of the complex one, z, and those opposite.
template <int Rows, typename T, typename V>
VEK_INLINE_WIDE void split(const FoldTable<T>& t, const T* zRe, const T* zIm, int from, Complex<V>& first,
                           typename Kind<T>::Complex* spectrum) {
    const V middle = set1<4>(static_cast<T>(0.5));
    for (int k = from; k < from + 16; k += 4) {
        const Parts<V> z = parts<Rows>(zRe, zIm, k, first);
        const V wRe = load<4>(t.postRe + k);
        const V wIm = load<4>(t.postIm + k);
        storeMerged(&spectrum[k].re, middle * z.even.re + (wRe * z.odd.re - wIm * z.odd.im),
                    middle * z.even.im + (wRe * z.odd.im + wIm * z.odd.re));
    }
}

// Pairs of real and imaginary parts, or of samples, each part by itself.
template <int count, typename V, typename T>
VEK_INLINE_WIDE void apart(const T* pairs, T* re, T* im) {
    for (int n = 0; n < count; n += 4) {
        V even;
        V odd;
        loadSplit(pairs + 2 * n, even, odd);
        store(re + n, even);
        store(im + n, odd);
    }
}

// The transform of half as many complex numbers and what it is made from.
template <int half, typename T>
struct Halves {
    alignas(32) T re[half];
    alignas(32) T im[half];
    alignas(32) T zRe[half];
    alignas(32) T zIm[half];
};

template <int Rows, typename T>
VEK_INLINE_WIDE void forward(const FoldTable<T>& t, const T* fold, typename Kind<T>::Complex* spectrum) {
    using V = typename Kind<T>::Vector;
    constexpr int half = 4 * Rows;
    Halves<half, T> halves;
    auto& [re, im, zRe, zIm] = halves;
    apart<half, V>(fold, re, im);
    transform<Rows>(t, re, im, zRe, zIm);
    Complex<V> first = {load<4>(zRe), load<4>(zIm)};
    for (int k = 0; k < half; k += 16) {
        split<Rows>(t, zRe, zIm, k, first, spectrum);
    }
    spectrum[half] = {zRe[0] - zIm[0], 0};
}

template <int Rows, typename T>
VEK_INLINE_WIDE void backward(const FoldTable<T>& t, const typename Kind<T>::Complex* spectrum, T* fold) {
    using V = typename Kind<T>::Vector;
    constexpr int half = 4 * Rows;
    Halves<half, T> halves;
    auto& [re, im, zRe, zIm] = halves;
    apart<half, V>(&spectrum->re, re, im);
    im[0] = 0;
    const V two = set1<4>(static_cast<T>(2));
    Complex<V> first = {set1<4>(spectrum[half].re), set1<4>(static_cast<T>(0))};
    for (int k = 0; k < half; k += 4) {
        const Parts<V> z = parts<Rows>(re, im, k, first);
        const V wRe = two * load<4>(t.postRe + k);
        const V wIm = two * load<4>(t.postIm + k); // of the opposite sign
        store(zRe + k, z.even.re + (wRe * z.odd.re + wIm * z.odd.im));
        store(zIm + k, z.even.im + (wRe * z.odd.im - wIm * z.odd.re));
    }
    transform<Rows>(t, zIm, zRe, im, re);
    for (int n = 0; n < half; n += 4) {
        storeMerged(fold + 2 * n, load<4>(re + n), load<4>(im + n));
    }
}

template <int Points, typename T>
VEK_INLINE void foldOf(const T* __restrict x, const T* __restrict w, int windowLen, T* __restrict fold) {
    for (int n = 0; n < Points; ++n) {
        fold[n] = x[n] * w[n];
    }
    for (int b = Points; b < windowLen; b += Points) {
        for (int n = 0; n < Points; ++n) {
            fold[n] += x[b + n] * w[b + n];
        }
    }
}

template <int Points, typename T>
VEK_INLINE void overlap(const T* __restrict fold, const T* __restrict w, int windowLen, T* __restrict sum) {
    for (int b = 0; b < windowLen; b += Points) {
        for (int n = 0; n < Points; ++n) {
            sum[b + n] += fold[n] * w[b + n];
        }
    }
}

template <typename T>
VEK_INLINE void analyse(const FoldTable<T>* tables, int order, const T* x, const T* w, int windowLen, T* fold,
                        typename Kind<T>::Complex* spectrum) {
    if (order == 5) {
        foldOf<32>(x, w, windowLen, fold);
        forward<4>(tables[0], fold, spectrum);
    } else {
        foldOf<64>(x, w, windowLen, fold);
        forward<8>(tables[1], fold, spectrum);
    }
}

template <typename T>
VEK_INLINE void synthesise(const FoldTable<T>* tables, int order, const typename Kind<T>::Complex* spectrum, const T* w,
                           int windowLen, T* fold, T* sum) {
    if (order == 5) {
        backward<4>(tables[0], spectrum, fold);
        overlap<32>(fold, w, windowLen, sum);
    } else {
        backward<8>(tables[1], spectrum, fold);
        overlap<64>(fold, w, windowLen, sum);
    }
}

void analyse32f(int order, const float* x, const float* w, int windowLen, float* fold, Vek32fc* spectrum) {
    analyse(g_fold32f, order, x, w, windowLen, fold, spectrum);
}
void analyse64f(int order, const double* x, const double* w, int windowLen, double* fold, Vek64fc* spectrum) {
    analyse(g_fold64f, order, x, w, windowLen, fold, spectrum);
}
void synthesise32f(int order, const Vek32fc* spectrum, const float* w, int windowLen, float* fold, float* sum) {
    synthesise(g_fold32f, order, spectrum, w, windowLen, fold, sum);
}
void synthesise64f(int order, const Vek64fc* spectrum, const double* w, int windowLen, double* fold, double* sum) {
    synthesise(g_fold64f, order, spectrum, w, windowLen, fold, sum);
}

VEK_INLINE void storeInts(int32_t* p, V8 a) {
    store(p, a);
}
VEK_INLINE void storeInts(int16_t* p, V8 a) {
    storeNarrowed(p, a);
}

template <typename T>
VEK_INLINE_WIDE void rounded(const double* src, double factor, T* dst, int n) {
    const D4 scale = set1<4>(factor);
    const auto eight = [&](const double* from, T* to) {
        storeInts(to, toInt(load<4>(from) * scale, load<4>(from + 4) * scale));
    };
    if (n < 8) {
        double few[8] = {};
        T ints[8];
        for (int i = 0; i < n; ++i) {
            few[i] = src[i];
        }
        eight(few, ints);
        for (int i = 0; i < n; ++i) {
            dst[i] = ints[i];
        }
        return;
    }
    for (int i = 0; i + 8 < n; i += 8) {
        eight(src + i, dst + i);
    }
    eight(src + n - 8, dst + n - 8);
}

void round32(const double* src, double factor, int32_t* dst, int n) {
    rounded(src, factor, dst, n);
}
void round16(const double* src, double factor, int16_t* dst, int n) {
    rounded(src, factor, dst, n);
}

void widen16(const int16_t* src, double* dst, int n) {
    for (int i = 0; i < n; ++i) {
        dst[i] = src[i];
    }
}
void widen32(const int32_t* __restrict src, double factor, double* __restrict dst, int n) {
    for (int i = 0; i < n; ++i) {
        dst[i] = factor * src[i];
    }
}

} // namespace

VEK_KERNEL_TABLE(FoldKernels, foldKernels) = {analyse32f, analyse64f, synthesise32f, synthesise64f,
                                              round32,    round16,    widen16,       widen32};

} // namespace vek
