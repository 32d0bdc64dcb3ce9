// Normalised correlations of the closed-loop pitch searches.
#include "sc/common/pitchcorr.h"

#include <algorithm>
#include <utility>

#include "sc/common/fixmath.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/filter.h"
#include "veksc_filter.h"

using namespace vek;
using namespace vek::fix;

namespace {

constexpr int kSubframe = 40;

int32_t product(const int16_t* a, const int16_t* b, int n = kSubframe) {
    return sat32(2 * corrKernels().dot16(a, b, n));
}

} // namespace

void vek::convolveSubframe(const int16_t* x, const int16_t* h, int16_t* y) {
    const auto energyX = static_cast<double>(corrKernels().dot16(x, x, kSubframe));
    const auto energyH = static_cast<double>(corrKernels().dot16(h, h, kSubframe));
    if (energyX * energyH < 1.0e18) { // no sum reaches 2^30
        int16_t padded[2 * kSubframe] = {};
        int32_t sums[kSubframe];
        std::copy_n(x, kSubframe, padded + kSubframe);
        filterKernels().fir32(h, kSubframe - 1, padded + kSubframe, sums, kSubframe);
        for (int n = 0; n < kSubframe; ++n) {
            y[n] = sat16(sums[n] >> 12);
        }
        return;
    }
    int16_t turned[kSubframe];
    std::reverse_copy(h, h + kSubframe, turned);
    for (int n = 0; n < kSubframe; ++n) {
        y[n] = extract_h(L_shl(product(x, turned + kSubframe - 1 - n, n + 1), 3));
    }
}

void vek::pitchCorrelations(const int16_t* exc, const int16_t* target, const int16_t* h, int first, int last,
                            int16_t* out) {
    int16_t buffers[2][kSubframe];
    int16_t* y = buffers[0];
    int16_t* longer = buffers[1];
    convolveSubframe(exc - first, h, y);
    const bool strong = product(y, y) > 67108864;
    const int drop = strong ? 2 : 0;
    if (strong) {
        for (int i = 0; i < kSubframe; ++i) {
            y[i] = static_cast<int16_t>(y[i] >> 2);
        }
    }
    for (int delay = first; delay <= last; ++delay) {
        int32_t root = product(y, y);
        veksInvSqrt_32s_I(&root, 1);
        int16_t high = 0;
        int16_t low = 0;
        int16_t rootHigh = 0;
        int16_t rootLow = 0;
        L_Extract(product(target, y), high, low);
        L_Extract(root, rootHigh, rootLow);
        out[delay - first] = extract_h(L_shl(Mpy_32(high, low, rootHigh, rootLow), 16));
        // One sample more of delay: the response goes one on and takes in one sample of the past.
        const int16_t fresh = exc[-delay - 1];
        const int scaled = fresh * (8 >> drop);
        if (sat16(scaled) == scaled) {
            filterKernels().addScaled(y, h + 1, scaled, longer + 1, kSubframe - 1, 0);
        } else {
            for (int j = kSubframe - 1; j > 0; --j) {
                longer[j] = sat16(sat16((fresh * h[j]) >> (12 + drop)) + y[j - 1]);
            }
        }
        longer[0] = static_cast<int16_t>(fresh >> drop);
        std::swap(y, longer);
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
