// Resampling of the extended wide-band codec against an independent open resampler of high quality.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "samples.h"
#include "veksc.h"

#if __has_include(<speex/speex_resampler.h>)
#include <speex/speex_resampler.h>
#define ORACLE_SPEEX 1
#endif

namespace {

#ifdef ORACLE_SPEEX

// Tones up to 0.36 of the low rate, which both filters pass.
Samples tones(int n, double lowRate) {
    Samples x(static_cast<size_t>(n));
    for (size_t i = 0; i < x.size(); i++) {
        double sum = 0;
        for (const double f : {0.013, 0.11, 0.23, 0.36}) {
            sum += 4000 * std::sin(2 * M_PI * f * lowRate * static_cast<double>(i) + 20 * f);
        }
        x[i] = static_cast<int16_t>(std::lround(sum));
    }
    return x;
}

Samples theirs(const Samples& x, unsigned in, unsigned out, size_t room) {
    int error = 0;
    SpeexResamplerState* state = speex_resampler_init(1, in, out, SPEEX_RESAMPLER_QUALITY_MAX, &error);
    speex_resampler_skip_zeros(state);
    Samples y(room);
    auto taken = static_cast<spx_uint32_t>(x.size());
    auto made = static_cast<spx_uint32_t>(room);
    speex_resampler_process_int(state, 0, x.data(), &taken, y.data(), &made);
    speex_resampler_destroy(state);
    y.resize(made);
    return y;
}

Samples ours(const Samples& x, int factor, int frame, int made) {
    Samples memory(144, 0);
    Samples y(x.size() / static_cast<size_t>(frame) * static_cast<size_t>(made));
    Vek16s fraction = 0;
    for (size_t i = 0; i < x.size() / static_cast<size_t>(frame); i++) {
        EXPECT_EQ(vekStsNoErr, veksResamplePolyphase_AMRWBE_16s(x.data() + i * static_cast<size_t>(frame), frame,
                                                                factor, 12, &fraction, memory.data(),
                                                                y.data() + i * static_cast<size_t>(made), made));
    }
    return y;
}

// Signal to difference in dB, ours `delay` samples later, away from both ends.
double agreement(const Samples& mine, const Samples& other, size_t delay) {
    double signal = 0;
    double difference = 0;
    for (size_t i = 1000; i + 2000 < other.size() && i + delay < mine.size(); i++) {
        const double d = mine[i + delay] - other[i];
        signal += static_cast<double>(other[i]) * other[i];
        difference += d * d;
    }
    return 10 * std::log10(signal / difference);
}

#endif

TEST(AmrWbeResampleOracle, RatesOfSmallRatioDifferFromTheOpenResamplerBy60DbLess) {
#ifdef ORACLE_SPEEX
    for (const int factor : {2, 3, 4, 6, 8}) {
        const int high = 480 * 12 / factor;
        const Samples low = tones(480 * 20, 1);
        EXPECT_GT(agreement(ours(low, factor, 480, high), theirs(low, static_cast<unsigned>(factor), 12, 60000),
                            static_cast<size_t>(144 / factor)),
                  60)
            << factor;
        const Samples fine = tones(high * 20, factor / 12.0);
        EXPECT_GT(agreement(ours(fine, factor, high, 480), theirs(fine, 12, static_cast<unsigned>(factor), 60000), 12),
                  60)
            << factor;
    }
#else
    GTEST_SKIP() << "libspeexdsp-dev is not installed";
#endif
}

} // namespace
