// Conversions between prediction coefficients, line spectral pairs (the cosine domain) and line spectral frequencies,
// order 10, in fixed point. The floating point forms are in lspfloat.cpp.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/linepairs.h"
#include "sc/common/signal_check.h"
#include "sc/g729/lsptables.h"
#include "sc/kernels/linepairs.h"
#include "veksc_g729lp.h"

namespace {

using namespace vek::g729;

// Chebyshev series of f (Q10, f[0] = 1.0) at x, Q10 with saturation. The products are those of split words: of the
// upper half and 15 bits of the lower one, cut off; the sums have room for any coefficients.
inline Vek16s chebyshev(int64_t x, const int64_t* f) {
    int64_t b2 = 1 << 24;
    int64_t t = (x << 10) + f[1] * (1 << 14);
    for (int i = 2; i < kHalf; ++i) {
        const int64_t next = 4 * (((t >> 1) * x) >> 15) + (f[i] * (1 << 14) - b2);
        b2 = t & ~int64_t{1};
        t = next;
    }
    t = 2 * (((t >> 1) * x) >> 15) + (f[kHalf] * (1 << 13) - b2);
    return sat16_64(t >> 10);
}

// The coefficients of sum and difference filter, without their fixed roots.
void sumAndDifference(const Vek16s* a, int64_t (*f)[kHalf + 1]) {
    Vek16s sum = 1024;
    Vek16s difference = 1024;
    f[0][0] = f[1][0] = 1024;
    for (int i = 0; i < kHalf; ++i) {
        const int up = a[i + 1];
        const int down = a[kOrder - i];
        sum = sub(static_cast<Vek16s>((up + down) >> 2), sum);
        difference = add(static_cast<Vek16s>((up - down) >> 2), difference);
        f[0][i + 1] = sum;
        f[1][i + 1] = difference;
    }
}

// Whether the terms of the series at any point fit 32 bits: those of Clenshaw's recursion are sums of the coefficients
// times Chebyshev polynomials of the second kind, of order i at most i + 1.
bool isModest(const int64_t* f) {
    const int64_t most = 5 * f[0] + 4 * std::abs(f[1]) + 3 * std::abs(f[2]) + 2 * std::abs(f[3]) + std::abs(f[4]);
    return most < 126 * 1024;
}

struct Series {
    const int64_t* f;
    const Vek16s* onGrid;

