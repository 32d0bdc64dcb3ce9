// What the plain loops share. The files of this folder are compiled with -O3, and with -DPEERS_MARCH=... a second time
// with -march=..., so that a function's definition written down as it reads stands beside it in both builds.
#pragma once

#include "peers.h"
#include "veksc.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

// A call that is neither drawn into the loop that measures it nor fitted to its arguments there.
#ifdef __clang__
#define PLAIN __attribute__((noinline))
#else
#define PLAIN __attribute__((noipa))
#endif

namespace {

[[maybe_unused]] Vek16s narrow(int64_t v) {
    return static_cast<Vek16s>(std::clamp<int64_t>(v, -32768, 32767));
}

// v / 2^shift to the nearest, saturated.
[[maybe_unused]] Vek16s rounded(int32_t v, int shift) {
    return narrow((v + ((1 << shift) >> 1)) >> shift);
}

} // namespace
