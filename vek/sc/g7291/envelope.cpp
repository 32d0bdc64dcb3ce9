// Envelopes of the upper band in time and frequency.
#include "sc/g7291/envelope.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <numbers>

#include "sc/common/signal_check.h"
#include "sc/common/table.h"
#include "sc/kernels/bandlevels.h"
#include "sc/kernels/transform.h"
#include "veksc_g7291bwe.h"

using namespace vek::g7291;

namespace {

// The rising half of a raised cosine of 144 and the falling half of one of 112, Q15.
const auto g_window = tableOf<int16_t, kAnalysis>(15, [](int n) {
    const double turn = n < 72 ? n / 143.0 : (n - 16) / 111.0;
    return (1 - std::cos(2 * std::numbers::pi * turn)) / 2;
});

} // namespace

void vek::g7291::frequencyEnvelope(const int16_t* x, int16_t* envelope) {
    constexpr int lines = 32;
    static_assert(lines <= kBandLines && kBands <= kBandLevels);
    alignas(32) int32_t re[kBandLines];
    alignas(32) int32_t im[kBandLines];
    std::fill(re + lines, std::end(re), 0);
    std::fill(im + lines, std::end(im), 0);
    const int shift = transformKernels().foldedFft64(x, g_window.data(), re, im);
    // The window is in Q15; the doubled sum takes half of a unit.
    const int offset = -(15 + shift) * kEnvelopeOne - kEnvelopeOne / 2;
    int16_t levels[kBandLevels];
    bandLevelKernels().bandLevels(re, im, offset, levels);
    std::memcpy(envelope, levels, kBands * sizeof *envelope);
}

VekStatus veksEnvelopTime_G7291_16s(const Vek16s* pSrc, int nls, Vek16s* pDstTimeEnvelope, int len) {
    if (anyNull(pSrc, pDstTimeEnvelope)) {
        return vekStsNullPtrErr;
    }
    if (len < 1 || len > kSegments) {
        return vekStsSizeErr;
    }
    if (nls < 0 || nls > 15) {
        return vekStsRangeErr;
    }
    bandLevelKernels().segmentLevels(pSrc, len, nls * kEnvelopeOne, pDstTimeEnvelope);
    return vekStsNoErr;
}

VekStatus veksEnvelopFrequency_G7291_16s(const Vek16s* pSrc, Vek16s* pDstFreqEnvelope) {
    if (anyNull(pSrc, pDstFreqEnvelope)) {
        return vekStsNullPtrErr;
    }
    frequencyEnvelope(pSrc, pDstFreqEnvelope);
    return vekStsNoErr;
}
