// Search of the gain codebooks of G.729 and its Annex D in floating point: the least error of all pairs of the entries
// tried. The choice of these entries is the caller's.
#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <numeric>

#include "sc/common/signal_check.h"
#include "sc/g729/gains.h"
#include "sc/kernels/loops.h"
#include "veksc_g729code.h"

namespace {

using namespace vek::g729;

// With a tamed filter: the bound of the adaptive gain.
constexpr double kTamedBound = 16383.0 / 16384;

// Entries by one of their shares, in units of 1.0, and their codes.
template <std::size_t N>
struct Ranked {
    std::array<double, N> adaptive{};
    std::array<double, N> factor{};
    std::array<Vek16s, N> code{};

    Ranked(const std::array<GainEntry, N>& entries, double unit, bool byFactor) {
        std::iota(code.begin(), code.end(), Vek16s{0});
        const auto entry = [&entries](Vek16s c) -> const GainEntry& { return entries[static_cast<std::size_t>(c)]; };
        std::sort(code.begin(), code.end(), [&](Vek16s a, Vek16s b) {
            return byFactor ? entry(a).factor < entry(b).factor : entry(a).adaptive < entry(b).adaptive;
        });
        for (std::size_t i = 0; i < N; ++i) {
            adaptive[i] = entry(code[i]).adaptive / 16384.0;
            factor[i] = entry(code[i]).factor / unit;
        }
    }

    GainEntries from(int at, int count) const { return {adaptive.data() + at, factor.data() + at, count}; }
};

template <std::size_t First, std::size_t Second>
struct Codebook {
    Ranked<First> first;
    Ranked<Second> second;
    int firstTried;
    int secondTried;

    bool refuses(int a, int b) const {
        return a < 0 || a > static_cast<int>(First) - firstTried || b < 0 || b > static_cast<int>(Second) - secondTried;
    }
};

template <std::size_t First, std::size_t Second>
VekStatus searchCodes(const Codebook<First, Second>& book, const Vek32f* terms, const Vek16s* cand, Vek16s* index,
                      int tame, Vek32f predicted) {
    if (anyNull(terms, cand, index)) {
        return vekStsNullPtrErr;
    }
    if (book.refuses(cand[0], cand[1]) || tame < 0 || tame > 1) {
        return vekStsRangeErr;
    }
    const int pair = loopKernels().leastGainPair(
        terms, static_cast<double>(predicted), book.first.from(cand[0], book.firstTried),
        book.second.from(cand[1], book.secondTried), tame == 1 ? kTamedBound : std::numeric_limits<double>::infinity());
    const auto first = static_cast<std::size_t>(cand[0] + pair / kGainPairRow);
    const auto second = static_cast<std::size_t>(cand[1] + pair % kGainPairRow);
    index[0] = book.first.code[first];
    index[1] = book.second.code[second];
    return vekStsNoErr;
}

const Codebook<kFirstEntries, kSecondEntries> g_book{{kFirstGains, 8192, true}, {kSecondGains, 8192, false}, 4, 8};
const Codebook<kFirstEntries, kSecondEntriesD> g_bookD{
    {kFirstGainsD, 16384, true}, {kSecondGainsD, 16384, false}, 6, 6};

} // namespace

VekStatus veksGainCodebookSearch_G729_32f(const Vek32f* pSrc, const Vek16s* pSrcCand, Vek16s* pDstIdxs, int valTimeFlag,
                                          Vek32f valPredictedCodebookGain) {
    return searchCodes(g_book, pSrc, pSrcCand, pDstIdxs, valTimeFlag, valPredictedCodebookGain);
}

VekStatus veksGainCodebookSearch_G729D_32f(const Vek32f* pSrc, const Vek16s* pSrcCand, Vek16s* pDstIdxs,
                                           int valTimeFlag, Vek32f valPredictedCodebookGain) {
    return searchCodes(g_bookD, pSrc, pSrcCand, pDstIdxs, valTimeFlag, valPredictedCodebookGain);
}
