// The quantiser of line spectral frequencies against an independent open codec of G.729.
// Its step functions are in no public header: they are declared here, and the package's header tells whether to link.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "noise.h"
#include "veksc.h"

#if __has_include(<bcg729/decoder.h>)
#define ORACLE_G729 1
extern "C" {
extern int16_t L1[128][10];
extern int16_t L2L3[32][10];
extern uint8_t L1SubsetIndex[32];
extern uint8_t L2SubsetIndex[16];
extern uint8_t L3SubsetIndex[16];
extern int16_t MAPredictor[2][4][10];
extern int16_t MAPredictorSum[2][10];
extern int16_t noiseMAPredictor[2][4][10];
extern int16_t noiseMAPredictorSum[2][10];
void computeqLSF(int16_t* lsf, int16_t (*previous)[10], uint8_t l0, int16_t (*predictor)[4][10], int16_t (*sum)[10]);
void decodeLSP(int16_t* context, uint16_t* index, int16_t* lsp, uint8_t erased);
void initDecodeLSP(int16_t* context);
void initLSPQuantization(int16_t* context);
void LSPQuantization(int16_t* context, int16_t* lsp, int16_t* quantised, uint16_t* index);
void noiseLSPQuantization(int16_t (*previous)[10], int16_t* lsp, int16_t* quantised, uint8_t* index);
}
#endif

namespace {

[[maybe_unused]] Samples startOfHistory() {
    const int16_t row[10] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};
    Samples v;
    for (int k = 0; k < 4; ++k) {
        v.insert(v.end(), std::begin(row), std::end(row));
    }
    return v;
}

[[maybe_unused]] int pick(std::mt19937& random, int count) {
    return ::pick(random, 0, count - 1);
}

// A slow walk of spectra: angles drift from frame to frame.
class Walk {
public:
    explicit Walk(unsigned seed) : m_random(seed), m_gap(11, 1.0) {}

    Samples next() {
        std::normal_distribution<double> drift(0, 0.05);
        for (double& g : m_gap) {
            g = std::clamp(g * std::exp(drift(m_random)), 0.25, 3.0);
        }
        return spectralPairs(m_gap);
    }

private:
    std::mt19937 m_random;
    std::vector<double> m_gap;
};

#ifdef ORACLE_G729
using Row = std::array<double, 10>;

// What the stages of the quantiser minimise, in double precision from the published definition and the other codec's
// tables. Frequencies and code vectors in radians, times 8192; so are the distances.
class Criteria {
public:
    Criteria(const Row& lsf, const Row* history, const int16_t (*predictor)[4][10], const int16_t (*rest)[10]) {
        for (size_t i = 0; i < 10; ++i) {
            const double below = i == 0 ? 0.04 * kPi : lsf[i - 1] / 8192;
            const double above = i == 9 ? 0.92 * kPi : lsf[i + 1] / 8192;
            const double close = std::min(above - below - 1, 0.0);
            m_weight[i] = (10 * close * close + 1) * (i == 4 || i == 5 ? 1.2 : 1);
            for (size_t p = 0; p < 2; ++p) {
                m_rest[p][i] = rest[p][i] / 32768.0;
                m_target[p][i] = lsf[i];
                for (size_t k = 0; k < 4; ++k) {
                    m_target[p][i] -= predictor[p][k][i] / 32768.0 * history[k][i];
                }
                m_target[p][i] /= m_rest[p][i];
            }
        }
    }

    double first(size_t p, const Row& row) const {
        double sum = 0;
        for (size_t i = 0; i < 10; ++i) {
            sum += (m_target[p][i] - row[i]) * (m_target[p][i] - row[i]);
        }
        return std::sqrt(sum);
    }
    double weighted(size_t p, const Row& code, size_t begin, size_t end) const {
        double sum = 0;
        for (size_t i = begin; i < end; ++i) {
            const double d = m_rest[p][i] * (m_target[p][i] - code[i]);
            sum += m_weight[i] * d * d;
        }
        return std::sqrt(sum);
    }
    // What an error of a unit in each element makes.
    double unit(size_t begin, size_t end) const {
        double sum = 0;
        for (size_t i = begin; i < end; ++i) {
            sum += m_weight[i];
        }
        return std::sqrt(sum);
    }

private:
    static constexpr double kPi = 3.14159265358979;
    Row m_weight{};
    Row m_rest[2] = {};
    Row m_target[2] = {};
};

