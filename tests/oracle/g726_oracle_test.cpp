// Coder and decoder of G.726 beside an independent codec: the same codes and samples on long signals, in every rate and
// law.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "sc/g726/companding.h"
#include "veksc.h"

#if __has_include(<spandsp.h>)
#define ORACLE_SPANDSP 1
extern "C" {
struct g726_state_s;
g726_state_s* g726_init(g726_state_s* state, int rate, int coding, int packing);
int g726_free(g726_state_s* state);
int g726_decode(g726_state_s* state, int16_t* samples, const uint8_t* codes, int bytes);
int g726_encode(g726_state_s* state, uint8_t* codes, const int16_t* samples, int len);
}
#endif

namespace {

using Bytes = std::vector<uint8_t>;
using Samples = std::vector<int16_t>;

// Speech-like, with tones, silence, noise at full scale and jumps.
[[maybe_unused]] Samples signal() {
    std::mt19937 random(726);
    std::uniform_int_distribution<int> full(-32768, 32767);
    Samples x;
    for (int n = 0; n < 48000; ++n) {
        const int part = n / 2000 % 8;
        double v = 0;
        switch (part) {
        case 0:
            v = 8000 * std::sin(n * 0.05) * std::sin(n * 0.003);
            break;
        case 1:
            v = full(random) / 40.0;
            break;
        case 2:
            v = 0;
            break;
        case 3:
            v = 12000 * std::sin(n * 0.9);
            break;
        case 4:
            v = full(random);
            break;
        case 5:
            v = n % 160 < 80 ? 20000 : -20000;
            break;
        case 6:
            v = 3000 * std::sin(n * 0.2) + 2500 * std::sin(n * 0.31);
            break;
        default:
            v = (n % 400 == 0 ? 30000 : 0) + full(random) / 500.0;
        }
        x.push_back(static_cast<int16_t>(std::lround(v)));
    }
    return x;
}

struct State {
    Bytes memory;
    VeksCodecState_G726* get() { return reinterpret_cast<VeksCodecState_G726*>(memory.data()); }
    State() {
        int size = 0;
        EXPECT_EQ(vekStsNoErr, veksEncodeGetStateSize_G726_16s8u(&size));
        memory.resize(static_cast<size_t>(size));
    }
};

constexpr struct {
    int bits;
    VekSpchBitRate rate;
} kRates[] = {
    {16000, VEK_SPCHBR_16000}, {24000, VEK_SPCHBR_24000}, {32000, VEK_SPCHBR_32000}, {40000, VEK_SPCHBR_40000}};

TEST(G726Oracle, CodesAndSamplesAreTheSameInEveryRateAndLaw) {
#ifdef ORACLE_SPANDSP
    const Samples x = signal();
    const int len = static_cast<int>(x.size());
    for (const auto& row : kRates) {
        // The package's codings: linear, mu-law, A-law.
        for (const VekPCMLaw law : {VEK_PCM_LINEAR, VEK_PCM_MULAW, VEK_PCM_ALAW}) {
            const int coding = law == VEK_PCM_LINEAR ? 0 : law == VEK_PCM_MULAW ? 1 : 2;
            Samples in = x;
            Bytes pcm(x.size());
            for (size_t i = 0; i < x.size(); ++i) {
                if (law == VEK_PCM_ALAW) {
                    pcm[i] = vek::g711::alawCode(x[i]);
                    in[i] = static_cast<int16_t>(vek::g711::alawValue(pcm[i]));
                } else if (law == VEK_PCM_MULAW) {
                    pcm[i] = vek::g711::mulawCode(x[i]);
                    in[i] = static_cast<int16_t>(vek::g711::mulawValue(pcm[i]));
                }
            }
            g726_state_s* coder = g726_init(nullptr, row.bits, coding, 0);
            Bytes want(x.size());
            const auto* source = law == VEK_PCM_LINEAR ? in.data() : reinterpret_cast<const int16_t*>(pcm.data());
            ASSERT_EQ(g726_encode(coder, want.data(), source, len), len);
            State ours;
            Bytes codes(x.size());
            ASSERT_EQ(vekStsNoErr, veksEncodeInit_G726_16s8u(ours.get(), row.rate));
            ASSERT_EQ(vekStsNoErr, veksEncode_G726_16s8u(ours.get(), in.data(), codes.data(), len));
            ASSERT_EQ(want, codes) << row.bits << " law " << law;

            g726_state_s* decoder = g726_init(nullptr, row.bits, coding, 0);
            Samples theirs(x.size());
            Bytes adjusted(2 * x.size());
            ASSERT_EQ(g726_decode(decoder,
                                  law == VEK_PCM_LINEAR ? theirs.data() : reinterpret_cast<int16_t*>(adjusted.data()),
                                  codes.data(), len),
                      len);
            for (size_t i = 0; law != VEK_PCM_LINEAR && i < theirs.size(); ++i) {
                theirs[i] = static_cast<int16_t>(law == VEK_PCM_ALAW ? vek::g711::alawValue(adjusted[i])
                                                                     : vek::g711::mulawValue(adjusted[i]));
            }
            State back;
            Samples samples(x.size());
            ASSERT_EQ(vekStsNoErr, veksDecodeInit_G726_8u16s(back.get(), row.rate, law));
            // In pieces: the state carries over.
            for (int first = 0; first < len; first += 1000) {
                ASSERT_EQ(vekStsNoErr,
                          veksDecode_G726_8u16s(back.get(), codes.data() + first, samples.data() + first, 1000));
            }
            ASSERT_EQ(theirs, samples) << row.bits << " law " << law;
            g726_free(coder);
            g726_free(decoder);
        }
    }
#else
    GTEST_SKIP() << "libspandsp-dev is not installed";
#endif
}

} // namespace
