// Distances to the rows of a codebook in pairs of columns: a lane is a row.
#include "sc/kernels/isfvq.h"

#include <cstring>

#include "sc/kernels/lanes.h"

namespace vek {
namespace {

using namespace lanes;

#if VEK_LEVEL == 0

int32_t distanceTo(const int16_t* book, int rows, int pairs, const int16_t* target, int row) {
    int32_t sum = 0;
    for (int p = 0; p < pairs; ++p) {
        const int16_t* const c = book + 2 * (p * rows + row);
        const int32_t d0 = target[2 * p] - c[0];
        const int32_t d1 = target[2 * p + 1] - c[1];
        sum += d0 * d0 + d1 * d1;
    }
    return sum;
}

void distances(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* out) {
    for (int row = 0; row < rows; ++row) {
        out[row] = distanceTo(book, rows, pairs, target, row);
    }
}

int nearest(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* least) {
    int32_t best = INT32_MAX;
    int place = 0;
    for (int row = 0; row < rows; ++row) {
        const int32_t d = distanceTo(book, rows, pairs, target, row);
        if (d < best) {
            best = d;
            place = row;
        }
    }
    *least = best;
    return place;
}

#else

VEK_INLINE V squares(V a, V b) {
    const V d = minus16(a, b);
    return madd(d, d);
}

VEK_INLINE void spreadTarget(const int16_t* target, int pairs, V (&t)[kMostIsfPairs]) {
    for (int p = 0; p < pairs; ++p) {
        int32_t pair = 0;
        std::memcpy(&pair, target + 2 * p, sizeof pair);
        t[p] = spread(pair);
    }
}

VEK_INLINE V distancesAt(const int16_t* book, int rows, int pairs, const V (&t)[kMostIsfPairs]) {
    V sum = squares(t[0], loadAll(book));
    for (int p = 1; p < pairs; ++p) {
        sum = plus(sum, squares(t[p], loadAll(book + 2 * p * rows)));
    }
    return sum;
}

void distances(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* out) {
    V t[kMostIsfPairs];
    spreadTarget(target, pairs, t);
    for (int row = 0; row < rows; row += kLanes) {
        storeAll(out + row, distancesAt(book + 2 * row, rows, pairs, t));
    }
}

int nearest(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* least) {
    V t[kMostIsfPairs];
    spreadTarget(target, pairs, t);
    V best = spread(INT32_MAX);
    V bestPlace = spread(0);
    V place = counting();
    for (int row = 0; row < rows; row += kLanes) {
        const V d = distancesAt(book + 2 * row, rows, pairs, t);
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

VEK_KERNEL_TABLE(IsfVqKernels, isfVqKernels) = {distances, nearest};

} // namespace vek
