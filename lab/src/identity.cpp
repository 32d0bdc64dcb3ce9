#include "identity.h"

#include "buildid.h"
#include "fault.h"
#include "rigprocess.h"
#include "sha256.h"
#include "text.h"

#include <algorithm>
#include <chrono>
#include <cpuid.h>
#include <cstdlib>
#include <ctime>
#include <fmt/format.h>
#include <fstream>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <tuple>
#include <unistd.h>
#include <x86intrin.h>

namespace krlab {

namespace fs = std::filesystem;

namespace {

/// Digests are kept as long as the file is the same one.
FileIdentity identityOf(const std::string& name, const fs::path& path) {
    using Key = std::tuple<std::string, dev_t, ino_t, off_t, long long>;
    static std::map<Key, FileIdentity> known;
    static std::mutex guard;
    const std::lock_guard lock(guard);
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        throw Fault(path.string(), "can't be read: " + systemCause(errno));
    }
    const long long changed = status.st_mtim.tv_sec * 1000000000LL + status.st_mtim.tv_nsec;
    const Key key(path.string(), status.st_dev, status.st_ino, status.st_size, changed);
    if (const auto found = known.find(key); found != known.end()) {
        return found->second;
    }
    FileIdentity identity;
    identity.name = name;
    identity.path = fs::canonical(path).string();
    const std::string data = readFile(identity.path);
    identity.sha256 = sha256(data);
    identity.buildId = buildIdOf(data);
    known[key] = identity;
    return identity;
}

/// What the loader resolves: "	libveks.so.1 => /path/libveks.so.1 (0x...)" lines.
std::vector<FileIdentity> resolvedLibraries(const Subject& subject) {
    std::string text;
    RigCall call;
    call.subject = subject;
    call.environment = {"LD_TRACE_LOADED_OBJECTS=1"};
    call.timeLimit = 30;
    call.heedInterrupt = false;
    call.output = [&text](std::string_view piece) { text += piece; };
    callRig(call);
    std::vector<FileIdentity> libraries;
    for (const std::string_view line : split(text, '\n')) {
        const std::string_view entry = trimmed(line);
        const size_t arrow = entry.find(" => ");
        if (!entry.starts_with("libvek") || arrow == std::string_view::npos) {
            continue;
        }
        const std::string name(entry.substr(0, arrow));
        const std::string_view target = entry.substr(arrow + 4);
        if (target.starts_with("not found")) {
            throw Fault(subject.program.string(),
                        fmt::format("the loader does not find {}; name a directory that has it", name));
        }
        libraries.push_back(identityOf(name, std::string(target.substr(0, target.rfind(" (")))));
    }
    std::sort(libraries.begin(), libraries.end(),
              [](const FileIdentity& a, const FileIdentity& b) { return a.name < b.name; });
    return libraries;
}

double measureCounter() {
    const auto start = std::chrono::steady_clock::now();
    const unsigned long long first = __rdtsc();
    auto now = start;
    while (now - start < std::chrono::milliseconds(20)) {
        now = std::chrono::steady_clock::now();
    }
    const unsigned long long last = __rdtsc();
    return static_cast<double>(last - first) / std::chrono::duration<double, std::micro>(now - start).count();
}

/// Numbers instead of a maker's words: they tell processors apart and are the same everywhere.
std::string processorText() {
    std::ifstream in("/proc/cpuinfo");
    std::map<std::string, std::string> fields;
    for (std::string line; std::getline(in, line) && !line.empty();) {
        const size_t colon = line.find(':');
        if (colon != std::string::npos) {
            fields[std::string(trimmed(std::string_view(line).substr(0, colon)))] =
                trimmed(std::string_view(line).substr(colon + 1));
        }
    }
    std::string text =
        fmt::format("family {} model {} stepping {}", fields["cpu family"], fields["model"], fields["stepping"]);
    if (!fields["microcode"].empty()) {
        text += " microcode " + fields["microcode"];
    }
    return text;
}

std::string featureText() {
    unsigned int eax = 0;
    unsigned int ebx = 0;
    unsigned int first[2] = {0, 0};
    unsigned int further[3] = {0, 0, 0};
    __get_cpuid(1, &eax, &ebx, &first[0], &first[1]);
    __get_cpuid_count(7, 0, &eax, &further[0], &further[1], &further[2]);
    return fmt::format("{:08x}", fmt::join(first, "-")) + "-" + fmt::format("{:08x}", fmt::join(further, "-"));
}

Machine readMachine() {
    Machine machine;
    utsname names{};
    ::uname(&names);
    machine.kernel = fmt::format("{} {} {}", names.sysname, names.release, names.machine);
    machine.host = names.nodename;
    machine.processor = processorText();
    machine.features = featureText();
    machine.counterMHz = measureCounter();
    machine.processors = static_cast<int>(::sysconf(_SC_NPROCESSORS_ONLN));
    return machine;
}

nlohmann::json fileJson(const FileIdentity& file) {
    return {{"name", file.name},
            {"path", file.path},
            {"build_id", file.buildId},
            {"sha256", file.sha256},
            {"version", file.version}};
}

FileIdentity fileFromJson(const nlohmann::json& entry) {
    FileIdentity file;
    file.name = entry.value("name", "");
    file.path = entry.value("path", "");
    file.buildId = entry.value("build_id", "");
    file.sha256 = entry.value("sha256", "");
    file.version = entry.value("version", "");
    return file;
}

std::string shortDigest(const FileIdentity& file) {
    return file.buildId.empty() ? "sha256 " + file.sha256.substr(0, 16) : "build-id " + file.buildId.substr(0, 16);
}

} // namespace

