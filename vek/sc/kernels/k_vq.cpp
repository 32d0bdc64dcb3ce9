// Nearest row of a codebook of four columns: the wide forms keep the best of each lane with its row, and settle between
// the lanes at the end.
#include "sc/kernels/vq.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/simd.h"

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

#else

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

VEK_KERNEL_TABLE(VqKernels, vqKernels) = {nearest<false>, nearest<true>};

} // namespace vek
