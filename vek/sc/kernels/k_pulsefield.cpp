// The matrix of the searches for pulses: energies of a response and the correlations of the responses from two
// positions, a row a position, in the order of tracks.
#include "sc/kernels/pulses.h"

#include "sc/kernels/registers.h"

namespace vek {
namespace {

constexpr int kLen = kPulsePositions;

// Eight sums of products with one product more each, and what they give with the signs taken out. The sums begin with
// the half that rounds them.
#if VEK_LEVEL == 0

void addToRow(int factor, const int16_t* part, const int16_t* turn, int32_t* sum, int16_t* to) {
    for (int x = 0; x < 8; ++x) {
        sum[x] += factor * part[x];
        const int r = sum[x] >> 15;
        to[x] = static_cast<int16_t>(((r > 32767 ? 32767 : r) * turn[x]) >> 15);
    }
}

#else

using namespace registers;

using Sums = hn::CappedTag<int32_t, 8>;
using Factors = hn::RepartitionToNarrow<Sums>;

using Row = hn::Vec<EightOf16>;

template <class V, int N>
VEK_INLINE Row saturated(const V (&s)[N]) {
    if constexpr (N == 1) {
        return hn::DemoteTo(kEightOf16, s[0]);
    } else {
        return hn::ReorderDemote2To(kEightOf16, s[0], s[N - 1]);
    }
}

VEK_INLINE void addToRow(int factor, const int16_t* part, const int16_t* turn, int32_t* sum, int16_t* to) {
    constexpr int parts = 8 / kLanesOf<Sums>;
    const hn::RebindToUnsigned<Sums> bits;
    const hn::Rebind<uint16_t, Sums> narrow;
    const auto f = hn::Set(Factors(), static_cast<int16_t>(factor));
    const auto* const p = reinterpret_cast<const uint16_t*>(part);
    hn::Vec<Sums> s[parts];
    for (int n = 0; n < parts; ++n) {
        // The upper halves have nothing to add.
        const auto wide = hn::PromoteTo(bits, hn::LoadU(narrow, p + n * kLanesOf<Sums>));
        s[n] = plusPairs(hn::Load(Sums(), sum + n * kLanesOf<Sums>), hn::BitCast(Factors(), wide), f);
        hn::Store(s[n], Sums(), sum + n * kLanesOf<Sums>);
        s[n] = hn::ShiftRight<15>(s[n]);
    }
    hn::StoreU(multCut(saturated(s), hn::LoadU(kEightOf16, turn)), kEightOf16, to);
}

template <class D>
VEK_INLINE void interleave(D d, Row a, Row b, Row& lower, Row& upper) {
    lower = hn::BitCast(kEightOf16, hn::InterleaveLower(d, hn::BitCast(d, a), hn::BitCast(d, b)));
    upper = hn::BitCast(kEightOf16, hn::InterleaveUpper(d, hn::BitCast(d, a), hn::BitCast(d, b)));
}

VEK_INLINE void transpose8(Row (&r)[8]) {
    Row t[8];
    for (int i = 0; i < 4; ++i) {
        interleave(kEightOf16, r[2 * i], r[2 * i + 1], t[2 * i], t[2 * i + 1]);
    }
    Row u[8];
    for (int i = 0; i < 2; ++i) {
        interleave(kFourOf32, t[4 * i], t[4 * i + 2], u[4 * i], u[4 * i + 1]);
        interleave(kFourOf32, t[4 * i + 1], t[4 * i + 3], u[4 * i + 2], u[4 * i + 3]);
    }
    for (int i = 0; i < 4; ++i) {
        interleave(hn::FixedTag<int64_t, 2>(), u[i], u[i + 4], r[2 * i], r[2 * i + 1]);
    }
}

alignas(16) constexpr int16_t kLane[8] = {0, 1, 2, 3, 4, 5, 6, 7};

// Completes the correlations of two tracks of five: those of a position with later ones mirror those of the later ones.
VEK_INLINE void mirrorTracks(int16_t* rr, int first, int second) {
    constexpr int lanes = 8;
    int16_t* const own = rr + first * lanes * kLen + second * lanes;
    int16_t* const other = rr + second * lanes * kLen + first * lanes;
    const auto lane = hn::Load(kEightOf16, kLane);
    Row r[lanes];
    for (int a = 0; a < lanes; ++a) {
        r[a] = hn::LoadU(kEightOf16, other + a * kLen);
    }
    transpose8(r);
    for (int a = 0; a < lanes; ++a) {
        const auto earlier = hn::Set(kEightOf16, static_cast<int16_t>(a)) > lane;
        r[a] = hn::IfThenElse(earlier, hn::LoadU(kEightOf16, own + a * kLen), r[a]);
        hn::StoreU(r[a], kEightOf16, own + a * kLen);
    }
    if (first != second) {
        transpose8(r);
        for (int a = 0; a < lanes; ++a) {
            hn::StoreU(r[a], kEightOf16, other + a * kLen);
        }
    }
}

#endif

template <int Tracks, int Count, int Width>
void mirror(int16_t* rr) {
#if VEK_LEVEL > 0
    if constexpr (Width == 8) {
        for (int first = 0; first < Tracks; ++first) {
            for (int second = first; second < Tracks; ++second) {
                mirrorTracks(rr, first, second);
            }
        }
        return;
    }
#endif
    for (int i = 1; i < kLen; ++i) {
        const int slot = i % Tracks * Width + i / Tracks;
        const int16_t* const row = rr + (i % Tracks * Count + i / Tracks) * Tracks * Width;
        for (int track = 0; track < Tracks; ++track) {
            int16_t* const column = rr + track * Count * Tracks * Width + slot;
            const int earlier = i / Tracks + (track < i % Tracks ? 1 : 0);
            for (int lane = 0; lane < earlier; ++lane) {
                column[lane * Tracks * Width] = row[track * Width + lane];
            }
        }
    }
}

// The correlations of a response whose sums fit 32 bits, in the order of tracks. Those of a position with the earlier
// positions of a track are one run of distances, the largest first, so that they come from one run of every Tracks-th
// element of the response.
template <int Tracks, int Count, int Width>
void fieldOn(const int16_t* h, const int16_t* sign, PulseField& field) {
    constexpr int stride = Tracks * Width;
    // Every Tracks-th element of the response before a track's, the last first, behind zeros.
    int16_t back[Tracks][Width + Count] = {};
    // The sign products by the own sign: equal signs give 32766, unlike ones -32767.
    int16_t turned[2][Width + stride] = {};
    for (int i = 0; i < kLen; ++i) {
        const int track = i % Tracks;
        const int lane = i / Tracks;
        back[Tracks - 1 - track][Width + Count - 1 - lane] = h[i];
        turned[0][Width + track * Width + lane] = sign[i] > 0 ? 32766 : -32767;
        turned[1][Width + track * Width + lane] = sign[i] > 0 ? -32767 : 32766;
    }
    alignas(32) int32_t sums[Tracks][Width];
    for (auto& sum : sums) {
        for (int32_t& s : sum) {
            s = 0x4000;
        }
    }
    int16_t edge[Width + stride];
    for (int m = 0; m < kLen; ++m) {
        const int lane = (kLen - 1 - m) / Tracks;
        const int own = (kLen - 1 - m) % Tracks;
        int16_t* const row = field.rr + (own * Count + lane) * stride;
        const int16_t* const turn = turned[sign[kLen - 1 - m] > 0 ? 0 : 1] + Width;
        // What is written in front of a track's first lane is overwritten by the track before or by a later row; the
        // first rows of the tracks have none, and get the little that is theirs from elsewhere.
        int16_t* const to = lane > 0 ? row : edge + Width;
        for (int track = Tracks - 1; track >= 0; --track) {
            // The last lane of the track that is not behind the position.
            const int last = track > own ? lane - 1 : lane;
            int32_t* const sum = sums[track > own ? own - track + Tracks : own - track];
            for (int x = 0; x < Width; x += 8) {
                const int at = track * Width + last - (Width - 1) + x;
                addToRow(h[m], back[track] + 1 + last + x, turn + at, sum + x, to + at);
            }
        }
        for (int track = 0; lane == 0 && track < own; ++track) {
            row[track * Width] = to[track * Width];
        }
        const int r = sums[0][Width - 1] >> 15;
        row[own * Width + lane] = static_cast<int16_t>(r > 32767 ? 32767 : r);
        field.energy[own * Width + lane] = row[own * Width + lane];
    }
    mirror<Tracks, Count, Width>(field.rr);
}

void field(const int16_t* h, const int16_t* sign, int tracks, PulseField& field) {
    if (tracks == 4) {
        fieldOn<4, 10, 16>(h, sign, field);
    } else {
        fieldOn<5, 8, 8>(h, sign, field);
    }
}

} // namespace

VEK_KERNEL_TABLE(PulseFieldKernels, pulseFieldKernels) = {field};

} // namespace vek
