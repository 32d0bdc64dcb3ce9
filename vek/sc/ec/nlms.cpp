// Filter and normalised LMS of the full band. Coefficients are turned round once a call, so that all loops run forwards
// through the reference.
#include <algorithm>
#include <bit>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/ec.h"
#include "sc/kernels/floatcorr.h"
#include "sc/kernels/floatdot.h"
#include "veksc_ec.h"

namespace {

using namespace vek;

constexpr bool badSizes(int len, int tapLen) {
    return badLength(len) || tapLen < 1 || tapLen > VEK_EC_MAX_TAPS;
}

// A model of less than this mean energy for each tap teaches nothing.
constexpr int64_t kLeastEnergy = 16;
constexpr double kLeastFloatEnergy = 1e-9;

int bits(int64_t v) {
    return 64 - std::countl_zero(static_cast<uint64_t>(v));
}

struct Factor {
    int mantissa;
    int shift;
};

// step * err / energy = mantissa * 2^-shift, with 15 significant bits as far as 0 <= shift <= 30 allows.
Factor factorOf(Vek16s step, Vek16s err, int64_t energy) {
    const int numerator = step * err;
    if (numerator == 0) {
        return {0, 0};
    }
    const int64_t size = std::abs(static_cast<int64_t>(numerator));
    const int shift = std::clamp(14 - bits(size) + bits(energy), 0, 30);
    const int64_t quotient = std::min<int64_t>(((size << shift) + energy / 2) / energy, 32767);
    return {static_cast<int>(numerator < 0 ? -quotient : quotient), shift};
}

Vek16s remainder(Vek16s signal, int64_t echo) {
    return fix::sat16_64(signal - ((echo + 0x4000) >> 15));
}

} // namespace

VekStatus veksFIR_EC_16s(const Vek16s* pSrcSpchRef, const Vek16s* pSrcSpch, Vek16s* pDstSpch, int len,
                         const Vek16s* pSrcCoef, int tapLen) {
    if (anyNull(pSrcSpchRef, pSrcSpch, pSrcCoef, pDstSpch)) {
        return vekStsNullPtrErr;
    }
    if (badSizes(len, tapLen)) {
        return vekStsSizeErr;
    }
    constexpr int block = 32;
    constexpr int room = VEK_EC_MAX_TAPS + block + kCorrPadding;
    const CorrKernels& kernels = corrKernels();
    alignas(32) Vek16s turned[room];
    ecKernels().turn16(pSrcCoef, turned, tapLen);
    std::fill_n(turned + tapLen, block + kCorrPadding, Vek16s{0});
    // The sum of the coefficients' magnitudes is then below 2.0, and all sums fit 32 bits.
    if (kernels.dot16(turned, turned, tapLen) * tapLen < int64_t{1} << 32) {
        for (int i = 0; i < len; i += block) {
            const int n = std::min(block, len - i);
            const int reach = tapLen + n - 1;
            alignas(32) Vek16s past[room];
            std::copy_n(pSrcSpchRef + i - tapLen + 1, reach, past);
            std::fill_n(past + reach, kCorrPadding, Vek16s{0});
            int32_t echo[block];
            kernels.corr32(past, turned, reach, n, echo);
            for (int k = 0; k < n; ++k) {
                pDstSpch[i + k] = remainder(pSrcSpch[i + k], echo[k]);
            }
        }
        return vekStsNoErr;
    }
    for (int i = 0; i < len; ++i) {
        pDstSpch[i] = remainder(pSrcSpch[i], kernels.dot16(turned, pSrcSpchRef + i - tapLen + 1, tapLen));
    }
    return vekStsNoErr;
}

