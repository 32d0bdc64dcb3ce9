// The data that the suites of echo cancellation and of GSM full rate hand to their calls: sizes and fills, the rates
// and frames of states, sizes that a user changes, and that a state given back is forgotten.
#include "suite_data.h"

#include "krlist.h"

#include <cmath>

namespace {

using Values = std::vector<double>;
using Lengths = std::vector<int>;

TEST(EcSuiteData, OfTheLearningFilterIsOneHalf) {
    SuiteLine line("veksNLMS_EC_32f");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths(), (Lengths{17, 8, 8, 8, 8}));
    EXPECT_EQ(line.values(0), Values(17, 0.5));
    for (const int index : {1, 2, 4}) {
        EXPECT_EQ(line.values(index), Values(8, 0.5));
    }
    EXPECT_EQ(line.values(3), Values(8, 0));
}

TEST(EcSuiteData, OfTheFixedFilterIsRandom) {
    SuiteLine line("veksFIR_EC_32f", 1);
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths(), (Lengths{264, 8, 8, 256}));
    expectRandom(line.values(0), -1, 1);
    expectRandom(line.values(3), -1, 1);
}

TEST(EcSuiteData, OfToneDetectionIsZero) {
    for (const char* function : {"veksToneDetect_EC_16s", "veksToneDetect_EC_32f"}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.values(0), Values(64, 0));
    }
}

// Random -1..1 in bytes is nothing but zeros; the filling shows in the state of the generator.
TEST(EcSuiteData, TheWorkMemoryOfTheFixedPointFormsIsRandom) {
    for (const char* function : {"veksSubbandAnalysis_16s32sc_Sfs", "veksSubbandSynthesis_32sc16s_Sfs"}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        const unsigned int after = vkVector::m_seed;
        const int bytes = line.vector(4).length();
        vkVector::m_seed = 7;
        for (const int length : {line.vector(0).length(), 2 * line.vector(1).length(), bytes}) {
            vkVector other(vk8u);
            other.createVector(length, setRand, -1, 1);
        }
        EXPECT_EQ(vkVector::m_seed, after) << function;
    }
}

TEST(EcSuiteData, OfAnalysisAndSynthesisHasTheFrameAndTheWindowOfItsForm) {
    for (const char* function : {"veksSubbandAnalysis_16s32sc_Sfs", "veksSubbandSynthesis_32sc16s_Sfs"}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.lengths()[0], 16);
        EXPECT_EQ(line.lengths()[2], 64);
    }
    for (const char* function : {"veksSubbandAnalysis_32f32fc", "veksSubbandSynthesis_32fc32f"}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.lengths()[0], 24);
        EXPECT_EQ(line.lengths()[2], 128);
    }
}

TEST(EcSuiteData, FewerSubbandsThanTheTransformHasMakeNoVectorShorter) {
    for (const auto& [function, bands] : {std::pair{"veksSubbandAnalysis_32f32fc", 17},
                                          {"veksSubbandSynthesis_32fc32f", 17},
                                          {"veksSubbandAnalysis_16s32sc_Sfs", 33},
                                          {"veksSubbandSynthesis_32sc16s_Sfs", 33}}) {
        SuiteLine line(function, 0, {"numSubbands=2"});
        ASSERT_TRUE(line.ready());
        EXPECT_GE(line.lengths()[1], bands) << function;
        EXPECT_EQ(line.call(), 0) << function;
    }
}

TEST(EcSuiteData, FewerSubbandsThanAFrameHasSamplesMakeNoSignalShorter) {
    SuiteLine line("veksSubbandControllerUpdate_EC_32f", 0, {"numSubbands=2"});
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths()[0], 64);
    EXPECT_EQ(line.lengths()[1], 64);
    EXPECT_EQ(line.lengths()[2], 2);
}

TEST(EcSuiteDivisor, OfTheFullBandIsAWholeNumber) {
    for (const char* function : {"veksFullbandController_EC_16s", "veksFullbandController_EC_32f",
                                 "veksFullbandControllerUpdate_EC_16s", "veksFullbandControllerUpdate_EC_32f"}) {
        SuiteLine line(function, 3);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.test().getDivisor(), 181);
    }
}

// ---- Rates of states ----

// Two seconds of the tone that switches cancellers off, with its reversals.
std::vector<float> tone(int rate) {
    constexpr double pi = 3.14159265358979;
    std::vector<float> signal;
    for (int i = 0; i < 2 * rate; ++i) {
        const double time = static_cast<double>(i) / rate;
        signal.push_back(static_cast<float>(0.1 * std::sin(2 * pi * 2100 * time + pi * std::floor(time / 0.45))));
    }
    return signal;
}

