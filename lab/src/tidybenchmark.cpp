// Tables in the JSON form of Google Benchmark: its context, an entry a line and run, and the aggregates that it gives
// for repetitions.
#include "signedrank.h"
#include "text.h"
#include "tidy.h"

#include <cmath>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

/// The runs of one line.
struct Repetitions {
    std::string name;
    size_t family = 0;   ///< number of its function, from 0
    size_t instance = 0; ///< number of the line among those of its function, from 0
    std::vector<const Figure*> figures;
};

/// "Sun Nov 22 02:25:47 2026" as "2026-11-22T02:25:47"; any other text stays as it is.
std::string dateOf(const std::string& start) {
    constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    std::vector<std::string_view> words = split(start, ' ');
    std::erase(words, "");
    const size_t month = words.size() == 5 ? months.find(words[1]) : std::string_view::npos;
    const auto day = words.size() == 5 ? integerOf(words[2]) : std::nullopt;
    if (month == std::string_view::npos || month % 3 != 0 || !day) {
        return start;
    }
    return fmt::format("{}-{:02}-{:02}T{}", words[4], month / 3 + 1, *day, words[3]);
}

/// The processors in "..., 2x2.66 GHz"; 0 if the text tells none.
long long processorsOf(const std::string& text) {
    const size_t comma = text.rfind(", ", text.size() > 2 ? text.size() - 3 : 0);
    const size_t start = comma == std::string::npos ? 0 : comma + 2;
    const size_t cross = text.find('x', start);
    return cross == std::string::npos ? 0 : integerOf(std::string_view(text).substr(start, cross - start)).value_or(0);
}

ordered_json benchmarkContext(const TableRun& run) {
    ordered_json context = {{"date", dateOf(run.start)},
                            {"host_name", run.computer},
                            {"executable", run.libraries.empty() ? "" : run.libraries.back()}};
    if (const long long processors = processorsOf(run.processor); processors > 0) {
        context["num_cpus"] = processors;
    }
    if (run.megahertz > 0) {
        context["mhz_per_cpu"] = std::llround(run.megahertz);
    }
    context["caches"] = ordered_json::array();
    return context;
}

ordered_json benchmarkEntry(const Repetitions& line, const char* type, const std::string& suffix) {
    return {{"name", line.name + suffix},
            {"family_index", line.family},
            {"per_family_instance_index", line.instance},
            {"run_name", line.name},
            {"run_type", type},
            {"repetitions", line.figures.size()}};
}

void setTimes(ordered_json& entry, double nanoseconds, double clocks) {
    entry["real_time"] = nanoseconds;
    entry["cpu_time"] = nanoseconds;
    entry["time_unit"] = "ns";
    entry["clocks"] = clocks;
}

struct TimeStatistics {
    double mean = 0;
    double median = 0;
    double deviation = 0; ///< of the sample
};

TimeStatistics statisticsOf(const std::vector<double>& values) {
    TimeStatistics statistics;
    const auto count = static_cast<double>(values.size());
    for (const double value : values) {
        statistics.mean += value / count;
    }
    double squares = 0;
    for (const double value : values) {
        squares += (value - statistics.mean) * (value - statistics.mean);
    }
    statistics.deviation = std::sqrt(squares / (count - 1));
    statistics.median = medianOf(values);
    return statistics;
}

void addAggregates(ordered_json& benchmarks, const Repetitions& line) {
    std::vector<double> times;
    std::vector<double> clocks;
    for (const Figure* figure : line.figures) {
        times.push_back(figure->microseconds * 1000);
        clocks.push_back(figure->clocks);
    }
    const TimeStatistics time = statisticsOf(times);
    const TimeStatistics clock = statisticsOf(clocks);
    const auto add = [&](const char* name, const char* unit, double timeValue, double clockValue) {
        ordered_json entry = benchmarkEntry(line, "aggregate", std::string("_") + name);
        entry["threads"] = 1;
        entry["aggregate_name"] = name;
        entry["aggregate_unit"] = unit;
        entry["iterations"] = line.figures.size();
        setTimes(entry, timeValue, clockValue);
        benchmarks.push_back(std::move(entry));
    };
    add("mean", "time", time.mean, clock.mean);
    add("median", "time", time.median, clock.median);
    add("stddev", "time", time.deviation, clock.deviation);
    add("cv", "percentage", time.deviation / time.mean, clock.deviation / clock.mean);
}

} // namespace

std::string tidyBenchmark(const std::vector<TidyRecord>& records) {
    std::vector<Repetitions> lines;
    std::map<Line, size_t> indexes;
    std::map<std::string, std::pair<size_t, size_t>> families; // number and lines so far
    for (const TidyRecord& record : records) {
        const Figure& figure = *record.figure;
        if (figure.microseconds <= 0) {
            continue;
        }
        const auto [at, isNew] = indexes.try_emplace(figure.line, lines.size());
        if (isNew) {
            auto& [family, count] = families.try_emplace(figure.line.function, families.size(), 0).first->second;
            Repetitions& line = lines.emplace_back();
            line.family = family;
            line.instance = count++;
            line.name = figure.line.function;
            for (const Parameter& parameter : figure.line.parameters) {
                line.name += "/" + parameter.name + ":" + parameter.value;
            }
        }
        lines[at->second].figures.push_back(&figure);
    }
    ordered_json benchmarks = ordered_json::array();
    for (const Repetitions& line : lines) {
        for (size_t i = 0; i < line.figures.size(); ++i) {
            const Figure& figure = *line.figures[i];
            ordered_json entry = benchmarkEntry(line, "iteration", "");
            entry["repetition_index"] = i;
            entry["threads"] = 1;
            entry["iterations"] = std::max(figure.loops, 1LL);
            setTimes(entry, figure.microseconds * 1000, figure.clocks);
            benchmarks.push_back(std::move(entry));
        }
        if (line.figures.size() > 1) {
            addAggregates(benchmarks, line);
        }
    }
    const ordered_json context = records.empty() ? ordered_json::object() : benchmarkContext(*records.front().head);
    return ordered_json{{"context", context}, {"benchmarks", benchmarks}}.dump(1, ' ', false,
                                                                               json::error_handler_t::replace) +
           "\n";
}

} // namespace krlab
