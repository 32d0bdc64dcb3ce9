// Chebyshev series at many points, a point a lane.
#include "sc/kernels/linepairs.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/lanes.h"

namespace vek {
namespace {

constexpr int kHalfOrder = 5;

#if VEK_LEVEL == 0

void series5(const int16_t* x, int n, const int64_t* f, int16_t* y) {
    for (int k = 0; k < n; ++k) {
        int64_t b2 = 1 << 24;
        int64_t t = x[k] * 1024 + f[1] * (1 << 14);
        for (int i = 2; i <= kHalfOrder; ++i) {
            const bool last = i == kHalfOrder;
            const int64_t product = ((t >> 1) * x[k]) >> 15;
            const int64_t next = (last ? 2 : 4) * product - b2 + f[i] * (last ? 1 << 13 : 1 << 14);
            b2 = t & ~int64_t{1};
            t = next;
        }
        y[k] = fix::sat16_64(t >> 10);
    }
}

#else

void series5(const int16_t* x, int n, const int64_t* f, int16_t* y) {
    using namespace lanes;
    V term[kHalfOrder + 1];
    for (int i = 1; i <= kHalfOrder; ++i) {
        term[i] = spread(static_cast<int32_t>(f[i]) * (i < kHalfOrder ? 1 << 14 : 1 << 13));
    }
    for (int k = 0; k < n; k += kLanes) {
        const V low = widened(x + k);
        const V high = up<16>(low);
        const auto product = [&](V t) {
            const V lower = andBits(down<1>(t), spread(0x7fff));
            return plus(madd(t, high), down<15>(madd(lower, low)));
        };
        V b2 = spread(1 << 24);
        V t = plus(up<10>(low), term[1]);
        for (int i = 2; i < kHalfOrder; ++i) {
            const V next = plus(up<2>(product(t)), minus(term[i], b2));
            b2 = andBits(t, spread(~1));
            t = next;
        }
        t = plus(up<1>(product(t)), minus(term[kHalfOrder], b2));
        storeNarrow(y + k, down<10>(t));
    }
}

#endif

} // namespace

VEK_KERNEL_TABLE(LinePairKernels, linePairKernels) = {series5};

} // namespace vek
