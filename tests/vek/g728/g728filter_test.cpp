// Filters of G.728: weighting, synthesis and their cascade, inverse filter, postfilter, against double precision.
#include "g728_reference.h"

namespace {

using namespace g728ref;

using Weighting = Memory<VeksIIRState_G728>;
using Synthesis = Memory<VeksSynthesisFilterState_G728>;
using Cascade = Memory<VeksCombinedFilterState_G728>;
using Adapter = Memory<VeksPostFilterAdapterState_G728>;
using Post = Memory<VeksPostFilterState_G728>;

int16_t clip16(int64_t v) {
    return static_cast<int16_t>(lpref::clip(v, 16));
}

// y[n] = x[n] + sum z x - sum p y in Q14, rounded, over the whole signal.
Samples weighted(const Samples& c, const Samples& x) {
    Samples y(x.size());
    for (size_t n = 0; n < x.size(); ++n) {
        int64_t s = int64_t{16384} * x[n];
        for (size_t i = 1; i <= 10 && i <= n; ++i) {
            s += c[i - 1] * x[n - i] - c[9 + i] * y[n - i];
        }
        y[n] = clip16((s + 8192) >> 14);
    }
    return y;
}

TEST(VekG728Weighting, IsThePoleZeroFilterOverRunsOfAnyLength) {
    std::mt19937 random(1);
    for (int round = 0; round < 20; ++round) {
        const Samples c = noise(random, 20, -2048, 2048);
        const Samples x = noise(random, 400, -16000, 16000);
        const Samples want = weighted(c, x);
        Weighting memory(veksIIR16sGetStateSize_G728_16s);
        ASSERT_EQ(vekStsNoErr, veksIIR16sInit_G728_16s(memory));
        Samples y(400);
        int at = 0;
        for (const int n : {5, 5, 1, 50, 40, 41, 120, 138}) {
            ASSERT_EQ(vekStsNoErr, veksIIR16s_G728_16s(c.data(), x.data() + at, y.data() + at, n, memory));
            at += n;
        }
        ASSERT_EQ(at, 400);
        ASSERT_EQ(y, want) << round;
    }
}

TEST(VekG728Weighting, LoudSumsSaturate) {
    Samples c(20);
    c[0] = 16384;
    c[10] = -16000;
    for (const int16_t loud : {32767, -32768}) {
        const Samples x(60, loud);
        Weighting memory(veksIIR16sGetStateSize_G728_16s);
        ASSERT_EQ(vekStsNoErr, veksIIR16sInit_G728_16s(memory));
        Samples y(60);
        ASSERT_EQ(vekStsNoErr, veksIIR16s_G728_16s(c.data(), x.data(), y.data(), 60, memory));
        EXPECT_EQ(y[59], loud);
        EXPECT_EQ(y, weighted(c, x));
    }
}

TEST(VekG728Weighting, LowestCoefficientsOfLowestSamplesDoNotWrap) {
    Samples c(20);
    std::fill_n(c.begin(), 10, int16_t{-32768});
    const Samples x(15, -32768);
    Weighting memory(veksIIR16sGetStateSize_G728_16s);
    ASSERT_EQ(vekStsNoErr, veksIIR16sInit_G728_16s(memory));
    Samples y(15);
    ASSERT_EQ(vekStsNoErr, veksIIR16s_G728_16s(c.data(), x.data(), y.data(), 15, memory));
    EXPECT_EQ(Samples(14, 32767), Samples(y.begin() + 1, y.end()));
    Adapter adapter(veksPostFilterAdapterGetStateSize_G728);
    ASSERT_EQ(vekStsNoErr, veksPostFilterAdapterInit_G728(adapter));
    Samples error(5);
    for (int v = 0; v < 3; ++v) {
        ASSERT_EQ(vekStsNoErr, veksLPCInverseFilter_G728_16s(x.data() + 5 * v, c.data(), error.data(), adapter));
    }
    EXPECT_EQ(Samples(5, 32767), error);
}

// Both filters in double precision; the memories are those of real numbers.
class Real {
public:
    Real(const Samples& lpc, const Samples& weights) : m_lpc(lpc), m_weights(weights) {}

