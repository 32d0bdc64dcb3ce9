// Backward adaptation of G.728: hybrid windows and Levinson's recursion against double precision.
#include "g728_reference.h"

namespace {

using namespace g728ref;
using Window = Memory<VeksWinHybridState_G728>;

struct Kind {
    VekG728Window window;
    size_t order;
    size_t frame;
    size_t newest;
    double decay; // of the amplitude, in a sample
    double sine;  // steps of the sine in a sample
};

// Steps as the recommendation prints them, to nine digits.
const Kind kinds[] = {
    {VEK_G728_WINDOW_SYNTHESIS, 50, 20, 35, 0.992833749, 0.047783433},
    {VEK_G728_WINDOW_WEIGHTING, 10, 20, 30, 0.982820598, 0.059775773},
    {VEK_G728_WINDOW_GAIN, 10, 4, 20, 0.96467863, 0.092458664},
};

double weightOf(const Kind& kind, size_t age) {
    if (age <= kind.newest) {
        return std::sin(kind.sine * static_cast<double>(age));
    }
    return std::sin(kind.sine * static_cast<double>(kind.newest + 1)) *
           std::pow(kind.decay, static_cast<double>(age - kind.newest - 1));
}

// Autocorrelation of all of x through the window, without any recursion; the first value is 1.
Reals correlation(const Kind& kind, const Reals& x) {
    Reals w(x.size());
    for (size_t n = 0; n < x.size(); ++n) {
        w[n] = x[n] * weightOf(kind, x.size() - n);
    }
    Reals r(kind.order + 1);
    for (size_t k = 0; k < r.size(); ++k) {
        for (size_t n = k; n < w.size(); ++n) {
            r[k] += w[n] * w[n - k];
        }
    }
    r[0] *= 257.0 / 256;
    const double first = r[0];
    for (double& v : r) {
        v /= first;
    }
    return r;
}

double distance(const Reals& want, const Samples& got) {
    double most = 0;
    for (size_t k = 0; k < want.size(); ++k) {
        most = std::max(most, std::abs(want[k] - static_cast<double>(got[k]) / got[0]));
    }
    return most;
}

TEST(VekG728Window, RecursionEqualsTheWindowOverAllThePast) {
    atEveryLevel([] {
        const Reals s = speech(3200);
        for (const Kind& kind : kinds) {
            Window memory(veksWinHybridGetStateSize_G728_16s);
            ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(kind.window, memory));
            Reals past;
            double most = 0;
            for (size_t n = 0; n + kind.frame <= s.size(); n += kind.frame) {
                Samples frame(kind.frame);
                for (size_t i = 0; i < kind.frame; ++i) {
                    frame[i] = static_cast<int16_t>(std::lround(4 * s[n + i]));
                    past.push_back(frame[i]);
                }
                Samples r(kind.order + 1);
                ASSERT_EQ(vekStsNoErr, veksWinHybrid_G728_16s(0, frame.data(), r.data(), memory));
                if (n < 400) {
                    continue;
                }
                ASSERT_TRUE(r[0] >= 16384) << n;
                if (n / kind.frame % 5 == 0) {
                    most = std::max(most, distance(correlation(kind, past), r));
                }
            }
            EXPECT_LT(most, 3e-4) << kind.order << " " << kind.frame;
        }
    });
}

// Five samples as mantissas that fill `bits` bits.
void block(const double* x, int bits, int16_t* mantissa, int16_t* shifts) {
    double largest = 1e-3;
    for (int i = 0; i < 5; ++i) {
        largest = std::max(largest, std::abs(x[i]));
    }
    *shifts = static_cast<int16_t>(std::min(15, static_cast<int>(std::floor(bits - std::log2(largest)))));
    for (int i = 0; i < 5; ++i) {
        mantissa[i] = static_cast<int16_t>(std::lround(std::ldexp(x[i], *shifts)));
    }
}

