// Coder and decoder of G.726 beside an independent codec: the same codes and samples on long signals, in every rate and
// law.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "samples.h"
#include "sc/g726/companding.h"
#include "statememory.h"
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

struct State : StateMemory<VeksCodecState_G726> {
    State() : StateMemory(veksEncodeGetStateSize_G726_16s8u) {}
};

constexpr struct {
    int bits;
    VekSpchBitRate rate;
} kRates[] = {
    {16000, VEK_SPCHBR_16000}, {24000, VEK_SPCHBR_24000}, {32000, VEK_SPCHBR_32000}, {40000, VEK_SPCHBR_40000}};

#ifdef ORACLE_SPANDSP

// The package's codings: linear, mu-law, A-law.
constexpr VekPCMLaw kLaws[] = {VEK_PCM_LINEAR, VEK_PCM_MULAW, VEK_PCM_ALAW};

int codingOf(VekPCMLaw law) {
    return law == VEK_PCM_LINEAR ? 0 : law == VEK_PCM_MULAW ? 1 : 2;
}

int16_t valueOf(uint8_t pcm, VekPCMLaw law) {
    return static_cast<int16_t>(law == VEK_PCM_ALAW ? vek::g711::alawValue(pcm) : vek::g711::mulawValue(pcm));
}

// The package's codes of a signal, which is set to the values of its PCM codes under the laws.
Bytes theirCodes(Samples& x, int bits, VekPCMLaw law) {
    Bytes pcm(x.size());
    for (size_t i = 0; law != VEK_PCM_LINEAR && i < x.size(); ++i) {
        pcm[i] = law == VEK_PCM_ALAW ? vek::g711::alawCode(x[i]) : vek::g711::mulawCode(x[i]);
        x[i] = valueOf(pcm[i], law);
    }
    const int len = static_cast<int>(x.size());
    g726_state_s* coder = g726_init(nullptr, bits, codingOf(law), 0);
    Bytes codes(x.size());
    const auto* source = law == VEK_PCM_LINEAR ? x.data() : reinterpret_cast<const int16_t*>(pcm.data());
    EXPECT_EQ(g726_encode(coder, codes.data(), source, len), len);
    g726_free(coder);
    return codes;
}

Samples theirSamples(const Bytes& codes, int bits, VekPCMLaw law) {
    const int len = static_cast<int>(codes.size());
    g726_state_s* decoder = g726_init(nullptr, bits, codingOf(law), 0);
    Samples x(codes.size());
    Bytes pcm(2 * codes.size());
    auto* target = law == VEK_PCM_LINEAR ? x.data() : reinterpret_cast<int16_t*>(pcm.data());
    EXPECT_EQ(g726_decode(decoder, target, codes.data(), len), len);
    g726_free(decoder);
    for (size_t i = 0; law != VEK_PCM_LINEAR && i < x.size(); ++i) {
        x[i] = valueOf(pcm[i], law);
    }
    return x;
}

Bytes ourCodes(const Samples& x, VekSpchBitRate rate) {
    State state;
    Bytes codes(x.size());
    EXPECT_EQ(vekStsNoErr, veksEncodeInit_G726_16s8u(state, rate));
    EXPECT_EQ(vekStsNoErr, veksEncode_G726_16s8u(state, x.data(), codes.data(), static_cast<int>(x.size())));
    return codes;
}

// In pieces: the state carries over.
Samples ourSamples(const Bytes& codes, VekSpchBitRate rate, VekPCMLaw law) {
    State state;
    Samples x(codes.size());
    EXPECT_EQ(vekStsNoErr, veksDecodeInit_G726_8u16s(state, rate, law));
    const int len = static_cast<int>(x.size());
    for (int first = 0; first < len; first += 1000) {
        EXPECT_EQ(vekStsNoErr,
                  veksDecode_G726_8u16s(state, codes.data() + first, x.data() + first, std::min(1000, len - first)));
    }
    return x;
}

