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

using namespace vek;
using namespace vek::g728;

namespace {

// The ten samples before, in the order of time.
struct Weighting {
    Vek16s in[kShortOrder] = {};
    Vek16s out[kShortOrder] = {};

    // n samples, up to five.
    void filter(const Vek16s* coeffs, const Vek16s* src, int n, Vek16s* dst) {
        Vek16s x[kShortOrder + kVector] = {};
        Vek16s y[kShortOrder + kVector];
        std::memcpy(x, in, sizeof in);
        std::copy_n(src, n, x + kShortOrder);
        std::memcpy(y, out, sizeof out);
        g728Kernels().poleZero(coeffs, x, y);
        std::copy_n(y + kShortOrder, n, dst);
        std::copy_n(x + n, kShortOrder, in);
        std::copy_n(y + n, kShortOrder, out);
    }
};
using IIRState = Marked<Weighting, 0x57494752>;

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
    return IIRState::with(pMem, [&](auto& content) {
        for (int from = 0; from < len; from += kVector) {
            if (len - from >= kVector) {
                content.filter(pCoeffs, pSrc + from, kVector, pDstWgtSpeech + from); // a known count is faster
            } else {
                content.filter(pCoeffs, pSrc + from, len - from, pDstWgtSpeech + from);
            }
        }
    });
}

VekStatus veksLPCInverseFilter_G728_16s(const Vek16s* pSrc, const Vek16s* pCoeffs, Vek16s* pDst,
                                        VeksPostFilterAdapterState_G728* pMem) {
    if (anyNull(pSrc, pCoeffs, pDst, pMem)) {
        return vekStsNullPtrErr;
    }
    // Only the head of the state takes part.
    uint32_t mark = 0;
    auto* memory = reinterpret_cast<Vek8u*>(pMem);
    Vek8u* speech = memory + offsetof(AdapterState, content) + offsetof(Adapter, speech);
    std::memcpy(&mark, memory + offsetof(AdapterState, mark), sizeof mark);
    if (mark != AdapterState::kMark) {
        return vekStsStateErr;
    }
    Vek16s x[kShortOrder + kVector];
    std::memcpy(x, speech, kShortOrder * sizeof(Vek16s));
    std::memcpy(x + kShortOrder, pSrc, kVector * sizeof(Vek16s));
    g728Kernels().zeros(pCoeffs, x, pDst);
    std::memcpy(speech, x + kVector, kShortOrder * sizeof(Vek16s));
    return vekStsNoErr;
}
