#include "fleetplan.h"

#include "fault.h"
#include "line.h"
#include "program.h"
#include "rigkeys.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <set>

namespace krlab {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* schemaName = "krlab-fleet-1";
constexpr int mostTasks = 1000000;

/// An object of the plan whose members are taken out by name; what nobody asked for is told.
class Members {
public:
    Members(const std::string& file, std::string place, const Json& object)
        : m_file(file), m_place(std::move(place)), m_object(object) {
        if (!object.is_object()) {
            fail(fmt::format("{} is no object", m_place));
        }
    }
    [[noreturn]] void fail(const std::string& text) const { throw Fault(m_file, text); }
    std::string of(const char* name) const { return fmt::format("\"{}\" of {}", name, m_place); }

    const Json* find(const char* name) {
        m_known.emplace_back(name);
        const auto at = m_object.find(name);
        return at == m_object.end() ? nullptr : &*at;
    }
    const Json& list(const char* name) {
        const Json* value = find(name);
        if (value == nullptr || !value->is_array() || value->empty()) {
            fail(of(name) + " is no list with something in it");
        }
        return *value;
    }
    std::string text(const char* name, const std::string& fallback) {
        const Json* value = find(name);
        if (value != nullptr && !value->is_string()) {
            fail(of(name) + " is no text");
        }
        return value == nullptr ? fallback : value->get<std::string>();
    }
    long long number(const char* name, long long fallback, long long least, long long most) {
        const Json* value = find(name);
        if (value == nullptr) {
            return fallback;
        }
        const bool whole = value->is_number_integer();
        if (!whole || value->get<long long>() < least || value->get<long long>() > most) {
            fail(fmt::format("{} is no whole number from {} to {}", of(name), least, most));
        }
        return value->get<long long>();
    }
    std::vector<std::string> words(const char* name) {
        const Json* value = find(name);
        return value == nullptr ? std::vector<std::string>() : wordsOf(*value, of(name));
    }
    std::vector<std::string> wordsOf(const Json& value, const std::string& what) const {
        const auto isText = [](const Json& word) { return word.is_string(); };
        if (!value.is_array() || !std::all_of(value.begin(), value.end(), isText)) {
            fail(what + " is no list of texts");
        }
        return value.get<std::vector<std::string>>();
    }
    /// A time that the command line would take.
    std::string time(const char* name, const std::string& fallback) {
        std::string value = text(name, fallback);
        try {
            if (parseDuration(value) <= 0) {
                throw Fault("a limit of nothing lets nothing be measured");
            }
        } catch (const Fault& fault) {
            fail(fmt::format("{}: {}", of(name), fault.what()));
        }
        return value;
    }
    void refuseUnknown() {
        m_known.emplace_back("about");
        for (const auto& [name, value] : m_object.items()) {
            if (std::find(m_known.begin(), m_known.end(), name) == m_known.end()) {
                fail(fmt::format("{} has an unknown member \"{}\"{}", m_place, name, proposal(name, m_known)));
            }
        }
    }

private:
    const std::string& m_file;
    std::string m_place;
    const Json& m_object;
    std::vector<std::string> m_known;
};

void readSubjects(const std::string& file, Members& members, FleetPlan& plan) {
    std::set<std::string> names;
    for (const Json& object : members.list("subjects")) {
        Members subject(file, "a subject", object);
        plan.subjects.push_back({subject.text("name", ""), subject.text("path", "")});
        if (plan.subjects.back().name.empty() || plan.subjects.back().path.empty()) {
            subject.fail("a subject needs a \"name\" and a \"path\"");
        }
        if (!names.insert(plan.subjects.back().name).second) {
            subject.fail(fmt::format("two subjects are called \"{}\"", plan.subjects.back().name));
        }
        subject.refuseUnknown();
    }
}

void refuseLostWords(const Members& members, const std::string& what, const std::vector<std::string>& words) {
    if (const RigKeys keys = splitKeys(words); !keys.lost.empty()) {
        members.fail(fmt::format("{}: the rig drops '{}'", what, keys.lost.front()));
    }
}

void readSettings(const std::string& file, Members& members, FleetPlan& plan) {
    const Json* list = members.find("settings");
    if (list == nullptr) {
        plan.settings.emplace_back().name = "usual";
        return;
    }
    std::set<std::string> names;
    for (const Json& object : members.list("settings")) {
        Members setting(file, "a setting", object);
        FleetSetting& read = plan.settings.emplace_back();
        read.name = setting.text("name", "");
        if (read.name.empty() || !names.insert(read.name).second) {
            setting.fail("each setting needs a \"name\" of its own");
        }
        read.alignment = static_cast<int>(setting.number("alignment", 0, 0, 4096));
        const std::string cache = setting.text("cache", "in");
        if (cache != "in" && cache != "both") {
            setting.fail(setting.of("cache") + " is neither \"in\" nor \"both\"");
        }
        read.outOfCache = cache == "both";
        read.level = setting.text("level", "");
        read.keys = setting.words("keys");
        refuseLostWords(setting, setting.of("keys"), read.keys);
        setting.refuseUnknown();
    }
}

void readNodes(const std::string& file, Members& members, FleetPlan& plan) {
    const Json* list = members.find("nodes");
    if (list == nullptr) {
        plan.nodes.emplace_back();
        return;
    }
    for (const Json& object : members.list("nodes")) {
        Members nodes(file, "an entry of \"nodes\"", object);
        plan.nodes.push_back({nodes.text("features", ""), nodes.text("processor", ""),
                              static_cast<int>(nodes.number("tasks", 1, 1, mostTasks))});
        nodes.refuseUnknown();
    }
}

} // namespace

