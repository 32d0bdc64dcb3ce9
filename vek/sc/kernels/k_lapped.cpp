// The folds of a lapped transform.
#include "sc/kernels/lapped.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

using fix::sat16;

// One half of a fold: dst[n] = (w1[n] * x1[n] + w2[n] * x2[n]) in Q15, where each of the four runs forwards or
// backwards from its pointer, and the second product counts negative if asked.
enum class Run { forwards, backwards };

#if VEK_LEVEL == 0

template <Run run>
VEK_INLINE int at(const int16_t* p, int n) {
    return run == Run::forwards ? p[n] : p[-n];
}

template <Run runW1, Run runX1, Run runW2, Run runX2, bool minus>
VEK_INLINE void halfFold(const int16_t* w1, const int16_t* x1, const int16_t* w2, const int16_t* x2, int16_t* dst,
                         int count) {
    for (int n = 0; n < count; ++n) {
        const int first = at<runW1>(w1, n) * at<runX1>(x1, n);
        const int second = at<runW2>(w2, n) * at<runX2>(x2, n);
        dst[n] = sat16(((minus ? first - second : first + second) + 0x4000) >> 15);
    }
}

#else

using namespace registers;

// As many from element n on as `d` has lanes.
template <Run run, class D>
VEK_INLINE auto loadRun(D d, const int16_t* p, int n) {
    if constexpr (run == Run::forwards) {
        return hn::LoadU(d, p + n);
    } else {
        return reversed(d, hn::LoadU(d, p - n - (kLanesOf<D> - 1)));
    }
}

// From element n on what fills registers, then eight at a time. count is a multiple of eight.
template <Run runW1, Run runX1, Run runW2, Run runX2, bool minus, class D = D16>
VEK_INLINE void halfFold(const int16_t* w1, const int16_t* x1, const int16_t* w2, const int16_t* x2, int16_t* dst,
                         int count, int n = 0) {
    const D d;
    const auto half = hn::Set(hn::RepartitionToWide<D>(), 0x4000);
    for (; n + kLanesOf<D> <= count; n += kLanesOf<D>) {
        const auto a = loadRun<runX1>(d, x1, n);
        const auto b = loadRun<runX2>(d, x2, n);
        const auto wa = loadRun<runW1>(d, w1, n);
        auto wb = loadRun<runW2>(d, w2, n);
        if constexpr (minus) {
            wb = hn::Zero(d) - wb; // a window has no -32768
        }
        const auto lower = plusPairs(half, hn::InterleaveLower(d, a, b), hn::InterleaveLower(d, wa, wb));
        const auto upper = plusPairs(half, hn::InterleaveUpper(d, a, b), hn::InterleaveUpper(d, wa, wb));
        storeSaturated(d, dst + n, hn::ShiftRight<15>(lower), hn::ShiftRight<15>(upper));
    }
    if constexpr (kLanesOf < D >> 8) {
        halfFold<runW1, runX1, runW2, runX2, minus, hn::Half<D>>(w1, x1, w2, x2, dst, count, n);
    }
}

#endif

void fold16(const int16_t* fresh, const int16_t* old, const int16_t* w, int16_t* dst, int half) {
    using enum Run;
    const int last = 2 * half - 1;
    halfFold<backwards, backwards, forwards, forwards, false>(w + half - 1, old + half - 1, w + half, old + half, dst,
                                                              half);
    halfFold<backwards, forwards, forwards, backwards, true>(w + last, fresh, w, fresh + last, dst + half, half);
}

void unfold16(const int16_t* fresh, const int16_t* old, const int16_t* w, int16_t* dst, int half) {
    using enum Run;
    const int last = 2 * half - 1;
    halfFold<forwards, backwards, backwards, forwards, false>(w, fresh + half - 1, w + last, old + half, dst, half);
    halfFold<forwards, forwards, backwards, backwards, true>(w + half, fresh, w + half - 1, old + last, dst + half,
                                                             half);
}

} // namespace

VEK_KERNEL_TABLE(LappedKernels, lappedKernels) = {fold16, unfold16};

} // namespace vek
