// Rotations of the 16-bit transforms, from their formulas.
#include <cmath>
#include <numbers>

#include "sc/kernels/transform.h"

namespace vek {
namespace {

int32_t q30(double x) {
    return static_cast<int32_t>(std::lround(x * 1073741824.0));
}

template <int M>
void fillTwiddles(TransformTable<M>& t) {
    for (int k1 = 0; k1 < M; ++k1) {
        for (int n2 = 0; n2 < 8; ++n2) {
            const double phase = 2 * std::numbers::pi * n2 * k1 / (8 * M);
            t.twiddleRe[8 * k1 + n2] = q30(std::cos(phase));
            t.twiddleIm[8 * k1 + n2] = q30(-std::sin(phase));
        }
    }
}

// A cosine transform of len samples is a complex transform of half the length between two rotations by
// (n + 1/8) pi / len; the first one carries the factor sqrt(2 / len).
template <int M>
TransformTable<M> dctTable() {
    constexpr int half = 8 * M;
    TransformTable<M> t{};
    fillTwiddles(t);
    const double scale = 1 / std::sqrt(static_cast<double>(half));
    for (int n = 0; n < half; ++n) {
        const double phase = std::numbers::pi * (n + 0.125) / (2 * half);
        t.preRe[n] = q30(scale * std::cos(phase));
        t.preIm[n] = q30(-scale * std::sin(phase));
        t.postRe[n] = q30(std::cos(phase));
        t.postIm[n] = q30(-std::sin(phase));
    }
    return t;
}

// A real transform of 16 M samples has no rotation before, and exp(-2 pi j k / (16 M)) after.
template <int M>
TransformTable<M> fftTable() {
    TransformTable<M> t{};
    fillTwiddles(t);
    for (int k = 0; k < 8 * M; ++k) {
        const double phase = 2 * std::numbers::pi * k / (16 * M);
        t.postRe[k] = q30(std::cos(phase));
        t.postIm[k] = q30(-std::sin(phase));
    }
    return t;
}

} // namespace

const TransformTable<10> g_dct160 = dctTable<10>();
const TransformTable<20> g_dct320 = dctTable<20>();
const TransformTable<40> g_dct640 = dctTable<40>();
const TransformTable<8> g_fft128 = fftTable<8>();
const TransformTable<4> g_fft64 = fftTable<4>();

} // namespace vek
