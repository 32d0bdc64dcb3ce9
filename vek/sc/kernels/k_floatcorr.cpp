// Correlations and all-pole recursion of floating signals, eight neighbours at a time.
// Which of them share a register differs from level to level, the order of each sum only between the plain level and
// the others.
#include "sc/kernels/floatcorr.h"

#include "sc/common/level_ns.h"

#if VEK_LEVEL > 0
#include <immintrin.h>
#endif

namespace vek {
namespace {

constexpr int kMostPoles = 40; // as kMaxLpOrder

#if VEK_LEVEL == 0

template <typename T>
struct Eight {
    T v[8];
};
using F8 = Eight<float>;
using D8 = Eight<double>;

VEK_INLINE void load(const float* p, F8& a) {
    for (int i = 0; i < 8; ++i) {
        a.v[i] = p[i];
    }
}
VEK_INLINE void load(const float* p, D8& a) {
    for (int i = 0; i < 8; ++i) {
        a.v[i] = p[i];
    }
}
template <typename T>
VEK_INLINE void store(T* p, const Eight<T>& a) {
    for (int i = 0; i < 8; ++i) {
        p[i] = a.v[i];
    }
}
template <typename T>
VEK_INLINE void set1(float x, Eight<T>& a) {
    for (int i = 0; i < 8; ++i) {
        a.v[i] = x;
    }
}
template <typename T>
VEK_INLINE void addProduct(Eight<T>& s, const Eight<T>& a, const Eight<T>& b) {
    for (int i = 0; i < 8; ++i) {
        s.v[i] += a.v[i] * b.v[i];
    }
}
template <typename T>
VEK_INLINE void addTo(Eight<T>& s, const Eight<T>& a) {
    for (int i = 0; i < 8; ++i) {
        s.v[i] += a.v[i];
    }
}

#elif VEK_LEVEL == 1

struct F8 {
    __m128 lo, hi;
};
struct D8 {
    __m128d v[4];
};

VEK_INLINE void load(const float* p, F8& a) {
    a = {_mm_loadu_ps(p), _mm_loadu_ps(p + 4)};
}
VEK_INLINE void load(const float* p, D8& a) {
    const __m128 lo = _mm_loadu_ps(p);
    const __m128 hi = _mm_loadu_ps(p + 4);
    a = {
        {_mm_cvtps_pd(lo), _mm_cvtps_pd(_mm_movehl_ps(lo, lo)), _mm_cvtps_pd(hi), _mm_cvtps_pd(_mm_movehl_ps(hi, hi))}};
}
VEK_INLINE void store(float* p, const F8& a) {
    _mm_storeu_ps(p, a.lo);
    _mm_storeu_ps(p + 4, a.hi);
}
VEK_INLINE void store(double* p, const D8& a) {
    for (int i = 0; i < 4; ++i) {
        _mm_storeu_pd(p + 2 * i, a.v[i]);
    }
}
VEK_INLINE void set1(float x, F8& a) {
    a.lo = a.hi = _mm_set1_ps(x);
}
VEK_INLINE void set1(float x, D8& a) {
    for (__m128d& v : a.v) {
        v = _mm_set1_pd(x);
    }
}
VEK_INLINE void addProduct(F8& s, const F8& a, const F8& b) {
    s.lo = _mm_add_ps(s.lo, _mm_mul_ps(a.lo, b.lo));
    s.hi = _mm_add_ps(s.hi, _mm_mul_ps(a.hi, b.hi));
}
VEK_INLINE void addProduct(D8& s, const D8& a, const D8& b) {
    for (int i = 0; i < 4; ++i) {
        s.v[i] = _mm_add_pd(s.v[i], _mm_mul_pd(a.v[i], b.v[i]));
    }
}
VEK_INLINE void addTo(F8& s, const F8& a) {
    s.lo = _mm_add_ps(s.lo, a.lo);
    s.hi = _mm_add_ps(s.hi, a.hi);
}
VEK_INLINE void addTo(D8& s, const D8& a) {
    for (int i = 0; i < 4; ++i) {
        s.v[i] = _mm_add_pd(s.v[i], a.v[i]);
    }
}

#else

struct F8 {
    __m256 v;
};
struct D8 {
    __m256d lo, hi;
};

VEK_INLINE void load(const float* p, F8& a) {
    a.v = _mm256_loadu_ps(p);
}
VEK_INLINE void load(const float* p, D8& a) {
    a = {_mm256_cvtps_pd(_mm_loadu_ps(p)), _mm256_cvtps_pd(_mm_loadu_ps(p + 4))};
}
VEK_INLINE void store(float* p, const F8& a) {
    _mm256_storeu_ps(p, a.v);
}
VEK_INLINE void store(double* p, const D8& a) {
    _mm256_storeu_pd(p, a.lo);
    _mm256_storeu_pd(p + 4, a.hi);
}
VEK_INLINE void set1(float x, F8& a) {
    a.v = _mm256_set1_ps(x);
}
VEK_INLINE void set1(float x, D8& a) {
    a.lo = a.hi = _mm256_set1_pd(x);
}
VEK_INLINE void addProduct(F8& s, const F8& a, const F8& b) {
    s.v = _mm256_add_ps(s.v, _mm256_mul_ps(a.v, b.v));
}
VEK_INLINE void addProduct(D8& s, const D8& a, const D8& b) {
    s.lo = _mm256_add_pd(s.lo, _mm256_mul_pd(a.lo, b.lo));
    s.hi = _mm256_add_pd(s.hi, _mm256_mul_pd(a.hi, b.hi));
}
VEK_INLINE void addTo(F8& s, const F8& a) {
    s.v = _mm256_add_ps(s.v, a.v);
}
VEK_INLINE void addTo(D8& s, const D8& a) {
    s.lo = _mm256_add_pd(s.lo, a.lo);
    s.hi = _mm256_add_pd(s.hi, a.hi);
}

#endif

// Eight delays from y on; four sums each, so that no addition waits for the one before.
template <typename V, typename T>
VEK_INLINE void eightDelays(const float* x, const float* y, int n, T* out) {
    V sums[4];
    for (V& s : sums) {
        set1(0, s);
    }
    V a;
    V b;
    int i = 0;
    for (; i + 4 <= n; i += 4) {
        for (int u = 0; u < 4; ++u) {
            set1(x[i + u], a);
            load(y + i + u, b);
            addProduct(sums[u], a, b);
        }
    }
    for (; i < n; ++i) {
        set1(x[i], a);
        load(y + i, b);
        addProduct(sums[0], a, b);
    }
    addTo(sums[0], sums[1]);
    addTo(sums[2], sums[3]);
    addTo(sums[0], sums[2]);
    store(out, sums[0]);
}

template <typename V, typename T>
VEK_INLINE void correlate(const float* x, const float* y, int n, int lags, T* out) {
    if (lags < 8) {
        for (int k = 0; k < lags; ++k) {
            T sum = 0;
            for (int i = 0; i < n; ++i) {
                sum += static_cast<T>(x[i]) * static_cast<T>(y[i + k]);
            }
            out[k] = sum;
        }
        return;
    }
    for (int k = 0; k + 8 <= lags; k += 8) {
        eightDelays<V>(x, y + k, n, out + k);
    }
    if (lags % 8 != 0) {
        eightDelays<V>(x, y + lags - 8, n, out + lags - 8);
    }
}

void corr32f(const float* x, const float* y, int n, int lags, float* out) {
    correlate<F8>(x, y, n, lags, out);
}

void corr32f64f(const float* x, const float* y, int n, int lags, double* out) {
    correlate<D8>(x, y, n, lags, out);
}

// Eight outputs at a time, each a sum of the eight inputs and of the outputs before them: only the latter wait for what
// was just computed.
void allPole32f(const float* a, int order, float* y, int n) {
    float taps[kMostPoles + 8] = {}; // -a[1], -a[2] ...
    for (int j = 0; j < order; ++j) {
        taps[j] = -a[j + 1];
    }
    float response[16] = {}; // to an impulse at 8
    response[8] = 1;
    for (int k = 1; k < 8; ++k) {
        for (int j = 0; j < k; ++j) {
            response[8 + k] += taps[j] * response[7 + k - j];
        }
    }
    F8 columns[8]; // what input m gives to the eight
    for (int m = 0; m < 8; ++m) {
        load(response + 8 - m, columns[m]);
    }
    F8 value;
    F8 past[kMostPoles]; // what the output j + 1 before them gives
    for (int j = 0; j < order; ++j) {
        F8 even;
        F8 odd;
        set1(0, even);
        set1(0, odd);
        for (int m = 0; m < 8; m += 2) {
            set1(taps[j + m], value);
            addProduct(even, value, columns[m]);
            set1(taps[j + m + 1], value);
            addProduct(odd, value, columns[m + 1]);
        }
        addTo(even, odd);
        past[j] = even;
    }
    for (int i = 0; i < n; i += 8) {
        F8 inputs;
        F8 even;
        F8 odd;
        set1(0, inputs);
        set1(0, even);
        set1(0, odd);
        for (int m = 0; m < 8; ++m) {
            set1(y[i + m], value);
            addProduct(inputs, value, columns[m]);
        }
        // The newest outputs last.
        int j = order;
        for (; j > 1; j -= 2) {
            set1(y[i - j], value);
            addProduct(even, value, past[j - 1]);
            set1(y[i - j + 1], value);
            addProduct(odd, value, past[j - 2]);
        }
        if (j > 0) {
            set1(y[i - 1], value);
            addProduct(odd, value, past[0]);
        }
        addTo(inputs, even);
        addTo(inputs, odd);
        store(y + i, inputs);
    }
}

} // namespace

VEK_KERNEL_TABLE(FloatCorrKernels, floatCorrKernels) = {corr32f, corr32f64f, allPole32f};

} // namespace vek
