// Calls of GSM AMR and GSM full rate with every kind of input.
#include <gtest/gtest.h>

#include "everyinput.h"
#include "veksc.h"

namespace {

using S = Vek16s;
using L = Vek32s;
using everyinput::Range;
using everyinput::Run;
using everyinput::sample;

constexpr VekSpchBitRate kRates[] = {VEK_SPCHBR_4750,  VEK_SPCHBR_5150,  VEK_SPCHBR_5900,
                                     VEK_SPCHBR_6700,  VEK_SPCHBR_7400,  VEK_SPCHBR_7950,
                                     VEK_SPCHBR_10200, VEK_SPCHBR_12200, VEK_SPCHBR_DTX};

// The size of a call is its rate, 0 to 7 or 8.
#define AMR_RATES ({0, 1, 2, 3, 4, 5, 6, 7})
#define AMR_RATES_AND_DTX ({0, 1, 2, 3, 4, 5, 6, 7, 8})

// The subframe of a run.
S subframe(Run& r) {
    return static_cast<S>(static_cast<int>(r.kind()) % 4);
}

/// The median of voiced delays, in the codec's range or brought into it.
S* median(Run& r) {
    return r.kept<S>({static_cast<S>(r.number(0, 200))});
}

// The memories of voice activity are records of words: they lie where such words may lie.
VeksVAD1State_GSMAMR* firstVad(Run& r) {
    VeksVAD1State_GSMAMR start{};
    for (int i = 0; i < 9; ++i) {
        start.bckrEst[i] = start.aveLevel[i] = start.oldLevel[i] = 150;
    }
    start.corrHpFast = 13106;
    std::vector<S> words(sizeof start / sizeof(S));
    std::memcpy(words.data(), &start, sizeof start);
    return reinterpret_cast<VeksVAD1State_GSMAMR*>(r.kept(words));
}

VeksVAD2State_GSMAMR* secondVad(Run& r) {
    return reinterpret_cast<VeksVAD2State_GSMAMR*>(r.kept(std::vector<L>(sizeof(VeksVAD2State_GSMAMR) / sizeof(L))));
}

const everyinput::Family amr{
    EVERY_INPUT(veksAdaptiveCodebookSearch_GSMAMR_16s, AMR_RATES, r.in<S>(40), r.in<S>(40), r.in<S>(2, {20, 143}),
                r.both<S>(1, {20, 143}), r.both<S>(194), r.out<S>(1), r.out<S>(1), r.out<S>(40), subframe(r),
                kRates[n]),
    EVERY_INPUT(veksAdaptiveCodebookDecode_GSMAMR_16s, AMR_RATES, sample(r, 0, 15), r.both<S>(1, {17, 144}),
                r.out<S>(1), r.both<S>(194), r.out<S>(40), subframe(r), sample(r, 0, 1), sample(r, 0, 1),
                sample(r, 0, 7), kRates[n]),
    EVERY_INPUT(veksAlgebraicCodebookSearch_GSMAMR_16s, AMR_RATES_AND_DTX, sample(r, 17, 144), sample(r, 0, 32767),
                r.in<S>(40), r.in<S>(40), r.both<S>(40), r.out<S>(40), r.out<S>(40), r.out<S>(10), subframe(r),
                kRates[n]),
    EVERY_INPUT(veksFixedCodebookDecode_GSMAMR_16s, AMR_RATES_AND_DTX, r.in<S>(10), r.out<S>(40), subframe(r),
                kRates[n]),
    EVERY_INPUT(veksAdaptiveCodebookGain_GSMAMR_16s, ({40}), r.in<S>(n), r.in<S>(n), r.out<S>(1)),
    EVERY_INPUT(veksAdaptiveCodebookGainCoeffs_GSMAMR_16s, ({40}), r.in<S>(n), r.in<S>(n), r.out<S>(1), r.out<S>(4)),
    EVERY_INPUT(veksPreemphasize_GSMAMR_16s, ({1, 40, 67, 65536}), sample(r), r.in<S>(n), r.out<S>(n), n, r.both<S>(1)),
    EVERY_INPUT(veksInterpolate_GSMAMR_16s, ({1, 10, 67, 65536}), r.from<S>(n), r.in<S>(n), r.to<S>(n), n),
    EVERY_INPUT(veksLSFToLSP_GSMAMR_16s, ({10}), r.from<S>(n, {0, 16384}), r.to<S>(n)),
    EVERY_INPUT(veksPostFilter_GSMAMR_16s, AMR_RATES_AND_DTX, r.in<S>(44), r.in<S>(160), r.both<S>(1),
                r.both<S>(1, {0, 32767}), r.both<S>(10), r.both<S>(10), r.out<S>(160), kRates[n]),
};

const everyinput::Family amrDtx{
    EVERY_INPUT(veksDecDTXBuffer_GSMAMR_16s, ({160}), r.in<S>(n), r.in<S>(10), r.both<S>(1, {0, 7}), r.both<S>(80),
                r.both<S>(8)),
    EVERY_INPUT(veksEncDTXBuffer_GSMAMR_16s, ({160}), r.in<S>(n), r.in<S>(10), r.both<S>(1, {0, 7}), r.both<S>(80),
                r.both<S>(8)),
    EVERY_INPUT(veksEncDTXHandler_GSMAMR_16s, ({0, 1}), r.both<S>(1, {0, 7}), r.both<S>(1, {0, 32767}),
                reinterpret_cast<VekSpchBitRate*>(r.kept<L>({VEK_SPCHBR_7950})), r.out<S>(1), static_cast<S>(n)),
    EVERY_INPUT(veksEncDTXSID_GSMAMR_16s, ({0, 1}), r.in<S>(80), r.in<S>(8), r.both<S>(1, {0, 63}),
                r.both<S>(1, {0, 7}), r.both<S>(3, {0, 127}), r.both<S>(4), r.both<S>(4), static_cast<S>(n)),
    EVERY_INPUT(veksImpulseResponseTarget_GSMAMR_16s, ({40}), r.in<S>(n, 10), r.in<S>(11), r.in<S>(11), r.in<S>(11),
                r.in<S>(10), r.in<S>(10), r.out<S>(n), r.out<S>(n), r.out<S>(n)),
    EVERY_INPUT(veksOpenLoopPitchSearchNonDTX_GSMAMR_16s, AMR_RATES, r.in<S>(44), r.in<S>(44), r.in<S>(160, 10),
                median(r), r.both<S>(1, {0, 32767}), r.both<S>(5, {20, 143}), r.both<S>(303), r.out<S>(2), r.out<S>(2),
                kRates[n]),
    EVERY_INPUT(veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s, AMR_RATES, r.in<S>(44), r.in<S>(44), r.in<S>(160, 10),
                r.both<S>(1, {0, 32767}), median(r), r.both<S>(1, {0, 32767}), r.both<S>(5, {20, 143}), r.both<S>(303),
                r.out<S>(1), r.out<S>(2), r.out<S>(2), kRates[n]),
    EVERY_INPUT(veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s, AMR_RATES, r.in<S>(44), r.in<S>(44), r.in<S>(160, 10),
                median(r), r.both<S>(1, {0, 32767}), r.both<S>(5, {20, 143}), r.both<S>(303), r.out<L>(1), r.out<L>(1),
                r.out<S>(2), r.out<S>(2), kRates[n]),
    EVERY_INPUT(veksQuantLSPDecode_GSMAMR_16s, AMR_RATES_AND_DTX, r.in<S>(5, {0, 7}), r.both<S>(10),
                r.bothRising<S>(10, {205, 16000}), r.both<S>(10), r.out<S>(40), sample(r, 0, 1), kRates[n]),
    EVERY_INPUT(veksLSPQuant_GSMAMR_16s, AMR_RATES_AND_DTX, r.falling<S>(20, {-32768, 32767}),
                r.both<S>(10, {-400, 400}), r.out<S>(20), r.out<S>(5), kRates[n]),
    EVERY_INPUT(veksAutoCorr_GSMAMR_16s32s, AMR_RATES_AND_DTX, r.in<S>(240), r.out<L>(22), kRates[n]),
    EVERY_INPUT(veksVAD1_GSMAMR_16s, ({200}), r.in<S>(n), firstVad(r), r.out<S>(1), sample(r, 0, 32767),
                sample(r, 0, 32767)),
    EVERY_INPUT(veksVAD2_GSMAMR_16s, ({160}), r.in<S>(n), secondVad(r), r.out<S>(1), sample(r, 0, 1)),
};

const everyinput::Family fullRate{
    EVERY_INPUT(veksHighPassFilter_GSMFR_16s, ({1, 160, 67, 65536}), r.in<S>(n), r.out<S>(n), n,
                r.both<L>(2, {-16384, 16383})),
    EVERY_INPUT(veksPreemphasize_GSMFR_16s, ({1, 160, 67, 65536}), r.in<S>(n), r.out<S>(n), n, r.both<S>(1)),
    EVERY_INPUT(veksDeemphasize_GSMFR_16s_I, ({1, 160, 67, 65536}), r.both<S>(n), n, r.both<S>(1)),
    EVERY_INPUT(veksSchur_GSMFR_32s16s, ({1, 8}), r.in<L>(n + 1), r.out<S>(n), n),
    EVERY_INPUT(veksShortTermAnalysisFilter_GSMFR_16s_I, ({1, 40, 67, 65536}), r.in<S>(8), r.both<S>(n), n,
                r.both<S>(8)),
    EVERY_INPUT(veksShortTermSynthesisFilter_GSMFR_16s, ({1, 40, 67, 65536}), r.in<S>(8), r.from<S>(n), r.to<S>(n), n,
                r.both<S>(9)),
    EVERY_INPUT(veksCrossCorrLagMax_16s, ({1, 40, 67, 65536}), r.in<S>(n), r.in<S>(n + 8), n, 9, r.out<L>(1),
                r.out<L>(1)),
    EVERY_INPUT(veksWeightingFilter_GSMFR_16s, ({1, 40, 67, 4096}), r.in<S>(n + 5, 5), r.out<S>(n), n),
    EVERY_INPUT(veksRPEQuantDecode_GSMFR_16s, ({13}), r.in<S>(n, {0, 7}), sample(r, 0, 7), sample(r, -4, 6),
                r.out<S>(n)),
};

TEST(VekEveryInput, OfTheCodebooksOfAmr) {
    amr.check();
}

TEST(VekEveryInput, OfTheTransmissionOfAmr) {
    amrDtx.check();
}

TEST(VekEveryInput, OfGsmFullRate) {
    fullRate.check();
}

} // namespace
