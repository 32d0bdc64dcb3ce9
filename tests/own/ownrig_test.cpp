// A program of one's own as a whole: keys, tables, containment.
#include "rig_process.h"

#include <gtest/gtest.h>

namespace {

const std::string s_title = "funcBase,funcDataType,funcDescriptor,Len/Size,Parm1,Parm2,Parm3,Parm4,scaleFactor,Comment,"
                            "Clocks,per,Time (usec),MFlops\n";

// The rows of a table below its title.
std::string rowsOf(const std::string& table) {
    const size_t at = table.find(s_title);
    return at == std::string::npos ? "" : table.substr(at + s_title.size());
}

} // namespace

TEST(OwnRig, KeysSelectFunctionsAndGiveValuesAsForAnyTest) {
    const RigDirectory rig(OWNRIG, "ownrig");
    const RigResult run = rig.run({"-B", "-LPERF", "-f=ownGain", "-dlen=16; 64", "-dMethod=M", "-dNumLoops=9", "-r"});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("ownGain,-,-,16,-,-,-,-,-,nLps=9,<clocks>,e,<usec>,-\n"
              "ownGain,-,-,64,-,-,-,-,-,nLps=9,<clocks>,e,<usec>,-\n",
              rowsOf(rig.masked("ownrig.csv")))
        << run.out;
}

TEST(OwnRig, CrashExceptionAndFailureCostOneTestEach) {
    const RigDirectory rig(OWNRIG, "ownrig");
    const RigResult run =
        rig.run({"-B", "-LWARN", "-fown", "-dMethod=S", "-dNumCalls=3", "-dTotalCpuClocks=0", "-r", "-u"});
    EXPECT_EQ(1, run.exitCode);
    const std::string rows = rowsOf(rig.masked("ownrig.csv"));
    EXPECT_EQ("ownChain,-,-,-,-,-,-,-,-,nCalls=3,<clocks>,add,<usec>,-\n", rows.substr(0, rows.find("ownElsewhere")));
    EXPECT_EQ(3, countOf(rows, "ownEnergy,"));
    EXPECT_EQ(1, countOf(rows, "ownFail,-,-,40,"));
    EXPECT_EQ(1, countOf(rows, "ownFail,"));
    EXPECT_EQ(0, countOf(rows, "ownCrash,"));
    EXPECT_EQ(0, countOf(rows, "ownRefuse,"));
    EXPECT_EQ(3, countOf(rows, "ownHalve,"));
    EXPECT_NE(std::string::npos, run.out.find("| -EXCPTFAIL  ownCrash")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("there is nothing to do")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("| -EXCPTFAIL  ownRefuse")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("--VEK ERROR. status = -7 in ownFail: Error\n")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("| -FUNCFAIL   ownFail")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("| -OK         ownHalve")) << run.out;
}

TEST(OwnRig, ListNamesTheFunctions) {
    const RigDirectory rig(OWNRIG, "ownrig");
    const RigResult run = rig.run({"-e", "-fownE"});
    EXPECT_EQ(0, run.exitCode);
    for (const char* name : {"ownElsewhere", "ownEmpty", "ownEnergy"}) {
        EXPECT_EQ(1, countOf(run.out, name)) << run.out;
    }
    EXPECT_EQ(0, countOf(run.out, "ownGain"));
}
