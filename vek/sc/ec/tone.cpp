// Detector of the 2100 Hz tone with phase reversals. 10 ms hold 21 periods, so that the phases of blocks of 10 ms
// compare directly; the advance that a tone slightly off brings from block to block is followed.
#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>

#include "sc/common/signal_check.h"
#include "sc/ec/state.h"
#include "veksc_ec.h"

namespace {

using namespace vek;

constexpr double kTone = 2100;
// Mean squares for a full scale of 1 at +3.14 dBm0, the sine's 0.5.
constexpr double kToneLevel = 0.5 * 1.9e-4;  // -34 dBm0
constexpr double kHoldLevel = 0.5 * 1.22e-4; // -36 dBm0
constexpr double kPurity = 0.75;             // 21 Hz off, the block's sum holds 0.86 of the tone
constexpr double kReversal = -0.70710678;    // cosine of 135 degrees
constexpr int kShortest = 40;                // blocks between reversals
constexpr int kLongest = 50;
constexpr int kHold = 25;
constexpr int kGap = 2; // blocks that a reversal may spoil

// cos and sin over one block.
template <int Block>
struct Rotation {
    std::array<float, Block> re{};
    std::array<float, Block> im{};
    Rotation() {
        for (int n = 0; n < Block; ++n) {
            const double angle = 2 * std::numbers::pi * kTone * n / (Block * 100);
            re[static_cast<size_t>(n)] = static_cast<float>(std::cos(angle));
            im[static_cast<size_t>(n)] = static_cast<float>(std::sin(angle));
        }
    }
};
const Rotation<80> g_narrow;
const Rotation<160> g_wide;

using Phasor = std::complex<double>;

struct Detector {
    uint32_t mark;
    int block;    // samples
    int filled;   // of the block
    int spoilt;   // blocks since the last pure one
    int since;    // blocks since the last reversal, below 0 for none
    int quiet;    // blocks below the holding level
    int detected; // 0 or 1
    double re, im, energy;
    Phasor last;    // of the last pure block, length 1
    Phasor advance; // from block to block, length 1

    void judge(double scale);
    void reverse();
};

void Detector::reverse() {
    detected |= since >= kShortest && since <= kLongest;
    since = 0;
}

void Detector::judge(double scale) {
    const double level = energy * scale / block;
    const Phasor sum{re, -im};
    const double inTone = 2 * std::norm(sum) / block;
    if (since >= 0) {
        ++since;
    }
    if (level >= kToneLevel && inTone >= kPurity * energy) {
        const Phasor now = sum / std::abs(sum);
        if (spoilt <= kGap) {
            Phasor turn = now * std::conj(last);
            for (int i = 0; i <= spoilt; ++i) {
                turn *= std::conj(advance);
            }
            if (turn.real() < kReversal) {
                reverse();
            } else if (spoilt == 0) {
                // Only slow turns belong to the tone's frequency.
                const Phasor followed = advance * (1.0 + 0.25 * (turn - 1.0));
                advance = followed / std::abs(followed);
            }
        } else {
            advance = 1;
            since = -1;
        }
        last = now;
        spoilt = 0;
    } else if (spoilt <= kGap) {
        ++spoilt;
    }
    quiet = level >= kHoldLevel ? 0 : std::min(quiet + 1, kHold);
    if (quiet >= kHold) {
        detected = 0;
        since = -1;
    }
    filled = 0;
    re = im = energy = 0;
}

template <typename T>
struct ToneForm;
template <>
struct ToneForm<Vek16s> {
    static constexpr uint32_t mark = 0x4e4f5431;
    static constexpr double scale = 1.0 / (32768.0 * 32768.0);
};
template <>
struct ToneForm<Vek32f> {
    static constexpr uint32_t mark = 0x4e4f5432;
    static constexpr double scale = 1;
};

VekStatus check(const void* p, int freq) {
    if (anyNull(p)) {
        return vekStsNullPtrErr;
    }
    return ec::knownRate(freq) ? vekStsNoErr : vekStsBadArgErr;
}

VekStatus sizeOf(int freq, int* pSize) {
    const VekStatus status = check(pSize, freq);
    if (status == vekStsNoErr) {
        *pSize = ec::bytesOf<Detector>(0);
    }
    return status;
}

template <typename T>
VekStatus init(void* pState, int freq) {
    const VekStatus status = check(pState, freq);
    if (status == vekStsNoErr) {
        *ec::placeOf<Detector>(pState) = {ToneForm<T>::mark, freq / 100, 0, kGap + 1, -1, 0, 0, 0, 0, 0, 1, 1};
    }
    return status;
}

template <typename T>
VekStatus detect(const T* pSignal, int len, int* pResult, void* pState) {
    if (const VekStatus status = checkSignal(len, pSignal, pResult, pState); status != vekStsNoErr) {
        return status;
    }
    Detector& d = *ec::placeOf<Detector>(pState);
    if (d.mark != ToneForm<T>::mark) {
        return vekStsStateErr;
    }
    const float* cosine = d.block == 80 ? g_narrow.re.data() : g_wide.re.data();
    const float* sine = d.block == 80 ? g_narrow.im.data() : g_wide.im.data();
    for (int i = 0; i < len;) {
        const int n = std::min(len - i, d.block - d.filled);
        double re[2] = {};
        double im[2] = {};
        double energy[2] = {};
        for (int k = 0; k < n; ++k) {
            const double x = pSignal[i + k];
            re[k % 2] += x * cosine[d.filled + k];
            im[k % 2] += x * sine[d.filled + k];
            energy[k % 2] += x * x;
        }
        d.re += re[0] + re[1];
        d.im += im[0] + im[1];
        d.energy += energy[0] + energy[1];
        d.filled += n;
        i += n;
        if (d.filled == d.block) {
            d.judge(ToneForm<T>::scale);
        }
    }
    *pResult = d.detected;
    return vekStsNoErr;
}

} // namespace

VekStatus veksToneDetectGetStateSize_EC_16s(int freq, int* pSize) {
    return sizeOf(freq, pSize);
}
VekStatus veksToneDetectGetStateSize_EC_32f(int freq, int* pSize) {
    return sizeOf(freq, pSize);
}
VekStatus veksToneDetectInit_EC_16s(VeksToneDetectState_EC_16s* pState, int freq) {
    return init<Vek16s>(pState, freq);
}
VekStatus veksToneDetectInit_EC_32f(VeksToneDetectState_EC_32f* pState, int freq) {
    return init<Vek32f>(pState, freq);
}
VekStatus veksToneDetect_EC_16s(const Vek16s* pSignal, int len, int* pResult, VeksToneDetectState_EC_16s* pState) {
    return detect(pSignal, len, pResult, pState);
}
VekStatus veksToneDetect_EC_32f(const Vek32f* pSignal, int len, int* pResult, VeksToneDetectState_EC_32f* pState) {
    return detect(pSignal, len, pResult, pState);
}
