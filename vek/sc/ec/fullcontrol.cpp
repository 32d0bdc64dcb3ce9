// Controller of the full band: step sizes for the NLMS, and the copies between the adaptive and the fixed filter.
#include <algorithm>
#include <cstring>
#include <type_traits>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/ec/judge.h"
#include "sc/ec/state.h"
#include "veksc_ec.h"

namespace {

using namespace vek;

struct Control {
    uint32_t mark;
    int frameSize, tapLen;
    ec::Judge judge;
    ec::Mean adaptive, fixed;
};

// Marks a state of samples of a kind.
template <typename S>
constexpr uint32_t kMark = std::is_same_v<S, Vek16s> ? 0x4c4c5546 : 0x4c4c5547;

VekStatus checkShape(int frameSize, int tapLen, int sampleFreq) {
    if (frameSize < 1 || frameSize > ec::kMaxFrame || tapLen < 1 || tapLen > VEK_EC_MAX_TAPS) {
        return vekStsSizeErr;
    }
    return ec::knownRate(sampleFreq) ? vekStsNoErr : vekStsBadArgErr;
}

VekStatus sizeOf(int frameSize, int tapLen, int sampleFreq, int* pSize) {
    if (anyNull(pSize)) {
        return vekStsNullPtrErr;
    }
    const VekStatus status = checkShape(frameSize, tapLen, sampleFreq);
    if (status == vekStsNoErr) {
        *pSize = ec::bytesOf<Control>(0);
    }
    return status;
}

template <typename S>
VekStatus init(void* pState, int frameSize, int tapLen, int sampleFreq) {
    if (anyNull(pState)) {
        return vekStsNullPtrErr;
    }
    const VekStatus status = checkShape(frameSize, tapLen, sampleFreq);
    if (status == vekStsNoErr) {
        Control& c = *ec::placeOf<Control>(pState);
        c = {kMark<S>, frameSize, tapLen, {}, {}, {}};
        c.judge.init(frameSize, sampleFreq);
    }
    return status;
}

template <typename S>
VekStatus update(const S* pSrcRin, const S* pSrcSin, S* pDstStepSize, void* pState) {
    if (anyNull(pSrcRin, pSrcSin, pDstStepSize, pState)) {
        return vekStsNullPtrErr;
    }
    Control& c = *ec::placeOf<Control>(pState);
    if (c.mark != kMark<S>) {
        return vekStsStateErr;
    }
    // The whole stretch that the filter sees may make an echo in this frame.
    const ec::Level far = ec::levelOf(pSrcRin - c.tapLen, c.tapLen + c.frameSize, ec::Form<S>::unit);
    const ec::Level near = ec::levelOf(pSrcSin, c.frameSize, ec::Form<S>::unit);
    const double step = c.judge.step(far.power, near.power, near.peak, far.peak);
    std::fill_n(pDstStepSize, c.frameSize, ec::Form<S>::fraction(step));
    return vekStsNoErr;
}

template <typename S>
VekStatus control(const S* pAdaptiveFilterErr, const S* pFixedFilterErr, S* pAdaptiveCoefs, S* pFixedCoefs, S* pSGain,
                  void* pState) {
    if (anyNull(pAdaptiveFilterErr, pFixedFilterErr, pAdaptiveCoefs, pFixedCoefs, pSGain, pState)) {
        return vekStsNullPtrErr;
    }
    Control& c = *ec::placeOf<Control>(pState);
    if (c.mark != kMark<S>) {
        return vekStsStateErr;
    }
    const double fixedError = ec::levelOf(pFixedFilterErr, c.frameSize, ec::Form<S>::unit).power;
    c.adaptive.add(ec::levelOf(pAdaptiveFilterErr, c.frameSize, ec::Form<S>::unit).power, c.judge.keep());
    c.fixed.add(fixedError, c.judge.keep());
    c.judge.leave(fixedError);
    const size_t bytes = static_cast<size_t>(c.tapLen) * sizeof(S);
    switch (ec::betterOf(c.adaptive, c.fixed, c.judge.doubleTalk())) {
    case ec::Move::toFixed:
        std::memmove(pFixedCoefs, pAdaptiveCoefs, bytes);
        c.fixed = c.adaptive;
        break;
    case ec::Move::toAdaptive:
        std::memmove(pAdaptiveCoefs, pFixedCoefs, bytes);
        c.adaptive = c.fixed;
        break;
    case ec::Move::none:
        break;
    }
    *pSGain = ec::Form<S>::fraction(c.judge.gain());
    return vekStsNoErr;
}

} // namespace

VekStatus veksFullbandControllerGetSize_EC_16s(int frameSize, int tapLen, int sampleFreq, int* pSize) {
    return sizeOf(frameSize, tapLen, sampleFreq, pSize);
}
VekStatus veksFullbandControllerGetSize_EC_32f(int frameSize, int tapLen, int sampleFreq, int* pSize) {
    return sizeOf(frameSize, tapLen, sampleFreq, pSize);
}
VekStatus veksFullbandControllerInit_EC_16s(VeksFullbandControllerState_EC_16s* pState, int frameSize, int tapLen,
                                            int sampleFreq) {
    return init<Vek16s>(pState, frameSize, tapLen, sampleFreq);
}
VekStatus veksFullbandControllerInit_EC_32f(VeksFullbandControllerState_EC_32f* pState, int frameSize, int tapLen,
                                            int sampleFreq) {
    return init<Vek32f>(pState, frameSize, tapLen, sampleFreq);
}
VekStatus veksFullbandControllerUpdate_EC_16s(const Vek16s* pSrcRin, const Vek16s* pSrcSin, Vek16s* pDstStepSize,
                                              VeksFullbandControllerState_EC_16s* pState) {
    return update(pSrcRin, pSrcSin, pDstStepSize, pState);
}
VekStatus veksFullbandControllerUpdate_EC_32f(const Vek32f* pSrcRin, const Vek32f* pSrcSin, Vek32f* pDstStepSize,
                                              VeksFullbandControllerState_EC_32f* pState) {
    return update(pSrcRin, pSrcSin, pDstStepSize, pState);
}
VekStatus veksFullbandController_EC_16s(const Vek16s* pAdaptiveFilterErr, const Vek16s* pFixedFilterErr,
                                        Vek16s* pAdaptiveCoefs, Vek16s* pFixedCoefs, Vek16s* pSGain,
                                        VeksFullbandControllerState_EC_16s* pState) {
    return control(pAdaptiveFilterErr, pFixedFilterErr, pAdaptiveCoefs, pFixedCoefs, pSGain, pState);
}
VekStatus veksFullbandController_EC_32f(const Vek32f* pAdaptiveFilterErr, const Vek32f* pFixedFilterErr,
                                        Vek32f* pAdaptiveCoefs, Vek32f* pFixedCoefs, Vek32f* pSGain,
                                        VeksFullbandControllerState_EC_32f* pState) {
    return control(pAdaptiveFilterErr, pFixedFilterErr, pAdaptiveCoefs, pFixedCoefs, pSGain, pState);
}
