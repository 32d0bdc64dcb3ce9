// Filters, conversions, ISF quantisers, DTX histories and voice activity of AMR-WB against two independent open codecs.
// Their step functions are in no public header: they and their records are declared here, and the packages' headers
// tell whether to link.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "samples.h"
#include "vekcore.h"
#include "veksc.h"

#if __has_include(<vo-amrwbenc/enc_if.h>) && __has_include(<opencore-amrwb/dec_if.h>)
#define ORACLE_AMRWB 1
#include "amrwbflt_steps.h"

extern "C" {
struct EncoderHistory {
    int16_t isf[128];
    int16_t energy[8];
    int16_t place;
    int16_t energyIndex;
    int16_t seed;
    int16_t hangover;
    int16_t elapsed;
    int32_t distances[28];
    int32_t sums[8];
};
struct ActivityRecordWb {
    int16_t noise[12], average[12], old[12], sub[12];
    int16_t filter5[10], filter3[6];
    int16_t burst, hang, stationary, flags, tone, frames, largest, active, speech;
    int32_t lastPower;
};
void Preemph(int16_t* x, int16_t mu, int16_t n, int16_t* mem);
int16_t voAWB_dtx_buffer(EncoderHistory* s, int16_t* isf, int32_t energy, int16_t mode);
int16_t wb_vad(ActivityRecordWb* s, int16_t* x);
int16_t wb_vad_reset(ActivityRecordWb* s);
// The decoder's package keeps its names as they are in C.
struct DecoderHistory {
    int16_t before[5];
    int16_t isf[16], isfOld[16];
    int16_t seed;
    int16_t history[128];
    int16_t energy[8];
    int16_t place;
    int16_t behind[10];
};
void Dpisf_2s_36b(int16_t* index, int16_t* isf, int16_t* past, int16_t* old, int16_t* buffer, int16_t bfi,
                  int16_t update);
void Isp_Az(int16_t* isp, int16_t* a, int16_t m, int16_t scaling);
void dtx_dec_amr_wb_activity_update(DecoderHistory* s, int16_t* isf, int16_t* x);
}
#endif

#if defined(ORACLE_AMRWB)

