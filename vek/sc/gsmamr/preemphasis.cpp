// The tilt compensation of the post filter by itself.
#include "veksc_g729lp.h"
#include "veksc_gsmamr.h"

VekStatus veksPreemphasize_GSMAMR_16s(Vek16s gamma, const Vek16s* pSrc, Vek16s* pDst, int len, Vek16s* pMem) {
    return veksPreemphasize_G729A_16s(gamma, pSrc, pDst, len, pMem);
}
