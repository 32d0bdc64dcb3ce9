// Inner products, correlations, vector scaling, folds.
// The exact dot product rests on 64-bit sums of biased pair products: a pair sum of two 16-bit products spans
// -0x7fff0000..0x80000000, which fits 32 unsigned bits after adding 0x7fff0000, the pair of four -32768 included.
#include "sc/kernels/corr.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

using fix::sat16;

constexpr int kShortSum = 16;

// One half of a fold: dst[n] = (w1[n] * x1[n] + w2[n] * x2[n]) in Q15, where each of the four runs forwards or
// backwards from its pointer, and the second product counts negative if asked.
enum class Run { forwards, backwards };

#if VEK_LEVEL == 0

int64_t sumOfProducts(const int16_t* a, const int16_t* b, int n) {
    int64_t s = 0;
    for (int i = 0; i < n; ++i) {
        s += a[i] * b[i];
    }
    return s;
}

constexpr int kBlock = 64;

float dotOfBlock(const float* a, const float* b, int n) {
    constexpr int kSums = 8;
    float sums[kSums] = {};
    int i = 0;
    for (; i + kSums <= n; i += kSums) {
        for (int k = 0; k < kSums; ++k) {
            sums[k] += a[i + k] * b[i + k];
        }
    }
    for (int k = 0; i + k < n; ++k) {
        sums[k] += a[i + k] * b[i + k];
    }
    return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
}

float shortSum(const float* a, const float* b, int n) {
    return dotOfBlock(a, b, n);
}

void corr32(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out) {
    for (int k = 0; k < lags; ++k) {
        uint32_t s = 0;
        for (int i = k; i < n; ++i) {
            s += static_cast<uint32_t>(a[i] * b[i - k]);
        }
        out[k] = static_cast<int32_t>(s);
    }
}

constexpr auto corrInside32 = corr32;

template <Run run>
VEK_INLINE int at(const int16_t* p, int n) {
    return run == Run::forwards ? p[n] : p[-n];
}

template <Run runW1, Run runX1, Run runW2, Run runX2, bool minus>
VEK_INLINE void halfFold(const int16_t* w1, const int16_t* x1, const int16_t* w2, const int16_t* x2, int16_t* dst,
                         int count) {
    for (int n = 0; n < count; ++n) {
        const int first = at<runW1>(w1, n) * at<runX1>(x1, n);
        const int second = at<runW2>(w2, n) * at<runX2>(x2, n);
        dst[n] = sat16(((minus ? first - second : first + second) + 0x4000) >> 15);
    }
}

#else

using namespace registers;

using PairSum = hn::RepartitionToWide<D16>;
using WideSum = hn::RebindToUnsigned<hn::RepartitionToWide<PairSum>>;

// Adds to `all` the biased sums of pairs, two in 64 bits, and to `upper` those in the upper halves once more.
VEK_INLINE void addBiased(hn::Vec<D16> a, hn::Vec<D16> b, hn::Vec<WideSum>& all, hn::Vec<WideSum>& upper) {
    const auto two = hn::BitCast(WideSum(), plusPairs(hn::Set(PairSum(), 0x7fff0000), a, b));
    all = all + two;
    upper = upper + hn::ShiftRight<32>(two);
}

// Read from element m on: a mask of the last m lanes.
struct LastLanes {
    int16_t mask[2 * kLanesOf<D16>];

    constexpr LastLanes() : mask() {
        for (int i = kLanesOf<D16>; i < 2 * kLanesOf<D16>; ++i) {
            mask[i] = -1;
        }
    }
};
constexpr LastLanes kLast;

VEK_INLINE int64_t sumOfProducts(const int16_t* a, const int16_t* b, int n) {
    constexpr int lanes = kLanesOf<D16>;
    auto all = hn::Zero(WideSum());
    auto upper = all;
    int i = 0;
    for (; i + lanes <= n; i += lanes) {
        addBiased(hn::LoadU(d16, a + i), hn::LoadU(d16, b + i), all, upper);
    }
    int64_t pairs = i / 2;
    if (lanes > 8 && i > 0 && i < n) {
        // The rest with the last register, without what has been counted.
        const auto rest = hn::And(hn::LoadU(d16, a + n - lanes), hn::LoadU(d16, kLast.mask + (n - i)));
        addBiased(rest, hn::LoadU(d16, b + n - lanes), all, upper);
        pairs += lanes / 2;
        i = n;
    }
    int64_t s = 0;
    for (; i < n; ++i) {
        s += a[i] * b[i];
    }
    // The lower halves, which are the sums of all without the upper ones, and these.
    const auto both = all - hn::ShiftLeft<32>(upper) + upper;
    return s + static_cast<int64_t>(hn::GetLane(hn::SumOfLanes(WideSum(), both))) - pairs * 0x7fff0000;
}

