// The quantiser of G.726 and the state of a codec. Names of the published blocks stand in capitals.
#pragma once

#include <bit>
#include <cstdint>

#include "sc/common/level_ns.h"

namespace vek::g726 {

constexpr int kZeros = 6;
constexpr int kPoles = 2;
// Of the vectors in which the zeros stand; behind these all is 0.
constexpr int kLanes = 8;

// Numbers of the history have a sign, an exponent of 4 bits and a mantissa of 6.
constexpr int kSignOfFloat = 0x400;
constexpr int kUnitFloat = 32; // the float of 0

struct Codec {
    int32_t started;
    int32_t rate;
    int32_t law;
    int32_t slow;      // YL
    int32_t fast;      // YU
    int32_t shortMean; // DMS
    int32_t longMean;  // DML
    int32_t speed;     // AP
    int32_t poles[kPoles];
    int32_t zeros[kLanes];
    int32_t signs[kPoles]; // PK
    int32_t differences[kLanes];
    int32_t signals[kPoles];
    int32_t tone; // TD
};

inline namespace VEK_LEVEL_NS {

// Quantiser of a rate, for codes of the lower half of the range; the upper half mirrors it.
struct Rate {
    int bits;
    int thresholds; // decision levels of magnitudes
    const int16_t* levels;
    const int16_t* logs;    // RECONST
    const int32_t* weights; // FUNCTW
    const int16_t* speeds;  // FUNCTF
    int leak;               // shift of the zeros' leakage
};

constexpr int16_t kLevels16[] = {261};
constexpr int16_t kLogs16[] = {116, 365};
constexpr int32_t kWeights16[] = {-704, 14048};
constexpr int16_t kSpeeds16[] = {0, 0xe00};

constexpr int16_t kLevels24[] = {8, 218, 331};
constexpr int16_t kLogs24[] = {-2048, 135, 273, 373};
constexpr int32_t kWeights24[] = {-128, 960, 4384, 18624};
constexpr int16_t kSpeeds24[] = {0, 0x200, 0x400, 0xe00};

constexpr int16_t kLevels32[] = {-124, 80, 178, 246, 300, 349, 400};
constexpr int16_t kLogs32[] = {-2048, 4, 135, 213, 273, 323, 373, 425};
constexpr int32_t kWeights32[] = {-384, 576, 1312, 2048, 3584, 6336, 11360, 35904};
constexpr int16_t kSpeeds32[] = {0, 0, 0, 0x200, 0x200, 0x200, 0x600, 0xe00};

constexpr int16_t kLevels40[] = {-122, -16, 68, 139, 198, 250, 298, 339, 378, 413, 445, 475, 502, 528, 553};
constexpr int16_t kLogs40[] = {-2048, -66, 28, 104, 169, 224, 274, 318, 358, 395, 429, 459, 488, 514, 539, 566};
constexpr int32_t kWeights40[] = {448,  448,  768,  1248, 1280,  1312,  1856,  3200,
                                  4512, 5728, 7008, 8960, 11456, 14080, 16928, 22272};
constexpr int16_t kSpeeds40[] = {0,     0,     0,     0,     0,     0x200, 0x200, 0x200,
                                 0x200, 0x200, 0x400, 0x600, 0x800, 0xa00, 0xc00, 0xc00};

constexpr Rate kRates[] = {
    {2, 1, kLevels16, kLogs16, kWeights16, kSpeeds16, 8},
    {3, 3, kLevels24, kLogs24, kWeights24, kSpeeds24, 8},
    {4, 7, kLevels32, kLogs32, kWeights32, kSpeeds32, 8},
    {5, 15, kLevels40, kLogs40, kWeights40, kSpeeds40, 9},
};

// LOG, SUBTB and QUAN.
VEK_INLINE int quantise(const Rate& r, int difference, int y) {
    const int magnitude = difference < 0 ? -difference : difference;
    const int exponent = std::bit_width(static_cast<unsigned>(magnitude >> 1));
    const int mantissa = ((magnitude << 7) >> exponent) & 127;
    const int level = (exponent << 7) + mantissa - (y >> 2);
    // By bisection: there is one level less than a power of 2.
    int i = 0;
    for (int half = (r.thresholds + 1) / 2; half > 0; half /= 2) {
        i += level >= r.levels[i + half - 1] ? half : 0;
    }
    const int all = 2 * r.thresholds + 1;
    if (difference < 0) {
        return all - i;
    }
    return i == 0 && r.bits > 2 ? all : i;
}

} // namespace VEK_LEVEL_NS
} // namespace vek::g726
