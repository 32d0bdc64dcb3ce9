// krlab check: each way in which a run goes wrong is status 2 with one clear line.
#include "fakerig.h"
#include "labprocess.h"
#include "rigcheck.h"

#include <gtest/gtest.h>

using namespace krlab;

namespace {

const std::vector<TestName> someTests = {{"veksAutoCorr_16s32s", "TimAutoCorr", "p_autocorr"},
                                         {"veksDotProd_16s32s", "TimDotProd", "p_dotprod"}};

std::vector<std::string> faults(const std::vector<std::string>& words) {
    return faultsOfKeys(splitKeys(words), someTests, {{"veksAutoCorr_16s32s", {"lenght", "lenght Dst"}, {}}});
}

/// The one line that a check tells.
std::string told(const std::vector<std::string>& keys, int status = 2) {
    const LabDirectory directory;
    std::vector<std::string> words = {"check", "--quiet", "--"};
    words.insert(words.end(), keys.begin(), keys.end());
    const LabResult result = directory.run(words);
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.out, "");
    return result.err;
}

} // namespace

TEST(LabCheck, PatternsThatSelectNothingAreToldWithTheNearestName) {
    EXPECT_EQ(faults({"-fAutoCor"}), std::vector<std::string>());
    EXPECT_EQ(faults({"-fAutoKorr"}),
              std::vector<std::string>{"-fAutoKorr selects nothing: no function holds 'AutoKorr'; do you mean "
                                       "'veksAutoCorr_16s32s'?"});
    EXPECT_EQ(
        faults({"-f=veksDotProd_16s"}),
        std::vector<std::string>{"-f=veksDotProd_16s selects nothing: no function is called 'veksDotProd_16s'; do "
                                 "you mean 'veksDotProd_16s32s'?"});
    EXPECT_EQ(faults({"-tXyzzy"}), std::vector<std::string>{"-tXyzzy selects nothing: no test holds 'Xyzzy'"});
    EXPECT_EQ(faults({"-FXyzzy"}), std::vector<std::string>{"-FXyzzy starts nowhere: no function holds it"});
    EXPECT_EQ(faults({"-f"}), std::vector<std::string>{"-f selects nothing: its pattern is empty"});
}

TEST(LabCheck, NamesInDataKeysAreHeldAgainstTheSelectedTests) {
    EXPECT_EQ(faults({"-dlenght=80", "-dlenght Dst=9", "-dMethod=M"}), std::vector<std::string>());
    EXPECT_EQ(
        faults({"-dlength=80"}),
        std::vector<std::string>{"-dlength=80 has no effect: no selected test has a parameter 'length'; do you mean "
                                 "'lenght'?"});
    EXPECT_EQ(faults({"-d80"}), std::vector<std::string>{"-d80 sets nothing: write -dNAME=VALUE"});
}

TEST(LabCheck, WordsThatTheRigDropsAreTold) {
    EXPECT_EQ(faults({"-fAuto", "Corr"}),
              std::vector<std::string>{"the word 'Corr' is dropped by the rig: attach it to its key"});
}

