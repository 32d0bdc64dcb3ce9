#include "verdict.h"

#include "fault.h"
#include "linejson.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

nlohmann::json lineJson(const LineVerdict& verdict) {
    nlohmann::json object = lineJson(verdict.line);
    object["old"] = verdict.older;
    object["new"] = verdict.newer;
    object["ratio"] = verdict.ratio;
    const bool known = std::isfinite(verdict.high);
    object["low"] = known ? nlohmann::json(verdict.low) : nlohmann::json();
    object["high"] = known ? nlohmann::json(verdict.high) : nlohmann::json();
    object["passes"] = verdict.passes;
    object["verdict"] = verdictText(verdict.verdict);
    return object;
}

template <typename Entry>
nlohmann::json listJson(const std::vector<Entry>& lines) {
    nlohmann::json object = nlohmann::json::array();
    for (const Entry& line : lines) {
        object.push_back(lineJson(line));
    }
    return object;
}

nlohmann::json summaryJson(const std::vector<LineVerdict>& lines) {
    const VerdictCounts counts = countVerdicts(lines);
    return {{"lines", counts.lines}, {"slower", counts.slower},       {"faster", counts.faster},
            {"same", counts.same},   {"undecided", counts.undecided}, {"geometric_mean", counts.geometricMean}};
}

} // namespace

const char* verdictText(Verdict verdict) {
    switch (verdict) {
    case Verdict::slower:
        return "slower";
    case Verdict::faster:
        return "faster";
    case Verdict::same:
        return "same";
    case Verdict::undecided:
        break;
    }
    return "undecided";
}

Verdict judge(double ratio, double low, double high, double threshold) {
    const double most = 1 + threshold;
    if (low > 1 && ratio > most) {
        return Verdict::slower;
    }
    if (high < 1 && ratio < 1 / most) {
        return Verdict::faster;
    }
    return low >= 1 / most && high <= most ? Verdict::same : Verdict::undecided;
}

VerdictCounts countVerdicts(const std::vector<LineVerdict>& lines) {
    VerdictCounts counts;
    counts.lines = lines.size();
    double sum = 0;
    for (const LineVerdict& line : lines) {
        counts.slower += line.verdict == Verdict::slower;
        counts.faster += line.verdict == Verdict::faster;
        counts.same += line.verdict == Verdict::same;
        counts.undecided += line.verdict == Verdict::undecided;
        sum += std::log(line.ratio);
    }
    counts.geometricMean = lines.empty() ? 1.0 : std::exp(sum / static_cast<double>(lines.size()));
    return counts;
}

std::string KindVerdicts::name() const {
    return setting.empty() ? machine : machine + ", " + setting;
}

nlohmann::json toJson(const VerdictReport& report) {
    nlohmann::json object = {{"schema", "krlab-verdict-1"},
                             {"old", toJson(report.older)},
                             {"new", toJson(report.newer)},
                             {"unit", report.unit},
                             {"threshold", report.threshold},
                             {"confidence", report.confidence},
                             {"lines", listJson(report.lines)},
                             {"only_old", listJson(report.onlyOld)},
                             {"only_new", listJson(report.onlyNew)},
                             {"rounds", report.rounds},
                             {"common", {{"ratio", report.commonRatio}, {"removed", report.commonRemoved}}},
                             {"remarks", report.remarks},
                             {"summary", summaryJson(report.lines)}};
    if (!report.kinds.empty()) {
        nlohmann::json kinds = nlohmann::json::array();
        for (const KindVerdicts& kind : report.kinds) {
            kinds.push_back({{"machine", kind.machine},
                             {"features", kind.features},
                             {"setting", kind.setting},
                             {"hosts", kind.hosts},
                             {"rounds", kind.rounds},
                             {"lines", listJson(kind.lines)},
                             {"summary", summaryJson(kind.lines)}});
        }
        object["machines"] = std::move(kinds);
    }
    return object;
}

int exitStatus(const VerdictReport& report, bool strict) {
    if (report.incomplete || !report.onlyOld.empty()) {
        return exitFailed;
    }
    VerdictCounts counts = countVerdicts(report.lines);
    for (const KindVerdicts& kind : report.kinds) {
        const VerdictCounts ofKind = countVerdicts(kind.lines);
        counts.slower += ofKind.slower;
        counts.undecided += ofKind.undecided;
    }
    if (counts.slower > 0) {
        return exitWorse;
    }
    return strict && counts.undecided > 0 ? exitUndecided : exitGood;
}

} // namespace krlab
