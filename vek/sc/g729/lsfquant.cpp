// The predictive two-stage quantiser of line spectral frequencies, for speech and for background noise.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g729/lsfquant.h"
#include "sc/g729/lsptables.h"
#include "sc/kernels/vq.h"
#include "veksc_g729lp.h"

namespace {

using namespace vek::g729;

constexpr LsfBounds<int> kBounds = {10, 5, 40, 25681, 321};

// Rows of the codebooks that a choice of indices stands for.
struct Rows {
    const Vek16s* first;
    const Vek16s* lower;
    const Vek16s* upper;
};

Rows speechRows(const Vek16s* index) {
    return {kLsfFirst[index[1]], kLsfSecond[index[2]], kLsfSecond[index[3]]};
}

Rows noiseRows(const Vek16s* index) {
    return {kLsfFirst[kNoiseFirst[index[1]]], kLsfSecond[kNoiseLower[index[2]]], kLsfSecond[kNoiseUpper[index[2]]]};
}

void spread(Vek16s* v, int gap) {
    int last = v[0];
    for (int i = 1; i < kOrder; ++i) {
        const int lack = std::max((last - v[i] + gap) >> 1, 0);
        v[i - 1] = static_cast<Vek16s>(last - lack);
        last = static_cast<Vek16s>(v[i] + lack);
    }
    v[kOrder - 1] = static_cast<Vek16s>(last);
}

void codeVector(const Rows& rows, Vek16s* code) {
    for (int i = 0; i < kOrder; ++i) {
        code[i] = static_cast<Vek16s>(rows.first[i] + (i < kHalf ? rows.lower[i] : rows.upper[i]));
    }
    // Where nothing lacks to the wide gap, nothing waits for the one before.
    int lack = 0;
#pragma GCC unroll 10
    for (int i = 1; i < kOrder; ++i) {
        lack |= code[i] - code[i - 1] - kBounds.wideGap + 1;
    }
    if (lack < 0) {
        spread(code, kBounds.wideGap);
        spread(code, kBounds.narrowGap);
    }
}

// Sums of the last code vectors' shares, Q28.
struct Predicted {
    int32_t sum[kOrder];

    Predicted(const LsfPredictor& predictor, const Vek16s* previous) {
        vqKernels().movingAverage10(predictor.weight[0], previous, sum);
    }
};

void push(Vek16s* previous, const Vek16s* code) {
    std::memmove(previous + kOrder, previous, sizeof(Vek16s) * (kHistory - 1) * kOrder);
    std::memcpy(previous, code, sizeof(Vek16s) * kOrder);
}

void stabilise(Vek16s* lsf) {
    // They stand in order and apart as a rule.
    int lack = (lsf[0] - kBounds.lowest) | (kBounds.highest - lsf[kOrder - 1]);
#pragma GCC unroll 10
    for (int i = 1; i < kOrder; ++i) {
        lack |= lsf[i] - lsf[i - 1] - kBounds.leastDistance;
    }
    if (lack >= 0) {
        return;
    }
    for (int i = 1; i < kOrder; ++i) {
        if (lsf[i] < lsf[i - 1]) [[unlikely]] {
            std::sort(lsf, lsf + kOrder);
            break;
        }
    }
    int last = std::max<int>(lsf[0], kBounds.lowest);
    lsf[0] = static_cast<Vek16s>(last);
    for (int i = 1; i < kOrder; ++i) {
        last = std::min(std::max<int>(lsf[i], last + kBounds.leastDistance), 32767);
        lsf[i] = static_cast<Vek16s>(last);
    }
    lsf[kOrder - 1] = static_cast<Vek16s>(std::min(last, kBounds.highest));
}

void reconstruct(const LsfPredictor& predictor, const Rows& rows, Vek16s* previous, Vek16s* lsf) {
    Vek16s code[kOrder];
    codeVector(rows, code);
    Vek16s out[kOrder];
    const Predicted predicted(predictor, previous);
    for (int i = 0; i < kOrder; ++i) {
        const int64_t sum = int64_t{predictor.rest[i]} * code[i] + predicted.sum[i];
        out[i] = sat16_64((sum + 0x4000) >> 15);
    }
    push(previous, code);
    stabilise(out);
    std::memcpy(lsf, out, sizeof out);
}

// Q11: close neighbours make an element weigh more.
void weights(const Vek16s* lsf, int* weight) {
    constexpr int kPi04 = 1029;  // 0.04 pi
    constexpr int kPi92 = 23677; // 0.92 pi
    constexpr int kOne = 8192;
    constexpr int kCentre = 19661; // 1.2 in Q14
    for (int i = 0; i < kOrder; ++i) {
        const int below = i == 0 ? kPi04 : lsf[i - 1];
        const int above = i == kOrder - 1 ? kPi92 : lsf[i + 1];
        const int distance = above - below - kOne;
        if (distance > 0) {
            weight[i] = 2048;
        } else {
            const int64_t square = (int64_t{distance} * distance) >> 13;
            weight[i] = static_cast<int>(std::min<int64_t>(((square * 10 + 2) >> 2) + 2048, 32767));
        }
    }
    weight[4] = (weight[4] * kCentre) >> 14;
    weight[5] = (weight[5] * kCentre) >> 14;
}

// Weighted square of a difference of code vectors, as a difference of frequencies.
inline int64_t weighted(int difference, int rest, int weight) {
    const int d = sat16_64((int64_t{difference} * rest) >> 15);
    return d * ((int64_t{d} * weight) >> 11);
}

// The first of n with the least distance.
template <class Distance>
int least(int n, Distance distance) {
    int64_t smallest = INT64_MAX;
    int best = 0;
    for (int k = 0; k < n; ++k) {
        const int64_t d = distance(k);
        if (d < smallest) {
            smallest = d;
            best = k;
        }
    }
    return best;
}

// A first stage of so many rows in the order of the kernel, and the bounds of its columns.
template <int Rows>
struct FirstStage {
    alignas(32) std::array<Vek16s, Rows * kOrder> pairs{};
    int lowest[kOrder];
    int highest[kOrder];

