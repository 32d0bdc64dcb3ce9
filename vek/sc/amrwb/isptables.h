// Tables of the cosine that the conversions of immittance spectra share.
#pragma once

#include <array>

#include "vekdefs.h"

namespace vek::amrwb {

extern const Vek16s kIspGrid[101];      // cos(pi i / 100), Q15
extern const Vek16s kIspCos[129];       // cos(pi i / 128), Q15
extern const Vek16s kIspAcosSlope[128]; // of the frequency over the cosine within a step, Q11

// A step of that cosine: where it begins, and how far it rises. The last one has no next, and nothing lies within it.
struct IspStep {
    Vek16s begin, rise;
};
extern const std::array<IspStep, 129> kIspSteps;

// The last of the steps whose cosine is not below any value of upper byte k - 128.
extern const std::array<Vek8u, 256> kIspPlace;

} // namespace vek::amrwb
