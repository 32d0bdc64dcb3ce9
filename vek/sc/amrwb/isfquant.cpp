// Quantiser of the immittance spectral frequencies of AMR-WB: prediction, a first stage in two parts of which four
// survivors go on, and a second stage in three or five parts; that of comfort noise in five parts; and their decoders.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <type_traits>
#include <utility>

#include "sc/amrwb/isfbooks.h"
#include "sc/amrwb/rates.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/common/spacing.h"
#include "sc/kernels/filter.h"
#include "sc/kernels/isfvq.h"
#include "veksc_amrwbflt.h"

namespace {

using namespace vek::amrwb;

constexpr int kSurvivors = 4;
constexpr int kMostRows = 256;
constexpr int kLowColumns = 9;
static_assert(kOrder == kIsfColumns);
constexpr Vek16s kIsfGap = 128; // 50 Hz

// Targets up to here are so near to all books that no difference nor sum of squares saturates.
constexpr int kNear = 7000;

// A part of a stage: the book, the column it begins at and how many it has.
struct Part {
    const IsfBook* book;
    int first;
    int columns;
};
struct Parts {
    const Part* list;
    int count;
};

constexpr Part kFirstStage[] = {{&kIsfLow, 0, 9}, {&kIsfHigh, kLowColumns, 7}};
constexpr Part kLowParts46[] = {{&kIsfLow46a, 0, 3}, {&kIsfLow46b, 3, 3}, {&kIsfLow46c, 6, 3}};
constexpr Part kHighParts46[] = {{&kIsfHigh46a, 0, 3}, {&kIsfHigh46b, 3, 4}};
constexpr Part kLowParts36[] = {{&kIsfLow36a, 0, 5}, {&kIsfLow36b, 5, 4}};
constexpr Part kHighParts36[] = {{&kIsfHigh36, 0, 7}};
constexpr Part kNoiseParts[] = {
    {&kIsfNoise1, 0, 2}, {&kIsfNoise2, 2, 3}, {&kIsfNoise3, 5, 3}, {&kIsfNoise4, 8, 4}, {&kIsfNoise5, 12, 4}};

constexpr Parts lowParts(bool lowest) {
    return lowest ? Parts{kLowParts36, 2} : Parts{kLowParts46, 3};
}
constexpr Parts highParts(bool lowest) {
    return lowest ? Parts{kHighParts36, 1} : Parts{kHighParts46, 2};
}

// A target as the kernels take it, and which of their forms it needs.
struct Target {
    Vek16s padded[2 * kMostIsfPairs] = {};
    int pairs;
    bool near;

