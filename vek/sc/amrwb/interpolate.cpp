// Sum of two vectors with a gain each.
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "veksc_amrwb.h"

using namespace vek;
using namespace vek::fix;

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
    const int64_t factor1 = int64_t{val1} * (1 << scaleFactor1);
    const int64_t factor2 = int64_t{val2} * (1 << scaleFactor2);
    for (int i = 0; i < len; ++i) {
        pDst[i] = round_s(L_add(sat32(pSrc1[i] * factor1), sat32(pSrc2[i] * factor2)));
    }
    return vekStsNoErr;
}
