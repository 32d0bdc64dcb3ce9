// Kernels of single loops, most of which the compiler spreads over the registers of each level by itself: what is done
// to each sample of a subframe, filters of a fixed number of taps, correlations of pairs, cosines. The same integers
// and floats at all levels.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"
#include "vekdefs.h"

namespace vek {

constexpr int kLoopSubframe = 40;
constexpr int kLoopTaps = 20;
constexpr int kLeastOutputs = 8;
constexpr int kPairs = 30;
constexpr int kPairRow = 32;

// The factors of two vectors, and what a sum of products then goes through: (sum + half) >> shift. Each is handed over
// in one register, so that a public function of seven arguments can end with a jump to the kernel.
struct Weights {
    int16_t first, second;
};
struct Rounding {
    int32_t shift, half;
};

// Of two codebooks so many entries from the first one looked at: what they add to the adaptive gain and to the factor
// of the fixed one.
struct GainEntries {
    const double* adaptive;
    const double* factor;
    int count;
};
constexpr int kMostGainEntries = 8;
// The distance of numbers of pairs that differ in the first entry by one.
constexpr int kGainPairRow = kMostGainEntries;

struct LoopKernels {
    // y[i] = sat16(x[i] - sat16((d[i] * g) >> 14)), kLoopSubframe samples; y may be x. Gives vekStsNoErr, for a public
    // function to end with a jump to it.
    VekStatus (*lessScaled16)(int g, const int16_t* d, const int16_t* x, int16_t* y);
    // y[i] = x[i] - g * d[i], as above.
    VekStatus (*lessScaled32f)(float g, const float* d, const float* x, float* y);
    // Sum of |x[i]|, kLoopSubframe samples.
    int32_t (*magnitudes16)(const int16_t* x);
    // g = ((g * keep) >> 15) + fresh, x[i] = sat16((x[i] * g + half) >> shift), kLoopSubframe samples; returns the last
    // g. keep is 0..32768, and from a g of 0..32767 on all are.
    int (*moveGain16)(int16_t* x, int g, int keep, int fresh, Rounding rounding);
    // x[i] = x[i] - g * x[i-1] of what x held before, x[-1] being `before`; gives the last of what it held. Integers:
    // the product in Q15 and cut off, the difference saturated, g above -32768.
    int16_t (*lessPrevious16)(int16_t* x, int16_t before, int g, int n);
    float (*lessPrevious32f)(float* x, float before, float g, int n);
    // Likewise x[i] = sat16((x[i] * 2^15 - g * x[i-1] + half) >> shift), half at most 2^14, g of 16 bits.
    int16_t (*lessWeighted16)(int16_t* x, int16_t before, int g, Rounding rounding, int n);
    // y[i] = y[i-1] + v * h[i], i = 1..n-1, of what y held before, y[0] = v * h[0]. Gives vekStsNoErr.
    VekStatus (*moveUp32f)(float* y, const float* h, float v, int n);
    // y[i] = sat16((x1[i] * first + x2[i] * second + half) >> shift), y may be x1 or x2; no sum leaves 32 bits. Gives
    // vekStsNoErr.
    VekStatus (*weighted16)(const int16_t* x1, Weights weights, const int16_t* x2, Rounding rounding, int16_t* y,
                            int n);
    // y[i] = x1[i] * v1 + x2[i] * v2, y may be x1 or x2. Gives vekStsNoErr.
    VekStatus (*weighted32f)(const float* x1, float v1, const float* x2, float v2, float* y, int n);
    // y[i] = x[i] + b * d[i], y may be x or d. Gives vekStsNoErr.
    VekStatus (*addScaled32f)(const float* x, const float* d, float b, float* y, int n);
    // y[i] = sat16((side * (x[i-1] + x[i+1]) + middle * x[i] + 2^14) >> 15), y apart from x; side and middle have 16
    // bits, 2 |side| + |middle| is 2^15 at most.
    void (*threeTaps)(int side, int middle, const int16_t* x, int16_t* y, int n);
    // y[i] = sat16(((x[i] * 2^15 + mu * x[i-1]) * gain + 2^28) >> 29), kLoopSubframe samples; y may be x. |mu| is below
    // 2^15, gain at most 2^18.
    void (*tilt)(const int16_t* x, int mu, int gain, int16_t* y);
    // y[i] = sum of taps[j] * x[i+j], kLoopTaps of them one after the other. n is at least kLeastOutputs, and y begins
    // behind the last sample that is read.
    void (*taps32f)(const float* x, const float* taps, float* y, int n);
    // rows[p * kPairRow + d] = sum of h[2q] * h[2q+2d] + h[2q+1] * h[2q+2d+1], q = 0..p, modulo 2^32, for p =
    // 0..kPairs-1 and d = 0..kPairs-1-p; what else a row holds is not defined.
    void (*pairCorrelations)(const int16_t* h, int32_t* rows);
    // Sum of the squares of x[i] - y[i].
    int64_t (*squaredDistance16)(const int16_t* x, const int16_t* y, int n);
    // Cosines of n angles, an even number, within 10^-11 where it tells that all are between 0 and 3.15.
    bool (*cosines)(const float* angles, int n, double* c);
    // The number of the pair (first entry times kGainPairRow plus second one) of least error: terms are yy, -2xy, zz,
    // -2xz, 2yz of a * (a * yy + xy) + f * (f * zz + xz + a * yz), where a is the sum of both adaptive gains and f that
    // of both factors, times predicted. Only pairs of an a below the bound count; of equal ones the first one, and
    // without any number 0. There are kMostGainEntries of each at the most, and four second ones
    // at least.
    int (*leastGainPair)(const float* terms, double predicted, GainEntries first, GainEntries second, double bound);
};

VEK_KERNEL_PICK(LoopKernels, loopKernels)

} // namespace vek
