// Levels of the least mean square error for a normal distribution, 64 in all: the positive half, Q12. Computed by
// alternating between middles of neighbours and centroids of cells until nothing moved.
#include "sc/g728/tables.h"

namespace vek::g728 {

const int16_t kTrellisLevels[kHalfLevels] = {137,  411,  685,  961,  1238, 1517,  1798,  2082,  2370,  2661, 2957,
                                             3258, 3565, 3880, 4201, 4532, 4873,  5226,  5592,  5973,  6373, 6794,
                                             7240, 7717, 8231, 8793, 9417, 10122, 10946, 11950, 13273, 15336};

} // namespace vek::g728
