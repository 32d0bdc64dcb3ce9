#include "trial.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace krlab {

namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

// Under suspicion comes what is off by half the threshold and has nine chances in ten of being off at all.
constexpr double suspicionTail = 0.1;
// Rounds beyond the fewest that could accuse before the first look at suspects: one or two odd pairs must not spoil it.
constexpr int spareRounds = 2;
// Each look waits for a quarter more rounds than the one before it had.
constexpr double lookGrowth = 1.25;
// Lines longer than this tell no more about the drift than short ones, and take longer.
constexpr double longestControl = 5000;
// Fewer functions than these are no measure for the drift.
constexpr size_t leastControlFunctions = 5;
// A round that measured at least this share of the lines counts as one that measured all.
constexpr double wholeShare = 0.9;

// The part of the whole that the k-th of an unknown number of looks (or groups) may spend; the parts sum up to 1.
double spending(int k) {
    return 1.0 / (static_cast<double>(k) * (k + 1));
}

int grown(int rounds) {
    return static_cast<int>(std::ceil(rounds * lookGrowth));
}

} // namespace

size_t Trial::indexOf(const Line& line) {
    const auto [at, added] = m_index.try_emplace(line, m_lines.size());
    if (added) {
        State& state = m_lines.emplace_back();
        state.result.line = line;
        state.function = m_functions.try_emplace(line.function, m_functions.size()).first->second;
    }
    return at->second;
}

void Trial::addSide(const std::vector<Figure>& figures, Side side, Round& round) {
    for (const Figure& figure : figures) {
        if (!(figure.clocks > 0)) {
            continue;
        }
        const size_t line = indexOf(figure.line);
        round[side].resize(std::max(round[side].size(), line + 1), none);
        // A line may stand twice in a grid: the smaller figure is the less disturbed one.
        const double reading = std::log(figure.clocks);
        double& kept = round[side][line];
        kept = std::isfinite(kept) ? std::min(kept, reading) : reading;
        m_lines[line].seen[side] = true;
    }
}

void Trial::addRound(const std::vector<Figure>& older, const std::vector<Figure>& newer) {
    Round& round = m_rounds.emplace_back();
    addSide(older, sideOld, round);
    addSide(newer, sideNew, round);
    for (std::vector<double>& side : round) {
        side.resize(m_lines.size(), none);
    }
}

double Trial::error(int looks) const {
    return (1 - m_options.confidence) * spending(looks);
}

void Trial::updateCommon() {
    if (m_common.real()) {
        return;
    }
    std::vector<const Round*> whole;
    for (const Round& round : m_rounds) {
        const auto measured = std::count_if(round[sideOld].begin(), round[sideOld].end(),
                                            [](double value) { return std::isfinite(value); });
        if (static_cast<double>(measured) >= wholeShare * static_cast<double>(m_lines.size())) {
            whole.push_back(&round);
        }
    }
    m_common = commonShift(whole, roles(), error(m_looks) / 2);
}

std::vector<LineRole> Trial::roles() const {
    std::vector<LineRole> roles;
    for (const State& state : m_lines) {
        roles.push_back({state.function, state.group < 0});
    }
    return roles;
}

bool Trial::enoughControls(const std::vector<LineRole>& roles) {
    std::set<size_t> functions;
    for (const LineRole& role : roles) {
        if (role.control) {
            functions.insert(role.function);
        }
    }
    return functions.size() >= leastControlFunctions;
}

bool Trial::tellsDrift() const {
    return m_functions.size() >= leastControlFunctions;
}

Trial::Evidence Trial::evidenceSince(size_t since) const {
    std::vector<const Round*> rounds;
    for (size_t i = since; i < m_rounds.size(); ++i) {
        rounds.push_back(&m_rounds[i]);
    }
    Evidence evidence;
    std::vector<LineRole> lineRoles = roles();
    const bool steadied = enoughControls(lineRoles);
    if (!steadied) {
        // The change of one function would be taken for the drift of the others.
        std::for_each(lineRoles.begin(), lineRoles.end(), [](LineRole& role) { role.control = false; });
    }
    evidence.differences = pairedDifferences(rounds, lineRoles);
    if (steadied && m_common.real()) {
        const CommonShift shift = commonShift(rounds, lineRoles, error(m_looks) / 2);
        evidence.level = shift.estimate;
        evidence.levelLow = shift.estimate - shift.bounds.low;
        evidence.levelHigh = shift.bounds.high - shift.estimate;
    }
    return evidence;
}

