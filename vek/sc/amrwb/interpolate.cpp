// Sum of two vectors with a gain each.
#include <algorithm>
#include <cstdlib>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/filter.h"
#include "sc/kernels/loops.h"
#include "veksc_amrwb.h"

using namespace vek::fix;

namespace {

// Whether sums of products with such magnitudes leave 32 bits nowhere, rounding included.
bool fits(int factor1, int most1, int factor2, int most2) {
    return int64_t{std::abs(factor1)} * most1 + int64_t{std::abs(factor2)} * most2 + 0x8000 <= kMax32;
}

// The same for the loudest samples and factors that are still to be shifted.
bool fitsAll(int factor1, int factor2, int shift) {
    return std::abs(factor1) + std::abs(factor2) <= 0xfffe >> shift;
}

bool isShort(int v) {
    return v == static_cast<Vek16s>(v);
}

// Without the shift that both have in common the factors mostly have 16 bits.
VEK_INLINE VekStatus byShortFactors(const Vek16s* pSrc1, int factor1, const Vek16s* pSrc2, int factor2, Vek16s* pDst,
                                    int len, int common) {
    const Weights weights{static_cast<Vek16s>(factor1), static_cast<Vek16s>(factor2)};
    return loopKernels().weighted16(pSrc1, weights, pSrc2, {16 - common, 0x8000 >> common}, pDst, len);
}

// Apart from the usual case, which would have to save its registers.
[[gnu::noinline]] VekStatus byLargeFactors(const Vek16s* pSrc1, int factor1, const Vek16s* pSrc2, int factor2,
                                           Vek16s* pDst, int len, int common) {
    const FilterKernels& kernels = filterKernels();
    if (!fitsAll(factor1, factor2, 0) &&
        !fits(factor1, kernels.maxAbs16(pSrc1, len), factor2, kernels.maxAbs16(pSrc2, len))) {
        for (int i = 0; i < len; ++i) {
            pDst[i] = round_s(L_add(sat32(int64_t{pSrc1[i]} * factor1), sat32(int64_t{pSrc2[i]} * factor2)));
        }
        return vekStsNoErr;
    }
    if (isShort(factor1 >> common) && isShort(factor2 >> common)) {
        return byShortFactors(pSrc1, factor1 >> common, pSrc2, factor2 >> common, pDst, len, common);
    }
    kernels.weighted(pSrc1, factor1, pSrc2, factor2, pDst, len, 16, 0x8000);
    return vekStsNoErr;
}

} // namespace

VekStatus veksInterpolateC_NR_16s(const Vek16s* pSrc1, Vek16s val1, int scaleFactor1, const Vek16s* pSrc2, Vek16s val2,
                                  int scaleFactor2, Vek16s* pDst, int len) {
    if (anyNull(pSrc1, pSrc2, pDst)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    if (scaleFactor1 < 0 || scaleFactor1 > 15 || scaleFactor2 < 0 || scaleFactor2 > 15) {
        return vekStsScaleRangeErr;
    }
    const int common = std::min(scaleFactor1, scaleFactor2);
    const int factor1 = val1 * (1 << (scaleFactor1 - common));
    const int factor2 = val2 * (1 << (scaleFactor2 - common));
    if (isShort(factor1) && isShort(factor2) && fitsAll(factor1, factor2, common)) {
        return byShortFactors(pSrc1, factor1, pSrc2, factor2, pDst, len, common);
    }
    return byLargeFactors(pSrc1, factor1 * (1 << common), pSrc2, factor2 * (1 << common), pDst, len, common);
}
