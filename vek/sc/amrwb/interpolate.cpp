// Sum of two vectors with a gain each.
#include <algorithm>
#include <cstdlib>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/filter.h"
#include "sc/kernels/loops.h"
#include "veksc_amrwb.h"

using namespace vek;
using namespace vek::fix;

namespace {

// Whether sums of products with such magnitudes leave 32 bits nowhere, rounding included.
bool fits(int factor1, int most1, int factor2, int most2) {
    return int64_t{std::abs(factor1)} * most1 + int64_t{std::abs(factor2)} * most2 + 0x8000 <= kMax32;
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
    const int factor1 = val1 * (1 << scaleFactor1);
    const int factor2 = val2 * (1 << scaleFactor2);
    constexpr int loudest = 32768;
    const FilterKernels& kernels = filterKernels();
    if (fits(factor1, loudest, factor2, loudest) ||
        fits(factor1, kernels.maxAbs16(pSrc1, len), factor2, kernels.maxAbs16(pSrc2, len))) {
        // Without the shift that both have in common the factors mostly have 16 bits.
        const int common = std::min(scaleFactor1, scaleFactor2);
        const int small1 = val1 * (1 << (scaleFactor1 - common));
        const int small2 = val2 * (1 << (scaleFactor2 - common));
        if (small1 == static_cast<Vek16s>(small1) && small2 == static_cast<Vek16s>(small2)) {
            const Weights weights{static_cast<Vek16s>(small1), static_cast<Vek16s>(small2)};
            return loopKernels().weighted16(pSrc1, weights, pSrc2, {16 - common, 0x8000 >> common}, pDst, len);
        }
        kernels.weighted(pSrc1, factor1, pSrc2, factor2, pDst, len, 16, 0x8000);
        return vekStsNoErr;
    }
    for (int i = 0; i < len; ++i) {
        pDst[i] = round_s(L_add(sat32(int64_t{pSrc1[i]} * factor1), sat32(int64_t{pSrc2[i]} * factor2)));
    }
    return vekStsNoErr;
}
