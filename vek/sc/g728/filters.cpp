// Filters on samples of one format: the perceptual weighting filter and the inverse filter of the postfilter's
// adaptation.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/g728/adapter.h"
#include "sc/kernels/g728.h"
#include "veksc_g728.h"

using namespace vek::g728;

namespace {

// The ten samples before, in the order of time.
struct Weighting {
    Vek16s in[kShortOrder] = {};
    Vek16s out[kShortOrder] = {};
};
using IIRState = Marked<Weighting, 0x57494752>;

// n samples, up to five. The memory has no alignment; what it holds goes through no copy but the kernel's input, since
// what is read across the bounds of what has just been written waits for it.
void filter(const Vek16s* coeffs, const Vek16s* src, int n, Vek16s* dst, Vek8u* in, Vek8u* out) {
    Vek16s x[kShortOrder + kVector] = {};
    Vek16s y[kShortOrder + kVector];
    std::memcpy(x, in, sizeof Weighting::in);
    std::copy_n(src, n, x + kShortOrder);
    std::memcpy(y, out, sizeof Weighting::out);
    g728Kernels().poleZero(coeffs, x, y);
    std::copy_n(y + kShortOrder, n, dst);
    std::memcpy(in, x + n, sizeof Weighting::in);
    std::memcpy(out, y + n, sizeof Weighting::out);
}

// The content of a state, or null where its mark is not there.
template <class State>
Vek8u* contentOf(void* memory) {
    auto* bytes = static_cast<Vek8u*>(memory);
    uint32_t mark = 0;
    std::memcpy(&mark, bytes + offsetof(State, mark), sizeof mark);
    return mark == State::kMark ? bytes + offsetof(State, content) : nullptr;
}

} // namespace

VekStatus veksIIR16sGetStateSize_G728_16s(int* pSize) {
    return IIRState::size(pSize);
}

VekStatus veksIIR16sInit_G728_16s(VeksIIRState_G728* pMem) {
    return IIRState::init(pMem);
}

VekStatus veksIIR16s_G728_16s(const Vek16s* pCoeffs, const Vek16s* pSrc, Vek16s* pDstWgtSpeech, int len,
                              VeksIIRState_G728* pMem) {
    if (const VekStatus status = checkSignal(len, pCoeffs, pSrc, pDstWgtSpeech, pMem); status != vekStsNoErr) {
        return status;
    }
    Vek8u* content = contentOf<IIRState>(pMem);
    if (content == nullptr) {
        return vekStsStateErr;
    }
    Vek8u* in = content + offsetof(Weighting, in);
    Vek8u* out = content + offsetof(Weighting, out);
    for (int from = 0; from < len; from += kVector) {
        if (len - from >= kVector) {
            filter(pCoeffs, pSrc + from, kVector, pDstWgtSpeech + from, in, out); // a known count is faster
        } else {
            filter(pCoeffs, pSrc + from, len - from, pDstWgtSpeech + from, in, out);
        }
    }
    return vekStsNoErr;
}

VekStatus veksLPCInverseFilter_G728_16s(const Vek16s* pSrc, const Vek16s* pCoeffs, Vek16s* pDst,
                                        VeksPostFilterAdapterState_G728* pMem) {
    if (anyNull(pSrc, pCoeffs, pDst, pMem)) {
        return vekStsNullPtrErr;
    }
    // Only the head of the state takes part.
    Vek8u* content = contentOf<AdapterState>(pMem);
    if (content == nullptr) {
        return vekStsStateErr;
    }
    Vek16s past[kShortOrder];
    Vek8u* speech = content + offsetof(Adapter, speech);
    std::memcpy(past, speech, sizeof past);
    g728Kernels().zeros(pCoeffs, past, pSrc, pDst);
    std::memcpy(speech, past, sizeof past);
    return vekStsNoErr;
}