    Target(const IsfBook& book, const Vek16s* target, bool isNear) : pairs((book.columns + 1) / 2), near(isNear) {
        std::memcpy(padded, target, static_cast<size_t>(book.columns) * sizeof(Vek16s));
    }
};

int nearestTo(const IsfBook& book, const Target& target, int32_t* least) {
    const IsfVqKernels& k = isfVqKernels();
    return (target.near ? k.nearest : k.nearestFar)(book.pairs, book.rows, target.pairs, target.padded, least);
}

// The four nearest rows, nearest first; of equal ones the first.
void survivors(const IsfBook& book, const Target& target, int (&rows)[kSurvivors]) {
    alignas(32) int32_t distances[kMostRows];
    int32_t least[kSurvivors];
    const IsfVqKernels& kernels = isfVqKernels();
    (target.near ? kernels.distances : kernels.distancesFar)(book.pairs, book.rows, target.pairs, target.padded,
                                                             distances);
    for (int k = 0; k < kSurvivors; ++k) {
        rows[k] = k;
        least[k] = kFarthest;
    }
    for (int row = 0; row < book.rows; ++row) {
        const int32_t d = distances[row];
        if (d >= least[kSurvivors - 1]) {
            continue;
        }
        int k = kSurvivors - 1;
        for (; k > 0 && d < least[k - 1]; --k) {
            least[k] = least[k - 1];
            rows[k] = rows[k - 1];
        }
        least[k] = d;
        rows[k] = row;
    }
}

// One half of the frequencies: the row of the first stage and those of the second that fit best together.
void quantiseHalf(const IsfBook& book, Parts parts, const Vek16s* target, Vek16s* firstIndex, Vek16s* partIndex) {
    const bool near = filterKernels().maxAbs16(target, book.columns) <= kNear;
    int rows[kSurvivors];
    survivors(book, {book, target, near}, rows);
    int32_t least = kFarthest;
    for (const int row : rows) {
        Vek16s rest[kLowColumns];
        for (int j = 0; j < book.columns; ++j) {
            rest[j] = sub(target[j], element(book, row, j));
        }
        int found[3] = {};
        int32_t sum = 0;
        for (int p = 0; p < parts.count; ++p) {
            int32_t d = 0;
            const Part& part = parts.list[p];
            found[p] = nearestTo(*part.book, {*part.book, rest + part.first, near}, &d);
            sum = std::min(sum, kFarthest - d) + d;
        }
        if (sum < least || row == rows[0]) {
            least = sum;
            *firstIndex = static_cast<Vek16s>(row);
            for (int p = 0; p < parts.count; ++p) {
                partIndex[p] = static_cast<Vek16s>(found[p]);
            }
        }
    }
}

// Frames of silence have a quantiser of their own.
bool isSpeechRate(VekSpchBitRate mode) {
    return mode != VEK_SPCHBR_DTX && rateOf(mode) != Rate::None;
}

// Calls f with each number below N.
template <size_t N, class F>
[[gnu::always_inline]] inline void each(F f) {
    [&f]<size_t... P>(std::index_sequence<P...>) __attribute__((always_inline)) {
        (f(std::integral_constant<size_t, P>()), ...);
    }
    (std::make_index_sequence<N>());
}

template <const auto& List>
bool inside(const Vek16s* rows) {
    bool all = true;
    each<std::size(List)>(
        [&](auto p) { all &= static_cast<unsigned>(rows[p]) < static_cast<unsigned>(List[p].book->rows); });
    return all;
}

// Puts the rows of all parts, one behind the other from a column on, into words of four columns. What stands beside an
// odd last column is zero.
template <const auto& List, int First>
[[gnu::always_inline]] inline void putRows(const Vek16s* rows, uint64_t (&columns)[kIsfWords]) {
    each<std::size(List)>([&](auto p) __attribute__((always_inline)) {
        constexpr Part part = List[p];
        const Vek16s* from = part.book->pairs + 2 * rows[p];
        each<(part.columns + 1) / 2>([&](auto pair) __attribute__((always_inline)) {
            constexpr int at = First + part.first + 2 * static_cast<int>(pair);
            uint32_t two = 0;
            std::memcpy(&two, from, sizeof two);
            from += 2 * part.book->rows;
            columns[at / 4] |= uint64_t{two} << (16 * (at % 4));
            if constexpr (at % 4 == 3 && at / 4 + 1 < kIsfWords) {
                columns[at / 4 + 1] |= two >> 16;
            }
        });
    });
}

// The last frequency is of another kind.
void keepApart(Vek16s* isf) {
    vek::keepApart<kOrder - 1>(isf, kIsfGap);
}

// Frequencies of a frame's indices, and before they are kept apart; the residual becomes this frame's. No sum of rows,
// mean and prediction leaves 16 bits.
template <bool Lowest>
void decode(const Vek16s* index, Vek16s* residual, Vek16s* isf, Vek16s* before) {
    uint64_t first[kIsfWords] = {};
    uint64_t second[kIsfWords] = {};
    putRows<kFirstStage, 0>(index, first);
    if constexpr (Lowest) {
        putRows<kLowParts36, 0>(index + 2, second);
        putRows<kHighParts36, kLowColumns>(index + 4, second);
    } else {
        putRows<kLowParts46, 0>(index + 2, second);
        putRows<kHighParts46, kLowColumns>(index + 5, second);
    }
    if (!isfVqKernels().predicted(first, second, kIsfMean, kIsfGap, residual, isf, before)) {
        keepApart(isf);
    }
}

void decode(const Vek16s* index, bool lowest, Vek16s* residual, Vek16s* isf, Vek16s* before) {
    (lowest ? decode<true> : decode<false>)(index, residual, isf, before);
}

// A bad frame's: nine tenths of the last ones and one of the mean; the residual is what would have led there.
void conceal(const Vek16s* previous, const Vek16s* memory, Vek16s* residual, Vek16s* isf) {
    constexpr Vek16s kKept = 29491; // 0.9
    constexpr Vek16s kDrawn = 32767 - kKept + 1;
    for (int i = 0; i < kOrder; ++i) {
        int32_t sum = kIsfMean[i];
        for (int j = 0; j < 3; ++j) {
            sum += memory[j * kOrder + i];
        }
        const Vek16s mean = sat16((sum + 2) >> 2);
        isf[i] = add(mult(kKept, previous[i]), mult(kDrawn, mean));
        const Vek16s predicted = add(mean, mult(residual[i], kIsfPrediction));
        residual[i] = static_cast<Vek16s>(sub(isf[i], predicted) >> 1);
    }
}

void decodeNoise(const Vek16s* index, Vek16s* isf) {
    uint64_t columns[kIsfWords] = {};
    putRows<kNoiseParts, 0>(index, columns);
    if (!isfVqKernels().spectrum(columns, kIsfNoiseMean, kIsfGap, isf)) {
        keepApart(isf);
    }
}

} // namespace

