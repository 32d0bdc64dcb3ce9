#include "budget.h"

#include "fault.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

using Json = nlohmann::ordered_json;

const Json& memberOf(const Json& object, const std::string& file, const std::string& place, const char* name) {
    if (!object.is_object() || !object.contains(name)) {
        throw Fault(file, fmt::format("{} has no \"{}\"", place, name));
    }
    return object.at(name);
}

double positiveOf(const Json& object, const std::string& file, const std::string& place, const char* name) {
    const Json& value = memberOf(object, file, place, name);
    if (!value.is_number() || !(value.get<double>() > 0) || !std::isfinite(value.get<double>())) {
        throw Fault(file, fmt::format("\"{}\" of {} is no number above 0", name, place));
    }
    return value.get<double>();
}

std::string textOf(const Json& value, const std::string& file, const std::string& place) {
    if (!value.is_string()) {
        throw Fault(file, place + " is no text");
    }
    return value.get<std::string>();
}

const Json& listOf(const Json& object, const std::string& file, const std::string& place, const char* name) {
    const Json& value = memberOf(object, file, place, name);
    if (!value.is_array()) {
        throw Fault(file, fmt::format("\"{}\" of {} is no list", name, place));
    }
    return value;
}

BudgetCall parseCall(const Json& object, const std::string& file, const std::string& place) {
    BudgetCall call;
    call.line.function = textOf(memberOf(object, file, place, "function"), file, "\"function\" of " + place);
    call.calls = positiveOf(object, file, place, "calls");
    const Json& parameters = memberOf(object, file, place, "parameters");
    if (!parameters.is_object()) {
        throw Fault(file, fmt::format("\"parameters\" of {} is no object", place));
    }
    for (const auto& [name, value] : parameters.items()) {
        call.line.parameters.push_back(
            {name, value.is_number_integer() ? value.dump()
                                             : textOf(value, file, fmt::format("parameter {} of {}", name, place))});
    }
    return call;
}

} // namespace

std::vector<Budget> parseBudgets(const std::string& file, const std::string& text) {
    Json document;
    try {
        document = Json::parse(text);
    } catch (const Json::parse_error& error) {
        throw Fault(file, fmt::format("is no JSON: {}", error.what()));
    }
    if (!document.is_object() || document.value("schema", Json()) != "krlab-budget-1") {
        throw Fault(file, "is no budget: \"schema\" is not \"krlab-budget-1\"");
    }
    std::vector<Budget> budgets;
    for (const Json& codec : listOf(document, file, "the file", "codecs")) {
        Budget budget;
        budget.name = textOf(memberOf(codec, file, "a codec", "name"), file, "\"name\" of a codec");
        budget.frameSeconds = positiveOf(codec, file, budget.name, "frame_seconds");
        for (const Json& call : listOf(codec, file, budget.name, "calls")) {
            budget.calls.push_back(
                parseCall(call, file, fmt::format("call {} of {}", budget.calls.size() + 1, budget.name)));
        }
        if (codec.contains("missing")) {
            for (const Json& word : listOf(codec, file, budget.name, "missing")) {
                budget.missing.push_back(textOf(word, file, "\"missing\" of " + budget.name));
            }
        }
        budgets.push_back(std::move(budget));
    }
    return budgets;
}

BudgetSum sumBudget(const Budget& budget, const std::map<Line, double>& clocks) {
    BudgetSum sum;
    for (const BudgetCall& call : budget.calls) {
        const auto at = clocks.find(call.line);
        sum.shares.push_back({call, at == clocks.end() ? -1 : at->second});
        if (at == clocks.end()) {
            sum.whole = false;
        } else {
            sum.clocks += sum.shares.back().frame();
        }
    }
    std::stable_sort(sum.shares.begin(), sum.shares.end(),
                     [](const BudgetShare& a, const BudgetShare& b) { return a.frame() > b.frame(); });
    return sum;
}

} // namespace krlab
