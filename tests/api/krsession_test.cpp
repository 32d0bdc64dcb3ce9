// The session: path rules, registration, the order of the phases, early exits, table titles and the signal file.
#include "harness_state.h"
#include "kriterator.h"
#include "streamcapture.h"
#include "tempdir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(KrSessionPaths, AbsoluteMeansARootOrADrive) {
    for (const char* path : {"/", "/a", "\\a", "c:", "c:x", "c:\\x"}) {
        EXPECT_TRUE(krSession::isAbsolutePath(path)) << path;
    }
    for (const char* path : {"", "a", "a/b", "./a", ":", "ab:"}) {
        EXPECT_FALSE(krSession::isAbsolutePath(path)) << path;
    }
}

struct ExeAt : HarnessState {
    explicit ExeAt(const char* path) { krSession::m_exePath = path; }
};

TEST(KrSessionPaths, RelativeDirectoriesLieBesideTheExecutable) {
    const ExeAt exe("/opt/rig/bin.x");
    EXPECT_STREQ(krSession::genDirName("").c_str(), "/opt/rig/");
    EXPECT_STREQ(krSession::genDirName("out").c_str(), "/opt/rig/out/");
    EXPECT_STREQ(krSession::genDirName("out/").c_str(), "/opt/rig/out/");
    EXPECT_STREQ(krSession::genDirName("out\\").c_str(), "/opt/rig/out\\");
    EXPECT_STREQ(krSession::genDirName("/tmp").c_str(), "/tmp/");
    EXPECT_STREQ(krSession::genDirName("d:x").c_str(), "d:x/");
    krSession::setInDir("in");
    krSession::setOutDir("");
    EXPECT_STREQ(krSession::m_inDir.c_str(), "/opt/rig/in/");
    EXPECT_STREQ(krSession::m_outDir.c_str(), "/opt/rig/");
}

TEST(KrSessionPaths, DefaultNameIsTheTitleOfTheExecutable) {
    const ExeAt exe("/opt/rig.d/my.rig.x");
    krSession::setDefName("");
    EXPECT_STREQ(krSession::m_defName.c_str(), "my.rig");
    krSession::setDefName("other");
    EXPECT_STREQ(krSession::m_defName.c_str(), "other");
}

TEST(KrSessionPaths, ExtensionIsAddedToARelativeNameWithoutAnyDot) {
    const ExeAt exe("/opt/rig");
    krSession::m_defName = "rig";
    EXPECT_STREQ(krSession::genPathName("d/", "", ".csv").c_str(), "d/rig.csv");
    EXPECT_STREQ(krSession::genPathName("d/", "a", ".csv").c_str(), "d/a.csv");
    EXPECT_STREQ(krSession::genPathName("d/", "a.txt", ".csv").c_str(), "d/a.txt");
    EXPECT_STREQ(krSession::genPathName("d/", "x.y/a", ".csv").c_str(), "d/x.y/a");
    EXPECT_STREQ(krSession::genPathName("d/", "/abs", ".csv").c_str(), "/abs");
    EXPECT_STREQ(krSession::genPathName("d/", "c:abs", ".csv").c_str(), "c:abs");
    krSession::m_inDir = "in/";
    krSession::m_outDir = "out/";
    EXPECT_STREQ(krSession::genInPath("a", ".ini").c_str(), "in/a.ini");
    EXPECT_STREQ(krSession::genOutPath("", "_sum.csv").c_str(), "out/rig_sum.csv");
}

TEST(KrSessionPaths, BareNamesGetTheDirectoryOnce) {
    const ExeAt exe("/opt/rig");
    EXPECT_STREQ(krSession::getDirPath("a", "").c_str(), "/opt/a");
    EXPECT_STREQ(krSession::getDirPath("a", "d/").c_str(), "d/a");
    EXPECT_STREQ(krSession::getDirPath("d/a", "d/").c_str(), "d/a");
    EXPECT_STREQ(krSession::getDirPath("x/d/a", "d/").c_str(), "d/x/d/a");
    EXPECT_STREQ(krSession::getDirPath("/a", "d/").c_str(), "/a");
    krSession::m_inDir = "in/";
    krSession::m_outDir = "out/";
    EXPECT_STREQ(krSession::getInPath("a").c_str(), "in/a");
    EXPECT_STREQ(krSession::getOutPath("a").c_str(), "out/a");
}

TEST(KrSessionPaths, ExtensionsAreAsDocumented) {
    const char* given[] = {extIni, extCsv, extOut, extSgl, extName, extSum, extMem};
    const char* expected[] = {".ini", ".csv", ".txt", ".end", "_name.csv", "_sum.csv", "_mem.csv"};
    for (int i = 0; i < 7; ++i) {
        EXPECT_STREQ(given[i], expected[i]);
    }
    EXPECT_STREQ(KR_version, "2.0");
    EXPECT_STREQ(KR_buildDate, "Mar 16 2010");
}

