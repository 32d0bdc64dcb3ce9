// Codebooks of the quantiser of line spectral pairs; the rule that makes them is in the public header.
#pragma once

#include "vekdefs.h"

namespace vek::rta {

constexpr int kMostLspOrder = 10;
constexpr int kMostLspStages = 4;
constexpr int kLspEntries = 64;

struct LspBook {
    int order;
    VekPCMFrequency freq;
    int stages;
    // Entries side by side, so that a kernel measures eight at a time.
    alignas(32) float rows[kMostLspStages][kMostLspOrder][kLspEntries];
};

} // namespace vek::rta
