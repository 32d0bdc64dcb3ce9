// The table of commands: each of these adds one with its options.
#pragma once

#include "program.h"

namespace krlab {

void addAb(Program& program);

} // namespace krlab
