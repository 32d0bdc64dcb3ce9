// Correlations, convolution and transforms against independent open packages.
// Step functions that no public header declares are declared here; the packages' headers tell whether to link.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "noise.h"
#include "veksc.h"

#if __has_include(<fftw3.h>)
#define ORACLE_FFTW 1
#include <fftw3.h>
#endif
#if __has_include(<webrtc_audio_processing/webrtc/typedefs.h>)
#define ORACLE_VOICE 1
extern "C" {
void WebRtcSpl_Init();
size_t WebRtcSpl_AutoCorrelation(const int16_t* x, size_t n, size_t order, int32_t* result, int* scale);
void WebRtcSpl_CrossCorrelationC(int32_t* result, const int16_t* a, const int16_t* b, size_t n, size_t lags,
                                 int rightShifts, int step);
}
#endif
#if __has_include(<opencore-amrnb/interf_enc.h>)
#define ORACLE_AMRNB 1
extern "C" void Convolve(int16_t* x, int16_t* h, int16_t* y, int16_t n);
#endif
#if __has_include(<vo-amrwbenc/enc_if.h>)
#define ORACLE_AMRWB 1
extern "C" void voAWB_Convolve(int16_t* x, int16_t* h, int16_t* y, int16_t n);
#endif

namespace {

TEST(SignalOracle, AutocorrelationHasTheBitsOfTheVoiceEngine) {
#ifdef ORACLE_VOICE
    WebRtcSpl_Init();
    for (const size_t n : {160, 240}) {
        for (const int peak : {100, 2000}) {
            const Samples x = noise(static_cast<unsigned>(n), static_cast<int>(n), peak);
            std::vector<int32_t> ours(13);
            std::vector<int32_t> theirs(13);
            int scale = 99;
            ASSERT_EQ(13U, WebRtcSpl_AutoCorrelation(x.data(), n, 12, theirs.data(), &scale));
            ASSERT_EQ(0, scale);
            ASSERT_EQ(vekStsNoErr, veksAutoCorr_16s32s(x.data(), static_cast<int>(n), ours.data(), 13));
            EXPECT_EQ(theirs, ours);
            Vek32s energy = 0;
            ASSERT_EQ(vekStsNoErr, veksDotProd_G729A_16s32s(x.data(), x.data(), static_cast<int>(n), &energy));
            EXPECT_EQ(theirs[0], energy);
        }
    }
#else
    GTEST_SKIP() << "libwebrtc-audio-processing-dev is not installed";
#endif
}

TEST(SignalOracle, RoundedCorrelationIsTheOneOfTheVoiceEngineThenRounded) {
#ifdef ORACLE_VOICE
    constexpr size_t n = 40;
    const Samples a = noise(1, n, 4000);
    const Samples b = noise(2, n, 4000);
    Samples padded = a; // theirs reads on beyond the end
    padded.resize(2 * n, 0);
    std::vector<int32_t> theirs(n);
    WebRtcSpl_CrossCorrelationC(theirs.data(), b.data(), padded.data(), n, n, 0, 1);
    Samples ours(n);
    ASSERT_EQ(vekStsNoErr, veksCrossCorr_NR_16s(a.data(), b.data(), n, ours.data(), n));
    for (size_t k = 0; k < n; k++) {
        EXPECT_EQ((theirs[k] + 16384) >> 15, ours[k]) << k;
    }
#else
    GTEST_SKIP() << "libwebrtc-audio-processing-dev is not installed";
#endif
}

TEST(SignalOracle, ConvolutionHasTheBitsOfAnAmrCodec) {
#ifdef ORACLE_AMRNB
    for (unsigned seed = 1; seed <= 20; seed++) {
        Samples x = noise(seed, 40, 2000);
        Samples h = noise(seed + 100, 40, 4096);
        Samples theirs(40);
        Samples ours(40);
        Convolve(x.data(), h.data(), theirs.data(), 40);
        ASSERT_EQ(vekStsNoErr, veksConvPartial_16s_Sfs(x.data(), h.data(), ours.data(), 40, 12));
        EXPECT_EQ(theirs, ours) << seed;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(SignalOracle, RoundedConvolutionHasTheBitsOfAWidebandEncoder) {
#ifdef ORACLE_AMRWB
    for (unsigned seed = 1; seed <= 20; seed++) {
        Samples x = noise(seed, 64, 3000);
        Samples h = noise(seed + 100, 64, 4096);
        Samples theirs(64);
        Samples ours(64);
        voAWB_Convolve(x.data(), h.data(), theirs.data(), 64);
        ASSERT_EQ(vekStsNoErr, veksConvPartial_NR_16s(x.data(), h.data(), ours.data(), 64));
        EXPECT_EQ(theirs, ours) << seed;
    }
#else
    GTEST_SKIP() << "libvo-amrwbenc-dev is not installed";
#endif
}

TEST(SignalOracle, CosineTransformIsWithinOneOfTheTransformPackage) {
#ifdef ORACLE_FFTW
    for (const int n : {320, 640}) {
        const Samples x = noise(static_cast<unsigned>(n), n, 8000);
        std::vector<double> in(x.begin(), x.end());
        std::vector<double> out(in.size());
        fftw_plan plan = fftw_plan_r2r_1d(n, in.data(), out.data(), FFTW_REDFT11, FFTW_ESTIMATE);
        fftw_execute(plan);
        fftw_destroy_plan(plan);
        Samples y(x.size());
        ASSERT_EQ(vekStsNoErr, veksDCTFwd_G7221_16s(x.data(), y.data(), n));
        for (size_t m = 0; m < y.size(); m++) {
            ASSERT_NEAR(out[m] / std::sqrt(2.0 * n), y[m], 1) << n << " " << m;
        }
    }
#else
    GTEST_SKIP() << "libfftw3-dev is not installed";
#endif
}

TEST(SignalOracle, RealTransformIsWithinOneOfTheTransformPackage) {
#ifdef ORACLE_FFTW
    Samples x = noise(7, 128, 30000);
    std::vector<double> in(x.begin(), x.end());
    std::vector<std::array<double, 2>> out(65);
    fftw_plan plan = fftw_plan_dft_r2c_1d(128, in.data(), reinterpret_cast<fftw_complex*>(out.data()), FFTW_ESTIMATE);
    fftw_execute(plan);
    fftw_destroy_plan(plan);
    ASSERT_EQ(vekStsNoErr, veksFFTFwd_RToPerm_GSMAMR_16s_I(x.data()));
    ASSERT_NEAR(out[0][0] / 128, x[0], 1);
    ASSERT_NEAR(out[64][0] / 128, x[1], 1);
    for (size_t k = 1; k < 64; k++) {
        ASSERT_NEAR(out[k][0] / 128, x[2 * k], 1) << k;
        ASSERT_NEAR(out[k][1] / 128, x[2 * k + 1], 1) << k;
    }
#else
    GTEST_SKIP() << "libfftw3-dev is not installed";
#endif
}

} // namespace
