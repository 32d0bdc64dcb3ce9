// Resampling by banks of filters: four outputs side by side, the sums of each in a vector until the end.
#include "sc/kernels/resample.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

constexpr int32_t kHalf = 1 << (kResampleQ - 1);
constexpr int kWeightBits = 15; // of the weight between two filters of the blended bank
constexpr int kPhaseBits = 6;

int16_t rounded(int32_t sum) {
    const int32_t v = (sum + kHalf) >> kResampleQ;
    return static_cast<int16_t>(v > 32767 ? 32767 : v < -32768 ? -32768 : v);
}

int16_t blend(int16_t a, int16_t b, int weight) {
    return static_cast<int16_t>(a + (((b - a) * weight + (1 << (kWeightBits - 1))) >> kWeightBits));
}

// The walk from place to place of a bank.
class Walk {
public:
    Walk(const Polyphase& bank, int start, const int16_t* x)
        : m_rows(bank.rows), m_x(x + start / bank.phases), m_taps(bank.taps), m_phases(bank.phases),
          m_part(start % bank.phases), m_whole(bank.step / bank.phases), m_rest(bank.step % bank.phases) {}
    const int16_t* row() const { return m_rows + m_part * m_taps; }
    const int16_t* x() const { return m_x; }
    void next() {
        m_part += m_rest;
        const bool over = m_part >= m_phases;
        m_part -= over ? m_phases : 0;
        m_x += m_whole + (over ? 1 : 0);
    }

private:
    const int16_t* m_rows;
    const int16_t* m_x;
    int m_taps;
    int m_phases;
    int m_part;
    int m_whole;
    int m_rest;
};

// The same for places in Q40.
class BlendWalk {
public:
    BlendWalk(const int16_t* rows, uint64_t start, uint64_t step, const int16_t* x)
        : m_rows(rows), m_x(x), m_place(start), m_step(step) {}
    const int16_t* row() const {
        return m_rows + ((m_place >> (kBlendQ - kPhaseBits)) & (kBlendPhases - 1)) * kBlendTaps;
    }
    int weight() const {
        return static_cast<int>(m_place >> (kBlendQ - kPhaseBits - kWeightBits)) & ((1 << kWeightBits) - 1);
    }
    const int16_t* x() const { return m_x + (m_place >> kBlendQ); }
    void next() { m_place += m_step; }

private:
    const int16_t* m_rows;
    const int16_t* m_x;
    uint64_t m_place;
    uint64_t m_step;
};

int16_t exactAt(const Walk& walk, int taps) {
    int32_t sum = 0;
    for (int j = 0; j < taps; ++j) {
        sum += walk.row()[j] * walk.x()[j];
    }
    return rounded(sum);
}

int16_t blendedAt(const BlendWalk& walk) {
    const int16_t* row = walk.row();
    const int weight = walk.weight();
    int32_t sum = 0;
    for (int j = 0; j < kBlendTaps; ++j) {
        sum += blend(row[j], row[j + kBlendTaps], weight) * walk.x()[j];
    }
    return rounded(sum);
}

#if VEK_LEVEL == 0

void exact(const Polyphase& bank, int start, const int16_t* x, int16_t* y, int n) {
    Walk walk(bank, start, x);
    for (int i = 0; i < n; ++i) {
        y[i] = exactAt(walk, bank.taps);
        walk.next();
    }
}

void blended(const int16_t* rows, uint64_t start, uint64_t step, const int16_t* x, int16_t* y, int n) {
    BlendWalk walk(rows, start, step, x);
    for (int i = 0; i < n; ++i) {
        y[i] = blendedAt(walk);
        walk.next();
    }
}

#else

using namespace registers;

using FourOf16 = hn::FixedTag<int16_t, 4>;
using Sums = hn::RepartitionToWide<D16>;

// Samples in a register.
constexpr int kStep = kLanesOf<D16>;

template <class D>
VEK_INLINE auto products(D d, const int16_t* c, const int16_t* x) {
    return pairSums(hn::LoadU(d, c), hn::LoadU(d, x));
}
// Four samples; their sums behind zeros.
VEK_INLINE auto fourProducts(const int16_t* c, const int16_t* x) {
    const auto four = [](const int16_t* p) { return hn::ZeroExtendVector(kEightOf16, hn::LoadU(FourOf16(), p)); };
    return pairSums(four(c), four(x));
}
VEK_INLINE auto blendedProducts(const int16_t* c, int weight, const int16_t* x) {
    const auto a = hn::LoadU(d16, c);
    const auto difference = hn::LoadU(d16, c + kBlendTaps) - a;
    const auto share = hn::MulFixedPoint15(difference, hn::Set(d16, static_cast<int16_t>(weight)));
    return pairSums(hn::SaturatedAdd(a, share), hn::LoadU(d16, x));
}

// A shorter register, filled with zeros.
template <class V>
VEK_INLINE hn::Vec<Sums> filled(V sums) {
    if constexpr (kLanesOf<hn::DFromV<V>> == kLanesOf<Sums>) {
        return sums;
    } else {
        return hn::ZeroExtendVector(Sums(), sums);
    }
}

