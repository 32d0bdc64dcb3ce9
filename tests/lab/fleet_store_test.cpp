// Stores of tasks merged into one: nothing counts twice, nothing is lost, a bad file changes nothing.
#include "fault.h"
#include "fleetstores.h"
#include "passlist.h"

#include <fstream>
#include <gtest/gtest.h>

using namespace krlab;

namespace {

std::string figuresOf(const Store& store) {
    std::string text;
    const FigureTable table = store.figures();
    for (size_t i = 0; i < table.passes.size(); ++i) {
        const PassRecord& pass = table.passes[i];
        text += std::to_string(pass.run) + " " + std::to_string(pass.round) + " " + pass.subject + " " +
                pass.identity.machine.host;
        for (const FigureTable::Entry& entry : table.entries[i]) {
            text += " " + table.lines[entry.line].text() + "=" + std::to_string(entry.clocks);
        }
        text += "\n";
    }
    return text;
}

} // namespace

TEST(LabFleetStore, MergedPassesAreThoseOfTheTasksWithTheirMachines) {
    const TempDir directory;
    writeTask(directory.path("0"), {"p", 0, "n0", 1}, 0, 2, 3, 1.0);
    writeTask(directory.path("1"), {"p", 1, "n1", 1}, 0, 2, 3, 1.5);
    Store store(directory.path("all.db"));
    EXPECT_EQ(store.merge(directory.path("0")).passes, 4U);
    EXPECT_EQ(store.merge(directory.path("1")).figures, 12);
    const FigureTable table = store.figures();
    ASSERT_EQ(table.passes.size(), 8U);
    EXPECT_EQ(table.passes[0].identity.machine.host, "n0");
    EXPECT_EQ(table.passes[4].identity.machine.host, "n1");
    EXPECT_EQ(table.passes[5].subject, "after");
    EXPECT_EQ(table.passes[5].figures, 3);
    EXPECT_EQ(table.passes[7].round, 1);
    EXPECT_DOUBLE_EQ(table.entries[7][2].clocks, (100 + 2) * 1.5);
    ASSERT_EQ(store.fleetRuns().size(), 2U);
    EXPECT_EQ(store.fleetRuns()[1].task, 1);
    EXPECT_EQ(store.fleetRuns()[1].subjects, (std::vector<std::string>{"before", "after"}));
    // A whole pass is read as of any store.
    EXPECT_EQ(store.pass(table.passes[7].id).figures[0].comment, "nLps=32");
}

TEST(LabFleetStore, MergingTwiceChangesNothing) {
    const TempDir directory;
    writeTask(directory.path("0"), {"p", 0, "n0", 1}, 0, 2, 3, 1.0);
    Store store(directory.path("all.db"));
    store.merge(directory.path("0"));
    const std::string before = figuresOf(store);
    const MergeCount again = store.merge(directory.path("0"));
    EXPECT_EQ(again.passes, 0U);
    EXPECT_EQ(again.figures, 0);
    EXPECT_EQ(figuresOf(store), before);
    EXPECT_EQ(store.runs().size(), 1U);
}

TEST(LabFleetStore, ATaskThatRanTwiceCountsOnce) {
    const TempDir directory;
    writeTask(directory.path("first"), {"p", 0, "n0", 1}, 0, 2, 3, 1.0);
    writeTask(directory.path("second"), {"p", 0, "n9", 1}, 0, 2, 3, 7.0);
    Store store(directory.path("all.db"));
    store.merge(directory.path("first"));
    const std::string before = figuresOf(store);
    EXPECT_EQ(store.merge(directory.path("second")).passes, 0U);
    EXPECT_EQ(figuresOf(store), before);
}

TEST(LabFleetStore, APartIsCompletedByTheWholeTask) {
    const TempDir directory;
    writeTask(directory.path("part"), {"p", 0, "n0", 1}, 0, 2, 3, 1.0, false);
    writeTask(directory.path("whole"), {"p", 0, "n0", 1}, 0, 5, 3, 1.0);
    Store store(directory.path("all.db"));
    EXPECT_EQ(store.merge(directory.path("part")).passes, 4U);
    EXPECT_EQ(store.runs()[0].ended, "");
    EXPECT_EQ(store.merge(directory.path("whole")).passes, 6U);
    EXPECT_EQ(store.runs().size(), 1U);
    EXPECT_NE(store.runs()[0].ended, "");
    EXPECT_EQ(store.runs()[0].status, 0);
    EXPECT_EQ(store.passes().size(), 10U);
}

