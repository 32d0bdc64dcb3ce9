// The call trace: its lines, its stack, and how it mends itself.
#include "streamcapture.h"
#include "tempdir.h"

#include <gtest/gtest.h>

namespace {

TEST(KrTrace, LinesAreIndentedByTheDepth) {
    ConsoleCapture console(63);
    krTrace trace;
    trace.traceIn("run");
    trace.traceIn("loop");
    trace.traceOut("loop");
    trace.traceOut("run");
    const std::string expected = "****** trace into   run\n"
                                 "******* trace into   loop\n"
                                 "******* trace out of loop\n"
                                 "****** trace out of run\n";
    EXPECT_EQ(console.text(), expected);
    EXPECT_EQ(trace.m_log.c_str(), expected);
}

TEST(KrTrace, OutRestoresTheIndentation) {
    krTrace trace;
    trace.traceIn("run");
    const krString before = trace.m_indent;
    trace.traceIn("loop");
    trace.traceOut("loop");
    EXPECT_TRUE(trace.m_indent == before);
    EXPECT_STREQ(trace.getCurName().c_str(), "run");
}

TEST(KrTrace, NothingShowsBelowTheTraceLevel) {
    ConsoleCapture console(7);
    krTrace trace;
    trace.traceIn("run");
    trace.traceOut("run");
    EXPECT_EQ(console.text(), "");
    EXPECT_STREQ(trace.m_log.c_str(), "****** trace into   run\n****** trace out of run\n");
}

TEST(KrTrace, ConsoleIsFlushedOnlyIfTheMessagePasses) {
    const TempDir dir;
    for (const OutputLevel level : {ERR | WARN | PERF, ERR | WARN | PERF | TRACE}) {
        const std::string name = level > TRACE ? "shown" : "hidden";
        krList<o_stream*> saved;
        g_ostrm.swap(saved);
        const OutputLevel before = g_ostrm.outLevel();
        g_ostrm.setOutLevel(level);
        ASSERT_TRUE(g_ostrm.addStream(dir.path(name).c_str(), false));
        g_ostrm << "text\n";
        krTrace trace;
        trace.traceIn("a");
        EXPECT_EQ(dir.read(name).empty(), level < TRACE);
        g_ostrm.close();
        g_ostrm.setOutLevel(before);
        g_ostrm.swap(saved);
    }
}

TEST(KrTrace, MessageLevelComesBack) {
    krTrace trace;
    const MessageLevel level = g_ostrm.msgLevel();
    trace.traceIn("run");
    EXPECT_EQ(g_ostrm.msgLevel(), level);
    trace.traceOut("run");
    EXPECT_EQ(g_ostrm.msgLevel(), level);
}

TEST(KrTrace, OuterFunctionMendsWhatAnExceptionLeft) {
    krTrace trace;
    trace.traceIn("main");
    trace.traceIn("run");
    trace.traceIn("loop");
    trace.traceIn("init");
    trace.traceOut("run");
    EXPECT_STREQ(trace.m_indent.c_str(), "*");
    EXPECT_STREQ(trace.getCurName().c_str(), "main");
    EXPECT_EQ(trace.size(), 1);
}

TEST(KrTrace, UnknownNameCutsTheIndentationButNotTheStack) {
    krTrace trace;
    trace.traceIn("a");
    trace.traceIn("b");
    trace.traceOut("nobody");
    EXPECT_EQ(trace.size(), 2);
    EXPECT_STREQ(trace.m_indent.c_str(), "");
    EXPECT_STREQ(trace.getCurName().c_str(), "b");
}

TEST(KrTrace, BlankedIndentationIsNoHarm) {
    krTrace trace;
    trace.traceIn("a");
    trace.traceIn("b");
    trace.m_indent = "";
    trace.traceOut("b");
    trace.traceOut("a");
    EXPECT_TRUE(trace.empty());
    EXPECT_STREQ(trace.m_indent.c_str(), "");
}

TEST(KrTrace, EmptyStackHasNoName) {
    const krTrace trace;
    EXPECT_STREQ(trace.getCurName().c_str(), "");
}

} // namespace
