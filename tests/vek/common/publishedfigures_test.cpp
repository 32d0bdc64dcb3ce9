// The published codebooks and windows, figure by figure: a wrong one of thousands changes few codes, and no speech that
// a test has need meet it.
#include "sc/amrwb/tables.cpp"          // NOLINT(bugprone-suspicious-include): the library hides its tables
#include "sc/amrwb/tables_isf1.cpp"     // NOLINT(bugprone-suspicious-include)
#include "sc/amrwb/tables_isf2.cpp"     // NOLINT(bugprone-suspicious-include)
#include "sc/amrwb/tables_isfnoise.cpp" // NOLINT(bugprone-suspicious-include)
#include "sc/g723/tables_gain170.cpp"   // NOLINT(bugprone-suspicious-include)
#include "sc/g723/tables_gain85.cpp"    // NOLINT(bugprone-suspicious-include)
#include "sc/g723/tables_lsf.cpp"       // NOLINT(bugprone-suspicious-include)
#include "sc/g729/tables_gain.cpp"      // NOLINT(bugprone-suspicious-include)
#include "sc/g729/tables_lsf.cpp"       // NOLINT(bugprone-suspicious-include)
#include "sc/gsmamr/tables_lsf3.cpp"    // NOLINT(bugprone-suspicious-include)
#include "sc/gsmamr/tables_lsf5.cpp"    // NOLINT(bugprone-suspicious-include)
#include "sc/gsmamr/tables_misc.cpp"    // NOLINT(bugprone-suspicious-include)

#include "checksum.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

namespace {

/// A check sum over the 16-bit figures of tables, in their order.
class Figures {
public:
    template <class... Tables>
    explicit Figures(const Tables&... tables) {
        (add(tables), ...);
    }

    int count = 0;
    uint64_t sum() const { return m_sum.value(); }

private:
    template <class Table>
    void add(const Table& table) {
        if constexpr (std::is_integral_v<Table>) {
            m_sum.add(static_cast<int16_t>(table));
            ++count;
        } else {
            for (const auto& part : table) {
                add(part);
            }
        }
    }

    void add(const vek::amrwb::IsfBook& book) {
        for (int row = 0; row < book.rows; ++row) {
            for (int column = 0; column < book.columns; ++column) {
                add(vek::amrwb::element(book, row, column));
            }
        }
    }

    void add(const vek::g729::GainEntry& entry) {
        add(entry.adaptive);
        add(entry.factor);
    }

    void add(const vek::g729::LsfPredictor& predictor) {
        add(predictor.weight);
        add(predictor.rest);
        add(predictor.inverse);
    }

    CheckSum m_sum;
};

// Where a table is to have other figures, the failing test tells their sum.
void expectFigures(const Figures& figures, int count, uint64_t sum) {
    EXPECT_EQ(figures.count, count);
    EXPECT_EQ(figures.sum(), sum) << std::hex << "0x" << figures.sum();
}

TEST(VekPublishedFigures, OfG723) {
    using namespace vek::g723;
    expectFigures(Figures(kLsfBook0, kLsfBook1, kLsfBook2), 2560, 0xc074ef34f1ae48e0);
    expectFigures(Figures(kGains85), 1700, 0x1f3e960bc9e48d99);
    expectFigures(Figures(kGains170), 3400, 0x9353e3c1744a40e5);
}

TEST(VekPublishedFigures, OfG729) {
    using namespace vek::g729;
    expectFigures(Figures(kFirstGains, kSecondGains, kFirstGainsD, kSecondGainsD), 80, 0xa547bce2880c62ca);
    expectFigures(Figures(kLsfFirst, kLsfSecond), 1600, 0x8897c781cd09ff17);
    expectFigures(Figures(kLsfPredictors, kNoisePredictors), 240, 0xcd6e36da8eeaece3);
    expectFigures(Figures(kNoiseFirst, kNoiseLower, kNoiseUpper), 64, 0xf0963f74753e8d6b);
}

TEST(VekPublishedFigures, OfAmr) {
    using namespace vek::gsmamr;
    expectFigures(Figures(kLsf3Low, kLsf3Low795, kLsf3Middle, kLsf3MiddleHalf, kLsf3High, kLsf3High515), 8704,
                  0xb888c112e7558432);
    expectFigures(Figures(kLsf3Mean, kLsf3Predictor, kLsf3Start), 100, 0xd3d6fc9f7d0cb790);
    expectFigures(Figures(kLsf5Part1, kLsf5Part2, kLsf5Part3, kLsf5Part4, kLsf5Part5, kLsf5Mean), 3850,
                  0x801f31c1426e9573);
    expectFigures(Figures(kWindow200x40, kWindow160x80, kWindow232x8), 720, 0x96a1cf404b9fb8d0);
    expectFigures(Figures(kDelayWeight, kVoiceMetric, kHangover, kBurst, kVoiceThreshold), 401, 0xda8095424e4277cd);
}

TEST(VekPublishedFigures, OfAmrWb) {
    using namespace vek::amrwb;
    expectFigures(Figures(kIsfLow, kIsfHigh, kIsfMean), 4112, 0x3398c7543e20a432);
    expectFigures(Figures(kIsfLow46a, kIsfLow46b, kIsfLow46c, kIsfHigh46a, kIsfHigh46b), 1184, 0x764f5dd65a53a210);
    expectFigures(Figures(kIsfLow36a, kIsfLow36b, kIsfHigh36), 1600, 0x1adf52d844cacb8f);
    expectFigures(Figures(kIsfNoise1, kIsfNoise2, kIsfNoise3, kIsfNoise4, kIsfNoise5, kIsfNoiseMean), 784,
                  0x7a816b2d66cc7242);
    expectFigures(Figures(kGains6, kGains7, kDelayWeight, kQuarters), 711, 0xba3961a3745eebab);
}

} // namespace
