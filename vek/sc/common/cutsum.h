// Saturation that is hardly ever needed, and the step of filters whose output is the next one's input.
#pragma once

#include <cstdint>

namespace vek {

// Cut to 16 bits. What is hardly ever cut passes by a branch, which costs a chain of steps nothing; the empty statement
// keeps the compiler from making a choice of both values of it.
inline int64_t cut16(int64_t v) {
    if (static_cast<uint64_t>(v + 32768) > 65535) [[unlikely]] {
        v = v < 0 ? -32768 : 32767;
        __asm__("" : "+r"(v));
    }
    return v;
}

// The cut sum of what is known beforehand and the share of the last output. The empty statement keeps the sum of both a
// plain one, which is a clock shorter.
template <int Shift>
inline int64_t cutSum(int64_t known, int64_t share) {
    __asm__("" : "+r"(known));
    return cut16((known + share) >> Shift);
}

} // namespace vek
