// Calls of G.729 and its annexes with every kind of input.
#include <gtest/gtest.h>

#include "everyinput.h"
#include "veksc.h"

namespace {

using S = Vek16s;
using L = Vek32s;
using F = Vek32f;
using everyinput::lsfHistory;
using everyinput::Range;
using everyinput::Run;
using everyinput::sample;

constexpr Range kCosine16{-32768, 32767};
constexpr Range kRadians16{40, 25681};
constexpr Range kCosine{-0.999, 0.999};
constexpr Range kSmall{-1, 1};

F* realLsfHistory(Run& r) {
    std::vector<F> start;
    for (int i = 0; i < 40; ++i) {
        start.push_back(static_cast<F>((i % 10 + 1) * 3.14159265 / 11));
    }
    return r.kept(start);
}

/// Autocorrelation of a first-order process, normalised; of the kind of the run.
template <class T>
const T* lagsOf(Run& r, int order, double lag, double longest) {
    std::vector<T> lags(static_cast<size_t>(order) + 1);
    const double poles[] = {longest, -longest, 0.5, 0, 1e-4, 0.9, -0.7};
    for (T& value : lags) {
        value = static_cast<T>(lag);
        lag *= poles[static_cast<int>(r.kind())];
    }
    return r.given(lags);
}

const L* normalised(Run& r, int order) {
    return lagsOf<L>(r, order, 0x7fffffff, 0.999);
}

const F* normalisedReals(Run& r, int order) {
    return lagsOf<F>(r, order, 1000, 0.99);
}

/// Coefficients of a stable filter with one pole.
const F* stable(Run& r, int order) {
    std::vector<F> lpc(static_cast<size_t>(order) + 1);
    lpc[0] = 1;
    lpc[1] = static_cast<F>(r.number(-9, 9)) / 10;
    return r.given(lpc);
}

const everyinput::Family prediction{
    EVERY_INPUT(veksPreemphasize_G729A_16s, ({1, 40, 67, 65536}), sample(r), r.in<S>(n), r.out<S>(n), n, r.both<S>(1)),
    EVERY_INPUT(veksPreemphasize_G729A_16s_I, ({1, 40, 67, 65536}), sample(r), r.both<S>(n), n, r.both<S>(1)),
    EVERY_INPUT(veksPreemphasize_32f_I, ({1, 40, 67, 65536}), r.both<F>(n), n, r.both<F>(1), 0.9F).within(1e-6),
    EVERY_INPUT(veksLPCToLSP_G729_16s, ({10}), r.in<S>(11), r.in<S>(n), r.out<S>(n)).mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksLPCToLSP_G729A_16s, ({10}), r.in<S>(11), r.in<S>(n), r.out<S>(n)).mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksLPCToLSP_GSMAMR_16s, ({10}), r.in<S>(11), r.in<S>(n), r.out<S>(n)).mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksLPCToLSP_G729_32f, ({10}), stable(r, 10), r.in<F>(n, kSmall), r.out<F>(n))
        .within(1e-4)
        .mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksLPCToLSP_G729A_32f, ({10}), stable(r, 10), r.in<F>(n, kSmall), r.out<F>(n))
        .within(1e-4)
        .mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksLSPToLPC_G729_16s, ({10}), r.in<S>(n), r.out<S>(11)),
    EVERY_INPUT(veksLSPToLPC_G729_32f, ({10}), r.falling<F>(n, kCosine), r.out<F>(11)).within(1e-5),
    EVERY_INPUT(veksLSPToLSF_Norm_G729_16s, ({10}), r.in<S>(n), r.out<S>(n)),
    EVERY_INPUT(veksLSPToLSF_G729_16s, ({10}), r.in<S>(n), r.out<S>(n)),
    EVERY_INPUT(veksLSFToLSP_G729_16s, ({10}), r.from<S>(n, {0, 32767}), r.to<S>(n)),
    EVERY_INPUT(veksLevinsonDurbin_G729_32s16s, ({1, 10, 32}), normalised(r, n), n, r.out<S>(n + 1), r.out<S>(n),
                r.out<S>(1))
        .mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksLevinsonDurbin_G729B, ({10}), normalised(r, n), r.out<S>(n + 1), r.out<S>(n), r.out<S>(1))
        .mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksLevinsonDurbin_G729_32f, ({1, 10, 32}), normalisedReals(r, n), n, r.out<F>(n + 1), r.out<F>(n),
                r.out<F>(1))
        .within(1e-5)
        .mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksLSFDecode_G729_16s, ({10}), r.in<S>(4, {0, 1}), lsfHistory(r), r.out<S>(n)),
    EVERY_INPUT(veksLSFDecode_G729B_16s, ({10}), r.in<S>(3, {0, 1}), lsfHistory(r), r.out<S>(n)),
    EVERY_INPUT(veksLSFDecodeErased_G729_16s, ({10}), r.number(0, 1), lsfHistory(r), r.rising<S>(n, kRadians16)),
    EVERY_INPUT(veksLSFQuant_G729_16s, ({10}), r.rising<S>(n, kRadians16), lsfHistory(r), r.out<S>(n), r.out<S>(4)),
    EVERY_INPUT(veksLSFQuant_G729B_16s, ({10}), r.rising<S>(n, kRadians16), lsfHistory(r), r.out<S>(n), r.out<S>(3)),
    EVERY_INPUT(veksLSPQuant_G729_16s, ({10}), r.falling<S>(n, kCosine16), lsfHistory(r), r.out<S>(n), r.out<S>(2)),
};