std::vector<std::string> FleetSetting::rigKeys() const {
    std::vector<std::string> words;
    if (alignment > 0) {
        words = {fmt::format("-dVectorAlign={}", alignment), "-dAlignVectorsBy=byte"};
    }
    if (outOfCache) {
        words.emplace_back("-C");
    }
    if (!level.empty()) {
        words.push_back("-T" + level);
    }
    words.insert(words.end(), keys.begin(), keys.end());
    return words;
}

std::vector<FleetTask> FleetPlan::tasks() const {
    std::vector<FleetTask> all;
    for (size_t kind = 0; kind < nodes.size(); ++kind) {
        for (int repetition = 0; repetition < nodes[kind].tasks; ++repetition) {
            for (size_t setting = 0; setting < settings.size(); ++setting) {
                for (size_t selection = 0; selection < selections.size(); ++selection) {
                    all.push_back({static_cast<int>(all.size()), kind, setting, selection});
                }
            }
        }
    }
    return all;
}

std::vector<std::string> FleetPlan::keys(const FleetTask& task) const {
    std::vector<std::string> words = selections[task.selection];
    const std::vector<std::string> setting = settings[task.setting].rigKeys();
    words.insert(words.end(), setting.begin(), setting.end());
    return words;
}

int FleetPlan::rounds() const {
    return passes * std::max(1, static_cast<int>(subjects.size()) - 1);
}

size_t FleetPlan::partner(int round) const {
    return subjects.size() < 2 ? 0 : 1 + static_cast<size_t>(round) % (subjects.size() - 1);
}

