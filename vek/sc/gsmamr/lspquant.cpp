// Quantiser of the line spectral frequencies of AMR: by three parts, and by five parts over two sets at 12.2 kbit/s.
// Its reverse is in lspdecode.cpp.
#include <algorithm>
#include <cstring>

#include "sc/common/signal_check.h"
#include "sc/gsmamr/linespectrum.h"
#include "sc/kernels/vq.h"
#include "veksc_g729lp.h"
#include "veksc_gsmamrdtx.h"

namespace vek::gsmamr {

using namespace vek::fix;

namespace {

// Sums from here on saturate when doubled, and no row is better than another.
constexpr uint32_t kTooFar = 1u << 30;

struct Book {
    const Vek16s (*rows)[4];
    int count;
};

// Close neighbours make an element weigh more.
void weights(const Vek16s* lsf, Vek16s* weight) {
    constexpr Vek16s kKnee = 1843; // 450 Hz
    for (int i = 0; i < kOrder; ++i) {
        const Vek16s below = i == 0 ? Vek16s{0} : lsf[i - 1];
        const Vek16s above = i == kOrder - 1 ? Vek16s{16384} : lsf[i + 1];
        const Vek16s distance = sub(above, below);
        const Vek16s beyond = sub(distance, kKnee);
        const Vek16s w = beyond < 0 ? sub(3427, mult(distance, 28160)) : sub(kKnee, mult(beyond, 6242));
        weight[i] = shl(w, 3);
    }
}

void take(const Vek16s* row, Vek16s* residual, int n) {
    std::memcpy(residual, row, sizeof(Vek16s) * static_cast<size_t>(n));
}

// The nearest row to n elements (3 or 4) of a residual, which it replaces.
Vek16s nearest(const Book& book, Vek16s* residual, const Vek16s* weight, int n) {
    Vek16s target[4] = {};
    Vek16s w[4] = {};
    take(residual, target, n);
    take(weight, w, n);
    uint32_t least = 0;
    int row = vqKernels().nearest4(book.rows[0], book.count, target, w, &least);
    row = least < kTooFar ? row : 0;
    take(book.rows[row], residual, n);
    return static_cast<Vek16s>(row);
}

// The nearest row to two elements of both sets.
class Pair {
public:
    Pair(Vek16s* r1, Vek16s* r2, const Vek16s* w1, const Vek16s* w2)
        : m_r1(r1), m_r2(r2), m_target{r1[0], r1[1], r2[0], r2[1]}, m_weight{w1[0], w1[1], w2[0], w2[1]} {}

    Vek16s plain(const Book& book) {
        uint32_t least = 0;
        int row = vqKernels().nearest4(book.rows[0], book.count, m_target, m_weight, &least);
        row = least < kTooFar ? row : 0;
        put(book.rows[row], false);
        return static_cast<Vek16s>(row);
    }
    // Each row also with the other sign, behind the row itself.
    Vek16s withSign(const Book& book) {
        uint32_t least = 0;
        uint32_t leastTurned = 0;
        int row = vqKernels().nearest4(book.rows[0], book.count, m_target, m_weight, &least);
        const int turned = vqKernels().nearest4Sum(book.rows[0], book.count, m_target, m_weight, &leastTurned);
        const bool turn = leastTurned < least || (leastTurned == least && turned < row);
        row = turn ? turned : row;
        if ((turn ? leastTurned : least) >= kTooFar) {
            put(book.rows[0], false);
            return 0;
        }
        put(book.rows[row], turn);
        return static_cast<Vek16s>(2 * row + (turn ? 1 : 0));
    }

private:
    void put(const Vek16s* row, bool turn) {
        for (int i = 0; i < 2; ++i) {
            m_r1[i] = turn ? negate(row[i]) : row[i];
            m_r2[i] = turn ? negate(row[i + 2]) : row[i + 2];
        }
    }

