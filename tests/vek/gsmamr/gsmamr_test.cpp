// Codebooks, gains, conversions and post filter of GSM AMR: literal cases, what must hold of them, and refusals.
#include "checksum.h"
#include "lp_reference.h"
#include "veksc.h"

namespace {

constexpr VekSpchBitRate rates[] = {VEK_SPCHBR_4750,  VEK_SPCHBR_5150,  VEK_SPCHBR_5900,
                                    VEK_SPCHBR_6700,  VEK_SPCHBR_7400,  VEK_SPCHBR_7950,
                                    VEK_SPCHBR_10200, VEK_SPCHBR_12200, VEK_SPCHBR_DTX};

struct Search {
    Samples target;
    Samples residual;
    Samples h;
    Samples vector = Samples(40, 1234); // What was there does not show.
    Samples filtered = Samples(40, 1234);
    Samples words = Samples(10);

    explicit Search(std::mt19937& random)
        : target(noise(random, 40, -2048, 2048)), residual(noise(random, 40, -2048, 2048)),
          h(noise(random, 40, -2048, 2048)) {}
    VekStatus run(VekSpchBitRate mode, int lag = 40, int gain = 0, int subframe = 0) {
        return veksAlgebraicCodebookSearch_GSMAMR_16s(
            static_cast<int16_t>(lag), static_cast<int16_t>(gain), target.data(), residual.data(), h.data(),
            vector.data(), filtered.data(), words.data(), static_cast<int16_t>(subframe), mode);
    }
};

TEST(VekAmrAlgebraicSearch, ItsWordsDecodeToItsVector) {
    atEveryLevel([] {
        std::mt19937 random(1);
        for (int round = 0; round < 40; ++round) {
            for (const VekSpchBitRate mode : rates) {
                Search search(random);
                ASSERT_EQ(vekStsNoErr, search.run(mode, 40, 0, round % 4));
                Samples again(40);
                ASSERT_EQ(vekStsNoErr, veksFixedCodebookDecode_GSMAMR_16s(search.words.data(), again.data(),
                                                                          static_cast<int16_t>(round % 4), mode));
                ASSERT_EQ(search.vector, again) << mode;
            }
        }
    });
}

TEST(VekAmrAlgebraicSearch, FindsThePulsesThatMadeTheTarget) {
    for (const VekSpchBitRate mode : {VEK_SPCHBR_4750, VEK_SPCHBR_5900}) {
        std::mt19937 random(2);
        Search search(random);
        std::fill(search.h.begin(), search.h.end(), 0);
        search.h[0] = 4096;
        std::fill(search.target.begin(), search.target.end(), 0);
        search.target[6] = 3000;
        search.target[28] = -3000;
        ASSERT_EQ(vekStsNoErr, search.run(mode));
        Samples want(40);
        want[6] = 8191;
        want[28] = -8192;
        if (mode == VEK_SPCHBR_4750) {
            EXPECT_EQ(want, search.vector);
            EXPECT_EQ(64 + 1 + 5 * 8, search.words[0]);
            EXPECT_EQ(1, search.words[1]);
        } else {
            EXPECT_EQ(-8192, search.vector[28]);
        }
    }
}

TEST(VekAmrAlgebraicSearch, SharpensTheResponseAndTheVector) {
    std::mt19937 random(3);
    Search search(random);
    std::fill(search.h.begin(), search.h.end(), 0);
    search.h[0] = 4096;
    ASSERT_EQ(vekStsNoErr, search.run(VEK_SPCHBR_7400, 20, 8192));
    EXPECT_EQ(4096, search.h[0]);
    EXPECT_EQ(2048, search.h[20]);
    Samples plain(40);
    ASSERT_EQ(vekStsNoErr, veksFixedCodebookDecode_GSMAMR_16s(search.words.data(), plain.data(), 0, VEK_SPCHBR_7400));
    for (size_t i = 0; i < 20; ++i) {
        EXPECT_EQ(plain[i], search.vector[i]);
        EXPECT_EQ(plain[i + 20] + (plain[i] * 16384 >> 15), search.vector[i + 20]);
    }
}

TEST(VekAmrAlgebraicSearch, SilenceMeansTheTenPulsesOfTheFinestRate) {
    std::mt19937 random(4);
    Search finest(random);
    Search silence = finest;
    ASSERT_EQ(vekStsNoErr, finest.run(VEK_SPCHBR_12200));
    ASSERT_EQ(vekStsNoErr, silence.run(VEK_SPCHBR_DTX));
    EXPECT_EQ(finest.words, silence.words);
}

TEST(VekAmrAlgebraicSearch, StaysInBoundsForTheLoudestResponse) {
    atEveryLevel([] {
        std::mt19937 random(5);
        for (const VekSpchBitRate mode : rates) {
            Search search(random);
            std::fill(search.h.begin(), search.h.end(), 32767);
            std::fill(search.target.begin(), search.target.end(), -32768);
            std::fill(search.residual.begin(), search.residual.end(), -32768);
            ASSERT_EQ(vekStsNoErr, search.run(mode, 17, 32767));
            std::fill(search.target.begin(), search.target.end(), 0);
            ASSERT_EQ(vekStsNoErr, search.run(mode));
        }
    });
}

TEST(VekAmrAlgebraicSearch, SumsOfTheLoudestResponseSaturateStepByStep) {
    // A response of full scale throughout, and the words found for it.
    const std::pair<VekSpchBitRate, Samples> cases[] = {
        {VEK_SPCHBR_4750, {40, 2, 0, 0, 0, 0, 0, 0, 0, 0}},  {VEK_SPCHBR_5900, {66, 2, 0, 0, 0, 0, 0, 0, 0, 0}},
        {VEK_SPCHBR_6700, {475, 6, 0, 0, 0, 0, 0, 0, 0, 0}}, {VEK_SPCHBR_7400, {4301, 13, 0, 0, 0, 0, 0, 0, 0, 0}},
        {VEK_SPCHBR_10200, {0, 1, 0, 1, 5, 2, 1, 0, 0, 0}},  {VEK_SPCHBR_12200, {8, 0, 9, 9, 9, 1, 1, 0, 0, 0}}};
    atEveryLevel([&cases] {
        for (const auto& [mode, words] : cases) {
            std::mt19937 random(1);
            Search search(random);
            for (size_t i = 0; i < 40; ++i) {
                search.target[i] = static_cast<int16_t>(static_cast<int>(i) * 7919 % 2001 - 1000);
                search.residual[i] = static_cast<int16_t>(static_cast<int>(i) * 6101 % 1601 - 800);
                search.h[i] = i * 4999 % 7 < 3 ? 32767 : -32768;
            }
            ASSERT_EQ(vekStsNoErr, search.run(mode, 40, 0, 1));
            EXPECT_EQ(words, search.words) << mode;
        }
    });
}

TEST(VekAmrAlgebraicSearch, LevelsFindTheSamePulsesAtAnyLoudness) {
    // Down to responses whose energies are nothing once they are scaled, and up to those whose sums saturate.
    std::vector<Samples> found;
    atEveryLevel([&found] {
        std::mt19937 random(3);
        Samples all;
        for (int round = 0; round < 300; ++round) {
            const int peaks[] = {0, 1, 3, 40, 2000, 9000, 32767};
            Search search(random);
            const int loudest = peaks[round % 7];
            search.h = noise(random, 40, -loudest, loudest);
            const int strongest = peaks[round / 7 % 7];
            search.target = noise(random, 40, -strongest, strongest);
            if (round % 5 == 0) {
                std::fill(search.h.begin() + 1 + round % 40, search.h.end(), int16_t{0});
            }
            for (const VekSpchBitRate mode : rates) {
                Search one = search;
                ASSERT_EQ(vekStsNoErr, one.run(mode, 40, 0, round % 4));
                all.insert(all.end(), one.words.begin(), one.words.end());
                all.insert(all.end(), one.filtered.begin(), one.filtered.end());
            }
        }
        found.push_back(all);
        EXPECT_EQ(found.front(), found.back());
    });
    // Where sums saturate no property tells one vector from another.
    CheckSum sum;
    sum.add(found.front().data(), found.front().size() * sizeof(int16_t));
    EXPECT_EQ(0x38c3417d32e2c720U, sum.value());
}

TEST(VekAmrAlgebraicSearch, RefusesWhatIsNoneOfTheCodecs) {
    std::mt19937 random(6);
    Search search(random);
    const Samples before = search.h;
    EXPECT_EQ(vekStsBitRateErr, search.run(VEK_SPCHBR_6300));
    EXPECT_EQ(vekStsRangeErr, search.run(VEK_SPCHBR_4750, 16));
    EXPECT_EQ(vekStsRangeErr, search.run(VEK_SPCHBR_4750, 145));
    EXPECT_EQ(vekStsRangeErr, search.run(VEK_SPCHBR_4750, 40, -1));
    EXPECT_EQ(vekStsRangeErr, search.run(VEK_SPCHBR_4750, 40, 0, -1));
    EXPECT_EQ(vekStsRangeErr, search.run(VEK_SPCHBR_4750, 40, 0, 4));
    int16_t* good = search.h.data();
    for (int missing = 0; missing < 6; ++missing) {
        int16_t* p[6];
        for (int i = 0; i < 6; ++i) {
            p[i] = i == missing ? nullptr : good;
        }
        EXPECT_EQ(vekStsNullPtrErr, veksAlgebraicCodebookSearch_GSMAMR_16s(40, 0, p[0], p[1], p[2], p[3], p[4], p[5], 0,
                                                                           VEK_SPCHBR_4750));
    }
    EXPECT_EQ(before, search.h);
}

TEST(VekAmrFixedDecode, PlacesPulsesByHand) {
    Samples vector(40, 7);
    Samples words(10);
    words[0] = 64 + 2 + 3 * 8;
    words[1] = 2;
    ASSERT_EQ(vekStsNoErr, veksFixedCodebookDecode_GSMAMR_16s(words.data(), vector.data(), 1, VEK_SPCHBR_5150));
    Samples want(40);
    want[2 * 5 + 2] = -8192;
    want[3 * 5 + 4] = 8191;
    EXPECT_EQ(want, vector);
    // Ten pulses at lane 0 of each track, twice each: the pairs add up.
    words.assign(10, 0);
    words[2] = 8;
    ASSERT_EQ(vekStsNoErr, veksFixedCodebookDecode_GSMAMR_16s(words.data(), vector.data(), 0, VEK_SPCHBR_DTX));
    want.assign(40, 0);
    want[0] = want[1] = want[3] = want[4] = 8192;
    want[2] = -8192;
    EXPECT_EQ(want, vector);
}

TEST(VekAmrFixedDecode, RefusesWhatIsNoneOfTheCodecs) {
    Samples vector(40, 7);
    const Samples words(10);
    expectNullsRefused(veksFixedCodebookDecode_GSMAMR_16s, words.data(), vector.data(), 0, VEK_SPCHBR_4750);
    EXPECT_EQ(vekStsBitRateErr, veksFixedCodebookDecode_GSMAMR_16s(words.data(), vector.data(), 0, VEK_SPCHBR_8850));
    EXPECT_EQ(vekStsRangeErr, veksFixedCodebookDecode_GSMAMR_16s(words.data(), vector.data(), 4, VEK_SPCHBR_4750));
    EXPECT_EQ(Samples(40, 7), vector);
}

struct Decode {
    Samples exc = Samples(194);
    Samples vector = Samples(40);
    int16_t former = 60;
    int16_t told = 0;

