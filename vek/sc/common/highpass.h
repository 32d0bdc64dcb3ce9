// What the recursive high-pass filters of second order share: their sections' memory in the caller's bytes.
#pragma once

#include <cstring>

#include "vekdefs.h"

namespace vek {

/// All zeros is the state of rest. The outputs are halved 32-bit samples.
struct HighPassMemory {
    Vek32s y1, y2;
    Vek16s x1, x2;
};

struct HighPassSection {
    Vek16s b0, b1; // symmetric numerator b0, b1, b0
    int a1, a2;    // feedback, sign turned
    int shift;     // from the doubled sum to a sample in the upper half
    int outShift;  // amplification of the output alone
};

inline VekStatus initHighPass(char* pMem) {
    if (!pMem) {
        return vekStsNullPtrErr;
    }
    std::memset(pMem, 0, sizeof(HighPassMemory));
    return vekStsNoErr;
}

/// Calls run(memory) with what stands in the caller's buffer, which has no alignment, and writes it back.
template <class Run>
void withHighPassMemory(char* pMem, Run run) {
    HighPassMemory m;
    std::memcpy(&m, pMem, sizeof m);
    run(m);
    std::memcpy(pMem, &m, sizeof m);
}

} // namespace vek
