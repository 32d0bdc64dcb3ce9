// The kernels of a codec library that several of its speech codecs share, and its steps of G.723.1. They stand in its
// archive alone.
#include "peers.h"

#include "veksc.h"

#if __has_include(<libavcodec/avcodec.h>)
#include <algorithm>
#include <cmath>

extern "C" {
int ff_celp_lp_synthesis_filter(int16_t* out, const int16_t* a, const int16_t* in, int n, int order, int stop,
                                int shift, int rounder);
void ff_celp_lp_synthesis_filterf(float* out, const float* a, const float* in, int n, int order);
void ff_acelp_interpolate(int16_t* out, const int16_t* in, const int16_t* taps, int precision, int fraction, int length,
                          int n);
void ff_acelp_interpolatef(float* out, const float* in, const float* taps, int precision, int fraction, int length,
                           int n);
void ff_acelp_weighted_vector_sum(int16_t* out, const int16_t* a, const int16_t* b, int16_t weightA, int16_t weightB,
                                  int16_t rounder, int shift, int n);
void ff_weighted_vector_sumf(float* out, const float* a, const float* b, float weightA, float weightB, int n);
void ff_acelp_high_pass_filter(int16_t* out, int* memory, const int16_t* in, int n);
void ff_tilt_compensation(float* memory, float tilt, float* samples, int n);
void ff_adaptive_gain_control(float* out, const float* in, float energy, int n, float alpha, float* gain);
int16_t ff_g729_adaptive_gain_control(int before, int after, int16_t* speech, int n, int16_t gain);
void ff_acelp_lsf2lsp(int16_t* lsp, const int16_t* lsf, int order);
void ff_acelp_lspd2lpc(const double* lsp, float* lpc, int half);
int64_t ff_dot_product(const int16_t* a, const int16_t* b, int n);
struct Products {
    int32_t (*integer)(const int16_t* a, const int16_t* b, int n);
    void* others[2];
};
void ff_g729_postfilter(Products* products, int16_t* pastLevel, int* voicing, const int16_t* lpc, int delay,
                        int16_t* residual, int16_t* residualMemory, int16_t* synthesisMemory, int16_t* speech, int n);
int ff_g723_1_scale_vector(int16_t* out, const int16_t* in, int n);
void ff_g723_1_inverse_quant(int16_t* lsp, int16_t* before, uint8_t* index, int bad);
void ff_g723_1_lsp_interpolate(int16_t* lpc, int16_t* now, int16_t* before);
}

namespace {

alignas(64) Vek16s x[400], z[400], y[400];
Vek16s a10[11] = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};
Vek16s a30[31];
Vek16s memory[40];
alignas(64) float xF[400], zF[400], yF[400];
float aF[31];
Vek32s sum;
int shift;

} // namespace

