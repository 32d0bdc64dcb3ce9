// Filters, interpolation, lag window and correlation matrix against independent open codecs.
// Their step functions are in no public header: they are declared here, and the packages' headers tell whether to link.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <vector>

#include "noise.h"
#include "veksc.h"

#if __has_include(<opencore-amrnb/interf_enc.h>)
#define ORACLE_AMRNB 1
extern "C" {
void Residu(int16_t* a, int16_t* x, int16_t* y, int16_t n);
void Syn_filt(int16_t* a, int16_t* x, int16_t* y, int16_t n, int16_t* mem, int16_t update);
int32_t Inv_sqrt(int32_t x, int* overflow);
void Weight_Ai(int16_t* a, const int16_t* factors, int16_t* expanded);
void Lag_window(int16_t order, int16_t* high, int16_t* low, int* overflow);
}
#endif
#if __has_include(<vo-amrwbenc/enc_if.h>)
#define ORACLE_AMRWB 1
extern "C" {
void voAWB_Pit_shrp(int16_t* x, int16_t lag, int16_t factor, int16_t n);
void Weight_a(int16_t* a, int16_t* expanded, int16_t gamma, int16_t order);
}
#endif
#if __has_include(<bcg729/encoder.h>)
#define ORACLE_G729 1
extern "C" {
void interpolateqLSP(int16_t* previous, int16_t* current, int16_t* out);
void LPSynthesisFilter(int16_t* excitation, int16_t* coefficients, int16_t* speech);
void computeImpulseResponseCorrelationMatrix(int16_t* h, int16_t* signal, int* sign, int32_t (*phi)[40]);
void initPreProcessing(void* context);
void preProcessing(void* context, const int16_t* signal, int16_t* out);
void initPostProcessing(void* context);
void postProcessing(void* context, int16_t* signal);
}
#endif
#if __has_include(<webrtc_audio_processing/webrtc/typedefs.h>)
#define ORACLE_VOICE 1
extern "C" {
void WebRtcSpl_FilterMAFastQ12(const int16_t* x, int16_t* y, const int16_t* b, size_t count, size_t n);
void WebRtcSpl_FilterARFastQ12(const int16_t* x, int16_t* y, const int16_t* a, size_t count, size_t n);
}
#endif

namespace {

// Coefficients of a stable filter, near a voiced frame.
[[maybe_unused]] Samples coefficients(std::mt19937& random) {
    Samples a = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};
    for (size_t j = 1; j < a.size(); j++) {
        a[j] = static_cast<int16_t>(a[j] + noise(random, 1, -60, 60)[0]);
    }
    return a;
}

