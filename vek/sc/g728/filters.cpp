// Filters on samples of one format: the perceptual weighting filter and the inverse filter of the postfilter's
// adaptation.
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g728/adapter.h"
#include "sc/g728/state.h"
#include "veksc_g728.h"

using namespace vek;
using namespace vek::g728;

namespace {

constexpr int kRound14 = 1 << 13;

// The ten samples before, in the order of time.
struct Weighting {
    Vek16s in[kShortOrder] = {};
    Vek16s out[kShortOrder] = {};
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
    if (anyNull(pCoeffs, pSrc) || pDstWgtSpeech == nullptr || pMem == nullptr) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    IIRState state;
    if (!state.take(pMem)) {
        return vekStsStateErr;
    }
    // Samples in the order of time, ten from before first; a run at a time.
    constexpr int run = 40;
    Vek16s x[kShortOrder + run];
    Vek16s y[kShortOrder + run];
    std::memcpy(x, state.content.in, sizeof state.content.in);
    std::memcpy(y, state.content.out, sizeof state.content.out);
    int64_t zeros[run];
    for (int from = 0; from < len; from += run) {
        const int n = len - from < run ? len - from : run;
        std::memcpy(x + kShortOrder, pSrc + from, static_cast<size_t>(n) * sizeof(Vek16s));
        for (int k = 0; k < n; ++k) {
            int64_t sum = (int64_t{x[kShortOrder + k]} << 14) + kRound14;
            for (int i = 0; i < kShortOrder; ++i) {
                sum += pCoeffs[i] * x[kShortOrder - 1 + k - i];
            }
            zeros[k] = sum;
        }
        for (int k = 0; k < n; ++k) {
            int64_t sum = zeros[k];
            for (int i = kShortOrder - 1; i >= 0; --i) {
                sum -= pCoeffs[kShortOrder + i] * y[kShortOrder - 1 + k - i];
            }
            y[kShortOrder + k] = fix::sat16_64(sum >> 14);
        }
        std::memcpy(pDstWgtSpeech + from, y + kShortOrder, static_cast<size_t>(n) * sizeof(Vek16s));
        std::memmove(x, x + n, kShortOrder * sizeof(Vek16s));
        std::memmove(y, y + n, kShortOrder * sizeof(Vek16s));
    }
    std::memcpy(state.content.in, x, sizeof state.content.in);
    std::memcpy(state.content.out, y, sizeof state.content.out);
    state.give(pMem);
    return vekStsNoErr;
}

VekStatus veksLPCInverseFilter_G728_16s(const Vek16s* pSrc, const Vek16s* pCoeffs, Vek16s* pDst,
                                        VeksPostFilterAdapterState_G728* pMem) {
    if (anyNull(pSrc, pCoeffs) || pDst == nullptr || pMem == nullptr) {
        return vekStsNullPtrErr;
    }
    AdapterState state;
    if (!state.take(pMem)) {
        return vekStsStateErr;
    }
    Vek16s x[kShortOrder + kVector];
    std::memcpy(x, state.content.speech, sizeof state.content.speech);
    std::memcpy(x + kShortOrder, pSrc, kVector * sizeof(Vek16s));
    for (int k = 0; k < kVector; ++k) {
        int64_t sum = (int64_t{x[kShortOrder + k]} << 13) + (1 << 12);
        for (int i = 0; i < kShortOrder; ++i) {
            sum += pCoeffs[i] * x[kShortOrder - 1 + k - i];
        }
        pDst[k] = fix::sat16_64(sum >> 13);
    }
    std::memcpy(state.content.speech, x + kVector, sizeof state.content.speech);
    state.give(pMem);
    return vekStsNoErr;
}
