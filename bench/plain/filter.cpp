// Filters of finite and infinite response, products and interpolation by their definitions.
#include "plain.h"

namespace {

// y[n] = sum of a[j] * x[n - j], Q12. Tap by tap, which compilers vectorise better than sample by sample.
PLAIN void zeros(const Vek16s* a, int order, const Vek16s* x, Vek16s* y, int n) {
    int32_t sums[256];
    std::fill_n(sums, n, 0);
    for (int j = 0; j <= order; ++j) {
        for (int i = 0; i < n; ++i) {
            sums[i] += a[j] * x[i - j];
        }
    }
    for (int i = 0; i < n; ++i) {
        y[i] = rounded(sums[i], 12);
    }
}

// y[n] = x[n] - sum of a[j] * y[n - j], Q12; y[-order..-1] is there.
PLAIN void poles(const Vek16s* a, int order, const Vek16s* x, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        int32_t sum = a[0] * x[i];
        for (int j = 1; j <= order; ++j) {
            sum -= a[j] * y[i - j];
        }
        y[i] = rounded(sum, 12);
    }
}

PLAIN void polesF(const float* a, int order, const float* x, float* y, int n) {
    for (int i = 0; i < n; ++i) {
        float sum = x[i];
        for (int j = 1; j <= order; ++j) {
            sum -= a[j] * y[i - j];
        }
        y[i] = sum;
    }
}

// Ten zeros and ten poles of Q13, memories before x and y.
PLAIN void poleZero(const Vek16s* c, const Vek16s* x, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        int32_t sum = x[i] * 8192;
        for (int j = 0; j < 10; ++j) {
            sum += c[10 + j] * y[i - 1 - j] - c[j] * x[i - 1 - j];
        }
        y[i] = rounded(sum, 13);
    }
}

PLAIN void narrowAll(const Vek32s* x, int shift, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = rounded(x[i], shift);
    }
}

PLAIN void widen(const Vek16s* x, Vek32s* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = x[i] * 65536;
    }
}

PLAIN void scale(const Vek16s* x, int c, Vek16s* y, int n, int shift) {
    for (int i = 0; i < n; ++i) {
        y[i] = rounded(x[i] * c, shift);
    }
}

PLAIN void multiply(const Vek16s* x, const Vek16s* z, Vek16s* y, int n, int shift) {
    for (int i = 0; i < n; ++i) {
        y[i] = rounded(x[i] * z[i], shift);
    }
}

PLAIN void powers(const Vek16s* x, int c, Vek16s* y, int n) {
    y[0] = x[0];
    int32_t p = c;
    for (int i = 1; i < n; ++i) {
        y[i] = rounded(x[i] * p, 15);
        p = rounded(p * c, 15);
    }
}

PLAIN void weigh(const Vek16s* x, int c, const Vek16s* z, int d, Vek16s* y, int n, int shift, int half) {
    for (int i = 0; i < n; ++i) {
        y[i] = narrow((x[i] * c + z[i] * d + half) >> shift);
    }
}

PLAIN void weighF(const float* x, float c, const float* z, float d, float* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = x[i] * c + z[i] * d;
    }
}

PLAIN void halves(const Vek16s* x, const Vek16s* z, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = static_cast<Vek16s>((x[i] >> 1) + (z[i] >> 1));
    }
}

PLAIN void harmonic(int beta, int period, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = narrow(y[i] + ((beta * y[i - period]) >> 15));
    }
}

PLAIN void harmonicTo(int beta, int period, const Vek16s* x, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = narrow(x[i] + ((beta * x[i - period] + 16384) >> 15));
    }
}

PLAIN void harmonicF(float beta, int period, float* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] += beta * y[i - period];
    }
}

// y[n] = x[n] - c * x[n - 1], Q15.
PLAIN void tilt(const Vek16s* x, int c, Vek16s* y, int n, Vek16s* memory) {
    int before = *memory;
    for (int i = 0; i < n; ++i) {
        y[i] = narrow(x[i] - ((c * before) >> 15));
        before = x[i];
    }
    *memory = static_cast<Vek16s>(before);
}

PLAIN void tiltF(float* x, float c, int n, float* memory) {
    const float last = x[n - 1];
    for (int i = n - 1; i > 0; --i) {
        x[i] -= c * x[i - 1];
    }
    x[0] -= c * *memory;
    *memory = last;
}

// (x[n] + mu * x[n - 1]) / (1 - |mu|), by a multiplication each; mu is 0.2 k for a k above 0, else 0.9 k.
PLAIN void unitTilt(int k, const Vek16s* x, Vek16s* y, int n) {
    const int mu = rounded(k * (k > 0 ? 6554 : 29491), 15);
    const int gain = (1 << 27) / (32768 - std::abs(mu));
    for (int i = 0; i < n; ++i) {
        y[i] = rounded(narrow(x[i + 1] + ((mu * x[i]) >> 15)) * gain, 12);
    }
}

