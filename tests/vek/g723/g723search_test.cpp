// Pitch searches and the adaptive codebook of G.723.1 against their criteria, in double or 64 bits, over all
// candidates.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>

namespace {

using namespace lpref;

// A resonance that pulses of a period excite, with some noise.
Samples voiced(std::mt19937& random, int n, int period, double loud) {
    Samples x;
    double y1 = 0;
    double y2 = 0;
    for (int i = 0; i < n; ++i) {
        const double source = (i % period == 0 ? 1.0 : 0.0) + 0.02 * (static_cast<int>(random() % 200) - 100) / 100.0;
        const double y = source + 1.5 * y1 - 0.75 * y2;
        y2 = y1;
        y1 = y;
        x.push_back(static_cast<int16_t>(std::lround(y * loud)));
    }
    return x;
}

// --- pitch ---

TEST(VekOpenLoopG723, FollowsTheCriterionWithItsPreferenceForShortDelays) {
    atEveryLevel([] {
        std::mt19937 random(1);
        int differences = 0;
        for (int n = 0; n < 300; ++n) {
            const Samples x = n % 2 == 0 ? noise(random, 265, -2048, 2048)
                                         : voiced(random, 265, 18 + static_cast<int>(random() % 110), 600);
            const int16_t* now = x.data() + 145;
            double best = 0;
            int want = 18;
            for (int d = 18; d <= 142; ++d) {
                const double c = dot(now, now - d, 120);
                const double energy = dot(now - d, now - d, 120);
                if (c <= 0) {
                    continue;
                }
                const double measure = c * c / energy;
                if (measure > best && (d - want < 18 || 0.75 * measure > best)) {
                    best = measure;
                    want = d;
                }
            }
            int16_t delay = 0;
            ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G723_16s(now, &delay));
            differences += delay != want ? 1 : 0;
        }
        EXPECT_LE(differences, 3);
    });
}

TEST(VekOpenLoopG723, FindsThePeriodOfALoudSignalToo) {
    Samples x(265);
    for (int i = 0; i < 265; ++i) {
        x[i] = static_cast<int16_t>(i % 47 < 20 ? 32767 : -32768);
    }
    int16_t delay = 0;
    ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G723_16s(x.data() + 145, &delay));
    EXPECT_EQ(47, delay);
    const Samples silence(265, 0);
    ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G723_16s(silence.data() + 145, &delay));
    EXPECT_EQ(18, delay);
}

TEST(VekHarmonicSearchG723, TakesTheBestOfSevenDelays) {
    atEveryLevel([] {
        std::mt19937 random(2);
        int differences = 0;
        int shaped = 0;
        for (int n = 0; n < 300; ++n) {
            const int open = 18 + static_cast<int>(random() % 128);
            const Samples x = n % 2 == 0 ? noise(random, 208, -32768, 32767) : voiced(random, 208, open, 900);
            const int16_t* now = x.data() + 148;
            double best = 0;
            int want = open;
            double gain = 0;
            for (int d = open - 3; d <= open + 3; ++d) {
                const double c = dot(now, now - d, 60);
                const double energy = dot(now - d, now - d, 60);
                if (c > 0 && c * c / energy > best) {
                    best = c * c / energy;
                    want = d;
                    gain = best > 0.375 * dot(now, now, 60) ? 0.3125 * std::min(1.0, c / energy) : 0;
                }
            }
            int16_t delay = 0;
            int16_t own = 0;
            ASSERT_EQ(vekStsNoErr, veksHarmonicSearch_G723_16s(static_cast<int16_t>(open), now, &delay, &own));
            differences += delay != want || std::abs(own - gain * 32768) > 30 ? 1 : 0;
            shaped += own > 0 ? 1 : 0;
        }
        EXPECT_LE(differences, 6);
        EXPECT_GT(shaped, 40);
    });
}

