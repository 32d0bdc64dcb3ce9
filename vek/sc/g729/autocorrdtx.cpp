// Autocorrelation of the speech analysis of G.729 with the lags that voice activity detection asks for.
#include <cmath>
#include <numbers>

#include "sc/common/correlate.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/common/table.h"
#include "veksc_g729post.h"

using namespace vek::fix;

namespace {

constexpr int kSpan = 240;
constexpr int kRise = 200;

// Half a Hamming window and a quarter of a cosine, Q15.
const auto g_window = tableOf<Vek16s, kSpan>(15, [](int n) {
    return n < kRise ? 0.54 - 0.46 * std::cos(2 * std::numbers::pi * n / (2 * kRise - 1))
                     : std::cos(2 * std::numbers::pi * (n - kRise) / (4 * (kSpan - kRise) - 1));
});

} // namespace

VekStatus veksAutoCorr_G729B(const Vek16s* pSrcSpch, Vek16s* pResultAutoCorrExp, Vek32s* pDstAutoCorr) {
    if (anyNull(pSrcSpch, pResultAutoCorrExp, pDstAutoCorr)) {
        return vekStsNullPtrErr;
    }
    constexpr int kLags = 13;
    const CorrKernels& kernels = corrKernels();
    alignas(32) Vek16s x[kSpan + kCorrPadding] = {};
    kernels.window16(pSrcSpch, g_window.data(), x, kSpan);
    int exponent = 1;
    int64_t energy = 1 + 2 * kernels.dot16(x, x, kSpan);
    while (energy > kMax32) {
        kernels.shift16(x, x, kSpan, -2);
        exponent += 4;
        energy = 1 + 2 * kernels.dot16(x, x, kSpan);
    }
    const int shift = norm_l(static_cast<int32_t>(energy));
    correlate(x, x, kSpan, kLags, [&](int, const auto* sums, int count) {
        for (int k = 0; k < count; ++k) {
            pDstAutoCorr[k] = static_cast<Vek32s>((k == 0 ? energy : 2 * int64_t{sums[k]}) * (int64_t{1} << shift));
        }
    });
    *pResultAutoCorrExp = static_cast<Vek16s>(exponent - shift);
    return vekStsNoErr;
}
