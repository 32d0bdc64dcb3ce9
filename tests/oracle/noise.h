// Uniform noise for the tests against independent codecs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

inline int pick(std::mt19937& random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

/// n samples from low to high.
inline std::vector<int16_t> noise(std::mt19937& random, int n, int low, int high) {
    std::vector<int16_t> v(static_cast<size_t>(n));
    for (int16_t& e : v) {
        e = static_cast<int16_t>(pick(random, low, high));
    }
    return v;
}

/// n samples of magnitudes up to `peak`, the same for the same seed.
inline std::vector<int16_t> noise(unsigned seed, int n, int peak) {
    std::mt19937 random(seed);
    return noise(random, n, -peak, peak);
}

/// A decaying impulse response of 40 samples, Q12, with noise up to `level` after its first one.
inline std::vector<int16_t> decayingResponse(std::mt19937& random, int level) {
    std::vector<int16_t> h = noise(random, 40, -level, level);
    for (size_t i = 1; i < h.size(); ++i) {
        h[i] = static_cast<int16_t>(h[i] * 4 / static_cast<int>(4 + i));
    }
    h[0] = 4096;
    return h;
}
