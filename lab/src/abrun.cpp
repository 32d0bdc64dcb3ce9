#include "abrun.h"

#include "fault.h"
#include "interrupt.h"
#include "lanes.h"
#include "roundstart.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fmt/format.h>
#include <optional>

namespace krlab {

namespace {

// Rounds of all lines before the first look, and the share of the time after which it comes at the latest. Too few and
// the suspicion is blind, too many and the time for the fresh rounds is gone.
constexpr int leastSweep = 6;
constexpr int mostSweep = 32;
constexpr double sweepShare = 0.45;

// The rig's Iterative method from this many loops on; it goes to four times as many, up to three times. At 32 loops the
// steps of the counter are below 1 % of calls that take 100 clocks.
constexpr int leastLoops = 8;
constexpr int mostLoops = 1024;
constexpr double loopGrowth = 4;
constexpr double readingsPerLoop = 1 + 3 * loopGrowth;
// Short rounds are the better ones as long as the rigs measure for most of the time.
constexpr double measuringSeconds = 0.3;
// A longer reading would rarely get by without an interruption on a machine that others use as well.
constexpr double longestReading = 0.0002;

// What a rig needs for a line beside its readings, and how often it reads a line in one pass at most.
constexpr double lineSeconds = 0.0002;
constexpr int mostRepeats = 16;

// While there are suspects, each so many-th start is for all lines that are not decided, with so many rounds.
constexpr int startsForAll = 4;
constexpr int roundsForAll = 4;

// A test in which this many processes have died is not started again.
constexpr int mostDeaths = 2;

using Clock = std::chrono::steady_clock;

class AbRun {
public:
    explicit AbRun(const AbOptions& options)
        : m_options(options), m_trial(options.trial), m_random(options.seed), m_turns(m_random()),
          m_lanes(2 * mostRounds) {}

    VerdictReport run();

private:
    // What a round measures: all lines that are not decided, or only those of them that are under suspicion.
    enum Kind : size_t { everything, suspects };

    struct Rounds {
        std::optional<Pass> passes[2];
    };

    double elapsed() const { return std::chrono::duration<double>(Clock::now() - m_start).count(); }
    int roundsLeft(Kind kind) const;
    std::vector<std::string> keys() const;
    std::vector<Line> lines() const;
    void startRounds(int first, size_t count);
    void startNext();
    void take(int number, Side side, Pass pass);
    void keepIdentity(Pass& pass, Side side);
    void takeFailures(const Pass& pass, Side side);
    void closeRound(Rounds& round);
    void tune(const std::vector<Figure>& figures);
    void lookIfDue();
    void showProgress(const std::string& function) const;
    VerdictReport report();
    void tellWhatIsMissing(VerdictReport& report) const;
    void tellTimeThatLacks(VerdictReport& report) const;
    void checkFiles(const VerdictReport& report) const;