    VekStatus run(int index, int subframe, int bfi, VekSpchBitRate mode, int noisy = 0, int hangover = 0) {
        return veksAdaptiveCodebookDecode_GSMAMR_16s(
            static_cast<int16_t>(index), &former, &told, exc.data(), vector.data(), static_cast<int16_t>(subframe),
            static_cast<int16_t>(bfi), static_cast<int16_t>(noisy), static_cast<int16_t>(hangover), mode);
    }
};

TEST(VekAmrAdaptiveDecode, ABadFrameRepeatsTheFormerLagOneLonger) {
    Decode decode;
    ASSERT_EQ(vekStsNoErr, decode.run(200, 0, 1, VEK_SPCHBR_7400));
    EXPECT_EQ(61, decode.former);
    EXPECT_EQ(88, decode.told);
    decode.former = 143;
    ASSERT_EQ(vekStsNoErr, decode.run(200, 0, 1, VEK_SPCHBR_7400));
    EXPECT_EQ(143, decode.former);
    decode.former = 60;
    ASSERT_EQ(vekStsNoErr, decode.run(470, 0, 1, VEK_SPCHBR_12200));
    EXPECT_EQ(60, decode.former);
    EXPECT_EQ(102, decode.told);
}

TEST(VekAmrAdaptiveDecode, VoicedNoiseTrustsTheIndexAtTheLowRates) {
    for (const VekSpchBitRate mode : {VEK_SPCHBR_4750, VEK_SPCHBR_5150, VEK_SPCHBR_5900}) {
        Decode decode;
        ASSERT_EQ(vekStsNoErr, decode.run(200, 0, 1, mode, 1, 5));
        EXPECT_EQ(88, decode.former);
        decode.former = 60;
        ASSERT_EQ(vekStsNoErr, decode.run(200, 0, 1, mode, 1, 4));
        EXPECT_EQ(61, decode.former);
    }
    Decode decode;
    ASSERT_EQ(vekStsNoErr, decode.run(200, 0, 1, VEK_SPCHBR_6700, 1, 5));
    EXPECT_EQ(61, decode.former);
}

TEST(VekAmrAdaptiveDecode, AnIndexThatNoLagHasCountsAsBad) {
    Decode decode;
    ASSERT_EQ(vekStsNoErr, decode.run(60, 1, 0, VEK_SPCHBR_12200));
    EXPECT_EQ(64, decode.former);
    decode.former = 60;
    ASSERT_EQ(vekStsNoErr, decode.run(61, 1, 0, VEK_SPCHBR_12200));
    EXPECT_EQ(60, decode.former);
}

TEST(VekAmrAdaptiveDecode, AWholeLagRepeatsTheExcitation) {
    Decode decode;
    for (size_t i = 0; i < 154; ++i) {
        decode.exc[i] = static_cast<int16_t>(i % 100 == 0 ? 20000 : 0);
    }
    ASSERT_EQ(vekStsNoErr, decode.run(197 + 15, 0, 0, VEK_SPCHBR_10200)); // 100 samples
    EXPECT_EQ(100, decode.former);
    for (size_t i = 0; i < 40; ++i) {
        EXPECT_NEAR(decode.exc[54 + i], decode.vector[i], 2100) << i;
        EXPECT_EQ(decode.exc[154 + i], decode.vector[i]);
    }
}

TEST(VekAmrAdaptiveDecode, RefusesWhatDoesNotFitItsField) {
    Decode decode;
    decode.vector.assign(40, 7);
    EXPECT_EQ(vekStsRangeErr, decode.run(256, 0, 0, VEK_SPCHBR_10200));
    EXPECT_EQ(vekStsRangeErr, decode.run(512, 2, 0, VEK_SPCHBR_12200));
    EXPECT_EQ(vekStsRangeErr, decode.run(16, 1, 0, VEK_SPCHBR_5900));
    EXPECT_EQ(vekStsRangeErr, decode.run(16, 2, 0, VEK_SPCHBR_4750));
    EXPECT_EQ(vekStsRangeErr, decode.run(32, 3, 0, VEK_SPCHBR_7400));
    EXPECT_EQ(vekStsRangeErr, decode.run(64, 3, 0, VEK_SPCHBR_7950));
    EXPECT_EQ(vekStsRangeErr, decode.run(-1, 0, 0, VEK_SPCHBR_7950));
    EXPECT_EQ(vekStsRangeErr, decode.run(1, 4, 0, VEK_SPCHBR_7950));
    EXPECT_EQ(vekStsRangeErr, decode.run(1, 0, 2, VEK_SPCHBR_7950));
    EXPECT_EQ(vekStsBitRateErr, decode.run(1, 0, 0, VEK_SPCHBR_DTX));
    decode.former = 16;
    EXPECT_EQ(vekStsRangeErr, decode.run(1, 0, 0, VEK_SPCHBR_7950));
    decode.former = 145;
    EXPECT_EQ(vekStsRangeErr, decode.run(1, 0, 0, VEK_SPCHBR_7950));
    EXPECT_EQ(Samples(40, 7), decode.vector);
    int16_t lag = 60;
    int16_t* good = decode.exc.data();
    for (int missing = 0; missing < 4; ++missing) {
        int16_t* p[4] = {&lag, &lag, good, good};
        p[missing] = nullptr;
        EXPECT_EQ(vekStsNullPtrErr,
                  veksAdaptiveCodebookDecode_GSMAMR_16s(1, p[0], p[1], p[2], p[3], 0, 0, 0, 0, VEK_SPCHBR_4750));
    }
}

TEST(VekAmrAdaptiveSearch, LevelsAgreeAndItsIndexDecodesToItsVector) {
    Samples plain;
    atEveryLevel([&plain] {
        std::mt19937 random(7);
        Samples all;
        for (int round = 0; round < 80; ++round) {
            const VekSpchBitRate mode = rates[round % 8];
            const auto subframe = static_cast<int16_t>(round / 8 % 4);
            const Samples target = noise(random, 40, -2048, 2048);
            Samples h = noise(random, 40, -2048, 2048);
            const Samples open = noise(random, 2, -2048, 2048);
            Samples exc = noise(random, 194, -2048, 2048);
            Decode decode;
            decode.exc = exc;
            decode.former = noise(random, 1, 18, 143)[0];
            int16_t former = decode.former;
            int16_t fraction = 9;
            int16_t index = -1;
            Samples vector(40);
            ASSERT_EQ(vekStsNoErr,
                      veksAdaptiveCodebookSearch_GSMAMR_16s(target.data(), h.data(), open.data(), &former, exc.data(),
                                                            &fraction, &index, vector.data(), subframe, mode));
            // The decoder of 12.2 kbit/s counts a longest range alike, so the index tells the same lag.
            ASSERT_EQ(vekStsNoErr, decode.run(index, subframe, 0, mode));
            ASSERT_EQ(former, decode.former) << mode << " " << subframe;
            ASSERT_EQ(vector, decode.vector);
            all.insert(all.end(), vector.begin(), vector.end());
        }
        if (plain.empty()) {
            plain = all;
        }
        ASSERT_EQ(plain, all);
    });
}

TEST(VekAmrAdaptiveSearch, RefusesWhatIsNoneOfTheCodecs) {
    Samples x(194);
    int16_t v = 60;
    const auto call = [&](VekSpchBitRate mode, int16_t subframe) {
        return veksAdaptiveCodebookSearch_GSMAMR_16s(x.data(), x.data(), x.data(), &v, x.data(), &v, &v, x.data(),
                                                     subframe, mode);
    };
    EXPECT_EQ(vekStsBitRateErr, call(VEK_SPCHBR_DTX, 0));
    EXPECT_EQ(vekStsRangeErr, call(VEK_SPCHBR_4750, 4));
    EXPECT_EQ(vekStsRangeErr, call(VEK_SPCHBR_4750, -1));
    for (int missing = 0; missing < 8; ++missing) {
        int16_t* p[8];
        for (int i = 0; i < 8; ++i) {
            p[i] = i == missing ? nullptr : x.data();
        }
        EXPECT_EQ(vekStsNullPtrErr, veksAdaptiveCodebookSearch_GSMAMR_16s(p[0], p[1], p[2], p[3], p[4], p[5], p[6],
                                                                          p[7], 0, VEK_SPCHBR_4750));
    }
}

// The energy leaves 32 bits, the product does not.
TEST(VekAmrAdaptiveGain, AFaintTargetOfALoudVectorKeepsItsProduct) {
    std::mt19937 random(9);
    const Samples y = noise(random, 40, -30000, 30000);
    Samples target = y;
    double product = 0;
    for (size_t i = 0; i < y.size(); ++i) {
        target[i] = static_cast<int16_t>(y[i] / 512);
        product += 2.0 * target[i] * y[i];
    }
    int16_t gain = 0;
    int16_t coeffs[4];
    ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookGainCoeffs_GSMAMR_16s(target.data(), y.data(), &gain, coeffs));
    EXPECT_NEAR(1, std::ldexp(coeffs[2], coeffs[3] + 1) / product, 0.001);
}

