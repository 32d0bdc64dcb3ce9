// Synthesis of G.729.1's upper band against its definition in double precision.
#include "bwe_reference.h"

namespace {

using namespace bwe;
using lpref::bessel;

// --- excitation ---

class Excitation {
public:
    Excitation() {
        int size = 0;
        EXPECT_EQ(vekStsNoErr, veksGenerateExcitationGetStateSize_G7291_16s(&size));
        m_state.resize(static_cast<size_t>(size) + 1);
        EXPECT_EQ(vekStsNoErr, veksGenerateExcitationInit_G7291_16s(memory()));
    }

    Samples frame(const Samples& whole, const Samples& thirds, const Energies& adaptive, const Energies& fixed) {
        Samples y(160);
        EXPECT_EQ(vekStsNoErr, veksGenerateExcitation_G7291_16s(whole.data(), thirds.data(), adaptive.data(),
                                                                fixed.data(), y.data(), memory()));
        return y;
    }

    // Frames of one delay.
    Samples run(int frames, int whole, int third, int32_t adaptive, int32_t fixed) {
        Samples all;
        for (int i = 0; i < frames; ++i) {
            const Samples y = frame(Samples(4, static_cast<int16_t>(whole)), Samples(4, static_cast<int16_t>(third)),
                                    Energies(4, adaptive), Energies(4, fixed));
            all.insert(all.end(), y.begin(), y.end());
        }
        return all;
    }

    // At an odd address.
    char* memory() { return m_state.data() + 1; }

private:
    std::vector<char> m_state;
};

// The same in double: pulses by the formula of their shape, noise through the sampled shape.
class ExcitationReference {
public:
    Doubles frame(const Samples& whole, const Samples& thirds, const Energies& adaptive, const Energies& fixed) {
        Doubles pulses = m_tail;
        pulses.resize(200);
        Doubles source = m_noise;
        for (int sub = 0; sub < 4; ++sub) {
            const double p = std::max(adaptive[sub], 0);
            const double f = std::max(fixed[sub], 0);
            const double own = p + f > 0 ? p * p / (p * p + p * f + f * f) : 0;
            const double share = (own + m_share) / 2;
            m_share = own;
            int delay = 6 * std::max<int>(whole[sub], 20) + 2 * thirds[sub];
            int distance = delay;
            if (m_delay > 0) {
                const int factor = static_cast<int>(std::floor(static_cast<double>(delay) / m_delay + 0.5));
                const double deviation = std::abs(static_cast<double>(delay) / (factor * m_delay) - 1);
                if (factor > 1 && deviation < 0.1 - 1e-9 && delay / factor >= 118) {
                    delay = static_cast<int>(std::floor(static_cast<double>(delay) / factor + 0.5));
                }
                distance = (m_delay + delay + 1) / 2;
            }
            m_delay = delay;
            const double height = 2048 * std::sqrt(share * distance / 6);
            for (; m_next < 240 * (sub + 1); m_next += distance) {
                const int at = m_next / 6;
                for (int n = 0; n < 41; ++n) {
                    pulses[at + n] += (at % 2 == 0 ? height : -height) * shape(n - m_next % 6 / 6.0);
                }
            }
            for (int n = 0; n < 40; ++n) {
                m_seed = (m_seed * 31821 + 13849) % 65536;
                const double uniform = m_seed < 32768 ? m_seed : m_seed - 65536.0;
                source.push_back(2048 * std::sqrt(1 - share) * uniform / (32768 / std::sqrt(3.0)));
            }
        }
        m_next -= 960;
        Doubles y(160);
        for (int n = 0; n < 160; ++n) {
            y[n] = pulses[n];
            for (int k = 0; k < 41; ++k) {
                y[n] += shape(k) * source[40 + n - k];
            }
        }
        m_tail.assign(pulses.end() - 40, pulses.end());
        m_noise.assign(source.end() - 40, source.end());
        return y;
    }

private:
    static double shape(double n) {
        const double x = n - 20;
        const double sine = x == 0 ? 0.75 : std::sin(0.75 * kPi * x) / (kPi * x);
        return sine * (0.5 + 0.5 * std::cos(kPi * x / 21));
    }