TEST(VekG728Window, BlocksOfDifferentScalesAreOneSignal) {
    atEveryLevel([] {
        Reals s = speech(6000);
        // Loud, faint and loud again.
        for (size_t n = 0; n < s.size(); ++n) {
            s[n] *= n / 1500 % 2 == 1 ? 0.004 : 1;
        }
        for (const int bits : {13, 11}) {
            const Kind& kind = kinds[0];
            Window memory(veksWinHybridGetStateSize_G728_16s);
            ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(kind.window, memory));
            Reals past;
            double most = 0;
            for (size_t n = 0; n + 20 <= s.size(); n += 20) {
                Samples frame(20);
                Samples shifts(4);
                for (size_t b = 0; b < 4; ++b) {
                    block(&s[n + 5 * b], bits, &frame[5 * b], &shifts[b]);
                }
                for (size_t i = 0; i < 20; ++i) {
                    past.push_back(std::ldexp(frame[i], -shifts[i / 5]));
                }
                Samples r(51);
                ASSERT_EQ(vekStsNoErr, veksWinHybridBlock_G728_16s(0, frame.data(), shifts.data(), r.data(), memory));
                if (n >= 200 && n / 20 % 7 == 0) {
                    most = std::max(most, distance(correlation(kind, past), r));
                }
            }
            EXPECT_LT(most, 1e-3) << bits;
        }
    });
}

TEST(VekG728Window, NewestSamplesWeighAsInAnotherCodecOfThisWindow) {
    // Figures of an open codec for the gain's window, newest first.
    const double figures[21] = {0.0923461914, 0.183868408, 0.273834229, 0.361480713, 0.446014404, 0.526763916,
                                0.602996826,  0.674072266, 0.739379883, 0.798400879, 0.850585938, 0.895507813,
                                0.932769775,  0.96206665,  0.983154297, 0.995819092, 1,           0.995635986,
                                0.982757568,  0.961486816, 0.932006836};
    for (size_t gap = 1; gap <= 10; ++gap) {
        for (size_t age = 1; age + gap <= 21; ++age) {
            // Two pulses: their correlation beside the first value tells the ratio of their weights.
            Samples x(24);
            x[24 - age] = 30000;
            x[24 - age - gap] = 30000;
            Window memory(veksWinHybridGetStateSize_G728_16s);
            ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(VEK_G728_WINDOW_GAIN, memory));
            Samples r(11);
            for (size_t n = 0; n < 24; n += 4) {
                ASSERT_EQ(vekStsNoErr, veksWinHybrid_G728_16s(0, &x[n], r.data(), memory));
            }
            const double a = figures[age - 1];
            const double b = figures[age + gap - 1];
            ASSERT_NEAR(static_cast<double>(r[gap]) / r[0], a * b / (a * a + b * b) * 256 / 257, 2e-4)
                << age << " " << gap;
        }
    }
}

TEST(VekG728Window, BadFramesEnterTheHistoryAndGiveNothing) {
    std::mt19937 random(1);
    for (const bool blocks : {false, true}) {
        Window good(veksWinHybridGetStateSize_G728_16s);
        Window bad(veksWinHybridGetStateSize_G728_16s);
        ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(VEK_G728_WINDOW_SYNTHESIS, good));
        ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(VEK_G728_WINDOW_SYNTHESIS, bad));
        for (int n = 0; n < 12; ++n) {
            const Samples x = noise(random, 20, -9000, 9000);
            const Samples shifts = noise(random, 4, 3, 6);
            Samples r(51, 7);
            Samples s(51, 7);
            const int bfi = n % 3 == 1;
            if (blocks) {
                ASSERT_EQ(vekStsNoErr, veksWinHybridBlock_G728_16s(0, x.data(), shifts.data(), r.data(), good));
                ASSERT_EQ(vekStsNoErr, veksWinHybridBlock_G728_16s(bfi, x.data(), shifts.data(), s.data(), bad));
            } else {
                ASSERT_EQ(vekStsNoErr, veksWinHybrid_G728_16s(0, x.data(), r.data(), good));
                ASSERT_EQ(vekStsNoErr, veksWinHybrid_G728_16s(bfi, x.data(), s.data(), bad));
            }
            EXPECT_EQ(s, bfi == 1 ? Samples(51, 7) : r);
        }
    }
}

