// Inverse square roots of many numbers, from 256 bits on a number a lane: below, no lane has a shift of its own.
#include "sc/kernels/roots.h"

#include <bit>

#include "sc/common/inverseroot.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

constexpr int32_t kOfNone = 0x3fffffff;

// Both values for a number that is not positive are made, and one is taken: such numbers come as they like.
VEK_INLINE int32_t inverseRoot(int32_t x) {
    // The top bit's number counts the octaves of the root by pairs; the mantissa has its top at bit 30 or 29.
    const int top = std::bit_width(static_cast<uint32_t>(x > 0 ? x : 1)) - 1;
    const auto mantissa = static_cast<uint32_t>(x > 0 ? x : 1) << (31 - top) >> (2 - top % 2);
    const int i = static_cast<int>(mantissa >> 25) - 16;
    const int fraction = static_cast<int>(mantissa >> 10) & 0x7fff;
    // Between two entries, which differ by less than 1000: nothing saturates.
    const int32_t y = kInverseRoots[i] * 65536 - (kInverseRoots[i] - kInverseRoots[i + 1]) * fraction * 2;
    return x > 0 ? y >> (top / 2 + 1) : kOfNone;
}

void oneByOne(int32_t* x, int n) {
    for (int i = 0; i < n; ++i) {
        x[i] = inverseRoot(x[i]);
    }
}

#if VEK_LEVEL < 2

VekStatus inverseRoots(int32_t* x, int n) {
    oneByOne(x, n);
    return vekStsNoErr;
}

#else

using namespace registers;

using Numbers = hn::CappedTag<int32_t, 8>;

// An entry of the table in the lower half and the step to the next one in the upper half.
struct Lines {
    int32_t line[48];

    constexpr Lines() : line() {
        for (int i = 0; i < 48; ++i) {
            line[i] = kInverseRoots[i] + (kInverseRoots[i + 1] - kInverseRoots[i]) * 65536;
        }
    }
};
constexpr Lines kLines;

template <class D>
VEK_INLINE hn::Vec<D> inverseRootsOf(D d, hn::Vec<D> x) {
    const hn::RebindToFloat<D> floats;
    const hn::RepartitionToNarrow<D> halves;
    const auto set = [d](int32_t v) { return hn::Set(d, v); };
    const auto v = hn::Max(x, set(1));
    // As a float without the bit that would be rounded: its exponent tells the top bit, and 23 bits stand below.
    const auto bits = hn::BitCast(d, hn::ConvertTo(floats, hn::AndNot(hn::ShiftRight<24>(v), v)));
    const auto mantissa = bits & set(0x7fffff);
    // Exponents are 127 more, so that a top bit of an odd number has an even one; these double the mantissa.
    const auto octave = (bits & set(0xffffff)) ^ set(0x800000);
    const auto place = octave + hn::IfThenElseZero(hn::Gt(octave, set(0x7fffff)), mantissa);
    const auto line = hn::GatherIndex(d, kLines.line, hn::ShiftRight<19>(place));
    // The fraction, 15 bits, in the upper half, beside the step.
    const auto fraction = hn::ShiftLeft<12>(place) & set(0x7fff0000);
    const auto step = pairSums(hn::BitCast(halves, line), hn::BitCast(halves, fraction));
    const auto y = hn::ShiftLeft<16>(line) + (step + step);
    const auto shift = hn::ShiftRight<24>(bits - set(125 * (1 << 23)));
    return hn::IfThenElse(hn::Gt(x, hn::Zero(d)), y >> shift, set(kOfNone));
}

VekStatus inverseRoots(int32_t* x, int n) {
    constexpr int lanes = kLanesOf<Numbers>;
    const Numbers d;
    if (n < lanes) {
        oneByOne(x, n);
        return vekStsNoErr;
    }
    const auto whole = [=](int from, int end) {
        for (int i = from; i < end; i += lanes) {
            hn::StoreU(inverseRootsOf(d, hn::LoadU(d, x + i)), d, x + i);
        }
    };
    const int more = n % lanes;
    if (more == 1 || more == 2) {
        // Two before whole registers: who has just copied ten numbers has the last eight in store as one piece, and the
        // first eight not.
        const hn::FixedTag<int32_t, 2> two;
        const auto first = inverseRootsOf(two, hn::LoadU(two, x));
        whole(more, n);
        hn::StoreU(first, two, x);
        return vekStsNoErr;
    }
    // The last register overlaps the one before, and is taken while all is what it was.
    const auto last = inverseRootsOf(d, hn::LoadU(d, x + n - lanes));
    whole(0, n - lanes);
    hn::StoreU(last, d, x + n - lanes);
    return vekStsNoErr;
}

#endif

} // namespace

VEK_KERNEL_TABLE(RootKernels, rootKernels) = {inverseRoots};

} // namespace vek
