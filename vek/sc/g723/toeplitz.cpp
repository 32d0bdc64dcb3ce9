// Correlation matrix of G.723.1 for the search of four pulses.
#include "sc/g723/tables.h"
#include "sc/kernels/corr.h"
#include "veksc_g723.h"

using namespace vek;
using namespace vek::fix;
using namespace vek::g723;

namespace {

constexpr int kPlaces = 32; // even positions 0..62

// put(element, sum) with the doubled sums of the scaled response.
template <typename Put>
void matrix(const Vek16s* pSrc, Put put) {
    int16_t h[kSubframe];
    const int32_t energy = sat32(2 * corrKernels().dot16(pSrc, pSrc, kSubframe));
    const int shift = extract_h(energy) > 32000 ? -1 : norm_l(energy) >> 1;
    for (int i = 0; i < kSubframe; ++i) {
        h[i] = shl(pSrc[i], shift);
    }
    // sums[i][j], i <= j: from the largest position down each product is added once for a whole diagonal.
    int32_t sums[kPlaces][kPlaces] = {};
    for (int distance = 0; distance < kSubframe; distance += 2) {
        int64_t sum = 0;
        int newer = kSubframe - 1;
        for (int n = 0; n + distance < kSubframe; ++n, --newer) {
            sum += h[n] * h[n + distance];
            if ((newer & 1) == 0) {
                sums[(newer - distance) / 2][newer / 2] = sat32(2 * sum);
            }
        }
    }
    const auto phi = [&](int track, int k, int other, int l) {
        const int i = 4 * k + track;
        const int j = 4 * l + other;
        return i < j ? sums[i][j] : sums[j][i];
    };
    int element = 0;
    for (int t = 0; t < 4; ++t) {
        for (int k = 0; k < 8; ++k) {
            put(element++, phi(t, k, t, k));
        }
    }
    for (int t = 0; t < 4; ++t) {
        for (int u = t + 1; u < 4; ++u) {
            for (int k = 0; k < 8; ++k) {
                for (int l = 0; l < 8; ++l) {
                    put(element++, phi(t, k, u, l));
                }
            }
        }
    }
}

} // namespace

VekStatus veksToeplizMatrix_G723_16s(const Vek16s* pSrc, Vek16s* pDst) {
    if (!pSrc || !pDst) {
        return vekStsNullPtrErr;
    }
    matrix(pSrc, [&](int i, int32_t sum) { pDst[i] = extract_h(sum); });
    return vekStsNoErr;
}

VekStatus veksToeplizMatrix_G723_16s32s(const Vek16s* pSrc, Vek32s* pDst) {
    if (!pSrc || !pDst) {
        return vekStsNullPtrErr;
    }
    matrix(pSrc, [&](int i, int32_t sum) { pDst[i] = sum; });
    return vekStsNoErr;
}
