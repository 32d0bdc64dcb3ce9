// Correlation of two vectors, and causal convolution.
#include <algorithm>
#include <bit>
#include <type_traits>

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

// Shifted so that the largest magnitude has 13 bits.
template <typename Sum>
void toThirteenBits(const Sum* sums, int len, Vek16s* pDst) {
    constexpr int kResultBits = 13;
    std::make_unsigned_t<Sum> bits = 0;
    for (int k = 0; k < len; ++k) {
        bits |= static_cast<std::make_unsigned_t<Sum>>(sums[k] < 0 ? -sums[k] : sums[k]);
    }
    const int shift = bits == 0 ? 0 : static_cast<int>(std::bit_width(bits)) - kResultBits;
    const int down = shift > 0 ? shift : 0;
    const int up = down - shift;
    for (int k = 0; k < len; ++k) {
        pDst[k] = static_cast<Vek16s>(sums[k] >> down << up);
    }
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
    const Scratch16 a(pSrc1, len, kCorrPadding);
    const Scratch16 b(pSrc2, len, kCorrPadding);
    const std::unique_ptr<int64_t[]> heap(len > kLagBlock ? new (std::nothrow) int64_t[static_cast<size_t>(len)]
                                                          : nullptr);
    if (anyNull(a.data(), b.data()) || (len > kLagBlock && heap == nullptr)) {
        return vekStsNoMemErr;
    }
    correlate(a.data(), b.data(), len, len, [&](int first, const auto* sums, int count) {
        if (count == len) {
            toThirteenBits(sums, len, pDst);
        } else {
            std::copy_n(sums, count, heap.get() + first);
        }
    });
    if (len > kLagBlock) {
        toThirteenBits(heap.get(), len, pDst);
    }
    return vekStsNoErr;
}
