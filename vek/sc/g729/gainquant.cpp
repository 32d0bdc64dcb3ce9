// Quantiser of the two gains of G.729 and its Annex D: the entries near the best gains, then the least error of all
// their pairs. Sums of products are exact; the error is weighed in double precision, which all levels share.
#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "sc/common/signal_check.h"
#include "sc/g729/gains.h"
#include "sc/kernels/corr.h"
#include "veksc_g729code.h"

namespace {

using namespace vek;
using namespace vek::g729;

constexpr int kSub = 40;

// With a tamed filter: the best adaptive gain that is aimed at, and the bound of the quantised one.
constexpr double kTamedAim = 481.0 / 512;
constexpr double kTamedBound = 16383.0 / 16384;

// yy, -2xy, zz, -2xz, 2yz
struct Terms {
    double yy, xy, zz, xz, yz;

    double error(double adaptive, double fixed) const {
        return adaptive * (adaptive * yy + xy) + fixed * (fixed * zz + xz + adaptive * yz);
    }
};

// An entry in units of 1.0, and its code.
struct Ranked {
    double adaptive;
    double factor;
    int code;
};

template <std::size_t N>
std::array<Ranked, N> rank(const std::array<GainEntry, N>& entries, double unit, bool byFactor) {
    std::array<Ranked, N> ranked{};
    for (std::size_t i = 0; i < N; ++i) {
        ranked[i] = {entries[i].adaptive / 16384.0, entries[i].factor / unit, static_cast<int>(i)};
    }
    std::sort(ranked.begin(), ranked.end(), [&](const Ranked& a, const Ranked& b) {
        return byFactor ? a.factor < b.factor : a.adaptive < b.adaptive;
    });
    return ranked;
}

struct Codebook {
    std::array<Ranked, kFirstEntries> first;
    std::array<Ranked, kSecondEntries> second;
    int secondEntries;
    int firstTried;
    int secondTried;

    struct Pair {
        int first;
        int second;
    };

    bool refuses(int a, int b) const {
        return a < 0 || a > kFirstEntries - firstTried || b < 0 || b > secondEntries - secondTried;
    }

    // The first entries to try, by the gains of least error.
    Pair near(const Terms& t, double predicted, bool tamed) const {
        const double xy = -0.5 * t.xy;
        const double xz = -0.5 * t.xz;
        const double yz = 0.5 * t.yz;
        const double den = t.yy * t.zz - yz * yz;
        const double inverse = 1 / (den > 0 ? den : 1);
        double adaptive = (t.zz * xy - xz * yz) * inverse;
        const double fixed = (t.yy * xz - xy * yz) * inverse;
        if (tamed) {
            adaptive = std::min(adaptive, kTamedAim);
        }
        int a = 0;
        while (a < kFirstEntries && fixed > first[static_cast<std::size_t>(a)].factor * predicted) {
            ++a;
        }
        int b = 0;
        while (b < secondEntries && adaptive > second[static_cast<std::size_t>(b)].adaptive) {
            ++b;
        }
        return {std::clamp(a - firstTried / 2, 0, kFirstEntries - firstTried),
                std::clamp(b - secondTried / 2, 0, secondEntries - secondTried)};
    }

