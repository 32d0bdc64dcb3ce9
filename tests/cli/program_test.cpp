// The real program with the library and all suites: help, echo of the keys, enumeration, tables and the ini-file as
// whole texts. A run that prints its header estimates the processor's frequency for two seconds, so those are few.
#include "expected_help.h"
#include "rig_process.h"

#include <gtest/gtest.h>

namespace {

const std::string s_banner = "\nOrvan Vek Primitives. Kelvar Rig 2.0, Mar 16 2010\n";

std::string lineOf(const std::string& text, const std::string& start) {
    const size_t at = text.find("\n" + start);
    return at == std::string::npos ? "" : text.substr(at + 1, text.find('\n', at + 1) - at - 1);
}

} // namespace

TEST(ProgramHelp, ShortHelpShowsEveryKeyThatIsNotHidden) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    const RigResult run = rig.run({"-h"});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("Command line options: \n-h: type short help and exit\n" + s_banner + "QUICK HELP\n" +
                  expectedShortHelp(),
              run.out);
}

TEST(ProgramHelp, FullHelpWithHiddenKeysShowsEveryText) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    const RigResult run = rig.run({"-??"});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("Command line options: \n-??: type extended help with hidden keys and exit\n" + s_banner +
                  "EXTENDED HELP with hidden keys\n" + expectedFullHelp(),
              run.out);
}

TEST(ProgramHelp, HiddenKeysAreLeftOutOfTheFormsOfH) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    const std::string extended = rig.run({"-hh"}).out;
    EXPECT_EQ(0, countOf(extended, "hidden key used by developers only"));
    EXPECT_EQ(0, countOf(extended, "\n-SU "));
    EXPECT_EQ(1, countOf(extended, "\nEXTENDED HELP\n"));
    const std::string hidden = rig.run({"-?"}).out;
    EXPECT_EQ(1, countOf(hidden, "\nQUICK HELP with hidden keys\n"));
    EXPECT_EQ(1, countOf(hidden, "\n-SU              = measure functions with data set & use\n"));
    EXPECT_EQ(1, countOf(hidden, "-?: type short help with hidden key sand exit\n"));
}

TEST(ProgramHelp, HelpOfOneKeyDescribesItOrSaysThatItIsNone) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    EXPECT_EQ("Command line options: \n-hF: type extended help for -F key and exit\n" + s_banner +
                  "EXTENDED KEY HELP\n-F<func-name>    = start testing from function with func-name full name\n"
                  "If several -F keys present in command line then only the last key is valid\n",
              rig.run({"-hF"}).out);
    EXPECT_EQ("Command line options: \n-hx: type extended help for -x key and exit\n" + s_banner +
                  "EXTENDED KEY HELP\nKey -x is not valid\n",
              rig.run({"-hx"}).out);
    EXPECT_EQ("Command line options: \n-h?: type extended help for -? key and exit\n" + s_banner +
                  "EXTENDED KEY HELP\nKey -? is deprecated\n"
                  "-?               = type short help with hidden keys and exit\n"
                  "-?\?              = type extended help with hidden keys and exit\n"
                  "-?<key>          = type extended help for the key and exit\n"
                  "If several -? keys present in command line then only the last key is valid\n",
              rig.run({"-h?"}).out);
    EXPECT_EQ(1, countOf(rig.run({"-he"}).out, "No detailed description for this key\n"));
}

TEST(ProgramEcho, VersionShowsTheBannerAndEndsTheRun) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    const RigResult run = rig.run({"-v"});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("Command line options: \n-v: type the version number of the Kelvar Rig and exit\n" + s_banner, run.out);
}

