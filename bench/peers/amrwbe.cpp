// Transforms of the extended wide-band codec beside a transform package of single precision.
#include "peers.h"

#include "veksc.h"

#if __has_include(<fftw3.h>)
#include <fftw3.h>

namespace {

Vek16s samples[1152];
Vek16s lines[1152];

} // namespace

PEER_ROWS(amrwbe) {
    for (int i = 0; i < 1152; ++i) {
        samples[i] = static_cast<Vek16s>(i * 7919 % 2001 - 1000);
    }
    static const char* const words[] = {"fftw3f 48",  "fftw3f 96",  "fftw3f 192",
                                        "fftw3f 288", "fftw3f 576", "fftw3f 1152"};
    float* time = fftwf_alloc_real(1152);
    fftwf_complex* bins = fftwf_alloc_complex(577);
    int row = 0;
    for (const int n : {48, 96, 192, 288, 576, 1152}) {
        fftwf_plan forward = fftwf_plan_dft_r2c_1d(n, time, bins, FFTW_MEASURE);
        fftwf_plan backward = fftwf_plan_dft_c2r_1d(n, bins, time, FFTW_MEASURE);
        peerRow(
            "veksFFTFwd_RToPerm_AMRWBE_16s", words[row], [=] { veksFFTFwd_RToPerm_AMRWBE_16s(samples, lines, n); },
            [=] { fftwf_execute(forward); });
        peerRow(
            "veksFFTInv_PermToR_AMRWBE_16s", words[row], [=] { veksFFTInv_PermToR_AMRWBE_16s(samples, lines, n); },
            [=] { fftwf_execute(backward); });
        ++row;
    }
}
#endif
