// Lag window of G.729: 60 Hz bandwidth expansion and the noise correction 1.0001 of lag 0.
#include "veksc_filter.h"

namespace {

constexpr int kLags = 10;

// The published window for the lags 1..10, upper and lower halves of the double precision format.
constexpr int kHigh[kLags] = {32728, 32619, 32438, 32187, 31867, 31480, 31029, 30517, 29946, 29321};
constexpr int kLow[kLags] = {11904, 17280, 30720, 25856, 24192, 28992, 24384, 7360, 19520, 14784};

} // namespace

VekStatus veksLagWindow_G729_32s_I(Vek32s* pSrcDst, int len) {
    if (!pSrcDst) {
        return vekStsNullPtrErr;
    }
    if (len < 1 || len > kLags) {
        return vekStsSizeErr;
    }
    // Factors below 1: none of the split arithmetic's steps can saturate, so the operators are written out.
    for (int i = 0; i < len; i++) {
        const int hi = pSrcDst[i] >> 16;
        const int lo = (pSrcDst[i] & 0xffff) >> 1;
        pSrcDst[i] = 2 * (hi * kHigh[i] + ((hi * kLow[i]) >> 15) + ((lo * kHigh[i]) >> 15));
    }
    return vekStsNoErr;
}