using FourFloats = hn::FixedTag<float, 4>;
using Floats = hn::CappedTag<float, 8>;

constexpr int kBlock = 32 * kLanesOf<Floats>;

// Adds the products behind the last four elements that are whole. Without a loop, which the compiler would spread over
// registers.
VEK_INLINE float plusLastThree(float before, const float* a, const float* b, int n) {
    const int i = n & ~3;
    if (n == i) {
        return before;
    }
    float sum = 0;
    if ((n & 2) != 0) {
        sum = a[i] * b[i] + a[i + 1] * b[i + 1];
    }
    if ((n & 1) != 0) {
        sum += a[n - 1] * b[n - 1];
    }
    return before + sum;
}

// Fewer than kShortSum: a sum of these takes less than setting up the registers of more.
VEK_INLINE float shortSum(const float* a, const float* b, int n) {
    const FourFloats d;
    const auto products = [=](int i) { return hn::LoadU(d, a + i) * hn::LoadU(d, b + i); };
    float sum = 0;
    if (n >= 4) {
        auto four = products(0);
        if (n >= 8) {
            four = four + products(4);
        }
        if (n >= 12) {
            four = four + products(8);
        }
        sum = hn::GetLane(hn::SumOfLanes(d, four));
    }
    return plusLastThree(sum, a, b, n);
}

VEK_INLINE float dotOfBlock(const float* a, const float* b, int n) {
    constexpr int lanes = kLanesOf<Floats>;
    const auto products = [a, b](auto d, int i) { return hn::LoadU(d, a + i) * hn::LoadU(d, b + i); };
    const Floats d;
    auto s0 = hn::Zero(d);
    auto s1 = s0;
    auto s2 = s0;
    auto s3 = s0;
    int i = 0;
    for (; i + 4 * lanes <= n; i += 4 * lanes) {
        s0 = s0 + products(d, i);
        s1 = s1 + products(d, i + lanes);
        s2 = s2 + products(d, i + 2 * lanes);
        s3 = s3 + products(d, i + 3 * lanes);
    }
    if (i + lanes <= n) {
        s0 = s0 + products(d, i);
        i += lanes;
    }
    if (i + lanes <= n) {
        s1 = s1 + products(d, i);
        i += lanes;
    }
    if (i + lanes <= n) {
        s2 = s2 + products(d, i);
        i += lanes;
    }
    auto four = fourSums((s0 + s1) + (s2 + s3));
    if (lanes > 4 && i + 4 <= n) {
        four = four + products(FourFloats(), i);
    }
    return plusLastThree(hn::GetLane(hn::SumOfLanes(FourFloats(), four)), a, b, n);
}

// The sums of the lanes of four registers.
template <class V>
VEK_INLINE hn::Vec<FourOf32> lanesSummed(V s0, V s1, V s2, V s3) {
    const hn::DFromV<V> d;
    const hn::RepartitionToWide<hn::DFromV<V>> pairs;
    const auto lower = hn::BitCast(pairs, hn::InterleaveLower(d, s0, s1) + hn::InterleaveUpper(d, s0, s1));
    const auto upper = hn::BitCast(pairs, hn::InterleaveLower(d, s2, s3) + hn::InterleaveUpper(d, s2, s3));
    const auto fours = hn::BitCast(d, hn::InterleaveLower(pairs, lower, upper)) +
                       hn::BitCast(d, hn::InterleaveUpper(pairs, lower, upper));
    return fourSums(fours);
}

// The sums of four neighbouring lags.
struct FourLags {
    hn::Vec<PairSum> s0 = hn::Zero(PairSum());
    hn::Vec<PairSum> s1 = hn::Zero(PairSum());
    hn::Vec<PairSum> s2 = hn::Zero(PairSum());
    hn::Vec<PairSum> s3 = hn::Zero(PairSum());

