// What the voice activity of both adaptive multi-rate codecs shares: the all-pass filters that split a frame into
// bands, the levels of the bands and the noise beneath them (TS 26.094 option 1, TS 26.194).
#pragma once

#include <algorithm>

#include "sc/common/fixmath.h"
#include "vekdefs.h"

namespace vek::bandvad {

// One step of an all-pass filter of first order.
inline Vek16s allPass(Vek16s x, Vek16s& memory, Vek16s c) {
    const Vek16s before = memory;
    memory = fix::sub(x, fix::mult(c, before));
    return fix::add(before, fix::mult(c, memory));
}

inline Vek16s halved(int v) {
    return static_cast<Vek16s>(fix::sat16(v) >> 1);
}

constexpr Vek16s kLeastNoise = 40;
constexpr Vek16s kFilter5First = 21955;
constexpr Vek16s kFilter5Second = 6390;
constexpr Vek16s kFilter3 = 13363;

// Splits two successive samples into the lower and the upper half of their band.
inline void split5(Vek16s& even, Vek16s& odd, Vek16s (&memory)[2]) {
    const Vek16s a = allPass(even, memory[0], kFilter5First);
    const Vek16s b = allPass(odd, memory[1], kFilter5Second);
    even = halved(a + b);
    odd = halved(a - b);
}

inline void split3(Vek16s& even, Vek16s& odd, Vek16s& memory) {
    const Vek16s a = even;
    const Vek16s b = allPass(odd, memory, kFilter3);
    even = halved(a + b);
    odd = halved(a - b);
}

// Sum of magnitudes of `count` elements, each `step` behind the one before, from the first `fresh` of this frame back
// to those of the last frame that come behind its first `fresh`, whose sum *kept brings along.
inline Vek16s level(const Vek16s* data, int count, int fresh, int step, int scale, Vek16s* kept) {
    using namespace fix;
    int32_t last = 0;
    for (int i = fresh; i < count; ++i) {
        last += 2 * abs_s(data[step * i]);
    }
    int32_t sum = L_add(last, L_shl(*kept, 16 - scale));
    *kept = extract_h(L_shl(last, scale));
    for (int i = 0; i < fresh; ++i) {
        sum = L_add(sum, 2 * abs_s(data[step * i]));
    }
    return extract_h(L_shl(sum, scale));
}

// Sum over the bands of the larger of level and mean over the smaller, Q6.
template <int Bands>
Vek16s unrest(const Vek16s (&levels)[Bands], const Vek16s (&means)[Bands]) {
    using namespace fix;
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

// The noise follows the levels of the last frame, upwards by the share `up` (Q15) and by `rise`, downwards by the
// share `down` (Q15).
template <int Bands>
void followNoise(const Vek16s (&levels)[Bands], Vek16s up, Vek16s down, Vek16s rise, Vek16s most,
                 Vek16s (&noise)[Bands]) {
    using namespace fix;
    for (int i = 0; i < Bands; ++i) {
        const Vek16s above = sub(levels[i], noise[i]);
        if (above < 0) {
            noise[i] = std::max(add(-2, add(noise[i], mult_r(down, above))), kLeastNoise);
        } else {
            noise[i] = std::min(add(rise, add(noise[i], mult_r(up, above))), most);
        }
    }
}

} // namespace vek::bandvad
