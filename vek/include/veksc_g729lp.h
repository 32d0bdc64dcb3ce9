// Linear prediction of G.729 and its annexes: pre-emphasis. Filters and interpolations are in veksc_filter.h, the
// autocorrelation in veksc_signal.h.
//
// All functions: vekStsNullPtrErr for a null pointer, before anything is written.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// y[i] = x[i] - gamma * x[i-1], the tilt of the short-term post filter: G.729 A.4.2.3. gamma Q15; the product is cut
// off, difference and product saturate. pMem[0] holds x[-1] and receives the last input. len 1..65536, else
// vekStsSizeErr. pDst is apart from pSrc; the _I forms work in place.
VEK_API VekStatus veksPreemphasize_G729A_16s(Vek16s gamma, const Vek16s* pSrc, Vek16s* pDst, int len, Vek16s* pMem);
VEK_API VekStatus veksPreemphasize_G729A_16s_I(Vek16s gamma, Vek16s* pSrcDst, int len, Vek16s* pMem);
VEK_API VekStatus veksPreemphasize_32f_I(Vek32f* pSrcDst, int len, Vek32f* pMem, Vek32f gamma);

#ifdef __cplusplus
}
#endif
