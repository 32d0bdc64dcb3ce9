#include "report.h"

#include "signedrank.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <fmt/format.h>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

using nlohmann::json;

constexpr double noFigure = std::numeric_limits<double>::quiet_NaN();
// From so many readings on the band leaves out a tenth on each side: a single disturbance would be all that it shows.
constexpr size_t manyReadings = 10;
constexpr double outerShare = 0.1;

// What a machine is called; passes of different machines are never put together.
std::string machineOf(const Identity& identity) {
    const std::string& host = identity.machine.host;
    // In a table the processor's line ends with a comma.
    std::string processor = identity.machine.processor.empty() ? identity.rigCpu : identity.machine.processor;
    processor.erase(processor.find_last_not_of(", ") + 1);
    return processor.empty() ? host : host + ", " + processor;
}

// Five digits tell more than the figures do.
json rounded(double value) {
    return std::isfinite(value) ? json(std::strtod(fmt::format("{:.5g}", value).c_str(), nullptr)) : json(nullptr);
}

double pointOf(const std::vector<double>& sorted, double share) {
    const double at = share * static_cast<double>(sorted.size() - 1);
    const auto below = static_cast<size_t>(at);
    const size_t above = std::min(below + 1, sorted.size() - 1);
    return sorted[below] + (at - static_cast<double>(below)) * (sorted[above] - sorted[below]);
}

// The readings of each line of a list, and the accuracy that the rig told last.
struct LineReadings {
    std::vector<double> clocks;
    double accuracy = -1;
};

std::vector<LineReadings> readingsOf(const PassList& list) {
    std::vector<LineReadings> lines(list.lines().size());
    for (const PassList::Entry& pass : list.passes()) {
        for (const PassList::Reading& reading : pass.readings) {
            if (reading.clocks > 0) {
                lines[reading.line].clocks.push_back(reading.clocks);
                lines[reading.line].accuracy = reading.accuracy;
            }
        }
    }
    return lines;
}

using Passes = std::vector<const PassList::Entry*>;

// Successive passes of one subject and run, at most `most` together. The two subjects of a run alternate.
std::vector<Passes> groupsOf(const Passes& passes, size_t most) {
    std::vector<Passes> groups;
    std::vector<size_t> open; // the last group of each subject in this run
    for (const PassList::Entry* pass : passes) {
        if (!open.empty() && groups[open.front()].front()->run != pass->run) {
            open.clear();
        }
        const auto at = std::find_if(open.begin(), open.end(), [&](size_t group) {
            return alike(groups[group].front()->identity, pass->identity);
        });
        if (at != open.end() && groups[*at].size() < most) {
            groups[*at].push_back(pass);
            continue;
        }
        if (at == open.end()) {
            open.push_back(groups.size());
        } else {
            *at = groups.size();
        }
        groups.push_back({pass});
    }
    return groups;
}

void addPoint(Course& course, const Passes& passes, const std::vector<const PassList*>& sides) {
    const PassList::Entry& first = *passes.front();
    CoursePoint point;
    point.identity = first.identity;
    point.label = first.label;
    point.time = secondsOf(point.identity.started);
    point.run = first.run;
    point.passes = passes.size();
    for (size_t side = 0; side < sides.size() && point.side < 0; ++side) {
        if (!sides[side]->passes().empty() && alike(sides[side]->passes().front().identity, point.identity)) {
            point.side = static_cast<int>(side);
        }
    }
    std::vector<std::vector<double>> readings(course.list->lines().size());
    for (const PassList::Entry* pass : passes) {
        point.complete = point.complete && pass->complete;
        for (const PassList::Reading& reading : pass->readings) {
            if (reading.clocks > 0) {
                readings[reading.line].push_back(reading.clocks);
            }
        }
    }
    std::vector<double>& clocks = course.clocks.emplace_back();
    for (std::vector<double>& values : readings) {
        clocks.push_back(values.empty() ? noFigure : medianOf(std::move(values)));
    }
    course.points.push_back(std::move(point));
}

