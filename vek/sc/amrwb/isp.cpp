// Conversions between prediction coefficients, immittance spectral pairs and frequencies of AMR-WB.
#include <algorithm>
#include <cstring>

#include "sc/amrwb/isptables.h"
#include "sc/amrwb/rates.h"
#include "sc/common/fixmath.h"
#include "sc/common/linepairs.h"
#include "sc/common/signal_check.h"
#include "veksc_amrwbflt.h"

namespace {

using namespace vek::amrwb;

constexpr int kHalf = kOrder / 2;
constexpr int kMostOrder = 20;
constexpr int kSteps = 128;

VekStatus check(const Vek16s* src, const Vek16s* dst, int len) {
    if (anyNull(src, dst)) {
        return vekStsNullPtrErr;
    }
    return len < 4 || len > kMostOrder || len % 2 != 0 ? vekStsSizeErr : vekStsNoErr;
}

// Product of a 32-bit number in split words and a Q15 one: the product of the lower word, cut off by itself, is what
// cutting off the whole leaves.
inline int64_t product(int64_t v, int64_t x) {
    return 2 * (((v >> 1) * x) >> 15);
}

// Chebyshev series of f at x with saturation; the sums have room for any coefficients. They are halves of those that
// the recommendation keeps in split words, all of which are even.
inline Vek16s chebyshev(int64_t x, const int64_t* f, int n) {
    int64_t b2 = f[0] * 4096;
    int64_t t = 2 * ((b2 * x) >> 15) + f[1] * 4096;
    for (int i = 2; i < n; ++i) {
        const int64_t next = 2 * ((t * x) >> 15) + (f[i] * 4096 - b2);
        b2 = t;
        t = next;
    }
    return sat16_64((((t * x) >> 15) + (f[n] * 2048 - b2)) >> 9);
}

struct Series {
    const int64_t* f;
    int order;
    Vek16s operator()(Vek16s x) const { return chebyshev(x, f, order); }
};

// Coefficients 0..n of the product of 1 - 2 isp[2i] z^-1 + z^-2, i = 0..n-1, with 1.0 = one.
template <class Sums>
VEK_INLINE void pairProduct(const Vek16s* isp, int n, int64_t one, int64_t* f, Sums& sum) {
    const int64_t twice = one >> 14;
    f[0] = one;
    f[1] = -twice * isp[0];
    for (int i = 2; i <= n; ++i) {
        const int64_t x = isp[2 * (i - 1)];
        f[i] = f[i - 2];
        for (int j = i; j > 1; --j) {
            f[j] = sum.keep(sum(f[j] - sum(2 * product(f[j - 1], x))) + f[j - 2]);
        }
        f[1] = sum.keep(f[1] - twice * x);
    }
}

template <class Sums>
VEK_INLINE void coefficients(const Vek16s* isp, int order, Vek16s* a, Sums& sum) {
    const int half = order / 2;
    int64_t f1[kMostOrder / 2 + 1];
    int64_t f2[kMostOrder / 2 + 1];
    // Q23; the higher order is made with two bits more of room.
    const int room = half > kHalf ? 2 : 0;
    pairProduct(isp, half, int64_t{1} << (23 - room), f1, sum);
    pairProduct(isp + 1, half - 1, int64_t{1} << (23 - room), f2, sum);
    for (int i = 0; i <= half; ++i) {
        f1[i] = sum.keep(f1[i] * (1 << room));
        f2[i] = i < half ? sum.keep(f2[i] * (1 << room)) : 0;
    }
    for (int i = half - 1; i > 1; --i) {
        f2[i] = sum(f2[i] - f2[i - 2]);
    }
    const int64_t last = isp[order - 1];
    for (int i = 0; i <= half; ++i) {
        f1[i] = sum.keep(f1[i] + product(f1[i], last));
        f2[i] = sum.keep(f2[i] - product(f2[i], last));
    }
    int32_t largest = 1;
    for (int i = 1; i < half; ++i) {
        largest |= L_abs(sat32(f1[i] + f2[i])) | L_abs(sat32(f1[i] - f2[i]));
    }
    const int excess = std::max(0, 4 - norm_l(largest));
    const int shift = 12 + excess;
    a[0] = static_cast<Vek16s>(4096 >> excess);
    for (int i = 1; i < half; ++i) {
        a[i] = extract_l(L_shr_r(sat32(f1[i] + f2[i]), shift));
        a[order - i] = extract_l(L_shr_r(sat32(f1[i] - f2[i]), shift));
    }
    a[half] = sat16(L_shr_r(sat32(f1[half]), shift));
    a[order] = shr_r(isp[order - 1], 3 + excess);
}

Vek16s ispOf(int frequency) {
    if (static_cast<unsigned>(frequency) > kSteps * 128) [[unlikely]] {
        frequency = frequency < 0 ? 0 : kSteps * 128;
    }
    const IspStep step = kIspSteps[static_cast<size_t>(frequency >> 7)];
    return static_cast<Vek16s>(step.begin + ((step.rise * (frequency & 127)) >> 7));
}

// The last of the falling cosines, up to kSteps - 1, that is not below x.
int lastNotBelow(Vek16s x) {
    int place = kIspPlace[static_cast<size_t>((x >> 8) + 128)];
    // As a rule not more than one step on; beyond that only where the cosine is flat.
    place += kIspCos[place + 1] >= x ? 1 : 0;
    while (place < kSteps - 1 && kIspCos[place + 1] >= x)
        [[unlikely]] {
            ++place;
        }
    return std::min(place, kSteps - 1);
}

} // namespace

