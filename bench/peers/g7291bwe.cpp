// Frequency envelope of G.729.1's band extension beside the same in single precision over a transform package.
#include "peers.h"

#include "veksc.h"

#if __has_include(<fftw3.h>)
#include <cmath>
#include <fftw3.h>
#include <numbers>

namespace {

Vek16s samples[128];
Vek16s envelope[12];
float window[128];
float bandLevels[12];

} // namespace

PEER_ROWS(g7291bwe) {
    data.fill(samples, 128, 1000);
    for (int n = 0; n < 128; ++n) {
        const double turn = n < 72 ? n / 143.0 : (n - 16) / 111.0;
        window[n] = static_cast<float>((1 - std::cos(2 * std::numbers::pi * turn)) / 2);
    }
    float* folded = fftwf_alloc_real(64);
    fftwf_complex* bins = fftwf_alloc_complex(33);
    fftwf_plan plan = fftwf_plan_dft_r2c_1d(64, folded, bins, FFTW_MEASURE);
    peerRow(
        "veksEnvelopFrequency_G7291_16s", "fftw3f 64 points, log2f",
        [] { veksEnvelopFrequency_G7291_16s(samples, envelope); },
        [=] {
            for (int n = 0; n < 64; ++n) {
                folded[n] = window[n] * samples[n] + window[n + 64] * samples[n + 64];
            }
            fftwf_execute(plan);
            const auto power = [=](int k) { return bins[k][0] * bins[k][0] + bins[k][1] * bins[k][1]; };
            for (int j = 0; j < 12; ++j) {
                bandLevels[j] =
                    0.5F * std::log2(0.5F * power(2 * j) + power(2 * j + 1) + 0.5F * power(2 * j + 2) + 1e-9F);
            }
        });
}
#endif