const everyinput::Family pitch{
    EVERY_INPUT(veksGainControl_G729A_16s_I, ({40}), r.in<S>(n), r.both<S>(n), r.both<S>(1, {0, 32767})),
    EVERY_INPUT(veksGainControl_G729_16s_I, ({40}), r.in<S>(n), r.both<S>(n), r.both<S>(1, {0, 32767})),
    EVERY_INPUT(veksAdaptiveCodebookContribution_G729_16s, ({40}), sample(r), r.in<S>(n), r.from<S>(n), r.to<S>(n)),
    EVERY_INPUT(veksAdaptiveCodebookContribution_G729_32f, ({40}), 0.75F, r.in<F>(n), r.from<F>(n), r.to<F>(n))
        .within(1e-6),
    EVERY_INPUT(veksOpenLoopPitchSearch_G729_16s, ({80}), r.in<S>(n, 143), r.out<S>(1)),
    EVERY_INPUT(veksOpenLoopPitchSearch_G729A_16s, ({80}), r.in<S>(n, 143), r.out<S>(1)),
    EVERY_INPUT(veksAutoCorrLagMax_Fwd_16s, ({1, 80, 67, 65536}), r.in<S>(n + 143), n, 137, 143, r.out<L>(1),
                r.out<L>(1)),
    EVERY_INPUT(veksAutoCorrLagMax_Inv_16s, ({1, 80, 67, 65536}), r.in<S>(n, 143), n, 137, 143, r.out<L>(1),
                r.out<L>(1)),
    EVERY_INPUT(veksDecodeAdaptiveVector_G729_16s_I, ({20, 21, 143}), r.given<S>({static_cast<S>(n), sample(r, -1, 1)}),
                r.both<S>(194)),
    EVERY_INPUT(veksDecodeAdaptiveVector_G729_16s, ({20, 21, 143}), r.given<S>({static_cast<S>(n), sample(r, -1, 1)}),
                r.both<S>(194), r.out<S>(40)),
    EVERY_INPUT(veksDecodeAdaptiveVector_G729_32f_I, ({20, 21, 143}), r.given<L>({n, r.number(-1, 1)}),
                r.both<F>(40, n + 11))
        .within(1e-5),
    EVERY_INPUT(veksAdaptiveCodebookSearch_G729_16s, ({19, 60, 144}), static_cast<S>(n), r.in<S>(40), r.in<S>(40),
                r.both<S>(194), r.out<S>(2), r.out<S>(40), sample(r, 0, 1)),
    EVERY_INPUT(veksAdaptiveCodebookSearch_G729A_16s, ({19, 60, 144}), static_cast<S>(n), r.in<S>(40), r.in<S>(40),
                r.both<S>(194), r.out<S>(2), r.out<S>(40), sample(r, 0, 1)),
    EVERY_INPUT(veksAdaptiveCodebookSearch_G729D_16s, ({19, 60, 144}), static_cast<S>(n), r.in<S>(40), r.in<S>(40),
                r.both<S>(194), sample(r, 0, 1), r.out<S>(2)),
    EVERY_INPUT(veksAdaptiveCodebookGain_G729_16s, ({40}), r.in<S>(n), r.in<S>(n), r.in<S>(n), r.out<S>(n),
                r.out<S>(1)),
    EVERY_INPUT(veksAdaptiveCodebookGain_G729A_16s, ({40}), r.in<S>(n), r.in<S>(11), r.in<S>(n), r.out<S>(n),
                r.out<S>(1)),
};