PEER_ROWS(celp) {
    data.fill(x, xF, 400, 1000);
    data.fill(z, zF, 400, 900, 1);
    a30[0] = 4096;
    for (int i = 1; i <= 30; ++i) {
        a30[i] = static_cast<Vek16s>(1500 * std::pow(-0.8, i));
        aF[i] = static_cast<float>(a30[i]) / 4096;
    }
    for (const int n : {80, 208}) {
        const std::string size = ", " + std::to_string(n);
        // Of its two inner products the exact one: scalarproduct_int16 counts modulo 2^32, ours saturates.
        peerRow(
            "veksDotProd_G729A_16s32s" + size, "libavcodec ff_dot_product",
            [n] { veksDotProd_G729A_16s32s(x, z, n, &sum); },
            [n] { sum = static_cast<Vek32s>(std::clamp<int64_t>(ff_dot_product(x, z, n), INT32_MIN, INT32_MAX)); });
        peerRow(
            "veksDotProdAutoScale_16s32s_Sfs" + size, "libavcodec ff_dot_product",
            [n] { veksDotProdAutoScale_16s32s_Sfs(x, z, n, &sum, &shift); },
            [n] { sum = static_cast<Vek32s>(ff_dot_product(x, z, n)); });
    }
    for (const int n : {40, 60}) {
        const std::string size = ", " + std::to_string(n);
        const auto synthesis = [n](const Vek16s* from) {
            std::copy_n(memory, 10, y + 30);
            ff_celp_lp_synthesis_filter(y + 40, a10 + 1, from, n, 10, 0, 0, 0x800);
        };
        peerRow(
            "veksSynthesisFilter_NR_16s_Sfs" + size, "libavcodec ff_celp_lp_synthesis_filter",
            [n] { veksSynthesisFilter_NR_16s_Sfs(a10, z, y + 40, n, 12, memory); }, [=] { synthesis(z); });
        peerRow(
            "veksSynthesisFilter_NR_16s_ISfs" + size, "libavcodec ff_celp_lp_synthesis_filter",
            [n] {
                std::copy_n(z, n, y + 40);
                veksSynthesisFilter_NR_16s_ISfs(a10, y + 40, n, 12, memory);
            },
            [=] {
                std::copy_n(z, n, y + 40);
                synthesis(y + 40);
            });
        peerRow(
            "veksSynthesisFilter_G729_32f" + size + " of order 10", "libavcodec ff_celp_lp_synthesis_filterf",
            [n] { veksSynthesisFilter_G729_32f(aF, 10, xF, yF + 40, n, zF); },
            [n] {
                std::copy_n(zF, 10, yF + 30);
                ff_celp_lp_synthesis_filterf(yF + 40, aF + 1, xF, n, 10);
            });
    }
    peerRow(
        "veksSynthesisFilter_G729E_16s, 80 of order 30", "libavcodec ff_celp_lp_synthesis_filter",
        [] { veksSynthesisFilter_G729E_16s(a30, 30, z, y + 40, 80, memory); },
        [] {
            std::copy_n(memory, 30, y + 10);
            ff_celp_lp_synthesis_filter(y + 40, a30 + 1, z, 80, 30, 0, 0, 0x800);
            std::copy_n(y + 90, 30, memory);
        });
    for (const int n : {10, 40, 60}) {
        const std::string size = ", " + std::to_string(n);
        peerRow(
            "veksInterpolateC_NR_G729_16s_Sfs" + size, "libavcodec ff_acelp_weighted_vector_sum",
            [n] { veksInterpolateC_NR_G729_16s_Sfs(x, 9000, z, 7000, y, n, 14); },
            [n] { ff_acelp_weighted_vector_sum(y, x, z, 9000, 7000, 1 << 13, 14, n); });
        peerRow(
            "veksInterpolateC_G729_16s_Sfs" + size, "libavcodec ff_acelp_weighted_vector_sum",
            [n] { veksInterpolateC_G729_16s_Sfs(x, 9000, z, 7000, y, n, 14); },
            [n] { ff_acelp_weighted_vector_sum(y, x, z, 9000, 7000, 0, 14, n); });
        peerRow(
            "veksInterpolateC_G729_32f" + size, "libavcodec ff_weighted_vector_sumf",
            [n] { veksInterpolateC_G729_32f(xF, zF, yF, n, 0.6F, 0.4F); },
            [n] { ff_weighted_vector_sumf(yF, xF, zF, 0.6F, 0.4F, n); });
    }
    for (const int n : {16, 128}) {
        peerRow(
            "veksInterpolateC_NR_16s, " + std::to_string(n), "libavcodec ff_acelp_weighted_vector_sum",
            [n] { veksInterpolateC_NR_16s(x, 40, 7, z, 9000, 2, y, n); },
            [n] { ff_acelp_weighted_vector_sum(y, x, z, 40 << 5, 9000, 1 << 13, 14, n); });
    }
    static char highPass[64];
    static int passed[2];
    veksHighPassFilterInit_G729(highPass);
    for (const int n : {40, 60, 80}) {
        peerRow(
            "veksHighPassFilter_G729_16s_ISfs, " + std::to_string(n), "libavcodec ff_acelp_high_pass_filter",
            [n] {
                std::copy_n(x, n, y);
                veksHighPassFilter_G729_16s_ISfs(y, n, 12, highPass);
            },
            [n] { ff_acelp_high_pass_filter(y, passed, x, n); });
    }
    static float last;
    for (const int n : {40, 80}) {
        peerRow(
            "veksPreemphasize_32f_I, " + std::to_string(n), "libavcodec ff_tilt_compensation",
            [n] {
                std::copy_n(xF, n, yF);
                veksPreemphasize_32f_I(yF, n, &last, 0.5F);
            },
            [n] {
                std::copy_n(xF, n, yF);
                ff_tilt_compensation(&last, 0.5F, yF, n);
            });
    }
    static float gainF = 1;
    peerRow(
        "veksGainControl_G729_32f_I", "libavcodec ff_adaptive_gain_control",
        [] {
            std::copy_n(zF, 40, yF);
            veksGainControl_G729_32f_I(xF, yF, &gainF);
        },
        [] {
            float energy = 0;
            for (int i = 0; i < 40; ++i) {
                energy += xF[i] * xF[i];
            }
            ff_adaptive_gain_control(yF, zF, energy, 40, 0.9875F, &gainF);
        });
    static Vek16s gain = 16384;
    static int16_t theirGain = 16384;
    peerRow(
        "veksGainControl_G729_16s_I", "libavcodec ff_g729_adaptive_gain_control",
        [] {
            std::copy_n(z, 40, y);
            veksGainControl_G729_16s_I(x, y, &gain);
        },
        [] {
            int before = 0;
            int after = 0;
            std::copy_n(z, 40, y);
            for (int i = 0; i < 40; ++i) {
                before += std::abs(x[i]);
                after += std::abs(y[i]);
            }
            theirGain = ff_g729_adaptive_gain_control(before, after, y, 40, theirGain);
        });
    static const float tapsF[128] = {0.9F, 0.8F, 0.5F, 0.1F, -0.1F, -0.2F, 0.1F};
    static const Vek16s taps[128] = {29443, 25207, 14701, 3143, -4402, -5850, -2783, 1211, 3130, 2259};
    static const Vek32s delayF[2] = {60, 1};
    static const Vek16s delay[2] = {60, 1};
    peerRow(
        "veksDecodeAdaptiveVector_G729_32f_I", "libavcodec ff_acelp_interpolatef",
        [] { veksDecodeAdaptiveVector_G729_32f_I(delayF, xF + 154); },
        [] { ff_acelp_interpolatef(xF + 154, xF + 154 - 60, tapsF, 6, 4, 10, 40); });
    peerRow(
        "veksDecodeAdaptiveVector_G729_16s_I", "libavcodec ff_acelp_interpolate",
        [] { veksDecodeAdaptiveVector_G729_16s_I(delay, x); },
        [] { ff_acelp_interpolate(x + 154, x + 154 - 60, taps, 6, 4, 10, 40); });
    peerRow(
        "veksDecodeAdaptiveVector_G729_16s", "libavcodec ff_acelp_interpolate",
        [] { veksDecodeAdaptiveVector_G729_16s(delay, x, y); },
        [] {
            ff_acelp_interpolate(x + 154, x + 154 - 60, taps, 6, 4, 10, 40);
            std::copy_n(x + 154, 40, y);
        });
    static Products products = {[](const int16_t* a, const int16_t* b, int n) {
                                    int32_t dot = 0;
                                    for (int i = 0; i < n; ++i) {
                                        dot += a[i] * b[i];
                                    }
                                    return dot;
                                },
                                {}};
    static Vek16s weighted[11], residual[200], harmonic[40], response[20], filtered[51];
    static int16_t level, theirResidual[400], residualMemory[100], synthesisMemory[100], speech[60];
    static int voicing;
    peerRow(
        "veksMulPowerC_NR_16s_Sfs + veksResidualFilter_G729_16s + veksLongTermPostFilter_G729_16s + "
        "veksShortTermPostFilter_G729_16s + veksTiltCompensation_G729_16s",
        "libavcodec ff_g729_postfilter",
        [] {
            static Vek16s voice;
            veksMulPowerC_NR_16s_Sfs(a10, 18022, weighted, 11, 15);
            std::copy_n(residual + 40, 152, residual);
            veksResidualFilter_G729_16s(x + 50, weighted, residual + 152);
            veksLongTermPostFilter_G729_16s(16384, 60, residual + 152, harmonic, &voice);
            veksShortTermPostFilter_G729_16s(a10, harmonic, filtered + 11, response);
            veksTiltCompensation_G729_16s(response, filtered + 11);
        },
        [] {
            std::copy_n(x + 40, 50, speech);
            ff_g729_postfilter(&products, &level, &voicing, a10, 60, theirResidual, residualMemory, synthesisMemory,
                               speech + 10, 40);
        });
    // It keeps a number of bits of its own.
    for (const int n : {60, 80, 385}) {
        const std::string size = ", " + std::to_string(n);
        peerRow(
            "veksAutoScale_16s" + size, "libavcodec ff_g723_1_scale_vector",
            [n] {
                shift = 3;
                veksAutoScale_16s(z, y, n, &shift);
            },
            [n] { ff_g723_1_scale_vector(y, z, n); });
        peerRow(
            "veksAutoScale_16s_I" + size, "libavcodec ff_g723_1_scale_vector",
            [n] {
                std::copy_n(z, n, y);
                shift = 3;
                veksAutoScale_16s_I(y, n, &shift);
            },
            [n] {
                std::copy_n(z, n, y);
                ff_g723_1_scale_vector(y, y, n);
            });
    }
}