    VEK_INLINE void add(const int16_t* x, hn::Vec<D16> y) {
        s0 = plusPairs(s0, y, hn::LoadU(d16, x));
        s1 = plusPairs(s1, y, hn::LoadU(d16, x + 1));
        s2 = plusPairs(s2, y, hn::LoadU(d16, x + 2));
        s3 = plusPairs(s3, y, hn::LoadU(d16, x + 3));
    }
    // Those that are left of `lags` from out on.
    VEK_INLINE void store(int32_t* out, int lags) const {
        const auto four = lanesSummed(s0, s1, s2, s3);
        if (lags >= 4) {
            hn::StoreU(four, kFourOf32, out);
            return;
        }
        int32_t last[4];
        hn::StoreU(four, kFourOf32, last);
        for (int j = 0; j < lags; ++j) {
            out[j] = last[j];
        }
    }
};

void corr32(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out) {
    for (int k = 0; k < lags; k += 4) {
        FourLags sums;
        for (int i = 0; i < n - k; i += kLanesOf<D16>) {
            sums.add(a + k + i, hn::LoadU(d16, b + i));
        }
        sums.store(out + k, lags - k);
    }
}

using FourOf16 = hn::FixedTag<int16_t, 4>;
using EndWord = hn::FixedTag<uint64_t, 1>;

// Adds the products of the four elements of `ends` from bit `first` on and those of `last`.
template <int first>
VEK_INLINE hn::Vec<PairSum> plusEnd(hn::Vec<PairSum> sum, hn::Vec<FourOf16> ends, hn::Vec<EndWord> last) {
    const auto from = hn::BitCast(FourOf16(), hn::ShiftRight<first>(hn::BitCast(EndWord(), ends)));
    const auto two = pairSums(from, hn::BitCast(FourOf16(), last));
    if constexpr (kLanesOf < PairSum >> 4) {
        return sum + hn::ZeroExtendVector(PairSum(), hn::ZeroExtendVector(kFourOf32, two));
    } else {
        return sum + hn::ZeroExtendVector(PairSum(), two);
    }
}

void corrInside32(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out) {
    constexpr int lanes = kLanesOf<D16>;
    for (int k = 0; k < lags; k += 4) {
        FourLags sums;
        const int common = n - k - 3; // products that each of the four has
        int i = 0;
        for (; i + lanes <= common; i += lanes) {
            sums.add(a + k + i, hn::LoadU(d16, b + i));
        }
        if (i < common) {
            // The rest with the last register, without what has been counted.
            const int last = common - lanes;
            sums.add(a + k + last, hn::And(hn::LoadU(d16, b + last), hn::LoadU(d16, kLast.mask + (common - i))));
        }
        // What the first three have beyond.
        const auto ends = hn::LoadU(FourOf16(), a + n - 4);
        const auto last = hn::ShiftRight<16>(hn::BitCast(EndWord(), hn::LoadU(FourOf16(), b + common - 1)));
        sums.s0 = plusEnd<16>(sums.s0, ends, last);
        sums.s1 = plusEnd<32>(sums.s1, ends, last);
        sums.s2 = plusEnd<48>(sums.s2, ends, last);
        sums.store(out + k, lags - k);
    }
}

// As many from element n on as `d` has lanes.
template <Run run, class D>
VEK_INLINE auto loadRun(D d, const int16_t* p, int n) {
    if constexpr (run == Run::forwards) {
        return hn::LoadU(d, p + n);
    } else {
        return reversed(d, hn::LoadU(d, p - n - (kLanesOf<D> - 1)));
    }
}

// From element n on what fills registers, then eight at a time. count is a multiple of eight.
template <Run runW1, Run runX1, Run runW2, Run runX2, bool minus, class D = D16>
VEK_INLINE void halfFold(const int16_t* w1, const int16_t* x1, const int16_t* w2, const int16_t* x2, int16_t* dst,
                         int count, int n = 0) {
    const D d;
    const auto half = hn::Set(hn::RepartitionToWide<D>(), 0x4000);
    for (; n + kLanesOf<D> <= count; n += kLanesOf<D>) {
        const auto a = loadRun<runX1>(d, x1, n);
        const auto b = loadRun<runX2>(d, x2, n);
        const auto wa = loadRun<runW1>(d, w1, n);
        auto wb = loadRun<runW2>(d, w2, n);
        if constexpr (minus) {
            wb = hn::Zero(d) - wb; // a window has no -32768
        }
        const auto lower = plusPairs(half, hn::InterleaveLower(d, a, b), hn::InterleaveLower(d, wa, wb));
        const auto upper = plusPairs(half, hn::InterleaveUpper(d, a, b), hn::InterleaveUpper(d, wa, wb));
        storeSaturated(d, dst + n, hn::ShiftRight<15>(lower), hn::ShiftRight<15>(upper));
    }
    if constexpr (kLanesOf < D >> 8) {
        halfFold<runW1, runX1, runW2, runX2, minus, hn::Half<D>>(w1, x1, w2, x2, dst, count, n);
    }
}

