// Controllers of subbands. The near end is judged over the whole band, each band's coefficients move by its own errors.
// The form with double talk told is subcontroldt.cpp's.
#include <type_traits>

#include "sc/ec/bands.h"
#include "veksc_ec.h"

namespace {

using namespace vek;
using ec::Bands;

// Marks a state of samples of a kind.
template <typename S>
constexpr uint32_t kMark = std::is_same_v<S, Vek16s> ? 0x42425353 : 0x42425354;

template <typename S, typename C, typename Step>
VekStatus update(const S* pSrcRin, const S* pSrcSin, const C* const* history, const C* pSrcSinSubbands,
                 Step* pDstStepSize, void* pState) {
    if (anyNull(pSrcRin, pSrcSin) || anyNull(pSrcSinSubbands) || history == nullptr || pDstStepSize == nullptr ||
        pState == nullptr) {
        return vekStsNullPtrErr;
    }
    Bands& b = *ec::placeOf<Bands>(pState);
    if (b.mark != kMark<S>) {
        return vekStsStateErr;
    }
    if (ec::rowNull(history, b.numSegments)) {
        return vekStsNullPtrErr;
    }
    double powers[ec::kMaxSubbands];
    ec::historyPowers(b, history, 0, powers);
    const ec::Level far = ec::levelOf(pSrcRin, b.frameSize, ec::Form<S>::unit);
    const ec::Level nearEnd = ec::levelOf(pSrcSin, b.frameSize, ec::Form<S>::unit);
    // Errors are known in subbands alone: there the near end is measured too, in the same scale.
    double near = 0;
    for (int k = 0; k < b.numSubbands; ++k) {
        near += ec::power(pSrcSinSubbands[k]);
    }
    const double step = b.judge.step(far.power, nearEnd.power > ec::kSilence ? near : 0, nearEnd.peak, far.peak);
    ec::stepSizes(b, powers, step, 0, pDstStepSize);
    return vekStsNoErr;
}

template <typename S, typename C>
VekStatus control(const C* pSrcAdaptiveFilterErr, const C* pSrcFixedFilterErr, C** ppDstAdaptiveCoefs,
                  C** ppDstFixedCoefs, S* pDstSGain, void* pState) {
    if (anyNull(pSrcAdaptiveFilterErr, pSrcFixedFilterErr) || ppDstAdaptiveCoefs == nullptr ||
        ppDstFixedCoefs == nullptr || pDstSGain == nullptr || pState == nullptr) {
        return vekStsNullPtrErr;
    }
    Bands& b = *ec::placeOf<Bands>(pState);
    if (b.mark != kMark<S>) {
        return vekStsStateErr;
    }
    if (ec::rowNull(ppDstAdaptiveCoefs, b.numSegments) || ec::rowNull(ppDstFixedCoefs, b.numSegments)) {
        return vekStsNullPtrErr;
    }
    double fixedError = 0;
    for (int k = 0; k < b.numSubbands; ++k) {
        fixedError += ec::power(pSrcFixedFilterErr[k]);
    }
    ec::takeErrors(b, pSrcAdaptiveFilterErr, pSrcFixedFilterErr, 0);
    b.judge.leave(fixedError);
    for (int k = 0; k < b.numSubbands; ++k) {
        switch (ec::betterOf(b.adaptive()[k], b.fixed()[k], b.judge.doubleTalk())) {
        case ec::Move::toFixed:
            ec::copyBand(b, k, ppDstAdaptiveCoefs, ppDstFixedCoefs);
            b.fixed()[k] = b.adaptive()[k];
            break;
        case ec::Move::toAdaptive:
            ec::copyBand(b, k, ppDstFixedCoefs, ppDstAdaptiveCoefs);
            b.adaptive()[k] = b.fixed()[k];
            break;
        case ec::Move::none:
            break;
        }
    }
    *pDstSGain = ec::Form<S>::fraction(b.judge.gain());
    return vekStsNoErr;
}

} // namespace

VekStatus veksSubbandControllerGetSize_EC_16s(int numSubbands, int frameSize, int numSegments, int sampleFreq,
                                              int* pSize) {
    return ec::bandsSize(numSubbands, frameSize, numSegments, sampleFreq, pSize);
}
VekStatus veksSubbandControllerGetSize_EC_32f(int numSubbands, int frameSize, int numSegments, int sampleFreq,
                                              int* pSize) {
    return ec::bandsSize(numSubbands, frameSize, numSegments, sampleFreq, pSize);
}
VekStatus veksSubbandControllerInit_EC_16s(VeksSubbandControllerState_EC_16s* pState, int numSubbands, int frameSize,
                                           int numSegments, int sampleFreq) {
    return ec::bandsInit(kMark<Vek16s>, pState, numSubbands, frameSize, numSegments, sampleFreq);
}
VekStatus veksSubbandControllerInit_EC_32f(VeksSubbandControllerState_EC_32f* pState, int numSubbands, int frameSize,
                                           int numSegments, int sampleFreq) {
    return ec::bandsInit(kMark<Vek32f>, pState, numSubbands, frameSize, numSegments, sampleFreq);
}
VekStatus veksSubbandControllerUpdate_EC_16s(const Vek16s* pSrcRin, const Vek16s* pSrcSin,
                                             const Vek32sc* const* ppSrcRinSubbandsHistory,
                                             const Vek32sc* pSrcSinSubbands, Vek32s* pDstStepSize,
                                             VeksSubbandControllerState_EC_16s* pState) {
    return update(pSrcRin, pSrcSin, ppSrcRinSubbandsHistory, pSrcSinSubbands, pDstStepSize, pState);
}
VekStatus veksSubbandControllerUpdate_EC_32f(const Vek32f* pSrcRin, const Vek32f* pSrcSin,
                                             const Vek32fc* const* ppSrcRinSubbandsHistory,
                                             const Vek32fc* pSrcSinSubbands, Vek32f* pDstStepSize,
                                             VeksSubbandControllerState_EC_32f* pState) {
    return update(pSrcRin, pSrcSin, ppSrcRinSubbandsHistory, pSrcSinSubbands, pDstStepSize, pState);
}
VekStatus veksSubbandController_EC_16s(const Vek32sc* pSrcAdaptiveFilterErr, const Vek32sc* pSrcFixedFilterErr,
                                       Vek32sc** ppDstAdaptiveCoefs, Vek32sc** ppDstFixedCoefs, Vek16s* pDstSGain,
                                       VeksSubbandControllerState_EC_16s* pState) {
    return control(pSrcAdaptiveFilterErr, pSrcFixedFilterErr, ppDstAdaptiveCoefs, ppDstFixedCoefs, pDstSGain, pState);
}
VekStatus veksSubbandController_EC_32f(const Vek32fc* pSrcAdaptiveFilterErr, const Vek32fc* pSrcFixedFilterErr,
                                       Vek32fc** ppDstAdaptiveCoefs, Vek32fc** ppDstFixedCoefs, Vek32f* pDstSGain,
                                       VeksSubbandControllerState_EC_32f* pState) {
    return control(pSrcAdaptiveFilterErr, pSrcFixedFilterErr, ppDstAdaptiveCoefs, ppDstFixedCoefs, pDstSGain, pState);
}
