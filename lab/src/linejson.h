// What is measured, as JSON: how a document begins with each of its lines.
#pragma once

#include "line.h"

#include <nlohmann/json.hpp>

namespace krlab {

/// The function with its family, and the parameters by their names.
inline nlohmann::json lineJson(const Line& line) {
    nlohmann::json parameters = nlohmann::json::object();
    for (const Parameter& parameter : line.parameters) {
        parameters[parameter.name] = parameter.value;
    }
    return {{"function", line.function}, {"parameters", std::move(parameters)}, {"family", familyOf(line.function)}};
}

} // namespace krlab
