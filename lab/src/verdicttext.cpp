// The report of a comparison for the terminal.
#include "verdict.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>

namespace krlab {

namespace {

// What stayed undecided is listed as far as a reader looks at it.
constexpr size_t mostListed = 20;
constexpr size_t mostHosts = 8;

// "+4.2 %"
std::string change(double ratio) {
    return std::isfinite(ratio) ? fmt::format("{:+.1f}", (ratio - 1) * 100) : "?";
}

std::string interval(const LineVerdict& line) {
    return std::isfinite(line.high) ? change(line.low) + " .. " + change(line.high) : "?";
}

// Four digits that count, whole from 1000 on.
std::string clocks(double value) {
    const int decimals = value >= 1000 ? 0 : value >= 100 ? 1 : value >= 10 ? 2 : 3;
    return fmt::format("{:.{}f}", value, decimals);
}

std::string lineList(const std::string& title, std::vector<LineVerdict> lines, size_t most) {
    if (lines.empty()) {
        return "";
    }
    std::stable_sort(lines.begin(), lines.end(), [](const LineVerdict& a, const LineVerdict& b) {
        return std::abs(std::log(a.ratio)) > std::abs(std::log(b.ratio));
    });
    std::string text = fmt::format("\n{}\n {:>7}  {:>16}  {:>9}  {:>9}  {:>6}  line\n", title, "change%", "interval%",
                                   "old", "new", "passes");
    for (size_t i = 0; i < std::min(lines.size(), most); ++i) {
        const LineVerdict& line = lines[i];
        text += fmt::format(" {:>7}  {:>16}  {:>9}  {:>9}  {:>6}  {}\n", change(line.ratio), interval(line),
                            clocks(line.older), clocks(line.newer), line.passes, line.line.text());
    }
    if (lines.size() > most) {
        text += fmt::format(" ... and {} more\n", lines.size() - most);
    }
    return text;
}

using Groups = std::map<std::string, std::vector<LineVerdict>>;

std::string groupTable(const std::string& title, const Groups& groups, bool changedOnly) {
    size_t width = title.size();
    for (const auto& [name, lines] : groups) {
        width = std::max(width, name.size());
    }
    std::string rows;
    for (const auto& [name, lines] : groups) {
        const VerdictCounts counts = countVerdicts(lines);
        if (changedOnly && counts.slower + counts.faster == 0) {
            continue;
        }
        rows += fmt::format(" {:<{}}  {:>5}  {:>6}  {:>6}  {:>5}  {:>9}  {:>7}\n", name, width, counts.lines,
                            counts.slower, counts.faster, counts.same, counts.undecided, change(counts.geometricMean));
    }
    if (rows.empty()) {
        return "";
    }
    return fmt::format("\n {:<{}}  {:>5}  {:>6}  {:>6}  {:>5}  {:>9}  {:>7}\n", title, width, "lines", "slower",
                       "faster", "same", "undecided", "change%") +
           rows;
}

std::string listOf(const std::string& title, const std::vector<Line>& lines) {
    if (lines.empty()) {
        return "";
    }
    std::string text = fmt::format("\n{} ({})\n", title, lines.size());
    for (size_t i = 0; i < std::min(lines.size(), mostListed); ++i) {
        text += " " + lines[i].text() + "\n";
    }
    if (lines.size() > mostListed) {
        text += fmt::format(" ... and {} more\n", lines.size() - mostListed);
    }
    return text;
}

// Lines that changed on some kinds of machines and not on all, a section for each kind.
std::string kindLists(const std::vector<KindVerdicts>& kinds) {
    std::map<Line, std::map<Verdict, size_t>> found;
    for (const KindVerdicts& kind : kinds) {
        for (const LineVerdict& line : kind.lines) {
            ++found[line.line][line.verdict];
        }
    }
    std::string text;
    for (const KindVerdicts& kind : kinds) {
        for (const Verdict verdict : {Verdict::slower, Verdict::faster}) {
            std::vector<LineVerdict> lines;
            for (const LineVerdict& line : kind.lines) {
                if (line.verdict == verdict && found[line.line][verdict] < kinds.size()) {
                    lines.push_back(line);
                }
            }
            const std::string title =
                fmt::format("{} on {}, and not on all kinds of machines ({})",
                            verdict == Verdict::slower ? "Slower" : "Faster", kind.name(), lines.size());
            text += lineList(title, lines, lines.size());
        }
    }
    return text;
}

std::string kindTable(const std::vector<KindVerdicts>& kinds) {
    if (kinds.empty()) {
        return "";
    }
    Groups groups;
    std::string hosts;
    for (const KindVerdicts& kind : kinds) {
        groups[kind.name()] = kind.lines;
        const size_t told = std::min(kind.hosts.size(), mostHosts);
        hosts +=
            fmt::format(" {}: {} rounds on {}{}\n", kind.name(), kind.rounds,
                        fmt::join(kind.hosts.begin(), kind.hosts.begin() + static_cast<std::ptrdiff_t>(told), ", "),
                        told < kind.hosts.size() ? fmt::format(" and {} more", kind.hosts.size() - told) : "");
    }
    return groupTable("machine", groups, false) + hosts;
}

// What was measured; a table tells less than the lab itself knows.
std::string head(const Identity& identity) {
    if (!identity.program.path.empty()) {
        return describe(identity);
    }
    return fmt::format("{}\n  {}\n  {}\n  {}, {}, {}", identity.subject, identity.rigLibrary, identity.rigCpu,
                       identity.machine.host, identity.machine.kernel, identity.started);
}

std::string commonText(const VerdictReport& report) {
    if (report.lines.empty() || report.unit != "clocks") {
        return "";
    }
    const char* told = report.commonRemoved ? "which may be the machine's drift and was taken out"
                       : report.commonReal  ? "on which the rounds agree: it is in the lines' figures"
                                            : "which the rounds do not tell from nothing";
    return fmt::format("All lines together: {} %, {}.\n", change(report.commonRatio), told);
}

} // namespace

std::string describe(const VerdictReport& report) {
    std::map<Verdict, std::vector<LineVerdict>> byVerdict;
    Groups functions;
    Groups families;
    for (const LineVerdict& line : report.lines) {
        byVerdict[line.verdict].push_back(line);
        functions[line.line.function].push_back(line);
        families[familyOf(line.line.function)].push_back(line);
    }
    const VerdictCounts counts = countVerdicts(report.lines);
    std::string text = fmt::format("old  {}\nnew  {}\n", head(report.older), head(report.newer));
    text += lineList(fmt::format("Slower ({})", counts.slower), byVerdict[Verdict::slower], counts.slower);
    text += lineList(fmt::format("Faster ({})", counts.faster), byVerdict[Verdict::faster], counts.faster);
    text += groupTable("changed function", functions, true);
    text += groupTable("family", families, false);
    text += kindTable(report.kinds);
    if (report.kinds.size() > 1) {
        text += kindLists(report.kinds);
    }
    text += lineList(fmt::format("Undecided ({}), the largest estimates", counts.undecided),
                     byVerdict[Verdict::undecided], mostListed);
    text += listOf("Only in the old one", report.onlyOld);
    text += listOf("Only in the new one", report.onlyNew);
    text += "\n";
    for (const std::string& remark : report.remarks) {
        text += remark + "\n";
    }
    text += commonText(report);
    if (report.unit != "clocks") {
        text += fmt::format("{} lines: {} with more {}, {} with fewer, {} same, {} undecided; geometric mean {:.6f} "
                            "(threshold {:.3g} %)\n",
                            counts.lines, counts.slower, report.unit, counts.faster, counts.same, counts.undecided,
                            counts.geometricMean, report.threshold * 100);
        return text;
    }
    const std::string rounds = report.rounds > 0 ? fmt::format(", {} rounds", report.rounds) : "";
    text += fmt::format("{} lines: {} slower, {} faster, {} same, {} undecided; geometric mean {:.4f} "
                        "(threshold {:.3g} %, confidence {:.4g} %{})\n",
                        counts.lines, counts.slower, counts.faster, counts.same, counts.undecided, counts.geometricMean,
                        report.threshold * 100, report.confidence * 100, rounds);
    return text;
}

} // namespace krlab
