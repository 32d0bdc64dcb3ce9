// General kernels beside those of a voice engine, of AMR and AMR-WB codecs, of a telephony package, of vector libraries
// and of transform packages.
#include "peers.h"

#include "veksc.h"

#include <algorithm>
#include <cmath>

namespace {

alignas(64) Vek16s x[700], z[700], y[700];
Vek16s h[100];
Vek16s a10[11] = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};
Vek16s a30[31], memory[40];
Vek32s r[100];
alignas(64) float xF[700], zF[700];
Vek32s sum;
float sumF;
int shift;

[[maybe_unused]] void fill(const PeerData& data) {
    data.fill(x, xF, 700, 1000);
    data.fill(z, zF, 700, 1000, 1);
    for (int i = 0; i < 100; ++i) {
        h[i] = static_cast<Vek16s>(4096 * std::pow(0.85, i) * std::cos(0.6 * i));
    }
    a30[0] = 4096;
    for (int i = 1; i <= 30; ++i) {
        a30[i] = static_cast<Vek16s>(1500 * std::pow(-0.8, i));
    }
}

[[maybe_unused]] std::string sized(const char* function, int n) {
    return std::string(function) + ", " + std::to_string(n);
}

} // namespace

#if __has_include(<webrtc_audio_processing/webrtc/typedefs.h>)
extern "C" {
void WebRtcSpl_Init();
int32_t WebRtcSpl_DotProductWithScale(const int16_t* a, const int16_t* b, size_t n, int shift);
size_t WebRtcSpl_AutoCorrelation(const int16_t* x, size_t n, size_t order, int32_t* result, int* scale);
void WebRtcSpl_CrossCorrelationC(int32_t* result, const int16_t* a, const int16_t* b, size_t n, size_t lags,
                                 int rightShifts, int step);
void WebRtcSpl_FilterMAFastQ12(const int16_t* x, int16_t* y, const int16_t* b, size_t count, size_t n);
void WebRtcSpl_FilterARFastQ12(const int16_t* x, int16_t* y, const int16_t* a, size_t count, size_t n);
int16_t WebRtcSpl_LevinsonDurbin(const int32_t* r, int16_t* a, int16_t* k, size_t order);
void WebRtcSpl_ScaleVectorWithSat(const int16_t* x, int16_t* y, int16_t gain, size_t n, int16_t shift);
void WebRtcSpl_ElementwiseVectorMult(int16_t* y, const int16_t* x, const int16_t* window, size_t n, int16_t shift);
}

