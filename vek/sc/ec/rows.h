// Rows of subbands, as the filters and the controllers take them: their largest numbers, and whether one is missing.
#pragma once

#include <algorithm>

namespace vek::ec {

constexpr int kMaxSubbands = 4096;
constexpr int kMaxSegments = 256;

template <typename T>
bool rowNull(T* const* rows, int n) {
    return std::any_of(rows, rows + n, [](const T* row) { return row == nullptr; });
}

} // namespace vek::ec
