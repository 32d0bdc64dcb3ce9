// Synthesis filter of order 50, alone and in cascade with the weighting filter. A response to the memory goes into the
// memory as its newest block; the response to the excitation, from rest, is added there when it is known.
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/g728/blockfloat.h"
#include "sc/kernels/g728.h"
#include "veksc_g728.h"

using namespace vek::g728;

namespace {

// Fraction bits of a response beyond those of what it comes from.
constexpr int kMore = 6;
constexpr int64_t kResponseLimit = 8192;
// Of a response to an excitation, in its own scale.
constexpr int64_t kExcitedLimit = int64_t{1} << (24 + kMore);
constexpr int kSpeechShift = 2;
constexpr int kMostExcShifts = 15;

using Speech = BlockMemory<kOrder / kVector>;
using Weighted = BlockMemory<kShortOrder / kVector>;

struct Cascade {
    Speech speech;
    Weighted weighted;
};
using SynthesisState = Marked<Speech, 0x53594e37>;
using CombinedState = Marked<Cascade, 0x434f4d37>;

int64_t rounded(int64_t sum, int shift) {
    return (sum + (int64_t{1} << (shift - 1))) >> shift;
}

// The response of the synthesis filter to its memory, with the fraction bits that are returned; `aligned` is the
// memory, newest first, with kMore less.
int respond(const Speech& memory, const Vek16s* lpc, int16_t* aligned, int64_t* response) {
    int16_t coeffs[kPredictCoeffs];
    std::memcpy(coeffs, lpc, kOrder * sizeof(int16_t));
    std::memset(coeffs + kOrder, 0, (kPredictCoeffs - kOrder) * sizeof(int16_t));
    static_assert(Speech::kPadded == kPredictSpan);
    int16_t factor[kPredictSpan];
    const int q = memory.factors(factor) + kMore;
    int64_t sums[kVector];
    g728Kernels().predict(coeffs, memory.mantissas(), factor, aligned, sums);
    for (int k = 0; k < kVector; ++k) {
        response[k] = -sums[k] * (1 << kMore);
    }
    g728Kernels().recur(lpc, response, (kResponseLimit << q) - 1);
    return q;
}

// The response to the excitation from rest.
void excite(const Vek16s* lpc, const Vek16s* excitation, int64_t* response) {
    for (int k = 0; k < kVector; ++k) {
        response[k] = int64_t{excitation[k]} * (1 << (kMore + kCoeffShift));
    }
    g728Kernels().recur(lpc, response, kExcitedLimit);
}

// Adds a response with q fraction bits to the newest block of a memory and clips the sum.
template <int blocks>
void add(BlockMemory<blocks>& memory, const int64_t* response, int q, int64_t limit) {
    int16_t before[kVector];
    const int shifts = memory.newest(before);
    const int common = std::max(shifts, q);
    int64_t sum[kVector];
    for (int k = 0; k < kVector; ++k) {
        const int64_t s = (int64_t{before[k]} << (common - shifts)) + response[k] * (int64_t{1} << (common - q));
        sum[k] = std::clamp(s, -(limit << common), limit << common);
    }
    memory.renew(sum, common);
}

// The excitation's response goes into the memory and, at its own scale, to the caller; so does the speech.
void addExcited(Speech& memory, const int64_t* response, int excSfs, Vek16s* exc, Vek16s* speech, Vek16s* sfs) {
    add(memory, response, excSfs + kMore, kLoudest);
    for (int k = 0; k < kVector; ++k) {
        exc[k] = fix::sat16_64(rounded(response[k], kMore));
    }
    *sfs = static_cast<Vek16s>(memory.newest(speech));
}

template <typename... P>
VekStatus checkExcited(int excSfs, const P*... p) {
    if (anyNull(p...)) {
        return vekStsNullPtrErr;
    }
    return excSfs < 0 || excSfs > kMostExcShifts ? vekStsScaleRangeErr : vekStsNoErr;
}

} // namespace

