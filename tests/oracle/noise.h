// Uniform noise for the tests against independent codecs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

/// n samples from low to high.
inline std::vector<int16_t> noise(std::mt19937& random, int n, int low, int high) {
    std::uniform_int_distribution<int> pick(low, high);
    std::vector<int16_t> v(static_cast<size_t>(n));
    for (int16_t& e : v) {
        e = static_cast<int16_t>(pick(random));
    }
    return v;
}