// Calendar time of a played clock: each phase takes ten seconds, each measurement a thousand.
time_t s_now = 0;

// A test with a result of its own choice.
class Chosen : public krTest {
public:
    explicit Chosen(const char* name, krResult result = krOk)
        : krTest(krFuncLoop(nullptr), nullptr, name, "p_chosen", "TimChosen//KR_REG"), m_chosen(result) {}
    krResult runTiming() override {
        s_ran += std::string(m_name.c_str()) + " ";
        s_now += 1000;
        m_tool.m_funcClocks = 100;
        m_tool.m_comment = "nLps=1";
        return m_chosen;
    }
    static std::string s_ran;

private:
    krResult m_chosen;
};
std::string Chosen::s_ran;

std::string s_phases;

// A session that notes its phases.
class Phases : public krSession {
public:
    void initSession() override { note("init"), krSession::initSession(); }
    bool parseCommandLine(int argc, char** argv) override {
        note("parse");
        return krSession::parseCommandLine(argc, argv);
    }
    void updateOptions() override { note("options"), krSession::updateOptions(); }
    bool startSession() override {
        note("start");
        return starts;
    }
    void outputHeader() override { note("header"), krSession::outputHeader(); }
    void readCommonData() override { note("common"), krSession::readCommonData(); }
    void putTableTitle() override { note("title"), krSession::putTableTitle(); }
    void listTests(int mode) override {
        note("list");
        s_phases += std::to_string(mode) + " ";
        krSession::listTests(mode);
    }
    void hint(char key, bool hide) override { note("hint"), krSession::hint(key, hide); }
    void outputFooter() override { note("footer"), krSession::outputFooter(); }
    void outputSignal() override { note("signal"), krSession::outputSignal(); }
    bool starts = true;

private:
    static void note(const char* phase) {
        s_phases += std::string(phase) + " ";
        s_now += 10;
    }
};

class KrSessionRun : public testing::Test {
protected:
    KrSessionRun() {
        s_phases = "";
        Chosen::s_ran = "";
    }
    ~KrSessionRun() override {
        for (krCStream* stream : {&g_cstrm, &g_qstrm, &g_ustrm}) {
            stream->close();
        }
    }
    int run(const std::vector<std::string>& words) {
        std::vector<std::string> all = {dir.path("rig")};
        all.insert(all.end(), words.begin(), words.end());
        std::vector<char*> argv;
        for (std::string& word : all) {
            argv.push_back(word.data());
        }
        ConsoleCapture console;
        TypedAnswers answers("");
        testing::internal::CaptureStdout();
        const int status = session.run(static_cast<int>(all.size()), argv.data());
        direct = testing::internal::GetCapturedStdout();
        text = answers.prompts();
        dropAddedFiles();
        g_istrm.deleteIStream();
        return status;
    }
    bool told(const char* line) const { return text.find(line) != std::string::npos; }

    HarnessState state;
    TempDir dir;
    Phases session;
    std::string text;
    std::string direct;
};

TEST_F(KrSessionRun, PhasesHaveTheirOrder) {
    krRegTest(new Chosen("veksB"));
    krRegTest(new Chosen("veksA"));
    krRegParmFunc([] { s_phases += "parmFunc "; });
    EXPECT_EQ(run({"-B", "-fveks", "-g"}), 0);
    EXPECT_EQ(s_phases, "init parse options start header parmFunc common title footer signal ");
    EXPECT_EQ(Chosen::s_ran, "veksA veksB ");
    EXPECT_EQ(direct, "Sorting functions...\n");
    EXPECT_EQ(pTestList, nullptr);
    EXPECT_NE(g_pHotList, nullptr);
    delete g_pHotList;
    g_pHotList = nullptr;
}

TEST_F(KrSessionRun, ProcessorReportAloneIsATest) {
    EXPECT_EQ(run({"-B"}), 0);
    EXPECT_TRUE(told("| -OK         __krOrvanCpu "));
    EXPECT_TRUE(told("| .Number of tests : 1 "));
    EXPECT_TRUE(told("| .Successes       : 1 "));
    delete g_pHotList;
    g_pHotList = nullptr;
}

TEST_F(KrSessionRun, UnsortedRunKeepsTheRegistrationOrder) {
    krRegTest(new Chosen("veksB"));
    krRegTest(new Chosen("veksA"));
    run({"-B", "-s-", "-fveks"});
    EXPECT_EQ(Chosen::s_ran, "veksB veksA ");
    EXPECT_EQ(direct, "");
    delete g_pHotList;
    g_pHotList = nullptr;
}

