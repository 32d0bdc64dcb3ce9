#include "abrun.h"

#include "fault.h"
#include "interrupt.h"
#include "lanes.h"

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
constexpr int mostSweep = 16;
constexpr double sweepShare = 0.35;

// The rig's Iterative method from this many loops on; it goes to four times as many, up to three times. At 64 loops the
// steps of the counter are below 1 % of the shortest calls that do any work.
constexpr int leastLoops = 16;
constexpr int mostLoops = 1024;
constexpr double loopGrowth = 4;
constexpr double readingsPerLoop = 1 + 3 * loopGrowth;
// As long as a rig needs to learn the counter's rate, another one may measure at no cost.
constexpr double measuringSeconds = 1.5;
// A longer reading would rarely get by without an interruption on a machine that others use as well.
constexpr double longestReading = 0.0005;

// Lines measured in each pass, so that the machine's drift is known where only a few lines are left to decide.
constexpr size_t leastLines = 150;

// A test in which this many processes have died is not started again.
constexpr int mostDeaths = 2;

using Clock = std::chrono::steady_clock;

class AbRun {
public:
    explicit AbRun(const AbOptions& options)
        : m_options(options), m_trial(options.trial), m_random(options.seed), m_lanes(options.lanes) {}

    VerdictReport run();

private:
    struct Rounds {
        std::optional<Pass> passes[2];
        Clock::time_point start;
    };

    double elapsed() const { return std::chrono::duration<double>(Clock::now() - m_start).count(); }
    bool timeForRound() const;
    int roundsLeft() const;
    std::vector<std::string> keys() const;
    std::vector<Line> lines() const;
    void startRound(int number);
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
    int m_loops = leastLoops;
    double m_latency = 0;  ///< seconds from the start of a round to its end
    double m_interval = 0; ///< seconds between the ends of rounds
    Clock::time_point m_lastEnd = Clock::now();
    bool m_swept = false;
    std::map<std::string, int> m_deaths[2];           ///< processes that died, by function
    std::map<std::string, std::string> m_failures[2]; ///< what the rig said last, by function
    std::set<std::string> m_measured[2];              ///< functions with figures
    std::vector<std::string> m_remarks;
    Lanes m_lanes; // last: its passes use what stands above
};

bool AbRun::timeForRound() const {
    return elapsed() + m_latency <= m_options.seconds;
}

int AbRun::roundsLeft() const {
    const double left = m_options.seconds - elapsed();
    return left <= 0 || m_interval <= 0 ? 0 : static_cast<int>(left / m_interval);
}

std::vector<std::string> AbRun::keys() const {
    // The user's keys stand behind and win.
    std::vector<std::string> keys = {"-dMethod=Iterative", fmt::format("-dStartNumLoops={}", m_loops),
                                     "-dStopNumLoops=1", "-dAccuracy=0"};
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
    std::vector<Line> lines = m_trial.wanted(leastLines);
    std::erase_if(lines, [&](const Line& line) { return dead.count(line.function) != 0; });
    return lines;
}

void AbRun::startRound(int number) {
    m_open[number].start = Clock::now();
    const std::vector<Line> wanted = lines();
    const bool newFirst = (m_random() & 1) != 0;
    for (const Side side : {newFirst ? sideNew : sideOld, newFirst ? sideOld : sideNew}) {
        PassRequest request;
        request.subject = m_options.subjects[side];
        request.keys = keys();
        request.lines = wanted;
        request.keepOthers = true;
        request.timeLimit = m_options.passLimit;
        request.record = number == 0;
        m_lanes.start(std::move(request), [this, number, side](Pass pass) { take(number, side, std::move(pass)); });
        showProgress("");
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
    const auto now = Clock::now();
    m_latency = std::chrono::duration<double>(now - round.start).count();
    const double since = std::chrono::duration<double>(now - m_lastEnd).count();
    m_interval = m_interval > 0 ? (m_interval + since) / 2 : since;
    m_lastEnd = now;
    lookIfDue();
}

// As many loops as fit into the time that a pass and its longest reading may take: the fewer and shorter the lines that
// are left, the better their readings.
void AbRun::tune(const std::vector<Figure>& figures) {
    double all = 0;
    double longest = 0;
    for (const Figure& figure : figures) {
        all += figure.clocks;
        longest = std::max(longest, figure.clocks);
    }
    const double rate = m_identity[sideNew]->machine.counterMHz * 1e6;
    const double loops = all > 0 ? std::min(measuringSeconds * rate / (readingsPerLoop * all),
                                            longestReading * rate / (loopGrowth * longest))
                                 : 0;
    m_loops = std::clamp(static_cast<int>(std::min<double>(loops, mostLoops)), leastLoops, mostLoops);
}

void AbRun::lookIfDue() {
    if (!m_swept) {
        const int rounds = m_trial.rounds();
        if (rounds < leastSweep || (rounds < mostSweep && elapsed() < sweepShare * m_options.seconds)) {
            return;
        }
        m_swept = true;
        m_trial.look(roundsLeft());
    } else if (m_trial.lookDue()) {
        m_trial.look(roundsLeft());
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
    for (int number = 0; !interrupted(); ++number) {
        if (number > 0 && !timeForRound()) {
            break;
        }
        if (m_swept && m_trial.undecided() == 0) {
            break;
        }
        startRound(number);
        m_lanes.collect(false);
        if (number == 0) {
            // The first round tells what there is, and whether anything can be measured at all.
            m_lanes.collect(true);
            if (m_trial.rounds() == 0 && !interrupted()) {
                break;
            }
        }
    }
    m_lanes.collect(true);
    m_trial.look(0);
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
    report.commonRemoved = !common.real() && m_trial.tellsDrift();
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
