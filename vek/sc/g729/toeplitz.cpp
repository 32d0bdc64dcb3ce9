// Correlation matrix of the impulse response for the fixed codebook searches of G.729.
// Rows of running sums come from the kernels; here they are scaled and put in the order that the searches read.
#include <array>

#include "sc/common/correlationrows.h"
#include "sc/common/fixmath.h"
#include "sc/g729/sizes.h"
#include "sc/kernels/filter.h"
#include "veksc_g729.h"

namespace {

using namespace vek::g729;

constexpr int kPositions = 8;
constexpr int kSize = 616;

// The sum over h[n-i] * h[n-j] stands in the row of the number of its terms, at the distance |i-j|.
constexpr uint16_t place(int i, int j) {
    const int first = i < j ? i : j;
    const int last = i < j ? j : i;
    return static_cast<uint16_t>((kSubframe - 1 - last) * kSubframe + (last - first));
}

constexpr std::array<uint16_t, kSize> makeOrder() {
    std::array<uint16_t, kSize> order{};
    size_t n = 0;
    for (int t = 0; t < kTracks; t++) {
        for (int k = 0; k < kPositions; k++) {
            order[n++] = place(kTracks * k + t, kTracks * k + t);
        }
    }
    for (int t = 0; t < kTracks; t++) {
        for (int u = t + 1; u < kTracks; u++) {
            if (t == 3 && u == 4) {
                continue; // never searched together: one pulse takes either track
            }
            for (int k = 0; k < kPositions; k++) {
                for (int l = 0; l < kPositions; l++) {
                    order[n++] = place(kTracks * k + t, kTracks * l + u);
                }
            }
        }
    }
    return order;
}

constexpr std::array<uint16_t, kSize> kElementPlaces = makeOrder();

int64_t doubledEnergy(const Vek16s* h) {
    int64_t e = 0;
    for (int i = 0; i < kSubframe; i++) {
        e += h[i] * h[i];
    }
    return 2 * e;
}

// The response as large as its energy allows; returns whether no sum of products can saturate.
bool scale(const Vek16s* pSrc, Vek16s* h) {
    const int32_t energy = sat32(doubledEnergy(pSrc));
    const int shift = extract_h(energy) > 32000 ? -1 : norm_l(energy) >> 1;
    for (int i = 0; i < kSubframe; i++) {
        h[i] = shl(pSrc[i], shift);
    }
    // No correlation, nor a part of it, exceeds the energy.
    return doubledEnergy(h) <= kMax32;
}

// The matrix by a kernel that gathers it from the rows, or element by element where sums saturate.
template <class Element, class Gather, class Narrow>
VekStatus matrix(const Vek16s* pSrc, Element* pDst, Gather gather, Narrow narrow) {
    if (!pSrc || !pDst) {
        return vekStsNullPtrErr;
    }
    Vek16s h[kSubframe];
    alignas(32) Vek32s rows[kSubframe * kSubframe];
    if (scale(pSrc, h)) {
        filterKernels().corrRows16(h, rows);
        gather(rows, kElementPlaces.data(), pDst, kSize);
        return vekStsNoErr;
    }
    saturatingRows(h, rows);
    for (size_t n = 0; n < kElementPlaces.size(); n++) {
        pDst[n] = narrow(rows[kElementPlaces[n]]);
    }
    return vekStsNoErr;
}

} // namespace

VekStatus veksToeplizMatrix_G729_16s(const Vek16s* pSrc, Vek16s* pDst) {
    return matrix(pSrc, pDst, filterKernels().gather16, extract_h);
}

VekStatus veksToeplizMatrix_G729_16s32s(const Vek16s* pSrc, Vek32s* pDst) {
    return matrix(pSrc, pDst, filterKernels().gather32, [](Vek32s sum) { return sum; });
}

VekStatus veksToeplizMatrix_G729_32f(const Vek32f* pSrc, Vek32f* pDst) {
    if (!pSrc || !pDst) {
        return vekStsNullPtrErr;
    }
    alignas(32) Vek32f rows[kSubframe * kSubframe];
    filterKernels().corrRows32f(pSrc, rows);
    for (size_t n = 0; n < kElementPlaces.size(); n++) {
        pDst[n] = rows[kElementPlaces[n]];
    }
    return vekStsNoErr;
}