FleetPlan parsePlan(const std::string& file, const std::string& text) {
    Json document;
    try {
        document = Json::parse(text);
    } catch (const Json::parse_error& error) {
        throw Fault(file, fmt::format("is no JSON: {}", error.what()));
    }
    Members members(file, "the plan", document);
    if (members.text("schema", "") != schemaName) {
        members.fail(fmt::format("is no plan of a fleet: \"schema\" is not \"{}\"; krlab fleet plan writes one to "
                                 "start from",
                                 schemaName));
    }
    FleetPlan plan;
    plan.name = members.text("name", plan.name);
    readSubjects(file, members, plan);
    for (const Json& selection : members.list("selections")) {
        plan.selections.push_back(members.wordsOf(selection, "an entry of \"selections\""));
        refuseLostWords(members, "an entry of \"selections\"", plan.selections.back());
    }
    readSettings(file, members, plan);
    readNodes(file, members, plan);
    plan.passes = static_cast<int>(members.number("passes", plan.passes, 1, 100000));
    plan.loops = static_cast<int>(members.number("loops", plan.loops, 1, 1 << 20));
    plan.seed = static_cast<unsigned long>(members.number("seed", 1, 0, (1LL << 62)));
    plan.time = members.time("time", plan.time);
    plan.passTime = members.time("pass_time", plan.passTime);
    plan.slurm = members.words("slurm");
    members.refuseUnknown();
    long long count = 0;
    for (const FleetNodes& nodes : plan.nodes) {
        count += static_cast<long long>(nodes.tasks) * static_cast<long long>(plan.settings.size()) *
                 static_cast<long long>(plan.selections.size());
    }
    if (count > mostTasks) {
        members.fail(fmt::format("the plan has {} tasks; {} is the most", count, mostTasks));
    }
    return plan;
}

Json toJson(const FleetPlan& plan) {
    Json subjects = Json::array();
    for (const FleetSubject& subject : plan.subjects) {
        subjects.push_back({{"name", subject.name}, {"path", subject.path}});
    }
    Json settings = Json::array();
    for (const FleetSetting& setting : plan.settings) {
        settings.push_back({{"name", setting.name},
                            {"alignment", setting.alignment},
                            {"cache", setting.outOfCache ? "both" : "in"},
                            {"level", setting.level},
                            {"keys", setting.keys}});
    }
    Json nodes = Json::array();
    for (const FleetNodes& kind : plan.nodes) {
        nodes.push_back({{"features", kind.features}, {"processor", kind.processor}, {"tasks", kind.tasks}});
    }
    return {{"schema", schemaName}, {"name", plan.name}, {"subjects", subjects},       {"selections", plan.selections},
            {"settings", settings}, {"nodes", nodes},    {"passes", plan.passes},      {"loops", plan.loops},
            {"seed", plan.seed},    {"time", plan.time}, {"pass_time", plan.passTime}, {"slurm", plan.slurm}};
}

std::string samplePlan() {
    return R"({
  "schema": "krlab-fleet-1",
  "about": "Words on what the plan is for; every object may have them.",
  "name": "nightly",
  "subjects": [
    { "name": "before", "path": "builds/before", "about": "The old one. Paths start at this file's directory." },
    { "name": "after", "path": "builds/after" }
  ],
  "selections": [
    [ "-fG729", "-fDotProd" ],
    [ "-fAMRWB" ]
  ],
  "settings": [
    { "name": "usual" },
    { "name": "misaligned", "alignment": 1, "about": "Vectors are one byte off." },
    { "name": "plain code", "level": "Unknown", "cache": "in",
      "about": "level: as for the rig's key -T. cache: in, or both in and out of it. Others: keys, a list." }
  ],
  "nodes": [
    { "features": "", "processor": "", "tasks": 4,
      "about": "tasks: for each selection and setting. features: as sbatch takes a constraint; processor: what a task insists on, such as: family 6 model 143." }
  ],
  "passes": 6,
  "loops": 32,
  "seed": 1,
  "time": "30m",
  "pass_time": "2m",
  "slurm": []
}
)";
}

bool isProcessor(std::string_view machine, std::string_view wanted) {
    return wanted.empty() ||
           (machine.starts_with(wanted) && (machine.size() == wanted.size() || machine[wanted.size()] == ' '));
}

std::string rangeText(const std::vector<int>& numbers) {
    std::string text;
    for (size_t i = 0; i < numbers.size();) {
        size_t end = i + 1;
        while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) {
            ++end;
        }
        text += text.empty() ? "" : ",";
        text += end - i == 1 ? fmt::format("{}", numbers[i]) : fmt::format("{}-{}", numbers[i], numbers[end - 1]);
        i = end;
    }
    return text;
}

} // namespace krlab