TEST(LabCheck, AGoodRunIsStatusZeroAndItsTableIsThere) {
    const LabDirectory directory;
    const LabResult result =
        directory.run({"check", "--", "-f=veksAutoCorr_16s32s", "-r" + directory.path("t.csv"), "-dAccuracy=50"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "1 tests, all well\n");
    EXPECT_TRUE(directory.exists("t.csv"));
}

TEST(LabCheck, AnEmptySelectionIsAFault) {
    EXPECT_EQ(told({"-fNoSuchThing"}), "krlab: -fNoSuchThing selects nothing: no function holds 'NoSuchThing'\n");
    EXPECT_EQ(told({"-fAutoCorr", "-f-veks"}),
              "krlab: the keys select nothing: each fits some test, all together fit none\n");
}

TEST(LabCheck, AnUnknownParameterIsAFault) {
    EXPECT_EQ(told({"-f=veksAutoCorr_16s32s", "-dlength=80"}),
              "krlab: -dlength=80 has no effect: no selected test has a parameter 'length'; do you mean 'lenght'?\n");
}

TEST(LabCheck, AnUnwritableTableIsAFault) {
    EXPECT_EQ(told({"-f=veksAutoCorr_16s32s", "-r/nowhere/t.csv"}),
              "krlab: the rig says: -- Can't open file /nowhere/t.csv to write:\n");
}

TEST(LabCheck, ATableThatLacksRowsIsAFault) {
    const TempDir directory;
    directory.write("t.csv", tableHead + tableHeading + "veksX,16s,-,8,-,-,-,-,-,nLps=4,16.3,e,3.93,-\n");
    InfoParser info;
    info.feed(consoleTest("veksX_16s") + consoleTest("veksY_16s") + consoleEnd);
    const RigKeys keys = splitKeys({"-l" + directory.path(), "-rt"});
    EXPECT_EQ(faultsOfTables(keys, {"rig", QUICKRIG, {}}, info),
              std::vector<std::string>{directory.path("t.csv") + ": 1 of 2 rows arrived; is the disk full?"});
    EXPECT_EQ(faultsOfTables(splitKeys({"-r" + directory.path("none.csv")}), {"rig", QUICKRIG, {}}, info),
              std::vector<std::string>{directory.path("none.csv") + ": can't be read: No such file or directory"});
}

TEST(LabCheck, ATestThatFailedIsAFault) {
    EXPECT_EQ(
        told({"-f=veksLagWindow_G729_32s_I", "-dlenght=10; 11"}),
        "krlab: veksLagWindow_G729_32s_I failed: FUNCFAIL, --VEK ERROR. status = -11 in veksLagWindow_G729_32s_I: "
        "size out of range\n");
}

// What a line before was warned of, as on a busy machine, is not why a test failed.
TEST(LabCheck, TheErrorIsTheReasonAndNoWarningBeforeIt) {
    const std::string warned =
        "-- wrong measure accuracy on test parameters:\n--VEK WARNING. status = 3 in veksX: odd\n";
    const auto faults = [](const std::string& messages, const std::string& result) {
        InfoParser info;
        info.feed(consoleTest("veksX", false) + messages + "| -" + result + "   veksX     Sun Nov 22 02:25:49 2026|\n" +
                  consoleEnd);
        RigExit exit;
        exit.status = 1;
        return faultsOfRun(info, exit, 60);
    };
    EXPECT_EQ(faults(warned + "--VEK ERROR. status = -11 in veksX: size\n-- lib function error on test parameters:\n",
                     "FUNCFAIL"),
              std::vector<std::string>{"veksX failed: FUNCFAIL, --VEK ERROR. status = -11 in veksX: size"});
    EXPECT_EQ(faults(warned + "-- accuracy error on test parameters:\n", "ACCURFAIL"),
              std::vector<std::string>{"veksX failed: ACCURFAIL, -- accuracy error on test parameters:"});
}

TEST(LabCheck, ARefusedValueIsAFault) {
    EXPECT_EQ(told({"-f=veksAutoCorr_16s32s", "-dlenght=x", "-dAccuracy=50"}),
              "krlab: veksAutoCorr_16s32s refused a value: Invalid value of lenght = x\n");
}

TEST(LabCheck, AnIgnoredKeyIsAFault) {
    EXPECT_EQ(told({"-f=veksAutoCorr_16s32s", "-Z"}), "krlab: the rig ignores -Z: ignored: incorrect option key\n");
}

TEST(LabCheck, ARunThatIsCutOffIsAFault) {
    const LabDirectory directory;
    // The first line alone would take minutes.
    const LabResult result = directory.run({"check", "--quiet", "--limit", "1s", "--", "-f=veksAutoCorr_16s32s",
                                            "-dMethod=Manual", "-dNumLoops=1000000000"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "krlab: the run was ended in veksAutoCorr_16s32s after 1s, its time limit\n");
}
