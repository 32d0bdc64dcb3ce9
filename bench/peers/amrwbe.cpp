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
    data.fill(samples, 1152, 1000);
    float* time = fftwf_alloc_real(1152);
    fftwf_complex* bins = fftwf_alloc_complex(577);
    for (const int n : {48, 96, 192, 288, 576, 1152}) {
        fftwf_plan forward = fftwf_plan_dft_r2c_1d(n, time, bins, FFTW_MEASURE);
        fftwf_plan backward = fftwf_plan_dft_c2r_1d(n, bins, time, FFTW_MEASURE);
        peerRow(
            "veksFFTFwd_RToPerm_AMRWBE_16s, " + std::to_string(n), "fftw3f real to complex",
            [=] { veksFFTFwd_RToPerm_AMRWBE_16s(samples, lines, n); }, [=] { fftwf_execute(forward); });
        peerRow(
            "veksFFTInv_PermToR_AMRWBE_16s, " + std::to_string(n), "fftw3f complex to real",
            [=] { veksFFTInv_PermToR_AMRWBE_16s(samples, lines, n); }, [=] { fftwf_execute(backward); });
    }
}
#endif
