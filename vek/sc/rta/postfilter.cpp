// Short-term post-filter of the real-time audio codec.
#include <algorithm>
#include <cmath>

#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/floatcorr.h"
#include "veksc_g729lp.h"
#include "veksc_g729post.h"
#include "veksc_rta.h"

namespace {

using namespace vek;

constexpr int kMostOrder = 17;
constexpr int kBlock = 40;
constexpr int kChunk = 4 * kBlock;
constexpr int kResponse = 24;
constexpr float kTilt = 0.5F;
// In silence the gain would fall, and the outputs fade, until they are too small for ordinary numbers, which is slow.
constexpr float kLeastGain = 0.01F;
constexpr float kDust = 1e-13F;

struct Level {
    float emphasis = 0;
    float gain = 1;
};
using State = Marked<Level, 0x52544150>;

// Weights of the numerator and the denominator, by apfIdx.
struct Strength {
    double numerator;
    double denominator;
};
constexpr Strength kStrengths[] = {{0.65, 0.75}, {0.55, 0.75}, {0.5, 0.8}};

struct Filter {
    float numerator[kMostOrder + 1]; // the last tap first
    float denominator[kMostOrder + 1];
};

Filter weighted(const float* a, int order, Strength strength) {
    Filter f;
    double numerator = 1;
    double denominator = 1;
    f.numerator[order] = 1;
    f.denominator[0] = 1;
    for (int j = 1; j <= order; ++j) {
        numerator *= strength.numerator;
        denominator *= strength.denominator;
        f.numerator[order - j] = static_cast<float>(numerator * a[j]);
        f.denominator[j] = static_cast<float>(denominator * a[j]);
    }
    return f;
}

// Neighbours' correlation in the filter's response to an impulse.
float tiltOf(const Filter& f, int order) {
    float buffer[kMostOrder + kResponse + 1] = {};
    float* const h = buffer + kMostOrder;
    std::reverse_copy(f.numerator, f.numerator + order + 1, h);
    floatCorrKernels().allPole32f(f.denominator, order, h, kResponse);
    double r[2];
    floatCorrKernels().corr32f64f(h, h, kResponse, 1, r);
    floatCorrKernels().corr32f64f(h, h + 1, kResponse - 1, 1, r + 1);
    return r[0] > 0 && std::isfinite(r[0]) ? static_cast<float>(r[1] / r[0]) : 0;
}

} // namespace

VekStatus veksPostFilterGetStateSize_RTA_32f(int* pSize) {
    return State::size(pSize);
}

VekStatus veksPostFilterInit_RTA_32f(VeksPostFilterState_RTA_32f* pMem) {
    return State::init(pMem);
}

VekStatus veksPostFilter_RTA_32f_I(const Vek32f* pSrcLPC, int order, Vek32f* pSrcDstSpeech, int len, int apfIdx,
                                   Vek32f* pSTApfMem, VeksPostFilterState_RTA_32f* pMem) {
    if (anyNull(pSrcLPC, pSrcDstSpeech, pSTApfMem, pMem)) {
        return vekStsNullPtrErr;
    }
    if (order < 1 || order > kMostOrder || badLength(len) || len % kBlock != 0) {
        return vekStsSizeErr;
    }
    if (apfIdx < 1 || apfIdx > 3) {
        return vekStsBadArgErr;
    }
    return State::with(pMem, [&](auto& content) {
        const Filter f = weighted(pSrcLPC, order, kStrengths[apfIdx - 1]);
        const float tilt = kTilt * tiltOf(f, order);
        float* const inputs = pSTApfMem;
        float* const outputs = pSTApfMem + kMostOrder;
        while (len > 0) {
            const int n = std::min(len, kChunk);
            float x[kMostOrder + kChunk];
            float y[kMostOrder + kChunk];
            std::copy_n(inputs, kMostOrder, x);
            std::copy_n(pSrcDstSpeech, n, x + kMostOrder);
            std::copy_n(outputs, kMostOrder, y);
            floatCorrKernels().corr32f(f.numerator, x + kMostOrder - order, order + 1, n, y + kMostOrder);
            floatCorrKernels().allPole32f(f.denominator, order, y + kMostOrder, n);
            std::copy_n(x + n, kMostOrder, inputs);
            for (int i = 0; i < kMostOrder; ++i) {
                outputs[i] = (y[n + i] + kDust) - kDust;
            }
            veksPreemphasize_32f_I(y + kMostOrder, n, &content.emphasis, tilt);
            for (int i = kMostOrder; i < kMostOrder + n; i += kBlock) {
                veksGainControl_G729_32f_I(x + i, y + i, &content.gain);
                content.gain = std::max(content.gain, kLeastGain);
            }
            std::copy_n(y + kMostOrder, n, pSrcDstSpeech);
            pSrcDstSpeech += n;
            len -= n;
        }
    });
}
