// Windowed autocorrelation of AMR, with one window a frame or, at 12.2 kbit/s, two.
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/gsmamr/rates.h"
#include "sc/kernels/corr.h"
#include "veksc_gsmamrdtx.h"

namespace {

using namespace vek::gsmamr;

constexpr int kWindow = 240;
constexpr int kLags = kOrder + 1;

void windowed(const Vek16s* x, const Vek16s* window, Vek32s* r) {
    const CorrKernels& kernels = corrKernels();
    alignas(32) Vek16s y[kWindow + kCorrPadding] = {};
    kernels.window16(x, window, y, kWindow);
    while (2 * kernels.dot16(y, y, kWindow) > kMax32) {
        kernels.shift16(y, y, kWindow, -2);
    }
    // The energy fits, and no sum is above it.
    kernels.corr32(y, y, kWindow, kLags, r);
    const int32_t energy = L_add(2 * r[0], 1);
    const int norm = norm_l(energy);
    r[0] = energy << norm;
    for (int k = 1; k < kLags; ++k) {
        r[k] = L_shl(2 * r[k], norm);
    }
}

} // namespace

VekStatus veksAutoCorr_GSMAMR_16s32s(const Vek16s* pSrcSpch, Vek32s* pDstAutoCorr, VekSpchBitRate mode) {
    if (anyNull(pSrcSpch, pDstAutoCorr)) {
        return vekStsNullPtrErr;
    }
    const Rate rate = rateOf(mode);
    if (rate == Rate::None) {
        return vekStsBitRateErr;
    }
    if (rate == Rate::R1220) {
        windowed(pSrcSpch, kWindow160x80, pDstAutoCorr);
        windowed(pSrcSpch, kWindow232x8, pDstAutoCorr + kLags);
    } else {
        windowed(pSrcSpch, kWindow200x40, pDstAutoCorr);
    }
    return vekStsNoErr;
}
