// Levels of bands of a spectrum and of segments of a signal: energies in 64 bits, logarithms by a table that stands in
// registers.
#include "sc/kernels/bandlevels.h"

#include <algorithm>

#include "sc/common/fixmath.h"
#include "sc/common/logarithm.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

#if VEK_LEVEL == 0

// 1/2 log2(energy), Q10, + offset, not below 0; 0 for no energy.
int16_t halfLog(int64_t energy, int offset) {
    const int32_t value = energy > 0 ? ((fix::log2Q15(energy) + 32) >> 6) + offset : 0;
    return static_cast<int16_t>(value > 0 ? value : 0);
}

void bandLevels(const int32_t* re, const int32_t* im, int offset, int16_t* level) {
    const auto power = [=](int line) { return int64_t{re[line]} * re[line] + int64_t{im[line]} * im[line]; };
    for (int j = 0; j < kBandLevels; ++j) {
        level[j] = halfLog(power(2 * j) + 2 * power(2 * j + 1) + power(2 * j + 2), offset);
    }
}

void segmentLevels(const int16_t* x, int count, int less, int16_t* level) {
    for (int j = 0; j < count; ++j) {
        int64_t energy = 0;
        for (int i = kLevelSegment * j; i < kLevelSegment * (j + 1); ++i) {
            energy += x[i] * x[i];
        }
        level[j] = static_cast<int16_t>(halfLog(energy, 0) - less);
    }
}

#else

using namespace registers;

// The table of the logarithm as bytes: of each entry, and of twice the way to the next one, the lower and the upper
// one.
struct LogBytes {
    alignas(16) uint8_t bytes[4][32];

    constexpr LogBytes() : bytes() {
        for (int i = 0; i < 32; ++i) {
            const int below = fix::kLog2Table[i];
            const int rise = 2 * (fix::kLog2Table[i + 1] - below);
            bytes[0][i] = static_cast<uint8_t>(below);
            bytes[1][i] = static_cast<uint8_t>(below >> 8);
            bytes[2][i] = static_cast<uint8_t>(rise);
            bytes[3][i] = static_cast<uint8_t>(rise >> 8);
        }
    }
};
constexpr LogBytes kLogBytes;

// As many bands as Powers has lanes, of 64 bits.
using Powers = hn::CappedTag<int64_t, 4>;
using Lines = hn::RepartitionToNarrow<Powers>;
using Bits = hn::RebindToUnsigned<Powers>;
constexpr Lines kLines;

VEK_INLINE hn::Vec<Powers> powers(hn::Vec<Lines> re, hn::Vec<Lines> im) {
    return hn::MulEven(re, re) + hn::MulEven(im, im);
}
VEK_INLINE hn::Vec<Lines> oddLines(hn::Vec<Lines> v) {
    return hn::BitCast(kLines, hn::ShiftRight<32>(hn::BitCast(Bits(), v)));
}

// Without the first lane of v, and with that of the next one.
VEK_INLINE hn::Vec<Powers> oneOn(hn::Vec<Powers> v, hn::Vec<Powers> next) {
    const auto middle = hn::ConcatLowerUpper(Powers(), next, v);
    if constexpr (kLanesOf<Powers> == 2) {
        return middle;
    } else {
        return hn::CombineShiftRightBytes<8>(Powers(), middle, v);
    }
}

// The double with at least the 30 leading bits of each number, none negative: bits far below the first one are cleared,
// so that rounding reaches no further than there. Both halves stand below a power of two that is taken off again.
VEK_INLINE hn::Vec<Lines> asDoubles(hn::Vec<Powers> v) {
    constexpr Bits bits;
    constexpr hn::RebindToFloat<Powers> doubles;
    const auto u = hn::BitCast(bits, v);
    const auto leading = hn::AndNot(hn::ShiftRight<30>(u), u);
    const auto lower = (leading & hn::Set(bits, 0xffffffff)) | hn::Set(bits, 0x4330000000000000); // 2^52
    const auto upper = hn::ShiftRight<32>(leading) | hn::Set(bits, 0x4530000000000000);           // 2^84
    const auto most = hn::BitCast(doubles, upper) - hn::Set(doubles, 0x1p84 + 0x1p52);
    return hn::BitCast(kLines, most + hn::BitCast(doubles, lower));
}

// Of bytes 0..31, each the only one of its lane; of others nothing.
VEK_INLINE hn::Vec<Lines> logByte(int which, hn::Vec<Lines> inLower, hn::Vec<Lines> inUpper) {
    constexpr hn::Repartition<uint8_t, Lines> bytes;
    const auto lower = hn::LoadDup128(bytes, kLogBytes.bytes[which]);
    const auto upper = hn::LoadDup128(bytes, kLogBytes.bytes[which] + 16);
    return hn::BitCast(kLines, hn::TableLookupBytesOr0(lower, hn::BitCast(bytes, inLower)) |
                                   hn::TableLookupBytesOr0(upper, hn::BitCast(bytes, inUpper)));
}