// A codebook of two stages; the second is searched in so many parts.
struct Books {
    std::vector<Row> first;
    std::vector<Row> second;
    size_t parts;

    Row sum(size_t row, size_t lower, size_t upper) const {
        Row code = first[row];
        for (size_t i = 0; i < 10; ++i) {
            code[i] += second[i < 5 ? lower : upper][i];
        }
        return code;
    }
};

const Books& speechBooks() {
    static const Books books = [] {
        Books b{{}, {}, 2};
        for (const auto& row : L1) {
            b.first.emplace_back();
            std::copy(std::begin(row), std::end(row), b.first.back().begin());
        }
        for (const auto& row : L2L3) {
            b.second.emplace_back();
            std::copy(std::begin(row), std::end(row), b.second.back().begin());
        }
        return b;
    }();
    return books;
}

const Books& noiseBooks() {
    static const Books books = [] {
        Books b{{}, {}, 1};
        for (const uint8_t row : L1SubsetIndex) {
            b.first.push_back(speechBooks().first[row]);
        }
        for (size_t k = 0; k < 16; ++k) {
            b.second.push_back(speechBooks().second[L2SubsetIndex[k]]);
            const Row& upper = speechBooks().second[L3SubsetIndex[k]];
            std::copy(upper.begin() + 5, upper.end(), b.second.back().begin() + 5);
        }
        return b;
    }();
    return books;
}

Row rearranged(Row code) {
    for (const double gap : {10.0, 5.0}) {
        for (size_t i = 1; i < 10; ++i) {
            const double lack = std::max((code[i - 1] - code[i] + gap) / 2, 0.0);
            code[i - 1] -= lack;
            code[i] += lack;
        }
    }
    return code;
}

// Each stage of a choice is the least of all its rows, but for units of rounding in each element, and so is the
// predictor of the two that the stages' best choices end in.
void expectLeast(const Criteria& criteria, const Books& books, size_t p, size_t row, size_t lower, size_t upper,
                 double units) {
    const auto best = [](size_t count, const auto& distance) {
        size_t found = 0;
        for (size_t k = 1; k < count; ++k) {
            found = distance(k) < distance(found) ? k : found;
        }
        return found;
    };
    const size_t part = 10 / books.parts;
    const auto second = [&](size_t predictor, size_t one, size_t begin) {
        return best(books.second.size(), [&, predictor, one, begin](size_t k) {
            return criteria.weighted(predictor, books.sum(one, k, k), begin, begin + part);
        });
    };
    const auto first = [&](size_t predictor) {
        return best(books.first.size(), [&](size_t k) { return criteria.first(predictor, books.first[k]); });
    };
    ASSERT_LE(criteria.first(p, books.first[row]), criteria.first(p, books.first[first(p)]) + 6 * units);
    for (size_t begin = 0; begin < 10; begin += part) {
        const size_t least = second(p, row, begin);
        ASSERT_LE(criteria.weighted(p, books.sum(row, lower, upper), begin, begin + part),
                  criteria.weighted(p, books.sum(row, least, least), begin, begin + part) +
                      units * criteria.unit(begin, begin + part));
    }
    const size_t one = first(1 - p);
    const Row other = books.sum(one, second(1 - p, one, 0), second(1 - p, one, 10 - part));
    ASSERT_LE(criteria.weighted(p, rearranged(books.sum(row, lower, upper)), 0, 10),
              criteria.weighted(1 - p, rearranged(other), 0, 10) + units * criteria.unit(0, 10));
}

Row rowOf(const Samples& v, size_t from = 0) {
    Row row{};
    std::copy_n(v.begin() + static_cast<std::ptrdiff_t>(from), 10, row.begin());
    return row;
}

std::array<Row, 4> rowsOf(const Samples& history) {
    return {rowOf(history, 0), rowOf(history, 10), rowOf(history, 20), rowOf(history, 30)};
}
#endif

