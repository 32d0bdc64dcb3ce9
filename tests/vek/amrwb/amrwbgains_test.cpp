// Gains of AMR-WB and AMR-WB+: the quantised pair against all pairs in double precision, decoding, lost frames,
// refusals.
#include <cmath>
#include <limits>

#include "lp_reference.h"
#include "veksc.h"

namespace {

using lpref::dot;

struct Pair {
    double pitch;
    double correction;
};

// The pairs, as the decoder tells them: 30 dB are predicted of an empty past, a fixed vector of energy 1 a sample.
std::vector<Pair> pairsOf(VekSpchBitRate mode, int count) {
    std::vector<Pair> pairs;
    for (int i = 0; i < count; ++i) {
        int16_t past[4] = {};
        int16_t pitch = 0;
        int16_t former = 0;
        int16_t pastCode = 0;
        int32_t gain = 0;
        EXPECT_EQ(vekStsNoErr, veksDecodeGain_AMRWB_16s(i, 4096, &pitch, &gain, 0, 0, past, &former, &pastCode, mode));
        pairs.push_back({pitch / 16384.0, gain / 65536.0 / std::pow(10.0, 1.5)});
    }
    return pairs;
}

// A 16-bit mantissa and an exponent.
void split(double v, int16_t* out) {
    int exponent = 0;
    const double m = std::frexp(v, &exponent);
    out[0] = static_cast<int16_t>(std::min(std::floor(m * 32768.0), 32767.0));
    out[1] = static_cast<int16_t>(exponent);
}

struct Quant {
    Samples target;
    Samples adaptive;
    Samples code;
    Samples filtered;
    int16_t corr[4] = {};
    int16_t past[4] = {-3000, 1000, 500, -2000};
    int16_t pitch = 9000;
    int16_t correction = -1;
    int16_t index = -1;
    int32_t gain = -1;

