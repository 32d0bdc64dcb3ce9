// One stage of a lattice filter, once per instruction level. A stage over many samples has no recursion.
#include "sc/kernels/lattice.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

#if VEK_LEVEL > 0

using namespace registers;

// From sample i on what fills registers, then eight at a time; gives the first sample that is left.
template <class D>
VEK_INLINE int stage(D d, int16_t r, const int16_t* back, int16_t* forth, int16_t* out, int i, int n) {
    const auto factor = hn::Set(d, r);
    for (; i + kLanesOf<D> <= n; i += kLanesOf<D>) {
        const auto b = hn::LoadU(d, back + i);
        const auto f = hn::LoadU(d, forth + i);
        hn::StoreU(hn::SaturatedAdd(b, hn::MulFixedPoint15(factor, f)), d, out + i);
        hn::StoreU(hn::SaturatedAdd(f, hn::MulFixedPoint15(factor, b)), d, forth + i);
    }
    if constexpr (kLanesOf < D >> kLanesOf<EightOf16>) {
        return stage(hn::Half<D>(), r, back, forth, out, i, n);
    } else {
        return i;
    }
}

#endif

void analysis(int16_t r, const int16_t* back, int16_t* d, int16_t* out, int n) {
    int i = 0;
#if VEK_LEVEL > 0
    i = stage(d16, r, back, d, out, i, n);
#endif
    for (; i < n; ++i) {
        out[i] = fix::add(back[i], fix::mult_r(r, d[i]));
        d[i] = fix::add(d[i], fix::mult_r(r, back[i]));
    }
}

} // namespace

VEK_KERNEL_TABLE(LatticeKernels, latticeKernels) = {analysis};

} // namespace vek
