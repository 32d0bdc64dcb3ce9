// The two fixed codebooks of G.729.1 against plain searches, and their codewords read back.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>

namespace {

using lpref::convolved;
using lpref::dot;
using lpref::response;
using Reals = std::vector<double>;

// The pulses of a codeword, ones.
Reals decode(const Samples& index) {
    Reals code(40);
    for (int n = 0; n < 4; ++n) {
        const int field = index[0] >> (3 * n);
        const int at = n < 3 ? 5 * (field & 7) + n : 5 * (field >> 1 & 7) + 3 + (field & 1);
        code[static_cast<size_t>(at)] = index[1] >> n & 1 ? 1 : -1;
    }
    return code;
}

// Squared correlation over energy of all codes with the signs of the correlation, the best of them.
double best(const Reals& target, const Reals& h) {
    std::vector<Reals> shifted(40, Reals(40));
    Reals d(40);
    for (size_t i = 0; i < 40; ++i) {
        for (size_t n = i; n < 40; ++n) {
            shifted[i][n] = h[n - i];
        }
        d[i] = dot(target, shifted[i]);
    }
    std::vector<Reals> phi(40, Reals(40));
    for (size_t i = 0; i < 40; ++i) {
        for (size_t j = 0; j < 40; ++j) {
            phi[i][j] = dot(shifted[i], shifted[j]) * ((d[i] < 0) != (d[j] < 0) ? -1 : 1);
        }
    }
    double merit = 0;
    for (size_t i = 0; i < 40; i += 5) {
        for (size_t j = 1; j < 40; j += 5) {
            for (size_t k = 2; k < 40; k += 5) {
                for (size_t l = 3; l < 40; l += l % 5 == 3 ? 1 : 4) {
                    const double c = std::abs(d[i]) + std::abs(d[j]) + std::abs(d[k]) + std::abs(d[l]);
                    const double e = phi[i][i] + phi[j][j] + phi[k][k] + phi[l][l] +
                                     2 * (phi[i][j] + phi[i][k] + phi[i][l] + phi[j][k] + phi[j][l] + phi[k][l]);
                    merit = std::max(merit, c * c / e);
                }
            }
        }
    }
    return merit;
}

double merit(const Reals& target, const Reals& y) {
    const double c = dot(target, y);
    return c * c / dot(y, y);
}

struct Problem {
    Samples target, residual, h;
    Samples code = Samples(40, 77), filtered = Samples(40, 77), index = Samples(2, 77);

