// Sizes that the functions of AMR share; many are those of G.729.
#pragma once

#include "sc/common/fixmath.h"
#include "sc/g729/sizes.h"

namespace vek::gsmamr {

using namespace fix;

using g729::kLongestDelay;
using g729::kOrder;
using g729::kShortestDelay;
using g729::kSubframe;
using g729::kTracks;
constexpr int kFrame = 160;
constexpr int kSubframes = 4;

} // namespace vek::gsmamr