    template <class RowOf>
    explicit FirstStage(RowOf rowOf) {
        std::fill_n(lowest, kOrder, INT16_MAX);
        std::fill_n(highest, kOrder, INT16_MIN);
        for (int k = 0; k < Rows; ++k) {
            const Vek16s* row = rowOf(k);
            for (int i = 0; i < kOrder; ++i) {
                pairs[static_cast<size_t>((i / 2 * Rows + k) * 2 + i % 2)] = row[i];
                lowest[i] = std::min<int>(lowest[i], row[i]);
                highest[i] = std::max<int>(highest[i], row[i]);
            }
        }
    }

    // The row next to the target.
    int nearest(const Vek16s* target) const {
        int64_t most = 0;
        for (int i = 0; i < kOrder; ++i) {
            const int64_t d = std::max(target[i] - lowest[i], highest[i] - target[i]);
            most = std::max(most, d);
        }
        // Far from all rows sums may need more than 31 bits.
        return most * most * kOrder <= INT32_MAX ? vqKernels().nearest10(pairs.data(), Rows, target)
                                                 : farNearest(target);
    }

    int farNearest(const Vek16s* target) const {
        return least(Rows, [&](int k) {
            int64_t sum = 0;
            for (int i = 0; i < kOrder; ++i) {
                const int d = target[i] - pairs[static_cast<size_t>((i / 2 * Rows + k) * 2 + i % 2)];
                sum += int64_t{d} * d;
            }
            return sum;
        });
    }
};

// A second stage, column by column, and the largest magnitude in each.
template <int Rows>
struct SecondStage {
    alignas(32) std::array<Vek16s, Rows * kOrder> columns{};
    int largest[kOrder] = {};

    template <class ElementOf>
    explicit SecondStage(ElementOf elementOf) {
        for (int i = 0; i < kOrder; ++i) {
            for (int k = 0; k < Rows; ++k) {
                const Vek16s v = elementOf(k, i);
                columns[static_cast<size_t>(i * Rows + k)] = v;
                largest[i] = std::max(largest[i], std::abs(int{v}));
            }
        }
    }

