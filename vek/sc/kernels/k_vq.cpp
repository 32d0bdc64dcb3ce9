// Nearest row of a codebook: the wide forms keep the best of each lane with its row, and settle between
// the lanes at the end.
#include "sc/kernels/vq.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/lanes.h"

namespace vek {
namespace {

#if VEK_LEVEL == 0

template <bool sum>
int nearest(const int16_t* rows, int n, const int16_t* target, const int16_t* weight, uint32_t* least) {
    uint32_t best = UINT32_MAX;
    int row = 0;
    for (int i = 0; i < n; ++i) {
        uint32_t error = 0;
        for (int j = 0; j < 4; ++j) {
            const int d = fix::sat16(sum ? target[j] + rows[4 * i + j] : target[j] - rows[4 * i + j]);
            const int t = (weight[j] * d) >> 15;
            error += static_cast<uint32_t>(t * t);
        }
        if (error < best) {
            best = error;
            row = i;
        }
    }
    *least = best;
    return row;
}

// errorOf gives the sum of each row.
template <class ErrorOf>
int least(int n, ErrorOf errorOf) {
    int32_t best = INT32_MAX;
    int row = 0;
    for (int k = 0; k < n; ++k) {
        const int32_t error = errorOf(k);
        if (error < best) {
            best = error;
            row = k;
        }
    }
    return row;
}

int nearest10(const int16_t* pairs, int n, const int16_t* target) {
    return least(n, [=](int k) {
        int32_t error = 0;
        for (int j = 0; j < 10; ++j) {
            const int d = target[j] - pairs[(j / 2 * n + k) * 2 + j % 2];
            error += d * d;
        }
        return error;
    });
}

int nearestWeighted(const int16_t* columns, int n, int count, const int32_t* target, const int16_t* rest,
                    const int32_t* weight) {
    return least(n, [=](int k) {
        int32_t error = 0;
        for (int j = 0; j < count; ++j) {
            const int e = (rest[j] * (target[j] - columns[j * n + k])) >> 15;
            error += e * ((e * weight[j]) >> 11);
        }
        return error;
    });
}

void movingAverage10(const int16_t* weight, const int16_t* previous, int32_t* sum) {
    for (int j = 0; j < 10; ++j) {
        sum[j] = 0;
        for (int k = 0; k < 4; ++k) {
            sum[j] += weight[10 * k + j] * previous[10 * k + j];
        }
    }
}

#else

void movingAverage10(const int16_t* weight, const int16_t* previous, int32_t* sum) {
    // The second time over six of the same.
    for (const int j : {0, 2}) {
        const auto row = [j](const int16_t* p, int k) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 10 * k + j));
        };
        __m128i low = _mm_setzero_si128();
        __m128i high = low;
        for (int k = 0; k < 4; k += 2) {
            const __m128i w0 = row(weight, k);
            const __m128i w1 = row(weight, k + 1);
            const __m128i p0 = row(previous, k);
            const __m128i p1 = row(previous, k + 1);
            low = _mm_add_epi32(low, _mm_madd_epi16(_mm_unpacklo_epi16(w0, w1), _mm_unpacklo_epi16(p0, p1)));
            high = _mm_add_epi32(high, _mm_madd_epi16(_mm_unpackhi_epi16(w0, w1), _mm_unpackhi_epi16(p0, p1)));
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(sum + j), low);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(sum + j + 4), high);
    }
}

// The least of the lanes; of equal ones the first row.
VEK_INLINE int settle(const uint32_t* errors, const int32_t* rows, int lanes, uint32_t* least) {
    uint32_t best = errors[0];
    int row = rows[0];
    for (int i = 1; i < lanes; ++i) {
        if (errors[i] < best || (errors[i] == best && rows[i] < row)) {
            best = errors[i];
            row = rows[i];
        }
    }
    *least = best;
    return row;
}

// errorOf gives the sums of all rows of a register from row k on.
template <class ErrorOf>
VEK_INLINE int leastOfRows(int n, ErrorOf errorOf) {
    using namespace lanes;
    V best = spread(INT32_MAX);
    V bestRow = spread(0);
    V row = counting();
    for (int k = 0; k < n; k += kLanes) {
        const V error = errorOf(k);
        bestRow = choose(less(error, best), row, bestRow);
        best = least32(best, error);
        row = plus(row, spread(kLanes));
    }
    uint32_t errors[kLanes];
    int32_t rows[kLanes];
    storeAll(errors, best);
    storeAll(rows, bestRow);
    uint32_t least = 0;
    return settle(errors, rows, kLanes, &least);
}

