// What the voice activity of both adaptive multi-rate codecs shares: the all-pass filters that split a frame into
// bands, the levels of the bands and the noise beneath them (TS 26.094 option 1, TS 26.194).
#pragma once

#include <algorithm>
#include <cstdlib>

#include "sc/common/fixmath.h"
#include "vekdefs.h"

namespace vek::bandvad {

using namespace fix;

// One step of an all-pass filter of first order.
inline Vek16s allPass(Vek16s x, Vek16s& memory, Vek16s c) {
    const Vek16s before = memory;
    memory = fix::sub(x, fix::mult(c, before));
    return fix::add(before, fix::mult(c, memory));
}

constexpr Vek16s kLeastNoise = 40;
constexpr Vek16s kStationary = 20;
constexpr Vek16s kFilter5First = 21955;
constexpr Vek16s kFilter5Second = 6390;
constexpr Vek16s kFilter3 = 13363;

// Whether a number of these leaves 16 bits.
template <typename... T>
bool anyOutside(T... v) {
    return ((static_cast<unsigned>(v + 32768)) | ...) > 65535;
}

// Splits two successive samples into the lower and the upper half of their band, halved or not. Where neither memories
// nor sum and difference leave 16 bits, which is nearly always, no step on the way has left them either.
template <int Halvings>
inline void split5(Vek16s& even, Vek16s& odd, int& memory0, int& memory1) {
    const int next0 = even - ((kFilter5First * memory0) >> 15);
    const int next1 = odd - ((kFilter5Second * memory1) >> 15);
    const int a = memory0 + ((kFilter5First * next0) >> 15);
    const int b = memory1 + ((kFilter5Second * next1) >> 15);
    if (anyOutside(next0, next1, a + b, a - b)) [[unlikely]] {
        auto kept0 = static_cast<Vek16s>(memory0);
        auto kept1 = static_cast<Vek16s>(memory1);
        const Vek16s cutA = allPass(even, kept0, kFilter5First);
        const Vek16s cutB = allPass(odd, kept1, kFilter5Second);
        even = static_cast<Vek16s>(fix::add(cutA, cutB) >> Halvings);
        odd = static_cast<Vek16s>(fix::sub(cutA, cutB) >> Halvings);
        memory0 = kept0;
        memory1 = kept1;
        return;
    }
    even = static_cast<Vek16s>((a + b) >> Halvings);
    odd = static_cast<Vek16s>((a - b) >> Halvings);
    memory0 = next0;
    memory1 = next1;
}

inline void split3(Vek16s& even, Vek16s& odd, int& memory) {
    const int a = even;
    const int next = odd - ((kFilter3 * memory) >> 15);
    const int b = memory + ((kFilter3 * next) >> 15);
    if (anyOutside(next, a + b, a - b)) [[unlikely]] {
        auto kept = static_cast<Vek16s>(memory);
        const Vek16s cut = allPass(odd, kept, kFilter3);
        odd = static_cast<Vek16s>(fix::sub(even, cut) >> 1);
        even = static_cast<Vek16s>(fix::add(even, cut) >> 1);
        memory = kept;
        return;
    }
    even = static_cast<Vek16s>((a + b) >> 1);
    odd = static_cast<Vek16s>((a - b) >> 1);
    memory = next;
}

// Splits a band whose samples stand `step` apart: the lower half of it takes the even ones' places, the upper one the
// odd ones'.
template <int Length, int Halvings = 1>
void splitBand5(Vek16s* x, int step, Vek16s (&memory)[2]) {
    int m0 = memory[0];
    int m1 = memory[1];
    for (int i = 0; i < Length; i += 2 * step) {
        split5<Halvings>(x[i], x[i + step], m0, m1);
    }
    memory[0] = static_cast<Vek16s>(m0);
    memory[1] = static_cast<Vek16s>(m1);
}

template <int Length>
void splitBand3(Vek16s* x, int step, Vek16s& memory) {
    int m = memory;
    for (int i = 0; i < Length; i += 2 * step) {
        split3(x[i], x[i + step], m);
    }
    memory = static_cast<Vek16s>(m);
}

// Sum of magnitudes of `count` elements, each `step` behind the one before, from the first `fresh` of this frame back
// to those of the last frame that come behind its first `fresh`, whose sum *kept brings along.
inline Vek16s level(const Vek16s* data, int count, int fresh, int step, int scale, Vek16s* kept) {
    // Halves of 16-bit numbers, which never leave 32 bits.
    int32_t last = 0;
    for (int i = fresh; i < count; ++i) {
        last += 2 * std::abs(data[step * i]);
    }
    int32_t sum = last + fix::L_shl(*kept, 16 - scale);
    *kept = fix::extract_h(fix::L_shl(last, scale));
    for (int i = 0; i < fresh; ++i) {
        sum += 2 * std::abs(data[step * i]);
    }
    return fix::extract_h(fix::L_shl(sum, scale));
}

// A band behind the filters: its samples stand `step` apart from `first` on, and the last `ahead` of them count for the
// next frame.
struct Band {
    int ahead, step, first, scale;
};

template <int Length, int Bands>
[[gnu::always_inline]] inline void levelsOf(const Vek16s* x, const Band (&bands)[Bands], Vek16s* kept, Vek16s* levels) {
    for (int b = 0; b < Bands; ++b) {
        const Band& band = bands[b];
        const int count = Length / band.step;
        levels[b] = level(x + band.first, count, count - band.ahead, band.step, band.scale, kept + b);
    }
}

// Sum over the bands of the larger of level and mean over the smaller, Q6.
template <int Bands>
Vek16s unrest(const Vek16s (&levels)[Bands], const Vek16s (&means)[Bands]) {
    constexpr Vek16s kLeast = 184;
    Vek16s sum = 0;
    for (int i = 0; i < Bands; ++i) {
        const Vek16s num = std::max({levels[i], means[i], kLeast});
        const Vek16s den = std::max(std::min(levels[i], means[i]), kLeast);
        const int norm = norm_s(den);
        sum = add(sum, shr(div_s(shr(num, 1), shl(den, norm)), 8 - norm));
    }
    return sum;
}

// Moves the means towards the levels: at once behind unrest, else slowly, more so behind an active frame.
template <int Bands>
void smooth(const Vek16s (&levels)[Bands], bool restless, bool active, Vek16s (&means)[Bands]) {
    const Vek16s speed = restless ? Vek16s{32767} : active ? Vek16s{3276} : Vek16s{16383};
    for (int i = 0; i < Bands; ++i) {
        means[i] = fix::add(means[i], fix::mult_r(speed, fix::sub(levels[i], means[i])));
    }
}

// Counts the frames down since the last restless one, and lets the means follow the levels.
template <int Bands>
void countStationary(const Vek16s (&levels)[Bands], bool restless, bool active, Vek16s& count, Vek16s (&means)[Bands]) {
    if (restless) {
        count = kStationary;
    } else if (active && count != 0) {
        count = fix::sub(count, 1);
    }
    smooth(levels, count == kStationary, active, means);
}

// How the noise follows the levels of the last frame: upwards by the share `up` (Q15) and by `rise`, downwards by the
// share `down` (Q15).
struct NoisePace {
    Vek16s up;
    Vek16s down;
    Vek16s rise;
};

inline NoisePace paceOf(bool pause, bool stationary) {
    if (pause) {
        return {1638, 2097, 2};
    }
    return stationary ? NoisePace{491, 1867, 2} : NoisePace{0, 1638, 0};
}

// The noise follows the levels of the last frame, whose place those of this one take.
template <int Bands>
void followNoise(const Vek16s (&levels)[Bands], const NoisePace& pace, Vek16s most, Vek16s (&oldLevels)[Bands],
                 Vek16s (&noise)[Bands]) {
    for (int i = 0; i < Bands; ++i) {
        const Vek16s above = sub(oldLevels[i], noise[i]);
        if (above < 0) {
            noise[i] = std::max(add(-2, add(noise[i], mult_r(pace.down, above))), kLeastNoise);
        } else {
            noise[i] = std::min(add(pace.rise, add(noise[i], mult_r(pace.up, above))), most);
        }
    }
    std::copy(levels, levels + Bands, oldLevels);
}

// Whether a frame counts as active: after at least `burst` active ones the next `hang` do so, too.
inline bool withHangover(bool active, Vek16s burst, Vek16s hang, Vek16s& burstCount, Vek16s& hangCount) {
    if (active) {
        burstCount = fix::add(burstCount, 1);
        if (burstCount >= burst) {
            hangCount = hang;
        }
        return true;
    }
    burstCount = 0;
    if (hangCount > 0) {
        hangCount = fix::sub(hangCount, 1);
        return true;
    }
    return false;
}

} // namespace vek::bandvad
