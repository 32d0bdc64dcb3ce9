// Vector of the algebraic codebook from the words of the bit stream.
#include <algorithm>

#include "sc/amrwb/pulselayout.h"
#include "sc/common/signal_check.h"
#include "veksc_amrwb.h"

using namespace vek;
using namespace vek::amrwb;

namespace {

constexpr int kPulse = 512;

void addPulse(Vek16s* code, int position, bool negative) {
    code[position] = static_cast<Vek16s>(code[position] + (negative ? -kPulse : kPulse));
}

} // namespace

VekStatus veksAlgebraicCodebookDecode_AMRWB_16s(const Vek16s* pSrcIdxs, Vek16s* pDstFixedCodevec, VekSpchBitRate mode) {
    if (anyNull(pSrcIdxs, pDstFixedCodevec)) {
        return vekStsNullPtrErr;
    }
    const Rate rate = rateOf(mode);
    if (rate == Rate::None) {
        return vekStsBitRateErr;
    }
    std::fill_n(pDstFixedCodevec, kSubframe, Vek16s{0});
    if (rate == Rate::R660) {
        const int word = pSrcIdxs[0];
        addPulse(pDstFixedCodevec, 2 * ((word >> 6) & 31), ((word >> 11) & 1) != 0);
        addPulse(pDstFixedCodevec, 2 * (word & 31) + 1, ((word >> 5) & 1) != 0);
        return vekStsNoErr;
    }
    const WordLayout layout = layoutOf(rate);
    for (int t = 0; t < kTracks; ++t) {
        const int low = layout.lowBits[t];
        auto word = static_cast<uint32_t>(static_cast<uint16_t>(pSrcIdxs[t]));
        if (low > 0) {
            word = (word << low) + (static_cast<uint16_t>(pSrcIdxs[t + kTracks]) & ((1U << low) - 1));
        }
        int pulses[kMostOnTrack];
        decodeTrack(word & ((1U << kTrackBits[layout.pulses[t]]) - 1), layout.pulses[t], pulses);
        for (int i = 0; i < layout.pulses[t]; ++i) {
            addPulse(pDstFixedCodevec, kTracks * (pulses[i] & 15) + t, (pulses[i] & kTrackPositions) != 0);
        }
    }
    return vekStsNoErr;
}
