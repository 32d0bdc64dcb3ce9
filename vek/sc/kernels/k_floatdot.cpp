// Inner products in single precision.
#include "sc/kernels/floatdot.h"

#include "sc/kernels/registers.h"

namespace vek {
namespace {

constexpr int kShortSum = 16;
constexpr int kSubframe = 40;

#if VEK_LEVEL == 0

constexpr int kBlock = 64;

float dotOfBlock(const float* a, const float* b, int n) {
    constexpr int kSums = 8;
    float sums[kSums] = {};
    int i = 0;
    for (; i + kSums <= n; i += kSums) {
        for (int k = 0; k < kSums; ++k) {
            sums[k] += a[i + k] * b[i + k];
        }
    }
    for (int k = 0; i + k < n; ++k) {
        sums[k] += a[i + k] * b[i + k];
    }
    return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
}

float shortSum(const float* a, const float* b, int n) {
    return dotOfBlock(a, b, n);
}

#else

using namespace registers;

using FourFloats = hn::FixedTag<float, 4>;
using Floats = hn::CappedTag<float, 8>;

constexpr int kBlock = 32 * kLanesOf<Floats>;

// Adds the products behind the last four elements that are whole. Without a loop, which the compiler would spread over
// registers.
VEK_INLINE float plusLastThree(float before, const float* a, const float* b, int n) {
    const int i = n & ~3;
    if (n == i) {
        return before;
    }
    float sum = 0;
    if ((n & 2) != 0) {
        sum = a[i] * b[i] + a[i + 1] * b[i + 1];
    }
    if ((n & 1) != 0) {
        sum += a[n - 1] * b[n - 1];
    }
    return before + sum;
}

// Fewer than kShortSum: a sum of these takes less than setting up the registers of more.
VEK_INLINE float shortSum(const float* a, const float* b, int n) {
    const FourFloats d;
    const auto products = [=](int i) { return hn::LoadU(d, a + i) * hn::LoadU(d, b + i); };
    float sum = 0;
    if (n >= 4) {
        auto four = products(0);
        if (n >= 8) {
            four = four + products(4);
        }
        if (n >= 12) {
            four = four + products(8);
        }
        sum = hn::GetLane(hn::SumOfLanes(d, four));
    }
    return plusLastThree(sum, a, b, n);
}

VEK_INLINE float dotOfBlock(const float* a, const float* b, int n) {
    constexpr int lanes = kLanesOf<Floats>;
    const auto products = [a, b](auto d, int i) { return hn::LoadU(d, a + i) * hn::LoadU(d, b + i); };
    const Floats d;
    auto s0 = hn::Zero(d);
    auto s1 = s0;
    auto s2 = s0;
    auto s3 = s0;
    int i = 0;
    for (; i + 4 * lanes <= n; i += 4 * lanes) {
        s0 = s0 + products(d, i);
        s1 = s1 + products(d, i + lanes);
        s2 = s2 + products(d, i + 2 * lanes);
        s3 = s3 + products(d, i + 3 * lanes);
    }
    if (i + lanes <= n) {
        s0 = s0 + products(d, i);
        i += lanes;
    }
    if (i + lanes <= n) {
        s1 = s1 + products(d, i);
        i += lanes;
    }
    if (i + lanes <= n) {
        s2 = s2 + products(d, i);
        if constexpr (lanes > 4) {
            i += lanes;
        }
    }
    auto four = fourSums((s0 + s1) + (s2 + s3));
    if constexpr (lanes > 4) {
        if (i + 4 <= n) {
            four = four + products(FourFloats(), i);
        }
    }
    return plusLastThree(hn::GetLane(hn::SumOfLanes(FourFloats(), four)), a, b, n);
}

#endif

// A product goes through 15 roundings of a block at the most, each within 2^-24; sums of blocks keep what they have.
VEK_INLINE float longSum(const float* a, const float* b, int n) {
    if (n <= kBlock) {
        return dotOfBlock(a, b, n);
    }
    double sum = 0;
    int i = 0;
    for (; i + kBlock <= n; i += kBlock) {
        sum += static_cast<double>(dotOfBlock(a + i, b + i, kBlock));
    }
    return static_cast<float>(sum + static_cast<double>(dotOfBlock(a + i, b + i, n - i)));
}

// Apart from the short sums, which would have to save its registers.
[[gnu::noinline]] float longDot32f(const float* a, const float* b, int n) {
    return longSum(a, b, n);
}

[[gnu::noinline]] VekStatus longDotTo32f(const float* a, const float* b, int n, float* sum) {
    *sum = longSum(a, b, n);
    return vekStsNoErr;
}

float dot32f(const float* a, const float* b, int n) {
    return n < kShortSum ? shortSum(a, b, n) : longDot32f(a, b, n);
}

VekStatus dotTo32f(const float* a, const float* b, int n, float* sum) {
    static_assert(kSubframe <= kBlock);
    // The straight way is that of the short sums, whose clocks are mostly those of the call.
    if (n == kSubframe) [[unlikely]] {
        *sum = dotOfBlock(a, b, kSubframe);
    } else if (n >= kShortSum) {
        return longDotTo32f(a, b, n, sum);
    } else {
        *sum = shortSum(a, b, n);
    }
    return vekStsNoErr;
}

} // namespace

VEK_KERNEL_TABLE(FloatDotKernels, floatDotKernels) = {dot32f, dotTo32f};

} // namespace vek
