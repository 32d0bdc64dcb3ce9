// Hostile command lines, .cfg files, ini-files and answers at the real programs: each run ends by itself.
#include "hostile_text.h"
#include "rig_process.h"

#include <gtest/gtest.h>

namespace {

// Words that no run may be given here: keys that would lead out of the directory, and those that end it at once.
std::vector<std::string> hostileKeys(HostileText& hostile) {
    std::vector<std::string> keys;
    for (int n = hostile.number(8); n > 0; --n) {
        keys.push_back(hostile.tameKey());
    }
    return keys;
}

// "-f" conditions that leave a few quick tests whatever else stands in the line.
void limit(std::vector<std::string>& keys) {
    for (const char* key : {"-f+fr", "-f-frMany"}) {
        keys.push_back(key);
    }
}

// A run that ended by itself, and told so much.
void expectOrderly(const RigResult& run, const char* told) {
    EXPECT_TRUE(run.ended()) << "signal " << run.signal << "\n" << run.out;
    EXPECT_EQ(1, countOf(run.out, told));
}

} // namespace

TEST(HostileProgram, CommandLinesNeitherCrashNorHang) {
    HostileText hostile(11);
    for (int i = 0; i < 24; ++i) {
        const RigDirectory rig(FAULTRIG, "rig");
        std::vector<std::string> keys = hostileKeys(hostile);
        limit(keys);
        RigConsole console;
        console.input = hostile.text(40);
        const RigResult run = rig.run(keys, console);
        EXPECT_TRUE(run.ended()) << "signal " << run.signal << "\n" << run.out;
        EXPECT_NE(std::string::npos, run.out.find("Command line options: \n"));
    }
}

TEST(HostileProgram, CfgFilesNeitherCrashNorHang) {
    HostileText hostile(12);
    for (int i = 0; i < 8; ++i) {
        const RigDirectory rig(FAULTRIG, "rig");
        std::string line = "-f+frG";
        for (int n = hostile.number(30); n > 0; --n) {
            line += " " + hostile.tameKey();
        }
        rig.write("rig.cfg", line + "\n-h\n");
        const RigResult run = rig.run({});
        expectOrderly(run, "Command line options: read from rig.cfg file\n");
    }
}

TEST(HostileProgram, IniFilesNeitherCrashNorHang) {
    HostileText hostile(13);
    for (int i = 0; i < 8; ++i) {
        const RigDirectory rig(FAULTRIG, "rig");
        std::string text = "[Kelvar Rig]\n";
        for (int n = hostile.number(40); n > 0; --n) {
            text += hostile.text(3) + "\n";
        }
        text += "[frGood]\nSize=" + hostile.text(2) + "\n[Kelvar Rig]\nMethod=Manual\nNumLoops=1\n";
        rig.write("rig.ini", text);
        const RigResult run = rig.run({"-B", i % 2 == 0 ? "-i" : "-I", "-f+frGood", i % 3 == 0 ? "-P" : "-H"});
        expectOrderly(run, "KR Summary");
    }
}

TEST(HostileProgram, AnswersNeitherCrashNorHang) {
    HostileText hostile(14);
    for (int i = 0; i < 8; ++i) {
        const RigDirectory rig(FAULTRIG, "rig");
        RigConsole console;
        console.terminal = i % 2 == 0;
        console.rawTerminal = console.terminal;
        for (int n = 0; n < 12; ++n) {
            console.input += hostile.text(3) + "\n";
        }
        const RigResult run =
            rig.run({"-AAll", "-f=frGood", "-f=cmParameter", "-dMethod=Manual", "-dNumLoops=2"}, console);
        expectOrderly(run, "KR Summary");
    }
}

TEST(HostileProgram, CommandLinesOfTheRealProgramNeitherCrashNorHang) {
    HostileText hostile(15);
    for (int i = 0; i < 16; ++i) {
        const RigDirectory rig(KELVARRIG, "kelvarrig");
        std::vector<std::string> keys = hostileKeys(hostile);
        keys.push_back(i % 2 == 0 ? "-h" : "-?");
        const RigResult run = rig.run(keys);
        EXPECT_EQ(0, run.exitCode) << "signal " << run.signal << "\n" << run.out;
        EXPECT_EQ(1, countOf(run.out, "Command line options: \n"));
    }
}
