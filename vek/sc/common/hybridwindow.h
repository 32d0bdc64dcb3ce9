// Shape of the hybrid windows of backward prediction: a sine over the newest samples and a falling exponential over all
// before, which meet with the same value and the same slope.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "sc/common/table.h"

namespace vek {

// sin(c age) for the `newest` samples, else sin(c (newest+1)) e^(logAlpha (age-newest-1)), where c solves
// c / tan(c (newest+1)) = logAlpha. The last element has age 1.
template <size_t span>
std::array<double, span> hybridWindow(int newest, double logAlpha) {
    double low = 1.5708 / (newest + 1);
    double high = 3.1415 / (newest + 1);
    for (int i = 0; i < 60; ++i) {
        const double c = (low + high) / 2;
        (c / std::tan((newest + 1) * c) > logAlpha ? low : high) = c;
    }
    std::array<double, span> w{};
    for (size_t n = 0; n < span; ++n) {
        const int age = static_cast<int>(span - n);
        w[n] = age <= newest ? std::sin(low * age)
                             : std::sin(low * (newest + 1)) * std::exp(logAlpha * (age - newest - 1));
    }
    return w;
}

// In Q15.
template <size_t span>
std::array<int16_t, span> rounded(const std::array<double, span>& window) {
    return tableOf<int16_t, span>(15, [&window](int n) { return window[static_cast<size_t>(n)]; });
}

} // namespace vek