TEST(VekHarmonicSearchG723, ShapesWhereThreeEighthsOfTheEnergyArePredicted) {
    std::mt19937 random(12);
    int below = 0;
    int above = 0;
    for (int n = 0; n < 400; ++n) {
        Samples x = noise(random, 208, -3000, 3000);
        for (size_t i = 148; i < 208; ++i) {
            x[i] = static_cast<int16_t>(x[i - 60] + static_cast<int>(random() % 7001) - 3500);
        }
        const int16_t* now = x.data() + 148;
        const double c = dot(now, now - 60, 60);
        const double ratio = c * c / dot(now - 60, now - 60, 60) / dot(now, now, 60);
        int16_t delay = 0;
        int16_t gain = 0;
        ASSERT_EQ(vekStsNoErr, veksHarmonicSearch_G723_16s(60, now, &delay, &gain));
        if (delay == 60 && ratio < 0.374) {
            EXPECT_EQ(0, gain);
            ++below;
        } else if (delay == 60 && ratio > 0.376) {
            EXPECT_GT(gain, 0);
            ++above;
        }
    }
    EXPECT_GT(below, 50);
    EXPECT_GT(above, 50);
}

TEST(VekHarmonicSearchG723, OfSilenceIsTheOpenDelayWithoutGain) {
    const Samples x(208, 0);
    int16_t delay = 0;
    int16_t gain = 9;
    ASSERT_EQ(vekStsNoErr, veksHarmonicSearch_G723_16s(77, x.data() + 148, &delay, &gain));
    EXPECT_EQ(77, delay);
    EXPECT_EQ(0, gain);
}

TEST(VekPitchPostFilterG723, TakesTheStrongerShareWithinTheFrame) {
    std::mt19937 random(3);
    int ahead = 0;
    int none = 0;
    int differences = 0;
    for (int n = 0; n < 400; ++n) {
        const int base = 20 + static_cast<int>(random() % 120);
        const Samples x = n % 3 == 0 ? noise(random, 385, -2048, 2048) : voiced(random, 385, base, 300);
        for (int sub = 0; sub < 4; ++sub) {
            const int16_t* now = x.data() + 145 + 60 * sub;
            int found[2] = {};
            double corr[2] = {};
            for (int back = 0; back < 2; ++back) {
                for (int d = std::min(base, 142) - 3; d <= std::min(base, 142) + 3; ++d) {
                    if (back == 0 && d > 180 - 60 * sub) {
                        break;
                    }
                    const double c = dot(now, back ? now - d : now + d, 60);
                    if (c > corr[back]) {
                        corr[back] = c;
                        found[back] = back ? -d : d;
                    }
                }
            }
            const auto energy = [&](int at) { return dot(now + at, now + at, 60); };
            double best = 0;
            int want = 0;
            double gain = 0;
            const bool high = (n & 1) != 0;
            for (int back = 0; back < 2; ++back) {
                const double measure = found[back] ? corr[back] * corr[back] / energy(found[back]) : 0;
                if (measure > best) {
                    best = measure;
                    want = found[back];
                    gain = std::min(1.0, corr[back] / energy(want)) * (high ? 0.1875 : 0.25);
                }
            }
            const double own = dot(now, now, 60);
            double scale = 1;
            if (best < 0.25 * own) {
                gain = 0;
            } else {
                scale = std::sqrt(own / (own + 2 * gain * dot(now, now + want, 60) + gain * gain * energy(want)));
            }
            int16_t delay = 0;
            int16_t pitchGain = 0;
            int16_t scaling = 0;
            ASSERT_EQ(vekStsNoErr, veksPitchPostFilter_G723_16s(static_cast<int16_t>(base), x.data() + 145, &delay,
                                                                &pitchGain, &scaling, static_cast<int16_t>(sub),
                                                                high ? VEK_SPCHBR_6300 : VEK_SPCHBR_5300));
            differences += delay != want || std::abs(pitchGain - 32768 * gain * scale) > 60 ||
                                   std::abs(scaling - 32768 * scale) > 60
                               ? 1
                               : 0;
            ahead += delay > 0 ? 1 : 0;
            none += pitchGain == 0 ? 1 : 0;
        }
    }
    EXPECT_LE(differences, 24);
    EXPECT_GT(ahead, 100);
    EXPECT_GT(none, 50);
}

TEST(VekPitchPostFilterG723, SilenceStaysAsItIs) {
    const Samples x(385, 0);
    int16_t delay = 1;
    int16_t gain = 1;
    int16_t scale = 1;
    ASSERT_EQ(vekStsNoErr, veksPitchPostFilter_G723_16s(60, x.data() + 145, &delay, &gain, &scale, 0, VEK_SPCHBR_5300));
    EXPECT_EQ(0, delay);
    EXPECT_EQ(0, gain);
    EXPECT_EQ(32767, scale);
}

