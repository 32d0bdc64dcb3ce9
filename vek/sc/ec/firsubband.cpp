// Filters of subbands and the updates of their coefficients.
#include "sc/common/signal_check.h"
#include "sc/ec/rows.h"
#include "sc/kernels/ec.h"
#include "veksc_ec.h"

namespace {

using namespace vek;

using ec::kMaxSegments;
using ec::kMaxSubbands;
using ec::rowNull;

constexpr int kMaxOrder = 16;

constexpr bool badSizes(int numSegments, int len, int startSubband) {
    return numSegments < 1 || numSegments > kMaxSegments || len < 1 || len > kMaxSubbands || startSubband < 0 ||
           startSubband >= len;
}

// What the updates of 32-bit coefficients have in common behind the pointers.
VekStatus checkUpdate(const Vek32sc* const* input, const Vek32sc* const* coefs, int numSegments, int len,
                      int startSubband, int scaleFactorCoef) {
    if (badSizes(numSegments, len, startSubband)) {
        return vekStsSizeErr;
    }
    if (scaleFactorCoef < 1 || scaleFactorCoef > 31) {
        return vekStsScaleRangeErr;
    }
    return rowNull(input, numSegments) || rowNull(coefs, numSegments) ? vekStsNullPtrErr : vekStsNoErr;
}

} // namespace

VekStatus veksFIRSubband_EC_32sc_Sfs(const Vek32sc* const* ppSrcSignalIn, const Vek32sc* const* ppSrcCoefs,
                                     Vek32sc* pDstSignalOut, int numSegments, int len, int scaleFactor) {
    if (anyNull(ppSrcSignalIn, ppSrcCoefs, pDstSignalOut)) {
        return vekStsNullPtrErr;
    }
    if (badSizes(numSegments, len, 0)) {
        return vekStsSizeErr;
    }
    if (badScale(scaleFactor)) {
        return vekStsScaleRangeErr;
    }
    if (rowNull(ppSrcSignalIn, numSegments) || rowNull(ppSrcCoefs, numSegments)) {
        return vekStsNullPtrErr;
    }
    ecKernels().firWide(ppSrcSignalIn, ppSrcCoefs, numSegments, len, scaleFactor, pDstSignalOut);
    return vekStsNoErr;
}

VekStatus veksFIRSubbandLow_EC_32sc_Sfs(const Vek32sc* const* ppSrcSignalIn, const Vek32sc* const* ppSrcCoefs,
                                        int numSegments, Vek32sc* pDstSignalOut, int startSubband, int len,
                                        int scaleFactor) {
    if (anyNull(ppSrcSignalIn, ppSrcCoefs, pDstSignalOut)) {
        return vekStsNullPtrErr;
    }
    if (badSizes(numSegments, len, startSubband)) {
        return vekStsSizeErr;
    }
    if (badScale(scaleFactor)) {
        return vekStsScaleRangeErr;
    }
    if (rowNull(ppSrcSignalIn, numSegments) || rowNull(ppSrcCoefs, numSegments)) {
        return vekStsNullPtrErr;
    }
    ecKernels().firLow(ppSrcSignalIn, ppSrcCoefs, numSegments, startSubband, len, scaleFactor, pDstSignalOut);
    return vekStsNoErr;
}

VekStatus veksFIRSubbandCoeffUpdate_EC_32sc_I(const Vek32s* pStepSize, const Vek32sc* const* ppSrcFilterInput,
                                              const Vek32sc* pSrcError, Vek32sc** ppSrcDstCoefsQ15, int numSegments,
                                              int len, int scaleFactorCoef) {
    if (anyNull(pStepSize) || anyNull(ppSrcFilterInput) || anyNull(pSrcError) || ppSrcDstCoefsQ15 == nullptr) {
        return vekStsNullPtrErr;
    }
    if (const VekStatus status = checkUpdate(ppSrcFilterInput, ppSrcDstCoefsQ15, numSegments, len, 0, scaleFactorCoef);
        status != vekStsNoErr) {
        return status;
    }
    const EcKernels& kernels = ecKernels();
    Vek32sc products[kMaxSubbands];
    kernels.stepsSat(pStepSize, pSrcError, products, len);
    for (int s = 0; s < numSegments; ++s) {
        kernels.learnSat(ppSrcFilterInput[s], products, ppSrcDstCoefsQ15[s], len, scaleFactorCoef);
    }
    return vekStsNoErr;
}

VekStatus veksFIRSubbandLowCoeffUpdate_EC_32sc_I(const Vek32sc* const* ppSrcFilterInput, const Vek32sc* pSrcError,
                                                 Vek32sc** ppSrcDstCoefsQ15, int numSegments, Vek32sc* prodStepErrQ,
                                                 const Vek32s* pStepSize, int startSubband, int len,
                                                 int scaleFactorCoef) {
    if (anyNull(pStepSize) || anyNull(ppSrcFilterInput) || anyNull(pSrcError) || ppSrcDstCoefsQ15 == nullptr ||
        prodStepErrQ == nullptr) {
        return vekStsNullPtrErr;
    }
    if (const VekStatus status =
            checkUpdate(ppSrcFilterInput, ppSrcDstCoefsQ15, numSegments, len, startSubband, scaleFactorCoef);
        status != vekStsNoErr) {
        return status;
    }
    const EcKernels& kernels = ecKernels();
    kernels.stepsLow(pStepSize + startSubband, pSrcError + startSubband, prodStepErrQ + startSubband,
                     len - startSubband);
    for (int s = 0; s < numSegments; ++s) {
        kernels.learnLow(ppSrcFilterInput[s] + startSubband, prodStepErrQ + startSubband,
                         ppSrcDstCoefsQ15[s] + startSubband, len - startSubband, scaleFactorCoef);
    }
    return vekStsNoErr;
}

VekStatus veksFIRSubbandAPCoeffUpdate_EC_32fc_I(const Vek64f* const* ppStepSize, const Vek32fc* const* ppSrcFilterInput,
                                                const Vek32fc* const* ppSrcError, Vek32fc** ppSrcDstCoefsQ15,
                                                int numSegments, int len, int apOrder) {
    if (anyNull(ppStepSize) || anyNull(ppSrcFilterInput, ppSrcError) || ppSrcDstCoefsQ15 == nullptr) {
        return vekStsNullPtrErr;
    }
    if (badSizes(numSegments, len, 0) || apOrder < 1 || apOrder > kMaxOrder) {
        return vekStsSizeErr;
    }
    if (rowNull(ppStepSize, apOrder) || rowNull(ppSrcError, apOrder) ||
        rowNull(ppSrcFilterInput, numSegments + apOrder - 1) || rowNull(ppSrcDstCoefsQ15, numSegments)) {
        return vekStsNullPtrErr;
    }
    const EcKernels& kernels = ecKernels();
    Vek32fc products[kMaxSubbands];
    for (int p = 0; p < apOrder; ++p) {
        kernels.steps32fc(ppStepSize[p], ppSrcError[p], products, len);
        for (int s = 0; s < numSegments; ++s) {
            kernels.learn32fc(ppSrcFilterInput[s + p], products, ppSrcDstCoefsQ15[s], len);
        }
    }
    return vekStsNoErr;
}