template <int Taps>
VEK_INLINE hn::Vec<Sums> dot(const int16_t* c, const int16_t* x) {
    // The compiler lays out loops of up to 16 steps whole.
    constexpr int most = 16 * kStep;
    if constexpr (Taps > most) {
        return dot<most>(c, x) + dot<Taps - most>(c + most, x + most);
    } else {
        auto sum = hn::Zero(Sums());
        int j = 0;
        for (; j + kStep <= Taps; j += kStep) {
            sum = sum + products(d16, c + j, x + j);
        }
        if constexpr (Taps % kStep >= 8) {
            sum = sum + filled(products(kEightOf16, c + j, x + j));
            j += 8;
        }
        if constexpr (Taps % 8 >= 4) {
            sum = sum + filled(fourProducts(c + j, x + j));
        }
        return sum;
    }
}

// The sums of each of four registers, rounded.
VEK_INLINE void storeFour(int16_t* y, const hn::Vec<Sums> (&s)[4]) {
    using Pairs = hn::RepartitionToWide<Sums>;
    const auto added = [](auto d, auto a, auto b) {
        const auto lower = hn::BitCast(Sums(), hn::InterleaveLower(d, a, b));
        return hn::BitCast(Pairs(), lower + hn::BitCast(Sums(), hn::InterleaveUpper(d, a, b)));
    };
    const auto all = added(Pairs(), added(Sums(), s[0], s[1]), added(Sums(), s[2], s[3]));
    const auto four = fourSums(hn::BitCast(Sums(), all)) + hn::Set(kFourOf32, kHalf);
    hn::StoreU(hn::DemoteTo(FourOf16(), hn::ShiftRight<kResampleQ>(four)), FourOf16(), y);
}

template <int Taps>
void exactOf(const Polyphase& bank, int start, const int16_t* x, int16_t* y, int n) {
    Walk walk(bank, start, x);
    int i = 0;
    for (; i + 4 <= n; i += 4) {
        hn::Vec<Sums> s[4];
        for (auto& sum : s) {
            sum = dot<Taps>(walk.row(), walk.x());
            walk.next();
        }
        storeFour(y + i, s);
    }
    for (; i < n; ++i) {
        y[i] = exactAt(walk, Taps);
        walk.next();
    }
}

void exact(const Polyphase& bank, int start, const int16_t* x, int16_t* y, int n) {
    switch (bank.taps) {
    case 12:
        return exactOf<12>(bank, start, x, y, n);
    case 20:
        return exactOf<20>(bank, start, x, y, n);
    case 24:
        return exactOf<24>(bank, start, x, y, n);
    case 36:
        return exactOf<36>(bank, start, x, y, n);
    case 48:
        return exactOf<48>(bank, start, x, y, n);
    case 72:
        return exactOf<72>(bank, start, x, y, n);
    case 96:
        return exactOf<96>(bank, start, x, y, n);
    case 128:
        return exactOf<128>(bank, start, x, y, n);
    default:
        return exactOf<144>(bank, start, x, y, n);
    }
}

void blended(const int16_t* rows, uint64_t start, uint64_t step, const int16_t* x, int16_t* y, int n) {
    BlendWalk walk(rows, start, step, x);
    int i = 0;
    for (; i + 4 <= n; i += 4) {
        hn::Vec<Sums> s[4];
        for (auto& sum : s) {
            const int16_t* row = walk.row();
            const int weight = walk.weight();
            sum = hn::Zero(Sums());
            for (int j = 0; j < kBlendTaps; j += kStep) {
                sum = sum + blendedProducts(row + j, weight, walk.x() + j);
            }
            walk.next();
        }
        storeFour(y + i, s);
    }
    for (; i < n; ++i) {
        y[i] = blendedAt(walk);
        walk.next();
    }
}

#endif

void addAll(const int16_t* a, const int16_t* b, int16_t* y, int n) {
    int i = 0;
#if VEK_LEVEL > 0
    for (; i + 8 <= n; i += 8) {
        const auto v = hn::SaturatedAdd(hn::LoadU(kEightOf16, a + i), hn::LoadU(kEightOf16, b + i));
        hn::StoreU(v, kEightOf16, y + i);
    }
#endif
    for (; i < n; ++i) {
        y[i] = fix::add(a[i], b[i]);
    }
}

void subtractAll(const int16_t* a, const int16_t* b, int16_t* y, int n) {
    int i = 0;
#if VEK_LEVEL > 0
    for (; i + 8 <= n; i += 8) {
        const auto v = hn::SaturatedSub(hn::LoadU(kEightOf16, a + i), hn::LoadU(kEightOf16, b + i));
        hn::StoreU(v, kEightOf16, y + i);
    }
#endif
    for (; i < n; ++i) {
        y[i] = fix::sub(a[i], b[i]);
    }
}

} // namespace

VEK_KERNEL_TABLE(ResampleKernels, resampleKernels) = {exact, blended, addAll, subtractAll};

} // namespace vek
