// Modulated lapped transform of 160 coefficients under the sine window, and the post-processing of decoded
// coefficients. The transform is a fold and a cosine transform of type IV of 26 bits: forward, as many of them stand
// behind the point as the frame allows; backward 11.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/common/table.h"
#include "sc/kernels/transform.h"
#include "veksc_g7291.h"

using namespace vek;

namespace {

constexpr int kSize = 160;

// The rising half of the window; the falling one is the same backwards. Of many bits: where it is small it may stand
// over the only loud samples of a frame.
constexpr int kWindowBits = 30;
const auto g_window = sineWindow<int32_t, kSize>(kWindowBits);

// The first half of the sums takes the newer frame from its middle outwards, the second half the older one from its
// ends inwards.
const FoldWeights g_foldWeights = [] {
    FoldWeights weights;
    const auto put = [&weights](int at, int n, int sign) {
        weights.upper[at] = static_cast<int16_t>(sign * (g_window[n] >> kFoldBits));
        weights.lower[at] = static_cast<int16_t>(sign * (g_window[n] & ((1 << kFoldBits) - 1)));
    };
    constexpr int half = kSize / 2;
    for (int n = 0; n < half; ++n) {
        put(2 * n, half + n, -1);
        put(2 * n + 1, half - 1 - n, -1);
        put(kSize + 2 * n, n, 1);
        put(kSize + 2 * n + 1, kSize - 1 - n, -1);
    }
    return weights;
}();

int64_t rounded(int64_t v, int shift) {
    return (v + (int64_t{1} << (shift - 1))) >> shift;
}

// A coefficient's weight, Q14: 1 + strength * (its magnitude over the mean around it - 1), the ratio at most 2.
struct Weights {
    static constexpr int kReach = 7; // coefficients on either side

    const Vek16s* y;
    int32_t strength; // Q15
    int64_t sum = 0;
    int first = 0;
    int last = -1;

    // To be called for k = 0, 1, 2, ...
    int at(int k) {
        while (last < std::min(k + kReach, kSize - 1)) {
            sum += std::abs(int{y[++last]});
        }
        if (first < k - kReach) {
            sum -= std::abs(int{y[first++]});
        }
        if (sum == 0) {
            return 16384;
        }
        const int64_t ratio = std::min<int64_t>(16384 * int64_t{std::abs(int{y[k]})} * (last - first + 1) / sum, 32768);
        return static_cast<int>(16384 + (((ratio - 16384) * strength) >> 15));
    }
};

} // namespace

VekStatus veksMDCTFwd_G7291_16s(const Vek16s* pSrc, Vek16s* pSrcDst, int* pNormFactor, Vek16s* pMDCTCoeffs,
                                int headroom) {
    constexpr int kMostNorm = 11;
    constexpr int kMostHeadroom = 8;
    if (anyNull(pSrc, pSrcDst, pMDCTCoeffs, pNormFactor)) {
        return vekStsNullPtrErr;
    }
    if (headroom < 0 || headroom > kMostHeadroom) {
        return vekStsRangeErr;
    }
    const TransformKernels& kernels = transformKernels();
    alignas(32) int32_t u[kSize];
    const int excess = kernels.mdct160(pSrc, pSrcDst, g_foldWeights, u);
    std::copy_n(pSrc, kSize, pSrcDst);
    const int32_t largest = kernels.largest(u, kSize);
    // A sample of 26 bits has a coefficient of 22 or more: there is something to shift away.
    const int fraction = kWindowBits - excess;
    const int room = fix::norm_l(largest);
    const int norm = largest == 0 ? 0 : std::min(room - (16 - fraction) - headroom, kMostNorm);
    kernels.narrow(u, kSize, fraction - norm, pMDCTCoeffs);
    *pNormFactor = norm;
    return vekStsNoErr;
}

VekStatus veksMDCTInv_G7291_16s(const Vek16s* pMDCTCoeffs, Vek16s* pMDCTPrevCoeffs, Vek16s* pDst, int normFactor) {
    constexpr int kFraction = 11;
    constexpr int kMostNorm = 15;
    if (anyNull(pMDCTCoeffs, pMDCTPrevCoeffs, pDst)) {
        return vekStsNullPtrErr;
    }
    if (normFactor < -kMostNorm || normFactor > kMostNorm) {
        return vekStsScaleRangeErr;
    }
    alignas(32) int32_t u[kSize];
    for (int k = 0; k < kSize; ++k) {
        u[k] = pMDCTCoeffs[k] * (1 << kFraction);
    }
    transformKernels().mdctInverse160(u, pMDCTPrevCoeffs, g_window.data(), kFraction + normFactor, pDst);
    return vekStsNoErr;
}

VekStatus veksMDCTPostProcess_G7291_16s(Vek16s* pMDCTCoeffs, int rate) {
    constexpr int kRates = 12;
    if (anyNull(pMDCTCoeffs)) {
        return vekStsNullPtrErr;
    }
    if (rate < 0 || rate >= kRates) {
        return vekStsRangeErr;
    }
    Weights weights{.y = pMDCTCoeffs, .strength = 32768 * (kRates - rate) / (2 * kRates)};
    int32_t weighted[kSize];
    int64_t before = 0;
    int64_t after = 0;
    for (int k = 0; k < kSize; ++k) {
        weighted[k] = pMDCTCoeffs[k] * weights.at(k);
        before += std::abs(int{pMDCTCoeffs[k]});
        after += std::abs(int64_t{weighted[k]});
    }
    if (before == 0) {
        return vekStsNoErr;
    }
    // Q14; a weight is a half or more.
    const int64_t level = (before << 28) / after;
    for (int k = 0; k < kSize; ++k) {
        pMDCTCoeffs[k] = fix::sat16_64(rounded(weighted[k] * level, 28));
    }
    return vekStsNoErr;
}