const everyinput::Family code{
    EVERY_INPUT(veksFixedCodebookSearch_G729_16s, ({0, 1}), r.in<S>(40, {-8191, 8191}), r.both<S>(616), r.out<S>(40),
                r.out<S>(2), r.both<S>(1, {0, 75}), static_cast<S>(n)),
    EVERY_INPUT(veksFixedCodebookSearch_G729_32s16s, ({0, 1}), r.in<S>(40, {-8191, 8191}), r.both<L>(616), r.out<S>(40),
                r.out<S>(2), r.both<S>(1, {0, 75}), static_cast<S>(n)),
    EVERY_INPUT(veksFixedCodebookSearch_G729_32f, ({0, 1}), r.in<F>(40, {-8191, 8191}), r.both<F>(616), r.out<F>(40),
                r.out<S>(2), r.both<S>(1, {0, 75}), static_cast<S>(n))
        .eachLevelForItself(),
    EVERY_INPUT(veksFixedCodebookSearch_G729A_16s, ({40}), r.in<S>(n, {-8191, 8191}), r.both<S>(616), r.out<S>(n),
                r.out<S>(2)),
    EVERY_INPUT(veksFixedCodebookSearch_G729A_32s16s, ({40}), r.in<S>(n, {-8191, 8191}), r.both<L>(616), r.out<S>(n),
                r.out<S>(2)),
    EVERY_INPUT(veksFixedCodebookSearch_G729A_32f, ({40}), r.in<F>(n, {-8191, 8191}), r.both<F>(616), r.out<F>(n),
                r.out<S>(2))
        .eachLevelForItself(),
    EVERY_INPUT(veksFixedCodebookSearch_G729D_16s, ({40}), r.in<S>(n), r.in<S>(n), r.out<S>(n), r.out<S>(n),
                r.out<S>(1), r.out<S>(1)),
    EVERY_INPUT(veksFixedCodebookSearch_G729D_32f, ({40}), r.in<F>(n), r.both<F>(616), r.in<F>(n), r.out<F>(n),
                r.out<F>(n), r.out<S>(2))
        .eachLevelForItself(),
    EVERY_INPUT(veksFixedCodebookSearch_G729E_16s, ({0, 1}), n, r.in<S>(40), r.in<S>(40), r.in<S>(40), r.out<S>(40),
                r.out<S>(40), r.out<S>(5)),
    EVERY_INPUT(veksFixedCodebookSearch_G729E_32f, ({0, 1}), n, r.in<F>(40), r.in<F>(40), r.in<F>(40), r.out<F>(40),
                r.out<F>(40), r.out<S>(5))
        .eachLevelForItself(),
    EVERY_INPUT(veksRandomNoiseExcitation_G729B_16s, ({1, 40, 67, 65536}), r.both<S>(1), r.out<S>(n), n),
    EVERY_INPUT(veksRandomNoiseExcitation_G729B_16s32f, ({1, 40, 67, 65536}), r.both<S>(1), r.out<F>(n), n),
    EVERY_INPUT(veksDecodeGain_G729_16s, ({4}), r.number(0, 0x7fffffff), r.both<S>(n), r.in<S>(2, {0, 127}),
                r.out<S>(2)),
    EVERY_INPUT(veksDecodeGain_G729I_16s, ({4}), r.number(0, 0x7fffffff), sample(r, 0, 32767), r.both<S>(n),
                r.in<S>(2, {0, 127}), r.out<S>(2)),
    EVERY_INPUT(veksGainQuant_G729_16s, ({40}), r.in<S>(n), r.in<S>(n), r.in<S>(n), r.in<S>(n), r.both<S>(4),
                r.out<S>(2), r.out<S>(2), sample(r, 0, 1)),
    EVERY_INPUT(veksGainQuant_G729D_16s, ({40}), r.in<S>(n), r.in<S>(n), r.in<S>(n), r.in<S>(n), r.both<S>(4),
                r.out<S>(2), r.out<S>(2), sample(r, 0, 1)),
    EVERY_INPUT(veksGainCodebookSearch_G729_32f, ({5}), r.in<F>(n), r.in<S>(2, {0, 4}), r.out<S>(2), r.number(0, 1),
                3.5F),
    EVERY_INPUT(veksGainCodebookSearch_G729D_32f, ({5}), r.in<F>(n), r.in<S>(2, {0, 2}), r.out<S>(2), r.number(0, 1),
                3.5F),
};

