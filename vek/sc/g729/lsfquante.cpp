// The quantiser of line spectral frequencies as Annex E calls it: from pairs to frequencies and pairs, in fixed point
// over that of the main body, and in floating point with the same codebooks.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "sc/common/signal_check.h"
#include "sc/g729/lsfquant.h"
#include "sc/g729/lsptables.h"
#include "sc/kernels/vq.h"
#include "veksc_g729lp.h"
#include "veksc_g729post.h"

namespace {

using namespace vek::g729;

constexpr Vek32f kPi = 3.14159265F;
constexpr LsfBounds<Vek32f> kBounds = {0.0012F, 0.0006F, 0.005F, 3.135F, 0.0392F};

// Column by column, as the kernel takes them.
template <size_t Rows>
using Table = std::array<std::array<Vek32f, Rows>, kOrder>;

template <size_t Rows>
Table<Rows> radians(const Vek16s (&table)[Rows][10]) {
    Table<Rows> out{};
    for (size_t i = 0; i < kOrder; ++i) {
        std::transform(table, table + Rows, out[i].begin(),
                       [i](const Vek16s(&row)[10]) { return static_cast<Vek32f>(row[i]) / 8192; });
    }
    return out;
}

const Table<128> g_first = radians(kLsfFirst);
const Table<32> g_second = radians(kLsfSecond);

// A predictor's weights and what they leave of 1.0.
struct Predictor {
    Vek32f weight[kHistory][kOrder];
    Vek32f rest[kOrder];
};

const std::array<Predictor, 2> g_predictors = [] {
    std::array<Predictor, 2> out{};
    for (size_t p = 0; p < 2; ++p) {
        for (int i = 0; i < kOrder; ++i) {
            for (int k = 0; k < kHistory; ++k) {
                out[p].weight[k][i] = static_cast<Vek32f>(kLsfPredictors[p].weight[k][i]) / 32768;
            }
            out[p].rest[i] = static_cast<Vek32f>(kLsfPredictors[p].rest[i]) / 32768;
        }
    }
    return out;
}();

void spread(Vek32f* v, Vek32f gap) {
    for (int i = 1; i < kOrder; ++i) {
        const Vek32f lack = (v[i - 1] - v[i] + gap) / 2;
        if (lack > 0) {
            v[i - 1] -= lack;
            v[i] += lack;
        }
    }
}

struct Choice {
    int predictor;
    int first;
    int half[2];
};

void codeVector(const Choice& choice, Vek32f* code) {
    for (size_t i = 0; i < kOrder; ++i) {
        const int row = choice.half[i < kHalf ? 0 : 1];
        code[i] = g_first[i][static_cast<size_t>(choice.first)] + g_second[i][static_cast<size_t>(row)];
    }
    spread(code, kBounds.wideGap);
    spread(code, kBounds.narrowGap);
}

// Close neighbours make an element weigh more.
void weights(const Vek32f* lsf, Vek32f* weight) {
    for (int i = 0; i < kOrder; ++i) {
        const Vek32f below = i == 0 ? 0.04F * kPi : lsf[i - 1];
        const Vek32f above = i == kOrder - 1 ? 0.92F * kPi : lsf[i + 1];
        const Vek32f distance = std::min(above - below - 1, 0.0F);
        weight[i] = 10 * distance * distance + 1;
    }
    weight[4] *= 1.2F;
    weight[5] *= 1.2F;
}

template <size_t Rows>
int nearest(const Table<Rows>& table, const Vek32f* target, const Vek32f* weight, size_t begin, size_t end) {
    return vqKernels().nearest32f(table[begin].data(), Rows, static_cast<int>(end - begin), target + begin,
                                  weight + begin);
}

void predict(const Predictor& predictor, const Vek32f* previous, Vek32f* sum) {
    std::fill_n(sum, kOrder, 0.0F);
    for (int k = 0; k < kHistory; ++k) {
        for (int i = 0; i < kOrder; ++i) {
            sum[i] += predictor.weight[k][i] * previous[k * kOrder + i];
        }
    }
}

// The best choice for one predictor, and its weighted distance.
Vek32f choose(const Predictor& predictor, const Vek32f* lsf, const Vek32f* previous, const Vek32f* weight,
              Choice& choice) {
    Vek32f target[kOrder];
    predict(predictor, previous, target);
    Vek32f scaled[kOrder];
    Vek32f ones[kOrder];
    for (int i = 0; i < kOrder; ++i) {
        target[i] = (lsf[i] - target[i]) / predictor.rest[i];
        scaled[i] = weight[i] * predictor.rest[i] * predictor.rest[i];
        ones[i] = 1;
    }
    choice.first = nearest(g_first, target, ones, 0, kOrder);
    Vek32f left[kOrder];
    for (size_t i = 0; i < kOrder; ++i) {
        left[i] = target[i] - g_first[i][static_cast<size_t>(choice.first)];
    }
    choice.half[0] = nearest(g_second, left, scaled, 0, kHalf);
    choice.half[1] = nearest(g_second, left, scaled, kHalf, kOrder);
    Vek32f code[kOrder];
    codeVector(choice, code);
    Vek32f error = 0;
    for (int i = 0; i < kOrder; ++i) {
        error += scaled[i] * (target[i] - code[i]) * (target[i] - code[i]);
    }
    return error;
}

void stabilise(Vek32f* lsf) {
    std::sort(lsf, lsf + kOrder);
    lsf[0] = std::max(lsf[0], kBounds.lowest);
    for (int i = 1; i < kOrder; ++i) {
        lsf[i] = std::max(lsf[i], lsf[i - 1] + kBounds.leastDistance);
    }
    lsf[kOrder - 1] = std::min(lsf[kOrder - 1], kBounds.highest);
}

int firstWord(int predictor, int first) {
    return predictor << 7 | first;
}

int secondWord(int lower, int upper) {
    return lower << 5 | upper;
}

} // namespace

