// Distances to the rows of a codebook in pairs of columns: a lane is a row.
#include "sc/kernels/isfvq.h"

#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

#if VEK_LEVEL == 0

// Saturated, a square is up to 2^30: two of them and what was there fit in 32 bits without a sign.
template <bool far>
int32_t distanceTo(const int16_t* book, int rows, int pairs, const int16_t* target, int row) {
    uint32_t sum = 0;
    for (int p = 0; p < pairs; ++p) {
        const int16_t* const c = book + 2 * (p * rows + row);
        int32_t d0 = target[2 * p] - c[0];
        int32_t d1 = target[2 * p + 1] - c[1];
        if constexpr (far) {
            d0 = fix::sat16(d0);
            d1 = fix::sat16(d1);
        }
        sum += static_cast<uint32_t>(d0 * d0) + static_cast<uint32_t>(d1 * d1);
        if constexpr (far) {
            sum = sum < kFarthest ? sum : kFarthest;
        }
    }
    return static_cast<int32_t>(sum);
}

template <bool far>
void distances(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* out) {
    for (int row = 0; row < rows; ++row) {
        out[row] = distanceTo<far>(book, rows, pairs, target, row);
    }
}

template <bool far>
int nearest(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* least) {
    int32_t best = INT32_MAX;
    int place = 0;
    for (int row = 0; row < rows; ++row) {
        const int32_t d = distanceTo<far>(book, rows, pairs, target, row);
        if (d < best) {
            best = d;
            place = row;
        }
    }
    *least = best;
    return place;
}

int16_t column(const uint64_t* columns, int i) {
    return static_cast<int16_t>(columns[i / 4] >> (16 * (i % 4)));
}

bool risesBy(int16_t gap, const int16_t* isf) {
    int least = isf[0];
    for (int i = 1; i < kIsfColumns - 1; ++i) {
        const int rise = isf[i] - isf[i - 1];
        least = rise < least ? rise : least;
    }
    return least >= gap && isf[kIsfColumns - 2] <= INT16_MAX - gap;
}

bool spectrum(const uint64_t* columns, const int16_t* mean, int16_t gap, int16_t* isf) {
    for (int i = 0; i < kIsfColumns; ++i) {
        isf[i] = static_cast<int16_t>(column(columns, i) + mean[i]);
    }
    return risesBy(gap, isf);
}

bool predicted(const uint64_t* columns, const uint64_t* more, const int16_t* mean, int16_t gap, int16_t* residual,
               int16_t* isf, int16_t* again) {
    for (int i = 0; i < kIsfColumns; ++i) {
        const int prediction = (residual[i] * kIsfPrediction) >> 15;
        residual[i] = static_cast<int16_t>(column(columns, i) + column(more, i));
        again[i] = isf[i] = static_cast<int16_t>(residual[i] + mean[i] + prediction);
    }
    return risesBy(gap, isf);
}

#else

using namespace registers;

using Eight = hn::Vec<EightOf16>;

// As they were stored, a word each: a register of both would wait for them.
VEK_INLINE Eight eightColumns(const uint64_t* columns) {
    constexpr hn::FixedTag<uint64_t, 2> words;
    return hn::BitCast(kEightOf16, hn::InterleaveLower(words, hn::Set(words, columns[0]), hn::Set(words, columns[1])));
}

VEK_INLINE bool risesBy(int16_t gap, Eight lower, Eight upper) {
    const auto rise = [](Eight before, Eight now, Eight here) {
        return hn::SaturatedSub(here, hn::CombineShiftRightBytes<14>(kEightOf16, now, before));
    };
    const auto last = hn::InsertLane(upper, 7, int16_t{INT16_MAX});
    const auto least = hn::Min(rise(hn::Zero(kEightOf16), lower, lower), rise(lower, upper, last));
    return hn::AllFalse(kEightOf16, hn::Lt(least, hn::Set(kEightOf16, gap)));
}

