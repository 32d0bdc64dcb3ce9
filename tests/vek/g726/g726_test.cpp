// ADPCM of G.726: what its codes carry, its laws, and what it refuses.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "lp_reference.h"
#include "sc/g726/companding.h"
#include "veksc.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes memory() {
    int size = 0;
    EXPECT_EQ(vekStsNoErr, veksEncodeGetStateSize_G726_16s8u(&size));
    int same = 0;
    EXPECT_EQ(vekStsNoErr, veksDecodeGetStateSize_G726_8u16s(&same));
    EXPECT_EQ(size, same);
    EXPECT_GT(size, 0);
    return Bytes(static_cast<size_t>(size) + 1);
}

// A state at an odd address works as any other.
VeksCodecState_G726* odd(Bytes& bytes) {
    return reinterpret_cast<VeksCodecState_G726*>(bytes.data() + 1);
}

Samples speech(size_t n) {
    std::mt19937 random(1);
    std::normal_distribution<double> normal(0, 1);
    Samples x(n);
    double a = 0;
    double b = 0;
    for (size_t i = 0; i < n; ++i) {
        const double v = (i % 80 == 0 ? 300 : 0) + 30 * normal(random) + 1.7 * a - 0.8 * b;
        b = a;
        a = v;
        x[i] = static_cast<int16_t>(std::lround(v));
    }
    return x;
}

TEST(VekG726, MoreBitsCarryMoreOfTheSignal) {
    const Samples x = speech(4000);
    double before = 6;
    for (const VekSpchBitRate rate : {VEK_SPCHBR_16000, VEK_SPCHBR_24000, VEK_SPCHBR_32000, VEK_SPCHBR_40000}) {
        Bytes coder = memory();
        Bytes decoder = memory();
        Bytes codes(x.size());
        Samples y(x.size());
        ASSERT_EQ(vekStsNoErr, veksEncodeInit_G726_16s8u(odd(coder), rate));
        ASSERT_EQ(vekStsNoErr, veksDecodeInit_G726_8u16s(odd(decoder), rate, VEK_PCM_LINEAR));
        ASSERT_EQ(vekStsNoErr, veksEncode_G726_16s8u(odd(coder), x.data(), codes.data(), 4000));
        ASSERT_EQ(vekStsNoErr, veksDecode_G726_8u16s(odd(decoder), codes.data(), y.data(), 4000));
        const double now = lpref::signalToError(x, y, 200);
        EXPECT_GT(now, before + 2) << rate;
        before = now;
        const int top = rate == VEK_SPCHBR_16000   ? 4
                        : rate == VEK_SPCHBR_24000 ? 8
                        : rate == VEK_SPCHBR_32000 ? 16
                                                   : 32;
        for (const uint8_t code : codes) {
            ASSERT_LT(code, top);
        }
    }
}

Bytes encoded(const Samples& x, VekSpchBitRate rate) {
    Bytes coder = memory();
    Bytes codes(x.size());
    EXPECT_EQ(vekStsNoErr, veksEncodeInit_G726_16s8u(odd(coder), rate));
    EXPECT_EQ(vekStsNoErr, veksEncode_G726_16s8u(odd(coder), x.data(), codes.data(), static_cast<int>(x.size())));
    return codes;
}

Samples decoded(const Bytes& codes, VekSpchBitRate rate) {
    Bytes decoder = memory();
    Samples y(codes.size());
    EXPECT_EQ(vekStsNoErr, veksDecodeInit_G726_8u16s(odd(decoder), rate, VEK_PCM_LINEAR));
    EXPECT_EQ(vekStsNoErr, veksDecode_G726_8u16s(odd(decoder), codes.data(), y.data(), static_cast<int>(codes.size())));
    return y;
}

