// Search of the gain codebooks of G.729 and its Annex D in floating point: the least error of all pairs of the entries
// tried. The choice of these entries is the caller's.
#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "sc/common/signal_check.h"
#include "sc/g729/gains.h"
#include "veksc_g729code.h"

namespace {

using namespace vek;
using namespace vek::g729;

// With a tamed filter: the bound of the adaptive gain.
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

VekStatus searchCodes(const Codebook& book, const Vek32f* terms, const Vek16s* cand, Vek16s* index, int tame,
                      Vek32f predicted) {
    if (anyNull(terms, cand, index)) {
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

VekStatus veksGainCodebookSearch_G729_32f(const Vek32f* pSrc, const Vek16s* pSrcCand, Vek16s* pDstIdxs, int valTimeFlag,
                                          Vek32f valPredictedCodebookGain) {
    return searchCodes(codebook(), pSrc, pSrcCand, pDstIdxs, valTimeFlag, valPredictedCodebookGain);
}

VekStatus veksGainCodebookSearch_G729D_32f(const Vek32f* pSrc, const Vek16s* pSrcCand, Vek16s* pDstIdxs,
                                           int valTimeFlag, Vek32f valPredictedCodebookGain) {
    return searchCodes(codebookD(), pSrc, pSrcCand, pDstIdxs, valTimeFlag, valPredictedCodebookGain);
}