// Whether a line's state hears the tone in 1.5 seconds at a rate.
int hears(SuiteLine& line, int rate, bool fixed) {
    void* const state = line.plain().back().data;
    const std::vector<float> signal = tone(rate);
    const int count = static_cast<int>(signal.size());
    int result = -1;
    if (fixed) {
        std::vector<Vek16s> whole;
        for (const float v : signal) {
            whole.push_back(static_cast<Vek16s>(v * 32767));
        }
        EXPECT_EQ(veksToneDetect_EC_16s(whole.data(), count, &result, static_cast<VeksToneDetectState_EC_16s*>(state)),
                  0);
    } else {
        EXPECT_EQ(veksToneDetect_EC_32f(signal.data(), count, &result, static_cast<VeksToneDetectState_EC_32f*>(state)),
                  0);
    }
    return result;
}

TEST(EcSuiteRates, ModeZeroOfTheToneDetectorIsEightThousandAndOthersAreSixteen) {
    for (const char* function : {"veksToneDetect_EC_16s", "veksToneDetect_EC_32f"}) {
        const bool fixed = function == std::string("veksToneDetect_EC_16s");
        for (const int rate : {8000, 16000}) {
            SuiteLine narrow(function, 0);
            ASSERT_TRUE(narrow.ready());
            EXPECT_EQ(hears(narrow, rate, fixed), rate == 8000);
        }
        for (const int rate : {8000, 16000}) {
            SuiteLine wide(function, 1);
            ASSERT_TRUE(wide.ready());
            EXPECT_EQ(hears(wide, rate, fixed), rate == 16000);
        }
        SuiteLine other(function, 0, {"mode=5"});
        ASSERT_TRUE(other.ready());
        EXPECT_EQ(hears(other, 16000, fixed), 1);
    }
}

// Frames for which steps stay at their least after one in which the near end talked, told by a step of each frame.
template <class Update>
int framesOfDoubleTalk(const Update& update) {
    const double least = update(true);
    int frames = 1;
    while (frames < 5000 && update(false) <= least) {
        ++frames;
    }
    return frames;
}

// Double talk is held for 60 ms: its frames tell the rate and the frame that a state was made with.
TEST(EcSuiteRates, ModeChoosesThatOfTheFullBandInFramesOfOneSample) {
    for (const auto& [mode, frames] : {std::pair{0, 480}, {1, 960}}) {
        SuiteLine line("veksFullbandControllerUpdate_EC_32f", mode);
        ASSERT_TRUE(line.ready());
        auto* const state = static_cast<VeksFullbandControllerState_EC_32f*>(line.plain().back().data);
        EXPECT_EQ(framesOfDoubleTalk([state](bool talk) {
                      const float far[2] = {0.1F, 0.1F};
                      const float near = talk ? 1.0F : 0.0F;
                      float step = -1;
                      EXPECT_EQ(veksFullbandControllerUpdate_EC_32f(far + 1, &near, &step, state), 0);
                      return step;
                  }),
                  frames);
    }
}

TEST(EcSuiteRates, ModeChoosesThatOfTheSubbandsInFramesOfSixtyFour) {
    for (const auto& [mode, frames] : {std::pair{0, 8}, {1, 15}}) {
        SuiteLine line("veksSubbandControllerUpdate_EC_32f", mode);
        ASSERT_TRUE(line.ready());
        auto* const state = static_cast<VeksSubbandControllerState_EC_32f*>(line.plain().back().data);
        std::vector<Vek32fc> bands(65, Vek32fc{1, 1});
        const std::vector<const Vek32fc*> history(static_cast<size_t>(mode == 0 ? 2 : 4), bands.data());
        EXPECT_EQ(framesOfDoubleTalk([&](bool talk) {
                      const std::vector<float> far(64, 0.1F);
                      const std::vector<float> near(64, talk ? 1.0F : 0.0F);
                      std::vector<float> steps(65, -1.0F);
                      EXPECT_EQ(veksSubbandControllerUpdate_EC_32f(far.data(), near.data(), history.data(),
                                                                   bands.data(), steps.data(), state),
                                0);
                      return steps[0];
                  }),
                  frames);
    }
}

TEST(EcSuiteRates, ModeChoosesThatOfTheDoubleTalkFormInFramesOfSixteen) {
    for (const auto& [mode, frames] : {std::pair{0, 30}, {1, 60}}) {
        // Modes are walked outside the double talk.
        SuiteLine line("veksSubbandControllerDTUpdate_EC_16s", 2 * mode);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.matrix(0).rows(), mode == 0 ? 2 : 4);
        EXPECT_EQ(line.matrix(0).columns(), 33);
        auto* const state = static_cast<VeksSubbandControllerDTState_EC_16s*>(line.plain().back().data);
        const std::vector<Vek32sc> far(33, Vek32sc{1 << 15, 0});
        const std::vector<const Vek32sc*> history(static_cast<size_t>(mode == 0 ? 2 : 4), far.data());
        const std::vector<Vek32sc> error(33);
        int told = 0;
        for (int frame = 0; frame < 200; ++frame) {
            const std::vector<Vek32sc> near(33, Vek32sc{frame == 0 ? 1 << 20 : 0, 0});
            std::vector<Vek32s> steps(33);
            int isDoubleTalk = -1;
            int disabled = -1;
            ASSERT_EQ(veksSubbandControllerDTUpdate_EC_16s(history.data(), near.data(), error.data(), steps.data(),
                                                           &isDoubleTalk, &disabled, 0, state),
                      0);
            told += isDoubleTalk;
        }
        EXPECT_EQ(told, frames);
    }
}