    Vek16s operator()(Vek16s x) const { return chebyshev(x, f); }
    Vek16s atPoint(int j) const { return onGrid[j]; }
};

template <int Points, int Bisections>
VekStatus roots(const Vek16s* a, const Vek16s* previous, const Vek16s (&grid)[kGridRoom], Vek16s* lsp) {
    if (anyNull(a, previous, lsp)) {
        return vekStsNullPtrErr;
    }
    int64_t f[2][kHalf + 1];
    sumAndDifference(a, f);
    Vek16s onGrid[2][kGridRoom];
    constexpr int room = (Points + 8) / 8 * 8;
    for (int n = 0; n < 2; ++n) {
        if (isModest(f[n])) {
            linePairKernels().series5(grid, room, f[n], onGrid[n]);
        } else {
            std::transform(grid, grid + Points + 1, onGrid[n], [&](Vek16s x) { return chebyshev(x, f[n]); });
        }
    }
    Vek16s found[kOrder];
    const int count = interlacedRoots<Bisections>(
        kOrder, Points, [&](int j) { return grid[j]; },
        [&](int n) {
            return Series{f[n & 1], onGrid[n & 1]};
        },
        found);
    if (count < kOrder) {
        std::memmove(lsp, previous, sizeof found);
        return vekStsUnstableFilter;
    }
    std::memcpy(lsp, found, sizeof found);
    return vekStsNoErr;
}

// The coefficients J to 2 of a product of pairs take in one pair more; written out by the compiler.
template <int J, class Sums>
inline void takeIn(int64_t x, int64_t* f, Sums& sum) {
    if constexpr (J > 1) {
        const int64_t twice = sum(4 * (((f[J - 1] >> 1) * x) >> 15));
        f[J] = sum.keep(sum(f[J] + f[J - 2]) - twice);
        takeIn<J - 1>(x, f, sum);
    }
}

template <int I, class Sums>
inline void pairProduct(const Vek16s* lsp, int64_t* f, Sums& sum) {
    if constexpr (I > 1) {
        pairProduct<I - 1>(lsp, f, sum);
        const int64_t x = lsp[2 * (I - 1)];
        f[I] = f[I - 2];
        takeIn<I>(x, f, sum);
        f[1] = sum.keep(f[1] - x * 1024);
    } else {
        f[0] = 1 << 24;
        f[1] = -(lsp[0] * 1024);
    }
}

template <class Sums>
void coefficients(const Vek16s* lsp, Vek16s* a, Sums& sum) {
    int64_t f1[kHalf + 1];
    int64_t f2[kHalf + 1];
    // Of 1 - 2 lsp[2i] z^-1 + z^-2 over five pairs, Q24.
    pairProduct<kHalf>(lsp, f1, sum);
    pairProduct<kHalf>(lsp + 1, f2, sum);
    for (int i = kHalf; i > 0; --i) {
        f1[i] = sum(f1[i] + f1[i - 1]);
        f2[i] = sum(f2[i] - f2[i - 1]);
    }
    a[0] = 4096;
    for (int i = 1; i <= kHalf; ++i) {
        const int64_t up = sum(f1[i] + f2[i]);
        const int64_t down = sum(f1[i] - f2[i]);
        a[i] = static_cast<Vek16s>((up + 4096) >> 13);
        a[kOrder + 1 - i] = static_cast<Vek16s>((down + 4096) >> 13);
    }
}

constexpr int kLastStep = 63;

// The last step of the cosine table that begins at or above the lowest pair of each stretch of 64.
constexpr int kStretchBits = 6;
constexpr auto kStepOfStretch = [] {
    std::array<uint8_t, (65536 >> kStretchBits)> steps{};
    for (size_t n = 0; n < steps.size(); ++n) {
        const int lowest = static_cast<int>(n << kStretchBits) - 32768;
        int place = kLastStep;
        while (kCos[place] < lowest) {
            --place;
        }
        steps[n] = static_cast<uint8_t>(place);
    }
    return steps;
}();

// The last step that begins at or above the pair. No stretch of 64 holds more than one beginning that a pair can
// exceed.
inline int stepOf(int lsp) {
    const int place = kStepOfStretch[static_cast<size_t>((lsp + 32768) >> kStretchBits)];
    return place + ((kCos[place] - lsp) >> 31);
}

// Frequencies made of the step of each pair and how far it lies behind the begin of that, 16 bits at most. The pairs of
// a frame are visited in rising order: of those that do not fall, none has a step behind that of the next one.
template <class Frequency>
inline void toFrequencies(const Vek16s* lsp, Vek16s* lsf, Frequency frequency) {
    int place[kOrder];
    int rise = 0;
#pragma GCC unroll 10
    for (int i = 0; i < kOrder; ++i) {
        place[i] = stepOf(lsp[i]);
        rise |= i > 0 ? place[i] - place[i - 1] : 0;
    }
    if (rise < 0) [[unlikely]] {
        int last = kLastStep;
        for (int i = kOrder - 1; i >= 0; --i) {
            last = std::min(place[i], last);
            lsf[i] = frequency(last, std::max(lsp[i] - kCos[last], -32768));
        }
        return;
    }
#pragma GCC unroll 10
    for (int i = 0; i < kOrder; ++i) {
        lsf[i] = frequency(place[i], lsp[i] - kCos[place[i]]);
    }
}

// A step of the cosine, and its chord. Frequencies behind the last step go on from there.
struct CosineStep {
    int begin;
    int slope;
};
constexpr int kRadian = 20861; // steps of 1/256 in a radian, Q13: 2^17 / 2 pi
constexpr auto kCosineSteps = [] {
    std::array<CosineStep, ((32767 * kRadian) >> 23) + 1> steps{};
    for (size_t n = 0; n < steps.size(); ++n) {
        const int place = std::min(static_cast<int>(n), kLastStep);
        steps[n] = {kCos[place], kCosSlope[place]};
    }
    return steps;
}();

// One by one, as they have been written: a load of several would wait for the stores.
bool anyNegative(const Vek16s* v) {
    int all = 0;
#pragma GCC unroll 10
    for (int i = 0; i < kOrder; ++i) {
        all |= v[i];
    }
    return all < 0;
}

} // namespace

