// Companding of G.711: codes of A-law and mu-law and their values, left justified in 16 bits.
#pragma once

#include <bit>
#include <cstdint>

namespace vek::g711 {

inline int alawValue(uint8_t code) {
    const int bits = code ^ 0x55;
    const int segment = (bits >> 4) & 7;
    int value = ((bits & 15) << 4) + 8;
    if (segment > 0) {
        value = (value + 256) << (segment - 1);
    }
    return (bits & 0x80) != 0 ? value : -value;
}

inline uint8_t alawCode(int value) {
    const int mask = value >= 0 ? 0xd5 : 0x55;
    const int magnitude = value >= 0 ? value : -value - 1;
    const int segment = magnitude < 256 ? 0 : std::bit_width(static_cast<unsigned>(magnitude)) - 8;
    const int step = segment == 0 ? 4 : segment + 3;
    const int code = segment > 7 ? 0x7f : segment << 4 | ((magnitude >> step) & 15);
    return static_cast<uint8_t>(code ^ mask);
}

inline int mulawValue(uint8_t code) {
    const int bits = code ^ 0xff;
    const int value = ((((bits & 15) << 3) + 132) << ((bits >> 4) & 7)) - 132;
    return (bits & 0x80) != 0 ? -value : value;
}

inline uint8_t mulawCode(int value) {
    const int mask = value >= 0 ? 0xff : 0x7f;
    const int magnitude = 132 + (value >= 0 ? value : -value);
    const int segment = std::bit_width(static_cast<unsigned>(magnitude | 0xff)) - 8;
    const int code = segment > 7 ? 0x7f : segment << 4 | ((magnitude >> (segment + 3)) & 15);
    return static_cast<uint8_t>(code ^ mask);
}

} // namespace vek::g711
