// Answers: the order of sources, the console's question, the way back into the ini-file.
#include "kr.h"
#include "streamcapture.h"
#include "tempdir.h"

#include <gtest/gtest.h>

namespace {

// Text typed at the console, which answers take while it is there.
class ConsoleAnswers : public TypedAnswers {
public:
    ConsoleAnswers(krIStream& answers, const std::string& typed) : TypedAnswers(typed), m_answers(answers) {
        m_answers.setIStream(&c_in);
    }
    ~ConsoleAnswers() { m_answers.setIStream(nullptr); }

private:
    krIStream& m_answers;
};

class KrIStream : public ::testing::Test {
protected:
    std::string value(const char* item, const char* defaultValue = "dflt", const char* prompt = "",
                      const char* comment = "") {
        return m_answers.getItemValue(item, defaultValue, prompt, comment).c_str();
    }
    void openIni(const std::string& text, bool write = false) {
        m_dir.write("p.ini", text);
        ASSERT_TRUE(m_answers.setIniFile(m_dir.path("p.ini").c_str(), write));
    }
    TempDir m_dir;
    krIStream m_answers;
};

TEST_F(KrIStream, SourceIsUnknownBeforeTheFirstQuestion) {
    EXPECT_EQ(m_answers.source(), 4);
    EXPECT_FALSE(m_answers.interactive());
    EXPECT_FALSE(m_answers.iniWrite());
    EXPECT_EQ(m_answers.iniFile(), nullptr);
}

TEST_F(KrIStream, DefaultStandsWithoutAnySource) {
    EXPECT_EQ(value("Len", "256"), "256");
    EXPECT_EQ(m_answers.source(), 0);
}

TEST_F(KrIStream, EmptyIniValueGivesTheDefault) {
    openIni("[Kelvar Rig]\nLen=\n");
    EXPECT_EQ(value("Len", "256"), "256");
    EXPECT_EQ(m_answers.source(), 0);
}

TEST_F(KrIStream, BareNameOfAnIniFileGoesThroughTheInputDirectory) {
    const krString in = krSession::m_inDir;
    krSession::m_inDir = m_dir.path("").c_str();
    m_dir.write("p.ini", "[Kelvar Rig]\nLen=512\n");
    EXPECT_TRUE(m_answers.setIniFile("p.ini", false));
    krSession::m_inDir = in;
    EXPECT_EQ(value("Len", "256"), "512");
}

TEST_F(KrIStream, IniFileBeatsTheConsole) {
    ConsoleAnswers typed(m_answers, "typed\n");
    openIni("[Kelvar Rig]\nLen=512\n");
    EXPECT_EQ(value("Len"), "512");
    EXPECT_EQ(m_answers.source(), 2);
    EXPECT_EQ(typed.prompts(), "");
}

TEST_F(KrIStream, ForcedValueBeatsTheIniFile) {
    openIni("[Kelvar Rig]\nLen=512\n");
    m_answers.dataList().set("Len=64");
    EXPECT_EQ(value("Len"), "64");
    EXPECT_EQ(m_answers.source(), 3);
}

TEST_F(KrIStream, ForcedEmptyValueIsAValue) {
    m_answers.dataList().set("Len", "");
    EXPECT_EQ(value("Len", "256"), "");
    EXPECT_EQ(m_answers.source(), 3);
}

TEST_F(KrIStream, ConsoleIsAskedWithPromptAndDefault) {
    ConsoleAnswers typed(m_answers, "manual\n");
    EXPECT_TRUE(m_answers.interactive());
    EXPECT_EQ(value("Method", "Auto", "Method {Auto|Manual}"), "manual");
    EXPECT_EQ(m_answers.source(), 1);
    EXPECT_EQ(typed.prompts(), "\n Method {Auto|Manual} [Auto] = ");
}

TEST_F(KrIStream, ItemIsThePromptWhereNoneIsGiven) {
    ConsoleAnswers typed(m_answers, "7\n");
    EXPECT_EQ(value("NumLoops", "10"), "7");
    EXPECT_EQ(typed.prompts(), "\n NumLoops [10] = ");
}

TEST_F(KrIStream, EmptyAnswerIsTheDefaultAndItsSourceTheDefault) {
    ConsoleAnswers typed(m_answers, "\n");
    EXPECT_EQ(value("NumLoops", "10"), "10");
    EXPECT_EQ(m_answers.source(), 0);
}

TEST_F(KrIStream, EndOfInputGivesDefaultsFromThereOn) {
    ConsoleAnswers typed(m_answers, "1\n");
    EXPECT_EQ(value("a", "A"), "1");
    EXPECT_EQ(value("b", "B"), "B");
    EXPECT_EQ(value("c", "C"), "C");
    EXPECT_EQ(m_answers.source(), 0);
}

TEST_F(KrIStream, EveryLookUpIsWrittenBackWhateverItsSource) {
    openIni("[Kelvar Rig]\nLen=512\n", true);
    EXPECT_TRUE(m_answers.iniWrite());
    m_answers.dataList().set("Order=10");
    EXPECT_EQ(value("Len", "256", "", "1..512"), "512");
    EXPECT_EQ(value("Order", "8", "", "8|10"), "10");
    EXPECT_EQ(value("Mode", "fast", "", "fast|slow"), "fast");
    m_answers.deleteIniFile();
    EXPECT_EQ(m_dir.read("p.ini"), "\n[Kelvar Rig]\nLen=512\nOrder=10\t// 8|10\nMode=fast\t// fast|slow\n");
}

TEST_F(KrIStream, ForcedValueReplacesTheOneInAWrittenFile) {
    openIni("[Kelvar Rig]\nLen=512\n", true);
    m_answers.dataList().set("Len=64");
    EXPECT_EQ(value("Len"), "64");
    m_answers.deleteIniFile();
    EXPECT_EQ(m_dir.read("p.ini"), "\n[Kelvar Rig]\nLen=64\n");
}

TEST_F(KrIStream, ReadOnlyFileIsNotTouched) {
    openIni("[Kelvar Rig]\n// by hand\nLen=512\n");
    EXPECT_EQ(value("Other", "x"), "x");
    m_answers.deleteIniFile();
    EXPECT_EQ(m_dir.read("p.ini"), "[Kelvar Rig]\n// by hand\nLen=512\n");
}

TEST_F(KrIStream, SectionChangesAndTheFormerOneComesBack) {
    openIni("[Kelvar Rig]\nLen=1\n[veksFoo]\nLen=2\n");
    const krString former = m_answers.setIniSection("veksFoo");
    EXPECT_STREQ(former.c_str(), "Kelvar Rig");
    EXPECT_EQ(value("Len"), "2");
    EXPECT_STREQ(m_answers.setIniSection(former).c_str(), "veksFoo");
    EXPECT_EQ(value("Len"), "1");
}

TEST_F(KrIStream, MissingFileStaysInPlaceWithoutSections) {
    ConsoleCapture console;
    EXPECT_FALSE(m_answers.setIniFile(m_dir.path("none.ini").c_str(), false));
    ASSERT_NE(m_answers.iniFile(), nullptr);
    EXPECT_FALSE(m_answers.iniFile()->sectionExist("Kelvar Rig"));
    EXPECT_EQ(value("Len", "256"), "256");
}

TEST_F(KrIStream, EndOfTheStreamObjectWritesTheFile) {
    {
        krIStream answers;
        ASSERT_TRUE(answers.setIniFile(m_dir.path("new.ini").c_str(), true));
        answers.getItemValue("Len", "256", "", "");
        EXPECT_EQ(m_dir.read("new.ini"), "");
    }
    EXPECT_EQ(m_dir.read("new.ini"), "\n[Kelvar Rig]\nLen=256\n");
}

TEST_F(KrIStream, ExitOfTheProcessWritesTheFile) {
    const auto run = [this] {
        g_istrm.setIniFile(m_dir.path("exit.ini").c_str(), true);
        g_istrm.getItemValue("Len", "256", "", "1..512");
        std::exit(0);
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
    EXPECT_EQ(m_dir.read("exit.ini"), "\n[Kelvar Rig]\nLen=256\t// 1..512\n");
}

TEST_F(KrIStream, FileThatIsGoneAtExitIsReportedAndNoHarm) {
    const auto run = [] {
        const TempDir other;
        g_istrm.setIniFile(other.path("exit.ini").c_str(), true);
        std::filesystem::remove_all(other.path(""));
        dup2(STDERR_FILENO, STDOUT_FILENO);
        g_ostrm.setOutLevel(ERR);
        g_ostrm.insert(g_ostrm.end(), &c_out);
        std::exit(0);
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "-- Can't open file .*exit.ini to write");
}

TEST_F(KrIStream, OwnStreamIsReadAndReleased) {
    m_dir.write("answers.txt", "one\n");
    TypedAnswers typed("");
    m_answers.setIStream(new i_stream(m_dir.path("answers.txt").c_str(), ioRead | ioRawName, true));
    EXPECT_EQ(value("a"), "one");
    m_answers.setIStream(nullptr);
    EXPECT_FALSE(m_answers.interactive());
}

} // namespace