    // The codes of least error of the entries from `from` on.
    Pair search(const Terms& t, double predicted, const Pair& from, bool tamed) const {
        double least = std::numeric_limits<double>::infinity();
        Pair best{first[static_cast<std::size_t>(from.first)].code, second[static_cast<std::size_t>(from.second)].code};
        for (int i = 0; i < firstTried; ++i) {
            const Ranked& one = first[static_cast<std::size_t>(from.first + i)];
            for (int j = 0; j < secondTried; ++j) {
                const Ranked& two = second[static_cast<std::size_t>(from.second + j)];
                const double adaptive = one.adaptive + two.adaptive;
                const double error = t.error(adaptive, (one.factor + two.factor) * predicted);
                if (error < least && (!tamed || adaptive < kTamedBound)) {
                    least = error;
                    best = {one.code, two.code};
                }
            }
        }
        return best;
    }
};

const Codebook& codebook() {
    static const Codebook book{rank(kFirstGains, 8192, true), rank(kSecondGains, 8192, false), kSecondEntries, 4, 8};
    return book;
}

const Codebook& codebookD() {
    static const Codebook book = [] {
        Codebook b{rank(kFirstGainsD, 16384, true), {}, kSecondEntriesD, 6, 6};
        const auto ranked = rank(kSecondGainsD, 16384, false);
        std::copy(ranked.begin(), ranked.end(), b.second.begin());
        return b;
    }();
    return book;
}

double product(const Vek16s* a, const Vek16s* b) {
    return static_cast<double>(corrKernels().dot16(a, b, kSub));
}

template <class First, class Second>
VekStatus quantise(const Codebook& book, const First& firsts, const Second& seconds, int factorBits, const Vek16s* x,
                   const Vek16s* y, const Vek16s* code, const Vek16s* z, Vek16s* past, Vek16s* gains, Vek16s* index,
                   int tame) {
    if (anyNull(x, y, code, z, past, gains, index)) {
        return vekStsNullPtrErr;
    }
    if (tame < 0 || tame > 1) {
        return vekStsRangeErr;
    }
    constexpr double q12 = 1.0 / 4096;
    const Terms terms{product(y, y), -2 * product(x, y), product(z, z) * q12 * q12, -2 * product(x, z) * q12,
                      2 * product(y, z) * q12};
    const auto energy = static_cast<int32_t>(std::min<int64_t>(corrKernels().dot16(code, code, kSub), INT32_MAX));
    const PredictedGain predicted = predictGain(energy, past);
    double size = predicted.mantissa;
    for (int i = 0; i < predicted.exponent; ++i) {
        size *= 0.5;
    }
    for (int i = predicted.exponent; i < 0; ++i) {
        size *= 2;
    }
    const Codebook::Pair codes = book.search(terms, size, book.near(terms, size, tame == 1), tame == 1);
    const GainEntry first = firsts[static_cast<std::size_t>(codes.first)];
    const GainEntry second = seconds[static_cast<std::size_t>(codes.second)];
    const int factor = (first.factor + second.factor) >> (factorBits - 13);
    gains[0] = static_cast<Vek16s>(first.adaptive + second.adaptive);
    gains[1] = fixedGain(factor, predicted);
    index[0] = static_cast<Vek16s>(codes.first);
    index[1] = static_cast<Vek16s>(codes.second);
    movePast(factor, past);
    return vekStsNoErr;
}

VekStatus searchCodes(const Codebook& book, const Vek32f* terms, const Vek16s* cand, Vek16s* index, int tame,
                      Vek32f predicted) {
    if (anyNull(terms) || anyNull(cand, index)) {
        return vekStsNullPtrErr;
    }
    if (book.refuses(cand[0], cand[1]) || tame < 0 || tame > 1) {
        return vekStsRangeErr;
    }
    const Terms t{terms[0], terms[1], terms[2], terms[3], terms[4]};
    const Codebook::Pair codes = book.search(t, predicted, {cand[0], cand[1]}, tame == 1);
    index[0] = static_cast<Vek16s>(codes.first);
    index[1] = static_cast<Vek16s>(codes.second);
    return vekStsNoErr;
}

} // namespace

VekStatus veksGainQuant_G729_16s(const Vek16s* pSrcTarget, const Vek16s* pSrcFltAdptVector,
                                 const Vek16s* pSrcFixedVector, const Vek16s* pSrcFltFixedVector, Vek16s* pPastEnergy,
                                 Vek16s* pDstQGain, Vek16s* pDstIndex, Vek16s tameflag) {
    return quantise(codebook(), kFirstGains, kSecondGains, 13, pSrcTarget, pSrcFltAdptVector, pSrcFixedVector,
                    pSrcFltFixedVector, pPastEnergy, pDstQGain, pDstIndex, tameflag);
}

VekStatus veksGainQuant_G729D_16s(const Vek16s* pSrcTarget, const Vek16s* pSrcFltAdptVector,
                                  const Vek16s* pSrcFixedVector, const Vek16s* pSrcFltFixedVector, Vek16s* pPastEnergy,
                                  Vek16s* pDstQGain, Vek16s* pDstIndex, Vek16s tameflag) {
    return quantise(codebookD(), kFirstGainsD, kSecondGainsD, 14, pSrcTarget, pSrcFltAdptVector, pSrcFixedVector,
                    pSrcFltFixedVector, pPastEnergy, pDstQGain, pDstIndex, tameflag);
}

VekStatus veksGainCodebookSearch_G729_32f(const Vek32f* pSrc, const Vek16s* pSrcCand, Vek16s* pDstIdxs, int valTimeFlag,
                                          Vek32f valPredictedCodebookGain) {
    return searchCodes(codebook(), pSrc, pSrcCand, pDstIdxs, valTimeFlag, valPredictedCodebookGain);
}

VekStatus veksGainCodebookSearch_G729D_32f(const Vek32f* pSrc, const Vek16s* pSrcCand, Vek16s* pDstIdxs,
                                           int valTimeFlag, Vek32f valPredictedCodebookGain) {
    return searchCodes(codebookD(), pSrc, pSrcCand, pDstIdxs, valTimeFlag, valPredictedCodebookGain);
}