TEST(VekAmrAdaptiveGain, IsTheQuotientOfTheProducts) {
    std::mt19937 random(8);
    for (const int level : {10, 1000, 20000}) {
        const Samples y = noise(random, 40, -level, level);
        Samples target = y;
        for (int16_t& v : target) {
            v = static_cast<int16_t>(v / 2);
        }
        int16_t gain = 0;
        int16_t coeffs[4];
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookGainCoeffs_GSMAMR_16s(target.data(), y.data(), &gain, coeffs));
        EXPECT_NEAR(8192, gain, level == 10 ? 900 : 20);
        double energy = 0;
        for (const int16_t v : y) {
            energy += 2.0 * v * v;
        }
        EXPECT_NEAR(1, std::ldexp(coeffs[0], coeffs[1] + 1) / energy, 0.001);
        // Louder than the vector by more than 1.2, against it, and silence.
        int16_t other = 0;
        for (int16_t& v : target) {
            v = static_cast<int16_t>(v / 8);
        }
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookGain_GSMAMR_16s(y.data(), target.data(), &other));
        if (level > 10) {
            EXPECT_EQ(19661, other);
        }
    }
    Samples up(40, 100);
    Samples down(40, -100);
    const Samples zero(40);
    int16_t gain = 1;
    ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookGain_GSMAMR_16s(up.data(), down.data(), &gain));
    EXPECT_EQ(0, gain);
    ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookGain_GSMAMR_16s(up.data(), zero.data(), &gain));
    EXPECT_GE(gain, 0);
    expectNullsRefused(veksAdaptiveCodebookGain_GSMAMR_16s, up.data(), up.data(), &gain);
    EXPECT_EQ(vekStsNullPtrErr, veksAdaptiveCodebookGainCoeffs_GSMAMR_16s(up.data(), up.data(), &gain, nullptr));
}

