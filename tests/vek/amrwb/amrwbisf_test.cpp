// What the quantisers of AMR-WB's spectral frequencies choose, and what stands in for the frequencies of a bad frame.
#include "lp_reference.h"
#include "veksc.h"

namespace {

// Rows of the books that an index counts.
constexpr int kRows[7] = {256, 256, 64, 128, 128, 32, 32};
constexpr int kLowestRows[5] = {256, 256, 128, 128, 64};
constexpr int kNoiseRows[5] = {64, 64, 64, 32, 32};

// Frequencies that are apart by themselves, by more than the least gap.
bool apart(const Samples& isf) {
    for (size_t i = 0; i < 15; ++i) {
        if (isf[i] - (i == 0 ? 0 : isf[i - 1]) <= 128) {
            return false;
        }
    }
    return true;
}

Samples decoded(const Samples& index, VekSpchBitRate mode) {
    Samples isf(16), residual(16), previous(16), memory(48);
    EXPECT_EQ(vekStsNoErr, veksISFQuantDecode_AMRWB_16s(index.data(), isf.data(), residual.data(), previous.data(),
                                                        memory.data(), 0, mode));
    return isf;
}

double distance(const Samples& a, const Samples& b, size_t first, size_t last) {
    double sum = 0;
    for (size_t i = first; i < last; ++i) {
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    }
    return sum;
}

template <size_t N>
Samples drawn(std::mt19937& random, const int (&rows)[N]) {
    Samples index;
    for (const int count : rows) {
        index.push_back(static_cast<int16_t>(random() % static_cast<unsigned>(count)));
    }
    index.resize(7);
    return index;
}

// Of 200 frames that the books can make without any error, those that the quantiser makes so: the first stage keeps
// four of its rows, and the right one is mostly among them, not always the nearest.
int exactFrames(VekSpchBitRate mode) {
    std::mt19937 random(31);
    int exact = 0;
    for (int frame = 0; frame < 200;) {
        const Samples isf = decoded(mode == VEK_SPCHBR_6600 ? drawn(random, kLowestRows) : drawn(random, kRows), mode);
        if (!apart(isf)) {
            continue;
        }
        ++frame;
        Samples residual(16), quantised(16), index(7);
        EXPECT_EQ(vekStsNoErr,
                  veksISFQuant_AMRWB_16s(isf.data(), residual.data(), quantised.data(), index.data(), mode));
        exact += quantised == isf;
    }
    return exact;
}

TEST(VekAmrWbIsfDecode, ShareOfAnyResidualIsAddedWithoutLoss) {
    std::mt19937 random(36);
    for (int round = 0; round < 3000; ++round) {
        const bool lowest = round % 2 == 0;
        const VekSpchBitRate mode = lowest ? VEK_SPCHBR_6600 : VEK_SPCHBR_8850;
        const Samples index = lowest ? drawn(random, kLowestRows) : drawn(random, kRows);
        Samples isf(16), silent(16), residual(16), memory(48), loudMemory(48);
        for (int16_t& r : residual) {
            r = static_cast<int16_t>(random() % 2 == 0 ? -32768 : 32767);
        }
        const Samples before = residual;
        ASSERT_EQ(vekStsNoErr, veksISFQuantDecode_AMRWB_16s(index.data(), isf.data(), silent.data(), isf.data(),
                                                            memory.data(), 0, mode));
        ASSERT_EQ(vekStsNoErr, veksISFQuantDecode_AMRWB_16s(index.data(), isf.data(), residual.data(), isf.data(),
                                                            loudMemory.data(), 0, mode));
        ASSERT_EQ(silent, residual);
        for (size_t i = 0; i < 16; ++i) {
            // The memory holds the frequencies as they are before they are kept apart.
            ASSERT_EQ(memory[i] + ((10923 * before[i]) >> 15), loudMemory[i]);
        }
        for (size_t i = 0; i < 15; ++i) {
            ASSERT_EQ(std::max(int{loudMemory[i]}, 128 + (i == 0 ? 0 : isf[i - 1])), isf[i]);
        }
    }
}

TEST(VekAmrWbIsfChoice, FrequenciesThatTheBooksHoldMostlyComeBack) {
    EXPECT_EQ(182, exactFrames(VEK_SPCHBR_6600));
    EXPECT_EQ(149, exactFrames(VEK_SPCHBR_12650));
}

TEST(VekAmrWbIsfChoice, NoOtherRowOfTheSecondStageIsNearer) {
    std::mt19937 random(32);
    for (int frame = 0; frame < 20; ++frame) {
        Samples isf = decoded(drawn(random, kRows), VEK_SPCHBR_12650);
        const Samples wander = noise(random, 16, -200, 200);
        for (size_t i = 0; i < 16; ++i) {
            isf[i] = static_cast<int16_t>(isf[i] + wander[i]);
        }
        Samples residual(16), quantised(16), index(7);
        ASSERT_EQ(vekStsNoErr, veksISFQuant_AMRWB_16s(isf.data(), residual.data(), quantised.data(), index.data(),
                                                      VEK_SPCHBR_12650));
        for (size_t part = 2; part < 7; ++part) {
            for (int row = 0; row < kRows[part]; ++row) {
                Samples other = index;
                other[part] = static_cast<int16_t>(row);
                const Samples there = decoded(other, VEK_SPCHBR_12650);
                if (apart(quantised) && apart(there)) {
                    EXPECT_LE(distance(isf, quantised, 0, 16), distance(isf, there, 0, 16)) << part << ' ' << row;
                }
            }
        }
    }
}

TEST(VekAmrWbIsfChoice, IndicesOfComfortNoiseComeBack) {
    std::mt19937 random(33);
    for (int frame = 0; frame < 200;) {
        Samples index = drawn(random, kNoiseRows);
        index.resize(5);
        Samples isf(16), quantised(16), again(5);
        ASSERT_EQ(vekStsNoErr, veksISFQuantDecodeDTX_AMRWB_16s(index.data(), isf.data()));
        if (!apart(isf)) {
            continue;
        }
        ++frame;
        ASSERT_EQ(vekStsNoErr, veksISFQuantDTX_AMRWB_16s(isf.data(), quantised.data(), again.data()));
        EXPECT_EQ(index, again);
        EXPECT_EQ(isf, quantised);
    }
}

// As far off as can be every distance saturates, and of equal ones the first row is taken.
TEST(VekAmrWbIsfChoice, RowsWhoseDistancesSaturateAreEquallyFar) {
    atEveryLevel([] {
        const Samples isf(16, 32767);
        for (const VekSpchBitRate mode : {VEK_SPCHBR_6600, VEK_SPCHBR_8850}) {
            Samples residual(16), quantised(16), index(7, 7);
            ASSERT_EQ(vekStsNoErr,
                      veksISFQuant_AMRWB_16s(isf.data(), residual.data(), quantised.data(), index.data(), mode));
            // The lowest rate has five indices.
            EXPECT_EQ(mode == VEK_SPCHBR_6600 ? (Samples{0, 0, 0, 0, 0, 7, 7}) : Samples(7), index);
        }
        Samples quantised(16), index(5, 7);
        ASSERT_EQ(vekStsNoErr, veksISFQuantDTX_AMRWB_16s(isf.data(), quantised.data(), index.data()));
        EXPECT_EQ(Samples(5), index);
    });
}

TEST(VekAmrWbIsfChoice, LevelsChooseTheSameRowsOfAnyNumbers) {
    std::vector<Samples> chosen;
    atEveryLevel([&] {
        std::mt19937 random(34);
        Samples all;
        for (int round = 0; round < 900; ++round) {
            const int far = (round % 3 == 0) ? 2048 : (round % 3 == 1) ? 16000 : 32767;
            const Samples isf = noise(random, 16, -far - 1, far);
            Samples residual = noise(random, 16, -far - 1, far), quantised(16), index(7);
            ASSERT_EQ(vekStsNoErr, veksISFQuant_AMRWB_16s(isf.data(), residual.data(), quantised.data(), index.data(),
                                                          round % 2 == 0 ? VEK_SPCHBR_6600 : VEK_SPCHBR_8850));
            all.insert(all.end(), index.begin(), index.end());
            all.insert(all.end(), residual.begin(), residual.end());
            ASSERT_EQ(vekStsNoErr, veksISFQuantDTX_AMRWB_16s(isf.data(), quantised.data(), index.data()));
            all.insert(all.end(), index.begin(), index.end());
        }
        chosen.push_back(all);
        EXPECT_EQ(chosen.front(), chosen.back());
    });
}

TEST(VekAmrWbIsfConcealment, DrawsTheLastFrequenciesTowardsTheMeanOfTheMemory) {
    const Samples mean = {738,  1326, 2336,  3578,  4596,  5662,  6711,  7730,
                          8750, 9753, 10705, 11728, 12833, 13971, 15043, 4037};
    Samples previous, memory;
    for (int i = 0; i < 16; ++i) {
        previous.push_back(static_cast<int16_t>(1000 * (i + 1)));
    }
    for (int frame = 0; frame < 3; ++frame) {
        memory.insert(memory.end(), mean.begin(), mean.end());
    }
    const Samples kept = memory;
    for (const int16_t rest : {int16_t{0}, int16_t{3000}}) {
        Samples residual(16, rest), isf(16), index(7, -1);
        ASSERT_EQ(vekStsNoErr, veksISFQuantDecode_AMRWB_16s(index.data(), isf.data(), residual.data(), previous.data(),
                                                            memory.data(), 1, VEK_SPCHBR_12650));
        for (size_t i = 0; i < 16; ++i) {
            // Nine tenths and one tenth; a third of the residual was predicted.
            const int expected = ((29491 * previous[i]) >> 15) + ((3277 * mean[i]) >> 15);
            EXPECT_EQ(expected, isf[i]) << i;
            EXPECT_EQ((expected - mean[i] - (rest * 10923 >> 15)) >> 1, residual[i]) << i;
        }
        EXPECT_EQ(kept, memory);
    }
}

TEST(VekAmrWbIsfConcealment, TheMemoryCountsThreeFramesAlike) {
    const Samples index(7), previous(16);
    Samples low(16), high(16), residual(16), memory(48);
    ASSERT_EQ(vekStsNoErr, veksISFQuantDecode_AMRWB_16s(index.data(), low.data(), residual.data(), previous.data(),
                                                        memory.data(), 1, VEK_SPCHBR_12650));
    // The last frequency is not kept apart from the others. Its mean of 4037 is a quarter of the sum.
    EXPECT_EQ((3277 * 1009) >> 15, low[15]);
    for (const size_t frame : {0, 1, 2}) {
        memory.assign(48, 0);
        memory[frame * 16 + 15] = 32764;
        residual.assign(16, 0);
        ASSERT_EQ(vekStsNoErr, veksISFQuantDecode_AMRWB_16s(index.data(), high.data(), residual.data(), previous.data(),
                                                            memory.data(), 1, VEK_SPCHBR_12650));
        EXPECT_EQ((3277 * (1009 + 8191)) >> 15, high[15]) << frame;
    }
}

} // namespace
