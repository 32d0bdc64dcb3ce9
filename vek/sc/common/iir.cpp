// Pole-zero filters of order 10: the perceptual and formant filters of G.723.1 (one sum, one rounding) and of G.729
// (residual, rounded, then synthesis).
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/lpfilter.h"
#include "sc/g723/tables.h"
#include "sc/g729/sizes.h"
#include "veksc_filter.h"

namespace {

using namespace vek::fix;

using g729::kOrder;
constexpr int kSubframeG723 = g723::kSubframe;
constexpr int kSubframeG729 = g729::kSubframe;
constexpr int kUnitQ13 = 0x2000;
constexpr int64_t kSafe = int64_t{1} << 30;

// x[-10..-1] and y[-10..-1] are set; sums gets the undoubled sum of each sample.
void poleZeroStepwise(const Vek16s* pCoeffs, const Vek16s* x, Vek16s* y, Vek32s* acc) {
    for (int i = 0; i < kSubframeG723; i++) {
        int32_t s = L_mult(x[i], kUnitQ13);
        for (int j = 0; j < kOrder; j++) {
            s = L_msu(s, pCoeffs[j], x[i - 1 - j]);
        }
        for (int j = 0; j < kOrder; j++) {
            s = L_mac(s, pCoeffs[kOrder + j], y[i - 1 - j]);
        }
        acc[i] = L_shl(s, 2);
        y[i] = round_s(acc[i]);
    }
}

// One subframe. x holds 10 samples of history and 60 of input; acc gets the sums with the sample in the upper half.
void poleZero(const Vek16s* pCoeffs, const Vek16s* x, Vek16s* y, Vek32s* acc) {
    const FilterKernels& k = filterKernels();
    Vek16s zero[kOrder + 1] = {kUnitQ13};
    Vek16s pole[kOrder + 1] = {kUnitQ13};
    bool negatable = true;
    for (int j = 0; j < kOrder; j++) {
        negatable = negatable && pCoeffs[j] != -32768 && pCoeffs[kOrder + j] != -32768;
        zero[j + 1] = negate(pCoeffs[j]);
        pole[j + 1] = negate(pCoeffs[kOrder + j]);
    }
    if (negatable) {
        k.fir32(zero, kOrder, x, acc, kSubframeG723);
        k.allPole(pole, kOrder, acc, y, kSubframeG723, 13);
        const int64_t bound = int64_t{k.sumAbs16(zero, kOrder + 1)} * k.maxAbs16(x - kOrder, kOrder + kSubframeG723) +
                              int64_t{k.sumAbs16(pole + 1, kOrder)} * k.maxAbs16(y - kOrder, kOrder + kSubframeG723);
        if (bound < kSafe) {
            for (int i = 0; i < kSubframeG723; i++) {
                acc[i] = L_shl(acc[i], 3);
            }
            return;
        }
    }
    poleZeroStepwise(pCoeffs, x, y, acc);
}

// A subframe with its histories around: the memory is newest first, the working vectors are in time order.
struct Subframe {
    Vek16s input[kOrder + kSubframeG723];
    Vek16s output[kOrder + kSubframeG723];
    Vek32s acc[kSubframeG723];

    Vek16s* x() { return input + kOrder; }
    Vek16s* y() { return output + kOrder; }

    void run(const Vek16s* pCoeffs, Vek16s* pMem) {
        for (int j = 0; j < kOrder; j++) {
            x()[-1 - j] = pMem[j];
            y()[-1 - j] = pMem[kOrder + j];
        }
        poleZero(pCoeffs, x(), y(), acc);
        for (int j = 0; j < kOrder; j++) {
            pMem[j] = x()[kSubframeG723 - 1 - j];
            pMem[kOrder + j] = y()[kSubframeG723 - 1 - j];
        }
    }
};

constexpr size_t kBytesG723 = kSubframeG723 * sizeof(Vek16s);

VekStatus weighting(const Vek16s* pCoeffs, const Vek16s* pSrc, Vek16s* pDst, Vek16s* pMem, Steps steps) {
    if (!pCoeffs || !pSrc || !pDst || !pMem) {
        return vekStsNullPtrErr;
    }
    constexpr size_t kHistory = kOrder * sizeof(Vek16s);
    Vek16s input[kOrder + kSubframeG729];
    Vek16s residual[kSubframeG729];
    std::memcpy(input, pMem, kHistory);
    std::memcpy(input + kOrder, pSrc, kSubframeG729 * sizeof(Vek16s));
    residualFilter(pCoeffs, kOrder, input + kOrder, residual, kSubframeG729, 12, steps);
    synthesisFilter(pCoeffs + kOrder + 1, kOrder, residual, pDst, kSubframeG729, 12, pMem + kOrder, steps);
    std::memcpy(pMem, input + kSubframeG729, kHistory);
    std::memcpy(pMem + kOrder, pDst + kSubframeG729 - kOrder, kHistory);
    return vekStsNoErr;
}

} // namespace

VekStatus veksIIR16s_G723_16s_I(const Vek16s* pCoeffs, Vek16s* pSrcDst, Vek16s* pMem) {
    if (!pCoeffs || !pSrcDst || !pMem) {
        return vekStsNullPtrErr;
    }
    Subframe s;
    std::memcpy(s.x(), pSrcDst, kBytesG723);
    s.run(pCoeffs, pMem);
    std::memcpy(pSrcDst, s.y(), kBytesG723);
    return vekStsNoErr;
}

VekStatus veksIIR16s_G723_32s16s_Sfs(const Vek16s* pCoeffs, const Vek32s* pSrc, int sFs, Vek16s* pDst, Vek16s* pMem) {
    if (!pCoeffs || !pSrc || !pDst || !pMem) {
        return vekStsNullPtrErr;
    }
    if (sFs < 0 || sFs > 31) {
        return vekStsScaleRangeErr;
    }
    Subframe s;
    const int64_t half = sFs > 0 ? int64_t{1} << (sFs - 1) : 0;
    for (int i = 0; i < kSubframeG723; i++) {
        s.x()[i] = sat16_64((pSrc[i] + half) >> sFs);
    }
    s.run(pCoeffs, pMem);
    std::memcpy(pDst, s.y(), kBytesG723);
    return vekStsNoErr;
}

VekStatus veksIIR16s_G723_16s32s(const Vek16s* pCoeffs, const Vek16s* pSrc, Vek32s* pDst, Vek16s* pMem) {
    if (!pCoeffs || !pSrc || !pDst || !pMem) {
        return vekStsNullPtrErr;
    }
    Subframe s;
    std::memcpy(s.x(), pSrc, kBytesG723);
    s.run(pCoeffs, pMem);
    std::memcpy(pDst, s.acc, sizeof s.acc);
    return vekStsNoErr;
}

VekStatus veksIIR16s_G729_16s(const Vek16s* pCoeffs, const Vek16s* pSrc, Vek16s* pDst, Vek16s* pMem) {
    return weighting(pCoeffs, pSrc, pDst, pMem, Steps::Saturate);
}

VekStatus veksIIR16sLow_G729_16s(const Vek16s* pCoeffs, const Vek16s* pSrc, Vek16s* pDst, Vek16s* pMem) {
    return weighting(pCoeffs, pSrc, pDst, pMem, Steps::Wrap);
}