    explicit Quant(std::mt19937& random)
        : target(noise(random, 64, -3000, 3000)), adaptive(noise(random, 64, -2000, 2000)), code(64),
          filtered(noise(random, 64, -400, 400)) {
        for (size_t i = 0; i < 64; ++i) {
            target[i] = static_cast<int16_t>(target[i] / 3 + adaptive[i] * 3 / 4 + filtered[i]);
        }
        for (size_t i = 3; i < 64; i += 8) {
            code[i] = 512;
        }
        // What the search of the adaptive codebook has found.
        split(dot(adaptive, adaptive), corr);
        split(dot(target, adaptive), corr + 2);
    }
    VekStatus run(int clip, VekSpchBitRate mode, int format = 0, int len = 64) {
        return veksGainQuant_AMRWB_16s(target.data(), adaptive.data(), format, code.data(), filtered.data(), corr, past,
                                       &pitch, &gain, clip, &index, len, mode);
    }
    VekStatus runExtended(int16_t mean, int format = 0, int len = 64) {
        return veksGainQuant_AMRWBE_16s(target.data(), adaptive.data(), format, code.data(), filtered.data(), len, corr,
                                        mean, &pitch, &correction, &gain, &index);
    }
    double error(double gp, double gc) const {
        double sum = 0;
        for (size_t i = 0; i < 64; ++i) {
            const double e = target[i] - gp * adaptive[i] - gc * filtered[i] / 512.0;
            sum += e * e;
        }
        return sum;
    }
    // The predicted code gain of a level in dB, for eight pulses of 1 in 64 samples.
    static double predicted(double level) { return std::pow(10.0, (level - 10.0 * std::log10(8.0 / 64.0)) / 20.0); }
};

// What the least error of the pairs first..last is.
double least(const Quant& q, const std::vector<Pair>& pairs, int first, int last, double predicted) {
    double best = std::numeric_limits<double>::max();
    for (int i = first; i <= last; ++i) {
        const Pair& p = pairs[static_cast<size_t>(i)];
        best = std::min(best, q.error(p.pitch, p.correction * predicted));
    }
    return best;
}

TEST(VekWideExtendedGainQuant, NoPairOfTheBookIsBetter) {
    atEveryLevel([] {
        const std::vector<Pair> pairs = pairsOf(VEK_SPCHBR_23850, 128);
        std::mt19937 random(1);
        std::vector<int> seen(128);
        for (int round = 0; round < 300; ++round) {
            Quant q(random);
            const auto mean = static_cast<int16_t>(256 * (20 + 4 * (round % 12)));
            ASSERT_EQ(vekStsNoErr, q.runExtended(mean));
            const double predicted = Quant::predicted(mean / 256.0);
            const Pair& chosen = pairs[static_cast<size_t>(q.index)];
            EXPECT_LE(q.error(chosen.pitch, chosen.correction * predicted), 1.002 * least(q, pairs, 0, 127, predicted));
            EXPECT_NEAR(chosen.pitch, q.pitch / 16384.0, 1e-9);
            EXPECT_NEAR(chosen.correction, q.correction / 2048.0, 1e-3 + 1e-3 * chosen.correction);
            EXPECT_NEAR(q.correction / 2048.0 * predicted, q.gain / 65536.0, 2e-3 * predicted * chosen.correction);
            seen[static_cast<size_t>(q.index)] = 1;
        }
        EXPECT_GT(std::count(seen.begin(), seen.end(), 1), 20);
    });
}

TEST(VekWideGainQuant, NoPairOfItsRangeIsBetter) {
    atEveryLevel([] {
        for (const VekSpchBitRate mode : {VEK_SPCHBR_6600, VEK_SPCHBR_12650}) {
            const bool six = mode == VEK_SPCHBR_6600;
            const std::vector<Pair> pairs = pairsOf(mode, six ? 64 : 128);
            std::mt19937 random(2);
            for (int round = 0; round < 200; ++round) {
                Quant q(random);
                const int clip = round % 2;
                q.pitch = static_cast<int16_t>(round * 80);
                int first = 0;
                if (!six) {
                    for (int i = 32; i < (clip == 1 ? 69 : 96); ++i) {
                        first += q.pitch / 16384.0 > pairs[static_cast<size_t>(i)].pitch ? 1 : 0;
                    }
                }
                const int last = six && clip == 1 ? 47 : first + 63;
                const double level = 30 + (0.5 * -3000 + 0.4 * 1000 + 0.3 * 500 + 0.2 * -2000) / 1024;
                ASSERT_EQ(vekStsNoErr, q.run(clip, mode));
                const double predicted = Quant::predicted(level);
                ASSERT_GE(q.index, first);
                ASSERT_LE(q.index, last);
                const Pair& chosen = pairs[static_cast<size_t>(q.index)];
                EXPECT_LE(q.error(chosen.pitch, chosen.correction * predicted),
                          1.002 * least(q, pairs, first, last, predicted));
                EXPECT_NEAR(chosen.correction * predicted, q.gain / 65536.0, 3e-3 * predicted * chosen.correction);
                EXPECT_NEAR(20 * std::log10(chosen.correction) * 1024, q.past[0], 12.0);
                EXPECT_EQ(-3000, q.past[1]);
                EXPECT_EQ(1000, q.past[2]);
                EXPECT_EQ(500, q.past[3]);
            }
        }
    });
}

TEST(VekWideGainQuant, TheClippedSearchHasNoPitchGainAboveOne) {
    std::mt19937 random(3);
    for (const VekSpchBitRate mode : {VEK_SPCHBR_8850, VEK_SPCHBR_12650}) {
        for (int clip = 0; clip < 2; ++clip) {
            Quant q(random);
            for (size_t i = 0; i < 64; ++i) {
                q.target[i] = static_cast<int16_t>(q.adaptive[i] * 5 / 4);
            }
            split(dot(q.target, q.adaptive), q.corr + 2);
            q.pitch = 19000;
            ASSERT_EQ(vekStsNoErr, q.run(clip, mode));
            if (clip == 1) {
                EXPECT_LT(q.pitch, 16384);
            } else {
                EXPECT_GT(q.pitch, 16384);
            }
        }
    }
}

TEST(VekWideGainQuant, LevelsAgree) {
    std::vector<std::vector<int32_t>> seen;
    atEveryLevel([&seen] {
        std::mt19937 random(5);
        std::vector<int32_t> all;
        for (int round = 0; round < 200; ++round) {
            Quant q(random);
            ASSERT_EQ(vekStsNoErr, q.run(round % 2, round % 3 == 0 ? VEK_SPCHBR_6600 : VEK_SPCHBR_12650));
            all.insert(all.end(), {q.index, q.pitch, q.gain, q.past[0]});
            ASSERT_EQ(vekStsNoErr, q.runExtended(static_cast<int16_t>(40 * round)));
            all.insert(all.end(), {q.index, q.pitch, q.gain, q.correction});
        }
        seen.push_back(all);
    });
    ASSERT_GE(seen.size(), 2U);
    for (const std::vector<int32_t>& one : seen) {
        EXPECT_EQ(seen.front(), one);
    }
}

// A coder shifts a loud target down, beside a fixed vector that keeps its format.
TEST(VekWideGainQuant, TargetsMayBeScaledDown) {
    for (const VekSpchBitRate mode : {VEK_SPCHBR_6600, VEK_SPCHBR_12650}) {
        for (int down = 1; down <= 3; ++down) {
            std::mt19937 random(5);
            for (int round = 0; round < 40; ++round) {
                Quant q(random);
                Quant other = q;
                for (int16_t& v : other.filtered) {
                    v = static_cast<int16_t>(v * (1 << down));
                }
                ASSERT_EQ(vekStsNoErr, q.run(0, mode));
                ASSERT_EQ(vekStsNoErr, other.run(0, mode, -down));
                EXPECT_EQ(q.index, other.index);
                EXPECT_EQ(q.gain, other.gain);
                ASSERT_EQ(vekStsNoErr, q.runExtended(7000));
                ASSERT_EQ(vekStsNoErr, other.runExtended(7000, -down));
                EXPECT_EQ(q.index, other.index);
                EXPECT_EQ(q.gain, other.gain);
            }
        }
    }
}

TEST(VekWideGainQuant, RefusesWhatItCannotDo) {
    std::mt19937 random(4);
    Quant q(random);
    EXPECT_EQ(vekStsSizeErr, q.run(0, VEK_SPCHBR_6600, 0, 0));
    EXPECT_EQ(vekStsSizeErr, q.run(0, VEK_SPCHBR_6600, 0, 65));
    EXPECT_EQ(vekStsRangeErr, q.run(0, VEK_SPCHBR_6600, -16));
    EXPECT_EQ(vekStsRangeErr, q.run(0, VEK_SPCHBR_6600, 16));
    EXPECT_EQ(vekStsRangeErr, q.run(2, VEK_SPCHBR_6600));
    EXPECT_EQ(vekStsBitRateErr, q.run(0, VEK_SPCHBR_12200));
    EXPECT_EQ(vekStsSizeErr, q.runExtended(7000, 0, 0));
    EXPECT_EQ(vekStsSizeErr, q.runExtended(7000, 0, 65));
    EXPECT_EQ(vekStsRangeErr, q.runExtended(7000, 16));
    EXPECT_EQ(vekStsRangeErr, q.runExtended(7000, -16));
    EXPECT_EQ(vekStsNullPtrErr,
              veksGainQuant_AMRWB_16s(q.target.data(), q.adaptive.data(), 0, q.code.data(), q.filtered.data(), q.corr,
                                      q.past, &q.pitch, nullptr, 0, &q.index, 64, VEK_SPCHBR_6600));
    EXPECT_EQ(vekStsNullPtrErr,
              veksGainQuant_AMRWBE_16s(q.target.data(), q.adaptive.data(), 0, q.code.data(), q.filtered.data(), 64,
                                       nullptr, 7000, &q.pitch, &q.correction, &q.gain, &q.index));
    EXPECT_EQ(9000, q.pitch);
    EXPECT_EQ(-1, q.gain);
    EXPECT_EQ(-1, q.index);
    EXPECT_EQ(-1, q.correction);
    EXPECT_EQ(-3000, q.past[0]);
}

struct Decoder {
    int16_t past[4] = {4096, 2048, 1024, 1024};
    int16_t pitch = 16000;
    int16_t former = 80;
    int16_t pastCode = 400;
    int32_t gain = -1;
    VekStatus run(int index, int bfi, int prevBfi, int energy = 4096, VekSpchBitRate mode = VEK_SPCHBR_12650) {
        return veksDecodeGain_AMRWB_16s(index, static_cast<int16_t>(energy), &pitch, &gain, bfi, prevBfi, past, &former,
                                        &pastCode, mode);
    }
};

TEST(VekWideGainDecode, ALostFrameFadesTheEnergiesByThreeDecibels) {
    Decoder d;
    ASSERT_EQ(vekStsNoErr, d.run(0, 1, 0));
    EXPECT_EQ(2048 - 3072, d.past[0]);
    EXPECT_EQ(4096, d.past[1]);
    EXPECT_EQ(2048, d.past[2]);
    EXPECT_EQ(1024, d.past[3]);
    EXPECT_EQ(15565, d.pitch);
    EXPECT_EQ(400 * 4096 * 2, d.gain);
    EXPECT_EQ(80, d.former);
    EXPECT_EQ(400, d.pastCode);
    for (int16_t& e : d.past) {
        e = -14000;
    }
    d.pitch = 12000;
    ASSERT_EQ(vekStsNoErr, d.run(0, 1, 0));
    EXPECT_EQ(-14336, d.past[0]);
    EXPECT_EQ(12000, d.pitch);
}

TEST(VekWideGainDecode, TheGainBehindALostFrameIsBounded) {
    Decoder d;
    d.former = 8 * 110;
    ASSERT_EQ(vekStsNoErr, d.run(127, 0, 0));
    const int32_t free = d.gain;
    EXPECT_GT(free, 65536 * 140);
    Decoder bounded;
    bounded.former = 8 * 110;
    ASSERT_EQ(vekStsNoErr, bounded.run(127, 0, 1));
    EXPECT_EQ(8 * 110 * 5120 * 2, bounded.gain);
    EXPECT_EQ(1100, bounded.former);
    EXPECT_EQ(1100, bounded.pastCode);
}

TEST(VekWideGainDecode, RefusesWhatItCannotDo) {
    Decoder d;
    EXPECT_EQ(vekStsRangeErr, d.run(-1, 0, 0));
    EXPECT_EQ(vekStsRangeErr, d.run(128, 0, 0));
    EXPECT_EQ(vekStsRangeErr, d.run(64, 0, 0, 4096, VEK_SPCHBR_8850));
    EXPECT_EQ(vekStsRangeErr, d.run(0, 2, 0));
    EXPECT_EQ(vekStsRangeErr, d.run(0, 0, -1));
    EXPECT_EQ(vekStsRangeErr, d.run(0, 0, 0, -1));
    EXPECT_EQ(vekStsBitRateErr, d.run(0, 0, 0, 4096, VEK_SPCHBR_12200));
    EXPECT_EQ(vekStsNullPtrErr, veksDecodeGain_AMRWB_16s(0, 4096, &d.pitch, nullptr, 0, 0, d.past, &d.former,
                                                         &d.pastCode, VEK_SPCHBR_6600));
    EXPECT_EQ(-1, d.gain);
    EXPECT_EQ(16000, d.pitch);
    EXPECT_EQ(4096, d.past[0]);
}

} // namespace