#endif

int64_t dot16(const int16_t* a, const int16_t* b, int n) {
    return sumOfProducts(a, b, n);
}

VekStatus dotSaturated16(const int16_t* a, const int16_t* b, int n, int32_t* sum) {
    const int64_t s = sumOfProducts(a, b, n);
    auto cut = static_cast<int32_t>(s);
    if (s != cut) [[unlikely]] {
        cut = s < 0 ? fix::kMin32 : fix::kMax32;
    }
    *sum = cut;
    return vekStsNoErr;
}

int usedBits16(const int16_t* a, int n) {
    int16_t used = 0;
    for (int i = 0; i < n; ++i) {
        used = static_cast<int16_t>(used | (a[i] ^ (a[i] >> 15)));
    }
    return used;
}

void shift16(const int16_t* src, int16_t* dst, int n, int shift) {
    if (shift >= 0) {
        const int factor = 1 << shift;
        for (int i = 0; i < n; ++i) {
            dst[i] = static_cast<int16_t>(src[i] * factor);
        }
    } else {
        for (int i = 0; i < n; ++i) {
            dst[i] = static_cast<int16_t>(src[i] >> -shift);
        }
    }
}

void window16(const int16_t* src, const int16_t* window, int16_t* dst, int n) {
    for (int i = 0; i < n; ++i) {
        dst[i] = fix::mult_r(src[i], window[i]);
    }
}

void fold16(const int16_t* fresh, const int16_t* old, const int16_t* w, int16_t* dst, int half) {
    using enum Run;
    const int last = 2 * half - 1;
    halfFold<backwards, backwards, forwards, forwards, false>(w + half - 1, old + half - 1, w + half, old + half, dst,
                                                              half);
    halfFold<backwards, forwards, forwards, backwards, true>(w + last, fresh, w, fresh + last, dst + half, half);
}

void unfold16(const int16_t* fresh, const int16_t* old, const int16_t* w, int16_t* dst, int half) {
    using enum Run;
    const int last = 2 * half - 1;
    halfFold<forwards, backwards, backwards, forwards, false>(w, fresh + half - 1, w + last, old + half, dst, half);
    halfFold<forwards, forwards, backwards, backwards, true>(w + half, fresh, w + half - 1, old + last, dst + half,
                                                             half);
}

// A product goes through 15 roundings of a block at the most, each within 2^-24; sums of blocks keep what they have.
VEK_INLINE float longSum(const float* a, const float* b, int n) {
    if (n <= kBlock) {
        return dotOfBlock(a, b, n);
    }
    double sum = 0;
    int i = 0;
    for (; i + kBlock <= n; i += kBlock) {
        sum += static_cast<double>(dotOfBlock(a + i, b + i, kBlock));
    }
    return static_cast<float>(sum + static_cast<double>(dotOfBlock(a + i, b + i, n - i)));
}

// Apart from the short sums, which would have to save its registers.
[[gnu::noinline]] float longDot32f(const float* a, const float* b, int n) {
    return longSum(a, b, n);
}

[[gnu::noinline]] VekStatus longDotTo32f(const float* a, const float* b, int n, float* sum) {
    *sum = longSum(a, b, n);
    return vekStsNoErr;
}

float dot32f(const float* a, const float* b, int n) {
    return n < kShortSum ? shortSum(a, b, n) : longDot32f(a, b, n);
}

VekStatus dotTo32f(const float* a, const float* b, int n, float* sum) {
    if (n >= kShortSum) {
        return longDotTo32f(a, b, n, sum);
    }
    *sum = shortSum(a, b, n);
    return vekStsNoErr;
}

} // namespace

VEK_KERNEL_TABLE(CorrKernels, corrKernels) = {dot16,      dotSaturated16, dot32f,   dotTo32f, corr32,  corrInside32,
                                              usedBits16, shift16,        window16, fold16,   unfold16};

} // namespace vek
