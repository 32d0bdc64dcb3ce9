// The predictive two-stage quantiser of line spectral frequencies: its tables. G.729 3.2.4 and B.4.2.2.
#pragma once

#include "vekdefs.h"

namespace vek::g729 {

constexpr int kHistory = 4;

// How far apart a code vector's elements are brought, twice; where frequencies begin and end; their least distance.
template <class T>
struct LsfBounds {
    T wideGap;
    T narrowGap;
    T lowest;
    T highest;
    T leastDistance;
};

// One moving-average predictor over the last four code vectors: weights Q15, newest first; what they leave of 1.0, Q15;
// the inverse of that, Q12.
struct LsfPredictor {
    Vek16s weight[kHistory][10];
    Vek16s rest[10];
    Vek16s inverse[10];
};

// Frequencies in radians, Q13. The second stage serves the lower five and the upper five elements.
extern const Vek16s kLsfFirst[128][10];
extern const Vek16s kLsfSecond[32][10];
extern const LsfPredictor kLsfPredictors[2];

// Background noise: other predictors, and those rows of the codebooks that its indices stand for.
extern const LsfPredictor kNoisePredictors[2];
extern const Vek8u kNoiseFirst[32];
extern const Vek8u kNoiseLower[16];
extern const Vek8u kNoiseUpper[16];

} // namespace vek::g729
