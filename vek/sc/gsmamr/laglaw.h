// Ranges and indices of the pitch lag: TS 26.090 5.6.1, by rate and subframe.
#pragma once

#include "sc/gsmamr/sizes.h"
#include "vekdefs.h"

namespace vek::gsmamr {

// A lag in whole samples and thirds or sixths.
struct Lag {
    int whole;
    int fraction;
};

// How a subframe's lag is told.
struct LagLaw {
    bool sixths;   // else thirds
    bool relative; // to the subframe before
    bool coarse;   // relative in four bits: thirds only in the middle
    int shortest;  // of the rate
    int below;     // the range's beginning below the lag that it goes by
    int width;     // its last element from the first
    int lastSplit; // longest lag with fractions, where not relative
    int indexBits;

    LagLaw(int subFrame, VekSpchBitRate mode);
};

// The whole lags that are tried around `around`.
struct LagRange {
    int first;
    int last;

    LagRange(const LagLaw& law, int around);
    // The middle of the coarse form for the former lag.
    int middle(int former) const;
};

int encodeLag(const LagLaw& law, const LagRange& range, int former, Lag lag);
Lag decodeLag(const LagLaw& law, const LagRange& range, int former, int index);

} // namespace vek::gsmamr
