// Pre-emphasis, recursion and spectral conversions of G.729 against an independent open codec.
// Its step functions are in no public header: they are declared here, and the package's header tells whether to link.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "noise.h"
#include "veksc.h"

#if __has_include(<opencore-amrnb/interf_enc.h>)
#define ORACLE_AMRNB 1
extern "C" {
void preemphasis(int16_t* state, int16_t* signal, int16_t g, int16_t n, int* overflow);
void Az_lsp(int16_t* a, int16_t* lsp, int16_t* previous, int* overflow);
void Lsp_Az(int16_t* lsp, int16_t* a, int* overflow);
void Lsp_lsf(int16_t* lsp, int16_t* lsf, int16_t order, int* overflow);
int16_t Levinson(int16_t* state, int16_t* high, int16_t* low, int16_t* a, int16_t* rc, int* overflow);
}
#endif

namespace {

TEST(PreemphasisOracle, EqualsTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(1);
    int16_t ours = 0;
    int16_t theirs = 0;
    int overflow = 0;
    for (int round = 0; round < 100; ++round) {
        Samples x = noise(random, 40, -32768, 32767);
        Samples want = x;
        const int16_t gamma = noise(random, 1, 0, 32767)[0];
        ASSERT_EQ(vekStsNoErr, veksPreemphasize_G729A_16s_I(gamma, x.data(), 40, &ours));
        preemphasis(&theirs, want.data(), gamma, 40, &overflow);
        ASSERT_EQ(want, x) << round;
        ASSERT_EQ(theirs, ours);
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

// Falling cosines with a distance of at least a few degrees of speech spectra.
[[maybe_unused]] Samples pairs(std::mt19937& random) {
    std::uniform_real_distribution<double> step(0.05, 0.45);
    std::vector<double> angle(11);
    std::generate(angle.begin(), angle.end(), [&] { return step(random); });
    return spectralPairs(angle);
}

// Autocorrelations of noise coloured by the pairs' synthesis filter, normalised.
[[maybe_unused]] std::vector<int32_t> correlations(std::mt19937& random, int order) {
    const Samples lsp = pairs(random);
    Samples a(11);
    veksLSPToLPC_G729_16s(lsp.data(), a.data());
    std::normal_distribution<double> excitation(0, 1);
    std::vector<double> x(400);
    for (size_t i = 0; i < x.size(); ++i) {
        x[i] = excitation(random);
        for (size_t j = 1; j <= 10 && j <= i; ++j) {
            x[i] -= a[j] / 4096.0 * x[i - j];
        }
    }
    std::vector<int32_t> r;
    double energy = 0;
    for (int lag = 0; lag <= order; ++lag) {
        double sum = 0;
        for (size_t i = static_cast<size_t>(lag); i < x.size(); ++i) {
            sum += x[i] * x[i - static_cast<size_t>(lag)];
        }
        energy = lag == 0 ? sum * 1.001 : energy;
        r.push_back(static_cast<int32_t>((lag == 0 ? energy : sum) / energy * 1.8e9));
    }
    return r;
}

TEST(SpectralPairsOracle, PairsOfCoefficientsEqualTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(2);
    int overflow = 0;
    for (int round = 0; round < 3000; ++round) {
        Samples lsp = pairs(random);
        Samples a(11);
        Samples want(11);
        ASSERT_EQ(vekStsNoErr, veksLSPToLPC_G729_16s(lsp.data(), a.data()));
        Lsp_Az(lsp.data(), want.data(), &overflow);
        ASSERT_EQ(want, a) << round;
        Samples previous = pairs(random);
        Samples found(10);
        Samples wanted(10);
        veksLPCToLSP_G729_16s(a.data(), previous.data(), found.data());
        Az_lsp(a.data(), wanted.data(), previous.data(), &overflow);
        ASSERT_EQ(wanted, found) << round;
        veksLPCToLSP_GSMAMR_16s(a.data(), previous.data(), found.data());
        ASSERT_EQ(wanted, found) << round;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(SpectralPairsOracle, CoarseGridComesCloseToTheFineOne) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(3);
    int overflow = 0;
    for (int round = 0; round < 1000; ++round) {
        Samples lsp = pairs(random);
        Samples a(11);
        Lsp_Az(lsp.data(), a.data(), &overflow);
        Samples found(10);
        Samples wanted(10);
        const VekStatus status = veksLPCToLSP_G729A_16s(a.data(), lsp.data(), found.data());
        if (status == vekStsUnstableFilter) {
            continue;
        }
        Az_lsp(a.data(), wanted.data(), lsp.data(), &overflow);
        for (size_t i = 0; i < 10; ++i) {
            ASSERT_NEAR(wanted[i], found[i], 60) << round;
        }
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(SpectralPairsOracle, NormalisedFrequenciesEqualTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(4);
    int overflow = 0;
    for (int x = -32768; x <= 32767; ++x) {
        Samples lsp(10, static_cast<int16_t>(x));
        Samples lsf(10);
        Samples want(10);
        ASSERT_EQ(vekStsNoErr, veksLSPToLSF_Norm_G729_16s(lsp.data(), lsf.data()));
        Lsp_lsf(lsp.data(), want.data(), 10, &overflow);
        ASSERT_EQ(want, lsf) << x;
    }
    for (int round = 0; round < 3000; ++round) {
        Samples lsp = pairs(random);
        Samples lsf(10);
        Samples want(10);
        ASSERT_EQ(vekStsNoErr, veksLSPToLSF_Norm_G729_16s(lsp.data(), lsf.data()));
        Lsp_lsf(lsp.data(), want.data(), 10, &overflow);
        ASSERT_EQ(want, lsf) << round;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(LevinsonOracle, OrderTenEqualsTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(5);
    int overflow = 0;
    for (int round = 0; round < 1000; ++round) {
        const std::vector<int32_t> r = correlations(random, 10);
        Samples high;
        Samples low;
        for (const int32_t v : r) {
            high.push_back(static_cast<int16_t>(v >> 16));
            low.push_back(static_cast<int16_t>((v >> 1) & 0x7fff));
        }
        Samples state(11, 0);
        Samples want(11);
        Samples wantRc(4);
        Levinson(state.data(), high.data(), low.data(), want.data(), wantRc.data(), &overflow);
        Samples a(11);
        Samples rc(10);
        int16_t err = 0;
        ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_G729B(r.data(), a.data(), rc.data(), &err));
        ASSERT_EQ(want, a) << round;
        ASSERT_EQ(wantRc, Samples(rc.begin(), rc.begin() + 4)) << round;
        ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_G729_32s16s(r.data(), 10, a.data(), rc.data(), &err));
        ASSERT_EQ(want, a) << round;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

} // namespace
