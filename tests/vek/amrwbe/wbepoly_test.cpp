// Resampling by small ratios of the extended wide-band codec: both modes by formula in double precision, tones, frames
// of any length, extremes and the refusals.
#include <utility>

#include "resample_reference.h"
#include "veksc.h"

namespace {

using namespace resref;

constexpr int factors[] = {2, 3, 4, 6, 8};

// Runs a signal through, in frames of the lengths given in turn.
Samples resample(const Samples& x, int factor, bool toHigh, const std::vector<int>& frames, Vek16s* last = nullptr) {
    Samples memory(toHigh ? 24 : static_cast<size_t>(288 / factor), 0);
    const int phases = toHigh ? 12 : factor;
    const int step = toHigh ? factor : 12;
    Vek16s fraction = 0;
    Samples all;
    size_t at = 0;
    for (size_t i = 0; at + static_cast<size_t>(frames[i % frames.size()]) <= x.size(); i++) {
        const int len = frames[i % frames.size()];
        const int made = (phases * len - fraction + step - 1) / step;
        Samples y(static_cast<size_t>(made));
        EXPECT_EQ(vekStsNoErr, veksResamplePolyphase_AMRWBE_16s(x.data() + at, len, factor, 12, &fraction,
                                                                memory.data(), y.data(), made));
        all.insert(all.end(), y.begin(), y.end());
        at += static_cast<size_t>(len);
    }
    if (last != nullptr) {
        *last = fraction;
    }
    return all;
}

TEST(VekWbePolyphase, BothModesAreTheFilterByFormulaOverTheWholeSignal) {
    atEveryLevel([] {
        std::mt19937 random(8);
        const Samples x = noise(random, 3000, -20000, 20000);
        for (const int factor : factors) {
            double room = 0;
            const Samples high = resample(x, factor, true, {500});
            const Formula up = {24, 0.45, 5};
            for (long i = 0; i < static_cast<long>(high.size()); i++) {
                const double value = up.at({x}, i * factor / 12 - 12, static_cast<double>(i * factor % 12) / 12, &room);
                ASSERT_NEAR(lpref::clip(std::lround(value), 16), high[static_cast<size_t>(i)], room + 0.5)
                    << factor << " " << i;
            }
            const Samples low = resample(x, factor, false, {500});
            const Formula down = {288 / factor, 0.45 * factor / 12, 5};
            for (long i = 0; i < static_cast<long>(low.size()); i++) {
                const double value =
                    down.at({x}, i * 12 / factor - 144 / factor, static_cast<double>(i * 12 % factor) / factor, &room);
                ASSERT_NEAR(value, low[static_cast<size_t>(i)], room) << factor << " " << i;
            }
        }
    });
}

TEST(VekWbePolyphase, FramesOfAnyLengthGiveTheSamplesOfTheSignalInOnePiece) {
    std::mt19937 random(9);
    const Samples x = noise(random, 6000, -20000, 20000);
    for (const int factor : factors) {
        for (const bool toHigh : {true, false}) {
            const Samples all = resample(x, factor, toHigh, {6000});
            EXPECT_EQ(all, resample(x, factor, toHigh, {12}));
            const Samples odd = resample(x, factor, toHigh, {13, 640, 17, 101});
            ASSERT_GT(odd.size(), all.size() * 4 / 5);
            EXPECT_EQ(Samples(all.begin(), all.begin() + static_cast<long>(odd.size())), odd) << factor;
        }
    }
}

TEST(VekWbePolyphase, FramesOf80MsLeaveNoFraction) {
    const std::pair<int, int> rates[] = {{640, 2}, {1280, 4}, {1920, 6}, {2560, 8}, {882, 3}, {1764, 6}};
    for (const auto& [low, factor] : rates) {
        const int high = low * 12 / factor;
        Vek16s fraction = 1;
        EXPECT_EQ(static_cast<size_t>(high) * 3,
                  resample(Samples(static_cast<size_t>(low) * 3, 0), factor, true, {low}, &fraction).size());
        EXPECT_EQ(0, fraction);
        EXPECT_EQ(static_cast<size_t>(low) * 3,
                  resample(Samples(static_cast<size_t>(high) * 3, 0), factor, false, {high}, &fraction).size());
        EXPECT_EQ(0, fraction);
    }
}

TEST(VekWbePolyphase, TonesKeepTheirLevelAndImagesAndFoldedOnesAreGone) {
    for (const int factor : factors) {
        const double ratio = factor / 12.0;
        for (const double f : {0.02, 0.2, 0.35}) {
            const Samples high = resample(tone(f, 4800), factor, true, {480});
            EXPECT_NEAR(0, level(high, f * ratio), 0.1) << factor << " " << f;
            EXPECT_LT(level(high, (1 - f) * ratio), -50) << factor << " " << f;
            const Samples low = resample(tone(f * ratio, 24000), factor, false, {2400});
            EXPECT_NEAR(0, level(low, f), 0.1) << factor << " " << f;
        }
        for (const double f : {0.53, 0.7, 0.74}) {
            EXPECT_LT(power(resample(tone(f * ratio, 24000), factor, false, {2400})), -50) << factor << " " << f;
        }
    }
}

TEST(VekWbePolyphase, UpAndDownAgainIsTheSignal24SamplesLate) {
    const Samples x = tone(0.1, 2400);
    for (const int factor : factors) {
        const Samples y = resample(resample(x, factor, true, {480}), factor, false, {480 * 12 / factor});
        ASSERT_EQ(x.size(), y.size());
        for (size_t i = 60; i < y.size(); i++) {
            ASSERT_NEAR(x[i - 24], y[i], 40) << factor << " " << i;
        }
    }
}

TEST(VekWbePolyphase, ExtremesAreCutAndLevelsAgree) {
    Samples x(1200);
    for (size_t i = 0; i < x.size(); i++) {
        x[i] = i / 12 % 3 == 0 ? (i % 2 == 0 ? 32767 : -32768) : (i / 12 % 3 == 1 ? 32767 : -32768);
    }
    for (const int factor : factors) {
        for (const bool toHigh : {true, false}) {
            vekInitCpu(0);
            const Samples plain = resample(x, factor, toHigh, {601});
            EXPECT_EQ(32767, *std::max_element(plain.begin(), plain.end())) << factor;
            EXPECT_EQ(-32768, *std::min_element(plain.begin(), plain.end())) << factor;
            atEveryLevel([&] { EXPECT_EQ(plain, resample(x, factor, toHigh, {601})); });
        }
    }
}

TEST(VekWbePolyphase, Refusals) {
    const Samples x(9000, 1);
    Samples memory(144, 2);
    Samples y(9000, 3);
    Vek16s fraction = 0;
    const auto run = [&](int lenSrc, int factor, int base, int lenDst) {
        return veksResamplePolyphase_AMRWBE_16s(x.data(), lenSrc, factor, base, &fraction, memory.data(), y.data(),
                                                lenDst);
    };
    for (const int factor : {0, 1, 5, 7, 9, 12, -2}) {
        EXPECT_EQ(vekStsRangeErr, run(640, factor, 12, 3840));
    }
    EXPECT_EQ(vekStsRangeErr, run(640, 2, 11, 3840));
    for (const int wrong : {3839, 3841, 640, 0, -1}) {
        EXPECT_EQ(vekStsSizeErr, run(640, 2, 12, wrong));
    }
    EXPECT_EQ(vekStsSizeErr, run(11, 2, 12, 66));
    EXPECT_EQ(vekStsSizeErr, run(8193, 6, 12, 4097));
    EXPECT_EQ(vekStsSizeErr, run(3840, 2, 12, 639));
    EXPECT_EQ(vekStsSizeErr, run(3840, 2, 12, 641));
    for (const int wrong : {-1, 2}) {
        fraction = static_cast<Vek16s>(wrong);
        EXPECT_EQ(vekStsRangeErr, run(640, 2, 12, 3840));
    }
    fraction = 12;
    EXPECT_EQ(vekStsRangeErr, run(3840, 2, 12, 640));
    EXPECT_EQ(Samples(144, 2), memory);
    EXPECT_EQ(Samples(9000, 3), y);
}

} // namespace
