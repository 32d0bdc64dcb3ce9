// Lapped transform of G.722.1 and the 128-point Fourier transform of the voice activity detector.
#include <cstring>

#include "sc/common/signal_check.h"
#include "sc/common/table.h"
#include "sc/kernels/lapped.h"
#include "sc/kernels/transform.h"
#include "veksc_signal.h"

using namespace vek;

namespace {

constexpr int kMaxBlock = 640;

// Rising halves of windows, Q15.
const auto g_window320 = sineWindow<int16_t, 320>(15);
const auto g_window640 = sineWindow<int16_t, 640>(15);

using Fold = void (*)(const int16_t*, const int16_t*, const int16_t*, int16_t*, int);

// One block through a fold; the block then becomes the old one. The destination may be the source.
VekStatus lap(Fold fold, const Vek16s* pSrc, Vek16s* pSrcDstOld, Vek16s* pDst, int len) {
    if (anyNull(pSrc, pSrcDstOld, pDst)) {
        return vekStsNullPtrErr;
    }
    if (len != 320 && len != 640) {
        return vekStsLengthErr;
    }
    const size_t bytes = static_cast<size_t>(len) * sizeof(Vek16s);
    alignas(32) Vek16s block[kMaxBlock];
    fold(pSrc, pSrcDstOld, len == 320 ? g_window320.data() : g_window640.data(), block, len / 2);
    std::memcpy(pSrcDstOld, pSrc, bytes);
    std::memcpy(pDst, block, bytes);
    return vekStsNoErr;
}

VekStatus dct(const Vek16s* pSrc, Vek16s* pDst, int len) {
    if (anyNull(pSrc, pDst)) {
        return vekStsNullPtrErr;
    }
    if (len == 320) {
        transformKernels().dct320(pSrc, pDst);
    } else if (len == 640) {
        transformKernels().dct640(pSrc, pDst);
    } else {
        return vekStsLengthErr;
    }
    return vekStsNoErr;
}

} // namespace

VekStatus veksDecomposeMLTToDCT_G7221_16s(const Vek16s* pSrc, Vek16s* pSrcDstOld, Vek16s* pDst, int len) {
    return lap(lappedKernels().fold16, pSrc, pSrcDstOld, pDst, len);
}

VekStatus veksDecomposeMLTToDCT_G722_16s(const Vek16s* pSrc, Vek16s* pSrcDstOld, Vek16s* pDst) {
    return veksDecomposeMLTToDCT_G7221_16s(pSrc, pSrcDstOld, pDst, 320);
}

VekStatus veksDecomposeDCTToMLT_G7221_16s(const Vek16s* pSrc, Vek16s* pSrcDstOld, Vek16s* pDst, int len) {
    return lap(lappedKernels().unfold16, pSrc, pSrcDstOld, pDst, len);
}

VekStatus veksDecomposeDCTToMLT_G722_16s(const Vek16s* pSrc, Vek16s* pSrcDstOld, Vek16s* pDst) {
    return veksDecomposeDCTToMLT_G7221_16s(pSrc, pSrcDstOld, pDst, 320);
}

VekStatus veksDCTFwd_G7221_16s(const Vek16s* pSrc, Vek16s* pDst, int len) {
    return dct(pSrc, pDst, len);
}

VekStatus veksDCTInv_G7221_16s(const Vek16s* pSrc, Vek16s* pDst, int len) {
    return dct(pSrc, pDst, len);
}

VekStatus veksDCTFwd_G722_16s(const Vek16s* pSrc, Vek16s* pDst) {
    return dct(pSrc, pDst, 320);
}

VekStatus veksDCTInv_G722_16s(const Vek16s* pSrc, Vek16s* pDst) {
    return dct(pSrc, pDst, 320);
}

VekStatus veksFFTFwd_RToPerm_GSMAMR_16s_I(Vek16s* pSrcDst) {
    if (anyNull(pSrcDst)) {
        return vekStsNullPtrErr;
    }
    transformKernels().fft128(pSrcDst);
    return vekStsNoErr;
}
