// Files and console messages: opening modes, level masks, the stack of message levels and the routing of text.
#include "filelimit.h"
#include "kr.h"
#include "krio.h"
#include "streamcapture.h"
#include "tempdir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// A stream with one destination in memory, level by level.
struct Routed {
    explicit Routed(OutputLevel level) {
        stream.setOutLevel(level);
        stream.append(text.stream());
    }
    ~Routed() { stream.clear(); }
    TextStream text;
    krOStream stream;
};

TEST(KrMessages, NewStreamShowsErrorsOnly) {
    krOStream stream;
    EXPECT_EQ(stream.outLevel(), 1);
    EXPECT_EQ(stream.msgLevel(), PERF);
    EXPECT_FALSE(stream.passes());
}

TEST(KrMessages, LevelBits) {
    EXPECT_EQ(ERR, 1);
    EXPECT_EQ(WARN, 2);
    EXPECT_EQ(PERF, 4);
    EXPECT_EQ(INFO, 8);
    EXPECT_EQ(TRACE, 16);
    EXPECT_EQ(MEM, 32);
    EXPECT_EQ(DATA, 64);
    EXPECT_EQ(msgEnd, -10);
    EXPECT_EQ(msgEndFlush, -11);
}

TEST(KrMessages, TextPassesWhenItsBitIsInTheMask) {
    Routed r(ERR);
    r.stream << PERF << "performance\n" << msgEnd;
    r.stream << ERR << "error\n" << msgEnd;
    r.stream << WARN << "warning\n" << msgEnd;
    EXPECT_EQ(r.text.text(), "error\n");
}

TEST(KrMessages, MaskIsNoThreshold) {
    Routed r(ERR | TRACE);
    r.stream << INFO << "info\n" << msgEnd << TRACE << "trace\n" << msgEnd;
    EXPECT_EQ(r.text.text(), "trace\n");
}

TEST(KrMessages, TextGoesToEveryDestinationUnaltered) {
    Routed r(ERR | PERF);
    TextStream second;
    r.stream.append(second.stream());
    r.stream << "a" << 1 << ' ' << true << 2.5 << " " << 9000000000LL << "\n";
    EXPECT_EQ(r.text.text(), "a1 yes2.5 9000000000\n");
    EXPECT_EQ(second.text(), r.text.text());
}

TEST(KrMessages, DoubleHasThreeSignificantDigits) {
    Routed r(PERF);
    r.stream << 1234.5678;
    EXPECT_EQ(r.text.text(), "1.23e+03");
}

TEST(KrMessages, EveryTypeHasItsSpelling) {
    Routed r(PERF);
    r.stream << true << 'c' << 7U << static_cast<const void*>(nullptr);
    EXPECT_EQ(r.text.text(), "yesc7NULL");
}

TEST(KrMessages, StreamWithoutAFileWritesToStandardOutput) {
    o_stream none(nullptr);
    testing::internal::CaptureStdout();
    none << "text";
    none.flush();
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "text");
}

TEST(KrMessages, DestructorClosesTheConsole) {
    FILE* const console = c_out.m_file;
    c_out.m_file = std::tmpfile();
    {
        krOStream stream;
        stream.insert(stream.end(), &c_out);
    }
    EXPECT_EQ(c_out.m_file, nullptr);
    c_out.m_file = console;
}

TEST(KrMessages, RestoreOnAnEmptyStackGivesErrors) {
    krOStream stream;
    stream.setMsgLevel(INFO);
    stream.restoreMsgLevel();
    EXPECT_EQ(stream.msgLevel(), PERF);
    stream.restoreMsgLevel();
    EXPECT_EQ(stream.msgLevel(), ERR);
    stream.restoreMsgLevel();
    EXPECT_EQ(stream.msgLevel(), ERR);
}

TEST(KrMessages, LevelsNest) {
    krOStream stream;
    stream << WARN << INFO;
    EXPECT_EQ(stream.msgLevel(), INFO);
    stream << msgEnd;
    EXPECT_EQ(stream.msgLevel(), WARN);
    stream << msgEndFlush;
    EXPECT_EQ(stream.msgLevel(), PERF);
}

