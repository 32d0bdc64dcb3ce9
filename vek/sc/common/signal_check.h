// The checks of arguments that the signal functions share.
#pragma once

#include "vekdefs.h"

namespace vek {

constexpr int kMaxSignalLength = 65536;

template <typename... P>
constexpr bool anyNull(const P*... p) {
    return ((p == nullptr) || ...);
}

constexpr bool badLength(int len) {
    return len < 1 || len > kMaxSignalLength;
}

constexpr bool badScale(int scaleFactor) {
    return scaleFactor < -31 || scaleFactor > 31;
}

constexpr bool isFlag(int v) {
    return v == 0 || v == 1;
}

} // namespace vek
