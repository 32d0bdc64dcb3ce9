// The ini-file: its grammar, its memory form and its rewriting.
#include "krinifile.h"
#include "streamcapture.h"
#include "tempdir.h"

#include <gtest/gtest.h>

#include <ctime>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class KrIniFile : public ::testing::Test {
protected:
    void open(const std::string& text, bool write = false) {
        m_dir.write("p.ini", text);
        ASSERT_TRUE(m_ini.open(path(), write));
    }
    krString path() const { return m_dir.path("p.ini").c_str(); }
    std::string read(const char* section, const char* key) const {
        return m_ini.read(section, key, "<default>").c_str();
    }
    std::string rewritten() {
        m_ini.close();
        return m_dir.read("p.ini");
    }
    TempDir m_dir;
    krIniFile m_ini;
};

TEST_F(KrIniFile, OneThatWasNeverOpenedSaysNothingWhenItCloses) {
    ConsoleCapture console(ERR | WARN);
    m_ini.close();
    EXPECT_EQ("", console.text());
}

TEST_F(KrIniFile, EmptyFileHasNoSections) {
    open("", true);
    EXPECT_FALSE(m_ini.sectionExist(""));
    m_ini.write("Kelvar Rig", "Method", "Auto", "Auto|Manual");
    EXPECT_EQ(rewritten(), "\n[Kelvar Rig]\nMethod=Auto\t// Auto|Manual\n");
}

// So that a run that ends in the middle of it leaves the old one whole.
TEST_F(KrIniFile, RewritingPutsANewFileInThePlaceOfTheOldOne) {
    open("[s]\na=1\n", true);
    struct stat before = {};
    ASSERT_EQ(stat(path().c_str(), &before), 0);
    EXPECT_EQ(rewritten(), "\n[s]\na=1\n");
    struct stat after = {};
    ASSERT_EQ(stat(path().c_str(), &after), 0);
    EXPECT_NE(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mode, before.st_mode);
}

TEST_F(KrIniFile, EmptyValueIsAnEmptyText) {
    open("[s]\nkey=\n");
    EXPECT_EQ(read("s", "key"), "");
    EXPECT_TRUE(m_ini.valueExist("s", "key"));
}

TEST_F(KrIniFile, BareKeyIsMarkedAndWrittenBackBare) {
    open("[s]\nkey\n", true);
    EXPECT_EQ(read("s", "key"), "~~~");
    EXPECT_EQ(rewritten(), "\n[s]\nkey\n");
}

TEST_F(KrIniFile, CommentEndsALineAnywhere) {
    open("[s]\na//b=c\nd=e // f\n// g=h\ni=http://x\n");
    EXPECT_EQ(read("s", "a"), "~~~");
    EXPECT_EQ(read("s", "d"), "e");
    EXPECT_EQ(read("s", "g"), "<default>");
    EXPECT_EQ(read("s", "i"), "http:");
}

TEST_F(KrIniFile, SectionNameIsTrimmed) {
    open("[ sec ]\na=1\n[sec]\nb=2\n");
    EXPECT_EQ(read("sec", "a"), "1");
    EXPECT_EQ(read("sec", "b"), "2");
}

TEST_F(KrIniFile, BracketsInAValueMakeASectionHead) {
    open("[s]\nx=[y]\nz=1\n");
    EXPECT_TRUE(m_ini.sectionExist("y"));
    EXPECT_EQ(read("s", "x"), "<default>");
    EXPECT_EQ(read("y", "z"), "1");
}

TEST_F(KrIniFile, ClosingBracketBeforeTheOpeningOneIsNoHead) {
    open("[s]\n]a[=1\nb[=2\n");
    EXPECT_EQ(read("s", "]a["), "1");
    EXPECT_EQ(read("s", "b["), "2");
}

TEST_F(KrIniFile, RepeatedSectionIsMergedAtItsFirstPlace) {
    open("[s]\na=1\n[t]\nc=3\n[s]\nb=2\na=4\n", true);
    EXPECT_EQ(rewritten(), "\n[s]\na=4\nb=2\n\n[t]\nc=3\n");
}

TEST_F(KrIniFile, CarriageReturnStaysInValuesAndBareKeysOnly) {
    open("[s]\r\na=1\r\nkey\r\n");
    EXPECT_TRUE(m_ini.sectionExist("s"));
    EXPECT_EQ(read("s", "a"), "1\r");
    EXPECT_TRUE(m_ini.valueExist("s", "key\r"));
    EXPECT_FALSE(m_ini.valueExist("s", "key"));
}

TEST_F(KrIniFile, KeyBeforeTheFirstSectionIsLost) {
    open("a=1\n[s]\nb=2\n", true);
    EXPECT_FALSE(m_ini.sectionExist(""));
    EXPECT_EQ(rewritten(), "\n[s]\nb=2\n");
}

TEST_F(KrIniFile, KeysOfASectionWithoutANameAreKept) {
    open("[]\na=1\n");
    EXPECT_EQ(read("", "a"), "1");
}

