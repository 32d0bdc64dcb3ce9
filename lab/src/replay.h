// Which line is meant: a row of a table, or a line in words, brought together with what the rig has.
#pragma once

#include "pass.h"

#include <string>
#include <vector>

namespace krlab {

struct ReplayTarget {
    Line line;
    bool known = false; ///< the row's old figure is known
    Figure figure;
};

/// `words` are TABLE:ROW, or a line in one word or several. `tests` are all tests of the rig with their names. Throws
/// Fault with the nearest name for a function or parameter that the rig does not have.
ReplayTarget replayTarget(const std::vector<std::string>& words, const std::vector<TestParameters>& tests);

/// The line's figure in the pass, or null. Remarks of the test, such as (decimate), need not be given.
const Figure* replayed(const Line& line, const Pass& pass);

/// Why no figure came back.
std::string replayFailure(const Line& line, const Pass& pass);

} // namespace krlab