PLAIN void symmetric(int side, int middle, const Vek16s* x, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = rounded(side * (x[i - 1] + x[i + 1]) + middle * x[i], 15);
    }
}

// y[n] = x[n] + c * y[n - 1], Q15.
PLAIN void lift(int c, Vek16s* y, int n, Vek16s* memory, bool doubled) {
    int32_t before = *memory;
    for (int i = 0; i < n; ++i) {
        before = narrow(y[i] + ((c * before + 16384) >> 15));
        y[i] = static_cast<Vek16s>(doubled ? narrow(2 * before) & ~7 : before);
    }
    *memory = static_cast<Vek16s>(before);
}

PLAIN void gainControl(const Vek16s* x, Vek16s* y, Vek16s* gain) {
    int32_t in = 0;
    int32_t out = 0;
    for (int i = 0; i < 40; ++i) {
        in += std::abs(x[i]);
        out += std::abs(y[i]);
    }
    const int32_t aim = out == 0 ? 0 : static_cast<int32_t>(int64_t{205} * in / out);
    int32_t g = *gain;
    for (int i = 0; i < 40; ++i) {
        g = ((g * 32358) >> 15) + aim;
        y[i] = narrow((y[i] * g) >> 14);
    }
    *gain = static_cast<Vek16s>(g);
}

PLAIN void gainControlF(const float* x, float* y, float* gain) {
    float in = 0;
    float out = 0;
    for (int i = 0; i < 40; ++i) {
        in += std::fabs(x[i]);
        out += std::fabs(y[i]);
    }
    const float aim = out == 0 ? 0 : 0.0125F * in / out;
    float g = *gain;
    for (int i = 0; i < 40; ++i) {
        g = 0.9875F * g + aim;
        y[i] *= g;
    }
    *gain = g;
}

PLAIN void contribution(int gain, const Vek16s* y, const Vek16s* x, Vek16s* left) {
    for (int i = 0; i < 40; ++i) {
        left[i] = narrow(x[i] - ((gain * y[i]) >> 14));
    }
}

PLAIN void contributionF(float gain, const float* y, const float* x, float* left) {
    for (int i = 0; i < 40; ++i) {
        left[i] = x[i] - gain * y[i];
    }
}

PLAIN void filteredExcitation(const float* h, float* y, int n, float v) {
    for (int i = n - 1; i > 0; --i) {
        y[i] = y[i - 1] + v * h[i];
    }
    y[0] = v * h[0];
}

// The innovation convolved in a circle with the response, and its share in the excitation exchanged.
PLAIN void disperse(const Vek16s* x, Vek16s* code, const Vek16s* h, int gain, Vek16s* y) {
    int32_t sums[40];
    std::fill_n(sums, 40, 0);
    for (int i = 0; i < 40; ++i) {
        for (int k = 0; k < 40 - i; ++k) {
            sums[i + k] += code[i] * h[k];
        }
        for (int k = 40 - i; k < 40; ++k) {
            sums[i + k - 40] += code[i] * h[k];
        }
    }
    for (int i = 0; i < 40; ++i) {
        const Vek16s dispersed = rounded(sums[i], 15);
        y[i] = narrow(x[i] + rounded(gain * (dispersed - code[i]), 14));
        code[i] = dispersed;
    }
}

// Half the logarithm of each segment's energy.
PLAIN void levels(const Vek16s* x, float* y, int segments) {
    for (int s = 0; s < segments; ++s) {
        float energy = 1;
        for (int i = 10 * s; i < 10 * s + 10; ++i) {
            energy += static_cast<float>(x[i]) * x[i];
        }
        y[s] = 0.5F * std::log2(energy);
    }
}

// A table of 1/sqrt over a quarter of the range, and a line between its entries.
Vek16s roots[50];
PLAIN void inverseRoots(Vek32s* x, int n) {
    for (int i = 0; i < n; ++i) {
        if (x[i] <= 0) {
            x[i] = 0x3fffffff;
            continue;
        }
        const int norm = __builtin_clz(static_cast<unsigned>(x[i])) - 1;
        const int32_t v = x[i] << norm >> ((norm & 1) == 0 ? 1 : 0);
        const int place = std::max((v >> 25) - 16, 0);
        const int part = (v >> 10) & 0x7fff;
        const int32_t y = roots[place] * 65536 - (roots[place] - roots[place + 1]) * part * 2;
        x[i] = y >> ((30 - norm) / 2 + 1);
    }
}

Vek16s a10[11] = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};
Vek16s a30[41], c20[20], x[500], z[500], y[500], memory[60], last;
Vek32s wide[60], r[200];
float aF[41], xF[200], zF[200], yF[200], lastF, gainF = 1;
Vek16s gain = 16384;

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
    for (int i = 0; i < 50; ++i) {
        roots[i] = static_cast<Vek16s>(32767 / std::sqrt(1 + i / 16.0));
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
