// Controller of subbands that tells its decision on double talk. It sees subbands alone: peaks are those of amplitudes
// over the bands, and a full scale of 1 is 2^20 in a subband, about what 32 bands of full-scale samples come to.
#include "sc/ec/bands.h"
#include "veksc_ec.h"

namespace {

using namespace vek;
using ec::Bands;

constexpr uint32_t kMark = 0x42424454;
constexpr double kUnit = 1.0 / (1 << 20);
constexpr int kNoPower = -32768;

double sumOf(const Vek32sc* x, int first, int len) {
    double sum = 0;
    for (int k = first; k < len; ++k) {
        sum += ec::power(x[k]);
    }
    return sum * kUnit * kUnit;
}

// In 1/256 dB of a coefficient of 1 in Q15.
Vek32s filterPower(const Bands& b, Vek32sc* const* coefs, int first) {
    double sum = 0;
    for (int s = 0; s < b.numSegments; ++s) {
        for (int k = first; k < b.numSubbands; ++k) {
            sum += ec::power(coefs[s][k]);
        }
    }
    return sum > 0 ? static_cast<Vek32s>(std::lround(2560 * std::log10(std::ldexp(sum, -30)))) : kNoPower;
}

// A state that has had its start, if it has the subband.
VekStatus take(VeksSubbandControllerDTState_EC_16s* pState, int startSubband, Bands*& bands) {
    bands = ec::placeOf<Bands>(pState);
    if (bands->mark != kMark) {
        return vekStsStateErr;
    }
    return startSubband < 0 || startSubband >= bands->numSubbands ? vekStsSizeErr : vekStsNoErr;
}

} // namespace

VekStatus veksSubbandControllerDTGetSize_EC_16s(int numSubbands, int frameSize, int numSegments, int sampleFreq,
                                                int* pSize) {
    return ec::bandsSize(numSubbands, frameSize, numSegments, sampleFreq, pSize);
}

VekStatus veksSubbandControllerDTInit_EC_16s(VeksSubbandControllerDTState_EC_16s* pState, int numSubbands,
                                             int frameSize, int numSegments, int sampleFreq) {
    return ec::bandsInit(kMark, pState, numSubbands, frameSize, numSegments, sampleFreq);
}

VekStatus veksSubbandControllerDTUpdate_EC_16s(const Vek32sc* const* ppSrcRinSubbandsHistory,
                                               const Vek32sc* pSrcSinSubbands, const Vek32sc* pSrcFilterErr,
                                               Vek32s* pDstStepSize, int* pIsDT, int* pDisableNLP, int startSubband,
                                               VeksSubbandControllerDTState_EC_16s* pState) {
    if (ppSrcRinSubbandsHistory == nullptr || anyNull(pSrcSinSubbands, pSrcFilterErr) || pDstStepSize == nullptr ||
        anyNull(pIsDT, pDisableNLP) || pState == nullptr) {
        return vekStsNullPtrErr;
    }
    Bands* bands = nullptr;
    if (const VekStatus status = take(pState, startSubband, bands); status != vekStsNoErr) {
        return status;
    }
    Bands& b = *bands;
    if (ec::rowNull(ppSrcRinSubbandsHistory, b.numSegments)) {
        return vekStsNullPtrErr;
    }
    double powers[ec::kMaxSubbands];
    ec::historyPowers(b, ppSrcRinSubbandsHistory, startSubband, powers);
    double far = 0;
    for (int s = 0; s < b.numSegments; ++s) {
        far = std::fmax(far, sumOf(ppSrcRinSubbandsHistory[s], startSubband, b.numSubbands));
    }
    const double near = sumOf(pSrcSinSubbands, startSubband, b.numSubbands);
    b.judge.leave(sumOf(pSrcFilterErr, startSubband, b.numSubbands));
    const double step = b.judge.step(far, near, std::sqrt(near), std::sqrt(far));
    ec::stepSizes(b, powers, step, startSubband, pDstStepSize);
    *pIsDT = b.judge.doubleTalk();
    *pDisableNLP = b.judge.doubleTalk() || b.judge.silent();
    return vekStsNoErr;
}

VekStatus veksSubbandControllerDT_EC_16s(const Vek32sc* pSrcAdaptiveFilterErr, const Vek32sc* pSrcFixedFilterErr,
                                         Vek32sc** ppDstAdaptiveCoefs, Vek32sc** ppDstFixedCoefs,
                                         Vek32s* pSrcDstFilterPwr, int* pDstStsAdapt, int PwrDelta,
                                         int FilterUpdateEnabled, int AdaptationEnabled, int startSubband,
                                         VeksSubbandControllerDTState_EC_16s* pState) {
    if (anyNull(pSrcAdaptiveFilterErr, pSrcFixedFilterErr) || ppDstAdaptiveCoefs == nullptr ||
        ppDstFixedCoefs == nullptr || pSrcDstFilterPwr == nullptr || pDstStsAdapt == nullptr || pState == nullptr) {
        return vekStsNullPtrErr;
    }
    Bands* bands = nullptr;
    if (const VekStatus status = take(pState, startSubband, bands); status != vekStsNoErr) {
        return status;
    }
    Bands& b = *bands;
    if (PwrDelta < 0) {
        return vekStsRangeErr;
    }
    if (ec::rowNull(ppDstAdaptiveCoefs, b.numSegments) || ec::rowNull(ppDstFixedCoefs, b.numSegments)) {
        return vekStsNullPtrErr;
    }
    ec::takeErrors(b, pSrcAdaptiveFilterErr, pSrcFixedFilterErr, startSubband);
    // A filter that runs away grows: it must not become the fixed one.
    const bool bounded = PwrDelta == 0 || *pSrcDstFilterPwr == kNoPower ||
                         filterPower(b, ppDstAdaptiveCoefs, startSubband) <= int64_t{*pSrcDstFilterPwr} + PwrDelta;
    int done = 0;
    for (int k = startSubband; k < b.numSubbands; ++k) {
        const ec::Move move = ec::betterOf(b.adaptive()[k], b.fixed()[k], b.judge.doubleTalk());
        if (move == ec::Move::toFixed && FilterUpdateEnabled != 0 && bounded) {
            ec::copyBand(b, k, ppDstAdaptiveCoefs, ppDstFixedCoefs);
            b.fixed()[k] = b.adaptive()[k];
            done |= 1;
        } else if (move == ec::Move::toAdaptive && AdaptationEnabled != 0) {
            ec::copyBand(b, k, ppDstFixedCoefs, ppDstAdaptiveCoefs);
            b.adaptive()[k] = b.fixed()[k];
            done |= 2;
        }
    }
    *pSrcDstFilterPwr = filterPower(b, ppDstFixedCoefs, startSubband);
    *pDstStsAdapt = done;
    return vekStsNoErr;
}