double Trial::clocksOf(size_t line, Side side) const {
    std::vector<double> readings;
    for (const Round& round : m_rounds) {
        if (line < round[side].size() && std::isfinite(round[side][line])) {
            readings.push_back(round[side][line]);
        }
    }
    return std::exp(medianOf(std::move(readings)));
}

LineVerdict Trial::resultOf(size_t line, const Evidence& evidence, const WalshAverages& averages, double tail) const {
    LineVerdict result;
    result.line = m_lines[line].result.line;
    const Bounds bounds = averages.bounds(tail);
    result.ratio = std::exp(averages.estimate() + evidence.level);
    result.low = std::exp(bounds.low + evidence.level - evidence.levelLow);
    result.high = std::exp(bounds.high + evidence.level + evidence.levelHigh);
    result.passes = averages.pairs();
    // The clocks stand around the middle of both sides' readings, so that their quotient is the ratio.
    const double middle = std::sqrt(clocksOf(line, sideOld) * clocksOf(line, sideNew));
    result.older = middle / std::sqrt(result.ratio);
    result.newer = middle * std::sqrt(result.ratio);
    result.verdict = judge(result.ratio, result.low, result.high, m_options.threshold);
    return result;
}

std::vector<Trial::Candidate> Trial::judgeUnsuspected(const Evidence& evidence) {
    std::vector<Candidate> candidates;
    for (size_t line = 0; line < m_lines.size(); ++line) {
        State& state = m_lines[line];
        if (state.group >= 0 || state.decided()) {
            continue;
        }
        const WalshAverages averages(evidence.differences[line]);
        if (averages.pairs() == 0) {
            continue;
        }
        state.paired = true;
        state.result = resultOf(line, evidence, averages, error(m_looks) / 2);
        if (state.result.verdict == Verdict::slower || state.result.verdict == Verdict::faster) {
            // No accusation on the figures that raised the suspicion.
            state.result.low = 0;
            state.result.high = std::numeric_limits<double>::infinity();
            state.result.verdict = Verdict::undecided;
        }
        const Bounds bounds = averages.bounds(suspicionTail);
        const double away = std::abs(averages.estimate() + evidence.level);
        const bool off = bounds.known && (bounds.low + evidence.level > 0 || bounds.high + evidence.level < 0);
        if (!state.decided() && off && away > std::log1p(m_options.threshold) / 2) {
            candidates.push_back({away / (bounds.high - bounds.low + 1e-6), line});
        }
    }
    return candidates;
}

// Holm's step-down: as long as suspects are found to have changed, the others share what is left of the error.
void Trial::accuse(Group& group, int number, const Evidence& evidence, const std::vector<WalshAverages>& averages) {
    for (bool found = true; found;) {
        found = false;
        const double tail = error(group.looks) * group.share / (2 * static_cast<double>(group.size - group.accused));
        for (size_t line = 0; line < averages.size(); ++line) {
            State& state = m_lines[line];
            if (state.group != number || state.decided() || averages[line].pairs() == 0) {
                continue;
            }
            state.result = resultOf(line, evidence, averages[line], tail);
            if (state.result.verdict == Verdict::slower || state.result.verdict == Verdict::faster) {
                ++group.accused;
                found = true;
            } else {
                state.result.verdict = Verdict::undecided;
            }
        }
        if (group.accused == group.size) {
            return;
        }
    }
}

void Trial::judgeGroup(int number) {
    Group& group = m_groups[static_cast<size_t>(number)];
    const Evidence evidence = evidenceSince(group.since);
    ++group.looks;
    group.nextLook = grown(static_cast<int>(m_rounds.size() - group.since));
    std::vector<WalshAverages> averages;
    for (size_t line = 0; line < m_lines.size(); ++line) {
        const bool wanted = m_lines[line].group == number && !m_lines[line].decided();
        averages.emplace_back(wanted ? evidence.differences[line] : std::vector<double>());
    }
    accuse(group, number, evidence, averages);
    // That a line is the same accuses nobody: there each line stands for itself.
    for (size_t line = 0; line < m_lines.size(); ++line) {
        State& state = m_lines[line];
        if (state.group != number || state.decided() || averages[line].pairs() == 0) {
            continue;
        }
        const LineVerdict alone = resultOf(line, evidence, averages[line], error(group.looks) / 2);
        if (alone.verdict == Verdict::same) {
            state.result = alone;
        }
    }
}

