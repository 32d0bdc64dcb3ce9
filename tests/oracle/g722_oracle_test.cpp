// Coder and decoder of G.722 beside an independent codec: the same codes and samples, with the filter bank and without.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "samples.h"
#include "statememory.h"
#include "veksc.h"

#if __has_include(<spandsp.h>)
#define ORACLE_SPANDSP 1
#include <spandsp.h>
#endif

namespace {

using Bytes = std::vector<uint8_t>;

// 16 kHz: voices, noise, silence, full scale.
[[maybe_unused]] Samples signal(int n) {
    std::mt19937 random(722);
    std::uniform_int_distribution<int> full(-32768, 32767);
    Samples x;
    for (int i = 0; i < n; ++i) {
        double v = 0;
        switch (i / 3200 % 6) {
        case 0:
            v = 6000 * std::sin(i * 0.04) + 1500 * std::sin(i * 2.4);
            break;
        case 1:
            v = full(random) / 30.0;
            break;
        case 2:
            break;
        case 3:
            v = full(random) / 2.5; // louder its filter bank wraps, where ours saturates
            break;
        case 4:
            v = i % 320 < 160 ? 9000 : -9000;
            break;
        default:
            v = 9000 * std::sin(i * 0.13) * std::sin(i * 0.0007);
        }
        x.push_back(static_cast<int16_t>(std::lround(v)));
    }
    return x;
}

struct State : StateMemory<VeksCodecState_G722> {
    State() : StateMemory(veksSBADPCMEncodeStateSize_G722_16s) {}
};

#ifdef ORACLE_SPANDSP
constexpr int kModes[] = {64000, 56000, 48000};

// The code without its unused low bits, as the package stores it in a byte.
uint8_t stored(int code, int mode) {
    return static_cast<uint8_t>(code >> (mode - 1));
}
#endif

TEST(G722Oracle, WholeCodecHasTheSameCodesAndSamples) {
#ifdef ORACLE_SPANDSP
    constexpr int n = 48000;
    const Samples x = signal(n);
    State coder;
    Samples bands(n);
    Samples codes(n / 2);
    Samples delay(24);
    ASSERT_EQ(vekStsNoErr, veksSBADPCMEncodeInit_G722_16s(coder));
    for (int first = 0; first < n; first += 320) {
        ASSERT_EQ(vekStsNoErr, veksQMFEncode_G722_16s(x.data() + first, bands.data() + first, 320, delay.data()));
        ASSERT_EQ(vekStsNoErr, veksSBADPCMEncode_G722_16s(bands.data() + first, codes.data() + first / 2, 320, coder));
    }
    for (int mode = 1; mode <= 3; ++mode) {
        g722_encode_state_t* theirs = g722_encode_init(nullptr, kModes[mode - 1], 0);
        Bytes want(n / 2);
        ASSERT_EQ(g722_encode(theirs, want.data(), x.data(), n), n / 2);
        for (size_t i = 0; i < want.size(); ++i) {
            ASSERT_EQ(stored(codes[i], mode), want[i]) << i << " mode " << mode;
        }
        g722_decode_state_t* decoder = g722_decode_init(nullptr, kModes[mode - 1], 0);
        Samples heard(n);
        ASSERT_EQ(g722_decode(decoder, heard.data(), want.data(), n / 2), n);
        State back;
        Samples lows(n);
        Samples y(n);
        Samples past(24);
        ASSERT_EQ(vekStsNoErr, veksSBADPCMDecodeInit_G722_16s(back));
        for (int first = 0; first < n; first += 160) {
            ASSERT_EQ(vekStsNoErr,
                      veksSBADPCMDecode_G722_16s(codes.data() + first / 2, lows.data() + first, 160, mode, back));
            ASSERT_EQ(vekStsNoErr, veksQMFDecode_G722_16s(lows.data() + first, y.data() + first, 160, past.data()));
        }
        for (int i = 0; i < n; ++i) {
            ASSERT_EQ(heard[static_cast<size_t>(i)], y[static_cast<size_t>(i)]) << i << " mode " << mode;
        }
        g722_encode_free(theirs);
        g722_decode_free(decoder);
    }
#else
    GTEST_SKIP() << "libspandsp-dev is not installed";
#endif
}

} // namespace
