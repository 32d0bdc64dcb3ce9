// Distances to the rows of a codebook in pairs of columns: a lane is a row.
#include "sc/kernels/isfvq.h"

#include <cstring>

#include "sc/kernels/simd.h"

namespace vek {
namespace {

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

#if VEK_LEVEL == 1
using Lanes = __m128i;
constexpr int kLanes = 4;
VEK_INLINE Lanes spread(int32_t v) {
    return _mm_set1_epi32(v);
}
VEK_INLINE Lanes load(const int16_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const Lanes*>(p));
}
VEK_INLINE void store(int32_t* p, Lanes v) {
    _mm_storeu_si128(reinterpret_cast<Lanes*>(p), v);
}
VEK_INLINE Lanes plus(Lanes a, Lanes b) {
    return _mm_add_epi32(a, b);
}
VEK_INLINE Lanes squares(Lanes a, Lanes b) {
    const Lanes d = _mm_sub_epi16(a, b);
    return _mm_madd_epi16(d, d);
}
VEK_INLINE Lanes lower(Lanes a, Lanes b) {
    return _mm_min_epi32(a, b);
}
// a where `by` is below `than`, else b.
VEK_INLINE Lanes choose(Lanes by, Lanes than, Lanes a, Lanes b) {
    return _mm_blendv_epi8(b, a, _mm_cmplt_epi32(by, than));
}
VEK_INLINE Lanes places() {
    return _mm_setr_epi32(0, 1, 2, 3);
}
#else
using Lanes = __m256i;
constexpr int kLanes = 8;
VEK_INLINE Lanes spread(int32_t v) {
    return _mm256_set1_epi32(v);
}
VEK_INLINE Lanes load(const int16_t* p) {
    return _mm256_loadu_si256(reinterpret_cast<const Lanes*>(p));
}
VEK_INLINE void store(int32_t* p, Lanes v) {
    _mm256_storeu_si256(reinterpret_cast<Lanes*>(p), v);
}
VEK_INLINE Lanes plus(Lanes a, Lanes b) {
    return _mm256_add_epi32(a, b);
}
VEK_INLINE Lanes squares(Lanes a, Lanes b) {
    const Lanes d = _mm256_sub_epi16(a, b);
    return _mm256_madd_epi16(d, d);
}
VEK_INLINE Lanes lower(Lanes a, Lanes b) {
    return _mm256_min_epi32(a, b);
}
VEK_INLINE Lanes choose(Lanes by, Lanes than, Lanes a, Lanes b) {
    return _mm256_blendv_epi8(b, a, _mm256_cmpgt_epi32(than, by));
}
VEK_INLINE Lanes places() {
    return _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
}
#endif

VEK_INLINE void spreadTarget(const int16_t* target, int pairs, Lanes (&t)[kMostIsfPairs]) {
    for (int p = 0; p < pairs; ++p) {
        int32_t pair = 0;
        std::memcpy(&pair, target + 2 * p, sizeof pair);
        t[p] = spread(pair);
    }
}

VEK_INLINE Lanes distancesAt(const int16_t* book, int rows, int pairs, const Lanes (&t)[kMostIsfPairs]) {
    Lanes sum = squares(t[0], load(book));
    for (int p = 1; p < pairs; ++p) {
        sum = plus(sum, squares(t[p], load(book + 2 * p * rows)));
    }
    return sum;
}

void distances(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* out) {
    Lanes t[kMostIsfPairs];
    spreadTarget(target, pairs, t);
    for (int row = 0; row < rows; row += kLanes) {
        store(out + row, distancesAt(book + 2 * row, rows, pairs, t));
    }
}

int nearest(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* least) {
    Lanes t[kMostIsfPairs];
    spreadTarget(target, pairs, t);
    Lanes best = spread(INT32_MAX);
    Lanes bestPlace = spread(0);
    Lanes place = places();
    for (int row = 0; row < rows; row += kLanes) {
        const Lanes d = distancesAt(book + 2 * row, rows, pairs, t);
        bestPlace = choose(d, best, place, bestPlace);
        best = lower(d, best);
        place = plus(place, spread(kLanes));
    }
    int32_t values[kLanes];
    int32_t found[kLanes];
    store(values, best);
    store(found, bestPlace);
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
