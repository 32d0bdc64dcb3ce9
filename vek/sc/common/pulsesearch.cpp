// The data of the pulse searches: target filtered backwards, signs, correlation matrix in the order of tracks.
#include "sc/common/pulsesearch.h"

#include <algorithm>
#include <cstring>

#include "sc/common/correlate.h"
#include "sc/common/correlationrows.h"
#include "sc/common/fixmath.h"
#include "veksc_filter.h"

using namespace vek::pulses;

namespace {

constexpr int kLen = kPulsePositions;

// How positions are dealt out to tracks: position = lane * tracks + track.
template <int Tracks, int Width>
struct Layout {
    static constexpr int kTracks = Tracks;
    static constexpr int kCount = kLen / Tracks;
    static constexpr int kStride = Tracks * Width;
    static constexpr int slot(int position) { return position % Tracks * Width + position / Tracks; }
    static constexpr int row(int position) { return position % Tracks * kCount + position / Tracks; }
    static int position(Pulse p) { return p.lane * Tracks + p.track; }
};
using Five = Layout<5, 8>;
using Four = Layout<4, 16>;

int32_t inverseRoot(int32_t v) {
    veksInvSqrt_32s_I(&v, 1);
    return v;
}

// The target filtered backwards, as large as the maxima of the tracks allow.
template <class L>
void backward(const Vek16s* target, const Vek16s* h, int drop, Vek16s* dn) {
    alignas(32) Vek16s a[kLen + kCorrPadding] = {};
    alignas(32) Vek16s b[kLen + kCorrPadding] = {};
    std::memcpy(a, target, kLen * sizeof(Vek16s));
    std::memcpy(b, h, kLen * sizeof(Vek16s));
    int32_t sums[kLen];
    correlate(a, b, kLen, kLen, [&sums](int, const auto* own, int count) {
        for (int k = 0; k < count; ++k) {
            sums[k] = sat32(2 * int64_t{own[k]});
        }
    });
    int32_t total = 5;
    for (int t = 0; t < L::kTracks; ++t) {
        int32_t most = 0;
        for (int i = t; i < kLen; i += L::kTracks) {
            most = std::max(most, L_abs(sums[i]));
        }
        total = L_add(total, most >> 1);
    }
    const int shift = norm_l(total) - drop;
    for (int i = 0; i < kLen; ++i) {
        dn[i] = round_s(L_shl(sums[i], shift));
    }
}

// The response with an energy a little below 1.0. Tells whether no sum of its products leaves 32 bits.
bool normalise(const Vek16s* h, Vek16s* scaled) {
    const int32_t energy = sat32(2 * corrKernels().dot16(h, h, kLen) + 2);
    if (extract_h(energy) == 32767) {
        for (int i = 0; i < kLen; ++i) {
            scaled[i] = static_cast<Vek16s>(h[i] >> 1);
        }
        return 2 * corrKernels().dot16(scaled, scaled, kLen) <= kMax32;
    }
    const Vek16s factor = mult(extract_h(L_shl(inverseRoot(energy >> 1), 7)), 32440);
    for (int i = 0; i < kLen; ++i) {
        scaled[i] = round_s(L_shl(L_mult(h[i], factor), 9));
    }
    return true;
}

// What the kernel makes of a response whose sums leave 32 bits: they saturate at each step.
template <class L>
void saturatingField(const Vek16s* h, const Vek16s* sign, PulseField& field) {
    alignas(32) int32_t rows[kLen * kLen];
    saturatingRows(h, rows);
    for (int i = 0; i < kLen; ++i) {
        for (int j = 0; j <= i; ++j) {
            const int r = std::min(((rows[(kLen - 1 - i) * kLen + i - j] >> 1) + 0x4000) >> 15, 32767);
            const int product = (sign[i] * sign[j]) >> 15;
            const auto turned = static_cast<Vek16s>(i == j ? r : (r * product) >> 15);
            field.rr[L::row(i) * L::kStride + L::slot(j)] = turned;
            field.rr[L::row(j) * L::kStride + L::slot(i)] = turned;
        }
        field.energy[L::slot(i)] = field.rr[L::row(i) * L::kStride + L::slot(i)];
    }
}

template <class L>
void fill(const Vek16s* h, const Vek16s* dn, const Vek16s* sign, PulseField& field) {
    if constexpr (L::kStride != kLen) {
        std::memset(field.dn, 0, sizeof field.dn);
        std::memset(field.energy, 0, sizeof field.energy);
        std::memset(field.rr, 0, sizeof field.rr);
    }
    for (int i = 0; i < kLen; ++i) {
        field.dn[L::slot(i)] = dn[i];
    }
    alignas(32) Vek16s scaled[kLen];
    if (normalise(h, scaled)) {
        pulseFieldKernels().field(scaled, sign, L::kTracks, field);
    } else {
        saturatingField<L>(scaled, sign, field);
    }
}

} // namespace