TEST(ProgramEcho, EachKeyIsToldInItsOrderWithWhatItWillDo) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    const RigResult run = rig.run({"-nt", "-o",  "-r/dev/null", "lost", "-q+",  "x",  "-g", "-B", "-AT", "-i", "none",
                                   "-x",  "-s-", "-e+",         "-fA",  "-t-B", "-n", "-v", "-h", "-h",  "?"});
    const std::string console = rig.mask(run.out);
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("Command line options: \n"
              "-nt: name ini-file and output files as t.<proper-ext>\n"
              "-o: write console output to <dir>/kelvarrig.txt\n"
              "-r/dev/null: write performance result table to /dev/null\n"
              "-q+x: ignored because of -h option\n"
              "-g: create file <dir>/kelvarrig.end at the end of KR work\n"
              "-B: ignored because of -h option\n"
              "-AT: ignored because of -h option\n"
              "-inone: ignored because of -h option\n"
              "-x: ignored: incorrect option key\n"
              "-s-: ignored because of -h option\n"
              "-e+: ignored because of -h option\n"
              "-fA: ignored because of -h option\n"
              "-t-B: ignored because of -h option\n"
              "-n: ignored: empty default name\n"
              "-v: type the version number of the Kelvar Rig and exit\n"
              "-h: type short help and exit\n"
              "-h?: type extended help for -? key and exit\n",
              console.substr(0, console.find("-- Can't open")));
    EXPECT_TRUE(rig.exists("kelvarrig.end"));
}

TEST(ProgramEcho, LastDirectoryAndTitleRuleTheNamesOfAllFiles) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    const RigResult run =
        rig.run({"-o", "-rtable", "-Usums.txt", "-lfirst", "-nold", "-l", "out", "-ntitle", "-pin", "-g", "-i", "-v"});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("Command line options: \n"
              "-o: write console output to <dir>/out/title.txt\n"
              "-rtable: write performance result table to <dir>/out/table.csv\n"
              "-Usums.txt: ignored because of -v option\n"
              "-lfirst: open output files in <dir>/first/\n"
              "-nold: name ini-file and output files as old.<proper-ext>\n"
              "-lout: open output files in <dir>/out/\n"
              "-ntitle: name ini-file and output files as title.<proper-ext>\n"
              "-pin: open test data files & ini-file in <dir>/in/\n"
              "-g: create file <dir>/out/title.end at the end of KR work\n"
              "-i: ignored because of -v option\n"
              "-v: type the version number of the Kelvar Rig and exit\n"
              "FATAL ERROR: can't open output file for writing\n",
              [&] {
                  std::string console = rig.mask(run.out);
                  const size_t from = console.find("Command line options");
                  const size_t to = console.find("-- Can't open", from);
                  return console.substr(from, to - from);
              }());
}

TEST(ProgramRun, EnumerationListsTestsInTheOrderOfTheirNamesAndInTheTable) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    const RigResult run = rig.run({"-e", "-fveksDotProd", "-f__kr", "-r"});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("Command line options: \n"
              "-e: enumerate tested functions and exit\n"
              "-fveksDotProd: test functions containing 'veksDotProd'\n"
              "-f__kr: test functions containing '__kr'\n"
              "-r: write performance result table to <dir>/kelvarrig.csv\n" +
                  startFrame() +
                  "   #\tFunction\tTest\tSource\t\n"
                  "   1\t__krOrvanCpu\t__krOrvanCpuTest\tkr\t\n"
                  "   2\tveksDotProdAutoScale_16s32s_Sfs\tTimDotProd\tp_dotprod\t\n"
                  "   3\tveksDotProd_G729A_16s32s\tTimDotProd\tp_dotprod\t\n"
                  "   4\tveksDotProd_G729A_32f\tTimDotProd\tp_dotprod\t\n",
              rig.mask(run.out));
    EXPECT_EQ("CPU,<text>\nOS,<text>\nComputer,<text>\nStart,Day Mon dd hh:mm:ss yyyy\n"
              "   #,Function,Test,Source\n"
              "   1,__krOrvanCpu,__krOrvanCpuTest,kr\n"
              "   2,veksDotProdAutoScale_16s32s_Sfs,TimDotProd,p_dotprod\n"
              "   3,veksDotProd_G729A_16s32s,TimDotProd,p_dotprod\n"
              "   4,veksDotProd_G729A_32f,TimDotProd,p_dotprod\n",
              rig.masked("kelvarrig.csv"));
}

