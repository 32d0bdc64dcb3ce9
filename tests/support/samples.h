// Signals as the tests have them, and uniform noise: the same for the same state of the generator.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

using Samples = std::vector<int16_t>;
using Floats = std::vector<float>;

inline int pick(std::mt19937& random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

/// n samples from low to high.
inline Samples noise(std::mt19937& random, int n, int low, int high) {
    Samples x(static_cast<size_t>(n));
    for (int16_t& v : x) {
        v = static_cast<int16_t>(pick(random, low, high));
    }
    return x;
}

/// n samples of magnitudes up to `peak`.
inline Samples noise(std::mt19937& random, int n, int peak) {
    return noise(random, n, -peak, peak);
}

inline Floats floats(std::mt19937& random, size_t n, float peak) {
    std::uniform_real_distribution<float> any(-peak, peak);
    Floats x(n);
    for (float& v : x) {
        v = any(random);
    }
    return x;
}