VekStatus veksLSPQuant_G729E_16s(const Vek16s* pSrcLsp, Vek16s* pSrcDstPrevFreq, Vek16s* pDstQLsf, Vek16s* pDstQLsp,
                                 Vek16s* pDstQLspIndex) {
    if (anyNull(pSrcLsp, pSrcDstPrevFreq, pDstQLsf, pDstQLsp, pDstQLspIndex)) {
        return vekStsNullPtrErr;
    }
    Vek16s lsf[kOrder];
    Vek16s index[4];
    veksLSPToLSF_G729_16s(pSrcLsp, lsf);
    veksLSFQuant_G729_16s(lsf, pSrcDstPrevFreq, pDstQLsf, index);
    pDstQLspIndex[0] = static_cast<Vek16s>(firstWord(index[0], index[1]));
    pDstQLspIndex[1] = static_cast<Vek16s>(secondWord(index[2], index[3]));
    return veksLSFToLSP_G729_16s(pDstQLsf, pDstQLsp);
}

VekStatus veksLSPQuant_G729E_32f(const Vek32f* pSrcLsp, Vek32f* pSrcDstPrevFreq, Vek32f* pDstQLsf, Vek32f* pDstQLsp,
                                 Vek32s* pDstQLspIndex) {
    if (anyNull(pSrcLsp, pSrcDstPrevFreq, pDstQLsf, pDstQLsp, pDstQLspIndex)) {
        return vekStsNullPtrErr;
    }
    Vek32f lsf[kOrder];
    for (int i = 0; i < kOrder; ++i) {
        if (!(std::fabs(pSrcLsp[i]) <= 1)) {
            return vekStsRangeErr;
        }
        lsf[i] = std::acos(pSrcLsp[i]);
    }
    Vek32f weight[kOrder];
    weights(lsf, weight);
    Choice choices[2] = {{0, 0, {0, 0}}, {1, 0, {0, 0}}};
    const Vek32f errors[2] = {choose(g_predictors[0], lsf, pSrcDstPrevFreq, weight, choices[0]),
                              choose(g_predictors[1], lsf, pSrcDstPrevFreq, weight, choices[1])};
    const Choice& best = choices[errors[1] <= errors[0] ? 1 : 0];

    const Predictor& predictor = g_predictors[static_cast<size_t>(best.predictor)];
    Vek32f code[kOrder];
    codeVector(best, code);
    predict(predictor, pSrcDstPrevFreq, pDstQLsf);
    for (int i = 0; i < kOrder; ++i) {
        pDstQLsf[i] += predictor.rest[i] * code[i];
    }
    std::memmove(pSrcDstPrevFreq + kOrder, pSrcDstPrevFreq, sizeof(Vek32f) * (kHistory - 1) * kOrder);
    std::copy_n(code, kOrder, pSrcDstPrevFreq);
    stabilise(pDstQLsf);
    std::transform(pDstQLsf, pDstQLsf + kOrder, pDstQLsp, [](Vek32f v) { return std::cos(v); });
    pDstQLspIndex[0] = firstWord(best.predictor, best.first);
    pDstQLspIndex[1] = secondWord(best.half[0], best.half[1]);
    return vekStsNoErr;
}
