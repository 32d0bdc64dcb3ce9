#include "fleetverdict.h"

#include "fault.h"
#include "lineverdict.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <map>
#include <set>
#include <tuple>

namespace krlab {

namespace {

// Averages of all pairs of rounds are looked at for what all lines have in common: so many make half a million.
constexpr size_t mostGroups = 1000;

using Pairs = std::array<std::vector<float>, 2>;

// Kind, features and setting.
using KindKey = std::tuple<std::string, std::string, std::string>;

struct Kind {
    std::set<std::string> hosts;
    int rounds = 0;
    std::map<std::uint32_t, Pairs> lines; // by index into the table; logarithms, pairs at one place
};

// One hypothesis: a line on one kind of machine, or over all.
struct Cell {
    const Line* line;
    LowReadings readings;
    double level;
};

std::vector<double> shifted(const std::vector<float>& values, double level) {
    std::vector<double> result;
    result.reserve(values.size());
    for (const float value : values) {
        result.push_back(value - level);
    }
    return result;
}

// Of both sides together: which one is the old one makes no difference.
double levelOf(const Pairs& readings) {
    return std::min(*std::min_element(readings[sideOld].begin(), readings[sideOld].end()),
                    *std::min_element(readings[sideNew].begin(), readings[sideNew].end()));
}

class Judgement {
public:
    Judgement(const Store& store, const FleetChoice& choice) : m_store(store), m_choice(choice) {
        chooseRuns();
        chooseSubjects();
    }
    VerdictReport report();

private:
    void chooseRuns();
    void chooseSubjects();
    void collect();
    void addRound(const FleetRun& run, size_t older, size_t newer);
    void addSingles(size_t pass, Side side);
    std::vector<Cell> cellsOfKinds() const;
    std::vector<Cell> cellsOverAll() const;
    void judge(VerdictReport& report) const;
    void tellCommon(VerdictReport& report) const;
    void tellOneSided(VerdictReport& report) const;
    void tellWhatIsMissing(VerdictReport& report) const;

