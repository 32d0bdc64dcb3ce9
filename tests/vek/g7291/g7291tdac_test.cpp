// Transform coding of G.729.1: the lapped transform in double precision, the codebooks of leaders read point by point.
#include "checksum.h"
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>
#include <numeric>

namespace {

using namespace lpref;
using Reals = std::vector<double>;

constexpr double pi = 3.14159265358979323846;

double window(int n) {
    return std::sin((n + 0.5) * pi / 320);
}

double kernel(int n, int k) {
    static const Reals values = [] {
        Reals all;
        for (int i = 0; i < 320 * 160; ++i) {
            const int row = i / 160;
            all.push_back(std::sqrt(2.0 / 160) * window(row) * std::cos((row + 80.5) * (i % 160 + 0.5) * pi / 160));
        }
        return all;
    }();
    return values[static_cast<size_t>(n) * 160 + static_cast<size_t>(k)];
}

Reals transformed(const Samples& before, const Samples& now) {
    Reals x(160);
    for (int k = 0; k < 160; ++k) {
        for (int n = 0; n < 320; ++n) {
            const auto i = static_cast<size_t>(n % 160);
            x[static_cast<size_t>(k)] += kernel(n, k) * (n < 160 ? before[i] : now[i]);
        }
    }
    return x;
}

void expectForwardDefinition(const Samples& before, const Samples& now, int headroom) {
    Samples history = before;
    Samples got(160);
    int norm = -99;
    ASSERT_EQ(vekStsNoErr, veksMDCTFwd_G7291_16s(now.data(), history.data(), &norm, got.data(), headroom));
    EXPECT_EQ(now, history);
    const Reals want = transformed(before, now);
    int largest = 0;
    for (size_t k = 0; k < 160; ++k) {
        ASSERT_NEAR(std::ldexp(want[k], norm), got[k], 0.52) << k << " norm " << norm;
        largest = std::max(largest, std::abs(got[k]));
    }
    EXPECT_LE(largest, 32768 >> headroom);
    if (norm < 11) {
        EXPECT_GE(largest, (32768 >> headroom) / 2 - 1) << "headroom " << headroom;
    }
}

TEST(VekG7291Mdct, ForwardIsTheDefinitionAndLeavesTheHeadroom) {
    std::mt19937 random(61);
    for (const int level : {1, 2, 8, 30, 500, 2000, 32767}) {
        for (const int headroom : {0, 2, 8}) {
            SCOPED_TRACE(level);
            expectForwardDefinition(noise(random, 160, -level, level), noise(random, 160, -level, level), headroom);
            // Few samples, under small windows too.
            for (const size_t place : {0, 1, 40, 159}) {
                Samples before(160);
                Samples now(160);
                before[place] = static_cast<int16_t>(level);
                now[(place + 30) % 160] = static_cast<int16_t>(-level / 2);
                expectForwardDefinition(before, now, headroom);
                expectForwardDefinition(before, Samples(160), headroom);
            }
        }
    }
}

// The definition allows for the last bit; these are all bits, of frames of each loudness.
TEST(VekG7291Mdct, ForwardHasTheBitsThatItHad) {
    atEveryLevel([] {
        std::mt19937 random(160);
        Samples history(160);
        CheckSum sum;
        for (int frame = 0; frame < 2000; ++frame) {
            const Samples now = noise(random, 160, -(32768 >> frame % 16), 32767 >> frame % 16);
            Samples got(160);
            int norm = 0;
            ASSERT_EQ(vekStsNoErr, veksMDCTFwd_G7291_16s(now.data(), history.data(), &norm, got.data(), frame % 9));
            sum.add(norm);
            sum.add(got.data(), got.size() * sizeof got[0]);
        }
        EXPECT_EQ(0x94e0f020b7a3d449U, sum.value());
    });
}

TEST(VekG7291Mdct, InverseIsTheDefinition) {
    std::mt19937 random(62);
    for (const int norm : {-4, -2, 0, 1, 2, 6, 11}) {
        for (const int level : {30, 2000, 32767}) {
            const Samples x = noise(random, 160, -level, level);
            const Samples before = noise(random, 160, -500, 500);
            Samples overlap = before;
            Samples y(160);
            ASSERT_EQ(vekStsNoErr, veksMDCTInv_G7291_16s(x.data(), overlap.data(), y.data(), norm));
            for (int n = 0; n < 320; ++n) {
                double want = 0;
                for (int k = 0; k < 160; ++k) {
                    want += kernel(n, k) * std::ldexp(x[static_cast<size_t>(k)], -norm);
                }
                const auto i = static_cast<size_t>(n % 160);
                want = std::clamp(want + (n < 160 ? before[i] : 0), -32768.0, 32767.0);
                ASSERT_NEAR(want, n < 160 ? y[i] : overlap[i], 0.505 + std::ldexp(0.008, -norm)) << n << " " << norm;
            }
        }
    }
}

TEST(VekG7291Mdct, PairGivesTheSignalBack) {
    atEveryLevel([] {
        std::mt19937 random(63);
        for (const int level : {10, 1000, 12000, 25000}) { // beyond, the overlap saturates
            Samples history(160);
            Samples overlap(160);
            Samples last(160);
            for (int frame = 0; frame < 8; ++frame) {
                const Samples x = noise(random, 160, -level, level);
                Samples coefficients(160);
                Samples y(160);
                int norm = 0;
                ASSERT_EQ(vekStsNoErr, veksMDCTFwd_G7291_16s(x.data(), history.data(), &norm, coefficients.data(), 0));
                ASSERT_EQ(vekStsNoErr, veksMDCTInv_G7291_16s(coefficients.data(), overlap.data(), y.data(), norm));
                for (size_t n = 0; n < 160; ++n) {
                    ASSERT_NEAR(last[n], y[n], 1.2 + level * 4e-4) << frame << " " << n;
                }
                last = x;
            }
        }
    });
}

TEST(VekG7291Mdct, SilenceExtremesAndRanges) {
    atEveryLevel([] {
        const Samples none(160);
        Samples history(160);
        Samples x(160, 7);
        int norm = 5;
        ASSERT_EQ(vekStsNoErr, veksMDCTFwd_G7291_16s(none.data(), history.data(), &norm, x.data(), 2));
        EXPECT_EQ(0, norm);
        EXPECT_EQ(none, x);
        // The largest coefficient that there is.
        Samples loud(160);
        for (int k : {0, 77, 159}) {
            for (int n = 0; n < 160; ++n) {
                history[static_cast<size_t>(n)] = kernel(n, k) > 0 ? 32767 : -32768;
                loud[static_cast<size_t>(n)] = kernel(n + 160, k) > 0 ? 32767 : -32768;
            }
            const Reals want = transformed(history, loud);
            ASSERT_EQ(vekStsNoErr, veksMDCTFwd_G7291_16s(loud.data(), history.data(), &norm, x.data(), 0));
            EXPECT_NEAR(std::ldexp(want[static_cast<size_t>(k)], norm), x[static_cast<size_t>(k)], 3);
        }
        Samples overlap(160, 32767);
        Samples y(160);
        Samples full(160);
        full[0] = 32767;
        ASSERT_EQ(vekStsNoErr, veksMDCTInv_G7291_16s(full.data(), overlap.data(), y.data(), -15));
        for (const int16_t v : overlap) {
            EXPECT_TRUE(v == 32767 || v == -32768);
        }
    });
    Samples x(160, 7);
    Samples y(160, 8);
    int norm = 3;
    EXPECT_EQ(vekStsRangeErr, veksMDCTFwd_G7291_16s(x.data(), y.data(), &norm, y.data(), -1));
    EXPECT_EQ(vekStsRangeErr, veksMDCTFwd_G7291_16s(x.data(), y.data(), &norm, y.data(), 9));
    EXPECT_EQ(vekStsScaleRangeErr, veksMDCTInv_G7291_16s(x.data(), y.data(), y.data(), 16));
    EXPECT_EQ(vekStsScaleRangeErr, veksMDCTInv_G7291_16s(x.data(), y.data(), y.data(), -16));
    EXPECT_EQ(Samples(160, 8), y);
    EXPECT_EQ(3, norm);
}

TEST(VekG7291PostProcess, WeighsByTheMeanAroundAndKeepsTheSumOfMagnitudes) {
    std::mt19937 random(64);
    for (int rate = 0; rate < 12; ++rate) {
        Samples x = noise(random, 160, -1500, 1500);
        for (size_t k = 0; k < 160; k += 20) {
            x[k] = static_cast<int16_t>(4000 * (k % 40 == 0 ? 1 : -1));
        }
        const double a = (12 - rate) / 24.0;
        Reals want(160);
        double before = 0;
        double after = 0;
        for (int k = 0; k < 160; ++k) {
            double sum = 0;
            int count = 0;
            for (int i = std::max(k - 7, 0); i <= std::min(k + 7, 159); ++i, ++count) {
                sum += std::abs(x[static_cast<size_t>(i)]);
            }
            const double y = x[static_cast<size_t>(k)];
            want[static_cast<size_t>(k)] = y * (1 + a * (std::min(std::abs(y) * count / sum, 2.0) - 1));
            before += std::abs(y);
            after += std::abs(want[static_cast<size_t>(k)]);
        }
        Samples got = x;
        ASSERT_EQ(vekStsNoErr, veksMDCTPostProcess_G7291_16s(got.data(), rate));
        double kept = 0;
        for (size_t k = 0; k < 160; ++k) {
            ASSERT_NEAR(want[k] * before / after, got[k], 1.5) << rate << " " << k;
            kept += std::abs(got[k]);
        }
        EXPECT_NEAR(before, kept, 90);
    }
}

TEST(VekG7291PostProcess, SilenceAndExtremesAndRates) {
    Samples x(160);
    ASSERT_EQ(vekStsNoErr, veksMDCTPostProcess_G7291_16s(x.data(), 0));
    EXPECT_EQ(Samples(160), x);
    x = Samples(160, -32768);
    ASSERT_EQ(vekStsNoErr, veksMDCTPostProcess_G7291_16s(x.data(), 0));
    EXPECT_EQ(Samples(160, -32768), x); // flat: nothing to weigh
    Samples peak(160);
    peak[50] = 32767;
    x = peak;
    ASSERT_EQ(vekStsNoErr, veksMDCTPostProcess_G7291_16s(x.data(), 0));
    EXPECT_NEAR(32767, x[50], 2);
    x[50] = 0;
    EXPECT_EQ(Samples(160), x);
    EXPECT_EQ(vekStsRangeErr, veksMDCTPostProcess_G7291_16s(x.data(), -1));
    EXPECT_EQ(vekStsRangeErr, veksMDCTPostProcess_G7291_16s(x.data(), 12));
}

// One band with bits, the others without; the words of a number, and the band of words.
struct Band {
    int band;
    Samples bits = Samples(18);