// --- adaptive codebook ---

// The gains of an entry: answers to one pulse, oldest tap first. The delay of 100 does not repeat.
std::vector<int> tapsOf(int entry, VekSpchBitRate rate, int base) {
    std::vector<int> taps;
    for (int t = 0; t < 5; ++t) {
        Samples history(148, 0);
        // The first sample takes the history from two before the delay to two after.
        history[static_cast<size_t>(148 - base - 2 + t)] = 16384;
        Samples out(60);
        EXPECT_EQ(vekStsNoErr,
                  veksDecodeAdaptiveVector_G723_16s(static_cast<int16_t>(base), 1, static_cast<int16_t>(entry),
                                                    history.data(), out.data(), rate));
        taps.push_back(out[0]);
    }
    return taps;
}

TEST(VekAdaptiveVectorG723, IsFiveTapsAroundTheRepeatedPast) {
    std::mt19937 random(4);
    const Samples history = noise(random, 148, -32768, 32767);
    for (const int base : {18, 40, 57, 58, 100, 145}) {
        for (int close = 0; close <= (base == 145 ? 2 : 3); ++close) {
            const int delay = base + close - 1;
            const bool small = base < 58;
            for (int entry = 0; entry < (small ? 85 : 170); entry += 12) {
                const std::vector<int> taps = tapsOf(entry, VEK_SPCHBR_6300, small ? 50 : 100);
                Samples out(60);
                ASSERT_EQ(vekStsNoErr, veksDecodeAdaptiveVector_G723_16s(
                                           static_cast<int16_t>(base), static_cast<int16_t>(close),
                                           static_cast<int16_t>(entry), history.data(), out.data(), VEK_SPCHBR_6300));
                for (int i = 0; i < 60; ++i) {
                    int64_t sum = 0;
                    for (int t = 0; t < 5; ++t) {
                        const int k = i + t;
                        const int from = k < 2 ? 148 - delay - 2 + k : 148 - delay + (k - 2) % delay;
                        sum += int64_t{taps[static_cast<size_t>(t)]} * history[static_cast<size_t>(from)];
                    }
                    ASSERT_EQ(clip((sum * 4 + 0x8000) >> 16, 16), out[static_cast<size_t>(i)]);
                }
            }
        }
    }
}

TEST(VekAdaptiveVectorG723, ShortDelaysHaveTheirOwnBookAtTheHighRateAlone) {
    std::mt19937 random(5);
    const Samples history = noise(random, 148, -2000, 2000);
    Samples out(60);
    EXPECT_EQ(vekStsRangeErr,
              veksDecodeAdaptiveVector_G723_16s(57, 1, 85, history.data(), out.data(), VEK_SPCHBR_6300));
    EXPECT_EQ(vekStsNoErr, veksDecodeAdaptiveVector_G723_16s(57, 1, 85, history.data(), out.data(), VEK_SPCHBR_5300));
    EXPECT_EQ(vekStsNoErr, veksDecodeAdaptiveVector_G723_16s(58, 0, 169, history.data(), out.data(), VEK_SPCHBR_6300));
    EXPECT_NE(tapsOf(20, VEK_SPCHBR_6300, 50), tapsOf(20, VEK_SPCHBR_5300, 50));
    EXPECT_EQ(tapsOf(20, VEK_SPCHBR_6300, 100), tapsOf(20, VEK_SPCHBR_5300, 50));
}

double errorOf(const Samples& target, const Samples& h, const Samples& history, int base, int lag, int entry,
               VekSpchBitRate rate, int bookBase) {
    Samples v(60);
    // The book is chosen by the base delay, so that the delay is put together from it.
    const VekSpchBitRate book = bookBase < 58 ? rate : VEK_SPCHBR_5300;
    const int delay = base - 1 + lag;
    const int first = std::clamp(delay, 18, 145);
    EXPECT_EQ(vekStsNoErr,
              veksDecodeAdaptiveVector_G723_16s(
                  static_cast<int16_t>(book == VEK_SPCHBR_6300 ? std::min(first, 57) : first),
                  static_cast<int16_t>(delay + 1 - (book == VEK_SPCHBR_6300 ? std::min(first, 57) : first)),
                  static_cast<int16_t>(entry), history.data(), v.data(), book));
    double error = 0;
    for (int i = 0; i < 60; ++i) {
        double y = 0;
        for (int j = 0; j <= i; ++j) {
            y += double{1} * v[static_cast<size_t>(j)] * h[static_cast<size_t>(i - j)] / 8192;
        }
        error += (target[static_cast<size_t>(i)] - y / 2) * (target[static_cast<size_t>(i)] - y / 2);
    }
    return error;
}

