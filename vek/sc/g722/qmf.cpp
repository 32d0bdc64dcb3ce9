// Quadrature mirror filter of G.722: each of its halves is a filter of 12 taps over every second sample.
#include <algorithm>
#include <array>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g722/qmf.h"
#include "sc/kernels/filter.h"
#include "veksc_g722.h"

using namespace vek;

namespace {

constexpr int kHalfTaps = kQmfTaps / 2;
constexpr int kPast = kHalfTaps - 1;
constexpr int kPairs = 160;

// Every second tap from the first one on, or from the second.
constexpr std::array<Vek16s, kHalfTaps> everySecond(int first) {
    std::array<Vek16s, kHalfTaps> half{};
    for (int i = 0; i < kHalfTaps; ++i) {
        half[static_cast<size_t>(i)] = kQmf[2 * i + first];
    }
    return half;
}

constexpr auto kForward = everySecond(0);
constexpr auto kBackward = everySecond(1);

// The samples of even and of odd index of a stretch, each behind its past.
struct Phases {
    alignas(32) Vek16s even[kPast + kPairs];
    alignas(32) Vek16s odd[kPast + kPairs];
    alignas(32) int32_t evenSums[kPairs];
    alignas(32) int32_t oddSums[kPairs];

    explicit Phases(const Vek16s* delay) {
        for (int i = 0; i < kPast; ++i) {
            even[i] = delay[2 * i];
            odd[i] = delay[2 * i + 1];
        }
    }

    void filter(int pairs) {
        const FilterKernels& kernels = filterKernels();
        kernels.fir32(kBackward.data(), kPast, even + kPast, evenSums, pairs);
        kernels.fir32(kForward.data(), kPast, odd + kPast, oddSums, pairs);
    }

    void advance(int pairs) {
        std::memmove(even, even + pairs, kPast * sizeof(Vek16s));
        std::memmove(odd, odd + pairs, kPast * sizeof(Vek16s));
    }

    void keep(Vek16s* delay) const {
        for (int i = 0; i < kPast; ++i) {
            delay[2 * i] = even[i];
            delay[2 * i + 1] = odd[i];
        }
    }
};

VekStatus check(const Vek16s* pSrc, const Vek16s* pDst, int len, const Vek16s* delay) {
    if (anyNull(pSrc, pDst, delay)) {
        return vekStsNullPtrErr;
    }
    return badLength(len) || len % 2 != 0 ? vekStsSizeErr : vekStsNoErr;
}

// Filters len samples: `load` puts the pairs of a stretch behind their past, `store` makes samples of the sums.
template <class Load, class Store>
VekStatus filterPairs(const Vek16s* pSrc, Vek16s* pDst, int len, Vek16s* delay, Load load, Store store) {
    const VekStatus status = check(pSrc, pDst, len, delay);
    if (status != vekStsNoErr) {
        return status;
    }
    Phases p(delay);
    for (int first = 0; first < len / 2; first += kPairs) {
        const int pairs = std::min(kPairs, len / 2 - first);
        for (int n = 0; n < pairs; ++n) {
            load(pSrc + 2 * (first + n), p.even[kPast + n], p.odd[kPast + n]);
        }
        p.filter(pairs);
        for (int n = 0; n < pairs; ++n) {
            store(p.evenSums[n], p.oddSums[n], pDst + 2 * (first + n));
        }
        p.advance(pairs);
    }
    p.keep(delay);
    return vekStsNoErr;
}

} // namespace

VekStatus veksQMFEncode_G722_16s(const Vek16s* pSrc, Vek16s* pDst, int len, Vek16s* delay) {
    return filterPairs(
        pSrc, pDst, len, delay,
        [](const Vek16s* x, Vek16s& even, Vek16s& odd) {
            even = x[0];
            odd = x[1];
        },
        [](int32_t even, int32_t odd, Vek16s* y) {
            y[0] = static_cast<Vek16s>((odd + even) >> 14);
            y[1] = static_cast<Vek16s>((odd - even) >> 14);
        });
}

VekStatus veksQMFDecode_G722_16s(const Vek16s* pSrc, Vek16s* pDst, int len, Vek16s* delay) {
    return filterPairs(
        pSrc, pDst, len, delay,
        [](const Vek16s* bands, Vek16s& even, Vek16s& odd) {
            even = fix::sat16(bands[0] + bands[1]);
            odd = fix::sat16(bands[0] - bands[1]);
        },
        [](int32_t even, int32_t odd, Vek16s* y) {
            y[0] = fix::sat16(odd >> 11);
            y[1] = fix::sat16(even >> 11);
        });
}
