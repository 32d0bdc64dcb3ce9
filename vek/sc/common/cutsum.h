// The saturating step of filters whose output is the next one's input.
#pragma once

#include <cstdint>

namespace vek {

// The cut sum of what is known beforehand and the share of the last output. A cut that is hardly ever taken costs the
// way from sample to sample nothing; the empty statement keeps the sum of both a plain one, which is a clock shorter.
template <int Shift>
inline int64_t cutSum(int64_t known, int64_t share) {
    __asm__("" : "+r"(known));
    int64_t v = (known + share) >> Shift;
    if (static_cast<uint64_t>(v + 32768) > 65535) [[unlikely]] {
        v = v < 0 ? -32768 : 32767;
    }
    return v;
}

} // namespace vek
