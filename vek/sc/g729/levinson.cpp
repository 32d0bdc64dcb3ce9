// Levinson-Durbin recursion: in split 32-bit words, with the coefficients in Q27, and in floating point.
#include <cstring>
#include <utility>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/levinson.h"
#include "veksc_g729lp.h"

namespace {

using namespace vek::fix;

constexpr int kStable = 32750;

// A 32-bit value as upper half and the 15 bits below.
struct Split {
    int32_t hi, lo;
};

Split split(int32_t v) {
    return {v >> 16, (v >> 1) & 0x7fff};
}

// Product of two split words, halved.
int32_t product(Split a, Split b) {
    return a.hi * b.hi + ((a.hi * b.lo) >> 15) + ((a.lo * b.hi) >> 15);
}

// Twice the product of a split word with 16 bits.
int32_t productTwice(Split a, int32_t b) {
    return 2 * (a.hi * b + ((a.lo * b) >> 15));
}

// numerator / denominator in Q31 with the sign turned. The denominator is normalised, so that only the last step of the
// published division can saturate; the operators of the others are written out.
int32_t negativeQuotient(int32_t numerator, Split denominator) {
    const int32_t guess = (0x3fff << 15) / denominator.hi;
    const Split correction = split(kMax32 - productTwice(denominator, guess));
    const Split inverse = split(productTwice(correction, guess));
    const int32_t q = sat32(int64_t{8} * product(split(L_abs(numerator)), inverse));
    return numerator > 0 ? -q : q;
}

// What one coefficient of reflection leaves of the error, with the shift that normalises it added to exp.
Split remaining(Split error, Split k, int& exp) {
    const int32_t square = L_abs(sat32(int64_t{2} * product(k, k)));
    const auto rest = 2 * product(error, split(kMax32 - square));
    const int norm = norm_l(rest);
    exp += norm;
    return split(rest << norm);
}

VekStatus levinson(const Vek32s* r, int order, Vek16s* a, Vek16s* rc, Vek16s* err) {
    Split lag[kMostLevinson + 1];
    for (int i = 0; i <= order; ++i) {
        lag[i] = split(r[i]);
    }
    Vek16s reflection[kMostLevinson];
    Split buffers[2][kMostLevinson + 1];
    Split* now = buffers[0];
    Split* next = buffers[1];
    int32_t k = negativeQuotient(sat32(int64_t{lag[1].hi} * 65536 + lag[1].lo * 2), lag[0]);
    reflection[0] = round_s(k);
    now[1] = split(k >> 4);
    int exp = 0;
    Split error = remaining(lag[0], split(k), exp);
    for (int i = 2; i <= order; ++i) {
        if (error.hi == 0) {
            return vekStsUnstableFilter; // the last reflection was 1.0
        }
        int64_t sum = 0;
        for (int j = 1; j < i; ++j) {
            sum += product(lag[j], now[i - j]);
        }
        const int64_t whole = int64_t{lag[i].hi} * 65536 + lag[i].lo * 2;
        k = L_shl(negativeQuotient(sat32(sum * 32 + whole), error), exp);
        const Split ks = split(k);
        reflection[i - 1] = round_s(k);
        if (abs_s(static_cast<Vek16s>(ks.hi)) > kStable) {
            return vekStsUnstableFilter;
        }
        for (int j = 1; j < i; ++j) {
            const int64_t sumOf = product(ks, now[i - j]) + int64_t{now[j].hi} * 32768 + now[j].lo;
            next[j] = split(sat32(sumOf * 2));
        }
        next[i] = split(k >> 4);
        error = remaining(error, ks, exp);
        std::swap(now, next);
    }
    a[0] = 4096;
    for (int i = 1; i <= order; ++i) {
        a[i] = round_s(L_shl(L_Comp(static_cast<Vek16s>(now[i].hi), static_cast<Vek16s>(now[i].lo)), 1));
    }
    std::memcpy(rc, reflection, static_cast<size_t>(order) * sizeof(Vek16s));
    *err = shr(static_cast<Vek16s>(error.hi), exp);
    return vekStsNoErr;
}

template <class... P>
VekStatus check(int order, const P*... p) {
    return anyNull(p...) ? vekStsNullPtrErr : order < 1 || order > kMostLevinson ? vekStsSizeErr : vekStsNoErr;
}

} // namespace

VekStatus veksLevinsonDurbin_G729_32s16s(const Vek32s* pSrc, int order, Vek16s* pDstLPC, Vek16s* pDstRC,
                                         Vek16s* pResultErr) {
    if (const VekStatus status = check(order, pSrc, pDstLPC, pDstRC, pResultErr); status != vekStsNoErr) {
        return status;
    }
    if (pSrc[0] < 0x40000000) {
        return vekStsRangeErr;
    }
    return levinson(pSrc, order, pDstLPC, pDstRC, pResultErr);
}

VekStatus veksLevinsonDurbin_G729B(const Vek32s* pSrc, Vek16s* pDstLPC, Vek16s* pDstRC, Vek16s* pResultErr) {
    constexpr int kOrderB = 10;
    return veksLevinsonDurbin_G729_32s16s(pSrc, kOrderB, pDstLPC, pDstRC, pResultErr);
}

VekStatus veksLevinsonDurbin_G729_32f(const Vek32f* pSrc, int order, Vek32f* pDstLPC, Vek32f* pDstRC,
                                      Vek32f* pResultErr) {
    if (const VekStatus status = check(order, pSrc, pDstLPC, pDstRC, pResultErr); status != vekStsNoErr) {
        return status;
    }
    if (!(pSrc[0] > 0)) {
        return vekStsRangeErr;
    }
    return levinsonKernels().levinson32f(pSrc, order, pDstLPC, pDstRC, pResultErr) ? vekStsNoErr : vekStsUnstableFilter;
}