    Band(int at, int b) : band(at) { bits[static_cast<size_t>(at)] = static_cast<int16_t>(b); }
    size_t size() const { return band == 17 ? 8 : 16; }
    int width() const { return bits[static_cast<size_t>(band)]; }
    Samples read(uint32_t number, int envelope) const {
        uint32_t words[11] = {width() == 0 ? 0 : number << (32 - width())};
        Samples y(320, 77);
        const Samples envelopes(18, static_cast<int16_t>(envelope));
        EXPECT_EQ(vekStsNoErr, veksMDCTQuantInv_G7291_32u16s(words, bits.data(), envelopes.data(), y.data()));
        const auto from = y.begin() + 16 * band;
        Samples own(from, from + static_cast<int>(size()));
        EXPECT_EQ(0, std::accumulate(y.begin(), y.end(), 0) - std::accumulate(own.begin(), own.end(), 0));
        return own;
    }
    uint32_t write(const Samples& own) const {
        Samples x(320);
        std::copy(own.begin(), own.end(), x.begin() + 16 * band);
        uint32_t words[11];
        std::fill(words, words + 11, 0xFFFFFFFFU);
        EXPECT_EQ(vekStsNoErr, veksMDCTQuantFwd_G7291_16s32u(x.data(), bits.data(), words));
        EXPECT_TRUE(std::all_of(words + 1, words + 11, [](uint32_t w) { return w == 0; }));
        return width() == 0 ? words[0] : words[0] >> (32 - width());
    }
};

TEST(VekG7291Spherical, EachPointHasItsNumberAndTheLevelOfTheEnvelope) {
    for (const int band : {0, 9, 17}) {
        for (int bits = 0; bits <= 16; ++bits) {
            const Band b(band, bits);
            int points = 0;
            bool after = false;
            for (uint32_t number = 0; number<1U << bits; number += bits> 12 ? 37 : 1) {
                const Samples y = b.read(number, 20);
                if (energy(y) == 0) {
                    after = true; // of the last leader
                    continue;
                }
                ASSERT_FALSE(after);
                ++points;
                ASSERT_NEAR(1024, std::sqrt(energy(y) / static_cast<double>(b.size())), 1);
                ASSERT_EQ(number, b.write(y)) << band << " " << bits;
            }
            EXPECT_EQ(bits >= (band == 17 ? 4 : 5), points > 0);
        }
    }
}

TEST(VekG7291Spherical, TakesThePointNearestInDirection) {
    std::mt19937 random(65);
    for (const int band : {3, 17}) {
        for (const int bits : {5, 8, 10, 12}) {
            const Band b(band, bits);
            std::vector<Samples> points;
            for (uint32_t number = 0; number < 1U << bits; ++number) {
                points.push_back(b.read(number, 20));
            }
            const auto likeness = [](const Samples& x, const Samples& y) {
                double product = 0;
                for (size_t i = 0; i < x.size(); ++i) {
                    product += double{1} * x[i] * y[i];
                }
                return product / std::sqrt(energy(y) + 1e-9);
            };
            for (int round = 0; round < 40; ++round) {
                const int level = round == 0 ? 32767 : 10 << (round % 8);
                const Samples x = noise(random, static_cast<int>(b.size()), -level, level);
                double best = 0;
                for (const Samples& y : points) {
                    best = std::max(best, likeness(x, y));
                }
                ASSERT_GE(likeness(x, points[b.write(x)]), best * 0.9995) << band << " " << bits;
            }
        }
    }
}

TEST(VekG7291Spherical, FirstLeadersOfTheBooksAreTheseLiterally) {
    // A single pulse in either sign, the first place first.
    const Band five(2, 5);
    EXPECT_EQ(4096, five.read(0, 20)[0]);
    EXPECT_EQ(-4096, five.read(1, 20)[0]);
    EXPECT_EQ(4096, five.read(2, 20)[1]);
    EXPECT_EQ(-4096, five.read(31, 20)[15]);
    // Then two pulses: 480 points of them fill the codebook of 9 bits.
    const Band nine(2, 9);
    const Samples pair = nine.read(32 + 1, 20);
    EXPECT_NEAR(2896, pair[0], 1);
    EXPECT_NEAR(-2896, pair[1], 1);
    EXPECT_NEAR(16 * 1024.0 * 1024, energy(nine.read(511, 20)), 20000);
    // 16 and 112 points of 8 coefficients; what 7 bits leave is none.
    const Band seven(17, 7);
    EXPECT_GT(energy(seven.read(127, 20)), 0);
    EXPECT_EQ(energy(Band(17, 6).read(16, 20)), 0);
}

TEST(VekG7291Spherical, BandsFollowEachOtherInTheWords) {
    std::mt19937 random(66);
    const Samples x = noise(random, 320, -512, 512);
    const Samples bits = noise(random, 18, 5, 16);
    uint32_t words[11];
    ASSERT_EQ(vekStsNoErr, veksMDCTQuantFwd_G7291_16s32u(x.data(), bits.data(), words));
    std::vector<int> stream;
    for (int band = 0; band < 18; ++band) {
        const Band b(band, bits[static_cast<size_t>(band)]);
        const auto from = x.begin() + 16 * band;
        const uint32_t number = b.write(Samples(from, from + static_cast<int>(b.size())));
        for (int k = b.width() - 1; k >= 0; --k) {
            stream.push_back(static_cast<int>(number >> k & 1));
        }
    }
    stream.resize(352);
    for (size_t i = 0; i < 352; ++i) {
        ASSERT_EQ(stream[i], static_cast<int>(words[i / 32] >> (31 - i % 32) & 1)) << i;
    }
    Samples envelope(18);
    for (int band = 0; band < 18; ++band) {
        envelope[static_cast<size_t>(band)] = static_cast<int16_t>(band - 2);
    }
    Samples y(320, 77);
    ASSERT_EQ(vekStsNoErr, veksMDCTQuantInv_G7291_32u16s(words, bits.data(), envelope.data(), y.data()));
    for (int band = 0; band < 18; ++band) {
        const int size = band == 17 ? 8 : 16;
        const Samples own(y.begin() + 16 * band, y.begin() + 16 * band + size);
        EXPECT_NEAR(std::exp2((band - 2) / 2.0), std::sqrt(energy(own) / size), 0.6) << band;
    }
    EXPECT_EQ(Samples(40), Samples(y.begin() + 280, y.end()));
}

TEST(VekG7291Spherical, EnvelopesBeyondTheRangeCountAsItsEndsAndBitsBeyondAreRefused) {
    const Band b(4, 12);
    EXPECT_EQ(b.read(100, 20), b.read(100, 21));
    EXPECT_EQ(b.read(100, 20), b.read(100, 32767));
    EXPECT_EQ(0, energy(b.read(100, -32768)));
    EXPECT_EQ(3, Band(4, 5).read(0, -1)[0]); // 4 * 2^-0.5
    EXPECT_EQ(2, Band(4, 5).read(0, -2)[0]);
    Samples bits(18, 5);
    Samples y(320, 9);
    const Samples x(320, 9);
    const Samples envelope(18);
    uint32_t words[11] = {5};
    for (const int16_t bad : {-1, 17}) {
        bits[17] = bad;
        EXPECT_EQ(vekStsRangeErr, veksMDCTQuantFwd_G7291_16s32u(x.data(), bits.data(), words));
        EXPECT_EQ(vekStsRangeErr, veksMDCTQuantInv_G7291_32u16s(words, bits.data(), envelope.data(), y.data()));
    }
    EXPECT_EQ(5U, words[0]);
    EXPECT_EQ(x, y);
    // Silence and full scale have a number too.
    EXPECT_LT(Band(0, 5).write(Samples(16)), 32U);
    EXPECT_LT(Band(0, 16).write(Samples(16, -32768)), 65536U);
}

} // namespace