// Keeps the newest points with at most `most` readings together, and one at least.
void keepNewest(Course& course, size_t most) {
    size_t readings = 0;
    size_t points = 0;
    for (auto clocks = course.clocks.rbegin(); clocks != course.clocks.rend(); ++clocks, ++points) {
        readings += static_cast<size_t>(
            std::count_if(clocks->begin(), clocks->end(), [](double value) { return std::isfinite(value); }));
        if (readings > most && points > 0) {
            break;
        }
    }
    course.leftOut = course.clocks.size() - points;
    const auto gone = static_cast<std::ptrdiff_t>(course.leftOut);
    course.clocks.erase(course.clocks.begin(), course.clocks.begin() + gone);
    course.points.erase(course.points.begin(), course.points.begin() + gone);
}

// The level of each point: the median of how far its lines are from their usual readings on that machine.
void findLevels(Course& course) {
    std::map<std::string, std::vector<size_t>> machines;
    for (size_t i = 0; i < course.points.size(); ++i) {
        machines[machineOf(course.points[i].identity)].push_back(i);
    }
    for (const auto& [machine, points] : machines) {
        std::vector<double> usual;
        for (size_t line = 0; line < course.list->lines().size(); ++line) {
            std::vector<double> values;
            for (const size_t point : points) {
                if (std::isfinite(course.clocks[point][line])) {
                    values.push_back(std::log(course.clocks[point][line]));
                }
            }
            usual.push_back(medianOf(std::move(values)));
        }
        for (const size_t point : points) {
            std::vector<double> away;
            for (size_t line = 0; line < usual.size(); ++line) {
                if (std::isfinite(course.clocks[point][line])) {
                    away.push_back(std::log(course.clocks[point][line]) - usual[line]);
                }
            }
            course.points[point].level = away.empty() ? 1 : std::exp(medianOf(std::move(away)));
        }
    }
}

// Numbers for what occurs often.
template <typename Key>
class Numbered {
public:
    size_t operator()(const Key& key) {
        const auto [at, isNew] = m_numbers.try_emplace(key, m_numbers.size());
        if (isNew) {
            m_keys.push_back(key);
        }
        return at->second;
    }
    const std::vector<Key>& keys() const { return m_keys; }

private:
    std::map<Key, size_t> m_numbers;
    std::vector<Key> m_keys;
};

class Data {
public:
    Data(const ReportInput& input, const Course& course) : m_input(input), m_course(course) {}
    json build();

private:
    std::uint32_t lineOf(const Line& line) { return static_cast<std::uint32_t>(m_lines(line)); }
    void takeElements(const PassList& list);
    json sides();
    json verdictRows(const std::vector<LineVerdict>& verdicts);
    json verdicts();
    json kinds();
    json points();
    json values();
    json steps();
    json lines();
    json listOf(const std::vector<Line>& lines);
    size_t identityOf(const Identity& identity);

    const ReportInput& m_input;
    const Course& m_course;
    Numbered<Line> m_lines;
    std::map<Line, double> m_elements;
    Numbered<std::string> m_identities;
    Numbered<std::string> m_machines;
};

size_t Data::identityOf(const Identity& identity) {
    json text = toJson(identity);
    // What differs from pass to pass stands at the points.
    for (const char* key : {"started", "ended", "load_start", "load_end", "arguments"}) {
        text.erase(key);
    }
    text["machine"].erase("counter_mhz");
    return m_identities(text.dump(-1, ' ', false, json::error_handler_t::replace));
}

void Data::takeElements(const PassList& list) {
    for (std::uint32_t line = 0; line < list.lines().size(); ++line) {
        if (list.elements(line) > 0) {
            m_elements[list.lines()[line]] = list.elements(line);
        }
    }
}

json Data::sides() {
    json sides = json::array();
    for (const PassList* list : m_input.sides) {
        takeElements(*list);
        json stats = json::array();
        const std::vector<LineReadings> readings = readingsOf(*list);
        for (size_t line = 0; line < readings.size(); ++line) {
            const Band band = bandOf(readings[line].clocks, readings[line].accuracy);
            if (band.passes > 0) {
                stats.push_back({lineOf(list->lines()[line]), rounded(band.middle), rounded(band.low),
                                 rounded(band.high), rounded(band.smallest), band.passes});
            }
        }
        const PassList::Entry& first = list->passes().front();
        const PassList::Entry& last = list->passes().back();
        sides.push_back({{"name", first.identity.subject},
                         {"label", last.label},
                         {"identity", identityOf(first.identity)},
                         {"passes", list->passes().size()},
                         {"first", first.identity.started},
                         {"last", last.identity.started},
                         {"load", {first.identity.loadStart, last.identity.loadEnd}},
                         {"counter_mhz", last.identity.machine.counterMHz},
                         {"stats", std::move(stats)}});
    }
    return sides;
}

