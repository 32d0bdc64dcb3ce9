// Measures of the transform-coded excitation: segmental signal-to-noise ratio and the gain with its logarithmic law.
#include <algorithm>
#include <cmath>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/loops.h"
#include "veksc_amrwbe.h"

using namespace vek;

namespace {

constexpr int kLargestIndex = 127;
constexpr double kStepsPerDecade = 28;

constexpr bool isTcxLength(int len) {
    return len == 48 || len == 96 || len == 192 || len == 288 || len == 576 || len == 1152;
}

Vek32s rounded(double v) {
    return static_cast<Vek32s>(std::llround(std::clamp(v, 0.0, 2147483647.0)));
}

double rootMeanSquare(const Vek16s* x, int len) {
    return std::sqrt(static_cast<double>(corrKernels().dot16(x, x, len)) / len);
}

} // namespace

VekStatus veksSNR_AMRWBE_16s(const Vek16s* pSrcSignal, const Vek16s* pSrcSynth, int len, int lenSegment,
                             Vek16s* pResultSNR) {
    if (anyNull(pSrcSignal, pSrcSynth, pResultSNR)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len) || lenSegment < 1 || len % lenSegment != 0) {
        return vekStsSizeErr;
    }
    // A logarithm of the product of so many ratios, each within 2^-48..2^46.
    constexpr int kRatios = 16;
    double sum = 0;
    double ratio = 1;
    int factors = 0;
    for (int start = 0; start < len; start += lenSegment) {
        const int64_t noise = loopKernels().squaredDistance16(pSrcSignal + start, pSrcSynth + start, lenSegment);
        const int64_t signal = corrKernels().dot16(pSrcSignal + start, pSrcSignal + start, lenSegment);
        ratio *= static_cast<double>(std::max<int64_t>(signal, 1)) / static_cast<double>(std::max<int64_t>(noise, 1));
        if (++factors == kRatios) {
            sum += std::log10(ratio);
            ratio = 1;
            factors = 0;
        }
    }
    sum += std::log10(ratio);
    const double decibels = 10 * sum * lenSegment / len;
    *pResultSNR = fix::sat16(static_cast<int32_t>(std::lround(256 * decibels)));
    return vekStsNoErr;
}

VekStatus veksGainQuantTCX_AMRWBE_16s(const Vek16s* pSrc, int scaleFactor, const Vek16s* pSrcQuant, int len,
                                      int quantFlag, Vek32s* pGain, Vek16s* pQuantIndex) {
    if (anyNull(pSrc, pSrcQuant, pGain, pQuantIndex)) {
        return vekStsNullPtrErr;
    }
    if (!isTcxLength(len)) {
        return vekStsSizeErr;
    }
    if (scaleFactor < 0 || scaleFactor > 15 || quantFlag < 0 || quantFlag > 1) {
        return vekStsRangeErr;
    }
    const auto cross = static_cast<double>(corrKernels().dot16(pSrc, pSrcQuant, len));
    const auto energy = static_cast<double>(corrKernels().dot16(pSrcQuant, pSrcQuant, len));
    const double gain = energy > 0 ? std::max(cross, 0.0) / energy / (1 << scaleFactor) : 0;
    if (quantFlag == 0) {
        *pGain = rounded(65536 * gain);
        return vekStsNoErr;
    }
    const double rms = std::sqrt(energy / len);
    const double level = std::max(gain * rms, 1.0);
    const int index = std::min(static_cast<int>(std::lround(kStepsPerDecade * std::log10(level))), kLargestIndex);
    *pQuantIndex = static_cast<Vek16s>(index);
    *pGain = energy > 0 ? rounded(65536 * std::pow(10.0, index / kStepsPerDecade) / rms) : 0;
    return vekStsNoErr;
}

VekStatus veksGainDecodeTCX_AMRWBE_16s(const Vek16s* pSrcQuant, int len, Vek16s valQuantIndex, int bfi,
                                       Vek32s* pSrcDstRMS, Vek32s* pGain) {
    if (anyNull(pSrcQuant, pSrcDstRMS, pGain)) {
        return vekStsNullPtrErr;
    }
    if (!isTcxLength(len)) {
        return vekStsSizeErr;
    }
    if (bfi < 0 || bfi > 1 || *pSrcDstRMS < 0 || (bfi == 0 && (valQuantIndex < 0 || valQuantIndex > kLargestIndex))) {
        return vekStsRangeErr;
    }
    // A lost frame goes on at 0.7 of the level before it.
    *pSrcDstRMS =
        bfi == 0 ? rounded(32768 * std::pow(10.0, valQuantIndex / kStepsPerDecade)) : rounded(0.7 * *pSrcDstRMS);
    const double rms = rootMeanSquare(pSrcQuant, len);
    *pGain = rms > 0 ? rounded(2.0 * *pSrcDstRMS / rms) : 0;
    return vekStsNoErr;
}