// ---- The form that tells double talk ----

TEST(EcSuiteDoubleTalk, ChoosesRandomDataOrConstantOnes) {
    for (const int doubleTalk : {0, 1}) {
        SuiteLine line("veksSubbandControllerDTUpdate_EC_16s", doubleTalk);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.lengths(), (Lengths{33, 33, 33}));
        for (const int index : {0, 1}) {
            EXPECT_EQ(line.values(index) == Values(33, 32767), doubleTalk == 0);
        }
    }
}

TEST(EcSuiteDoubleTalk, TheErrorsOfBothFiltersAre4095) {
    SuiteLine line("veksSubbandControllerDT_EC_16s");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.values(0), Values(33, 4095));
    EXPECT_EQ(line.values(1), Values(33, 4095));
}

TEST(EcSuiteSubbandFilter, MultipliesOnesByOnes) {
    for (const char* function : {"veksFIRSubband_EC_32sc_Sfs", "veksFIRSubbandLow_EC_32sc_Sfs"}) {
        // Eight segments, a scale factor of 0.
        SuiteLine line(function, function == std::string("veksFIRSubband_EC_32sc_Sfs") ? 1 : 0);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.call(), 0);
        const Vek32sc last = line.vector(0).m_32sc[31];
        EXPECT_EQ(last.re, 0);
        EXPECT_EQ(last.im, 16);
    }
}

// ---- What is given back ----

// A line for each block that is given back, a null or an unknown address included.
int givenBack(krTest& test, const TempDir& directory) {
    krList<o_stream*> saved;
    g_ostrm.swap(saved);
    g_ostrm.addStream(directory.path("log").c_str(), false);
    g_ostrm.setOutLevel(ERR | WARN | MEM);
    test.flushData();
    g_ostrm.setOutLevel(ERR);
    g_ostrm.close();
    g_ostrm.swap(saved);
    std::istringstream log(directory.read("log"));
    int count = 0;
    for (std::string line; std::getline(log, line);) {
        count += line.find("krFree") != std::string::npos;
    }
    return count;
}

TEST(EcSuiteStates, GivenBackOnceAreForgotten) {
    for (const char* function :
         {"veksToneDetect_EC_16s", "veksToneDetect_EC_32f", "veksSubbandAnalysis_32f32fc",
          "veksSubbandAnalysis_16s32sc_Sfs", "veksFullbandController_EC_32f", "veksFullbandController_EC_16s",
          "veksSubbandController_EC_16s", "veksSubbandController_EC_32f", "veksSubbandControllerDT_EC_16s"}) {
        const TempDir directory;
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        EXPECT_GE(givenBack(line.test(), directory), 2) << function;
        EXPECT_EQ(givenBack(line.test(), directory), 0) << function;
    }
}

// ---- GSM full rate ----

TEST(GsmFrSuiteData, TheLagReachesOverTheCodecsRange) {
    SuiteLine line("veksCrossCorrLagMax_16s");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths(), (Lengths{40, 120}));
}

TEST(GsmFrSuiteData, OfTheRecursionAreEightFallingWords) {
    const Values falling = {135268058, 91881520, 76873678, 61866270, 45809582, 31850636, 15728692, 7602574, 0};
    for (const int row : {0, 1, 2}) {
        SuiteLine line("veksSchur_GSMFR_32s16s", row);
        ASSERT_TRUE(line.ready());
        const int order = 4 + 2 * row;
        EXPECT_EQ(line.values(0), Values(falling.begin(), falling.begin() + order + 1));
        EXPECT_EQ(line.call(), 0);
        // Each step of the recursion finds a coefficient.
        const Values found = line.values(1);
        EXPECT_EQ(found.size(), static_cast<std::size_t>(order));
        EXPECT_EQ(std::count(found.begin(), found.end(), 0.0), 0);
    }
}

TEST(GsmFrSuiteData, TheAnalysisFilterHasEightCoefficientsOfOne) {
    SuiteLine line("veksShortTermAnalysisFilter_GSMFR_16s_I");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths(), (Lengths{8, 13, 8}));
    EXPECT_EQ(line.values(0), Values(8, 1));
    EXPECT_EQ(line.values(1), Values(13, 0));
}

TEST(GsmFrSuiteData, AShorterLengthOfTheQuantiserLeavesThirteenWords) {
    SuiteLine line("veksRPEQuantDecode_GSMFR_16s", 0, {"length=2"});
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths(), (Lengths{13, 13}));
    EXPECT_EQ(line.call(), 0);
}

} // namespace