int nearest10(const int16_t* pairs, int n, const int16_t* target) {
    using namespace lanes;
    V t[5];
    for (int p = 0; p < 5; ++p) {
        t[p] = spread(static_cast<int32_t>(static_cast<uint16_t>(target[2 * p]) |
                                           static_cast<uint32_t>(static_cast<uint16_t>(target[2 * p + 1])) << 16));
    }
    return leastOfRows(n, [&](int k) {
        V sum = spread(0);
        for (int p = 0; p < 5; ++p) {
            const V d = minus16(t[p], loadAll(pairs + 2 * (p * n + k)));
            sum = plus(sum, madd(d, d));
        }
        return sum;
    });
}

int nearestWeighted(const int16_t* columns, int n, int count, const int32_t* target, const int16_t* rest,
                    const int32_t* weight) {
    using namespace lanes;
    return leastOfRows(n, [&](int k) {
        V sum = spread(0);
        for (int j = 0; j < count; ++j) {
            const V d = minus(spread(target[j]), widened(columns + j * n + k));
            const V e = down<15>(times32(d, spread(rest[j])));
            sum = plus(sum, times32(e, down<11>(times32(e, spread(weight[j])))));
        }
        return sum;
    });
}

#if VEK_LEVEL == 1

VEK_INLINE __m128i four(const int16_t* p) {
    const __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    return _mm_unpacklo_epi64(v, v);
}

template <bool sum>
VEK_INLINE __m128i squares(const int16_t* p, __m128i target, __m128i weight) {
    const __m128i row = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i d = sum ? _mm_adds_epi16(target, row) : _mm_subs_epi16(target, row);
    const __m128i t =
        _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(weight, d), 1), _mm_srli_epi16(_mm_mullo_epi16(weight, d), 15));
    return _mm_madd_epi16(t, t);
}

template <bool sum>
int nearest(const int16_t* rows, int n, const int16_t* target, const int16_t* weight, uint32_t* least) {
    const __m128i r = four(target);
    const __m128i w = four(weight);
    __m128i best = _mm_set1_epi32(-1);
    __m128i bestRow = _mm_setzero_si128();
    __m128i row = _mm_setr_epi32(0, 1, 2, 3);
    for (int i = 0; i < n; i += 4) {
        const __m128i e = _mm_hadd_epi32(squares<sum>(rows + 4 * i, r, w), squares<sum>(rows + 4 * i + 8, r, w));
        const __m128i lower = _mm_min_epu32(best, e);
        bestRow = _mm_blendv_epi8(row, bestRow, _mm_cmpeq_epi32(lower, best));
        best = lower;
        row = _mm_add_epi32(row, _mm_set1_epi32(4));
    }
    uint32_t errors[4];
    int32_t places[4];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(errors), best);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(places), bestRow);
    return settle(errors, places, 4, least);
}

#else

VEK_INLINE __m256i four(const int16_t* p) {
    return _mm256_broadcastq_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
}

template <bool sum>
VEK_INLINE __m256i squares(const int16_t* p, __m256i target, __m256i weight) {
    const __m256i row = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i d = sum ? _mm256_adds_epi16(target, row) : _mm256_subs_epi16(target, row);
    const __m256i t = _mm256_or_si256(_mm256_slli_epi16(_mm256_mulhi_epi16(weight, d), 1),
                                      _mm256_srli_epi16(_mm256_mullo_epi16(weight, d), 15));
    return _mm256_madd_epi16(t, t);
}

template <bool sum>
int nearest(const int16_t* rows, int n, const int16_t* target, const int16_t* weight, uint32_t* least) {
    const __m256i r = four(target);
    const __m256i w = four(weight);
    __m256i best = _mm256_set1_epi32(-1);
    __m256i bestRow = _mm256_setzero_si256();
    __m256i row = _mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7);
    for (int i = 0; i < n; i += 8) {
        const __m256i e = _mm256_hadd_epi32(squares<sum>(rows + 4 * i, r, w), squares<sum>(rows + 4 * i + 16, r, w));
        const __m256i lower = _mm256_min_epu32(best, e);
        bestRow = _mm256_blendv_epi8(row, bestRow, _mm256_cmpeq_epi32(lower, best));
        best = lower;
        row = _mm256_add_epi32(row, _mm256_set1_epi32(8));
    }
    uint32_t errors[8];
    int32_t places[8];
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(errors), best);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(places), bestRow);
    return settle(errors, places, 8, least);
}

#endif
#endif

} // namespace

VEK_KERNEL_TABLE(VqKernels, vqKernels) = {nearest<false>, nearest<true>, nearest10, nearestWeighted, movingAverage10};

} // namespace vek
