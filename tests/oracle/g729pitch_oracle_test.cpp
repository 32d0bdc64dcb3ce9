// Pitch and gain steps of G.729 against independent open codecs.
// Their step functions are in no public header: they are declared here, and the package's header tells whether to link.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "amrnb_pitch.h"
#include "noise.h"
#include "veksc.h"

#ifdef ORACLE_AMRNB
extern "C" {
void agc(int16_t* gain, int16_t* in, int16_t* out, int16_t factor, int16_t n, int* overflow);
int16_t Pitch_ol(void* vad, int mode, int16_t* signal, int16_t shortest, int16_t longest, int16_t n, int16_t half,
                 int dtx, int* overflow);
}
#endif

#if __has_include(<bcg729/encoder.h>)
#define ORACLE_BCG729 1
extern "C" {
uint16_t findOpenLoopPitchDelay(int16_t* signal);
void adaptativeCodebookSearch(int16_t* excitation, int16_t* shortest, int16_t* longest, int16_t* h, int16_t* target,
                              int16_t* delay, int16_t* fraction, uint16_t* code, uint16_t offset);
}
#endif

namespace {

// Multiples of four, so that quarters lose nothing.
[[maybe_unused]] Samples quarterable(std::mt19937& random, int n, int level) {
    Samples v = noise(random, n, -level / 4, level / 4);
    for (int16_t& e : v) {
        e = static_cast<int16_t>(4 * e);
    }
    return v;
}

// The excitation for each of two searches, target and response.
struct SearchData {
    Samples x, target, h, theirs;
};

[[maybe_unused]] SearchData searchData(std::mt19937& random) {
    const Samples x = noise(random, 194, -1000, 1000);
    const Samples target = noise(random, 40, -2000, 2000);
    return {x, target, decayingResponse(random, 2000), x};
}

// Noise through a resonance and a delay loop: 223 samples with a pitch.
[[maybe_unused]] Samples voiced(std::mt19937& random, int level) {
    const auto period = static_cast<size_t>(noise(random, 1, 20, 143)[0]);
    std::vector<double> y(600);
    Samples x;
    for (size_t i = 2; i < y.size(); ++i) {
        y[i] = noise(random, 1, -level / 8, level / 8)[0] + (i > period ? 0.8 * y[i - period] : 0);
        if (i >= y.size() - 223) {
            x.push_back(static_cast<int16_t>(std::max(-32768.0, std::min(32767.0, y[i] + 0.7 * y[i - 1]))));
        }
    }
    return x;
}

// The criteria of the open-loop search of Annex A in double precision: correlations of every second sample of the frame
// choose within three ranges of delays, then the normalised ones among the ranges, shorter ones favoured.
class OpenLoop {
public:
    explicit OpenLoop(const int16_t* x) {
        for (size_t lag = 20; lag <= 143; ++lag) {
            double energy = 1e-9;
            for (int n = 0; n < 80; n += 2) {
                const double past = x[n - static_cast<int>(lag)];
                m_product[lag] += x[n] * past;
                energy += past * past;
            }
            m_root[lag] = std::sqrt(energy);
        }
        for (int n = 0; n < 80; n += 2) {
            m_level += double{1} * x[n] * x[n];
        }
        m_level = std::sqrt(m_level) + 1e-9;
        m_best[0] = best(20, 39, 1);
        m_best[1] = best(40, 79, 1);
        m_best[2] = best(80, 142, 2);
        m_best[2] = best(std::max(m_best[2] - 1, 80), m_best[2] + 1, 1);
    }

    // How much less of the criterion that parts them one delay has than another, as a part of all that there can be.
    double lack(int one, int other) const {
        const size_t range = rangeOf(one);
        const auto first = static_cast<size_t>(one);
        const auto second = static_cast<size_t>(other);
        if (range == rangeOf(other)) {
            return (m_product[second] - m_product[first]) / (m_level * std::max(m_root[first], m_root[second]));
        }
        return (weighted(rangeOf(other)) - weighted(range)) / m_level;
    }

private:
    std::array<double, 144> m_product{};
    std::array<double, 144> m_root{};
    double m_level = 0;
    int m_best[3] = {};

