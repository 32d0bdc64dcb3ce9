// Short steps that take the quick way where nothing saturates, against the steps that saturate always.
#include "sc/amrwb/tables_isp.cpp" // NOLINT(bugprone-suspicious-include): the library hides its tables
#include "sc/common/bandvad.h"
#include "sc/common/spacing.h"

#include "lp_reference.h"
#include "veksc.h"

namespace {

using namespace vek::fix;

constexpr int kLength = 64;

// Tells how many of the pairs saturated somewhere.
int splitSaturating(Samples& x, int16_t* memory, int16_t first, bool halve, bool both) {
    using vek::bandvad::kFilter5Second;
    int saturated = 0;
    const auto allPass = [&saturated](int16_t in, int16_t& kept, int16_t c) {
        const int16_t before = kept;
        kept = sub(in, mult(c, before));
        saturated += kept != in - mult(c, before) ? 1 : 0;
        saturated += add(before, mult(c, kept)) != before + mult(c, kept) ? 1 : 0;
        return add(before, mult(c, kept));
    };
    for (size_t i = 0; i < kLength; i += 2) {
        const int16_t a = both ? allPass(x[i], memory[0], first) : x[i];
        const int16_t b = both ? allPass(x[i + 1], memory[1], kFilter5Second) : allPass(x[i + 1], memory[0], first);
        x[i] = static_cast<int16_t>(add(a, b) >> (halve ? 1 : 0));
        x[i + 1] = static_cast<int16_t>(sub(a, b) >> (halve ? 1 : 0));
    }
    return saturated;
}

TEST(VekBandSplit, QuickStepsAreTheSaturatingOnes) {
    using namespace vek::bandvad;
    std::mt19937 random(5);
    int saturated = 0;
    int quiet = 0;
    for (int round = 0; round < 600; ++round) {
        const int peak = round % 3 == 0 ? 2000 : round % 3 == 1 ? 16384 : 32767;
        const Samples in = noise(random, kLength, -peak - 1, peak);
        const Samples kept = noise(random, 2, -peak - 1, peak);
        for (int form = 0; form < 3; ++form) {
            Samples quick = in;
            Samples slow = in;
            int16_t quickMemory[2] = {kept[0], kept[1]};
            int16_t slowMemory[2] = {kept[0], kept[1]};
            if (form == 0) {
                splitBand5<kLength, 0>(quick.data(), 1, quickMemory);
            } else if (form == 1) {
                splitBand5<kLength>(quick.data(), 1, quickMemory);
            } else {
                splitBand3<kLength>(quick.data(), 1, quickMemory[0]);
            }
            const int count =
                splitSaturating(slow, slowMemory, form < 2 ? kFilter5First : kFilter3, form > 0, form < 2);
            saturated += count;
            quiet += count == 0 ? 1 : 0;
            ASSERT_EQ(slow, quick) << round << " " << form;
            ASSERT_EQ(slowMemory[0], quickMemory[0]);
            ASSERT_EQ(slowMemory[1], quickMemory[1]);
        }
    }
    EXPECT_GT(saturated, 1000);
    EXPECT_GT(quiet, 300);
}

TEST(VekSpacing, EachFrequencyIsAtLeastTheGapAboveTheOneBefore) {
    std::mt19937 random(6);
    for (int round = 0; round < 2000; ++round) {
        Samples f = noise(random, 10, round % 4 == 0 ? -32768 : 0, round % 2 == 0 ? 16384 : 32767);
        if (round % 3 != 0) {
            std::sort(f.begin(), f.end());
        }
        Samples expected = f;
        int16_t lowest = 205;
        for (int16_t& e : expected) {
            e = std::max(e, lowest);
            lowest = add(e, 205);
        }
        vek::keepApart<10>(f.data(), 205);
        ASSERT_EQ(expected, f) << round;
    }
}

// The walk down the table that the recommendation describes.
Samples walked(const Samples& isp) {
    using namespace vek::amrwb;
    Samples isf(isp.size());
    int place = 127;
    for (size_t i = isp.size(); i-- > 0;) {
        place = i + 2 >= isp.size() ? 127 : place;
        while (kIspCos[place] < isp[i]) {
            --place;
        }
        const int32_t within = L_mult(sub(isp[i], kIspCos[place]), kIspAcosSlope[place]);
        isf[i] = add(round_s(L_shl(within, 4)), static_cast<int16_t>(place * 128));
    }
    isf.back() = static_cast<int16_t>(isf.back() >> 1);
    return isf;
}

TEST(VekAmrWbSpectra, FrequenciesOfAnyPairsAreThoseOfTheWalk) {
    for (int v = -32768; v <= 32767; ++v) {
        const Samples isp(4, static_cast<int16_t>(v));
        Samples isf(4);
        ASSERT_EQ(vekStsNoErr, veksISPToISF_Norm_AMRWB_16s(isp.data(), isf.data(), 4));
        ASSERT_EQ(walked(isp), isf) << v;
    }
    // Out of order, too.
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        const Samples isp = noise(random, 16, -32768, 32767);
        Samples isf(16);
        ASSERT_EQ(vekStsNoErr, veksISPToISF_Norm_AMRWB_16s(isp.data(), isf.data(), 16));
        ASSERT_EQ(walked(isp), isf) << round;
    }
}

} // namespace
