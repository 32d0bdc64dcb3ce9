// Voice activity of AMR: what both options refuse, decisions on speech and noise, and option 2's energies against
// double precision.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>
#include <complex>
#include <numbers>

namespace {

using lpref::pulses;

VeksVAD1State_GSMAMR freshVad1() {
    VeksVAD1State_GSMAMR s{};
    for (int i = 0; i < 9; ++i) {
        s.bckrEst[i] = s.aveLevel[i] = s.oldLevel[i] = 150;
    }
    s.corrHpFast = 13106;
    return s;
}

TEST(VekAmrVad1, TellsLoudFromNoiseAndHangsOver) {
    std::mt19937 random(4);
    VeksVAD1State_GSMAMR s = freshVad1();
    int16_t flag = 9;
    for (int f = 0; f < 60; ++f) {
        const Samples quiet = noise(random, 200, -20, 20);
        ASSERT_EQ(0, veksVAD1_GSMAMR_16s(quiet.data(), &s, &flag, 0, 0));
    }
    EXPECT_EQ(0, flag);
    for (int f = 0; f < 10; ++f) {
        const Samples loud = noise(random, 200, -8000, 8000);
        ASSERT_EQ(0, veksVAD1_GSMAMR_16s(loud.data(), &s, &flag, 0, 0));
        EXPECT_EQ(1, flag);
    }
    int hang = 0;
    for (int f = 0; f < 40 && flag != 0; ++f) {
        const Samples quiet = noise(random, 200, -20, 20);
        ASSERT_EQ(0, veksVAD1_GSMAMR_16s(quiet.data(), &s, &flag, 0, 0));
        hang += flag;
    }
    EXPECT_GE(hang, 4);
    EXPECT_LE(hang, 8);
    EXPECT_EQ(0, s.vadDecision);
}

TEST(VekAmrVad1, RefusesNullAndAMemoryThatIsNotSetUp) {
    const Samples x(200);
    VeksVAD1State_GSMAMR s = freshVad1();
    int16_t flag = 9;
    expectNullsRefused(veksVAD1_GSMAMR_16s, x.data(), &s, &flag, 0, 0);
    for (const int16_t wrong : {0, 39, 16001}) {
        s = freshVad1();
        s.bckrEst[8] = wrong;
        EXPECT_EQ(vekStsStateErr, veksVAD1_GSMAMR_16s(x.data(), &s, &flag, 0, 0));
    }
    EXPECT_EQ(9, flag);
}

// Energy of a channel of half a frame: pre-emphasis, the transform of 80 samples, mean of the lines over 32 * 32.
double channelEnergy(const double* emphasised, int first, int last) {
    double sum = 0;
    for (int k = first; k <= last; ++k) {
        std::complex<double> line = 0;
        for (int n = 0; n < 80; ++n) {
            line += emphasised[n] * std::polar(1.0, -2 * std::numbers::pi * k * (n + 24) / 128);
        }
        sum += std::norm(line);
    }
    return sum / (last - first + 1) / 1024;
}

TEST(VekAmrVad2, ChannelEnergiesFollowTheDefinitionInBothFormats) {
    const int edges[17] = {2, 4, 6, 8, 10, 12, 14, 17, 20, 23, 27, 31, 36, 42, 49, 56, 64};
    atEveryLevel([&] {
        for (const int level : {100, 1000, 9000}) {
            std::mt19937 random(5);
            VeksVAD2State_GSMAMR s{};
            double before = 0;
            double energy[16] = {};
            for (int f = 0; f < 6; ++f) {
                const Samples x = noise(random, 160, -level, level);
                int16_t flag = 9;
                ASSERT_EQ(0, veksVAD2_GSMAMR_16s(x.data(), &s, &flag, 0));
                for (int half = 0; half < 2; ++half) {
                    double e[80];
                    for (int n = 0; n < 80; ++n) {
                        const double now = x[static_cast<size_t>(80 * half + n)];
                        e[n] = now - 0.8 * before;
                        before = now;
                    }
                    for (int c = 0; c < 16; ++c) {
                        const double fresh = channelEnergy(e, edges[c], edges[c + 1] - 1);
                        energy[c] = f + half == 0 ? fresh : 0.55 * fresh + 0.45 * energy[c];
                    }
                }
                const double unit = s.loud == 1 ? 16 : 512;
                EXPECT_EQ(level == 9000 ? 1 : 0, s.loud);
                for (int c = 0; c < 16; ++c) {
                    EXPECT_NEAR(1, s.energy[c] / unit / energy[c], 0.02) << level << " " << f << " " << c;
                }
            }
            EXPECT_EQ(12, s.frameCount);
        }
    });
}

TEST(VekAmrVad2, TellsSpeechFromNoiseAndHangsOver) {
    std::mt19937 random(6);
    VeksVAD2State_GSMAMR s{};
    int16_t flag = 9;
    for (int f = 0; f < 100; ++f) {
        ASSERT_EQ(0, veksVAD2_GSMAMR_16s(noise(random, 160, -30, 30).data(), &s, &flag, 0));
    }
    EXPECT_EQ(0, flag);
    Samples speech = pulses(60, 12000, 160);
    for (int f = 0; f < 8; ++f) {
        ASSERT_EQ(0, veksVAD2_GSMAMR_16s(speech.data(), &s, &flag, 1));
        EXPECT_EQ(1, flag);
    }
    int hang = 0;
    for (int f = 0; f < 60 && flag != 0; ++f) {
        ASSERT_EQ(0, veksVAD2_GSMAMR_16s(noise(random, 160, -30, 30).data(), &s, &flag, 0));
        hang += flag;
    }
    EXPECT_EQ(0, flag);
    EXPECT_GE(hang, 3);
    EXPECT_LE(hang, 16);
}

// A noise that has become louder is learnt after 50 half frames, unless the predictor says that it is voiced.
TEST(VekAmrVad2, TheForcedUpdateWaitsWhileTheLongTermPredictorIsStrong) {
    for (const int16_t strong : {0, 1}) {
        std::mt19937 random(7);
        VeksVAD2State_GSMAMR s{};
        int16_t flag = 9;
        for (int f = 0; f < 50; ++f) {
            ASSERT_EQ(0, veksVAD2_GSMAMR_16s(noise(random, 160, -30, 30).data(), &s, &flag, 0));
        }
        int forced = 0;
        for (int f = 0; f < 60; ++f) {
            ASSERT_EQ(0, veksVAD2_GSMAMR_16s(noise(random, 160, -2000, 2000).data(), &s, &flag, strong));
            forced += s.forcedUpdate;
        }
        EXPECT_EQ(strong == 0, forced > 0);
    }
}

TEST(VekAmrVad2, RefusesNullAndAMemoryThatNoCallLeaves) {
    const Samples x(160);
    VeksVAD2State_GSMAMR s{};
    int16_t flag = 9;
    expectNullsRefused(veksVAD2_GSMAMR_16s, x.data(), &s, &flag, 0);
    for (int16_t VeksVAD2State_GSMAMR::*word :
         {&VeksVAD2State_GSMAMR::loud, &VeksVAD2State_GSMAMR::hangover, &VeksVAD2State_GSMAMR::burstCount}) {
        s = {};
        s.*word = -1;
        EXPECT_EQ(vekStsStateErr, veksVAD2_GSMAMR_16s(x.data(), &s, &flag, 0));
    }
    s = {};
    s.loud = 2;
    EXPECT_EQ(vekStsStateErr, veksVAD2_GSMAMR_16s(x.data(), &s, &flag, 0));
    s = {};
    s.frameCount = -1;
    EXPECT_EQ(vekStsStateErr, veksVAD2_GSMAMR_16s(x.data(), &s, &flag, 0));
    EXPECT_EQ(9, flag);
}

} // namespace
