// Long-term postfilter, short-term postfilter with its tilt, and the control of the level.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/g728/tables.h"
#include "sc/kernels/g728.h"
#include "veksc_g728.h"

using namespace vek;
using namespace vek::g728;

namespace {

constexpr int kLeastPitch = 20;
constexpr int kMostPitch = 140;
constexpr int kShift = 14;
constexpr int kHalf = 1 << (kShift - 1);
// Of the level: 0.99 of the scale before and 0.01 of the new one, Q15; scales have 16 fraction bits more than Q14.
constexpr int64_t kSteady = 32440;
constexpr int64_t kFresh = 328;
constexpr int64_t kOne = int64_t{1} << 30;

struct Post {
    // In the order of time.
    Vek16s in[kShortOrder] = {};
    Vek16s out[kShortOrder] = {};
    int64_t scale = kOne;
};
using PostState = Marked<Post, 0x50463238>;

} // namespace

VekStatus veksPostFilterGetStateSize_G728_16s(int* pSize) {
    return PostState::size(pSize);
}

VekStatus veksPostFilterInit_G728_16s(VeksPostFilterState_G728* pMem) {
    return PostState::init(pMem);
}

VekStatus veksPostFilter_G728_16s(Vek16s gl, Vek16s glb, int kp, Vek16s tiltz, const Vek16s* pCoeffs,
                                  const Vek16s* pSrc, Vek16s* pDst, VeksPostFilterState_G728* pMem) {
    if (anyNull(pCoeffs, pSrc, pDst, pMem)) {
        return vekStsNullPtrErr;
    }
    if (kp < kLeastPitch || kp > kMostPitch) {
        return vekStsRangeErr;
    }
    PostState state;
    if (!state.take(pMem)) {
        return vekStsStateErr;
    }
    Post& post = state.content;
    // In the order of time, with the ten samples before.
    Vek16s in[kShortOrder + kVector];
    Vek16s out[kShortOrder + kVector];
    std::memcpy(in, post.in, sizeof post.in);
    std::memcpy(out, post.out, sizeof post.out);
    Vek16s filtered[kVector];
    int before = 0;
    int after = 0;
    for (int k = 0; k < kVector; ++k) {
        const int64_t longTerm = int64_t{gl} * 4 * pSrc[k] + int64_t{glb} * pSrc[k - kp]; // Q16
        in[kShortOrder + k] = fix::sat16_64((longTerm + (1 << 15)) >> 16);
    }
    g728Kernels().poleZero(pCoeffs, in, out);
    for (int k = 0; k < kVector; ++k) {
        const int at = kShortOrder + k;
        const int64_t tilted = (int64_t{out[at]} << kShift) + int64_t{tiltz} * out[at - 1] + kHalf;
        filtered[k] = fix::sat16_64(tilted >> kShift);
        before += std::abs(int{pSrc[k]});
        after += std::abs(int{filtered[k]});
    }
    // The filtered vector counts from a magnitude of 1 on, which is 4 in Q2; no scale above 32 is needed.
    int64_t scale = kOne;
    if (after > 4) {
        // With 48 bits at most, the quotient of the doubles is cut off as that of the integers is.
        scale = static_cast<int64_t>(static_cast<double>(int64_t{before} << 30) / after);
    }
    for (int k = 0; k < kVector; ++k) {
        post.scale = (post.scale * kSteady + scale * kFresh) >> 15;
        pDst[k] = fix::sat16_64((((post.scale + (1 << 14)) >> 15) * filtered[k] + (1 << 14)) >> 15);
    }
    std::memcpy(post.in, in + kVector, sizeof post.in);
    std::memcpy(post.out, out + kVector, sizeof post.out);
    state.give(pMem);
    return vekStsNoErr;
}
