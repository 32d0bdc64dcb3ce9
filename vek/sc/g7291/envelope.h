// What the functions of the band extension share: sizes, and logarithms and powers of envelopes in Q10.
#pragma once

#include <cstdint>

#include "sc/common/fixmath.h"
#include "sc/common/logarithm.h"
#include "sc/kernels/bandlevels.h"

namespace vek::g7291 {

using namespace fix;

constexpr int kFrame = 160;
constexpr int kSegment = kLevelSegment;
constexpr int kSegments = kFrame / kSegment;
constexpr int kHalfSegments = kSegments / 2;
constexpr int kBands = 12;
constexpr int kAnalysis = 128; // samples of a frequency envelope
constexpr int kEnvelopeOne = 1024;
constexpr int kEnvelopeBits = 10;

// 2^(x + bits), rounded, for an x in Q10 that keeps it within 2^30.
inline int32_t power(int32_t x, int bits) {
    return fix::Pow2((x >> kEnvelopeBits) + bits, static_cast<int16_t>((x & (kEnvelopeOne - 1)) << 5));
}

// Root of x, rounded, by logarithm and power.
inline int32_t root(int32_t x) {
    if (x <= 0) {
        return 0;
    }
    const int32_t half = fix::log2Q15(x) >> 1;
    return fix::Pow2(half >> 15, static_cast<int16_t>(half & 0x7fff));
}

// Frequency envelope of kAnalysis samples, kBands values, not below 0.
void frequencyEnvelope(const int16_t* x, int16_t* envelope);

} // namespace vek::g7291
