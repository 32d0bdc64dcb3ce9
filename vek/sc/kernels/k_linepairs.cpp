// Chebyshev series at many points, a point a lane.
#include "sc/kernels/linepairs.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

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

using namespace registers;

// n is no multiple of more.
using Points = hn::CappedTag<int32_t, 8>;

void series5(const int16_t* x, int n, const int64_t* f, int16_t* y) {
    const Points d;
    const hn::RepartitionToNarrow<Points> halves;
    const hn::Rebind<int16_t, Points> narrow;
    hn::Vec<Points> term[kHalfOrder + 1];
    for (int i = 1; i <= kHalfOrder; ++i) {
        term[i] = hn::Set(d, static_cast<int32_t>(f[i]) * (i < kHalfOrder ? 1 << 14 : 1 << 13));
    }
    for (int k = 0; k < n; k += kLanesOf<Points>) {
        const auto low = hn::PromoteTo(d, hn::LoadU(narrow, x + k));
        const auto high = hn::ShiftLeft<16>(low);
        const auto product = [&](hn::Vec<Points> t) {
            const auto lower = hn::ShiftRight<1>(t) & hn::Set(d, 0x7fff);
            const auto below = pairSums(hn::BitCast(halves, lower), hn::BitCast(halves, low));
            return plusPairs(hn::ShiftRight<15>(below), hn::BitCast(halves, t), hn::BitCast(halves, high));
        };
        auto b2 = hn::Set(d, 1 << 24);
        auto t = hn::ShiftLeft<10>(low) + term[1];
        for (int i = 2; i < kHalfOrder; ++i) {
            const auto next = hn::ShiftLeft<2>(product(t)) + (term[i] - b2);
            b2 = t & hn::Set(d, ~1);
            t = next;
        }
        t = hn::ShiftLeft<1>(product(t)) + (term[kHalfOrder] - b2);
        hn::StoreU(hn::DemoteTo(narrow, hn::ShiftRight<10>(t)), narrow, y + k);
    }
}

#endif

} // namespace

VEK_KERNEL_TABLE(LinePairKernels, linePairKernels) = {series5};

} // namespace vek
