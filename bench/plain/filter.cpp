#include "peers.h"

#include "plain/filter.h"

#include "veksc.h"

using namespace PLAIN_BUILD::filter;

namespace {

Vek16s a10[11] = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};
Vek16s a30[41], c20[20], memory[60], last, gain = 16384;
Vek32s wide[60];
float aF[41], lastF, gainF = 1;
// None of these lies across two pages: short calls would take some 30 clocks more.
alignas(1024) Vek16s x[500], z[500], y[500];
alignas(1024) Vek32s r[200];
alignas(1024) float xF[200], zF[200], yF[200];

void fill(const PeerData& data) {
    data.fill(x, 500, 2000);
    data.fill(z, 500, 1000, 1);
    data.fill(xF, 200, 1);
    data.fill(zF, 200, 1, 1);
    data.fill(wide, 60, 1 << 26, 2);
    a30[0] = 4096;
    for (int i = 1; i <= 40; ++i) {
        a30[i] = static_cast<Vek16s>(1500 * std::pow(-0.8, i));
        aF[i] = static_cast<float>(a30[i]) / 4096;
    }
    for (int i = 0; i < 20; ++i) {
        c20[i] = static_cast<Vek16s>((i < 10 ? 2000 : 1500) * std::pow(-0.7, i % 10));
    }
}

} // namespace

