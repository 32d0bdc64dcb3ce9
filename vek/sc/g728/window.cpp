// Hybrid windows of the backward adaptation: the autocorrelation of all that has been decoded, in which the newest
// samples weigh by a sine and those before by a falling exponential, whose part is kept from frame to frame.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/hybridwindow.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/g728/tables.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/g728.h"
#include "sc/kernels/hybrid.h"
#include "veksc_g728.h"

using namespace vek::g728;

namespace {

constexpr int kLongest = kOrder + 20 + 35;

struct Shape {
    int order;
    int frame;
    int newest;
    // What is left of the kept sums after a frame, in quarters.
    int kept;
    const Vek16s* window;

    int span() const { return order + frame + newest; }
};

// Energy falls to 3/4, 1/2 and 3/4 in a frame.
const auto g_synthesis = rounded(hybridWindow<kLongest>(35, std::log(0.75) / 40));
const auto g_weighting = rounded(hybridWindow<10 + 20 + 30>(30, std::log(0.5) / 40));
const auto g_gain = rounded(hybridWindow<10 + 4 + 20>(20, std::log(0.75) / 8));
const Shape g_shapes[3] = {
    {kOrder, 20, 35, 3, g_synthesis.data()},
    {kShortOrder, 20, 30, 2, g_weighting.data()},
    {kShortOrder, 4, 20, 3, g_gain.data()},
};

// Samples in the order of time, by block with their left shifts; the kept sums have `scale` fraction bits.
struct History {
    int32_t window = 0;
    int32_t scale = 0;
    int64_t kept[kOrder + 1] = {};
    Vek16s samples[kLongest] = {};
    Vek16s shifts[kLongest / kVector] = {};
};
using WindowState = Marked<History, 0x57484b38>;

int64_t scaled(int64_t v, int down) {
    return down > 0 ? v >> std::min(down, 63) : v * (int64_t{1} << -down);
}

void take(History& history, const Shape& shape, const Vek16s* src) {
    const int old = shape.span() - shape.frame;
    std::memmove(history.samples, history.samples + shape.frame, static_cast<size_t>(old) * sizeof(Vek16s));
    std::memcpy(history.samples + old, src, static_cast<size_t>(shape.frame) * sizeof(Vek16s));
}

// The samples have `shifts` fraction bits; pDst may be null.
void correlate(History& history, const Shape& shape, const Vek16s* samples, int shifts, Vek16s* pDst) {
    // Bits that the kept sums may have, and by how many more they may grow for a finer scale.
    static constexpr int kKeptBits = 38;
    static constexpr int kRoom = 20;
    const int count = shape.order + 1;
    int64_t frame[kOrder + 1];
    int64_t newest[kOrder + 1];
    hybridKernels().correlate(samples, shape.window, shape.order, shape.frame, shape.newest, frame, newest);
    // Both sums get the same scale, the finer one that has room.
    const int finer = 2 * shifts - history.scale;
    const int upKept = std::clamp(finer, 0, kRoom);
    const int upFresh = std::clamp(-finer, 0, kRoom);
    const int downFresh = std::max(finer - kRoom, 0) - upFresh;
    const int downKept = std::max(-finer - kRoom, 0) - upKept;
    int64_t sums[kOrder + 1];
    uint64_t used = 0;
    for (int k = 0; k < count; ++k) {
        const int64_t left = scaled(history.kept[k], downKept) * shape.kept >> 2;
        history.kept[k] = left + scaled(frame[k], downFresh);
        used |= static_cast<uint64_t>(history.kept[k] ^ (history.kept[k] >> 63));
    }
    history.scale -= downKept;
    if (pDst != nullptr) {
        for (int k = 0; k < count; ++k) {
            sums[k] = history.kept[k] + scaled(newest[k], downFresh);
        }
        sums[0] += sums[0] >> 8;
        const int down = 48 - fix::norm_64(sums[0]);
        const int64_t half = down > 0 ? int64_t{1} << (down - 1) : 0;
        for (int k = 0; k < count; ++k) {
            pDst[k] = sums[0] == 0 ? Vek16s{0} : fix::sat16_64(scaled(sums[k] + half, down));
        }
    }
    if (used == 0) {
        history.scale = 2 * shifts;
        return;
    }
    const int over = 63 - kKeptBits - fix::norm_64(static_cast<int64_t>(used));
    if (over > 0) {
        for (int k = 0; k < count; ++k) {
            history.kept[k] >>= over;
        }
        history.scale -= over;
    }
}

} // namespace

VekStatus veksWinHybridGetStateSize_G728_16s(int* pSize) {
    return WindowState::size(pSize);
}

VekStatus veksWinHybridInit_G728_16s(VekG728Window window, VeksWinHybridState_G728* pMem) {
    if (anyNull(pMem)) {
        return vekStsNullPtrErr;
    }
    if (window != VEK_G728_WINDOW_SYNTHESIS && window != VEK_G728_WINDOW_WEIGHTING && window != VEK_G728_WINDOW_GAIN) {
        return vekStsModeErr;
    }
    History start;
    start.window = window;
    return WindowState::init(pMem, start);
}

VekStatus veksWinHybrid_G728_16s(int bfi, const Vek16s* pSrc, Vek16s* pDst, VeksWinHybridState_G728* pMem) {
    if (anyNull(pSrc, pDst, pMem)) {
        return vekStsNullPtrErr;
    }
    if (bfi != 0 && bfi != 1) {
        return vekStsRangeErr;
    }
    WindowState state;
    if (!state.take(pMem)) {
        return vekStsStateErr;
    }
    History& history = state.content;
    const Shape& shape = g_shapes[history.window];
    take(history, shape, pSrc);
    const int span = shape.span();
    const int shifts = fix::norm_s(static_cast<Vek16s>(corrKernels().usedBits16(history.samples, span)));
    Vek16s aligned[kLongest];
    corrKernels().shift16(history.samples, aligned, span, shifts);
    correlate(history, shape, aligned, shifts, bfi == 0 ? pDst : nullptr);
    state.give(pMem);
    return vekStsNoErr;
}

VekStatus veksWinHybridBlock_G728_16s(int bfi, const Vek16s* pSrc, const Vek16s* pSrcSfs, Vek16s* pDst,
                                      VeksWinHybridState_G728* pMem) {
    if (anyNull(pSrc, pSrcSfs, pDst, pMem)) {
        return vekStsNullPtrErr;
    }
    if (bfi != 0 && bfi != 1) {
        return vekStsRangeErr;
    }
    constexpr int fresh = 4;
    for (int b = 0; b < fresh; ++b) {
        if (pSrcSfs[b] < 0 || pSrcSfs[b] > kG728MostShifts) {
            return vekStsScaleRangeErr;
        }
    }
    WindowState state;
    if (!state.take(pMem)) {
        return vekStsStateErr;
    }
    History& history = state.content;
    const Shape& shape = g_shapes[history.window];
    if (shape.frame != fresh * kVector) {
        return vekStsStateErr;
    }
    const int blocks = shape.span() / kVector;
    take(history, shape, pSrc);
    std::memmove(history.shifts, history.shifts + fresh, static_cast<size_t>(blocks - fresh) * sizeof(Vek16s));
    std::memcpy(history.shifts + blocks - fresh, pSrcSfs, fresh * sizeof(Vek16s));
    Vek16s aligned[kLongest];
    const int shifts = hybridKernels().align(history.samples, history.shifts, blocks, aligned);
    correlate(history, shape, aligned, shifts, bfi == 0 ? pDst : nullptr);
    state.give(pMem);
    return vekStsNoErr;
}