PEER_ROWS(voiceengine) {
    fill(data);
    WebRtcSpl_Init();
    for (const int n : {40, 60, 100}) {
        peerRow(
            sized("veksDotProd_G729A_16s32s", n), "webrtc DotProductWithScale",
            [n] { veksDotProd_G729A_16s32s(x, z, n, &sum); },
            [n] { sum = WebRtcSpl_DotProductWithScale(x, z, static_cast<size_t>(n), 0); });
    }
    for (const int n : {80, 223}) {
        peerRow(
            sized("veksDotProdAutoScale_16s32s_Sfs", n), "webrtc DotProductWithScale",
            [n] { veksDotProdAutoScale_16s32s_Sfs(x, z, n, &sum, &shift); },
            [n] { sum = WebRtcSpl_DotProductWithScale(x, z, static_cast<size_t>(n), 0); });
    }
    const struct { int n, lags; } frames[] = {{40, 4}, {160, 9}, {240, 12}};
    for (const auto& frame : frames) {
        const int n = frame.n;
        const int lags = frame.lags;
        const std::string size = ", " + std::to_string(n) + "x" + std::to_string(lags);
        const auto theirs = [=] {
            WebRtcSpl_AutoCorrelation(x, static_cast<size_t>(n), static_cast<size_t>(lags - 1), r, &shift);
        };
        peerRow(
            "veksAutoCorr_16s32s" + size, "webrtc AutoCorrelation", [=] { veksAutoCorr_16s32s(x, n, r, lags); },
            theirs);
        peerRow(
            "veksAutoCorr_NormE_16s32s" + size, "webrtc AutoCorrelation",
            [=] { veksAutoCorr_NormE_16s32s(x, n, r, lags, &shift); }, theirs);
        peerRow(
            "veksAutoCorr_NormE_NR_16s" + size, "webrtc AutoCorrelation",
            [=] { veksAutoCorr_NormE_NR_16s(x, n, y, lags, &shift); }, theirs);
        peerRow(
            "veksCrossCorr_NR_16s" + size, "webrtc CrossCorrelationC", [=] { veksCrossCorr_NR_16s(x, z, n, y, lags); },
            [=] { WebRtcSpl_CrossCorrelationC(r, z, x, static_cast<size_t>(n), static_cast<size_t>(lags), 0, 1); });
    }
    peerRow(
        "veksAutoCorr_NormE_G723_16s, 180x10", "webrtc AutoCorrelation",
        [] { veksAutoCorr_NormE_G723_16s(x, y, &shift); }, [] { WebRtcSpl_AutoCorrelation(x, 180, 9, r, &shift); });
    for (const int n : {40, 80}) {
        // Half of its products are with zeros behind the end, which it does not leave out.
        peerRow(
            sized("veksCrossCorr_16s32s_Sfs", n), "webrtc CrossCorrelationC",
            [n] { veksCrossCorr_16s32s_Sfs(x, h, n, r, 0); },
            [n] { WebRtcSpl_CrossCorrelationC(r, h, x, static_cast<size_t>(n), static_cast<size_t>(n), 0, 1); });
        peerRow(
            sized("veksResidualFilter_G729E_16s", n) + " of order 30", "webrtc FilterMAFastQ12",
            [n] { veksResidualFilter_G729E_16s(a30, 30, x + 40, y, n); },
            [n] { WebRtcSpl_FilterMAFastQ12(x + 40, y, a30, 31, static_cast<size_t>(n)); });
        peerRow(
            sized("veksSynthesisFilter_G729E_16s", n) + " of order 30", "webrtc FilterARFastQ12",
            [n] { veksSynthesisFilter_G729E_16s(a30, 30, z, y + 40, n, memory); },
            [n] {
                std::copy_n(memory, 30, y + 10);
                WebRtcSpl_FilterARFastQ12(z, y + 40, a30, 31, static_cast<size_t>(n));
                std::copy_n(y + 10 + n, 30, memory);
            });
        peerRow(
            sized("veksSynthesisFilter_G729E_16s_I", n) + " of order 30", "webrtc FilterARFastQ12",
            [n] {
                std::copy_n(z, n, y + 40);
                veksSynthesisFilter_G729E_16s_I(a30, 30, y + 40, n, memory);
            },
            [n] {
                std::copy_n(memory, 30, y + 10);
                WebRtcSpl_FilterARFastQ12(z, y + 40, a30, 31, static_cast<size_t>(n));
                std::copy_n(y + 10 + n, 30, memory);
            });
    }
    static Vek32s energy;
    static Vek16s place;
    for (int i = 0; i <= 20; ++i) {
        h[i] = static_cast<Vek16s>(32000 * std::pow(0.85, i) * std::cos(0.6 * i));
        r[i] = h[i] * 32768;
    }
    for (const int order : {10, 20}) {
        peerRow(
            sized("veksLevinsonDurbin_G728_16s_Sfs", order), "webrtc LevinsonDurbin",
            [order] { veksLevinsonDurbin_G728_16s_Sfs(h, order, y, z, &energy, &place); },
            [order] { WebRtcSpl_LevinsonDurbin(r, y, y + 40, static_cast<size_t>(order)); });
    }
    fill(data);
    for (const int n : {64, 256}) {
        peerRow(
            sized("veksResidualFilter_Low_16s_Sfs", n), "webrtc FilterMAFastQ12",
            [n] { veksResidualFilter_Low_16s_Sfs(a30, 16, x + 40, y, n, 12); },
            [n] { WebRtcSpl_FilterMAFastQ12(x + 40, y, a30, 17, static_cast<size_t>(n)); });
    }
    for (const int n : {40, 240}) {
        const auto count = static_cast<size_t>(n);
        peerRow(
            sized("veksMulC_NR_16s_Sfs", n), "webrtc ScaleVectorWithSat",
            [n] { veksMulC_NR_16s_Sfs(x, 29000, y, n, 15); },
            [count] { WebRtcSpl_ScaleVectorWithSat(x, y, 29000, count, 15); });
        peerRow(
            sized("veksMulC_NR_16s_ISfs", n), "webrtc ScaleVectorWithSat",
            [n] {
                std::copy_n(x, n, y);
                veksMulC_NR_16s_ISfs(29000, y, n, 15);
            },
            [n, count] {
                std::copy_n(x, n, y);
                WebRtcSpl_ScaleVectorWithSat(y, y, 29000, count, 15);
            });
        peerRow(
            sized("veksMul_NR_16s_Sfs", n), "webrtc ElementwiseVectorMult", [n] { veksMul_NR_16s_Sfs(x, z, y, n, 8); },
            [count] { WebRtcSpl_ElementwiseVectorMult(y, x, z, count, 8); });
        peerRow(
            sized("veksMul_NR_16s_ISfs", n), "webrtc ElementwiseVectorMult",
            [n] {
                std::copy_n(x, n, y);
                veksMul_NR_16s_ISfs(z, y, n, 8);
            },
            [n, count] {
                std::copy_n(x, n, y);
                WebRtcSpl_ElementwiseVectorMult(y, y, z, count, 8);
            });
    }
}
#endif