TEST(VekAmrLsf, QuartersAndCosinesByHand) {
    const Samples a = {100, -7, 32767, -32768, 0, 1, 2, 3, 4, 5};
    const Samples b = {200, -7, 32767, -32768, 0, 1, 2, 3, 4, 5};
    Samples y(10);
    ASSERT_EQ(vekStsNoErr, veksInterpolate_GSMAMR_16s(a.data(), b.data(), y.data(), 10));
    EXPECT_EQ((Samples{175, -7, 32767, -32768, 0, 1, 2, 3, 4, 5}), y);
    EXPECT_EQ(vekStsSizeErr, veksInterpolate_GSMAMR_16s(a.data(), b.data(), y.data(), 0));
    expectNullsRefused(veksInterpolate_GSMAMR_16s, a.data(), b.data(), y.data(), 10);

    Samples lsf = {0, 256, 128, 8192, 16384, 16383, 4096, 12288, 1, 255};
    Samples lsp(10);
    ASSERT_EQ(vekStsNoErr, veksLSFToLSP_GSMAMR_16s(lsf.data(), lsp.data()));
    EXPECT_EQ((Samples{32767, 32729, 32748, 0, -32768, -32768, 23170, -23170, 32766, 32729}), lsp);
    for (const int bad : {-1, 16385}) {
        lsf[9] = static_cast<int16_t>(bad);
        lsp.assign(10, 7);
        EXPECT_EQ(vekStsRangeErr, veksLSFToLSP_GSMAMR_16s(lsf.data(), lsp.data()));
        EXPECT_EQ(Samples(10, 7), lsp);
    }
    expectNullsRefused(veksLSFToLSP_GSMAMR_16s, lsf.data(), lsp.data());
}

