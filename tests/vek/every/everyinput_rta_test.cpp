// Calls of the real-time audio codec with every kind of input.
#include <gtest/gtest.h>

#include "everyinput.h"
#include "veksc.h"

namespace {

using F = Vek32f;
using L = Vek32s;
using everyinput::Run;

const F* lags(Run& r, int order) {
    return everyinput::lags<F>(r, order, 1000, 0.99);
}

/// Coefficients of a stable filter with one pole.
const F* stable(Run& r, int order) {
    std::vector<F> lpc(static_cast<size_t>(order) + 1);
    lpc[0] = 1;
    lpc[1] = static_cast<F>(r.number(-9, 9)) / 10;
    return r.given(lpc);
}

const F* boundaries(Run& r) {
    return r.given<F>({20, 40, 80, 140, 200});
}

VeksPostFilterState_RTA_32f* postFilter(Run& r) {
    return r.state<VeksPostFilterState_RTA_32f>(veksPostFilterGetStateSize_RTA_32f, veksPostFilterInit_RTA_32f);
}

VeksQMFState_RTA_32f* bank(Run& r) {
    return r.state<VeksQMFState_RTA_32f>(veksQMFGetStateSize_RTA_32f, veksQMFInit_RTA_32f);
}

const everyinput::Family filters{
    EVERY_INPUT(veksLevinsonDurbin_RTA_32f, ({1, 10, 32}), lags(r, n), r.out<F>(n + 1), r.out<F>(n), n)
        .within(1e-5)
        .mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksHighPassFilter_RTA_32f, ({1, 160, 67, 65536}), r.from<F>(n), r.to<F>(n), n, r.number(4, 5),
                VEK_PCM_FREQ_8000, r.kept(std::vector<F>(12)))
        .within(1e-5),
    EVERY_INPUT(veksBandPassFilter_RTA_32f_I, ({1, 160, 67, 65536}), r.both<F>(n), n, r.kept(std::vector<F>(3)))
        .within(1e-5),
    EVERY_INPUT(veksLPCToLSP_RTA_32f, ({2, 10, 16}), stable(r, n), r.out<F>(n), n)
        .within(1e-4)
        .mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksLSPToLPC_RTA_32f, ({2, 10, 16}), r.rising<F>(n, {0.01, 3.13}), r.out<F>(n + 1), n).within(1e-5),
    EVERY_INPUT(veksPostFilterGetStateSize_RTA_32f, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksPostFilterInit_RTA_32f, ({1}), postFilter(r)),
    EVERY_INPUT(veksPostFilter_RTA_32f_I, ({40, 160}), stable(r, 10), 10, r.both<F>(n), n, r.number(1, 3),
                r.kept(std::vector<F>(51)), postFilter(r))
        .within(1e-5),
    EVERY_INPUT(veksQMFGetStateSize_RTA_32f, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksQMFInit_RTA_32f, ({1}), bank(r)),
    EVERY_INPUT(veksQMFEncode_RTA_32f, ({2, 66, 320, 65536}), r.in<F>(n), n, r.out<F>(n / 2), r.out<F>(n / 2), bank(r))
        .within(1e-5),
    EVERY_INPUT(veksQMFDecode_RTA_32f, ({1, 67, 160, 32768}), r.in<F>(n), r.in<F>(n), n, r.out<F>(2 * n), bank(r))
        .within(1e-5),
};

const everyinput::Family searches{
    EVERY_INPUT(veksLSPQuant_RTA_32f, ({1, 4, 16}), r.rising<F>(10, {0.01, 3.13}), stable(r, 10), r.out<F>(10), 10,
                r.out<L>(4), VEK_PCM_FREQ_8000, n)
        .eachLevelForItself(),
    EVERY_INPUT(veksAdaptiveCodebookSearch_RTA_32f, ({4, 40, 67, 160}), r.in<F>(n), r.in<F>(n), n, boundaries(r),
                r.both<F>(n, 208), r.both<F>(1, {20, 200}), r.out<L>(1), r.out<F>(n), 8, r.number(0, 1))
        .eachLevelForItself(),
    EVERY_INPUT(veksFixedCodebookSearch_RTA_32f, ({10, 40, 80}), r.in<F>(n), r.in<F>(n), r.out<F>(n), n, r.out<L>(5),
                r.out<F>(1), r.number(1, 10), r.number(0, 8))
        .eachLevelForItself(),
    EVERY_INPUT(veksFixedCodebookSearchRandom_RTA_32f, ({4, 40, 67, 160}), r.in<F>(n), r.in<F>(n), r.out<F>(n), n,
                r.out<L>(3), r.out<F>(1), r.number(1, 256), r.number(0, 2), r.number(0, 20))
        .eachLevelForItself(),
};

TEST(VekEveryInput, OfTheFiltersOfTheRealTimeCodec) {
    filters.check();
}

TEST(VekEveryInput, OfTheSearchesOfTheRealTimeCodec) {
    searches.check();
}

} // namespace
