// Levinson-Durbin recursion of 16-bit coefficients, whose format gives way when one needs more than its bits.
#include <cstdint>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g728/tables.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/g728.h"
#include "veksc_g728.h"

using namespace vek;
using namespace vek::g728;

namespace {

constexpr int kFinest = 15;
constexpr int kCoarsest = 13;
constexpr int kSpan = kPredictSpan;
constexpr int kBehind = 16;

// Coefficients of an order, forward from 0 and backward up to kSpan, with zeros behind.
struct Filter {
    Vek16s forward[kSpan + kBehind] = {};
    Vek16s backward[kSpan + kBehind] = {};

    void set(int i, Vek16s a) {
        forward[i] = a;
        backward[kSpan - 1 - i] = a;
    }
};

// The filter of the order reached and one for the next, in turn.
struct Recursion {
    Filter filters[2];
    int order = 0;
    int q = kFinest;
    Vek32s energy = 0;
    Vek16s first = 0;
};

void halve(Filter& filter, int order) {
    for (int i = 0; i < order; ++i) {
        filter.set(i, fix::shr_r(filter.forward[i], 1));
    }
}

constexpr int groups(int n) {
    return (n + 15) & ~15;
}

// From the order reached to the next one; false if there is none.
bool step(Recursion& now, const Vek16s* r) {
    const int m = now.order;
    Filter& filter = now.filters[m % 2];
    Filter& next = now.filters[(m + 1) % 2];
    Vek16s* backward = filter.backward + kSpan - m;
    const int64_t known = corrKernels().dot16(backward, r + 1, groups(m));
    const int64_t sum = (known + (int64_t{r[m + 1]} << now.q)) * (int64_t{1} << (16 - now.q)); // Q31
    const int64_t magnitude = sum < 0 ? -sum : sum;
    if (magnitude >= now.energy) {
        return false;
    }
    // Both have at most 47 bits: the quotient of the doubles is cut off as that of the integers is.
    const auto k = static_cast<int>(static_cast<double>(magnitude * 65536 + now.energy) /
                                    static_cast<double>(int64_t{2} * now.energy));
    if (k > INT16_MAX) {
        return false;
    }
    const auto reflection = static_cast<Vek16s>(sum < 0 ? k : -k);
    while (!g728Kernels().reflect(filter.forward, backward, m, reflection, next.forward, next.backward + kSpan - m)) {
        if (--now.q < kCoarsest) {
            return false;
        }
        halve(filter, m);
    }
    next.set(m, fix::shr_r(reflection, kFinest - now.q));
    const int64_t lost = (int64_t{now.energy} * k >> 15) * k >> 15;
    now.energy -= static_cast<Vek32s>(lost);
    now.first = m == 0 ? reflection : now.first;
    now.order = m + 1;
    return true;
}

// With zeros behind.
void take(const Vek16s* pSrcAutoCorr, int order, Vek16s* r) {
    std::memcpy(r, pSrcAutoCorr, static_cast<size_t>(order + 1) * sizeof(Vek16s));
    std::memset(r + order + 1, 0, static_cast<size_t>(kSpan + kBehind - order - 1) * sizeof(Vek16s));
}

bool recurse(Recursion& now, const Vek16s* r, int order) {
    while (now.order < order) {
        if (!step(now, r)) {
            return false;
        }
    }
    return true;
}

} // namespace

VekStatus veksLevinsonDurbin_G728_16s_Sfs(const Vek16s* pSrcAutoCorr, int order, Vek16s* pDstLPC, Vek16s* pDstRC1,
                                          Vek32s* pDstResidualEnergy, Vek16s* pDstScaleFactor) {
    if (anyNull(pSrcAutoCorr) || anyNull(pDstLPC, pDstRC1, pDstScaleFactor) || pDstResidualEnergy == nullptr) {
        return vekStsNullPtrErr;
    }
    if (order < 1 || order > kOrder) {
        return vekStsFilterOrderErr;
    }
    Vek16s r[kSpan + kBehind];
    Recursion now;
    take(pSrcAutoCorr, order, r);
    now.energy = r[0] * 65536;
    if (!recurse(now, r, order)) {
        return vekStsUnstableFilter;
    }
    std::memcpy(pDstLPC, now.filters[order % 2].forward, static_cast<size_t>(order) * sizeof(Vek16s));
    *pDstRC1 = now.first;
    *pDstResidualEnergy = now.energy;
    *pDstScaleFactor = static_cast<Vek16s>(now.q);
    return vekStsNoErr;
}

VekStatus veksLevinsonDurbin_G728_16s_ISfs(const Vek16s* pSrcAutoCorr, int numSrcLPC, int order, Vek16s* pSrcDstLPC,
                                           Vek32s* pSrcDstResidualEnergy, Vek16s* pSrcDstScaleFactor) {
    if (anyNull(pSrcAutoCorr) || anyNull(pSrcDstLPC, pSrcDstScaleFactor) || pSrcDstResidualEnergy == nullptr) {
        return vekStsNullPtrErr;
    }
    if (order < 1 || order > kOrder) {
        return vekStsFilterOrderErr;
    }
    if (numSrcLPC < 0 || numSrcLPC >= order ||
        (numSrcLPC > 0 &&
         (*pSrcDstResidualEnergy <= 0 || *pSrcDstScaleFactor < kCoarsest || *pSrcDstScaleFactor > kFinest))) {
        return vekStsRangeErr;
    }
    Vek16s r[kSpan + kBehind];
    Recursion now;
    take(pSrcAutoCorr, order, r);
    now.energy = r[0] * 65536;
    if (numSrcLPC > 0) {
        now.order = numSrcLPC;
        now.energy = *pSrcDstResidualEnergy;
        now.q = *pSrcDstScaleFactor;
        for (int i = 0; i < numSrcLPC; ++i) {
            now.filters[numSrcLPC % 2].set(i, pSrcDstLPC[i]);
        }
    }
    if (!recurse(now, r, order)) {
        return vekStsUnstableFilter;
    }
    std::memcpy(pSrcDstLPC, now.filters[order % 2].forward, static_cast<size_t>(order) * sizeof(Vek16s));
    *pSrcDstResidualEnergy = now.energy;
    *pSrcDstScaleFactor = static_cast<Vek16s>(now.q);
    return vekStsNoErr;
}