TEST(LsfQuantiserOracle, DecodedAndErasedFramesEqualTheOtherCodec) {
#ifdef ORACLE_G729
    std::mt19937 random(1);
    alignas(16) static int16_t buffer[4096];
    std::memset(buffer, 0, sizeof buffer);
    initDecodeLSP(buffer);
    const Samples start = startOfHistory();
    int16_t* theirs = std::search(buffer, buffer + 4096, start.begin(), start.end());
    // The last frequencies, which start as one row of the history, stand right before it.
    ASSERT_LT(theirs, buffer + 4000);
    int16_t* lastLsf = theirs;
    theirs += 10;
    Samples ours = start;
    Samples lsf(10);
    Samples lsp(10);
    int predictor = 0;
    bool any = false;
    for (int frame = 0; frame < 3000; ++frame) {
        const int16_t index[4] = {static_cast<int16_t>(pick(random, 2)), static_cast<int16_t>(pick(random, 128)),
                                  static_cast<int16_t>(pick(random, 32)), static_cast<int16_t>(pick(random, 32))};
        uint16_t their[4];
        std::copy(index, index + 4, their);
        const bool erased = any && pick(random, 5) == 0;
        decodeLSP(buffer, their, lsp.data(), erased ? 1 : 0);
        if (erased) {
            ASSERT_EQ(vekStsNoErr, veksLSFDecodeErased_G729_16s(predictor, ours.data(), lsf.data()));
        } else {
            ASSERT_EQ(vekStsNoErr, veksLSFDecode_G729_16s(index, ours.data(), lsf.data()));
            predictor = index[0];
            any = true;
        }
        ASSERT_EQ(Samples(lastLsf, lastLsf + 10), lsf) << frame;
        ASSERT_EQ(Samples(theirs, theirs + 40), ours) << frame;
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(LsfQuantiserOracle, DecodedNoiseFramesEqualTheOtherCodec) {
#ifdef ORACLE_G729
    std::mt19937 random(2);
    Samples ours = startOfHistory();
    Samples theirs = ours;
    for (int frame = 0; frame < 2000; ++frame) {
        const int16_t index[3] = {static_cast<int16_t>(pick(random, 2)), static_cast<int16_t>(pick(random, 32)),
                                  static_cast<int16_t>(pick(random, 16))};
        Samples want(10);
        for (size_t i = 0; i < 10; ++i) {
            const int row = i < 5 ? L2SubsetIndex[index[2]] : L3SubsetIndex[index[2]];
            want[i] = static_cast<int16_t>(L1[L1SubsetIndex[index[1]]][i] + L2L3[row][i]);
        }
        computeqLSF(want.data(), reinterpret_cast<int16_t(*)[10]>(theirs.data()), static_cast<uint8_t>(index[0]),
                    noiseMAPredictor, noiseMAPredictorSum);
        Samples lsf(10);
        ASSERT_EQ(vekStsNoErr, veksLSFDecode_G729B_16s(index, ours.data(), lsf.data()));
        ASSERT_EQ(want, lsf) << frame;
        ASSERT_EQ(theirs, ours) << frame;
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

// The other codec takes pairs and has its own arc cosine, a few units from ours: near ties may fall otherwise. Both
// start each frame from the same history.
TEST(LsfQuantiserOracle, EachStageTakesTheLeastByTheTablesOfTheOtherCodec) {
#ifdef ORACLE_G729
    Walk walk(3);
    alignas(16) static int16_t context[8192];
    std::memset(context, 0, sizeof context);
    initLSPQuantization(context);
    const Samples start = startOfHistory();
    int16_t* theirs = std::search(context, context + 8192, start.begin(), start.end());
    ASSERT_LT(theirs, context + 8000);
    int same = 0;
    constexpr int kFrames = 600;
    for (int frame = 0; frame < kFrames; ++frame) {
        Samples lsp = walk.next();
        const Samples before(theirs, theirs + 40);
        Samples history = before;
        Samples historyToo = before;
        int16_t words[2];
        int16_t own[4];
        Samples lsf(10);
        Samples quantised(10);
        Samples frequencies(10);
        ASSERT_EQ(vekStsNoErr, veksLSPToLSF_G729_16s(lsp.data(), lsf.data()));
        ASSERT_EQ(vekStsNoErr, veksLSFQuant_G729_16s(lsf.data(), historyToo.data(), frequencies.data(), own));
        ASSERT_EQ(vekStsNoErr, veksLSPQuant_G729_16s(lsp.data(), history.data(), quantised.data(), words));
        ASSERT_EQ(words[0], own[0] << 7 | own[1]);
        ASSERT_EQ(words[1], own[2] << 5 | own[3]);
        const Criteria criteria(rowOf(lsf), rowsOf(before).data(), MAPredictor, MAPredictorSum);
        expectLeast(criteria, speechBooks(), static_cast<size_t>(own[0]), static_cast<size_t>(own[1]),
                    static_cast<size_t>(own[2]), static_cast<size_t>(own[3]), 3);
        if (HasFatalFailure()) {
            FAIL() << frame;
        }
        uint16_t index[4];
        Samples want(10);
        LSPQuantization(context, lsp.data(), want.data(), index);
        if (std::equal(own, own + 4, index)) {
            ++same;
            for (size_t i = 0; i < 10; ++i) {
                ASSERT_NEAR(want[i], quantised[i], 20) << frame;
            }
            ASSERT_EQ(Samples(theirs, theirs + 40), history);
        }
    }
    RecordProperty("same", same);
    EXPECT_GT(same, 0);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(LsfQuantiserOracle, EachStageOfTheFloatingFormTakesTheLeastByTheTablesOfTheOtherCodec) {
#ifdef ORACLE_G729
    Walk walk(5);
    std::vector<float> history;
    for (const int16_t v : startOfHistory()) {
        history.push_back(static_cast<float>(v) / 8192);
    }
    for (int frame = 0; frame < 600; ++frame) {
        std::vector<float> lsp;
        Row lsf{};
        for (const int16_t v : walk.next()) {
            lsf[lsp.size()] = 8192 * std::acos(v / 32768.0);
            lsp.push_back(static_cast<float>(v) / 32768);
        }
        std::array<Row, 4> before{};
        for (size_t k = 0; k < 40; ++k) {
            before[k / 10][k % 10] = 8192.0 * history[k];
        }
        std::vector<float> frequencies(10);
        std::vector<float> pairs(10);
        int32_t words[2];
        ASSERT_EQ(vekStsNoErr,
                  veksLSPQuant_G729E_32f(lsp.data(), history.data(), frequencies.data(), pairs.data(), words));
        const Criteria criteria(lsf, before.data(), MAPredictor, MAPredictorSum);
        expectLeast(criteria, speechBooks(), static_cast<size_t>(words[0] >> 7), static_cast<size_t>(words[0] & 127),
                    static_cast<size_t>(words[1] >> 5), static_cast<size_t>(words[1] & 31), 0.05);
        if (HasFatalFailure()) {
            FAIL() << frame;
        }
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(LsfQuantiserOracle, EachStageOfTheNoiseFormTakesTheLeastByTheTablesOfTheOtherCodec) {
#ifdef ORACLE_G729
    Walk walk(4);
    Samples theirs = startOfHistory();
    constexpr int kFrames = 600;
    for (int frame = 0; frame < kFrames; ++frame) {
        Samples lsp = walk.next();
        Samples lsf(10);
        ASSERT_EQ(vekStsNoErr, veksLSPToLSF_G729_16s(lsp.data(), lsf.data()));
        Samples history = theirs;
        Samples quantised(10);
        int16_t index[3];
        const Criteria criteria(rowOf(lsf), rowsOf(history).data(), noiseMAPredictor, noiseMAPredictorSum);
        ASSERT_EQ(vekStsNoErr, veksLSFQuant_G729B_16s(lsf.data(), history.data(), quantised.data(), index));
        expectLeast(criteria, noiseBooks(), static_cast<size_t>(index[0]), static_cast<size_t>(index[1]),
                    static_cast<size_t>(index[2]), static_cast<size_t>(index[2]), 1);
        if (HasFatalFailure()) {
            FAIL() << frame;
        }
        // The other codec's history, so that the frames do not depend on our choices.
        uint8_t want[3];
        Samples wantLsp(10);
        noiseLSPQuantization(reinterpret_cast<int16_t(*)[10]>(theirs.data()), lsp.data(), wantLsp.data(), want);
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

} // namespace