PEER_ROWS_ONCE(celpspectrum) {
    static const Vek16s lsf[10] = {2339, 4678, 7017, 9356, 11695, 14034, 16373, 18712, 21051, 23390};
    static const float lsp[10] = {0.95F, 0.85F, 0.65F, 0.42F, 0.15F, -0.14F, -0.41F, -0.64F, -0.84F, -0.94F};
    static const float angles[10] = {0.2F, 0.4F, 0.7F, 1.1F, 1.4F, 1.7F, 2.0F, 2.3F, 2.6F, 2.8F};
    static double wide[10];
    std::copy_n(lsp, 10, wide);
    peerRowOnce(
        "veksLSFToLSP_G729_16s", "libavcodec ff_acelp_lsf2lsp", [] { veksLSFToLSP_G729_16s(lsf, y); },
        [] { ff_acelp_lsf2lsp(y, lsf, 10); });
    peerRow(
        "veksLSPToLPC_G729_32f", "libavcodec ff_acelp_lspd2lpc", [] { veksLSPToLPC_G729_32f(lsp, yF); },
        [] { ff_acelp_lspd2lpc(wide, yF, 5); });
    peerRow(
        "veksLSPToLPC_RTA_32f, 10", "libavcodec ff_acelp_lspd2lpc, cosines by a plain loop",
        [] { veksLSPToLPC_RTA_32f(angles, yF, 10); },
        [] {
            for (int i = 0; i < 10; ++i) {
                wide[i] = std::cos(angles[i]);
            }
            ff_acelp_lspd2lpc(wide, yF, 5);
        });
    static Vek16s spectrum[10] = {1200, 2500, 4300, 6200, 8200, 10100, 12200, 14300, 16200, 18000};
    static int16_t before[10] = {1200, 2500, 4300, 6200, 8200, 10100, 12200, 14300, 16200, 18000};
    const auto fourFilters = [] { ff_g723_1_lsp_interpolate(y, spectrum, before); };
    peerRow(
        "veksLSFToLPC_G723_16s_I, 4 subframes", "libavcodec ff_g723_1_lsp_interpolate",
        [] {
            for (int s = 0; s < 4; ++s) {
                std::copy_n(spectrum, 10, y);
                veksLSFToLPC_G723_16s_I(y);
            }
        },
        fourFilters);
    peerRow(
        "veksLSFToLPC_G723_16s, 4 subframes", "libavcodec ff_g723_1_lsp_interpolate",
        [] {
            for (int s = 0; s < 4; ++s) {
                veksLSFToLPC_G723_16s(spectrum, y);
            }
        },
        fourFilters);
    peerRow(
        "veksLSFDecode_G723_16s", "libavcodec ff_g723_1_inverse_quant",
        [] {
            static const Vek16s index[3] = {100, 50, 20};
            veksLSFDecode_G723_16s(index, before, 0, y);
        },
        [] {
            static uint8_t index[3] = {100, 50, 20};
            ff_g723_1_inverse_quant(y, before, index, 0);
        });
}
#endif
