// Filters beside an AMR codec's.
#include "peers.h"

#include "veksc.h"

#if __has_include(<opencore-amrnb/interf_enc.h>)
extern "C" {
void Residu(int16_t* a, int16_t* x, int16_t* y, int16_t n);
void Syn_filt(int16_t* a, int16_t* x, int16_t* y, int16_t n, int16_t* mem, int16_t update);
}

PEER_ROWS(signal) {
    static Vek16s a[11] = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};
    static Vek16s x[50];
    static Vek16s y[50];
    static Vek16s memory[10];
    data.fill(x, 50, 200);
    peerRow(
        "veksResidualFilter_G729_16s, 40", "opencore-amrnb Residu", [] { veksResidualFilter_G729_16s(x + 10, a, y); },
        [] { Residu(a, x + 10, y, 40); });
    peerRow(
        "veksSynthesisFilter_NR_16s_Sfs, 40", "opencore-amrnb Syn_filt",
        [] { veksSynthesisFilter_NR_16s_Sfs(a, x, y, 40, 12, memory); }, [] { Syn_filt(a, x, y, 40, memory, 0); });
}
#endif
