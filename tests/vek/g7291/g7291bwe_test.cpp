// Envelopes of G.729.1's band extension and their quantiser against their definitions in double precision.
#include "bwe_reference.h"

#include <functional>

namespace {

using namespace bwe;

// --- envelopes ---

TEST(VekG7291EnvelopTime, IsHalfTheLogarithmOfEachSegmentsEnergy) {
    atEveryLevel([] {
        std::mt19937 random(1);
        for (const int top : {1, 7, 300, 4000, 32767}) {
            const Samples x = noise(random, 160, -top, top);
            const Samples t = timeEnvelope(x);
            for (int i = 0; i < 16; ++i) {
                const double e = energy(x.data() + 10 * i, 10);
                EXPECT_NEAR(e > 0 ? 512 * std::log2(e) : 0, t[i], 1) << top << " " << i;
            }
        }
    });
}

TEST(VekG7291EnvelopTime, TakesTheShiftOfTheSignalAway) {
    std::mt19937 random(2);
    const Samples x = noise(random, 80, -7, 7);
    Samples shifted = x;
    for (int16_t& v : shifted) {
        v = static_cast<int16_t>(v * 4096);
    }
    const Samples want = timeEnvelope(x);
    const Samples got = timeEnvelope(shifted, 12);
    for (int i = 0; i < 8; ++i) {
        EXPECT_NEAR(want[i], got[i], 1);
    }
}

TEST(VekG7291EnvelopTime, SilenceAndFullScaleHaveTheirValues) {
    EXPECT_EQ(Samples(16, 0), timeEnvelope(Samples(160)));
    EXPECT_EQ(Samples(8, -12 * 1024), timeEnvelope(Samples(80), 12));
    for (const int16_t v : timeEnvelope(Samples(160, -32768))) {
        EXPECT_NEAR(15 * 1024 + 512 * std::log2(10.0), v, 1);
    }
}

TEST(VekG7291EnvelopTime, RefusesLengthsAndShiftsOutOfRange) {
    const Samples x(170);
    Samples t(16, 9);
    EXPECT_EQ(vekStsSizeErr, veksEnvelopTime_G7291_16s(x.data(), 0, t.data(), 0));
    EXPECT_EQ(vekStsSizeErr, veksEnvelopTime_G7291_16s(x.data(), 0, t.data(), 17));
    EXPECT_EQ(vekStsRangeErr, veksEnvelopTime_G7291_16s(x.data(), -1, t.data(), 16));
    EXPECT_EQ(vekStsRangeErr, veksEnvelopTime_G7291_16s(x.data(), 16, t.data(), 16));
    EXPECT_EQ(Samples(16, 9), t);
    EXPECT_EQ(vekStsNoErr, veksEnvelopTime_G7291_16s(x.data(), 15, t.data(), 1));
    EXPECT_EQ(-15 * 1024, t[0]);
    EXPECT_EQ(9, t[1]);
}

TEST(VekG7291EnvelopFrequency, IsHalfTheLogarithmOfTheFoldedSpectrum) {
    atEveryLevel([] {
        std::mt19937 random(3);
        for (const double size : {3.0, 80.0, 1200.0, 9000.0}) {
            for (int round = 0; round < 20; ++round) {
                const Samples x = white(random, 128, size);
                const Doubles want = bands(x.data());
                const Samples got = bandEnvelope(x);
                for (int j = 0; j < 12; ++j) {
                    EXPECT_NEAR(1024 * want[j], got[j], 2) << size << " " << j;
                }
            }
        }
    });
}

TEST(VekG7291EnvelopFrequency, AToneStandsInItsBand) {
    for (int band = 0; band < 12; ++band) {
        for (const int top : {40, 3000, 32767}) {
            Samples x(128);
            for (int n = 0; n < 128; ++n) {
                x[n] = static_cast<int16_t>(std::lround(top * std::sin(2 * kPi * (2 * band + 1) * n / 64)));
            }
            const Doubles want = bands(x.data());
            const Samples got = bandEnvelope(x);
            EXPECT_EQ(band, std::max_element(got.begin(), got.end()) - got.begin());
            EXPECT_NEAR(1024 * want[band], got[band], 3) << band << " " << top;
        }
    }
}

TEST(VekG7291EnvelopFrequency, HalfTheAmplitudeIsOneUnitLess) {
    std::mt19937 random(4);
    Samples x = white(random, 128, 5000);
    for (int16_t& v : x) {
        v = static_cast<int16_t>(v & ~15);
    }
    Samples sixteenth = x;
    for (int16_t& v : sixteenth) {
        v = static_cast<int16_t>(v / 16);
    }
    const Samples loud = bandEnvelope(x);
    const Samples quiet = bandEnvelope(sixteenth);
    for (int j = 0; j < 12; ++j) {
        EXPECT_EQ(loud[j] - 4 * 1024, quiet[j]);
    }
}

TEST(VekG7291EnvelopFrequency, HasTheSameBitsAtEachLevel) {
    std::vector<Samples> signals = {Samples(128, 1), Samples(128, -32768), Samples(128, 32767)};
    std::mt19937 random(5);
    for (double size = 0.3; size < 40000; size *= 1.3) {
        for (int round = 0; round < 10; ++round) {
            signals.push_back(white(random, 128, size));
            // A pulse, whose lines all have one power.
            signals.emplace_back(128)[random() % 128] = static_cast<int16_t>(size);
        }
    }
    std::vector<Samples> want;
    atEveryLevel([&] {
        std::vector<Samples> got;
        for (const Samples& x : signals) {
            got.push_back(bandEnvelope(x));
        }
        if (want.empty()) {
            want = got; // of plain code
        }
        EXPECT_EQ(want, got);
    });
}

TEST(VekG7291EnvelopFrequency, ReachesItsEndsWithoutOverflow) {
    EXPECT_EQ(Samples(12, 0), bandEnvelope(Samples(128)));
    const Samples least(128, -1);
    EXPECT_NEAR(1024 * bands(least.data())[0], bandEnvelope(least)[0], 2);
    for (const int16_t v : bandEnvelope(least)) {
        EXPECT_GE(v, 0);
    }
    const Samples low(128, -32768);
    EXPECT_NEAR(1024 * bands(low.data())[0], bandEnvelope(low)[0], 2);
    Samples turning(128);
    for (int n = 0; n < 128; ++n) {
        turning[n] = static_cast<int16_t>(n / 2 % 2 == 0 ? 32767 : -32768);
    }
    EXPECT_NEAR(1024 * bands(turning.data())[7], bandEnvelope(turning)[7], 3);
}

// --- quantiser ---

// A grid of cosine coefficients, rows in the order of the levels, first coefficient uppermost.
std::vector<Samples> grid(int columns, const std::vector<Doubles>& levels, const Doubles& deviation,
                          const std::function<double(int)>& mean) {
    std::vector<Samples> book;
    for (const double a : levels[0]) {
        for (const double b : levels[1]) {
            for (const double c : levels[2]) {
                Samples row;
                for (int n = 0; n < columns; ++n) {
                    const double turn = kPi * (n + 0.5) / columns;
                    const double value = mean(n) + a * deviation[0] / std::sqrt(columns) +
                                         std::sqrt(2.0 / columns) * (b * deviation[1] * std::cos(turn) +
                                                                     c * deviation[2] * std::cos(2 * turn));
                    row.push_back(static_cast<int16_t>(std::lround(1024 * value)));
                }
                book.push_back(row);
            }
        }
    }
    return book;
}

struct Books {
    std::vector<std::vector<Samples>> part; // by index 1..5
};

Books books() {
    const Doubles two = {-0.7979, 0.7979};
    const Doubles four = {-1.510, -0.4528, 0.4528, 1.510};
    const Doubles eight = {-2.152, -1.344, -0.7560, -0.2451, 0.2451, 0.7560, 1.344, 2.152};
    const auto time = grid(8, {eight, four, four}, {2.75, 2, 1.25}, [](int) { return 0.0; });
    Books made;
    made.part = {time, time};
    for (int third = 0; third < 3; ++third) {
        made.part.push_back(grid(4, {four, third < 2 ? four : two, two}, {2, 1, 0.625},
                                 [&](int n) { return 1.625 - (4 * third + n) / 8.0; }));
    }
    return made;
}

void expectQuantised(const Samples& values, const Books& all) {
    Samples got = values;
    Samples index(6);
    ASSERT_EQ(vekStsNoErr, veksQuantParam_G7291_16s(got.data(), index.data()));
    double sum = 0;
    for (int i = 0; i < 16; ++i) {
        sum += values[i];
    }
    const int step = static_cast<int>(std::min(std::max(std::floor(sum / 16 / 512 + 0.5), 0.0), 31.0));
    ASSERT_EQ(step, index[0]);
    size_t at = 0;
    for (size_t part = 0; part < 5; ++part) {
        const std::vector<Samples>& book = all.part[part];
        double least = 1e30;
        size_t nearest = 0;
        for (size_t row = 0; row < book.size(); ++row) {
            double error = 0;
            for (size_t n = 0; n < book[row].size(); ++n) {
                const auto target = static_cast<double>(clip(values[at + n] - 512 * step, 16));
                error += std::pow(target - book[row][n], 2);
            }
            if (error < least) {
                least = error;
                nearest = row;
            }
        }
        ASSERT_EQ(nearest, static_cast<size_t>(index[part + 1])) << part;
        for (size_t n = 0; n < book[nearest].size(); ++n) {
            ASSERT_EQ(clip(512 * step + book[nearest][n], 16), got[at + n]);
        }
        at += book[nearest].size();
    }
}

TEST(VekG7291QuantParam, TakesTheNearestOfEveryCodebook) {
    const Books all = books();
    EXPECT_EQ(128U, all.part[0].size());
    EXPECT_EQ(32U, all.part[2].size());
    EXPECT_EQ(16U, all.part[4].size());
    std::mt19937 random(5);
    for (int round = 0; round < 300; ++round) {
        Samples values = noise(random, 28, -2048, 2048);
        const int mean = static_cast<int>(random() % 15000);
        for (int16_t& v : values) {
            v = static_cast<int16_t>(v + mean);
        }
        expectQuantised(values, all);
    }
    expectQuantised(Samples(28, 32767), all);
    expectQuantised(Samples(28, -32768), all);
    expectQuantised(Samples(28, 256), all);
    expectQuantised(Samples(28, 255), all);
    for (int round = 0; round < 100; ++round) {
        expectQuantised(noise(random, 28, -32768, 32767), all);
    }
}

TEST(VekG7291QuantParam, EveryRowIsTheNearestToItself) {
    const Books all = books();
    for (int row = 0; row < 128; ++row) {
        // The halves mirror each other's mean, so that the frame's is 5.
        Samples values(28);
        const Samples& first = all.part[0][row];
        const Samples& second = all.part[1][127 - row];
        for (int n = 0; n < 8; ++n) {
            values[n] = static_cast<int16_t>(5120 + first[n]);
            values[8 + n] = static_cast<int16_t>(5120 + second[n]);
        }
        for (int third = 0; third < 3; ++third) {
            const auto& book = all.part[2 + third];
            for (int n = 0; n < 4; ++n) {
                values[16 + 4 * third + n] = static_cast<int16_t>(5120 + book[row % book.size()][n]);
            }
        }
        const Samples before = values;
        Samples index(6);
        ASSERT_EQ(vekStsNoErr, veksQuantParam_G7291_16s(values.data(), index.data()));
        EXPECT_EQ(
            (Samples{10, static_cast<int16_t>(row), static_cast<int16_t>(127 - row), static_cast<int16_t>(row % 32),
                     static_cast<int16_t>(row % 32), static_cast<int16_t>(row % 16)}),
            index);
        EXPECT_EQ(before, values);
    }
}

} // namespace
