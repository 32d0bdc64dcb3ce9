// The store: what is written comes back, a killed writer loses the pass in work at most, two write at once.
#include "fault.h"
#include "store.h"
#include "tempdir.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace krlab;

namespace {

Pass passOf(const std::string& subject, int lines, double clocks) {
    Pass pass;
    pass.identity.subject = subject;
    pass.identity.started = "2026-11-22T02:30:05+01:00";
    pass.identity.keys = {"-fX"};
    pass.identity.loadStart = 0.25;
    pass.ends.emplace_back();
    for (int i = 0; i < lines; ++i) {
        Figure figure;
        figure.line = Line{"veksX_16s", {{"len gth", std::to_string(i)}}};
        figure.clocks = clocks + i;
        figure.loops = 16;
        figure.accuracy = 0.5;
        figure.exact = true;
        figure.elements = 8;
        figure.perElement = 3.5;
        figure.unit = "e";
        figure.microseconds = 0.25;
        figure.megaflops = 2;
        figure.comment = "nLps=16";
        pass.figures.push_back(figure);
    }
    pass.tests.push_back({"veksX_16s", "TimX", "p_x", "OK", {"-- \xff no text"}});
    return pass;
}

RunRecord runOf(const std::string& label) {
    RunRecord run;
    run.command = "run";
    run.arguments = {"krlab", "run"};
    run.seed = 7;
    run.label = label;
    return run;
}

} // namespace

TEST(LabStore, APassComesBackAsItWasWritten) {
    const TempDir directory;
    long long id = 0;
    {
        Store store(directory.path("s.db"));
        const long long run = store.beginRun(runOf("abc"));
        id = store.addPass(run, 3, passOf("A", 4, 100));
        store.endRun(run, 0);
    }
    const Store store(directory.path("s.db"));
    const Pass pass = store.pass(id);
    const Pass wanted = passOf("A", 4, 100);
    ASSERT_EQ(pass.figures.size(), 4u);
    const Figure& figure = pass.figures[2];
    EXPECT_EQ(figure.line, wanted.figures[2].line);
    EXPECT_EQ(figure.clocks, 102);
    EXPECT_EQ(figure.loops, 16);
    EXPECT_EQ(figure.accuracy, 0.5);
    EXPECT_TRUE(figure.exact);
    EXPECT_EQ(figure.elements, 8);
    EXPECT_EQ(figure.perElement, 3.5);
    EXPECT_EQ(figure.unit, "e");
    EXPECT_EQ(figure.microseconds, 0.25);
    EXPECT_EQ(figure.megaflops, 2);
    EXPECT_EQ(figure.comment, "nLps=16");
    EXPECT_EQ(pass.tests[0].test, "TimX");
    EXPECT_TRUE(pass.complete());
    EXPECT_EQ(pass.identity.loadStart, 0.25);
    EXPECT_EQ(pass.identity.keys, wanted.identity.keys);
    const std::vector<RunRecord> runs = store.runs();
    ASSERT_EQ(runs.size(), 1u);
    EXPECT_EQ(runs[0].label, "abc");
    EXPECT_EQ(runs[0].status, 0);
    EXPECT_EQ(runs[0].seed, 7u);
    EXPECT_EQ(store.passes()[0].round, 3);
    EXPECT_THROW(store.pass(99), Fault);
}

TEST(LabStore, FiguresOfManyPassesAreChosenByRunSubjectAndLabel) {
    const TempDir directory;
    Store store(directory.path("s.db"));
    const long long first = store.beginRun(runOf("old"));
    const long long second = store.beginRun(runOf("new"));
    store.addPass(first, 0, passOf("A", 3, 100));
    store.addPass(first, 0, passOf("B", 3, 200));
    store.addPass(second, 0, passOf("A", 2, 300));
    const FigureTable all = store.figures();
    EXPECT_EQ(all.lines.size(), 3u);
    ASSERT_EQ(all.entries.size(), 3u);
    EXPECT_EQ(all.entries[1][2].clocks, 202);
    EXPECT_EQ(all.lines[all.entries[1][2].line].text(), "veksX_16s \"len gth\"=2");
    PassFilter filter;
    filter.subject = "A";
    EXPECT_EQ(store.figures(filter).passes.size(), 2u);
    filter.label = "new";
    ASSERT_EQ(store.figures(filter).passes.size(), 1u);
    EXPECT_EQ(store.figures(filter).entries[0].size(), 2u);
    filter = {};
    filter.runs = {first};
    EXPECT_EQ(store.passes(filter).size(), 2u);
}

TEST(LabStore, AKilledWriterLeavesWholePassesOnly) {
    const TempDir directory;
    const std::string file = directory.path("s.db");
    Store(file).beginRun(runOf("x"));
    for (int round = 0; round < 5; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            Store store(file);
            for (;;) {
                store.addPass(1, round, passOf("A", 500, 1));
            }
        }
        ::usleep(30000 + 17000 * round);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
    const FigureTable table = Store(file).figures();
    for (const auto& entries : table.entries) {
        EXPECT_EQ(entries.size(), 500u);
    }
}

TEST(LabStore, TwoWritersAtOnceLoseNothing) {
    const TempDir directory;
    const std::string file = directory.path("s.db");
    const auto write = [&file](const std::string& subject) {
        Store store(file);
        const long long run = store.beginRun(runOf(subject));
        for (int i = 0; i < 20; ++i) {
            store.addPass(run, i, passOf(subject, 50, i));
        }
    };
    std::thread other(write, "B");
    write("A");
    other.join();
    const Store store(file);
    PassFilter filter;
    for (const char* subject : {"A", "B"}) {
        filter.subject = subject;
        EXPECT_EQ(store.passes(filter).size(), 20u);
    }
    EXPECT_EQ(store.figures().lines.size(), 50u);
}

TEST(LabStore, OtherFilesAreRefused) {
    const TempDir directory;
    directory.write("text.db", std::string(5000, 'x'));
    EXPECT_THROW(Store(directory.path("text.db")), Fault);
    EXPECT_THROW(Store(directory.path("none/s.db")), Fault);
    EXPECT_THROW(Store(directory.path()), Fault);
}