TEST(LabFleetStore, TheSameTaskOfAnotherPlanIsAnother) {
    const TempDir directory;
    writeTask(directory.path("0"), {"p", 0, "n0", 1}, 0, 1, 3, 1.0);
    writeTask(directory.path("1"), {"q", 0, "n0", 1}, 0, 1, 3, 1.0);
    Store store(directory.path("all.db"));
    store.merge(directory.path("0"));
    EXPECT_EQ(store.merge(directory.path("1")).passes, 2U);
}

TEST(LabFleetStore, LinesOfTwoTasksAreMatchedByTheirText) {
    const TempDir directory;
    writeTask(directory.path("0"), {"p", 0, "n0", 1}, 2, 1, 3, 1.0); // lines 2 .. 4
    writeTask(directory.path("1"), {"p", 1, "n0", 1}, 0, 1, 4, 1.0); // lines 0 .. 3
    Store store(directory.path("all.db"));
    store.merge(directory.path("0"));
    store.merge(directory.path("1"));
    const FigureTable table = store.figures();
    EXPECT_EQ(table.lines.size(), 5U);
    for (const auto& entries : table.entries) {
        for (const FigureTable::Entry& entry : entries) {
            EXPECT_EQ(table.lines[entry.line].parameters[0].value, std::to_string(std::lround(entry.clocks) - 100));
        }
    }
}

TEST(LabFleetStore, WhatIsNoWholeStoreIsRefusedAndChangesNothing) {
    const TempDir directory;
    writeTask(directory.path("0"), {"p", 0, "n0", 1}, 0, 2, 40, 1.0);
    Store store(directory.path("all.db"));
    store.merge(directory.path("0"));
    const std::string before = figuresOf(store);
    writeTask(directory.path("1"), {"p", 1, "n0", 1}, 0, 2, 400, 1.0);
    std::string text = directory.read("1");
    directory.write("half", text.substr(0, text.size() / 2));
    directory.write("empty", "");
    directory.write("words", "no database at all, but of some length");
    for (const char* name : {"half", "empty", "words", "missing"}) {
        EXPECT_THROW(store.merge(directory.path(name)), Fault) << name;
        EXPECT_EQ(figuresOf(store), before) << name;
        EXPECT_EQ(store.runs().size(), 1U) << name;
    }
    EXPECT_EQ(store.merge(directory.path("1")).passes, 4U);
}

TEST(LabFleetStore, AFileWithSignsOfAnAddressInItsNameIsMerged) {
    const TempDir directory;
    const std::string odd = directory.path("a b?c#d%41.db");
    writeTask(odd, {"p", 0, "n0", 1}, 0, 1, 2, 1.0);
    Store store(directory.path("all.db"));
    EXPECT_EQ(store.merge(odd).passes, 2U);
}

TEST(LabFleetStore, ReadingLeavesNothingBesideTheTasksFile) {
    const TempDir directory;
    writeTask(directory.path("0.db"), {"p", 0, "n0", 1}, 0, 1, 2, 1.0);
    Store(directory.path("all.db")).merge(directory.path("0.db"));
    EXPECT_FALSE(directory.exists("0.db-wal"));
    EXPECT_FALSE(directory.exists("0.db-shm"));
}

TEST(LabFleetStore, PassesOfAMergedStoreAreNamedByTheirLabelAsOfAnyOther) {
    const TempDir directory;
    writeTask(directory.path("0"), {"p", 0, "n0", 1}, 0, 2, 3, 1.0);
    const std::string file = directory.path("all.db");
    Store(file).merge(directory.path("0"));
    PassList list;
    list.add(file + ":nightly/after", "");
    EXPECT_EQ(list.passes().size(), 2U);
}
