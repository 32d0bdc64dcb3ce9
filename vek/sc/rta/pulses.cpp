// Search of the pulses of the fixed codebook of the real-time audio codec.
#include <algorithm>
#include <cmath>
#include <utility>

#include "sc/common/signal_check.h"
#include "sc/kernels/loops.h"
#include "sc/rta/response.h"
#include "veksc_rta.h"

namespace {

using namespace vek::rta;

constexpr int kTracks = 5;
constexpr int kMostPulses = 10;
constexpr int kMost = 80;

// Correlations of the target and of the response with the response from each place on.
struct Field {
    int n;
    float target[kMost];
    float sign[kMost];
    float energy[kMost];
    float rows[kMost][kMost];
};

// Row i out of row i + 1: each sum has one more product at its front.
void fill(const Response& response, const float* target, int n, Field& field) {
    field.n = n;
    response.correlate(target, field.target);
    const float* h = response.samples();
    float turned[kMost]; // the response from its end
    std::reverse_copy(h, h + n, turned);
    std::fill_n(field.rows[n - 1], n, 0.0F);
    for (int i = n - 1; i >= 0; --i) {
        // rows[i][j] = rows[i + 1][j + 1] + h[n - 1 - i] * h[n - 1 - j]
        const float last = turned[i];
        if (i < n - 1) {
            loopKernels().addScaled32f(field.rows[i + 1] + 1, turned, last, field.rows[i], n - 1);
        } else {
            loopKernels().addScaled32f(field.rows[i], turned, last, field.rows[i], n - 1);
        }
        field.rows[i][n - 1] = last * turned[n - 1];
        field.energy[i] = field.rows[i][i];
    }
    for (int i = 0; i < n; ++i) {
        field.sign[i] = field.target[i] < 0 ? -1.0F : 1.0F;
    }
}

// Pulses set so far, and their correlation with the response from each place on.
struct Pulses {
    int places[kMostPulses];
    Fit fit;
    float common[kMost];

    void set(const Field& field, int pulse, int place) {
        places[pulse] = place;
        change(field, place, field.sign[place]);
    }
    void take(const Field& field, int pulse) { change(field, places[pulse], -field.sign[places[pulse]]); }

private:
    void change(const Field& field, int place, float sign) {
        fit = with(field, place, sign);
        loopKernels().addScaled32f(common, field.rows[place], sign, common, field.n);
    }
    Fit with(const Field& field, int place, float sign) const {
        return {fit.correlation + sign * field.target[place],
                fit.energy + 2 * sign * common[place] + field.energy[place]};
    }

public:
    // The place of a track that fits best.
    int best(const Field& field, int track) const {
        int place = track;
        Fit found = with(field, track, field.sign[track]);
        for (int i = track + kTracks; i < field.n; i += kTracks) {
            const Fit now = with(field, i, field.sign[i]);
            if (now.betterThan(found)) {
                found = now;
                place = i;
            }
        }
        return place;
    }
};

Pulses search(const Field& field, int numPulses, int refine) {
    Pulses best;
    for (int start = 0; start < kTracks; ++start) {
        Pulses now{};
        // In turns around the tracks, from the starting one on; the last turn may leave some out.
        for (int i = 0; i < numPulses; i += kTracks) {
            for (int k = 0; k < kTracks; ++k) {
                const int track = (start + k) % kTracks;
                if (i + track < numPulses) {
                    now.set(field, i + track, now.best(field, track));
                }
            }
        }
        for (int round = 0; round < refine; ++round) {
            for (int i = 0; i < numPulses; ++i) {
                now.take(field, i);
                now.set(field, i, now.best(field, i % kTracks));
            }
        }
        if (start == 0 || now.fit.betterThan(best.fit)) {
            best = now;
        }
    }
    return best;
}

} // namespace

VekStatus veksFixedCodebookSearch_RTA_32f(const Vek32f* pSrcFixedTarget, const Vek32f* pSrcImpulseResponse,
                                          Vek32f* pDstFixedVector, int subFrameSize, int* pDstFixedIndex,
                                          Vek32f* pDstGain, int numPulses, int refine) {
    constexpr int kLeast = 10;
    constexpr int kMostRefinements = 8;
    constexpr int kWordBits = 5;
    constexpr int kNegative = 1 << (kWordBits - 1);
    if (anyNull(pSrcFixedTarget, pSrcImpulseResponse, pDstFixedVector, pDstGain, pDstFixedIndex)) {
        return vekStsNullPtrErr;
    }
    if (subFrameSize < kLeast || subFrameSize > kMost || subFrameSize % kTracks != 0) {
        return vekStsSizeErr;
    }
    if (numPulses < 1 || numPulses > kMostPulses || refine < 0 || refine > kMostRefinements) {
        return vekStsBadArgErr;
    }
    Field field;
    fill(Response(pSrcImpulseResponse, subFrameSize), pSrcFixedTarget, subFrameSize, field);
    const Pulses best = search(field, numPulses, refine);
    std::fill_n(pDstFixedVector, subFrameSize, 0.0F);
    std::fill_n(pDstFixedIndex, kTracks, 0);
    for (int i = 0; i < numPulses; ++i) {
        const int place = best.places[i];
        const bool negative = field.sign[place] < 0;
        pDstFixedVector[place] += negative ? -1.0F : 1.0F;
        pDstFixedIndex[i % kTracks] |= (place / kTracks + (negative ? kNegative : 0)) << (kWordBits * (i / kTracks));
    }
    *pDstGain = best.fit.gain();
    return vekStsNoErr;
}
