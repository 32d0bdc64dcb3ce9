// Parameters: values in text, the asking, the table cells, and faults while a parameter is read.
#include "krdefault.h"
#include "krexcept.h"
#include "krstream.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

#include <csetjmp>
#include <csignal>
#include <cstring>

namespace {

std::string infoOf(krParameter& parm, const char* text) {
    try {
        parm.translate(text);
    } catch (const krException& fault) {
        return fault.info();
    }
    return "no exception";
}

std::string cellOf(krCStream& table, int index) {
    krString text;
    table.getColm(index, text);
    return text.c_str();
}

class FaultyParameter : public krDefault<int> {
public:
    using krDefault<int>::krDefault;
    void translate(const krString& /*text*/) override { std::raise(SIGFPE); }
};

class ColumnParameter : public krDefault<int> {
public:
    using krDefault<int>::krDefault;
    int colmIndex() const override { return 4; }
};

} // namespace

TEST(KrParameter, PromptIsTheNameUnlessGiven) {
    EXPECT_STREQ(krDefault<int>(1, "name", "").prompt().c_str(), "name");
    EXPECT_STREQ(krDefault<int>(1, "name", "the question").prompt().c_str(), "the question");
}

TEST(KrParameter, PlainParameterHasOneValue) {
    krDefault<int> parm(5, "x", "");
    EXPECT_TRUE(parm.firstValue());
    EXPECT_FALSE(parm.nextValue());
    EXPECT_TRUE(parm.firstValue());
    EXPECT_EQ(parm.value(), 5);
}

TEST(KrParameter, ResetZeroesTheValue) {
    krDefault<int> parm(5, "x", "");
    parm.firstValue();
    parm.reset();
    EXPECT_EQ(parm.value(), 0);
    EXPECT_FALSE(parm.hasValue());
}

TEST(KrParameter, DescriptionIsNameAndDefault) {
    EXPECT_STREQ(krDefault<int>(5, "x", "q").description().c_str(), "x = 5");
}

TEST(KrParameter, TextWithoutNumberInFrontRaises) {
    krDefault<int> parm(5, "x", "");
    EXPECT_EQ(infoOf(parm, "abc"), "Invalid value of x = abc");
    EXPECT_EQ(parm.value(), 5);
}

TEST(KrParameter, BlankTextRaises) {
    krDefault<int> parm(5, "x", "");
    for (const char* blank : {"", " ", "\r", " \t "}) {
        EXPECT_EQ(infoOf(parm, blank), std::string("Invalid value of x = ") + blank);
        EXPECT_EQ(parm.value(), 5);
    }
}

TEST(KrParameter, CarriageReturnIsSeenByTheConversion) {
    krMapDefault<int> method(1, "Method", "");
    method[1] = "Auto";
    method[2] = "Manual";
    EXPECT_EQ(infoOf(method, "Manual\r"), "Invalid value of Method = Manual\r");
    EXPECT_EQ(method.value(), 1);
    krDefault<int> loops(5, "NumLoops", "");
    EXPECT_EQ(infoOf(loops, "4\r"), "no exception");
    EXPECT_EQ(loops.value(), 4);
}

TEST(KrParameter, TextWithNumberInFrontIsTheNumber) {
    krDefault<int> parm(5, "x", "");
    EXPECT_EQ(infoOf(parm, "12abc"), "no exception");
    EXPECT_EQ(parm.value(), 12);
}

TEST(KrParameter, ToOStreamIsSilentWithoutAName) {
    ConsoleCapture console;
    krDefault<int>(5, "x", "").toOStream(g_ostrm);
    krDefault<int>(6, "", "").toOStream(g_ostrm);
    EXPECT_EQ(console.text(), "x=5 ");
}

TEST(KrParameter, CellIsNextColumnOrTheFixedOne) {
    krCStream table;
    krDefault<int>(5, "x", "").toCStream(table);
    ColumnParameter(6, "y", "").toCStream(table);
    EXPECT_EQ(table.colmCount(), 1);
    EXPECT_EQ(cellOf(table, 0), "5");
    EXPECT_EQ(cellOf(table, 4), "6");
    table.tableFlush();
    krDefault<int>(5, "x", "").nameToCStream(table);
    ColumnParameter(6, "y", "").nameToCStream(table);
    EXPECT_EQ(cellOf(table, 0), "x");
    EXPECT_EQ(cellOf(table, 4), "y");
}

