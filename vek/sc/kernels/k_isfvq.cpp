// Distances to the rows of a codebook in pairs of columns: a lane is a row.
#include "sc/kernels/isfvq.h"

#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/kernels/lanes.h"

namespace vek {
namespace {

using namespace lanes;

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

template <bool far>
VEK_INLINE V squares(V a, V b) {
    const V d = far ? minusSat16(a, b) : minus16(a, b);
    return madd(d, d);
}

// Of sums up to 3 * 2^30, without a sign.
template <bool far>
VEK_INLINE V saturated(V sum) {
    return far ? leastUnsigned32(sum, spread(kFarthest)) : sum;
}

VEK_INLINE void spreadTarget(const int16_t* target, int pairs, V (&t)[kMostIsfPairs]) {
    for (int p = 0; p < pairs; ++p) {
        int32_t pair = 0;
        std::memcpy(&pair, target + 2 * p, sizeof pair);
        t[p] = spread(pair);
    }
}

template <bool far>
VEK_INLINE V distancesAt(const int16_t* book, int rows, int pairs, const V (&t)[kMostIsfPairs]) {
    V sum = saturated<far>(squares<far>(t[0], loadAll(book)));
    for (int p = 1; p < pairs; ++p) {
        sum = saturated<far>(plus(sum, squares<far>(t[p], loadAll(book + 2 * p * rows))));
    }
    return sum;
}

template <bool far>
void distances(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* out) {
    V t[kMostIsfPairs];
    spreadTarget(target, pairs, t);
    for (int row = 0; row < rows; row += kLanes) {
        storeAll(out + row, distancesAt<far>(book + 2 * row, rows, pairs, t));
    }
}

template <bool far>
int nearest(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* least) {
    V t[kMostIsfPairs];
    spreadTarget(target, pairs, t);
    V best = spread(INT32_MAX);
    V bestPlace = spread(0);
    V place = counting();
    for (int row = 0; row < rows; row += kLanes) {
        const V d = distancesAt<far>(book + 2 * row, rows, pairs, t);
        bestPlace = choose(less(d, best), place, bestPlace);
        best = least32(d, best);
        place = plus(place, spread(kLanes));
    }
    int32_t values[kLanes];
    int32_t found[kLanes];
    storeAll(values, best);
    storeAll(found, bestPlace);
    // The least of the lanes; of equal ones the first row.
    int at = 0;
    for (int i = 1; i < kLanes; ++i) {
        if (values[i] < values[at] || (values[i] == values[at] && found[i] < found[at])) {
            at = i;
        }
    }
    *least = values[at];
    return found[at];
}

#endif

} // namespace

VEK_KERNEL_TABLE(IsfVqKernels, isfVqKernels) = {distances<false>, distances<true>, nearest<false>, nearest<true>};

} // namespace vek
