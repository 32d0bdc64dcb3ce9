// The two second-order high-pass filters of G.729: pre-processing (140 Hz) and post-processing (100 Hz).
// Outputs are kept in 32 bits for the recursion, as the recommendation's split words do.
#include "sc/common/highpass.h"
#include "sc/common/fixmath.h"
#include "sc/common/markedstate.h"
#include "sc/kernels/filter.h"
#include "veksc_filter.h"

namespace {

using namespace vek::fix;

struct Section : HighPassSection {
    int loud; // with inputs up to here no step of the sum saturates
};

constexpr Section kPre = {{1899, -3798, 7807, -3733, 3, 0}, 32768};
constexpr Section kPost = {{7699, -15398, 15836, -7667, 2, 1}, 9800};

template <Section F>
int64_t feedback(const HighPassMemory& m) {
    return ((static_cast<int64_t>(m.y1) * F.a1) >> 15) + ((static_cast<int64_t>(m.y2) * F.a2) >> 15);
}

void push(HighPassMemory& m, Vek16s x, int32_t v) {
    m.y2 = m.y1;
    m.y1 = v >> 1;
    m.x2 = m.x1;
    m.x1 = x;
}

// The loop waits for the last output only: the rest of a sample's sum is made ahead. Outputs are without the zeros that
// the shift gives them. Ends with the input or before the first output that saturates, and tells how many were
// filtered.
template <Section F>
int runQuiet(HighPassMemory& m, Vek16s* x, int n) {
    constexpr int64_t kNear = F.a1 * (1 << F.shift);
    constexpr int64_t kFar = F.a2 * (1 << F.shift);
    constexpr int kToSample = 15 - F.shift - F.outShift;
    constexpr int kHalf = 1 << (kToSample - 1);
    // Neither a sample nor the doubled output leaves its bits.
    constexpr int64_t kLeast = -(int64_t{1} << (15 + kToSample));
    constexpr auto kRoom = static_cast<uint64_t>(-2 * kLeast - kHalf);
    static_assert(F.b1 == -2 * F.b0 && F.outShift >= 0);
    int64_t w1 = m.y1 >> F.shift;
    int64_t w2 = m.y2 >> F.shift;
    int64_t older = (w2 * kFar) >> 15;
    int x1 = m.x1;
    int x2 = m.x2;
    int i = 0;
    for (; i < n; i++) {
        const int now = x[i];
        const int64_t w = ((w1 * kNear) >> 15) + (F.b0 * (now - 2 * x1 + x2) + older);
        if (static_cast<uint64_t>(w - kLeast) >= kRoom) [[unlikely]] {
            break;
        }
        older = (w1 * kFar) >> 15;
        x[i] = static_cast<Vek16s>((w + kHalf) >> kToSample);
        w2 = w1;
        w1 = w;
        x2 = x1;
        x1 = now;
    }
    m = {static_cast<Vek32s>(w1 * (1 << F.shift)), static_cast<Vek32s>(w2 * (1 << F.shift)), static_cast<Vek16s>(x1),
         static_cast<Vek16s>(x2)};
    return i;
}

template <Section F>
void runLoud(HighPassMemory& m, Vek16s* x, int n) {
    for (int i = 0; i < n; i++) {
        int32_t s = static_cast<int32_t>(feedback<F>(m) * 2);
        s = L_mac(s, x[i], F.b0);
        s = L_mac(s, m.x1, F.b1);
        s = L_mac(s, m.x2, F.b0);
        s = L_shl(s, F.shift);
        push(m, x[i], s);
        x[i] = round_s(L_shl(s, F.outShift));
    }
}

template <Section F>
void run(HighPassMemory& m, Vek16s* x, int n) {
    const auto beyond = [](int v) { return v > F.loud || v < -F.loud; };
    if (beyond(m.x1) || beyond(m.x2) || filterKernels().maxAbs16(x, n) > F.loud) {
        runLoud<F>(m, x, n);
        return;
    }
    // An output that saturates has no such zeros as long as it is remembered.
    constexpr int kZeros = (1 << F.shift) - 1;
    while (n > 0) {
        const int quiet = ((m.y1 | m.y2) & kZeros) == 0 ? runQuiet<F>(m, x, n) : 0;
        const int loud = quiet < n ? 1 : 0;
        runLoud<F>(m, x + quiet, loud);
        x += quiet + loud;
        n -= quiet + loud;
    }
}

} // namespace

VekStatus veksHighPassFilterSize_G729(int* pSize) {
    return stateSize<HighPassMemory>(pSize);
}

VekStatus veksHighPassFilterInit_G729(char* pMem) {
    return initHighPass(pMem);
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
    withHighPassMemory(pMemUpdated, [&](HighPassMemory& m) {
        scaleFactor == 13 ? run<kPre>(m, pSrcDst, len) : run<kPost>(m, pSrcDst, len);
    });
    return vekStsNoErr;
}
