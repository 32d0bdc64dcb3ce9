// Gain control by energies.
#include "sc/common/energylevel.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/loops.h"
#include "veksc_filter.h"

using namespace vek::fix;

namespace {

constexpr int16_t kStay = 29491; // 0.9

// The share of a new gain in the moving one: 0.1 * sqrt(in / out).
int16_t share(int32_t in, int32_t out) {
    if (in == 0) {
        return 0;
    }
    const int shiftOut = norm_l(out) - 1;
    const int shiftIn = norm_l(in);
    // The quotient out / in is at most 1 in Q15, since the divisor has one bit more.
    const int16_t quotient = div_s(round_s(L_shl(out, shiftOut)), round_s(L_shl(in, shiftIn)));
    Vek32s root = L_shr(quotient * 128, shiftOut - shiftIn);
    veksInvSqrt_32s_I(&root, 1);
    return mult(round_s(L_shl(root, 9)), 32767 - kStay);
}

} // namespace

void vek::levelByEnergy(int32_t in, int32_t out, int16_t* x, int16_t& gain) {
    if (out == 0) {
        gain = 0;
        return;
    }
    // A share is 0..3276: the moving gain stays within 16 bits by itself.
    gain = static_cast<int16_t>(loopKernels().moveGain16(x, gain, kStay, share(in, out), {.shift = 12, .half = 0}));
}