TEST(KrMessages, BeginMessageComparesNumbers) {
    krOStream stream;
    stream.setOutLevel(ERR | WARN | TRACE);
    EXPECT_TRUE(stream.beginMessage(INFO));
    EXPECT_EQ(stream.msgLevel(), INFO);
    EXPECT_FALSE(stream.passes());
    stream.endMessage();
    EXPECT_EQ(stream.msgLevel(), PERF);
    EXPECT_FALSE(stream.beginMessage(MEM));
    EXPECT_EQ(stream.msgLevel(), PERF);
    EXPECT_TRUE(stream.beginMessage(TRACE));
    stream.endMessageFlush();
    EXPECT_EQ(stream.msgLevel(), PERF);
}

TEST(KrMessages, EndMessageFlushFlushesFiles) {
    const TempDir dir;
    krOStream stream;
    ASSERT_TRUE(stream.addStream(dir.path("a.txt").c_str(), false));
    stream << ERR << "text\n" << msgEnd;
    EXPECT_EQ(dir.read("a.txt"), "");
    stream << ERR << "more\n" << msgEndFlush;
    EXPECT_EQ(dir.read("a.txt"), "text\nmore\n");
}

TEST(KrOStreamFiles, CreateEmptiesAndAppendAdds) {
    const TempDir dir;
    dir.write("a.txt", "old\n");
    for (const bool append : {false, true}) {
        krOStream stream;
        ASSERT_TRUE(stream.addStream(dir.path("a.txt").c_str(), append));
        stream << ERR << "new\n" << msgEnd;
        stream.close();
        EXPECT_TRUE(stream.empty());
    }
    EXPECT_EQ(dir.read("a.txt"), "new\nnew\n");
}

TEST(KrOStreamFiles, ALineOfOneByteIsWrittenOnce) {
    const TempDir dir;
    {
        o_stream stream(std::fopen(dir.path("a.txt").c_str(), "w"));
        stream.putLine("\n");
        stream.putLine("a\n");
    }
    EXPECT_EQ(dir.read("a.txt"), "\na\n");
}

// What does not fit its buffer goes to the file at once: the failure is known before the rest is flushed.
TEST(KrFiles, AFileWithALongLineThatDoesNotFitStaysAsItWas) {
    const TempDir dir;
    dir.write("a.ini", "old\n");
    ConsoleCapture console(ERR);
    krStringList lines;
    lines.append(krString(std::string(100000, 'x').c_str()));
    {
        const FileSizeLimit limit(4096);
        krReplaceFile(dir.path("a.ini").c_str(), lines);
    }
    EXPECT_EQ(dir.read("a.ini"), "old\n");
    EXPECT_NE(console.text().find("a.ini: it stays as it was\n"), std::string::npos) << console.text();
}

TEST(KrOStreamFiles, UnopenableFileIsToldAtErrorLevel) {
    const TempDir dir;
    const ConsoleCapture console(ERR);
    krOStream stream;
    const std::string path = dir.path("none/a.txt");
    EXPECT_FALSE(stream.addStream(path.c_str(), false));
    EXPECT_TRUE(stream.empty());
    EXPECT_EQ(const_cast<ConsoleCapture&>(console).text(), "-- Can't open file " + path + " to write: \n");
}

TEST(KrFiles, FailureToReadIsToldOnlyWhenAsked) {
    const TempDir dir;
    const std::string path = dir.path("missing");
    ConsoleCapture console(ERR);
    const i_stream silent(path.c_str(), ioRead | ioRawName, false);
    EXPECT_EQ(silent.m_file, nullptr);
    EXPECT_EQ(console.text(), "");
    const i_stream told(path.c_str(), ioRead | ioRawName, true);
    EXPECT_EQ(told.m_file, nullptr);
    EXPECT_EQ(console.text(), "-- Can't open file " + path + " to read: \n");
}

