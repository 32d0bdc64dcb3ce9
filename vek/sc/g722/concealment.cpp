// Steps of the concealment of lost G.722 frames: decimation for the pitch analysis, high band without direct current,
// class of the signal before the loss.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g722/subband.h"
#include "veksc_g722.h"

using namespace vek::fix;

namespace {

constexpr int kTaps = 11;
constexpr int kStep = 4;
// Hamming-windowed sinc of cut-off 0.125, Q15, sum 32768.
constexpr Vek16s kLowPass[kTaps] = {-127, 0, 1051, 3824, 7233, 8806, 7233, 3824, 1051, 0, -127};
constexpr Vek16s kPole = 31457;

constexpr int kShortest = 16;
constexpr int kLongest = 1024;

VekG722FrameClass classOf(const Vek16s* x, int n, const g722::Bands& bands) {
    int crossings = 0;
    int64_t halves[2] = {};
    int64_t energy = 0;
    int64_t neighbours = 0;
    for (int i = 0; i < n; ++i) {
        crossings += (x[i] < 0) != (x[i - 1] < 0) ? 1 : 0;
        halves[i < n / 2 ? 0 : 1] += int64_t{x[i]} * x[i];
        neighbours += int64_t{x[i]} * x[i - 1];
    }
    energy = halves[0] + halves[1];
    if (halves[1] > 16 * halves[0] && energy > 0) {
        return VEK_G722_TRANSIENT;
    }
    // The high band's scale of 0 stands an eighth as high as the low band's.
    if (8 * crossings > 3 * n || bands.high.logScale > bands.low.logScale + 4096) {
        return VEK_G722_UNVOICED;
    }
    if (4 * crossings > n) {
        return VEK_G722_UNVOICED_TO_VOICED;
    }
    return 5 * neighbours < 3 * energy ? VEK_G722_WEAKLY_VOICED : VEK_G722_VOICED;
}

void cutPeaks(Vek16s* x, int n) {
    int64_t sum = 0;
    for (int i = 0; i < n; ++i) {
        sum += std::abs(x[i]);
    }
    const auto limit = static_cast<int>(std::clamp<int64_t>(2 * sum / n, 1, 32767));
    for (int i = 0; i < n; ++i) {
        x[i] = static_cast<Vek16s>(std::clamp<int>(x[i], -limit, limit));
    }
}

} // namespace

VekStatus veksDownsampleFilter_G722_16s(const Vek16s* pSrc, int len, Vek16s* pDst) {
    if (anyNull(pSrc, pDst)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len) || len % kStep != 0) {
        return vekStsSizeErr;
    }
    for (int k = 0; k < len / kStep; ++k) {
        const Vek16s* x = pSrc + kStep * k - kTaps / 2;
        int32_t sum = 0x4000;
        for (int j = 0; j < kTaps; ++j) {
            sum += x[j] * kLowPass[j];
        }
        pDst[k] = sat16(sum >> 15);
    }
    return vekStsNoErr;
}

VekStatus veksFilterHighband_G722_16s_I(Vek16s* pSrcDst, int len, Vek16s* mem) {
    if (const VekStatus status = checkSignal(len, pSrcDst, mem); status != vekStsNoErr) {
        return status;
    }
    int past = mem[0];
    int out = mem[1];
    for (int i = 0; i < len; ++i) {
        const int now = pSrcDst[i];
        out = sat16(now - past + ((out * kPole + 0x4000) >> 15));
        past = now;
        pSrcDst[i] = static_cast<Vek16s>(out);
    }
    mem[0] = static_cast<Vek16s>(past);
    mem[1] = static_cast<Vek16s>(out);
    return vekStsNoErr;
}

VekStatus veksClassifyFrame_G722_16s_I(Vek16s* pSrcDst, int valDelay, int* pFrameClass,
                                       const VeksCodecState_G722* pDecMem) {
    if (anyNull(pSrcDst, pFrameClass, pDecMem)) {
        return vekStsNullPtrErr;
    }
    if (valDelay < kShortest || valDelay > kLongest) {
        return vekStsSizeErr;
    }
    g722::Bands bands;
    std::memcpy(&bands, static_cast<const void*>(pDecMem), sizeof bands);
    if (bands.started != g722::kStarted) {
        return vekStsStateErr;
    }
    *pFrameClass = classOf(pSrcDst, valDelay, bands);
    if (*pFrameClass != VEK_G722_VOICED) {
        cutPeaks(pSrcDst, valDelay);
    }
    return vekStsNoErr;
}
