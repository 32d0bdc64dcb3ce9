// The operations of the kernels' registers, once per level; at the plain level what they mean.
#include "registeroperations.h"

#include "sc/kernels/registers.h"

namespace vek {
namespace {

#if VEK_LEVEL == 0

constexpr int bytes = 0;

int16_t saturated(int32_t v) {
    return static_cast<int16_t>(v > 32767 ? 32767 : v < -32768 ? -32768 : v);
}

void plusPairsOf(const int16_t* a, const int16_t* b, int32_t* sum, int n) {
    for (int i = 0; i < n; i += 2) {
        const int64_t pair = int64_t{a[i]} * b[i] + int64_t{a[i + 1]} * b[i + 1];
        sum[i / 2] = static_cast<int32_t>(static_cast<uint32_t>(sum[i / 2]) + static_cast<uint32_t>(pair));
    }
}

void pairSumsOf(const int16_t* a, const int16_t* b, int32_t* out, int n) {
    for (int i = 0; i < n / 2; ++i) {
        out[i] = 0;
    }
    plusPairsOf(a, b, out, n);
}

void multCutOf(const int16_t* a, const int16_t* b, int16_t* out, int n) {
    for (int i = 0; i < n; ++i) {
        out[i] = static_cast<int16_t>((a[i] * b[i]) >> 15);
    }
}

void addSaturated(const int16_t* a, const int16_t* b, int16_t* out, int n) {
    for (int i = 0; i < n; ++i) {
        out[i] = saturated(a[i] + b[i]);
    }
}

void combined(const int16_t* a, const int16_t* b, int16_t* out, int n, int shift) {
    for (int i = 0; i < n; ++i) {
        out[i] = saturated((a[i] * 32767 - b[i]) >> shift);
    }
}

void widened(const float* a, double* out, int n) {
    for (int i = 0; i < n; ++i) {
        out[i] = a[i];
    }
}

void lanes(const int32_t* a, int32_t* out, int n) {
    for (int i = 0; i < n; ++i) {
        out[i] = a[i];
    }
}

void reversedEights(const int16_t* a, int16_t* out, int n) {
    for (int i = 0; i < n; ++i) {
        out[i] = a[i / 8 * 8 + 7 - i % 8];
    }
}

void eightSums(const float* a, float* out, int n) {
    for (int i = 0; i < n; i += 8) {
        const float four[4] = {a[i] + a[i + 4], a[i + 1] + a[i + 5], a[i + 2] + a[i + 6], a[i + 3] + a[i + 7]};
        out[i / 8] = (four[0] + four[2]) + (four[1] + four[3]);
    }
}

template <class T>
int leastOf(const T* a, int n, T* value) {
    int at = 0;
    for (int i = 1; i < n; ++i) {
        at = a[i] < a[at] ? i : at;
    }
    *value = a[at];
    return at;
}

#else

using namespace registers;

using D32 = hn::RepartitionToWide<D16>;

constexpr int bytes = HWY_MAX_BYTES;
constexpr D32 d32;

void plusPairsOf(const int16_t* a, const int16_t* b, int32_t* sum, int n) {
    for (int i = 0; i < n; i += kLanesOf<D16>) {
        const auto s = plusPairs(hn::LoadU(d32, sum + i / 2), hn::LoadU(d16, a + i), hn::LoadU(d16, b + i));
        hn::StoreU(s, d32, sum + i / 2);
    }
}

void pairSumsOf(const int16_t* a, const int16_t* b, int32_t* out, int n) {
    for (int i = 0; i < n; i += kLanesOf<D16>) {
        hn::StoreU(pairSums(hn::LoadU(d16, a + i), hn::LoadU(d16, b + i)), d32, out + i / 2);
    }
}

void multCutOf(const int16_t* a, const int16_t* b, int16_t* out, int n) {
    for (int i = 0; i < n; i += kLanesOf<D16>) {
        hn::StoreU(multCut(hn::LoadU(d16, a + i), hn::LoadU(d16, b + i)), d16, out + i);
    }
}

void addSaturated(const int16_t* a, const int16_t* b, int16_t* out, int n) {
    for (int i = 0; i < n; i += kLanesOf<D16>) {
        hn::StoreU(hn::SaturatedAdd(hn::LoadU(d16, a + i), hn::LoadU(d16, b + i)), d16, out + i);
    }
}

void combined(const int16_t* a, const int16_t* b, int16_t* out, int n, int shift) {
    const auto factors = hn::BitCast(d16, hn::Set(d32, static_cast<int32_t>(0xffff7fff)));
    for (int i = 0; i < n; i += kLanesOf<D16>) {
        const auto u = hn::LoadU(d16, a + i);
        const auto v = hn::LoadU(d16, b + i);
        const auto lower = pairSums(hn::InterleaveLower(d16, u, v), factors);
        const auto upper = pairSums(hn::InterleaveUpper(d16, u, v), factors);
        storeSaturated(d16, out + i, hn::ShiftRightSame(lower, shift), hn::ShiftRightSame(upper, shift));
    }
}

void widened(const float* a, double* out, int n) {
    using D = hn::CappedTag<double, 8>;
    for (int i = 0; i < n; i += kLanesOf<D>) {
        hn::StoreU(hn::PromoteTo(D(), hn::LoadU(hn::Rebind<float, D>(), a + i)), D(), out + i);
    }
}

void lanes(const int32_t* a, int32_t* out, int n) {
    for (int i = 0; i < n; i += 4) {
        const auto v = hn::LoadU(kFourOf32, a + i);
        out[i] = hn::ExtractLane(v, 0);
        out[i + 1] = hn::ExtractLane(v, 1);
        out[i + 2] = hn::ExtractLane(v, 2);
        out[i + 3] = hn::ExtractLane(v, 3);
    }
}

void reversedEights(const int16_t* a, int16_t* out, int n) {
    for (int i = 0; i < n; i += 8) {
        hn::StoreU(registers::reversed(kEightOf16, hn::LoadU(kEightOf16, a + i)), kEightOf16, out + i);
    }
}

void eightSums(const float* a, float* out, int n) {
    using D = hn::CappedTag<float, 8>;
    using Four = hn::FixedTag<float, 4>;
    for (int i = 0; i < n; i += 8) {
        auto four = fourSums(hn::LoadU(D(), a + i));
        if (kLanesOf<D> == 4) {
            four = four + hn::LoadU(Four(), a + i + 4);
        }
        out[i / 8] = hn::GetLane(hn::SumOfLanes(Four(), four));
    }
}

template <class T>
int leastOf(const T* a, int n, T* value) {
    using D = hn::ScalableTag<T>;
    LeastOfLanes<D> least;
    auto number = hn::BitCast(D(), hn::Load(d32, kCounting));
    for (int i = 0; i < n; i += kLanesOf<D>) {
        least.see(hn::LoadU(D(), a + i), number);
        number = number + hn::Set(D(), static_cast<T>(kLanesOf<D>));
    }
    return least.settle(value);
}

#endif

} // namespace

VEK_KERNEL_TABLE_512(RegisterOperations, registerOperations) = {
    bytes,   plusPairsOf, pairSumsOf,     multCutOf, addSaturated,     combined,
    widened, lanes,       reversedEights, eightSums, leastOf<int32_t>, leastOf<uint32_t>,
};

} // namespace vek
