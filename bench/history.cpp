// The table of steps that are found, missed and wrongly seen in courses with known steps.
//     bench_history [courses of each kind [passes of a point]]
// A course has 60 points; the step comes behind the 40th. A point is the median of its passes, each with noise of its
// own on a machine that drifts; a reference kernel with half a percent of noise tells the drift, as in `krlab history`.
#include "history.h"
#include "signedrank.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace {

constexpr int pointsOfCourse = 60;
constexpr int stepAt = 40;
constexpr double referenceNoise = 0.005;

enum class Drift { none, walk, jumps };

struct Kind {
    double step;
    double noise;
    Drift drift;
    bool heavyTails;
};

/// The clocks at each point, less the drift as far as the reference tells it.
krlab::HistoryLine courseOf(const Kind& kind, int passes, std::mt19937_64& random) {
    std::normal_distribution<double> normal;
    // A tenth of the passes is disturbed, four times as noisy; the whole has the stated deviation.
    const double scale = kind.heavyTails ? kind.noise / std::sqrt(0.9 + 0.1 * 16) : kind.noise;
    double drift = 0;
    krlab::HistoryLine line;
    for (int i = 0; i < pointsOfCourse; ++i) {
        if (kind.drift == Drift::walk) {
            drift += 0.01 * normal(random);
        } else if (kind.drift == Drift::jumps && std::uniform_int_distribution(0, 7)(random) == 0) {
            drift = 0.05 * normal(random);
        }
        std::vector<double> readings;
        for (int pass = 0; pass < passes; ++pass) {
            const bool disturbed = kind.heavyTails && std::uniform_int_distribution(0, 9)(random) == 0;
            const double noise = scale * (disturbed ? 4 : 1) * normal(random);
            const double level = i >= stepAt ? std::log1p(kind.step) : 0.0;
            const double told = drift + referenceNoise * normal(random);
            readings.push_back(1000 * std::exp(level + noise + drift - told));
        }
        line.clocks.push_back(krlab::medianOf(readings));
    }
    return line;
}

std::vector<krlab::HistoryStep> stepsIn(const krlab::HistoryLine& line, size_t points) {
    krlab::HistoryCourse course;
    course.lines.push_back(line);
    course.lines[0].clocks.resize(points);
    course.points.resize(points);
    krlab::HistoryRule rule;
    rule.threshold = 0.005;
    findHistorySteps(course, rule);
    return course.lines[0].steps;
}

bool nearStep(const krlab::HistoryStep& step, int distance) {
    return std::abs(static_cast<int>(step.point) - stepAt) <= distance && step.factor() > 1;
}

void row(const Kind& kind, int courses, int passes, const char* drift) {
    std::mt19937_64 random(static_cast<unsigned long>(kind.step * 1e4 + kind.noise * 1e7) + (kind.heavyTails ? 1 : 0) +
                           10 * static_cast<unsigned long>(kind.drift));
    int found = 0;
    int early = 0;
    int exact = 0;
    int accused = 0;
    int everAccused = 0;
    for (int i = 0; i < courses; ++i) {
        const krlab::HistoryLine line = courseOf(kind, passes, random);
        bool hit = false;
        bool wrong = false;
        for (const krlab::HistoryStep& step : stepsIn(line, pointsOfCourse)) {
            (kind.step > 0 && nearStep(step, 5) ? hit : wrong) = true;
            exact += kind.step > 0 && step.point == stepAt ? 1 : 0;
        }
        // Without a step `check` after each point may accuse the course once.
        for (size_t seen = 2; kind.step <= 0 && seen <= pointsOfCourse; ++seen) {
            const auto steps = stepsIn(line, seen);
            if (std::any_of(steps.begin(), steps.end(), [](const auto& step) { return step.factor() > 1; })) {
                ++everAccused;
                break;
            }
        }
        found += hit ? 1 : 0;
        accused += wrong ? 1 : 0;
        // Looked at after each of the first five points with the new level.
        for (int seen = 1; kind.step > 0 && seen <= 5; ++seen) {
            const auto steps = stepsIn(line, stepAt + static_cast<size_t>(seen));
            if (std::any_of(steps.begin(), steps.end(), [](const auto& step) { return nearStep(step, 5); })) {
                ++early;
                break;
            }
        }
    }
    const auto percent = [courses](int count) { return 100.0 * count / courses; };
    std::printf("| %4.0f %% | %4.1f %% | %-5s | %-6s | %6d | %5.1f | %5.1f | %5.1f | %5.1f | %5.1f | %5.1f |\n",
                kind.step * 100, kind.noise * 100, kind.heavyTails ? "heavy" : "even", drift, courses, percent(found),
                kind.step > 0 ? percent(courses - found) : 0.0, percent(early), percent(exact), percent(accused),
                percent(everAccused));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    const int courses = argc > 1 ? std::atoi(argv[1]) : 300;
    const int passes = argc > 2 ? std::atoi(argv[2]) : 5;
    std::printf("| step | noise | tails | drift | courses | found | missed | within 5 points | at the very point | "
                "false | at any check "
                "|\n|---|---|---|---|---|---|---|---|---|---|---|\n");
    for (const double step : {0.0, 0.01, 0.02, 0.05, 0.1, 0.2}) {
        for (const double noise : {0.005, 0.01, 0.02, 0.04}) {
            const int count = step > 0 ? courses : 4 * courses;
            row({step, noise, Drift::none, false}, count, passes, "none");
            row({step, noise, Drift::walk, false}, count, passes, "walk");
            row({step, noise, Drift::jumps, true}, count, passes, "jumps");
        }
    }
}