VekStatus veksLPCToLSP_G729_16s(const Vek16s* pSrcLPC, const Vek16s* pSrcPrevLSP, Vek16s* pDstLSP) {
    return roots<60, 4>(pSrcLPC, pSrcPrevLSP, kGrid60, pDstLSP);
}

VekStatus veksLPCToLSP_GSMAMR_16s(const Vek16s* pSrcLPC, const Vek16s* pSrcPrevLSP, Vek16s* pDstLSP) {
    return veksLPCToLSP_G729_16s(pSrcLPC, pSrcPrevLSP, pDstLSP);
}

VekStatus veksLPCToLSP_G729A_16s(const Vek16s* pSrcLPC, const Vek16s* pSrcPrevLSP, Vek16s* pDstLSP) {
    return roots<50, 2>(pSrcLPC, pSrcPrevLSP, kGrid50, pDstLSP);
}

VekStatus veksLSPToLPC_G729_16s(const Vek16s* pSrcLSP, Vek16s* pDstLPC) {
    if (anyNull(pSrcLSP, pDstLPC)) {
        return vekStsNullPtrErr;
    }
    QuickSums quick;
    Vek16s a[kOrder + 1];
    coefficients(pSrcLSP, a, quick);
    if (!quick.within()) {
        SaturatingSums saturating;
        coefficients(pSrcLSP, a, saturating);
    }
    std::memcpy(pDstLPC, a, sizeof a);
    return vekStsNoErr;
}

VekStatus veksLSPToLSF_Norm_G729_16s(const Vek16s* pSrcLSP, Vek16s* pDstLSF) {
    if (anyNull(pSrcLSP, pDstLSF)) {
        return vekStsNullPtrErr;
    }
    // Difference and slope are negative or 0: sums saturate upwards alone.
    toFrequencies(pSrcLSP, pDstLSF, [](int place, int behind) {
        return static_cast<Vek16s>(std::min((kAcosSlope[place] * behind + place * (1 << 20) + 0x800) >> 12, 32767));
    });
    return vekStsNoErr;
}

VekStatus veksLSPToLSF_G729_16s(const Vek16s* pSrcLSP, Vek16s* pDstLSF) {
    if (anyNull(pSrcLSP, pDstLSF)) {
        return vekStsNullPtrErr;
    }
    constexpr Vek16s kTwoPi = 25736; // Q12
    toFrequencies(pSrcLSP, pDstLSF, [](int place, int behind) {
        const int within = extract_l((kAcosSlope[place] * behind) >> 11);
        return static_cast<Vek16s>((std::min(place * 512 + within, 32767) * kTwoPi) >> 15);
    });
    return vekStsNoErr;
}

VekStatus veksLSFToLSP_G729_16s(const Vek16s* pSrcLSF, Vek16s* pDstLSP) {
    if (anyNull(pSrcLSF, pDstLSP)) {
        return vekStsNullPtrErr;
    }
    if (anyNegative(pSrcLSF)) {
        return vekStsRangeErr;
    }
#pragma GCC unroll 10
    for (int i = 0; i < kOrder; ++i) {
        const auto frequency = static_cast<unsigned>(pSrcLSF[i] * kRadian) >> 15;
        const CosineStep& step = kCosineSteps[frequency >> 8];
        const auto within = static_cast<int>(frequency & 0xff);
        // The last line falls below -1.
        pDstLSP[i] = static_cast<Vek16s>(std::max(step.begin + ((step.slope * within) >> 12), -32768));
    }
    return vekStsNoErr;
}
