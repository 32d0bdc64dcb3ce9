#include "callgraph.h"

#include "fault.h"
#include "text.h"

#include <map>

namespace krlab {

namespace {

/// "(12) name" gives the number its name, "(12)" stands for it from then on.
class Names {
public:
    const std::string& of(std::string_view text) {
        const size_t end = text.find(')');
        if (!text.starts_with("(") || end == std::string_view::npos) {
            return m_names[std::string(text)] = text;
        }
        std::string& name = m_names[std::string(text.substr(0, end + 1))];
        if (const std::string_view told = trimmed(text.substr(end + 1)); !told.empty()) {
            name = told;
        }
        return name;
    }

private:
    std::map<std::string, std::string> m_names;
};

} // namespace

std::vector<CallEdge> parseCallgraph(const std::string& file, std::string_view text) {
    std::vector<CallEdge> edges;
    Names functions;
    Names objects;
    CallEdge next;
    bool inCall = false;
    long long number = 0;
    if (!text.starts_with("# callgrind format")) {
        throw Fault(file, "is no dump of callgrind");
    }
    for (const std::string_view line : split(text, '\n')) {
        ++number;
        const size_t equal = line.find('=');
        const std::string_view key = equal == std::string_view::npos ? "" : line.substr(0, equal);
        const std::string_view value = equal == std::string_view::npos ? "" : line.substr(equal + 1);
        if (key == "ob") {
            next.callerObject = objects.of(value);
        } else if (key == "cob") {
            objects.of(value);
        } else if (key == "fn") {
            next.caller = functions.of(value);
        } else if (key == "cfn") {
            next.callee = functions.of(value);
        } else if (key == "calls") {
            next.calls = integerOf(value.substr(0, value.find(' '))).value_or(-1);
            inCall = true;
        } else if (inCall) {
            // The place in the caller, then the cost.
            const size_t blank = line.rfind(' ');
            const auto cost = blank == std::string_view::npos ? std::nullopt : integerOf(line.substr(blank + 1));
            if (!cost || next.calls < 0) {
                throw Fault(file, number, "a call without its cost");
            }
            next.instructions = *cost;
            edges.push_back(next);
            inCall = false;
        }
    }
    return edges;
}

} // namespace krlab
