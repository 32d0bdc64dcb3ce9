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

/// What most signal functions check first: their pointers, then the length.
template <typename... P>
constexpr VekStatus checkSignal(int len, const P*... p) {
    return anyNull(p...) ? vekStsNullPtrErr : badLength(len) ? vekStsSizeErr : vekStsNoErr;
}

constexpr bool badScale(int scaleFactor) {
    return scaleFactor < -31 || scaleFactor > 31;
}

constexpr bool isFlag(int v) {
    return v == 0 || v == 1;
}

} // namespace vek