    Doubles m_tail = Doubles(40, 0.0);
    Doubles m_noise = Doubles(40, 0.0);
    double m_share = 0;
    int m_delay = 0;
    int m_next = 0;
    long m_seed = 21845;
};

TEST(VekG7291Excitation, IsPulsesAndNoiseOfTheirShares) {
    atEveryLevel([] {
        std::mt19937 random(6);
        for (const int top : {3, 2048, 1000000, 2147483647}) {
            Excitation ours;
            ExcitationReference theirs;
            int32_t worst = 0;
            for (int frame = 0; frame < 50; ++frame) {
                const Samples whole = noise(random, 4, 0, 144);
                const Samples thirds = noise(random, 4, -1, 1);
                Energies adaptive(4);
                Energies fixed(4);
                for (int sub = 0; sub < 4; ++sub) {
                    std::uniform_int_distribution<int32_t> pick(-top / 4, top);
                    adaptive[sub] = pick(random);
                    fixed[sub] = pick(random);
                }
                const Samples got = ours.frame(whole, thirds, adaptive, fixed);
                const Doubles want = theirs.frame(whole, thirds, adaptive, fixed);
                for (int n = 0; n < 160; ++n) {
                    worst = std::max(worst, static_cast<int32_t>(std::ceil(std::abs(want[n] - got[n]))));
                }
            }
            EXPECT_LE(worst, 5) << top;
        }
    });
}

TEST(VekG7291Excitation, PulsesComeBackAfterADelayWithTheirSignTurnedByOddOnes) {
    for (const int delay : {20, 33, 58, 97, 144}) {
        const Samples y = Excitation().run(8, delay, 0, 1000000, 0);
        const int sign = delay % 2 == 0 ? 1 : -1;
        for (size_t n = 400; n < y.size(); ++n) {
            ASSERT_EQ(sign * y[n - static_cast<size_t>(delay)], y[n]) << delay << " " << n;
        }
    }
    // Three delays and a third are ten samples.
    const Samples y = Excitation().run(8, 33, 1, 1000000, 0);
    for (size_t n = 400; n < y.size(); ++n) {
        ASSERT_EQ(y[n - 100], y[n]) << n;
    }
}

TEST(VekG7291Excitation, HasTheSamePowerOfPulsesAsOfNoise) {
    const double wanted = 2048 * std::sqrt(0.75);
    EXPECT_NEAR(wanted, level(Excitation().run(50, 40, 0, 0, 5000)), 0.05 * wanted);
    EXPECT_NEAR(wanted, level(Excitation().run(50, 40, 0, 5000, 0)), 0.1 * wanted);
    EXPECT_NEAR(wanted, level(Excitation().run(50, 130, 1, 5000, 0)), 0.1 * wanted);
    EXPECT_NEAR(wanted, level(Excitation().run(50, 75, 1, 700, 700)), 0.1 * wanted);
    EXPECT_NEAR(wanted, level(Excitation().run(50, 75, 1, 0, 0)), 0.1 * wanted);
}

TEST(VekG7291Excitation, HasHardlyAnythingAboveThreeKilohertz) {
    const Samples y = Excitation().run(20, 77, 1, 3000, 3000);
    double low = 0;
    double high = 0;
    for (int k = 1; k < 64; ++k) {
        std::complex<double> sum = 0;
        for (int n = 0; n < 1280; ++n) {
            sum += double{1} * y[640 + n] * (0.5 - 0.5 * std::cos(2 * kPi * n / 1280)) *
                   std::polar(1.0, -2 * kPi * k * n / 128);
        }
        low += k < 44 ? std::norm(sum) : 0;
        high += k > 55 ? std::norm(sum) : 0;
    }
    EXPECT_LT(high, low * 1e-4);
}

TEST(VekG7291Excitation, AMultipleOfTheDelayBeforeIsDivided) {
    Excitation straight;
    Excitation jumping;
    const Energies voiced(4, 1000);
    const Energies none(4, 0);
    for (int frame = 0; frame < 3; ++frame) {
        const Samples want = straight.frame(Samples(4, 40), Samples(4, 0), voiced, none);
        const Samples got =
            jumping.frame(frame == 1 ? Samples{40, 80, 120, 40} : Samples(4, 40), Samples(4, 0), voiced, none);
        EXPECT_EQ(want, got);
    }
    // A delay between the multiples is none.
    EXPECT_NE(straight.frame(Samples(4, 40), Samples(4, 0), voiced, none),
              jumping.frame(Samples(4, 60), Samples(4, 0), voiced, none));
}

TEST(VekG7291Excitation, ShortDelaysCountAsTwenty) {
    EXPECT_EQ(Excitation().run(3, 20, 0, 1000, 100), Excitation().run(3, 0, 0, 1000, 100));
    EXPECT_NE(Excitation().run(3, 20, 0, 1000, 100), Excitation().run(3, 21, 0, 1000, 100));
}

TEST(VekG7291Excitation, RefusesDelaysAndStatesThatAreNone) {
    const Samples good(4, 50);
    const Samples zero(4, 0);
    const Energies power(4, 100);
    Samples y(160, 3);
    Excitation state;
    for (int sub = 0; sub < 4; ++sub) {
        for (const int16_t lag : {-1, 145}) {
            Samples bad = good;
            bad[sub] = lag;
            EXPECT_EQ(vekStsRangeErr, veksGenerateExcitation_G7291_16s(bad.data(), zero.data(), power.data(),
                                                                       power.data(), y.data(), state.memory()));
        }
        for (const int16_t third : {-2, 2}) {
            Samples bad = zero;
            bad[sub] = third;
            EXPECT_EQ(vekStsRangeErr, veksGenerateExcitation_G7291_16s(good.data(), bad.data(), power.data(),
                                                                       power.data(), y.data(), state.memory()));
        }
    }
    std::vector<char> empty(2000);
    EXPECT_EQ(vekStsStateErr, veksGenerateExcitation_G7291_16s(good.data(), zero.data(), power.data(), power.data(),
                                                               y.data(), empty.data()));
    EXPECT_EQ(Samples(160, 3), y);
    EXPECT_EQ(state.frame(good, zero, power, power), Excitation().frame(good, zero, power, power));
}

// --- time shaping ---

constexpr double kRise[] = {0.0669873, 0.25, 0.5, 0.75, 0.9330127};

void expectShaped(const Samples& x, const Samples& envelope, double last, const Samples& y) {
    for (int i = 0; i < 8; ++i) {
        const double e = energy(x.data() + 10 * i, 10);
        const double own = e > 0 ? std::exp2(envelope[i] / 1024.0) / std::sqrt(e) : last;
        for (int n = 0; n < 10; ++n) {
            const double w = n < 5 ? kRise[n] : 1;
            const double want = x[10 * i + n] * (w * own + (1 - w) * last);
            const double clipped = std::min(std::max(want, -32768.0), 32767.0);
            ASSERT_NEAR(clipped, y[10 * i + n], 0.6 + std::abs(clipped) * 0.001) << i << " " << n;
        }
        last = own;
    }
}

TEST(VekG7291ShapeTime, GivesEachSegmentItsGain) {
    atEveryLevel([] {
        std::mt19937 random(7);
        for (const int top : {2, 60, 3000, 32767}) {
            for (const int mean : {-1500, 0, 6000, 12000, 16000}) {
                int16_t gain = 20000;
                int16_t norm = 16;
                double last = 20000.0 / 65536;
                for (int frame = 0; frame < 4; ++frame) {
                    const Samples x = noise(random, 80, -top, top);
                    Samples envelope = noise(random, 8, -2500, 2500);
                    for (int16_t& v : envelope) {
                        v = static_cast<int16_t>(v + mean);
                    }
                    Samples y(80);
                    ASSERT_EQ(vekStsNoErr,
                              veksShapeEnvelopTime_G7291_16s(x.data(), envelope.data(), &gain, &norm, y.data()));
                    expectShaped(x, envelope, last, y);
                    const double e = energy(x.data() + 70, 10);
                    last = e > 0 ? std::exp2(envelope[7] / 1024.0) / std::sqrt(e) : last;
                    ASSERT_NEAR(last, gain * std::exp2(-norm), last * 0.001);
                    ASSERT_GE(gain, 16384);
                    last = gain * std::exp2(-norm);
                }
            }
        }
    });
}

TEST(VekG7291ShapeTime, OfASteadySignalHasTheEnvelopeWanted) {
    std::mt19937 random(8);
    const Samples x = noise(random, 80, -900, 900);
    const Samples wanted(8, 11000);
    int16_t gain = 0;
    int16_t norm = 0;
    Samples y(80);
    ASSERT_EQ(vekStsNoErr, veksShapeEnvelopTime_G7291_16s(x.data(), wanted.data(), &gain, &norm, y.data()));
    // From silence the first segment rises.
    EXPECT_LT(timeEnvelope(y)[0], 11000 - 20);
    const Samples got = timeEnvelope(y);
    for (int i = 1; i < 8; ++i) {
        EXPECT_NEAR(11000, got[i], 700) << i;
    }
}

TEST(VekG7291ShapeTime, InPlaceAndInTwoSignalsAreTheSame) {
    std::mt19937 random(9);
    const Samples x = noise(random, 80, -900, 900);
    const Samples envelope = noise(random, 8, 5000, 12000);
    int16_t gain[] = {17000, 17000};
    int16_t norm[] = {14, 14};
    Samples y(80);
    Samples place = x;
    ASSERT_EQ(vekStsNoErr, veksShapeEnvelopTime_G7291_16s(x.data(), envelope.data(), gain, norm, y.data()));
    ASSERT_EQ(vekStsNoErr,
              veksShapeEnvelopTime_G7291_16s(place.data(), envelope.data(), gain + 1, norm + 1, place.data()));
    EXPECT_EQ(y, place);
    EXPECT_EQ(gain[0], gain[1]);
    EXPECT_EQ(norm[0], norm[1]);
}

TEST(VekG7291ShapeTime, ZerosKeepTheGain) {
    const Samples zeros(80);
    const Samples envelope(8, 9000);
    int16_t gain = 1234;
    int16_t norm = -7;
    Samples y(80, 5);
    ASSERT_EQ(vekStsNoErr, veksShapeEnvelopTime_G7291_16s(zeros.data(), envelope.data(), &gain, &norm, y.data()));
    EXPECT_EQ(zeros, y);
    EXPECT_EQ(1234, gain);
    EXPECT_EQ(-7, norm);
}

TEST(VekG7291ShapeTime, ExtremesSaturateOrVanish) {
    const Samples loud(80, -32768);
    for (const int16_t start : {-32, 14, 63}) {
        int16_t gain = 32767;
        int16_t norm = start;
        Samples y(80);
        ASSERT_EQ(vekStsNoErr,
                  veksShapeEnvelopTime_G7291_16s(loud.data(), Samples(8, 32767).data(), &gain, &norm, y.data()));
        EXPECT_EQ(Samples(70, -32768), Samples(y.begin() + 10, y.end()));
        ASSERT_EQ(vekStsNoErr,
                  veksShapeEnvelopTime_G7291_16s(loud.data(), Samples(8, -32768).data(), &gain, &norm, y.data()));
        EXPECT_EQ(Samples(75, 0), Samples(y.begin() + 5, y.end()));
        EXPECT_EQ(63, norm);
    }
    int16_t none = 0;
    int16_t two = -2;
    Samples rest(80, 1);
    ASSERT_EQ(vekStsNoErr,
              veksShapeEnvelopTime_G7291_16s(loud.data(), Samples(8, -32768).data(), &none, &two, rest.data()));
    EXPECT_EQ(Samples(80, 0), rest);
    const Samples quiet(80, 1);
    int16_t gain = 0;
    int16_t norm = 0;
    Samples y(80);
    ASSERT_EQ(vekStsNoErr,
              veksShapeEnvelopTime_G7291_16s(quiet.data(), Samples(8, 32767).data(), &gain, &norm, y.data()));
    EXPECT_EQ(Samples(75, 32767), Samples(y.begin() + 5, y.end()));
}

TEST(VekG7291ShapeTime, RefusesGainsOutOfRange) {
    const Samples x(80, 100);
    const Samples envelope(8, 9000);
    Samples y(80, 5);
    for (const auto& [m, e] : {std::pair<int16_t, int16_t>{-1, 0}, {1, -33}, {1, 64}}) {
        int16_t gain = m;
        int16_t norm = e;
        EXPECT_EQ(vekStsRangeErr, veksShapeEnvelopTime_G7291_16s(x.data(), envelope.data(), &gain, &norm, y.data()));
    }
    EXPECT_EQ(Samples(80, 5), y);
}

// --- frequency shaping ---

Doubles filterFor(const int16_t* x, const Samples& envelope) {
    const Doubles own = bands(x);
    Doubles h(33, 0.0);
    for (int j = 0; j < 12; ++j) {
        const double gain = std::min(std::exp2(envelope[j] / 1024.0 - own[j]), 8.0);
        for (int n = 0; n < 33; ++n) {
            const double m = n - 16;
            const double window = bessel(4 * std::sqrt(1 - m * m / 256)) / bessel(4);
            const double centre = 2 * kPi * (2 * j + 1) / 64;
            const double wide = m == 0 ? 1.0 / 16 : 2 * std::sin(kPi * m / 32) / (kPi * m);
            h[n] += gain * window * wide * std::cos(centre * m);
        }
    }
    return h;
}

struct FrequencyShaper {
    Samples filter = Samples(33, 0);
    Samples memory = Samples(32, 0);