    // Five samples of speech, and as many after the weighting filter.
    std::array<Reals, 2> next(const Reals& excitation) {
        std::array<Reals, 2> out;
        for (const double e : excitation) {
            double s = e;
            for (size_t i = 0; i < 50; ++i) {
                s -= m_lpc[i] / 16384.0 * past(m_speech, i);
            }
            double w = s;
            for (size_t i = 0; i < 10; ++i) {
                w += m_weights[i] / 16384.0 * past(m_speech, i) - m_weights[i + 10] / 16384.0 * past(m_weighted, i);
            }
            m_speech.push_back(s);
            m_weighted.push_back(w);
            out[0].push_back(s);
            out[1].push_back(w);
        }
        return out;
    }

private:
    static double past(const Reals& x, size_t i) { return i < x.size() ? x[x.size() - 1 - i] : 0; }

    Samples m_lpc;
    Samples m_weights;
    Reals m_speech;
    Reals m_weighted;
};

TEST(VekG728Synthesis, CoderAndDecoderFollowTheFiltersInDoublePrecision) {
    atEveryLevel([] {
        std::mt19937 random(2);
        for (int round = 0; round < 12; ++round) {
            const Samples lpc = predictor(random);
            const Samples weights = weighting(lpc);
            Real real(lpc, weights);
            Synthesis decoder(veksSynthesisFilterGetStateSize_G728_16s);
            Cascade coder(veksCombinedFilterGetStateSize_G728_16s);
            ASSERT_EQ(vekStsNoErr, veksSynthesisFilterInit_G728_16s(decoder));
            ASSERT_EQ(vekStsNoErr, veksCombinedFilterInit_G728_16s(coder));
            Reals wantSpeech;
            Reals gotSpeech;
            Reals wantResponse;
            Reals gotResponse;
            std::uniform_int_distribution<int> pickScale(4, 12);
            for (int v = 0; v < 120; ++v) {
                // Some 10 dB up and down, mantissas of 13 bits.
                const int sfs = pickScale(random) / 2 + 3;
                Samples exc = noise(random, 5, -8000, 8000);
                Samples excAgain = exc;
                Reals excReal;
                for (const int16_t e : exc) {
                    excReal.push_back(std::ldexp(e, -sfs));
                }
                Real quiet = real;
                const Reals rest = quiet.next(Reals(5))[1];
                const Reals out = real.next(excReal)[0];
                int16_t zeroInput[5];
                int16_t speech[5];
                int16_t speechAgain[5];
                int16_t shifts = -1;
                int16_t shiftsAgain = -1;
                ASSERT_EQ(vekStsNoErr,
                          veksCombinedFilterZeroInput_G728_16s(lpc.data(), weights.data(), zeroInput, coder));
                ASSERT_EQ(vekStsNoErr, veksCombinedFilterZeroState_G728_16s(lpc.data(), weights.data(), exc.data(), sfs,
                                                                            speech, &shifts, coder));
                ASSERT_EQ(vekStsNoErr, veksSyntesisFilterZeroInput_G728_16s(lpc.data(), excAgain.data(), sfs,
                                                                            speechAgain, &shiftsAgain, decoder));
                ASSERT_EQ(shifts, shiftsAgain);
                ASSERT_EQ(exc, excAgain);
                int largest = 0;
                for (size_t k = 0; k < 5; ++k) {
                    ASSERT_EQ(speech[k], speechAgain[k]) << v;
                    largest = std::max(largest, std::abs(int{speech[k]}));
                    wantSpeech.push_back(out[k]);
                    gotSpeech.push_back(std::ldexp(speech[k], -shifts));
                    wantResponse.push_back(rest[k]);
                    gotResponse.push_back(zeroInput[k] / 4.0);
                }
                ASSERT_TRUE(largest < 16384 && (largest >= 8190 || shifts == 15)) << largest << " " << shifts;
                // The excitation's own response, from rest.
                Real alone(lpc, weights);
                const Reals own = alone.next(excReal)[0];
                for (size_t k = 0; k < 5; ++k) {
                    const double scaled = std::ldexp(own[k], sfs);
                    if (std::abs(scaled) < 32000) {
                        ASSERT_NEAR(exc[k], scaled, 0.6);
                    }
                }
            }
            EXPECT_GT(snr(wantSpeech, gotSpeech), 66) << round;
            EXPECT_GT(snr(wantResponse, gotResponse), 50) << round;
        }
    });
}

TEST(VekG728Synthesis, ExcitationMeansTheSameAtEachScale) {
    std::mt19937 random(3);
    const Samples lpc = predictor(random);
    Samples first;
    for (int sfs = 0; sfs <= 6; sfs += 3) {
        Synthesis memory(veksSynthesisFilterGetStateSize_G728_16s);
        ASSERT_EQ(vekStsNoErr, veksSynthesisFilterInit_G728_16s(memory));
        Samples all;
        for (int v = 0; v < 40; ++v) {
            Samples exc(5);
            for (size_t k = 0; k < 5; ++k) {
                exc[k] = static_cast<int16_t>((v * 37 + static_cast<int>(k) * 91) % 201 - 100);
                exc[k] = static_cast<int16_t>(exc[k] * (1 << sfs));
            }
            int16_t speech[5];
            int16_t shifts = 0;
            ASSERT_EQ(vekStsNoErr,
                      veksSyntesisFilterZeroInput_G728_16s(lpc.data(), exc.data(), sfs, speech, &shifts, memory));
            all.insert(all.end(), speech, speech + 5);
            all.push_back(shifts);
        }
        if (sfs == 0) {
            first = all;
        } else {
            int unequal = 0;
            for (size_t i = 0; i < all.size(); ++i) {
                unequal = std::max(unequal, std::abs(all[i] - first[i]));
            }
            EXPECT_LE(unequal, 40) << sfs; // the response is rounded at the scale of the excitation
        }
    }
}

TEST(VekG728Synthesis, SpeechIsClippedAt4095) {
    atEveryLevel([] {
        Samples lpc(50);
        lpc[0] = -16000;
        Synthesis memory(veksSynthesisFilterGetStateSize_G728_16s);
        ASSERT_EQ(vekStsNoErr, veksSynthesisFilterInit_G728_16s(memory));
        for (int v = 0; v < 6; ++v) {
            Samples exc(5, v < 3 ? 32767 : -32768);
            int16_t speech[5];
            int16_t shifts = 0;
            ASSERT_EQ(vekStsNoErr,
                      veksSyntesisFilterZeroInput_G728_16s(lpc.data(), exc.data(), 0, speech, &shifts, memory));
            EXPECT_EQ(shifts, 2);
            EXPECT_EQ(speech[4], v < 3 ? 4095 * 4 : -4095 * 4);
            EXPECT_EQ(exc[4], v < 3 ? 32767 : -32768);
        }
    });
}

TEST(VekG728Synthesis, LargestCoefficientsAndMemoriesDoNotWrap) {
    atEveryLevel([] {
        // The prediction of a full memory by 50 coefficients of -2: far beyond 32 bits in Q14.
        const Samples lpc(50, -32768);
        Samples none(50);
        Synthesis memory(veksSynthesisFilterGetStateSize_G728_16s);
        ASSERT_EQ(vekStsNoErr, veksSynthesisFilterInit_G728_16s(memory));
        int16_t speech[5];
        int16_t shifts = 0;
        for (int v = 0; v < 10; ++v) {
            Samples exc(5, 16380);
            ASSERT_EQ(vekStsNoErr,
                      veksSyntesisFilterZeroInput_G728_16s(none.data(), exc.data(), 2, speech, &shifts, memory));
            ASSERT_EQ(speech[0], 16380);
        }
        Samples exc(5);
        ASSERT_EQ(vekStsNoErr,
                  veksSyntesisFilterZeroInput_G728_16s(lpc.data(), exc.data(), 2, speech, &shifts, memory));
        for (const int16_t s : speech) {
            EXPECT_EQ(s, 16380);
        }
    });
}

TEST(VekG728Synthesis, SilenceStaysSilent) {
    std::mt19937 random(4);
    const Samples lpc = predictor(random);
    Synthesis memory(veksSynthesisFilterGetStateSize_G728_16s);
    ASSERT_EQ(vekStsNoErr, veksSynthesisFilterInit_G728_16s(memory));
    Samples exc(5);
    int16_t speech[5] = {1, 1, 1, 1, 1};
    int16_t shifts = 0;
    ASSERT_EQ(vekStsNoErr, veksSyntesisFilterZeroInput_G728_16s(lpc.data(), exc.data(), 15, speech, &shifts, memory));
    for (const int16_t s : speech) {
        EXPECT_EQ(s, 0);
    }
    EXPECT_EQ(shifts, 15);
}

TEST(VekG728InverseFilter, IsThePredictionErrorOverVectors) {
    std::mt19937 random(5);
    const Samples x = noise(random, 200, -16000, 16000);
    const Samples a = noise(random, 10, -6000, 6000);
    Adapter memory(veksPostFilterAdapterGetStateSize_G728);
    ASSERT_EQ(vekStsNoErr, veksPostFilterAdapterInit_G728(memory));
    Samples y(200);
    for (int v = 0; v < 40; ++v) {
        ASSERT_EQ(vekStsNoErr, veksLPCInverseFilter_G728_16s(x.data() + 5 * v, a.data(), y.data() + 5 * v, memory));
    }
    for (size_t n = 0; n < 200; ++n) {
        int64_t s = int64_t{8192} * x[n];
        for (size_t i = 1; i <= 10 && i <= n; ++i) {
            s += a[i - 1] * x[n - i];
        }
        ASSERT_EQ(y[n], clip16((s + 4096) >> 13)) << n;
    }
}

TEST(VekG728InverseFilter, UndoesAFilterAndSaturates) {
    Samples a(10);
    a[0] = -8192;
    Adapter memory(veksPostFilterAdapterGetStateSize_G728);
    ASSERT_EQ(vekStsNoErr, veksPostFilterAdapterInit_G728(memory));
    const Samples x = {-32768, 32767, -32768, 32767, 0};
    Samples y(5);
    ASSERT_EQ(vekStsNoErr, veksLPCInverseFilter_G728_16s(x.data(), a.data(), y.data(), memory));
    EXPECT_EQ(y, (Samples{-32768, 32767, -32768, 32767, -32767}));
}

TEST(VekG728PostFilter, FollowsTheBlocksInDoublePrecision) {
    std::mt19937 random(6);
    const Reals s = speech(6000);
    Samples x(6000);
    for (size_t i = 0; i < x.size(); ++i) {
        x[i] = static_cast<int16_t>(std::lround(4 * s[i]));
    }
    Post memory(veksPostFilterGetStateSize_G728_16s);
    ASSERT_EQ(vekStsNoErr, veksPostFilterInit_G728_16s(memory));
    Reals in(10);
    Reals out(10);
    double scale = 1;
    Reals want;
    Reals got;
    for (size_t v = 40; 5 * v + 5 <= x.size(); ++v) {
        const Samples lpc = predictor(random);
        Samples c(20);
        for (size_t i = 0; i < 10; ++i) {
            c[i] = static_cast<int16_t>(std::lround(lpc[i] * std::pow(0.65, static_cast<double>(i + 1))));
            c[i + 10] = static_cast<int16_t>(std::lround(lpc[i] * std::pow(0.75, static_cast<double>(i + 1))));
        }
        const double b = v % 3 == 0 ? 0 : 0.15;
        const auto gl = static_cast<int16_t>(std::lround(16384 / (1 + b)));
        const auto glb = static_cast<int16_t>(std::lround(65536 * b / (1 + b)));
        const int kp = 20 + static_cast<int>(v * 7 % 121);
        const auto tilt = static_cast<int16_t>(static_cast<int>(v % 9) * 400 - 1600);
        int16_t y[5];
        ASSERT_EQ(vekStsNoErr, veksPostFilter_G728_16s(gl, glb, kp, tilt, c.data(), x.data() + 5 * v, y, memory));
        double before = 0;
        double after = 0;
        Reals filtered;
        for (size_t k = 5 * v; k < 5 * v + 5; ++k) {
            const double longTerm = gl / 16384.0 * x[k] + glb / 65536.0 * x[k - static_cast<size_t>(kp)];
            double f = longTerm;
            for (size_t i = 0; i < 10; ++i) {
                f += c[i] / 16384.0 * in[in.size() - 1 - i] - c[i + 10] / 16384.0 * out[out.size() - 1 - i];
            }
            in.push_back(longTerm);
            filtered.push_back(f + tilt / 16384.0 * out.back());
            out.push_back(f);
            before += std::abs(x[k]);
            after += std::abs(filtered.back());
        }
        const double target = after > 4 ? before / after : 1;
        for (size_t k = 0; k < 5; ++k) {
            scale = 0.99 * scale + 0.01 * target;
            want.push_back(scale * filtered[k]);
            got.push_back(y[k]);
        }
    }
    EXPECT_GT(snr(want, got), 52);
}

TEST(VekG728PostFilter, WithoutCoefficientsGivesTheSignal) {
    std::mt19937 random(7);
    const Samples x = noise(random, 300, -32768, 32767);
    const Samples c(20);
    Post memory(veksPostFilterGetStateSize_G728_16s);
    ASSERT_EQ(vekStsNoErr, veksPostFilterInit_G728_16s(memory));
    for (size_t v = 28; v < 60; ++v) {
        int16_t y[5];
        ASSERT_EQ(vekStsNoErr, veksPostFilter_G728_16s(16384, 0, 140, 0, c.data(), x.data() + 5 * v, y, memory));
        for (size_t k = 0; k < 5; ++k) {
            ASSERT_NEAR(y[k], x[5 * v + k], 2) << v; // shares of 0.99 and 0.01 in 15 bits
        }
    }
}

TEST(VekG728PostFilter, EachOfItsStepsSaturates) {
    const Samples c(20);
    for (const int16_t loud : {32767, -32768}) {
        const Samples x(150, loud);
        Post memory(veksPostFilterGetStateSize_G728_16s);
        ASSERT_EQ(vekStsNoErr, veksPostFilterInit_G728_16s(memory));
        for (int round = 0; round < 3; ++round) {
            // Raised by the long-term part and doubled by the tilt, at the level of the input.
            int16_t y[5];
            ASSERT_EQ(vekStsNoErr,
                      veksPostFilter_G728_16s(16384, 16384, 20, 16384, c.data(), x.data() + 140, y, memory));
            for (const int16_t v : y) {
                EXPECT_EQ(loud, v) << round;
            }
        }
    }
}

TEST(VekG728PostFilter, SaturatesAndComesBackToTheLevel) {
    Samples c(20);
    c[10] = -15800; // a pole at 0.96 lifts the level 28 dB
    const Samples x(400, 20000);
    Post memory(veksPostFilterGetStateSize_G728_16s);
    ASSERT_EQ(vekStsNoErr, veksPostFilterInit_G728_16s(memory));
    int16_t y[5];
    int16_t largest = 0;
    for (size_t v = 28; v < 80; ++v) {
        ASSERT_EQ(vekStsNoErr, veksPostFilter_G728_16s(16384, 0, 140, 0, c.data(), x.data() + 5 * v, y, memory));
        largest = std::max(largest, y[0]);
    }
    EXPECT_GT(largest, 30000);
    EXPECT_LT(y[4], 23000);
}

TEST(VekG728Filters, RefuseWhatTheyCannotTake) {
    Samples x(300);
    int16_t shifts = 0;
    Weighting w(veksIIR16sGetStateSize_G728_16s);
    Synthesis s(veksSynthesisFilterGetStateSize_G728_16s);
    Cascade c(veksCombinedFilterGetStateSize_G728_16s);
    Adapter a(veksPostFilterAdapterGetStateSize_G728);
    Post p(veksPostFilterGetStateSize_G728_16s);
    int16_t* d = x.data() + 150;
    // Memory without a start.
    EXPECT_EQ(vekStsStateErr, veksIIR16s_G728_16s(d, d, d, 5, w));
    EXPECT_EQ(vekStsStateErr, veksSyntesisFilterZeroInput_G728_16s(d, d, 0, d, &shifts, s));
    EXPECT_EQ(vekStsStateErr, veksCombinedFilterZeroInput_G728_16s(d, d, d, c));
    EXPECT_EQ(vekStsStateErr, veksCombinedFilterZeroState_G728_16s(d, d, d, 0, d, &shifts, c));
    EXPECT_EQ(vekStsStateErr, veksLPCInverseFilter_G728_16s(d, d, d, a));
    EXPECT_EQ(vekStsStateErr, veksPostFilter_G728_16s(0, 0, 20, 0, d, d, d, p));
    ASSERT_EQ(vekStsNoErr, veksIIR16sInit_G728_16s(w));
    ASSERT_EQ(vekStsNoErr, veksSynthesisFilterInit_G728_16s(s));
    ASSERT_EQ(vekStsNoErr, veksCombinedFilterInit_G728_16s(c));
    ASSERT_EQ(vekStsNoErr, veksPostFilterInit_G728_16s(p));
    for (const int len : {0, -1, 65537}) {
        EXPECT_EQ(vekStsSizeErr, veksIIR16s_G728_16s(d, d, d, len, w));
    }
    for (const int sfs : {-1, 16}) {
        EXPECT_EQ(vekStsScaleRangeErr, veksSyntesisFilterZeroInput_G728_16s(d, d, sfs, d, &shifts, s));
        EXPECT_EQ(vekStsScaleRangeErr, veksCombinedFilterZeroState_G728_16s(d, d, d, sfs, d, &shifts, c));
    }
    for (const int kp : {19, 141}) {
        EXPECT_EQ(vekStsRangeErr, veksPostFilter_G728_16s(0, 0, kp, 0, d, d, d, p));
    }
    EXPECT_EQ(x, Samples(300));
}

} // namespace
