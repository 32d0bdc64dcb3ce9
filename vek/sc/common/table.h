// Tables of a formula, computed once, at load.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

namespace vek {

/// f(0), f(1), ... with `bits` bits behind the point, rounded and saturated.
template <class T, size_t Length, class F>
std::array<T, Length> tableOf(int bits, F f) {
    using Limits = std::numeric_limits<T>;
    std::array<T, Length> table{};
    for (size_t n = 0; n < Length; ++n) {
        const auto value = std::llround(std::ldexp(f(static_cast<int>(n)), bits));
        table[n] = static_cast<T>(std::clamp<long long>(value, Limits::min(), Limits::max()));
    }
    return table;
}

/// The rising half of a sine window.
template <class T, size_t Half>
std::array<T, Half> sineWindow(int bits) {
    return tableOf<T, Half>(bits, [](int n) { return std::sin(std::numbers::pi * (n + 0.5) / (2 * Half)); });
}

} // namespace vek
