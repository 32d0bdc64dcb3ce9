// Textbook versions of the filters, with saturation written out in 64 bits, and what else the tests of the signal
// functions share. No code of the library is in it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "kernellevels.h"
#include "nullrefusal.h"
#include "samples.h"

namespace lpref {

inline int64_t clip(int64_t v, int bits) {
    const int64_t top = (int64_t{1} << (bits - 1)) - 1;
    return std::min(std::max(v, -top - 1), top);
}

// Doubled product, then a sum in which each step saturates.
inline int64_t step(int64_t s, int a, int b, int sign) {
    return clip(s + sign * clip(int64_t{2} * a * b, 32), 32);
}

inline int16_t upperRounded(int64_t s, int shift) {
    return static_cast<int16_t>(clip(clip(s << shift, 32) + 0x8000, 32) >> 16);
}

// history: order samples before the first one stand at the head of x.
inline std::vector<int16_t> residual(const std::vector<int16_t>& a, const std::vector<int16_t>& x, int n, int q) {
    const int order = static_cast<int>(a.size()) - 1;
    std::vector<int16_t> y(n);
    for (int i = 0; i < n; i++) {
        int64_t s = 0;
        for (int j = 0; j <= order; j++) {
            s = step(s, a[j], x[order + i - j], 1);
        }
        y[i] = upperRounded(s, 15 - q);
    }
    return y;
}

inline std::vector<int16_t> synthesis(const std::vector<int16_t>& a, const std::vector<int16_t>& x, int q,
                                      const std::vector<int16_t>& memory) {
    const int order = static_cast<int>(a.size()) - 1;
    std::vector<int16_t> y = memory;
    for (size_t i = 0; i < x.size(); i++) {
        int64_t s = step(0, x[i], a[0], 1);
        for (int j = 1; j <= order; j++) {
            s = step(s, a[j], y[y.size() - j], -1);
        }
        y.push_back(upperRounded(s, 15 - q));
    }
    return {y.begin() + order, y.end()};
}

// The same with a sum of 32 bits that wraps.
inline std::vector<int16_t> synthesisWrapping(const std::vector<int16_t>& a, const std::vector<int16_t>& x, int q,
                                              const std::vector<int16_t>& memory) {
    const int order = static_cast<int>(a.size()) - 1;
    std::vector<int16_t> y = memory;
    for (size_t i = 0; i < x.size(); i++) {
        int64_t s = int64_t{x[i]} * a[0];
        for (int j = 1; j <= order; j++) {
            s -= int64_t{a[j]} * y[y.size() - j];
        }
        s += q > 0 ? int64_t{1} << (q - 1) : 0;
        y.push_back(static_cast<int16_t>(clip(static_cast<int32_t>(static_cast<uint32_t>(s)) >> q, 16)));
    }
    return {y.begin() + order, y.end()};
}

// The response of a filter to a pulse: noise that falls off, a subframe of it.
inline std::vector<int16_t> response(std::mt19937& random) {
    std::vector<int16_t> h = noise(random, 40, -3000, 3000);
    for (size_t i = 1; i < h.size(); ++i) {
        h[i] = static_cast<int16_t>(h[i] * 5 / static_cast<int>(5 + i));
    }
    h[0] = 4096;
    return h;
}

// The response of G.723.1, a subframe of it, as far as it rings out.
inline std::vector<int16_t> decaying(std::mt19937& random) {
    std::vector<int16_t> h = noise(random, 60, -5000, 5000);
    for (size_t i = 0; i < 60; ++i) {
        h[i] = static_cast<int16_t>(h[i] * std::exp(-0.08 * static_cast<double>(i)));
    }
    h[0] = 8192;
    return h;
}

// Pulses of a period that ring out.
inline std::vector<int16_t> pulses(int period, int level, size_t n) {
    std::vector<int16_t> x(n);
    for (size_t i = 0; i < n; ++i) {
        const double phase = static_cast<double>(i % static_cast<size_t>(period));
        x[i] = static_cast<int16_t>(std::lround(level * std::exp(-phase / 4) * std::cos(0.8 * phase)));
    }
    return x;
}

template <class A, class B>
double dot(const A& a, const B& b) {
    double sum = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        sum += static_cast<double>(a[i]) * b[i];
    }
    return sum;
}

template <class X>
double energy(const X& x) {
    return dot(x, x);
}

// The signal over what y makes of it otherwise, in dB, from y[from] on; y comes `delay` samples after x.
template <class X, class Y>
double signalToError(const X& x, const Y& y, size_t from, size_t delay = 0) {
    double signal = 0;
    double error = 0;
    for (size_t i = from; i < y.size(); ++i) {
        const double sample = x[i - delay];
        signal += sample * sample;
        error += (y[i] - sample) * (y[i] - sample);
    }
    return 10 * std::log10(signal / error);
}

// As long as x.
template <class X, class H>
std::vector<double> convolved(const X& x, const H& h) {
    std::vector<double> y(x.size());
    for (size_t i = 0; i < y.size(); ++i) {
        for (size_t j = 0; j <= i; ++j) {
            y[i] += static_cast<double>(x[j]) * h[i - j];
        }
    }
    return y;
}

// The modified Bessel function of order 0, of which windows are made.
inline double bessel(double x) {
    return std::cyl_bessel_i(0.0, x);
}

/// That y is the exact values, saturated, within a tolerance.
inline void expectSaturated(const std::vector<double>& exact, const std::vector<int16_t>& y, double tolerance) {
    for (size_t i = 0; i < y.size(); ++i) {
        ASSERT_NEAR(std::min(32767.0, std::max(-32768.0, exact[i])), y[i], tolerance) << i << " of " << y.size();
    }
}

inline double dot(const int16_t* a, const int16_t* b, int n) {
    double sum = 0;
    for (int i = 0; i < n; ++i) {
        sum += double{1} * a[i] * b[i];
    }
    return sum;
}

} // namespace lpref
