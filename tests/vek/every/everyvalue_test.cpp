// Functions whose elements each depend on one number of 16 bits: every number is tried, at every place of the vector.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <string>
#include <vector>

#include "kernellevels.h"
#include "samples.h"
#include "veksc.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kLeast = -32768;
constexpr int kMost = 32767;

double arcCosine(double pair) {
    return std::acos(std::min(1.0, pair / 32768));
}

// Straight lines: far off only at both ends, where the arc cosine is steep.
double allowedAngle(double pair, double ends, double between) {
    return std::abs(pair) > 32600 ? ends : between;
}

struct Mapping {
    const char* name;
    VekStatus (*run)(const Vek16s* src, Vek16s* dst);
    int first, last, length; // places of this kind, elements in all
    int from, to;            // the numbers that it is defined for
    VekStatus elsewhere;     // the status for others; none where all are taken
    double (*want)(double x);
    double (*allowed)(double x);
};

const Mapping mappings[] = {
    {"veksLSPToLSF_Norm_G729_16s", veksLSPToLSF_Norm_G729_16s, 0, 9, 10, kLeast, kMost, vekStsNoErr,
     [](double x) { return arcCosine(x) * 16384 / kPi; },
     [](double x) { return allowedAngle(x, 0.014, 0.003) * 16384 / kPi; }},
    {"veksLSPToLSF_G729_16s", veksLSPToLSF_G729_16s, 0, 9, 10, kLeast, kMost, vekStsNoErr,
     [](double x) { return arcCosine(x) * 8192; }, [](double x) { return allowedAngle(x, 0.025, 0.0035) * 8192; }},
    // Beyond pi, at 25736, the last line of the table serves again and again.
    {"veksLSFToLSP_G729_16s", veksLSFToLSP_G729_16s, 0, 9, 10, 0, kMost, vekStsRangeErr,
     [](double x) { return x > 25735 ? -32748 : 32768 * std::cos(x / 8192); },
     [](double x) { return x > 25735 ? 20.0 : 16.0; }},
    {"veksLSFToLSP_GSMAMR_16s", veksLSFToLSP_GSMAMR_16s, 0, 9, 10, 0, 16384, vekStsRangeErr,
     [](double x) { return 32768 * std::cos(x * kPi / 16384); }, [](double) { return 16.0; }},
    {"veksISPToISF_Norm_AMRWB_16s",
     [](const Vek16s* isp, Vek16s* isf) { return veksISPToISF_Norm_AMRWB_16s(isp, isf, 16); }, 0, 14, 16, kLeast, kMost,
     vekStsNoErr, [](double x) { return arcCosine(x) * 16384 / kPi; },
     [](double x) { return allowedAngle(x, 0.009, 0.001) * 16384 / kPi; }},
    {"the last of veksISPToISF_Norm_AMRWB_16s",
     [](const Vek16s* isp, Vek16s* isf) { return veksISPToISF_Norm_AMRWB_16s(isp, isf, 16); }, 15, 15, 16, kLeast,
     kMost, vekStsNoErr, [](double x) { return arcCosine(x) * 8192 / kPi; },
     [](double x) { return allowedAngle(x, 0.009, 0.001) * 8192 / kPi; }},
    {"veksISFToISP_AMRWB_16s", [](const Vek16s* isf, Vek16s* isp) { return veksISFToISP_AMRWB_16s(isf, isp, 16); }, 0,
     14, 16, kLeast, kMost, vekStsNoErr,
     [](double x) { return 32768 * std::cos(std::clamp(x, 0.0, 16384.0) * kPi / 16384); }, [](double) { return 5.0; }},
    {"the last of veksISFToISP_AMRWB_16s",
     [](const Vek16s* isf, Vek16s* isp) { return veksISFToISP_AMRWB_16s(isf, isp, 16); }, 15, 15, 16, kLeast, kMost,
     vekStsNoErr, [](double x) { return 32768 * std::cos(std::clamp(x, 0.0, 8192.0) * kPi / 8192); },
     [](double) { return 5.0; }},
};