VekStatus veksSynthesisFilterGetStateSize_G728_16s(int* pSize) {
    return SynthesisState::size(pSize);
}

VekStatus veksSynthesisFilterInit_G728_16s(VeksSynthesisFilterState_G728* pMem) {
    return SynthesisState::init(pMem);
}

VekStatus veksSyntesisFilterZeroInput_G728_16s(const Vek16s* pSrcLPC, Vek16s* pSrcDstExc, int excSfs,
                                               Vek16s* pDstSpeech, Vek16s* pSpeechSfs,
                                               VeksSynthesisFilterState_G728* pMem) {
    if (const VekStatus status = checkExcited(excSfs, pSrcLPC, pSrcDstExc, pDstSpeech, pSpeechSfs, pMem);
        status != vekStsNoErr) {
        return status;
    }
    return SynthesisState::with(pMem, [&](Speech& memory) {
        int16_t aligned[kPredictSpan];
        int64_t response[kVector];
        const int q = respond(memory, pSrcLPC, aligned, response);
        memory.push();
        memory.renew(response, q);
        excite(pSrcLPC, pSrcDstExc, response);
        addExcited(memory, response, excSfs, pSrcDstExc, pDstSpeech, pSpeechSfs);
    });
}

VekStatus veksCombinedFilterGetStateSize_G728_16s(int* pSize) {
    return CombinedState::size(pSize);
}

VekStatus veksCombinedFilterInit_G728_16s(VeksCombinedFilterState_G728* pMem) {
    return CombinedState::init(pMem);
}

VekStatus veksCombinedFilterZeroInput_G728_16s(const Vek16s* pSrcLPC, const Vek16s* pCoeffs, Vek16s* pDst,
                                               VeksCombinedFilterState_G728* pMem) {
    if (anyNull(pSrcLPC, pCoeffs, pDst, pMem)) {
        return vekStsNullPtrErr;
    }
    return CombinedState::with(pMem, [&](Cascade& memory) {
        int16_t aligned[kPredictSpan];
        // In the order of time, with ten samples from before.
        int64_t speech[kShortOrder + kVector];
        int64_t weighted[kShortOrder + kVector];
        const int q = respond(memory.speech, pSrcLPC, aligned, speech + kShortOrder);
        for (int i = 0; i < kShortOrder; ++i) {
            speech[kShortOrder - 1 - i] = aligned[i] * (1 << kMore);
        }
        memory.weighted.values(q, weighted);
        g728Kernels().poleZeroWide(pCoeffs, speech, weighted, (kResponseLimit << q) - 1);
        for (int k = 0; k < kVector; ++k) {
            pDst[k] = fix::sat16_64(rounded(weighted[kShortOrder + k], q - kSpeechShift));
        }
        memory.speech.push();
        memory.speech.renew(speech + kShortOrder, q);
        memory.weighted.push();
        memory.weighted.renew(weighted + kShortOrder, q);
    });
}

VekStatus veksCombinedFilterZeroState_G728_16s(const Vek16s* pSrcLPC, const Vek16s* pCoeffs, Vek16s* pSrcDstExc,
                                               int excSfs, Vek16s* pDstSpeech, Vek16s* pSpeechSfs,
                                               VeksCombinedFilterState_G728* pMem) {
    if (const VekStatus status = checkExcited(excSfs, pSrcLPC, pCoeffs, pSrcDstExc, pDstSpeech, pSpeechSfs, pMem);
        status != vekStsNoErr) {
        return status;
    }
    return CombinedState::with(pMem, [&](auto& content) {
        int64_t response[kVector];
        int64_t weighted[kVector];
        excite(pSrcLPC, pSrcDstExc, response);
        g728Kernels().poleZeroRest(pCoeffs, response, weighted, kExcitedLimit);
        addExcited(content.speech, response, excSfs, pSrcDstExc, pDstSpeech, pSpeechSfs);
        add(content.weighted, weighted, excSfs + kMore, kResponseLimit);
    });
}
