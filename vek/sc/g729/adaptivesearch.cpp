// Closed-loop search of the adaptive codebook, in full and by a target filtered backwards, and the codebook's gain.
#include <algorithm>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/pitchcorr.h"
#include "sc/common/signal_check.h"
#include "sc/g729/adaptivevector.h"
#include "sc/g729/closedloop.h"
#include "sc/kernels/corr.h"
#include "veksc_filter.h"
#include "veksc_g729pitch.h"
#include "veksc_g729post.h"

using namespace vek::g729;

namespace {

constexpr int kMostDelays = kLongestDelay - kShortestDelay + 1 + 2 * kPitchMargin;
constexpr int kLastThird = 84;

struct Range {
    int first;
    int last;

    Range(int open, int subFrame) {
        const int below = subFrame == 0 ? 3 : 5;
        const int width = subFrame == 0 ? 6 : 9;
        first = std::min(std::max(open - below, kShortestDelay), kLongestDelay - width);
        last = first + width;
    }
};

int32_t product(const Vek16s* a, const Vek16s* b, int n = kSubframe) {
    return sat32(2 * corrKernels().dot16(a, b, n));
}

VekStatus check(int open, const Vek16s* target, const Vek16s* h, const Vek16s* exc, const Vek16s* delay,
                const Vek16s* vector, int subFrame) {
    if (anyNull(target, h, exc, delay, vector)) {
        return vekStsNullPtrErr;
    }
    return open < 19 || open > 144 || subFrame < 0 || subFrame > 1 ? vekStsRangeErr : vekStsNoErr;
}

void deliver(int delay, int thirds, const Vek16s* exc, Vek16s* pDstDelay, Vek16s* pDstAdptVector) {
    pDstDelay[0] = static_cast<Vek16s>(delay);
    pDstDelay[1] = static_cast<Vek16s>(thirds);
    std::memcpy(pDstAdptVector, exc, kSubframe * sizeof(Vek16s));
}

// The target filtered backwards, at most 13 bits.
void backward(const Vek16s* target, const Vek16s* h, Vek16s* d) {
    int32_t sums[kSubframe];
    int32_t largest = 0;
    for (int i = 0; i < kSubframe; ++i) {
        sums[i] = product(target + i, h, kSubframe - i);
        largest = std::max(largest, L_abs(sums[i]));
    }
    const int shift = 18 - std::min<int>(norm_l(largest), 16);
    for (int i = 0; i < kSubframe; ++i) {
        d[i] = extract_l(L_shr(sums[i], shift));
    }
}

// A sum as a mantissa of 16 bits and its exponent; what does not fit 32 bits is made of quarters.
struct Mantissa {
    Vek16s value;
    int exponent;

    Mantissa(int64_t sum, int quarters) {
        if (sum > kMax32 || sum < kMin32) {
            sum >>= quarters;
            exponent = -quarters;
        } else {
            exponent = 0;
        }
        const int32_t narrow = sat32(sum);
        const int shift = norm_l(narrow);
        value = round_s(L_shl(narrow, shift));
        exponent += shift;
    }
};

} // namespace

PitchDelay vek::g729::closedLoop(const int16_t* exc, const int16_t* target, const int16_t* h, int first, int last,
                                 Thirds thirds) {
    Vek16s correlations[kMostDelays];
    pitchCorrelations(exc, target, h, first - kPitchMargin, last + kPitchMargin, correlations);
    const Vek16s* at = correlations + kPitchMargin - first;
    int delay = first;
    for (int i = first + 1; i <= last; ++i) {
        if (at[i] >= at[delay]) {
            delay = i;
        }
    }
    // Annex D has thirds only around the middle of the range, as four bits tell them.
    const int from = thirds == Thirds::Middle ? delay - (last - 4) : 0;
    if (from < -2 || from > 1 || (thirds == Thirds::Short && delay > kLastThird)) {
        return {delay, 0};
    }
    int part = from == -2 ? 0 : -2;
    const int lastPart = from == 1 ? 0 : 2;
    Vek16s best = pitchCorrelationBetween(at + delay, 2 * part);
    for (int i = part + 1; i <= lastPart; ++i) {
        const Vek16s value = pitchCorrelationBetween(at + delay, 2 * i);
        if (value > best) {
            best = value;
            part = i;
        }
    }
    return part == -2 ? PitchDelay{delay - 1, 1} : part == 2 ? PitchDelay{delay + 1, -1} : PitchDelay{delay, part};
}

int16_t vek::g729::pitchGain(const int16_t* target, const int16_t* y) {
    const CorrKernels& kernels = corrKernels();
    int32_t cross;
    int32_t squares;
    const bool narrow = kernels.gainSums16(target, y, kSubframe, &cross, &squares);
    const Mantissa yy(2 * (narrow ? squares : kernels.dot16(y, y, kSubframe)) + 1, 4);
    const Mantissa xy(2 * (narrow ? cross : kernels.dot16(target, y, kSubframe)), 2);
    if (xy.value <= 0) {
        return 0;
    }
    const Vek16s gain = shr(div_s(static_cast<Vek16s>(xy.value >> 1), yy.value), xy.exponent - yy.exponent);
    return std::min<Vek16s>(gain, 19661);
}

