// Calls of AMR-WB+ with every kind of input.
#include <gtest/gtest.h>

#include "everyinput.h"
#include "veksc.h"

namespace {

using S = Vek16s;
using L = Vek32s;
using everyinput::Run;
using everyinput::sample;

#define TRANSFORMS ({48, 96, 192, 288, 576, 1152})

// The size of such a call is the scale of the internal rate.
#define SCALES ({48, 54, 80, 96, 135, 144})

/// Points of the lattice RE8: all even, of a sum that 4 divides.
const S* points(Run& r, int count) {
    const S* const numbers = r.in<S>(8 * count, {-6, 6});
    std::vector<S> lines(numbers, numbers + 8 * count);
    for (size_t first = 0; first < lines.size(); first += 8) {
        int sum = 0;
        for (size_t i = first; i < first + 8; ++i) {
            lines[i] = static_cast<S>(lines[i] / 2 * 2);
            sum += lines[i];
        }
        lines[first] = static_cast<S>(lines[first] + (sum % 4 != 0 ? 2 : 0));
    }
    return r.given(lines);
}

const everyinput::Family coding{
    EVERY_INPUT(veksFFTFwd_RToPerm_AMRWBE_16s, TRANSFORMS, r.from<S>(n), r.to<S>(n), n),
    EVERY_INPUT(veksFFTInv_PermToR_AMRWBE_16s, TRANSFORMS, r.from<S>(n), r.to<S>(n), n),
    EVERY_INPUT(veksSNR_AMRWBE_16s, ({1, 40, 67, 65536}), r.in<S>(n), r.in<S>(n), n, n % 2 == 0 ? n / 2 : n,
                r.out<S>(1)),
    EVERY_INPUT(veksGainQuantTCX_AMRWBE_16s, TRANSFORMS, r.in<S>(n), r.number(0, 15), r.in<S>(n), n, r.number(0, 1),
                r.out<L>(1), r.out<S>(1)),
    EVERY_INPUT(veksGainDecodeTCX_AMRWBE_16s, TRANSFORMS, r.in<S>(n), n, sample(r, 0, 127), r.number(0, 1),
                r.both<L>(1, {0, 0x7fffffff}), r.out<L>(1)),
    EVERY_INPUT(veksISFQuantHighBand_AMRWBE_16s, ({0, 1}), r.from<S>(8), r.to<S>(8), r.both<S>(8), r.out<S>(2), n),
    EVERY_INPUT(veksISFQuantDecodeHighBand_AMRWBE_16s, ({0, 1}), r.in<S>(2, {0, 3}), r.both<S>(8), r.both<S>(8),
                r.number(0, 1), n),
    EVERY_INPUT(veksFIRGenMidBand_AMRWBE_16s, ({320}), r.in<S>(n, 8), r.in<S>(n), r.out<S>(9)),
    EVERY_INPUT(veksPostFilterLowBand_AMRWBE_16s, ({1024}), r.in<S>(16, {0, 375}), r.in<S>(16), r.both<S>(n),
                r.both<S>(503), r.both<S>(24), r.both<S>(1), r.number(0, 1)),
    EVERY_INPUT(veksQuantTCX_AMRWBE_16s, ({1, 12, 144}), r.from<S>(8 * n), r.to<S>(8 * n), n, r.number(0, 16 * n),
                r.out<S>(1)),
    EVERY_INPUT(veksEncodeMux_AMRWBE_16s, ({1, 12, 144}), points(r, n), r.given<L>({200, 64}), 2, r.out<S>(66), n),
    EVERY_INPUT(veksDecodeDemux_AMRWBE_16s, ({1, 12, 144}), r.in<S>(66), r.given<L>({200, 64}), r.in<L>(2, {0, 1}), 2,
                r.out<S>(8 * n), n),
};

const everyinput::Family rates{
    EVERY_INPUT(veksBandSplit_AMRWBE_16s, ({128, 256, 1024}), r.in<S>(n + 128), r.both<S>(20 + n / 32 * 5), r.out<S>(n),
                n),
    EVERY_INPUT(veksBandJoin_AMRWBE_16s, ({128, 256, 1024}), r.in<S>(20 + n / 32 * 5), r.in<S>(n), r.out<S>(n), n),
    EVERY_INPUT(veksDownsample_AMRWBE_16s, ({24, 66, 1024, 8192}), r.in<S>(n), n, r.out<S>(n / 2), r.both<S>(24),
                r.number(0, 1)),
    EVERY_INPUT(veksUpsample_AMRWBE_16s, ({24, 66, 1024, 8192}), r.in<S>(n / 2), r.both<S>(n), n, r.both<S>(24),
                r.number(0, 1), r.number(0, 1)),
    EVERY_INPUT(veksBandSplitDownsample_AMRWBE_16s, SCALES, r.in<S>(7680), 7680, r.out<S>(1024), r.out<S>(1024), 1024,
                r.both<S>(72), r.kept<S>({0}), r.out<L>(1), n),
    EVERY_INPUT(veksBandJoinUpsample_AMRWBE_16s, SCALES, r.in<S>(1024), r.in<S>(1024), 1024, r.out<S>(7680), 3840,
                r.both<S>(72), r.kept<S>({0}), r.out<L>(1), n),
    EVERY_INPUT(veksResamplePolyphase_AMRWBE_16s, ({12, 96, 1020, 8184}), r.in<S>(n), n, 4, 12, r.kept<S>({0}),
                r.both<S>(24), r.out<S>(3 * n), 3 * n),
};

TEST(VekEveryInput, OfTheExtendedWideBandCodec) {
    coding.check();
}

TEST(VekEveryInput, OfTheRatesOfTheExtendedWideBandCodec) {
    rates.check();
}

} // namespace