json Data::listOf(const std::vector<Line>& lines) {
    json list = json::array();
    for (const Line& line : lines) {
        list.push_back(lineOf(line));
    }
    return list;
}

json Data::verdictRows(const std::vector<LineVerdict>& verdicts) {
    json lines = json::array();
    for (const LineVerdict& line : verdicts) {
        const bool known = std::isfinite(line.high);
        lines.push_back({lineOf(line.line), rounded(line.older), rounded(line.newer), rounded(line.ratio),
                         rounded(known ? line.low : noFigure), rounded(known ? line.high : noFigure), line.passes,
                         verdictText(line.verdict)});
    }
    return lines;
}

// The axis of machines: the verdicts on each kind of a fleet.
json Data::kinds() {
    json kinds = json::array();
    if (m_input.verdicts) {
        for (const KindVerdicts& kind : m_input.verdicts->kinds) {
            kinds.push_back({{"name", kind.name()},
                             {"features", kind.features},
                             {"hosts", kind.hosts},
                             {"rounds", kind.rounds},
                             {"lines", verdictRows(kind.lines)}});
        }
    }
    return kinds;
}

json Data::verdicts() {
    if (!m_input.verdicts) {
        return nullptr;
    }
    const VerdictReport& report = *m_input.verdicts;
    return {{"threshold", report.threshold},
            {"confidence", report.confidence},
            {"common", {{"ratio", rounded(report.commonRatio)}, {"removed", report.commonRemoved}}},
            {"geometric_mean", countVerdicts(report.lines).geometricMean},
            {"lines", verdictRows(report.lines)},
            {"only_old", listOf(report.onlyOld)},
            {"only_new", listOf(report.onlyNew)},
            {"incomplete", report.incomplete}};
}

json Data::points() {
    json points = json::array();
    for (const CoursePoint& point : m_course.points) {
        points.push_back({{"time", point.time ? json(*point.time) : json(nullptr)},
                          {"started", point.identity.started},
                          {"label", point.label},
                          {"subject", point.identity.subject},
                          {"identity", identityOf(point.identity)},
                          {"machine", m_machines(machineOf(point.identity))},
                          {"run", point.run},
                          {"passes", point.passes},
                          {"complete", point.complete},
                          {"side", point.side},
                          {"load", rounded(point.identity.loadStart)},
                          {"level", rounded(point.level)}});
    }
    return points;
}

// For each line of the page its readings at the points.
json Data::values() {
    const std::vector<Line>& all = m_course.list->lines();
    std::vector<json> rows;
    for (size_t line = 0; line < all.size(); ++line) {
        json row = json::array();
        for (const std::vector<double>& clocks : m_course.clocks) {
            row.push_back(rounded(clocks[line]));
        }
        if (std::all_of(row.begin(), row.end(), [](const json& value) { return value.is_null(); })) {
            continue;
        }
        const std::uint32_t number = lineOf(all[line]);
        rows.resize(std::max<size_t>(rows.size(), number + 1));
        rows[number] = std::move(row);
    }
    return rows;
}

json Data::steps() {
    json steps = json::array();
    for (const CourseStep& step : m_course.steps) {
        steps.push_back({lineOf(m_course.list->lines()[step.line]), step.point, rounded(step.factor)});
    }
    return steps;
}

json Data::lines() {
    Numbered<std::string> functions;
    Numbered<std::vector<std::string>> names;
    json lines = json::array();
    json elements = json::array();
    for (const Line& line : m_lines.keys()) {
        std::vector<std::string> own;
        json entry = {functions(line.function), 0};
        for (const Parameter& parameter : line.parameters) {
            own.push_back(parameter.name);
            entry.push_back(parameter.value);
        }
        entry[1] = names(own);
        lines.push_back(std::move(entry));
        const auto known = m_elements.find(line);
        elements.push_back(known == m_elements.end() ? json(nullptr) : rounded(known->second));
    }
    json families = json::array();
    for (const std::string& function : functions.keys()) {
        families.push_back(familyOf(function));
    }
    return {{"functions", functions.keys()},
            {"families", std::move(families)},
            {"names", names.keys()},
            {"lines", std::move(lines)},
            {"elements", std::move(elements)}};
}

