// Shape and gain codebook: energies of the filtered shapes and the search of the best pair, in the full codebook and in
// the two subsets of the lower rates.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "sc/common/signal_check.h"
#include "sc/g728/tables.h"
#include "sc/kernels/g728shapes.h"
#include "veksc_g728.h"

using namespace vek::g728;

namespace {

constexpr int kSubset = 64;
constexpr int kSmallSubset = 16;

// The kernels' layout of a set of shapes, in pairs of samples.
template <int n>
struct Book {
    alignas(32) Vek16s pairs[6 * n] = {};

    explicit Book(const int* rows) {
        for (int j = 0; j < n; ++j) {
            const int16_t* y = kShapes[rows[j]];
            for (int k = 0; k < kVector; ++k) {
                pairs[k / 2 * 2 * n + 2 * j + k % 2] = y[k];
            }
        }
    }
};

struct Rows {
    int all[kAllShapes];
    int subset[kSubset];
};

// Squared cosine of the angle of two shapes.
double likeness(const int16_t* a, const int16_t* b) {
    double ab = 0;
    double aa = 0;
    double bb = 0;
    for (int k = 0; k < kVector; ++k) {
        ab += a[k] * b[k];
        aa += a[k] * a[k];
        bb += b[k] * b[k];
    }
    return ab * ab / (aa * bb);
}

const Rows g_rows = [] {
    Rows rows{};
    double nearest[kAllShapes] = {};
    for (int j = 0; j < kAllShapes; ++j) {
        rows.all[j] = j;
    }
    for (int n = 1; n < kSubset; ++n) {
        int farthest = 0;
        for (int j = 0; j < kAllShapes; ++j) {
            const double like = likeness(kShapes[j], kShapes[rows.subset[n - 1]]);
            nearest[j] = like > nearest[j] ? like : nearest[j];
            farthest = nearest[j] < nearest[farthest] ? j : farthest;
        }
        rows.subset[n] = farthest;
    }
    return rows;
}();

const Book<kAllShapes> g_book(g_rows.all);
const Book<kSubset> g_subsetBook(g_rows.subset);
const Book<kSmallSubset> g_smallBook(g_rows.subset);

// The kernel's sum for energies and products of one format: g^2 and -2 g, both Q12. Products that need more than 16
// bits lose `coarser` bits, as does g^2.
constexpr int kCoarsest = 3;
struct GainPairs {
    Vek16s pair[kCoarsest + 1][2 * kGains];
};
constexpr GainPairs kGainPairs = [] {
    GainPairs g{};
    for (int coarser = 0; coarser <= kCoarsest; ++coarser) {
        for (int i = 0; i < kGains; ++i) {
            g.pair[coarser][2 * i] =
                static_cast<Vek16s>((kGain[i] * kGain[i] + (1 << (13 + coarser))) >> (14 + coarser));
            g.pair[coarser][2 * i + 1] = static_cast<Vek16s>(-kGain[i]);
        }
    }
    return g;
}();
// Q18 to Q5. A product is below the largest sum of magnitudes of a shape times that of the target.
constexpr int kProductShift = 13;
constexpr int kLargestShape = 47018;

int coarserBits(const Vek16s* pn) {
    int largest = 0;
    for (int k = 0; k < kVector; ++k) {
        largest = std::max(largest, std::abs(int{pn[k]}));
    }
    int coarser = 0;
    while (coarser < kCoarsest && (largest * kLargestShape) >> (kProductShift + coarser) >= INT16_MAX) {
        ++coarser;
    }
    return coarser;
}

constexpr int kMiddleGain = 1;
constexpr int kMiddleGains = 2;

} // namespace

VekStatus veksImpulseResponseEnergy_G728_16s(const Vek16s* pSrcImpulse, Vek16s* pEnergy) {
    if (anyNull(pSrcImpulse, pEnergy)) {
        return vekStsNullPtrErr;
    }
    g728ShapeKernels().energies(g_book.pairs, kAllShapes, pSrcImpulse, pEnergy);
    return vekStsNoErr;
}

VekStatus veksCodebookSearch_G728_16s(const Vek16s* pSrc, const Vek16s* pEnergy, Vek16s* pDstShapeIdx,
                                      Vek16s* pDstGainIdx, Vek16s* pDstCodebookIdx, VekSpchBitRate rate) {
    if (anyNull(pSrc, pEnergy, pDstShapeIdx, pDstGainIdx, pDstCodebookIdx)) {
        return vekStsNullPtrErr;
    }
    const int coarser = coarserBits(pSrc);
    const Vek16s* gains = kGainPairs.pair[coarser];
    int level = 0;
    bool negative = false;
    if (rate == VEK_SPCHBR_16000) {
        const int shape = g728ShapeKernels().nearest(g_book.pairs, kAllShapes, pSrc, kProductShift + coarser, pEnergy,
                                                     gains, kGains, &level, &negative);
        const int gain = level + (negative ? kGains : 0);
        *pDstShapeIdx = static_cast<Vek16s>(shape);
        *pDstGainIdx = static_cast<Vek16s>(gain);
        *pDstCodebookIdx = static_cast<Vek16s>(shape * 2 * kGains + gain);
        return vekStsNoErr;
    }
    if (rate != VEK_SPCHBR_12800 && rate != VEK_SPCHBR_9600) {
        return vekStsBitRateErr;
    }
    const bool small = rate == VEK_SPCHBR_9600;
    const int n = small ? kSmallSubset : kSubset;
    Vek16s energy[kSubset];
    for (int j = 0; j < n; ++j) {
        energy[j] = pEnergy[g_rows.subset[j]];
    }
    const int place =
        g728ShapeKernels().nearest(small ? g_smallBook.pairs : g_subsetBook.pairs, n, pSrc, kProductShift + coarser,
                                   energy, gains + 2 * kMiddleGain, kMiddleGains, &level, &negative);
    *pDstShapeIdx = static_cast<Vek16s>(g_rows.subset[place]);
    *pDstGainIdx = static_cast<Vek16s>(kMiddleGain + level + (negative ? kGains : 0));
    *pDstCodebookIdx = static_cast<Vek16s>(place * 2 * kMiddleGains + level + (negative ? kMiddleGains : 0));
    return vekStsNoErr;
}
