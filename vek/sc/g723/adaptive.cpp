// The adaptive codebook of G.723.1: five taps around a delay, decoded and searched.
#include <algorithm>

#include "sc/common/correlate.h"
#include "sc/g723/tables.h"
#include "sc/kernels/corr.h"
#include "veksc_g723.h"

using namespace vek::g723;

namespace {

constexpr int kDelayed = kSubframe + kTaps - 1;
constexpr int kMostTried = 4;

// The bound of the errors, Q2, and how many gain vectors are always allowed.
constexpr int32_t kErrorBound = 1 << 30;
constexpr int16_t kPerZone = 1092; // 1/30, Q15
constexpr int kAlways85 = 51;
constexpr int kAlways170 = 93;

// How far below the bound the errors of the zones stay that the delays from..to touch, in steps of 2^23.
int errorMargin(const Vek32s* errors, int from, int to, bool sine) {
    const int newest = from - kSubframe + 1 - kTaps / 2;
    const int first = mult(static_cast<int16_t>(newest < 1 ? 1 : newest), kPerZone);
    const int last = mult(static_cast<int16_t>(to + kTaps / 2), kPerZone);
    int32_t most = 0;
    for (int zone = first; zone <= last && zone < 5; ++zone) {
        most = errors[zone] > most ? errors[zone] : most;
    }
    return sine || most > kErrorBound ? 0 : (kErrorBound - most) >> 23;
}

// Convolution with the impulse response of the delayed excitation for each tap; row t is that from sample t on.
void filterTaps(const int16_t* delayed, const Vek16s* h, int16_t (*rows)[kSubframe]) {
    int16_t* base = rows[kTaps - 1];
    convolve(delayed + kTaps - 1, h, kSubframe,
             [base](int i, int64_t sum) { base[i] = sat16_64((sum * 2 + 0x8000) >> 16); });
    for (int t = kTaps - 2; t >= 0; --t) {
        rows[t][0] = static_cast<int16_t>((delayed[t] * 8192 + 0x4000) >> 15);
        for (int i = 1; i < kSubframe; ++i) {
            // The row below has been filled. NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult)
            const int64_t sum = int64_t{rows[t + 1][i - 1]} * 32768 + delayed[t] * h[i];
            rows[t][i] = sat16_64((sum * 2 + 0x8000) >> 16);
        }
    }
}

// Five correlations with the target, five energies, ten products of taps, in the order of the gain table.
int32_t* correlateTaps(const int16_t (*rows)[kSubframe], const Vek16s* target, int32_t* out) {
    const CorrKernels& kernels = corrKernels();
    for (int t = 0; t < kTaps; ++t) {
        *out++ = sat32(2 * kernels.dot16(target, rows[t], kSubframe));
    }
    for (int t = 0; t < kTaps; ++t) {
        *out++ = sat32(2 * kernels.dot16(rows[t], rows[t], kSubframe));
    }
    for (int t = 1; t < kTaps; ++t) {
        for (int u = 0; u < t; ++u) {
            *out++ = sat32(4 * kernels.dot16(rows[t], rows[u], kSubframe));
        }
    }
    return out;
}

bool usesShortBook(int delay, VekSpchBitRate mode) {
    return mode == VEK_SPCHBR_6300 && delay < kShortDelay;
}

} // namespace

