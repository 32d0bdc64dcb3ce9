// What the controllers of subbands share: the state, with means of both filters' errors for each band, step sizes from
// the power over the history, and the copies of coefficients band by band.
#pragma once

#include <algorithm>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/ec/judge.h"
#include "sc/ec/rows.h"
#include "sc/ec/state.h"
#include "vekdefs.h"

namespace vek::ec {

// Behind it: the means of the adaptive and of the fixed filter's errors, numSubbands each.
struct Bands {
    uint32_t mark;
    int numSubbands, frameSize, numSegments;
    Judge judge;

    Mean* adaptive() { return reinterpret_cast<Mean*>(this + 1); }
    Mean* fixed() { return adaptive() + numSubbands; }
};

inline VekStatus checkBands(int numSubbands, int frameSize, int numSegments, int sampleFreq) {
    if (numSubbands < 1 || numSubbands > kMaxSubbands || frameSize < 1 || frameSize > kMaxFrame || numSegments < 1 ||
        numSegments > kMaxSegments) {
        return vekStsSizeErr;
    }
    return knownRate(sampleFreq) ? vekStsNoErr : vekStsBadArgErr;
}

inline VekStatus bandsSize(int numSubbands, int frameSize, int numSegments, int sampleFreq, int* pSize) {
    if (pSize == nullptr) {
        return vekStsNullPtrErr;
    }
    const VekStatus status = checkBands(numSubbands, frameSize, numSegments, sampleFreq);
    if (status == vekStsNoErr) {
        *pSize = bytesOf<Bands>(2 * sizeof(Mean) * static_cast<size_t>(numSubbands));
    }
    return status;
}

inline VekStatus bandsInit(uint32_t mark, void* pState, int numSubbands, int frameSize, int numSegments,
                           int sampleFreq) {
    if (pState == nullptr) {
        return vekStsNullPtrErr;
    }
    const VekStatus status = checkBands(numSubbands, frameSize, numSegments, sampleFreq);
    if (status == vekStsNoErr) {
        Bands& b = *placeOf<Bands>(pState);
        b = {mark, numSubbands, frameSize, numSegments, {}};
        b.judge.init(frameSize, sampleFreq);
        std::fill_n(b.adaptive(), 2 * numSubbands, Mean{});
    }
    return status;
}

template <typename C>
double power(C c) {
    return static_cast<double>(c.re) * c.re + static_cast<double>(c.im) * c.im;
}

inline Vek32f stepOf(double step, Vek32f) {
    return static_cast<Vek32f>(step);
}
inline Vek32s stepOf(double step, Vek32s) {
    return static_cast<Vek32s>(std::fmin(std::ldexp(step, 46), INT32_MAX));
}

// Power of each band over the history, 0 below the first.
template <typename C>
void historyPowers(const Bands& b, const C* const* history, int first, double* powers) {
    std::fill_n(powers, b.numSubbands, 0.0);
    for (int s = 0; s < b.numSegments; ++s) {
        for (int k = first; k < b.numSubbands; ++k) {
            powers[k] += power(history[s][k]);
        }
    }
}

template <typename S>
void stepSizes(const Bands& b, const double* powers, double step, int first, S* steps) {
    double sum = 0;
    for (int k = first; k < b.numSubbands; ++k) {
        sum += powers[k];
    }
    const double least = 1e-4 * sum / (b.numSubbands - first);
    for (int k = first; k < b.numSubbands; ++k) {
        steps[k] = stepOf(powers[k] > 0 ? step / (powers[k] + least) : 0, S{});
    }
}

template <typename C>
void copyBand(const Bands& b, int k, C* const* from, C* const* to) {
    for (int s = 0; s < b.numSegments; ++s) {
        to[s][k] = from[s][k];
    }
}

// Takes the errors of a frame into the means.
template <typename C>
void takeErrors(Bands& b, const C* adaptiveErr, const C* fixedErr, int first) {
    for (int k = first; k < b.numSubbands; ++k) {
        b.adaptive()[k].add(power(adaptiveErr[k]), b.judge.keep());
        b.fixed()[k].add(power(fixedErr[k]), b.judge.keep());
    }
}

} // namespace vek::ec
