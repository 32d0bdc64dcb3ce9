// The report as one HTML page that needs nothing but itself: styles, scripts and the chart library are put into the
// program when it is built (lab/page).
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace krlab {

/// The page with this data (reportData) in it.
std::string reportPage(const nlohmann::json& data);

} // namespace krlab