    explicit Problem(std::mt19937& random, int level = 3000)
        : target(noise(random, 40, -level, level)), residual(noise(random, 40, -level / 2, level / 2)),
          h(response(random)) {}
};

TEST(VekG7291FirstPulses, ComeNearTheBestOfAllAndTheCodewordTellsThem) {
    atEveryLevel([] {
        std::mt19937 random(41);
        double ratio = 0;
        constexpr int rounds = 60;
        for (int round = 0; round < rounds; ++round) {
            Problem p(random, 200 << (round % 7));
            Samples vector = noise(random, 40, -2000, 2000);
            const Samples before = vector;
            const Samples h = p.h;
            const int16_t gain = noise(random, 1, 0, 19661)[0];
            const int16_t lag = noise(random, 1, 20, 143)[0];
            ASSERT_EQ(vekStsNoErr, veksAlgebraicCodebookSearchL1_G7291_16s(
                                       p.target.data(), p.residual.data(), vector.data(), p.h.data(), lag, gain,
                                       p.code.data(), p.filtered.data(), p.index.data()));
            const double sharpness = std::min(std::max(gain / 16384.0, 0.2), 0.7945);
            Reals target(40);
            Reals sharp(h.begin(), h.end());
            Reals code = decode(p.index);
            const Reals pulses = code;
            for (size_t i = 0; i < 40; ++i) {
                ASSERT_EQ((before[i] * gain) >> 14, vector[i]);
                target[i] = static_cast<double>(lpref::clip(p.target[i] - vector[i], 16));
                if (i >= static_cast<size_t>(lag)) {
                    sharp[i] += sharpness * sharp[i - static_cast<size_t>(lag)];
                    code[i] += sharpness * code[i - static_cast<size_t>(lag)];
                }
                ASSERT_NEAR(sharp[i], p.h[i], 3);
                ASSERT_NEAR(8192 * code[i], p.code[i], 4);
            }
            const Reals exactH(p.h.begin(), p.h.end());
            const Reals y = convolved(pulses, exactH);
            for (size_t i = 0; i < 40; ++i) {
                ASSERT_EQ(y[i], p.filtered[i]);
            }
            ratio += merit(target, y) / best(target, exactH) / rounds;
        }
        EXPECT_GE(ratio, 0.98);
    });
}

TEST(VekG7291SecondPulses, ComeNearTheBestOfAllBehindTheTiltOfTheirVoicing) {
    atEveryLevel([] {
        std::mt19937 random(42);
        double ratio = 0;
        constexpr int rounds = 60;
        for (int round = 0; round < rounds; ++round) {
            Problem p(random, 200 << (round % 7));
            const auto voice = static_cast<int16_t>(std::vector<int>{-32768, -9000, 0, 21000, 32767}[round % 5]);
            const double tilt = (1 + voice / 32768.0) / 4;
            ASSERT_EQ(vekStsNoErr,
                      veksAlgebraicCodebookSearchL2_G7291_16s(p.target.data(), p.residual.data(), p.h.data(), voice,
                                                              p.code.data(), p.filtered.data(), p.index.data()));
            Reals h(p.h.begin(), p.h.end());
            Reals code = decode(p.index);
            const Reals pulses = code;
            for (size_t i = 39; i > 0; --i) {
                h[i] -= tilt * h[i - 1];
                code[i] -= tilt * code[i - 1];
            }
            const Reals y = convolved(pulses, h);
            for (size_t i = 0; i < 40; ++i) {
                ASSERT_NEAR(8192 * code[i], p.code[i], 2);
                ASSERT_NEAR(y[i], p.filtered[i], 5);
            }
            const Reals target(p.target.begin(), p.target.end());
            ratio += merit(target, y) / best(target, h) / rounds;
        }
        EXPECT_GE(ratio, 0.98);
    });
}

TEST(VekG7291Pulses, NoExchangeOfOnePulseIsBetter) {
    std::mt19937 random(43);
    int worse = 0;
    for (int round = 0; round < 500; ++round) {
        Problem p(random);
        ASSERT_EQ(vekStsNoErr,
                  veksAlgebraicCodebookSearchL2_G7291_16s(p.target.data(), p.residual.data(), p.h.data(), -32768,
                                                          p.code.data(), p.filtered.data(), p.index.data()));
        const Reals target(p.target.begin(), p.target.end());
        const Reals h(p.h.begin(), p.h.end());
        const Reals pulses = decode(p.index);
        const double found = merit(target, convolved(pulses, h));
        for (size_t at = 0; at < 40; ++at) {
            for (size_t to = 0; to < 40; ++to) {
                const size_t track = at % 5;
                const bool sameTrack = to % 5 == track || (track >= 3 && to % 5 >= 3);
                if (pulses[at] != 0 && pulses[to] == 0 && sameTrack) {
                    Reals other = pulses;
                    Reals unit(40);
                    unit[to] = 1;
                    other[to] = dot(target, convolved(unit, h)) < 0 ? -1 : 1;
                    other[at] = 0;
                    worse += merit(target, convolved(other, h)) > 1.002 * found ? 1 : 0;
                }
            }
        }
    }
    EXPECT_EQ(0, worse);
}

TEST(VekG7291Pulses, ThePeaksOfTheResidualAreTriedToo) {
    std::mt19937 random(44);
    int changed = 0;
    for (int round = 0; round < 400; ++round) {
        Problem p(random);
        Problem other = p;
        other.residual = noise(random, 40, -3000, 3000);
        for (Problem* each : {&p, &other}) {
            ASSERT_EQ(vekStsNoErr, veksAlgebraicCodebookSearchL2_G7291_16s(each->target.data(), each->residual.data(),
                                                                           each->h.data(), 0, each->code.data(),
                                                                           each->filtered.data(), each->index.data()));
        }
        changed += p.index != other.index ? 1 : 0;
    }
    EXPECT_GE(changed, 4);
    EXPECT_LE(changed, 200); // the target decides
}

TEST(VekG7291Pulses, SilenceAndExtremesGiveACodeword) {
    for (const int value : {0, 1, 32767, -32768}) {
        Samples target(40, static_cast<int16_t>(value));
        Samples h(40, static_cast<int16_t>(value));
        Samples vector = target;
        const Samples residual = target;
        Samples code(40), filtered(40), index(2, 77);
        ASSERT_EQ(vekStsNoErr,
                  veksAlgebraicCodebookSearchL1_G7291_16s(target.data(), residual.data(), vector.data(), h.data(), 20,
                                                          19661, code.data(), filtered.data(), index.data()));
        EXPECT_GE(index[0], 0);
        EXPECT_LT(index[0], 8192);
        EXPECT_GE(index[1], 0);
        EXPECT_LT(index[1], 16);
        ASSERT_EQ(vekStsNoErr,
                  veksAlgebraicCodebookSearchL2_G7291_16s(target.data(), residual.data(), target.data(), 32767,
                                                          code.data(), filtered.data(), index.data()));
        const Reals pulses = decode(index);
        EXPECT_EQ(4, dot(pulses, pulses));
    }
}

TEST(VekG7291Pulses, LagsAndGainsOutOfRangeAreRefused) {
    std::mt19937 random(45);
    Problem p(random);
    Samples vector(40, 5);
    const Samples h = p.h;
    for (const auto& [lag, gain] : {std::pair{19, 100}, {144, 100}, {50, -1}, {50, 19662}}) {
        EXPECT_EQ(vekStsRangeErr,
                  veksAlgebraicCodebookSearchL1_G7291_16s(p.target.data(), p.residual.data(), vector.data(), p.h.data(),
                                                          static_cast<int16_t>(lag), static_cast<int16_t>(gain),
                                                          p.code.data(), p.filtered.data(), p.index.data()));
    }
    EXPECT_EQ(h, p.h);
    EXPECT_EQ(Samples(40, 5), vector);
    EXPECT_EQ(Samples(40, 77), p.code);
    EXPECT_EQ(Samples(2, 77), p.index);
}

} // namespace
