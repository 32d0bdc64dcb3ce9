// The Fourier transforms of the transform-coded excitation.
#include "sc/common/signal_check.h"
#include "sc/kernels/wbefft.h"
#include "veksc_amrwbe.h"

using namespace vek;

namespace {

constexpr bool hasTransform(int len) {
    return len == 48 || len == 96 || len == 192 || len == 288 || len == 576 || len == 1152;
}

template <class Kernel>
VekStatus transform(Kernel kernel, const Vek16s* pSrc, Vek16s* pDst, int len) {
    if (anyNull(pSrc, pDst)) {
        return vekStsNullPtrErr;
    }
    if (!hasTransform(len)) {
        return vekStsFftOrderErr;
    }
    kernel(pSrc, pDst, len);
    return vekStsNoErr;
}

} // namespace

VekStatus veksFFTFwd_RToPerm_AMRWBE_16s(const Vek16s* pSrc, Vek16s* pDst, int len) {
    return transform(wbeFftKernels().forward, pSrc, pDst, len);
}

VekStatus veksFFTInv_PermToR_AMRWBE_16s(const Vek16s* pSrc, Vek16s* pDst, int len) {
    return transform(wbeFftKernels().inverse, pSrc, pDst, len);
}
