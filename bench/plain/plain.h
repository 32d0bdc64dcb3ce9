// What the plain loops share: functions' definitions, written down as they read. Those of loops/ are a shared object,
// for them to be called as the library is, from the program by its table of addresses. They are compiled with -O3, and
// with -DPEERS_MARCH=... a second time with -march=..., so that rows of this folder stand beside them in both builds.
#pragma once

#include "vekdefs.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

[[maybe_unused]] Vek16s narrow(int64_t v) {
    return static_cast<Vek16s>(std::clamp<int64_t>(v, -32768, 32767));
}

// v / 2^shift to the nearest, saturated.
[[maybe_unused]] Vek16s rounded(int32_t v, int shift) {
    return narrow((v + ((1 << shift) >> 1)) >> shift);
}

} // namespace
