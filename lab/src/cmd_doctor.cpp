// krlab doctor: is this machine fit to measure, and what to do about what disturbs.
#include "fitness.h"
#include "identity.h"
#include "machinestate.h"
#include "program.h"
#include "text.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

int doctor(const std::string& subjectText, Context& context) {
    const MachineState state = readMachineState();
    context.console.progress("trying the machine out", -1);
    const MachineTrial trial = tryMachine();
    context.console.clear();
    std::vector<Finding> findings = judgeMachine(state, trial);
    // Without a rig the machine alone is looked at.
    if (!subjectText.empty() || !context.options.rig.empty() || !defaultRig().empty()) {
        const Identity identity = identify(context.subject(subjectText));
        for (const FileIdentity& file : identity.libraries) {
            findings.push_back(judgeBuild(file.name, buildQualityOf(readFile(file.path))));
        }
    }
    std::string text;
    nlohmann::json document = nlohmann::json::array();
    bool bad = false;
    for (const Finding& finding : findings) {
        bad = bad || finding.grade == Finding::Grade::bad;
        text += fmt::format("{:5} {:16} {}\n", gradeName(finding.grade), finding.what, finding.text);
        if (!finding.advice.empty()) {
            text += fmt::format("{:22} -> {}\n", "", finding.advice);
        }
        document.push_back({{"grade", gradeName(finding.grade)},
                            {"what", finding.what},
                            {"text", finding.text},
                            {"advice", finding.advice}});
    }
    if (context.reportWanted()) {
        writeOutput("-", text);
    }
    context.writeJson(nlohmann::json{{"schema", "krlab-doctor-1"}, {"findings", document}});
    return bad ? exitWorse : exitGood;
}

} // namespace

void addDoctor(Program& program) {
    auto subject = std::make_shared<std::string>();
    CLI::App& command = program.add("doctor", "is this machine fit to measure, and what to do about what is not",
                                    [subject](Context& context) { return doctor(*subject, context); });
    command.add_option("SUBJECT", *subject, "library directory or rig program whose build is looked at");
}

} // namespace krlab