void vek::pulses::signedField(const Vek16s* target, const Vek16s* h, Vek16s* sign, PulseField& field) {
    Vek16s dn[kLen];
    backward<Five>(target, h, 1, dn);
    for (int i = 0; i < kLen; ++i) {
        sign[i] = static_cast<Vek16s>(dn[i] >= 0 ? 32767 : -32767);
        dn[i] = abs_s(dn[i]);
    }
    fill<Five>(h, dn, sign, field);
}

void vek::pulses::searchChains(const Vek16s* target, const Vek16s* h, const PulseChain* chains, int count, int pulses,
                               int kept, PulsesFound& found) {
    PulseField field;
    signedField(target, h, found.sign, field);
    std::fill_n(field.kept, kLen, true);
    for (int t = 0; t < Five::kTracks; ++t) {
        const Vek16s* strength = field.dn + t * Five::kCount;
        bool* keep = field.kept + t * Five::kCount;
        for (int dropped = kept; dropped < Five::kCount; ++dropped) {
            int weakest = -1;
            for (int k = 0; k < Five::kCount; ++k) {
                if (keep[k] && (weakest < 0 || strength[k] < strength[weakest])) {
                    weakest = k;
                }
            }
            keep[weakest] = false;
        }
    }
    Pulse best[4];
    pulseKernels().chains(field, chains, count, pulses, best);
    for (int i = 0; i < pulses; ++i) {
        found.positions[i] = Five::position(best[i]);
    }
}

namespace {

// Signs by the target and the residual, each over its root of energy; the strongest position of each track, and the
// tracks in turn from the one with the strongest of all.
template <class L>
void prepare(const Vek16s* residual, Vek16s* dn, Vek16s* sign, int8_t* tracks, int8_t* peaks, int pulses) {
    const Vek16s byResidual =
        extract_h(L_shl(inverseRoot(sat32(2 * corrKernels().dot16(residual, residual, kLen) + 256)), 5));
    const Vek16s byTarget = extract_h(L_shl(inverseRoot(sat32(2 * corrKernels().dot16(dn, dn, kLen) + 256)), 5));
    int strength[kLen];
    for (int i = 0; i < kLen; ++i) {
        // Of the shares in Q31, by 2^10 and rounded; neither factor is negative. -1 where the sum is.
        const int both = sat16((byResidual * residual[i] + byTarget * dn[i] + 16) >> 5);
        const int minus = both >> 31;
        sign[i] = static_cast<Vek16s>((32767 ^ minus) - minus);
        strength[i] = std::min((both ^ minus) - minus, 32767);
        dn[i] = static_cast<Vek16s>(std::min((dn[i] ^ minus) - minus, 32767));
    }
    int most = -1;
    int first = 0;
    for (int t = 0; t < L::kTracks; ++t) {
        // The place below the strength: of equal ones the first.
        int peak = 0;
        for (int lane = 0; lane < L::kCount; ++lane) {
            peak = std::max(peak, strength[lane * L::kTracks + t] * 16 + 15 - lane);
        }
        peaks[t] = static_cast<int8_t>(15 - peak % 16);
        if (peak / 16 > most) {
            most = peak / 16;
            first = t;
        }
    }
    for (int i = 0; i < pulses; ++i) {
        tracks[i] = static_cast<int8_t>((first + i) % L::kTracks);
    }
}

template <class L>
void pairsOn(const Vek16s* target, const Vek16s* residual, const Vek16s* h, int pulses, PulsesFound& found) {
    Vek16s dn[kLen];
    // Room for the maxima of all pulses of a track.
    backward<L>(target, h, pulses > 2 * L::kTracks ? 3 : 2, dn);
    int8_t tracks[kMostPulses];
    int8_t peaks[5];
    prepare<L>(residual, dn, found.sign, tracks, peaks, pulses);
    PulseField field;
    fill<L>(h, dn, found.sign, field);
    found.firstTrack = tracks[0];
    Pulse best[kMostPulses];
    pulseKernels().pairs(field, tracks, peaks, pulses, best);
    for (int i = 0; i < pulses; ++i) {
        found.positions[i] = L::position(best[i]);
    }
}

} // namespace

void vek::pulses::searchPairs(const Vek16s* target, const Vek16s* residual, const Vek16s* h, int pulses,
                              PulsesFound& found) {
    if (pulses == 8) {
        pairsOn<Four>(target, residual, h, pulses, found);
    } else {
        pairsOn<Five>(target, residual, h, pulses, found);
    }
}

void vek::pulses::signsAndPeaks(const Vek16s* residual, Vek16s* d, Vek16s* sign, int8_t (&peaks)[5]) {
    int8_t tracks[1];
    prepare<Five>(residual, d, sign, tracks, peaks, 1);
}

void vek::pulses::addResponse(const Vek16s* h, int position, bool plus, Vek16s* y) {
    for (int i = position; i < kLen; ++i) {
        y[i] = sat16(plus ? y[i] + h[i - position] : y[i] - h[i - position]);
    }
}