TEST(ProgramRun, MeasuresOneFunctionFromTheFirstLineOfItsCfgFile) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    rig.write("kelvarrig.cfg", "-B -LPERF -r -u -o -q -g -f=veksDotProd_G729A_16s32s; -dMethod=Manual -dNumLoops=3\n"
                               "-h\n");
    RigConsole console;
    console.trueCalendar = true;
    const RigResult run = rig.run({}, console);
    EXPECT_EQ(0, run.exitCode);
    const std::string expected = R"(Command line options: read from kelvarrig.cfg file
-B: batch mode
-LPERF: write errors,warnings,performance results to console
-r: write performance result table to <dir>/kelvarrig.csv
-u: write summary table to <dir>/kelvarrig_sum.csv
-o: write console output to <dir>/kelvarrig.txt
-q: write function parameter name lines to <dir>/kelvarrig_name.csv
-g: create file <dir>/kelvarrig.end at the end of KR work
-f=veksDotProd_G729A_16s32s: test function equal to 'veksDotProd_G729A_16s32s'
-dMethod=Manual: set KR parameter Method=Manual
-dNumLoops=3: set KR parameter NumLoops=3

VEK Core library functions have been integrated into KR
VEK libraries information has been set into KR
Sorting functions...
)" + startFrame(true) + R"( Method = Manual
 NumLoops = 3
 AlignVectorsBy = element
 VectorAlign = 0
+-----------------------------------------------------------------------------+
| Function  : veksDotProd_G729A_16s32s                Day Mon dd hh:mm:ss yyyy|
| Test      : TimDotProd                                                      |
| Source    : p_dotprod                                                       |
+-----------------------------------------------------------------------------+
 lenght = 80; 223
   Test has been registered by VK_REG macro with loopMethod, statMethod, funcCall.
   loopMethod is called for measuring.
lenght=80 
  nLps=3      perf=<clocks>/80=<clocks> clocks
lenght=223 
  nLps=3      perf=<clocks>/223=<clocks> clocks
+-----------------------------------------------------------------------------+
| -OK         veksDotProd_G729A_16s32s                Day Mon dd hh:mm:ss yyyy|
+-----------------------------------------------------------------------------+
)" + summaryFrame({.tests = 1, .successes = 1});
    EXPECT_EQ(expected, rig.mask(run.out));
    const std::string head = "CPU,<text>\nOS,<text>\nComputer,<text>\nLibrary,<text>\nStart,Day Mon dd hh:mm:ss yyyy\n";
    const std::string title = "funcBase,funcDataType,funcDescriptor,Len/Size,Parm1,Parm2,Parm3,Parm4,scaleFactor,"
                              "Comment,Clocks,per,Time (usec),MFlops\n";
    EXPECT_EQ(head + title +
                  "veksDotProd_G729A,16s32s,-,80,-,-,-,-,-,nLps=3,<clocks>,e,<usec>,-\n"
                  "veksDotProd_G729A,16s32s,-,223,-,-,-,-,-,nLps=3,<clocks>,e,<usec>,-\n",
              rig.masked("kelvarrig.csv"));
    EXPECT_EQ(head + title + "veksDotProd_G729A,16s32s,-,lenght,-,-,-,-,-,parmNames,-,-,-,-\n",
              rig.masked("kelvarrig_name.csv"));
    EXPECT_EQ(head + "Function,Class,Control87,Status87,ControlSSX,StatusSSX,Test,Time (sec.),SrcName,Result,ExeName\n"
                     "veksDotProd_G729A_16s32s,Timing,-,-,-,-,TimDotProd,<sec>,p_dotprod,OK,kelvarrig\n"
                     "END_DATA\n.Number of tests,1\n.Successes      ,1\n.Failures       ,0\n...Fails        ,0\n"
                     ".....-FAIL      ,0\n.....-EXCPTFAIL ,0\n...Warnings     ,0\n.....-WARNING   ,0\n"
                     ".....-BADSTSWRN ,0\n...Undefined    ,0\n.Total time     ,hh:mm:ss\n",
              rig.masked("kelvarrig_sum.csv"));
    EXPECT_EQ("hh:mm:ss\nDay Mon dd hh:mm:ss yyyy\n\n", rig.masked("kelvarrig.end"));
}