json Data::build() {
    json data;
    data["sides"] = sides();
    takeElements(*m_course.list);
    data["verdicts"] = verdicts();
    data["kinds"] = kinds();
    data["points"] = points();
    data["values"] = values();
    data["steps"] = steps();
    // Last, when all lines have their numbers.
    data.update(lines());
    json identities = json::array();
    for (const std::string& text : m_identities.keys()) {
        identities.push_back(json::parse(text));
    }
    data["identities"] = std::move(identities);
    data["machines"] = m_machines.keys();
    data["schema"] = "krlab-report-1";
    data["title"] = m_input.title;
    data["made"] = m_input.made;
    data["merged"] = m_course.merged;
    data["left_out"] = m_course.leftOut;
    json remarks = json::array();
    if (m_input.verdicts) {
        remarks = m_input.verdicts->remarks;
    } else {
        remarks = m_input.sides.front()->remarks();
    }
    data["remarks"] = std::move(remarks);
    return data;
}

} // namespace

Band bandOf(std::vector<double> clocks, double accuracy) {
    Band band;
    band.passes = clocks.size();
    if (clocks.empty()) {
        return band;
    }
    std::sort(clocks.begin(), clocks.end());
    band.middle = pointOf(clocks, 0.5);
    band.smallest = clocks.front();
    if (clocks.size() == 1) {
        const double share = std::max(accuracy, 0.0);
        band.low = band.middle / (1 + share);
        band.high = band.middle * (1 + share);
    } else {
        const double outer = clocks.size() < manyReadings ? 0 : outerShare;
        band.low = pointOf(clocks, outer);
        band.high = pointOf(clocks, 1 - outer);
    }
    return band;
}

bool alike(const Identity& a, const Identity& b) {
    return a.subject == b.subject && sameSubject(a, b);
}

PassList latestSubject(const PassList& all) {
    const PassList::Entry* latest = nullptr;
    long long newest = 0;
    for (const PassList::Entry& pass : all.passes()) {
        const long long time = secondsOf(pass.identity.started).value_or(0);
        if (latest == nullptr || time >= newest) {
            latest = &pass;
            newest = time;
        }
    }
    if (latest == nullptr) {
        return all;
    }
    const Identity identity = latest->identity;
    return all.where([&](const PassList::Entry& pass) { return alike(identity, pass.identity); });
}

Course courseOf(const PassList& list, const std::vector<const PassList*>& sides, size_t mostReadings) {
    Passes passes;
    size_t readings = 0;
    for (const PassList::Entry& pass : list.passes()) {
        passes.push_back(&pass);
        readings += pass.readings.size();
    }
    // Where a time is not known the order of the list stands.
    const auto timeOf = [](const PassList::Entry* pass) { return secondsOf(pass->identity.started); };
    if (std::all_of(passes.begin(), passes.end(), timeOf)) {
        std::stable_sort(passes.begin(), passes.end(),
                         [&](const PassList::Entry* a, const PassList::Entry* b) { return *timeOf(a) < *timeOf(b); });
    }
    Course course;
    course.list = &list;
    course.merged = std::max<size_t>(1, (readings + mostReadings - 1) / mostReadings);
    for (const Passes& group : groupsOf(passes, course.merged)) {
        addPoint(course, group, sides);
    }
    keepNewest(course, mostReadings);
    findLevels(course);
    return course;
}

std::optional<long long> secondsOf(const std::string& time) {
    std::tm parts{};
    if (const char* rest = ::strptime(time.c_str(), "%Y-%m-%dT%H:%M:%S", &parts)) {
        int hours = 0;
        int minutes = 0;
        char sign = 0;
        if (std::sscanf(rest, "%c%2d:%2d", &sign, &hours, &minutes) != 3 || (sign != '+' && sign != '-')) {
            return std::nullopt;
        }
        const int offset = (hours * 60 + minutes) * 60;
        return ::timegm(&parts) - (sign == '-' ? -offset : offset);
    }
    parts = {};
    if (::strptime(time.c_str(), "%a %b %d %H:%M:%S %Y", &parts) != nullptr) {
        parts.tm_isdst = -1;
        return std::mktime(&parts);
    }
    return std::nullopt;
}

json reportData(const ReportInput& input, const Course& course) {
    return Data(input, course).build();
}

} // namespace krlab