VekStatus veksDecodeAdaptiveVector_G723_16s(Vek16s valBaseDelay, Vek16s valCloseLag, Vek16s valAdptGainIndex,
                                            const Vek16s* pSrcPrevExcitation, Vek16s* pDstAdptVector,
                                            VekSpchBitRate mode) {
    if (!pSrcPrevExcitation || !pDstAdptVector) {
        return vekStsNullPtrErr;
    }
    if (!isRate(mode)) {
        return vekStsBitRateErr;
    }
    const int delay = valBaseDelay + valCloseLag - 1;
    const bool isShort = usesShortBook(valBaseDelay, mode);
    if (!isDelay(valBaseDelay) || valCloseLag < 0 || valCloseLag > 3 || delay > kHistory - kTaps / 2 ||
        valAdptGainIndex < 0 || valAdptGainIndex >= (isShort ? 85 : 170)) {
        return vekStsRangeErr;
    }
    const int16_t* gains = isShort ? kGains85[valAdptGainIndex] : kGains170[valAdptGainIndex];
    int16_t delayed[kDelayed];
    delayedExcitation(pSrcPrevExcitation, delay, delayed);
    for (int i = 0; i < kSubframe; ++i) {
        int64_t sum = 0;
        for (int t = 0; t < kTaps; ++t) {
            sum += delayed[i + t] * gains[t];
        }
        pDstAdptVector[i] = sat16_64((sum * 4 + 0x8000) >> 16);
    }
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookSearch_G723(Vek16s valBaseDelay, const Vek16s* pSrcAdptTarget,
                                          const Vek16s* pSrcImpulseResponse, const Vek16s* pSrcPrevExcitation,
                                          const Vek32s* pSrcPrevError, Vek16s* pResultCloseLag,
                                          Vek16s* pResultAdptGainIndex, Vek16s subFrame, Vek16s sineDtct,
                                          VekSpchBitRate mode) {
    if (!pSrcAdptTarget || !pSrcImpulseResponse || !pSrcPrevExcitation || !pSrcPrevError || !pResultCloseLag ||
        !pResultAdptGainIndex) {
        return vekStsNullPtrErr;
    }
    if (!isDelay(valBaseDelay) || !isSubframe(subFrame)) {
        return vekStsRangeErr;
    }
    if (!isRate(mode)) {
        return vekStsBitRateErr;
    }
    const bool odd = (subFrame & 1) != 0;
    int base = valBaseDelay;
    if (!odd) {
        base = base == kLeastDelay ? kLeastDelay + 1 : base > kMostDelay - 5 ? kMostDelay - 5 : base;
    }
    // No delay is tried that a decoder would refuse.
    const int tried = odd ? std::min(4, kHistory - base) : 3;
    int32_t terms[kMostTried * kGainTerms];
    int32_t* end = terms;
    for (int i = 0; i < tried; ++i) {
        int16_t delayed[kDelayed];
        int16_t rows[kTaps][kSubframe];
        delayedExcitation(pSrcPrevExcitation, base - 1 + i, delayed);
        filterTaps(delayed, pSrcImpulseResponse, rows);
        end = correlateTaps(rows, pSrcAdptTarget, end);
    }
    int32_t most = 0;
    for (const int32_t* t = terms; t != end; ++t) {
        most = L_abs(*t) > most ? L_abs(*t) : most;
    }
    const int shift = norm_l(most);
    const int margin = errorMargin(pSrcPrevError, base - 1, base - 2 + tried, sineDtct < 0);
    int bestLag = 1;
    int bestGains = 0;
    int32_t best = 0;
    for (int i = 0; i < tried; ++i) {
        int16_t own[kGainTerms];
        for (int k = 0; k < kGainTerms; ++k) {
            own[k] = round_s(L_shl(terms[i * kGainTerms + k], shift));
        }
        const bool isShort = usesShortBook(odd ? base : base - 1 + i, mode);
        const int all = isShort ? 85 : 170;
        const int allowed = isShort ? kAlways85 + margin * 4 : kAlways170 + margin * 8;
        const int16_t(*book)[kGainTerms] = isShort ? kGains85 : kGains170;
        for (int k = 0; k < (allowed < all ? allowed : all); ++k) {
            const int32_t measure = sat32(corrKernels().dot16(own, book[k], kGainTerms));
            if (measure > best) {
                best = measure;
                bestLag = i;
                bestGains = k;
            }
        }
    }
    *pResultCloseLag = static_cast<Vek16s>(bestLag);
    *pResultAdptGainIndex = static_cast<Vek16s>(bestGains);
    return vekStsNoErr;
}
