// Band split, halved rates and the rates of files of the extended wide-band codec: their filters by formula in double
// precision over whole signals, levels of tones and of what they fold to, the way there and back, places over frame
// borders, extremes and the refusals.
#include <tuple>

#include "resample_reference.h"
#include "veksc.h"

namespace {

using namespace resref;

constexpr int scales[] = {48, 54, 60, 64, 72, 80, 90, 96, 108, 120, 128, 135, 144};

// ---- Very low band ----

struct Bands {
    Samples low;
    Samples high;
    Samples joined;
};

// Splits a signal frame by frame, with what the join makes of it.
Bands splitAndJoin(const Samples& x, int len) {
    const auto size = static_cast<size_t>(len);
    Samples source(128, 0);
    source.insert(source.end(), x.begin(), x.end());
    Samples low(20 + size * 5 / 32, 0);
    Samples high(size);
    Samples joined(size);
    Bands all;
    for (size_t start = 0; start + size <= x.size(); start += size) {
        EXPECT_EQ(vekStsNoErr, veksBandSplit_AMRWBE_16s(source.data() + start, low.data(), high.data(), len));
        EXPECT_EQ(vekStsNoErr, veksBandJoin_AMRWBE_16s(low.data(), high.data(), joined.data(), len));
        all.low.insert(all.low.end(), low.begin() + 20, low.end());
        all.high.insert(all.high.end(), high.begin(), high.end());
        all.joined.insert(all.joined.end(), joined.begin(), joined.end());
    }
    return all;
}

TEST(VekWbeBandSplit, TheJoinGivesTheSourceBack) {
    atEveryLevel([] {
        std::mt19937 random(1);
        const Samples x = noise(random, 8192, -16000, 16000);
        for (const int len : {128, 512, 1024}) {
            const Bands bands = splitAndJoin(x, len);
            ASSERT_EQ(x.size(), bands.joined.size());
            for (size_t i = 0; i < 128; i++) {
                ASSERT_EQ(0, bands.joined[i]);
            }
            for (size_t i = 128; i < x.size(); i++) {
                ASSERT_EQ(x[i - 128], bands.joined[i]) << len << " " << i;
            }
        }
    });
}

TEST(VekWbeBandSplit, BothBandsAreThoseOfTheFilterByFormulaOverTheWholeSignal) {
    atEveryLevel([] {
        std::mt19937 random(2);
        const Samples x = noise(random, 4096, -16000, 16000);
        const Bands bands = splitAndJoin(x, 1024);
        const Formula down = {128, 0.45 * 5 / 32, 4.5};
        const Formula up = {20, 0.45, 4.5};
        double room = 0;
        for (long k = 0; k < 640; k++) {
            const double value = down.at({x}, 32 * k / 5 - 64, static_cast<double>(32 * k % 5) / 5, &room);
            ASSERT_NEAR(value, bands.low[static_cast<size_t>(k)], room) << k;
        }
        for (long n = 128; n < 4096; n++) {
            const double value = up.at({bands.low}, 5 * n / 32 - 10, static_cast<double>(5 * n % 32) / 32, &room);
            ASSERT_NEAR(x[static_cast<size_t>(n - 128)] - value, bands.high[static_cast<size_t>(n)], room) << n;
        }
    });
}

TEST(VekWbeBandSplit, TheJoinIsTheHighBandAndTheFilterByFormulaOverTheLowBand) {
    atEveryLevel([] {
        std::mt19937 random(21);
        for (const int len : {128, 1024}) {
            const auto size = static_cast<size_t>(len);
            const size_t part = size * 5 / 32;
            const Samples low = noise(random, 4 * len * 5 / 32, -20000, 20000);
            const Samples high = noise(random, 4 * len, -20000, 20000);
            const Formula up = {20, 0.45, 4.5};
            Samples past(20, 0);
            for (size_t frame = 0; frame < 4; frame++) {
                Samples source = past;
                source.insert(source.end(), &low[part * frame], &low[part * frame] + part);
                past.assign(source.end() - 20, source.end());
                Samples y(size);
                ASSERT_EQ(vekStsNoErr,
                          veksBandJoin_AMRWBE_16s(source.data(), high.data() + size * frame, y.data(), len));
                for (size_t i = 0; i < size; i++) {
                    const auto n = static_cast<long>(size * frame + i);
                    double room = 0;
                    const double value = up.at({low}, 5 * n / 32 - 10, static_cast<double>(5 * n % 32) / 32, &room);
                    const double sum = std::clamp(value, -32768.0, 32767.0) + high[static_cast<size_t>(n)];
                    ASSERT_NEAR(std::clamp(sum, -32768.0, 32767.0), y[i], room) << len << " " << n;
                }
            }
        }
    });
}

TEST(VekWbeBandSplit, LowTonesGoToTheLowBandAndHighOnesAreKeptFromFoldingIntoIt) {
    for (const double hertz : {50.0, 300.0, 600.0, 750.0}) {
        const Bands bands = splitAndJoin(tone(hertz / 12800, 16384), 1024);
        EXPECT_NEAR(0, level(bands.low, hertz / 2000), 0.1) << hertz;
        EXPECT_LT(power(bands.high), -38) << hertz;
    }
    for (const double hertz : {1050.0, 1300.0, 2500.0, 6000.0}) {
        const Bands bands = splitAndJoin(tone(hertz / 12800, 16384), 1024);
        EXPECT_LT(power(bands.low), -48) << hertz;
        EXPECT_NEAR(0, level(bands.high, hertz / 12800), 0.05) << hertz;
    }
}

TEST(VekWbeBandSplit, ExtremesAreCutAndLevelsAgree) {
    Samples x(4096);
    for (size_t i = 0; i < x.size(); i++) {
        x[i] = (i / 77 % 2 == 0) != (i % 50 == 7) ? 32767 : -32768;
    }
    const Bands plain = [&] {
        vekInitCpu(0);
        return splitAndJoin(x, 1024);
    }();
    EXPECT_EQ(32767, *std::max_element(plain.low.begin(), plain.low.end()));
    EXPECT_EQ(-32768, *std::min_element(plain.low.begin(), plain.low.end()));
    EXPECT_EQ(32767, *std::max_element(plain.high.begin(), plain.high.end()));
    EXPECT_EQ(-32768, *std::min_element(plain.high.begin(), plain.high.end()));
    atEveryLevel([&] {
        const Bands bands = splitAndJoin(x, 1024);
        EXPECT_EQ(plain.low, bands.low);
        EXPECT_EQ(plain.high, bands.high);
        EXPECT_EQ(plain.joined, bands.joined);
    });
    const Samples low(180, 30000);
    const Samples high(1024, 30000);
    Samples y(1024);
    ASSERT_EQ(vekStsNoErr, veksBandJoin_AMRWBE_16s(low.data(), high.data(), y.data(), 1024));
    EXPECT_EQ(Samples(1024, 32767), y);
}

TEST(VekWbeBandSplit, Refusals) {
    const Samples x(1152, 1);
    Samples low(180, 2);
    Samples y(1024, 3);
    for (const int len : {0, -1024, 64, 1000, 1152, 2048}) {
        EXPECT_EQ(vekStsSizeErr, veksBandSplit_AMRWBE_16s(x.data(), low.data(), y.data(), len));
        EXPECT_EQ(vekStsSizeErr, veksBandJoin_AMRWBE_16s(low.data(), x.data(), y.data(), len));
    }
    EXPECT_EQ(vekStsNullPtrErr, veksBandSplit_AMRWBE_16s(x.data(), nullptr, y.data(), 1024));
    EXPECT_EQ(vekStsNullPtrErr, veksBandJoin_AMRWBE_16s(low.data(), nullptr, y.data(), 1024));
    EXPECT_EQ(Samples(180, 2), low);
    EXPECT_EQ(Samples(1024, 3), y);
}

// ---- Half the rate ----

// The taps of G.722's filter, Q13.
constexpr int qmf[24] = {3,    -11, -11,  53,   12,  -156, 32,   362, -210, -805, 951, 3876,
                         3876, 951, -805, -210, 362, 32,   -156, 12,  53,   -11,  -11, 3};

Samples down(const Samples& x, int band, size_t frame) {
    Samples memory(24, 0);
    Samples y(x.size() / 2);
    for (size_t start = 0; start < x.size(); start += frame) {
        EXPECT_EQ(vekStsNoErr, veksDownsample_AMRWBE_16s(x.data() + start, static_cast<int>(frame),
                                                         y.data() + start / 2, memory.data(), band));
    }
    return y;
}

// Both halves by calls in turn with one memory.
Samples up(const Samples& low, const Samples& high, size_t frame) {
    Samples memory(24, 0);
    Samples y(2 * low.size(), 77);
    for (size_t start = 0; start < y.size(); start += frame) {
        EXPECT_EQ(vekStsNoErr, veksUpsample_AMRWBE_16s(low.data() + start / 2, y.data() + start,
                                                       static_cast<int>(frame), memory.data(), 0, 0));
        EXPECT_EQ(vekStsNoErr, veksUpsample_AMRWBE_16s(high.data() + start / 2, y.data() + start,
                                                       static_cast<int>(frame), memory.data(), 1, 1));
    }
    return y;
}

int16_t cut(int64_t sum, int shift) {
    return static_cast<int16_t>(lpref::clip((sum + (1 << (shift - 1))) >> shift, 16));
}

TEST(VekWbeHalfBand, BothDirectionsAreTheFilterByItsSums) {
    atEveryLevel([] {
        std::mt19937 random(3);
        for (const int top : {12000, 32767}) {
            const Samples x = noise(random, 3840, -top - 1, top);
            const Samples other = noise(random, 3840, -top - 1, top);
            for (const int band : {0, 1}) {
                const Samples y = down(x, band, 640);
                for (long k = 0; k < 1920; k++) {
                    int64_t sum = 0;
                    for (long j = 0; j < 24 && j <= 2 * k + 1; j++) {
                        sum += (band == 1 && j % 2 == 1 ? -1 : 1) * qmf[j] * x[static_cast<size_t>(2 * k + 1 - j)];
                    }
                    ASSERT_EQ(cut(sum, 13), y[static_cast<size_t>(k)]) << band << " " << k;
                }
            }
            const Samples y = up(x, other, 1280);
            for (long n = 0; n < 7680; n++) {
                int64_t low = 0;
                int64_t high = 0;
                for (long j = n % 2; j < 24 && j <= n; j += 2) {
                    low += qmf[j] * x[static_cast<size_t>((n - j) / 2)];
                    high += (j % 2 == 1 ? 1 : -1) * qmf[j] * other[static_cast<size_t>((n - j) / 2)];
                }
                ASSERT_EQ(lpref::clip(cut(low, 12) + cut(high, 12), 16), y[static_cast<size_t>(n)]) << n;
            }
        }
    });
}

TEST(VekWbeHalfBand, BothHalvesTogetherAreTheSignal22SamplesLate) {
    std::mt19937 random(4);
    const Samples x = noise(random, 7680, -10000, 10000);
    const Samples y = up(down(x, 0, 1280), down(x, 1, 1280), 1280);
    EXPECT_GT(lpref::signalToError(x, y, 100, 22), 45);
}

TEST(VekWbeHalfBand, EachHalfHasItsOwnTonesAndHardlyTheOther) {
    for (const double f : {0.01, 0.1, 0.15, 0.35, 0.4, 0.49}) {
        const Samples x = tone(f, 16000);
        const int band = f < 0.25 ? 0 : 1;
        const Samples own = down(x, band, 640);
        EXPECT_NEAR(0, level(own, band == 0 ? 2 * f : 1 - 2 * f), 0.1) << f;
        EXPECT_LT(power(down(x, 1 - band, 640)), -45) << f;
    }
}

TEST(VekWbeHalfBand, FramesOfAnyLengthGiveTheSamplesOfTheSignalInOnePiece) {
    std::mt19937 random(5);
    const Samples x = noise(random, 7680, -20000, 20000);
    const Samples low = down(x, 0, 7680);
    const Samples high = down(x, 1, 7680);
    const Samples all = up(low, high, 7680);
    for (const size_t frame : {24U, 80U, 640U, 1920U}) {
        EXPECT_EQ(low, down(x, 0, frame));
        EXPECT_EQ(high, down(x, 1, frame));
        EXPECT_EQ(all, up(low, high, frame));
    }
}

TEST(VekWbeHalfBand, Refusals) {
    const Samples x(9000, 1);
    Samples memory(24, 2);
    Samples y(9000, 3);
    for (const int len : {0, 22, 641, 8194, -640}) {
        EXPECT_EQ(vekStsSizeErr, veksDownsample_AMRWBE_16s(x.data(), len, y.data(), memory.data(), 0));
        EXPECT_EQ(vekStsSizeErr, veksUpsample_AMRWBE_16s(x.data(), y.data(), len, memory.data(), 0, 0));
    }
    for (const int flag : {-1, 2}) {
        EXPECT_EQ(vekStsRangeErr, veksDownsample_AMRWBE_16s(x.data(), 640, y.data(), memory.data(), flag));
        EXPECT_EQ(vekStsRangeErr, veksUpsample_AMRWBE_16s(x.data(), y.data(), 640, memory.data(), flag, 0));
        EXPECT_EQ(vekStsRangeErr, veksUpsample_AMRWBE_16s(x.data(), y.data(), 640, memory.data(), 0, flag));
    }
    EXPECT_EQ(vekStsNullPtrErr, veksDownsample_AMRWBE_16s(x.data(), 640, y.data(), nullptr, 0));
    EXPECT_EQ(vekStsNullPtrErr, veksUpsample_AMRWBE_16s(x.data(), y.data(), 640, nullptr, 0, 0));
    EXPECT_EQ(Samples(24, 2), memory);
    EXPECT_EQ(Samples(9000, 3), y);
}

// ---- Rates of files ----

struct Internal {
    Samples low;
    Samples high;
    std::vector<int> taken;
};

// The internal halves of a signal, whole frames of it.
Internal toInternal(const Samples& x, int nominal, int scale) {
    Samples memory(72, 0);
    Vek16s fraction = 0;
    Internal all;
    Samples source = x;
    source.resize(x.size() + 2 * static_cast<size_t>(nominal), 0);
    size_t at = 0;
    while (at < x.size()) {
        Samples low(1024);
        Samples high(1024);
        int count = -1;
        EXPECT_EQ(vekStsNoErr,
                  veksBandSplitDownsample_AMRWBE_16s(source.data() + at, 2 * nominal, low.data(), high.data(), 1024,
                                                     memory.data(), &fraction, &count, scale));
        all.low.insert(all.low.end(), low.begin(), low.end());
        all.high.insert(all.high.end(), high.begin(), high.end());
        all.taken.push_back(count);
        at += static_cast<size_t>(count);
    }
    return all;
}

Samples fromInternal(const Samples& low, const Samples& high, int nominal, int scale, std::vector<int>* made) {
    Samples memory(72, 0);
    Vek16s fraction = 0;
    Samples all;
    for (size_t at = 0; at < low.size(); at += 1024) {
        Samples y(2 * static_cast<size_t>(nominal), 0);
        int count = -1;
        EXPECT_EQ(vekStsNoErr, veksBandJoinUpsample_AMRWBE_16s(low.data() + at, high.data() + at, 1024, y.data(),
                                                               nominal, memory.data(), &fraction, &count, scale));
        EXPECT_LE(count, 2 * nominal);
        all.insert(all.end(), y.begin(), y.begin() + count);
        made->push_back(count);
    }
    return all;
}

double rateOf(int nominal) {
    return nominal == 3840 ? 48000 : 44100;
}

TEST(VekWbeBandResample, AFrameTakesAndGivesItsShareAndNothingDrifts) {
    kernellevels::onceIsEnough();
    for (const int nominal : {3840, 3528}) {
        for (const int scale : scales) {
            const Internal all = toInternal(Samples(60 * static_cast<size_t>(nominal), 0), nominal, scale);
            std::vector<int> made;
            fromInternal(all.low, all.high, nominal, scale, &made);
            long taken = 0;
            long given = 0;
            for (size_t i = 0; i < made.size(); i++) {
                taken += all.taken[i];
                given += made[i];
                const double share = (static_cast<double>(i) + 1) * nominal * 96 / scale;
                ASSERT_EQ(std::floor(share + 1e-6), taken) << nominal << " " << scale << " " << i;
                ASSERT_EQ(std::ceil(share - 1e-6), given) << nominal << " " << scale << " " << i;
            }
        }
    }
}

TEST(VekWbeBandResample, TheHalvesAreThoseOfTheFilterByFormulaOverTheWholeSignal) {
    atEveryLevel([] {
        std::mt19937 random(6);
        const Samples x = noise(random, 3 * 7680, -12000, 12000);
        for (const auto& [nominal, scale] : {std::pair(3840, 48), {3528, 48}, {3528, 96}, {3840, 135}, {3528, 144}}) {
            const Internal all = toInternal(x, nominal, scale);
            const int step = nominal == 3840 ? 1440 : 1323;
            const Formula formula = {48, 0.45 * 8 * scale / step, 5};
            Samples internal(2048 * 2);
            for (size_t i = 0; i < internal.size(); i++) {
                const long place = static_cast<long>(i) * step;
                double room = 0;
                const double value = formula.at({x}, place / (8 * scale) - 24,
                                                static_cast<double>(place % (8 * scale)) / (8 * scale), &room);
                internal[i] = static_cast<int16_t>(std::lround(value));
            }
            const Samples low = down(internal, 0, 2048);
            const Samples high = down(internal, 1, 2048);
            for (size_t i = 0; i < low.size(); i++) {
                ASSERT_NEAR(low[i], all.low[i], 8) << nominal << " " << scale << " " << i;
                ASSERT_NEAR(high[i], all.high[i], 8) << nominal << " " << scale << " " << i;
            }
        }
    });
}

TEST(VekWbeBandResample, TheSignalOfAFileIsTheFilterByFormulaOverAllFrames) {
    atEveryLevel([] {
        std::mt19937 random(7);
        const Samples low = noise(random, 3072, -9000, 9000);
        const Samples high = noise(random, 3072, -9000, 9000);
        const Samples internal = up(low, high, 2048);
        for (const auto& [nominal, scale] : {std::pair(3840, 48), {3528, 54}, {3840, 96}, {3528, 128}, {3840, 144}}) {
            std::vector<int> made;
            const Samples y = fromInternal(low, high, nominal, scale, &made);
            const int phases = nominal == 3840 ? 1440 : 1323;
            const Formula formula = {48, 0.46, 6};
            for (size_t i = 0; i < y.size(); i += 3) {
                const long place = static_cast<long>(i) * 8 * scale;
                double room = 0;
                const double value =
                    formula.at({internal}, place / phases - 24, static_cast<double>(place % phases) / phases, &room);
                ASSERT_NEAR(value, y[i], 8) << nominal << " " << scale << " " << i;
            }
        }
    });
}

TEST(VekWbeBandResample, TonesKeepTheirLevelAndWhatWouldFoldIsGone) {
    for (const int nominal : {3840, 3528}) {
        for (const int scale : scales) {
            const double internal = 25600.0 * scale / 96;
            const double low = 0.1 * internal;
            const Samples x = tone(low / rateOf(nominal), 12 * static_cast<size_t>(nominal));
            const Internal all = toInternal(x, nominal, scale);
            EXPECT_NEAR(0, level(all.low, 2 * low / internal), 0.1) << nominal << " " << scale;
            EXPECT_LT(power(all.high), -40) << nominal << " " << scale;
            std::vector<int> made;
            const Samples y = fromInternal(all.low, all.high, nominal, scale, &made);
            EXPECT_NEAR(0, level(y, low / rateOf(nominal), 1000), 0.1) << nominal << " " << scale;
            const double folded = (1 - 0.3) * internal;
            if (folded < 0.5 * rateOf(nominal)) {
                const Internal other =
                    toInternal(tone(folded / rateOf(nominal), 12 * static_cast<size_t>(nominal)), nominal, scale);
                EXPECT_LT(power(other.low), -45) << nominal << " " << scale;
                EXPECT_LT(power(other.high), -45) << nominal << " " << scale;
            }
        }
    }
}

TEST(VekWbeBandResample, ExtremesAreCutAndLevelsAgree) {
    Samples x(7680);
    for (size_t i = 0; i < x.size(); i++) {
        x[i] = i / 5 % 2 == 0 ? 32767 : -32768;
    }
    const Samples low(x.begin(), x.begin() + 2048);
    const auto run = [&] {
        std::vector<int> made;
        const Internal all = toInternal(x, 3528, 54);
        return std::tuple(all.low, all.high, fromInternal(low, low, 3840, 60, &made));
    };
    vekInitCpu(0);
    const auto plain = run();
    const Samples& y = std::get<2>(plain);
    EXPECT_EQ(32767, *std::max_element(y.begin(), y.end()));
    EXPECT_EQ(-32768, *std::min_element(y.begin(), y.end()));
    atEveryLevel([&] { EXPECT_EQ(plain, run()); });
}

TEST(VekWbeBandResample, Refusals) {
    const Samples x(7680, 1);
    Samples memory(72, 2);
    Samples y(7680, 3);
    Vek16s fraction = 0;
    int count = 5;
    const auto split = [&](int lenSrc, int len, int scale) {
        return veksBandSplitDownsample_AMRWBE_16s(x.data(), lenSrc, y.data(), y.data() + 1024, len, memory.data(),
                                                  &fraction, &count, scale);
    };
    const auto join = [&](int len, int lenDst, int scale) {
        return veksBandJoinUpsample_AMRWBE_16s(x.data(), x.data(), len, y.data(), lenDst, memory.data(), &fraction,
                                               &count, scale);
    };
    EXPECT_EQ(vekStsSizeErr, split(3840, 1024, 96));
    EXPECT_EQ(vekStsSizeErr, split(7681, 1024, 96));
    EXPECT_EQ(vekStsSizeErr, split(7680, 1023, 96));
    EXPECT_EQ(vekStsSizeErr, join(1024, 7680, 96));
    EXPECT_EQ(vekStsSizeErr, join(512, 3840, 96));
    for (const int scale : {0, 47, 49, 145, -96}) {
        EXPECT_EQ(vekStsRangeErr, split(7680, 1024, scale));
        EXPECT_EQ(vekStsRangeErr, join(1024, 3840, scale));
    }
    for (const int wrong : {-1, 768}) {
        fraction = static_cast<Vek16s>(wrong);
        EXPECT_EQ(vekStsRangeErr, split(7680, 1024, 96));
        EXPECT_EQ(vekStsRangeErr, join(1024, 3840, 96));
    }
    EXPECT_EQ(Samples(72, 2), memory);
    EXPECT_EQ(Samples(7680, 3), y);
    EXPECT_EQ(5, count);
}

} // namespace
