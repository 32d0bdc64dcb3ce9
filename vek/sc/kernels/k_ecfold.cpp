// Windowed fold and real Fourier transform of 32 or 64 points, four numbers at a time: the complex transform of half
// the points is one of 4 or 8 points down the rows, a rotation, a transposition and one of 4 points.
// All levels do the same operations in the same order, so that they give the same bits.
#include "sc/kernels/ec.h"

#include "sc/kernels/complexlanes.h"

namespace vek {
namespace {

#if VEK_LEVEL == 0

template <typename T>
struct Four {
    T v[4];
};
template <typename T>
VEK_INLINE Four<T> load(const T* p) {
    return {{p[0], p[1], p[2], p[3]}};
}
template <typename T>
VEK_INLINE void store(T* p, Four<T> a) {
    for (int i = 0; i < 4; ++i) {
        p[i] = a.v[i];
    }
}
template <typename T>
VEK_INLINE Four<T> set1(T x) {
    return {{x, x, x, x}};
}
template <typename T>
VEK_INLINE Four<T> operator+(Four<T> a, Four<T> b) {
    return {{a.v[0] + b.v[0], a.v[1] + b.v[1], a.v[2] + b.v[2], a.v[3] + b.v[3]}};
}
template <typename T>
VEK_INLINE Four<T> operator-(Four<T> a, Four<T> b) {
    return {{a.v[0] - b.v[0], a.v[1] - b.v[1], a.v[2] - b.v[2], a.v[3] - b.v[3]}};
}
template <typename T>
VEK_INLINE Four<T> operator*(Four<T> a, Four<T> b) {
    return {{a.v[0] * b.v[0], a.v[1] * b.v[1], a.v[2] * b.v[2], a.v[3] * b.v[3]}};
}
// The numbers from the first of `next`, which follows a, downwards.
template <typename T>
VEK_INLINE Four<T> downFrom(Four<T> next, Four<T> a) {
    return {{next.v[0], a.v[3], a.v[2], a.v[1]}};
}
template <typename T>
VEK_INLINE void loadPairs(const T* p, Four<T>& even, Four<T>& odd) {
    even = {{p[0], p[2], p[4], p[6]}};
    odd = {{p[1], p[3], p[5], p[7]}};
}
template <typename T>
VEK_INLINE void storePairs(T* p, Four<T> even, Four<T> odd) {
    for (int i = 0; i < 4; ++i) {
        p[2 * i] = even.v[i];
        p[2 * i + 1] = odd.v[i];
    }
}
template <typename T>
VEK_INLINE void transpose(Four<T>& a, Four<T>& b, Four<T>& c, Four<T>& d) {
    const Four<T> r[4] = {a, b, c, d};
    a = {{r[0].v[0], r[1].v[0], r[2].v[0], r[3].v[0]}};
    b = {{r[0].v[1], r[1].v[1], r[2].v[1], r[3].v[1]}};
    c = {{r[0].v[2], r[1].v[2], r[2].v[2], r[3].v[2]}};
    d = {{r[0].v[3], r[1].v[3], r[2].v[3], r[3].v[3]}};
}
using F4 = Four<float>;
using D4 = Four<double>;

#else

struct F4 {
    __m128 v;
};
VEK_INLINE F4 load(const float* p) {
    return {_mm_loadu_ps(p)};
}
VEK_INLINE void store(float* p, F4 a) {
    _mm_storeu_ps(p, a.v);
}
VEK_INLINE F4 set1(float x) {
    return {_mm_set1_ps(x)};
}
VEK_INLINE F4 operator+(F4 a, F4 b) {
    return {_mm_add_ps(a.v, b.v)};
}
VEK_INLINE F4 operator-(F4 a, F4 b) {
    return {_mm_sub_ps(a.v, b.v)};
}
VEK_INLINE F4 operator*(F4 a, F4 b) {
    return {_mm_mul_ps(a.v, b.v)};
}
// The numbers from the first of `next`, which follows a, downwards.
VEK_INLINE F4 downFrom(F4 next, F4 a) {
    const __m128 all = _mm_move_ss(a.v, next.v);
    return {_mm_shuffle_ps(all, all, 0x6c)};
}
VEK_INLINE void loadPairs(const float* p, F4& even, F4& odd) {
    const __m128 a = _mm_loadu_ps(p);
    const __m128 b = _mm_loadu_ps(p + 4);
    even = {_mm_shuffle_ps(a, b, 0x88)};
    odd = {_mm_shuffle_ps(a, b, 0xdd)};
}
VEK_INLINE void storePairs(float* p, F4 even, F4 odd) {
    _mm_storeu_ps(p, _mm_unpacklo_ps(even.v, odd.v));
    _mm_storeu_ps(p + 4, _mm_unpackhi_ps(even.v, odd.v));
}
VEK_INLINE void transpose(F4& a, F4& b, F4& c, F4& d) {
    _MM_TRANSPOSE4_PS(a.v, b.v, c.v, d.v);
}

#if VEK_LEVEL == 1

struct D4 {
    __m128d lo, hi;
};
VEK_INLINE D4 load(const double* p) {
    return {_mm_loadu_pd(p), _mm_loadu_pd(p + 2)};
}
VEK_INLINE void store(double* p, D4 a) {
    _mm_storeu_pd(p, a.lo);
    _mm_storeu_pd(p + 2, a.hi);
}
VEK_INLINE D4 set1(double x) {
    return {_mm_set1_pd(x), _mm_set1_pd(x)};
}
VEK_INLINE D4 operator+(D4 a, D4 b) {
    return {_mm_add_pd(a.lo, b.lo), _mm_add_pd(a.hi, b.hi)};
}
VEK_INLINE D4 operator-(D4 a, D4 b) {
    return {_mm_sub_pd(a.lo, b.lo), _mm_sub_pd(a.hi, b.hi)};
}
VEK_INLINE D4 operator*(D4 a, D4 b) {
    return {_mm_mul_pd(a.lo, b.lo), _mm_mul_pd(a.hi, b.hi)};
}
VEK_INLINE D4 downFrom(D4 next, D4 a) {
    return {_mm_shuffle_pd(next.lo, a.hi, 2), _mm_shuffle_pd(a.hi, a.lo, 2)};
}
VEK_INLINE void loadPairs(const double* p, D4& even, D4& odd) {
    const D4 a = load(p);
    const D4 b = load(p + 4);
    even = {_mm_unpacklo_pd(a.lo, a.hi), _mm_unpacklo_pd(b.lo, b.hi)};
    odd = {_mm_unpackhi_pd(a.lo, a.hi), _mm_unpackhi_pd(b.lo, b.hi)};
}
VEK_INLINE void storePairs(double* p, D4 even, D4 odd) {
    store(p, {_mm_unpacklo_pd(even.lo, odd.lo), _mm_unpackhi_pd(even.lo, odd.lo)});
    store(p + 4, {_mm_unpacklo_pd(even.hi, odd.hi), _mm_unpackhi_pd(even.hi, odd.hi)});
}
VEK_INLINE void transpose(D4& a, D4& b, D4& c, D4& d) {
    const D4 r[4] = {a, b, c, d};
    a = {_mm_unpacklo_pd(r[0].lo, r[1].lo), _mm_unpacklo_pd(r[2].lo, r[3].lo)};
    b = {_mm_unpackhi_pd(r[0].lo, r[1].lo), _mm_unpackhi_pd(r[2].lo, r[3].lo)};
    c = {_mm_unpacklo_pd(r[0].hi, r[1].hi), _mm_unpacklo_pd(r[2].hi, r[3].hi)};
    d = {_mm_unpackhi_pd(r[0].hi, r[1].hi), _mm_unpackhi_pd(r[2].hi, r[3].hi)};
}

#else

struct D4 {
    __m256d v;
};
VEK_INLINE D4 load(const double* p) {
    return {_mm256_loadu_pd(p)};
}
VEK_INLINE void store(double* p, D4 a) {
    _mm256_storeu_pd(p, a.v);
}
VEK_INLINE D4 set1(double x) {
    return {_mm256_set1_pd(x)};
}
VEK_INLINE D4 operator+(D4 a, D4 b) {
    return {_mm256_add_pd(a.v, b.v)};
}
VEK_INLINE D4 operator-(D4 a, D4 b) {
    return {_mm256_sub_pd(a.v, b.v)};
}
VEK_INLINE D4 operator*(D4 a, D4 b) {
    return {_mm256_mul_pd(a.v, b.v)};
}
VEK_INLINE D4 downFrom(D4 next, D4 a) {
    return {_mm256_permute4x64_pd(_mm256_blend_pd(a.v, next.v, 1), 0x6c)};
}
VEK_INLINE void loadPairs(const double* p, D4& even, D4& odd) {
    const __m256d a = _mm256_loadu_pd(p);
    const __m256d b = _mm256_loadu_pd(p + 4);
    even = {_mm256_permute4x64_pd(_mm256_unpacklo_pd(a, b), 0xd8)};
    odd = {_mm256_permute4x64_pd(_mm256_unpackhi_pd(a, b), 0xd8)};
}
VEK_INLINE void storePairs(double* p, D4 even, D4 odd) {
    const __m256d a = _mm256_unpacklo_pd(even.v, odd.v);
    const __m256d b = _mm256_unpackhi_pd(even.v, odd.v);
    _mm256_storeu_pd(p, _mm256_permute2f128_pd(a, b, 0x20));
    _mm256_storeu_pd(p + 4, _mm256_permute2f128_pd(a, b, 0x31));
}
VEK_INLINE void transpose(D4& a, D4& b, D4& c, D4& d) {
    const __m256d ab0 = _mm256_unpacklo_pd(a.v, b.v);
    const __m256d ab1 = _mm256_unpackhi_pd(a.v, b.v);
    const __m256d cd0 = _mm256_unpacklo_pd(c.v, d.v);
    const __m256d cd1 = _mm256_unpackhi_pd(c.v, d.v);
    a = {_mm256_permute2f128_pd(ab0, cd0, 0x20)};
    b = {_mm256_permute2f128_pd(ab1, cd1, 0x20)};
    c = {_mm256_permute2f128_pd(ab0, cd0, 0x31)};
    d = {_mm256_permute2f128_pd(ab1, cd1, 0x31)};
}

#endif
#endif

using simd::Complex;
using simd::fft4;
using simd::joinHalves;

template <typename T>
struct Kind;
template <>
struct Kind<float> {
    using Vector = F4;
    using Complex = Vek32fc;
};
template <>
struct Kind<double> {
    using Vector = D4;
    using Complex = Vek64fc;
};

template <typename T, typename V>
VEK_INLINE void fft8(Complex<V>* x) {
    Complex<V> even[4] = {x[0], x[2], x[4], x[6]};
    Complex<V> odd[4] = {x[1], x[3], x[5], x[7]};
    fft4(even);
    fft4(odd);
    const V r = set1(static_cast<T>(0.70710678118654752440));
    const Complex<V> o1 = {r * (odd[1].re + odd[1].im), r * (odd[1].im - odd[1].re)};
    const Complex<V> o3 = {r * (odd[3].im - odd[3].re), r * (odd[3].re + odd[3].im)}; // the second one negative
    joinHalves(x, even, odd, o1);
    x[3] = {even[3].re + o3.re, even[3].im - o3.im};
    x[7] = {even[3].re - o3.re, even[3].im + o3.im};
}

// Forward transform of 4 * Rows points; the backward one with the parts of each number exchanged.
template <int Rows, typename T>
VEK_INLINE void transform(const FoldTable<T>& t, const T* re, const T* im, T* outRe, T* outIm) {
    using V = typename Kind<T>::Vector;
    Complex<V> x[Rows];
    for (int r = 0; r < Rows; ++r) {
        x[r] = {load(re + 4 * r), load(im + 4 * r)};
    }
    if constexpr (Rows == 4) {
        fft4(x);
    } else {
        fft8<T>(x);
    }
    for (int k = 1; k < Rows; ++k) {
        const V wRe = load(t.twiddleRe + 4 * k);
        const V wIm = load(t.twiddleIm + 4 * k);
        x[k] = {x[k].re * wRe - x[k].im * wIm, x[k].re * wIm + x[k].im * wRe};
    }
    for (int b = 0; b < Rows; b += 4) {
        transpose(x[b].re, x[b + 1].re, x[b + 2].re, x[b + 3].re);
        transpose(x[b].im, x[b + 1].im, x[b + 2].im, x[b + 3].im);
        fft4(x + b);
        for (int k = 0; k < 4; ++k) {
            store(outRe + Rows * k + b, x[b + k].re);
            store(outIm + Rows * k + b, x[b + k].im);
        }
    }
}

template <int Rows, typename T>
VEK_INLINE void forward(const FoldTable<T>& t, const T* fold, typename Kind<T>::Complex* spectrum) {
    using V = typename Kind<T>::Vector;
    constexpr int half = 4 * Rows;
    alignas(32) T re[half];
    alignas(32) T im[half];
    alignas(32) T zRe[half + 4];
    alignas(32) T zIm[half + 4];
    for (int n = 0; n < half; n += 4) {
        V even;
        V odd;
        loadPairs(fold + 2 * n, even, odd);
        store(re + n, even);
        store(im + n, odd);
    }
    transform<Rows>(t, re, im, zRe, zIm);
    // Whole vectors, which the loads below take as they were stored.
    store(zRe + half, load(zRe));
    store(zIm + half, load(zIm));
    const V middle = set1(static_cast<T>(0.5));
    for (int k = 0; k < half; k += 4) {
        const V aRe = load(zRe + k);
        const V aIm = load(zIm + k);
        // Z(half - k), whose conjugate is meant.
        const V bRe = downFrom(load(zRe + half - k), load(zRe + half - 4 - k));
        const V bIm = downFrom(load(zIm + half - k), load(zIm + half - 4 - k));
        const V oRe = aRe - bRe;
        const V oIm = aIm + bIm;
        const V wRe = load(t.postRe + k);
        const V wIm = load(t.postIm + k);
        storePairs(&spectrum[k].re, middle * (aRe + bRe) + (wRe * oRe - wIm * oIm),
                   middle * (aIm - bIm) + (wRe * oIm + wIm * oRe));
    }
    spectrum[half] = {zRe[0] - zIm[0], 0};
}

template <int Rows, typename T>
VEK_INLINE void backward(const FoldTable<T>& t, const typename Kind<T>::Complex* spectrum, T* fold) {
    using V = typename Kind<T>::Vector;
    constexpr int half = 4 * Rows;
    alignas(32) T re[half + 4];
    alignas(32) T im[half + 4];
    alignas(32) T zRe[half];
    alignas(32) T zIm[half];
    for (int k = 0; k < half; k += 4) {
        V even;
        V odd;
        loadPairs(&spectrum[k].re, even, odd);
        store(re + k, even);
        store(im + k, odd);
    }
    im[0] = 0;
    store(re + half, set1(spectrum[half].re));
    store(im + half, set1(static_cast<T>(0)));
    const V two = set1(static_cast<T>(2));
    for (int k = 0; k < half; k += 4) {
        const V aRe = load(re + k);
        const V aIm = load(im + k);
        const V bRe = downFrom(load(re + half - k), load(re + half - 4 - k));
        const V bIm = downFrom(load(im + half - k), load(im + half - 4 - k));
        const V oRe = aRe - bRe;
        const V oIm = aIm + bIm;
        const V wRe = two * load(t.postRe + k);
        const V wIm = two * load(t.postIm + k); // of the opposite sign
        store(zRe + k, (aRe + bRe) + (wRe * oRe + wIm * oIm));
        store(zIm + k, (aIm - bIm) + (wRe * oIm - wIm * oRe));
    }
    transform<Rows>(t, zIm, zRe, im, re);
    for (int n = 0; n < half; n += 4) {
        storePairs(fold + 2 * n, load(re + n), load(im + n));
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

// Adding 1.5 * 2^52 leaves no bits behind the point.
template <typename T>
VEK_INLINE void rounded(const double* __restrict src, double factor, T* __restrict dst, int n, double bottom,
                        double top) {
    constexpr double magic = 6755399441055744.0;
    for (int i = 0; i < n; ++i) {
        double v = src[i] * factor;
        v = v > top ? top : v;
        v = v < bottom ? bottom : v;
        dst[i] = static_cast<T>(static_cast<int32_t>(v + magic - magic));
    }
}

void round32(const double* src, double factor, int32_t* dst, int n) {
    rounded(src, factor, dst, n, -2147483648.0, 2147483647.0);
}
void round16(const double* src, double factor, int16_t* dst, int n) {
    rounded(src, factor, dst, n, -32768.0, 32767.0);
}

void widen16(const int16_t* src, double* dst, int n) {
    for (int i = 0; i < n; ++i) {
        dst[i] = src[i];
    }
}

} // namespace

VEK_KERNEL_TABLE(FoldKernels, foldKernels) = {analyse32f, analyse64f, synthesise32f, synthesise64f,
                                              round32,    round16,    widen16};

} // namespace vek
