// What the tests of G.728 share: states, signals in Q2, and the blocks of the recommendation in double precision.
#pragma once

#include "lp_reference.h"
#include "statememory.h"
#include "veksc.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace g728ref {

using Reals = std::vector<double>;

template <class State>
using Memory = StateMemory<State>;

/// Predictor from reflection coefficients, without its first coefficient.
inline Reals stepUp(const Reals& reflection) {
    Reals a;
    for (const double k : reflection) {
        Reals next = a;
        for (size_t i = 0; i < a.size(); ++i) {
            next[i] += k * a[a.size() - 1 - i];
        }
        next.push_back(k);
        a = next;
    }
    return a;
}

/// A stable predictor of order 50 with two resonances, in Q14.
inline Samples predictor(std::mt19937& random) {
    std::uniform_real_distribution<double> unit(-1, 1);
    Reals k = {-0.75 + 0.15 * unit(random), 0.5 + 0.2 * unit(random)};
    while (k.size() < 50) {
        k.push_back(0.25 * unit(random) * std::pow(0.94, static_cast<double>(k.size())));
    }
    const Reals a = stepUp(k);
    Samples q(50);
    for (size_t i = 0; i < q.size(); ++i) {
        q[i] = static_cast<int16_t>(std::lround(16384 * a[i] * std::pow(253.0 / 256, static_cast<double>(i + 1))));
    }
    return q;
}

/// Weighting filter W(z) = A(z/0.9) / A(z/0.6) of a predictor of order 10, ten zeros and ten poles in Q14.
inline Samples weighting(const Samples& lpc) {
    Samples w(20);
    for (size_t i = 0; i < 10; ++i) {
        w[i] = static_cast<int16_t>(std::lround(lpc[i] * std::pow(0.9, static_cast<double>(i + 1))));
        w[i + 10] = static_cast<int16_t>(std::lround(lpc[i] * std::pow(0.6, static_cast<double>(i + 1))));
    }
    return w;
}

/// The filter of the next order by its reflection coefficient.
inline void stepUp(Reals& a, double k) {
    const Reals before = a;
    for (size_t i = 0; i < a.size(); ++i) {
        a[i] += k * before[a.size() - 1 - i];
    }
    a.push_back(k);
}

/// Levinson-Durbin in double precision; the reflection coefficients come apart.
inline Reals levinson(const Reals& r, size_t order, Reals* reflection = nullptr, double* energy = nullptr) {
    Reals a;
    double e = r[0];
    for (size_t m = 0; m < order; ++m) {
        double sum = r[m + 1];
        for (size_t i = 0; i < m; ++i) {
            sum += a[i] * r[m - i];
        }
        const double k = -sum / e;
        stepUp(a, k);
        e *= 1 - k * k;
        if (reflection != nullptr) {
            reflection->push_back(k);
        }
    }
    if (energy != nullptr) {
        *energy = e;
    }
    return a;
}

/// Ratio of signal and difference in dB.
inline double snr(const Reals& want, const Reals& got) {
    double signal = 0;
    double error = 1e-20;
    for (size_t i = 0; i < want.size(); ++i) {
        signal += want[i] * want[i];
        error += (want[i] - got[i]) * (want[i] - got[i]);
    }
    return 10 * std::log10(signal / error);
}

/// Voiced and unvoiced stretches through moving resonances, magnitudes up to some 3000 in a scale of +-4095.
inline Reals speech(size_t n, unsigned seed = 728) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal(0, 1);
    Reals x(n);
    double y[4] = {};
    double level = 0;
    double next = 0;
    for (size_t i = 0; i < n; ++i) {
        const double t = static_cast<double>(i) / 8000;
        const bool voiced = i / 1600 % 3 != 2;
        level += ((i / 4000 % 4 == 3 ? 2.0 : voiced ? 260.0 : 60.0) - level) * 0.005;
        const double period = 62 + 18 * std::sin(2 * 3.14159265 * 0.7 * t);
        double source = normal(random) * (voiced ? 0.08 : 0.8);
        if (voiced && (next -= 1) <= 0) {
            source += 4;
            next += period;
        }
        double v = source * level;
        const double formant[2] = {520 + 160 * std::sin(5 * t), 1450 + 400 * std::sin(3 * t + 1)};
        const double r[2] = {0.96, 0.92};
        for (int f = 0; f < 2; ++f) {
            const double out = 0.4 * v + 2 * r[f] * std::cos(2 * 3.14159265 * formant[f] / 8000) * y[2 * f] -
                               r[f] * r[f] * y[2 * f + 1];
            y[2 * f + 1] = y[2 * f];
            y[2 * f] = out;
            v = out;
        }
        x[i] = std::min(std::max(v, -4000.0), 4000.0);
    }
    return x;
}

} // namespace g728ref
