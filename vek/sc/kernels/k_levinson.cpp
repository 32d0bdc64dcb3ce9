// Reflections by Schur's recursion. No step waits for a sum of products, as in Levinson's own: with u and v the
// autocorrelation, seen through the predictor of a step and through the same backwards, a reflection is the quotient of
// two numbers that the step before has left. The predictor follows beside it.
#include "sc/kernels/levinson.h"

#include "sc/kernels/registers.h"

namespace vek {
namespace {

#if VEK_LEVEL == 0

bool levinson32f(const float* r, int order, float* a, float* rc, float* error) {
    float u[kMostLevinson + 1];
    float v[kMostLevinson + 1] = {};
    float forward[kMostLevinson];
    float k[kMostLevinson];
    for (int i = 0; i <= order; ++i) {
        u[i] = r[i];
        v[i] = r[i];
    }
    for (int m = 0; m < order; ++m) {
        const float next = -u[m + 1] / v[0];
        // From here on u[m+1+i] stands beside v[i].
        const float left = v[0] + next * u[m + 1];
        if (!(left > 0)) {
            return false;
        }
        for (int i = 0; i < order - m; ++i) {
            const float seen = u[m + 1 + i];
            u[m + 1 + i] = seen + next * v[i];
            v[i] = v[i] + next * seen;
        }
        k[m] = next;
        for (int i = 0; i < (m + 1) / 2; ++i) {
            const float front = forward[i];
            const float back = forward[m - 1 - i];
            forward[i] = front + next * back;
            forward[m - 1 - i] = back + next * front;
        }
        forward[m] = next;
    }
    a[0] = 1;
    for (int i = 0; i < order; ++i) {
        a[1 + i] = forward[i];
        rc[i] = k[i];
    }
    *error = v[0];
    return true;
}

#else

using namespace registers;

using Floats = hn::CappedTag<float, 8>;

constexpr Floats kFloats;
constexpr int kWide = kLanesOf<Floats>;

// All bits at kMostLevinson.
struct OnlyOne {
    alignas(32) int32_t mask[2 * kMostLevinson];

    constexpr OnlyOne() : mask() { mask[kMostLevinson] = -1; }
};
constexpr OnlyOne kOnly;

using FloatBytes = hn::Repartition<uint8_t, Floats>;

// One lane down, the top one from the bottom of `above`; and one lane up, the lowest one from the top of `below`.
VEK_INLINE hn::Vec<Floats> down(hn::Vec<Floats> v, hn::Vec<Floats> above) {
    if constexpr (kWide == 4) {
        return hn::CombineShiftRightBytes<4>(kFloats, above, v);
    } else {
        return hn::CombineShiftRightBytes<4>(kFloats, hn::ConcatLowerUpper(kFloats, above, v), v);
    }
}

VEK_INLINE hn::Vec<Floats> up(hn::Vec<Floats> v, hn::Vec<Floats> below) {
    if constexpr (kWide == 4) {
        return hn::CombineShiftRightBytes<12>(kFloats, v, below);
    } else {
        return hn::CombineShiftRightBytes<12>(kFloats, v, hn::ConcatLowerUpper(kFloats, v, below));
    }
}

// N registers for what the recursion sees and for the predictor: the one grows shorter as the other grows.
template <int N>
struct Schur {
    hn::Vec<Floats> u[N];
    hn::Vec<Floats> v[N];
    hn::Vec<Floats> forward[N];
    hn::Vec<Floats> backward[N];
    hn::Vec<Floats> reflections[N];

    // The steps whose reflections fill register P of the predictor; false if nothing is left of the energy.
    template <int P>
    VEK_INLINE bool steps(int order) {
        constexpr int seen = N - P;
        const int end = order < (P + 1) * kWide ? order : (P + 1) * kWide;
        for (int m = P * kWide; m < end; ++m) {
            const float u0 = hn::GetLane(u[0]);
            const float v0 = hn::GetLane(v[0]);
            const float next = -u0 / v0;
            const float left = v0 + next * u0;
            if (!(left > 0)) [[unlikely]] {
                return false;
            }
            const auto k = hn::Set(kFloats, next);
            // u one lane down before it is known what is added: that waits for the quotient, this does not.
            for (int g = 0; g < seen; ++g) {
                const bool last = g + 1 == seen;
                const auto uDown = down(u[g], last ? hn::Zero(kFloats) : u[last ? g : g + 1]);
                const auto vDown = down(v[g], last ? hn::Zero(kFloats) : v[last ? g : g + 1]);
                v[g] = v[g] + k * u[g];
                u[g] = uDown + k * vDown;
            }
            const auto newest = k & hn::BitCast(kFloats, hn::LoadU(hn::RebindToSigned<Floats>(),
                                                                   kOnly.mask + kMostLevinson - m + P * kWide));
            auto below = k;
            for (int g = 0; g <= P; ++g) {
                const auto front = forward[g];
                const auto back = backward[g] + k * front;
                forward[g] = front + k * backward[g];
                backward[g] = up(back, below);
                below = back;
            }
            forward[P] = forward[P] | newest;
            reflections[P] = reflections[P] | newest;
        }
        if constexpr (P + 1 < N) {
            return end == order || steps<P + 1>(order);
        } else {
            return true;
        }
    }
};

// The first `order` lanes of N registers.
template <int N>
VEK_INLINE void give(const hn::Vec<Floats> (&from)[N], int order, float* to) {
    float rest[N * kWide];
    int i = 0;
    for (int g = 0; g < N; ++g) {
        if (i + kWide <= order) {
            hn::StoreU(from[g], kFloats, to + i);
            i += kWide;
        } else {
            hn::StoreU(from[g], kFloats, rest + g * kWide);
        }
    }
    for (; i < order; ++i) {
        to[i] = rest[i];
    }
}

template <int N>
bool levinsonBy(const float* r, int order, float* a, float* rc, float* error) {
    Schur<N> now;
    float seen[N * kWide + 1] = {};
    for (int i = 0; i <= order; ++i) {
        seen[i] = r[i];
    }
    for (int g = 0; g < N; ++g) {
        now.v[g] = hn::LoadU(kFloats, seen + g * kWide);
        now.u[g] = hn::LoadU(kFloats, seen + g * kWide + 1);
        now.forward[g] = hn::Zero(kFloats);
        now.backward[g] = hn::Zero(kFloats);
        now.reflections[g] = hn::Zero(kFloats);
    }
    if (!now.template steps<0>(order)) {
        return false;
    }
    a[0] = 1;
    give(now.forward, order, a + 1);
    give(now.reflections, order, rc);
    *error = hn::GetLane(now.v[0]);
    return true;
}

bool levinson32f(const float* r, int order, float* a, float* rc, float* error) {
    constexpr int few = 16 / kWide;
    return order <= few * kWide ? levinsonBy<few>(r, order, a, rc, error) : levinsonBy<2 * few>(r, order, a, rc, error);
}

#endif

} // namespace

VEK_KERNEL_TABLE(LevinsonKernels, levinsonKernels) = {levinson32f};

} // namespace vek
