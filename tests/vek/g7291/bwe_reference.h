// What the tests of G.729.1's band extension share: signals, levels, and the frequency envelope in double precision.
// Shares no code with the library.
#pragma once

#include "lp_reference.h"
#include "veksc.h"

#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

namespace bwe {

using Energies = std::vector<int32_t>;
using Doubles = std::vector<double>;
using lpref::clip;

constexpr double kPi = std::numbers::pi;

inline Samples white(std::mt19937& random, int n, double level) {
    std::normal_distribution<double> normal(0, level);
    Samples x(n);
    for (int16_t& v : x) {
        v = static_cast<int16_t>(clip(std::lround(normal(random)), 16));
    }
    return x;
}

inline double energy(const int16_t* x, int n) {
    double sum = 0;
    for (int i = 0; i < n; ++i) {
        sum += double{1} * x[i] * x[i];
    }
    return sum;
}

inline double level(const Samples& x) {
    return std::sqrt(energy(x.data(), static_cast<int>(x.size())) / static_cast<double>(x.size()));
}

inline Samples timeEnvelope(const Samples& x, int nls = 0) {
    Samples t(x.size() / 10);
    EXPECT_EQ(vekStsNoErr, veksEnvelopTime_G7291_16s(x.data(), nls, t.data(), static_cast<int>(t.size())));
    return t;
}

// Frequency values of 128 samples, folded to 64 after the window.
inline Doubles bands(const int16_t* x) {
    Doubles folded(64, 0.0);
    for (int n = 0; n < 128; ++n) {
        const double turn = n < 72 ? n / 143.0 : (n - 16) / 111.0;
        folded[n % 64] += x[n] * (0.5 - 0.5 * std::cos(2 * kPi * turn));
    }
    Doubles power(25);
    for (int k = 0; k < 25; ++k) {
        std::complex<double> sum = 0;
        for (int n = 0; n < 64; ++n) {
            sum += folded[n] * std::polar(1.0, -2 * kPi * k * n / 64);
        }
        power[k] = std::norm(sum);
    }
    Doubles f(12);
    for (int j = 0; j < 12; ++j) {
        f[j] = std::max(0.5 * std::log2(power[2 * j] / 2 + power[2 * j + 1] + power[2 * j + 2] / 2 + 1e-9), 0.0);
    }
    return f;
}

inline Samples bandEnvelope(const Samples& x) {
    Samples f(12);
    EXPECT_EQ(vekStsNoErr, veksEnvelopFrequency_G7291_16s(x.data(), f.data()));
    return f;
}

} // namespace bwe