    // The row of least weighted error in the elements from `begin` on.
    int nearest(const int* left, const LsfPredictor& predictor, const int* weight, int begin, int count) const {
        int64_t bound = 0;
        int most = 0;
        for (int i = begin; i < begin + count; ++i) {
            const int d = std::abs(left[i]) + largest[i];
            most = std::max(most, d);
            const int64_t e = ((int64_t{d} * predictor.rest[i]) >> 15) + 1;
            bound += e * (((e * weight[i]) >> 11) + 1);
        }
        const Vek16s* from = columns.data() + begin * Rows;
        if (most <= INT16_MAX && bound <= INT32_MAX) {
            return vqKernels().nearestWeighted(from, Rows, count, left + begin, predictor.rest + begin, weight + begin);
        }
        return least(Rows, [&](int k) {
            int64_t sum = 0;
            for (int i = begin; i < begin + count; ++i) {
                const int v = columns[static_cast<size_t>(i * Rows + k)];
                sum += weighted(left[i] - v, predictor.rest[i], weight[i]);
            }
            return sum;
        });
    }
};

const FirstStage<128> g_speechFirst([](int k) { return kLsfFirst[k]; });
const FirstStage<32> g_noiseFirst([](int k) { return kLsfFirst[kNoiseFirst[k]]; });
const SecondStage<32> g_speechSecond([](int k, int i) { return kLsfSecond[k][i]; });
const SecondStage<16> g_noiseSecond([](int k, int i) {
    return kLsfSecond[i < kHalf ? kNoiseLower[k] : kNoiseUpper[k]][i];
});

// Chooses index[1..] for one predictor's target. left is what a first stage leaves.
void chooseSpeech(const Vek16s* target, const LsfPredictor& predictor, const int* weight, Vek16s* index) {
    index[1] = static_cast<Vek16s>(g_speechFirst.nearest(target));
    int left[kOrder];
    for (int i = 0; i < kOrder; ++i) {
        left[i] = target[i] - kLsfFirst[index[1]][i];
    }
    for (int half = 0; half < 2; ++half) {
        index[2 + half] = static_cast<Vek16s>(g_speechSecond.nearest(left, predictor, weight, half * kHalf, kHalf));
    }
}

void chooseNoise(const Vek16s* target, const LsfPredictor& predictor, const int* weight, Vek16s* index) {
    index[1] = static_cast<Vek16s>(g_noiseFirst.nearest(target));
    int left[kOrder];
    for (int i = 0; i < kOrder; ++i) {
        left[i] = target[i] - kLsfFirst[kNoiseFirst[index[1]]][i];
    }
    index[2] = static_cast<Vek16s>(g_noiseSecond.nearest(left, predictor, weight, 0, kOrder));
}

template <class Choose, class RowsOf>
void quantise(const Vek16s* lsf, Vek16s* previous, Vek16s* out, Vek16s* index, int indices,
              const LsfPredictor* predictors, Choose choose, RowsOf rowsOf) {
    int weight[kOrder];
    weights(lsf, weight);
    Vek16s best[4] = {};
    int64_t leastError = INT64_MAX;
    for (int p = 0; p < 2; ++p) {
        const LsfPredictor& predictor = predictors[p];
        Vek16s target[kOrder];
        const Predicted predicted(predictor, previous);
        for (int i = 0; i < kOrder; ++i) {
            const int64_t rest = int64_t{lsf[i]} * 32768 - predicted.sum[i];
            target[i] = sat16_64((((rest + 0x4000) >> 15) * predictor.inverse[i]) >> 12);
        }
        Vek16s candidate[4] = {static_cast<Vek16s>(p)};
        choose(target, predictor, weight, candidate);
        Vek16s code[kOrder];
        codeVector(rowsOf(candidate), code);
        int64_t error = 0;
        for (int i = 0; i < kOrder; ++i) {
            error += weighted(target[i] - code[i], predictor.rest[i], weight[i]);
        }
        if (p == 0 || error <= leastError) {
            leastError = error;
            std::memcpy(best, candidate, sizeof best);
        }
    }
    reconstruct(predictors[best[0]], rowsOf(best), previous, out);
    std::memcpy(index, best, static_cast<size_t>(indices) * sizeof(Vek16s));
}

bool outside(Vek16s v, int count) {
    return v < 0 || v >= count;
}

} // namespace

