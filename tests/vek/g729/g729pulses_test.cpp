// Fixed codebook searches of G.729 and its annexes against plain ones, and their codewords read back.
#include "pulses_reference.h"

namespace {

using namespace pulseref;

// The best of all four pulses with the signs of the correlations.
double best(const Problem& p) {
    double merit = 0;
    double phi[40][40];
    for (int i = 0; i < 40; ++i) {
        for (int j = 0; j < 40; ++j) {
            phi[i][j] = p.phi(i, j) * ((p.d[i] < 0) != (p.d[j] < 0) ? -1 : 1);
        }
    }
    for (int i = 0; i < 40; i += 5) {
        for (int j = 1; j < 40; j += 5) {
            for (int k = 2; k < 40; k += 5) {
                for (int l = 3; l < 40; ++l) {
                    if (l % 5 >= 3) {
                        const double c = std::abs(p.d[i]) + std::abs(p.d[j]) + std::abs(p.d[k]) + std::abs(p.d[l]);
                        const double e = phi[i][i] + phi[j][j] + phi[k][k] + phi[l][l] +
                                         2 * (phi[i][j] + phi[i][k] + phi[i][l] + phi[j][k] + phi[j][l] + phi[k][l]);
                        merit = std::max(merit, c * c / e);
                    }
                }
            }
        }
    }
    return merit;
}

// The three forms of a search, called as `search(function, correlations, matrix, code, index)`: they agree as a rule
// and come near the best of all.
template <class Words16, class Words32, class Real, class Search>
void expectNearBest(unsigned seed, Words16 words16, Words32 words32, Real real, double least, Search search) {
    std::mt19937 random(seed);
    int same = 0;
    double ratio = 0;
    for (int round = 0; round < 60; ++round) {
        Problem p(random);
        Samples code(40), index(2), wideIndex(2), realIndex(2);
        Reals realCode(40);
        ASSERT_EQ(vekStsNoErr, search(words16, p.d.data(), p.matrix.data(), code.data(), index.data()));
        ASSERT_EQ(ones(code, 8192), decodeFour(index[0], index[1]));
        ASSERT_EQ(vekStsNoErr, search(words32, p.d.data(), p.wide.data(), code.data(), wideIndex.data()));
        ASSERT_EQ(ones(code, 8192), decodeFour(wideIndex[0], wideIndex[1]));
        ASSERT_EQ(vekStsNoErr, search(real, p.realD.data(), p.real.data(), realCode.data(), realIndex.data()));
        ASSERT_EQ(ones(realCode, 1), decodeFour(realIndex[0], realIndex[1]));
        same += index == wideIndex && wideIndex == realIndex ? 1 : 0;
        ratio += p.merit(realCode) / best(p) / 60;
    }
    EXPECT_GE(same, 57);
    EXPECT_GE(ratio, least);
}

TEST(VekFourPulses, NestedSearchComesNearTheBestOfAllAndAllFormsAgree) {
    atEveryLevel([] {
        int16_t times = 0;
        expectNearBest(1, veksFixedCodebookSearch_G729_16s, veksFixedCodebookSearch_G729_32s16s,
                       veksFixedCodebookSearch_G729_32f, 0.95,
                       [&](auto form, auto... arguments) { return form(arguments..., &times, 0); });
    });
}

TEST(VekFourPulses, DepthFirstSearchComesNearTheBestOfAllAndAllFormsAgree) {
    atEveryLevel([] {
        expectNearBest(2, veksFixedCodebookSearch_G729A_16s, veksFixedCodebookSearch_G729A_32s16s,
                       veksFixedCodebookSearch_G729A_32f, 0.9,
                       [](auto form, auto... arguments) { return form(arguments...); });
    });
}

TEST(VekFourPulses, SignsGoIntoTheMatrixAndPulsesAreThoseOfQ13) {
    Samples d(40, 100);
    d[5] = -300;
    d[1] = 300;
    Samples matrix(616, 10);
    std::fill(matrix.begin(), matrix.begin() + 40, int16_t{1000});
    Samples code(40), index(2);
    ASSERT_EQ(vekStsNoErr, veksFixedCodebookSearch_G729A_16s(d.data(), matrix.data(), code.data(), index.data()));
    EXPECT_EQ(-8192, code[5]);
    EXPECT_EQ(8191, code[1]);
    EXPECT_EQ(10, matrix[40]);      // 0 and 1
    EXPECT_EQ(-10, matrix[40 + 8]); // 5 and 1
    EXPECT_EQ(1000, matrix[1]);
    EXPECT_EQ(1, index[0] & 7);
    EXPECT_EQ(14, index[1]);
}

TEST(VekFourPulses, EntriesOfTheLastLoopAreCounted) {
    Samples d(40), code(40), index(2);
    for (size_t i = 0; i < 40; ++i) {
        d[i] = i < 5 ? 100 : 99; // nearly all sums pass no threshold or all do
    }
    const Samples matrix(616, 1);
    Samples m = matrix;
    int16_t times = 7;
    // Equal correlations: no sum is above its mean.
    Samples flat(40, 50);
    ASSERT_EQ(vekStsNoErr,
              veksFixedCodebookSearch_G729_16s(flat.data(), m.data(), code.data(), index.data(), &times, 0));
    EXPECT_EQ(105, times);
    EXPECT_EQ(0, index[0]);
    EXPECT_EQ(15, index[1]);
    m = matrix;
    ASSERT_EQ(vekStsNoErr,
              veksFixedCodebookSearch_G729_16s(flat.data(), m.data(), code.data(), index.data(), &times, 1));
    EXPECT_EQ(180, times);
    // One pulse of the tracks 0 to 2 stands out: of the 512 triples 8 * 8 hold it, and 64 entries are counted.
    Samples one(40, 10);
    one[0] = 1000;
    m = matrix;
    ASSERT_EQ(vekStsNoErr,
              veksFixedCodebookSearch_G729_16s(one.data(), m.data(), code.data(), index.data(), &times, 0));
    EXPECT_EQ(41, times);
    // Subframe 1 is granted what is left, up to 105; a count below 0 is none.
    for (const auto& [before, after] : {std::pair{41, 52}, {200, 116}, {-5, 11}}) {
        m = matrix;
        times = static_cast<int16_t>(before);
        ASSERT_EQ(vekStsNoErr,
                  veksFixedCodebookSearch_G729_16s(one.data(), m.data(), code.data(), index.data(), &times, 1));
        EXPECT_EQ(after, times);
    }
    // Two of a track: 128 entries, more than the 105 of subframe 0.
    one[5] = 1000;
    m = matrix;
    ASSERT_EQ(vekStsNoErr,
              veksFixedCodebookSearch_G729_16s(one.data(), m.data(), code.data(), index.data(), &times, 0));
    EXPECT_EQ(0, times);
}

TEST(VekFourPulses, RefuseNullAndOtherSubframes) {
    std::mt19937 random(3);
    Problem p(random);
    Samples code(40, 5), index(2, 5);
    Reals realCode(40, 5);
    int16_t times = 9;
    const Samples before = p.matrix;
    const auto nested = veksFixedCodebookSearch_G729_16s;
    expectNullsRefused(nested, p.d.data(), p.matrix.data(), code.data(), index.data(), &times, 0);
    EXPECT_EQ(vekStsRangeErr, nested(p.d.data(), p.matrix.data(), code.data(), index.data(), &times, -1));
    EXPECT_EQ(vekStsRangeErr, nested(p.d.data(), p.matrix.data(), code.data(), index.data(), &times, 2));
    EXPECT_EQ(vekStsRangeErr,
              veksFixedCodebookSearch_G729_32s16s(p.d.data(), p.wide.data(), code.data(), index.data(), &times, 2));
    EXPECT_EQ(vekStsRangeErr, veksFixedCodebookSearch_G729_32f(p.realD.data(), p.real.data(), realCode.data(),
                                                               index.data(), &times, 2));
    EXPECT_EQ(vekStsNullPtrErr,
              veksFixedCodebookSearch_G729_32s16s(p.d.data(), nullptr, code.data(), index.data(), &times, 0));
    EXPECT_EQ(vekStsNullPtrErr,
              veksFixedCodebookSearch_G729_32f(nullptr, p.real.data(), realCode.data(), index.data(), &times, 0));
    EXPECT_EQ(vekStsNullPtrErr, veksFixedCodebookSearch_G729A_16s(p.d.data(), p.matrix.data(), code.data(), nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksFixedCodebookSearch_G729A_32s16s(p.d.data(), nullptr, code.data(), index.data()));
    EXPECT_EQ(vekStsNullPtrErr,
              veksFixedCodebookSearch_G729A_32f(p.realD.data(), p.real.data(), nullptr, index.data()));
    EXPECT_EQ(before, p.matrix);
    EXPECT_EQ(Samples(40, 5), code);
    EXPECT_EQ(Samples(2, 5), index);
    EXPECT_EQ(9, times);
}

const int firstOfTwo[16] = {1, 3, 8, 6, 18, 16, 11, 13, 38, 36, 31, 33, 21, 23, 28, 26};
const int secondOfTwo[32] = {0,  2,  5,  4,  12, 10, 7,  9,  25, 24, 20, 22, 14, 15, 19, 17,
                             36, 31, 21, 26, 1,  6,  16, 11, 27, 29, 32, 30, 39, 37, 34, 35};

std::vector<int> decodeTwo(int index, int signs) {
    std::vector<int> code(40);
    code[firstOfTwo[index & 15]] += signs & 1 ? 1 : -1;
    code[secondOfTwo[index >> 4]] += signs & 2 ? 1 : -1;
    return code;
}

template <class H>
std::vector<int> filtered(const std::vector<int>& code, const H& h) {
    std::vector<int> y(40);
    for (int n = 0; n < 40; ++n) {
        for (int i = 0; i <= n; ++i) {
            y[n] += code[i] * static_cast<int>(h[n - i]);
        }
    }
    return y;
}

TEST(VekTwoPulses, AreTheBestPairAndReadBack) {
    atEveryLevel([] {
        std::mt19937 random(4);
        for (int round = 0; round < 60; ++round) {
            Problem p(random);
            double most = 0;
            for (const int i : firstOfTwo) {
                for (const int j : secondOfTwo) {
                    const double c = std::abs(p.d[i]) + std::abs(p.d[j]);
                    const double cross = p.phi(i, j) * ((p.d[i] < 0) != (p.d[j] < 0) ? -1 : 1);
                    most = std::max(most, c * c / (p.phi(i, i) + p.phi(j, j) + 2 * cross));
                }
            }
            Samples code(40), y(40), realIndex(2);
            Reals realCode(40), realY(40);
            int16_t sign = 0;
            int16_t index = 0;
            ASSERT_EQ(vekStsNoErr, veksFixedCodebookSearch_G729D_16s(p.target.data(), p.h.data(), code.data(), y.data(),
                                                                     &sign, &index));
            ASSERT_EQ(ones(code, 8192), decodeTwo(index, sign));
            ASSERT_EQ(std::vector<int>(y.begin(), y.end()), filtered(decodeTwo(index, sign), p.h));
            ASSERT_GE(p.merit(ones(code, 8192)), 0.995 * most);
            ASSERT_EQ(vekStsNoErr, veksFixedCodebookSearch_G729D_32f(p.realD.data(), p.real.data(), p.realH.data(),
                                                                     realCode.data(), realY.data(), realIndex.data()));
            ASSERT_EQ(ones(realCode, 1), decodeTwo(realIndex[0], realIndex[1]));
            ASSERT_EQ(ones(realY, 1), filtered(decodeTwo(realIndex[0], realIndex[1]), p.h));
            ASSERT_GE(p.merit(realCode), 0.99999 * most);
        }
    });
}

TEST(VekTwoPulses, OnOnePositionAddUp) {
    Samples h(40), target(40), code(40), y(40);
    h[0] = 4096;
    target[6] = 1000;
    for (size_t i = 0; i < 40; ++i) {
        target[i] = i == 6 ? 2000 : 1;
    }
    int16_t sign = 0;
    int16_t index = 0;
    ASSERT_EQ(vekStsNoErr,
              veksFixedCodebookSearch_G729D_16s(target.data(), h.data(), code.data(), y.data(), &sign, &index));
    // The same merit as one pulse and nothing else, more than with any other: 4 c c / 4 e.
    EXPECT_EQ(16382, code[6]);
    EXPECT_EQ(8192, y[6]);
    EXPECT_EQ(3, sign);
    EXPECT_EQ(3 + 16 * 21, index);
}

TEST(VekTwoPulses, RefuseNull) {
    Samples x(40, 3), h(40, 4), code(40, 5), y(40, 6), index(2, 7);
    Reals f(616, 1);
    int16_t sign = 8;
    const auto two = veksFixedCodebookSearch_G729D_16s;
    expectNullsRefused(two, x.data(), h.data(), code.data(), y.data(), &sign, index.data());
    float* g = f.data();
    const auto real = veksFixedCodebookSearch_G729D_32f;
    expectNullsRefused(real, g, g, g, g, g, index.data());
    EXPECT_EQ(Samples(40, 5), code);
    EXPECT_EQ(Samples(40, 6), y);
    EXPECT_EQ(Samples(2, 7), index);
    EXPECT_EQ(Reals(616, 1), f);
}

// The pulses of a word: each has the sign of the one before it unless it lies below it.
void addWord(int word, int count, int track, std::vector<int>& code) {
    int sign = word >> (3 * count) & 1 ? 1 : -1;
    int last = -1;
    for (int n = 0; n < count; ++n) {
        const int at = word >> (3 * n) & 7;
        sign = at < last ? -sign : sign;
        code[5 * at + track] += sign;
        last = at;
    }
}

std::vector<int> decodeMany(int mode, const Samples& words) {
    std::vector<int> code(40);
    const int first = mode == 0 ? 0 : words[0] >> 10;
    for (int n = 0; n < 5; ++n) {
        addWord(words[n] & 1023, mode == 1 && n < 2 ? 3 : 2, (first + n) % 5, code);
    }
    return code;
}

TEST(VekManyPulses, ReadBackFromTheirWordsAndMatchTheTarget) {
    atEveryLevel([] {
        std::mt19937 random(5);
        for (int round = 0; round < 300; ++round) {
            ManyPulses p(random);
            for (int mode = 0; mode < 2; ++mode) {
                ASSERT_EQ(vekStsNoErr, p.search(mode));
                const std::vector<int> back = decodeMany(mode, p.words);
                ASSERT_EQ(ones(p.code, 8192), back);
                ASSERT_EQ(std::vector<int>(p.y.begin(), p.y.end()), filtered(back, p.h));
                int pulses = 0;
                for (const int v : back) {
                    pulses += std::abs(v);
                }
                ASSERT_EQ(mode == 0 ? 10 : 12, pulses);
                ASSERT_EQ(vekStsNoErr, p.searchReal(mode));
                ASSERT_EQ(ones(p.realCode, 1), decodeMany(mode, p.words));
                ASSERT_EQ(ones(p.realY, 1), filtered(decodeMany(mode, p.words), p.h));
                ASSERT_NEAR(1, p.merit(p.realCode) / p.merit(ones(p.code, 8192)), 0.35);
            }
        }
    });
}

TEST(VekManyPulses, MorePulsesMatchBetter) {
    std::mt19937 random(6);
    double two = 0;
    double ten = 0;
    double twelve = 0;
    for (int round = 0; round < 100; ++round) {
        Problem p(random);
        Samples code(40), y(40), words(5);
        int16_t sign = 0;
        veksFixedCodebookSearch_G729D_16s(p.target.data(), p.h.data(), code.data(), y.data(), &sign, words.data());
        two += p.merit(ones(code, 8192));
        veksFixedCodebookSearch_G729E_16s(0, p.target.data(), p.target.data(), p.h.data(), code.data(), y.data(),
                                          words.data());
        ten += p.merit(ones(code, 8192));
        veksFixedCodebookSearch_G729E_16s(1, p.target.data(), p.target.data(), p.h.data(), code.data(), y.data(),
                                          words.data());
        twelve += p.merit(ones(code, 8192));
    }
    EXPECT_GT(ten, 1.8 * two);
    EXPECT_GT(twelve, 1.01 * ten);
}

TEST(VekManyPulses, LoudTargetsAndResponsesSaturateWithoutHarm) {
    for (int mode = 0; mode < 2; ++mode) {
        Samples loud(40, 32767), code(40), y(40), words(5);
        ASSERT_EQ(vekStsNoErr, veksFixedCodebookSearch_G729E_16s(mode, loud.data(), loud.data(), loud.data(),
                                                                 code.data(), y.data(), words.data()));
        EXPECT_EQ(ones(code, 8192), decodeMany(mode, words));
        EXPECT_EQ(32767, y[39]);
        const Samples none(40);
        ASSERT_EQ(vekStsNoErr, veksFixedCodebookSearch_G729E_16s(mode, none.data(), none.data(), none.data(),
                                                                 code.data(), y.data(), words.data()));
        EXPECT_EQ(ones(code, 8192), decodeMany(mode, words));
        EXPECT_EQ(none, y);
    }
}

TEST(VekManyPulses, OfEqualOrdersOfTheTracksTheFirstIsTaken) {
    // Without a target all are equal; the residual says where the first two pulses stand.
    const Samples wanted[] = {{64, 64, 64, 80, 120}, {3712, 960, 64, 64, 64}};
    for (int mode = 0; mode < 2; ++mode) {
        const std::vector<float> none(40);
        std::vector<float> residual(40), h(40), code(40), y(40);
        for (size_t i = 0; i < 40; ++i) {
            residual[i] = static_cast<float>(i * 4999 % 97);
        }
        h[0] = 1;
        Samples words(5);
        ASSERT_EQ(vekStsNoErr, veksFixedCodebookSearch_G729E_32f(mode, none.data(), residual.data(), h.data(),
                                                                 code.data(), y.data(), words.data()));
        EXPECT_EQ(wanted[mode], words) << mode;
    }
}

TEST(VekManyPulses, RefuseNullAndOtherModes) {
    Samples x(40, 3), code(40, 5), y(40, 6), words(5, 7);
    Reals f(40, 1);
    const auto many = veksFixedCodebookSearch_G729E_16s;
    expectNullsRefused(many, 0, x.data(), x.data(), x.data(), code.data(), y.data(), words.data());
    EXPECT_EQ(vekStsModeErr, many(-1, x.data(), x.data(), x.data(), code.data(), y.data(), words.data()));
    EXPECT_EQ(vekStsModeErr, many(2, x.data(), x.data(), x.data(), code.data(), y.data(), words.data()));
    float* g = f.data();
    const auto real = veksFixedCodebookSearch_G729E_32f;
    expectNullsRefused(real, 0, g, g, g, g, g, words.data());
    EXPECT_EQ(vekStsModeErr, real(2, g, g, g, g, g, words.data()));
    EXPECT_EQ(Samples(40, 5), code);
    EXPECT_EQ(Samples(40, 6), y);
    EXPECT_EQ(Samples(5, 7), words);
    EXPECT_EQ(Reals(40, 1), f);
}

} // namespace
