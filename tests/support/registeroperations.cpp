// The operations of the kernels' registers, once per level; at the plain level what they mean.
#include "registeroperations.h"

#include "sc/kernels/numbers.h"
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

void multShiftedOf(const int16_t* a, const int16_t* b, int16_t* out, int n, int half, int shift) {
    for (int i = 0; i < n; ++i) {
        out[i] = saturated((a[i] * b[i] + half) >> shift);
    }
}

void filled(const int16_t* a, const int16_t* b, int16_t* out, int n) {
    for (int i = 0; i < n; ++i) {
        out[i] = static_cast<int16_t>(a[i] - b[i]);
    }
}

void firstLanesOf(const int16_t* a, int16_t* out, int n) {
    for (int i = 0; i < n; ++i) {
        out[i] = a[i];
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

void multShiftedOf(const int16_t* a, const int16_t* b, int16_t* out, int n, int half, int shift) {
    for (int i = 0; i < n; i += kLanesOf<D16>) {
        hn::StoreU(multShifted(hn::LoadU(d16, a + i), hn::LoadU(d16, b + i), half, shift), d16, out + i);
    }
}

void filled(const int16_t* a, const int16_t* b, int16_t* out, int n) {
    if (n < kLeastFill<int16_t>) {
        oneByOne(n, [=](int i) { out[i] = static_cast<int16_t>(a[i] - b[i]); });
        return;
    }
    fillBy(d16, out, n, [=](auto d, int i) { return hn::LoadU(d, a + i) - hn::LoadU(d, b + i); });
}

void firstLanesOf(const int16_t* a, int16_t* out, int n) {
    for (int i = 0; i < n; i += 8) {
        const int16_t* next = a + i;
        hn::StoreU(firstLanes([&next] { return hn::Set(kEightOf16, *next++); }), kEightOf16, out + i);
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

// Words are the same at all levels for four and eight numbers.
namespace few {

using namespace numbers;

template <class T, class V>
T* put(T* out, V a) {
    store(out, a);
    return out + sizeof(V) / sizeof(T);
}

template <class T, class V>
T* putArithmetic(T* out, V a, V b) {
    out = put(out, a + b);
    out = put(out, a - b);
    return out;
}

// Of eight rows.
template <class T>
T* putTransposed(T* out, const T* x) {
    Numbers<T, 8> rows[8];
    for (int i = 0; i < 8; ++i) {
        rows[i] = load(x + 8 * i);
    }
    transpose(rows);
    for (const auto& row : rows) {
        out = put(out, row);
    }
    return out;
}

template <class V, class T>
T* putSplitAndMerged(T* out, const T* x, V a, V b) {
    V even;
    V odd;
    loadSplit(x, even, odd);
    out = put(put(out, even), odd);
    storeMerged(out, a, b);
    return out + 2 * (sizeof(V) / sizeof(T));
}

void eightIntegers(const int32_t* x, int32_t* out) {
    const V8 a = load(x);
    const V8 b = load(x + 8);
    const V8 wa = load(x + 16);
    const V8 wb = load(x + 24);
    out = putArithmetic(out, a, b);
    out = put(out, mulSum(a, wa, b, wb));
    out = put(out, mulDiff(a, wa, b, wb));
    out = put(out, mul(a, wa));
    out = put(out, shiftLeft<3>(a));
    out = put(out, shiftRightRounded<5>(a));
    out = put(out, reverse(a));
    out = put(out, mirrored(a, b));
    out = put(out, joinLower(a, b));
    out = put(out, set1(x[3]));
    out = putSplitAndMerged(out, x, a, b);
    putTransposed(out, x);
}

void eightPairs(const int16_t* x, int32_t* out) {
    V8 even;
    V8 odd;
    loadPairs(x, even, odd);
    out = put(put(out, even), odd);
    loadPairsReversed(x, even, odd);
    out = put(put(out, even), odd);
    // What saturates and what does not.
    const V8 wide = shiftLeft<3>(even);
    int16_t back[24];
    storePairs(back, wide, odd);
    storeHalfPairs(back + 16, wide - odd);
    for (const int16_t v : back) {
        *out++ = v;
    }
}

void eightFloats(const float* x, float* out) {
    const F8 a = load(x);
    const F8 b = load(x + 8);
    out = putArithmetic(out, a, b);
    out = put(out, a * b);
    out = put(out, reverse(a));
    out = put(out, swapHalves(a));
    out = put(out, toFloat(toInt(a)));
    out = put(out, set1(x[3]));
    out = putTransposed(out, x);
    F8 triples[8];
    for (int i = 0; i < 8; ++i) {
        triples[i] = load(x + 8 * i);
    }
    F8 lower[3];
    F8 upper[3];
    joinTriples(triples, lower, upper);
    for (int i = 0; i < 3; ++i) {
        out = put(put(out, lower[i]), upper[i]);
    }
}

template <class T>
void fours(const T* x, T* out) {
    using V = Numbers<T, 4>;
    V rows[4];
    for (int i = 0; i < 4; ++i) {
        rows[i] = load<4>(x + 4 * i);
    }
    out = putArithmetic(out, rows[0], rows[1]);
    out = put(out, rows[0] * rows[1]);
    out = put(out, mirrored(rows[0], rows[1]));
    out = put(out, set1<4>(x[3]));
    out = putSplitAndMerged(out, x, rows[2], rows[3]);
    transpose(rows[0], rows[1], rows[2], rows[3]);
    for (const V& row : rows) {
        out = put(out, row);
    }
}

} // namespace few

} // namespace

VEK_KERNEL_TABLE_512(RegisterOperations, registerOperations) = {
    bytes,
    plusPairsOf,
    pairSumsOf,
    multCutOf,
    addSaturated,
    combined,
    multShiftedOf,
    filled,
    firstLanesOf,
    widened,
    lanes,
    reversedEights,
    eightSums,
    leastOf<int32_t>,
    leastOf<uint32_t>,
    few::eightIntegers,
    few::eightPairs,
    few::eightFloats,
    few::fours<float>,
    few::fours<double>,
};

} // namespace vek