// The delay around the open-loop one, with the thirds that the second subframe has; its vector becomes the excitation.
static PitchDelay search(Vek16s openDelay, const Vek16s* target, const Vek16s* h, Vek16s* exc, Vek16s subFrame,
                         Thirds ofSecond) {
    const Range range(openDelay, subFrame);
    const PitchDelay found =
        closedLoop(exc, target, h, range.first, range.last, subFrame == 1 ? ofSecond : Thirds::Short);
    adaptiveVector(exc, found.whole, found.thirds);
    return found;
}

VekStatus veksAdaptiveCodebookSearch_G729_16s(Vek16s valOpenDelay, const Vek16s* pSrcAdptTarget,
                                              const Vek16s* pSrcImpulseResponse, Vek16s* pSrcDstPrevExcitation,
                                              Vek16s* pDstDelay, Vek16s* pDstAdptVector, Vek16s subFrame) {
    if (const VekStatus status = check(valOpenDelay, pSrcAdptTarget, pSrcImpulseResponse, pSrcDstPrevExcitation,
                                       pDstDelay, pDstAdptVector, subFrame);
        status != vekStsNoErr) {
        return status;
    }
    Vek16s* exc = pSrcDstPrevExcitation + kPastExcitation;
    const PitchDelay found = search(valOpenDelay, pSrcAdptTarget, pSrcImpulseResponse, exc, subFrame, Thirds::All);
    deliver(found.whole, found.thirds, exc, pDstDelay, pDstAdptVector);
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookSearch_G729D_16s(Vek16s valOpenDelay, const Vek16s* pSrcAdptTarget,
                                               const Vek16s* pSrcImpulseResponse, Vek16s* pSrcDstPrevExcitation,
                                               Vek16s subFrame, Vek16s* pDstDelay) {
    const VekStatus status = check(valOpenDelay, pSrcAdptTarget, pSrcImpulseResponse, pSrcDstPrevExcitation, pDstDelay,
                                   pSrcDstPrevExcitation, subFrame);
    if (status != vekStsNoErr) {
        return status;
    }
    const PitchDelay found = search(valOpenDelay, pSrcAdptTarget, pSrcImpulseResponse,
                                    pSrcDstPrevExcitation + kPastExcitation, subFrame, Thirds::Middle);
    pDstDelay[0] = static_cast<Vek16s>(found.whole);
    pDstDelay[1] = static_cast<Vek16s>(found.thirds);
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookSearch_G729A_16s(Vek16s valOpenDelay, const Vek16s* pSrcAdptTarget,
                                               const Vek16s* pSrcImpulseResponse, Vek16s* pSrcDstPrevExcitation,
                                               Vek16s* pDstDelay, Vek16s* pDstAdptVector, Vek16s subFrame) {
    const VekStatus status = check(valOpenDelay, pSrcAdptTarget, pSrcImpulseResponse, pSrcDstPrevExcitation, pDstDelay,
                                   pDstAdptVector, subFrame);
    if (status != vekStsNoErr) {
        return status;
    }
    Vek16s* exc = pSrcDstPrevExcitation + kPastExcitation;
    const Range range(valOpenDelay, subFrame);
    Vek16s d[kSubframe];
    backward(pSrcAdptTarget, pSrcImpulseResponse, d);
    int delay = range.first;
    int32_t best = kMin32;
    for (int i = range.first; i <= range.last; ++i) {
        const int32_t sum = product(d, exc - i);
        if (sum > best) {
            best = sum;
            delay = i;
        }
    }
    adaptiveVector(exc, delay, 0);
    int thirds = 0;
    if (subFrame == 1 || delay <= kLastThird) {
        best = product(d, exc);
        Vek16s vector[kSubframe];
        std::copy_n(exc, kSubframe, vector);
        for (const int i : {-1, 1}) {
            adaptiveVector(exc, delay, i);
            const int32_t sum = product(d, exc);
            if (sum > best) {
                best = sum;
                thirds = i;
                std::copy_n(exc, kSubframe, vector);
            }
        }
        std::copy_n(vector, kSubframe, exc);
    }
    deliver(delay, thirds, exc, pDstDelay, pDstAdptVector);
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookGain_G729_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcImpulseResponse,
                                            const Vek16s* pSrcAdptVector, Vek16s* pDstAdptVector,
                                            Vek16s* pResultAdptGain) {
    if (anyNull(pSrcAdptTarget, pSrcImpulseResponse, pSrcAdptVector, pDstAdptVector, pResultAdptGain)) {
        return vekStsNullPtrErr;
    }
    convolveSubframe(pSrcAdptVector, pSrcImpulseResponse, pDstAdptVector);
    *pResultAdptGain = pitchGain(pSrcAdptTarget, pDstAdptVector);
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookGain_G729A_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcLpc,
                                             const Vek16s* pSrcAdptVector, Vek16s* pDstAdptVector,
                                             Vek16s* pResultAdptGain) {
    if (anyNull(pSrcAdptTarget, pSrcLpc, pSrcAdptVector, pDstAdptVector, pResultAdptGain)) {
        return vekStsNullPtrErr;
    }
    const Vek16s rest[10] = {};
    veksSynthesisFilter_NR_16s_Sfs(pSrcLpc, pSrcAdptVector, pDstAdptVector, kSubframe, 12, rest);
    *pResultAdptGain = pitchGain(pSrcAdptTarget, pDstAdptVector);
    return vekStsNoErr;
}