const everyinput::Family wide{
    EVERY_INPUT(veksResidualFilter_G729E_16s, ({1, 40, 67, 65536}), r.in<S>(31), 30, r.in<S>(n, 30), r.out<S>(n), n),
    EVERY_INPUT(veksSynthesisFilter_G729E_16s, ({1, 40, 67, 65536}), r.in<S>(31), 30, r.from<S>(n), r.to<S>(n), n,
                r.both<S>(30)),
    EVERY_INPUT(veksSynthesisFilter_G729E_16s_I, ({1, 40, 67, 65536}), r.in<S>(11), 10, r.both<S>(n), n, r.both<S>(10)),
    EVERY_INPUT(veksSynthesisFilter_G729_32f, ({1, 40, 67, 65536}), stable(r, 10), 10, r.in<F>(n), r.out<F>(n), n,
                r.in<F>(10))
        .within(1e-5),
    EVERY_INPUT(veksOpenLoopPitchSearch_G729A_32f, ({80}), r.in<F>(n, 143), r.out<L>(1)).eachLevelForItself(),
    EVERY_INPUT(veksAutoCorrLagMax_32f, ({1, 80, 67, 65536}), r.in<F>(n, 30), n, 20, 30, r.out<F>(1), r.out<L>(1))
        .within(1e-5)
        .eachLevelForItself(),
    EVERY_INPUT(veksCrossCorrLagMax_32f64f, ({1, 80, 67, 65536}), r.in<F>(n), r.in<F>(n + 8), n, 9, r.out<Vek64f>(1),
                r.out<L>(1))
        .within(1e-12)
        .eachLevelForItself(),
    EVERY_INPUT(veksGainControl_G729_32f_I, ({40}), r.in<F>(n), r.both<F>(n), r.both<F>(1, {0, 2})).within(1e-5),
    EVERY_INPUT(veksWinHybridGetStateSize_G729E_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksWinHybridInit_G729E_16s, ({1}),
                r.state<void>(veksWinHybridGetStateSize_G729E_16s, veksWinHybridInit_G729E_16s)),
    EVERY_INPUT(veksWinHybrid_G729E_16s32s, ({145}), r.in<S>(n), r.out<L>(31),
                r.state<void>(veksWinHybridGetStateSize_G729E_16s, veksWinHybridInit_G729E_16s)),
    EVERY_INPUT(veksWinHybridGetStateSize_G729E_32f, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksWinHybridInit_G729E_32f, ({1}),
                r.state<void>(veksWinHybridGetStateSize_G729E_32f, veksWinHybridInit_G729E_32f)),
    EVERY_INPUT(veksWinHybrid_G729E_32f, ({145}), r.in<F>(n), r.out<F>(31),
                r.state<void>(veksWinHybridGetStateSize_G729E_32f, veksWinHybridInit_G729E_32f))
        .within(1e-5),
    EVERY_INPUT(veksLSPQuant_G729E_16s, ({10}), r.falling<S>(n, kCosine16), lsfHistory(r), r.out<S>(n), r.out<S>(n),
                r.out<S>(2)),
    EVERY_INPUT(veksLSPQuant_G729E_32f, ({10}), r.falling<F>(n, kCosine), realLsfHistory(r), r.out<F>(n), r.out<F>(n),
                r.out<L>(2))
        .eachLevelForItself(),
    EVERY_INPUT(veksAutoCorr_G729B, ({240}), r.in<S>(n), r.out<S>(1), r.out<L>(13)),
};

const everyinput::Family postFilters{
    EVERY_INPUT(veksLongTermPostFilter_G729A_16s, ({20, 61, 143}), static_cast<S>(n), r.in<S>(40, 10), r.in<S>(11),
                r.both<S>(194), r.out<S>(40)),
    EVERY_INPUT(veksLongTermPostFilter_G729_16s, ({20, 61, 143}), sample(r, 0, 32767), static_cast<S>(n),
                r.in<S>(40, 152), r.out<S>(40), r.out<S>(1)),
    EVERY_INPUT(veksLongTermPostFilter_G729B_16s, ({20, 61, 143}), static_cast<S>(n), r.in<S>(40, 10), r.in<S>(11),
                r.both<S>(194), r.out<S>(40), r.out<S>(1), sample(r, 0, 2)),
    EVERY_INPUT(veksShortTermPostFilter_G729_16s, ({40}), r.in<S>(11), r.in<S>(n), r.both<S>(n, 10), r.out<S>(20)),
    EVERY_INPUT(veksShortTermPostFilter_G729A_16s, ({40}), r.in<S>(11), r.in<S>(n), r.both<S>(n, 10)),
    EVERY_INPUT(veksTiltCompensation_G729_16s, ({40}), r.in<S>(20), r.both<S>(n, 1)),
    EVERY_INPUT(veksTiltCompensation_G729A_16s, ({40}), r.in<S>(11), r.both<S>(n, 1)),
    EVERY_INPUT(veksTiltCompensation_G729E_16s, ({40}), sample(r), r.in<S>(n + 1), r.out<S>(n)),
};

TEST(VekEveryInput, OfTheLinearPredictionOfG729) {
    prediction.check();
}

TEST(VekEveryInput, OfThePitchOfG729) {
    pitch.check();
}

TEST(VekEveryInput, OfTheCodebooksOfG729) {
    code.check();
}

TEST(VekEveryInput, OfTheWideOrdersOfG729) {
    wide.check();
}

TEST(VekEveryInput, OfThePostFiltersOfG729) {
    postFilters.check();
}

} // namespace
