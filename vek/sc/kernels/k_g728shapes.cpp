// The search of G.728's shape codebook.
#include "sc/kernels/g728shapes.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

constexpr int kRoundFiltered = 1 << 13; // Q24 to Q10
constexpr int kFilteredShift = 14;
constexpr int kRoundEnergy = 1 << 12; // Q18 to Q5
constexpr int kEnergyShift = 13;

// What a shape has of the target, and the products of its energy and of that with a level's gains.
int32_t projection(const int16_t* book, int n, const int16_t* pn, int shift, int j) {
    const int32_t s = pn[0] * book[2 * j] + pn[1] * book[2 * j + 1] + pn[2] * book[2 * n + 2 * j] +
                      pn[3] * book[2 * n + 2 * j + 1] + pn[4] * book[4 * n + 2 * j];
    return (s + (1 << (shift - 1))) >> shift;
}

int32_t distance(int16_t energy, int32_t p, const int16_t* gains) {
    return (energy < 0 ? 0 : energy) * gains[0] + fix::abs_s(fix::sat16(p)) * gains[1];
}

#if VEK_LEVEL == 0

constexpr int kSamples = 5;

void energies(const int16_t* book, int n, const int16_t* h, int16_t* energy) {
    for (int j = 0; j < n; ++j) {
        const int16_t y[kSamples] = {book[2 * j], book[2 * j + 1], book[2 * n + 2 * j], book[2 * n + 2 * j + 1],
                                     book[4 * n + 2 * j]};
        int32_t e = 0;
        for (int k = 0; k < kSamples; ++k) {
            int32_t s = 0;
            for (int i = 0; i <= k; ++i) {
                s += h[k - i] * y[i];
            }
            const int t = fix::sat16((s + kRoundFiltered) >> kFilteredShift);
            e += (t * t) >> 2;
        }
        energy[j] = fix::sat16((e + kRoundEnergy) >> kEnergyShift);
    }
}

int nearest(const int16_t* book, int n, const int16_t* pn, int shift, const int16_t* energy, const int16_t* gains,
            int levels, int* level, bool* negative) {
    int32_t least = INT32_MAX;
    int shape = 0;
    *level = 0;
    *negative = false;
    for (int j = 0; j < n; ++j) {
        const int32_t p = projection(book, n, pn, shift, j);
        for (int l = 0; l < levels; ++l) {
            const int32_t d = distance(energy[j], p, gains + 2 * l);
            if (d < least) {
                least = d;
                shape = j;
                *level = l;
                *negative = p < 0;
            }
        }
    }
    return shape;
}

#else

using namespace registers;

// A lane is a shape, or two samples of it. The number of shapes is no multiple of more.
using Shapes = hn::CappedTag<int32_t, 8>;
using Samples = hn::RepartitionToNarrow<Shapes>;

constexpr Shapes kShapes;

VEK_INLINE hn::Vec<Samples> pairOf(int16_t a, int16_t b) {
    const auto two = static_cast<uint16_t>(a) | static_cast<uint32_t>(static_cast<uint16_t>(b)) << 16;
    return hn::BitCast(Samples(), hn::Set(kShapes, static_cast<int32_t>(two)));
}

VEK_INLINE hn::Vec<Samples> samplesAt(const int16_t* book) {
    return hn::LoadU(Samples(), book);
}

VEK_INLINE hn::Vec<Shapes> squareOf(hn::Vec<Shapes> filtered) {
    const auto t = hn::ShiftRight<kFilteredShift>(filtered);
    const auto within16 = hn::Min(hn::Max(t, hn::Set(kShapes, INT16_MIN)), hn::Set(kShapes, INT16_MAX));
    // With the upper half of the lane emptied, the product of pairs is the square.
    const auto low = hn::BitCast(Samples(), within16 & hn::Set(kShapes, 0xffff));
    return hn::ShiftRight<2>(pairSums(low, low));
}

void energies(const int16_t* book, int n, const int16_t* h, int16_t* energy) {
    const hn::Rebind<int16_t, Shapes> narrow;
    const auto h00 = pairOf(h[0], 0);
    const auto h10 = pairOf(h[1], h[0]);
    const auto h21 = pairOf(h[2], h[1]);
    const auto h32 = pairOf(h[3], h[2]);
    const auto h43 = pairOf(h[4], h[3]);
    const auto half = hn::Set(kShapes, kRoundFiltered);
    for (int j = 0; j < n; j += kLanesOf<Shapes>) {
        const auto y01 = samplesAt(book + 2 * j);
        const auto y23 = samplesAt(book + 2 * (n + j));
        const auto y4 = samplesAt(book + 2 * (2 * n + j));
        auto e = hn::Set(kShapes, kRoundEnergy) + squareOf(plusPairs(half, h00, y01));
        e = e + squareOf(plusPairs(half, h10, y01));
        e = e + squareOf(plusPairs(plusPairs(half, h21, y01), h00, y23));
        e = e + squareOf(plusPairs(plusPairs(half, h32, y01), h10, y23));
        e = e + squareOf(plusPairs(plusPairs(plusPairs(half, h43, y01), h21, y23), h00, y4));
        hn::StoreU(hn::DemoteTo(narrow, hn::ShiftRight<kEnergyShift>(e)), narrow, energy + j);
    }
}

int nearest(const int16_t* book, int n, const int16_t* pn, int shift, const int16_t* energy, const int16_t* gains,
            int levels, int* level, bool* negative) {
    const hn::Rebind<int16_t, Shapes> narrow;
    const auto p01 = pairOf(pn[0], pn[1]);
    const auto p23 = pairOf(pn[2], pn[3]);
    const auto p4 = pairOf(pn[4], 0);
    const auto half = hn::Set(kShapes, 1 << (shift - 1));
    hn::Vec<Samples> gain[4];
    for (int l = 0; l < levels; ++l) {
        gain[l] = pairOf(gains[2 * l], gains[2 * l + 1]);
    }
    LeastOfLanes<Shapes> best;
    auto shapes = hn::Load(kShapes, kCounting);
    for (int j = 0; j < n; j += kLanesOf<Shapes>) {
        auto s = plusPairs(half, p01, samplesAt(book + 2 * j));
        s = plusPairs(s, p23, samplesAt(book + 2 * (n + j)));
        s = plusPairs(s, p4, samplesAt(book + 2 * (2 * n + j)));
        const auto magnitude = hn::Min(hn::Abs(hn::ShiftRightSame(s, shift)), hn::Set(kShapes, INT16_MAX));
        const auto e = hn::PromoteTo(kShapes, hn::Max(hn::LoadU(narrow, energy + j), hn::Zero(narrow)));
        const auto pair = hn::BitCast(Samples(), e | hn::ShiftLeft<16>(magnitude));
        auto d = pairSums(pair, gain[0]);
        for (int l = 1; l < levels; ++l) {
            d = hn::Min(d, pairSums(pair, gain[l]));
        }
        best.see(d, shapes);
        shapes = shapes + hn::Set(kShapes, kLanesOf<Shapes>);
    }
    // Which level it was is told for the best shape alone.
    int32_t least = 0;
    const int shape = best.settle(&least);
    const int32_t p = projection(book, n, pn, shift, shape);
    int first = 0;
    while (first < levels - 1 && distance(energy[shape], p, gains + 2 * first) != least) {
        ++first;
    }
    *level = first;
    *negative = p < 0;
    return shape;
}

#endif

} // namespace

VEK_KERNEL_TABLE(G728ShapeKernels, g728ShapeKernels) = {energies, nearest};

} // namespace vek
