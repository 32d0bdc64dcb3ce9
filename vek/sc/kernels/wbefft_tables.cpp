// Rotations of the transforms of the extended wide-band codec, from their formulas.
#include <cmath>
#include <numbers>

#include "sc/kernels/wbefft.h"

namespace vek {
namespace {

template <int M>
RealFftTable<M> table() {
    RealFftTable<M> t{};
    for (int k1 = 0; k1 < M; ++k1) {
        for (int n2 = 0; n2 < 8; ++n2) {
            const double phase = 2 * std::numbers::pi * n2 * k1 / (8 * M);
            t.twiddleRe[8 * k1 + n2] = static_cast<float>(std::cos(phase));
            t.twiddleIm[8 * k1 + n2] = static_cast<float>(-std::sin(phase));
        }
    }
    for (int k = 0; k < 8 * M; ++k) {
        const double phase = 2 * std::numbers::pi * k / (16 * M);
        t.splitRe[k] = static_cast<float>(std::cos(phase));
        t.splitIm[k] = static_cast<float>(-std::sin(phase));
    }
    t.scale = static_cast<float>(1 / std::sqrt(16.0 * M));
    return t;
}

} // namespace

const RealFftTable<3> g_realFft48 = table<3>();
const RealFftTable<6> g_realFft96 = table<6>();
const RealFftTable<12> g_realFft192 = table<12>();
const RealFftTable<18> g_realFft288 = table<18>();
const RealFftTable<36> g_realFft576 = table<36>();
const RealFftTable<72> g_realFft1152 = table<72>();

} // namespace vek