TEST_F(KrSessionRun, StatusIsOneForTheFailuresSevenToTen) {
    for (int code = 1; code <= 11; ++code) {
        krRegTest(new Chosen("veksA", static_cast<krResult>(code)));
        EXPECT_EQ(run({"-B", "-fveks", "-LW"}), code >= 7 && code <= 10 ? 1 : 0) << code;
    }
    delete g_pHotList;
    g_pHotList = nullptr;
}

TEST_F(KrSessionRun, RefusedStartSkipsHeaderAndFooter) {
    session.starts = false;
    EXPECT_EQ(run({"-B"}), 0);
    EXPECT_EQ(s_phases, "init parse options start signal ");
    EXPECT_EQ(pTestList, nullptr);
}

TEST_F(KrSessionRun, VersionPrintsTheBannerAlone) {
    EXPECT_EQ(run({"-v"}), 0);
    EXPECT_EQ(s_phases, "init parse options start signal ");
    EXPECT_EQ(text, "Command line options: \n-v: type the version number of the Kelvar Rig and exit\n"
                    "\nOrvan Vek Primitives. Kelvar Rig 2.0, Mar 16 2010\n");
}

TEST_F(KrSessionRun, HelpPrintsTheBannerAndTheHelp) {
    EXPECT_EQ(run({"-hv"}), 0);
    EXPECT_EQ(s_phases, "init parse options start hint signal ");
    EXPECT_EQ(text, "Command line options: \n-hv: type extended help for -v key and exit\n"
                    "\nOrvan Vek Primitives. Kelvar Rig 2.0, Mar 16 2010\n"
                    "EXTENDED KEY HELP\n"
                    "-v               = type the version number of the Kelvar Rig and exit\n"
                    "No detailed description for this key\n");
}

TEST_F(KrSessionRun, HelpBeatsEnumeration) {
    run({"-e", "-h"});
    EXPECT_EQ(s_phases, "init parse options start hint signal ");
}

TEST_F(KrSessionRun, EnumerationSortsInItsPlainFormOnly) {
    for (const char* key : {"-e", "-e+", "-e-"}) {
        s_phases = "";
        krRegTest(new Chosen("veksB"));
        krRegTest(new Chosen("veksA"));
        EXPECT_EQ(run({key, "-fveks"}), 0);
        const bool sorted = text.find("veksA") < text.find("veksB");
        EXPECT_EQ(sorted, std::string(key) == "-e") << key;
        EXPECT_EQ(direct, "");
        EXPECT_EQ(Chosen::s_ran, "");
    }
    EXPECT_EQ(s_phases, "init parse options start list -1 signal ");
    krRegTest(new Chosen("veksB"));
    krRegTest(new Chosen("veksA"));
    run({"-e", "-s-"});
    EXPECT_LT(text.find("veksB"), text.find("veksA"));
    EXPECT_NE(text.find("__krOrvanCpu"), std::string::npos) << "the processor report stands in the list";
    EXPECT_GT(text.find("__krOrvanCpu"), text.find("veksA")) << "at its end";
}

TEST_F(KrSessionRun, FailedParseStillWritesTheSignalFile) {
    EXPECT_EQ(run({"-onone/x", "-gsig"}), 0);
    EXPECT_EQ(s_phases, "init parse signal ");
    EXPECT_TRUE(told("FATAL ERROR: can't open output file for writing\n"));
    EXPECT_TRUE(std::filesystem::exists(dir.path("sig.end")));
}

TEST_F(KrSessionRun, ExclusionOfEverythingStillReports) {
    krRegTest(new Chosen("veksA"));
    EXPECT_EQ(run({"-B", "-HO"}), 0);
    EXPECT_EQ(Chosen::s_ran, "");
    EXPECT_TRUE(told("| .Number of tests : 0 ")) << "the processor report is no hot test";
    EXPECT_EQ(s_phases, "init parse options start header common title footer signal ");
    EXPECT_TRUE(told("KR Summary"));
    delete g_pHotList;
    g_pHotList = nullptr;
}

TEST_F(KrSessionRun, TableHasHeadingAndLine) {
    krRegTest(new Chosen("veksA"));
    run({"-B", "-fveks", "-r", "-H", "-q"});
    const std::string table = dir.read("rig.csv");
    const std::string heading = "funcBase,funcDataType,funcDescriptor,Len/Size,Parm1,Parm2,Parm3,Parm4,scaleFactor,"
                                "Comment,Clocks,per,Time (usec),MFlops,Interest\n";
    EXPECT_NE(table.find(heading + "veksA,-,-,-,-,-,-,-,-,nLps=1,100, ,0.1,-,-\n"), std::string::npos) << table;
    EXPECT_NE(dir.read("rig_name.csv").find(heading + "veksA,-,-,-,-,-,-,-,-,parmNames,-,-,-,-,-\n"),
              std::string::npos);
    delete g_pHotList;
    g_pHotList = nullptr;
}

