// Prediction filters of Annex E, whose order is 10 or 30, and the floating synthesis filter of any order.
#include <algorithm>
#include <cstring>

#include "sc/common/lpfilter.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/floatcorr.h"
#include "veksc_g729post.h"

using namespace vek;

namespace {

constexpr int kFormat = 12;
constexpr int kChunk = 160;
constexpr int kBlock = 8; // of the floating recursion

constexpr bool badOrder(int order) {
    return order < 4 || order > kMaxLpOrder || order % 2 != 0;
}

// The last outputs of n new ones, with those that the memory still holds.
void remember(const Vek16s* y, int n, Vek16s* memory, int order) {
    const int fresh = std::min(n, order);
    std::memmove(memory, memory + fresh, static_cast<size_t>(order - fresh) * sizeof(Vek16s));
    std::memcpy(memory + order - fresh, y + n - fresh, static_cast<size_t>(fresh) * sizeof(Vek16s));
}

// With a source of its own, which lets the compiler take several at a time.
void amplifyBlock(Vek32f gain, const Vek32f* from, Vek32f* y) {
    Vek32f x[kBlock];
    std::memcpy(x, from, sizeof x);
    for (int i = 0; i < kBlock; ++i) {
        y[i] = gain * x[i];
    }
}

} // namespace

VekStatus veksResidualFilter_G729E_16s(const Vek16s* pSrcLpc, int order, const Vek16s* pSrc, Vek16s* pDst, int len) {
    if (const VekStatus status = checkSignal(len, pSrcLpc, pSrc, pDst); status != vekStsNoErr) {
        return status;
    }
    if (badOrder(order)) {
        return vekStsFilterOrderErr;
    }
    residualFilter(pSrcLpc, order, pSrc, pDst, len, kFormat);
    return vekStsNoErr;
}

VekStatus veksSynthesisFilter_G729E_16s(const Vek16s* pSrcLpc, int order, const Vek16s* pSrc, Vek16s* pDst, int len,
                                        Vek16s* pSrcDstSynFltMemory) {
    if (const VekStatus status = checkSignal(len, pSrcLpc, pSrc, pDst, pSrcDstSynFltMemory); status != vekStsNoErr) {
        return status;
    }
    if (badOrder(order)) {
        return vekStsFilterOrderErr;
    }
    synthesisFilter(pSrcLpc, order, pSrc, pDst, len, kFormat, pSrcDstSynFltMemory);
    remember(pDst, len, pSrcDstSynFltMemory, order);
    return vekStsNoErr;
}

VekStatus veksSynthesisFilter_G729E_16s_I(const Vek16s* pSrcLpc, int order, Vek16s* pSrcDst, int len,
                                          Vek16s* pSrcDstSynFltMemory) {
    return veksSynthesisFilter_G729E_16s(pSrcLpc, order, pSrcDst, pSrcDst, len, pSrcDstSynFltMemory);
}

VekStatus veksSynthesisFilter_G729_32f(const Vek32f* pSrcLpc, int order, const Vek32f* pSrc, Vek32f* pDst, int len,
                                       const Vek32f* pSrcSynFltMemory) {
    if (const VekStatus status = checkSignal(len, pSrcLpc, pSrc, pDst, pSrcSynFltMemory); status != vekStsNoErr) {
        return status;
    }
    if (order < 1 || order > kMaxLpOrder) {
        return vekStsFilterOrderErr;
    }
    alignas(32) Vek32f buffer[kMaxLpOrder + kChunk];
    Vek32f* const y = buffer + kMaxLpOrder;
    std::copy_n(pSrcSynFltMemory, order, y - order);
    while (len > 0) {
        const int count = std::min(len, kChunk);
        const int whole = count / kBlock * kBlock;
        for (int i = 0; i < whole; i += kBlock) {
            amplifyBlock(pSrcLpc[0], pSrc + i, y + i);
        }
        if (whole < count) {
            Vek32f rest[kBlock] = {};
            std::copy(pSrc + whole, pSrc + count, rest);
            amplifyBlock(pSrcLpc[0], rest, y + whole);
        }
        floatCorrKernels().allPole32f(pSrcLpc, order, y, whole < count ? whole + kBlock : whole);
        std::copy_n(y, count, pDst);
        if (count < len) {
            std::copy(y + count - order, y + count, y - order);
        }
        pSrc += count;
        pDst += count;
        len -= count;
    }
    return vekStsNoErr;
}
