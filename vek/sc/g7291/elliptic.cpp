// Elliptic filters of the two bands: the high-pass of the lower, the low-pass of the higher one.
// Coefficients are those of the bilinear transform of the elliptic prototype, Q26; samples between the sections have 12
// bits behind the point.
#include "sc/common/fixmath.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "veksc_g7291.h"

using namespace vek;

namespace {

constexpr int kPoint = 26;
constexpr int kFraction = 12;
constexpr int kMostSections = 2;

// Numerator b0, b1, b0; denominator 1, a1, a2.
struct Section {
    int64_t b0, b1, a1, a2;
};

// Edge 50 Hz of 8000, ripple 0.25 dB, stop band 40 dB.
constexpr Section kHigh = {64131070, -128261659, -131983191, 64922373};
// Edge 3000 Hz of 8000: one section with ripple 0.5 dB and stop band 20 dB, or two with 0.25 and 50 dB.
constexpr Section kLow1 = {43716150, 85420592, 81488990, 34497216};
constexpr Section kLow2[kMostSections] = {{52329001, 98637031, 89041138, 53081354},
                                          {30704430, 60738230, 40577262, 14460965}};

// Inputs and outputs before.
struct Memory {
    int64_t x1, x2, y1, y2;
};

struct Memories {
    Memory memory[kMostSections] = {};
};
using HighState = Marked<Memories, 0x454c4831>;
using LowState = Marked<Memories, 0x454c4c31>;

// The loop waits for the last output only: the rest of the sum is made ahead.
inline int64_t step(const Section& s, Memory& m, int64_t x) {
    const int64_t known = s.b0 * (x + m.x2) + s.b1 * m.x1 - s.a2 * m.y2 + (int64_t{1} << (kPoint - 1));
    const int64_t y = (known - s.a1 * m.y1) >> kPoint;
    m = {x, m.x1, y, m.y1};
    return y;
}

inline Vek16s sample(int64_t y, int shift) {
    return fix::sat16_64((y + (int64_t{1} << (shift - 1))) >> shift);
}

} // namespace

VekStatus veksFilterHighpassGetStateSize_G7291_16s(int* pSize) {
    return HighState::size(pSize);
}

VekStatus veksFilterHighpassInit_G7291_16s(void* pState) {
    return HighState::init(pState);
}

VekStatus veksFilterHighpass_G7291_16s_ISfs(Vek16s* pSrcDst, int len, void* pStateHi, int scaleFactor) {
    constexpr int kMostScale = 8;
    if (const VekStatus status = checkSignal(len, pSrcDst, pStateHi); status != vekStsNoErr) {
        return status;
    }
    if (scaleFactor < -kMostScale || scaleFactor > kMostScale) {
        return vekStsScaleRangeErr;
    }
    return HighState::with(pStateHi, [&](auto& content) {
        Memory m = content.memory[0];
        for (int i = 0; i < len; ++i) {
            pSrcDst[i] = sample(step(kHigh, m, pSrcDst[i] * (1 << kFraction)), kFraction + scaleFactor);
        }
        content.memory[0] = m;
    });
}

VekStatus veksFilterLowpassGetStateSize_G7291_16s(int* pSize) {
    return LowState::size(pSize);
}

VekStatus veksFilterLowpassInit_G7291_16s(void* pState) {
    return LowState::init(pState);
}

VekStatus veksFilterLowpass_G7291_16s_I(Vek16s* pSrcDst, int len, void* pStateLo, int sections) {
    if (const VekStatus status = checkSignal(len, pSrcDst, pStateLo); status != vekStsNoErr) {
        return status;
    }
    if (sections < 1 || sections > kMostSections) {
        return vekStsFilterOrderErr;
    }
    return LowState::with(pStateLo, [&](auto& content) {
        Memory m = content.memory[0];
        Memory n = content.memory[1];
        if (sections == 1) {
            for (int i = 0; i < len; ++i) {
                pSrcDst[i] = sample(step(kLow1, m, pSrcDst[i] * (1 << kFraction)), kFraction);
            }
        } else {
            for (int i = 0; i < len; ++i) {
                const int64_t between = step(kLow2[0], m, pSrcDst[i] * (1 << kFraction));
                pSrcDst[i] = sample(step(kLow2[1], n, between), kFraction);
            }
        }
        content.memory[0] = m;
        content.memory[1] = n;
    });
}