TEST(ProgramRun, WritesTheIniFileAndKeepsWhatItHolds) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    rig.write("kelvarrig.ini", "lost=1\n"
                               "[veksDotProd_G729A_32f]\n"
                               "lenght = 12; 21 // two of them\n"
                               "own\n"
                               "[ Kelvar Rig ]\n"
                               "Method=Statistic\n"
                               "Other = x = y\n"
                               "[Empty]\n"
                               "[veksDotProd_G729A_32f]\n"
                               "more=1\nmore=2\n");
    const RigResult run = rig.run({"-I", "-B", "-fveksDotProd", "-dTotalCpuClocks=77", "-dVectorAlign=65"});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("\n[veksDotProd_G729A_32f]\n"
              "lenght=12; 21\n"
              "own\n"
              "more=2\n"
              "\n[Kelvar Rig]\n"
              "Method=Statistic\n"
              "Other=x = y\n"
              "NumCalls=3\n"
              "TotalCpuClocks=77\n"
              "AlignVectorsBy=element\t// byte|element\n"
              "VectorAlign=65\n"
              "MisalignFirstVectorOnly=yes\t// yes|no\n"
              "\n[Empty]\n"
              "\n[veksDotProdAutoScale_16s32s_Sfs]\n"
              "lenght=12; 21; 22; 40; 80\n"
              "\n[veksDotProd_G729A_16s32s]\n"
              "lenght=80; 223\n",
              rig.read("kelvarrig.ini"));
    EXPECT_EQ(1, countOf(rig.mask(run.out), "-I: write KR parameters to <dir>/kelvarrig.ini and exit\n"));
    EXPECT_EQ(1, countOf(run.out, "\n VectorAlign = 1\n"));
    EXPECT_EQ(3, countOf(run.out, "| -OK "));
}

TEST(ProgramRun, ProcessorReportRunsAloneAndOnlyTheNameTableIsMade) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    const RigResult run = rig.run({"-Q", "-q", "-B", "-f=__krOrvanCpu", "-f=veksAutoScale_16s"});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("CPU,<text>\nOS,<text>\nComputer,<text>\nLibrary,<text>\nStart,Day Mon dd hh:mm:ss yyyy\n"
              "funcBase,funcDataType,funcDescriptor,Len/Size,Parm1,Parm2,Parm3,Parm4,scaleFactor,Comment,Clocks,per,"
              "Time (usec),MFlops\n"
              "__krOrvanCpu,-,-,-,-,-,-,-,-,parmNames,-,-,-,-\n"
              "veksAutoScale,16s,-,lenght,-,-,-,-,-,parmNames,-,-,-,-\n",
              rig.masked("kelvarrig_name.csv"));
    EXPECT_NE("", lineOf(run.out, "| -OK         veksAutoScale_16s"));
}

TEST(ProgramRun, ProcessorAndThreadsOfTheKeysReachTheLibraryBeforeTheMessageOfItsBinding) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    const RigResult run = rig.run({"-B", "-f=none", "-TUnknown", "-N1", "-o", "-LTRACE"});
    EXPECT_EQ(0, run.exitCode);
    const std::string expected = "\n--calling vekInitCpu( vekCpuUnknown=0 )\n--status = vekStsNoErr\n"
                                 "\n--calling vekSetNumThreads( 1 )\n--status = vekStsNoErr\n"
                                 "\nVEK Core library functions have been integrated into KR\n"
                                 "VEK libraries information has been set into KR\n";
    EXPECT_EQ(1, countOf(run.out, expected));
    EXPECT_EQ(1, countOf(rig.read("kelvarrig.txt"), expected));
    const std::string end = "****** trace out of main\n";
    EXPECT_TRUE(run.out.size() > end.size() && run.out.substr(run.out.size() - end.size()) == end);
}
