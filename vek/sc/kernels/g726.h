// Kernels of the ADPCM of G.726: stretches of samples through a codec.
#pragma once

#include "sc/g726/quantiser.h"
#include "sc/kernels/kernels.h"

namespace vek {

// What a decoded sample comes from.
struct G726Sample {
    int16_t signal;   // SR
    int16_t estimate; // SE
    int16_t scale;    // Y
};

struct G726Kernels {
    void (*encode)(g726::Codec& codec, const int16_t* x, uint8_t* codes, int n);
    // Of a code the lower bits of the rate count.
    void (*decode)(g726::Codec& codec, const uint8_t* codes, G726Sample* samples, int n);
};

VEK_KERNEL_PICK(G726Kernels, g726Kernels)

} // namespace vek