// The filtered vector is halved against the excitation, as the filters of the codec do.
TEST(VekAdaptiveSearchG723, FindsTheLeastErrorOfAllDelaysAndGains) {
    std::mt19937 random(6);
    const int32_t errors[5] = {4, 4, 4, 4, 4};
    for (int n = 0; n < 24; ++n) {
        const int base = n % 4 == 0 ? 100 : 30 + static_cast<int>(random() % 60);
        const Samples history = voiced(random, 148, base, 400);
        const Samples h = decaying(random);
        Samples target = voiced(random, 60, base, 150);
        const VekSpchBitRate rate = n % 3 == 0 ? VEK_SPCHBR_5300 : VEK_SPCHBR_6300;
        const int sub = n & 3;
        int16_t lag = -1;
        int16_t entry = -1;
        ASSERT_EQ(vekStsNoErr,
                  veksAdaptiveCodebookSearch_G723(static_cast<int16_t>(base), target.data(), h.data(), history.data(),
                                                  errors, &lag, &entry, static_cast<int16_t>(sub), 0, rate));
        const int tried = (sub & 1) != 0 ? 4 : 3;
        double best = dot(target.data(), target.data(), 60);
        const auto bookBase = [&](int l) { return (sub & 1) != 0 ? base : base - 1 + l; };
        for (int l = 0; l < tried; ++l) {
            const bool small = rate == VEK_SPCHBR_6300 && bookBase(l) < 58;
            for (int e = 0; e < (small ? 85 : 170); ++e) {
                best = std::min(best, errorOf(target, h, history, base, l, e, rate, bookBase(l)));
            }
        }
        const double own = errorOf(target, h, history, base, lag, entry, rate, bookBase(lag));
        EXPECT_LE(own, best * 1.02 + 60) << n << " base " << base << " lag " << lag << " entry " << entry;
    }
}

TEST(VekAdaptiveSearchG723, GainsAreTamedByErrorsAndSines) {
    std::mt19937 random(7);
    const int32_t calm[5] = {4, 4, 4, 4, 4};
    int32_t wild[5] = {4, 4, 4, 4, 4};
    int freely = 0;
    for (int n = 0; n < 60; ++n) {
        const Samples history = voiced(random, 148, 70, 300);
        const Samples h = decaying(random);
        Samples target(history.begin() + 8, history.begin() + 68);
        int16_t lag = 0;
        int16_t entry = 0;
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G723(70, target.data(), h.data(), history.data(), calm, &lag,
                                                               &entry, 1, 0, VEK_SPCHBR_5300));
        freely += entry >= 93 ? 1 : 0;
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G723(70, target.data(), h.data(), history.data(), calm, &lag,
                                                               &entry, 1, -1, VEK_SPCHBR_5300));
        EXPECT_LT(entry, 93);
        // The delays 69 to 72 touch the samples 8 to 74 back: zones 0 to 2.
        wild[2] = (1 << 30) + 1;
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G723(70, target.data(), h.data(), history.data(), wild, &lag,
                                                               &entry, 1, 0, VEK_SPCHBR_5300));
        EXPECT_LT(entry, 93);
        int16_t far = 0;
        wild[2] = 4;
        wild[3] = INT32_MAX;
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G723(70, target.data(), h.data(), history.data(), wild, &lag,
                                                               &far, 1, 0, VEK_SPCHBR_5300));
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G723(70, target.data(), h.data(), history.data(), calm, &lag,
                                                               &entry, 1, 0, VEK_SPCHBR_5300));
        EXPECT_EQ(entry, far);
        wild[3] = 4;
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G723(30, target.data(), h.data(), history.data(), calm, &lag,
                                                               &entry, 1, -1, VEK_SPCHBR_6300));
        EXPECT_LT(entry, 51);
    }
    EXPECT_GT(freely, 0);
}