#if __has_include(<opencore-amrnb/interf_enc.h>) && __has_include(<vo-amrwbenc/enc_if.h>)
extern "C" {
void Residu(int16_t* a, int16_t* x, int16_t* y, int16_t n);
void Syn_filt(int16_t* a, int16_t* x, int16_t* y, int16_t n, int16_t* mem, int16_t update);
void Convolve(int16_t* x, int16_t* h, int16_t* y, int16_t n);
void cor_h_x(int16_t* h, int16_t* x, int16_t* d, int16_t scale, int* overflow);
int32_t Inv_sqrt(int32_t x, int* overflow);
void Weight_Ai(int16_t* a, const int16_t* factors, int16_t* expanded);
void Lag_window(int16_t order, int16_t* high, int16_t* low, int* overflow);
void preemphasis(int16_t* state, int16_t* signal, int16_t g, int16_t n, int* overflow);
int16_t Levinson(int16_t* state, int16_t* high, int16_t* low, int16_t* a, int16_t* rc, int* overflow);
void Pred_lt_3or6(int16_t* excitation, int16_t delay, int16_t fraction, int16_t n, int16_t thirds, int* overflow);
int16_t G_pitch(int mode, int16_t* target, int16_t* filtered, int16_t* products, int16_t n, int* overflow);
void voAWB_Convolve(int16_t* x, int16_t* h, int16_t* y, int16_t n);
void voAWB_cor_h_x(int16_t* h, int16_t* x, int16_t* dn);
void voAWB_Pit_shrp(int16_t* x, int16_t lag, int16_t factor, int16_t n);
void voAWB_Residu(int16_t* a, int16_t* x, int16_t* y, int16_t n);
void Weight_a(int16_t* a, int16_t* expanded, int16_t gamma, int16_t order);
}

