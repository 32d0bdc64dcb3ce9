// Fixed codebook, gains and noise of G.729 against independent open codecs.
// Their step functions are in no public header: they are declared here, and the package's header tells whether to link.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "noise.h"
#include "veksc.h"

#if __has_include(<opencore-amrnb/interf_enc.h>)
#define ORACLE_AMRNB 1
extern "C" {
void cor_h_x(int16_t h[], int16_t x[], int16_t d[], int16_t scale, int* overflow);
void cor_h(int16_t h[], int16_t sign[], int16_t rr[][40], int* overflow);
void set_sign12k2(int16_t d[], int16_t r[], int16_t sign[], int16_t largest[], int16_t tracks, int16_t start[],
                  int16_t step, int* overflow);
void search_10and8i40(int16_t pulses, int16_t step, int16_t tracks, int16_t d[], int16_t rr[][40], int16_t start[],
                      int16_t largest[], int16_t positions[], int* overflow);
}
#endif

#if __has_include(<bcg729/encoder.h>)
#define ORACLE_BCG729 1
extern "C" {
void fixedCodebookSearch(int16_t* target, int16_t* h, int16_t delay, int16_t sharp, int16_t* adaptive, int16_t gain,
                         uint16_t* positions, uint16_t* signs, int16_t* code, int16_t* filtered);
uint16_t pseudoRandom(uint16_t* seed);
int32_t MACodeGainPrediction(int16_t* past, int16_t* code);
void computeGainPredictionError(int16_t factor, int16_t* past);
extern int16_t GACodebook[8][2];
extern int16_t GBCodebook[16][2];
extern uint16_t reverseIndexMappingGA[8];
extern uint16_t reverseIndexMappingGB[16];
void* initBcg729EncoderChannel(uint8_t noVoice);
void closeBcg729EncoderChannel(void* encoder);
void initGainQuantization(void* encoder);
void gainQuantization(void* encoder, int16_t* target, int16_t* adaptive, int16_t* filtered, int16_t* code, int64_t xy,
                      int64_t yy, int16_t* pitch, int16_t* gain, uint16_t* first, uint16_t* second);
}
#endif