VekStatus veksFIR_EC_32f(const Vek32f* pSrcSpchRef, const Vek32f* pSrcSpch, Vek32f* pDstSpch, int len,
                         const Vek32f* pSrcCoef, int tapLen) {
    if (anyNull(pSrcSpchRef, pSrcSpch, pSrcCoef, pDstSpch)) {
        return vekStsNullPtrErr;
    }
    if (badSizes(len, tapLen)) {
        return vekStsSizeErr;
    }
    const FloatCorrKernels& kernels = floatCorrKernels();
    Vek32f turned[VEK_EC_MAX_TAPS];
    ecKernels().turn32f(pSrcCoef, turned, tapLen);
    constexpr int block = 64;
    for (int i = 0; i < len; i += block) {
        const int n = std::min(block, len - i);
        Vek32f echo[block];
        kernels.corr32f(turned, pSrcSpchRef + i - tapLen + 1, tapLen, n, echo);
        for (int k = 0; k < n; ++k) {
            pDstSpch[i + k] = pSrcSpch[i + k] - echo[k];
        }
    }
    return vekStsNoErr;
}

VekStatus veksNLMS_EC_16s(const Vek16s* pSrcSpchRef, const Vek16s* pSrcSpch, const Vek16s* pStepSize, Vek16s* pDstSpch,
                          int len, Vek16s* pSrcDstCoef, int tapLen, Vek16s* pErr) {
    if (anyNull(pSrcSpchRef, pSrcSpch, pStepSize, pDstSpch, pSrcDstCoef, pErr)) {
        return vekStsNullPtrErr;
    }
    if (badSizes(len, tapLen)) {
        return vekStsSizeErr;
    }
    if (std::any_of(pStepSize, pStepSize + len, [](Vek16s step) { return step < 0; })) {
        return vekStsRangeErr;
    }
    const CorrKernels& sums = corrKernels();
    const EcKernels& kernels = ecKernels();
    Vek16s turned[VEK_EC_MAX_TAPS];
    kernels.turn16(pSrcDstCoef, turned, tapLen);
    const Vek16s* past = pSrcSpchRef - tapLen;
    int64_t energy = sums.dot16(past, past, tapLen) + kLeastEnergy * tapLen;
    Vek16s err = *pErr;
    for (int i = 0; i < len; ++i) {
        const Factor factor = factorOf(pStepSize[i], err, energy);
        kernels.learn16(turned, past, tapLen, factor.mantissa, factor.shift);
        err = remainder(pSrcSpch[i], sums.dot16(turned, past + 1, tapLen));
        pDstSpch[i] = err;
        energy += past[tapLen] * past[tapLen] - past[0] * past[0];
        ++past;
    }
    kernels.turn16(turned, pSrcDstCoef, tapLen);
    *pErr = err;
    return vekStsNoErr;
}

VekStatus veksNLMS_EC_32f(const Vek32f* pSrcSpchRef, const Vek32f* pSrcSpch, const Vek32f* pStepSize, Vek32f* pDstSpch,
                          int len, Vek32f* pSrcDstCoef, int tapLen, Vek32f* pErr) {
    if (anyNull(pSrcSpchRef, pSrcSpch, pStepSize, pDstSpch, pSrcDstCoef, pErr)) {
        return vekStsNullPtrErr;
    }
    if (badSizes(len, tapLen)) {
        return vekStsSizeErr;
    }
    const EcKernels& kernels = ecKernels();
    Vek32f turned[VEK_EC_MAX_TAPS];
    kernels.turn32f(pSrcDstCoef, turned, tapLen);
    const Vek32f* past = pSrcSpchRef - tapLen;
    // The energy is carried along within a call only, so that rounding does not gather.
    double energy = static_cast<double>(floatDotKernels().dot32f(past, past, tapLen));
    const double least = kLeastFloatEnergy * tapLen;
    Vek32f err = *pErr;
    for (int i = 0; i < len; ++i) {
        const auto step = static_cast<Vek32f>(pStepSize[i] / (std::max(energy, 0.0) + least));
        err = pSrcSpch[i] - kernels.learn32f(turned, past, tapLen, step * err);
        pDstSpch[i] = err;
        energy += static_cast<double>(past[tapLen]) * past[tapLen] - static_cast<double>(past[0]) * past[0];
        ++past;
    }
    kernels.turn32f(turned, pSrcDstCoef, tapLen);
    *pErr = err;
    return vekStsNoErr;
}
