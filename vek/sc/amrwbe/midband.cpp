// The filter that predicts one channel's mid band from the other: least squares over a frame, nine taps.
#include <array>
#include <cmath>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/corr.h"
#include "veksc_amrwbe.h"

using namespace vek;

namespace {

constexpr int kTaps = 9;
constexpr int kFrame = 320;

using Vector = std::array<double, kTaps>;
using Matrix = std::array<Vector, kTaps>;

// Solves a system with a positive definite matrix, of which the lower triangle is given.
Vector solve(Matrix m, Vector r) {
    for (size_t i = 0; i < kTaps; ++i) {
        for (size_t k = 0; k <= i; ++k) {
            double sum = m[i][k];
            for (size_t j = 0; j < k; ++j) {
                sum -= m[i][j] * m[k][j];
            }
            m[i][k] = i == k ? std::sqrt(sum) : sum / m[k][k];
        }
        for (size_t j = 0; j < i; ++j) {
            r[i] -= m[i][j] * r[j];
        }
        r[i] /= m[i][i];
    }
    for (size_t i = kTaps; i-- > 0;) {
        for (size_t j = i + 1; j < kTaps; ++j) {
            r[i] -= m[j][i] * r[j];
        }
        r[i] /= m[i][i];
    }
    return r;
}

} // namespace

VekStatus veksFIRGenMidBand_AMRWBE_16s(const Vek16s* pSrcMid, const Vek16s* pSrcTarget, Vek16s* pDstFilter) {
    if (anyNull(pSrcMid, pSrcTarget, pDstFilter)) {
        return vekStsNullPtrErr;
    }
    Matrix m{};
    Vector r{};
    for (int i = 0; i < kTaps; ++i) {
        const auto row = static_cast<size_t>(i);
        for (int k = 0; k <= i; ++k) {
            m[row][static_cast<size_t>(k)] = static_cast<double>(corrKernels().dot16(pSrcMid - i, pSrcMid - k, kFrame));
        }
        r[row] = static_cast<double>(corrKernels().dot16(pSrcTarget, pSrcMid - i, kFrame));
    }
    // A little noise keeps the system solvable for pure tones and silence.
    const double noise = m[0][0] * 1e-4 + 1;
    for (size_t i = 0; i < kTaps; ++i) {
        m[i][i] += noise;
    }
    const Vector h = solve(m, r);
    for (size_t i = 0; i < kTaps; ++i) {
        pDstFilter[i] = fix::sat16_64(std::llround(4096 * h[i]));
    }
    return vekStsNoErr;
}
