// The two recursive high-pass filters of AMR-WB, of 50 and 400 Hz, and the symmetric filter of three taps.
#include <algorithm>

#include "sc/common/fixmath.h"
#include "sc/common/highpass.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/filter.h"
#include "sc/kernels/loops.h"
#include "veksc_amrwbflt.h"

namespace {

using namespace vek::fix;

constexpr HighPassSection k50 = {4053, -8106, 16211, -8021, 2, 1};
constexpr HighPassSection k400 = {915, -1830, 29280, -14160, 1, 0};

// A sample's sum of the inputs' share and of outputs that stand in units of `scale`.
template <HighPassSection F>
int64_t sumOf(Vek32s inputs, int64_t y1, int64_t y2, int64_t scale) {
    return ((static_cast<int64_t>(inputs) << 15) + y2 * (F.a2 * scale) + 0x2000 + y1 * (F.a1 * scale)) >> 14;
}

// The loop waits for the last output only, and this one is without the zeros that the shift gives it. Ends with the
// inputs or before the first output that saturates, and tells how many were filtered: none, where the memory does not
// end in zeros.
template <HighPassSection F>
int runQuiet(HighPassMemory& m, const Vek32s* inputs, Vek16s* dst, int n) {
    constexpr int kScale = 1 << (F.shift - 1);
    constexpr int kToSample = 16 - F.shift - F.outShift;
    constexpr int kHalf = 1 << (kToSample - 1);
    // Neither a sample nor the doubled output leaves its bits.
    constexpr int64_t kLeast = -(int64_t{1} << (15 + kToSample));
    constexpr auto kRoom = static_cast<uint64_t>(-2 * kLeast - kHalf);
    static_assert(F.outShift >= 0);
    if ((m.y1 | m.y2) % kScale != 0) {
        return 0;
    }
    int64_t w1 = m.y1 / kScale;
    int64_t w2 = m.y2 / kScale;
    int i = 0;
    for (; i < n; ++i) {
        const int64_t w = sumOf<F>(inputs[i], w1, w2, kScale);
        if (static_cast<uint64_t>(w - kLeast) >= kRoom) [[unlikely]] {
            break;
        }
        dst[i] = static_cast<Vek16s>((w + kHalf) >> kToSample);
        w2 = w1;
        w1 = w;
    }
    m.y1 = static_cast<Vek32s>(w1 * kScale);
    m.y2 = static_cast<Vek32s>(w2 * kScale);
    return i;
}

// One sample from any memory, with both saturations.
template <HighPassSection F>
Vek16s runLoud(HighPassMemory& m, Vek32s input) {
    const int64_t sum = sumOf<F>(input, m.y1, m.y2, 1);
    const Vek32s v = sat32(sum * (1 << F.shift));
    m.y2 = m.y1;
    m.y1 = v >> 1;
    return sat16_64((static_cast<int64_t>(v) * (1 << F.outShift) + 0x8000) >> 16);
}

// What a chunk's inputs give is summed ahead.
template <HighPassSection F>
void run(HighPassMemory& m, const Vek16s* src, Vek16s* dst, int n) {
    static constexpr Vek16s kTaps[] = {F.b0, F.b1, F.b0};
    constexpr int kOrder = 2;
    constexpr int kChunk = 128;
    for (int done = 0; done < n; done += kChunk) {
        const int count = std::min(kChunk, n - done);
        Vek16s x[kOrder + kChunk];
        x[0] = m.x2;
        x[1] = m.x1;
        std::copy_n(src + done, count, x + kOrder);
        Vek32s inputs[kChunk];
        filterKernels().fir32(kTaps, kOrder, x + kOrder, inputs, count);
        Vek16s* y = dst + done;
        for (int i = 0; i < count; ++i) {
            i += runQuiet<F>(m, inputs + i, y + i, count - i);
            if (i < count) {
                y[i] = runLoud<F>(m, inputs[i]);
            }
        }
        m.x2 = x[count];
        m.x1 = x[count + 1];
    }
}

} // namespace

VekStatus veksHighPassFilterGetSize_AMRWB_16s(int* pSize) {
    return stateSize<HighPassMemory>(pSize);
}

VekStatus veksHighPassFilterInit_AMRWB_16s(char* pMem) {
    return initHighPass(pMem);
}

VekStatus veksHighPassFilter_AMRWB_16s_ISfs(Vek16s* pSrcDst, int len, char* pMemUpdated, int scaleFactor) {
    return veksHighPassFilter_AMRWB_16s_Sfs(pSrcDst, pSrcDst, len, pMemUpdated, scaleFactor);
}

VekStatus veksHighPassFilter_AMRWB_16s_Sfs(const Vek16s* pSrc, Vek16s* pDst, int len, char* pMemUpdated,
                                           int scaleFactor) {
    if (anyNull(pSrc, pDst) || pMemUpdated == nullptr) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    if (scaleFactor != 12 && scaleFactor != 14) {
        return vekStsScaleRangeErr;
    }
    withHighPassMemory(pMemUpdated, [&](HighPassMemory& m) {
        scaleFactor == 14 ? run<k50>(m, pSrc, pDst, len) : run<k400>(m, pSrc, pDst, len);
    });
    return vekStsNoErr;
}

VekStatus veksHighPassFilter_Direct_AMRWB_16s(const Vek16s* pCoeff, const Vek16s* pSrc, Vek16s* pDst, int len,
                                              int bounds) {
    if (anyNull(pCoeff, pSrc, pDst)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    if (bounds != 0 && bounds != 1) {
        return vekStsRangeErr;
    }
    const Vek16s side = pCoeff[0];
    const Vek16s middle = pCoeff[1];
    const auto stepwise = [&](Vek16s before, Vek16s x, Vek16s after) {
        return round_s(L_mac(L_mac(L_mult(side, before), middle, x), side, after));
    };
    // Coefficients whose magnitudes sum up to 1, as the published ones do, or less saturate at the end alone.
    const bool tame = 2 * L_abs(side) + L_abs(middle) <= 32768;
    if (tame && bounds == 1) {
        loopKernels().threeTaps(side, middle, pSrc, pDst, len);
        return vekStsNoErr;
    }
    const Vek16s before = bounds == 1 ? pSrc[-1] : Vek16s{0};
    const Vek16s after = bounds == 1 ? pSrc[len] : Vek16s{0};
    if (len == 1) {
        pDst[0] = stepwise(before, pSrc[0], after);
        return vekStsNoErr;
    }
    pDst[0] = stepwise(before, pSrc[0], pSrc[1]);
    if (tame) {
        loopKernels().threeTaps(side, middle, pSrc + 1, pDst + 1, len - 2);
    } else {
        for (int i = 1; i < len - 1; ++i) {
            pDst[i] = stepwise(pSrc[i - 1], pSrc[i], pSrc[i + 1]);
        }
    }
    pDst[len - 1] = stepwise(pSrc[len - 2], pSrc[len - 1], after);
    return vekStsNoErr;
}
