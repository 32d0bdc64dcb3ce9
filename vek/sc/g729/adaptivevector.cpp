// Adaptive codebook vector: the past excitation delayed by thirds of a sample.
// Where the delay is short the vector feeds itself: it is made in stretches that lie wholly behind it.
#include "sc/g729/adaptivevector.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/lpfilter.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/filter.h"
#include "veksc_g729pitch.h"

using namespace vek;
using namespace vek::fix;
using namespace vek::g729;

namespace {

constexpr int kReach = 10;
constexpr int kTaps = 2 * kReach;

// The windowed sinc at thirds of a sample from its middle on, Q15.
constexpr int16_t kSinc[31] = {29443, 25207, 14701, 3143, -4402, -5850, -2783, 1211, 3130, 2259, 0,
                               -1652, -1666, -464,  756,  1099,  550,   -245,  -634, -451, 0,    308,
                               296,   78,    -120,  -165, -79,   34,    91,    70,   0};

// Whole samples back, and the third to go on from there.
struct Delay {
    int whole;
    int third;

    Delay(int delay, int fraction) : whole(fraction > 0 ? delay + 1 : delay), third(fraction > 0 ? 2 : -fraction) {}
    // Samples that can be made before the filter meets the first of them.
    int stretch() const { return std::max(whole - kReach, 1); }
};

// The filter over the samples -9..10 around the delayed one, oldest first.
template <typename T>
struct Taps {
    T at[kTaps];

    Taps(int third, T unit) {
        for (int i = 0; i < kReach; ++i) {
            at[kReach - 1 - i] = static_cast<T>(kSinc[third + 3 * i] * unit);
            at[kReach + i] = static_cast<T>(kSinc[3 - third + 3 * i] * unit);
        }
    }
};

bool badDelay(int delay, int fraction) {
    return delay < 0 || delay > 143 || fraction < -1 || fraction > 1;
}

// Step by step in the order of the recommendation: outwards from the middle.
int16_t interpolated(const int16_t* x, int third) {
    int32_t sum = 0;
    for (int i = 0; i < kReach; ++i) {
        sum = L_mac(sum, x[-i], kSinc[third + 3 * i]);
        sum = L_mac(sum, x[1 + i], kSinc[3 - third + 3 * i]);
    }
    return round_s(sum);
}

} // namespace

void vek::g729::adaptiveVector(int16_t* exc, int delay, int fraction) {
    const Delay back(delay, fraction);
    const int16_t* x = exc - back.whole;
    Taps<int16_t> taps(back.third, 1);
    std::reverse(taps.at, taps.at + kTaps);
    const int64_t gain = sumAbs(taps.at, kTaps);
    const int stretch = back.stretch();
    for (int i = 0; i < kSubframe; i += stretch) {
        const int count = std::min(stretch, kSubframe - i);
        const int level = filterKernels().maxAbs16(x + i - kReach + 1, count + kTaps - 1);
        if (stretch > 1 && gain * level < (1 << 30)) {
            filterKernels().fir16(taps.at, kTaps - 1, x + i + kReach, exc + i, count, 15);
        } else {
            for (int k = i; k < i + count; ++k) {
                exc[k] = interpolated(x + k, back.third);
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
    const Delay back(pSrcDelay[0], pSrcDelay[1]);
    const Taps<float> taps(back.third, 1.0F / 32768);
    for (int i = 0; i < kSubframe; ++i) {
        pSrcDst[i] = corrKernels().dot32f(pSrcDst - back.whole + i - kReach + 1, taps.at, kTaps);
    }
    return vekStsNoErr;
}
