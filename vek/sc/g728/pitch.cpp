// Pitch period for the postfilter: coarse on the residual below 1 kHz, decimated by four, then fine on the residual
// itself, with a second look around the period of the frame before, so that no multiple of it is taken.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "sc/common/correlate.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g728/adapter.h"
#include "sc/kernels/corr.h"
#include "veksc_g728.h"

using namespace vek::g728;

namespace {

constexpr int kFrame = 20;
constexpr int kWindow = 100;
constexpr int kDecimation = 4;

// Elliptic filter of order 3, cut off at 1 kHz: zeros in Q19, poles in Q13; the output has 8 fraction bits.
constexpr int64_t kZeros[4] = {18721, -3668, -3668, 18721};
constexpr int64_t kPoles[3] = {-19172, 16481, -5031};
constexpr int kZeroShift = 19;
constexpr int kPoleShift = 13;
constexpr int kOutShift = 8;

void decimate(Adapter& adapter, const Vek16s* frame) {
    constexpr int fresh = kFrame / kDecimation;
    constexpr int size = kDecimatedLag + kDecimatedWindow;
    std::memmove(adapter.decimated, adapter.decimated + fresh, (size - fresh) * sizeof(Vek16s));
    int16_t(&x)[3] = adapter.lowIn;
    int32_t(&y)[3] = adapter.lowOut;
    for (int n = 0; n < kFrame; ++n) {
        const int64_t zeros = kZeros[0] * frame[n] + kZeros[1] * x[0] + kZeros[2] * x[1] + kZeros[3] * x[2];
        const int64_t poles = kPoles[0] * y[0] + kPoles[1] * y[1] + kPoles[2] * y[2];
        const int64_t sum = zeros * (1 << (kPoleShift + kOutShift - kZeroShift)) - poles;
        const int32_t out = fix::sat32((sum + (1 << (kPoleShift - 1))) >> kPoleShift);
        x[2] = x[1];
        x[1] = x[0];
        x[0] = frame[n];
        y[2] = y[1];
        y[1] = y[0];
        y[0] = out;
        if (n % kDecimation == kDecimation - 1) {
            adapter.decimated[size - fresh + n / kDecimation] = fix::sat16((out + (1 << (kOutShift - 1))) >> kOutShift);
        }
    }
}

struct Lag {
    int lag;
    int64_t correlation;
};

// The first lag of the largest correlation of the n samples with those before.
Lag best(const Vek16s* x, int n, int first, int last) {
    const MostOfSlide most = mostOfSlide(x, x - first, n, -1, last - first + 1);
    return {first + most.at, most.sum};
}

// Gain of a predictor with one tap, 0..1, Q15.
int64_t tap(const Vek16s* x, const Lag& found) {
    const int64_t energy = corrKernels().dot16(x - found.lag, x - found.lag, kWindow);
    if (found.correlation <= 0) {
        return 0;
    }
    return found.correlation >= energy ? 32768 : found.correlation * 32768 / energy;
}

} // namespace

VekStatus veksPostFilterAdapterGetStateSize_G728(int* pSize) {
    return AdapterState::size(pSize);
}

VekStatus veksPostFilterAdapterInit_G728(VeksPostFilterAdapterState_G728* pMem) {
    return AdapterState::init(pMem);
}

VekStatus veksPitchPeriodExtraction_G728_16s(const Vek16s* pSrc, int* pSrcDstPitch,
                                             VeksPostFilterAdapterState_G728* pMem) {
    constexpr int kFine = 3;
    constexpr int kAround = 6;
    // The period before is kept from 0.4 of the new one's gain on.
    constexpr int64_t kKeptGain = 13107; // Q15
    if (anyNull(pSrc, pSrcDstPitch, pMem)) {
        return vekStsNullPtrErr;
    }
    const int before = *pSrcDstPitch;
    if (before < kLeastPitch || before > kMostPitch) {
        return vekStsRangeErr;
    }
    return AdapterState::with(pMem, [&](auto& content) {
        decimate(content, pSrc + kWindow - kFrame);
        const Lag coarse = best(content.decimated + kDecimatedLag, kDecimatedWindow, kLeastPitch / kDecimation,
                                kMostPitch / kDecimation);
        const int middle = coarse.lag * kDecimation;
        Lag fine = best(pSrc, kWindow, std::max(middle - kFine, kLeastPitch), std::min(middle + kFine, kMostPitch));
        if (fine.lag > before + kAround) {
            const Lag old = best(pSrc, kWindow, std::max(before - kAround, kLeastPitch), before + kAround);
            if (tap(pSrc, old) * 32768 > kKeptGain * tap(pSrc, fine)) {
                fine = old;
            }
        }
        *pSrcDstPitch = fine.lag;
    });
}