const Machine& thisMachine() {
    static const Machine machine = readMachine();
    return machine;
}

std::string timeText() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::localtime_r(&now, &parts);
    char text[40];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S%z", &parts);
    std::string result = text;
    // +0100 becomes +01:00, as ISO 8601 wants it beside a time with colons.
    if (result.size() > 5) {
        result.insert(result.size() - 2, ":");
    }
    return result;
}

double loadAverage() {
    double load = 0;
    return ::getloadavg(&load, 1) == 1 ? load : 0;
}

Identity identify(const Subject& subject) {
    Identity identity;
    identity.subject = subject.name;
    identity.program = identityOf(subject.program.filename().string(), subject.program);
    identity.libraries = resolvedLibraries(subject);
    identity.machine = thisMachine();
    identity.started = timeText();
    identity.loadStart = loadAverage();
    return identity;
}

nlohmann::json toJson(const Identity& identity) {
    nlohmann::json libraries = nlohmann::json::array();
    for (const FileIdentity& file : identity.libraries) {
        libraries.push_back(fileJson(file));
    }
    return {{"subject", identity.subject},
            {"program", fileJson(identity.program)},
            {"libraries", std::move(libraries)},
            {"machine",
             {{"processor", identity.machine.processor},
              {"features", identity.machine.features},
              {"kernel", identity.machine.kernel},
              {"host", identity.machine.host},
              {"counter_mhz", identity.machine.counterMHz},
              {"processors", identity.machine.processors}}},
            {"keys", identity.keys},
            {"arguments", identity.arguments},
            {"started", identity.started},
            {"ended", identity.ended},
            {"load_start", identity.loadStart},
            {"load_end", identity.loadEnd},
            {"rig_cpu", identity.rigCpu},
            {"rig_library", identity.rigLibrary}};
}

Identity identityFromJson(const nlohmann::json& json) {
    Identity identity;
    identity.subject = json.value("subject", "");
    identity.program = fileFromJson(json.value("program", nlohmann::json::object()));
    for (const nlohmann::json& file : json.value("libraries", nlohmann::json::array())) {
        identity.libraries.push_back(fileFromJson(file));
    }
    const nlohmann::json machine = json.value("machine", nlohmann::json::object());
    identity.machine.processor = machine.value("processor", "");
    identity.machine.features = machine.value("features", "");
    identity.machine.kernel = machine.value("kernel", "");
    identity.machine.host = machine.value("host", "");
    identity.machine.counterMHz = machine.value("counter_mhz", 0.0);
    identity.machine.processors = machine.value("processors", 0);
    identity.keys = json.value("keys", std::vector<std::string>());
    identity.arguments = json.value("arguments", std::vector<std::string>());
    identity.started = json.value("started", "");
    identity.ended = json.value("ended", "");
    identity.loadStart = json.value("load_start", 0.0);
    identity.loadEnd = json.value("load_end", 0.0);
    identity.rigCpu = json.value("rig_cpu", "");
    identity.rigLibrary = json.value("rig_library", "");
    return identity;
}

std::string describe(const Identity& identity) {
    std::string text =
        fmt::format("{}: {} ({})", identity.subject, identity.program.path, shortDigest(identity.program));
    for (const FileIdentity& file : identity.libraries) {
        text +=
            fmt::format("\n  {} ({}){}", file.path, shortDigest(file), file.version.empty() ? "" : ", " + file.version);
    }
    text += fmt::format(
        "\n  {}, {}, {} processors, counter {:.0f} MHz, load average {:.2f} to {:.2f} with the rigs of the lab, {}",
        identity.machine.host, identity.machine.kernel, identity.machine.processors, identity.machine.counterMHz,
        identity.loadStart, identity.loadEnd, identity.started);
    return text;
}

bool sameSubject(const Identity& a, const Identity& b) {
    const auto sameFile = [](const FileIdentity& x, const FileIdentity& y) { return x.sha256 == y.sha256; };
    return sameFile(a.program, b.program) && a.keys == b.keys && a.machine.host == b.machine.host &&
           a.machine.processor == b.machine.processor &&
           std::equal(a.libraries.begin(), a.libraries.end(), b.libraries.begin(), b.libraries.end(), sameFile);
}

} // namespace krlab