PEER_ROWS(amrkernels) {
    static int overflow = 0;
    static Vek16s both[22];
    static Vek16s high[11];
    static Vek16s low[11];
    static Vek16s state[11];
    static Vek16s error;
    static Vek16s factors[10] = {30802, 28954, 27217, 25584, 24049, 22606, 21250, 19975, 18776, 17650};
    static Vek32s wide[11];
    fill(data);
    std::copy_n(a10, 11, both);
    std::copy_n(a30, 11, both + 11);
    veksAutoCorr_NormE_16s32s(x, 240, wide, 11, &shift);
    for (int i = 0; i < 11; ++i) {
        high[i] = static_cast<Vek16s>(wide[i] >> 16);
        low[i] = static_cast<Vek16s>((wide[i] >> 1) & 0x7fff);
    }
    const auto synthesis = [] {
        std::copy_n(z, 40, y);
        Syn_filt(a10, y, y, 40, memory, 0);
    };
    peerRow(
        "veksSynthesisFilter_NR_16s_ISfs, 40", "opencore-amrnb Syn_filt",
        [] {
            std::copy_n(z, 40, y);
            veksSynthesisFilter_NR_16s_ISfs(a10, y, 40, 12, memory);
        },
        synthesis);
    peerRow(
        "veksSynthesisFilterLow_NR_16s_ISfs, 40", "opencore-amrnb Syn_filt",
        [] {
            std::copy_n(z, 40, y);
            veksSynthesisFilterLow_NR_16s_ISfs(a10, y, 40, 12, memory);
        },
        synthesis);
    peerRow(
        "veksSynthesisFilterZeroStateResponse_NR_16s, 40", "opencore-amrnb Syn_filt",
        [] { veksSynthesisFilterZeroStateResponse_NR_16s(a10, y, 40, 12); },
        [] {
            static Vek16s none[10];
            static Vek16s impulse[40] = {4096};
            Syn_filt(a10, impulse, y, 40, none, 0);
        });
    const auto weighting = [] {
        Residu(both, x + 10, y + 100, 40);
        Syn_filt(both + 11, y + 100, y, 40, memory, 1);
    };
    peerRow(
        "veksIIR16s_G729_16s, 40", "opencore-amrnb Residu, Syn_filt",
        [] { veksIIR16s_G729_16s(both, x + 10, y, memory); }, weighting);
    peerRow(
        "veksIIR16sLow_G729_16s, 40", "opencore-amrnb Residu, Syn_filt",
        [] { veksIIR16sLow_G729_16s(both, x + 10, y, memory); }, weighting);
    peerRow(
        "veksConvPartial_16s_Sfs, 40", "opencore-amrnb Convolve", [] { veksConvPartial_16s_Sfs(x, h, y, 40, 12); },
        [] { Convolve(x, h, y, 40); });
    peerRow(
        "veksConvPartial_NR_16s, 64", "vo-amrwbenc voAWB_Convolve", [] { veksConvPartial_NR_16s(x, h, y, 64); },
        [] { voAWB_Convolve(x, h, y, 64); });
    peerRow(
        "veksCrossCorr_NormM_16s, 40", "opencore-amrnb cor_h_x", [] { veksCrossCorr_NormM_16s(x, h, 40, y); },
        [] { cor_h_x(h, x, y, 1, &overflow); });
    peerRow(
        "veksCrossCorr_NormM_16s, 64", "vo-amrwbenc voAWB_cor_h_x", [] { veksCrossCorr_NormM_16s(x, h, 64, y); },
        [] { voAWB_cor_h_x(h, x, y); });
    for (const int n : {10, 40}) {
        peerRow(
            sized("veksInvSqrt_32s_I", n), "opencore-amrnb Inv_sqrt",
            [n] {
                std::copy_n(wide, 10, r);
                veksInvSqrt_32s_I(r, n);
            },
            [n] {
                std::copy_n(wide, 10, r);
                for (int i = 0; i < n; ++i) {
                    r[i] = Inv_sqrt(r[i], &overflow);
                }
            });
    }
    peerRow(
        "veksMulPowerC_NR_16s_Sfs, 11", "opencore-amrnb Weight_Ai",
        [] { veksMulPowerC_NR_16s_Sfs(a10, 30802, y, 11, 15); }, [] { Weight_Ai(a10, factors, y); });
    peerRow(
        "veksMulPowerC_NR_16s_Sfs, 17", "vo-amrwbenc Weight_a", [] { veksMulPowerC_NR_16s_Sfs(a30, 30147, y, 17, 15); },
        [] { Weight_a(a30, y, 30147, 16); });
    peerRow(
        "veksLagWindow_G729_32s_I, 10", "opencore-amrnb Lag_window",
        [] {
            std::copy_n(wide, 11, r);
            veksLagWindow_G729_32s_I(r + 1, 10);
        },
        [] {
            static Vek16s h16[11];
            static Vek16s l16[11];
            std::copy_n(high, 11, h16);
            std::copy_n(low, 11, l16);
            Lag_window(10, h16, l16, &overflow);
        });
    peerRow(
        "veksPreemphasize_G729A_16s, 40", "opencore-amrnb preemphasis",
        [] { veksPreemphasize_G729A_16s(16384, x, y, 40, &error); },
        [] {
            std::copy_n(x, 40, y);
            preemphasis(&error, y, 16384, 40, &overflow);
        });
    peerRow(
        "veksLevinsonDurbin_G729B", "opencore-amrnb Levinson",
        [] { veksLevinsonDurbin_G729B(wide, y, y + 20, &error); },
        [] { Levinson(state, high, low, y, y + 20, &overflow); });
    peerRow(
        "veksDecodeAdaptiveVector_G729_16s", "opencore-amrnb Pred_lt_3or6",
        [] {
            static const Vek16s delay[2] = {60, 1};
            veksDecodeAdaptiveVector_G729_16s(delay, x, y);
        },
        [] {
            Pred_lt_3or6(x + 154, 60, 1, 40, 1, &overflow);
            std::copy_n(x + 154, 40, y);
        });
    data.fill(x, 700, 1000);
    peerRow(
        "veksAdaptiveCodebookGain_GSMAMR_16s", "opencore-amrnb G_pitch",
        [] { veksAdaptiveCodebookGain_GSMAMR_16s(x, z, &error); },
        [] {
            static Vek16s products[4];
            error = G_pitch(0, x, z, products, 40, &overflow);
        });
    peerRow(
        "veksHarmonicFilter_NR_16s, 64", "vo-amrwbenc voAWB_Pit_shrp",
        [] {
            std::copy_n(x, 64, y);
            veksHarmonicFilter_NR_16s(27853, 30, y + 30, y + 30, 34);
        },
        [] {
            std::copy_n(x, 64, y);
            voAWB_Pit_shrp(y, 30, 27853, 64);
        });
    peerRow(
        "veksResidualFilter_Low_16s_Sfs, 64", "vo-amrwbenc voAWB_Residu",
        [] { veksResidualFilter_Low_16s_Sfs(a30, 16, x + 40, y, 64, 12); }, [] { voAWB_Residu(a30, x + 40, y, 64); });
}
#endif

