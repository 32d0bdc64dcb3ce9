// 5,000 damaged tables, texts, arguments: each is read or refused with a message, none ends the program otherwise.
#include "fakerig.h"
#include "fault.h"
#include "infotext.h"
#include "program.h"
#include "rigkeys.h"
#include "selection.h"
#include "summary.h"
#include "table.h"
#include "tidy.h"

#include <gtest/gtest.h>
#include <random>

using namespace krlab;

namespace {

const std::string goodTable = tableHead + tableHeading +
                              "veksA,16s,-,lenght,lenght Dst,-,-,-,-,parmNames,-,-,-,-\n"
                              "veksA,16s,-,160,9,-,-,-,-,nLps=8,0.0993,e,0.0511,-\n"
                              "veksB_G729,32f,I, \"a,b\",(decimate),-,-,-,3,nLps=16 acc=7.1%,3.27,e,0.8,12.5\n" +
                              tableHead + tableHeading +
                              "veksA,16s,-,160,9,-,-,-,-,inCache nLps=8,1.000e-05,e,1e+03,-\r\n";

const std::string goodSummary = tableHead + "Function,Class,Control87,Status87,ControlSSX,StatusSSX,Test,Time (sec.),"
                                            "SrcName,Result,ExeName\nveksA_16s,Timing,-,-,-,-,T,0,p,OK,rig\nEND_DATA\n"
                                            ".Number of tests,1\n";

/// Pieces that readers stumble over.
const std::vector<std::string> pieces = {",",         "\n",
                                         "\r",        "\"",
                                         " \"",       "-",
                                         "=",         "CPU,",
                                         "Start,",    "funcBase,",
                                         "nan",       "inf",
                                         "-1",        "1e999",
                                         "GHz",       "|",
                                         "\t",        "\xff",
                                         "parmNames", "acc=%",
                                         "nLps=",     "99999999999999999999",
                                         "(",         "| Function  : ",
                                         "perf=",     "/",
                                         "    "};

class Hostile {
public:
    explicit Hostile(unsigned seed) : m_random(seed) {}

    size_t below(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(m_random); }
    const std::string& piece() { return pieces[below(pieces.size())]; }

    /// The text with one to eight damages.
    std::string damaged(std::string text) {
        for (size_t i = below(8) + 1; i > 0 && !text.empty(); --i) {
            const size_t at = below(text.size());
            switch (below(6)) {
            case 0:
                text[at] = static_cast<char>(below(256));
                break;
            case 1:
                text.erase(at, below(20) + 1);
                break;
            case 2:
                text.insert(at, piece());
                break;
            case 3:
                text.resize(at);
                break;
            case 4:
                text.insert(at, text.substr(below(text.size()), below(80)));
                break;
            default:
                text.insert(at, std::string(below(300), piece()[0]));
            }
        }
        return text;
    }

private:
    std::mt19937 m_random;
};

/// True if the work ended well or in a Fault with a message.
template <typename Work>
bool survives(const Work& work) {
    try {
        work();
    } catch (const Fault& fault) {
        return fault.what()[0] != 0;
    }
    return true;
}

} // namespace

TEST(LabHostile, DamagedTablesAreReadOrRefused) {
    Hostile hostile(20261122);
    for (int i = 0; i < 2500; ++i) {
        const std::string text = hostile.damaged(goodTable);
        EXPECT_TRUE(survives([&] {
            const std::vector<Table> tables = {parseTable("t.csv", text)};
            const std::vector<TidyRecord> records = tidyRecords(tables, {{}});
            EXPECT_EQ(records.size(), tables[0].rows());
            tidyCsv(records);
            tidyJson(records);
            tidyBenchmark(records);
        })) << i;
    }
}

TEST(LabHostile, DamagedSummariesConsoleTextsAndLinesAreReadOrRefused) {
    Hostile hostile(20261123);
    const std::string console = consoleTest("veksX_16s") + consoleTest("veksY_16s") + consoleEnd;
    for (int i = 0; i < 500; ++i) {
        EXPECT_TRUE(survives([&] { parseSummary("s.csv", hostile.damaged(goodSummary)); })) << i;
        EXPECT_TRUE(survives([&] {
            InfoParser parser;
            parser.feed(hostile.damaged(console));
            parser.finish();
        })) << i;
        EXPECT_TRUE(survives([&] {
            const Line line = Line::parse(hostile.damaged("veksAutoCorr_16s32s lenght=160 \"lenght Dst\"=9"));
            EXPECT_EQ(Line::parse(line.text()), line);
            selectLines({line}, splitKeys({"-dlenght=3"}), "");
        })) << i;
    }
}

TEST(LabHostile, HostileArgumentsEndInAStatus) {
    Hostile hostile(20261124);
    const TempDir directory;
    directory.write("t.csv", goodTable);
    const std::string table = directory.path("t.csv");
    const std::vector<std::string> words = {
        "run",        "check", "replay",     "resume",     "tidy",     "--json",  "-",     "--",
        "--to",       "csv",   "xml",        "--seed",     "--passes", "-1",      "1e9",   "--time",
        "9z",         "--rig", "/",          "",           "--quiet",  table,     "-o",    "/nowhere/x",
        "=",          "a=b",   "x:3",        "--limit",    "\xff\xfe", "--store", "/proc", "-h",
        "--accuracy", "200%",  table + ":8", table + ":x", "-fX",      "--bogus"};
    for (int i = 0; i < 1000; ++i) {
        std::vector<std::string> arguments = {"krlab"};
        for (size_t n = hostile.below(7); n > 0; --n) {
            arguments.push_back(hostile.below(8) == 0 ? hostile.piece() : words[hostile.below(words.size())]);
        }
        // No rig is there: what the commands do with one is other tests' business.
        arguments.insert(arguments.begin() + 1, {"--rig", "/nowhere/kelvarrig"});
        std::vector<char*> pointers;
        for (std::string& argument : arguments) {
            pointers.push_back(argument.data());
        }
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        Program program;
        addRun(program);
        addCheck(program);
        addReplay(program);
        addResume(program);
        addTidy(program);
        const int status = program.main(static_cast<int>(pointers.size()), pointers.data());
        const std::string out = testing::internal::GetCapturedStdout();
        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_TRUE(status == exitGood || (status == exitFailed && !err.empty())) << status << " " << err;
    }
}
