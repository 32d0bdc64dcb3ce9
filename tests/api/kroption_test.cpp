// The option table: the echo of every key, its effect, and the gates of keys that end a run early.
#include "optionsession.h"

#include <unistd.h>

namespace {

TEST_F(KrOptions, EchoTellsWhatEachKeyWillDo) {
    const struct {
        Argv words;
        const char* echo;
    } rows[] = {
        {{"-B"}, "-B: batch mode\n"},
        {{"-ATiming"}, "-ATiming: ask timing method from console\n"},
        {{"-AParams"}, "-AParams: ask common parameters from console\n"},
        {{"-AMisalign"}, "-AMisalign: ask data misalignment from console\n"},
        {{"-ATimingParams"}, "-ATimingParams: ask timing method, common parameters from console\n"},
        {{"-A"}, "-A: ask timing method, common parameters, data misalignment, each test parameters from console\n"},
        {{"-AAll"},
         "-AAll: ask timing method, common parameters, data misalignment, each test parameters from console\n"},
        {{"-d"}, "-d: ignored: empty data argument\n"},
        {{"-dname"}, "-dname: ignored: incorrect data format\n"},
        {{"-d", " =5"}, "-d =5: ignored: incorrect data format\n"},
        {{"-dname=5"}, "-dname=5: set KR parameter name=5\n"},
        {{"-i"}, "-i: read from @/rig.ini\n"},
        {{"-ix"}, "-ix: read from @/x.ini\n"},
        {{"-I"}, "-I: write KR parameters to @/rig.ini and exit\n"},
        {{"-P"}, "-P: read tested function names from ini-file if any\n"},
        {{"-o"}, "-o: write console output to @/rig.txt\n"},
        {{"-ox.log"}, "-ox.log: write console output to @/x.log\n"},
        {{"-O"}, "-O: add console output to @/rig.txt\n"},
        {{"-LERR"}, "-LERR: write errors to console\n"},
        {{"-LWARN"}, "-LWARN: write errors,warnings to console\n"},
        {{"-LPERF"}, "-LPERF: write errors,warnings,performance results to console\n"},
        {{"-LINFO"}, "-LINFO: write errors,warnings,performance results,measurement process to console\n"},
        {{"-LTRACE"}, "-LTRACE: write errors,warnings,performance results,tracing info to console\n"},
        {{"-LM"}, "-LM: write errors,warnings,performance results,memory info to console\n"},
        {{"-LDATA"}, "-LDATA: write errors,warnings,performance results,tracing info,data info to console\n"},
        {{"-Lwarn"}, "-Lwarn: ignored: incorrect level of console output\n"},
        {{"-L"}, "-L: ignored: incorrect level of console output\n"},
        {{"-r"}, "-r: write performance result table to @/rig.csv\n"},
        {{"-R"}, "-R: add performance result table to @/rig.csv\n"},
        {{"-q"}, "-q: write function parameter name lines to @/rig_name.csv\n"},
        {{"-q+"}, "-q+: add function parameter name lines to csv files defined by -r & -R keys\n"},
        {{"-q+", "x"}, "-q+x: add function parameter name lines to csv files defined by -r & -R keys\n"},
        {{"-Q"}, "-Q: exit after function parameter name table creation and don't run tests\n\n"},
        {{"-u"}, "-u: write summary table to @/rig_sum.csv\n"},
        {{"-U"}, "-U: add summary table to @/rig_sum.csv\n"},
        {{"-g"}, "-g: create file @/rig.end at the end of KR work\n"},
        {{"-n"}, "-n: ignored: empty default name\n"},
        {{"-nabc"}, "-nabc: name ini-file and output files as abc.<proper-ext>\n"},
        {{"-p"}, "-p: ignored: empty directory name\n"},
        {{"-pin"}, "-pin: open test data files & ini-file in @/in/\n"},
        {{"-l"}, "-l: ignored: empty directory name\n"},
        {{"-lout/"}, "-lout/: open output files in @/out/\n"},
        {{"-fabc"}, "-fabc: test functions containing 'abc'\n"},
        {{"-f+abc"}, "-f+abc: don't test functions without 'abc' in the name\n"},
        {{"-f-abc"}, "-f-abc: don't test functions containing 'abc'\n"},
        {{"-f=abc"}, "-f=abc: test function equal to 'abc'\n"},
        {{"-f"}, "-f: ignored: empty function pattern\n"},
        {{"-f+"}, "-f+: ignored: empty function pattern\n"},
        {{"-tabc"}, "-tabc: run tests containing abc\n"},
        {{"-t+abc"}, "-t+abc: don't run tests which doesn't contain abc\n"},
        {{"-t-abc"}, "-t-abc: don't run tests containing abc\n"},
        {{"-t=abc"}, "-t=abc: run test equal to abc\n"},
        {{"-t"}, "-t: ignored: empty test pattern\n"},
        {{"-Fabc"}, "-Fabc: start testing from abc function\n"},
        {{"-YHIGH"}, "-YHIGH: set high process priority\n"},
        {{"-YNORMAL"}, "-YNORMAL: set normal process priority\n"},
        {{"-YL"}, "-YL: set low process priority\n"},
        {{"-Yhigh"}, "-Yhigh: ignored: incorrect process priority value\n"},
        {{"-Y"}, "-Y: ignored: incorrect process priority value\n"},
        {{"-H"}, "-H: add 'Interest' column to table file\n"},
        {{"-HONLY"}, "-HONLY: run tests for hot functions only\n"},
        {{"-SU"}, "-SU: include to measurement data set & use time\n"},
        {{"-C"}, "-C: test data size will be in cache and out of cache if that is supported by test\n"},
        {{"-s"}, "-s: sort functions\n"},
        {{"-s-"}, "-s-: don't sort functions\n"},
        {{"-e"}, "-e: enumerate tested functions and exit\n"},
        {{"-e+"}, "-e+: enumerate applied and not applied library functions and exit\n"},
        {{"-e-"}, "-e-: enumerate not applied library functions and exit\n"},
        {{"-v"}, "-v: type the version number of the Kelvar Rig and exit\n"},
        {{"-h"}, "-h: type short help and exit\n"},
        {{"-hh"}, "-hh: type extended help and exit\n"},
        {{"-hLx"}, "-hLx: type extended help for -L key and exit\n"},
        {{"-?"}, "-?: type short help with hidden key sand exit\n"},
        {{"-?\?"}, "-?\?: type extended help with hidden keys and exit\n"},
        {{"-?L"}, "-?L: type extended help for -L key and exit\n"},
        {{"-x"}, "-x: ignored: incorrect option key\n"},
        {{"-xabc"}, "-xabc: ignored: incorrect option key\n"},
        {{"-m"}, "-m: ignored: incorrect option key\n"},
        {{"-T"}, "-T: ignored: incorrect option key\n"},
        {{"-N1"}, "-N1: ignored: incorrect option key\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(echoOf(row.words), row.echo);
    }
}

TEST_F(KrOptions, LibraryKeysExistWhenTheProbeFindsALibrary) {
    bindLibrary();
    int code = 0;
    krString label;
    krString name;
    krCpuType::row(1, code, label, name);
    const std::string known = label.c_str();
    EXPECT_EQ(echoOf({"-T" + known}), "-T" + known + ": call vekInitStaticCpu ( vekCpu" + known + " )\n");
    EXPECT_EQ(s_cpuType, code);
    EXPECT_EQ(echoOf({"-Tnone-such"}), "-Tnone-such: ignored: incorrect CPU type\n");
    EXPECT_EQ(s_cpuType, -1);
    EXPECT_EQ(echoOf({"-N4"}), "-N4: call vekSetNumThreads(4)\n");
    EXPECT_EQ(s_numThreads, 4);
    EXPECT_EQ(echoOf({"-N0"}), "-N0: ignored: incorrect number of threads\n");
    EXPECT_EQ(s_numThreads, 0);
    EXPECT_EQ(echoOf({"-N"}), "-N: ignored: incorrect number of threads\n");
    EXPECT_EQ(echoOf({"-N99999999999999"}), "-N99999999999999: ignored: incorrect number of threads\n");
    EXPECT_EQ(s_numThreads, 0);
    EXPECT_EQ(echoOf({"-N-5"}), "-N-5: ignored: incorrect number of threads\n");
    for (const char* const noNumber : {"1e9", "4threads", "2.5", "x"}) {
        setNumThreadsKey(7);
        const std::string key = std::string("-N") + noNumber;
        EXPECT_EQ(echoOf({key}), key + ": ignored: incorrect number of threads\n");
        EXPECT_EQ(s_numThreads, 0) << noNumber;
    }
    N_apply("-5", nullptr);
    EXPECT_EQ(s_numThreads, -5);
    EXPECT_EQ(echoOf({"-N 16 "}), "-N 16 : call vekSetNumThreads( 16 )\n");
    EXPECT_EQ(s_numThreads, 16);
    EXPECT_EQ(echoOf({"-TUnknown"}), "-TUnknown: call vekInitStaticCpu ( vekCpuUnknown )\n");
    EXPECT_EQ(s_cpuType, 0);
    vekEnvironment = nullptr;
    const char* missing = "ignored: <vekcore.h> is not included before <vk.h> in test files\n";
    EXPECT_EQ(echoOf({"-N4"}), std::string("-N4: ") + missing);
    EXPECT_EQ(echoOf({"-T" + known}), "-T" + known + ": " + missing);
}

TEST_F(KrOptions, ProbeStatusOfMinusTwoAloneHidesTheLibraryKeys) {
    for (const auto& [probe, present] :
         {std::pair<int (*)(), bool>{[] { return -2; }, false}, {[] { return -1; }, true}, {[] { return 1; }, true}}) {
        vek_Init = probe;
        krSession other;
        other.initSession();
        EXPECT_EQ(other.getOption('T') != nullptr, present);
        EXPECT_EQ(other.getOption('N') != nullptr, present);
    }
}

// Keys whose echo a gate replaces, and keys that are never gated.
const Argv s_gateOne = {"-B",  "-A", "-d", "-da=1", "-i",  "-I", "-P",  "-L",  "-LERR", "-q",
                        "-q+", "-Q", "-u", "-U",    "-Fx", "-Y", "-YH", "-SU", "-C"};
const Argv s_gateTwo = {"-f", "-fx", "-f-x", "-t", "-tx", "-t=x", "-H", "-HO", "-s", "-s-"};
const Argv s_ungated = {"-o", "-O", "-r", "-R", "-g", "-n", "-nx", "-p", "-px", "-l", "-v", "-h", "-x"};

TEST_F(KrOptions, HelpGatesBothGroups) {
    for (const Argv& group : {s_gateOne, s_gateTwo}) {
        for (const std::string& key : group) {
            EXPECT_EQ(echoOf({key, "-?"}),
                      key + ": ignored because of -h option\n" + "-?: type short help with hidden key sand exit\n");
        }
    }
    EXPECT_EQ(session.m_exitLevel, 2);
}

TEST_F(KrOptions, EnumerationGatesTheFirstGroupOnly) {
    for (const std::string& key : s_gateOne) {
        EXPECT_EQ(echoOf({key, "-e"}),
                  key + ": ignored because of -e option\n-e: enumerate tested functions and exit\n");
    }
    for (const std::string& key : s_gateTwo) {
        EXPECT_EQ(echoOf({key, "-e"}).find("because"), std::string::npos) << key;
    }
    EXPECT_EQ(session.m_exitLevel, 1);
}

TEST_F(KrOptions, VersionGatesBothGroups) {
    for (const Argv& group : {s_gateOne, s_gateTwo}) {
        for (const std::string& key : group) {
            EXPECT_EQ(echoOf({key, "-v"}), key + ": ignored because of -v option\n" +
                                               "-v: type the version number of the Kelvar Rig and exit\n");
        }
    }
    EXPECT_EQ(session.m_exitLevel, 3);
}

TEST_F(KrOptions, SomeKeysAreNeverGated) {
    for (const char* exit : {"-?", "-e", "-v"}) {
        for (const std::string& key : s_ungated) {
            const std::string line = echoOf({key, exit});
            EXPECT_EQ(line.substr(0, line.find('\n')).find("because"), std::string::npos) << key << " " << exit;
        }
    }
}

TEST_F(KrOptions, EnumerationKeyIsGatedByHelpAlone) {
    EXPECT_EQ(echoOf({"-e", "-h"}), "-e: ignored because of -h option\n-h: type short help and exit\n");
    EXPECT_EQ(session.m_exitLevel, 2);
    EXPECT_EQ(session.m_enumMode, 0);
    EXPECT_EQ(echoOf({"-e", "-v"}), "-e: enumerate tested functions and exit\n"
                                    "-v: type the version number of the Kelvar Rig and exit\n");
    EXPECT_EQ(session.m_exitLevel, 1);
}

TEST_F(KrOptions, ExitInfoOfEachLevel) {
    const char* texts[] = {"ignored", "ignored because of -e option", "ignored because of -h option",
                           "ignored because of -v option", "ignored"};
    for (int level = 0; level < 5; ++level) {
        krSession::m_exitLevel = level;
        EXPECT_STREQ(krSession::getExitInfo().c_str(), texts[level]);
        EXPECT_EQ(krSession::isExit(2), level >= 2);
    }
}

TEST_F(KrOptions, GatedKeyIsAppliedAllTheSame) {
    dir.write("rig.ini", "[Kelvar Rig]\n");
    EXPECT_EQ(echoOf({"-h", "-i"}), "-h: type short help and exit\n-i: ignored because of -h option\n");
    EXPECT_EQ(masked(session.m_iniName), "@/rig.ini");
    EXPECT_NE(g_istrm.iniFile(), nullptr);
}

TEST_F(KrOptions, AskModeBits) {
    EXPECT_EQ(getAskLevel("Timing"), 1);
    EXPECT_EQ(getAskLevel("Params"), 2);
    EXPECT_EQ(getAskLevel("Misalign"), 4);
    EXPECT_EQ(getAskLevel("TimingParams"), 3);
    EXPECT_EQ(getAskLevel("All"), 15);
    EXPECT_EQ(getAskLevel(""), 15);
    EXPECT_EQ(getAskLevel("tpm"), 15);
    EXPECT_EQ(getAskLevel("MTP"), 7);
}

TEST_F(KrOptions, AskModesAreCombinedAndBatchBeatsThem) {
    parse({"-AT", "-AM"});
    EXPECT_EQ(session.m_askMode, 5);
    parse({"-A", "-B"});
    EXPECT_EQ(session.m_askMode, 0);
    EXPECT_TRUE(session.m_batchMode);
    parse({"-P"});
    EXPECT_EQ(session.m_askMode, 3);
    EXPECT_FALSE(session.m_batchMode);
}

TEST_F(KrOptions, LevelLettersEachCount) {
    const struct {
        const char* arg;
        int level;
    } rows[] = {{"", 0},       {"E", 1},     {"W", 3},    {"P", 7},    {"I", 15},   {"T", 23},
                {"M", 39},     {"D", 71},    {"ERR", 1},  {"WARN", 3}, {"PERF", 7}, {"INFO", 15},
                {"TRACE", 23}, {"DATA", 87}, {"data", 0}, {"Xyz", 0},  {"IT", 31}};
    for (const auto& row : rows) {
        EXPECT_EQ(getLevel(row.arg), row.level) << row.arg;
    }
}

TEST_F(KrOptions, LevelsAddToErrorsAndStayOverAParse) {
    EXPECT_EQ(session.m_levelMode, 1);
    parse({"-Lwarn"});
    EXPECT_EQ(session.m_levelMode, 1);
    parse({"-LW", "-LT"});
    EXPECT_EQ(session.m_levelMode, 23);
    parse({});
    EXPECT_EQ(session.m_levelMode, 23);
}

TEST_F(KrOptions, PriorityWords) {
    EXPECT_EQ(getPriority("HIGH"), 1);
    EXPECT_EQ(getPriority("N"), 2);
    EXPECT_EQ(getPriority("LOW"), 3);
    EXPECT_EQ(getPriority("x"), 0);
    EXPECT_EQ(getPriority(""), 0);
    parse({"-YH", "-Yx"});
    EXPECT_EQ(krTool::m_priority, 1);
    parse({"-YH", "-YL"});
    EXPECT_EQ(krTool::m_priority, 3);
}

TEST_F(KrOptions, KeysStoreTheirSettings) {
    parse({"-P", "-HO", "-SU", "-C", "-Fstart", "-s-", "-Q", "-dAccuracy=3", "-gsig"});
    EXPECT_TRUE(krTest::m_pressing);
    EXPECT_EQ(krTest::m_hot, 2);
    EXPECT_TRUE(g_tool.m_setUse);
    EXPECT_TRUE(krTest::m_cache);
    EXPECT_STREQ(krTestList::m_startFunc.c_str(), "start");
    EXPECT_TRUE(session.m_quickMode);
    EXPECT_TRUE(krSession::m_nameExit);
    krString value;
    EXPECT_TRUE(g_istrm.dataList().get("Accuracy", value));
    EXPECT_STREQ(value.c_str(), "3");
    EXPECT_EQ(masked(session.m_sglName), "@/sig.end");
    parse({"-H", "-HO", "-H"});
    EXPECT_EQ(krTest::m_hot, 1);
    EXPECT_FALSE(krSession::m_nameExit);
}

TEST_F(KrOptions, SortKeyDoesNotUndoItself) {
    parse({"-s-", "-s"});
    EXPECT_TRUE(session.m_quickMode);
    EXPECT_EQ(echo, "-s-: don't sort functions\n-s: sort functions\n");
    parse({});
    EXPECT_FALSE(session.m_quickMode);
}

TEST_F(KrOptions, DataWithoutSignIsKeptWithAnEmptyValue) {
    parse({"-dname"});
    krString value = "old";
    EXPECT_TRUE(g_istrm.dataList().get("name", value));
    EXPECT_STREQ(value.c_str(), "");
}

TEST_F(KrOptions, EnumModes) {
    EXPECT_EQ(session.m_enumMode, 100);
    parse({"-e"});
    EXPECT_EQ(session.m_enumMode, 0);
    parse({"-e+"});
    EXPECT_EQ(session.m_enumMode, 1);
    parse({"-e-"});
    EXPECT_EQ(session.m_enumMode, -1);
    parse({"-ex"});
    EXPECT_EQ(session.m_enumMode, 0);
    parse({});
    EXPECT_EQ(session.m_enumMode, 100);
}

TEST_F(KrOptions, ConditionsAreAppendedInOrder) {
    parse({"-fa", "-t-b", "-f", "-f=c", "-t+d"});
    std::string found;
    for (const RunCondition* condition : *session.m_conditions) {
        found += std::string(condition->m_isOr ? "or " : "and ") + condition->m_pattern.c_str() + " ";
    }
    EXPECT_EQ(found, "or a and b or c and d ");
}

TEST_F(KrOptions, NamesAreSettledBeforeTheOtherKeys) {
    std::filesystem::create_directory(dir.path("out"));
    EXPECT_EQ(echoOf({"-g", "-i", "-lout", "-nfirst", "-nlast", "-pin"}),
              "-g: create file @/out/last.end at the end of KR work\n"
              "-i: read from @/in/last.ini\n"
              "-lout: open output files in @/out/\n"
              "-nfirst: name ini-file and output files as first.<proper-ext>\n"
              "-nlast: name ini-file and output files as last.<proper-ext>\n"
              "-pin: open test data files & ini-file in @/in/\n"
              "-- Can't open file @/in/last.ini to read: \n");
    EXPECT_EQ(masked(krSession::m_inDir), "@/in/");
    EXPECT_EQ(masked(krSession::m_outDir), "@/out/");
    parse({});
    EXPECT_EQ(masked(krSession::m_inDir), "@/");
    EXPECT_STREQ(krSession::m_defName.c_str(), "rig");
}

TEST_F(KrOptions, NoKeysAndNoFileEchoNothing) {
    EXPECT_TRUE(parse({}));
    EXPECT_EQ(text, "");
    EXPECT_EQ(session.m_exitLevel, 0);
}

TEST_F(KrOptions, ConfigFileBesideTheExecutableGivesItsFirstLine) {
    dir.write("rig.cfg", "-B;-fabc\n-P\n");
    EXPECT_TRUE(parse({}));
    EXPECT_EQ(text, "Command line options: read from @/rig.cfg file\n-B: batch mode\n"
                    "-fabc: test functions containing 'abc'\n");
    EXPECT_FALSE(krTest::m_pressing);
}

TEST_F(KrOptions, EmptyConfigFileCountsAsFound) {
    dir.write("rig.cfg", "");
    krRegCmdLine("-B");
    parse({});
    EXPECT_EQ(text, "Command line options: read from @/rig.cfg file\n");
    EXPECT_FALSE(session.m_batchMode);
    delete pCmdLine;
}

TEST_F(KrOptions, ConfigFileOfTheWorkingDirectoryWins) {
    dir.write("rig.cfg", "-B\n");
    const TempDir work;
    work.write("rig.cfg", "-P\n");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(work.path(""));
    parse({});
    std::filesystem::current_path(before);
    EXPECT_EQ(text, "Command line options: read from rig.cfg file\n"
                    "-P: read tested function names from ini-file if any\n");
}

TEST_F(KrOptions, CommandLineBeatsTheConfigFile) {
    dir.write("rig.cfg", "-B\n");
    EXPECT_EQ(echoOf({"-s"}), "-s: sort functions\n");
    EXPECT_FALSE(session.m_batchMode);
}

TEST_F(KrOptions, ForcedKeysComeLast) {
    krRegCmdLine("-B");
    krRegCmdLine("-fabc");
    EXPECT_STREQ(pCmdLine->c_str(), " -B -fabc");
    parse({});
    EXPECT_EQ(text, "Command line options: set by _FORCE_CMDLINE preprocessor definition\n-B: batch mode\n"
                    "-fabc: test functions containing 'abc'\n");
    EXPECT_EQ(echoOf({"-s"}), "-s: sort functions\n");
    delete pCmdLine;
}

TEST_F(KrOptions, ConfigLineIsCutAtTheBuffer) {
    dir.write("rig.cfg", "-P " + std::string(1019, ' ') + "-B\n");
    parse({});
    EXPECT_TRUE(krTest::m_pressing);
    EXPECT_FALSE(session.m_batchMode);
}

TEST_F(KrOptions, UnopenedOutputFileIsFatalBehindTheLastKey) {
    for (const char* key : {"-o", "-O", "-r", "-R", "-q", "-u", "-U"}) {
        EXPECT_FALSE(parse({key + std::string("none/x.y"), "-gsig"})) << key;
        EXPECT_EQ(masked(session.m_sglName), "@/sig.end");
        EXPECT_NE(text.find("-- Can't open file @/none/x.y to write: \n"), std::string::npos);
        const std::string last = "-gsig: create file @/sig.end at the end of KR work\n"
                                 "FATAL ERROR: can't open output file for writing\n";
        ASSERT_GE(text.size(), last.size());
        EXPECT_EQ(text.substr(text.size() - last.size()), last);
    }
    EXPECT_TRUE(parse({}));
}

TEST_F(KrOptions, UnwritableIniFileIsFatalAndAMissingOneToReadIsNot) {
    EXPECT_FALSE(parse({"-Inone/x.ini"}));
    EXPECT_NE(text.find("FATAL ERROR: can't open ini-file for writing\n"), std::string::npos);
    EXPECT_TRUE(parse({"-inone/x.ini"}));
    EXPECT_EQ(text.find("FATAL"), std::string::npos);
    EXPECT_FALSE(session.m_iniWrite);
}

TEST_F(KrOptions, LastIniKeyWins) {
    dir.write("b.ini", "");
    parse({"-Ia", "-ib"});
    EXPECT_EQ(masked(session.m_iniName), "@/b.ini");
    EXPECT_FALSE(session.m_iniWrite);
    EXPECT_FALSE(std::filesystem::exists(dir.path("a.ini")));
    parse({});
    EXPECT_STREQ(session.m_iniName.c_str(), "");
}

TEST_F(KrOptions, EachFileKeyAddsOneMoreFile) {
    parse({"-ra", "-rb", "-ua", "-Ub", "-qa"});
    EXPECT_EQ(g_cstrm.size(), 2);
    EXPECT_EQ(g_ustrm.size(), 2);
    EXPECT_EQ(g_qstrm.size(), 1);
    for (const char* name : {"a.csv", "b.csv"}) {
        EXPECT_TRUE(std::filesystem::exists(dir.path(name))) << name;
    }
    EXPECT_EQ(krSession::m_nameMode, 2);
    for (const Argv& plus : {Argv{"-q+"}, Argv{"-q+", "x"}}) {
        parse(plus);
        EXPECT_EQ(krSession::m_nameMode, 1);
        EXPECT_EQ(g_qstrm.size(), 1);
    }
    EXPECT_FALSE(std::filesystem::exists(dir.path("+x_name.csv")));
}

TEST_F(KrOptions, CapitalLetterAddsToAFileAndSmallOneEmptiesIt) {
    dir.write("rig.txt", "old\n");
    dir.write("rig_sum.csv", "old\n");
    {
        parse({"-O", "-U"});
        g_ustrm.flush();
    }
    EXPECT_EQ(dir.read("rig.txt").substr(0, 4), "old\n");
    EXPECT_EQ(dir.read("rig_sum.csv"), "old\n");
    parse({"-o", "-u"});
    EXPECT_NE(dir.read("rig.txt").substr(0, 4), "old\n");
    EXPECT_EQ(dir.read("rig_sum.csv"), "");
}

TEST_F(KrOptions, MemoryTableFunctionsStandReadyWithoutAKey) {
    parse({});
    EXPECT_EQ(masked(m_info("")), "write memory info table to @/rig_mem.csv");
    EXPECT_STREQ(m_help, "-m[<file-name>]  = create *_mem.csv file and write memory info\n");
    m_apply("", &session);
    EXPECT_TRUE(std::filesystem::exists(dir.path("rig_mem.csv")));
    EXPECT_FALSE(session.m_unopened);
    EXPECT_EQ(session.getOption('m'), nullptr);
    krSession::m_exitLevel = 1;
    EXPECT_STREQ(m_info("").c_str(), "ignored because of -e option");
}

TEST_F(KrOptions, OutputLevelIsPerformanceWhileKeysAreParsed) {
    std::string program = dir.path("rig.exe");
    std::string key = "-LERR";
    char* argv[] = {program.data(), key.data(), nullptr};
    ConsoleCapture console(ERR);
    EXPECT_TRUE(session.parseCommandLine(2, argv));
    EXPECT_EQ(g_ostrm.outLevel(), ERR | WARN | PERF);
    EXPECT_EQ(console.text(), "Command line options: \n-LERR: write errors to console\n");
}

TEST_F(KrOptions, NewSessionStateHasTheTableOnce) {
    const int before = session.m_options.size();
    session.initSession();
    EXPECT_EQ(session.m_options.size(), before);
}

} // namespace
