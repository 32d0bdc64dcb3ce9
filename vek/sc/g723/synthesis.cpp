// Synthesis filters of G.723.1, which halve the signal.
#include <cstring>

#include "sc/common/lpfilter.h"
#include "sc/g723/tables.h"
#include "veksc_g723.h"

using namespace vek::g723;

namespace {

// One subframe. f gets the sums in Q13, y[-10..-1] holds the outputs before. Sums that might leave 32 bits are made
// again with saturation.
void synthesis(const Vek16s* lpc, const Vek16s* x, Vek16s* y, Vek32s* f) {
    Vek16s a[kOrder + 1] = {8192};
    bool negatable = true;
    for (int j = 0; j < kOrder; ++j) {
        negatable = negatable && lpc[j] != -32768;
        a[j + 1] = negate(lpc[j]);
    }
    if (negatable) {
        for (int i = 0; i < kSubframe; ++i) {
            f[i] = x[i] * 4096;
        }
        const FilterKernels& kernels = filterKernels();
        kernels.allPole(a, kOrder, f, y, kSubframe, 13);
        const int64_t most = kernels.maxAbs16(y - kOrder, kOrder + kSubframe);
        if (int64_t{filterKernels().sumAbs16(a + 1, kOrder)} * most < (int64_t{1} << 31) - (1 << 27) - 4096) {
            return;
        }
    }
    for (int i = 0; i < kSubframe; ++i) {
        int64_t sum = x[i] * 4096;
        for (int j = 0; j < kOrder; ++j) {
            sum += lpc[j] * y[i - 1 - j];
        }
        f[i] = sat32(sum);
        y[i] = sat16_64((sum + 4096) >> 13);
    }
}

struct Output {
    Vek16s samples[kOrder + kSubframe];
    Vek32s sums[kSubframe];

    void run(const Vek16s* lpc, const Vek16s* x, Vek16s* memory) {
        Vek16s* y = samples + kOrder;
        for (int j = 0; j < kOrder; ++j) {
            y[-1 - j] = memory[j];
        }
        synthesis(lpc, x, y, sums);
        for (int j = 0; j < kOrder; ++j) {
            memory[j] = y[kSubframe - 1 - j];
        }
    }
};

} // namespace

VekStatus veksSynthesisFilter_G723_16s(const Vek16s* pLPC, const Vek16s* pSrc, Vek16s* pMem, Vek16s* pDst) {
    if (!pLPC || !pSrc || !pMem || !pDst) {
        return vekStsNullPtrErr;
    }
    Output out;
    out.run(pLPC, pSrc, pMem);
    std::memcpy(pDst, out.samples + kOrder, kSubframe * sizeof(Vek16s));
    return vekStsNoErr;
}

VekStatus veksSynthesisFilter_G723_16s32s(const Vek16s* pLPC, const Vek16s* pSrc, Vek32s* pDst, Vek16s* pMem) {
    if (!pLPC || !pSrc || !pDst || !pMem) {
        return vekStsNullPtrErr;
    }
    Output out;
    out.run(pLPC, pSrc, pMem);
    for (int i = 0; i < kSubframe; ++i) {
        pDst[i] = L_shl(out.sums[i], 3);
    }
    return vekStsNoErr;
}
