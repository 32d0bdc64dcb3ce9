#include "trial.h"

#include "lineverdict.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <tuple>

namespace krlab {

namespace {

constexpr double notRead = std::numeric_limits<double>::quiet_NaN();

// Under suspicion comes what is off by most of the threshold and has nine chances in ten of being off at all.
constexpr double suspicionTail = 0.1;
constexpr double suspicionShare = 0.7;
// Rounds beyond the fewest that could accuse before the first look at suspects: one or two odd pairs must not spoil it.
constexpr int spareRounds = 2;
// Each look waits for twice as many rounds as the one before it had; the first one for twice the fewest that could
// accuse, so that the readings that count are among the low ones.
constexpr int lookGrowth = 2;
// More suspects at once would need more rounds for each of them: only as many more as there are plain ones.
constexpr size_t mostSuspects = 64;
// A round that measured at least this share of the lines counts as one that measured all.
constexpr double wholeShare = 0.9;

// The part of the whole that the k-th of an unknown number of looks (or groups) may spend; the parts sum up to 1.
double spending(int k) {
    return 1.0 / (static_cast<double>(k) * (k + 1));
}

} // namespace

size_t Trial::indexOf(const Line& line) {
    const auto [at, added] = m_index.try_emplace(line, m_lines.size());
    if (added) {
        State& state = m_lines.emplace_back();
        state.result.line = line;
    }
    return at->second;
}

void Trial::addSide(const std::vector<Figure>& figures, Side side, Round& round) {
    for (const Figure& figure : figures) {
        if (!(figure.clocks > 0)) {
            continue;
        }
        const size_t line = indexOf(figure.line);
        round[side].resize(std::max(round[side].size(), line + 1), notRead);
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
        side.resize(m_lines.size(), notRead);
    }
}

double Trial::error(int looks) const {
    return (1 - m_options.confidence) * spending(looks);
}

void Trial::updateCommon() {
    std::vector<Round> whole;
    for (const Round& round : m_rounds) {
        const auto measured = std::count_if(round[sideOld].begin(), round[sideOld].end(),
                                            [](double value) { return std::isfinite(value); });
        if (static_cast<double>(measured) >= wholeShare * static_cast<double>(m_lines.size())) {
            whole.push_back(round);
        }
    }
    m_common = commonShift(whole, error(m_looks) / 2);
}

LowReadings Trial::readingsSince(size_t round, size_t line) const {
    return {std::span(m_rounds).subspan(round), line};
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

LineVerdict Trial::resultOf(size_t line, const LowReadings& readings, double tail) const {
    return lineVerdict(m_lines[line].result.line, readings, tail, m_options.threshold);
}

std::vector<Trial::Candidate> Trial::judgeUnsuspected() {
    std::vector<Candidate> candidates;
    const double tail = error(m_looks) / 2;
    for (size_t line = 0; line < m_lines.size(); ++line) {
        State& state = m_lines[line];
        if (state.group >= 0 || state.decided()) {
            continue;
        }
        const LowReadings readings = readingsSince(0, line);
        if (readings.rounds() == 0) {
            continue;
        }
        state.paired = true;
        state.result = resultOf(line, readings, tail);
        if (state.result.verdict == Verdict::slower || state.result.verdict == Verdict::faster) {
            // No accusation on the figures that raised the suspicion.
            state.result.low = 0;
            state.result.high = std::numeric_limits<double>::infinity();
            state.result.verdict = Verdict::undecided;
        }
        const LowShift hint = readings.shift(suspicionTail);
        const Bounds& bounds = hint.bounds;
        const double away = std::abs(hint.estimate);
        const bool off = bounds.known && (bounds.low > 0 || bounds.high < 0);
        if (!state.decided() && off && away > std::log1p(m_options.threshold) * suspicionShare) {
            // Plain is what has half of its readings beyond all those of the other side.
            const Bounds half = readings.shift(std::exp2(-readings.rounds() / 2)).bounds;
            const bool plain = half.known && (half.low > 0 || half.high < 0);
            candidates.push_back({away / (bounds.high - bounds.low + 1e-6), line, 0, plain});
        }
    }
    return candidates;
}

template <class Judge>
void Trial::judgeOpen(int number, const Judge& judge) {
    const size_t since = m_groups[static_cast<size_t>(number)].since;
    for (size_t line = 0; line < m_lines.size(); ++line) {
        State& state = m_lines[line];
        if (state.group != number || state.decided()) {
            continue;
        }
        const LowReadings readings = readingsSince(since, line);
        if (readings.rounds() != 0) {
            judge(line, state, readings);
        }
    }
}

// Holm's step-down: as long as suspects are found to have changed, the others share what is left of the error.
void Trial::accuse(Group& group, int number) {
    for (bool found = true; found && group.accused < group.size;) {
        found = false;
        const double tail = error(group.looks) * group.share / (2 * static_cast<double>(group.size - group.accused));
        judgeOpen(number, [&](size_t line, State& state, const LowReadings& readings) {
            state.result = resultOf(line, readings, tail);
            if (state.result.verdict == Verdict::slower || state.result.verdict == Verdict::faster) {
                ++group.accused;
                found = true;
            } else {
                state.result.verdict = Verdict::undecided;
            }
        });
    }
}

void Trial::judgeGroup(int number) {
    Group& group = m_groups[static_cast<size_t>(number)];
    ++group.looks;
    group.nextLook = lookGrowth * static_cast<int>(m_rounds.size() - group.since);
    accuse(group, number);
    // That a line is the same accuses nobody: there each line stands for itself.
    const double tail = error(group.looks) / 2;
    judgeOpen(number, [&](size_t line, State& state, const LowReadings& readings) {
        // The interval of an undecided line is its own, too: what it lacks is to stand out among all suspects.
        state.result = resultOf(line, readings, tail);
        if (state.result.verdict != Verdict::same) {
            state.result.verdict = Verdict::undecided;
        }
    });
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
    // The plainest line of each function first, then the next one of each.
    const auto plainer = [](const Candidate& a, const Candidate& b) {
        return std::tie(a.rank, b.weight, a.line) < std::tie(b.rank, a.weight, b.line);
    };
    std::sort(candidates.begin(), candidates.end(), plainer);
    std::map<std::string, int> ranks;
    for (Candidate& candidate : candidates) {
        candidate.rank = ranks[m_lines[candidate.line].result.line.function]++;
    }
    std::sort(candidates.begin(), candidates.end(), plainer);
    const auto plain = static_cast<size_t>(std::count_if(candidates.begin(), candidates.end(),
                                                         [](const Candidate& candidate) { return candidate.plain; }));
    candidates.resize(std::min({candidates.size(), std::max(mostSuspects, plain), static_cast<size_t>(most)}));
    group.size = candidates.size();
    group.nextLook = lookGrowth * leastRounds(all / static_cast<double>(group.size));
    for (const Candidate& candidate : candidates) {
        m_lines[candidate.line].group = static_cast<int>(m_groups.size());
    }
    m_groups.push_back(group);
}

bool Trial::lookDue() const {
    const auto due = [this](const Group& group) {
        return static_cast<int>(m_rounds.size() - group.since) >= group.nextLook;
    };
    return std::any_of(m_groups.begin(), m_groups.end(), due);
}

void Trial::look(int roundsLeft, bool all) {
    if (m_rounds.empty()) {
        return;
    }
    for (size_t number = 0; number < m_groups.size(); ++number) {
        const Group& group = m_groups[number];
        const int fresh = static_cast<int>(m_rounds.size() - group.since);
        if (fresh >= group.nextLook || (roundsLeft <= 0 && fresh > 0)) {
            judgeGroup(static_cast<int>(number));
        }
    }
    if (all) {
        ++m_looks;
        updateCommon();
        suspect(judgeUnsuspected(), roundsLeft);
    }
}

std::vector<Line> Trial::wanted(bool all) const {
    const bool suspectsAlone = !all && suspects() > 0;
    std::vector<Line> lines;
    for (const State& state : m_lines) {
        if (state.seen[sideOld] && state.seen[sideNew] && !state.decided() && (!suspectsAlone || state.group >= 0)) {
            lines.push_back(state.result.line);
        }
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