TEST(VekAdaptiveSearchG723, ErrorsBeyondTheBoundAllowAsMuchAsASine) {
    std::mt19937 random(13);
    const int32_t calm[5] = {4, 4, 4, 4, 4};
    const int32_t wild[5] = {4, INT32_MAX, 4, 4, INT32_MAX};
    const int32_t newest[5] = {INT32_MAX, 4, 4, 4, 4};
    int freely = 0;
    for (int n = 0; n < 80; ++n) {
        const int16_t base = n % 2 == 0 ? 31 : 125;
        const Samples history = voiced(random, 148, base, 300 + 10 * n);
        const Samples h = decaying(random);
        const Samples target = n % 4 < 2 ? noise(random, 60, -900, 900) : voiced(random, 60, base, 150);
        const auto entryWith = [&](const int32_t* errors, int16_t sine) {
            int16_t lag = 0;
            int16_t entry = 0;
            EXPECT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G723(base, target.data(), h.data(), history.data(),
                                                                   errors, &lag, &entry, 1, sine, VEK_SPCHBR_6300));
            return std::pair(lag, entry);
        };
        EXPECT_EQ(entryWith(calm, -1), entryWith(wild, 0));
        EXPECT_LT(entryWith(wild, 0).second, base < 58 ? 51 : 93);
        freely += base < 58 && entryWith(calm, 0).second >= 51 ? 1 : 0;
        if (base > 58) {
            // These delays lie more than a subframe and 30 samples back.
            EXPECT_EQ(entryWith(calm, 0), entryWith(newest, 0));
        }
    }
    EXPECT_GT(freely, 0);
}

// The delays 69 to 72 touch the samples 8 to 74 back: the newest zone has 30.
TEST(VekAdaptiveSearchG723, AnErrorOfTheNewestZoneTamesTheGainsThatReachIt) {
    std::mt19937 random(15);
    const int32_t calm[5] = {4, 4, 4, 4, 4};
    const int32_t newest[5] = {(1 << 30) + 1, 4, 4, 4, 4};
    int freely = 0;
    for (int n = 0; n < 60; ++n) {
        const Samples history = voiced(random, 148, 70, 300);
        const Samples h = decaying(random);
        const Samples target(history.begin() + 8, history.begin() + 68);
        const auto entryWith = [&](const int32_t* errors, int16_t base) {
            int16_t lag = 0;
            int16_t entry = 0;
            EXPECT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G723(base, target.data(), h.data(), history.data(),
                                                                   errors, &lag, &entry, 1, 0, VEK_SPCHBR_5300));
            return entry;
        };
        EXPECT_LT(entryWith(newest, 70), 93);
        EXPECT_LT(entryWith(newest, 92), 93);
        EXPECT_EQ(entryWith(newest, 93), entryWith(calm, 93));
        freely += entryWith(calm, 70) >= 93 ? 1 : 0;
    }
    EXPECT_GT(freely, 0);
}

// A target that the codebook can make exactly tells which delay each lag stands for.
TEST(VekAdaptiveSearchG723, EvenSubframesTryTheDelaysAround19To140) {
    std::mt19937 random(16);
    const int32_t calm[5] = {4, 4, 4, 4, 4};
    Samples h(60, 0);
    h[0] = 8192;
    for (const auto& [base, first] : {std::pair{18, 18}, {19, 18}, {20, 19}, {140, 139}, {141, 139}, {145, 139}}) {
        for (int lag = 0; lag < 3; ++lag) {
            for (const int16_t entry : {30, 77, 150}) {
                const Samples history = noise(random, 148, -8000, 8000);
                Samples target(60);
                ASSERT_EQ(vekStsNoErr,
                          veksDecodeAdaptiveVector_G723_16s(static_cast<int16_t>(first + lag), 1, entry, history.data(),
                                                            target.data(), VEK_SPCHBR_5300));
                for (int16_t& v : target) {
                    v = static_cast<int16_t>(v / 2);
                }
                int16_t foundLag = -1;
                int16_t foundEntry = -1;
                ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G723(static_cast<int16_t>(base), target.data(),
                                                                       h.data(), history.data(), calm, &foundLag,
                                                                       &foundEntry, 2, 0, VEK_SPCHBR_5300));
                EXPECT_EQ(std::pair(foundLag, foundEntry), std::pair(static_cast<int16_t>(lag), entry)) << base;
            }
        }
    }
}