#if __has_include(<spandsp.h>)
extern "C" {
int32_t vec_dot_prodi16(const int16_t* x, const int16_t* y, int n);
float vec_dot_prodf(const float* x, const float* y, int n);
}

PEER_ROWS(telephony) {
    fill(data);
    for (const int n : {40, 60, 100}) {
        peerRow(
            sized("veksDotProd_G729A_16s32s", n), "spandsp vec_dot_prodi16",
            [n] { veksDotProd_G729A_16s32s(x, z, n, &sum); }, [n] { sum = vec_dot_prodi16(x, z, n); });
    }
    for (const int n : {12, 40, 80}) {
        peerRow(
            sized("veksDotProd_G729A_32f", n), "spandsp vec_dot_prodf",
            [n] { veksDotProd_G729A_32f(xF, zF, n, &sumF); }, [n] { sumF = vec_dot_prodf(xF, zF, n); });
    }
}
#endif

#if __has_include(<volk/volk.h>)
#include <volk/volk.h>

PEER_ROWS(vectorlibrary) {
    fill(data);
    for (const int n : {12, 40, 80}) {
        peerRow(
            sized("veksDotProd_G729A_32f", n), "volk volk_32f_x2_dot_prod_32f",
            [n] { veksDotProd_G729A_32f(xF, zF, n, &sumF); },
            [n] { volk_32f_x2_dot_prod_32f(&sumF, xF, zF, static_cast<unsigned>(n)); });
    }
}
#endif

#if __has_include(<fftw3.h>)
#include <fftw3.h>