    Vek16s* m_r1;
    Vek16s* m_r2;
    Vek16s m_target[4];
    Vek16s m_weight[4];
};

// The start residual that leaves the least to quantise.
int bestStart(const Vek16s* lsf) {
    int best = 0;
    int32_t least = kMax32;
    for (int row = 0; row < 8; ++row) {
        int32_t error = 0;
        for (int i = 0; i < kOrder; ++i) {
            const Vek16s rest = sub(lsf[i], add(kLsf3Mean[i], kLsf3Start[row][i]));
            error = L_mac(error, rest, rest);
        }
        if (error < least) {
            least = error;
            best = row;
        }
    }
    return best;
}

void finish(const Vek16s* residual, const Vek16s* predicted, Vek16s* quantised) {
    Vek16s lsf[kOrder];
    for (int i = 0; i < kOrder; ++i) {
        lsf[i] = add(residual[i], predicted[i]);
    }
    keepApart<kOrder>(lsf, kLsfGap);
    lsfToLsp(lsf, quantised);
}

void quantiseBy5(const Vek16s* lsp, Vek16s* residual, Vek16s* quantised, Vek16s* index) {
    constexpr Vek16s kPredictor = 21299; // 0.65
    Vek16s lsf[2][kOrder];
    Vek16s weight[2][kOrder];
    Vek16s rest[2][kOrder];
    Vek16s predicted[kOrder];
    for (int set = 0; set < 2; ++set) {
        veksLSPToLSF_Norm_G729_16s(lsp + set * kOrder, lsf[set]);
        weights(lsf[set], weight[set]);
    }
    for (int i = 0; i < kOrder; ++i) {
        predicted[i] = add(kLsf5Mean[i], mult(residual[i], kPredictor));
        rest[0][i] = sub(lsf[0][i], predicted[i]);
        rest[1][i] = sub(lsf[1][i], predicted[i]);
    }
    const auto pair = [&](int i) { return Pair(rest[0] + i, rest[1] + i, weight[0] + i, weight[1] + i); };
    index[0] = pair(0).plain({kLsf5Part1, 128});
    index[1] = pair(2).plain({kLsf5Part2, 256});
    index[2] = pair(4).withSign({kLsf5Part3, 256});
    index[3] = pair(6).plain({kLsf5Part4, 256});
    index[4] = pair(8).plain({kLsf5Part5, 64});
    finish(rest[0], predicted, quantised);
    finish(rest[1], predicted, quantised + kOrder);
    take(rest[1], residual, kOrder);
}

} // namespace

void quantiseBy3(Rate rate, const Vek16s* lsp, Vek16s* residual, Vek16s* quantised, Vek16s* index, Vek16s* start) {
    const bool lowest = rate == Rate::R475 || rate == Rate::R515;
    Vek16s lsf[kOrder];
    Vek16s weight[kOrder];
    Vek16s predicted[kOrder];
    Vek16s rest[kOrder];
    veksLSPToLSF_Norm_G729_16s(lsp, lsf);
    weights(lsf, weight);
    if (rate == Rate::Dtx) {
        *start = static_cast<Vek16s>(bestStart(lsf));
    }
    for (int i = 0; i < kOrder; ++i) {
        const Vek16s share = rate == Rate::Dtx ? kLsf3Start[*start][i] : mult(residual[i], kLsf3Predictor[i]);
        predicted[i] = add(kLsf3Mean[i], share);
        rest[i] = sub(lsf[i], predicted[i]);
    }
    index[0] = nearest(rate == Rate::R795 ? Book{kLsf3Low795, 512} : Book{kLsf3Low, 256}, rest, weight, 3);
    index[1] = nearest(lowest ? Book{kLsf3MiddleHalf, 256} : Book{kLsf3Middle, 512}, rest + 3, weight + 3, 3);
    index[2] = nearest(lowest ? Book{kLsf3High515, 128} : Book{kLsf3High, 512}, rest + 6, weight + 6, 4);
    finish(rest, predicted, quantised);
    take(rest, residual, kOrder);
}

} // namespace vek::gsmamr

VekStatus veksLSPQuant_GSMAMR_16s(const Vek16s* pSrcLsp, Vek16s* pSrcDstPrevQLsfResidual, Vek16s* pDstQLsp,
                                  Vek16s* pDstIndex, VekSpchBitRate mode) {
    using namespace vek::gsmamr;
    if (vek::anyNull(pSrcLsp, pSrcDstPrevQLsfResidual, pDstQLsp, pDstIndex)) {
        return vekStsNullPtrErr;
    }
    const Rate rate = rateOf(mode);
    if (rate == Rate::None) {
        return vekStsBitRateErr;
    }
    if (rate == Rate::R1220) {
        quantiseBy5(pSrcLsp, pSrcDstPrevQLsfResidual, pDstQLsp, pDstIndex);
    } else {
        const int first = rate == Rate::Dtx ? 1 : 0;
        quantiseBy3(rate, pSrcLsp, pSrcDstPrevQLsfResidual, pDstQLsp, pDstIndex + first, pDstIndex);
    }
    return vekStsNoErr;
}