TEST_F(KrSessionRun, TitleCountsItsColumns) {
    TableCapture table(g_cstrm);
    TableCapture names(g_qstrm);
    session.putTableTitle();
    EXPECT_EQ(table.text(), "funcBase,funcDataType,funcDescriptor,Len/Size,Parm1,Parm2,Parm3,Parm4,scaleFactor,"
                            "Comment,Clocks,per,Time (usec),MFlops\n");
    EXPECT_EQ(names.text(), "");
    EXPECT_EQ(krTest::m_numParmsColm, 9);
    EXPECT_EQ(krTest::m_numResultColm, 5);
    krTest::m_hot = 1;
    session.putTableTitleLine();
    EXPECT_EQ(krTest::m_numResultColm, 6);
}

TEST_F(KrSessionRun, PlainTitlesStandBesideTheLibraryAwareOnes) {
    TableCapture table(g_cstrm);
    krFuncTitleToCStream();
    krParmsTitleToCStream();
    g_cstrm << "\n";
    EXPECT_EQ(table.text(), "function,Parm1,Parm2,Parm3,Parm4,Parm5,Parm6,Parm7,Parm8\n");
}

TEST_F(KrSessionRun, SignalFileTellsElapsedAndEndTime) {
    krTestList list;
    pTestList = &list;
    list.m_startTime = 1000000;
    list.m_endTime = 1000000 + 100 * 3600 + 2 * 60 + 3;
    session.outputSignal();
    EXPECT_TRUE(std::filesystem::is_empty(dir.path("")));
    session.m_sglName = dir.path("a.end").c_str();
    session.outputSignal();
    EXPECT_EQ(dir.read("a.end"), "100:02:03\n" + std::string(ctime(&list.m_endTime)) + "\n");
    pTestList = nullptr;
}

TEST_F(KrSessionRun, SignalFileTellsTheTimeFromTheKeysToTheLastTest) {
    s_now = 1000000;
    krTime = [] { return s_now; };
    krRegTest(new Chosen("veksA"));
    run({"-B", "-fveks", "-gsig"});
    EXPECT_EQ(s_phases, "init parse options start header common title footer signal ");
    const time_t end = 1000000 + 7 * 10 + 1000;
    EXPECT_EQ(dir.read("sig.end"), "00:17:40\n" + std::string(ctime(&end)) + "\n") << "1060 s";
    delete g_pHotList;
    g_pHotList = nullptr;
}

TEST_F(KrSessionRun, UnwritableSignalFileIsTold) {
    krTestList list;
    pTestList = &list;
    session.m_sglName = dir.path("none/a.end").c_str();
    ConsoleCapture console(ERR);
    session.outputSignal();
    EXPECT_EQ(console.text(), "-- Can't open file " + dir.path("none/a.end") + " to write: \n");
    pTestList = nullptr;
}

TEST_F(KrSessionRun, FooterShowsAtEveryLevel) {
    krTestList list;
    pTestList = &list;
    ConsoleCapture console(ERR);
    TableCapture sums(g_ustrm);
    session.outputFooter();
    EXPECT_NE(console.text().find("KR Summary"), std::string::npos);
    EXPECT_NE(sums.text().find("END_DATA"), std::string::npos);
    EXPECT_EQ(g_ostrm.msgLevel(), PERF);
    pTestList = nullptr;
}

TEST_F(KrSessionRun, RegistrationCreatesItsLists) {
    EXPECT_EQ(krRegTest(new Chosen("a")), 1);
    EXPECT_EQ(krRegTest(new Chosen("b")), 1);
    EXPECT_EQ(pTestList->size(), 2);
    EXPECT_STREQ((*pTestList->begin())->m_name.c_str(), "a");
    EXPECT_EQ(krRegHotFunction("hot"), 1);
    EXPECT_STREQ(g_pHotList->begin()->c_str(), "hot");
    krDefault<int> parm(1, "p");
    EXPECT_EQ(krRegParm(parm), 1);
    EXPECT_EQ(*g_pParmList->begin(), &parm);
    const auto timing = [](krTool& /*tool*/) {};
    void (*const timingFunc)(krTool&) = timing;
    EXPECT_EQ(krRegTimingMethod(timingFunc), 1);
    EXPECT_EQ(initTimingMethod, timingFunc);
    EXPECT_EQ(krRegTimingMethod(nullptr), 1);
    EXPECT_EQ(initTimingMethod, nullptr);
    EXPECT_EQ(krRegParmFunc(nullptr), 1);
    krSession* before = pSession;
    EXPECT_EQ(krRegSession(&session), 1);
    EXPECT_EQ(pSession, &session);
    pSession = before;
    delete g_pHotList;
    delete g_pParmList;
}

} // namespace