PEER_ROWS(plainfilter) {
    fill(data);
    peerRow(
        "veksResidualFilter_G729_16s, 40", PEER_PLAIN, [] { veksResidualFilter_G729_16s(x + 10, a10, y); },
        [] { zeros(a10, 10, x + 10, y, 40); });
    for (const int n : {40, 80}) {
        const std::string size = ", " + std::to_string(n) + " of order 30";
        peerRow(
            "veksResidualFilter_G729E_16s" + size, PEER_PLAIN,
            [n] { veksResidualFilter_G729E_16s(a30, 30, x + 40, y, n); }, [n] { zeros(a30, 30, x + 40, y, n); });
        peerRow(
            "veksSynthesisFilter_G729E_16s" + size, PEER_PLAIN,
            [n] { veksSynthesisFilter_G729E_16s(a30, 30, z, y + 40, n, memory); },
            [n] {
                std::copy_n(memory, 30, y + 10);
                poles(a30, 30, z, y + 40, n);
                std::copy_n(y + 10 + n, 30, memory);
            });
        peerRow(
            "veksSynthesisFilter_G729E_16s_I" + size, PEER_PLAIN,
            [n] {
                std::copy_n(z, n, y + 40);
                veksSynthesisFilter_G729E_16s_I(a30, 30, y + 40, n, memory);
            },
            [n] {
                std::copy_n(z, n, y + 40);
                std::copy_n(memory, 30, y + 10);
                poles(a30, 30, y + 40, y + 40, n);
                std::copy_n(y + 10 + n, 30, memory);
            });
    }
    for (const int n : {64, 256}) {
        const std::string size = ", " + std::to_string(n);
        peerRow(
            "veksResidualFilter_AMRWB_16s_Sfs" + size, PEER_PLAIN,
            [n] { veksResidualFilter_AMRWB_16s_Sfs(a30, 16, x + 40, y, n, 12); },
            [n] { zeros(a30, 16, x + 40, y, n); });
        peerRow(
            "veksResidualFilter_Low_16s_Sfs" + size, PEER_PLAIN,
            [n] { veksResidualFilter_Low_16s_Sfs(a30, 16, x + 40, y, n, 12); }, [n] { zeros(a30, 16, x + 40, y, n); });
    }
    for (const int n : {40, 60}) {
        const std::string size = ", " + std::to_string(n);
        const auto theirs = [n] {
            std::copy_n(memory, 10, y + 30);
            poles(a10, 10, z, y + 40, n);
        };
        const auto inPlace = [n] {
            std::copy_n(z, n, y + 40);
            std::copy_n(memory, 10, y + 30);
            poles(a10, 10, y + 40, y + 40, n);
        };
        peerRow(
            "veksSynthesisFilter_NR_16s_Sfs" + size, PEER_PLAIN,
            [n] { veksSynthesisFilter_NR_16s_Sfs(a10, z, y + 40, n, 12, memory); }, theirs);
        peerRow(
            "veksSynthesisFilter_NR_16s_ISfs" + size, PEER_PLAIN,
            [n] {
                std::copy_n(z, n, y + 40);
                veksSynthesisFilter_NR_16s_ISfs(a10, y + 40, n, 12, memory);
            },
            inPlace);
        peerRow(
            "veksSynthesisFilterLow_NR_16s_ISfs" + size, PEER_PLAIN,
            [n] {
                std::copy_n(z, n, y + 40);
                veksSynthesisFilterLow_NR_16s_ISfs(a10, y + 40, n, 12, memory);
            },
            inPlace);
        peerRow(
            "veksSynthesisFilterZeroStateResponse_NR_16s" + size, PEER_PLAIN,
            [n] { veksSynthesisFilterZeroStateResponse_NR_16s(a10, y + 40, n, 12); },
            [n] {
                std::fill_n(y + 30, 10 + n, Vek16s{0});
                y[40] = 4096;
                poles(a10, 10, y + 40, y + 40, n);
            });
    }
    peerRow(
        "veksSynthesisFilter_G729_32f, 40 of order 10", PEER_PLAIN,
        [] { veksSynthesisFilter_G729_32f(aF, 10, xF, yF + 40, 40, zF); },
        [] {
            std::copy_n(zF, 10, yF + 30);
            polesF(aF, 10, xF, yF + 40, 40);
        });
    peerRow(
        "veksSynthesisFilter_G729_32f, 80 of order 30", PEER_PLAIN,
        [] { veksSynthesisFilter_G729_32f(aF, 30, xF, yF + 40, 80, zF); },
        [] {
            std::copy_n(zF, 30, yF + 10);
            polesF(aF, 30, xF, yF + 40, 80);
        });
    const auto weighting = [] {
        zeros(a10, 10, x + 10, z + 10, 40);
        std::copy_n(memory + 10, 10, y);
        poles(a30, 10, z + 10, y + 10, 40);
        std::copy_n(x + 40, 10, memory);
        std::copy_n(y + 40, 10, memory + 10);
    };
    static Vek16s both[22];
    std::copy_n(a10, 11, both);
    std::copy_n(a30, 11, both + 11);
    peerRow(
        "veksIIR16s_G729_16s, 40", PEER_PLAIN, [] { veksIIR16s_G729_16s(both, x + 10, y, memory); }, weighting);
    peerRow(
        "veksIIR16sLow_G729_16s, 40", PEER_PLAIN, [] { veksIIR16sLow_G729_16s(both, x + 10, y, memory); }, weighting);
    const auto perceptual = [](const Vek16s* from, Vek16s* to) {
        poleZero(c20, from, to, 60);
        std::copy_n(from + 50, 10, memory);
        std::copy_n(to + 50, 10, memory + 10);
    };
    peerRow(
        "veksIIR16s_G723_16s_I, 60", PEER_PLAIN,
        [] {
            std::copy_n(x + 10, 60, y + 10);
            veksIIR16s_G723_16s_I(c20, y + 10, memory);
        },
        [perceptual] {
            std::copy_n(x + 10, 60, y + 110);
            perceptual(x + 10, y + 10);
        });
    peerRow(
        "veksIIR16s_G723_32s16s_Sfs, 60", PEER_PLAIN, [] { veksIIR16s_G723_32s16s_Sfs(c20, wide, 15, y + 10, memory); },
        [perceptual] {
            narrowAll(wide, 15, z + 10, 60);
            perceptual(z + 10, y + 10);
        });
    peerRow(
        "veksIIR16s_G723_16s32s, 60", PEER_PLAIN, [] { veksIIR16s_G723_16s32s(c20, x + 10, r, memory); },
        [perceptual] {
            perceptual(x + 10, y + 10);
            widen(y + 10, r, 60);
        });
}

