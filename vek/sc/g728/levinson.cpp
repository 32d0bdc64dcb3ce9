// Levinson-Durbin recursion of 16-bit coefficients, whose format gives way when one needs more than its bits.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g728/tables.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/g728recursion.h"
#include "veksc_g728.h"

using namespace vek::g728;

namespace {

constexpr int kFinest = 15;
constexpr int kSpan = kPredictSpan;

void halve(Levinson& filter) {
    for (int i = 0; i < filter.order; ++i) {
        filter.forward[i] = fix::shr_r(filter.forward[i], 1);
        filter.backward[filter.order - 1 - i] = filter.forward[i];
    }
}

// What a reflection makes of the filter; false if a coefficient needs more than 16 bits.
bool reflect(const Levinson& filter, Vek16s reflection, Vek16s* forward) {
    bool fits = true;
    for (int i = 0; i < filter.order; ++i) {
        const int a = filter.forward[i] + fix::mult_r(reflection, filter.backward[i]);
        forward[i] = static_cast<Vek16s>(a);
        fits = fits && forward[i] == a;
    }
    return fits;
}

// The step that the kernel leaves: in a coarser format, or not at all.
bool step(Levinson& now, const Vek16s* r) {
    const int m = now.order;
    const int64_t known = corrKernels().dot16(now.backward, r + 1, m);
    const int64_t sum = (known + (int64_t{r[m + 1]} << now.q)) * (int64_t{1} << (16 - now.q)); // Q31
    const int64_t magnitude = sum < 0 ? -sum : sum;
    if (magnitude >= now.energy) {
        return false;
    }
    const int64_t k = (magnitude * 65536 + now.energy) / (int64_t{2} * now.energy);
    if (k > INT16_MAX) {
        return false;
    }
    const auto reflection = static_cast<Vek16s>(sum < 0 ? k : -k);
    Vek16s next[kSpan];
    while (!reflect(now, reflection, next)) {
        if (--now.q < kG728CoarsestFormat) {
            return false;
        }
        halve(now);
    }
    next[m] = fix::shr_r(reflection, kFinest - now.q);
    for (int i = 0; i <= m; ++i) {
        now.forward[i] = next[i];
        now.backward[m - i] = next[i];
    }
    now.energy -= static_cast<Vek32s>((now.energy * k >> 15) * k >> 15);
    now.first = m == 0 ? reflection : now.first;
    now.order = m + 1;
    return true;
}

// As much as steps up to an order reach.
void clear(Vek16s* to, int order) {
    if (order <= kPredictFew) {
        std::memset(to, 0, kPredictFew * sizeof(Vek16s));
    } else {
        std::memset(to, 0, kSpan * sizeof(Vek16s));
    }
}

// The autocorrelation backwards with zeros behind it. It is the first thing made: steps read elements all at once,
// which they cannot before each of them, and all that was written earlier, has left the processor.
struct Backwards {
    Vek16s r[kOrder + kSpan];
    bool quick;

    Backwards(const Vek16s* from, int order) {
        clear(r + order, order);
        Vek16s least = 0;
        for (int i = 0; i < order; ++i) {
            r[i] = from[order - i];
            least = std::min(least, r[i]);
        }
        quick = least > INT16_MIN;
    }
};

void begin(Levinson& filter, const Vek16s* r, int order) {
    clear(filter.forward, order);
    clear(filter.backward, order);
    filter.order = 0;
    filter.q = kFinest;
    filter.energy = r[0] * 65536;
    filter.first = 0;
}

bool recurse(Levinson& now, const Vek16s* r, const Backwards& backwards, int order) {
    while (now.order < order) {
        if (backwards.quick) {
            g728RecursionKernels().recurse(now, backwards.r, order);
        }
        if (now.order < order && !step(now, r)) {
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
    const Backwards backwards(pSrcAutoCorr, order);
    Levinson now;
    begin(now, pSrcAutoCorr, order);
    if (!recurse(now, pSrcAutoCorr, backwards, order)) {
        return vekStsUnstableFilter;
    }
    std::memcpy(pDstLPC, now.forward, static_cast<size_t>(order) * sizeof(Vek16s));
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
         (*pSrcDstResidualEnergy <= 0 || *pSrcDstScaleFactor < kG728CoarsestFormat || *pSrcDstScaleFactor > kFinest))) {
        return vekStsRangeErr;
    }
    const Backwards backwards(pSrcAutoCorr, order);
    Levinson now;
    begin(now, pSrcAutoCorr, order);
    if (numSrcLPC > 0) {
        now.order = numSrcLPC;
        now.energy = *pSrcDstResidualEnergy;
        now.q = *pSrcDstScaleFactor;
        for (int i = 0; i < numSrcLPC; ++i) {
            now.forward[i] = pSrcDstLPC[i];
            now.backward[numSrcLPC - 1 - i] = pSrcDstLPC[i];
        }
    }
    if (!recurse(now, pSrcAutoCorr, backwards, order)) {
        return vekStsUnstableFilter;
    }
    std::memcpy(pSrcDstLPC, now.forward, static_cast<size_t>(order) * sizeof(Vek16s));
    *pSrcDstResidualEnergy = now.energy;
    *pSrcDstScaleFactor = static_cast<Vek16s>(now.q);
    return vekStsNoErr;
}
