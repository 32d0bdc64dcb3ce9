// Float steps of the real-time audio codec beside those of another float codec, which no public header declares.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "samples.h"
#include "statememory.h"
#include "veksc.h"

#if __has_include(<speex/speex.h>)
#include "rta_steps.h"

namespace {

alignas(16) char g_stack[1 << 16];

// Autocorrelations of coloured noise, the first one raised a little.
Floats autocorrelations(std::mt19937& random, size_t order) {
    Floats x = floats(random, 240, 1000);
    std::uniform_real_distribution<float> pick(-0.8F, 0.9F);
    const float colour = pick(random);
    for (size_t i = 1; i < x.size(); ++i) {
        x[i] += colour * x[i - 1];
    }
    Floats r(order + 1);
    for (size_t k = 0; k <= order; ++k) {
        double sum = 0;
        for (size_t i = k; i < x.size(); ++i) {
            sum += static_cast<double>(x[i]) * x[i - k];
        }
        r[k] = static_cast<float>(k == 0 ? 1.0001 * sum : sum);
    }
    return r;
}

// The taps, as the split answers to an impulse at an odd and at an even sample.
Floats taps() {
    int size = 0;
    EXPECT_EQ(vekStsNoErr, veksQMFGetStateSize_RTA_32f(&size));
    std::vector<unsigned char> memory(static_cast<size_t>(size));
    auto* state = reinterpret_cast<VeksQMFState_RTA_32f*>(memory.data());
    Floats h(64);
    for (size_t odd = 0; odd < 2; ++odd) {
        EXPECT_EQ(vekStsNoErr, veksQMFInit_RTA_32f(state));
        Floats x(64);
        x[odd] = 1;
        Floats low(32);
        Floats high(32);
        EXPECT_EQ(vekStsNoErr, veksQMFEncode_RTA_32f(x.data(), 64, low.data(), high.data(), state));
        for (size_t i = 0; i < 32; ++i) {
            h[2 * i + 1 - odd] = low[i];
        }
    }
    return h;
}

TEST(RtaOracle, ThePairsOfAnotherCodecWithinItsSearchsPrecision) {
    std::mt19937 random(1);
    int compared = 0;
    for (int order = 4; order <= 16; order += 2) {
        for (int round = 0; round < 100; ++round) {
            const auto n = static_cast<size_t>(order);
            const Floats r = autocorrelations(random, n);
            Floats a(n + 1);
            Floats rc(n);
            Floats lsp(n);
            Floats theirs(n);
            ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_RTA_32f(r.data(), a.data(), rc.data(), order));
            ASSERT_EQ(vekStsNoErr, veksLPCToLSP_RTA_32f(a.data(), lsp.data(), order));
            // Its search may lose a pair of frequencies that are close.
            if (lpc_to_lsp(a.data() + 1, order, theirs.data(), 15, 0.02F, g_stack) != order) {
                continue;
            }
            ++compared;
            for (size_t i = 0; i < n; ++i) {
                ASSERT_NEAR(lsp[i], theirs[i], 2e-3) << order;
            }
        }
    }
    EXPECT_GT(compared, 650);
}

TEST(RtaOracle, TheCoefficientsOfAnotherCodec) {
    std::mt19937 random(2);
    for (int order = 4; order <= 16; order += 2) {
        for (int round = 0; round < 100; ++round) {
            const auto n = static_cast<size_t>(order);
            Floats lsp = floats(random, n, 0.4F);
            for (size_t i = 0; i < n; ++i) {
                lsp[i] = static_cast<float>((i + 1 + lsp[i]) * std::numbers::pi / (n + 1.0));
            }
            Floats a(n + 1);
            Floats theirs(n);
            ASSERT_EQ(vekStsNoErr, veksLSPToLPC_RTA_32f(lsp.data(), a.data(), order));
            lsp_to_lpc(lsp.data(), theirs.data(), order, g_stack);
            for (size_t i = 0; i < n; ++i) {
                ASSERT_NEAR(a[i + 1], theirs[i], 1e-3) << order;
            }
        }
    }
}