    static size_t rangeOf(int lag) { return lag < 40 ? 0 : lag < 80 ? 1 : 2; }
    int best(int from, int to, int step) const {
        int found = from;
        for (int lag = from; lag <= to; lag += step) {
            found = m_product[static_cast<size_t>(lag)] > m_product[static_cast<size_t>(found)] ? lag : found;
        }
        return found;
    }
    double normalised(size_t range) const {
        const auto lag = static_cast<size_t>(m_best[range]);
        return m_product[lag] / m_root[lag];
    }
    double weighted(size_t range) const {
        double v = normalised(range);
        for (int times = 2; range < 2 && times <= 3; ++times) {
            if (std::abs(times * m_best[range] - m_best[range + 1]) < 2 * times + 1) {
                v += range == 1 ? normalised(2) / 4 : weighted(1) / 5;
            }
        }
        return v;
    }
};

TEST(GainControlOracle, EqualsTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(1);
    int16_t ours = 4096;
    int16_t theirs = 4096;
    int overflow = 0;
    for (int round = 0; round < 200; ++round) {
        // Multiples of four: the AMR codec drops bits of the energy, not of the samples. Gains that saturate nothing.
        const int level = 200 << (round % 5);
        Samples in = quarterable(random, 40, level);
        Samples x = quarterable(random, 40, 2 * level);
        Samples want = x;
        ASSERT_EQ(vekStsNoErr, veksGainControl_G729A_16s_I(in.data(), x.data(), &ours));
        agc(&theirs, in.data(), want.data(), 29491, 40, &overflow);
        ASSERT_EQ(want, x) << round;
        ASSERT_EQ(theirs, ours);
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(DecodeAdaptiveVectorOracle, EqualsTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(4);
    for (int16_t delay = 20; delay <= 143; ++delay) {
        for (int16_t fraction = -1; fraction <= 1; ++fraction) {
            // Up to the level where no step of the sum saturates: the AMR codec's sums wrap.
            Samples x = noise(random, 194, -15000, 15000);
            Samples want = x;
            const int16_t at[] = {delay, fraction};
            int overflow = 0;
            ASSERT_EQ(vekStsNoErr, veksDecodeAdaptiveVector_G729_16s_I(at, x.data()));
            Pred_lt_3or6(want.data() + 154, delay, fraction, 40, 1, &overflow);
            ASSERT_EQ(want, x) << delay << " " << fraction;
        }
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(OpenLoopPitchOracle, EqualsTheAmrCodecAt7400BitsASecond) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(2);
    constexpr int mode7400 = 4;
    std::vector<int64_t> vad(1000);
    for (int round = 0; round < 400; ++round) {
        Samples x = voiced(random, 16 << (round % 9));
        int overflow = 0;
        int16_t lag = 0;
        ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G729_16s(x.data() + 143, &lag));
        ASSERT_EQ(Pitch_ol(vad.data(), mode7400, x.data() + 143, 20, 143, 80, 0, 0, &overflow), lag) << round;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(OpenLoopPitchOracle, DelaysOfBothFormsAreAsGoodAsThoseOfTheG729Codec) {
#ifdef ORACLE_BCG729
    std::mt19937 random(3);
    int equal = 0;
    int equalFloating = 0;
    double most = 0;
    for (int round = 0; round < 2000; ++round) {
        Samples x = voiced(random, 64 << (round % 8));
        const std::vector<float> y(x.begin(), x.end());
        int16_t lag = 0;
        int floating = 0;
        ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G729A_16s(x.data() + 143, &lag));
        ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G729A_32f(y.data() + 143, &floating));
        // It scales and takes roots in other formats: near ties may fall otherwise.
        const int theirs = findOpenLoopPitchDelay(x.data() + 143);
        equal += lag == theirs ? 1 : 0;
        equalFloating += floating == lag ? 1 : 0;
        if (lag != theirs || floating != lag) {
            const OpenLoop criteria(x.data() + 143);
            most = std::max(
                {most, criteria.lack(lag, theirs), criteria.lack(floating, theirs), criteria.lack(floating, lag)});
        }
    }
    RecordProperty("equal", equal);
    RecordProperty("equalFloating", equalFloating);
    RecordProperty("lack", std::to_string(most));
    EXPECT_LE(most, 0.005);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(AdaptiveSearchOracle, HasTheDelaysOfTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(5);
    for (int round = 0; round < 2000; ++round) {
        auto [x, target, h, theirs] = searchData(random);
        const int16_t open = noise(random, 1, 20, 143)[0];
        const auto second = static_cast<int16_t>(round % 2);
        const AmrLag lag = amrLag(4, open, theirs, target, h, second == 1);
        int16_t got[2] = {};
        Samples vector(40);
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G729_16s(open, target.data(), h.data(), x.data(), got,
                                                                   vector.data(), second));
        ASSERT_EQ(lag.whole, got[0]) << round;
        ASSERT_EQ(lag.fraction, got[1]) << round;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(AdaptiveSearchOracle, HasTheDelaysAndVectorsOfTheG729Codec) {
#ifdef ORACLE_BCG729
    std::mt19937 random(6);
    for (int round = 0; round < 2000; ++round) {
        auto [x, target, h, theirs] = searchData(random);
        const int16_t open = noise(random, 1, 23, 140)[0];
        auto shortest = static_cast<int16_t>(open - 3);
        auto longest = static_cast<int16_t>(open + 3);
        int16_t delay = 0;
        int16_t fraction = 0;
        uint16_t code = 0;
        adaptativeCodebookSearch(theirs.data() + 154, &shortest, &longest, h.data(), target.data(), &delay, &fraction,
                                 &code, 0);
        int16_t got[2] = {};
        Samples vector(40);
        ASSERT_EQ(vekStsNoErr,
                  veksAdaptiveCodebookSearch_G729A_16s(open, target.data(), h.data(), x.data(), got, vector.data(), 0));
        ASSERT_EQ(delay, got[0]) << round;
        ASSERT_EQ(fraction, got[1]) << round;
        ASSERT_EQ(theirs, x);
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(AdaptiveGainOracle, IsWithinOneOfTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        const int level = 100 << (round % 7);
        const Samples h = decayingResponse(random, 2000);
        const Samples vector = noise(random, 40, -level, level);
        Samples target = noise(random, 40, -level, level);
        Samples filtered(40);
        int16_t gain = 0;
        for (int again = 0; again < 2; ++again) {
            ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookGain_G729_16s(target.data(), h.data(), vector.data(),
                                                                     filtered.data(), &gain));
            ASSERT_NEAR(amrPitchGain(target, filtered), gain, 1);
            target = filtered; // now a gain of 1
        }
        EXPECT_NEAR(16384, gain, 2);
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

} // namespace
