// Echo cancellation against independent open packages: filter and LMS, subband transforms, decisions on tones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "../vek/ec/echocanceller.h"
#include "noise.h"
#include "veksc.h"

#if __has_include(<fftw3.h>)
#define ORACLE_FFTW 1
#include <fftw3.h>
#endif
#if __has_include(<speex/speex_echo.h>)
#define ORACLE_SPEEXDSP 1
#include <speex/speex_echo.h>
#endif
#if __has_include(<spandsp.h>)
#define ORACLE_TELEPHONY 1
#include <spandsp.h>
#endif

namespace {

TEST(EcOracle, FilterIsTheTelephonyPackagesInnerProduct) {
#ifdef ORACLE_TELEPHONY
    for (const int taps : {8, 128, 256}) {
        const Samples ref = noise(1, taps + 8, 500);
        const Samples coef = noise(2, taps, 2000);
        const Samples zero(8);
        Samples out(8);
        Samples turned(coef.rbegin(), coef.rend());
        const std::vector<float> refF(ref.begin(), ref.end());
        const std::vector<float> turnedF(turned.begin(), turned.end());
        const std::vector<float> coefF(coef.begin(), coef.end());
        const std::vector<float> zeroF(8);
        std::vector<float> outF(8);
        ASSERT_EQ(vekStsNoErr, veksFIR_EC_16s(ref.data() + taps, zero.data(), out.data(), 8, coef.data(), taps));
        ASSERT_EQ(vekStsNoErr, veksFIR_EC_32f(refF.data() + taps, zeroF.data(), outF.data(), 8, coefF.data(), taps));
        for (int i = 0; i < 8; i++) {
            const int32_t sum = vec_dot_prodi16(turned.data(), ref.data() + i + 1, taps);
            EXPECT_EQ(-((sum + 16384) >> 15), out[i]);
            EXPECT_NEAR(-vec_dot_prodf(turnedF.data(), refF.data() + i + 1, taps), outF[i], taps);
        }
    }
#else
    GTEST_SKIP() << "libspandsp-dev is not installed";
#endif
}

TEST(EcOracle, NlmsLearnsAsTheTelephonyPackagesLmsWithTheSameFactor) {
#ifdef ORACLE_TELEPHONY
    constexpr int taps = 128;
    std::mt19937 random(3);
    std::normal_distribution<float> normal(0, 0.1F);
    std::vector<float> ref(taps + 401);
    for (float& r : ref) {
        r = normal(random);
    }
    std::vector<float> speech(400);
    for (float& s : speech) {
        s = normal(random);
    }
    const std::vector<float> step(400, 0.5F);
    std::vector<float> coef(taps);
    std::vector<float> out(400);
    float err = 0;
    const float* now = ref.data() + taps + 1;
    ASSERT_EQ(vekStsNoErr, veksNLMS_EC_32f(now, speech.data(), step.data(), out.data(), 400, coef.data(), taps, &err));
    std::vector<float> theirs(taps); // oldest sample first
    float theirErr = 0;
    for (int i = 0; i < 400; i++) {
        double energy = 1e-9 * taps;
        for (int j = 0; j < taps; j++) {
            energy += static_cast<double>(now[i - 1 - j]) * now[i - 1 - j];
        }
        // Their update leaks a little: undone by adding what it took.
        std::vector<float> before = theirs;
        vec_lmsf(now + i - taps, theirs.data(), taps, static_cast<float>(0.5 * theirErr / energy));
        for (int j = 0; j < taps; j++) {
            theirs[j] += before[j] * (1 - 0.9999F);
        }
        theirErr = speech[i] - vec_dot_prodf(theirs.data(), now + i - taps + 1, taps);
        ASSERT_NEAR(theirErr, out[i], 2e-4) << i;
    }
#else
    GTEST_SKIP() << "libspandsp-dev is not installed";
#endif
}

TEST(EcOracle, SubbandsAreTheTransformPackagesOfTheFold) {
#ifdef ORACLE_FFTW
    for (const int order : {5, 6}) {
        const int n = 1 << order;
        const int len = 4 * n;
        std::mt19937 random(4);
        std::uniform_real_distribution<double> pick(-1, 1);
        std::vector<float> window(static_cast<size_t>(len));
        for (float& w : window) {
            w = static_cast<float>(pick(random));
        }
        int size = 0;
        int points = 0;
        int buffer = 0;
        ASSERT_EQ(vekStsNoErr, veksSubbandProcessGetSize_32f(order, len, &size, &points, &buffer));
        std::vector<Vek8u> memory(static_cast<size_t>(size));
        std::vector<Vek8u> work(static_cast<size_t>(buffer));
        auto* state = reinterpret_cast<VeksSubbandProcessState_32f*>(memory.data());
        ASSERT_EQ(vekStsNoErr, veksSubbandProcessInit_32f(state, order, len, len, window.data(), work.data()));
        double* in = fftw_alloc_real(static_cast<size_t>(n));
        fftw_complex* out = fftw_alloc_complex(static_cast<size_t>(n / 2 + 1));
        fftw_plan forward = fftw_plan_dft_r2c_1d(n, in, out, FFTW_ESTIMATE);
        fftw_plan backward = fftw_plan_dft_c2r_1d(n, out, in, FFTW_ESTIMATE);
        std::vector<float> x(static_cast<size_t>(len));
        for (float& v : x) {
            v = static_cast<float>(pick(random));
        }
        std::vector<Vek32fc> bands(static_cast<size_t>(n / 2 + 1));
        ASSERT_EQ(vekStsNoErr, veksSubbandAnalysis_32f32fc(x.data(), bands.data(), state, work.data()));
        std::fill(in, in + n, 0.0);
        for (int i = 0; i < len; i++) {
            in[i % n] += static_cast<double>(x[i]) * window[i];
        }
        fftw_execute(forward);
        for (int k = 0; k <= n / 2; k++) {
            EXPECT_NEAR(out[k][0], bands[k].re, 2e-5);
            EXPECT_NEAR(out[k][1], bands[k].im, 2e-5);
        }
        // Backward, through the window that frames without overlap get: 1 / w, times 1 / n.
        std::vector<float> y(static_cast<size_t>(len));
        ASSERT_EQ(vekStsNoErr, veksSubbandSynthesis_32fc32f(bands.data(), y.data(), state, work.data()));
        fftw_execute(backward);
        for (int i = 0; i < len; i++) {
            const double want = in[i % n] / n / window[i];
            EXPECT_NEAR(want, y[i], 1e-5 * (1 + std::fabs(want) + 1 / std::fabs(window[i])));
        }
        fftw_destroy_plan(forward);
        fftw_destroy_plan(backward);
        fftw_free(in);
        fftw_free(out);
    }
#else
    GTEST_SKIP() << "libfftw3-dev is not installed";
#endif
}

#ifdef ORACLE_SPEEXDSP
// What an open canceller of 256 taps leaves of a scene's echo while the near end is silent, in frames of 10 ms.
echocanceller::Track theirTrack(const echocanceller::Scene& s) {
    constexpr int frame = 80;
    SpeexEchoState* const state = speex_echo_state_init(frame, 256);
    int rate = echocanceller::kRate;
    speex_echo_ctl(state, SPEEX_ECHO_SET_SAMPLING_RATE, &rate);
    echocanceller::Track track;
    for (size_t i = 0; i + frame <= s.echo.size(); i += frame) {
        Samples played(frame);
        Samples heard(frame);
        Samples out(frame);
        for (size_t k = 0; k < frame; k++) {
            played[k] = static_cast<int16_t>(std::lround(32768 * s.far[echocanceller::kTaps + 1 + i + k]));
            heard[k] = static_cast<int16_t>(std::lround(32768 * (s.echo[i + k] + s.near[i + k])));
        }
        speex_echo_cancellation(state, heard.data(), played.data(), out.data());
        for (size_t k = 0; k < frame; k += echocanceller::kFrame) {
            track.echo.push_back(0);
            track.left.push_back(0);
            for (size_t n = k; n < k + echocanceller::kFrame; n++) {
                track.echo.back() += s.echo[i + n] * s.echo[i + n];
                track.left.back() += out[n] / 32768.0 * out[n] / 32768.0;
            }
        }
    }
    speex_echo_state_destroy(state);
    return track;
}
#endif

TEST(EcOracle, CancellersReturnLossIsNotBelowThatOfAnOpenOne) {
#ifdef ORACLE_SPEEXDSP
    // Double talk from 2 to 3 s; a path that changes at 2 s.
    for (const auto& scene : {echocanceller::scene(5, 2, 3), echocanceller::scene(6, 9, 9, 2)}) {
        const echocanceller::Track theirs = theirTrack(scene);
        const echocanceller::Track fixed = echocanceller::cancel<int16_t>(scene);
        const echocanceller::Track floating = echocanceller::cancel<float>(scene);
        for (const auto& [from, to] : {std::pair{1.0, 2.0}, {4.0, 5.0}}) {
            const double other = theirs.lossOf(from, to);
            RecordProperty("dB" + std::to_string(scene.echo.size()) + "at" + std::to_string(to),
                           std::to_string(fixed.lossOf(from, to)) + " " + std::to_string(floating.lossOf(from, to)) +
                               " " + std::to_string(other));
            EXPECT_GT(other, 15);
            EXPECT_GE(fixed.lossOf(from, to), std::min(other, 50.0));
            EXPECT_GE(floating.lossOf(from, to), other);
        }
    }
#else
    GTEST_SKIP() << "libspeexdsp-dev is not installed";
#endif
}

#ifdef ORACLE_TELEPHONY
// Whether the tone is heard in any frame, by the integer form, and by the other one with full scale at 1.0.
int ours(const Samples& x) {
    int size = 0;
    int realSize = 0;
    EXPECT_EQ(vekStsNoErr, veksToneDetectGetStateSize_EC_16s(8000, &size));
    EXPECT_EQ(vekStsNoErr, veksToneDetectGetStateSize_EC_32f(8000, &realSize));
    std::vector<Vek8u> memory(static_cast<size_t>(size));
    std::vector<Vek8u> realMemory(static_cast<size_t>(realSize));
    auto* state = reinterpret_cast<VeksToneDetectState_EC_16s*>(memory.data());
    auto* realState = reinterpret_cast<VeksToneDetectState_EC_32f*>(realMemory.data());
    EXPECT_EQ(vekStsNoErr, veksToneDetectInit_EC_16s(state, 8000));
    EXPECT_EQ(vekStsNoErr, veksToneDetectInit_EC_32f(realState, 8000));
    int any = 0;
    int anyOfReals = 0;
    for (size_t i = 0; i + 80 <= x.size(); i += 80) {
        int result = 0;
        EXPECT_EQ(vekStsNoErr, veksToneDetect_EC_16s(&x[i], 80, &result, state));
        any |= result;
        std::vector<Vek32f> reals(x.begin() + static_cast<std::ptrdiff_t>(i),
                                  x.begin() + static_cast<std::ptrdiff_t>(i + 80));
        for (Vek32f& v : reals) {
            v /= 32768;
        }
        EXPECT_EQ(vekStsNoErr, veksToneDetect_EC_32f(reals.data(), 80, &result, realState));
        anyOfReals |= result;
    }
    EXPECT_EQ(any, anyOfReals);
    return any;
}

int theirs(const Samples& x) {
    modem_connect_tones_rx_state_t* rx =
        modem_connect_tones_rx_init(nullptr, MODEM_CONNECT_TONES_ANS_PR, nullptr, nullptr);
    modem_connect_tones_rx(rx, x.data(), static_cast<int>(x.size()));
    const int tone = modem_connect_tones_rx_get(rx);
    modem_connect_tones_rx_free(rx);
    return tone == MODEM_CONNECT_TONES_ANS_PR || tone == MODEM_CONNECT_TONES_ANSAM_PR;
}
#endif

TEST(EcOracle, ToneDecisionsAreTheTelephonyPackages) {
#ifdef ORACLE_TELEPHONY
    for (const int kind : {MODEM_CONNECT_TONES_ANS_PR, MODEM_CONNECT_TONES_ANS}) {
        Samples x(8000 * 3);
        modem_connect_tones_tx_state_t* tx = modem_connect_tones_tx_init(nullptr, kind);
        const int made = modem_connect_tones_tx(tx, x.data(), static_cast<int>(x.size()));
        modem_connect_tones_tx_free(tx);
        x.resize(static_cast<size_t>(made));
        EXPECT_EQ(theirs(x), ours(x)) << kind;
        EXPECT_EQ(kind == MODEM_CONNECT_TONES_ANS_PR ? 1 : 0, ours(x)) << kind;
    }
    for (unsigned seed = 0; seed < 20; seed++) {
        const Samples x = noise(seed, 16000, 8000);
        EXPECT_EQ(theirs(x), ours(x)) << seed;
    }
#else
    GTEST_SKIP() << "libspandsp-dev is not installed";
#endif
}

} // namespace
