// What all fuzz targets share: the input as text, and a check that stands in every build.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

inline std::string fuzzText(const uint8_t* data, size_t size) {
    std::string text;
    for (size_t i = 0; i < size && data[i] != 0; ++i) {
        text += static_cast<char>(data[i]);
    }
    return text;
}

/// Ends the process if a promise of the grammar does not hold.
inline void fuzzExpect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