    // 48 samples of history and 160.
    Samples frame(const Samples& x, const Samples& envelope) {
        Samples y(160);
        EXPECT_EQ(vekStsNoErr, veksShapeEnvelopFrequency_G7291_16s(x.data() + 48, envelope.data(), y.data(),
                                                                   filter.data(), memory.data()));
        return y;
    }
};

TEST(VekG7291ShapeFrequency, FiltersEachHalfByTheBandsGains) {
    atEveryLevel([] {
        std::mt19937 random(10);
        const Samples all = white(random, 48 + 160 * 6, 1500);
        FrequencyShaper shaper;
        Doubles last(33, 0.0);
        for (int frame = 0; frame < 6; ++frame) {
            const Samples x(all.begin() + 160 * frame, all.begin() + 160 * frame + 208);
            Samples envelope = noise(random, 12, 12500, 15500);
            const Samples past = shaper.memory;
            const Samples y = shaper.frame(x, envelope);
            const Doubles ends[] = {filterFor(x.data(), envelope), filterFor(x.data() + 80, envelope)};
            for (int n = 0; n < 160; ++n) {
                double want = 0;
                for (int k = 0; k < 33; ++k) {
                    const double h = n < 80 ? (ends[0][k] + last[k]) / 2 : ends[1][k];
                    want += h * (n - k < 0 ? past[32 + n - k] : x[48 + n - k]);
                }
                ASSERT_NEAR(want, y[n], 12 + std::abs(want) * 0.005) << frame << " " << n;
            }
            for (int k = 0; k < 33; ++k) {
                ASSERT_NEAR(4096 * ends[1][k], shaper.filter[k], 4 + std::abs(ends[1][k]) * 20);
            }
            EXPECT_EQ(Samples(x.end() - 32, x.end()), shaper.memory);
            last = ends[1];
        }
    });
}

TEST(VekG7291ShapeFrequency, NoiseGetsTheEnvelopeWanted) {
    std::mt19937 random(11);
    const int frames = 60;
    const Samples all = white(random, 48 + 160 * frames, 1000);
    Samples envelope(12);
    for (int j = 0; j < 12; ++j) {
        envelope[j] = static_cast<int16_t>(13500 - 150 * j);
    }
    FrequencyShaper shaper;
    Samples out;
    for (int frame = 0; frame < frames; ++frame) {
        const Samples y = shaper.frame(Samples(all.begin() + 160 * frame, all.begin() + 160 * frame + 208), envelope);
        out.insert(out.end(), y.begin(), y.end());
    }
    Doubles mean(12, 0.0);
    int count = 0;
    for (size_t at = 160; at + 128 <= out.size(); at += 64, ++count) {
        const Samples f =
            bandEnvelope(Samples(out.begin() + static_cast<long>(at), out.begin() + static_cast<long>(at) + 128));
        for (int j = 0; j < 12; ++j) {
            mean[j] += f[j];
        }
    }
    for (int j = 0; j < 12; ++j) {
        EXPECT_NEAR(envelope[j], mean[j] / count, 400) << j;
    }
}

TEST(VekG7291ShapeFrequency, GainsEndAtEight) {
    std::mt19937 random(12);
    const Samples x = white(random, 208, 20);
    FrequencyShaper some;
    FrequencyShaper more;
    some.frame(x, Samples(12, 20000));
    more.frame(x, Samples(12, 32767));
    EXPECT_EQ(some.filter, more.filter);
    for (int n = 0; n < 33; ++n) {
        const double m = n - 16;
        const double window = bessel(4 * std::sqrt(1 - m * m / 256)) / bessel(4);
        const double ideal = m == 0 ? 0.75 : std::sin(0.75 * kPi * m) / (kPi * m);
        EXPECT_NEAR(8 * 4096 * ideal * window, some.filter[n], 2) << n;
    }
}

TEST(VekG7291ShapeFrequency, LoudOnesSaturate) {
    Samples x(208);
    for (int n = 0; n < 208; ++n) {
        x[n] = static_cast<int16_t>(n / 8 % 2 == 0 ? 32767 : -32768);
    }
    FrequencyShaper shaper;
    shaper.filter.assign(33, 32767);
    shaper.memory.assign(32, 32767);
    const Samples y = shaper.frame(x, Samples(12, 32767));
    EXPECT_EQ(32767, *std::max_element(y.begin(), y.end()));
    EXPECT_EQ(-32768, *std::min_element(y.begin(), y.end()));
    EXPECT_EQ(32767, y[0]);
    EXPECT_EQ(Samples(160, 0), FrequencyShaper().frame(Samples(208), Samples(12, 32767)));
}

// --- compression ---

double compressed(double x, double e) {
    const double size = std::abs(x);
    const double y = size <= e / 2 ? size : size <= e ? e / 2 + (size - e / 2) / 2 : e * 3 / 4 + (size - e) / 16;
    return x < 0 ? -y : y;
}

TEST(VekG7291Compress, FollowsItsCurveSixteenSamplesLater) {
    std::mt19937 random(13);
    Samples past = {7000, 9000};
    for (int frame = 0; frame < 40; ++frame) {
        const int top = 4 << (frame % 14);
        const Samples envelope = noise(random, 16, -3000, 1100 * (2 + frame % 14));
        const Samples x = noise(random, 160, -std::min(top, 32767) - (top > 32767 ? 1 : 0), std::min(top, 32767));
        Samples y = x;
        Samples memory = past;
        ASSERT_EQ(vekStsNoErr, veksCompressEnvelopTime_G7291_16s(envelope.data(), y.data(), memory.data()));
        for (int n = 0; n < 160; ++n) {
            const int at = n < 6 ? -2 : n < 16 ? -1 : (n - 16) / 10;
            const double e = std::exp2((at < 0 ? past[2 + at] : envelope[at]) / 1024.0);
            const double want = compressed(x[n], e);
            ASSERT_NEAR(want, y[n], 0.6 + std::abs(want) * 0.001) << frame << " " << n;
        }
        EXPECT_EQ((Samples{envelope[14], envelope[15]}), memory);
        past = memory;
    }
}

TEST(VekG7291Compress, LeavesWhatStaysInTheEnvelope) {
    std::mt19937 random(14);
    const Samples x = noise(random, 160, -1000, 1000);
    Samples y = x;
    Samples memory(2, 11 * 1024);
    ASSERT_EQ(vekStsNoErr, veksCompressEnvelopTime_G7291_16s(Samples(16, 11 * 1024).data(), y.data(), memory.data()));
    EXPECT_EQ(x, y);
    Samples full(160, -32768);
    memory.assign(2, 32767);
    ASSERT_EQ(vekStsNoErr, veksCompressEnvelopTime_G7291_16s(Samples(16, 32767).data(), full.data(), memory.data()));
    EXPECT_EQ(Samples(160, -32768), full);
    memory.assign(2, -32768);
    ASSERT_EQ(vekStsNoErr, veksCompressEnvelopTime_G7291_16s(Samples(16, -32768).data(), full.data(), memory.data()));
    EXPECT_EQ(Samples(160, -2048), full);
}

// --- the chain ---

TEST(VekG7291BandExtension, ASyntheticBandHasTheLevelThatWasCoded) {
    std::mt19937 random(15);
    Excitation excitation;
    FrequencyShaper shaper;
    const Samples signal = white(random, 208 + 160 * 40, 800);
    int16_t gain = 0;
    int16_t norm = 0;
    Samples timeMemory(2, 0);
    Samples history(48, 0);
    Samples out;
    for (int frame = 0; frame < 40; ++frame) {
        const int16_t* x = signal.data() + 48 + 160 * frame;
        Samples parameters(28);
        ASSERT_EQ(vekStsNoErr, veksEnvelopTime_G7291_16s(x, 0, parameters.data(), 16));
        ASSERT_EQ(vekStsNoErr, veksEnvelopFrequency_G7291_16s(x + 48, parameters.data() + 16));
        Samples index(6);
        ASSERT_EQ(vekStsNoErr, veksQuantParam_G7291_16s(parameters.data(), index.data()));
        const Samples source = excitation.frame(Samples(4, 60), Samples(4, 0), Energies(4, 300), Energies(4, 3000));
        Samples shaped = history;
        shaped.resize(208);
        for (int half = 0; half < 2; ++half) {
            ASSERT_EQ(vekStsNoErr,
                      veksShapeEnvelopTime_G7291_16s(source.data() + 80 * half, parameters.data() + 8 * half, &gain,
                                                     &norm, shaped.data() + 48 + 80 * half));
        }
        history.assign(shaped.end() - 48, shaped.end());
        Samples y = shaper.frame(shaped, Samples(parameters.begin() + 16, parameters.end()));
        ASSERT_EQ(vekStsNoErr, veksCompressEnvelopTime_G7291_16s(parameters.data(), y.data(), timeMemory.data()));
        out.insert(out.end(), y.begin(), y.end());
    }
    // The band ends at 3 of 4 kHz.
    EXPECT_NEAR(std::log2(800 * std::sqrt(0.75)), std::log2(level(out)), 0.5);
}

} // namespace