    const AbOptions& m_options;
    Trial m_trial;
    std::mt19937_64 m_random;
    Clock::time_point m_start = Clock::now();
    std::map<int, Rounds> m_open;
    std::array<std::optional<Identity>, 2> m_identity;
    std::array<std::vector<FileIdentity>, 2> m_libraries; ///< as they were found at the start
    Kind m_kind = everything;                             ///< of the rounds under way
    std::array<int, 2> m_loops{leastLoops, leastLoops};
    std::array<int, 2> m_repeats{1, 1};
    std::array<double, 2> m_interval{}; ///< seconds of a round
    bool m_swept = false;
    bool m_outOfTime = false;
    int m_started = 0;                                ///< rounds
    int m_starts = 0;                                 ///< of some of them at once
    std::map<std::string, int> m_deaths[2];           ///< processes that died, by function
    std::map<std::string, std::string> m_failures[2]; ///< what the rig said last, by function
    std::set<std::string> m_measured[2];              ///< functions with figures
    std::vector<std::string> m_remarks;
    Turns m_turns;
    Lanes m_lanes; // last: its passes use what stands above
};

// By what the last ones of their kind took.
int AbRun::roundsLeft(Kind kind) const {
    const double left = m_options.seconds - elapsed();
    const double interval = m_interval[kind] > 0 ? m_interval[kind] : m_interval[everything];
    return left <= 0 || interval <= 0 ? 0 : static_cast<int>(left / interval);
}

std::vector<std::string> AbRun::keys() const {
    // The user's keys stand behind and win.
    std::vector<std::string> keys = loopKeys(m_loops[m_kind]);
    keys.insert(keys.end(), m_options.keys.begin(), m_options.keys.end());
    return keys;
}

std::vector<Line> AbRun::lines() const {
    std::set<std::string> dead;
    for (const auto& deaths : m_deaths) {
        for (const auto& [function, count] : deaths) {
            if (count >= mostDeaths) {
                dead.insert(function);
            }
        }
    }
    if (!m_swept && dead.empty()) {
        return {};
    }
    std::vector<Line> lines = m_trial.wanted(m_kind == everything);
    std::erase_if(lines, [&](const Line& line) { return dead.count(line.function) != 0; });
    return lines;
}

void AbRun::startRounds(int first, size_t count) {
    const auto start = Clock::now();
    const std::vector<Line> wanted = lines();
    // The same for all of these rounds, whatever the first ones tell.
    const std::vector<std::string> passKeys = keys();
    const int repeats = m_repeats[m_kind];
    RoundStart rounds;
    rounds.count = count;
    rounds.request = [&](size_t round, Side side) {
        PassRequest request;
        request.subject = m_options.subjects[side];
        request.keys = passKeys;
        request.copied = m_libraries[side];
        request.lines = wanted;
        request.keepOthers = true;
        request.repeats = repeats;
        request.timeLimit = m_options.passLimit;
        request.record = first == 0 && round == 0;
        return request;
    };
    rounds.done = [this, first](size_t round, Side side, Pass pass) {
        take(first + static_cast<int>(round), side, std::move(pass));
    };
    rounds.draw = [this](size_t) { return m_random(); };
    krlab::startRounds(rounds, m_lanes, m_turns);
    showProgress("");
    m_lanes.collect(true);
    m_interval[m_kind] = std::chrono::duration<double>(Clock::now() - start).count() / static_cast<double>(count);
}

// Some rounds more, as many as the time allows.
void AbRun::startNext() {
    const bool forSuspects = m_swept && m_trial.suspects() > 0;
    ++m_starts;
    m_kind = forSuspects && m_starts % startsForAll != 0 ? suspects : everything;
    const int most = forSuspects && m_kind == everything ? roundsForAll : mostRounds;
    const int count = std::min(roundsLeft(m_kind), most);
    const bool swept = m_swept;
    if (count > 0) {
        startRounds(m_started, static_cast<size_t>(count));
    }
    m_started += count;
    m_outOfTime = count <= 0;
    if (swept && m_kind == everything && !m_outOfTime) {
        m_trial.look(roundsLeft(suspects), true);
    }
}

void AbRun::take(int number, Side side, Pass pass) {
    keepIdentity(pass, side);
    takeFailures(pass, side);
    if (m_options.store != nullptr) {
        m_options.store->addPass(m_options.run, number, pass);
    }
    Rounds& round = m_open[number];
    round.passes[side] = std::move(pass);
    if (round.passes[sideOld] && round.passes[sideNew]) {
        closeRound(round);
        m_open.erase(number);
    }
}

void AbRun::keepIdentity(Pass& pass, Side side) {
    if (!m_identity[side]) {
        m_identity[side] = pass.identity;
        return;
    }
    // What is the same for all passes was found out once.
    Identity identity = *m_identity[side];
    identity.arguments = pass.identity.arguments;
    identity.started = pass.identity.started;
    identity.ended = timeText();
    identity.loadStart = m_identity[side]->loadEnd;
    identity.loadEnd = loadAverage();
    m_identity[side]->ended = identity.ended;
    m_identity[side]->loadEnd = identity.loadEnd;
    pass.identity = std::move(identity);
}

void AbRun::takeFailures(const Pass& pass, Side side) {
    for (const Figure& figure : pass.figures) {
        m_measured[side].insert(figure.line.function);
    }
    const std::string& name = m_options.subjects[side].name;
    const auto tell = [&](const std::string& function, const std::string& text) {
        if (m_failures[side].insert_or_assign(function, text).second && m_options.note) {
            m_options.note(fmt::format("{}: {}", name, text));
        }
    };
    for (const ProcessEnd& end : pass.ends) {
        if (end.how != ProcessEnd::How::complete && end.how != ProcessEnd::How::interrupted) {
            ++m_deaths[side][end.function];
            tell(end.function, "the rig " + end.text);
        }
    }
    for (const TestEnd& test : pass.tests) {
        if (test.failed()) {
            tell(test.function, fmt::format("{} ended with {}", test.function, test.result));
        }
    }
}

void AbRun::closeRound(Rounds& round) {
    const Pass& older = *round.passes[sideOld];
    const Pass& newer = *round.passes[sideNew];
    if (older.figures.empty() && newer.figures.empty()) {
        return;
    }
    m_trial.addRound(older.figures, newer.figures);
    tune(newer.figures.empty() ? older.figures : newer.figures);
    showProgress("");
    lookIfDue();
}

// As many loops, and as many readings, as fit into the time that a pass and its longest reading may take: the fewer and
// shorter the lines that are left, the more often each is read in a pass.
void AbRun::tune(const std::vector<Figure>& figures) {
    double all = 0;
    double longest = 0;
    for (const Figure& figure : figures) {
        all += figure.clocks;
        longest = std::max(longest, figure.clocks);
    }
    if (all <= 0) {
        return;
    }
    const double rate = m_identity[sideNew]->machine.counterMHz * 1e6;
    const double perLoop = readingsPerLoop * all / rate;
    const double loops = std::min(measuringSeconds / perLoop, longestReading * rate / (loopGrowth * longest));
    m_loops[m_kind] = std::clamp(static_cast<int>(std::min<double>(loops, mostLoops)), leastLoops, mostLoops);
    const double once = perLoop * m_loops[m_kind] + lineSeconds * static_cast<double>(figures.size());
    m_repeats[m_kind] = std::clamp(static_cast<int>(measuringSeconds / once), 1, mostRepeats);
}

void AbRun::lookIfDue() {
    if (!m_swept) {
        const int rounds = m_trial.rounds();
        if (rounds < leastSweep || (rounds < mostSweep && elapsed() < sweepShare * m_options.seconds)) {
            return;
        }
        m_swept = true;
        m_trial.look(roundsLeft(suspects), true);
    } else if (m_trial.lookDue()) {
        m_trial.look(roundsLeft(suspects), false);
    }
}

void AbRun::showProgress(const std::string& function) const {
    if (!m_options.progress) {
        return;
    }
    std::string text = fmt::format("round {}", m_trial.rounds() + 1);
    if (m_swept) {
        text += fmt::format(", {} lines undecided, {} suspects", m_trial.undecided(), m_trial.suspects());
    }
    if (!function.empty()) {
        text += ", " + function;
    }
    m_options.progress(text, std::min(elapsed() / m_options.seconds, 1.0));
}

VerdictReport AbRun::run() {
    for (const Side side : {sideOld, sideNew}) {
        m_libraries[side] = identify(m_options.subjects[side]).libraries;
    }
    // The first round tells what there is, and whether anything can be measured at all.
    startRounds(m_started++, 1);
    m_outOfTime = m_trial.rounds() == 0;
    while (!m_outOfTime && !interrupted() && !(m_swept && m_trial.undecided() == 0)) {
        startNext();
    }
    m_trial.look(0, true);
    return report();
}

VerdictReport AbRun::report() {
    VerdictReport report;
    for (const Side side : {sideOld, sideNew}) {
        if (!m_identity[side]) {
            throw Fault("nothing was measured");
        }
    }
    report.older = *m_identity[sideOld];
    report.newer = *m_identity[sideNew];
    report.older.keys = report.newer.keys = m_options.keys;
    report.threshold = m_options.trial.threshold;
    report.confidence = m_options.trial.confidence;
    report.lines = m_trial.verdicts();
    report.onlyOld = m_trial.onlyOn(sideOld);
    report.onlyNew = m_trial.onlyOn(sideNew);
    const CommonShift& common = m_trial.common();
    report.commonRatio = std::exp(common.estimate);
    report.commonReal = common.real();
    report.rounds = m_trial.rounds();
    tellWhatIsMissing(report);
    tellTimeThatLacks(report);
    checkFiles(report);
    if (interrupted()) {
        report.remarks.push_back("ended by the user: the report rests on what was measured until then");
    }
    return report;
}

void AbRun::tellWhatIsMissing(VerdictReport& report) const {
    for (const Side side : {sideOld, sideNew}) {
        const std::vector<Line>& lost = side == sideOld ? report.onlyNew : report.onlyOld;
        for (const auto& [function, text] : m_failures[side]) {
            const std::string& failed = function;
            const bool missing =
                m_measured[side].count(failed) == 0 ||
                std::any_of(lost.begin(), lost.end(), [&](const Line& line) { return line.function == failed; });
            report.incomplete = report.incomplete || missing;
            report.remarks.push_back(
                fmt::format("{}: {}{}", m_options.subjects[side].name, text, missing ? "; its lines are missing" : ""));
        }
    }
    if (report.lines.empty() && !interrupted()) {
        report.incomplete = true;
        report.remarks.push_back("no line was measured on both sides; does the selection hold any test?");
    }
}

void AbRun::tellTimeThatLacks(VerdictReport& report) const {
    const auto counts = countVerdicts(report.lines);
    const size_t without = static_cast<size_t>(std::count_if(
        report.lines.begin(), report.lines.end(), [](const LineVerdict& line) { return !std::isfinite(line.high); }));
    if (without > 0 && counts.undecided > 0) {
        report.remarks.push_back(fmt::format(
            "{} of the undecided lines have too few passes for an interval: {} rounds fitted into {:.0f} s; "
            "give more --time, or fewer functions behind --",
            without, m_trial.rounds(), m_options.seconds));
    }
}

// Somebody may have built anew while the passes ran.
void AbRun::checkFiles(const VerdictReport& report) const {
    for (const Side side : {sideOld, sideNew}) {
        const Identity& measured = side == sideOld ? report.older : report.newer;
        Identity now = identify(m_options.subjects[side]);
        now.keys = measured.keys;
        if (!sameSubject(measured, now)) {
            throw Fault(m_options.subjects[side].name,
                        "its files changed while they were measured; start again when the build is done");
        }
    }
}

} // namespace

VerdictReport runAb(const AbOptions& options) {
    return AbRun(options).run();
}

} // namespace krlab