VekStatus veksLSFDecode_G729_16s(const Vek16s* pSrcIndex, Vek16s* pPrevLSF, Vek16s* pDstQLSF) {
    if (anyNull(pSrcIndex, pPrevLSF, pDstQLSF)) {
        return vekStsNullPtrErr;
    }
    if (outside(pSrcIndex[0], 2) || outside(pSrcIndex[1], 128) || outside(pSrcIndex[2], 32) ||
        outside(pSrcIndex[3], 32)) {
        return vekStsRangeErr;
    }
    reconstruct(kLsfPredictors[pSrcIndex[0]], speechRows(pSrcIndex), pPrevLSF, pDstQLSF);
    return vekStsNoErr;
}

VekStatus veksLSFDecode_G729B_16s(const Vek16s* pSrcIndex, Vek16s* pPrevLSF, Vek16s* pDstQLSF) {
    if (anyNull(pSrcIndex, pPrevLSF, pDstQLSF)) {
        return vekStsNullPtrErr;
    }
    if (outside(pSrcIndex[0], 2) || outside(pSrcIndex[1], 32) || outside(pSrcIndex[2], 16)) {
        return vekStsRangeErr;
    }
    reconstruct(kNoisePredictors[pSrcIndex[0]], noiseRows(pSrcIndex), pPrevLSF, pDstQLSF);
    return vekStsNoErr;
}

VekStatus veksLSFDecodeErased_G729_16s(int maIndex, Vek16s* pPrevLSF, const Vek16s* pSrcQLSF) {
    if (anyNull(pPrevLSF, pSrcQLSF)) {
        return vekStsNullPtrErr;
    }
    if (maIndex < 0 || maIndex > 1) {
        return vekStsRangeErr;
    }
    const LsfPredictor& predictor = kLsfPredictors[maIndex];
    Vek16s code[kOrder];
    const Predicted predicted(predictor, pPrevLSF);
    for (int i = 0; i < kOrder; ++i) {
        const int64_t rest = int64_t{pSrcQLSF[i]} * 32768 - predicted.sum[i];
        code[i] = sat16_64((((rest * predictor.inverse[i]) >> 12) + 0x4000) >> 15);
    }
    push(pPrevLSF, code);
    return vekStsNoErr;
}

VekStatus veksLSFQuant_G729_16s(const Vek16s* pSrcLSF, Vek16s* pPrevLSF, Vek16s* pDstQLSF, Vek16s* pDstIndex) {
    if (anyNull(pSrcLSF, pPrevLSF, pDstQLSF, pDstIndex)) {
        return vekStsNullPtrErr;
    }
    quantise(pSrcLSF, pPrevLSF, pDstQLSF, pDstIndex, 4, kLsfPredictors, chooseSpeech, speechRows);
    return vekStsNoErr;
}

VekStatus veksLSFQuant_G729B_16s(const Vek16s* pSrcLSF, Vek16s* pPrevLSF, Vek16s* pDstQLSF, Vek16s* pDstIndex) {
    if (anyNull(pSrcLSF, pPrevLSF, pDstQLSF, pDstIndex)) {
        return vekStsNullPtrErr;
    }
    quantise(pSrcLSF, pPrevLSF, pDstQLSF, pDstIndex, 3, kNoisePredictors, chooseNoise, noiseRows);
    return vekStsNoErr;
}

VekStatus veksLSPQuant_G729_16s(const Vek16s* pSrcLSP, Vek16s* pPrevLSF, Vek16s* pDstQLSP, Vek16s* pDstQLSPIndex) {
    if (anyNull(pSrcLSP, pPrevLSF, pDstQLSP, pDstQLSPIndex)) {
        return vekStsNullPtrErr;
    }
    Vek16s lsf[kOrder];
    Vek16s index[4];
    veksLSPToLSF_G729_16s(pSrcLSP, lsf);
    veksLSFQuant_G729_16s(lsf, pPrevLSF, lsf, index);
    pDstQLSPIndex[0] = static_cast<Vek16s>(index[0] << 7 | index[1]);
    pDstQLSPIndex[1] = static_cast<Vek16s>(index[2] << 5 | index[3]);
    return veksLSFToLSP_G729_16s(lsf, pDstQLSP);
}