TEST(VekG728Window, SilenceGivesZerosAndIsForgotten) {
    Window memory(veksWinHybridGetStateSize_G728_16s);
    Window fresh(veksWinHybridGetStateSize_G728_16s);
    ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(VEK_G728_WINDOW_SYNTHESIS, memory));
    ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(VEK_G728_WINDOW_SYNTHESIS, fresh));
    const Samples zero(20);
    Samples r(51, 1);
    for (int n = 0; n < 500; ++n) {
        ASSERT_EQ(vekStsNoErr, veksWinHybridBlock_G728_16s(0, zero.data(), zero.data(), r.data(), memory));
        ASSERT_EQ(r, Samples(51));
    }
    std::mt19937 random(2);
    for (int n = 0; n < 20; ++n) {
        const Samples x = noise(random, 20, -32768, 32767);
        const Samples shifts(4, static_cast<int16_t>(n % 16));
        Samples again(51);
        ASSERT_EQ(vekStsNoErr, veksWinHybridBlock_G728_16s(0, x.data(), shifts.data(), r.data(), memory));
        ASSERT_EQ(vekStsNoErr, veksWinHybridBlock_G728_16s(0, x.data(), shifts.data(), again.data(), fresh));
        for (size_t k = 0; k < 51; ++k) {
            ASSERT_NEAR(r[k], again[k], 1);
        }
    }
}

TEST(VekG728Window, LoudestSignalDoesNotWrap) {
    atEveryLevel([] {
        for (const Kind& kind : kinds) {
            Window memory(veksWinHybridGetStateSize_G728_16s);
            ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(kind.window, memory));
            const Samples x(20, -32768);
            Reals past;
            Samples r(kind.order + 1);
            for (int n = 0; n < 60; ++n) {
                ASSERT_EQ(vekStsNoErr, veksWinHybrid_G728_16s(0, x.data(), r.data(), memory));
                past.insert(past.end(), kind.frame, -32768.0);
            }
            EXPECT_LT(distance(correlation(kind, past), r), 2e-4);
        }
    });
}

TEST(VekG728Window, RefusesWhatItCannotTake) {
    Samples x(64);
    Window memory(veksWinHybridGetStateSize_G728_16s);
    EXPECT_EQ(vekStsStateErr, veksWinHybrid_G728_16s(0, x.data(), x.data(), memory));
    EXPECT_EQ(vekStsStateErr, veksWinHybridBlock_G728_16s(0, x.data(), x.data(), x.data(), memory));
    ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(VEK_G728_WINDOW_GAIN, memory));
    EXPECT_EQ(vekStsStateErr, veksWinHybridBlock_G728_16s(0, x.data(), x.data(), x.data(), memory));
    ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(VEK_G728_WINDOW_WEIGHTING, memory));
    for (const int bfi : {-1, 2}) {
        EXPECT_EQ(vekStsRangeErr, veksWinHybrid_G728_16s(bfi, x.data(), x.data(), memory));
        EXPECT_EQ(vekStsRangeErr, veksWinHybridBlock_G728_16s(bfi, x.data(), x.data(), x.data(), memory));
    }
    for (const int16_t sfs : {-1, 16}) {
        const Samples shifts = {0, 0, 0, sfs};
        EXPECT_EQ(vekStsScaleRangeErr, veksWinHybridBlock_G728_16s(0, x.data(), shifts.data(), x.data(), memory));
    }
    EXPECT_EQ(x, Samples(64));
}

// Values of a speech-like signal, as the window gives them.
Samples autocorrelation(std::mt19937& random, size_t order) {
    const Samples a = predictor(random);
    std::normal_distribution<double> normal(0, 1);
    Reals y(600);
    for (size_t n = 0; n < y.size(); ++n) {
        y[n] = normal(random);
        for (size_t i = 1; i <= 50 && i <= n; ++i) {
            y[n] -= a[i - 1] / 16384.0 * y[n - i];
        }
    }
    Reals r(order + 1);
    for (size_t k = 0; k <= order; ++k) {
        for (size_t n = k; n < y.size(); ++n) {
            r[k] += y[n] * y[n - k];
        }
    }
    r[0] *= 257.0 / 256;
    Samples q(order + 1);
    for (size_t k = 0; k <= order; ++k) {
        q[k] = static_cast<int16_t>(std::lround(32767 * r[k] / r[0]));
    }
    return q;
}