TEST(ResidualFilterOracle, EqualsTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(31);
    for (int round = 0; round < 200; round++) {
        Samples a = coefficients(random);
        Samples x = noise(random, 50, -6000, 6000);
        Samples y(40);
        Samples want(40);
        ASSERT_EQ(vekStsNoErr, veksResidualFilter_G729_16s(x.data() + 10, a.data(), y.data()));
        Residu(a.data(), x.data() + 10, want.data(), 40);
        ASSERT_EQ(want, y) << round;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(SynthesisFilterOracle, EqualsTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(32);
    for (int round = 0; round < 200; round++) {
        Samples a = coefficients(random);
        Samples x = noise(random, 40, -800, 800);
        Samples memory = noise(random, 10, -3000, 3000);
        Samples y(40);
        Samples want(40);
        ASSERT_EQ(vekStsNoErr, veksSynthesisFilter_NR_16s_Sfs(a.data(), x.data(), y.data(), 40, 12, memory.data()));
        Syn_filt(a.data(), x.data(), want.data(), 40, memory.data(), 0);
        ASSERT_EQ(want, y) << round;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(SynthesisFilterOracle, EqualsTheG729Codec) {
#ifdef ORACLE_G729
    std::mt19937 random(33);
    for (int round = 0; round < 200; round++) {
        Samples a = coefficients(random);
        Samples x = noise(random, 40, -800, 800);
        Samples memory = noise(random, 10, -3000, 3000);
        Samples want = memory;
        want.resize(50);
        LPSynthesisFilter(x.data(), a.data() + 1, want.data() + 10);
        ASSERT_EQ(vekStsNoErr, veksSynthesisFilter_NR_16s_ISfs(a.data(), x.data(), 40, 12, memory.data()));
        ASSERT_EQ(Samples(want.begin() + 10, want.end()), x) << round;
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

// Thirty coefficients whose poles stay far inside the circle: each share of the one before falls off.
[[maybe_unused]] Samples wideCoefficients(std::mt19937& random) {
    Samples a(31);
    a[0] = 4096;
    int room = 3900;
    for (size_t j = 1; j < a.size(); ++j) {
        a[j] = noise(random, 1, -room / 4, room / 4)[0];
        room -= std::abs(a[j]);
    }
    return a;
}

TEST(WideFilterOracle, ResidualOfOrderThirtyEqualsTheVoiceEngine) {
#ifdef ORACLE_VOICE
    std::mt19937 random(34);
    for (int round = 0; round < 200; ++round) {
        const Samples a = wideCoefficients(random);
        const Samples x = noise(random, 30 + 80, -12000, 12000);
        Samples y(80);
        Samples want(80);
        ASSERT_EQ(vekStsNoErr, veksResidualFilter_G729E_16s(a.data(), 30, x.data() + 30, y.data(), 80));
        WebRtcSpl_FilterMAFastQ12(x.data() + 30, want.data(), a.data(), a.size(), 80);
        ASSERT_EQ(want, y) << round;
    }
#else
    GTEST_SKIP() << "libwebrtc-audio-processing-dev is not installed";
#endif
}

TEST(WideFilterOracle, SynthesisOfOrderThirtyEqualsTheVoiceEngineInBothForms) {
#ifdef ORACLE_VOICE
    std::mt19937 random(35);
    for (int round = 0; round < 200; ++round) {
        const Samples a = wideCoefficients(random);
        const Samples x = noise(random, 80, -1500, 1500);
        const Samples past = noise(random, 30, -3000, 3000);
        Samples want = past;
        want.resize(30 + 80);
        WebRtcSpl_FilterARFastQ12(x.data(), want.data() + 30, a.data(), a.size(), 80);
        Samples y(80);
        Samples memory = past;
        ASSERT_EQ(vekStsNoErr, veksSynthesisFilter_G729E_16s(a.data(), 30, x.data(), y.data(), 80, memory.data()));
        ASSERT_EQ(Samples(want.begin() + 30, want.end()), y) << round;
        ASSERT_EQ(Samples(want.end() - 30, want.end()), memory) << round;
        Samples inPlace = x;
        memory = past;
        ASSERT_EQ(vekStsNoErr, veksSynthesisFilter_G729E_16s_I(a.data(), 30, inPlace.data(), 80, memory.data()));
        ASSERT_EQ(y, inPlace) << round;
    }
#else
    GTEST_SKIP() << "libwebrtc-audio-processing-dev is not installed";
#endif
}

TEST(SynthesisFilterOracle, WrappingFormAndImpulseResponseEqualTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(36);
    for (int round = 0; round < 200; ++round) {
        Samples a = coefficients(random);
        Samples x = noise(random, 40, -800, 800);
        Samples memory = noise(random, 10, -3000, 3000);
        Samples want(40);
        Syn_filt(a.data(), x.data(), want.data(), 40, memory.data(), 0);
        ASSERT_EQ(vekStsNoErr, veksSynthesisFilterLow_NR_16s_ISfs(a.data(), x.data(), 40, 12, memory.data()));
        ASSERT_EQ(want, x) << round;
        Samples impulse(40);
        impulse[0] = 4096;
        Samples rest(10);
        Samples response(40);
        Syn_filt(a.data(), impulse.data(), want.data(), 40, rest.data(), 0);
        ASSERT_EQ(vekStsNoErr, veksSynthesisFilterZeroStateResponse_NR_16s(a.data(), response.data(), 40, 12));
        ASSERT_EQ(want, response) << round;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(WeightingFilterOracle, EqualsResidualThenSynthesisOfTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(34);
    Samples memory(20, 0);
    Samples input(50, 0);
    Samples past(10, 0);
    for (int frame = 0; frame < 100; frame++) {
        Samples c = coefficients(random);
        const Samples pole = coefficients(random);
        c.insert(c.end(), pole.begin(), pole.end());
        const Samples x = noise(random, 40, -2000, 2000);
        std::copy(input.end() - 10, input.end(), input.begin());
        std::copy(x.begin(), x.end(), input.begin() + 10);
        Samples residual(40);
        Samples want(40);
        Samples y(40);
        Residu(c.data(), input.data() + 10, residual.data(), 40);
        Syn_filt(c.data() + 11, residual.data(), want.data(), 40, past.data(), 1);
        ASSERT_EQ(vekStsNoErr, veksIIR16s_G729_16s(c.data(), x.data(), y.data(), memory.data()));
        ASSERT_EQ(want, y) << frame;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(InvSqrtOracle, EqualsTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(35);
    std::vector<int32_t> x = {0, -5, 1, 2, 3, INT32_MAX, 0x40000000};
    for (int i = 0; i < 5000; i++) {
        x.push_back(static_cast<int32_t>(random() >> (1 + i % 31)));
    }
    std::vector<int32_t> y = x;
    ASSERT_EQ(vekStsNoErr, veksInvSqrt_32s_I(y.data(), static_cast<int>(y.size())));
    int overflow = 0;
    for (size_t i = 0; i < x.size(); i++) {
        ASSERT_EQ(Inv_sqrt(x[i], &overflow), y[i]) << x[i];
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(LagWindowOracle, EqualsTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(36);
    for (int round = 0; round < 200; round++) {
        std::vector<int32_t> r(10);
        Samples high(11);
        Samples low(11);
        for (size_t i = 0; i < 10; i++) {
            r[i] = static_cast<int32_t>(random());
            high[i + 1] = static_cast<int16_t>(r[i] >> 16);
            low[i + 1] = static_cast<int16_t>((r[i] & 0xffff) >> 1);
        }
        int overflow = 0;
        Lag_window(10, high.data(), low.data(), &overflow);
        ASSERT_EQ(vekStsNoErr, veksLagWindow_G729_32s_I(r.data(), 10));
        for (size_t i = 0; i < 10; i++) {
            ASSERT_EQ(high[i + 1] * 65536 + low[i + 1] * 2, r[i]) << round << " " << i;
        }
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(MulPowerCOracle, EqualsTheAmrCodecWithItsTableOfPowers) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(37);
    for (const int gamma : {30802, 29491, 24576, 19661}) {
        Samples a = noise(random, 11, -16000, 16000);
        Samples powers = {static_cast<int16_t>(gamma)};
        while (powers.size() < 10) {
            powers.push_back(static_cast<int16_t>((powers.back() * gamma + 0x4000) >> 15));
        }
        Samples y(11);
        Samples want(11);
        ASSERT_EQ(vekStsNoErr, veksMulPowerC_NR_16s_Sfs(a.data(), static_cast<int16_t>(gamma), y.data(), 11, 15));
        Weight_Ai(a.data(), powers.data(), want.data());
        ASSERT_EQ(want, y) << gamma;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(MulPowerCOracle, EqualsTheWidebandCodec) {
#ifdef ORACLE_AMRWB
    std::mt19937 random(38);
    for (const int gamma : {30147, 29491, 24576, 32767}) {
        Samples a = noise(random, 17, -32768, 32767);
        Samples y(17);
        Samples want(17);
        ASSERT_EQ(vekStsNoErr, veksMulPowerC_NR_16s_Sfs(a.data(), static_cast<int16_t>(gamma), y.data(), 17, 15));
        Weight_a(a.data(), want.data(), static_cast<int16_t>(gamma), 16);
        ASSERT_EQ(want, y) << gamma;
    }
#else
    GTEST_SKIP() << "libvo-amrwbenc-dev is not installed";
#endif
}

TEST(HarmonicFilterOracle, EqualsTheWidebandCodec) {
#ifdef ORACLE_AMRWB
    std::mt19937 random(39);
    for (const int lag : {1, 5, 17, 34, 50, 63}) {
        Samples x = noise(random, 64, -8000, 8000);
        Samples want = x;
        voAWB_Pit_shrp(want.data(), static_cast<int16_t>(lag), 27853, 64);
        int16_t* const first = x.data() + lag;
        ASSERT_EQ(vekStsNoErr, veksHarmonicFilter_NR_16s(27853, lag, first, first, 64 - lag));
        ASSERT_EQ(want, x) << lag;
    }
#else
    GTEST_SKIP() << "libvo-amrwbenc-dev is not installed";
#endif
}

TEST(InterpolateOracle, IsTheG729CodecsRoundedMeanLessTheCutHalves) {
#ifdef ORACLE_G729
    std::mt19937 random(40);
    for (int round = 0; round < 100; round++) {
        Samples previous = noise(random, 10, -32768, 32767);
        Samples current = noise(random, 10, -32768, 32767);
        Samples want(10);
        Samples y(10);
        interpolateqLSP(previous.data(), current.data(), want.data());
        ASSERT_EQ(vekStsNoErr, veksInterpolate_G729_16s(previous.data(), current.data(), y.data(), 10));
        for (size_t i = 0; i < 10; i++) {
            // The codec rounds the sum; the recommendation's code cuts each half.
            const int odd = (previous[i] | current[i]) & 1;
            ASSERT_EQ(want[i] - odd, y[i]) << previous[i] << " " << current[i];
        }
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(ToeplizMatrixOracle, HoldsTheSumsOfTheG729CodecTimesAPowerOfFour) {
#ifdef ORACLE_G729
    std::mt19937 random(41);
    const int pairs[9][2] = {{0, 1}, {0, 2}, {0, 3}, {0, 4}, {1, 2}, {1, 3}, {1, 4}, {2, 3}, {2, 4}};
    for (const int size : {200, 900, 2000}) {
        Samples h = noise(random, 40, -size, size);
        Samples signal(40, 1);
        int sign[40] = {};
        int32_t phi[40][40] = {};
        computeImpulseResponseCorrelationMatrix(h.data(), signal.data(), sign, phi);
        std::vector<int32_t> y(616);
        ASSERT_EQ(vekStsNoErr, veksToeplizMatrix_G729_16s32s(h.data(), y.data()));
        int64_t energy = 0;
        for (const int16_t e : h) {
            energy += e * e;
        }
        const int64_t factor = y[0] / energy;
        ASSERT_EQ(0, y[0] % energy);
        ASSERT_TRUE(std::has_single_bit(static_cast<uint64_t>(factor)) && (factor & 0x2aaaaaaa) != 0) << factor;
        // The codec keeps half of each diagonal element, cut off, for its own search.
        for (int t = 0; t < 5; t++) {
            for (int k = 0; k < 8; k++) {
                ASSERT_EQ(phi[5 * k + t][5 * k + t], y[static_cast<size_t>(8 * t + k)] / factor / 2) << t << " " << k;
            }
        }
        size_t n = 40;
        for (const auto& p : pairs) {
            for (int k = 0; k < 8; k++) {
                for (int l = 0; l < 8; l++, n++) {
                    ASSERT_EQ(phi[5 * k + p[0]][5 * l + p[1]] * factor, y[n]) << p[0] << p[1] << " " << k << " " << l;
                }
            }
        }
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(HighPassFilterOracle, StaysWithinOneOfTheG729Codec) {
#ifdef ORACLE_G729
    std::mt19937 random(42);
    // The codec's context is opaque; no context of it reaches this size.
    std::vector<int64_t> coder(32768, 0);
    std::vector<int64_t> decoder(32768, 0);
    initPreProcessing(coder.data());
    initPostProcessing(decoder.data());
    char pre[64] = {};
    char post[64] = {};
    for (int frame = 0; frame < 50; frame++) {
        const Samples x = noise(random, 80, -3000, 3000);
        Samples want(80);
        Samples y = x;
        preProcessing(coder.data(), x.data(), want.data());
        ASSERT_EQ(vekStsNoErr, veksHighPassFilter_G729_16s_ISfs(y.data(), 80, 13, pre));
        for (size_t i = 0; i < 80; i++) {
            ASSERT_NEAR(want[i], y[i], 1) << frame << " " << i;
        }
        Samples halves[2] = {{x.begin(), x.begin() + 40}, {x.begin() + 40, x.end()}};
        Samples whole = x;
        postProcessing(decoder.data(), whole.data());
        postProcessing(decoder.data(), whole.data() + 40);
        for (int s = 0; s < 2; s++) {
            ASSERT_EQ(vekStsNoErr, veksHighPassFilter_G729_16s_ISfs(halves[s].data(), 40, 12, post));
            for (size_t i = 0; i < 40; i++) {
                ASSERT_NEAR(whole[static_cast<size_t>(40 * s) + i], halves[s][i], 1) << frame << " " << s << " " << i;
            }
        }
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

} // namespace
