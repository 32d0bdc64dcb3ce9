// The numbers that the codebooks of the real-time audio codec are made of.
#pragma once

#include <cmath>
#include <cstdint>

namespace vek::rta {

// Sums of four numbers of a linear congruential generator, of variance 1.
class Gauss {
public:
    explicit Gauss(uint32_t seed) : m_seed(seed) {}
    double next() {
        double sum = -2;
        for (int i = 0; i < 4; ++i) {
            m_seed = 1664525U * m_seed + 1013904223U;
            sum += m_seed / 4294967296.0;
        }
        return sum * std::sqrt(3.0);
    }

private:
    uint32_t m_seed;
};

} // namespace vek::rta
