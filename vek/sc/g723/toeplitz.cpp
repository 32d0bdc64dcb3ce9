// Correlation matrix of G.723.1 for the search of four pulses.
#include <array>

#include "sc/g723/tables.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/filter.h"
#include "sc/kernels/loops.h"
#include "veksc_g723.h"

using namespace vek::g723;

namespace {

constexpr int kPlaces = 32; // even positions 0..62

constexpr int kElements = 416;

// Calls f(element, place, place) for the elements in their order.
template <typename F>
constexpr void eachElement(F f) {
    int element = 0;
    for (int t = 0; t < 4; ++t) {
        for (int k = 0; k < 8; ++k) {
            f(element++, 4 * k + t, 4 * k + t);
        }
    }
    for (int t = 0; t < 4; ++t) {
        for (int u = t + 1; u < 4; ++u) {
            for (int k = 0; k < 8; ++k) {
                for (int l = 0; l < 8; ++l) {
                    f(element++, 4 * k + t, 4 * l + u);
                }
            }
        }
    }
}

// Where the kernel's rows hold each element: a sum of pairs ends where the later position meets the end. Positions
// behind it have the zero behind the rows.
constexpr int kZero = kPairs * kPairRow;
constexpr auto kRowPlaces = [] {
    std::array<uint16_t, kElements> places{};
    eachElement([&](int element, int i, int j) {
        const int later = i > j ? i : j;
        const int distance = i > j ? i - j : j - i;
        places[static_cast<size_t>(element)] =
            static_cast<uint16_t>(later < kPairs ? (kPairs - 1 - later) * kPairRow + distance : kZero);
    });
    return places;
}();

// The response as large as its energy allows; whether no sum of products can reach 2^30 in magnitude.
bool scaled(const Vek16s* pSrc, int16_t* h) {
    const CorrKernels& kernels = corrKernels();
    const int32_t energy = sat32(2 * kernels.dot16(pSrc, pSrc, kSubframe));
    const int shift = extract_h(energy) > 32000 ? -1 : norm_l(energy) >> 1;
    kernels.shift16(pSrc, h, kSubframe, shift);
    return shift >= 0 || kernels.dot16(h, h, kSubframe) < 1 << 30;
}

// put(element, sum) with the doubled sums, saturated.
template <typename Put>
void saturatedSums(const int16_t* h, Put put) {
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
    eachElement([&](int element, int i, int j) { put(element, i < j ? sums[i][j] : sums[j][i]); });
}

// The elements in their order, as `narrow` takes them from the doubled sums; `gather` does the same to sums that cannot
// saturate.
template <typename Out, typename Gather, typename Narrow>
VekStatus matrix(const Vek16s* pSrc, Out* pDst, Gather gather, Narrow narrow) {
    if (!pSrc || !pDst) {
        return vekStsNullPtrErr;
    }
    int16_t h[kSubframe];
    if (scaled(pSrc, h)) {
        int32_t rows[kZero + 1];
        loopKernels().pairCorrelations(h, rows);
        rows[kZero] = 0;
        gather(rows, kRowPlaces.data(), pDst, kElements);
    } else {
        saturatedSums(h, [&](int i, int32_t sum) { pDst[i] = narrow(sum); });
    }
    return vekStsNoErr;
}

} // namespace

VekStatus veksToeplizMatrix_G723_16s(const Vek16s* pSrc, Vek16s* pDst) {
    return matrix(pSrc, pDst, filterKernels().gather16, extract_h);
}

VekStatus veksToeplizMatrix_G723_16s32s(const Vek16s* pSrc, Vek32s* pDst) {
    return matrix(pSrc, pDst, filterKernels().gather32, [](Vek32s sum) { return sum; });
}
