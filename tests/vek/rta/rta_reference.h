// What the tests of the real-time audio functions share: noise, and the numbers of the codebooks.
#pragma once

#include "lp_reference.h"
#include "statememory.h"

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace rtaref {

using Doubles = std::vector<double>;

constexpr double kPi = std::numbers::pi;

inline Floats floatNoise(std::mt19937& random, size_t n, double low, double high) {
    std::uniform_real_distribution<double> pick(low, high);
    Floats x(n);
    for (float& v : x) {
        v = static_cast<float>(pick(random));
    }
    return x;
}

// The numbers of the codebooks by their rule.
class Gauss {
public:
    explicit Gauss(uint32_t seed) : m_seed(seed) {}
    double next() {
        double sum = 0;
        for (int i = 0; i < 4; ++i) {
            m_seed = m_seed * 1664525U + 1013904223U;
            sum += m_seed / 0x1p32 - 0.5;
        }
        return sum / std::sqrt(4.0 / 12);
    }

private:
    uint32_t m_seed;
};

} // namespace rtaref
