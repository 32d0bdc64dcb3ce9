// Table streams: cells and lines, postponed lines, the search for identical rows, files.
#include "filelimit.h"
#include "streamcapture.h"
#include "tempdir.h"

#include <gtest/gtest.h>

namespace {

class KrCStream : public ::testing::Test {
protected:
    KrCStream() { m_table.insert(m_table.end(), m_text.stream()); }
    ~KrCStream() override {
        krList<o_stream*> none;
        m_table.swap(none);
    }
    void line(const char* a, const char* b, const char* c) { m_table << a << b << c << "\n"; }

    TextStream m_text;
    krCStream m_table;
};

TEST_F(KrCStream, CellsAreJoinedByCommas) {
    m_table << "veksFoo" << 16 << 2.5 << "\n";
    EXPECT_EQ(m_text.text(), "veksFoo,16,2.5\n");
}

TEST_F(KrCStream, EveryTypeHasItsSpelling) {
    m_table << true << 'c' << 7U << static_cast<const void*>(nullptr) << "\n";
    EXPECT_EQ(m_text.text(), "yes,c,7,NULL\n");
}

TEST_F(KrCStream, EmptyCellIsADash) {
    line("a", "", "c");
    EXPECT_EQ(m_text.text(), "a,-,c\n");
}

TEST_F(KrCStream, CommaInACellIsNotQuoted) {
    line("a,b", "\"c\"", "d");
    EXPECT_EQ(m_text.text(), "a,b,\"c\",d\n");
}

TEST_F(KrCStream, WiderLineIsPaddedWithDashes) {
    m_table << "a"
            << "b";
    m_table.tableOut(5);
    EXPECT_EQ(m_text.text(), "a,b,-,-,-\n");
    EXPECT_EQ(m_table.colmCount(), 2);
}

TEST_F(KrCStream, NarrowerLineDropsCellsAndClearsAll) {
    m_table << "a"
            << "b"
            << "c";
    m_table.lineOut(2);
    EXPECT_EQ(m_table.colmCount(), 0);
    krString cell;
    ASSERT_TRUE(m_table.getColm(2, cell));
    EXPECT_STREQ(cell.c_str(), "");
    m_table.lineOut(3);
    EXPECT_EQ(m_text.text(), "a,b\n-,-,-\n");
}

TEST_F(KrCStream, LineWithoutCellsIsEmpty) {
    m_table.lineOut(0);
    EXPECT_EQ(m_text.text(), "\n");
    EXPECT_EQ(m_table.lineNumber(), 1);
}

TEST_F(KrCStream, ThirtyThirdCellIsDropped) {
    for (int i = 0; i < 33; ++i) {
        m_table << i;
    }
    EXPECT_EQ(m_table.colmCount(), 32);
    m_table << "\n";
    EXPECT_EQ(m_text.text(), "0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31\n");
}

TEST_F(KrCStream, SetColmLeavesTheCountAlone) {
    m_table.setColm(1, "late");
    m_table.setColm(32, "nowhere");
    m_table.setColm(-1, "nowhere");
    EXPECT_EQ(m_table.colmCount(), 0);
    m_table << "a";
    m_table.tableOut(2);
    m_table.setColmCount(2);
    m_table.tableOut(0);
    EXPECT_EQ(m_text.text(), "a,-\na,late\n");
}

TEST_F(KrCStream, CellsBeyondTheLineDoNotExist) {
    krString text = "kept";
    EXPECT_FALSE(m_table.getColm(32, text));
    EXPECT_FALSE(m_table.getColm(-1, text));
    EXPECT_STREQ(text.c_str(), "kept");
}

TEST_F(KrCStream, FillingGoesOnAtTheColumnThatIsSet) {
    m_table << "a";
    m_table.setColmCount(3);
    m_table << "d"
            << "\n";
    EXPECT_EQ(m_text.text(), "a,-,-,d\n");
    m_table.setColmCount(99);
    EXPECT_EQ(m_table.colmCount(), 32);
    m_table.setColmCount(-1);
    EXPECT_EQ(m_table.colmCount(), 0);
}

TEST(KrCStreamAlone, LinesWithoutDestinationsAreOnlyCounted) {
    krCStream table;
    table << "a"
          << "b"
          << "\n";
    table << "c"
          << "\n";
    EXPECT_EQ(table.lineNumber(), 2);
    EXPECT_EQ(table.colmCount(), 0);
}

TEST_F(KrCStream, PostponedLinesComeBehindInTheirOrder) {
    m_table << "late1";
    m_table.linePostpone();
    m_table << "late2"
            << "x";
    m_table.linePostpone();
    EXPECT_EQ(m_text.text(), "");
    m_table << "now"
            << "\n";
    m_table.linePostponeOut(3);
    EXPECT_EQ(m_text.text(), "now\nlate1,-,-\nlate2,x,-\n");
    m_table.linePostponeOut(3);
    EXPECT_EQ(m_table.lineNumber(), 3);
}

TEST_F(KrCStream, IdenticalSearchIsNeverWiderThanALine) {
    m_table.identicalLinesStart(40);
    EXPECT_EQ(m_table.identicalWidth(), 32);
}

TEST_F(KrCStream, StopWithoutRowsLeavesTheWidth) {
    m_table.identicalLinesStart(3);
    EXPECT_FALSE(m_table.identicalLinesStop());
    EXPECT_EQ(m_table.identicalWidth(), 3);
}

TEST_F(KrCStream, SearchThatIsOffFindsNothing) {
    m_table.identicalLinesStart(0);
    line("a", "b", "1");
    line("a", "b", "1");
    EXPECT_FALSE(m_table.identicalLinesStop());
}

TEST_F(KrCStream, RowsWithEqualParametersAreToldByTheirLineNumbers) {
    ConsoleCapture console;
    line("title", "title", "title");
    m_table.identicalLinesStart(2);
    line("a", "8", "10.5");
    line("a", "16", "20.5");
    line("a", "16", "21.5");
    EXPECT_TRUE(m_table.identicalLinesStop());
    EXPECT_EQ(console.text(), " Performance table warning:\n Lines 3 & 4 have identical parameters\n");
    EXPECT_EQ(m_table.identicalWidth(), 0);
    EXPECT_EQ(m_text.text(), "title,title,title\na,8,10.5\na,16,20.5\na,16,21.5\n");
}

TEST_F(KrCStream, DifferentParametersAreNoPair) {
    ConsoleCapture console;
    m_table.identicalLinesStart(2);
    line("a", "8", "1");
    line("a", "16", "1");
    line("b", "8", "1");
    EXPECT_FALSE(m_table.identicalLinesStop());
    EXPECT_EQ(console.text(), "");
}

TEST_F(KrCStream, TextsThatDivideDifferentlyIntoCellsAreNoPair) {
    m_table.identicalLinesStart(2);
    line("ab", "c", "1");
    line("a", "bc", "1");
    EXPECT_FALSE(m_table.identicalLinesStop());
}

TEST_F(KrCStream, FirstPairIsTheOneWithTheSmallestFirstRow) {
    ConsoleCapture console;
    m_table.identicalLinesStart(1);
    for (const char* cell : {"a", "b", "c", "c", "b", "a", "a"}) {
        m_table << cell << "\n";
    }
    EXPECT_TRUE(m_table.identicalLinesStop());
    EXPECT_EQ(console.text(), " Performance table warning:\n Lines 1 & 6 have identical parameters\n");
}

TEST_F(KrCStream, SearchAgreesWithComparingAllPairs) {
    unsigned seed = 12345;
    for (int round = 0; round < 50; ++round) {
        int values[60];
        int first = -1;
        int second = -1;
        for (int& value : values) {
            seed = seed * 1103515245U + 12345U;
            value = static_cast<int>(seed >> 16) % 500;
        }
        for (int i = 0; i < 60 && first < 0; ++i) {
            for (int j = i + 1; j < 60 && first < 0; ++j) {
                if (values[i] == values[j]) {
                    first = i;
                    second = j;
                }
            }
        }
        ConsoleCapture console;
        const int base = m_table.lineNumber() + 1;
        m_table.identicalLinesStart(1);
        for (const int value : values) {
            m_table << value << "\n";
        }
        EXPECT_EQ(m_table.identicalLinesStop(), first >= 0);
        const std::string expected = first < 0
                                         ? ""
                                         : " Performance table warning:\n Lines " + std::to_string(base + first) +
                                               " & " + std::to_string(base + second) + " have identical parameters\n";
        EXPECT_EQ(console.text(), expected);
        m_table.identicalLinesStart(0);
    }
}

TEST_F(KrCStream, PostponedLinesTakePartInTheSearch) {
    ConsoleCapture console;
    m_table.identicalLinesStart(1);
    m_table << "a"
            << "1";
    m_table.linePostpone();
    m_table << "a"
            << "2"
            << "\n";
    m_table.linePostponeOut(2);
    EXPECT_TRUE(m_table.identicalLinesStop());
    EXPECT_EQ(console.text(), " Performance table warning:\n Lines 1 & 2 have identical parameters\n");
}

TEST_F(KrCStream, SearchOfAHundredThousandRowsEnds) {
    ConsoleCapture console;
    krCStream table;
    table.identicalLinesStart(2);
    for (int i = 0; i < 100000; ++i) {
        table << i / 300 << i % 300 << "\n";
    }
    EXPECT_FALSE(table.identicalLinesStop());
}

TEST_F(KrCStream, NewSearchForgetsTheRowsBefore) {
    m_table.identicalLinesStart(1);
    line("a", "", "");
    m_table.identicalLinesStart(1);
    line("a", "", "");
    EXPECT_FALSE(m_table.identicalLinesStop());
}

TEST(KrIdenticalColms, NoCellsAreAlwaysEqual) {
    const krString a[] = {"x", "y"};
    const krString b[] = {"x", "z"};
    EXPECT_TRUE(krCStream::identicalColms(a, b, 0));
    EXPECT_TRUE(krCStream::identicalColms(a, b, -1));
    EXPECT_TRUE(krCStream::identicalColms(a, b, 1));
    EXPECT_FALSE(krCStream::identicalColms(a, b, 2));
}

TEST(KrCStreamFiles, LinesStandInTheFileAsSoonAsTheyAreWritten) {
    const TempDir dir;
    krCStream table;
    ASSERT_TRUE(table.addStream(dir.path("t.csv").c_str(), false));
    table << "a"
          << "\n";
    table << "unfinished";
    EXPECT_EQ(dir.read("t.csv"), "a\n");
    table.close();
    EXPECT_TRUE(table.empty());
}

TEST(KrCStreamFiles, AppendingKeepsTheOldLines) {
    const TempDir dir;
    dir.write("t.csv", "old\n");
    {
        krCStream table;
        ASSERT_TRUE(table.addStream(dir.path("t.csv").c_str(), true));
        table << "new"
              << "\n";
    }
    EXPECT_EQ(dir.read("t.csv"), "old\nnew\n");
    krCStream table;
    ASSERT_TRUE(table.addStream(dir.path("t.csv").c_str(), false));
    EXPECT_EQ(dir.read("t.csv"), "");
}

TEST(KrCStreamFiles, UnwritableFileIsReportedAndNotAdded) {
    const TempDir dir;
    ConsoleCapture console;
    krCStream table;
    EXPECT_FALSE(table.addStream(dir.path("no/such/t.csv").c_str(), false));
    EXPECT_TRUE(table.empty());
    EXPECT_EQ(console.text().find("-- Can't open file " + dir.path("no/such/t.csv") + " to write"), 0U);
}

TEST(KrCStreamFiles, SwappedDestinationsGiveTheOtherTableTheLine) {
    TextStream first;
    TextStream second;
    krCStream a;
    krCStream b;
    a.insert(a.end(), first.stream());
    b.insert(b.end(), second.stream());
    a << "kept";
    a.swap(b);
    a.tableOut(0);
    a.swap(b);
    EXPECT_EQ(first.text(), "");
    EXPECT_EQ(second.text(), "kept\n");
    krList<o_stream*> none;
    a.swap(none);
    krList<o_stream*> noneEither;
    b.swap(noneEither);
}

TEST(KrTableFile, DiskThatIsFullForAWhileLosesNoRowAndTearsNone) {
    const TempDir dir;
    krCStream table;
    ASSERT_TRUE(table.addStream(dir.path("t.csv").c_str(), false));
    table << "first" << 1 << "\n";
    {
        const FileSizeLimit limit(12);
        table << "second" << 2 << "\n";
        EXPECT_EQ(dir.read("t.csv"), "first,1\n") << "no half row";
        table << "third" << 3 << "\n";
        EXPECT_EQ(dir.read("t.csv"), "first,1\n") << "no row before its turn";
    }
    table << "fourth" << 4 << "\n";
    EXPECT_EQ(dir.read("t.csv"), "first,1\nsecond,2\nthird,3\nfourth,4\n");
    table.close();
}

TEST(KrTableFile, RowsHeldBackByAFullDiskAreWrittenAtTheEnd) {
    const TempDir dir;
    dir.write("t.csv", "before\n");
    krCStream table;
    ASSERT_TRUE(table.addStream(dir.path("t.csv").c_str(), true));
    {
        const FileSizeLimit limit(9);
        table << "row" << 1 << "\n";
    }
    EXPECT_EQ(dir.read("t.csv"), "before\n");
    table.flush();
    EXPECT_EQ(dir.read("t.csv"), "before\nrow,1\n");
    table.close();
}

} // namespace
