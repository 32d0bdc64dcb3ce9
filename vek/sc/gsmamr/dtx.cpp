// Discontinuous transmission of AMR: the histories of both sides, the handler of the encoder, the frame of silence.
#include "sc/common/dtxhistory.h"
#include "sc/common/logarithm.h"
#include "sc/common/signal_check.h"
#include "sc/gsmamr/linespectrum.h"
#include "sc/kernels/corr.h"
#include "veksc_g729lp.h"
#include "veksc_gsmamrdtx.h"

namespace {

using namespace vek::gsmamr;

constexpr Vek16s kHangoverFrames = 7;
constexpr int kElapsedFrames = 30;

// Logarithm of the mean energy, Q10: the sum is doubled, hence the 1 beside the logarithm of 160.
Vek16s logEnergy(const Vek16s* x) {
    constexpr Vek16s kLogFrame = 8521;
    const int32_t energy = sat32(2 * corrKernels().dot16(x, x, kFrame));
    Vek16s whole = 0;
    Vek16s fraction = 0;
    Log2(energy, whole, fraction);
    return sub(add(shl(whole, 10), shr(fraction, 5)), kLogFrame);
}

} // namespace

VekStatus veksDecDTXBuffer_GSMAMR_16s(const Vek16s* pSrcSpch, const Vek16s* pSrcLsf, Vek16s* pValResultUpdateIndex,
                                      Vek16s* pSrcDstLsfBuffer, Vek16s* pSrcDstLogEnergyBuffer) {
    return enterDtxHistory<kOrder>(pSrcSpch, pSrcLsf, pValResultUpdateIndex, pSrcDstLsfBuffer, pSrcDstLogEnergyBuffer,
                                   logEnergy);
}

VekStatus veksEncDTXBuffer_GSMAMR_16s(const Vek16s* pSrcSpch, const Vek16s* pSrcLsp, Vek16s* pValResultUpdateIndex,
                                      Vek16s* pSrcDstLspBuffer, Vek16s* pSrcDstLogEnergyBuffer) {
    return enterDtxHistory<kOrder>(pSrcSpch, pSrcLsp, pValResultUpdateIndex, pSrcDstLspBuffer, pSrcDstLogEnergyBuffer,
                                   [](const Vek16s* x) { return shr(logEnergy(x), 1); });
}

VekStatus veksEncDTXHandler_GSMAMR_16s(Vek16s* pValResultHangOverCount, Vek16s* pValResultDtxElapseCount,
                                       VekSpchBitRate* pValResultUsedMode, Vek16s* pResultSidFlag, Vek16s vadFlag) {
    if (anyNull(pValResultHangOverCount, pValResultDtxElapseCount, pResultSidFlag, pValResultUsedMode)) {
        return vekStsNullPtrErr;
    }
    if (*pValResultHangOverCount < 0) {
        return vekStsRangeErr;
    }
    *pResultSidFlag = 0;
    // A branch keeps the saturation out of the way from count to count.
    if (*pValResultDtxElapseCount < INT16_MAX) [[likely]] {
        ++*pValResultDtxElapseCount;
    }
    if (vadFlag != 0) {
        *pValResultHangOverCount = kHangoverFrames;
    } else if (*pValResultHangOverCount == 0) {
        *pValResultDtxElapseCount = 0;
        *pValResultUsedMode = VEK_SPCHBR_DTX;
        *pResultSidFlag = 1;
    } else {
        *pValResultHangOverCount = sub(*pValResultHangOverCount, 1);
        // No further hangover soon after the decoder has heard of the noise.
        if (add(*pValResultDtxElapseCount, *pValResultHangOverCount) < kElapsedFrames) {
            *pValResultUsedMode = VEK_SPCHBR_DTX;
        }
    }
    return vekStsNoErr;
}

VekStatus veksEncDTXSID_GSMAMR_16s(const Vek16s* pSrcLspBuffer, const Vek16s* pSrcLogEnergyBuffer,
                                   Vek16s* pValResultLogEnergyIndex, Vek16s* pValResultDtxLsfRefIndex,
                                   Vek16s* pSrcDstDtxQLsfIndex, Vek16s* pSrcDstPredQErr, Vek16s* pSrcDstPredQErrMR122,
                                   Vek16s sidFlag) {
    if (anyNull(pSrcLspBuffer, pSrcLogEnergyBuffer, pValResultLogEnergyIndex, pValResultDtxLsfRefIndex,
                pSrcDstDtxQLsfIndex, pSrcDstPredQErr, pSrcDstPredQErrMR122)) {
        return vekStsNullPtrErr;
    }
    if (sidFlag == 0 && *pValResultLogEnergyIndex != 0) {
        return vekStsNoErr;
    }
    Vek16s energy = 0;
    int32_t sums[kOrder] = {};
    for (int k = 0; k < kDtxHistory; ++k) {
        energy = add(energy, shr(pSrcLogEnergyBuffer[k], 2));
        for (int i = 0; i < kOrder; ++i) {
            sums[i] += pSrcLspBuffer[k * kOrder + i];
        }
    }
    energy = shr(energy, 1);
    // In steps of a quarter from -2.5 on, 6 bits.
    const Vek16s step = shr(add(add(energy, 2560), 128), 8);
    const Vek16s energyIndex = step > 63 ? Vek16s{63} : step < 0 ? Vek16s{0} : step;
    // The gain predictors go on from the energy as the decoder will know it.
    Vek16s error = sub(sub(shl(energyIndex, 8), 2560), 9000);
    error = error > 0 ? Vek16s{0} : error < -14436 ? Vek16s{-14436} : error;
    const Vek16s error122 = mult(5443, error);
    for (int i = 0; i < 4; ++i) {
        pSrcDstPredQErr[i] = error;
        pSrcDstPredQErrMR122[i] = error122;
    }
    *pValResultLogEnergyIndex = energyIndex;

    Vek16s lsp[kOrder];
    Vek16s lsf[kOrder];
    for (int i = 0; i < kOrder; ++i) {
        lsp[i] = extract_l(sums[i] >> 3);
    }
    veksLSPToLSF_Norm_G729_16s(lsp, lsf);
    keepApart<kOrder>(lsf, kLsfGap);
    lsfToLsp(lsf, lsp);
    Vek16s residual[kOrder] = {};
    Vek16s quantised[kOrder];
    quantiseBy3(Rate::Dtx, lsp, residual, quantised, pSrcDstDtxQLsfIndex, pValResultDtxLsfRefIndex);
    return vekStsNoErr;
}