TEST(VekG726, TheCodeOfNoDifferenceIsAllOnesAboveTwoBits) {
    for (const auto& [rate, ones] : {std::pair{VEK_SPCHBR_24000, 7}, {VEK_SPCHBR_32000, 15}, {VEK_SPCHBR_40000, 31}}) {
        EXPECT_EQ(encoded(Samples(8, 0), rate), Bytes(8, static_cast<uint8_t>(ones)));
        const Bytes spoken = encoded(speech(4000), rate);
        EXPECT_EQ(std::count(spoken.begin(), spoken.end(), 0), 0) << rate;
    }
    EXPECT_EQ(encoded(Samples(8, 0), VEK_SPCHBR_16000), Bytes(8, 0));
}

TEST(VekG726, BitsAboveTheCodeAreIgnored) {
    for (const auto& [rate, bits] :
         {std::pair{VEK_SPCHBR_16000, 2}, {VEK_SPCHBR_24000, 3}, {VEK_SPCHBR_32000, 4}, {VEK_SPCHBR_40000, 5}}) {
        const Bytes codes = encoded(speech(400), rate);
        Bytes filled = codes;
        for (uint8_t& code : filled) {
            code = static_cast<uint8_t>(code | 0xff << bits);
        }
        EXPECT_EQ(decoded(codes, rate), decoded(filled, rate)) << rate;
    }
}

// An independent coder and decoder have the same figures.
TEST(VekG726, AJumpBehindAToneHasTheCodesAndSamplesOfTheRecommendation) {
    Samples x;
    for (int i = 0; i < 424; ++i) {
        x.push_back(static_cast<int16_t>(std::lround(i < 400 ? 2000 * std::sin(i * 0.5) : 12000 * std::sin(i * 2.0))));
    }
    const struct {
        VekSpchBitRate rate;
        Bytes codes;     // of the jump
        Samples samples; // the last of them
    } wanted[] = {
        {VEK_SPCHBR_16000,
         {1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 3, 2, 1, 3, 2, 1, 3, 2, 1, 3, 2, 1, 3, 3},
         {10840, 7076, -20468, 6984, 3416, -22480, 11464, 8688, -19708, 12096, 7624, -4572}},
        {VEK_SPCHBR_24000,
         {3, 4, 4, 3, 4, 5, 3, 6, 5, 2, 7, 4, 1, 1, 5, 1, 1, 4, 1, 1, 5, 7, 2, 5},
         {7380, 5116, -10688, 4952, 4880, -13820, 6692, 6480, -11556, 1148, 9660, -10524}},
        {VEK_SPCHBR_32000,
         {7, 8, 11, 7, 12, 12, 5, 13, 11, 5, 15, 10, 4, 1, 9, 3, 3, 10, 2, 4, 10, 15, 5, 11},
         {8672, 2180, -12488, 7064, 6688, -11028, 4024, 8456, -10800, 128, 10168, -8712}},
        {VEK_SPCHBR_40000,
         {15, 16, 16, 15, 21, 23, 12, 26, 22, 9, 31, 21, 8, 4, 21, 6, 6, 21, 4, 8, 22, 31, 9, 23},
         {9448, 3068, -12756, 6596, 5772, -12512, 3888, 8672, -11248, 520, 10472, -9904}},
    };
    for (const auto& [rate, want, last] : wanted) {
        const Bytes codes = encoded(x, rate);
        const Samples y = decoded(codes, rate);
        EXPECT_EQ(Bytes(codes.begin() + 400, codes.end()), want);
        EXPECT_EQ(Samples(y.begin() + 412, y.end()), last);
    }
}
// The adjustment is made so that codes survive any number of codings one after the other. It goes one PCM code at
// most, which serves where the law's steps are finer than the quantiser's, as at the lower rates.
TEST(VekG726, CodesOfALawSurviveASecondCoding) {
    const Samples x = speech(4000);
    for (const VekPCMLaw law : {VEK_PCM_MULAW, VEK_PCM_ALAW}) {
        for (const VekSpchBitRate rate : {VEK_SPCHBR_16000, VEK_SPCHBR_24000}) {
            Bytes coder = memory();
            Bytes decoder = memory();
            Bytes again = memory();
            Bytes first(x.size());
            Bytes second(x.size());
            Samples y(x.size());
            ASSERT_EQ(vekStsNoErr, veksEncodeInit_G726_16s8u(odd(coder), rate));
            ASSERT_EQ(vekStsNoErr, veksDecodeInit_G726_8u16s(odd(decoder), rate, law));
            ASSERT_EQ(vekStsNoErr, veksEncodeInit_G726_16s8u(odd(again), rate));
            ASSERT_EQ(vekStsNoErr, veksEncode_G726_16s8u(odd(coder), x.data(), first.data(), 4000));
            ASSERT_EQ(vekStsNoErr, veksDecode_G726_8u16s(odd(decoder), first.data(), y.data(), 4000));
            ASSERT_EQ(vekStsNoErr, veksEncode_G726_16s8u(odd(again), y.data(), second.data(), 4000));
            EXPECT_EQ(first, second) << law << " " << rate;
            for (const int16_t v : y) {
                const int back = law == VEK_PCM_ALAW ? vek::g711::alawValue(vek::g711::alawCode(v))
                                                     : vek::g711::mulawValue(vek::g711::mulawCode(v));
                ASSERT_EQ(v, back) << "a sample is the value of a code";
            }
        }
    }
}