Reals real(const Samples& r) {
    return {r.begin(), r.end()};
}

// What the recursion makes of an autocorrelation.
struct Recursion {
    VekStatus status = vekStsNoErr;
    Samples a;
    int16_t first = 77;
    int32_t energy = 77;
    int16_t q = 77;
};

Recursion recursion(const Samples& r, size_t order) {
    Recursion made{.a = Samples(order, 77)};
    made.status = veksLevinsonDurbin_G728_16s_Sfs(r.data(), static_cast<int>(order), made.a.data(), &made.first,
                                                  &made.energy, &made.q);
    return made;
}

TEST(VekG728Levinson, FollowsTheRecursionInDoublePrecision) {
    atEveryLevel([] {
        std::mt19937 random(3);
        for (const size_t order : {1, 2, 10, 16, 17, 50}) {
            double most = 0;
            for (int round = 0; round < 60; ++round) {
                const Samples r = autocorrelation(random, order);
                Reals k;
                double energy = 0;
                const Reals want = levinson(real(r), order, &k, &energy);
                const auto [status, a, first, left, q] = recursion(r, order);
                ASSERT_EQ(vekStsNoErr, status);
                ASSERT_NEAR(first, 32768 * k[0], 0.51);
                ASSERT_NEAR(left / 65536.0, energy, order < 20 ? 1e-3 * energy : 1e-2 * energy);
                for (size_t i = 0; i < order; ++i) {
                    most = std::max(most, std::abs(std::ldexp(a[i], -q) - want[i]));
                }
            }
            EXPECT_LT(most, order < 20 ? 2e-3 : 2e-2) << order;
        }
    });
}

TEST(VekG728Levinson, GoesOnFromAnyOrderToTheSameBits) {
    atEveryLevel([] {
        std::mt19937 random(4);
        for (int round = 0; round < 20; ++round) {
            const Samples r = autocorrelation(random, 50);
            const auto [status, whole, first, energy, q] = recursion(r, 50);
            ASSERT_EQ(vekStsNoErr, status);
            for (int split = 0; split < 50; split += 7) {
                Samples a(50, 99);
                int32_t left = 0;
                int16_t scale = 0;
                if (split > 0) {
                    ASSERT_EQ(vekStsNoErr,
                              veksLevinsonDurbin_G728_16s_ISfs(r.data(), 0, split, a.data(), &left, &scale));
                    ASSERT_EQ(a[static_cast<size_t>(split)], 99);
                }
                ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_G728_16s_ISfs(r.data(), split, 50, a.data(), &left, &scale));
                ASSERT_EQ(a, whole) << split;
                ASSERT_EQ(left, energy);
                ASSERT_EQ(scale, q);
            }
        }
    });
}

// Fills what a call finds on its stack.
[[gnu::noinline]] void dirtyStack() {
    volatile int16_t held[4096];
    for (volatile int16_t& v : held) {
        v = 0x5a5a;
    }
}

TEST(VekG728Levinson, NothingHangsOnWhatLiesBehindTheCoefficients) {
    atEveryLevel([] {
        std::mt19937 random(5);
        for (const int order : {7, 10, 16, 17, 31, 32, 33, 49}) {
            const Samples r = autocorrelation(random, order);
            const auto [status, whole, first, energy, q] = recursion(r, static_cast<size_t>(order));
            ASSERT_EQ(vekStsNoErr, status);
            for (const int split : {1, order / 2, order - 1}) {
                Samples a(whole.size());
                int32_t left = 0;
                int16_t scale = 0;
                dirtyStack();
                ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_G728_16s_ISfs(r.data(), 0, split, a.data(), &left, &scale));
                dirtyStack();
                ASSERT_EQ(vekStsNoErr,
                          veksLevinsonDurbin_G728_16s_ISfs(r.data(), split, order, a.data(), &left, &scale));
                ASSERT_EQ(a, whole) << order << " from " << split;
                ASSERT_EQ(left, energy);
            }
        }
    });
}