TEST_F(KrIniFile, KeyAndValueAreTrimmedAndSplitAtTheFirstEqualsSign) {
    open("[s]\n \tkey one \t=  \"a = b\"  \n=lost\n");
    EXPECT_EQ(read("s", "key one"), "\"a = b\"");
    EXPECT_EQ(read("s", "  key one "), "\"a = b\"");
    EXPECT_EQ(read("s", ""), "<default>");
}

TEST_F(KrIniFile, LookUpsAreCaseSensitive) {
    open("[s]\na=1\n");
    EXPECT_EQ(read("S", "a"), "<default>");
    EXPECT_EQ(read("s", "A"), "<default>");
}

TEST_F(KrIniFile, LastLineNeedsNoNewline) {
    open("[s]\na=1");
    EXPECT_EQ(read("s", "a"), "1");
}

TEST_F(KrIniFile, WriteReplacesTheValueAndKeepsTheComment) {
    open("", true);
    m_ini.write("s", " a ", "1", "first");
    m_ini.write("s", "a", "2", "second");
    m_ini.write("s", "bare");
    m_ini.write("empty");
    m_ini.write("s", "  ", "x", "y");
    EXPECT_EQ(rewritten(), "\n[s]\na=2\t// first\nbare\n\n[empty]\n");
}

TEST_F(KrIniFile, CommentsInTheFileAreGoneAfterARewrite) {
    open("// head\n[s]\na=1\t// old\n", true);
    m_ini.write("s", "a", "1", "new");
    EXPECT_EQ(rewritten(), "\n[s]\na=1\n");
}

TEST_F(KrIniFile, ErasedSectionsAndKeysAreGone) {
    open("[s]\na=1\nb=2\n[t]\nc=3\n", true);
    m_ini.eraseSection("t");
    m_ini.eraseSection("unknown");
    m_ini.deleteKey("s", "a");
    m_ini.deleteKey("s", "unknown");
    m_ini.deleteKey("unknown", "a");
    EXPECT_EQ(m_ini.getSectionValues("t"), nullptr);
    ASSERT_NE(m_ini.getSectionValues("s"), nullptr);
    EXPECT_EQ(m_ini.getSectionValues("s")->size(), 1);
    EXPECT_EQ(rewritten(), "\n[s]\nb=2\n");
}

TEST_F(KrIniFile, FileOpenedForReadingIsNeverTouched) {
    open("[s] // by hand\na=1\n");
    m_ini.write("s", "a", "2", "");
    m_ini.updateFile();
    EXPECT_EQ(rewritten(), "[s] // by hand\na=1\n");
}

TEST_F(KrIniFile, SecondCloseKeepsTheFile) {
    {
        krIniFile ini;
        m_dir.write("p.ini", "[s]\na=1\n");
        ASSERT_TRUE(ini.open(path(), true));
        ini.close();
        EXPECT_FALSE(ini.sectionExist("s"));
    }
    EXPECT_EQ(m_dir.read("p.ini"), "\n[s]\na=1\n");
}

TEST_F(KrIniFile, MissingFileIsReportedForReading) {
    ConsoleCapture console;
    EXPECT_FALSE(m_ini.open(path(), false));
    EXPECT_EQ(console.text().find("-- Can't open file " + m_dir.path("p.ini") + " to read: "), 0U);
}

TEST_F(KrIniFile, MissingFileIsCreatedForWritingWithoutAWord) {
    ConsoleCapture console;
    EXPECT_TRUE(m_ini.open(path(), true));
    EXPECT_EQ(console.text(), "");
    EXPECT_TRUE(std::filesystem::exists(m_dir.path("p.ini")));
}

TEST_F(KrIniFile, FileThatCannotBeCreatedIsReported) {
    ConsoleCapture console;
    const std::string bad = m_dir.path("no/p.ini");
    EXPECT_FALSE(m_ini.open(bad.c_str(), true));
    EXPECT_EQ(console.text().find("-- Can't open file " + bad + " to write: "), 0U);
    const std::string once = console.text();
    m_ini.close();
    EXPECT_EQ(console.text(), once);
}

TEST_F(KrIniFile, DirectoryIsNoFile) {
    ConsoleCapture console;
    const std::string directory = m_dir.path("");
    EXPECT_FALSE(m_ini.open(directory.c_str(), false));
    EXPECT_EQ(console.text(), "-- Can't open file " + directory + " to read: \n");
    EXPECT_FALSE(m_ini.open(directory.c_str(), true));
    EXPECT_EQ(console.text(),
              "-- Can't open file " + directory + " to read: \n-- Can't open file " + directory + " to write: \n");
}

TEST_F(KrIniFile, ProbeForWritingDoesNotEmptyAFileThatCannotBeRead) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "root reads every file";
    }
    m_dir.write("p.ini", "[s]\na=1\n");
    chmod(m_dir.path("p.ini").c_str(), 0200);
    EXPECT_TRUE(m_ini.open(path(), true));
    chmod(m_dir.path("p.ini").c_str(), 0600);
    EXPECT_EQ(m_dir.read("p.ini"), "[s]\na=1\n");
}