namespace {

constexpr VekSpchBitRate kRates[9] = {VEK_SPCHBR_6600,  VEK_SPCHBR_8850,  VEK_SPCHBR_12650,
                                      VEK_SPCHBR_14250, VEK_SPCHBR_15850, VEK_SPCHBR_18250,
                                      VEK_SPCHBR_19850, VEK_SPCHBR_23050, VEK_SPCHBR_23850};

int loudness(std::mt19937& random) {
    return static_cast<int>(std::pow(10.0, std::uniform_real_distribution<double>(0.7, 4.5)(random)));
}

// Pairs in falling order with a wandering distance, the last by itself.
Samples pairs(std::mt19937& random, int order = 16, double least = 0.3) {
    std::vector<double> gaps(static_cast<size_t>(order));
    double sum = 0;
    for (double& g : gaps) {
        g = std::uniform_real_distribution<double>(least, 1.7)(random);
        sum += g;
    }
    Samples isp;
    double at = 0;
    for (int i = 0; i < order - 1; ++i) {
        at += gaps[static_cast<size_t>(i)] / sum;
        isp.push_back(static_cast<int16_t>(std::lround(32767 * std::cos(3.14159265 * at))));
    }
    isp.push_back(static_cast<int16_t>(pick(random, -20000, 20000)));
    return isp;
}

Samples coefficients(std::mt19937& random, double least = 0.3) {
    Samples isp = pairs(random, 16, least);
    Samples a(17);
    voAWB_Isp_Az(isp.data(), a.data(), 16, 0);
    return a;
}

Samples frequencies(std::mt19937& random, double least = 0.3) {
    Samples isp = pairs(random, 16, least);
    Samples isf(16);
    Isp_isf(isp.data(), isf.data(), 16);
    return isf;
}

TEST(AmrWbOracle, ResidualHasTheSameBits) {
    std::mt19937 random(1);
    for (int round = 0; round < 400; ++round) {
        Samples a = coefficients(random);
        Samples x = noise(random, 80, std::min(loudness(random), 8000));
        Samples mine(64), theirs(64);
        voAWB_Residu(a.data(), x.data() + 16, theirs.data(), 64);
        ASSERT_EQ(0, veksResidualFilter_AMRWB_16s_Sfs(a.data(), 16, x.data() + 16, mine.data(), 64, 11));
        ASSERT_EQ(theirs, mine);
        ASSERT_EQ(0, veksResidualFilter_Low_16s_Sfs(a.data(), 16, x.data() + 16, mine.data(), 64, 11));
        ASSERT_EQ(theirs, mine);
    }
}

TEST(AmrWbOracle, EmphasisHasTheSameBits) {
    std::mt19937 random(2);
    for (int round = 0; round < 600; ++round) {
        // What leaves 16 bits wraps there.
        const Samples x = noise(random, 64, std::min(loudness(random), 8000));
        const auto mu = static_cast<int16_t>(round % 2 != 0 ? 22282 : pick(random, 0, 24000));
        const auto before = static_cast<int16_t>(pick(random, -8000, 8000));
        struct Case {
            void (*theirs)(int16_t*, int16_t, int16_t, int16_t*);
            VekStatus (*mine)(int16_t, int16_t*, int16_t*);
        };
        const Case cases[] = {
            {Preemph,
             [](int16_t g, int16_t* s, int16_t* m) { return veksPreemphasize_AMRWB_16s_ISfs(g, s, 64, 15, m); }},
            {Preemph2,
             [](int16_t g, int16_t* s, int16_t* m) { return veksPreemphasize_AMRWB_16s_ISfs(g, s, 64, 14, m); }},
            {Deemph2, [](int16_t g, int16_t* s, int16_t* m) { return veksDeemphasize_AMRWB_NR_16s_I(g, s, 64, m); }},
            {Deemph2,
             [](int16_t g, int16_t* s, int16_t* m) { return veksDeemphasize_AMRWBE_NR_16s_I(g, 14, s, 64, m); }},
            {Deemph,
             [](int16_t g, int16_t* s, int16_t* m) { return veksDeemphasize_AMRWBE_NR_16s_I(g, 15, s, 64, m); }},
        };
        for (const Case& c : cases) {
            Samples mine = x, theirs = x;
            int16_t m1 = before, m2 = before;
            c.theirs(theirs.data(), mu, 64, &m1);
            ASSERT_EQ(0, c.mine(mu, mine.data(), &m2));
            ASSERT_EQ(theirs, mine) << &c - cases;
            ASSERT_EQ(m1, m2);
        }
    }
}

TEST(AmrWbOracle, SynthesisAndDeemphasisOf32BitsHaveTheSameBits) {
    std::mt19937 random(3);
    int frames = 0;
    for (int round = 0; round < 300; ++round) {
        Samples a = coefficients(random);
        int16_t high[16 + 64] = {}, low[16 + 64] = {};
        std::vector<int32_t> mine(80);
        int16_t m1 = 0, m2 = 0;
        const auto q = static_cast<int16_t>(pick(random, 0, 4));
        Samples scaled = a;
        scaled[0] = static_cast<int16_t>(a[0] >> q);
        for (int frame = 0; frame < 4; ++frame) {
            Samples x = noise(random, 64, std::min(loudness(random), 120));
            Samples y1(64), y2(64);
            Syn_filt_32(a.data(), 16, x.data(), q, high + 16, low + 16, 64);
            ASSERT_EQ(0, veksSynthesisFilter_AMRWB_16s32s_I(scaled.data(), 16, x.data(), mine.data() + 16, 64));
            for (int i = 16; i < 80; ++i) {
                ASSERT_EQ(high[i] * 65536 + low[i] * 16, mine[static_cast<size_t>(i)]) << round << " " << i;
            }
            // Beyond 28 bits it does not saturate there.
            if (std::any_of(mine.begin() + 16, mine.end(), [](int v) { return std::abs(v) >> 28 != 0; })) {
                break;
            }
            deemphasis_32(high + 16, low + 16, y1.data(), 22282, 64, &m1);
            ASSERT_EQ(0, veksDeemphasize_AMRWB_32s16s(22282, mine.data() + 16, y2.data(), 64, &m2));
            ASSERT_EQ(y1, y2);
            ASSERT_EQ(m1, m2);
            ++frames;
            std::copy_n(high + 64, 16, high);
            std::copy_n(low + 64, 16, low);
            std::copy_n(mine.begin() + 64, 16, mine.begin());
        }
    }
    EXPECT_GT(frames, 800);
}

TEST(AmrWbOracle, HighPassFiltersHaveTheSameBits) {
    std::mt19937 random(4);
    for (int round = 0; round < 200; ++round) {
        int16_t memory[6] = {};
        char mine[32];
        ASSERT_EQ(0, veksHighPassFilterInit_AMRWB_16s(mine));
        const bool low = round % 2 != 0;
        for (int frame = 0; frame < 5; ++frame) {
            Samples x = noise(random, 256, std::min(loudness(random), 14000));
            Samples y(256);
            ASSERT_EQ(0, veksHighPassFilter_AMRWB_16s_Sfs(x.data(), y.data(), 256, mine, low ? 14 : 12));
            (low ? HP50_12k8 : HP400_12k8)(x.data(), 256, memory);
            ASSERT_EQ(x, y) << round;
        }
    }
}

TEST(AmrWbOracle, ConversionsHaveTheSameBitsForEveryValue) {
    Samples in(16), theirs(16), mine(16);
    for (int x = -32768; x <= 32767; ++x) {
        std::fill(in.begin(), in.end(), static_cast<int16_t>(x));
        Isp_isf(in.data(), theirs.data(), 16);
        ASSERT_EQ(0, veksISPToISF_Norm_AMRWB_16s(in.data(), mine.data(), 16));
        ASSERT_EQ(theirs, mine) << x;
    }
    // The last frequency is a half of the others' kind.
    for (int x = 0; x < 16384; ++x) {
        std::fill(in.begin(), in.end(), static_cast<int16_t>(x));
        in[15] = static_cast<int16_t>(x / 2);
        Samples frequencies = in;
        voAWB_Isf_isp(frequencies.data(), theirs.data(), 16);
        ASSERT_EQ(0, veksISFToISP_AMRWB_16s(in.data(), mine.data(), 16));
        ASSERT_EQ(theirs, mine) << x;
    }
}

TEST(AmrWbOracle, ConversionsHaveTheSameBits) {
    std::mt19937 random(5);
    for (int round = 0; round < 3000; ++round) {
        Samples isp = pairs(random, 16, round % 3 == 0 ? 0.15 : 0.3);
        Samples f1(16), f2(16);
        Isp_isf(isp.data(), f1.data(), 16);
        ASSERT_EQ(0, veksISPToISF_Norm_AMRWB_16s(isp.data(), f2.data(), 16));
        ASSERT_EQ(f1, f2);
        Samples p1(16), p2(16);
        voAWB_Isf_isp(f1.data(), p1.data(), 16);
        ASSERT_EQ(0, veksISFToISP_AMRWB_16s(f1.data(), p2.data(), 16));
        ASSERT_EQ(p1, p2);
        Samples a1(17), a2(17), a3(17);
        voAWB_Isp_Az(isp.data(), a1.data(), 16, 1);
        Isp_Az(isp.data(), a3.data(), 16, 1);
        ASSERT_EQ(0, veksISPToLPC_AMRWB_16s(isp.data(), a2.data(), 16));
        ASSERT_EQ(a1, a2) << round;
        ASSERT_EQ(a3, a2) << round;
        Samples wide = pairs(random, 20, 0.4);
        Samples w1(21), w2(21);
        voAWB_Isp_Az(wide.data(), w1.data(), 20, 1);
        ASSERT_EQ(0, veksISPToLPC_AMRWB_16s(wide.data(), w2.data(), 20));
        ASSERT_EQ(w1, w2) << round;
    }
}

TEST(AmrWbOracle, PairsOfCoefficientsHaveTheSameBits) {
    std::mt19937 random(6);
    int lost = 0;
    for (int round = 0; round < 3000; ++round) {
        Samples a = round % 10 == 9 ? noise(random, 17, 4096) : coefficients(random, 0.1);
        a[0] = 4096;
        // Coefficients near the end of their range make sums wrap there.
        if (std::any_of(a.begin(), a.end(), [](int v) { return std::abs(v) > 24576; })) {
            continue;
        }
        Samples old = pairs(random);
        Samples p1(16), p2(16);
        Az_isp(a.data(), p1.data(), old.data());
        const VekStatus status = veksLPCToISP_AMRWB_16s(a.data(), p2.data(), old.data());
        ASSERT_EQ(p1, p2) << round;
        ASSERT_EQ(status == vekStsUnstableFilter, p2 == old);
        lost += status == vekStsUnstableFilter ? 1 : 0;
    }
    EXPECT_GT(lost, 100);
    EXPECT_LT(lost, 600);
}

TEST(AmrWbOracle, AdaptiveGainHasTheSameBits) {
    std::mt19937 random(7);
    for (int round = 0; round < 1000; ++round) {
        Samples x = noise(random, 64, std::min(loudness(random), 4000));
        Samples y = noise(random, 64, std::min(loudness(random), 4000));
        const double share = pick(random, -4, 6) / 4.0;
        for (size_t i = 0; i < 64; ++i) {
            const int half = x[i] / 2;
            x[i] = static_cast<int16_t>(half + share * y[i]);
        }
        Samples c1(4), c2(4);
        int16_t gain = -1;
        const int16_t expected = voAWB_G_pitch(x.data(), y.data(), c1.data(), 64);
        ASSERT_EQ(0, veksAdaptiveCodebookGainCoeff_AMRWB_16s(x.data(), y.data(), c2.data(), &gain, 64));
        ASSERT_EQ(expected, gain);
        ASSERT_EQ(c1, c2);
    }
}

TEST(AmrWbOracle, QuantiserChoosesTheSameIndicesOverRunsOfFrames) {
    std::mt19937 random(8);
    for (const VekSpchBitRate mode : kRates) {
        const bool lowest = mode == VEK_SPCHBR_6600;
        Samples r1(16), r2(16);
        for (int frame = 0; frame < 150; ++frame) {
            Samples isf = frequencies(random, 0.2);
            Samples q1(16), q2(16), i1(7), i2(7);
            (lowest ? Qpisf_2s_36b : Qpisf_2s_46b)(isf.data(), q1.data(), r1.data(), i1.data(), 4);
            ASSERT_EQ(0, veksISFQuant_AMRWB_16s(isf.data(), r2.data(), q2.data(), i2.data(), mode));
            ASSERT_EQ(i1, i2);
            ASSERT_EQ(q1, q2);
            ASSERT_EQ(r1, r2);
        }
    }
}

// The codec's distances do not saturate: numbers that keep them within 31 bits.
TEST(AmrWbOracle, QuantisersChooseTheSameIndicesOfNumbersFarFromTheBooks) {
    std::mt19937 random(12);
    for (int round = 0; round < 600; ++round) {
        Samples isf = frequencies(random, 0.2);
        const Samples wander = noise(random, 16, 11000);
        std::transform(isf.begin(), isf.end(), wander.begin(), isf.begin(),
                       [](int a, int b) { return static_cast<int16_t>(a + b); });
        Samples r1 = noise(random, 16, 2000);
        Samples r2 = r1;
        const bool lowest = round % 2 == 0;
        Samples q1(16), q2(16), i1(7), i2(7);
        (lowest ? Qpisf_2s_36b : Qpisf_2s_46b)(isf.data(), q1.data(), r1.data(), i1.data(), 4);
        ASSERT_EQ(0, veksISFQuant_AMRWB_16s(isf.data(), r2.data(), q2.data(), i2.data(),
                                            lowest ? VEK_SPCHBR_6600 : VEK_SPCHBR_8850));
        ASSERT_EQ(i1, i2) << round;
        ASSERT_EQ(q1, q2) << round;
        ASSERT_EQ(r1, r2) << round;
        Samples n1(5), n2(5);
        ASSERT_EQ(0, veksISFQuantDTX_AMRWB_16s(isf.data(), q2.data(), n2.data()));
        voAWB_Qisf_ns(isf.data(), q1.data(), n1.data());
        ASSERT_EQ(n1, n2) << round;
        ASSERT_EQ(q1, q2) << round;
    }
}

TEST(AmrWbOracle, DecodedFrequenciesHaveTheSameBitsWithBadFramesToo) {
    std::mt19937 random(9);
    for (const VekSpchBitRate mode : {VEK_SPCHBR_6600, VEK_SPCHBR_8850, VEK_SPCHBR_23850}) {
        const bool lowest = mode == VEK_SPCHBR_6600;
        const int sizes[2][7] = {{256, 256, 64, 128, 128, 32, 32}, {256, 256, 128, 128, 64, 1, 1}};
        Samples r1(16), r2(16), m1(48), m2(48), old(16);
        for (int frame = 0; frame < 600; ++frame) {
            Samples index(7);
            for (size_t i = 0; i < 7; ++i) {
                index[i] = static_cast<int16_t>(pick(random, 0, sizes[lowest ? 1 : 0][i] - 1));
            }
            const auto bad = static_cast<int16_t>(pick(random, 0, 3) == 0 ? 1 : 0);
            Samples q1(16), q2(16), before = old;
            (lowest ? Dpisf_2s_36b : Dpisf_2s_46b)(index.data(), q1.data(), r1.data(), before.data(), m1.data(), bad,
                                                   1);
            ASSERT_EQ(
                0, veksISFQuantDecode_AMRWB_16s(index.data(), q2.data(), r2.data(), old.data(), m2.data(), bad, mode));
            ASSERT_EQ(q1, q2);
            ASSERT_EQ(r1, r2);
            ASSERT_EQ(m1, m2);
            old = q2;
        }
    }
}

TEST(AmrWbOracle, ComfortNoiseFrequenciesHaveTheSameBits) {
    std::mt19937 random(10);
    for (int round = 0; round < 600; ++round) {
        Samples isf = frequencies(random, 0.2);
        Samples q1(16), q2(16), i1(5), i2(5), d(16);
        Samples copy = isf;
        voAWB_Qisf_ns(copy.data(), q1.data(), i1.data());
        ASSERT_EQ(0, veksISFQuantDTX_AMRWB_16s(isf.data(), q2.data(), i2.data()));
        ASSERT_EQ(i1, i2);
        Disf_ns(i1.data(), q1.data());
        ASSERT_EQ(q1, q2);
        ASSERT_EQ(0, veksISFQuantDecodeDTX_AMRWB_16s(i2.data(), d.data()));
        ASSERT_EQ(q1, d);
    }
}

TEST(AmrWbOracle, HistoriesHaveTheSameBits) {
    std::mt19937 random(11);
    for (int16_t rate = 0; rate < 9; ++rate) {
        static EncoderHistory encoder;
        static DecoderHistory decoder;
        encoder = {};
        decoder = {};
        encoder.place = decoder.place = 7;
        int16_t p1 = 7, p2 = 7;
        Samples s1(128), s2(128), e1(8), e2(8);
        for (int frame = 0; frame < 40; ++frame) {
            Samples x = noise(random, 256, frame % 7 == 6 ? 0 : std::min(loudness(random), 2500));
            Samples isf = frequencies(random);
            isf.reserve(isf.size() + 2); // the encoder's copy reads as far
            int64_t energy = 0;
            for (const int16_t v : x) {
                energy += v * v;
            }
            ASSERT_LT(energy, 1 << 30);
            voAWB_dtx_buffer(&encoder, isf.data(), static_cast<int32_t>(energy), rate);
            ASSERT_EQ(0, veksEncDTXBuffer_AMRWB_16s(x.data(), isf.data(), &p1, s1.data(), e1.data(), kRates[rate]));
            ASSERT_EQ(encoder.place, p1);
            ASSERT_TRUE(std::equal(s1.begin(), s1.end(), encoder.isf));
            ASSERT_TRUE(std::equal(e1.begin(), e1.end(), encoder.energy));
            dtx_dec_amr_wb_activity_update(&decoder, isf.data(), x.data());
            ASSERT_EQ(0, veksDecDTXBuffer_AMRWB_16s(x.data(), isf.data(), &p2, s2.data(), e2.data()));
            ASSERT_EQ(decoder.place, p2);
            ASSERT_TRUE(std::equal(s2.begin(), s2.end(), decoder.history));
            ASSERT_TRUE(std::equal(e2.begin(), e2.end(), decoder.energy));
        }
    }
}

TEST(AmrWbOracle, VoiceActivityDecidesAlikeOverLongSignals) {
    std::mt19937 random(12);
    int speech = 0;
    int frames = 0;
    for (int run = 0; run < 12; ++run) {
        ActivityRecordWb theirs = {};
        wb_vad_reset(&theirs);
        std::vector<char> mine(400);
        int size = 0;
        ASSERT_EQ(0, veksVADGetSize_AMRWB_16s(&size));
        ASSERT_LE(size, 400);
        ASSERT_EQ(0, veksVADInit_AMRWB_16s(mine.data()));
        int16_t tone = 0;
        double phase = 0;
        for (int part = 0; part < 40; ++part) {
            const int kind = pick(random, 0, 4);
            const double level = std::pow(10.0, std::uniform_real_distribution<double>(0.3, 4.2)(random));
            const double period = pick(random, 20, 200);
            for (int f = 0; f < 10; ++f) {
                Samples x(256);
                for (int16_t& v : x) {
                    const double hiss = std::uniform_real_distribution<double>(-1, 1)(random);
                    phase = phase + 1 >= period ? 0 : phase + 1;
                    const double voice = std::exp(-phase / 9) * std::cos(phase * 0.8);
                    const double shape = kind == 0   ? hiss
                                         : kind == 1 ? std::sin(6.2831853 * phase / period)
                                         : kind == 2 ? 0.003 * hiss
                                                     : voice + 0.1 * hiss;
                    v = static_cast<int16_t>(std::clamp(std::lround(level * shape), -32768L, 32767L));
                }
                theirs.tone = tone = static_cast<int16_t>((tone >> 1) | (kind == 1 ? 0x4000 : 0));
                int16_t flag = -1;
                const int16_t expected = wb_vad(&theirs, x.data());
                ASSERT_EQ(0, veksVAD_AMRWB_16s(x.data(), mine.data(), &tone, &flag));
                ASSERT_EQ(expected, flag) << run << " " << part << " " << f;
                ASSERT_EQ(theirs.tone, tone);
                speech += flag;
                ++frames;
            }
        }
    }
    EXPECT_GT(speech, frames / 10);
    EXPECT_LT(speech, frames * 9 / 10);
}

} // namespace

#else

TEST(AmrWbOracle, NeedsTheOpenCodecs) {
    GTEST_SKIP() << "libvo-amrwbenc-dev and libopencore-amrwb-dev are not installed";
}

#endif
