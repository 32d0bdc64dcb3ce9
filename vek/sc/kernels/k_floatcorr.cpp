// Correlations and all-pole recursion of floating signals, eight or more neighbours at a time.
// Which of them share a register differs from level to level, the order of each sum only between the plain level and
// the others.
#include "sc/kernels/floatcorr.h"

#include "sc/kernels/registers.h"

namespace vek {
namespace {

constexpr int kMostPoles = 40; // as kMaxLpOrder

#if VEK_LEVEL == 0

// N neighbours.
template <typename T, int N>
struct Neighbours {
    static constexpr int parts = N;
    T v[parts];
};

template <typename T, int N>
VEK_INLINE void load(const float* p, Neighbours<T, N>& a) {
    for (int i = 0; i < N; ++i) {
        a.v[i] = p[i];
    }
}
template <typename T, int N>
VEK_INLINE void store(T* p, const Neighbours<T, N>& a) {
    for (int i = 0; i < N; ++i) {
        p[i] = a.v[i];
    }
}
template <typename T, int N>
VEK_INLINE void set1(float x, Neighbours<T, N>& a) {
    for (T& v : a.v) {
        v = x;
    }
}

// Delays that are worth going together.
template <typename T>
constexpr int kMostDelays = 8;

#else

using namespace registers;

template <typename T, int N>
struct Neighbours {
    using D = hn::CappedTag<T, N>;
    static constexpr int parts = N / kLanesOf<D>;
    hn::Vec<D> v[parts];
};

template <typename T, int N>
VEK_INLINE void load(const T* p, Neighbours<T, N>& a) {
    using D = typename Neighbours<T, N>::D;
    for (auto& v : a.v) {
        v = hn::LoadU(D(), p);
        p += kLanesOf<D>;
    }
}
template <typename T, int N>
VEK_INLINE void store(T* p, const Neighbours<T, N>& a) {
    using D = typename Neighbours<T, N>::D;
    for (const auto& v : a.v) {
        hn::StoreU(v, D(), p);
        p += kLanesOf<D>;
    }
}
template <typename T, int N>
VEK_INLINE void set1(float x, Neighbours<T, N>& a) {
    using D = typename Neighbours<T, N>::D;
    for (auto& v : a.v) {
        v = hn::Set(D(), static_cast<T>(x));
    }
}

template <typename T>
constexpr int kMostDelays = kLanesOf<hn::ScalableTag<T>> > 8 ? 16 : 8;

#endif

template <typename T, int N>
VEK_INLINE void addProduct(Neighbours<T, N>& s, const Neighbours<T, N>& a, const Neighbours<T, N>& b) {
    for (int i = 0; i < Neighbours<T, N>::parts; ++i) {
        s.v[i] = s.v[i] + a.v[i] * b.v[i];
    }
}
template <typename T, int N>
VEK_INLINE void addTo(Neighbours<T, N>& s, const Neighbours<T, N>& a) {
    for (int i = 0; i < Neighbours<T, N>::parts; ++i) {
        s.v[i] = s.v[i] + a.v[i];
    }
}

// N delays from y on; four sums each, so that no addition waits for the one before.
template <int N, typename T>
VEK_INLINE void neighbouringDelays(const float* x, const float* y, int n, T* out) {
    Neighbours<T, N> sums[4];
    for (auto& s : sums) {
        set1(0, s);
    }
    Neighbours<T, N> a;
    Neighbours<T, N> b;
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

template <typename T>
void correlateFew(const float* x, const float* y, int n, int lags, T* out) {
    for (int k = 0; k < lags; ++k) {
        T sum = 0;
        for (int i = 0; i < n; ++i) {
            sum += static_cast<T>(x[i]) * static_cast<T>(y[i + k]);
        }
        out[k] = sum;
    }
}

template <typename T>
void correlate(const float* x, const float* y, int n, int lags, T* out) {
    if (lags < 8) {
        return correlateFew(x, y, n, lags, out);
    }
    int k = 0;
    if constexpr (kMostDelays < T >> 8) {
        for (; k + kMostDelays<T> <= lags; k += kMostDelays<T>) {
            neighbouringDelays<kMostDelays<T>>(x, y + k, n, out + k);
        }
    }
    for (; k + 8 <= lags; k += 8) {
        neighbouringDelays<8>(x, y + k, n, out + k);
    }
    if (lags % 8 != 0) {
        neighbouringDelays<8>(x, y + lags - 8, n, out + lags - 8);
    }
}

#if VEK_LEVEL == 0

constexpr auto correlateWide = correlate<double>;

#else

// Doubles: each sample meets many delays, and is widened once. Of neighbouring delays five registers go together, as
// the shorter registers of 256 bits leave fewer lanes over.
using Wide = hn::CappedTag<double, 4>;
constexpr int kWideSamples = 128;
constexpr int kWideDelays = 5 * kLanesOf<Wide>;

VEK_INLINE void widen(const float* from, int n, double* to) {
    const Wide d;
    int i = 0;
    for (; i + kLanesOf<Wide> <= n; i += kLanesOf<Wide>) {
        hn::Store(hn::PromoteTo(d, hn::LoadU(hn::Rebind<float, Wide>(), from + i)), d, to + i);
    }
    for (; i < n; ++i) {
        to[i] = static_cast<double>(from[i]);
    }
}

// Adds to the sums of as many delays as Parts registers have lanes.
template <int Parts>
VEK_INLINE void addWide(const double* x, const double* y, int n, double* sums) {
    const Wide d;
    constexpr int lanes = kLanesOf<Wide>;
    hn::Vec<Wide> even[Parts];
    hn::Vec<Wide> odd[Parts];
    for (int p = 0; p < Parts; ++p) {
        even[p] = hn::Zero(d);
        odd[p] = hn::Zero(d);
    }
    int i = 0;
    for (; i + 2 <= n; i += 2) {
        const auto first = hn::Set(d, x[i]);
        const auto second = hn::Set(d, x[i + 1]);
        for (int p = 0; p < Parts; ++p) {
            even[p] = even[p] + first * hn::LoadU(d, y + i + p * lanes);
            odd[p] = odd[p] + second * hn::LoadU(d, y + i + 1 + p * lanes);
        }
    }
    if (i < n) {
        for (int p = 0; p < Parts; ++p) {
            even[p] = even[p] + hn::Set(d, x[i]) * hn::LoadU(d, y + i + p * lanes);
        }
    }
    for (int p = 0; p < Parts; ++p) {
        hn::Store(hn::Load(d, sums + p * lanes) + (even[p] + odd[p]), d, sums + p * lanes);
    }
}

void correlateWide(const float* x, const float* y, int n, int lags, double* out) {
    if (lags < 8) {
        return correlateFew(x, y, n, lags, out);
    }
    alignas(32) double wideX[kWideSamples];
    alignas(32) double wideY[kWideSamples + kWideDelays + kLanesOf<Wide>];
    for (int k = 0; k < lags; k += kWideDelays) {
        const int delays = lags - k < kWideDelays ? lags - k : kWideDelays;
        alignas(32) double sums[kWideDelays] = {};
        for (int i = 0; i < n; i += kWideSamples) {
            const int samples = n - i < kWideSamples ? n - i : kWideSamples;
            // Those of y first: registers across two that have just been stored wait for these.
            widen(y + i + k, samples + delays - 1, wideY);
            hn::StoreU(hn::Zero(Wide()), Wide(), wideY + samples + delays - 1); // lanes without a delay
            widen(x + i, samples, wideX);
            switch ((delays + kLanesOf<Wide> - 1) / kLanesOf<Wide>) {
            case 1:
                addWide<1>(wideX, wideY, samples, sums);
                break;
            case 2:
                addWide<2>(wideX, wideY, samples, sums);
                break;
            case 3:
                addWide<3>(wideX, wideY, samples, sums);
                break;
            case 4:
                addWide<4>(wideX, wideY, samples, sums);
                break;
            default:
                addWide<5>(wideX, wideY, samples, sums);
            }
        }
        for (int j = 0; j < delays; ++j) {
            out[k + j] = sums[j];
        }
    }
}

#endif

using F8 = Neighbours<float, 8>;

// Eight outputs at a time, each a sum of the eight inputs and of the outputs before them: only the latter wait for what
// was just computed.
template <int Fixed>
void allPoleOf(const float* a, int order, float* y, int n) {
    const int poles = Fixed > 0 ? Fixed : order;
    float taps[kMostPoles + 8] = {}; // -a[1], -a[2] ...
    for (int j = 0; j < poles; ++j) {
        taps[j] = -a[j + 1];
    }
    float response[16] = {}; // to an impulse at 8
    response[8] = 1;
    // The newest value last: the others are summed while it is made.
#pragma GCC unroll 8
    for (int k = 1; k < 8; ++k) {
#pragma GCC unroll 8
        for (int j = k - 1; j >= 0; --j) {
            response[8 + k] += taps[j] * response[7 + k - j];
        }
    }
    F8 columns[8]; // what input m gives to the eight
    for (int m = 0; m < 8; ++m) {
        load(response + 8 - m, columns[m]);
    }
    F8 value;
    F8 past[kMostPoles]; // what the output j + 1 before them gives
#pragma GCC unroll 10
    for (int j = 0; j < poles; ++j) {
        F8 even;
        F8 odd;
        set1(0, even);
        set1(0, odd);
        const int last = poles - j < 8 ? poles - j : 8; // there are no taps behind
        for (int m = 0; m < last; m += 2) {
            set1(taps[j + m], value);
            addProduct(even, value, columns[m]);
            set1(taps[j + m + 1], value);
            addProduct(odd, value, columns[m + 1]);
        }
        addTo(even, odd);
        past[j] = even;
    }
    for (int i = 0; i < n; i += 8) {
        // Four sums in turn, the newest outputs last.
        F8 sums[4];
        for (auto& sum : sums) {
            set1(0, sum);
        }
        for (int m = 0; m < 8; ++m) {
            set1(y[i + m], value);
            addProduct(sums[m % 4], value, columns[m]);
        }
        int j = poles;
        for (; j % 4 != 0; --j) {
            set1(y[i - j], value);
            addProduct(sums[0], value, past[j - 1]);
        }
        for (; j > 0; j -= 4) {
            for (int u = 0; u < 4; ++u) {
                set1(y[i - j + u], value);
                addProduct(sums[u], value, past[j - u - 1]);
            }
        }
        addTo(sums[0], sums[1]);
        addTo(sums[2], sums[3]);
        addTo(sums[0], sums[2]);
        store(y + i, sums[0]);
    }
}

void allPole32f(const float* a, int order, float* y, int n) {
    if (order == 10) {
        allPoleOf<10>(a, order, y, n);
    } else {
        allPoleOf<0>(a, order, y, n);
    }
}

} // namespace

VEK_KERNEL_TABLE_512(FloatCorrKernels, floatCorrKernels) = {correlate<float>, correlateWide, allPole32f};

} // namespace vek
