// Shaping of the upper band's excitation by the envelopes that were sent, and what takes its peaks off.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <numbers>

#include "sc/common/fixmath.h"
#include "sc/common/kaiser.h"
#include "sc/common/lpfilter.h"
#include "sc/common/signal_check.h"
#include "sc/common/table.h"
#include "sc/g7291/envelope.h"
#include "veksc_g7291bwe.h"

using namespace vek::g7291;

namespace {

// --- time ---

constexpr int kTransition = kSegment / 2;
constexpr int kGainBits = 14;
constexpr int kLeastNorm = -32;
constexpr int kMostNorm = 63;

// Share of a segment's own gain at its first samples: (1 - cos(pi (n + 1) / 6)) / 2, Q15.
constexpr int kRise[kTransition] = {2195, 8192, 16384, 24576, 30573};

struct Gain {
    int32_t mantissa; // times 2^-norm
    int norm;
};

// x * gain * 2^-shift, rounded, saturated; |x * gain| is below 2^47.
int16_t scaled(int16_t x, int32_t gain, int shift) {
    int64_t product = int64_t{x} * gain;
    if (shift > 47) {
        return 0;
    }
    if (shift > 0) {
        product += int64_t{1} << (shift - 1);
    }
    return sat16_64(shift > 31 ? product >> shift : scale64(product, shift));
}

// --- frequency ---

constexpr int kTaps = 33;
constexpr int kFilterBits = 12;
constexpr int kHistory = 48;
constexpr int kMostGain = 3 * kEnvelopeOne; // 18 dB

using Bank = std::array<std::array<int16_t, kTaps>, kBands>;

// Bands of 250 Hz from 0 to 3 kHz: their ideal responses under a Kaiser window with beta = 4, Q17.
const Bank g_bank = [] {
    using std::numbers::pi;
    const Kaiser kaiser(4);
    constexpr int middle = kTaps / 2;
    Bank bank{};
    for (size_t band = 0; band < kBands; ++band) {
        const double low = pi * static_cast<double>(band) / 16;
        const double high = low + pi / 16;
        bank[band] = tableOf<int16_t, kTaps>(17, [&kaiser, low, high](int n) {
            const int x = n - middle;
            const double ideal = x == 0 ? 1.0 / 16 : (std::sin(high * x) - std::sin(low * x)) / (pi * x);
            return ideal * kaiser(static_cast<double>(x) / middle);
        });
    }
    return bank;
}();

// The filter that brings the samples x to the envelope, Q12.
void design(const int16_t* x, const int16_t* envelope, int16_t* filter) {
    int16_t own[kBands];
    frequencyEnvelope(x, own);
    int64_t sums[kTaps] = {};
    for (size_t band = 0; band < kBands; ++band) {
        // Q16
        const int32_t gain = power(std::min(envelope[band] - own[band], kMostGain), 16);
        for (size_t n = 0; n < kTaps; ++n) {
            sums[n] += int64_t{gain} * g_bank[band][n];
        }
    }
    constexpr int shift = 16 + 17 - kFilterBits;
    for (size_t n = 0; n < kTaps; ++n) {
        // At most 6 by the limit of the gains.
        filter[n] = static_cast<int16_t>((sums[n] + (int64_t{1} << (shift - 1))) >> shift);
    }
}

// --- peaks ---

constexpr int kDelay = 16;
constexpr int kPeakBits = 8;

// The samples x[first..last-1] against an envelope value.
void compress(int16_t value, int16_t* x, int first, int last) {
    // Beyond 2^16 nothing sticks out.
    const int32_t e = power(std::min(int32_t{value}, 16 * kEnvelopeOne), kPeakBits);
    for (int i = first; i < last; ++i) {
        const int32_t size = std::abs(int32_t{x[i]}) << kPeakBits;
        int32_t y = size;
        if (size > e) {
            y = (size + 11 * e) / 16;
        } else if (2 * size > e) {
            y = (2 * size + e) / 4;
        }
        y = (y + (1 << (kPeakBits - 1))) >> kPeakBits;
        x[i] = sat16(x[i] < 0 ? -y : y);
    }
}

} // namespace