void Trial::suspect(std::vector<Candidate> candidates, int roundsLeft) {
    Group group;
    group.since = m_rounds.size();
    group.share = spending(static_cast<int>(m_groups.size()) + 1);
    // More suspects need more rounds: no more of them than the rounds to come can accuse.
    const double all = (1 - m_options.confidence) * spending(1) * group.share / 2;
    const double most = std::floor(all * std::exp2(std::min(roundsLeft - spareRounds, 60)));
    if (candidates.empty() || most < 1) {
        return;
    }
    std::sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
        return a.weight != b.weight ? a.weight > b.weight : a.line < b.line;
    });
    if (most < static_cast<double>(candidates.size())) {
        candidates.resize(static_cast<size_t>(most));
    }
    group.size = candidates.size();
    group.nextLook = signedRankLeastPairs(all / static_cast<double>(group.size)) + spareRounds;
    for (const Candidate& candidate : candidates) {
        m_lines[candidate.line].group = static_cast<int>(m_groups.size());
    }
    m_groups.push_back(group);
}

bool Trial::lookDue() const {
    const auto due = [this](const Group& group) {
        return static_cast<int>(m_rounds.size() - group.since) >= group.nextLook;
    };
    return rounds() >= m_nextLook || std::any_of(m_groups.begin(), m_groups.end(), due);
}

void Trial::look(int roundsLeft) {
    if (m_rounds.empty()) {
        return;
    }
    ++m_looks;
    m_nextLook = grown(rounds());
    updateCommon();
    for (size_t number = 0; number < m_groups.size(); ++number) {
        const Group& group = m_groups[number];
        const int fresh = static_cast<int>(m_rounds.size() - group.since);
        if (fresh >= group.nextLook || (roundsLeft <= 0 && fresh > 0)) {
            judgeGroup(static_cast<int>(number));
        }
    }
    suspect(judgeUnsuspected(evidenceSince(0)), roundsLeft);
}

std::vector<Line> Trial::wanted(size_t least) const {
    std::vector<size_t> open;
    std::vector<size_t> controls;
    for (size_t line = 0; line < m_lines.size(); ++line) {
        const State& state = m_lines[line];
        if (!state.seen[sideOld] || !state.seen[sideNew]) {
            continue;
        }
        if (!state.decided()) {
            open.push_back(line);
        } else if (state.result.verdict == Verdict::same && state.result.older < longestControl) {
            controls.push_back(line);
        }
    }
    if (open.empty()) {
        return {};
    }
    if (open.size() < least && !controls.empty()) {
        // Spread evenly over the course of a pass.
        const size_t more = std::min(least - open.size(), controls.size());
        for (size_t i = 0; i < more; ++i) {
            open.push_back(controls[i * controls.size() / more]);
        }
        std::sort(open.begin(), open.end());
    }
    std::vector<Line> lines;
    lines.reserve(open.size());
    for (const size_t line : open) {
        lines.push_back(m_lines[line].result.line);
    }
    return lines;
}

size_t Trial::undecided() const {
    return static_cast<size_t>(std::count_if(m_lines.begin(), m_lines.end(), [](const State& state) {
        return state.seen[sideOld] && state.seen[sideNew] && !state.decided();
    }));
}

size_t Trial::suspects() const {
    return static_cast<size_t>(std::count_if(m_lines.begin(), m_lines.end(),
                                             [](const State& state) { return state.group >= 0 && !state.decided(); }));
}

std::vector<LineVerdict> Trial::verdicts() const {
    std::vector<LineVerdict> result;
    for (size_t line = 0; line < m_lines.size(); ++line) {
        const State& state = m_lines[line];
        if (!state.seen[sideOld] || !state.seen[sideNew]) {
            continue;
        }
        result.push_back(state.result);
        if (!state.paired) {
            // Figures on both sides, but never beside each other.
            LineVerdict& verdict = result.back();
            verdict.older = clocksOf(line, sideOld);
            verdict.newer = clocksOf(line, sideNew);
            verdict.ratio = verdict.newer / verdict.older;
            verdict.high = std::numeric_limits<double>::infinity();
        }
    }
    return result;
}

std::vector<Line> Trial::onlyOn(Side side) const {
    std::vector<Line> lines;
    for (const State& state : m_lines) {
        if (state.seen[side] && !state.seen[side == sideOld ? sideNew : sideOld]) {
            lines.push_back(state.result.line);
        }
    }
    return lines;
}

} // namespace krlab