namespace {

TEST(FourPulsesOracle, DepthFirstSearchHasTheCodewordsOfTheG729Codec) {
#ifdef ORACLE_BCG729
    std::mt19937 random(1);
    for (int round = 0; round < 2000; ++round) {
        Samples h = decayingResponse(random, 2500);
        Samples target = noise(random, 40, -100 << (round % 6), 100 << (round % 6));
        Samples d(40), code(40), index(2), theirs(40), filtered(40);
        std::vector<int32_t> matrix(616);
        veksCrossCorr_NormM_16s(target.data(), h.data(), 40, d.data());
        veksToeplizMatrix_G729_16s32s(h.data(), matrix.data());
        ASSERT_EQ(vekStsNoErr,
                  veksFixedCodebookSearch_G729A_32s16s(d.data(), matrix.data(), code.data(), index.data()));
        Samples none(40);
        uint16_t positions = 0;
        uint16_t signs = 0;
        fixedCodebookSearch(target.data(), h.data(), 40, 0, none.data(), 0, &positions, &signs, theirs.data(),
                            filtered.data());
        ASSERT_EQ(positions, index[0]) << round;
        ASSERT_EQ(signs, index[1]) << round;
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

// Squared correlation over energy of a code vector.
[[maybe_unused]] double merit(const Samples& target, const Samples& h, const Samples& code) {
    double c = 0;
    double e = 0;
    for (size_t n = 0; n < 40; ++n) {
        double y = 0;
        for (size_t i = 0; i <= n; ++i) {
            y += double{1} * code[i] * h[n - i];
        }
        c += y * target[n];
        e += y * y;
    }
    return c * c / e;
}

TEST(FourPulsesOracle, NestedSearchIsBetterThanTheDepthFirstOneOfTheG729Codec) {
#ifdef ORACLE_BCG729
    std::mt19937 random(2);
    double ours = 0;
    double theirs = 0;
    for (int round = 0; round < 500; ++round) {
        Samples h = decayingResponse(random, 2500);
        Samples target = noise(random, 40, -3000, 3000);
        Samples d(40), code(40), index(2), other(40), filtered(40), none(40), matrix(616);
        veksCrossCorr_NormM_16s(target.data(), h.data(), 40, d.data());
        veksToeplizMatrix_G729_16s(h.data(), matrix.data());
        int16_t times = 0;
        ASSERT_EQ(vekStsNoErr,
                  veksFixedCodebookSearch_G729_16s(d.data(), matrix.data(), code.data(), index.data(), &times, 0));
        uint16_t positions = 0;
        uint16_t signs = 0;
        ours += merit(target, h, code);
        fixedCodebookSearch(target.data(), h.data(), 40, 0, none.data(), 0, &positions, &signs, other.data(),
                            filtered.data());
        theirs += merit(target, h, other);
    }
    RecordProperty("percent", static_cast<int>(100 * ours / theirs));
    EXPECT_GE(ours, 0.99 * theirs);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(ManyPulsesOracle, AreThePulsesOfTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(3);
    for (int round = 0; round < 1000; ++round) {
        Samples h = decayingResponse(random, 2500);
        Samples target = noise(random, 40, -50 << (round % 7), 50 << (round % 7));
        Samples residual = noise(random, 40, -30 << (round % 8), 30 << (round % 8));
        Samples code(40), y(40), words(5), want(40);
        ASSERT_EQ(vekStsNoErr, veksFixedCodebookSearch_G729E_16s(0, target.data(), residual.data(), h.data(),
                                                                 code.data(), y.data(), words.data()));
        int overflow = 0;
        int16_t d[40], sign[40], largest[5], start[10], positions[10], rr[40][40];
        cor_h_x(h.data(), target.data(), d, 2, &overflow);
        set_sign12k2(d, residual.data(), sign, largest, 5, start, 5, &overflow);
        cor_h(h.data(), sign, rr, &overflow);
        search_10and8i40(10, 5, 5, d, rr, start, largest, positions, &overflow);
        for (const int16_t at : positions) {
            want[static_cast<size_t>(at)] =
                static_cast<int16_t>(want[static_cast<size_t>(at)] + (sign[at] > 0 ? 8192 : -8192));
        }
        ASSERT_EQ(want, code) << round;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(NoiseOracle, GeneratorEqualsTheG729Codec) {
#ifdef ORACLE_BCG729
    int16_t seed = 1000;
    uint16_t theirs = 1000;
    for (int round = 0; round < 100; ++round) {
        Samples y(40);
        ASSERT_EQ(vekStsNoErr, veksRandomNoiseExcitation_G729B_16s(&seed, y.data(), 40));
        for (const int16_t v : y) {
            int sum = 0;
            for (int i = 0; i < 12; ++i) {
                sum += static_cast<int16_t>(pseudoRandom(&theirs));
            }
            ASSERT_EQ(sum >> 7, v);
        }
        ASSERT_EQ(static_cast<int16_t>(theirs), seed);
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(DecodeGainOracle, FollowsTheG729Codec) {
#ifdef ORACLE_BCG729
    std::mt19937 random(4);
    // The factors of two codes, Q12: one small, one middle.
    const int factors[][3] = {{5, 6, 758}, {4, 10, 2511 + 598}, {2, 13, 13581 + 7138}};
    for (int round = 0; round < 300; ++round) {
        Samples past = noise(random, 4, -14336, 6000);
        Samples theirPast = past;
        Samples code(40);
        for (size_t t = 0; t < 4; ++t) {
            code[static_cast<size_t>(noise(random, 1, 0, 7)[0]) * 5 + t] = 8192;
        }
        const int(&one)[3] = factors[round % 3];
        const int16_t codes[] = {static_cast<int16_t>(one[0]), static_cast<int16_t>(one[1])};
        int16_t gains[2] = {};
        ASSERT_EQ(vekStsNoErr, veksDecodeGain_G729_16s(4 << 26, past.data(), codes, gains));
        const double want = MACodeGainPrediction(theirPast.data(), code.data()) / 65536.0 * one[2] / 4096 * 2;
        computeGainPredictionError(static_cast<int16_t>(one[2]), theirPast.data());
        EXPECT_NEAR(want, gains[1], 2 + 0.004 * want);
        EXPECT_NEAR(theirPast[0], past[0], 4);
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(GainQuantOracle, GainsLeaveNoMoreErrorThanThoseOfTheG729Codec) {
#ifdef ORACLE_BCG729
    std::mt19937 random(5);
    void* encoder = initBcg729EncoderChannel(0);
    int equal = 0;
    int compared = 0;
    double most = 0;
    constexpr int rounds = 5000;
    for (int round = 0; round < rounds; ++round) {
        const Samples h = decayingResponse(random, 2500);
        Samples target = noise(random, 40, -300, 300);
        Samples adaptive = noise(random, 40, -300, 300);
        Samples code(40), z(40), gains(2), codes(2), past(4, -14336);
        for (size_t t = 0; t < 4; ++t) {
            const size_t at = static_cast<size_t>(noise(random, 1, 0, 7)[0]) * 5 + t;
            code[at] = 8192;
            for (size_t i = at; i < 40; ++i) {
                z[i] = static_cast<int16_t>(z[i] + h[i - at]);
            }
        }
        int64_t xy = 0;
        int64_t yy = 0;
        for (size_t i = 0; i < 40; ++i) {
            target[i] = static_cast<int16_t>(target[i] + adaptive[i] * (round % 10) / 10 + z[i] * (round % 7) / 400);
            xy += target[i] * adaptive[i];
            yy += adaptive[i] * adaptive[i];
        }
        ASSERT_EQ(vekStsNoErr, veksGainQuant_G729_16s(target.data(), adaptive.data(), code.data(), z.data(),
                                                      past.data(), gains.data(), codes.data(), 0));
        initGainQuantization(encoder);
        int16_t pitch = 0;
        int16_t gain = 0;
        uint16_t first = 0;
        uint16_t second = 0;
        gainQuantization(encoder, target.data(), adaptive.data(), z.data(), code.data(), xy, yy, &pitch, &gain, &first,
                         &second);
        equal += first == codes[0] && second == codes[1] ? 1 : 0;
        // The error beyond that of the best gains, which no code has.
        double zz = 0;
        double xz = 0;
        double yz = 0;
        for (size_t i = 0; i < 40; ++i) {
            zz += double{1} * z[i] * z[i];
            xz += double{1} * z[i] * target[i];
            yz += double{1} * z[i] * adaptive[i];
        }
        const auto product = static_cast<double>(xy);
        const auto energy = static_cast<double>(yy);
        const double determinant = energy * zz - yz * yz;
        double level = 30 - 14 * (0.68 + 0.58 + 0.34 + 0.19);
        level -= 10 * std::log10(static_cast<double>(std::count(code.begin(), code.end(), 8192)) / 40);
        const auto beyond = [&](size_t one, size_t two) {
            const int16_t* const a = GACodebook[reverseIndexMappingGA[one]];
            const int16_t* const b = GBCodebook[reverseIndexMappingGB[two]];
            const double fixed = (a[1] + b[1]) / 4096.0 * std::pow(10, level / 20);
            const double u = (a[0] + b[0]) / 16384.0 - (product * zz - xz * yz) / determinant;
            const double v = fixed / 4096 - (xz * energy - product * yz) / determinant;
            return u * u * energy + 2 * u * v * yz + v * v * zz;
        };
        // Its entries stand in order. Where of those to be tried one is as good as the next, rounding decides.
        const auto tried = [&](const auto& book, int column, double best, int entry, int count) {
            const auto entries = static_cast<int>(std::size(book));
            const auto from = [&](double value) {
                const auto rank = std::count_if(std::begin(book), std::end(book),
                                                [&](const int16_t(&e)[2]) { return value > e[column]; });
                return std::clamp(static_cast<int>(rank) - count / 2, 0, entries - count);
            };
            const int begin = from(best);
            return begin == from(best * 0.99) && begin == from(best * 1.01) && entry >= begin && entry < begin + count;
        };
        const double bestPitch = (product * zz - xz * yz) / determinant * 16384;
        const double bestGain = (xz * energy - product * yz) / determinant * 4096 / std::pow(10, level / 20) * 4096;
        if ((first != codes[0] || second != codes[1]) &&
            tried(GACodebook, 1, bestGain, reverseIndexMappingGA[first], 4) &&
            tried(GBCodebook, 0, bestPitch, reverseIndexMappingGB[second], 8)) {
            ++compared;
            most = std::max(most, beyond(static_cast<size_t>(codes[0]), static_cast<size_t>(codes[1])) /
                                      beyond(first, second));
        }
    }
    closeBcg729EncoderChannel(encoder);
    RecordProperty("equal", equal);
    RecordProperty("most", std::to_string(most));
    EXPECT_LE(most, 1.001);
    EXPECT_GE(equal + compared, rounds - 20);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

} // namespace
