// High-pass and band-pass filters of the real-time audio codec. Each is the sum of its poles' first-order and rotating
// second-order parts, which keeps poles close to 1 exact in single precision; the coefficients are computed at load.
#include <array>
#include <cmath>
#include <complex>
#include <numbers>

#include "sc/common/signal_check.h"
#include "sc/kernels/rta.h"
#include "veksc_rta.h"

namespace {

using namespace vek;
using Complex = std::complex<double>;

constexpr double kCorner = 80;
constexpr VekPCMFrequency kFrequencies[] = {VEK_PCM_FREQ_8000, VEK_PCM_FREQ_11025, VEK_PCM_FREQ_16000,
                                            VEK_PCM_FREQ_22050, VEK_PCM_FREQ_32000};
constexpr auto kFrequencyCount = static_cast<int>(std::size(kFrequencies));
constexpr int kLeastOrder = 4;

// Zeros and poles of up to kMostStates. Poles that are not real stand with a positive imaginary part, behind them
// their conjugates.
struct Places {
    int order;
    Complex zeros[kMostStates];
    Complex poles[kMostStates];
    double gain;
};

Complex bilinear(Complex s) {
    return (1.0 + s) / (1.0 - s);
}

Places highPass(int order, double corner) {
    Places p{};
    p.order = order;
    const double edge = std::tan(std::numbers::pi * corner);
    for (int k = 0; k < order; ++k) {
        // From the imaginary axis inwards, a pole and its conjugate in turn.
        const int even = k - k % 2;
        const double angle = std::numbers::pi * (order + 1 + even) / (2 * order);
        const bool real = order % 2 != 0 && k == order - 1;
        const Complex s = real ? Complex(-edge) : std::conj(edge / std::polar(1.0, angle));
        p.zeros[k] = 1;
        p.poles[k] = k % 2 == 0 ? bilinear(s) : std::conj(bilinear(s));
    }
    Complex gain = 1;
    for (int k = 0; k < order; ++k) {
        gain *= (-1.0 - p.poles[k]) / -2.0;
    }
    p.gain = gain.real();
    return p;
}

Places bandPass() {
    Places p{};
    p.order = 3;
    const Complex s = std::tan(17 * std::numbers::pi / 40) * std::polar(1.0, 0.75 * std::numbers::pi);
    p.zeros[0] = p.zeros[1] = -1;
    p.zeros[2] = 1;
    p.poles[0] = bilinear(s);
    p.poles[1] = std::conj(p.poles[0]);
    p.poles[2] = bilinear(-std::tan(std::numbers::pi / 40));
    p.gain = (std::norm(1.0 - p.poles[0]) / 4 * (1.0 + p.poles[2]) / 2.0).real();
    return p;
}

using Matrix = std::array<std::array<double, kMostStates>, kMostStates>;

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix c{};
    for (int i = 0; i < kMostStates; ++i) {
        for (int j = 0; j < kMostStates; ++j) {
            for (int k = 0; k < kMostStates; ++k) {
                c[i][j] += a[i][k] * b[k][j];
            }
        }
    }
    return c;
}

BlockFilter blocks(const Places& p) {
    Matrix a{};
    double in[kMostStates] = {};
    double out[kMostStates] = {};
    for (int k = 0; k < p.order; ++k) {
        Complex share = p.gain;
        for (int j = 0; j < p.order; ++j) {
            share *= p.poles[k] - p.zeros[j];
            share /= j == k ? 1.0 : p.poles[k] - p.poles[j];
        }
        const double re = p.poles[k].real();
        const double im = p.poles[k].imag();
        in[k] = 1;
        a[k][k] = re;
        if (k + 1 < p.order && im > 0) {
            a[k][k + 1] = -im;
            a[k + 1][k] = im;
            a[k + 1][k + 1] = re;
            out[k] = 2 * share.real();
            out[k + 1] = -2 * share.imag();
            ++k;
        } else {
            out[k] = share.real();
        }
    }
    BlockFilter f{};
    f.states = p.order;
    f.direct = static_cast<float>(p.gain);
    Matrix power{}; // a^t
    for (int k = 0; k < kMostStates; ++k) {
        power[k][k] = 1;
    }
    for (int t = 0; t < 8; ++t) {
        double response = 0;
        for (int m = 0; m < p.order; ++m) {
            double seen = 0;
            double driven = 0;
            for (int k = 0; k < p.order; ++k) {
                seen += out[k] * power[k][m];
                driven += power[m][k] * in[k];
            }
            f.out[m][t] = static_cast<float>(seen);
            f.drive[7 - t][m] = static_cast<float>(driven);
            response += seen * in[m];
        }
        for (int j = 0; j < 8; ++j) {
            if (j + t + 1 < 8) {
                f.response[j][j + t + 1] = static_cast<float>(response);
            }
        }
        f.response[t][t] = f.direct;
        power = product(power, a);
    }
    for (int m = 0; m < p.order; ++m) {
        f.drive1[m] = static_cast<float>(in[m]);
        for (int k = 0; k < p.order; ++k) {
            f.one[m][k] = static_cast<float>(a[k][m]);
            f.step[m][k] = static_cast<float>(power[k][m]);
        }
    }
    return f;
}

std::array<std::array<BlockFilter, kFrequencyCount>, 2> highPasses() {
    std::array<std::array<BlockFilter, kFrequencyCount>, 2> filters;
    for (int i = 0; i < 2; ++i) {
        for (int k = 0; k < kFrequencyCount; ++k) {
            filters[i][k] = blocks(highPass(kLeastOrder + i, kCorner / static_cast<int>(kFrequencies[k])));
        }
    }
    return filters;
}

const std::array<std::array<BlockFilter, kFrequencyCount>, 2> g_highPass = highPasses();
const BlockFilter g_bandPass = blocks(bandPass());

} // namespace

VekStatus veksHighPassFilter_RTA_32f(const Vek32f* pSrc, Vek32f* pDst, int len, int order, VekPCMFrequency freq,
                                     Vek32f* pMem) {
    if (const VekStatus status = checkSignal(len, pSrc, pDst, pMem); status != vekStsNoErr) {
        return status;
    }
    if (order < kLeastOrder || order > kLeastOrder + 1) {
        return vekStsFilterOrderErr;
    }
    for (int k = 0; k < kFrequencyCount; ++k) {
        if (kFrequencies[k] == freq) {
            rtaKernels().filterBlocks(g_highPass[order - kLeastOrder][k], pMem, pSrc, pDst, len);
            return vekStsNoErr;
        }
    }
    return vekStsRangeErr;
}

VekStatus veksBandPassFilter_RTA_32f_I(Vek32f* pSrcDst, int len, Vek32f* pMem) {
    if (const VekStatus status = checkSignal(len, pSrcDst, pMem); status != vekStsNoErr) {
        return status;
    }
    rtaKernels().filterBlocks(g_bandPass, pMem, pSrcDst, pSrcDst, len);
    return vekStsNoErr;
}
