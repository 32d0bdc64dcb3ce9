// Hybrid windows of backward prediction. A lane is a delay: the sums need no reduction.
#include "sc/kernels/hybrid.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

constexpr int kMostShifts = 30;

// The left shifts that all blocks can have.
VEK_INLINE int commonShifts(const int16_t* samples, const int16_t* shifts, int blocks) {
    int least = kMostShifts;
    for (int b = 0; b < blocks; ++b) {
        int used = 0;
        for (int i = 0; i < kHybridBlock; ++i) {
            const int v = samples[b * kHybridBlock + i];
            used |= v ^ (v >> 15);
        }
        const int possible = used == 0 ? kMostShifts : shifts[b] + fix::norm_s(static_cast<int16_t>(used));
        least = possible < least ? possible : least;
    }
    return least;
}

#if VEK_LEVEL == 0

int align(const int16_t* samples, const int16_t* shifts, int blocks, int16_t* out) {
    const int least = commonShifts(samples, shifts, blocks);
    for (int b = 0; b < blocks; ++b) {
        const int up = least - shifts[b];
        for (int i = b * kHybridBlock; i < (b + 1) * kHybridBlock; ++i) {
            out[i] = up >= 0 ? static_cast<int16_t>(samples[i] * (1 << up)) : fix::shr_r(samples[i], -up);
        }
    }
    return least;
}

void correlate(const int16_t* samples, const int16_t* window, int order, int frame, int newest, int64_t* frameSums,
               int64_t* newestSums) {
    int16_t x[kHybridSpan] = {};
    const int span = order + frame + newest;
    for (int n = 0; n < span; ++n) {
        x[n] = fix::mult_r(samples[n], window[n]);
    }
    for (int k = 0; k <= order; ++k) {
        int64_t old = 0;
        for (int n = order; n < order + frame; ++n) {
            old += x[n] * x[n - k];
        }
        int64_t fresh = 0;
        for (int n = order + frame; n < span; ++n) {
            fresh += x[n] * x[n - k];
        }
        frameSums[k] = old;
        newestSums[k] = fresh;
    }
}

#else

using namespace registers;

// Calls `step` for the first element of each register, the last one at the end of n.
template <class Step>
VEK_INLINE void overRegisters(int n, int lanes, Step step) {
    for (int i = 0; i < n - lanes; i += lanes) {
        step(i);
    }
    step(n - lanes);
}

int align(const int16_t* samples, const int16_t* shifts, int blocks, int16_t* out) {
    const int least = commonShifts(samples, shifts, blocks);
    // Factors of the samples that become louder, and in Q15 of those that become softer; the other one is 0.
    int16_t louder[kHybridSpan];
    int16_t softer[kHybridSpan];
    const auto five = [](int16_t* to, uint64_t factor) {
        const uint64_t four = factor * 0x0001000100010001;
        __builtin_memcpy(to, &four, sizeof four);
        to[4] = static_cast<int16_t>(factor);
    };
    for (int b = 0; b < blocks; ++b) {
        const int up = least - shifts[b];
        // More than 15 only where all is zero.
        five(louder + b * kHybridBlock, up < 0 || up > 15 ? 0 : uint64_t{1} << up);
        five(softer + b * kHybridBlock, up >= 0 || up < -15 ? 0 : uint64_t{1} << (15 + up));
    }
    overRegisters(blocks * kHybridBlock, kLanesOf<EightOf16>, [&](int i) {
        const auto x = hn::LoadU(kEightOf16, samples + i);
        const auto up = x * hn::LoadU(kEightOf16, louder + i);
        hn::StoreU(up + hn::MulFixedPoint15(x, hn::LoadU(kEightOf16, softer + i)), kEightOf16, out + i);
    });
    return least;
}

using Delays = hn::CappedTag<int32_t, 8>;
using Halves = hn::RepartitionToNarrow<Delays>;
constexpr Delays kDelays;

// Sums of pairs of products modulo 2^32, and of their upper 24 bits, which tell the rest.
struct PairSums {
    hn::Vec<Delays> low = hn::Zero(kDelays);
    hn::Vec<Delays> high = hn::Zero(kDelays);

    // Those of n samples, of an even number, with the ones that stand before each by a lane's delay.
    VEK_INLINE PairSums(const int16_t* x, const int32_t* pairs, int n) {
        for (int i = 0; i < n; i += 2) {
            int32_t now;
            __builtin_memcpy(&now, x + i, sizeof now);
            const auto past = hn::LoadU(kDelays, pairs + i);
            const auto two = pairSums(hn::BitCast(Halves(), hn::Set(kDelays, now)), hn::BitCast(Halves(), past));
            low = low + two;
            high = high + hn::ShiftRight<8>(two);
        }
    }
    // From the longest delay of the lanes on, which are the other way round.
    VEK_INLINE void give(int64_t* sums) const {
        constexpr int lanes = kLanesOf<Delays>;
        int32_t l[lanes];
        int32_t h[lanes];
        hn::StoreU(low, kDelays, l);
        hn::StoreU(high, kDelays, h);
        for (int i = 0; i < lanes; ++i) {
            const int64_t most = int64_t{h[i]} * 256;
            sums[lanes - 1 - i] = most + (static_cast<uint32_t>(l[i]) - static_cast<uint32_t>(most));
        }
    }
};

void correlate(const int16_t* samples, const int16_t* window, int order, int frame, int newest, int64_t* frameSums,
               int64_t* newestSums) {
    constexpr int lanes = kLanesOf<Delays>;
    const int span = order + frame + newest;
    // A zero behind the last sample completes its pair.
    int16_t x[kHybridSpan + 2];
    overRegisters(span, kLanesOf<EightOf16>, [&](int i) {
        hn::StoreU(hn::MulFixedPoint15(hn::LoadU(kEightOf16, samples + i), hn::LoadU(kEightOf16, window + i)),
                   kEightOf16, x + i);
    });
    x[span] = 0;
    // Each sample with the one behind it.
    int32_t pairs[kHybridSpan + 2];
    overRegisters(span, kLanesOf<EightOf16>, [&](int i) {
        const auto first = hn::LoadU(kEightOf16, x + i);
        const auto second = hn::LoadU(kEightOf16, x + i + 1);
        hn::StoreU(hn::BitCast(kFourOf32, hn::InterleaveLower(first, second)), kFourOf32, pairs + i);
        hn::StoreU(hn::BitCast(kFourOf32, hn::InterleaveUpper(kEightOf16, first, second)), kFourOf32, pairs + i + 4);
    });
    const auto delays = [&](int k) {
        const int longest = k + lanes - 1;
        PairSums(x + order, pairs + order - longest, frame).give(frameSums + k);
        PairSums(x + order + frame, pairs + order + frame - longest, newest).give(newestSums + k);
    };
    overRegisters(order + 1, lanes, delays);
}

#endif

} // namespace

VEK_KERNEL_TABLE(HybridKernels, hybridKernels) = {align, correlate};

} // namespace vek
