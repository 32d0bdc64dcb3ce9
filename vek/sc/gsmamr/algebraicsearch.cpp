// Search of the algebraic codebook at each rate: which pulses are tried, the vector made of those found, its filtering
// and its words for the bit stream.
#include <algorithm>
#include <array>
#include <cstdlib>

#include "sc/common/fixmath.h"
#include "sc/common/pulsesearch.h"
#include "sc/common/signal_check.h"
#include "sc/gsmamr/codewords.h"
#include "sc/gsmamr/speechrates.h"
#include "veksc_gsmamr.h"

using namespace vek::gsmamr;
using namespace vek::pulses;

namespace {

// x[i] += sharp * x[i - lag], sharp Q15.
void sharpen(Vek16s* x, int lag, Vek16s sharp) {
    for (int i = lag; i < kSubframe; ++i) {
        x[i] = add(x[i], mult(x[i - lag], sharp));
    }
}

// All turns of a list of tracks, by the last one coming to the front.
template <size_t Pulses, size_t Lists>
constexpr auto turned(const int8_t (&lists)[Lists][Pulses]) {
    std::array<PulseChain, Pulses * Lists> chains{};
    for (size_t l = 0; l < Lists; ++l) {
        for (size_t turn = 0; turn < Pulses; ++turn) {
            for (size_t i = 0; i < Pulses; ++i) {
                chains[l * Pulses + turn].tracks[(i + turn) % Pulses] = lists[l][i];
            }
        }
    }
    return chains;
}

// Two pulses of 9 bits: two pairs of tracks a subframe.
constexpr PulseChain kPairs[kSubframes][2] = {
    {{{0, 2}}, {{1, 3}}}, {{{0, 3}}, {{2, 4}}}, {{{0, 2}}, {{1, 4}}}, {{{0, 3}}, {{1, 4}}}};
// Two pulses of 11 bits.
constexpr PulseChain kFreePairs[8] = {{{1, 0}}, {{1, 1}}, {{1, 2}}, {{1, 4}}, {{3, 0}}, {{3, 1}}, {{3, 2}}, {{3, 4}}};
constexpr auto kThrees = turned<3, 4>({{0, 1, 2}, {0, 1, 4}, {0, 3, 2}, {0, 3, 4}});
constexpr auto kFours = turned<4, 2>({{0, 1, 2, 3}, {0, 1, 2, 4}});

// The vector of the pulses, and the response to it. Pulses at one place: the last one stands (Last) or they add up.
struct Weights {
    int vectorPlus;
    int vectorMinus;
    int filterPlus;
    int filterMinus;
    bool addUp;
};
constexpr Weights kUnlike{8191, -8192, 32767, -32768, false};
constexpr Weights kEight{8191, -8191, 32767, -32768, true};
constexpr Weights kTen{4096, -4096, 8192, -8192, true};

void build(const PulsesFound& found, int pulses, const Weights& weights, const Vek16s* h, Vek16s* vector, Vek16s* y) {
    std::fill_n(vector, kSubframe, Vek16s{0});
    int32_t most[kSubframe] = {};
    for (int k = 0; k < pulses; ++k) {
        const int at = found.positions[k];
        const int value = found.sign[at] > 0 ? weights.vectorPlus : weights.vectorMinus;
        vector[at] = weights.addUp ? sat16(vector[at] + value) : static_cast<Vek16s>(value);
        for (int i = at; i < kSubframe; ++i) {
            most[i] += std::abs(h[i - at]);
        }
    }
    // Each pulse's share saturates the sum, where one can be that large.
    const bool fits = *std::max_element(most, most + kSubframe) < (int64_t{1} << 30) / -weights.filterMinus;
    int32_t sums[kSubframe] = {};
    for (int k = 0; k < pulses; ++k) {
        const int at = found.positions[k];
        const auto factor = static_cast<Vek16s>(found.sign[at] > 0 ? weights.filterPlus : weights.filterMinus);
        for (int i = at; i < kSubframe; ++i) {
            sums[i] = fits ? sums[i] + 2 * h[i - at] * factor : L_mac(sums[i], h[i - at], factor);
        }
    }
    for (int i = 0; i < kSubframe; ++i) {
        y[i] = round_s(sums[i]);
    }
}

} // namespace

VekStatus veksAlgebraicCodebookSearch_GSMAMR_16s(Vek16s valIntPitchLag, Vek16s valBoundQAdptGain,
                                                 const Vek16s* pSrcFixedTarget, const Vek16s* pSrcLtpResidual,
                                                 Vek16s* pSrcDstImpulseResponse, Vek16s* pDstFixedVector,
                                                 Vek16s* pDstFltFixedVector, Vek16s* pDstEncPosSign, Vek16s subFrame,
                                                 VekSpchBitRate mode) {
    if (anyNull(pSrcFixedTarget, pSrcLtpResidual, pSrcDstImpulseResponse, pDstFixedVector, pDstFltFixedVector,
                pDstEncPosSign)) {
        return vekStsNullPtrErr;
    }
    if (!isRateOrDtx(mode)) {
        return vekStsBitRateErr;
    }
    if (!isSubframe(subFrame) || valIntPitchLag < 17 || valIntPitchLag > 144 || valBoundQAdptGain < 0) {
        return vekStsRangeErr;
    }
    const Vek16s* target = pSrcFixedTarget;
    const Vek16s* h = pSrcDstImpulseResponse;
    const Vek16s sharp = shl(valBoundQAdptGain, 1);
    sharpen(pSrcDstImpulseResponse, valIntPitchLag, sharp);
    PulsesFound found;
    int pulses = 0;
    const Weights* weights = &kUnlike;
    switch (mode) {
    case VEK_SPCHBR_4750:
    case VEK_SPCHBR_5150:
        pulses = 2;
        searchChains(target, h, kPairs[subFrame], 2, pulses, 8, found);
        encodePair9(found, subFrame, pDstEncPosSign);
        break;
    case VEK_SPCHBR_5900:
        pulses = 2;
        searchChains(target, h, kFreePairs, 8, pulses, 8, found);
        encodePair11(found, pDstEncPosSign);
        break;
    case VEK_SPCHBR_6700:
        pulses = 3;
        searchChains(target, h, kThrees.data(), kThrees.size(), pulses, 6, found);
        encodeThree14(found, pDstEncPosSign);
        break;
    case VEK_SPCHBR_7400:
    case VEK_SPCHBR_7950:
        pulses = 4;
        searchChains(target, h, kFours.data(), kFours.size(), pulses, 4, found);
        encodeFour17(found, pDstEncPosSign);
        break;
    case VEK_SPCHBR_10200:
        pulses = 8;
        weights = &kEight;
        searchPairs(target, pSrcLtpResidual, h, pulses, found);
        encodeEight31(found, pDstEncPosSign);
        break;
    default:
        pulses = 10;
        weights = &kTen;
        searchPairs(target, pSrcLtpResidual, h, pulses, found);
        encodeTen35(found, pDstEncPosSign);
        break;
    }
    build(found, pulses, *weights, h, pDstFixedVector, pDstFltFixedVector);
    sharpen(pDstFixedVector, valIntPitchLag, sharp);
    return vekStsNoErr;
}