TEST(RtaOracle, TheSplitOfAnotherCodecWithOurTaps) {
    const Floats h = taps();
    std::mt19937 random(3);
    StateMemory<VeksQMFState_RTA_32f> state(veksQMFGetStateSize_RTA_32f);
    ASSERT_EQ(vekStsNoErr, veksQMFInit_RTA_32f(state));
    Floats memory(64);
    // Their newest sample of a pair is our older one.
    Floats x = floats(random, 20 * 80 + 1, 32768);
    x[0] = 0;
    for (int frame = 0; frame < 20; ++frame) {
        Floats low(40);
        Floats high(40);
        Floats theirLow(40);
        Floats theirHigh(40);
        ASSERT_EQ(vekStsNoErr, veksQMFEncode_RTA_32f(x.data() + 80 * frame, 80, low.data(), high.data(), state));
        qmf_decomp(x.data() + 80 * frame + 1, h.data(), theirLow.data(), theirHigh.data(), 80, 64, memory.data(),
                   g_stack);
        for (size_t i = 0; i < 40; ++i) {
            ASSERT_NEAR(low[i], theirLow[i], 0.05) << frame;
            ASSERT_NEAR(high[i], theirHigh[i], 0.05) << frame;
        }
    }
}

TEST(RtaOracle, TheReunionOfAnotherCodecWithOurTaps) {
    const Floats h = taps();
    std::mt19937 random(4);
    StateMemory<VeksQMFState_RTA_32f> state(veksQMFGetStateSize_RTA_32f);
    ASSERT_EQ(vekStsNoErr, veksQMFInit_RTA_32f(state));
    Floats memory1(64);
    Floats memory2(64);
    for (int frame = 0; frame < 20; ++frame) {
        const Floats low = floats(random, 40, 32768);
        const Floats high = floats(random, 40, 32768);
        Floats y(80);
        Floats theirs(80);
        ASSERT_EQ(vekStsNoErr, veksQMFDecode_RTA_32f(low.data(), high.data(), 40, y.data(), state));
        qmf_synth(low.data(), high.data(), h.data(), theirs.data(), 80, 64, memory1.data(), memory2.data(), g_stack);
        for (size_t i = 0; i < 80; ++i) {
            ASSERT_NEAR(y[i], theirs[i], 0.1) << frame << ' ' << i;
        }
    }
}

TEST(RtaOracle, TheRecursionOfAnotherCodecWithOurBandPass) {
    // A high-pass of first and a low-pass of second order, multiplied out.
    const double e1 = std::tan(std::numbers::pi / 40);
    const double e2 = std::tan(17 * std::numbers::pi / 40);
    const double d1[2] = {1 + e1, e1 - 1};
    const double d2[3] = {1 + std::numbers::sqrt2 * e2 + e2 * e2, 2 * e2 * e2 - 2,
                          1 - std::numbers::sqrt2 * e2 + e2 * e2};
    const double scale = d1[0] * d2[0];
    const double gain = e2 * e2 / scale;
    const double den[3] = {(d1[0] * d2[1] + d1[1] * d2[0]) / scale, (d1[0] * d2[2] + d1[1] * d2[1]) / scale,
                           d1[1] * d2[2] / scale};
    // (1 - z^-1) (1 + z^-1)^2 = 1 + z^-1 - z^-2 - z^-3
    // Theirs knows orders 8 and 10 alone.
    const Floats numerator = {1, -1, -1, 0, 0, 0, 0, 0};
    Floats denominator(8);
    std::copy_n(den, 3, denominator.begin());
    std::mt19937 random(5);
    Floats memory(8);
    Floats state(3);
    for (int frame = 0; frame < 20; ++frame) {
        Floats x = floats(random, 80, 1000);
        Floats in = x;
        std::transform(in.begin(), in.end(), in.begin(), [&](float v) { return static_cast<float>(gain * v); });
        Floats theirs(80);
        ASSERT_EQ(vekStsNoErr, veksBandPassFilter_RTA_32f_I(x.data(), 80, state.data()));
        filter_mem16(in.data(), numerator.data(), denominator.data(), theirs.data(), 80, 8, memory.data(), g_stack);
        for (size_t i = 0; i < 80; ++i) {
            ASSERT_NEAR(x[i], theirs[i], 0.01) << frame << ' ' << i;
        }
    }
}

TEST(RtaOracle, TheRecursionOfAnotherCodecOnWhiterSpectra) {
    // Theirs adds three thousandths of the power to each error, which a whiter spectrum forgives.
    std::mt19937 random(6);
    for (int order = 4; order <= 10; order += 2) {
        const auto n = static_cast<size_t>(order);
        for (int round = 0; round < 100; ++round) {
            const Floats r = autocorrelations(random, n);
            Floats a(n + 1);
            Floats rc(n);
            Floats theirs(n);
            ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_RTA_32f(r.data(), a.data(), rc.data(), order));
            _spx_lpc(theirs.data(), r.data(), order);
            for (size_t i = 0; i < n; ++i) {
                ASSERT_NEAR(a[i + 1], theirs[i], 0.02) << order;
            }
        }
    }
}

} // namespace
#else
TEST(RtaOracle, ComparesWithAnotherCodec) {
    GTEST_SKIP() << "libspeex-dev is not installed";
}
#endif
