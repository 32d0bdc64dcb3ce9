// Calls of G.722, G.722.1, G.723.1 and G.726 with every kind of input.
#include <gtest/gtest.h>

#include "everyinput.h"
#include "veksc.h"

namespace {

using S = Vek16s;
using L = Vek32s;
using everyinput::Run;
using everyinput::sample;

S subframe(Run& r) {
    return static_cast<S>(static_cast<int>(r.kind()) % 4);
}

// The size of such a call is the rate.
constexpr VekSpchBitRate kAdpcmRates[] = {VEK_SPCHBR_16000, VEK_SPCHBR_24000, VEK_SPCHBR_32000, VEK_SPCHBR_40000};
constexpr VekSpchBitRate kRates723[] = {VEK_SPCHBR_5300, VEK_SPCHBR_6300};

VeksCodecState_G726* coder726(Run& r, int rate) {
    return r.state<VeksCodecState_G726>(veksEncodeGetStateSize_G726_16s8u, [&](VeksCodecState_G726* state) {
        return veksEncodeInit_G726_16s8u(state, kAdpcmRates[rate]);
    });
}

VeksCodecState_G726* decoder726(Run& r, int rate) {
    const auto law = static_cast<VekPCMLaw>(static_cast<int>(r.kind()) % 3);
    return r.state<VeksCodecState_G726>(veksDecodeGetStateSize_G726_8u16s, [&](VeksCodecState_G726* state) {
        return veksDecodeInit_G726_8u16s(state, kAdpcmRates[rate], law);
    });
}

VeksCodecState_G722* coder722(Run& r) {
    return r.state<VeksCodecState_G722>(veksSBADPCMEncodeStateSize_G722_16s, veksSBADPCMEncodeInit_G722_16s);
}

VeksCodecState_G722* decoder722(Run& r) {
    return r.state<VeksCodecState_G722>(veksSBADPCMDecodeStateSize_G722_16s, veksSBADPCMDecodeInit_G722_16s);
}

const everyinput::Family adpcm{
    EVERY_INPUT(veksEncodeGetStateSize_G726_16s8u, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksDecodeGetStateSize_G726_8u16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksEncodeInit_G726_16s8u, ({0, 1, 2, 3}), coder726(r, n), kAdpcmRates[n]),
    EVERY_INPUT(veksDecodeInit_G726_8u16s, ({0, 1, 2, 3}), decoder726(r, n), kAdpcmRates[n], VEK_PCM_LINEAR),
    EVERY_INPUT(veksEncode_G726_16s8u, ({0, 1, 2, 3}), coder726(r, n), r.in<S>(161), r.out<Vek8u>(161), 161),
    EVERY_INPUT(veksDecode_G726_8u16s, ({0, 1, 2, 3}), decoder726(r, n), r.in<Vek8u>(161), r.out<S>(161), 161),
    EVERY_INPUT(veksQMFEncode_G722_16s, ({2, 66, 320, 65536}), r.in<S>(n), r.out<S>(n), n, r.both<S>(22)),
    EVERY_INPUT(veksQMFDecode_G722_16s, ({2, 66, 320, 65536}), r.in<S>(n), r.out<S>(n), n, r.both<S>(22)),
    EVERY_INPUT(veksSBADPCMEncodeStateSize_G722_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksSBADPCMDecodeStateSize_G722_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksSBADPCMEncodeInit_G722_16s, ({1}), coder722(r)),
    EVERY_INPUT(veksSBADPCMDecodeInit_G722_16s, ({1}), decoder722(r)),
    EVERY_INPUT(veksSBADPCMEncode_G722_16s, ({2, 66, 320}), r.in<S>(n), r.out<S>(n / 2), n, coder722(r)),
    EVERY_INPUT(veksSBADPCMDecode_G722_16s, ({2, 66, 320}), r.in<S>(n / 2), r.out<S>(n), n, r.number(1, 3),
                decoder722(r)),
    EVERY_INPUT(veksDownsampleFilter_G722_16s, ({4, 160, 65536}), r.in<S>(n + 2, 5), n, r.out<S>(n / 4)),
    EVERY_INPUT(veksFilterHighband_G722_16s_I, ({1, 80, 67, 65536}), r.both<S>(n), n, r.both<S>(2)),
    EVERY_INPUT(veksClassifyFrame_G722_16s_I, ({16, 80, 67, 1024}), r.both<S>(n, 1), n, r.out<L>(1), decoder722(r)),
    EVERY_INPUT(veksHuffmanEncode_G722_16s32u, ({0, 1, 2, 3, 4, 5, 6, 7}), n, r.number(-8, 31), r.in<S>(20),
                r.out<Vek32u>(4), r.out<L>(1))
        .mayGive({vekStsOutOfRangeErr}),
};

const everyinput::Family spectra723{
    EVERY_INPUT(veksLevinsonDurbin_G723_16s, ({10}), r.in<S>(n), r.out<S>(1), r.both<S>(1, {0, 32767}), r.out<S>(n)),
    EVERY_INPUT(veksLPCToLSF_G723_16s, ({10}), r.in<S>(n), r.in<S>(n), r.out<S>(n)),
    EVERY_INPUT(veksLSFQuant_G723_16s32s, ({10}), r.rising<S>(n, {0, 32767}), r.rising<S>(n, {0, 32767}), r.out<L>(1)),
    EVERY_INPUT(veksLSFDecode_G723_16s, ({10}), r.in<S>(3, {0, 255}), r.rising<S>(n, {0, 32767}), r.number(0, 1),
                r.out<S>(n))
        .mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksLSFToLPC_G723_16s, ({10}), r.rising<S>(n, {0, 32767}), r.out<S>(n)),
    EVERY_INPUT(veksLSFToLPC_G723_16s_I, ({10}), r.bothRising<S>(n, {0, 32767})),
};

