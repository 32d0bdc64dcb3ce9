#include "countcomparison.h"

#include "signedrank.h"

#include <algorithm>
#include <map>

namespace krlab {

VerdictReport compareCounts(const std::array<std::vector<std::vector<Figure>>, 2>& runs, double threshold) {
    std::array<std::map<Line, std::vector<double>>, 2> counts;
    for (size_t side = 0; side < runs.size(); ++side) {
        for (const std::vector<Figure>& run : runs[side]) {
            for (const Figure& figure : run) {
                counts[side][figure.line].push_back(figure.clocks);
            }
        }
    }
    VerdictReport report;
    report.unit = "instructions";
    report.threshold = threshold;
    report.confidence = 1;
    for (const auto& [line, older] : counts[0]) {
        const auto at = counts[1].find(line);
        if (at == counts[1].end()) {
            report.onlyOld.push_back(line);
            continue;
        }
        const std::vector<double>& newer = at->second;
        const auto [leastOld, mostOld] = std::minmax_element(older.begin(), older.end());
        const auto [leastNew, mostNew] = std::minmax_element(newer.begin(), newer.end());
        LineVerdict result;
        result.line = line;
        result.older = medianOf(older);
        result.newer = medianOf(newer);
        result.ratio = result.newer / result.older;
        result.low = *leastNew / *mostOld;
        result.high = *mostNew / *leastOld;
        result.passes = static_cast<int>(std::min(older.size(), newer.size()));
        result.verdict = judge(result.ratio, result.low, result.high, threshold);
        report.lines.push_back(result);
    }
    for (const auto& [line, newer] : counts[1]) {
        if (counts[0].count(line) == 0) {
            report.onlyNew.push_back(line);
        }
    }
    if (report.lines.empty()) {
        report.incomplete = true;
        report.remarks.push_back("the two sides have no line in common");
    }
    return report;
}

} // namespace krlab