TEST_F(KrIniFile, LineOfManyThousandCharactersIsOneValue) {
    const std::string value(5000, 'v');
    open("[s]\na=" + value + "\n");
    EXPECT_EQ(read("s", "a"), value);
}

TEST(KrIniLine, SectionHeadNeedsBothBrackets) {
    krString name;
    EXPECT_TRUE(krIniFile::getSection("text [ a b ] more [c]", name));
    EXPECT_STREQ(name.c_str(), "a b");
    EXPECT_FALSE(krIniFile::getSection("[a", name));
    EXPECT_FALSE(krIniFile::getSection("a]", name));
}

TEST(KrIniLine, ValueIsSplitAtTheFirstEqualsSign) {
    krString key;
    krString value;
    EXPECT_TRUE(krIniFile::getValue("a = b = c", key, value));
    EXPECT_STREQ(key.c_str(), "a");
    EXPECT_STREQ(value.c_str(), "b = c");
    EXPECT_TRUE(krIniFile::getValue("bare", key, value));
    EXPECT_STREQ(value.c_str(), "~~~");
    EXPECT_TRUE(krIniFile::getValue("=5", key, value));
    EXPECT_STREQ(key.c_str(), "");
    EXPECT_STREQ(value.c_str(), "5");
}

// Seconds of the processor that `work` takes.
template <class Work>
double processorSeconds(Work work) {
    const std::clock_t begin = std::clock();
    work();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

// A search from the start for each key would take minutes here.
TEST_F(KrIniFile, TimeGrowsWithTheKeysAndNotWithTheirSquare) {
    constexpr int count = 100000;
    std::string text = "[all]\n";
    for (int i = 0; i < count; ++i) {
        text += "a parameter of number " + std::to_string(i) + "=" + std::to_string(i) + "\n";
    }
    for (int i = 0; i < count; ++i) {
        text += "[a function of number " + std::to_string(i) + "]\n";
    }
    EXPECT_LT(processorSeconds([&] {
                  open(text, true);
                  EXPECT_EQ(read("all", "a parameter of number 99999"), "99999");
                  EXPECT_TRUE(m_ini.sectionExist("a function of number 99999"));
                  m_ini.close();
              }),
              15.0);
}

TEST_F(KrIniFile, ErasedItemsAreGoneForTheSearchAndComeBackAtTheEnd) {
    open("[a]\nx=1\ny=2\n[b]\n", true);
    m_ini.deleteKey("a", "x");
    EXPECT_FALSE(m_ini.valueExist("a", "x"));
    m_ini.write("a", "x", "3", "");
    EXPECT_EQ(read("a", "x"), "3");
    m_ini.eraseSection("a");
    EXPECT_FALSE(m_ini.sectionExist("a"));
    m_ini.write("a", "z", "4", "");
    EXPECT_EQ(rewritten(), "\n[b]\n\n[a]\nz=4\n");
    EXPECT_FALSE(m_ini.sectionExist("a"));
}

TEST_F(KrIniFile, RewriteKeepsModeAndPlace) {
    open("[s]\na=1\n", true);
    ::chmod(path().c_str(), 0640);
    rewritten();
    struct stat status = {};
    ASSERT_EQ(::stat(path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);

    std::filesystem::create_symlink("p.ini", m_dir.path("link.ini"));
    ASSERT_TRUE(m_ini.open(m_dir.path("link.ini").c_str(), true));
    m_ini.write("s", "b", "2", "");
    m_ini.close();
    EXPECT_TRUE(std::filesystem::is_symlink(m_dir.path("link.ini")));
    EXPECT_EQ(m_dir.read("p.ini"), "\n[s]\na=1\nb=2\n");

    std::filesystem::create_hard_link(m_dir.path("p.ini"), m_dir.path("second.ini"));
    ASSERT_TRUE(m_ini.open(path(), true));
    m_ini.write("s", "c", "3", "");
    m_ini.close();
    EXPECT_EQ(m_dir.read("second.ini"), "\n[s]\na=1\nb=2\nc=3\n");
}

} // namespace

TEST(KrIniFileDevice, WithoutAnEndCountsAsAnEmptyFile) {
    krIniFile ini;
    EXPECT_TRUE(ini.open("/dev/zero", false));
    EXPECT_FALSE(ini.sectionExist("Kelvar Rig"));
}

TEST(KrIniFileDevice, FullDiskAtTheRewriteIsTold) {
    ConsoleCapture console;
    krIniFile ini;
    EXPECT_TRUE(ini.open("/dev/full", true));
    ini.write("Kelvar Rig", "Method", "Auto", "");
    ini.close();
    EXPECT_EQ(console.text(), "-- File /dev/full is incomplete\n");
    EXPECT_FALSE(ini.sectionExist("Kelvar Rig"));
}
