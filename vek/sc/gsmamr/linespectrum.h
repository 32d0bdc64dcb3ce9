// Line spectra of AMR as the quantiser and the frames of silence share them.
#pragma once

#include "sc/common/spacing.h"
#include "sc/g729/lsptables.h"
#include "sc/gsmamr/rates.h"

namespace vek::gsmamr {

constexpr Vek16s kLsfGap = 205; // 50 Hz, Q15 of the sampling rate

// Pairs (Q15) of frequencies; those beyond half the sampling rate, which a damaged history may give, count as it, and
// those below 0 as 0.
void lsfToLsp(const Vek16s* lsf, Vek16s* lsp);

// Quantiser in three parts, for all rates but 12.2. In frames of silence *start receives the start residual; else it is
// not used. residual is the last frame's, and receives this one's.
void quantiseBy3(Rate rate, const Vek16s* lsp, Vek16s* residual, Vek16s* quantised, Vek16s* index, Vek16s* start);

} // namespace vek::gsmamr
