// Excitation of the upper band from the delays and energies of the core: pulses and noise.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <numbers>

#include "sc/common/fixmath.h"
#include "sc/common/lpfilter.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/common/table.h"
#include "sc/g7291/envelope.h"
#include "veksc_g7291bwe.h"

using namespace vek::g7291;

namespace {

constexpr int kSubframes = 4;
constexpr int kSubframe = kFrame / kSubframes;
constexpr int kPhases = 6; // positions of a pulse between two samples
constexpr int kShortest = 20;
constexpr int kLongest = 144;
constexpr int kTaps = 41;
constexpr int kShareBits = 29;
// The power of either part at a share of 1 is 2^22 before the low pass; uniform noise of 16 bits has 2^30 / 3.
constexpr int kPowerBits = 22;

using Shapes = std::array<std::array<int16_t, kTaps>, kPhases>;

// Low pass of 3 kHz, a sine quotient under a raised cosine, later by sixths of a sample; Q15.
const Shapes g_shapes = [] {
    using std::numbers::pi;
    constexpr double cutoff = 0.75;
    constexpr int middle = kTaps / 2;
    Shapes shapes{};
    for (size_t phase = 0; phase < kPhases; ++phase) {
        shapes[phase] = tableOf<int16_t, kTaps>(15, [later = static_cast<double>(phase) / kPhases](int n) {
            const double x = n - middle - later;
            const double quotient = x == 0 ? cutoff : std::sin(pi * cutoff * x) / (pi * x);
            return quotient * (1 + std::cos(pi * x / (middle + 1))) / 2;
        });
    }
    return shapes;
}();

struct Past {
    int32_t share = 0;            // of pulses in the power, of the last subframe's energies
    int32_t delay = 0;            // in sixths; 0 before the first one
    int32_t next = 0;             // of the next pulse, in sixths behind the frame's begin
    int32_t tail[kTaps - 1] = {}; // of pulses of the last frame
    Vek16s noise[kTaps - 1] = {}; // newest last
    uint16_t seed = 21845;
};
using State = Marked<Past, 0x43584542>;

// p^2 / (p^2 + p f + f^2), Q29.
int32_t shareOf(Vek32s adaptive, Vek32s fixed) {
    adaptive = std::max(adaptive, 0);
    fixed = std::max(fixed, 0);
    const int shift = norm_l(std::max(adaptive, fixed));
    const int64_t p = adaptive << shift >> 1;
    const int64_t f = fixed << shift >> 1;
    const int64_t all = (p * p + p * f + f * f) >> kShareBits;
    return all > 0 ? static_cast<int32_t>(std::min(p * p / all, int64_t{1} << kShareBits)) : 0;
}

// The power that a share stands for.
int32_t powerOf(int64_t share) {
    return static_cast<int32_t>(share >> (kShareBits - kPowerBits));
}

// The smoothed distance of pulses in sixths, and the delay that the next one is compared with.
int32_t distanceOf(int whole, int thirds, int32_t& last) {
    int32_t delay = kPhases * std::max(whole, kShortest) + 2 * thirds;
    int32_t distance = delay;
    if (last > 0) {
        const int32_t factor = (delay + last / 2) / last;
        const int32_t multiple = factor * last;
        if (10 * std::abs(delay - multiple) < multiple && delay >= factor * (kPhases * kShortest - 2)) {
            delay = (delay + factor / 2) / factor;
        }
        distance = (last + delay + 1) / 2;
    }
    last = delay;
    return distance;
}

} // namespace

VekStatus veksGenerateExcitationGetStateSize_G7291_16s(int* pSize) {
    return State::size(pSize);
}

VekStatus veksGenerateExcitationInit_G7291_16s(void* pMemory) {
    return State::init(pMemory);
}

VekStatus veksGenerateExcitation_G7291_16s(const Vek16s* pIntPitchLag, const Vek16s* pFracPitchLag,
                                           const Vek32s* pLtpPower, const Vek32s* pFixPower, Vek16s* pDst,
                                           void* pMemory) {
    if (anyNull(pIntPitchLag, pFracPitchLag, pLtpPower, pFixPower, pDst, pMemory)) {
        return vekStsNullPtrErr;
    }
    for (int sub = 0; sub < kSubframes; ++sub) {
        if (pIntPitchLag[sub] < 0 || pIntPitchLag[sub] > kLongest || std::abs(pFracPitchLag[sub]) > 1) {
            return vekStsRangeErr;
        }
    }
    return State::with(pMemory, [&](Past& past) {
        alignas(32) Vek16s noise[kTaps - 1 + kFrame];
        int32_t pulses[kFrame + kTaps - 1] = {};
        std::copy_n(past.noise, kTaps - 1, noise);
        std::copy_n(past.tail, kTaps - 1, pulses);
        for (int sub = 0; sub < kSubframes; ++sub) {
            const int32_t own = shareOf(pLtpPower[sub], pFixPower[sub]);
            const int32_t share = (own + past.share) / 2;
            past.share = own;
            const int32_t distance = distanceOf(pIntPitchLag[sub], pFracPitchLag[sub], past.delay);
            const int32_t height = root(powerOf(int64_t{share} * distance / kPhases));
            const int32_t end = (sub + 1) * kSubframe * kPhases;
            for (; past.next < end; past.next += distance) {
                const int32_t at = past.next / kPhases;
                const auto& shape = g_shapes[static_cast<size_t>(past.next % kPhases)];
                const int32_t signedHeight = at % 2 == 0 ? height : -height;
                for (size_t n = 0; n < kTaps; ++n) {
                    pulses[static_cast<size_t>(at) + n] += (signedHeight * shape[n] + 0x4000) >> 15;
                }
            }
            const auto level = static_cast<Vek16s>(root(powerOf(3 * ((int64_t{1} << kShareBits) - share))));
            for (int n = 0; n < kSubframe; ++n) {
                past.seed = static_cast<uint16_t>(past.seed * 31821U + 13849U);
                noise[kTaps - 1 + sub * kSubframe + n] = mult_r(static_cast<Vek16s>(past.seed), level);
            }
        }
        past.next -= kFrame * kPhases;
        residualFilter(g_shapes[0].data(), kTaps - 1, noise + kTaps - 1, pDst, kFrame, 15);
        for (int n = 0; n < kFrame; ++n) {
            pDst[n] = sat16(pDst[n] + pulses[n]);
        }
        std::copy_n(noise + kFrame, kTaps - 1, past.noise);
        std::copy_n(pulses + kFrame, kTaps - 1, past.tail);
    });
}
