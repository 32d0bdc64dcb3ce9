// Quadrature mirror filter of 64 taps: each half is a filter of 32 taps over every second sample.
// The prototype is the sinc of cut-off 1.6102357 under a Kaiser window of beta 5, scaled to 1.0 at 0 Hz: the cut-off at
// which the two bands add up to one in their middle.
#include <algorithm>

#include "sc/common/fixmath.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/filter.h"
#include "veksc_g7291.h"

using namespace vek;

namespace {

constexpr int kHalfTaps = 32;
constexpr int kPast = kHalfTaps - 1;
constexpr int kBlock = 160;
constexpr Vek16s kUnity = 16384;

// The taps of even index, Q15; those of odd index are the same backwards.
constexpr Vek16s kEven[kHalfTaps] = {5,   -9,   13,  -15,   15,   -9,    -3,    27,   -66,   126, -217,
                                     356, -575, 954, -1749, 4595, 15033, -3182, 1818, -1259, 937, -718,
                                     555, -428, 326, -243,  177,  -125,  84,    -54,  32,    -16};
constexpr Vek16s kOdd[kHalfTaps] = {-16, 32,    -54,  84,    -125,  177,  -243,  326, -428, 555, -718,
                                    937, -1259, 1818, -3182, 15033, 4595, -1749, 954, -575, 356, -217,
                                    126, -66,   27,   -3,    -9,    15,   -15,   13,  -9,   5};

// Two signals of half the rate, each behind its past: samples of odd and even index, or the two bands.
struct Past {
    Vek16s first[kPast] = {};
    Vek16s second[kPast] = {};
};
using State = Marked<Past, 0x514d4631>;

struct Block {
    alignas(32) Vek16s first[kPast + kBlock];
    alignas(32) Vek16s second[kPast + kBlock];
    alignas(32) int32_t firstSums[kBlock];
    alignas(32) int32_t secondSums[kBlock];

    explicit Block(const Past& past) {
        std::copy_n(past.first, kPast, first);
        std::copy_n(past.second, kPast, second);
    }

    void advance(int n) {
        std::copy_n(first + n, kPast, first);
        std::copy_n(second + n, kPast, second);
    }

    void keep(Past& past) const {
        std::copy_n(first, kPast, past.first);
        std::copy_n(second, kPast, past.second);
    }
};

// Sum and difference of the bands, halved where they would not fit 16 bits; returns by how much.
int mix(const Block& b, int n, Vek16s* sum, Vek16s* difference) {
    const FilterKernels& kernels = filterKernels();
    const int total = kPast + n;
    const int shift = kernels.maxAbs16(b.first, total) + kernels.maxAbs16(b.second, total) > 32767 ? 1 : 0;
    for (int i = 0; i < total; ++i) {
        sum[i] = static_cast<Vek16s>((b.first[i] + b.second[i]) >> shift);
        difference[i] = static_cast<Vek16s>((b.first[i] - b.second[i]) >> shift);
    }
    return shift;
}

} // namespace

VekStatus veksQMFGetStateSize_G7291_16s(int* pSize) {
    return State::size(pSize);
}

VekStatus veksQMFInit_G7291_16s(void* pState) {
    return State::init(pState);
}

VekStatus veksQMFEncode_G7291_16s(const Vek16s* pSrc, int len, Vek16s* pDstLowBand, Vek16s* pDstHighBand,
                                  void* pState) {
    if (anyNull(pSrc, pDstLowBand, pDstHighBand, pState)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len) || len % 2 != 0) {
        return vekStsSizeErr;
    }
    State state;
    if (!state.take(pState)) {
        return vekStsStateErr;
    }
    Block b(state.content);
    const FilterKernels& kernels = filterKernels();
    for (int at = 0; at < len / 2; at += kBlock) {
        const int n = std::min(kBlock, len / 2 - at);
        for (int i = 0; i < n; ++i) {
            b.second[kPast + i] = pSrc[2 * (at + i)];
            b.first[kPast + i] = pSrc[2 * (at + i) + 1];
        }
        kernels.fir32(kEven, kPast, b.first + kPast, b.firstSums, n);
        kernels.fir32(kOdd, kPast, b.second + kPast, b.secondSums, n);
        for (int i = 0; i < n; ++i) {
            const int64_t first = b.firstSums[i] + int64_t{0x4000};
            pDstLowBand[at + i] = fix::sat16_64((first + b.secondSums[i]) >> 15);
            pDstHighBand[at + i] = fix::sat16_64((first - b.secondSums[i]) >> 15);
        }
        b.advance(n);
    }
    b.keep(state.content);
    state.give(pState);
    return vekStsNoErr;
}

VekStatus veksQMFDecode_G7291_16s(const Vek16s* pSrcLowBand, const Vek16s* pSrcHighBand, Vek16s GainSwitching, int len,
                                  Vek16s* pDst, void* pState) {
    if (const VekStatus status = checkSignal(len, pSrcLowBand, pSrcHighBand, pDst, pState); status != vekStsNoErr) {
        return status;
    }
    if (GainSwitching < 0 || GainSwitching > kUnity) {
        return vekStsRangeErr;
    }
    State state;
    if (!state.take(pState)) {
        return vekStsStateErr;
    }
    Block b(state.content);
    alignas(32) Vek16s sum[kPast + kBlock];
    alignas(32) Vek16s difference[kPast + kBlock];
    const FilterKernels& kernels = filterKernels();
    for (int at = 0; at < len; at += kBlock) {
        const int n = std::min(kBlock, len - at);
        std::copy_n(pSrcLowBand + at, n, b.first + kPast);
        kernels.mulC(pSrcHighBand + at, GainSwitching, b.second + kPast, n, 14);
        const int halved = mix(b, n, sum, difference);
        kernels.fir32(kEven, kPast, difference + kPast, b.firstSums, n);
        kernels.fir32(kOdd, kPast, sum + kPast, b.secondSums, n);
        const int shift = 14 - halved;
        const int half = 1 << (shift - 1);
        for (int i = 0; i < n; ++i) {
            pDst[2 * (at + i)] = fix::sat16((b.firstSums[i] + half) >> shift);
            pDst[2 * (at + i) + 1] = fix::sat16((b.secondSums[i] + half) >> shift);
        }
        b.advance(n);
    }
    b.keep(state.content);
    state.give(pState);
    return vekStsNoErr;
}
