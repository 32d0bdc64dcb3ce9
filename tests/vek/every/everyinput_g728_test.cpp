// Calls of G.728 with every kind of input.
#include <gtest/gtest.h>

#include "everyinput.h"
#include "veksc.h"

namespace {

using S = Vek16s;
using L = Vek32s;
using everyinput::Run;
using everyinput::sample;

VeksIIRState_G728* weighting(Run& r) {
    return r.state<VeksIIRState_G728>(veksIIR16sGetStateSize_G728_16s, veksIIR16sInit_G728_16s);
}

VeksSynthesisFilterState_G728* synthesis(Run& r) {
    return r.state<VeksSynthesisFilterState_G728>(veksSynthesisFilterGetStateSize_G728_16s,
                                                  veksSynthesisFilterInit_G728_16s);
}

VeksCombinedFilterState_G728* cascade(Run& r) {
    return r.state<VeksCombinedFilterState_G728>(veksCombinedFilterGetStateSize_G728_16s,
                                                 veksCombinedFilterInit_G728_16s);
}

VeksWinHybridState_G728* window(Run& r, int kind) {
    return r.state<VeksWinHybridState_G728>(veksWinHybridGetStateSize_G728_16s, [&](VeksWinHybridState_G728* state) {
        return veksWinHybridInit_G728_16s(static_cast<VekG728Window>(kind), state);
    });
}

VeksPostFilterState_G728* postFilter(Run& r) {
    return r.state<VeksPostFilterState_G728>(veksPostFilterGetStateSize_G728_16s, veksPostFilterInit_G728_16s);
}

VeksPostFilterAdapterState_G728* adapter(Run& r) {
    return r.state<VeksPostFilterAdapterState_G728>(veksPostFilterAdapterGetStateSize_G728,
                                                    veksPostFilterAdapterInit_G728);
}

const S* lags(Run& r, int order) {
    return everyinput::lags<S>(r, order, 32767, 0.999);
}

// Rates of the codebook search, and frames of the three windows.
constexpr VekSpchBitRate kRates[] = {VEK_SPCHBR_16000, VEK_SPCHBR_12800, VEK_SPCHBR_9600};
constexpr int kFrames[] = {20, 20, 4};
constexpr int kOrders[] = {50, 10, 10};

const everyinput::Family filters{
    EVERY_INPUT(veksIIR16sGetStateSize_G728_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksIIR16sInit_G728_16s, ({1}), weighting(r)),
    EVERY_INPUT(veksSynthesisFilterGetStateSize_G728_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksSynthesisFilterInit_G728_16s, ({1}), synthesis(r)),
    EVERY_INPUT(veksCombinedFilterGetStateSize_G728_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksCombinedFilterInit_G728_16s, ({1}), cascade(r)),
    EVERY_INPUT(veksIIR16s_G728_16s, ({1, 5, 67, 65536}), r.in<S>(20), r.in<S>(n), r.out<S>(n), n, weighting(r)),
    EVERY_INPUT(veksSyntesisFilterZeroInput_G728_16s, ({5}), r.in<S>(50), r.both<S>(n), r.number(0, 15), r.out<S>(n),
                r.out<S>(1), synthesis(r)),
    EVERY_INPUT(veksCombinedFilterZeroInput_G728_16s, ({5}), r.in<S>(50), r.in<S>(20), r.out<S>(n), cascade(r)),
    EVERY_INPUT(veksCombinedFilterZeroState_G728_16s, ({5}), r.in<S>(50), r.in<S>(20), r.both<S>(n), r.number(0, 15),
                r.out<S>(n), r.out<S>(1), cascade(r)),
    EVERY_INPUT(veksPostFilterGetStateSize_G728_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksPostFilterInit_G728_16s, ({1}), postFilter(r)),
    EVERY_INPUT(veksPostFilterAdapterGetStateSize_G728, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksPostFilterAdapterInit_G728, ({1}), adapter(r)),
    EVERY_INPUT(veksLPCInverseFilter_G728_16s, ({5}), r.in<S>(n), r.in<S>(10), r.out<S>(n), adapter(r)),
    EVERY_INPUT(veksPitchPeriodExtraction_G728_16s, ({100}), r.in<S>(n, 140), r.both<L>(1, {20, 140}), adapter(r)),
    EVERY_INPUT(veksPostFilter_G728_16s, ({20, 61, 140}), sample(r), sample(r), n, sample(r), r.in<S>(20),
                r.in<S>(5, n), r.out<S>(5), postFilter(r)),
};

const everyinput::Family adaptation{
    EVERY_INPUT(veksWinHybridGetStateSize_G728_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksWinHybridInit_G728_16s, ({0, 1, 2}), static_cast<VekG728Window>(n), window(r, n)),
    EVERY_INPUT(veksWinHybrid_G728_16s, ({0, 1, 2}), 0, r.in<S>(kFrames[n]), r.out<S>(kOrders[n] + 1), window(r, n)),
    EVERY_INPUT(veksWinHybridBlock_G728_16s, ({0, 1}), r.number(0, 1), r.in<S>(20), r.in<S>(4, {0, 15}),
                r.out<S>(kOrders[n] + 1), window(r, n)),
    EVERY_INPUT(veksLevinsonDurbin_G728_16s_Sfs, ({1, 10, 50}), lags(r, n), n, r.out<S>(n), r.out<S>(1), r.out<L>(1),
                r.out<S>(1))
        .mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksLevinsonDurbin_G728_16s_ISfs, ({1, 10, 50}), lags(r, n), 0, n, r.kept(std::vector<S>(50)),
                r.kept<L>({0x7fff0000}), r.kept<S>({15}))
        .mayGive({vekStsUnstableFilter}),
};

const everyinput::Family excitation{
    EVERY_INPUT(veksImpulseResponseEnergy_G728_16s, ({5}), r.in<S>(n), r.out<S>(128)),
    EVERY_INPUT(veksCodebookSearch_G728_16s, ({0, 1, 2}), r.in<S>(5), r.in<S>(128), r.out<S>(1), r.out<S>(1),
                r.out<S>(1), kRates[n]),
    EVERY_INPUT(veksCodebookSearchTCQ_G728_16s8u, ({5}), r.in<S>(n), r.in<S>(50), r.out<Vek8u>(n), r.both<S>(n),
                r.both<S>(n), r.both<L>(1, {0, 7}), r.number(1, 0x7fffffff), sample(r, 1, 32767)),
};

TEST(VekEveryInput, OfTheFiltersOfG728) {
    filters.check();
}

TEST(VekEveryInput, OfTheAdaptationOfG728) {
    adaptation.check();
}

TEST(VekEveryInput, OfTheExcitationOfG728) {
    excitation.check();
}

} // namespace
