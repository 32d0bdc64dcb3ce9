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

#else

using namespace registers;

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

VEK_KERNEL_TABLE(IsfVqKernels, isfVqKernels) = {distances<false>, distances<true>, nearest<false>, nearest<true>};

} // namespace vek