PEER_ROWS(transforms) {
    fill(data);
    static float* in = fftwf_alloc_real(640);
    static float* out = fftwf_alloc_real(640);
    static fftwf_complex* bins = fftwf_alloc_complex(65);
    for (const int n : {320, 640}) {
        static fftwf_plan plan;
        plan = fftwf_plan_r2r_1d(n, in, out, FFTW_REDFT11, FFTW_MEASURE);
        const auto theirs = [plan = plan] { fftwf_execute(plan); };
        data.fill(in, n, 1);
        peerRow(
            sized("veksDCTFwd_G7221_16s", n), "fftw3f REDFT11", [n] { veksDCTFwd_G7221_16s(x, y, n); }, theirs);
        peerRow(
            sized("veksDCTInv_G7221_16s", n), "fftw3f REDFT11", [n] { veksDCTInv_G7221_16s(x, y, n); }, theirs);
        if (n == 320) {
            peerRow(
                "veksDCTFwd_G722_16s", "fftw3f REDFT11", [] { veksDCTFwd_G722_16s(x, y); }, theirs);
            peerRow(
                "veksDCTInv_G722_16s", "fftw3f REDFT11", [] { veksDCTInv_G722_16s(x, y); }, theirs);
        }
    }
    static fftwf_plan real = fftwf_plan_dft_r2c_1d(128, in, bins, FFTW_MEASURE);
    data.fill(in, 128, 1);
    peerRow(
        "veksFFTFwd_RToPerm_GSMAMR_16s_I, 128", "fftw3f real to complex",
        [] {
            std::copy_n(x, 128, y);
            veksFFTFwd_RToPerm_GSMAMR_16s_I(y);
        },
        [] { fftwf_execute(real); });
}
#endif

#if __has_include(<libavutil/tx.h>)
extern "C" {
#include <libavutil/tx.h>
}

// Fold and transform in one call there, in two here.
PEER_ROWS(lapped) {
    fill(data);
    alignas(64) static float time[1280];
    alignas(64) static float coefficients[1280];
    for (const int n : {320, 640}) {
        AVTXContext* forward = nullptr;
        AVTXContext* backward = nullptr;
        av_tx_fn forwardFn = nullptr;
        av_tx_fn backwardFn = nullptr;
        const float scale = 1;
        if (av_tx_init(&forward, &forwardFn, AV_TX_FLOAT_MDCT, 0, n, &scale, 0) < 0 ||
            av_tx_init(&backward, &backwardFn, AV_TX_FLOAT_MDCT, 1, n, &scale, 0) < 0) {
            return;
        }
        data.fill(time, 1280, 1);
        const auto theirs = [=] { forwardFn(forward, coefficients, time, sizeof(float)); };
        const auto theirsBack = [=] { backwardFn(backward, time, coefficients, sizeof(float)); };
        peerRow(
            sized("veksDecomposeMLTToDCT_G7221_16s + veksDCTFwd_G7221_16s", n), "libavutil MDCT in float",
            [n] {
                veksDecomposeMLTToDCT_G7221_16s(x, z, y, n);
                veksDCTFwd_G7221_16s(y, y, n);
            },
            theirs);
        peerRow(
            sized("veksDCTInv_G7221_16s + veksDecomposeDCTToMLT_G7221_16s", n), "libavutil inverse MDCT in float",
            [n] {
                veksDCTInv_G7221_16s(x, y, n);
                veksDecomposeDCTToMLT_G7221_16s(y, z, y, n);
            },
            theirsBack);
        if (n == 320) {
            peerRow(
                "veksDecomposeMLTToDCT_G722_16s + veksDCTFwd_G722_16s, 320", "libavutil MDCT in float",
                [] {
                    veksDecomposeMLTToDCT_G722_16s(x, z, y);
                    veksDCTFwd_G722_16s(y, y);
                },
                theirs);
            peerRow(
                "veksDCTInv_G722_16s + veksDecomposeDCTToMLT_G722_16s, 320", "libavutil inverse MDCT in float",
                [] {
                    veksDCTInv_G722_16s(x, y);
                    veksDecomposeDCTToMLT_G722_16s(y, z, y);
                },
                theirsBack);
        }
    }
}
#endif
