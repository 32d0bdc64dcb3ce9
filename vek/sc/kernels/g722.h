// Kernels of the sub-band ADPCM of G.722: stretches of samples through both bands.
#pragma once

#include "sc/g722/subband.h"
#include "sc/kernels/kernels.h"

namespace vek {

struct G722Kernels {
    // n pairs of a sample of the low and one of the high band, and their codes, 8 bits; mode 1 to 3.
    void (*encode)(g722::Bands& bands, const int16_t* x, int16_t* codes, int n);
    void (*decode)(g722::Bands& bands, const int16_t* codes, int16_t* y, int n, int mode);
};

VEK_KERNEL_PICK(G722Kernels, g722Kernels)

} // namespace vek
