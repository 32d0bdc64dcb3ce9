// The codes of vectors of quantised MLT coefficients.
#pragma once

#include <cstdint>

namespace vek::g722 {

struct HuffmanWord {
    uint16_t code;
    uint8_t bits;
};

struct HuffmanCategory {
    int dimension;
    int largest; // of a component
    const HuffmanWord* words;
};

extern const HuffmanCategory kHuffman[7];

} // namespace vek::g722
