// Calls of the signal kernels, filters and element-wise arithmetic with every kind of input.
#include <gtest/gtest.h>

#include "everyinput.h"
#include "veks.h"
#include "veksc.h"

namespace {

using S = Vek16s;
using L = Vek32s;
using F = Vek32f;

const everyinput::Family signalKernels{
    EVERY_INPUT(veksAutoCorr_16s32s, ({1, 37, 240, 65536}), r.in<S>(n), n, r.out<L>(13), 13),
    EVERY_INPUT(veksAutoCorr_NormE_16s32s, ({1, 37, 240, 65536}), r.in<S>(n), n, r.out<L>(11), 11, r.out<L>(1)),
    EVERY_INPUT(veksAutoCorr_NormE_NR_16s, ({1, 37, 240, 65536}), r.in<S>(n), n, r.out<S>(11), 11, r.out<L>(1)),
    EVERY_INPUT(veksAutoCorr_NormE_G723_16s, ({180}), r.in<S>(n), r.out<S>(10), r.out<L>(1)),
    EVERY_INPUT(veksAutoCorr_G723_16s, ({180}), r.in<S>(n), r.out<L>(1), r.out<S>(11)),
    EVERY_INPUT(veksAutoScale_16s, ({1, 60, 333, 65536}), r.in<S>(n), r.out<S>(n), n, r.both<L>(1, {0, 15}))
        .mayGive({vekStsScaleRangeErr}), // the second call begins with the shift of the first
    EVERY_INPUT(veksAutoScale_16s_I, ({1, 60, 333, 65536}), r.both<S>(n), n, r.both<L>(1, {0, 15}))
        .mayGive({vekStsScaleRangeErr}),
    EVERY_INPUT(veksConvPartial_16s32s, ({1, 40, 67, 1500}), r.in<S>(n), r.in<S>(n), r.out<L>(n), n),
    EVERY_INPUT(veksConvPartial_16s_Sfs, ({1, 40, 67, 1500}), r.in<S>(n), r.in<S>(n), r.out<S>(n), n,
                r.number(-31, 31)),
    EVERY_INPUT(veksConvPartial_NR_16s, ({1, 64, 67, 1500}), r.in<S>(n), r.in<S>(n), r.out<S>(n), n),
    EVERY_INPUT(veksCrossCorr_16s32s_Sfs, ({1, 40, 67, 1500}), r.in<S>(n), r.in<S>(n), n, r.out<L>(n),
                r.number(-31, 31)),
    EVERY_INPUT(veksCrossCorr_NR_16s, ({1, 40, 67, 1500, 65536}), r.in<S>(n), r.in<S>(n), n, r.out<S>(20), 20),
    EVERY_INPUT(veksCrossCorr_NormM_16s, ({1, 40, 67, 1500}), r.in<S>(n), r.in<S>(n), n, r.out<S>(n)),
    EVERY_INPUT(veksDecomposeMLTToDCT_G7221_16s, ({320, 640}), r.from<S>(n), r.both<S>(n), r.to<S>(n), n),
    EVERY_INPUT(veksDecomposeMLTToDCT_G722_16s, ({320}), r.from<S>(n), r.both<S>(n), r.to<S>(n)),
    EVERY_INPUT(veksDecomposeDCTToMLT_G7221_16s, ({320, 640}), r.in<S>(n), r.both<S>(n), r.out<S>(n), n),
    EVERY_INPUT(veksDecomposeDCTToMLT_G722_16s, ({320}), r.in<S>(n), r.both<S>(n), r.out<S>(n)),
    EVERY_INPUT(veksDCTFwd_G7221_16s, ({320, 640}), r.from<S>(n), r.to<S>(n), n),
    EVERY_INPUT(veksDCTInv_G7221_16s, ({320, 640}), r.from<S>(n), r.to<S>(n), n),
    EVERY_INPUT(veksDCTFwd_G722_16s, ({320}), r.from<S>(n), r.to<S>(n)),
    EVERY_INPUT(veksDCTInv_G722_16s, ({320}), r.from<S>(n), r.to<S>(n)),
    EVERY_INPUT(veksDotProd_G729A_16s32s, ({1, 40, 223, 65536}), r.in<S>(n), r.in<S>(n), n, r.out<L>(1)),
    EVERY_INPUT(veksDotProd_G729A_32f, ({1, 40, 223, 65536}), r.in<F>(n, {0, 1}), r.in<F>(n, {0, 1}), n, r.out<F>(1))
        .within(1e-6),
    EVERY_INPUT(veksDotProdAutoScale_16s32s_Sfs, ({1, 40, 223, 65536}), r.in<S>(n), r.in<S>(n), n, r.out<L>(1),
                r.out<L>(1)),
    EVERY_INPUT(veksFFTFwd_RToPerm_GSMAMR_16s_I, ({128}), r.both<S>(n)),
};

const everyinput::Family filters{
    EVERY_INPUT(veksHarmonicFilter_NR_16s, ({1, 40, 67, 65536}), static_cast<S>(r.number(-32768, 32767)), 60,
                r.in<S>(n, 60), r.out<S>(n), n),
    EVERY_INPUT(veksHarmonicFilter_16s_I, ({1, 40, 67, 65536}), static_cast<S>(r.number(-32768, 32767)), 18,
                r.both<S>(n, 18), n),
    EVERY_INPUT(veksHarmonicFilter_32f_I, ({1, 40, 67, 65536}), 18, r.both<F>(n, 18), n, 0.75F).within(1e-6),
    EVERY_INPUT(veksResidualFilter_G729_16s, ({40}), r.in<S>(n, 10), r.in<S>(11), r.out<S>(n)),
    EVERY_INPUT(veksSynthesisFilter_NR_16s_Sfs, ({1, 40, 67, 65536}), r.in<S>(11), r.in<S>(n), r.out<S>(n), n,
                r.number(0, 15), r.in<S>(10)),
    EVERY_INPUT(veksSynthesisFilter_NR_16s_ISfs, ({1, 40, 67, 65536}), r.in<S>(11), r.both<S>(n), n, r.number(0, 15),
                r.in<S>(10)),
    EVERY_INPUT(veksSynthesisFilterLow_NR_16s_ISfs, ({1, 40, 67, 65536}), r.in<S>(11), r.both<S>(n), n, r.number(0, 15),
                r.in<S>(10)),
    EVERY_INPUT(veksSynthesisFilterZeroStateResponse_NR_16s, ({1, 40, 67, 65536}), r.in<S>(11), r.out<S>(n), n,
                r.number(0, 15)),
    EVERY_INPUT(veksHighPassFilterSize_G729, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksHighPassFilterInit_G729, ({1}),
                r.state<char>(veksHighPassFilterSize_G729, veksHighPassFilterInit_G729)),
    EVERY_INPUT(veksHighPassFilter_G729_16s_ISfs, ({1, 40, 80, 65536}), r.both<S>(n), n, r.number(12, 13),
                r.state<char>(veksHighPassFilterSize_G729, veksHighPassFilterInit_G729)),
    EVERY_INPUT(veksIIR16s_G723_16s_I, ({60}), r.in<S>(20), r.both<S>(n), r.both<S>(20)),
    EVERY_INPUT(veksIIR16s_G723_32s16s_Sfs, ({60}), r.in<S>(20), r.in<L>(n), r.number(0, 31), r.out<S>(n),
                r.both<S>(20)),
    EVERY_INPUT(veksIIR16s_G723_16s32s, ({60}), r.in<S>(20), r.in<S>(n), r.out<L>(n), r.both<S>(20)),
    EVERY_INPUT(veksIIR16s_G729_16s, ({40}), r.in<S>(22), r.from<S>(n), r.to<S>(n), r.both<S>(20)),
    EVERY_INPUT(veksIIR16sLow_G729_16s, ({40}), r.in<S>(22), r.from<S>(n), r.to<S>(n), r.both<S>(20)),
    EVERY_INPUT(veksInvSqrt_32s_I, ({1, 11, 65536}), r.both<L>(n), n),
    EVERY_INPUT(veksInterpolateC_NR_G729_16s_Sfs, ({1, 40, 67, 65536}), r.from<S>(n),
                static_cast<S>(r.number(-32768, 32767)), r.in<S>(n), static_cast<S>(r.number(32767, -32768)),
                r.to<S>(n), n, r.number(0, 15)),
    EVERY_INPUT(veksInterpolateC_G729_16s_Sfs, ({1, 40, 67, 65536}), r.in<S>(n),
                static_cast<S>(r.number(-32768, 32767)), r.from<S>(n), static_cast<S>(r.number(32767, -32768)),
                r.to<S>(n), n, r.number(0, 15)),
    EVERY_INPUT(veksInterpolateC_G729_32f, ({1, 40, 67, 65536}), r.in<F>(n), r.in<F>(n), r.out<F>(n), n, 0.75F, -0.5F)
        .within(1e-6),
    EVERY_INPUT(veksInterpolate_G729_16s, ({1, 10, 67, 65536}), r.in<S>(n), r.in<S>(n), r.out<S>(n), n),
    EVERY_INPUT(veksLagWindow_G729_32s_I, ({1, 10}), r.both<L>(n), n),
    EVERY_INPUT(veksMulC_NR_16s_Sfs, ({1, 40, 67, 65536}), r.from<S>(n), static_cast<S>(r.number(-32768, 32767)),
                r.to<S>(n), n, r.number(0, 30)),
    EVERY_INPUT(veksMulC_NR_16s_ISfs, ({1, 40, 67, 65536}), static_cast<S>(r.number(-32768, 32767)), r.both<S>(n), n,
                r.number(0, 30)),
    EVERY_INPUT(veksMul_NR_16s_Sfs, ({1, 40, 67, 65536}), r.from<S>(n), r.in<S>(n), r.to<S>(n), n, r.number(0, 30)),
    EVERY_INPUT(veksMul_NR_16s_ISfs, ({1, 40, 67, 65536}), r.in<S>(n), r.both<S>(n), n, r.number(0, 30)),
    EVERY_INPUT(veksMulPowerC_NR_16s_Sfs, ({1, 11, 67, 65536}), r.from<S>(n), static_cast<S>(r.number(-32768, 32767)),
                r.to<S>(n), n, r.number(0, 15)),
    EVERY_INPUT(veksFilteredExcitation_G729_32f, ({1, 40, 67, 65536}), r.in<F>(n), r.both<F>(n), n, 0.75F).within(1e-6),
    EVERY_INPUT(veksToeplizMatrix_G729_16s, ({40}), r.in<S>(n), r.out<S>(616)),
    EVERY_INPUT(veksToeplizMatrix_G729_16s32s, ({40}), r.in<S>(n), r.out<L>(616)),
    EVERY_INPUT(veksToeplizMatrix_G729_32f, ({40}), r.in<F>(n), r.out<F>(616)).within(1e-6),
    EVERY_INPUT(veksPhaseDispersionGetStateSize_G729D_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksPhaseDispersionInit_G729D_16s, ({1}),
                r.state<void>(veksPhaseDispersionGetStateSize_G729D_16s, veksPhaseDispersionInit_G729D_16s)),
    EVERY_INPUT(veksPhaseDispersion_G729D_16s, ({40}), r.from<S>(n), r.to<S>(n), static_cast<S>(r.number(0, 32767)),
                static_cast<S>(r.number(0, 32767)), r.both<S>(n),
                r.state<void>(veksPhaseDispersionGetStateSize_G729D_16s, veksPhaseDispersionInit_G729D_16s)),
};

#define VECTORS(suffix, type)                                                                                          \
    EVERY_INPUT(veksCopy_##suffix, ({1, 7, 67, 65536}), r.in<type>(n), r.out<type>(n), n),                             \
        EVERY_INPUT(veksZero_##suffix, ({1, 7, 67, 65536}), r.out<type>(n), n),                                        \
        EVERY_INPUT(veksSet_##suffix, ({1, 7, 67, 65536}), *r.in<type>(1), r.out<type>(n), n)

const everyinput::Family vectors{
    VECTORS(8u, Vek8u),   VECTORS(16s, Vek16s),   VECTORS(32s, Vek32s),   VECTORS(32f, Vek32f),
    VECTORS(64f, Vek64f), VECTORS(16sc, Vek16sc), VECTORS(32sc, Vek32sc), VECTORS(32fc, Vek32fc),
};

TEST(VekEveryInput, OfTheSignalKernels) {
    signalKernels.check();
}

TEST(VekEveryInput, OfTheFiltersAndArithmetic) {
    filters.check();
}

TEST(VekEveryInput, OfTheVectors) {
    vectors.check();
}

} // namespace
