// Adaptive codebook vector: the past excitation delayed by sixths of a sample.
// Where the delay is short the vector feeds itself: it is made in stretches that lie wholly behind it.
#include "sc/g729/adaptivevector.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/filter.h"
#include "sc/kernels/floatdot.h"
#include "sc/kernels/loops.h"
#include "veksc_g729pitch.h"

using namespace vek::g729;

namespace {

constexpr int kReach = 10;
constexpr int kTaps = 2 * kReach;

// The windowed sinc at sixths of a sample from its middle on, Q15.
constexpr int16_t kSinc[61] = {29443, 28346, 25207, 20449, 14701, 8693, 3143, -1352, -4402, -5865, -5850, -4673, -2783,
                               -672,  1211,  2536,  3130,  2991,  2259, 1170, 0,     -1001, -1652, -1868, -1666, -1147,
                               -464,  218,   756,   1060,  1099,  904,  550,  135,   -245,  -514,  -634,  -602,  -451,
                               -231,  0,     191,   308,   340,   296,  198,  78,    -36,   -120,  -163,  -165,  -132,
                               -79,   -19,   34,    73,    91,    89,   70,   38,    0};
constexpr int kParts = 6;

// Whole samples back, and the sixth to go on from there.
struct Delay {
    int whole;
    int part;

    Delay(int delay, int sixths)
        : whole(sixths > 0 ? delay + 1 : delay), part(sixths > 0 ? kParts - sixths : -sixths) {}
    // Samples that can be made before the filter meets the first of them.
    int stretch() const { return std::max(whole - kReach, 1); }
};

// The filter over the samples -9..10 around the delayed one, for each sixth: as factors, oldest sample first, and in
// Q15, newest first, with the sum of its magnitudes.
struct Taps {
    float factors[kTaps];
    int16_t at[kTaps];
    int32_t gain;

    constexpr explicit Taps(int part) : factors(), at(), gain(0) {
        for (int i = 0; i < kReach; ++i) {
            at[kReach + i] = kSinc[part + kParts * i];
            at[kReach - 1 - i] = kSinc[kParts - part + kParts * i];
        }
        for (int i = 0; i < kTaps; ++i) {
            factors[kTaps - 1 - i] = static_cast<float>(at[i]) / 32768;
            gain += at[i] < 0 ? -at[i] : at[i];
        }
    }
};
constexpr Taps kSixths[kParts] = {Taps(0), Taps(1), Taps(2), Taps(3), Taps(4), Taps(5)};

bool badDelay(int delay, int fraction) {
    return delay < 0 || delay > 143 || fraction < -1 || fraction > 1;
}

// Step by step in the order of the recommendation: outwards from the middle.
int16_t interpolated(const int16_t* x, int part) {
    int32_t sum = 0;
    for (int i = 0; i < kReach; ++i) {
        sum = L_mac(sum, x[-i], kSinc[part + kParts * i]);
        sum = L_mac(sum, x[1 + i], kSinc[kParts - part + kParts * i]);
    }
    return round_s(sum);
}

} // namespace

void vek::g729::adaptiveVector(int16_t* exc, int delay, int fraction) {
    adaptiveVectorSixths(exc, delay, 2 * fraction);
}

void vek::g729::adaptiveVectorSixths(int16_t* exc, int delay, int sixths) {
    const Delay back(delay, sixths);
    const int16_t* x = exc - back.whole;
    const Taps& taps = kSixths[back.part];
    const int stretch = back.stretch();
    for (int i = 0; i < kSubframe; i += stretch) {
        const int count = std::min(stretch, kSubframe - i);
        const int level = filterKernels().maxAbs16(x + i - kReach + 1, count + kTaps - 1);
        if (stretch > 1 && int64_t{taps.gain} * level < (1 << 30)) {
            filterKernels().fir16(taps.at, kTaps - 1, x + i + kReach, exc + i, count, 15);
        } else {
            for (int k = i; k < i + count; ++k) {
                exc[k] = interpolated(x + k, back.part);
            }
        }
    }
}

VekStatus veksDecodeAdaptiveVector_G729_16s_I(const Vek16s* pSrcDelay, Vek16s* pSrcDst) {
    if (anyNull(pSrcDelay, pSrcDst)) {
        return vekStsNullPtrErr;
    }
    if (badDelay(pSrcDelay[0], pSrcDelay[1])) {
        return vekStsRangeErr;
    }
    adaptiveVector(pSrcDst + kPastExcitation, pSrcDelay[0], pSrcDelay[1]);
    return vekStsNoErr;
}

VekStatus veksDecodeAdaptiveVector_G729_16s(const Vek16s* pSrcDelay, Vek16s* pSrcDst, Vek16s* pDst) {
    if (anyNull(pDst)) {
        return vekStsNullPtrErr;
    }
    const VekStatus status = veksDecodeAdaptiveVector_G729_16s_I(pSrcDelay, pSrcDst);
    if (status == vekStsNoErr) {
        std::memcpy(pDst, pSrcDst + kPastExcitation, kSubframe * sizeof(Vek16s));
    }
    return status;
}

VekStatus veksDecodeAdaptiveVector_G729_32f_I(const Vek32s* pSrcDelay, Vek32f* pSrcDst) {
    if (anyNull(pSrcDelay) || anyNull(pSrcDst)) {
        return vekStsNullPtrErr;
    }
    if (badDelay(pSrcDelay[0], pSrcDelay[1])) {
        return vekStsRangeErr;
    }
    const Delay back(pSrcDelay[0], 2 * pSrcDelay[1]);
    const float* const taps = kSixths[back.part].factors;
    const Vek32f* const x = pSrcDst - back.whole - kReach + 1;
    const int stretch = back.stretch();
    if (stretch < kLeastOutputs) {
        for (int i = 0; i < kSubframe; ++i) {
            pSrcDst[i] = floatDotKernels().dot32f(x + i, taps, kTaps);
        }
        return vekStsNoErr;
    }
    for (int i = 0; i < kSubframe; i += stretch) {
        // A short rest is made anew with those before, which do not feed it.
        const int from = std::min(i, kSubframe - kLeastOutputs);
        loopKernels().taps32f(x + from, taps, pSrcDst + from, std::min(i + stretch, kSubframe) - from);
    }
    return vekStsNoErr;
}