// Autocorrelation of the all-pole filter with these reflection coefficients, 0 from there on.
Samples ofReflections(const Reals& k, size_t order) {
    Reals r = {1};
    Reals a;
    double energy = 1;
    for (size_t m = 0; m < order; ++m) {
        const double km = m < k.size() ? k[m] : 0;
        double next = -km * energy;
        for (size_t i = 0; i < m; ++i) {
            next -= a[i] * r[m - i];
        }
        r.push_back(next);
        stepUp(a, km);
        energy *= 1 - km * km;
    }
    Samples q;
    for (const double v : r) {
        q.push_back(static_cast<int16_t>(std::lround(32767 * v)));
    }
    return q;
}

TEST(VekG728Levinson, FormatGivesWayToLargeCoefficients) {
    atEveryLevel([] {
        struct Case {
            Reals k;
            int q;
        };
        for (const auto& [k, q] : {Case{{-0.6, 0.3}, 15}, Case{{-0.8, 0.6}, 14}, Case{{-0.92, 0.9, -0.7, 0.3}, 13}}) {
            const Samples r = ofReflections(k, 10);
            const auto [status, a, first, left, scale] = recursion(r, 10);
            ASSERT_EQ(vekStsNoErr, status);
            EXPECT_EQ(scale, q);
            // What the filter leaves of the signal is what the best one leaves, nearly.
            double least = 0;
            levinson(real(r), 10, nullptr, &least);
            Reals filter = {1};
            for (const int16_t v : a) {
                filter.push_back(std::ldexp(v, -scale));
            }
            double energy = 0;
            for (size_t i = 0; i <= 10; ++i) {
                for (size_t j = 0; j <= 10; ++j) {
                    energy += filter[i] * filter[j] * r[i > j ? i - j : j - i];
                }
            }
            EXPECT_LT(energy, 1.02 * least) << q;
        }
    });
}

// The recursion in 16 bits, one coefficient after the other.
struct WrittenOut {
    Samples a;
    int64_t energy = 0;
    int first = 0;
    int q = 15;
    bool stable = true;

    WrittenOut(const Samples& r, size_t order) : energy(r[0] * int64_t{65536}) {
        while (stable && a.size() < order) {
            step(r);
        }
    }

    void step(const Samples& r) {
        const size_t m = a.size();
        int64_t sum = r[m + 1] * (int64_t{1} << q);
        for (size_t i = 0; i < m; ++i) {
            sum += a[i] * r[m - i];
        }
        const int64_t magnitude = std::abs(sum) << (16 - q);
        const int64_t k = magnitude < energy ? (magnitude * 65536 + energy) / (2 * energy) : 32768;
        const int64_t reflection = sum < 0 ? k : -k;
        stable = k < 32768;
        std::vector<int64_t> next(m);
        const auto fits = [&] {
            for (size_t i = 0; i < m; ++i) {
                next[i] = a[i] + ((reflection * a[m - 1 - i] + 0x4000) >> 15);
            }
            return std::all_of(next.begin(), next.end(), [](int64_t v) { return std::abs(2 * v + 1) < 65536; });
        };
        while (stable && !fits()) {
            --q;
            stable = q >= 13;
            for (int16_t& v : a) {
                v = static_cast<int16_t>((v + 1) >> 1);
            }
        }
        const int64_t n = 15 - q;
        next.push_back(n > 0 ? (reflection + (int64_t{1} << (n - 1))) >> n : reflection);
        a.assign(next.begin(), next.end());
        energy -= (energy * k >> 15) * k >> 15;
        first = m == 0 ? static_cast<int>(reflection) : first;
    }
};

// An autocorrelation whose coefficients need fewer fraction bits from some step on.
Samples growingFrom(std::mt19937& random, size_t from) {
    std::uniform_real_distribution<double> unit(-1, 1);
    Reals k(50);
    for (size_t i = 0; i < k.size(); ++i) {
        k[i] = i == from || i == from + 1 ? 0.85 * (i % 2 == 0 ? -1 : 1) : 0.08 * unit(random);
    }
    return ofReflections(k, 50);
}