const everyinput::Family filters723{
    EVERY_INPUT(veksHighPassFilter_G723_16s, ({240}), r.from<S>(n), r.to<S>(n), r.both<L>(2, {-16384, 16383})),
    EVERY_INPUT(veksSynthesisFilter_G723_16s, ({60}), r.in<S>(10), r.from<S>(n), r.both<S>(10), r.to<S>(n)),
    EVERY_INPUT(veksSynthesisFilter_G723_16s32s, ({60}), r.in<S>(10), r.in<S>(n), r.out<L>(n), r.both<S>(10)),
    EVERY_INPUT(veksHarmonicNoiseSubtract_G723_16s_I, ({1, 77, 148}), sample(r), n, r.in<S>(60, n), r.both<S>(60)),
    EVERY_INPUT(veksTiltCompensation_G723_32s16s, ({60}), sample(r), r.in<L>(n + 1), r.out<S>(n)),
    EVERY_INPUT(veksGainControl_G723_16s_I, ({60}), r.number(0, 0x7fffffff), r.both<S>(n), r.both<S>(1, {0, 32767})),
    EVERY_INPUT(veksOpenLoopPitchSearch_G723_16s, ({120}), r.in<S>(n, 142), r.out<S>(1)),
    EVERY_INPUT(veksHarmonicSearch_G723_16s, ({18, 77, 145}), static_cast<S>(n), r.in<S>(60, 148), r.out<S>(1),
                r.out<S>(1)),
    EVERY_INPUT(veksPitchPostFilter_G723_16s, ({18, 77, 145}), static_cast<S>(n), r.in<S>(240, {-4096, 4095}, 145),
                r.out<S>(1), r.out<S>(1), r.out<S>(1), subframe(r), kRates723[static_cast<int>(r.kind()) % 2]),
};

const everyinput::Family codebooks723{
    EVERY_INPUT(veksDecodeAdaptiveVector_G723_16s, ({18, 57, 58, 145}), static_cast<S>(n),
                sample(r, 0, n < 145 ? 3 : 2), sample(r, 0, 84), r.in<S>(148), r.out<S>(60),
                kRates723[static_cast<int>(r.kind()) % 2]),
    EVERY_INPUT(veksAdaptiveCodebookSearch_G723, ({18, 57, 58, 140}), static_cast<S>(n), r.in<S>(60), r.in<S>(60),
                r.in<S>(148), r.in<L>(5, {0, 0x7fffffff}), r.out<S>(1), r.out<S>(1), subframe(r), sample(r, -1, 1),
                kRates723[static_cast<int>(r.kind()) % 2]),
    EVERY_INPUT(veksGainQuant_G723_16s, ({1, 5, 6}), r.in<S>(60), r.in<S>(60), r.out<S>(6), r.out<S>(6),
                r.kept<L>({-0x40000000}), r.out<S>(1), r.out<S>(1), static_cast<S>(n), r.out<S>(1)),
    EVERY_INPUT(veksMPMLQFixedCodebookSearch_G723, ({18, 57, 58, 145}), static_cast<S>(n), r.in<S>(60), r.in<S>(60),
                r.out<S>(60), r.out<S>(1), r.out<S>(1), r.out<S>(1), r.out<S>(1), r.out<L>(1), subframe(r)),
    EVERY_INPUT(veksToeplizMatrix_G723_16s, ({60}), r.in<S>(n), r.out<S>(416)),
    EVERY_INPUT(veksToeplizMatrix_G723_16s32s, ({60}), r.in<S>(n), r.out<L>(416)),
    EVERY_INPUT(veksACELPFixedCodebookSearch_G723_16s, ({64}), r.in<S>(n), r.in<S>(416), r.out<S>(1), r.out<S>(1),
                r.out<S>(1), r.out<S>(60), r.both<S>(1, {0, 30000})),
    EVERY_INPUT(veksACELPFixedCodebookSearch_G723_32s16s, ({64}), r.in<S>(n), r.in<L>(416), r.out<S>(1), r.out<S>(1),
                r.out<S>(1), r.out<S>(60), r.both<S>(1, {0, 30000})),
};

TEST(VekEveryInput, OfTheSubBandAndWaveformCoders) {
    adpcm.check();
}

TEST(VekEveryInput, OfTheSpectraOfG723) {
    spectra723.check();
}

TEST(VekEveryInput, OfTheFiltersAndPitchOfG723) {
    filters723.check();
}

TEST(VekEveryInput, OfTheCodebooksOfG723) {
    codebooks723.check();
}

} // namespace
