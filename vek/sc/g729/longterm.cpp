// The long-term post filter of the main body: the delay in eighths of a sample around the decoded one, and how much of
// the delayed residual is mixed in.
#include <algorithm>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/g729/postfilter.h"
#include "sc/g729/sizes.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/filter.h"

namespace {

using namespace vek::g729;

constexpr int kHistory = 152;
constexpr int kPhases = 8;
constexpr int kShortTaps = 2;
constexpr int kLongTaps = 8;

// Halves of the interpolation filters of 33 and 129 taps, Q15, at eighths of a sample from the centre: the published
// figures; the centre itself is not used.
constexpr Vek16s kShortFilter[kShortTaps * kPhases] = {
    0, 31650, 28469, 23705, 18050, 12266, 7041, 2873, 0, -1597, -2147, -1992, -1492, -933, -484, -188,
};
constexpr Vek16s kLongFilter[kLongTaps * kPhases] = {
    0, 31915, 29436, 25569, 20676, 15206, 9639, 4439, 0, -3390, -5579, -6549, -6414, -5392, -3773, -1874,
    0, 1595,  2727,  3303,  3319,  2850,  2030, 1023, 0, -887,  -1527, -1860, -1876, -1614, -1150, -579,
    0, 501,   859,   1041,  1044,  892,   631,  315,  0, -266,  -453,  -543,  -538,  -455,  -317,  -156,
    0, 130,   218,   258,   253,   212,   147,  72,   0, -59,   -101,  -122,  -123,  -106,  -77,   -40,
};

// y[i] = x at i + phase / 8, i = 0..n-1; x[-(taps-1)..n-1+taps] is read. phase 1..7.
void between(const Vek16s* x, int phase, const Vek16s* filter, int taps, Vek16s* y, int n) {
    Vek16s kernel[2 * kLongTaps];
    for (int k = 0; k < taps; ++k) {
        kernel[taps + k] = filter[kPhases * k + phase];
        kernel[taps - 1 - k] = filter[kPhases * (k + 1) - phase];
    }
    // The kernel's first tap meets the newest sample.
    filterKernels().fir16(kernel, 2 * taps - 1, x + taps, y, n, 15);
}

// Correlation with the delayed signal and its energy.
struct Match {
    int64_t correlation;
    int64_t energy;

    Match(const Vek16s* x, const Vek16s* delayed)
        : correlation(corrKernels().dot16(x, delayed, kSubframe)),
          energy(corrKernels().dot16(delayed, delayed, kSubframe)) {}

    // By normalised correlation; a correlation that is not above zero is worse than any other.
    bool betterThan(const Match& other) const {
        if (correlation <= 0 || energy == 0) {
            return false;
        }
        const auto mine = static_cast<double>(correlation);
        const auto theirs = static_cast<double>(other.correlation);
        return mine * mine * static_cast<double>(other.energy) > theirs * theirs * static_cast<double>(energy);
    }
    // Half of the energy or more is predicted.
    bool predicts(int64_t whole) const {
        const auto c = static_cast<double>(correlation);
        return correlation > 0 && 2 * c * c >= static_cast<double>(energy) * static_cast<double>(whole);
    }
};

int wholeDelay(const Vek16s* x, int delay) {
    int found = delay - 1;
    int64_t best = INT64_MIN;
    for (int i = delay - 1; i <= delay + 1; ++i) {
        const int64_t sum = corrKernels().dot16(x, x - i, kSubframe);
        if (sum > best) {
            best = sum;
            found = i;
        }
    }
    return found;
}

} // namespace

int vek::g729::longTermFilter(Vek16s gamma, int delay, const Vek16s* residual, Vek16s* y) {
    // 13 bits: the filters' sums stay within 32.
    const int largest = filterKernels().maxAbs16(residual - kHistory, kHistory + kSubframe);
    const int shift = largest == 0 ? 0 : norm_s(static_cast<Vek16s>(std::min(largest, 32767))) - 3;
    Vek16s scaled[kHistory + kSubframe];
    corrKernels().shift16(residual - kHistory, scaled, kHistory + kSubframe, shift);
    const Vek16s* x = scaled + kHistory;
    const int64_t energy = corrKernels().dot16(x, x, kSubframe);

    const int whole = wholeDelay(x, delay);
    Match best(x, x - whole);
    // The delay is that of `ahead` less phase / 8.
    int ahead = whole;
    int phase = 0;
    if (best.correlation > 0) {
        for (int p = 1; p < kPhases; ++p) {
            Vek16s fine[kSubframe + 1];
            between(x - whole - 1, p, kShortFilter, kShortTaps, fine, kSubframe + 1);
            for (int later = 0; later < 2; ++later) {
                const Match match(x, fine + 1 - later);
                if (match.betterThan(best)) {
                    best = match;
                    ahead = whole + later;
                    phase = p;
                }
            }
        }
    }
    if (energy == 0 || !best.predicts(energy)) {
        std::memcpy(y, residual, kSubframe * sizeof(Vek16s));
        return 0;
    }
    Vek16s past[kSubframe];
    if (phase != 0) {
        between(x - ahead, phase, kShortFilter, kShortTaps, past, kSubframe);
        Vek16s smooth[kSubframe];
        between(x - ahead, phase, kLongFilter, kLongTaps, smooth, kSubframe);
        const Match match(x, smooth);
        if (match.betterThan(best)) {
            best = match;
            std::memcpy(past, smooth, sizeof past);
        }
    }
    // 1 / (1 + gamma g), g = correlation / energy, at most 1.
    const int64_t gained = std::min(best.correlation, best.energy) * gamma;
    const auto now =
        static_cast<Vek16s>(std::min<int64_t>((best.energy << 30) / ((best.energy << 15) + gained), 32767));
    const auto share = static_cast<Vek16s>(32768 - now);
    for (int i = 0; i < kSubframe; ++i) {
        const Vek16s delayed = phase == 0 ? residual[i - ahead] : shr(past[i], shift);
        y[i] = round_s(L_mac(L_mult(residual[i], now), delayed, share));
    }
    return ahead;
}
