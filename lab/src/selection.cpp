#include "selection.h"

#include <algorithm>
#include <map>

namespace krlab {

namespace {

/// Values of one parameter, in the order in which they occur.
struct Values {
    std::string name;
    std::vector<std::string> values;
};

/// One function with the values of its lines.
struct Section {
    std::string function;
    std::vector<Values> parameters;
};

/// A name that two parameters bear reaches both at once: such a test walks its own values, and the line is among them.
bool canBeSet(const Line& line, const std::string& name) {
    return !name.ends_with(secondMark) && line.value(name + std::string(secondMark)) == nullptr;
}

std::vector<Section> sectionsOf(const std::vector<Line>& lines) {
    std::vector<Section> sections;
    std::map<std::string, size_t> index;
    for (const Line& line : lines) {
        const auto [at, isNew] = index.try_emplace(line.function, sections.size());
        if (isNew) {
            sections.push_back({line.function, {}});
        }
        std::vector<Values>& parameters = sections[at->second].parameters;
        for (const Parameter& parameter : line.parameters) {
            if (!canBeSet(line, parameter.name)) {
                continue;
            }
            auto found = std::find_if(parameters.begin(), parameters.end(),
                                      [&](const Values& values) { return values.name == parameter.name; });
            if (found == parameters.end()) {
                found = parameters.insert(parameters.end(), {parameter.name, {}});
            }
            if (std::find(found->values.begin(), found->values.end(), parameter.value) == found->values.end()) {
                found->values.push_back(parameter.value);
            }
        }
    }
    return sections;
}

/// "40; 80", all of it as often as wanted.
std::string listOf(const std::vector<std::string>& values, int repeats) {
    std::string list;
    for (int i = 0; i < repeats; ++i) {
        for (const std::string& value : values) {
            list += (list.empty() ? "" : "; ") + value;
        }
    }
    return list;
}

bool hasParameter(const Section& section, const std::string& name) {
    return std::any_of(section.parameters.begin(), section.parameters.end(),
                       [&](const Values& values) { return values.name == name; });
}

} // namespace

Selection selectLines(const std::vector<Line>& lines, const RigKeys& userKeys, const std::string& userIni,
                      int repeats) {
    const std::vector<Section> sections = sectionsOf(lines);
    Selection selection;
    std::vector<KeyValue> givenWay;
    for (const RigKey& key : userKeys.without("ftFHPiI").keys) {
        const KeyValue data = key.letter == 'd' ? splitData(key.argument) : KeyValue();
        if (std::any_of(sections.begin(), sections.end(),
                        [&](const Section& section) { return hasParameter(section, data.name); })) {
            givenWay.push_back(data);
        } else {
            selection.keys.push_back(key.word());
        }
    }
    selection.ini = userIni;
    if (!userIni.empty() && userIni.back() != '\n') {
        selection.ini += '\n';
    }
    for (const Section& section : sections) {
        selection.keys.push_back("-f=" + section.function);
        selection.ini += "[" + section.function + "]\n";
        for (const KeyValue& data : givenWay) {
            if (!hasParameter(section, data.name)) {
                selection.ini += data.name + "=" + data.value + "\n";
            }
        }
        for (const Values& values : section.parameters) {
            const bool first = &values == &section.parameters.front();
            selection.ini += values.name + "=" + listOf(values.values, first ? repeats : 1) + "\n";
        }
    }
    return selection;
}

size_t gridSize(const std::vector<Line>& lines) {
    size_t size = 0;
    for (const Section& section : sectionsOf(lines)) {
        size_t product = 1;
        for (const Values& values : section.parameters) {
            product *= values.values.size();
        }
        size += product;
    }
    return size;
}

} // namespace krlab
