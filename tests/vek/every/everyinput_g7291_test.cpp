// Calls of G.729.1 with every kind of input.
#include <gtest/gtest.h>

#include "everyinput.h"
#include "veksc.h"

namespace {

using S = Vek16s;
using L = Vek32s;
using everyinput::lsfHistory;
using everyinput::Run;
using everyinput::sample;

void* bank(Run& r) {
    return r.state<void>(veksQMFGetStateSize_G7291_16s, veksQMFInit_G7291_16s);
}

void* highPass(Run& r) {
    return r.state<void>(veksFilterHighpassGetStateSize_G7291_16s, veksFilterHighpassInit_G7291_16s);
}

void* lowPass(Run& r) {
    return r.state<void>(veksFilterLowpassGetStateSize_G7291_16s, veksFilterLowpassInit_G7291_16s);
}

void* excitation(Run& r) {
    return r.state<void>(veksGenerateExcitationGetStateSize_G7291_16s, veksGenerateExcitationInit_G7291_16s);
}

const everyinput::Family core{
    EVERY_INPUT(veksAdaptiveCodebookSearch_G7291_16s, ({0, 40, 80, 120}), r.in<S>(40), r.in<S>(40), r.in<S>(194),
                r.out<S>(2), 20, 143, static_cast<S>(n)),
    EVERY_INPUT(veksAdaptiveCodebookGain_G7291_16s, ({40}), r.in<S>(n), r.in<S>(n), r.in<S>(n), r.out<S>(n),
                r.out<S>(1)),
    EVERY_INPUT(veksLSFDecode_G7291_16s, ({10}), r.in<S>(4, {0, 1}), lsfHistory(r), r.out<S>(n)),
    EVERY_INPUT(veksGainQuant_G7291_16s, ({1, 2, 3, 4}), r.in<S>(40), r.in<S>(40), sample(r, 0, 32767), r.out<S>(1),
                r.out<S>(1), static_cast<S>(n)),
    EVERY_INPUT(veksGainControl_G7291_16s_I, ({40}), r.in<S>(n), r.both<S>(n), r.both<S>(1, {0, 32767}),
                sample(r, 0, 32767), sample(r, 0, 1), r.both<S>(1, {0, 32767})),
    EVERY_INPUT(veksTiltCompensation_G7291_16s, ({40}), r.in<S>(n + 1), r.out<S>(n), sample(r)),
    EVERY_INPUT(veksAlgebraicCodebookSearchL1_G7291_16s, ({20, 60, 143}), r.in<S>(40), r.in<S>(40), r.both<S>(40),
                r.both<S>(40), static_cast<S>(n), sample(r, 0, 19661), r.out<S>(40), r.out<S>(40), r.out<S>(2)),
    EVERY_INPUT(veksAlgebraicCodebookSearchL2_G7291_16s, ({40}), r.in<S>(n), r.in<S>(n), r.in<S>(n), sample(r),
                r.out<S>(n), r.out<S>(n), r.out<S>(2)),
};

const everyinput::Family bands{
    EVERY_INPUT(veksQMFGetStateSize_G7291_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksQMFInit_G7291_16s, ({1}), bank(r)),
    EVERY_INPUT(veksQMFEncode_G7291_16s, ({2, 66, 320, 65536}), r.in<S>(n), n, r.out<S>(n / 2), r.out<S>(n / 2),
                bank(r)),
    EVERY_INPUT(veksQMFDecode_G7291_16s, ({1, 67, 160, 65536}), r.in<S>(n), r.in<S>(n), sample(r, 0, 16384), n,
                r.out<S>(2 * n), bank(r)),
    EVERY_INPUT(veksFilterHighpassGetStateSize_G7291_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksFilterHighpassInit_G7291_16s, ({1}), highPass(r)),
    EVERY_INPUT(veksFilterHighpass_G7291_16s_ISfs, ({1, 67, 160, 65536}), r.both<S>(n), n, highPass(r),
                r.number(-8, 8)),
    EVERY_INPUT(veksFilterLowpassGetStateSize_G7291_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksFilterLowpassInit_G7291_16s, ({1}), lowPass(r)),
    EVERY_INPUT(veksFilterLowpass_G7291_16s_I, ({1, 67, 160, 65536}), r.both<S>(n), n, lowPass(r),
                1 + static_cast<int>(r.kind()) % 2),
    EVERY_INPUT(veksMDCTFwd_G7291_16s, ({160}), r.in<S>(n), r.both<S>(n), r.out<L>(1), r.out<S>(n), r.number(0, 8)),
    EVERY_INPUT(veksMDCTInv_G7291_16s, ({160}), r.in<S>(n), r.both<S>(n), r.out<S>(n), r.number(-15, 15)),
    EVERY_INPUT(veksMDCTPostProcess_G7291_16s, ({160}), r.both<S>(n), r.number(0, 11)),
    EVERY_INPUT(veksMDCTQuantFwd_G7291_16s32u, ({280}), r.in<S>(n), r.in<S>(18, {0, 16}), r.out<Vek32u>(11)),
    EVERY_INPUT(veksMDCTQuantInv_G7291_32u16s, ({320}), r.in<Vek32u>(11), r.in<S>(18, {0, 16}), r.in<S>(18, {-20, 30}),
                r.out<S>(n)),
};

const everyinput::Family extension{
    EVERY_INPUT(veksEnvelopTime_G7291_16s, ({1, 8, 16}), r.in<S>(10 * n), r.number(0, 15), r.out<S>(n), n),
    EVERY_INPUT(veksEnvelopFrequency_G7291_16s, ({128}), r.in<S>(n), r.out<S>(12)),
    EVERY_INPUT(veksQuantParam_G7291_16s, ({28}), r.both<S>(n), r.out<S>(6)),
    EVERY_INPUT(veksGenerateExcitationGetStateSize_G7291_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksGenerateExcitationInit_G7291_16s, ({1}), excitation(r)),
    EVERY_INPUT(veksGenerateExcitation_G7291_16s, ({160}), r.in<S>(4, {0, 144}), r.in<S>(4, {-1, 1}), r.in<L>(4),
                r.in<L>(4), r.out<S>(n), excitation(r)),
    EVERY_INPUT(veksShapeEnvelopTime_G7291_16s, ({80}), r.from<S>(n), r.in<S>(8), r.both<S>(1, {0, 32767}),
                r.both<S>(1, {-32, 63}), r.to<S>(n)),
    EVERY_INPUT(veksShapeEnvelopFrequency_G7291_16s, ({160}), r.in<S>(n, 48), r.in<S>(12), r.out<S>(n), r.both<S>(33),
                r.both<S>(32)),
    EVERY_INPUT(veksCompressEnvelopTime_G7291_16s, ({160}), r.in<S>(16), r.both<S>(n), r.both<S>(2)),
};

TEST(VekEveryInput, OfTheCoreOfG7291) {
    core.check();
}

TEST(VekEveryInput, OfTheBandsOfG7291) {
    bands.check();
}

TEST(VekEveryInput, OfTheBandExtensionOfG7291) {
    extension.check();
}

} // namespace
