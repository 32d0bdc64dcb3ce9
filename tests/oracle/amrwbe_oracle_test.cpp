// Transforms of the extended wide-band codec against an independent open transform package.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "veksc.h"

#if __has_include(<fftw3.h>)
#include <fftw3.h>
#define ORACLE_FFTW 1
#endif

namespace {

TEST(AmrWbeOracle, TransformsOfAllLengthsAreWithinARoundingOfTheTransformPackage) {
#ifdef ORACLE_FFTW
    std::mt19937 random(5);
    for (const int n : {48, 96, 192, 288, 576, 1152}) {
        const auto size = static_cast<size_t>(n);
        double* time = fftw_alloc_real(size);
        fftw_complex* lines = fftw_alloc_complex(size / 2 + 1);
        fftw_plan forward = fftw_plan_dft_r2c_1d(n, time, lines, FFTW_ESTIMATE);
        fftw_plan backward = fftw_plan_dft_c2r_1d(n, lines, time, FFTW_ESTIMATE);
        std::uniform_int_distribution<int> pick(-4000, 4000);
        std::vector<Vek16s> x(size);
        std::vector<Vek16s> y(size);
        const double scale = 1 / std::sqrt(static_cast<double>(n));
        for (int frame = 0; frame < 100; frame++) {
            for (size_t i = 0; i < size; i++) {
                x[i] = static_cast<Vek16s>(pick(random));
                time[i] = x[i];
            }
            fftw_execute(forward);
            ASSERT_EQ(vekStsNoErr, veksFFTFwd_RToPerm_AMRWBE_16s(x.data(), y.data(), n));
            ASSERT_NEAR(lines[0][0] * scale, y[0], 0.51);
            ASSERT_NEAR(lines[n / 2][0] * scale, y[1], 0.51);
            for (size_t k = 1; k < size / 2; k++) {
                ASSERT_NEAR(lines[k][0] * scale, y[2 * k], 0.51) << n << " " << k;
                ASSERT_NEAR(lines[k][1] * scale, y[2 * k + 1], 0.51) << n << " " << k;
            }
            lines[0][0] = x[0];
            lines[0][1] = 0;
            lines[n / 2][0] = x[1];
            lines[n / 2][1] = 0;
            for (size_t k = 1; k < size / 2; k++) {
                lines[k][0] = x[2 * k];
                lines[k][1] = x[2 * k + 1];
            }
            fftw_execute(backward);
            ASSERT_EQ(vekStsNoErr, veksFFTInv_PermToR_AMRWBE_16s(x.data(), y.data(), n));
            for (size_t i = 0; i < size; i++) {
                ASSERT_NEAR(time[i] * scale, y[i], 0.51) << n << " " << i;
            }
        }
        fftw_destroy_plan(forward);
        fftw_destroy_plan(backward);
        fftw_free(lines);
        fftw_free(time);
    }
#else
    GTEST_SKIP() << "libfftw3-dev is not installed";
#endif
}

} // namespace