TEST(VekEveryValue, OfASpectralConversionIsTheCosineOrItsInverse) {
    for (const Mapping& m : mappings) {
        SCOPED_TRACE(m.name);
        double farthest = 0;
        for (int x = m.from; x <= m.to; ++x) {
            // Falling, as the pairs of a frame.
            Samples in(static_cast<size_t>(m.length));
            for (int i = m.first; i <= m.last; ++i) {
                in[static_cast<size_t>(i)] = static_cast<Vek16s>(std::max(m.from, x - (i - m.first)));
            }
            Samples out(in.size(), 7);
            ASSERT_EQ(vekStsNoErr, m.run(in.data(), out.data())) << x;
            for (int i = m.first; i <= m.last; ++i) {
                const double value = in[static_cast<size_t>(i)];
                const double off = std::abs(out[static_cast<size_t>(i)] - m.want(value)) / m.allowed(value);
                ASSERT_LE(off, 1) << value << " gives " << out[static_cast<size_t>(i)];
                farthest = std::max(farthest, off);
            }
        }
        EXPECT_GT(farthest, 0.6) << "the tolerance is wider than need be";
    }
}

TEST(VekEveryValue, OutsideASpectralConversionIsRefusedAtEveryPlace) {
    for (const Mapping& m : mappings) {
        SCOPED_TRACE(m.name);
        for (int x = kLeast; x <= kMost; ++x) {
            if (x >= m.from && x <= m.to) {
                continue;
            }
            for (int i = m.first; i <= m.last; ++i) {
                Samples in(static_cast<size_t>(m.length));
                in[static_cast<size_t>(i)] = static_cast<Vek16s>(x);
                Samples out(in.size(), 7);
                ASSERT_EQ(m.elsewhere, m.run(in.data(), out.data())) << x << " at " << i;
                ASSERT_EQ(Samples(in.size(), 7), out) << x << " at " << i;
            }
        }
    }
}

TEST(VekEveryValue, OfTheNoiseSeedGivesTheSumOfItsTwelveNumbers) {
    for (int seed = kLeast; seed <= kMost; ++seed) {
        int state = seed;
        int sum = 0;
        for (int i = 0; i < 12; ++i) {
            state = static_cast<int16_t>(state * 31821 + 13849);
            sum += state;
        }
        Vek16s integerSeed = static_cast<Vek16s>(seed);
        Vek16s floatSeed = integerSeed;
        Vek16s integer = 0;
        Vek32f real = 0;
        ASSERT_EQ(vekStsNoErr, veksRandomNoiseExcitation_G729B_16s(&integerSeed, &integer, 1));
        ASSERT_EQ(vekStsNoErr, veksRandomNoiseExcitation_G729B_16s32f(&floatSeed, &real, 1));
        ASSERT_EQ(state, integerSeed) << seed;
        ASSERT_EQ(state, floatSeed) << seed;
        ASSERT_EQ(std::floor(sum / 128.0), integer) << seed;
        ASSERT_EQ(static_cast<float>(sum / 128.0), real) << seed;
    }
}

TEST(VekEveryValue, IsScaledToTheSignBitsAskedFor) {
    atEveryLevel([] {
        for (int kept = 0; kept < 16; ++kept) {
            for (int x = kLeast; x <= kMost; ++x) {
                const int redundant = 15 - std::bit_width(static_cast<unsigned>(x < 0 ? ~x : x));
                const int shift = x == 0 ? 0 : redundant - kept;
                const double want = std::floor(std::ldexp(x, shift));
                Vek16s in = static_cast<Vek16s>(x);
                Vek16s out = 0;
                int scale = kept;
                int scaleInPlace = kept;
                ASSERT_EQ(vekStsNoErr, veksAutoScale_16s(&in, &out, 1, &scale));
                ASSERT_EQ(vekStsNoErr, veksAutoScale_16s_I(&in, 1, &scaleInPlace));
                ASSERT_EQ(shift, scale) << x << " keeps " << kept;
                ASSERT_EQ(shift, scaleInPlace) << x << " keeps " << kept;
                ASSERT_EQ(want, out) << x << " keeps " << kept;
                ASSERT_EQ(out, in) << x << " keeps " << kept;
            }
        }
    });
}

} // namespace
