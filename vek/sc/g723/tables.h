// Published figures of G.723.1 and the sizes that its functions share.
#pragma once

#include <cstdint>

#include "sc/common/fixmath.h"
#include "vekdefs.h"

namespace vek::g723 {

using namespace fix;

constexpr int kSubframe = 60;
constexpr int kFrame = 4 * kSubframe;
constexpr int kOrder = 10;
constexpr int kHistory = 148;
constexpr int kLeastDelay = 18;
constexpr int kMostDelay = 145;
constexpr int kShortDelay = kSubframe - 2; // below it the excitation repeats within a subframe
constexpr int kTaps = 5;

constexpr int kLsfEntries = 256;
extern const int16_t kLsfBook0[3][kLsfEntries];
extern const int16_t kLsfBook1[3][kLsfEntries];
extern const int16_t kLsfBook2[4][kLsfEntries];
constexpr int16_t kLsfMean[kOrder] = {3131, 4721, 7690, 10806, 13872, 16495, 19752, 22260, 25484, 27718};

// Per entry: five gains, five negative squares, ten negative products, as the criterion of the search takes them.
constexpr int kGainTerms = 20;
extern const int16_t kGains85[85][kGainTerms];
extern const int16_t kGains170[170][kGainTerms];

constexpr int kAmplitudes = 24;
constexpr int16_t kAmplitude[kAmplitudes] = {1,   2,   3,   4,   6,   9,   13,   18,   26,   38,   55,   80,
                                             115, 166, 240, 348, 502, 726, 1050, 1517, 2193, 3170, 4582, 6623};

constexpr bool isRate(VekSpchBitRate mode) {
    return mode == VEK_SPCHBR_5300 || mode == VEK_SPCHBR_6300;
}
constexpr bool isSubframe(int subFrame) {
    return subFrame >= 0 && subFrame < 4;
}
constexpr bool isDelay(int delay) {
    return delay >= kLeastDelay && delay <= kMostDelay;
}

// 32 times 16 bits with a doubled product, in units of 2^16.
constexpr int32_t mulHigh(int32_t a, int16_t b) {
    return fix::sat32((int64_t{a} * b) >> 15);
}

// A sum brought to 16 bits by the shift that fills the word for the largest one; n is norm_64 of that less 32.
constexpr int16_t mantissa(int64_t v, int n) {
    return fix::round_s(fix::scaleSat32(v, -n));
}

// Root of half the value in steps of two, for values below 2^31.
int16_t rootOfHalf(uint32_t v);

// 64 samples of the excitation `delay` back, from two before to two behind; what is newer than the history repeats.
void delayedExcitation(const int16_t* history, int delay, int16_t* out);

// Adds to x its copies that come every `delay` samples.
void pulseTrain(int16_t* x, int delay);

} // namespace vek::g723
