// States of the sub-band ADPCM of G.722: the decoder's are looked at by the concealment too.
#pragma once

#include <cstdint>

namespace vek::g722 {

constexpr int kPoles = 2;
constexpr int kZeros = 6;

// One band: quantiser scale and predictor. Index 0 of a history is the newest.
struct Band {
    int32_t logScale;            // NB
    int32_t scale;               // DET
    int32_t estimate;            // S
    int32_t zeroPart;            // SZ
    int32_t signals[kPoles];     // RLT
    int32_t partials[kPoles];    // PLT
    int32_t differences[kZeros]; // DLT
    int32_t poles[kPoles];
    int32_t zeros[kZeros];
};

struct Bands {
    int32_t started;
    Band low;
    Band high;
};

constexpr int32_t kStarted = 0x47323232;

} // namespace vek::g722
