// The grids of the fixed codebook and gain suites of G.729: every test's lines, first and last, and that each call
// succeeds on the suite's data without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksFixedCodebookSearch_G729_32f", 2, "40,616,0,-,-,-", "40,616,1,-,-,-", "p_cdbk", true, 40},
    {"veksFixedCodebookSearch_G729A_32f", 1, "40,616,1,-,-,-", "40,616,1,-,-,-", "p_cdbk", true, 40},
    {"veksFixedCodebookSearch_G729A_16s", 1, "40,616,1,-,-,-", "40,616,1,-,-,-", "p_cdbk", true, 40},
    {"veksFixedCodebookSearch_G729_16s", 2, "40,616,0,-,-,-", "40,616,1,-,-,-", "p_cdbk", true, 40},
    {"veksFixedCodebookSearch_G729A_32s16s", 1, "40,616,1,-,-,-", "40,616,1,-,-,-", "p_cdbk", true, 40},
    {"veksFixedCodebookSearch_G729_32s16s", 2, "40,616,0,-,-,-", "40,616,1,-,-,-", "p_cdbk", true, 40},
    {"veksFixedCodebookSearch_G729E_32f", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_g729icdbk", true, 40},
    {"veksFixedCodebookSearch_G729D_32f", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_g729icdbk", true, 40},
    {"veksFixedCodebookSearch_G729E_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_g729icdbk", false, 40},
    {"veksFixedCodebookSearch_G729D_16s", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_g729icdbk", false, 40},
    {"veksRandomNoiseExcitation_G729B_16s32f", 10, "4,-,-,-,-,-", "40,-,-,-,-,-", "p_rndcode", false, 40},
    {"veksRandomNoiseExcitation_G729B_16s", 10, "4,-,-,-,-,-", "40,-,-,-,-,-", "p_rndcode", false, 40},
    {"veksDecodeGain_G729_16s", 1, "4,-,-,-,-,-", "4,-,-,-,-,-", "p_decgain", false, 4},
    {"veksGainCodebookSearch_G729D_32f", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_gainfp", false, 32},
    {"veksGainCodebookSearch_G729_32f", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_gainfp", false, 32},
    {"veksGainQuant_G729_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_gainqnt", false, 40},
    {"veksDecodeGain_G729I_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_gainqnte", false, 40},
    {"veksGainQuant_G729D_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_gainqnte", false, 40},
};

} // namespace

SUITE_GRIDS(G729CodeSuites, gridCases)

TEST(G729CodeSuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksFixedCodebookSearch_G729_16s", "lenght,lenght_srcdst,subFrame,-,-,-"},
        {"veksFixedCodebookSearch_G729D_16s", "mode,-,-,-,-,-"},
        {"veksRandomNoiseExcitation_G729B_16s", "lenght,-,-,-,-,-"},
        {"veksGainCodebookSearch_G729D_32f", "valTimeFlag,-,-,-,-,-"},
        {"veksGainQuant_G729D_16s", "tameflag,-,-,-,-,-"},
    });
}