TEST(KrParameter, EmptyNameLeavesAnEmptyColumnAndOneValue) {
    krCStream table;
    krDefault<int> parm(5, "", "");
    parm.toCStream(table);
    EXPECT_EQ(table.colmCount(), 1);
    EXPECT_EQ(cellOf(table, 0), "");
    EXPECT_TRUE(parm.firstValue());
    EXPECT_FALSE(parm.nextValue());
}

TEST(KrParameter, ColumnFlagPutsTheCellInQuotes) {
    krCStream table;
    krDefault<int> parm(5, "x", "");
    parm.setColumnFlags(1);
    parm.toCStream(table);
    EXPECT_EQ(cellOf(table, 0), " \"5\"");
}

TEST(KrParameter, DeprecatedValueShowsItsOldText) {
    krCStream table;
    krDefault<int> parm(5, "x", "");
    EXPECT_FALSE(parm.isDeprecatedParm());
    EXPECT_FALSE(parm.setDeprecatedFlag(true));
    parm.addDeprecated(4, "four");
    parm.addDeprecated(5, "five");
    EXPECT_TRUE(parm.isDeprecatedParm());
    EXPECT_TRUE(parm.setDeprecatedFlag(true));
    EXPECT_TRUE(parm.isDeprecatedValue());
    parm.toCStream(table);
    EXPECT_EQ(cellOf(table, 0), "five");
    EXPECT_FALSE(parm.setDeprecatedFlag(false));
    parm.toCStream(table);
    EXPECT_EQ(cellOf(table, 1), "5");
    parm.setValue(6);
    EXPECT_FALSE(parm.setDeprecatedFlag(true));
}

TEST(KrMapDefault, AnyBeginningOfAWordInAnyCaseFirstWins) {
    krMapDefault<int> parm(0, "Method", "");
    parm[0] = "Auto";
    parm[3] = "Automatic";
    parm[1] = "Manual";
    parm.translate("MAN");
    EXPECT_EQ(parm.value(), 1);
    parm.translate("auto");
    EXPECT_EQ(parm.value(), 0);
    parm.translate("autom");
    EXPECT_EQ(parm.value(), 3);
    EXPECT_EQ(infoOf(parm, "uto"), "Invalid value of Method = uto");
    EXPECT_EQ(parm.value(), 3);
}

TEST(KrMapDefault, WordsStandInThePrompt) {
    krMapDefault<bool> parm(true, "AlignVectorsBy", "");
    parm[true] = "byte";
    parm[false] = "element";
    EXPECT_STREQ(parm.validString().c_str(), "byte|element");
    EXPECT_STREQ(parm.prompt().c_str(), "AlignVectorsBy {byte|element}");
    EXPECT_STREQ(parm.valueString().c_str(), "byte");
    parm.translate("e");
    EXPECT_FALSE(parm.value());
}

TEST(KrMapDefault, EmptyFirstWordKeepsItsPlaceInThePrompt) {
    krMapDefault<int> parm(1, "x", "");
    parm[0] = "";
    parm[1] = "b";
    EXPECT_STREQ(parm.validString().c_str(), "|b");
}

TEST(KrMapDefault, ValueWithoutAWordIsBlank) {
    krMapDefault<int> parm(9, "m", "");
    parm[1] = "one";
    EXPECT_STREQ(parm.valueString().c_str(), "");
}

TEST(KrMapDefault, WordCanBeAssignedAnew) {
    krMapDefault<int> parm(1, "m", "");
    parm[1] = "one";
    parm[1] = "uno";
    EXPECT_STREQ(parm.validString().c_str(), "uno");
}

TEST(DefaultAlign, KeepsTheRemainderBy64) {
    DefaultAlign parm(0, "VectorAlign", "");
    parm.translate("70");
    EXPECT_EQ(parm.value(), 6);
    parm.translate("-70");
    EXPECT_EQ(parm.value(), -6);
    EXPECT_EQ(infoOf(parm, "x"), "Invalid value of VectorAlign = x");
}