TEST(VekAmrPreemphasis, TakesOffItsShareOfTheSampleBefore) {
    const Samples x = {1000, 2000, -32768, 32767};
    Samples y(4);
    int16_t last = 500;
    ASSERT_EQ(vekStsNoErr, veksPreemphasize_GSMAMR_16s(16384, x.data(), y.data(), 4, &last));
    EXPECT_EQ((Samples{750, 1500, -32768, 32767}), y);
    EXPECT_EQ(32767, last);
    EXPECT_EQ(vekStsSizeErr, veksPreemphasize_GSMAMR_16s(16384, x.data(), y.data(), 0, &last));
    expectNullsRefused(veksPreemphasize_GSMAMR_16s, 16384, x.data(), y.data(), 4, &last);
}

// A post-filter from rest, and what it makes of a frame.
struct PostFilter {
    int16_t before = 0;
    int16_t gain = 4096;
    Samples fir = Samples(10);
    Samples iir = Samples(10);
    Samples y = Samples(160);

    void run(const Samples& lpc, const Samples& speech, VekSpchBitRate mode) {
        ASSERT_EQ(vekStsNoErr, veksPostFilter_GSMAMR_16s(lpc.data(), speech.data(), &before, &gain, fir.data(),
                                                         iir.data(), y.data(), mode));
    }
};

