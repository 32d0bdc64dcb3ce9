// krlab replay and resume: exactly that row; a table with each line once.
#include "faultof.h"
#include "labprocess.h"
#include "replay.h"
#include "resume.h"
#include "table.h"

#include <gtest/gtest.h>
#include <map>

using namespace krlab;

namespace {

const std::vector<TestParameters> someTests = {
    {"veksA", {"len", "order"}, {"len", "order", "", "", "", ""}},
    {"veksB", {"fact"}, {"fact", "", "", "", "", ""}},
    {"veksB", {"fact", "fs"}, {"fact", "fs", "", "", "", ""}},
};

std::string faultOf(const std::vector<std::string>& words) {
    return faultIn([&] { replayTarget(words, someTests); });
}

} // namespace

TEST(LabReplay, LinesInWordsAreBroughtIntoTheTablesOrder) {
    EXPECT_EQ(replayTarget({"veksA order=2 len=8"}, someTests).line.text(), "veksA len=8 order=2");
    EXPECT_EQ(replayTarget({"veksA", "order=2", "len=8"}, someTests).line.text(), "veksA len=8 order=2");
    EXPECT_EQ(replayTarget({"veksB", "fact=1"}, someTests).line.text(), "veksB fact=1");
    EXPECT_EQ(replayTarget({"veksB", "fs=3", "fact=1"}, someTests).line.text(), "veksB fact=1 fs=3");
}

TEST(LabReplay, WhatTheRigDoesNotHaveIsToldWithTheNearestName) {
    EXPECT_EQ(faultOf({"veksa len=8"}), "the rig has no function 'veksa'; do you mean 'veksA'?");
    EXPECT_EQ(faultOf({"veksA length=8"}), "veksA has no parameter 'length'; do you mean 'len'?");
    EXPECT_EQ(faultOf({"veksA len=8"}), "a line of veksA needs values for: len, order");
    EXPECT_NE(faultOf({"/nowhere/t.csv:3"}), "");
}

TEST(LabReplay, RowsDrawnOverAllFamiliesAreMeasuredAgain) {
    const LabDirectory directory;
    directory.rig("-rt -fAutoCorr_16s32s -fResamplePolyphase -fLevinson -fDCTFwd_G7221 -dAccuracy=50");
    const Table table = readTable(directory.path("t.csv"));
    ASSERT_GT(table.rows(), 10u);
    const std::vector<TableRow>& rows = table.runs[0].rows;
    for (const size_t index : {size_t{0}, rows.size() / 3, rows.size() - 1}) {
        const LabResult result =
            directory.run({"replay", "--quiet", "t.csv:" + std::to_string(rows[index].number), "--", "-dAccuracy=50"});
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_TRUE(result.out.starts_with(rows[index].figure.line.function)) << result.out;
        EXPECT_NE(result.out.find("\n  now:  "), std::string::npos);
    }
    const LabResult none = directory.run({"replay", "t.csv:2"});
    EXPECT_EQ(none.status, 2);
    EXPECT_EQ(none.err, "krlab: t.csv:2: there is no row of a measurement; the nearest is " +
                            std::to_string(rows.front().number) + "\n");
}

TEST(LabResume, ARunCutOffAnywhereGetsEachLineOnce) {
    const LabDirectory directory;
    const std::string keys = "-fAutoCorr_16s32s -fDCTFwd_G7221 -fResamplePolyphase -dAccuracy=50";
    directory.rig("-rwhole " + keys);
    const std::string whole = directory.read("whole.csv");
    const auto identities = [](const std::string& text) {
        std::map<std::string, int> counts;
        const Table table = parseTable("t", text);
        for (const TableRow& row : table.runs.back().rows) {
            ++counts[row.figure.line.text()];
        }
        return counts;
    };
    const std::map<std::string, int> wanted = identities(whole);
    const size_t head = whole.find("\nfuncBase,");
    const size_t firstRow = whole.find('\n', head + 1) + 1;
    for (const size_t cut : {firstRow + 7, (firstRow + whole.size()) / 2, whole.size() - 3}) {
        directory.write("t.csv", whole.substr(0, cut));
        const LabResult result = directory.run({"resume", "--quiet", "t.csv", "--", "-fAutoCorr_16s32s",
                                                "-fDCTFwd_G7221", "-fResamplePolyphase", "-dAccuracy=50"});
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(identities(directory.read("t.csv")), wanted) << cut;
    }
}

TEST(LabResume, OtherKeysThanTheRunsAreRefused) {
    const LabDirectory directory;
    directory.rig("-rt -f=veksAutoCorr_16s32s -dAccuracy=50");
    const LabResult result = directory.run({"resume", "t.csv", "--", "-fDCTFwd_G7221"});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("veksAutoCorr_16s32s, is not among the"), std::string::npos) << result.err;
}

TEST(LabResume, RunsEndedBeforeTheirHeadingCannotBeResumed) {
    const LabDirectory directory;
    directory.write("t.csv", "CPU,x, 2x2.5 GHz, \nOS,y\n");
    EXPECT_THROW(resumeState(directory.path("t.csv")), Fault);
}