// How many differ: a stream that parts is told in a line.
template <class T>
int differences(const std::vector<T>& a, const std::vector<T>& b) {
    int count = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        count += a[i] != b[i] ? 1 : 0;
    }
    return count;
}

void expectTheSame(const Samples& x, const char* what) {
    for (const auto& row : kRates) {
        for (const VekPCMLaw law : kLaws) {
            Samples in = x;
            const Bytes codes = theirCodes(in, row.bits, law);
            EXPECT_EQ(0, differences(codes, ourCodes(in, row.rate))) << what << row.bits << " coder, law " << law;
            EXPECT_EQ(0, differences(theirSamples(codes, row.bits, law), ourSamples(codes, row.rate, law)))
                << what << row.bits << " decoder, law " << law;
        }
    }
}

#endif

TEST(G726Oracle, CodesAndSamplesAreTheSameInEveryRateAndLaw) {
#ifdef ORACLE_SPANDSP
    expectTheSame(signal(), "");
#else
    GTEST_SKIP() << "libspandsp-dev is not installed";
#endif
}

// The sums of the predictor leave 16 bits here, and go on modulo 65536.
TEST(G726Oracle, CodesAndSamplesAreTheSameAtFullScale) {
#ifdef ORACLE_SPANDSP
    constexpr size_t kLength = 6000;
    std::mt19937 random(40);
    const std::pair<const char*, std::function<int(int)>> signals[] = {
        {"noise ", [&](int) { return static_cast<int>(random() & 0xffff) - 32768; }},
        {"signs of noise ", [&](int) { return random() % 2 == 0 ? -32768 : 32767; }},
        {"least number ", [](int) { return -32768; }},
        {"greatest number ", [](int) { return 32767; }},
        {"alternation ", [](int n) { return n % 2 == 0 ? 32767 : -32768; }},
        {"square wave ", [](int n) { return n % 10 < 5 ? 32767 : -32768; }},
        {"tone ", [](int n) { return static_cast<int>(std::lround(32767 * std::sin(n * 0.3))); }},
        {"low tone ", [](int n) { return static_cast<int>(std::lround(32767 * std::sin(n * 0.02))); }},
        {"sweep ", [](int n) { return static_cast<int>(std::lround(32767 * std::sin(n * n * 2.5e-4))); }},
        {"jumping tones ",
         [](int n) { return static_cast<int>(std::lround(32767 * std::sin(n * (n / 200 % 2 == 0 ? 0.5 : 2.9)))); }},
        {"steps of noise ",
         [&, v = 0](int n) mutable {
             v = n % 40 == 0 ? static_cast<int>(random() & 0xffff) - 32768 : v;
             return v;
         }},
    };
    for (const auto& [what, value] : signals) {
        Samples x(kLength);
        for (size_t i = 0; i < kLength; ++i) {
            x[i] = static_cast<int16_t>(value(static_cast<int>(i)));
        }
        expectTheSame(x, what);
    }
#else
    GTEST_SKIP() << "libspandsp-dev is not installed";
#endif
}

// Codes that no coder sends, in bursts of the same ones among them.
TEST(G726Oracle, SamplesOfAnyCodesAreTheSame) {
#ifdef ORACLE_SPANDSP
    std::mt19937 random(726);
    for (const auto& row : kRates) {
        const unsigned codes = 1U << (row.bits / 8000);
        for (const unsigned length : {1U, 3U, 50U}) {
            Bytes stream(30000);
            for (size_t i = 0; i < stream.size();) {
                const auto code = static_cast<uint8_t>(random() % codes);
                for (unsigned n = 1 + random() % length; n > 0 && i < stream.size(); --n) {
                    stream[i++] = code;
                }
            }
            for (const VekPCMLaw law : kLaws) {
                EXPECT_EQ(0, differences(theirSamples(stream, row.bits, law), ourSamples(stream, row.rate, law)))
                    << row.bits << " law " << law << " bursts up to " << length;
            }
        }
    }
#else
    GTEST_SKIP() << "libspandsp-dev is not installed";
#endif
}

} // namespace
