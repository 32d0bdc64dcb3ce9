// Rotations of the subband transforms, from their formulas.
#include <cmath>
#include <numbers>

#include "sc/kernels/ec.h"

namespace vek {
namespace {

// Twiddles of row k1 and column c at [4 * k1 + c]; behind them -j exp(-j angle) / 2, which parts the real transform.
template <typename T>
FoldTable<T> foldTable(int points) {
    FoldTable<T> t{};
    const int half = points / 2;
    for (int i = 0; i < half; ++i) {
        const int row = i / 4;
        const double angle = 2 * std::numbers::pi * row * (i % 4) / half;
        t.twiddleRe[i] = static_cast<T>(std::cos(angle));
        t.twiddleIm[i] = static_cast<T>(-std::sin(angle));
        const double post = 2 * std::numbers::pi * i / points;
        t.postRe[i] = static_cast<T>(-std::sin(post) / 2);
        t.postIm[i] = static_cast<T>(-std::cos(post) / 2);
    }
    return t;
}

} // namespace

const FoldTable<float> g_fold32f[2] = {foldTable<float>(32), foldTable<float>(64)};
const FoldTable<double> g_fold64f[2] = {foldTable<double>(32), foldTable<double>(64)};

} // namespace vek