// Autocorrelations of order 2 whose second reflection lies half-way between two numbers.
std::vector<Samples> halfWay(size_t count) {
    constexpr int64_t unit = 1 << 17;
    std::vector<Samples> found;
    for (int64_t r0 = 32767; r0 > 16384; --r0) {
        for (int64_t r1 = 1; r1 < r0 && found.size() < count; r1 += 2) {
            const int64_t k = (r1 * 65536 + r0) / (2 * r0);
            const int64_t energy = r0 * 65536 - ((r0 * 65536 * k >> 15) * k >> 15);
            const int64_t odd = energy / unit;
            if (k > 32767 || k % 2 == 0 || energy % unit != 0 || odd % 2 == 0) {
                continue;
            }
            for (int64_t r2 = -r0; r2 <= r0; ++r2) {
                const int64_t sum = r2 * 32768 - k * r1;
                if (sum % odd == 0 && std::abs(sum) < energy / 4) {
                    found.push_back({static_cast<int16_t>(r0), static_cast<int16_t>(r1), static_cast<int16_t>(r2)});
                }
            }
        }
    }
    return found;
}

TEST(VekG728Levinson, HasTheBitsOfTheRecursionWrittenOut) {
    atEveryLevel([] {
        std::mt19937 random(11);
        std::uniform_int_distribution<int> any(-32768, 32767);
        int stable = 0;
        int coarse = 0;
        for (int round = 0; round < 400; ++round) {
            Samples r =
                round % 4 == 0 ? autocorrelation(random, 50) : growingFrom(random, static_cast<size_t>(round) % 50);
            if (round % 8 == 3) {
                r[static_cast<size_t>(1 + round % 50)] = static_cast<int16_t>(round % 16 == 3 ? -32768 : any(random));
            }
            const size_t order = static_cast<size_t>(1 + round * 7 % 50);
            const WrittenOut want(r, order);
            const auto [status, a, first, energy, q] = recursion(r, order);
            ASSERT_EQ(want.stable ? vekStsNoErr : vekStsUnstableFilter, status) << round;
            if (want.stable) {
                ++stable;
                coarse += want.q < 15 ? 1 : 0;
                ASSERT_EQ(want.a, a) << round;
                ASSERT_EQ(want.first, first) << round;
                ASSERT_EQ(want.energy, energy) << round;
                ASSERT_EQ(want.q, q) << round;
            }
        }
        EXPECT_GT(stable, 200);
        EXPECT_GT(coarse, 50);
    });
}

TEST(VekG728Levinson, QuotientsHalfWayAreRoundedAwayFromZero) {
    const std::vector<Samples> all = halfWay(20);
    ASSERT_GE(all.size(), 20U);
    atEveryLevel([&] {
        for (const Samples& r : all) {
            const WrittenOut want(r, 2);
            ASSERT_EQ(want.a, recursion(r, 2).a) << r[0] << ' ' << r[1] << ' ' << r[2];
        }
    });
}

TEST(VekG728Levinson, WhatIsNoAutocorrelationLeavesTheFilterAlone) {
    const Samples cases[] = {
        Samples(11),                                    // silence
        {20000, 20001, 0, 0, 0, 0, 0, 0, 0, 0, 0},      // beyond the first
        {20000, 20000, 0, 0, 0, 0, 0, 0, 0, 0, 0},      // reflection of 1
        {20000, 0, -20000, 0, 0, 0, 0, 0, 0, 0, 0},     // and later
        {32767, -32768, 0, 0, 0, 0, 0, 0, 0, 0, 0},     //
        {-5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},             // negative energy
        {30000, 15000, -15000, 0, 0, 0, 0, 0, 0, 0, 0}, // |k| above 1 at the second step
        ofReflections({-0.8, 0.8, -0.8, 0.8, -0.8}, 10) // coefficients beyond 4
    };
    for (const Samples& r : cases) {
        Samples a(10, 5);
        int16_t first = 6;
        int32_t left = 70000;
        int16_t scale = 14;
        EXPECT_EQ(vekStsUnstableFilter, veksLevinsonDurbin_G728_16s_Sfs(r.data(), 10, a.data(), &first, &left, &scale));
        EXPECT_EQ(vekStsUnstableFilter, veksLevinsonDurbin_G728_16s_ISfs(r.data(), 0, 10, a.data(), &left, &scale));
        EXPECT_EQ(a, Samples(10, 5));
        EXPECT_EQ(first, 6);
        EXPECT_EQ(left, 70000);
        EXPECT_EQ(scale, 14);
    }
}