// The upper halves of doubles tell exponent, entry and the way to the next one.
VEK_INLINE hn::Vec<Lines> halfLogs(hn::Vec<Lines> v, int offset) {
    constexpr hn::RepartitionToNarrow<Lines> halves;
    const auto entry = hn::ShiftRight<15>(v) & hn::Set(kLines, 31);
    // A byte with its highest bit finds nothing.
    const auto marked = [](hn::Vec<Lines> place) {
        const auto beyond = hn::ShiftLeft<3>(place & hn::Set(kLines, 16));
        return place | beyond | hn::Set(kLines, static_cast<int32_t>(0x80808000));
    };
    const auto inLower = marked(entry);
    const auto inUpper = marked(entry ^ hn::Set(kLines, 16));
    const auto below = logByte(0, inLower, inUpper) | hn::ShiftLeft<8>(logByte(1, inLower, inUpper));
    const auto rise = logByte(2, inLower, inUpper) | hn::ShiftLeft<8>(logByte(3, inLower, inUpper));
    const auto part = v & hn::Set(kLines, 0x7fff);
    const auto risen = pairSums(hn::BitCast(halves, rise), hn::BitCast(halves, part));
    const auto fraction = hn::ShiftRight<16>(hn::ShiftLeft<16>(below) + risen);
    const auto exponent = hn::ShiftRight<20>(v) - hn::Set(kLines, 1023);
    const auto log = hn::ShiftLeft<15>(exponent) + fraction + hn::Set(kLines, 32);
    return hn::Max(hn::ShiftRight<6>(log) + hn::Set(kLines, offset), hn::Zero(kLines));
}

void bandLevels(const int32_t* re, const int32_t* im, int offset, int16_t* level) {
    constexpr int bands = kLanesOf<Powers>;
    constexpr hn::Rebind<int16_t, Lines> narrow;
    auto next = powers(hn::LoadU(kLines, re), hn::LoadU(kLines, im));
    for (int j = 0; j < kBandLevels; j += 2 * bands) {
        hn::Vec<Lines> doubles[2];
        for (int h = 0; h < 2; ++h) {
            const int line = 2 * (j + h * bands);
            const auto even = next;
            const auto odd = powers(oddLines(hn::LoadU(kLines, re + line)), oddLines(hn::LoadU(kLines, im + line)));
            next = powers(hn::LoadU(kLines, re + line + 2 * bands), hn::LoadU(kLines, im + line + 2 * bands));
            doubles[h] = asDoubles(even + odd + odd + oneOn(even, next));
        }
        const auto logs = halfLogs(hn::ConcatOdd(kLines, doubles[1], doubles[0]), offset);
        hn::StoreU(hn::DemoteTo(narrow, logs), narrow, level + j);
    }
}

// Eight samples of a segment in each 128 bits: of two segments that are not neighbours, where there is room for two.
template <class D>
VEK_INLINE hn::Vec<D> ofSegments(D d, const int16_t* x) {
    if constexpr (kLanesOf<D> == 8) {
        return hn::LoadU(d, x);
    } else {
        return hn::Combine(d, hn::LoadU(kEightOf16, x + 2 * kLevelSegment), hn::LoadU(kEightOf16, x));
    }
}

// The sums of two neighbouring squares each, as numbers without a sign.
VEK_INLINE hn::Vec<Bits> pairEnergies(const int16_t* x) {
    const auto v = ofSegments(hn::Repartition<int16_t, Powers>(), x);
    return hn::BitCast(Bits(), pairSums(v, v));
}

// The energies of as many segments as there are lanes, as doubles: each the sum of five sums of pairs.
VEK_INLINE hn::Vec<Lines> segmentEnergies(const int16_t* x) {
    constexpr hn::RebindToFloat<Powers> doubles;
    const auto four = [](hn::Vec<Bits> pairs) {
        return (pairs & hn::Set(Bits(), 0xffffffff)) + hn::ShiftRight<32>(pairs);
    };
    const auto even = four(pairEnergies(x));
    const auto odd = four(pairEnergies(x + kLevelSegment));
    const auto last = hn::InterleaveUpper(Bits(), pairEnergies(x + 2), pairEnergies(x + kLevelSegment + 2));
    const auto sums =
        hn::InterleaveLower(Bits(), even, odd) + hn::InterleaveUpper(Bits(), even, odd) + hn::ShiftRight<32>(last);
    const auto above = hn::BitCast(doubles, sums | hn::Set(Bits(), 0x4330000000000000)); // 2^52
    return hn::BitCast(kLines, above - hn::Set(doubles, 0x1p52));
}

void segmentLevels(const int16_t* x, int count, int less, int16_t* level) {
    constexpr int lanes = kLanesOf<Powers>;
    constexpr int group = 2 * lanes;
    using Narrow = hn::Rebind<int16_t, Lines>;
    const auto fill = [less](const int16_t* from, int16_t* to) {
        const auto logs =
            halfLogs(hn::ConcatOdd(kLines, segmentEnergies(from + kLevelSegment * lanes), segmentEnergies(from)), 0);
        hn::StoreU(hn::DemoteTo(Narrow(), logs) - hn::Set(Narrow(), static_cast<int16_t>(less)), Narrow(), to);
    };
    int j = 0;
    for (; j + group <= count; j += group) {
        fill(x + kLevelSegment * j, level + j);
    }
    if (j < count) {
        int16_t rest[kLevelSegment * group] = {};
        int16_t levels[group];
        std::copy(x + kLevelSegment * j, x + kLevelSegment * count, rest);
        fill(rest, levels);
        std::copy_n(levels, count - j, level + j);
    }
}

#endif

} // namespace

VEK_KERNEL_TABLE(BandLevelKernels, bandLevelKernels) = {bandLevels, segmentLevels};

} // namespace vek
