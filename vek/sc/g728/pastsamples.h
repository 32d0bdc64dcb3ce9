// The ten samples before a vector, which filters remember.
#pragma once

#include <cstdint>
#include <cstring>

#include "vekdefs.h"

namespace vek::g728 {

// Moves ten samples in the order of time, of any alignment, by five new ones. They are written as two words, of 16 and
// 4 bytes, as a copy of them reads them: a load over several stores would wait until these are in the cache.
inline void moveOn(Vek8u* ten, const Vek16s* five) {
    using Word [[gnu::vector_size(16)]] = uint64_t;
    // One by one, as they were written: the empty statement keeps the compiler from reading neighbours together.
    const auto bits = [five](int k, int at) {
        uint64_t sample = static_cast<uint16_t>(five[k]);
        __asm__("" : "+r"(sample));
        return sample << at;
    };
    uint64_t middle = 0;
    uint32_t last = 0;
    std::memcpy(&middle, ten + 8, sizeof middle);
    std::memcpy(&last, ten + 16, sizeof last);
    const Word older = {middle >> 16 | static_cast<uint64_t>(last) << 48,
                        last >> 16 | bits(0, 16) | bits(1, 32) | bits(2, 48)};
    const auto newest = static_cast<uint32_t>(bits(3, 0) | bits(4, 16));
    std::memcpy(ten, &older, sizeof older);
    std::memcpy(ten + sizeof older, &newest, sizeof newest);
}

} // namespace vek::g728