VekStatus veksShapeEnvelopTime_G7291_16s(const Vek16s* pSrc, const Vek16s* pSrcTimeEnvelope, Vek16s* pGain,
                                         Vek16s* pNorm, Vek16s* pDst) {
    if (anyNull(pSrc, pSrcTimeEnvelope, pGain, pNorm, pDst)) {
        return vekStsNullPtrErr;
    }
    if (*pGain < 0 || *pNorm < kLeastNorm || *pNorm > kMostNorm) {
        return vekStsRangeErr;
    }
    Vek16s levels[kHalfSegments];
    bandLevelKernels().segmentLevels(pSrc, kHalfSegments, 0, levels);
    Gain last{*pGain, *pNorm};
    for (int i = 0; i < kHalfSegments; ++i) {
        const Vek16s* x = pSrc + kSegment * i;
        Vek16s* y = pDst + kSegment * i;
        Gain own = last;
        if (std::any_of(x, x + kSegment, [](Vek16s v) { return v != 0; })) {
            const int32_t change = pSrcTimeEnvelope[i] - levels[i];
            const int whole = change >> kEnvelopeBits;
            own = {power(change - whole * kEnvelopeOne, kGainBits), kGainBits - whole};
        }
        // Both gains on the larger one's scale, with 15 bits more.
        const int norm = std::min(own.norm, last.norm);
        const auto aligned = [&](Gain g) {
            return static_cast<int32_t>((int64_t{g.mantissa} << 15) >> std::min(g.norm - norm, 40));
        };
        const int64_t to = aligned(own);
        const int64_t from = aligned(last);
        for (int n = 0; n < kTransition; ++n) {
            const auto gain = static_cast<int32_t>((to * kRise[n] + from * (32768 - kRise[n])) >> 15);
            y[n] = scaled(x[n], gain, norm + 15);
        }
        for (int n = kTransition; n < kSegment; ++n) {
            y[n] = scaled(x[n], own.mantissa, own.norm);
        }
        last = own;
    }
    *pGain = static_cast<Vek16s>(last.mantissa);
    *pNorm = static_cast<Vek16s>(last.norm);
    return vekStsNoErr;
}

VekStatus veksShapeEnvelopFrequency_G7291_16s(const Vek16s* pSrc, const Vek16s* pSrcFreqEnvelope, Vek16s* pDst,
                                              Vek16s* pFilterCoeffs, Vek16s* pMem) {
    if (anyNull(pSrc, pSrcFreqEnvelope, pDst, pFilterCoeffs, pMem)) {
        return vekStsNullPtrErr;
    }
    constexpr int half = kFrame / 2;
    constexpr int order = kTaps - 1;
    alignas(32) Vek16s input[order + kFrame];
    std::copy_n(pMem, order, input);
    std::copy_n(pSrc, kFrame, input + order);
    Vek16s filter[kTaps];
    design(pSrc - kHistory, pSrcFreqEnvelope, filter);
    for (int n = 0; n < kTaps; ++n) {
        filter[n] = static_cast<Vek16s>((filter[n] + pFilterCoeffs[n] + 1) >> 1);
    }
    design(pSrc - kHistory + half, pSrcFreqEnvelope, pFilterCoeffs);
    residualFilter(filter, order, input + order, pDst, half, kFilterBits);
    residualFilter(pFilterCoeffs, order, input + order + half, pDst + half, half, kFilterBits);
    std::copy_n(input + kFrame, order, pMem);
    return vekStsNoErr;
}

VekStatus veksCompressEnvelopTime_G7291_16s(const Vek16s* pSrcTimeEnvelope, Vek16s* pSrcDst, Vek16s* pMem) {
    if (anyNull(pSrcTimeEnvelope, pSrcDst, pMem)) {
        return vekStsNullPtrErr;
    }
    constexpr int before = 2;
    for (int i = -before; i < kSegments; ++i) {
        const int first = kDelay + kSegment * i;
        compress(i < 0 ? pMem[before + i] : pSrcTimeEnvelope[i], pSrcDst, std::max(first, 0),
                 std::min(first + kSegment, kFrame));
    }
    std::copy_n(pSrcTimeEnvelope + kSegments - before, before, pMem);
    return vekStsNoErr;
}