TEST(VekAdaptiveSearchG723, TheLongestBaseGivesDelaysThatTheDecoderTakes) {
    std::mt19937 random(14);
    const int32_t calm[5] = {4, 4, 4, 4, 4};
    int found = 0;
    for (int n = 0; n < 80; ++n) {
        // The last of these would be the fourth delay, which is not tried.
        const int period = 144 + n % 4;
        const Samples history = voiced(random, 148, 37 + n, 400);
        Samples target(history.end() - period, history.end() - period + 60);
        Samples h(60, 0);
        h[0] = 8191;
        int16_t lag = -1;
        int16_t entry = -1;
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G723(145, target.data(), h.data(), history.data(), calm, &lag,
                                                               &entry, 1, 0, VEK_SPCHBR_5300));
        found += lag == n % 4 ? 1 : 0;
        Samples vector(60);
        EXPECT_EQ(vekStsNoErr,
                  veksDecodeAdaptiveVector_G723_16s(145, lag, entry, history.data(), vector.data(), VEK_SPCHBR_5300));
    }
    EXPECT_GE(found, 50);
}

TEST(VekAdaptiveSearchG723, SilenceTakesTheMiddleDelayAndTheFirstGains) {
    const Samples zeros(148, 0);
    const int32_t errors[5] = {4, 4, 4, 4, 4};
    int16_t lag = 9;
    int16_t entry = 9;
    for (const int16_t base : {18, 100, 145}) {
        for (int16_t sub = 0; sub < 4; ++sub) {
            ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G723(base, zeros.data(), zeros.data(), zeros.data(),
                                                                   errors, &lag, &entry, sub, 0, VEK_SPCHBR_6300));
            EXPECT_EQ(1, lag);
            EXPECT_EQ(0, entry);
        }
    }
}

// --- refusals ---