TEST(VekG728Levinson, CoefficientsBeyondFourAreRefused) {
    const Samples r = ofReflections({-0.8, 0.8, -0.8, 0.8, -0.8}, 5); // the second one comes to 5.6
    Samples a(5, 5);
    int16_t first = 6;
    int32_t left = 70000;
    int16_t scale = 14;
    EXPECT_EQ(vekStsUnstableFilter, veksLevinsonDurbin_G728_16s_Sfs(r.data(), 5, a.data(), &first, &left, &scale));
    EXPECT_EQ(a, Samples(5, 5));
    EXPECT_EQ(vekStsNoErr, veksLevinsonDurbin_G728_16s_Sfs(r.data(), 4, a.data(), &first, &left, &scale));
    EXPECT_EQ(scale, 13);
}

TEST(VekG728Levinson, NoReflectionIsBelowOneWhereSumAndQuotientAreNearMultiplesOfTwoToTheThirtyTwo) {
    struct Case {
        int16_t a, r;
        int32_t energy;
    };
    constexpr Case cases[] = {{32767, 32767, INT32_MAX}, {32767, -32767, INT32_MAX}, {16384, 16384, 1}};
    atEveryLevel([&] {
        for (const Case& c : cases) {
            for (const size_t from : {4U, 12U, 20U, 40U}) {
                Samples a(from + 1);
                Samples r(from + 2);
                std::fill_n(a.begin(), 4, c.a);
                std::fill_n(r.end() - 5, 4, c.r);
                r[0] = 32767;
                const Samples before = a;
                int32_t left = c.energy;
                int16_t scale = 15;
                const auto order = static_cast<int>(from);
                EXPECT_EQ(vekStsUnstableFilter,
                          veksLevinsonDurbin_G728_16s_ISfs(r.data(), order, order + 1, a.data(), &left, &scale))
                    << order << ' ' << c.r;
                EXPECT_EQ(before, a);
                EXPECT_EQ(c.energy, left);
                EXPECT_EQ(15, scale);
            }
        }
    });
}

TEST(VekG728Levinson, WhiteNoiseNeedsNoFilter) {
    Samples r(51);
    r[0] = 16384;
    const auto [status, a, first, left, scale] = recursion(r, 50);
    ASSERT_EQ(vekStsNoErr, status);
    EXPECT_EQ(a, Samples(50));
    EXPECT_EQ(first, 0);
    EXPECT_EQ(left, 16384 * 65536);
    EXPECT_EQ(scale, 15);
}

TEST(VekG728Levinson, RefusesWhatItCannotTake) {
    Samples r(51);
    r[0] = 20000;
    Samples a(50);
    int16_t first = 0;
    int32_t left = 1000;
    int16_t scale = 15;
    for (const int order : {0, 51}) {
        EXPECT_EQ(vekStsFilterOrderErr,
                  veksLevinsonDurbin_G728_16s_Sfs(r.data(), order, a.data(), &first, &left, &scale));
        EXPECT_EQ(vekStsFilterOrderErr, veksLevinsonDurbin_G728_16s_ISfs(r.data(), 0, order, a.data(), &left, &scale));
    }
    for (const int from : {-1, 10}) {
        EXPECT_EQ(vekStsRangeErr, veksLevinsonDurbin_G728_16s_ISfs(r.data(), from, 10, a.data(), &left, &scale));
    }
    for (int16_t q : {12, 16}) {
        EXPECT_EQ(vekStsRangeErr, veksLevinsonDurbin_G728_16s_ISfs(r.data(), 5, 10, a.data(), &left, &q));
    }
    left = 0;
    EXPECT_EQ(vekStsRangeErr, veksLevinsonDurbin_G728_16s_ISfs(r.data(), 5, 10, a.data(), &left, &scale));
    EXPECT_EQ(vekStsNoErr, veksLevinsonDurbin_G728_16s_ISfs(r.data(), 0, 10, a.data(), &left, &scale));
}

} // namespace
