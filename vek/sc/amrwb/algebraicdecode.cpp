// Vector of the algebraic codebook from the words of the bit stream: the reverse of pulsewords.cpp.
#include <cstring>

#include "sc/amrwb/pulselayout.h"
#include "sc/common/signal_check.h"
#include "veksc_amrwb.h"

using namespace vek::amrwb;

namespace {

constexpr int kPulse = 512;

constexpr uint32_t bitsAt(uint32_t word, int shift, int count) {
    return (word >> shift) & ((1U << count) - 1);
}

Vek16s pulse(uint32_t negative) {
    return static_cast<Vek16s>(kPulse - 2 * kPulse * static_cast<int>(negative));
}

void addPulse(Vek16s* code, uint32_t position, uint32_t negative) {
    code[position] = static_cast<Vek16s>(code[position] + pulse(negative));
}

// The pulses of a track that has no others, where nothing stands yet: no store waits for one before.
template <int N>
void setOne(uint32_t w, Vek16s* at) {
    at[kTracks * bitsAt(w, 0, N)] = pulse(bitsAt(w, N, 1));
}

template <int N>
void setTwo(uint32_t w, Vek16s* at) {
    const uint32_t leader = bitsAt(w, N, N);
    const uint32_t other = bitsAt(w, 0, N);
    const Vek16s first = pulse(bitsAt(w, 2 * N, 1));
    at[kTracks * leader] = first;
    at[kTracks * other] = static_cast<Vek16s>(other == leader ? 2 * first : other < leader ? -first : first);
}

// Reads pulses on 2^N positions of a track, the first of which is `at`. Bits above the word's own do not matter.
template <int N>
void addOne(uint32_t w, Vek16s* at) {
    addPulse(at, kTracks * bitsAt(w, 0, N), bitsAt(w, N, 1));
}

template <int N>
void addTwo(uint32_t w, Vek16s* at) {
    const uint32_t leader = bitsAt(w, N, N);
    const uint32_t other = bitsAt(w, 0, N);
    const uint32_t negative = bitsAt(w, 2 * N, 1);
    addPulse(at, kTracks * leader, negative);
    addPulse(at, kTracks * other, negative ^ (other < leader ? 1U : 0U));
}

template <int N>
Vek16s* halfOf(uint32_t upper, Vek16s* at) {
    return at + kTracks * (upper << (N - 1));
}

template <int N>
void addThree(uint32_t w, Vek16s* at) {
    addTwo<N - 1>(w, halfOf<N>(bitsAt(w, 2 * N - 1, 1), at));
    addOne<N>(w >> (2 * N), at);
}

template <int N>
void addFourUneven(uint32_t w, Vek16s* at) {
    addTwo<N - 1>(w, halfOf<N>(bitsAt(w, 2 * N - 1, 1), at));
    addTwo<N>(w >> (2 * N), at);
}

template <int N>
void addFour(uint32_t w, Vek16s* at) {
    constexpr int m = N - 1;
    Vek16s* const upper = halfOf<N>(1, at);
    switch (bitsAt(w, 4 * N - 2, 2)) {
    case 0:
        addFourUneven<m>(w, halfOf<N>(bitsAt(w, 4 * m + 1, 1), at));
        break;
    case 1:
        addOne<m>(w >> (3 * m + 1), at);
        addThree<m>(w, upper);
        break;
    case 2:
        addTwo<m>(w >> (2 * m + 1), at);
        addTwo<m>(w, upper);
        break;
    default:
        addThree<m>(w >> (m + 1), at);
        addOne<m>(w, upper);
        break;
    }
}

template <int N>
void addFive(uint32_t w, Vek16s* at) {
    addThree<N - 1>(w >> (2 * N + 1), halfOf<N>(bitsAt(w, 5 * N - 1, 1), at));
    addTwo<N>(w, at);
}

template <int N>
void addSix(uint32_t w, Vek16s* at) {
    constexpr int m = N - 1;
    const uint32_t upper = bitsAt(w, 6 * N - 5, 1);
    Vek16s* const most = halfOf<N>(upper, at);
    Vek16s* const least = halfOf<N>(upper ^ 1, at);
    switch (bitsAt(w, 6 * N - 4, 2)) {
    case 0:
        addFive<m>(w >> N, most);
        addOne<m>(w, most);
        break;
    case 1:
        addFive<m>(w >> N, most);
        addOne<m>(w, least);
        break;
    case 2:
        addFour<m>(w >> (2 * m + 1), most);
        addTwo<m>(w, least);
        break;
    default:
        addThree<m>(w >> (3 * m + 1), at);
        addThree<m>(w, halfOf<N>(1, at));
        break;
    }
}

template <int Pulses, int LowBits>
void addTrack(const Vek16s* words, Vek16s* at) {
    constexpr int n = 4;
    auto w = static_cast<uint32_t>(static_cast<uint16_t>(words[0]));
    if constexpr (LowBits > 0) {
        w = (w << LowBits) + bitsAt(static_cast<uint16_t>(words[kTracks]), 0, LowBits);
    }
    if constexpr (Pulses == 1) {
        setOne<n>(w, at);
    } else if constexpr (Pulses == 2) {
        setTwo<n>(w, at);
    } else if constexpr (Pulses == 3) {
        addThree<n>(w, at);
    } else if constexpr (Pulses == 4) {
        addFour<n>(w, at);
    } else if constexpr (Pulses == 5) {
        addFive<n>(w, at);
    } else {
        addSix<n>(w, at);
    }
}

template <Rate kRate>
void addTracks(const Vek16s* words, Vek16s* code) {
    constexpr WordLayout layout = layoutOf(kRate);
    addTrack<layout.pulses[0], layout.lowBits[0]>(words, code);
    addTrack<layout.pulses[1], layout.lowBits[1]>(words + 1, code + 1);
    addTrack<layout.pulses[2], layout.lowBits[2]>(words + 2, code + 2);
    addTrack<layout.pulses[3], layout.lowBits[3]>(words + 3, code + 3);
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
    std::memset(pDstFixedCodevec, 0, kSubframe * sizeof(Vek16s));
    if (rate == Rate::R660) {
        const auto word = static_cast<uint32_t>(pSrcIdxs[0]);
        pDstFixedCodevec[2 * bitsAt(word, 6, 5)] = pulse(bitsAt(word, 11, 1));
        pDstFixedCodevec[2 * bitsAt(word, 0, 5) + 1] = pulse(bitsAt(word, 5, 1));
        return vekStsNoErr;
    }
    switch (rate) {
    case Rate::R885:
        addTracks<Rate::R885>(pSrcIdxs, pDstFixedCodevec);
        break;
    case Rate::R1265:
        addTracks<Rate::R1265>(pSrcIdxs, pDstFixedCodevec);
        break;
    case Rate::R1425:
        addTracks<Rate::R1425>(pSrcIdxs, pDstFixedCodevec);
        break;
    case Rate::R1585:
        addTracks<Rate::R1585>(pSrcIdxs, pDstFixedCodevec);
        break;
    case Rate::R1825:
        addTracks<Rate::R1825>(pSrcIdxs, pDstFixedCodevec);
        break;
    case Rate::R1985:
        addTracks<Rate::R1985>(pSrcIdxs, pDstFixedCodevec);
        break;
    default:
        addTracks<Rate::R2305>(pSrcIdxs, pDstFixedCodevec);
        break;
    }
    return vekStsNoErr;
}