TEST(KrFiles, ModeWithoutReadOrWriteNamesNoPurpose) {
    ConsoleCapture console(ERR);
    const io_stream file("/tmp", ioRawName, true);
    EXPECT_EQ(file.m_file, nullptr);
    EXPECT_EQ(console.text(), "-- Can't open file /tmp: \n");
}

TEST(KrFiles, ReadWinsOverWrite) {
    const TempDir dir;
    dir.write("a", "kept\n");
    {
        i_stream file(dir.path("a").c_str(), ioRead | ioWrite | ioRawName, true);
        krString line;
        EXPECT_TRUE(file.getline(line));
        EXPECT_STREQ(line.c_str(), "kept");
    }
    EXPECT_EQ(dir.read("a"), "kept\n");
}

TEST(KrFiles, ModeBitsHaveTheirModeTexts) {
    const struct {
        int mode;
        const char* text;
    } rows[] = {{ioRead, "r"},
                {ioRead | ioBinary, "rb"},
                {ioWrite, "w"},
                {ioWrite | ioBinary, "wb"},
                {ioWrite | ioAppend, "a"},
                {ioWrite | ioAppend | ioBinary, "ab"},
                {ioRead | ioWrite | ioAppend | ioRawName, "r"}};
    for (const auto& row : rows) {
        EXPECT_STREQ(krFileMode(row.mode), row.text) << row.mode;
    }
}

TEST(KrFiles, BinaryModesWriteAndRead) {
    const TempDir dir;
    {
        o_stream file(dir.path("a").c_str(), ioWrite | ioBinary | ioRawName, true);
        file << "x\n";
        o_stream more(dir.path("b").c_str(), ioWrite | ioAppend | ioBinary | ioRawName, true);
        more << "y\n";
    }
    EXPECT_EQ(dir.read("a"), "x\n");
    EXPECT_EQ(dir.read("b"), "y\n");
    i_stream back(dir.path("a").c_str(), ioRead | ioBinary | ioRawName, true);
    krString line;
    EXPECT_TRUE(back.getline(line));
    EXPECT_STREQ(line.c_str(), "x");
}

TEST(KrFiles, BareNamesGoThroughTheSessionsDirectories) {
    const TempDir dir;
    const krString in = krSession::m_inDir;
    const krString out = krSession::m_outDir;
    krSession::m_outDir = (dir.path("") + "out_").c_str();
    krSession::m_inDir = (dir.path("") + "in_").c_str();
    {
        o_stream file("a.txt", ioWrite, true);
        file << "written\n";
    }
    EXPECT_EQ(dir.read("out_a.txt"), "written\n");
    dir.write("in_a.txt", "given\n");
    krString line;
    {
        i_stream file("a.txt", ioRead, true);
        file.getline(line);
    }
    EXPECT_STREQ(line.c_str(), "given");
    krSession::m_inDir = in;
    krSession::m_outDir = out;
}

TEST(KrFiles, LastErrorTextIsEmpty) {
    EXPECT_STREQ(getLastErrorMessage().c_str(), "");
}

TEST(KrFiles, GetlineTakesLinesOfAnyLengthAndALastOneWithoutNewline) {
    const TempDir dir;
    const std::string lengthy(3000, 'x');
    const std::string block(511, 'y');
    dir.write("a", "short\n\n" + lengthy + "\n" + block + "\nend\r");
    i_stream file(dir.path("a").c_str(), ioRead | ioRawName, true);
    std::vector<std::string> lines;
    krString line;
    while (file.getline(line)) {
        lines.emplace_back(line.c_str());
    }
    EXPECT_EQ(lines, (std::vector<std::string>{"short", "", lengthy, block, "end\r"}));
    EXPECT_STREQ(line.c_str(), "");
}

TEST(KrFiles, NoFileHasNoLines) {
    i_stream none(nullptr);
    krString line = "old";
    EXPECT_FALSE(none.getline(line));
    EXPECT_STREQ(line.c_str(), "");
}

} // namespace