VekStatus veksISFQuant_AMRWB_16s(const Vek16s* pSrcIsf, Vek16s* pSrcDstResidual, Vek16s* pDstQIsf,
                                 Vek16s* pDstQIsfIndex, VekSpchBitRate mode) {
    if (anyNull(pSrcIsf, pSrcDstResidual, pDstQIsf, pDstQIsfIndex)) {
        return vekStsNullPtrErr;
    }
    if (!isSpeechRate(mode)) {
        return vekStsBitRateErr;
    }
    const bool lowest = mode == VEK_SPCHBR_6600;
    Vek16s target[kOrder];
    for (int i = 0; i < kOrder; ++i) {
        target[i] = sub(sub(pSrcIsf[i], kIsfMean[i]), mult(kIsfPrediction, pSrcDstResidual[i]));
    }
    Vek16s index[7];
    quantiseHalf(kIsfLow, lowParts(lowest), target, index, index + 2);
    quantiseHalf(kIsfHigh, highParts(lowest), target + kLowColumns, index + 1, index + 2 + lowParts(lowest).count);
    decode(index, lowest, pSrcDstResidual, pDstQIsf, pDstQIsf);
    std::memcpy(pDstQIsfIndex, index, (lowest ? 5 : 7) * sizeof(Vek16s));
    return vekStsNoErr;
}

VekStatus veksISFQuantDecode_AMRWB_16s(const Vek16s* pSrcIdxs, Vek16s* pDstQIsf, Vek16s* pSrcDstResidual,
                                       const Vek16s* pSrcPrevQntIsf, Vek16s* pSrcDstIsfMemory, int bfi,
                                       VekSpchBitRate mode) {
    if (anyNull(pSrcIdxs, pDstQIsf, pSrcDstResidual, pSrcPrevQntIsf, pSrcDstIsfMemory)) {
        return vekStsNullPtrErr;
    }
    if (!isSpeechRate(mode)) {
        return vekStsBitRateErr;
    }
    if (bfi != 0 && bfi != 1) {
        return vekStsRangeErr;
    }
    const bool lowest = mode == VEK_SPCHBR_6600;
    if (bfi == 1) {
        conceal(pSrcPrevQntIsf, pSrcDstIsfMemory, pSrcDstResidual, pDstQIsf);
        keepApart(pDstQIsf);
    } else {
        const bool good = inside<kFirstStage>(pSrcIdxs) &&
                          (lowest ? inside<kLowParts36>(pSrcIdxs + 2) && inside<kHighParts36>(pSrcIdxs + 4)
                                  : inside<kLowParts46>(pSrcIdxs + 2) && inside<kHighParts46>(pSrcIdxs + 5));
        if (!good) {
            return vekStsOutOfRangeErr;
        }
        for (int frame = 2; frame > 0; --frame) {
            Vek16s* const at = pSrcDstIsfMemory + frame * kOrder;
            std::memcpy(at, at - kOrder, kOrder * sizeof(Vek16s));
        }
        decode(pSrcIdxs, lowest, pSrcDstResidual, pDstQIsf, pSrcDstIsfMemory);
    }
    return vekStsNoErr;
}

VekStatus veksISFQuantDTX_AMRWB_16s(const Vek16s* pSrcIsf, Vek16s* pDstQIsf, Vek16s* pDstQIsfIndex) {
    if (anyNull(pSrcIsf, pDstQIsf, pDstQIsfIndex)) {
        return vekStsNullPtrErr;
    }
    Vek16s target[kOrder];
    for (int i = 0; i < kOrder; ++i) {
        target[i] = sub(pSrcIsf[i], kIsfNoiseMean[i]);
    }
    const bool near = filterKernels().maxAbs16(target, kOrder) <= kNear;
    Vek16s index[5];
    for (int p = 0; p < 5; ++p) {
        int32_t least = 0;
        const Part& part = kNoiseParts[p];
        index[p] = static_cast<Vek16s>(nearestTo(*part.book, {*part.book, target + part.first, near}, &least));
    }
    decodeNoise(index, pDstQIsf);
    std::memcpy(pDstQIsfIndex, index, sizeof index);
    return vekStsNoErr;
}

VekStatus veksISFQuantDecodeDTX_AMRWB_16s(const Vek16s* pSrcIdxs, Vek16s* pDstQIsf) {
    if (anyNull(pSrcIdxs, pDstQIsf)) {
        return vekStsNullPtrErr;
    }
    if (!inside<kNoiseParts>(pSrcIdxs)) {
        return vekStsOutOfRangeErr;
    }
    decodeNoise(pSrcIdxs, pDstQIsf);
    return vekStsNoErr;
}