TEST(VekG723Searches, RefuseNullPointersAndValuesOutOfRange) {
    int16_t p[512] = {};
    int32_t w[512] = {};
    int16_t* x = p + 160;
    int16_t* no = nullptr;
    int32_t* wide = nullptr;
    const VekSpchBitRate rate = VEK_SPCHBR_6300;
    expectNullsRefused(veksOpenLoopPitchSearch_G723_16s, x, p);
    expectNullsRefused(veksHarmonicSearch_G723_16s, 60, x, p, p);
    EXPECT_EQ(vekStsRangeErr, veksHarmonicSearch_G723_16s(17, x, p, p));
    EXPECT_EQ(vekStsRangeErr, veksHarmonicSearch_G723_16s(146, x, p, p));
    expectNullsRefused(veksPitchPostFilter_G723_16s, 60, x, p, p, p, 0, rate);
    EXPECT_EQ(vekStsRangeErr, veksPitchPostFilter_G723_16s(17, x, p, p, p, 0, rate));
    EXPECT_EQ(vekStsRangeErr, veksPitchPostFilter_G723_16s(146, x, p, p, p, 0, rate));
    EXPECT_EQ(vekStsRangeErr, veksPitchPostFilter_G723_16s(60, x, p, p, p, 4, rate));
    EXPECT_EQ(vekStsRangeErr, veksPitchPostFilter_G723_16s(60, x, p, p, p, -1, rate));
    EXPECT_EQ(vekStsBitRateErr, veksPitchPostFilter_G723_16s(60, x, p, p, p, 0, VEK_SPCHBR_4750));
    expectNullsRefused(veksDecodeAdaptiveVector_G723_16s, 60, 1, 0, p, p, rate);
    EXPECT_EQ(vekStsRangeErr, veksDecodeAdaptiveVector_G723_16s(17, 1, 0, p, p, rate));
    EXPECT_EQ(vekStsRangeErr, veksDecodeAdaptiveVector_G723_16s(146, 1, 0, p, p, rate));
    EXPECT_EQ(vekStsRangeErr, veksDecodeAdaptiveVector_G723_16s(145, 3, 0, p, p, rate));
    EXPECT_EQ(vekStsRangeErr, veksDecodeAdaptiveVector_G723_16s(60, 4, 0, p, p, rate));
    EXPECT_EQ(vekStsRangeErr, veksDecodeAdaptiveVector_G723_16s(60, -1, 0, p, p, rate));
    EXPECT_EQ(vekStsRangeErr, veksDecodeAdaptiveVector_G723_16s(60, 1, 170, p, p, rate));
    EXPECT_EQ(vekStsRangeErr, veksDecodeAdaptiveVector_G723_16s(60, 1, -1, p, p, rate));
    EXPECT_EQ(vekStsBitRateErr, veksDecodeAdaptiveVector_G723_16s(60, 1, 0, p, p, VEK_SPCHBR_DTX));
    const auto adaptive = [&](int base, int missing, int sub, VekSpchBitRate mode) {
        const auto pick = [&](int i) { return missing == i ? no : p; };
        return veksAdaptiveCodebookSearch_G723(static_cast<int16_t>(base), pick(0), pick(1), pick(2),
                                               missing == 3 ? wide : w, pick(4), pick(5), static_cast<int16_t>(sub), 0,
                                               mode);
    };
    const auto pulses = [&](int base, int missing, int sub) {
        const auto pick = [&](int i) { return missing == i ? no : p; };
        return veksMPMLQFixedCodebookSearch_G723(static_cast<int16_t>(base), pick(0), pick(1), pick(2), pick(3),
                                                 pick(4), pick(5), pick(6), missing == 7 ? wide : w,
                                                 static_cast<int16_t>(sub));
    };
    const auto quantise = [&](int missing, int count) {
        const auto pick = [&](int i) { return missing == i ? no : p; };
        return veksGainQuant_G723_16s(pick(0), pick(1), pick(2), pick(3), missing == 4 ? wide : w, pick(5), pick(6),
                                      static_cast<int16_t>(count), pick(7));
    };
    for (int missing = 0; missing < 8; ++missing) {
        EXPECT_EQ(missing < 6 ? vekStsNullPtrErr : vekStsRangeErr, adaptive(60, missing, missing < 6 ? 0 : 4, rate));
        EXPECT_EQ(vekStsNullPtrErr, pulses(60, missing, 0));
        EXPECT_EQ(vekStsNullPtrErr, quantise(missing, 6));
    }
    EXPECT_EQ(vekStsRangeErr, adaptive(17, -1, 0, rate));
    EXPECT_EQ(vekStsRangeErr, adaptive(146, -1, 0, rate));
    EXPECT_EQ(vekStsBitRateErr, adaptive(60, -1, 0, VEK_SPCHBR_6600));
    EXPECT_EQ(vekStsRangeErr, pulses(17, -1, 0));
    EXPECT_EQ(vekStsRangeErr, pulses(60, -1, 4));
    EXPECT_EQ(vekStsRangeErr, quantise(-1, 0));
    EXPECT_EQ(vekStsRangeErr, quantise(-1, 7));
    expectNullsRefused(veksToeplizMatrix_G723_16s, p, p);
    expectNullsRefused(veksToeplizMatrix_G723_16s32s, p, w);
    for (int missing = 0; missing < 7; ++missing) {
        const auto pick = [&](int i) { return missing == i ? no : p; };
        EXPECT_EQ(vekStsNullPtrErr,
                  veksACELPFixedCodebookSearch_G723_16s(pick(0), pick(1), pick(2), pick(3), pick(4), pick(5), pick(6)));
        EXPECT_EQ(vekStsNullPtrErr,
                  veksACELPFixedCodebookSearch_G723_32s16s(pick(0), missing == 1 ? nullptr : w, pick(2), pick(3),
                                                           pick(4), pick(5), pick(6)));
    }
    for (const int16_t times : {int16_t{-1}, int16_t{30001}}) {
        int16_t held = times;
        EXPECT_EQ(vekStsRangeErr, veksACELPFixedCodebookSearch_G723_16s(p, p, p, p, p, p, &held));
        EXPECT_EQ(times, held);
    }
    EXPECT_EQ(Samples(512, 0), Samples(p, p + 512));
    EXPECT_EQ(std::vector<int32_t>(512, 0), std::vector<int32_t>(w, w + 512));
}

} // namespace