    const Store& m_store;
    const FleetChoice& m_choice;
    std::vector<FleetRun> m_runs;
    std::array<std::string, 2> m_names;
    FigureTable m_table;
    std::map<KindKey, Kind> m_kinds;
    std::set<std::uint32_t> m_seen[2];
    std::vector<double> m_before;  // clocks of the old side of a round by line; 0 for none
    std::vector<double> m_medians; // of each round: what moved all its lines alike
    std::array<const PassRecord*, 2> m_first{};
};

void Judgement::chooseRuns() {
    std::map<long long, std::string> labels;
    for (const RunRecord& run : m_store.runs()) {
        labels[run.id] = run.label;
    }
    std::string plan;
    for (const FleetRun& run : m_store.fleetRuns()) {
        if (m_choice.plan.empty() || run.plan == m_choice.plan || labels[run.run] == m_choice.plan) {
            plan = run.plan;
        }
    }
    if (plan.empty()) {
        throw Fault(m_choice.plan.empty() ? "the store holds no pass of a fleet; krlab fleet fetch merges them into one"
                                          : fmt::format("the store holds no fleet '{}'", m_choice.plan));
    }
    for (FleetRun& run : m_store.fleetRuns()) {
        if (run.plan == plan) {
            m_runs.push_back(std::move(run));
        }
    }
}

void Judgement::chooseSubjects() {
    const std::vector<std::string>& names = m_runs.front().subjects;
    const auto chosen = [&](const std::string& name, size_t place) {
        if (name.empty() && names.size() <= place) {
            throw Fault(fmt::format("the fleet measured {} alone; a verdict needs two subjects", names.front()));
        }
        if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end()) {
            throw Fault(fmt::format("the fleet has no subject '{}', but {}", name, fmt::join(names, ", ")));
        }
        return name.empty() ? names[place] : name;
    };
    m_names = {chosen(m_choice.older, 0), chosen(m_choice.newer, 1)};
    if (m_names[sideOld] == m_names[sideNew]) {
        throw Fault(fmt::format("'{}' can't be compared with itself", m_names[sideOld]));
    }
    if (m_names[sideOld] != names.front() && m_names[sideNew] != names.front()) {
        throw Fault(
            fmt::format("rounds measure {} beside another subject: one of the two has to be it", names.front()));
    }
}

void Judgement::collect() {
    std::map<long long, const FleetRun*> runs;
    PassFilter filter;
    for (const FleetRun& run : m_runs) {
        runs[run.run] = &run;
        filter.runs.push_back(run.run);
    }
    m_table = m_store.figures(filter);
    // Whatever the order in which tasks ended and were fetched.
    std::map<std::tuple<int, int>, std::array<size_t, 2>> rounds;
    constexpr size_t none = std::numeric_limits<size_t>::max();
    for (size_t i = 0; i < m_table.passes.size(); ++i) {
        const PassRecord& pass = m_table.passes[i];
        const auto side = std::find(m_names.begin(), m_names.end(), pass.subject) - m_names.begin();
        if (side < 2) {
            const auto at = rounds.try_emplace({pass.round, runs[pass.run]->task}, std::array{none, none}).first;
            at->second[static_cast<size_t>(side)] = i;
        }
    }
    for (const auto& [place, passes] : rounds) {
        for (const Side side : {sideOld, sideNew}) {
            if (passes[side] != none) {
                addSingles(passes[side], side);
            }
        }
        if (passes[sideOld] != none && passes[sideNew] != none) {
            addRound(*runs[m_table.passes[passes[sideOld]].run], passes[sideOld], passes[sideNew]);
        }
    }
}

void Judgement::addSingles(size_t pass, Side side) {
    if (m_first[side] == nullptr) {
        m_first[side] = &m_table.passes[pass];
    }
    for (const FigureTable::Entry& entry : m_table.entries[pass]) {
        if (entry.clocks > 0) {
            m_seen[side].insert(entry.line);
        }
    }
}

void Judgement::addRound(const FleetRun& run, size_t older, size_t newer) {
    const Machine& machine = m_table.passes[older].identity.machine;
    Kind& kind = m_kinds[{machineKind(machine), machine.features, run.setting}];
    kind.hosts.insert(machine.host);
    ++kind.rounds;
    m_before.assign(m_table.lines.size(), 0);
    for (const FigureTable::Entry& entry : m_table.entries[older]) {
        m_before[entry.line] = entry.clocks;
    }
    std::vector<double> differences;
    for (const FigureTable::Entry& entry : m_table.entries[newer]) {
        const double before = m_before[entry.line];
        if (!(before > 0) || !(entry.clocks > 0)) {
            continue;
        }
        Pairs& readings = kind.lines[entry.line];
        readings[sideOld].push_back(static_cast<float>(std::log(before)));
        readings[sideNew].push_back(static_cast<float>(std::log(entry.clocks)));
        differences.push_back(std::log(entry.clocks / before));
    }
    if (!differences.empty()) {
        m_medians.push_back(medianOf(std::move(differences)));
    }
}

std::vector<Cell> Judgement::cellsOfKinds() const {
    std::vector<Cell> cells;
    for (const auto& [key, kind] : m_kinds) {
        for (const auto& [line, readings] : kind.lines) {
            cells.push_back({&m_table.lines[line], {shifted(readings[sideOld], 0), shifted(readings[sideNew], 0)}, 0});
        }
    }
    return cells;
}

std::vector<Cell> Judgement::cellsOverAll() const {
    struct All {
        std::vector<double> older;
        std::vector<double> newer;
        double levels = 0;
        int kinds = 0;
    };
    std::map<std::uint32_t, All> lines;
    for (const auto& [key, kind] : m_kinds) {
        for (const auto& [line, readings] : kind.lines) {
            All& all = lines[line];
            const double level = levelOf(readings);
            const auto append = [level](std::vector<double>& to, const std::vector<float>& from) {
                const std::vector<double> values = shifted(from, level);
                to.insert(to.end(), values.begin(), values.end());
            };
            append(all.older, readings[sideOld]);
            append(all.newer, readings[sideNew]);
            all.levels += level;
            ++all.kinds;
        }
    }
    std::vector<Cell> cells;
    cells.reserve(lines.size());
    for (auto& [line, all] : lines) {
        cells.push_back({&m_table.lines[line], {std::move(all.older), std::move(all.newer)}, all.levels / all.kinds});
    }
    return cells;
}

void Judgement::judge(VerdictReport& report) const {
    std::vector<Cell> cells = cellsOfKinds();
    const size_t ofKinds = cells.size();
    // Of one kind, all machines are those of that kind.
    if (m_kinds.size() > 1) {
        for (Cell& cell : cellsOverAll()) {
            cells.push_back(std::move(cell));
        }
    }
    const std::vector<LineVerdict> verdicts =
        judgeTogether(cells.size(), m_choice.confidence, [&](size_t i, double tail) {
            return lineVerdict(*cells[i].line, cells[i].readings, tail, m_choice.threshold, cells[i].level);
        });
    std::set<std::string> settings;
    std::map<std::string, std::set<std::string>> features;
    for (const auto& [key, kind] : m_kinds) {
        settings.insert(std::get<2>(key));
        features[std::get<0>(key)].insert(std::get<1>(key));
    }
    auto next = verdicts.begin();
    for (const auto& [key, kind] : m_kinds) {
        const auto& [machine, feature, setting] = key;
        KindVerdicts& entry = report.kinds.emplace_back();
        entry.machine = features[machine].size() > 1 ? fmt::format("{} features {}", machine, feature) : machine;
        entry.features = feature;
        entry.setting = settings.size() > 1 ? setting : "";
        entry.hosts.assign(kind.hosts.begin(), kind.hosts.end());
        entry.rounds = kind.rounds;
        report.rounds += kind.rounds;
        entry.lines.assign(next, next + static_cast<std::ptrdiff_t>(kind.lines.size()));
        next += static_cast<std::ptrdiff_t>(kind.lines.size());
    }
    report.lines.assign(m_kinds.size() > 1 ? verdicts.begin() + static_cast<std::ptrdiff_t>(ofKinds) : verdicts.begin(),
                        verdicts.end());
}

// Rounds beyond some thousand are put together.
void Judgement::tellCommon(VerdictReport& report) const {
    const size_t together = (m_medians.size() + mostGroups - 1) / mostGroups;
    std::vector<Round> rounds;
    for (size_t i = 0; i < m_medians.size(); i += together) {
        const auto first = m_medians.begin() + static_cast<std::ptrdiff_t>(i);
        const auto last = m_medians.begin() + static_cast<std::ptrdiff_t>(std::min(i + together, m_medians.size()));
        rounds.push_back({std::vector<double>{0.0}, std::vector<double>{medianOf({first, last})}});
    }
    const CommonShift common = commonShift(rounds, (1 - m_choice.confidence) / 2);
    report.commonRatio = std::exp(common.estimate);
    report.commonReal = common.real();
}

void Judgement::tellOneSided(VerdictReport& report) const {
    for (const Side side : {sideOld, sideNew}) {
        for (const std::uint32_t line : m_seen[side]) {
            if (m_seen[side == sideOld ? sideNew : sideOld].count(line) == 0) {
                (side == sideOld ? report.onlyOld : report.onlyNew).push_back(m_table.lines[line]);
            }
        }
    }
}

void Judgement::tellWhatIsMissing(VerdictReport& report) const {
    std::map<std::string, size_t> cut;
    for (const PassRecord& pass : m_table.passes) {
        if (!pass.complete) {
            ++cut[pass.subject];
        }
    }
    for (const auto& [subject, count] : cut) {
        report.remarks.push_back(
            fmt::format("{}: {} passes did not come to their end; logs/ of the job folder tells how", subject, count));
    }
    const auto without = std::count_if(report.lines.begin(), report.lines.end(),
                                       [](const LineVerdict& line) { return !std::isfinite(line.high); });
    if (without > 0) {
        report.remarks.push_back(
            fmt::format("{} lines have too few rounds for an interval: give the plan more tasks or "
                        "passes",
                        without));
    }
    if (report.lines.empty()) {
        report.incomplete = true;
        report.remarks.emplace_back("no line was measured on both sides");
    }
}

VerdictReport Judgement::report() {
    collect();
    VerdictReport report;
    report.threshold = m_choice.threshold;
    report.confidence = m_choice.confidence;
    for (const Side side : {sideOld, sideNew}) {
        if (m_first[side] == nullptr) {
            throw Fault(fmt::format("there is no pass of {} yet", m_names[side]));
        }
    }
    report.older = m_first[sideOld]->identity;
    report.newer = m_first[sideNew]->identity;
    for (const FleetRun& run : m_runs) {
        report.runs.insert(run.run);
    }
    judge(report);
    tellCommon(report);
    tellOneSided(report);
    tellWhatIsMissing(report);
    return report;
}

} // namespace

std::string machineKind(const Machine& machine) {
    // The microcode changes under the same machine.
    return machine.processor.substr(0, machine.processor.find(" microcode "));
}

VerdictReport fleetVerdict(const Store& store, const FleetChoice& choice) {
    return Judgement(store, choice).report();
}

} // namespace krlab
