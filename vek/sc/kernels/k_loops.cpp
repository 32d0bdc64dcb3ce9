// Loops over samples, written so that each becomes registers at once: what needs a wider type has a loop of its own.
// Where a result overwrites a source, or the order of sums matters, registers are named.
#include "sc/kernels/loops.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/simdf.h"

namespace vek {
namespace {

using namespace simd;

constexpr int kSub = kLoopSubframe;

void lessScaled16(const int16_t* x, const int16_t* d, int g, int16_t* y) {
    const auto less = [g](int16_t a, int16_t b) { return fix::sat16(a - fix::sat16((b * g) >> 14)); };
    // The same vector by one name needs no look at how two overlap.
    if (y == x) {
        for (int i = 0; i < kSub; ++i) {
            y[i] = less(y[i], d[i]);
        }
    } else {
        for (int i = 0; i < kSub; ++i) {
            y[i] = less(x[i], d[i]);
        }
    }
}

void lessScaled32f(const float* x, const float* d, float g, float* y) {
    const F8 factor = setf(g);
    for (int i = 0; i < kSub; i += 8) {
        store(y + i, load(x + i) - factor * load(d + i));
    }
}

int32_t magnitudes16(const int16_t* x) {
    int32_t sum = 0;
    for (int i = 0; i < kSub; ++i) {
        const int v = x[i];
        sum += v < 0 ? -v : v;
    }
    return sum;
}

// Only the gain waits for the one before.
int moveGain16(int16_t* x, int g, int keep, int fresh) {
    int gains[kSub];
    for (int& now : gains) {
        g = ((g * keep) >> 15) + fresh;
        now = g;
    }
    for (int i = 0; i < kSub; ++i) {
        x[i] = fix::sat16((x[i] * gains[i] + 0x2000) >> 14);
    }
    return g;
}

// From the end, so that each block meets unchanged predecessors.
void lessPrevious16(int16_t* x, int g, int n) {
    constexpr int block = 16;
    int left = n;
    for (; left > block; left -= block) {
        int16_t* const at = x + left - block;
        int16_t made[block];
        for (int i = 0; i < block; ++i) {
            made[i] = fix::sat16(at[i] - ((at[i - 1] * g) >> 15));
        }
        for (int i = 0; i < block; ++i) {
            at[i] = made[i];
        }
    }
    for (int i = left - 1; i > 0; --i) {
        x[i] = fix::sat16(x[i] - ((x[i - 1] * g) >> 15));
    }
}

void lessPrevious32f(float* x, float g, int n) {
    const F8 factor = setf(g);
    int left = n;
    for (; left > 8; left -= 8) {
        float* const at = x + left - 8;
        store(at, load(at) - factor * load(at - 1));
    }
    for (int i = left - 1; i > 0; --i) {
        x[i] -= g * x[i - 1];
    }
}

void moveUp32f(float* y, const float* h, float v, int n) {
    const F8 factor = setf(v);
    int left = n;
    for (; left > 8; left -= 8) {
        float* const at = y + left - 8;
        store(at, load(at - 1) + factor * load(h + left - 8));
    }
    for (int i = left - 1; i > 0; --i) {
        y[i] = y[i - 1] + v * h[i];
    }
}

void threeTaps(int side, int middle, const int16_t* x, int16_t* __restrict y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = fix::sat16((side * (x[i - 1] + x[i + 1]) + middle * x[i] + 0x4000) >> 15);
    }
}

// The products have up to 50 bits, which doubles hold; the offset makes all of them positive, so that cutting off is
// rounding down.
void tilt(const int16_t* x, int mu, int gain, int16_t* y) {
    constexpr int offset = 1 << 21;
    int32_t sums[kSub];
    for (int i = 0; i < kSub; ++i) {
        sums[i] = x[i] * 32768 + mu * x[i - 1];
    }
    const double factor = gain * 0x1p-29;
    for (int32_t& s : sums) {
        s = static_cast<int32_t>(s * factor + (offset + 0.5)) - offset;
    }
    for (int i = 0; i < kSub; ++i) {
        y[i] = fix::sat16(sums[i]);
    }
}

void taps32f(const float* x, const float* taps, float* y, int n) {
    for (int i = 0;; i += kLeastOutputs) {
        // The last eight overlap those before.
        i = i < n - kLeastOutputs ? i : n - kLeastOutputs;
        F8 sum = setf(0);
        for (int j = 0; j < kLoopTaps; ++j) {
            sum = sum + setf(taps[j]) * load(x + i + j);
        }
        store(y + i, sum);
        if (i == n - kLeastOutputs) {
            return;
        }
    }
}

// Eight distances at a time: the farther they are, the fewer sums there are.
void pairCorrelations(const int16_t* h, int32_t* rows) {
    constexpr int lanes = 8;
    int32_t even[kPairs + kPairRow] = {};
    int32_t odd[kPairs + kPairRow] = {};
    for (int q = 0; q < kPairs; ++q) {
        even[q] = h[2 * q];
        odd[q] = h[2 * q + 1];
    }
    for (int first = 0; first < kPairRow; first += lanes) {
        uint32_t sums[lanes] = {};
        for (int p = 0; p < kPairs - first; ++p) {
            for (int l = 0; l < lanes; ++l) {
                const int to = p + first + l;
                sums[l] += static_cast<uint32_t>(even[p] * even[to]) + static_cast<uint32_t>(odd[p] * odd[to]);
                rows[p * kPairRow + first + l] = static_cast<int32_t>(sums[l]);
            }
        }
    }
}

// Four sums share what they read of a.
void slide16(const int16_t* a, const int16_t* b, int n, int step, int count, int32_t* sums) {
    int k = 0;
    for (; k + 4 <= count; k += 4) {
        const int16_t* const b0 = b + step * k;
        const int16_t* const b1 = b0 + step;
        const int16_t* const b2 = b1 + step;
        const int16_t* const b3 = b2 + step;
        int32_t s0 = 0;
        int32_t s1 = 0;
        int32_t s2 = 0;
        int32_t s3 = 0;
        for (int i = 0; i < n; ++i) {
            s0 += a[i] * b0[i];
            s1 += a[i] * b1[i];
            s2 += a[i] * b2[i];
            s3 += a[i] * b3[i];
        }
        sums[k] = s0;
        sums[k + 1] = s1;
        sums[k + 2] = s2;
        sums[k + 3] = s3;
    }
    for (; k < count; ++k) {
        int32_t s = 0;
        for (int i = 0; i < n; ++i) {
            s += a[i] * b[i + step * k];
        }
        sums[k] = s;
    }
}

int64_t squaredDistance16(const int16_t* x, const int16_t* y, int n) {
    uint64_t sum = 0;
    for (int i = 0; i < n; ++i) {
        const auto d = static_cast<uint32_t>(x[i] - y[i]);
        sum += d * d; // below 2^32 for any two
    }
    return static_cast<int64_t>(sum);
}

// The sine's series around a right angle.
void cosines(const float* angles, double* c) {
    constexpr double right = 1.5707963267948966;
    for (int i = 0; i < kAngles; ++i) {
        const double x = right - angles[i];
        const double s = x * x;
        double sum = -1.0 / 1307674368000;
        sum = sum * s + 1.0 / 6227020800;
        sum = sum * s - 1.0 / 39916800;
        sum = sum * s + 1.0 / 362880;
        sum = sum * s - 1.0 / 5040;
        sum = sum * s + 1.0 / 120;
        sum = sum * s - 1.0 / 6;
        c[i] = x + x * s * sum;
    }
}

} // namespace

VEK_KERNEL_TABLE(LoopKernels, loopKernels) = {
    lessScaled16, lessScaled32f, magnitudes16, moveGain16,       lessPrevious16, lessPrevious32f,   moveUp32f,
    threeTaps,    tilt,          taps32f,      pairCorrelations, slide16,        squaredDistance16, cosines,
};

} // namespace vek