VekStatus veksLPCToISP_AMRWB_16s(const Vek16s* pSrcLpc, Vek16s* pDstIsp, const Vek16s* pSrcPrevIsp) {
    constexpr int kPoints = 100;
    constexpr int kBisections = 2;
    if (anyNull(pSrcLpc, pDstIsp, pSrcPrevIsp)) {
        return vekStsNullPtrErr;
    }
    // Sum and difference of the coefficients and their mirror image; the difference without its fixed roots.
    int64_t f1[kHalf + 1];
    int64_t f2[kHalf];
    for (int i = 0; i < kHalf; ++i) {
        f1[i] = (pSrcLpc[i] + pSrcLpc[kOrder - i] + 1) >> 1;
        f2[i] = (pSrcLpc[i] - pSrcLpc[kOrder - i] + 1) >> 1;
        f1[i] = sat16_64(f1[i]);
        f2[i] = sat16_64(f2[i]);
        if (i >= 2) {
            f2[i] = sat16_64(f2[i] + f2[i - 2]);
        }
    }
    f1[kHalf] = pSrcLpc[kHalf];

    Vek16s found[kOrder];
    const int count = interlacedRoots<kBisections>(
        kOrder - 1, kPoints, [](int j) { return kIspGrid[j]; },
        [&](int n) {
            return n % 2 != 0 ? Series{f2, kHalf - 1} : Series{f1, kHalf};
        },
        found);
    if (count < kOrder - 1) {
        std::memmove(pDstIsp, pSrcPrevIsp, sizeof found);
        return vekStsUnstableFilter;
    }
    found[kOrder - 1] = shl(pSrcLpc[kOrder], 3);
    std::memcpy(pDstIsp, found, sizeof found);
    return vekStsNoErr;
}

VekStatus veksISPToLPC_AMRWB_16s(const Vek16s* pSrcIsp, Vek16s* pDstLpc, int len) {
    if (const VekStatus status = check(pSrcIsp, pDstLpc, len); status != vekStsNoErr) {
        return status;
    }
    Vek16s a[kMostOrder + 1];
    QuickSums quick;
    if (len == kOrder) {
        coefficients(pSrcIsp, kOrder, a, quick); // with steps of a known number
    } else {
        coefficients(pSrcIsp, len, a, quick);
    }
    if (!quick.within()) {
        SaturatingSums saturating;
        coefficients(pSrcIsp, len, a, saturating);
    }
    std::memcpy(pDstLpc, a, static_cast<size_t>(len + 1) * sizeof(Vek16s));
    return vekStsNoErr;
}

VekStatus veksISPToISF_Norm_AMRWB_16s(const Vek16s* pSrcIsp, Vek16s* pDstIsf, int len) {
    if (const VekStatus status = check(pSrcIsp, pDstIsf, len); status != vekStsNoErr) {
        return status;
    }
    // The pairs of a frame are visited in rising order, and the step only moves to the front; the last one is of
    // another kind and is searched for by itself.
    int place = kSteps - 1;
    for (int i = len - 1; i >= 0; --i) {
        const int last = i >= len - 2 ? kSteps - 1 : place;
        const int found = lastNotBelow(pSrcIsp[i]);
        place = std::min(last, found);
        const int below = pSrcIsp[i] - kIspCos[place];
        if (place == found) [[likely]] {
            // Within the step nothing saturates.
            pDstIsf[i] = static_cast<Vek16s>(place * 128 + ((below * kIspAcosSlope[place] * 32 + 0x8000) >> 16));
        } else {
            const int32_t within = L_mult(sat16(below), kIspAcosSlope[place]);
            pDstIsf[i] = add(round_s(L_shl(within, 4)), static_cast<Vek16s>(place * 128));
        }
    }
    pDstIsf[len - 1] = static_cast<Vek16s>(pDstIsf[len - 1] >> 1);
    return vekStsNoErr;
}

VekStatus veksISFToISP_AMRWB_16s(const Vek16s* pSrcIsf, Vek16s* pDstIsp, int len) {
    if (const VekStatus status = check(pSrcIsf, pDstIsp, len); status != vekStsNoErr) {
        return status;
    }
#pragma GCC unroll 4
    for (int i = 0; i < len - 1; ++i) {
        pDstIsp[i] = ispOf(pSrcIsf[i]);
    }
    pDstIsp[len - 1] = ispOf(2 * pSrcIsf[len - 1]);
    return vekStsNoErr;
}
