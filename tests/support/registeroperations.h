// The operations of the kernels' registers over whole vectors, compiled once for each level as the kernels are.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

constexpr int kResults = 256;

/// n is a multiple of what the longest register holds, 32 elements of 16 bits.
struct RegisterOperations {
    /// Bytes of a register; 0 at the plain level.
    int bytes;
    /// sum[k] += a[2k] * b[2k] + a[2k+1] * b[2k+1], modulo 2^32.
    void (*plusPairs)(const int16_t* a, const int16_t* b, int32_t* sum, int n);
    void (*pairSums)(const int16_t* a, const int16_t* b, int32_t* out, int n);
    /// (a * b) >> 15, two of -32768 as -32768.
    void (*multCut)(const int16_t* a, const int16_t* b, int16_t* out, int n);
    void (*addSaturated)(const int16_t* a, const int16_t* b, int16_t* out, int n);
    /// (a * 32767 - b) >> shift, saturated, by way of pairs from both and 32 bits.
    void (*combined)(const int16_t* a, const int16_t* b, int16_t* out, int n, int shift);
    /// (a * b + half) >> shift, saturated.
    void (*multShifted)(const int16_t* a, const int16_t* b, int16_t* out, int n, int half, int shift);
    /// Differences of a and b, of any n; the place may be that of a or b.
    void (*filled)(const int16_t* a, const int16_t* b, int16_t* out, int n);
    /// The elements as they are, each from the first lane of a register of its own.
    void (*firstLanes)(const int16_t* a, int16_t* out, int n);
    /// To 64 bits, of eight at a time.
    void (*widened)(const float* a, double* out, int n);
    /// The four of each four in their order, each by itself.
    void (*lanes)(const int32_t* a, int32_t* out, int n);
    /// The elements of each eight in the opposite order.
    void (*reversed)(const int16_t* a, int16_t* out, int n);
    /// The sum of each eight, the lower and the upper four added first.
    void (*eightSums)(const float* a, float* out, int n);
    /// The least of all and where it stands first.
    int (*least)(const int32_t* a, int n, int32_t* value);
    int (*leastUnsigned)(const uint32_t* a, int n, uint32_t* value);
    /// The operations on eight and on four numbers, what they give one behind the other. x has 64 elements or 16, of
    /// which the second half of the first 32 are factors in Q30; out has kResults, filled as far as there are results.
    void (*eightIntegers)(const int32_t* x, int32_t* out);
    void (*eightPairs)(const int16_t* x, int32_t* out);
    void (*eightFloats)(const float* x, float* out);
    void (*fourFloats)(const float* x, float* out);
    void (*fourDoubles)(const double* x, double* out);
};

VEK_KERNEL_PICK(RegisterOperations, registerOperations)

} // namespace vek
