// One stage of a lattice filter, once per instruction level. A stage over many samples has no recursion.
#include "sc/kernels/lattice.h"

#include "sc/common/fixmath.h"

#if VEK_LEVEL > 0
#include <immintrin.h>
#endif

namespace vek {
namespace {

void tail(int16_t r, const int16_t* back, int16_t* d, int16_t* out, int from, int n) {
    for (int i = from; i < n; ++i) {
        out[i] = fix::add(back[i], fix::mult_r(r, d[i]));
        d[i] = fix::add(d[i], fix::mult_r(r, back[i]));
    }
}

void analysis(int16_t r, const int16_t* back, int16_t* d, int16_t* out, int n) {
    int i = 0;
#if VEK_LEVEL == 2
    const __m256i wide = _mm256_set1_epi16(r);
    for (; i + 16 <= n; i += 16) {
        const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(back + i));
        const __m256i f = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(d + i));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm256_adds_epi16(b, _mm256_mulhrs_epi16(wide, f)));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i), _mm256_adds_epi16(f, _mm256_mulhrs_epi16(wide, b)));
    }
#endif
#if VEK_LEVEL > 0
    const __m128i factor = _mm_set1_epi16(r);
    for (; i + 8 <= n; i += 8) {
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(back + i));
        const __m128i f = _mm_loadu_si128(reinterpret_cast<const __m128i*>(d + i));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_adds_epi16(b, _mm_mulhrs_epi16(factor, f)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), _mm_adds_epi16(f, _mm_mulhrs_epi16(factor, b)));
    }
#endif
    tail(r, back, d, out, i, n);
}

} // namespace

VEK_KERNEL_TABLE(LatticeKernels, latticeKernels) = {analysis};

} // namespace vek
