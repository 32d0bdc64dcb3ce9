// Lag window of G.729: 60 Hz bandwidth expansion and the noise correction 1.0001 of lag 0.
#include <array>

#include "sc/common/fixmath.h"
#include "veksc_filter.h"

namespace {

using namespace vek::fix;

constexpr int kLags = 10;

// The published window for the lags 1..10, upper and lower halves of the double precision format.
constexpr std::array<Vek16s, kLags> kHigh = {32728, 32619, 32438, 32187, 31867, 31480, 31029, 30517, 29946, 29321};
constexpr std::array<Vek16s, kLags> kLow = {11904, 17280, 30720, 25856, 24192, 28992, 24384, 7360, 19520, 14784};

} // namespace

VekStatus veksLagWindow_G729_32s_I(Vek32s* pSrcDst, int len) {
    if (!pSrcDst) {
        return vekStsNullPtrErr;
    }
    if (len < 1 || len > kLags) {
        return vekStsSizeErr;
    }
    for (int i = 0; i < len; i++) {
        Vek16s hi = 0;
        Vek16s lo = 0;
        L_Extract(pSrcDst[i], hi, lo);
        const auto n = static_cast<unsigned>(i);
        pSrcDst[i] = Mpy_32(hi, lo, kHigh[n], kLow[n]);
    }
    return vekStsNoErr;
}
