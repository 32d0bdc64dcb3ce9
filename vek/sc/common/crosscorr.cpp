// Correlation of two vectors, and causal convolution.
#include "sc/common/correlate.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "veksc_signal.h"

using namespace vek;

namespace {

// store(k, sum) with the sum of pSrc1[i] * pSrc2[i-k].
template <typename Store>
VekStatus cross(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, int lags, Store store) {
    const auto put = [store](int first, const auto* sums, int count) {
        for (int k = 0; k < count; ++k) {
            store(first + k, sums[k]);
        }
    };
    return correlateAlone(pSrc1, pSrc2, len, lags, put) ? vekStsNoErr : vekStsNoMemErr;
}

// Q15 with rounding, without a sum of more bits than there are.
Vek16s roundQ15(int32_t sum) {
    return fix::sat16(((sum >> 14) + 1) >> 1);
}
Vek16s roundQ15(int64_t sum) {
    return fix::sat16_64((sum + 0x4000) >> 15);
}

template <typename Store>
VekStatus convolved(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, Store store) {
    return convolve(pSrc1, pSrc2, len, store) ? vekStsNoErr : vekStsNoMemErr;
}

VekStatus check(const Vek16s* pSrc1, const Vek16s* pSrc2, const void* pDst, int len) {
    if (anyNull(pSrc1, pSrc2, pDst)) {
        return vekStsNullPtrErr;
    }
    return badLength(len) ? vekStsSizeErr : vekStsNoErr;
}

} // namespace

VekStatus veksConvPartial_16s32s(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek32s* pDst, int len) {
    if (const VekStatus status = check(pSrc1, pSrc2, pDst, len); status != vekStsNoErr) {
        return status;
    }
    return convolved(pSrc1, pSrc2, len, [&](int n, auto sum) { pDst[n] = fix::sat32(sum); });
}

VekStatus veksConvPartial_16s_Sfs(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len, int scaleFactor) {
    if (const VekStatus status = check(pSrc1, pSrc2, pDst, len); status != vekStsNoErr) {
        return status;
    }
    if (badScale(scaleFactor)) {
        return vekStsScaleRangeErr;
    }
    return convolved(pSrc1, pSrc2, len, [&](int n, auto sum) { pDst[n] = fix::scaleSat16(sum, scaleFactor); });
}

VekStatus veksConvPartial_NR_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len) {
    if (const VekStatus status = check(pSrc1, pSrc2, pDst, len); status != vekStsNoErr) {
        return status;
    }
    return convolved(pSrc1, pSrc2, len, [&](int n, auto sum) { pDst[n] = roundQ15(sum); });
}

VekStatus veksCrossCorr_16s32s_Sfs(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, Vek32s* pDst, int scaleFactor) {
    if (const VekStatus status = check(pSrc1, pSrc2, pDst, len); status != vekStsNoErr) {
        return status;
    }
    if (badScale(scaleFactor)) {
        return vekStsScaleRangeErr;
    }
    return cross(pSrc1, pSrc2, len, len, [&](int k, auto sum) { pDst[k] = fix::scaleSat32(sum, scaleFactor); });
}

VekStatus veksCrossCorr_NR_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, Vek16s* pDst, int lenDst) {
    if (const VekStatus status = check(pSrc1, pSrc2, pDst, len); status != vekStsNoErr) {
        return status;
    }
    if (badLength(lenDst)) {
        return vekStsSizeErr;
    }
    return cross(pSrc1, pSrc2, len, lenDst, [&](int k, auto sum) { pDst[k] = roundQ15(sum); });
}

VekStatus veksCrossCorr_NormM_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, Vek16s* pDst) {
    if (const VekStatus status = check(pSrc1, pSrc2, pDst, len); status != vekStsNoErr) {
        return status;
    }
    constexpr int kResultBits = 13;
    constexpr int kMostDoublings = 14;
    const Scratch16 a(pSrc1, len, kCorrPadding);
    const Scratch16 b(pSrc2, len, kCorrPadding);
    const std::unique_ptr<int64_t[]> heap(len > kLagBlock ? new (std::nothrow) int64_t[static_cast<size_t>(len)]
                                                          : nullptr);
    int64_t local[kLagBlock];
    int64_t* sums = len > kLagBlock ? heap.get() : local;
    if (anyNull(a.data(), b.data(), sums)) {
        return vekStsNoMemErr;
    }
    int64_t largest = 0;
    correlate(a.data(), b.data(), len, len, [&](int first, const auto* own, int count) {
        for (int k = 0; k < count; ++k) {
            const int64_t sum = own[k];
            sums[first + k] = sum;
            const int64_t magnitude = sum < 0 ? -sum : sum;
            largest = magnitude > largest ? magnitude : largest;
        }
    });
    int shift = largest == 0 ? 0 : 63 - fix::norm_64(largest) - kResultBits;
    shift = shift < -kMostDoublings ? -kMostDoublings : shift;
    for (int k = 0; k < len; ++k) {
        pDst[k] = fix::scaleSat16(sums[k], shift);
    }
    return vekStsNoErr;
}
