// Noise by its seed, and responses, for the tests against independent codecs.
#pragma once

#include "samples.h"

#include <cmath>
#include <numbers>
#include <numeric>

/// n samples of magnitudes up to `peak`, the same for the same seed.
inline Samples noise(unsigned seed, int n, int peak) {
    std::mt19937 random(seed);
    return noise(random, n, peak);
}

/// Falling cosines, Q15, whose angles lie as far apart as these gaps over half a circle tell.
inline Samples spectralPairs(const std::vector<double>& gaps) {
    const double sum = std::accumulate(gaps.begin(), gaps.end(), 0.0);
    Samples lsp;
    double at = 0;
    for (size_t i = 0; i + 1 < gaps.size(); ++i) {
        at += gaps[i] * std::numbers::pi / sum;
        lsp.push_back(static_cast<int16_t>(std::lround(32767 * std::cos(at))));
    }
    return lsp;
}

/// A decaying impulse response of 40 samples, Q12, with noise up to `level` after its first one.
inline Samples decayingResponse(std::mt19937& random, int level) {
    Samples h = noise(random, 40, -level, level);
    for (size_t i = 1; i < h.size(); ++i) {
        h[i] = static_cast<int16_t>(h[i] * 4 / static_cast<int>(4 + i));
    }
    h[0] = 4096;
    return h;
}
