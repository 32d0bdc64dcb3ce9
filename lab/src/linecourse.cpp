#include "linecourse.h"

#include "rigkeys.h"

#include <algorithm>
#include <utility>

namespace krlab {

double Readings::smallest() const {
    return *std::min_element(clocks.begin(), clocks.end());
}

double Readings::median() const {
    std::vector<double> sorted = clocks;
    std::sort(sorted.begin(), sorted.end());
    const size_t middle = sorted.size() / 2;
    return sorted.size() % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

double Readings::spread() const {
    if (clocks.size() < 3) {
        return 1;
    }
    std::vector<double> sorted = clocks;
    std::nth_element(sorted.begin(), sorted.begin() + 2, sorted.end());
    const double least = smallest();
    return least > 0 ? (sorted[2] - least) / least : 1;
}

void LineCourse::take(const Pass& pass, bool looped) {
    for (const Figure& figure : pass.figures) {
        if (figure.clocks <= 0) {
            continue;
        }
        const auto [at, isNew] = m_index.try_emplace(figure.line, m_lines.size());
        if (isNew) {
            m_lines.emplace_back().line = figure.line;
        }
        Readings& readings = m_lines[at->second];
        if (looped && !readings.looped) {
            readings.looped = true;
            readings.clocks.clear();
        }
        if (readings.looped == looped) {
            readings.clocks.push_back(figure.clocks);
            readings.elements = figure.elements;
        }
    }
}

std::vector<Line> LineCourse::shortLines() const {
    std::vector<Line> lines;
    for (const Readings& readings : m_lines) {
        if (readings.looped || readings.smallest() < shortCall) {
            lines.push_back(readings.line);
        }
    }
    return lines;
}

std::vector<Line> LineCourse::restless(double accuracy, bool looped) const {
    std::vector<Line> lines;
    for (const Readings& readings : m_lines) {
        if (readings.looped == looped && readings.spread() > accuracy) {
            lines.push_back(readings.line);
        }
    }
    return lines;
}

std::vector<std::string> shortCallKeys(const std::vector<std::string>& userKeys) {
    for (const RigKey& key : splitKeys(userKeys).keys) {
        if (key.letter == 'd' && splitData(key.argument).name == "Method") {
            return {};
        }
    }
    return {"-dMethod=Iterative", "-dStartNumLoops=64"};
}

PassRequest shortCallRequest(Subject subject, const std::vector<std::string>& userKeys, double timeLimit) {
    PassRequest request;
    request.subject = std::move(subject);
    request.keys = shortCallKeys(userKeys);
    request.keys.insert(request.keys.end(), userKeys.begin(), userKeys.end());
    request.timeLimit = timeLimit;
    return request;
}

} // namespace krlab
