// Long-term postfilter, short-term postfilter with its tilt, and the control of the level.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "sc/common/cutsum.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/g728/pastsamples.h"
#include "sc/g728/tables.h"
#include "sc/kernels/g728.h"
#include "veksc_g728.h"

using namespace vek::g728;

namespace {

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

// In 32 bits, where compilers otherwise choose 16 and widen the result.
inline int magnitude(int v) {
    const int sign = v >> 31;
    return (v ^ sign) - sign;
}

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
    // In the caller's memory: a copy of the whole would be read in other pieces than it is written in.
    uint32_t mark = 0;
    auto* memory = reinterpret_cast<Vek8u*>(pMem);
    std::memcpy(&mark, memory + offsetof(PostState, mark), sizeof mark);
    if (mark != PostState::kMark) {
        return vekStsStateErr;
    }
    Vek8u* content = memory + offsetof(PostState, content);
    Vek8u* pastIn = content + offsetof(Post, in);
    Vek8u* pastOut = content + offsetof(Post, out);
    // In the order of time, with the ten samples before.
    Vek16s in[kShortOrder + kVector];
    Vek16s out[kShortOrder + kVector];
    std::memcpy(in, pastIn, kShortOrder * sizeof(Vek16s));
    std::memcpy(out, pastOut, kShortOrder * sizeof(Vek16s));
    int filtered[kVector];
    const Vek16s* periodBefore = pSrc - kp;
    int before = 0;
    int after = 0;
#pragma GCC unroll 5
    for (int k = 0; k < kVector; ++k) {
        const int64_t longTerm = int64_t{gl} * 4 * pSrc[k] + int64_t{glb} * periodBefore[k]; // Q16
        in[kShortOrder + k] = static_cast<Vek16s>(cut16((longTerm + (1 << 15)) >> 16));
    }
    g728Kernels().poleZero(pCoeffs, in, out);
    std::memcpy(pastIn, in + kVector, kShortOrder * sizeof(Vek16s));
    moveOn(pastOut, out + kShortOrder); // which the next vector waits for
#pragma GCC unroll 5
    for (int k = 0; k < kVector; ++k) {
        const int at = kShortOrder + k;
        const int tilted = out[at] * (1 << kShift) + tiltz * out[at - 1] + kHalf;
        filtered[k] = static_cast<int>(cut16(tilted >> kShift));
        before += magnitude(pSrc[k]);
        after += magnitude(filtered[k]);
    }
    // The filtered vector counts from a magnitude of 1 on, which is 4 in Q2; no scale above 32 is needed.
    int64_t scale = kOne;
    if (after > 4) {
        // With 48 bits at most, the quotient of the doubles is cut off as that of the integers is.
        scale = static_cast<int64_t>(static_cast<double>(int64_t{before} << 30) / after);
    }
    int64_t moving = 0;
    std::memcpy(&moving, content + offsetof(Post, scale), sizeof moving);
#pragma GCC unroll 5
    for (int k = 0; k < kVector; ++k) {
        moving = (moving * kSteady + scale * kFresh) >> 15;
        pDst[k] = static_cast<Vek16s>(cut16((((moving + (1 << 14)) >> 15) * filtered[k] + (1 << 14)) >> 15));
    }
    std::memcpy(content + offsetof(Post, scale), &moving, sizeof moving);
    return vekStsNoErr;
}
