// Subband analysis and synthesis, and the tone detector: against the definitions in double precision at every level,
// a signal given back by the pair, decisions on tones, speech-like noise and tones that only look alike, refusals.
#include <cmath>
#include <complex>

#include "lp_reference.h"
#include "statememory.h"
#include "veksc.h"

namespace {

using Bytes = std::vector<Vek8u>;

// A process in memory at an odd address.
template <class State>
struct Process {
    Bytes state;
    Bytes buffer;
    int points = 0;
    State* get() { return reinterpret_cast<State*>(state.data() + 1); }
    Vek8u* work() { return buffer.data() + 1; }
};
using FloatProcess = Process<VeksSubbandProcessState_32f>;
using FixedProcess = Process<VeksSubbandProcessState_16s>;

// A process of one kind by its size and init functions.
template <class State, class Size, class Init, class Window>
Process<State> made(Size sizeOf, Init init, int order, int frame, const Window& window) {
    Process<State> p;
    int size = 0;
    int buffer = 0;
    const int len = static_cast<int>(window.size());
    EXPECT_EQ(vekStsNoErr, sizeOf(order, len, &size, &p.points, &buffer));
    p.state.resize(static_cast<size_t>(size) + 1);
    p.buffer.resize(static_cast<size_t>(buffer) + 1);
    EXPECT_EQ(vekStsNoErr, init(p.get(), order, frame, len, window.data(), p.work()));
    return p;
}

FloatProcess make(int order, int frame, const Floats& window) {
    return made<VeksSubbandProcessState_32f>(veksSubbandProcessGetSize_32f, veksSubbandProcessInit_32f, order, frame,
                                             window);
}

FixedProcess make(int order, int frame, const Samples& window) {
    return made<VeksSubbandProcessState_16s>(veksSubbandProcessGetSize_16s, veksSubbandProcessInit_16s, order, frame,
                                             window);
}

std::vector<std::complex<double>> transformOfFold(const std::vector<double>& windowed, int points) {
    std::vector<std::complex<double>> out(static_cast<size_t>(points / 2 + 1));
    for (int k = 0; k <= points / 2; k++) {
        for (size_t n = 0; n < windowed.size(); n++) {
            out[k] += windowed[n] * std::polar(1.0, -2 * M_PI * k * static_cast<double>(n) / points);
        }
    }
    return out;
}

Floats sine(int len) {
    Floats w(static_cast<size_t>(len));
    for (int n = 0; n < len; n++) {
        w[n] = static_cast<float>(std::sin(M_PI * (n + 0.5) / len));
    }
    return w;
}

// Root of a raised cosine: its correlation vanishes at multiples of `points`, but for the ends cut off.
Floats rootNyquist(int len, int points) {
    Floats w(static_cast<size_t>(len));
    for (int n = 0; n < len; n++) {
        const double t = (n + 0.5 - len / 2.0) / points;
        const double a = 1.0;
        const double h =
            std::fabs(1 - 16 * a * a * t * t) < 1e-9
                ? a / std::sqrt(2.0) *
                      ((1 + 2 / M_PI) * std::sin(M_PI / (4 * a)) + (1 - 2 / M_PI) * std::cos(M_PI / (4 * a)))
                : (std::sin(M_PI * t * (1 - a)) + 4 * a * t * std::cos(M_PI * t * (1 + a))) /
                      (M_PI * t * (1 - 16 * a * a * t * t));
        w[n] = static_cast<float>(h);
    }
    return w;
}

TEST(VekEcAnalysis, FloatFormIsTheTransformOfTheWindowedFold) {
    atEveryLevel([] {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> pick(-1, 1);
        for (const int order : {5, 6}) {
            const int points = 1 << order;
            for (const int folds : {1, 4, 16}) {
                const int len = folds * points;
                Floats window(static_cast<size_t>(len));
                for (float& w : window) {
                    w = pick(random);
                }
                for (const int frame : {1, 24, points, len}) {
                    FloatProcess p = make(order, frame, window);
                    EXPECT_EQ(points, p.points);
                    std::vector<double> history(static_cast<size_t>(len));
                    for (int round = 0; round < 4; round++) {
                        Floats x(static_cast<size_t>(frame));
                        for (float& v : x) {
                            v = pick(random);
                        }
                        history.erase(history.begin(), history.begin() + frame);
                        history.insert(history.end(), x.begin(), x.end());
                        std::vector<double> windowed = history;
                        for (int n = 0; n < len; n++) {
                            windowed[n] *= window[n];
                        }
                        const auto exact = transformOfFold(windowed, points);
                        std::vector<Vek32fc> out(exact.size());
                        ASSERT_EQ(vekStsNoErr, veksSubbandAnalysis_32f32fc(x.data(), out.data(), p.get(), p.work()));
                        for (size_t k = 0; k < out.size(); k++) {
                            ASSERT_NEAR(exact[k].real(), out[k].re, 3e-5) << order << " " << len << " " << k;
                            ASSERT_NEAR(exact[k].imag(), out[k].im, 3e-5) << order << " " << len << " " << k;
                        }
                    }
                }
            }
        }
    });
}

TEST(VekEcAnalysis, IntegerFormIsWithinHalfAUnitAtEveryScaleAndSaturates) {
    atEveryLevel([] {
        std::mt19937 random(2);
        for (const int order : {5, 6}) {
            const int points = 1 << order;
            for (const int scale : {-31, -6, 0, 1, 8, 31}) {
                const int len = 2 * points;
                const Samples window = noise(random, len, -32768, 32767);
                FixedProcess p = make(order, len, window);
                const Samples x = noise(random, len, -32768, 32767);
                std::vector<double> windowed(static_cast<size_t>(len));
                for (int n = 0; n < len; n++) {
                    windowed[n] = window[n] / 32768.0 * x[n];
                }
                const auto exact = transformOfFold(windowed, points);
                std::vector<Vek32sc> out(exact.size());
                ASSERT_EQ(vekStsNoErr, veksSubbandAnalysis_16s32sc_Sfs(x.data(), out.data(), p.get(), scale, p.work()));
                const auto bound = [scale](double v) {
                    return std::min(std::max(std::ldexp(v, -scale), -2147483648.0), 2147483647.0);
                };
                for (size_t k = 0; k < out.size(); k++) {
                    const double slack = 0.501 + std::ldexp(1e-8, -scale);
                    ASSERT_NEAR(bound(exact[k].real()), out[k].re, slack) << order << " " << scale << " " << k;
                    ASSERT_NEAR(bound(exact[k].imag()), out[k].im, slack) << order << " " << scale << " " << k;
                }
            }
        }
    });
}

TEST(VekEcAnalysis, LevelsGiveTheSameBits) {
    std::vector<std::vector<int32_t>> fixed;
    std::vector<Floats> floating;
    atEveryLevel([&] {
        std::mt19937 random(3);
        const Samples window = noise(random, 128, -32768, 32767);
        const Floats windowF(window.begin(), window.end());
        FixedProcess p = make(6, 16, window);
        FloatProcess pf = make(6, 16, windowF);
        std::vector<int32_t> all;
        Floats allF;
        for (int round = 0; round < 50; round++) {
            const Samples x = noise(random, 16, -32768, 32767);
            const Floats xf(x.begin(), x.end());
            Vek32sc bands[33];
            Vek32fc bandsF[33];
            Samples y(16);
            Floats yf(16);
            veksSubbandAnalysis_16s32sc_Sfs(x.data(), bands, p.get(), 1, p.work());
            veksSubbandSynthesis_32sc16s_Sfs(bands, y.data(), p.get(), -1, p.work());
            veksSubbandAnalysis_32f32fc(xf.data(), bandsF, pf.get(), pf.work());
            veksSubbandSynthesis_32fc32f(bandsF, yf.data(), pf.get(), pf.work());
            for (int k = 0; k < 33; k++) {
                all.insert(all.end(), {bands[k].re, bands[k].im});
                allF.insert(allF.end(), {bandsF[k].re, bandsF[k].im});
            }
            all.insert(all.end(), y.begin(), y.end());
            allF.insert(allF.end(), yf.begin(), yf.end());
        }
        fixed.push_back(all);
        floating.push_back(allF);
    });
    for (size_t i = 1; i < fixed.size(); i++) {
        EXPECT_EQ(fixed[0], fixed[i]);
        EXPECT_EQ(floating[0], floating[i]);
    }
}

// Signal against error of what comes back, in dB, after the delay of the window less a frame.
double reconstruction(int order, int frame, const Floats& window) {
    std::mt19937 random(4);
    std::uniform_real_distribution<float> pick(-1, 1);
    FloatProcess p = make(order, frame, window);
    const int rounds = 200;
    Floats x(static_cast<size_t>(frame * rounds));
    for (float& v : x) {
        v = pick(random);
    }
    Floats y(x.size());
    std::vector<Vek32fc> bands(static_cast<size_t>(p.points / 2 + 1));
    for (int r = 0; r < rounds; r++) {
        veksSubbandAnalysis_32f32fc(&x[r * frame], bands.data(), p.get(), p.work());
        bands.front().im = 99; // not read
        bands.back().im = -99;
        veksSubbandSynthesis_32fc32f(bands.data(), &y[r * frame], p.get(), p.work());
    }
    return lpref::signalToError(x, y, 2 * window.size(), window.size() - static_cast<size_t>(frame));
}

TEST(VekEcSynthesis, GivesTheSignalBackThroughAWindowAsLongAsTheTransform) {
    atEveryLevel([] {
        EXPECT_GT(reconstruction(6, 16, sine(64)), 120);
        EXPECT_GT(reconstruction(6, 32, sine(64)), 120);
        EXPECT_GT(reconstruction(6, 24, sine(64)), 120);
        EXPECT_GT(reconstruction(5, 24, sine(32)), 110);
        EXPECT_GT(reconstruction(5, 8, sine(32)), 120);
    });
}

TEST(VekEcSynthesis, GivesTheSignalBackWithin30DbThroughALongRootNyquistWindow) {
    EXPECT_GT(reconstruction(5, 8, rootNyquist(128, 32)), 30);
    EXPECT_GT(reconstruction(6, 16, rootNyquist(256, 64)), 30);
}

TEST(VekEcSynthesis, IntegerPairGivesTheSignalBackWithinOne) {
    atEveryLevel([] {
        std::mt19937 random(5);
        Samples window(64);
        for (int n = 0; n < 64; n++) {
            window[n] = static_cast<int16_t>(std::lround(32767 * std::sin(M_PI * (n + 0.5) / 64)));
        }
        for (const int scale : {-4, 0, 1}) {
            FixedProcess p = make(6, 16, window);
            const Samples x = noise(random, 1600, -32768, 32767);
            Samples y(x.size());
            for (size_t i = 0; i < x.size(); i += 16) {
                Vek32sc bands[33];
                veksSubbandAnalysis_16s32sc_Sfs(&x[i], bands, p.get(), scale, p.work());
                veksSubbandSynthesis_32sc16s_Sfs(bands, &y[i], p.get(), -scale, p.work());
            }
            for (size_t i = 64; i < x.size(); i++) {
                ASSERT_NEAR(x[i - 48], y[i], 1) << scale << " " << i;
            }
        }
    });
}

TEST(VekEcSynthesis, IntegerFormIsTheWindowedInverseTransformOverlapped) {
    atEveryLevel([] {
        std::mt19937 random(25);
        for (const int order : {5, 6}) {
            const int points = 1 << order;
            for (const int scale : {-3, 0, 5}) {
                const int len = 2 * points;
                const int frame = points / 2;
                const Samples window = noise(random, len, 8000, 32767);
                FixedProcess p = make(order, frame, window);
                // Each place of a frame is divided by the sum of the windows' squares that meet in it.
                std::vector<double> synthesis(static_cast<size_t>(len));
                for (int n = 0; n < len; n++) {
                    double squares = 0;
                    for (int m = n % frame; m < len; m += frame) {
                        squares += window[m] / 32768.0 * window[m] / 32768.0;
                    }
                    synthesis[n] = window[n] / 32768.0 / squares / points;
                }
                std::vector<double> sums(static_cast<size_t>(len));
                for (int round = 0; round < 8; round++) {
                    std::vector<Vek32sc> bands(static_cast<size_t>(points / 2 + 1));
                    const int most = static_cast<int>(std::ldexp(round == 7 ? 1e6 : 1e5, scale));
                    for (Vek32sc& band : bands) {
                        band.re = std::uniform_int_distribution<int>(-most, most)(random);
                        band.im = std::uniform_int_distribution<int>(-most, most)(random);
                    }
                    for (int n = 0; n < len; n++) {
                        double v = bands.front().re + (n % 2 == 0 ? 1.0 : -1.0) * bands.back().re;
                        for (int k = 1; k < points / 2; k++) {
                            const double angle = 2 * M_PI * k * n / points;
                            v += 2 * (bands[k].re * std::cos(angle) - bands[k].im * std::sin(angle));
                        }
                        sums[n] += std::ldexp(v, -scale) * synthesis[n];
                    }
                    Samples y(static_cast<size_t>(frame));
                    ASSERT_EQ(vekStsNoErr,
                              veksSubbandSynthesis_32sc16s_Sfs(bands.data(), y.data(), p.get(), scale, p.work()));
                    for (int i = 0; i < frame; i++) {
                        ASSERT_NEAR(std::clamp(sums[i], -32768.0, 32767.0), y[i], 0.501) << order << " " << scale;
                    }
                    sums.erase(sums.begin(), sums.begin() + frame);
                    sums.resize(static_cast<size_t>(len));
                }
            }
        }
    });
}

TEST(VekEcProcessRefusals, ComeBeforeAnythingIsWritten) {
    int a = 1;
    int b = 2;
    int c = 3;
    EXPECT_EQ(vekStsNullPtrErr, veksSubbandProcessGetSize_32f(5, 128, nullptr, &b, &c));
    EXPECT_EQ(vekStsFftOrderErr, veksSubbandProcessGetSize_32f(4, 128, &a, &b, &c));
    EXPECT_EQ(vekStsFftOrderErr, veksSubbandProcessGetSize_16s(7, 128, &a, &b, &c));
    EXPECT_EQ(vekStsSizeErr, veksSubbandProcessGetSize_16s(6, 32, &a, &b, &c));
    EXPECT_EQ(vekStsSizeErr, veksSubbandProcessGetSize_16s(6, 100, &a, &b, &c));
    EXPECT_EQ(vekStsSizeErr, veksSubbandProcessGetSize_16s(6, 17 * 64, &a, &b, &c));
    EXPECT_EQ(1, a);
    EXPECT_EQ(2, b);
    EXPECT_EQ(3, c);
    const Samples window(64, 1000);
    FixedProcess p = make(6, 16, window);
    FloatProcess pf = make(6, 16, sine(64));
    EXPECT_EQ(vekStsSizeErr, veksSubbandProcessInit_16s(p.get(), 6, 65, 64, window.data(), p.work()));
    EXPECT_EQ(vekStsSizeErr, veksSubbandProcessInit_16s(p.get(), 6, 0, 64, window.data(), p.work()));
    EXPECT_EQ(vekStsNullPtrErr, veksSubbandProcessInit_16s(p.get(), 6, 16, 64, window.data(), nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksSubbandProcessInit_32f(nullptr, 6, 16, 64, sine(64).data(), pf.work()));
    const Samples x(16, 1000);
    Samples y(16, 5);
    const Floats xf(16, 1.0F);
    Floats yf(16, 5.0F);
    std::vector<Vek32sc> bands(33, Vek32sc{5, 5});
    std::vector<Vek32fc> bandsF(33, Vek32fc{5, 5});
    EXPECT_EQ(vekStsNullPtrErr, veksSubbandAnalysis_16s32sc_Sfs(nullptr, bands.data(), p.get(), 0, p.work()));
    EXPECT_EQ(vekStsScaleRangeErr, veksSubbandAnalysis_16s32sc_Sfs(x.data(), bands.data(), p.get(), 32, p.work()));
    EXPECT_EQ(vekStsNullPtrErr, veksSubbandAnalysis_32f32fc(xf.data(), bandsF.data(), nullptr, pf.work()));
    EXPECT_EQ(vekStsNullPtrErr, veksSubbandSynthesis_32sc16s_Sfs(bands.data(), nullptr, p.get(), 0, p.work()));
    EXPECT_EQ(vekStsScaleRangeErr, veksSubbandSynthesis_32sc16s_Sfs(bands.data(), y.data(), p.get(), -32, p.work()));
    EXPECT_EQ(vekStsNullPtrErr, veksSubbandSynthesis_32fc32f(bandsF.data(), yf.data(), pf.get(), nullptr));
    Bytes fresh(p.state.size());
    auto* blank = reinterpret_cast<VeksSubbandProcessState_16s*>(fresh.data());
    auto* blankF = reinterpret_cast<VeksSubbandProcessState_32f*>(fresh.data());
    EXPECT_EQ(vekStsStateErr, veksSubbandAnalysis_16s32sc_Sfs(x.data(), bands.data(), blank, 0, p.work()));
    EXPECT_EQ(vekStsStateErr, veksSubbandSynthesis_32sc16s_Sfs(bands.data(), y.data(), blank, 0, p.work()));
    EXPECT_EQ(vekStsStateErr, veksSubbandAnalysis_32f32fc(xf.data(), bandsF.data(), blankF, p.work()));
    EXPECT_EQ(vekStsStateErr, veksSubbandSynthesis_32fc32f(bandsF.data(), yf.data(), blankF, p.work()));
    EXPECT_EQ(5, bands[0].re);
    EXPECT_EQ(5, bandsF[0].re);
    EXPECT_EQ(Samples(16, 5), y);
    EXPECT_EQ(Floats(16, 5.0F), yf);
}

// ---- Tone ----

struct Tone {
    double frequency = 2100;
    double amplitude = 0.1;
    double turn = M_PI;     // at each reversal
    double interval = 0.45; // between reversals, s
    double noise = 0;
    double seconds = 1.5;
};

Floats toneOf(const Tone& t, int freq) {
    std::mt19937 random(7);
    std::normal_distribution<double> normal;
    Floats x(static_cast<size_t>(t.seconds * freq));
    for (size_t i = 0; i < x.size(); i++) {
        const double time = static_cast<double>(i) / freq;
        const double phase = 2 * M_PI * t.frequency * time + t.turn * std::floor(time / t.interval);
        x[i] = static_cast<float>(t.amplitude * std::sin(phase) + t.noise * normal(random));
    }
    return x;
}

// Whether the tone was detected at any time; both forms have to agree.
int heard(const Floats& x, int freq, int frame) {
    StateMemory<VeksToneDetectState_EC_32f> state(veksToneDetectGetStateSize_EC_32f, freq);
    EXPECT_EQ(vekStsNoErr, veksToneDetectInit_EC_32f(state, freq));
    StateMemory<VeksToneDetectState_EC_16s> stateI(veksToneDetectGetStateSize_EC_16s, freq);
    EXPECT_EQ(vekStsNoErr, veksToneDetectInit_EC_16s(stateI, freq));
    int any = 0;
    for (size_t i = 0; i + frame <= x.size(); i += frame) {
        int result = 7;
        EXPECT_EQ(vekStsNoErr, veksToneDetect_EC_32f(&x[i], frame, &result, state));
        Samples fixed;
        for (int k = 0; k < frame; k++) {
            fixed.push_back(static_cast<int16_t>(std::lround(32767 * x[i + k])));
        }
        int resultI = 7;
        EXPECT_EQ(vekStsNoErr, veksToneDetect_EC_16s(fixed.data(), frame, &resultI, stateI));
        EXPECT_EQ(result, resultI);
        any |= result;
    }
    return any;
}

TEST(VekEcTone, WithReversalsIsHeardAtBothRatesInAnyFrames) {
    for (const int freq : {8000, 16000}) {
        for (const int frame : {1, 64, 80, 333, 4000}) {
            EXPECT_EQ(1, heard(toneOf({}, freq), freq, frame)) << freq << " " << frame;
        }
    }
}

TEST(VekEcTone, MayBeOffByWhatTheRecommendationAllows) {
    for (const double frequency : {2079.0, 2090.0, 2121.0}) {
        for (const double interval : {0.425, 0.475}) {
            Tone t;
            t.frequency = frequency;
            t.interval = interval;
            t.seconds = 2;
            EXPECT_EQ(1, heard(toneOf(t, 8000), 8000, 80)) << frequency << " " << interval;
        }
    }
    Tone quiet;
    quiet.amplitude = 0.0195; // -31 dBm0
    EXPECT_EQ(1, heard(toneOf(quiet, 8000), 8000, 64));
    Tone noisy;
    noisy.noise = 0.1 * 0.7071 * 0.12; // 18 dB
    EXPECT_EQ(1, heard(toneOf(noisy, 8000), 8000, 64));
}

TEST(VekEcTone, IsNotHeardWithoutReversalsOrWithOthers) {
    const Tone others[] = {
        {.turn = 0},         {.turn = M_PI / 2},   {.interval = 0.3}, {.interval = 0.6, .seconds = 3},
        {.frequency = 1800}, {.amplitude = 0.005}, {.noise = 0.1}};
    for (const Tone& other : others) {
        EXPECT_EQ(0, heard(toneOf(other, 8000), 8000, 80)) << &other - others;
    }
    Tone none;
    none.amplitude = 0;
    none.noise = 0.2;
    EXPECT_EQ(0, heard(toneOf(none, 16000), 16000, 80));
}

TEST(VekEcTone, TakesReversalsOf400To500Milliseconds) {
    const std::pair<double, int> all[] = {{0.39, 0}, {0.4, 1}, {0.5, 1}, {0.51, 0}};
    for (const auto& [interval, expected] : all) {
        Tone tone;
        tone.interval = interval;
        tone.seconds = 3;
        EXPECT_EQ(expected, heard(toneOf(tone, 8000), 8000, 80)) << interval;
    }
}

TEST(VekEcTone, OnceHeardHoldsUntilAQuarterSecondOfSilence) {
    StateMemory<VeksToneDetectState_EC_32f> state(veksToneDetectGetStateSize_EC_32f, 8000);
    ASSERT_EQ(vekStsNoErr, veksToneDetectInit_EC_32f(state, 8000));
    const Floats tone = toneOf({}, 8000);
    int result = 0;
    ASSERT_EQ(vekStsNoErr, veksToneDetect_EC_32f(tone.data(), 7200, &result, state));
    EXPECT_EQ(0, result); // the second reversal has not come
    ASSERT_EQ(vekStsNoErr, veksToneDetect_EC_32f(tone.data() + 7200, 240, &result, state));
    EXPECT_EQ(1, result);
    Tone talk;
    talk.frequency = 700;
    talk.seconds = 1;
    ASSERT_EQ(vekStsNoErr, veksToneDetect_EC_32f(toneOf(talk, 8000).data(), 8000, &result, state));
    EXPECT_EQ(1, result);
    const Floats silence(2000);
    ASSERT_EQ(vekStsNoErr, veksToneDetect_EC_32f(silence.data(), 1900, &result, state));
    EXPECT_EQ(1, result);
    ASSERT_EQ(vekStsNoErr, veksToneDetect_EC_32f(silence.data(), 200, &result, state));
    EXPECT_EQ(0, result);
}

TEST(VekEcToneRefusals, ComeBeforeAnythingIsWritten) {
    int size = 5;
    EXPECT_EQ(vekStsNullPtrErr, veksToneDetectGetStateSize_EC_16s(8000, nullptr));
    EXPECT_EQ(vekStsBadArgErr, veksToneDetectGetStateSize_EC_16s(11025, &size));
    EXPECT_EQ(vekStsBadArgErr, veksToneDetectGetStateSize_EC_32f(0, &size));
    EXPECT_EQ(5, size);
    ASSERT_EQ(vekStsNoErr, veksToneDetectGetStateSize_EC_16s(8000, &size));
    Bytes memory(static_cast<size_t>(size));
    auto* state = reinterpret_cast<VeksToneDetectState_EC_16s*>(memory.data());
    auto* stateF = reinterpret_cast<VeksToneDetectState_EC_32f*>(memory.data());
    EXPECT_EQ(vekStsBadArgErr, veksToneDetectInit_EC_16s(state, 44100));
    EXPECT_EQ(vekStsNullPtrErr, veksToneDetectInit_EC_32f(nullptr, 8000));
    const Samples x(80);
    const Floats xf(80);
    int result = 5;
    EXPECT_EQ(vekStsStateErr, veksToneDetect_EC_16s(x.data(), 80, &result, state));
    ASSERT_EQ(vekStsNoErr, veksToneDetectInit_EC_16s(state, 8000));
    EXPECT_EQ(vekStsStateErr, veksToneDetect_EC_32f(xf.data(), 80, &result, stateF));
    expectNullsRefused(veksToneDetect_EC_16s, x.data(), 80, &result, state);
    EXPECT_EQ(vekStsSizeErr, veksToneDetect_EC_16s(x.data(), 0, &result, state));
    EXPECT_EQ(5, result);
}

} // namespace
