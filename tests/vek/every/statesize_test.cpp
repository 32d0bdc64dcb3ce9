// A state of the size that the library tells, at any address that its header allows: nothing around it is written.
#include <gtest/gtest.h>

#include "veksc.h"

#include <algorithm>
#include <vector>

namespace {

constexpr size_t kGuard = 128;
constexpr unsigned char kMark = 0x5a;

// Memory of `size` bytes at each offset from a line of 64 bytes, marked on both sides.
template <class Use>
void expectKeptWithin(int size, const Use& use) {
    ASSERT_GT(size, 0);
    const auto bytes = static_cast<size_t>(size);
    for (size_t offset = 0; offset < 32; ++offset) {
        std::vector<unsigned char> memory(bytes + 2 * kGuard + 64, kMark);
        const size_t toLine = (64 - reinterpret_cast<uintptr_t>(memory.data()) % 64) % 64;
        const size_t begin = toLine + kGuard + offset;
        ASSERT_LE(begin + bytes + 32, memory.size());
        use(memory.data() + begin);
        const auto marked = [](unsigned char v) { return v == kMark; };
        const auto first = memory.begin() + static_cast<std::ptrdiff_t>(begin);
        EXPECT_TRUE(std::all_of(memory.begin(), first, marked)) << offset;
        EXPECT_TRUE(std::all_of(first + size, memory.end(), marked)) << offset;
        EXPECT_FALSE(std::all_of(first, first + size, marked)) << offset;
    }
}

std::vector<int16_t> ramp(int count) {
    std::vector<int16_t> samples;
    for (int i = 0; i < count; ++i) {
        samples.push_back(static_cast<int16_t>(i * 7919 % 20001 - 10000));
    }
    return samples;
}

TEST(VekStateSize, OfTheWideBandHighPassFilterIsEnoughAtAnyAddress) {
    int size = 0;
    ASSERT_EQ(vekStsNoErr, veksHighPassFilterGetSize_AMRWB_16s(&size));
    for (const int scale : {12, 14}) {
        expectKeptWithin(size, [scale](unsigned char* at) {
            auto* const memory = reinterpret_cast<char*>(at);
            std::vector<int16_t> x = ramp(256);
            ASSERT_EQ(vekStsNoErr, veksHighPassFilterInit_AMRWB_16s(memory));
            ASSERT_EQ(vekStsNoErr, veksHighPassFilter_AMRWB_16s_ISfs(x.data(), 256, memory, scale));
        });
    }
}

TEST(VekStateSize, OfTheWideBandVoiceActivityIsEnoughAtAnyAddress) {
    int size = 0;
    ASSERT_EQ(vekStsNoErr, veksVADGetSize_AMRWB_16s(&size));
    expectKeptWithin(size, [](unsigned char* at) {
        auto* const state = reinterpret_cast<char*>(at);
        const std::vector<int16_t> x = ramp(256);
        int16_t tone = 0;
        int16_t flag = 0;
        ASSERT_EQ(vekStsNoErr, veksVADInit_AMRWB_16s(state));
        ASSERT_EQ(vekStsNoErr, veksVAD_AMRWB_16s(x.data(), state, &tone, &flag));
    });
}

TEST(VekStateSize, OfTheWideBandAdaptiveCodebookIsEnoughAtAnyAddress) {
    int size = 0;
    ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookDecodeGetSize_AMRWB_16s(&size));
    expectKeptWithin(size, [](unsigned char* at) {
        auto* const state = reinterpret_cast<VekAdaptiveCodebookState_AMRWB*>(at);
        std::vector<int16_t> excitation = ramp(505);
        int16_t bounds[2] = {50, 65};
        int16_t lag = 0;
        int16_t fraction = 0;
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookDecodeInit_AMRWB_16s(state));
        for (const int bfi : {0, 1}) {
            ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookDecodeGain_AMRWB_16s(12000, state));
            ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookDecode_AMRWB_16s(100, &fraction, excitation.data() + 248, &lag,
                                                                        bounds, 0, bfi, bfi, VEK_SPCHBR_12650, state));
        }
    });
}

