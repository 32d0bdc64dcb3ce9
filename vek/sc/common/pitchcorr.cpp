// Normalised correlations of the closed-loop pitch searches.
#include "sc/common/pitchcorr.h"

#include <algorithm>

#include "sc/common/correlate.h"
#include "sc/common/fixmath.h"
#include "sc/g729/sizes.h"
#include "sc/kernels/corr.h"
#include "veksc_filter.h"

using namespace vek::fix;

namespace {

using g729::kSubframe;

int32_t product(const int16_t* a, const int16_t* b, int n = kSubframe) {
    return sat32(2 * corrKernels().dot16(a, b, n));
}

} // namespace

void vek::convolveSubframe(const int16_t* x, const int16_t* h, int16_t* y) {
    convolve(x, h, kSubframe, [y](int n, auto sum) {
        if constexpr (sizeof sum == sizeof(int32_t)) {
            y[n] = sat16(sum >> 12);
        } else {
            y[n] = sat16_64(sum >> 12);
        }
    });
}

// The sums of all delays where they do not fit 32 bits, saturated.
static void saturatedSums(const int16_t* past, const int16_t* h, int q, int16_t* y, const int16_t* target, int count,
                          int32_t* cross, int32_t* energy) {
    for (int k = 0; k < count; ++k) {
        cross[k] = product(target, y);
        energy[k] = product(y, y);
        for (int j = kSubframe - 1; j > 0; --j) {
            y[j] = sat16(sat16((past[-k] * h[j]) >> q) + y[j - 1]);
        }
        y[0] = sat16((past[-k] * h[0]) >> q);
    }
}

void vek::pitchCorrelations(const int16_t* exc, const int16_t* target, const int16_t* h, int first, int last,
                            int16_t* out) {
    int16_t y[kSubframe];
    convolveSubframe(exc - first, h, y);
    // A delay more: the response goes one on and takes in a sample of the past, unscaled at its own place.
    int16_t response[kSubframe];
    std::copy_n(h, kSubframe, response);
    response[0] = 4096;
    int q = 12;
    if (product(y, y) > 67108864) {
        q = 14;
        for (int16_t& v : y) {
            v = static_cast<int16_t>(v >> 2);
        }
    }
    const int count = last - first + 1;
    const int16_t* const past = exc - first - 1;
    int32_t cross[kMostPitchDelays];
    int32_t energy[kMostPitchDelays];
    if (corrKernels().delayed16(past, response, q, y, target, kSubframe, count, cross, energy)) {
        for (int k = 0; k < count; ++k) {
            cross[k] *= 2;
            energy[k] *= 2;
        }
    } else {
        saturatedSums(past, response, q, y, target, count, cross, energy);
    }
    veksInvSqrt_32s_I(energy, count);
    for (int k = 0; k < count; ++k) {
        out[k] = extract_h(L_shl(Mpy_32(cross[k], energy[k]), 16));
    }
}

int16_t vek::pitchCorrelationBetween(const int16_t* x, int sixths) {
    constexpr int16_t sinc[25] = {29519, 28316, 24906, 19838, 13896, 7945, 2755, -1127, -3459,
                                  -4304, -3969, -2899, -1561, -336,  534,  970,  1023,  823,
                                  516,   220,   0,     -131,  -194,  -215, 0};
    if (sixths < 0) {
        sixths += 6;
        --x;
    }
    int32_t sum = 0;
    for (int i = 0; i < kPitchMargin; ++i) {
        sum = L_mac(sum, x[-i], sinc[sixths + 6 * i]);
        sum = L_mac(sum, x[1 + i], sinc[6 - sixths + 6 * i]);
    }
    return round_s(sum);
}