TEST(VekAmrPostFilter, AFlatFilterLetsTheSpeechThroughAtItsLevel) {
    std::mt19937 random(9);
    Samples lpc(44);
    lpc[0] = lpc[11] = lpc[22] = lpc[33] = 4096;
    const Samples speech = noise(random, 160, -2000, 2000);
    for (const VekSpchBitRate mode : rates) {
        PostFilter p;
        p.run(lpc, speech, mode);
        for (size_t i = 0; i < 160; ++i) {
            ASSERT_NEAR(speech[i], p.y[i], 30) << i;
        }
        EXPECT_EQ(Samples(speech.end() - 10, speech.end()), p.fir);
        EXPECT_EQ(Samples(speech.end() - 10, speech.end()), p.iir);
        EXPECT_EQ(speech[159], p.before);
    }
}

TEST(VekAmrPostFilter, TheUpperRatesWeighOtherwise) {
    std::mt19937 random(10);
    Samples lpc(44);
    for (size_t i = 0; i < 44; i += 11) {
        lpc[i] = 4096;
        lpc[i + 1] = -3000;
    }
    const Samples speech = noise(random, 160, -2000, 2000);
    std::vector<Samples> all;
    for (const VekSpchBitRate mode : rates) {
        PostFilter p;
        p.run(lpc, speech, mode);
        all.push_back(p.y);
    }
    for (const size_t low : {1U, 2U, 3U, 4U, 5U, 8U}) {
        EXPECT_EQ(all[0], all[low]);
    }
    EXPECT_EQ(all[6], all[7]);
    EXPECT_NE(all[0], all[6]);
}

TEST(VekAmrPostFilter, RefusesWhatIsNoneOfTheCodecs) {
    Samples x(160);
    EXPECT_EQ(vekStsBitRateErr, veksPostFilter_GSMAMR_16s(x.data(), x.data(), x.data(), x.data(), x.data(), x.data(),
                                                          x.data(), VEK_SPCHBR_16000));
    for (int missing = 0; missing < 7; ++missing) {
        int16_t* p[7];
        for (int i = 0; i < 7; ++i) {
            p[i] = i == missing ? nullptr : x.data();
        }
        EXPECT_EQ(vekStsNullPtrErr,
                  veksPostFilter_GSMAMR_16s(p[0], p[1], p[2], p[3], p[4], p[5], p[6], VEK_SPCHBR_4750));
    }
}

} // namespace