TEST(DefaultShift, ClearsTheLowSixBits) {
    DefaultShift parm(0, "MutualVectorShift", "");
    parm.translate("700");
    EXPECT_EQ(parm.value(), 640);
    parm.translate("63");
    EXPECT_EQ(parm.value(), 0);
    EXPECT_EQ(infoOf(parm, "x"), "Invalid value of MutualVectorShift = x");
}

TEST(KrFromIStream, DefaultIsTakenWithoutAConsole) {
    ConsoleCapture console;
    krIStream stream;
    krDefault<int> parm(5, "x", "");
    parm.fromIStream(stream);
    EXPECT_EQ(parm.value(), 5);
    EXPECT_EQ(console.text(), " x = 5\n");
}

// A parameter of 5, and a person who types.
struct Question {
    explicit Question(const char* typed, const char* name = "x", OutputLevel level = ERR | WARN | PERF)
        : console(level), answers(typed), parm(5, name, "") {
        stream.setIStream(&c_in);
    }

    ConsoleCapture console;
    krIStream stream;
    TypedAnswers answers;
    krDefault<int> parm;
};

TEST(KrFromIStream, SilentParameterIsNotAsked) {
    Question question("7\n", "");
    question.parm.fromIStream(question.stream);
    EXPECT_EQ(question.parm.value(), 5);
    EXPECT_EQ(question.console.text(), "");
}

TEST(KrFromIStream, DisabledParameterIsToldButNotAsked) {
    Question question("7\n");
    question.parm.setEnabled(false);
    question.parm.fromIStream(question.stream);
    EXPECT_EQ(question.parm.value(), 5);
    EXPECT_EQ(question.console.text(), " x = 5\n");
}

TEST(KrFromIStream, DialogueShowsAtTheErrorLevelAndTheLevelComesBack) {
    Question question("7\n", "x", ERR);
    question.parm.fromIStream(question.stream);
    EXPECT_EQ(question.answers.prompts(), "\n x [5] = ");
    EXPECT_EQ(question.parm.value(), 7);
    EXPECT_EQ(question.console.text(), " x = 7\n");
    EXPECT_EQ(g_ostrm.outLevel(), ERR);
}

TEST(KrFromIStream, BadAnswerIsToldAndTheValueStays) {
    Question question("abc\n9\n");
    question.parm.fromIStream(question.stream);
    EXPECT_EQ(question.answers.prompts(), "\n x [5] = ");
    EXPECT_EQ(question.parm.value(), 5);
    EXPECT_EQ(question.console.text(), "-Invalid value of x = abc\n x = 5\n");
}

TEST(KrFromIStream, FaultsAreToldAsOftenAsTheyCome) {
    ConsoleCapture console;
    krIStream stream;
    FaultyParameter parm(5, "x", "");
    parm.fromIStream(stream);
    parm.fromIStream(stream);
    const std::string once =
        "---VEK. Signal: FP error, such as overflow, division by zero, invalid operation.\n x = 5\n";
    EXPECT_EQ(console.text(), once + once);
}

TEST(KrFromIStream, MarkOfTheTestOutlivesTheReading) {
    ConsoleCapture console;
    krIStream stream;
    krDefault<int> good(5, "good", "");
    krDefault<int> bad(5, "bad", "");
    FaultyParameter faulty(5, "faulty", "");
    TypedAnswers answers("\nabc\n\n");
    stream.setIStream(&c_in);
    volatile int jumps = 0;
    const krFaultMark outer;
    if (setjmp(tsSignal::m_jmpbuf) == 0) {
        jmp_buf mark;
        std::memcpy(&mark, &tsSignal::m_jmpbuf, sizeof mark);
        for (krParameter* parm :
             {static_cast<krParameter*>(&good), static_cast<krParameter*>(&bad), static_cast<krParameter*>(&faulty)}) {
            parm->fromIStream(stream);
            // All of it, padding too: nobody may write there. NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
            EXPECT_EQ(std::memcmp(&mark, &tsSignal::m_jmpbuf, sizeof mark), 0);
        }
        std::raise(SIGSEGV);
    } else {
        tsSignal::contain();
        jumps = jumps + 1;
    }
    EXPECT_EQ(jumps, 1);
    EXPECT_EQ(tsSignal::code(), SIGSEGV);
}
