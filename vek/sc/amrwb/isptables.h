// Tables of the cosine that the conversions of immittance spectra share.
#pragma once

#include "vekdefs.h"

namespace vek::amrwb {

extern const Vek16s kIspGrid[101];      // cos(pi i / 100), Q15
extern const Vek16s kIspCos[129];       // cos(pi i / 128), Q15
extern const Vek16s kIspAcosSlope[128]; // of the frequency over the cosine within a step, Q11

} // namespace vek::amrwb