bool spectrum(const uint64_t* columns, const int16_t* mean, int16_t gap, int16_t* isf) {
    constexpr EightOf16 d;
    const auto lower = eightColumns(columns) + hn::LoadU(d, mean);
    const auto upper = eightColumns(columns + 2) + hn::LoadU(d, mean + 8);
    hn::StoreU(lower, d, isf);
    hn::StoreU(upper, d, isf + 8);
    return risesBy(gap, lower, upper);
}

bool predicted(const uint64_t* columns, const uint64_t* more, const int16_t* mean, int16_t gap, int16_t* residual,
               int16_t* isf, int16_t* again) {
    constexpr EightOf16 d;
    Eight made[2];
    for (int h = 0; h < 2; ++h) {
        const auto prediction = multCut(hn::LoadU(d, residual + 8 * h), hn::Set(d, kIsfPrediction));
        const auto rest = eightColumns(columns + 2 * h) + eightColumns(more + 2 * h);
        made[h] = rest + hn::LoadU(d, mean + 8 * h) + prediction;
        hn::StoreU(rest, d, residual + 8 * h);
        hn::StoreU(made[h], d, isf + 8 * h);
        hn::StoreU(made[h], d, again + 8 * h);
    }
    return risesBy(gap, made[0], made[1]);
}

// A lane is a row, or two columns of it. The number of rows is no multiple of more.
using Rows = hn::CappedTag<int32_t, 8>;
using Columns = hn::RepartitionToNarrow<Rows>;

VEK_INLINE void spreadTarget(const int16_t* target, int pairs, hn::Vec<Columns> (&t)[kMostIsfPairs]) {
    for (int p = 0; p < pairs; ++p) {
        int32_t pair = 0;
        std::memcpy(&pair, target + 2 * p, sizeof pair);
        t[p] = hn::BitCast(Columns(), hn::Set(Rows(), pair));
    }
}

template <bool far>
VEK_INLINE hn::Vec<Rows> squares(hn::Vec<Columns> target, const int16_t* columns) {
    const auto row = hn::LoadU(Columns(), columns);
    const auto d = far ? hn::SaturatedSub(target, row) : target - row;
    return pairSums(d, d);
}

// Of sums up to 3 * 2^30, without a sign.
template <bool far>
VEK_INLINE hn::Vec<Rows> saturated(hn::Vec<Rows> sum) {
    const hn::RebindToUnsigned<Rows> bits;
    return far ? hn::BitCast(Rows(), hn::Min(hn::BitCast(bits, sum), hn::Set(bits, kFarthest))) : sum;
}

template <bool far>
VEK_INLINE hn::Vec<Rows> distancesAt(const int16_t* book, int rows, int pairs,
                                     const hn::Vec<Columns> (&t)[kMostIsfPairs]) {
    auto sum = saturated<far>(squares<far>(t[0], book));
    for (int p = 1; p < pairs; ++p) {
        sum = saturated<far>(sum + squares<far>(t[p], book + 2 * p * rows));
    }
    return sum;
}

template <bool far>
void distances(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* out) {
    hn::Vec<Columns> t[kMostIsfPairs];
    spreadTarget(target, pairs, t);
    for (int row = 0; row < rows; row += kLanesOf<Rows>) {
        hn::StoreU(distancesAt<far>(book + 2 * row, rows, pairs, t), Rows(), out + row);
    }
}

template <bool far>
int nearest(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* least) {
    hn::Vec<Columns> t[kMostIsfPairs];
    spreadTarget(target, pairs, t);
    LeastOfLanes<Rows> best;
    auto place = hn::Load(Rows(), kCounting);
    for (int row = 0; row < rows; row += kLanesOf<Rows>) {
        best.see(distancesAt<far>(book + 2 * row, rows, pairs, t), place);
        place = place + hn::Set(Rows(), kLanesOf<Rows>);
    }
    return best.settle(least);
}

#endif

} // namespace

VEK_KERNEL_TABLE(IsfVqKernels, isfVqKernels) = {
    distances<false>, distances<true>, nearest<false>, nearest<true>, spectrum, predicted,
};

} // namespace vek
