// The wide-band search for pulses and gains. A row of lanes is worked on together; only where one of them beats the
// best so far are they gone through in order, so that the first of equals wins as in the recommendation.
#include "sc/kernels/widepulses.h"

namespace vek {
namespace {

inline int clip(int v) {
    return v > 32767 ? 32767 : v < -32768 ? -32768 : v;
}

void rows(const int16_t* h, int16_t* out) {
    int sum[kWideLen];
    for (int d = 0; d < kWideLen; ++d) {
        sum[d] = 0x4000;
    }
    for (int m = 0; m < kWideLen; ++m) {
        const int own = h[m];
        const int16_t* other = h + m;
        // Whole groups of sixteen, so that no rest is worked on by single elements.
        const int count = (kWideLen - m + 15) & ~15;
        int16_t* row = out + m * kWideLen;
        for (int d = 0; d < count; ++d) {
            sum[d] += own * other[d];
            row[d] = static_cast<int16_t>(sum[d] >> 15);
        }
    }
}

template <int Lanes>
void between(const int16_t* rows, int first, int second, const int16_t* sign, int16_t* __restrict out) {
    constexpr int step = kWideLen / Lanes;
    int16_t other[Lanes];
    for (int b = 0; b < Lanes; ++b) {
        other[b] = sign[step * b + second];
    }
    for (int a = 0; a < Lanes; ++a) {
        const int i = step * a + first;
        const int16_t* const row = rows + (kWideLen - 1 - i) * kWideLen + i - second;
        const int before = second < first ? a + 1 : a;
        int16_t* const to = out + a * Lanes;
#pragma GCC unroll 4
        for (int b = 0; b < before; ++b) {
            to[b] = row[-step * b];
        }
#pragma GCC unroll 4
        for (int b = before; b < Lanes; ++b) {
            const int j = step * b + second;
            to[b] = rows[(kWideLen - 1 - j) * kWideLen + j - i];
        }
    }
    // Only now, when what was stored by single elements is in place for loads of many.
    for (int a = 0; a < Lanes; ++a) {
        const int16_t own = sign[step * a + first];
        int16_t* const to = out + a * Lanes;
        for (int b = 0; b < Lanes; ++b) {
            const int v = to[b];
            const int turned = v == -32768 ? 32767 : -v;
            to[b] = static_cast<int16_t>(other[b] == own ? (v * 32767) >> 15 : turned);
        }
    }
}

void between16(const int16_t* rows, int first, int second, const int16_t* sign, int16_t* out) {
    between<16>(rows, first, second, sign, out);
}

void between32(const int16_t* rows, int first, int second, const int16_t* sign, int16_t* out) {
    between<32>(rows, first, second, sign, out);
}

void ranks(const int16_t* values, int8_t* rank) {
    constexpr int lanes = 16;
    alignas(32) int keys[lanes];
    alignas(32) int before[lanes] = {};
    for (int k = 0; k < lanes; ++k) {
        keys[k] = values[k] * lanes - k;
    }
#pragma GCC unroll 1
    for (int j = 0; j < lanes; ++j) {
        const int key = keys[j];
        for (int k = 0; k < lanes; ++k) {
            before[k] += key > keys[k] ? 1 : 0;
        }
    }
    for (int k = 0; k < lanes; ++k) {
        rank[k] = static_cast<int8_t>(before[k]);
    }
}

template <int Lanes>
void pair(const WidePair& p, WideBest& best) {
    alignas(32) int c[Lanes];
    alignas(32) int energy[Lanes];
    alignas(32) int square[Lanes];
    WideBest now = best;
    for (int i = 0; i < Lanes; ++i) {
        if (p.rank[i] >= p.tried) {
            continue;
        }
        const int own = p.energy + p.first[i];
        const int base = clip(p.correlation + p.dnFirst[i]);
        const int16_t* row = p.between + i * Lanes;
        const int weight = 1 << p.crossShift;
        int any = 0;
        for (int k = 0; k < Lanes; ++k) {
            c[k] = clip(base + p.dnSecond[k]);
            energy[k] = clip((own + p.second[k] + row[k] * weight) >> p.energyShift);
            const int q = (c[k] * c[k]) >> 15;
            square[k] = q > 32767 ? 32767 : q;
            any |= now.energy * square[k] > now.square * energy[k] ? 1 : 0;
        }
        if (any == 0) {
            continue;
        }
        for (int k = 0; k < Lanes; ++k) {
            if (now.energy * square[k] > now.square * energy[k]) {
                now = {square[k], energy[k], c[k], i, k};
            }
        }
    }
    best = now;
}

void pair16(const WidePair& p, WideBest& best) {
    pair<16>(p, best);
}

void pair32(const WidePair& p, WideBest& best) {
    pair<32>(p, best);
}

// The coefficients are a quarter of full scale and the gains bounded, so no sum leaves 32 bits.
int leastError(const int16_t* pairs, int count, int predicted, const GainForm& form) {
    alignas(32) int errors[128];
    const GainForm f = form;
    for (int i = 0; i < count; ++i) {
        const int pitch = pairs[2 * i];
        const int code = (pairs[2 * i + 1] * predicted + 0x4000) >> 15;
        const int pitch2 = (pitch * pitch + 0x4000) >> 15;
        const int both = (code * pitch + 0x4000) >> 15;
        const int code2 = (code * code) >> 15;
        const int fine = (code * code) & 0x7fff;
        int sum = (f.high[2] * fine) >> 2;
        sum += 2 * (f.low[0] * pitch2 + f.low[1] * pitch + f.low[2] * code2 + f.low[3] * code + f.low[4] * both);
        sum >>= 12;
        sum += 2 * (f.high[0] * pitch2 + f.high[1] * pitch + f.high[2] * code2 + f.high[3] * code + f.high[4] * both);
        errors[i] = sum;
    }
    int found = 0;
    for (int i = 1; i < count; ++i) {
        found = errors[i] < errors[found] ? i : found;
    }
    return found;
}

} // namespace

VEK_KERNEL_TABLE(WidePulseKernels, widePulseKernels) = {rows, between16, between32, ranks, pair16, pair32, leastError};

} // namespace vek
