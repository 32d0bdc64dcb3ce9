// The quadrature mirror filter of G.722 (table 11), Q13; AMR-WB+ halves its rates with it.
#pragma once

#include <cstdint>

namespace vek {

constexpr int kQmfTaps = 24;
inline constexpr int16_t kQmf[kQmfTaps] = {3,    -11, -11,  53,   12,  -156, 32,   362, -210, -805, 951, 3876,
                                           3876, 951, -805, -210, 362, 32,   -156, 12,  53,   -11,  -11, 3};

} // namespace vek
