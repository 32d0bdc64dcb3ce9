// Linear prediction filters: the fast sum, the proof, and the slow road.
#include "sc/common/lpfilter.h"

#include <algorithm>
#include <cstring>

#include "sc/common/fixmath.h"

namespace vek {
namespace {

using namespace fix;

// Half of what a doubled 32-bit sum can hold.
constexpr int64_t kSafe = int64_t{1} << 30;
constexpr int kChunk = 160;

// y[i] of a[0] * x[i] and, by the step, a[j] * past[i-j].
template <auto Step>
void filterStepwise(const int16_t* a, int order, const int16_t* x, const int16_t* past, int16_t* y, int n, int q) {
    for (int i = 0; i < n; i++) {
        int32_t s = L_mult(x[i], a[0]);
        for (int j = 1; j <= order; j++) {
            s = Step(s, a[j], past[i - j]);
        }
        y[i] = round_s(L_shl(s, 15 - q));
    }
}

} // namespace

void residualFilter(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q, Steps steps) {
    const FilterKernels& k = filterKernels();
    if (steps == Steps::Wrap || int64_t{k.sumAbs16(a, order + 1)} * k.maxAbs16(x - order, order + n) < kSafe) {
        k.fir16(a, order, x, y, n, q);
        return;
    }
    // A loud passage: the bound is tried again for short stretches, since few of them come near it.
    constexpr int kStretch = 8;
    const int64_t gain = k.sumAbs16(a, order + 1);
    for (int i = 0; i < n; i += kStretch) {
        const int c = std::min(kStretch, n - i);
        if (gain * k.maxAbs16(x + i - order, order + c) < kSafe) {
            k.fir16(a, order, x + i, y + i, c, q);
        } else {
            filterStepwise<L_mac>(a, order, x + i, x + i, y + i, c, q);
        }
    }
}

void synthesisFilter(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q, const int16_t* mem,
                     Steps steps) {
    const FilterKernels& k = filterKernels();
    alignas(32) int16_t buffer[kMaxLpOrder + kChunk];
    alignas(32) int32_t sums[kChunk];
    int16_t* const out = buffer + kMaxLpOrder;
    std::memcpy(out - order, mem, static_cast<size_t>(order) * sizeof(int16_t));
    const int64_t feedback = steps == Steps::Wrap ? 0 : k.sumAbs16(a + 1, order);
    const int64_t input = steps == Steps::Wrap ? 0 : k.sumAbs16(a, 1);
    while (n > 0) {
        const int c = std::min(n, kChunk);
        k.fir32(a, 0, x, sums, c);
        k.allPole(a, order, sums, out, c, q);
        // If the first wrong output existed, all before it would be right and small enough to rule it out.
        if (steps == Steps::Saturate &&
            feedback * k.maxAbs16(out - order, order + c) + input * k.maxAbs16(x, c) >= kSafe) {
            filterStepwise<L_msu>(a, order, x, out, out, c, q);
        }
        std::memcpy(y, out, static_cast<size_t>(c) * sizeof(int16_t));
        n -= c;
        x += c;
        y += c;
        if (n > 0) {
            std::memmove(out - order, out + c - order, static_cast<size_t>(order) * sizeof(int16_t));
        }
    }
}

} // namespace vek