PEER_ROWS(plainarithmetic) {
    fill(data);
    for (const int n : {40, 240}) {
        const std::string size = ", " + std::to_string(n);
        peerRow(
            "veksMulC_NR_16s_Sfs" + size, PEER_PLAIN, [n] { veksMulC_NR_16s_Sfs(x, 29000, y, n, 15); },
            [n] { scale(x, 29000, y, n, 15); });
        peerRow(
            "veksMulC_NR_16s_ISfs" + size, PEER_PLAIN,
            [n] {
                std::copy_n(x, n, y);
                veksMulC_NR_16s_ISfs(29000, y, n, 15);
            },
            [n] {
                std::copy_n(x, n, y);
                scale(y, 29000, y, n, 15);
            });
        peerRow(
            "veksMul_NR_16s_Sfs" + size, PEER_PLAIN, [n] { veksMul_NR_16s_Sfs(x, z, y, n, 8); },
            [n] { multiply(x, z, y, n, 8); });
        peerRow(
            "veksMul_NR_16s_ISfs" + size, PEER_PLAIN,
            [n] {
                std::copy_n(x, n, y);
                veksMul_NR_16s_ISfs(z, y, n, 8);
            },
            [n] {
                std::copy_n(x, n, y);
                multiply(y, z, y, n, 8);
            });
    }
    for (const int n : {9, 17, 128}) {
        peerRow(
            "veksMulPowerC_NR_16s_Sfs, " + std::to_string(n), PEER_PLAIN,
            [n] { veksMulPowerC_NR_16s_Sfs(x, 30802, y, n, 15); }, [n] { powers(x, 30802, y, n); });
    }
    for (const int n : {10, 40, 60}) {
        const std::string size = ", " + std::to_string(n);
        peerRow(
            "veksInterpolateC_NR_G729_16s_Sfs" + size, PEER_PLAIN,
            [n] { veksInterpolateC_NR_G729_16s_Sfs(x, 9000, z, 7000, y, n, 14); },
            [n] { weigh(x, 9000, z, 7000, y, n, 14, 1 << 13); });
        peerRow(
            "veksInterpolateC_G729_16s_Sfs" + size, PEER_PLAIN,
            [n] { veksInterpolateC_G729_16s_Sfs(x, 9000, z, 7000, y, n, 14); },
            [n] { weigh(x, 9000, z, 7000, y, n, 14, 0); });
        peerRow(
            "veksInterpolate_G729_16s" + size, PEER_PLAIN, [n] { veksInterpolate_G729_16s(x, z, y, n); },
            [n] { halves(x, z, y, n); });
        peerRow(
            "veksInvSqrt_32s_I" + size, PEER_PLAIN,
            [n] {
                std::copy_n(wide, n, r);
                veksInvSqrt_32s_I(r, n);
            },
            [n] {
                std::copy_n(wide, n, r);
                inverseRoots(r, n);
            });
        peerRow(
            "veksHarmonicFilter_16s_I" + size, PEER_PLAIN,
            [n] {
                std::copy_n(x + 60, n, y + 60);
                veksHarmonicFilter_16s_I(13000, 40, y + 60, n);
            },
            [n] {
                std::copy_n(x + 60, n, y + 60);
                harmonic(13000, 40, y + 60, n);
            });
        peerRow(
            "veksHarmonicFilter_NR_16s" + size, PEER_PLAIN, [n] { veksHarmonicFilter_NR_16s(13000, 40, x + 60, y, n); },
            [n] { harmonicTo(13000, 40, x + 60, y, n); });
    }
    for (const int n : {10, 40}) {
        const std::string size = ", " + std::to_string(n);
        peerRow(
            "veksInterpolateC_G729_32f" + size, PEER_PLAIN,
            [n] { veksInterpolateC_G729_32f(xF, zF, yF, n, 0.6F, 0.4F); }, [n] { weighF(xF, 0.6F, zF, 0.4F, yF, n); });
        peerRow(
            "veksHarmonicFilter_32f_I" + size, PEER_PLAIN,
            [n] {
                std::copy_n(xF + 60, n, yF + 60);
                veksHarmonicFilter_32f_I(40, yF + 60, n, 0.4F);
            },
            [n] {
                std::copy_n(xF + 60, n, yF + 60);
                harmonicF(0.4F, 40, yF + 60, n);
            });
        peerRow(
            "veksFilteredExcitation_G729_32f" + size, PEER_PLAIN,
            [n] {
                std::copy_n(xF, n, yF);
                veksFilteredExcitation_G729_32f(zF, yF, n, 0.7F);
            },
            [n] {
                std::copy_n(xF, n, yF);
                filteredExcitation(zF, yF, n, 0.7F);
            });
    }
    for (const int n : {16, 128}) {
        peerRow(
            "veksInterpolateC_NR_16s, " + std::to_string(n), PEER_PLAIN,
            [n] { veksInterpolateC_NR_16s(x, 40, 7, z, 9000, 2, y, n); },
            [n] { weigh(x, 40 << 7, z, 9000 << 2, y, n, 16, 1 << 15); });
    }
    peerRow(
        "veksAdaptiveCodebookContribution_G729_16s", PEER_PLAIN,
        [] { veksAdaptiveCodebookContribution_G729_16s(9000, z, x, y); }, [] { contribution(9000, z, x, y); });
    peerRow(
        "veksAdaptiveCodebookContribution_G729_32f", PEER_PLAIN,
        [] { veksAdaptiveCodebookContribution_G729_32f(0.6F, zF, xF, yF); }, [] { contributionF(0.6F, zF, xF, yF); });
    for (const int n : {40, 160}) {
        const std::string size = ", " + std::to_string(n);
        peerRow(
            "veksPreemphasize_G729A_16s" + size, PEER_PLAIN, [n] { veksPreemphasize_G729A_16s(16384, x, y, n, &last); },
            [n] { tilt(x, 16384, y, n, &last); });
        peerRow(
            "veksPreemphasize_32f_I" + size, PEER_PLAIN,
            [n] {
                std::copy_n(xF, n, yF);
                veksPreemphasize_32f_I(yF, n, &lastF, 0.5F);
            },
            [n] {
                std::copy_n(xF, n, yF);
                tiltF(yF, 0.5F, n, &lastF);
            });
    }
    peerRow(
        "veksTiltCompensation_G7291_16s", PEER_PLAIN, [] { veksTiltCompensation_G7291_16s(x, y, -9000); },
        [] { unitTilt(-9000, x, y, 40); });
    peerRow(
        "veksTiltCompensation_G729E_16s", PEER_PLAIN, [] { veksTiltCompensation_G729E_16s(-9000, x, y); },
        [] { unitTilt(-9000, x, y, 40); });
    peerRow(
        "veksGainControl_G729_16s_I", PEER_PLAIN,
        [] {
            std::copy_n(z, 40, y);
            veksGainControl_G729_16s_I(x, y, &gain);
        },
        [] {
            std::copy_n(z, 40, y);
            gainControl(x, y, &gain);
        });
    peerRow(
        "veksGainControl_G729_32f_I", PEER_PLAIN,
        [] {
            std::copy_n(zF, 40, yF);
            veksGainControl_G729_32f_I(xF, yF, &gainF);
        },
        [] {
            std::copy_n(zF, 40, yF);
            gainControlF(xF, yF, &gainF);
        });
    static Vek8u dispersion[1024];
    static Vek16s code[40];
    veksPhaseDispersionInit_G729D_16s(dispersion);
    peerRow(
        "veksPhaseDispersion_G729D_16s", PEER_PLAIN,
        [] {
            std::fill_n(code, 40, Vek16s{0});
            code[3] = code[17] = 8192;
            veksPhaseDispersion_G729D_16s(x, y, 2000, 4000, code, dispersion);
        },
        [] {
            std::fill_n(code, 40, Vek16s{0});
            code[3] = code[17] = 8192;
            disperse(x, code, z, 2000, y);
        });
    for (const int segments : {8, 16}) {
        peerRow(
            "veksEnvelopTime_G7291_16s, " + std::to_string(segments), PEER_PLAIN,
            [segments] { veksEnvelopTime_G7291_16s(x, 2, y, segments); }, [segments] { levels(x, yF, segments); });
    }
    for (const int n : {64, 256}) {
        static const Vek16s taps[2] = {5898, 20972};
        peerRow(
            "veksHighPassFilter_Direct_AMRWB_16s, " + std::to_string(n), PEER_PLAIN,
            [n] { veksHighPassFilter_Direct_AMRWB_16s(taps, x + 1, y, n, 1); },
            [n] { symmetric(5898, 20972, x + 1, y, n); });
    }
    for (const int n : {100, 140, 180}) {
        peerRow(
            "veksDeemphasize_GSMFR_16s_I, " + std::to_string(n), PEER_PLAIN,
            [n] {
                std::copy_n(x, n, y);
                veksDeemphasize_GSMFR_16s_I(y, n, &last);
            },
            [n] {
                std::copy_n(x, n, y);
                lift(28180, y, n, &last, true);
            });
    }
    for (const int n : {32, 128, 256}) {
        peerRow(
            "veksDeemphasize_AMRWBE_NR_16s_I, " + std::to_string(n), PEER_PLAIN,
            [n] {
                std::copy_n(x, n, y);
                veksDeemphasize_AMRWBE_NR_16s_I(22282, 15, y, n, &last);
            },
            [n] {
                std::copy_n(x, n, y);
                lift(22282, y, n, &last, false);
            });
    }
    static const Vek16s taps11[11] = {-134, -374, 0, 2054, 5741, 8192, 5741, 2054, 0, -374, -134};
    for (const int n : {30, 40, 60}) {
        peerRow(
            "veksWeightingFilter_GSMFR_16s, " + std::to_string(n), PEER_PLAIN,
            [n] { veksWeightingFilter_GSMFR_16s(x + 10, y, n); }, [n] { zeros(taps11, 10, x + 15, y, n); });
    }
}
