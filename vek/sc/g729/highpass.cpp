// The two second-order high-pass filters of G.729: pre-processing (140 Hz) and post-processing (100 Hz).
// Outputs are kept in 32 bits for the recursion, as the recommendation's split words do.
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/kernels/filter.h"
#include "veksc_filter.h"

namespace {

using namespace vek;
using namespace vek::fix;

struct Section {
    int b0, b1, b2; // numerator
    int a1, a2;     // feedback, sign turned
    int shift;      // from the doubled sum to a sample in the upper half
    int outShift;   // amplification of the output alone
    int loud;       // with inputs up to here no step of the sum saturates
};

constexpr Section kPre = {1899, -3798, 1899, 7807, -3733, 3, 0, 32768};
constexpr Section kPost = {7699, -15398, 7699, 15836, -7667, 2, 1, 9800};

// All zeros is the state of rest. The outputs are halved 32-bit samples.
struct Memory {
    Vek32s y1, y2;
    Vek16s x1, x2;
};

int64_t feedback(const Section& f, const Memory& m) {
    return ((static_cast<int64_t>(m.y1) * f.a1) >> 15) + ((static_cast<int64_t>(m.y2) * f.a2) >> 15);
}

void push(Memory& m, Vek16s x, int32_t v) {
    m.y2 = m.y1;
    m.y1 = v >> 1;
    m.x2 = m.x1;
    m.x1 = x;
}

void runQuiet(const Section& f, Memory& m, Vek16s* x, int n) {
    const int64_t factor = int64_t{2} << f.shift;
    for (int i = 0; i < n; i++) {
        const int input = f.b0 * x[i] + f.b1 * m.x1 + f.b2 * m.x2;
        const int32_t v = sat32((feedback(f, m) + input) * factor);
        push(m, x[i], v);
        x[i] = round_s(L_shl(v, f.outShift));
    }
}

void runLoud(const Section& f, Memory& m, Vek16s* x, int n) {
    for (int i = 0; i < n; i++) {
        int32_t s = static_cast<int32_t>(feedback(f, m) * 2);
        s = L_mac(s, x[i], static_cast<Vek16s>(f.b0));
        s = L_mac(s, m.x1, static_cast<Vek16s>(f.b1));
        s = L_mac(s, m.x2, static_cast<Vek16s>(f.b2));
        s = L_shl(s, f.shift);
        push(m, x[i], s);
        x[i] = round_s(L_shl(s, f.outShift));
    }
}

} // namespace

VekStatus veksHighPassFilterSize_G729(int* pSize) {
    if (!pSize) {
        return vekStsNullPtrErr;
    }
    *pSize = static_cast<int>(sizeof(Memory));
    return vekStsNoErr;
}

VekStatus veksHighPassFilterInit_G729(char* pMem) {
    if (!pMem) {
        return vekStsNullPtrErr;
    }
    std::memset(pMem, 0, sizeof(Memory));
    return vekStsNoErr;
}

VekStatus veksHighPassFilter_G729_16s_ISfs(Vek16s* pSrcDst, int len, int scaleFactor, char* pMemUpdated) {
    if (!pSrcDst || !pMemUpdated) {
        return vekStsNullPtrErr;
    }
    if (len < 1 || len > 65536) {
        return vekStsSizeErr;
    }
    if (scaleFactor != 12 && scaleFactor != 13) {
        return vekStsScaleRangeErr;
    }
    const Section& f = scaleFactor == 13 ? kPre : kPost;
    // The caller's buffer has no alignment.
    Memory m;
    std::memcpy(&m, pMemUpdated, sizeof m);
    const auto beyond = [&](int x) { return x > f.loud || x < -f.loud; };
    if (beyond(m.x1) || beyond(m.x2) || filterKernels().maxAbs16(pSrcDst, len) > f.loud) {
        runLoud(f, m, pSrcDst, len);
    } else {
        runQuiet(f, m, pSrcDst, len);
    }
    std::memcpy(pMemUpdated, &m, sizeof m);
    return vekStsNoErr;
}
