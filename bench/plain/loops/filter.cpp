// Filters of finite and infinite response, products and interpolation by their definitions.
#include "plain/filter.h"

namespace PLAIN_BUILD::filter {

// y[n] = sum of a[j] * x[n - j], Q12. Tap by tap, which compilers vectorise better than sample by sample.
void zeros(const Vek16s* a, int order, const Vek16s* x, Vek16s* y, int n) {
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
void poles(const Vek16s* a, int order, const Vek16s* x, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        int32_t sum = a[0] * x[i];
        for (int j = 1; j <= order; ++j) {
            sum -= a[j] * y[i - j];
        }
        y[i] = rounded(sum, 12);
    }
}

void polesF(const float* a, int order, const float* x, float* y, int n) {
    for (int i = 0; i < n; ++i) {
        float sum = x[i];
        for (int j = 1; j <= order; ++j) {
            sum -= a[j] * y[i - j];
        }
        y[i] = sum;
    }
}

// Ten zeros and ten poles of Q13, memories before x and y.
void poleZero(const Vek16s* c, const Vek16s* x, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        int32_t sum = x[i] * 8192;
        for (int j = 0; j < 10; ++j) {
            sum += c[10 + j] * y[i - 1 - j] - c[j] * x[i - 1 - j];
        }
        y[i] = rounded(sum, 13);
    }
}

void narrowAll(const Vek32s* x, int shift, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = rounded(x[i], shift);
    }
}

void widen(const Vek16s* x, Vek32s* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = x[i] * 65536;
    }
}

void scale(const Vek16s* x, int c, Vek16s* y, int n, int shift) {
    for (int i = 0; i < n; ++i) {
        y[i] = rounded(x[i] * c, shift);
    }
}

void multiply(const Vek16s* x, const Vek16s* z, Vek16s* y, int n, int shift) {
    for (int i = 0; i < n; ++i) {
        y[i] = rounded(x[i] * z[i], shift);
    }
}

void powers(const Vek16s* x, int c, Vek16s* y, int n) {
    y[0] = x[0];
    int32_t p = c;
    for (int i = 1; i < n; ++i) {
        y[i] = rounded(x[i] * p, 15);
        p = rounded(p * c, 15);
    }
}

void weigh(const Vek16s* x, int c, const Vek16s* z, int d, Vek16s* y, int n, int shift, int half) {
    for (int i = 0; i < n; ++i) {
        y[i] = narrow((x[i] * c + z[i] * d + half) >> shift);
    }
}

void weighF(const float* x, float c, const float* z, float d, float* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = x[i] * c + z[i] * d;
    }
}

void halves(const Vek16s* x, const Vek16s* z, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = static_cast<Vek16s>((x[i] >> 1) + (z[i] >> 1));
    }
}

void harmonic(int beta, int period, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = narrow(y[i] + ((beta * y[i - period]) >> 15));
    }
}

void harmonicTo(int beta, int period, const Vek16s* x, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = narrow(x[i] + ((beta * x[i - period] + 16384) >> 15));
    }
}

void harmonicF(float beta, int period, float* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] += beta * y[i - period];
    }
}

// y[n] = x[n] - c * x[n - 1], Q15.
void tilt(const Vek16s* x, int c, Vek16s* y, int n, Vek16s* memory) {
    int before = *memory;
    for (int i = 0; i < n; ++i) {
        y[i] = narrow(x[i] - ((c * before) >> 15));
        before = x[i];
    }
    *memory = static_cast<Vek16s>(before);
}

void tiltF(float* x, float c, int n, float* memory) {
    const float last = x[n - 1];
    for (int i = n - 1; i > 0; --i) {
        x[i] -= c * x[i - 1];
    }
    x[0] -= c * *memory;
    *memory = last;
}

// (x[n] + mu * x[n - 1]) / (1 - |mu|), by a multiplication each; mu is 0.2 k for a k above 0, else 0.9 k.
void unitTilt(int k, const Vek16s* x, Vek16s* y, int n) {
    const int mu = rounded(k * (k > 0 ? 6554 : 29491), 15);
    const int gain = (1 << 27) / (32768 - std::abs(mu));
    for (int i = 0; i < n; ++i) {
        y[i] = rounded(narrow(x[i + 1] + ((mu * x[i]) >> 15)) * gain, 12);
    }
}

void symmetric(int side, int middle, const Vek16s* x, Vek16s* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = rounded(side * (x[i - 1] + x[i + 1]) + middle * x[i], 15);
    }
}

// y[n] = x[n] + c * y[n - 1], Q15.
void lift(int c, Vek16s* y, int n, Vek16s* memory, bool doubled) {
    int32_t before = *memory;
    for (int i = 0; i < n; ++i) {
        before = narrow(y[i] + ((c * before + 16384) >> 15));
        y[i] = static_cast<Vek16s>(doubled ? narrow(2 * before) & ~7 : before);
    }
    *memory = static_cast<Vek16s>(before);
}

void gainControl(const Vek16s* x, Vek16s* y, Vek16s* gain) {
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

void gainControlF(const float* x, float* y, float* gain) {
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

void contribution(int gain, const Vek16s* y, const Vek16s* x, Vek16s* left) {
    for (int i = 0; i < 40; ++i) {
        left[i] = narrow(x[i] - ((gain * y[i]) >> 14));
    }
}

void contributionF(float gain, const float* y, const float* x, float* left) {
    for (int i = 0; i < 40; ++i) {
        left[i] = x[i] - gain * y[i];
    }
}

void filteredExcitation(const float* h, float* y, int n, float v) {
    for (int i = n - 1; i > 0; --i) {
        y[i] = y[i - 1] + v * h[i];
    }
    y[0] = v * h[0];
}

// The innovation convolved in a circle with the response, and its share in the excitation exchanged.
void disperse(const Vek16s* x, Vek16s* code, const Vek16s* h, int gain, Vek16s* y) {
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
void levels(const Vek16s* x, float* y, int segments) {
    for (int s = 0; s < segments; ++s) {
        float energy = 1;
        for (int i = 10 * s; i < 10 * s + 10; ++i) {
            energy += static_cast<float>(x[i]) * x[i];
        }
        y[s] = 0.5F * std::log2(energy);
    }
}

// 1/sqrt over a quarter of the range, and a line between its entries.
struct Roots {
    Vek16s of[50];
    Roots() : of() {
        for (int i = 0; i < 50; ++i) {
            of[i] = static_cast<Vek16s>(32767 / std::sqrt(1 + i / 16.0));
        }
    }
};
static const Roots kRoots;
void inverseRoots(Vek32s* x, int n) {
    for (int i = 0; i < n; ++i) {
        if (x[i] <= 0) {
            x[i] = 0x3fffffff;
            continue;
        }
        const int norm = __builtin_clz(static_cast<unsigned>(x[i])) - 1;
        const int32_t v = x[i] << norm >> ((norm & 1) == 0 ? 1 : 0);
        const int place = std::max((v >> 25) - 16, 0);
        const int part = (v >> 10) & 0x7fff;
        const int32_t y = kRoots.of[place] * 65536 - (kRoots.of[place] - kRoots.of[place + 1]) * part * 2;
        x[i] = y >> ((30 - norm) / 2 + 1);
    }
}

} // namespace PLAIN_BUILD::filter
