// The pulse search of Annex E in floating point. What is searched and how is a kernel's.
#include "sc/g729/floatpulses.h"

#include <algorithm>
#include <cmath>

#include "sc/common/correlate.h"
#include "sc/common/pulsesearch.h"
#include "sc/kernels/floatcorr.h"
#include "sc/kernels/floatdot.h"
#include "sc/kernels/floatpulses.h"

namespace vek::floatpulses {
namespace {

float inverseRoot(const Vek32f* v) {
    const float energy = floatDotKernels().dot32f(v, v, kSubframe);
    return energy > 0 ? 1 / std::sqrt(energy) : 0;
}

// Correlation of target x and response h.
void correlate(const Vek32f* h, const Vek32f* x, Vek32f* d) {
    Vek32f target[2 * kSubframe] = {};
    std::copy_n(x, kSubframe, target);
    floatCorrKernels().corr32f(h, target, kSubframe, kSubframe, d);
}

// Signs (+1, -1) of the sum of the correlation d and the residual r, each over its energy's root, and the lanes of that
// sum's maxima; d takes the signs. Returns the track of the largest.
int presetSigns(Vek32f* d, const Vek32f* r, signed char* sign, int8_t* peaks) {
    const float dScale = inverseRoot(d);
    const float rScale = inverseRoot(r);
    float weight[kSubframe];
    for (int i = 0; i < kSubframe; ++i) {
        const float v = rScale * r[i] + dScale * d[i];
        sign[i] = v >= 0 ? 1 : -1;
        weight[i] = std::abs(v);
        d[i] = v >= 0 ? d[i] : -d[i];
    }
    int first = 0;
    float most = -1;
    for (int t = 0; t < kTracks; ++t) {
        int best = t;
        for (int i = t; i < kSubframe; i += kTracks) {
            best = weight[i] > weight[best] ? i : best;
        }
        peaks[t] = static_cast<int8_t>(best / kTracks);
        first = weight[best] > most ? t : first;
        most = std::max(most, weight[best]);
    }
    return first;
}

} // namespace

void searchPairs(const Vek32f* x, const Vek32f* r, const Vek32f* h, int pulses, PulsesFound& found) {
    Vek32f d[kSubframe];
    int8_t peaks[kTracks];
    correlate(h, x, d);
    found.firstTrack = presetSigns(d, r, found.sign, peaks);
    FloatPulseField field;
    Vek32f sign[kSubframe];
    for (int i = 0; i < kSubframe; ++i) {
        const int slot = pulses::slotOnFive(i);
        field.d[slot] = d[i];
        sign[slot] = found.sign[i];
    }
    // The tracks are visited in a circle from that of the largest.
    int8_t tracks[kMostPulses];
    for (int n = 0; n < pulses; ++n) {
        tracks[n] = static_cast<int8_t>((found.firstTrack + n) % kTracks);
    }
    Pulse best[kMostPulses];
    const FloatPulseKernels& kernels = floatPulseKernels();
    kernels.field(h, sign, field);
    kernels.pairs(field, tracks, peaks, pulses, best);
    for (int n = 0; n < pulses; ++n) {
        found.positions[n] = best[n].lane * kTracks + best[n].track;
    }
}

} // namespace vek::floatpulses