TEST(VekStateSize, OfTheToneDetectorsIsEnoughAtAnyAddress) {
    for (const int rate : {8000, 16000}) {
        int size = 0;
        ASSERT_EQ(vekStsNoErr, veksToneDetectGetStateSize_EC_16s(rate, &size));
        expectKeptWithin(size, [rate](unsigned char* at) {
            auto* const state = reinterpret_cast<VeksToneDetectState_EC_16s*>(at);
            int result = 0;
            ASSERT_EQ(vekStsNoErr, veksToneDetectInit_EC_16s(state, rate));
            ASSERT_EQ(vekStsNoErr, veksToneDetect_EC_16s(ramp(400).data(), 400, &result, state));
        });
        ASSERT_EQ(vekStsNoErr, veksToneDetectGetStateSize_EC_32f(rate, &size));
        expectKeptWithin(size, [rate](unsigned char* at) {
            auto* const state = reinterpret_cast<VeksToneDetectState_EC_32f*>(at);
            const std::vector<float> x(400, 0.5F);
            int result = 0;
            ASSERT_EQ(vekStsNoErr, veksToneDetectInit_EC_32f(state, rate));
            ASSERT_EQ(vekStsNoErr, veksToneDetect_EC_32f(x.data(), 400, &result, state));
        });
    }
}

TEST(VekStateSize, OfAnalysisAndSynthesisIsEnoughAtAnyAddress) {
    for (const int order : {5, 6}) {
        int size = 0;
        int points = 0;
        int work = 0;
        ASSERT_EQ(vekStsNoErr, veksSubbandProcessGetSize_16s(order, 128, &size, &points, &work));
        std::vector<Vek8u> buffer(static_cast<size_t>(work));
        expectKeptWithin(size, [order, &buffer](unsigned char* at) {
            auto* const state = reinterpret_cast<VeksSubbandProcessState_16s*>(at);
            const std::vector<int16_t> window(128, 8000);
            std::vector<int16_t> x = ramp(16);
            std::vector<Vek32sc> bands(33);
            ASSERT_EQ(vekStsNoErr, veksSubbandProcessInit_16s(state, order, 16, 128, window.data(), buffer.data()));
            ASSERT_EQ(vekStsNoErr, veksSubbandAnalysis_16s32sc_Sfs(x.data(), bands.data(), state, 0, buffer.data()));
            ASSERT_EQ(vekStsNoErr, veksSubbandSynthesis_32sc16s_Sfs(bands.data(), x.data(), state, 0, buffer.data()));
        });
        ASSERT_EQ(vekStsNoErr, veksSubbandProcessGetSize_32f(order, 128, &size, &points, &work));
        buffer.assign(static_cast<size_t>(work), 0);
        expectKeptWithin(size, [order, &buffer](unsigned char* at) {
            auto* const state = reinterpret_cast<VeksSubbandProcessState_32f*>(at);
            const std::vector<float> window(128, 0.25F);
            std::vector<float> x(16, 0.5F);
            std::vector<Vek32fc> bands(33);
            ASSERT_EQ(vekStsNoErr, veksSubbandProcessInit_32f(state, order, 16, 128, window.data(), buffer.data()));
            ASSERT_EQ(vekStsNoErr, veksSubbandAnalysis_32f32fc(x.data(), bands.data(), state, buffer.data()));
            ASSERT_EQ(vekStsNoErr, veksSubbandSynthesis_32fc32f(bands.data(), x.data(), state, buffer.data()));
        });
    }
}

