// Calls of AMR-WB with every kind of input.
#include <gtest/gtest.h>

#include "everyinput.h"
#include "veksc.h"

namespace {

using S = Vek16s;
using L = Vek32s;
using everyinput::Run;
using everyinput::sample;

constexpr VekSpchBitRate kRates[] = {VEK_SPCHBR_6600,  VEK_SPCHBR_8850,  VEK_SPCHBR_12650, VEK_SPCHBR_14250,
                                     VEK_SPCHBR_15850, VEK_SPCHBR_18250, VEK_SPCHBR_19850, VEK_SPCHBR_23050,
                                     VEK_SPCHBR_23850, VEK_SPCHBR_DTX};

// The size of a call is its rate, 0 to 8 or 9.
#define RATES ({0, 1, 2, 3, 4, 5, 6, 7, 8})
#define RATES_AND_DTX ({0, 1, 2, 3, 4, 5, 6, 7, 8, 9})

int subframe(Run& r) {
    return static_cast<int>(r.kind()) % 4;
}

char* highPass(Run& r) {
    return r.state<char>(veksHighPassFilterGetSize_AMRWB_16s, veksHighPassFilterInit_AMRWB_16s);
}

char* vad(Run& r) {
    return r.state<char>(veksVADGetSize_AMRWB_16s, veksVADInit_AMRWB_16s);
}

VekAdaptiveCodebookState_AMRWB* lags(Run& r) {
    return r.state<VekAdaptiveCodebookState_AMRWB>(veksAdaptiveCodebookDecodeGetSize_AMRWB_16s,
                                                   veksAdaptiveCodebookDecodeInit_AMRWB_16s);
}

const everyinput::Family filters{
    EVERY_INPUT(veksResidualFilter_Low_16s_Sfs, ({1, 64, 67, 65536}), r.in<S>(17), 16, r.in<S>(n, 16), r.out<S>(n), n,
                r.number(0, 15)),
    EVERY_INPUT(veksResidualFilter_AMRWB_16s_Sfs, ({1, 64, 67, 65536}), r.in<S>(21), 20, r.in<S>(n, 20), r.out<S>(n), n,
                r.number(0, 15)),
    EVERY_INPUT(veksPreemphasize_AMRWB_16s_ISfs, ({1, 64, 67, 65536}), sample(r), r.both<S>(n), n, r.number(0, 15),
                r.both<S>(1)),
    EVERY_INPUT(veksDeemphasize_AMRWB_32s16s, ({1, 64, 67, 65536}), sample(r), r.in<L>(n), r.out<S>(n), n,
                r.both<S>(1)),
    EVERY_INPUT(veksDeemphasize_AMRWB_NR_16s_I, ({1, 64, 67, 65536}), sample(r), r.both<S>(n), n, r.both<S>(1)),
    EVERY_INPUT(veksDeemphasize_AMRWBE_NR_16s_I, ({1, 64, 67, 65536}), sample(r), r.number(13, 15), r.both<S>(n), n,
                r.both<S>(1)),
    EVERY_INPUT(veksSynthesisFilter_AMRWB_16s32s_I, ({1, 64, 67, 65536}), r.in<S>(17), 16, r.in<S>(n), r.both<L>(n, 16),
                n),
    EVERY_INPUT(veksSynthesisFilter_AMRWBE_16s32s_I, ({1, 64, 67, 65536}), r.in<S>(17), 16, r.in<S>(n),
                r.both<L>(n, 16), n),
    EVERY_INPUT(veksHighPassFilterGetSize_AMRWB_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksHighPassFilterInit_AMRWB_16s, ({1}), highPass(r)),
    EVERY_INPUT(veksHighPassFilter_AMRWB_16s_ISfs, ({1, 64, 67, 65536}), r.both<S>(n), n, highPass(r),
                2 * r.number(6, 7)),
    EVERY_INPUT(veksHighPassFilter_AMRWB_16s_Sfs, ({1, 64, 67, 65536}), r.in<S>(n), r.out<S>(n), n, highPass(r),
                2 * r.number(6, 7)),
    EVERY_INPUT(veksHighPassFilter_Direct_AMRWB_16s, ({1, 64, 67, 65536}), r.in<S>(2), r.in<S>(n + 1, 1), r.out<S>(n),
                n, r.number(0, 1)),
};

const everyinput::Family spectra{
    EVERY_INPUT(veksISPToISF_Norm_AMRWB_16s, ({4, 16, 20}), r.in<S>(n), r.out<S>(n), n),
    EVERY_INPUT(veksISFToISP_AMRWB_16s, ({4, 16, 20}), r.in<S>(n), r.out<S>(n), n),
    EVERY_INPUT(veksISPToLPC_AMRWB_16s, ({4, 16, 20}), r.in<S>(n), r.out<S>(n + 1), n),
    EVERY_INPUT(veksLPCToISP_AMRWB_16s, ({16}), r.in<S>(17), r.out<S>(n), r.in<S>(n)).mayGive({vekStsUnstableFilter}),
    EVERY_INPUT(veksISFQuant_AMRWB_16s, RATES, r.rising<S>(16, {0, 16384}), r.both<S>(16), r.out<S>(16), r.out<S>(7),
                kRates[n]),
    EVERY_INPUT(veksISFQuantDecode_AMRWB_16s, RATES, r.in<S>(7, {0, 31}), r.out<S>(16), r.both<S>(16),
                r.rising<S>(16, {0, 16384}), r.both<S>(48, {0, 16384}), r.number(0, 1), kRates[n]),
    EVERY_INPUT(veksISFQuantDTX_AMRWB_16s, ({16}), r.rising<S>(n, {0, 16384}), r.out<S>(n), r.out<S>(5)),
    EVERY_INPUT(veksISFQuantDecodeDTX_AMRWB_16s, ({16}), r.in<S>(5, {0, 31}), r.out<S>(n)),
    EVERY_INPUT(veksDecDTXBuffer_AMRWB_16s, ({256}), r.in<S>(n), r.in<S>(16), r.both<S>(1, {0, 7}), r.both<S>(128),
                r.both<S>(8)),
    EVERY_INPUT(veksEncDTXBuffer_AMRWB_16s, RATES_AND_DTX, r.in<S>(256), r.in<S>(16), r.both<S>(1, {0, 7}),
                r.both<S>(128), r.both<S>(8), kRates[n]),
    EVERY_INPUT(veksVADGetSize_AMRWB_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksVADInit_AMRWB_16s, ({1}), vad(r)),
    EVERY_INPUT(veksVAD_AMRWB_16s, ({256}), r.in<S>(n), vad(r), r.both<S>(1, {0, 32767}), r.out<S>(1)),
};

const everyinput::Family codebooks{
    EVERY_INPUT(veksAdaptiveCodebookGainCoeff_AMRWB_16s, ({1, 64, 67, 65536}), r.in<S>(n), r.in<S>(n), r.out<S>(4),
                r.out<S>(1), n),
    EVERY_INPUT(veksAlgebraicCodebookDecode_AMRWB_16s, RATES_AND_DTX, r.in<S>(8), r.out<S>(64), kRates[n]),
    EVERY_INPUT(veksAlgebraicCodebookSearch_AMRWB_16s, RATES_AND_DTX, r.in<S>(64), r.in<S>(64), r.in<S>(64),
                r.out<S>(64), r.out<S>(64), kRates[n], r.out<S>(8)),
    EVERY_INPUT(veksAdaptiveCodebookDecodeGetSize_AMRWB_16s, ({1}), r.out<L>(1)),
    EVERY_INPUT(veksAdaptiveCodebookDecodeInit_AMRWB_16s, ({1}), lags(r)),
    EVERY_INPUT(veksAdaptiveCodebookDecodeGain_AMRWB_16s, ({1}), sample(r), lags(r)),
    EVERY_INPUT(veksAdaptiveCodebookDecode_AMRWB_16s, RATES_AND_DTX, r.number(0, 31), r.out<S>(1), r.both<S>(65, 248),
                r.out<S>(1), r.both<S>(2, {34, 231}), subframe(r), r.number(0, 1), r.number(0, 1), kRates[n], lags(r)),
    EVERY_INPUT(veksAdaptiveCodebookSearch_AMRWB_16s, RATES_AND_DTX, r.in<S>(64), r.in<S>(64), r.in<S>(2, {17, 115}),
                r.out<S>(1), r.both<S>(2, {34, 231}), r.both<S>(65, 248), r.out<S>(1), r.out<S>(1), subframe(r),
                kRates[n]),
    EVERY_INPUT(veksOpenLoopPitchSearch_AMRWB_16s, ({1, 64, 67, 256}), r.in<S>(n, 115), r.in<S>(n, 115),
                r.both<S>(1, {0, 115}), r.both<S>(1), r.out<S>(1), r.both<S>(1), r.out<S>(1), r.both<S>(5, {0, 115}),
                r.both<S>(1, {0, 1}), n),
    EVERY_INPUT(veksOpenLoopPitchSearch_AMRWBE_16s, ({1, 64, 67, 256}), r.in<S>(n, 213), r.in<S>(n, 213),
                r.both<S>(1, {0, 115}), r.both<S>(1), r.out<S>(1), r.both<S>(1), r.out<S>(1), r.both<S>(5, {0, 213}),
                r.both<S>(1, {0, 1}), n, 15, 213),
    EVERY_INPUT(veksGainQuant_AMRWB_16s, RATES_AND_DTX, r.in<S>(64), r.in<S>(64), r.number(-15, 15), r.in<S>(64),
                r.in<S>(64), r.in<S>(4, {-15, 16383}), r.both<S>(4), r.both<S>(1, {0, 19661}), r.out<L>(1),
                r.number(0, 1), r.out<S>(1), 64, kRates[n]),
    EVERY_INPUT(veksGainQuant_AMRWBE_16s, ({1, 64}), r.in<S>(n), r.in<S>(n), r.number(-15, 15), r.in<S>(n), r.in<S>(n),
                n, r.in<S>(4, {-15, 16383}), sample(r), r.out<S>(1), r.out<S>(1), r.out<L>(1), r.out<S>(1)),
    EVERY_INPUT(veksDecodeGain_AMRWB_16s, RATES_AND_DTX, r.number(0, 63), sample(r, 0, 32767), r.both<S>(1),
                r.out<L>(1), r.number(0, 1), r.number(0, 1), r.both<S>(4), r.both<S>(1, {0, 32767}),
                r.both<S>(1, {0, 32767}), kRates[n]),
    EVERY_INPUT(veksInterpolateC_NR_16s, ({1, 64, 67, 65536}), r.from<S>(n), sample(r), r.number(0, 15), r.in<S>(n),
                sample(r), r.number(0, 15), r.to<S>(n), n),
};

TEST(VekEveryInput, OfTheFiltersOfAmrWb) {
    filters.check();
}

TEST(VekEveryInput, OfTheSpectraOfAmrWb) {
    spectra.check();
}

TEST(VekEveryInput, OfTheCodebooksOfAmrWb) {
    codebooks.check();
}

} // namespace