TEST(VekG711, CodesAndValuesBelongTogether) {
    for (int code = 0; code < 256; ++code) {
        const auto byte = static_cast<uint8_t>(code);
        EXPECT_EQ(vek::g711::alawCode(vek::g711::alawValue(byte)), byte);
        if (code != 0x7f) { // the second zero
            EXPECT_EQ(vek::g711::mulawCode(vek::g711::mulawValue(byte)), byte);
        }
    }
    EXPECT_EQ(vek::g711::alawValue(0xaa), 32256);
    EXPECT_EQ(vek::g711::alawValue(0x2a), -32256);
    EXPECT_EQ(vek::g711::alawValue(0xd5), 8);
    EXPECT_EQ(vek::g711::mulawValue(0x80), 32124);
    EXPECT_EQ(vek::g711::mulawValue(0xff), 0);
    EXPECT_EQ(vek::g711::alawCode(-32768), 0x2a);
    EXPECT_EQ(vek::g711::mulawCode(32767), 0x80);
}

TEST(VekG726, RefusesWhatItCannotCode) {
    Bytes state = memory();
    Bytes codes(10);
    Samples x(10);
    EXPECT_EQ(vekStsNullPtrErr, veksEncodeGetStateSize_G726_16s8u(nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksDecodeGetStateSize_G726_8u16s(nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksEncodeInit_G726_16s8u(nullptr, VEK_SPCHBR_16000));
    EXPECT_EQ(vekStsNullPtrErr, veksDecodeInit_G726_8u16s(nullptr, VEK_SPCHBR_16000, VEK_PCM_ALAW));
    EXPECT_EQ(vekStsBitRateErr, veksEncodeInit_G726_16s8u(odd(state), VEK_SPCHBR_12200));
    EXPECT_EQ(vekStsBitRateErr, veksDecodeInit_G726_8u16s(odd(state), VEK_SPCHBR_DTX, VEK_PCM_ALAW));
    EXPECT_EQ(vekStsLawErr, veksDecodeInit_G726_8u16s(odd(state), VEK_SPCHBR_16000, static_cast<VekPCMLaw>(3)));
    EXPECT_EQ(vekStsStateErr, veksEncode_G726_16s8u(odd(state), x.data(), codes.data(), 10));
    EXPECT_EQ(vekStsStateErr, veksDecode_G726_8u16s(odd(state), codes.data(), x.data(), 10));
    ASSERT_EQ(vekStsNoErr, veksEncodeInit_G726_16s8u(odd(state), VEK_SPCHBR_16000));
    expectNullsRefused(veksEncode_G726_16s8u, odd(state), x.data(), codes.data(), 10);
    EXPECT_EQ(vekStsNullPtrErr, veksDecode_G726_8u16s(odd(state), nullptr, x.data(), 10));
    EXPECT_EQ(vekStsSizeErr, veksEncode_G726_16s8u(odd(state), x.data(), codes.data(), 0));
    EXPECT_EQ(vekStsSizeErr, veksDecode_G726_8u16s(odd(state), codes.data(), x.data(), -1));
}

} // namespace