TEST(VekStateSize, OfTheFullBandControllersIsEnoughAtAnyAddress) {
    int size = 0;
    const auto frame = []<class State, class T>(State* state, std::vector<T> x, auto init, auto update, auto control) {
        std::vector<T> coefs[2] = {x, x};
        T steps[8];
        T gain = 0;
        ASSERT_EQ(vekStsNoErr, init(state, 8, 64, 8000));
        ASSERT_EQ(vekStsNoErr, update(&x[65], &x[0], steps, state));
        ASSERT_EQ(vekStsNoErr, control(&x[0], &x[8], coefs[0].data(), coefs[1].data(), &gain, state));
    };
    ASSERT_EQ(vekStsNoErr, veksFullbandControllerGetSize_EC_16s(8, 64, 8000, &size));
    expectKeptWithin(size, [&](unsigned char* at) {
        frame(reinterpret_cast<VeksFullbandControllerState_EC_16s*>(at), ramp(256), veksFullbandControllerInit_EC_16s,
              veksFullbandControllerUpdate_EC_16s, veksFullbandController_EC_16s);
    });
    ASSERT_EQ(vekStsNoErr, veksFullbandControllerGetSize_EC_32f(8, 64, 8000, &size));
    expectKeptWithin(size, [&](unsigned char* at) {
        frame(reinterpret_cast<VeksFullbandControllerState_EC_32f*>(at), std::vector<float>(256, 0.5F),
              veksFullbandControllerInit_EC_32f, veksFullbandControllerUpdate_EC_32f, veksFullbandController_EC_32f);
    });
}

TEST(VekStateSize, OfTheSubbandControllersIsEnoughAtAnyAddress) {
    constexpr int bands = 33;
    int size = 0;
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerGetSize_EC_16s(bands, 16, 1, 8000, &size));
    std::vector<Vek32sc> c(bands, Vek32sc{1 << 18, 1 << 18});
    Vek32sc* rows[] = {c.data(), c.data()};
    expectKeptWithin(size, [&](unsigned char* at) {
        auto* const state = reinterpret_cast<VeksSubbandControllerState_EC_16s*>(at);
        const std::vector<int16_t> x = ramp(16);
        Vek32s steps[bands];
        int16_t gain = 0;
        ASSERT_EQ(vekStsNoErr, veksSubbandControllerInit_EC_16s(state, bands, 16, 2, 8000));
        ASSERT_EQ(vekStsNoErr, veksSubbandControllerUpdate_EC_16s(x.data(), x.data(), rows, c.data(), steps, state));
        ASSERT_EQ(vekStsNoErr, veksSubbandController_EC_16s(c.data(), c.data(), rows, rows, &gain, state));
    });
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTGetSize_EC_16s(bands, 16, 1, 8000, &size));
    expectKeptWithin(size, [&](unsigned char* at) {
        auto* const state = reinterpret_cast<VeksSubbandControllerDTState_EC_16s*>(at);
        Vek32s steps[bands];
        Vek32s power = 0;
        int told[2];
        ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTInit_EC_16s(state, bands, 16, 2, 8000));
        ASSERT_EQ(vekStsNoErr,
                  veksSubbandControllerDTUpdate_EC_16s(rows, c.data(), c.data(), steps, &told[0], &told[1], 0, state));
        ASSERT_EQ(vekStsNoErr,
                  veksSubbandControllerDT_EC_16s(c.data(), c.data(), rows, rows, &power, &told[0], 0, 1, 1, 0, state));
    });
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerGetSize_EC_32f(bands, 16, 1, 8000, &size));
    std::vector<Vek32fc> f(bands, Vek32fc{1, 1});
    Vek32fc* rowsF[] = {f.data(), f.data()};
    expectKeptWithin(size, [&](unsigned char* at) {
        auto* const state = reinterpret_cast<VeksSubbandControllerState_EC_32f*>(at);
        const std::vector<float> x(16, 0.5F);
        float steps[bands];
        float gain = 0;
        ASSERT_EQ(vekStsNoErr, veksSubbandControllerInit_EC_32f(state, bands, 16, 2, 8000));
        ASSERT_EQ(vekStsNoErr, veksSubbandControllerUpdate_EC_32f(x.data(), x.data(), rowsF, f.data(), steps, state));
        ASSERT_EQ(vekStsNoErr, veksSubbandController_EC_32f(f.data(), f.data(), rowsF, rowsF, &gain, state));
    });
}

} // namespace
