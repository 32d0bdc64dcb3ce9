// Hostile input inside the process, in thousands of cases: nothing crashes, hangs or reads what is not there, and what
// the grammars promise holds for every input.
#include "hostile_text.h"

#include "kr.h"
#include "krcmdline.h"
#include "krexcept.h"
#include "krinifile.h"
#include "kriterator.h"
#include "krkeys.h"
#include "krlib.h"
#include "krstream.h"
#include "tempdir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace {

/// A working directory of its own for files that hostile input names.
class Hostile : public testing::Test {
protected:
    void SetUp() override {
        m_former = std::filesystem::current_path();
        std::filesystem::current_path(m_directory.path());
    }
    void TearDown() override { std::filesystem::current_path(m_former); }
    std::filesystem::path m_former;
    TempDir m_directory;
};

krStringList listOf(const std::vector<std::string>& words) {
    krStringList list;
    for (const std::string& word : words) {
        list.append(word.c_str());
    }
    return list;
}

std::string slurp(const std::string& name) {
    std::ifstream stream(name, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

void rewrite(const char* name) {
    krIniFile file;
    file.open(name, true);
    file.close();
}

// Takes `text` as the value of a parameter and walks a bounded part of its values.
template <class Parameter>
bool takes(Parameter& parm, const std::string& text) {
    try {
        parm.translate(text.c_str());
    } catch (const krException& fault) {
        EXPECT_NE('\0', fault.msg()[0]);
        EXPECT_LT(strlen(fault.msg()), 256U);
        return false;
    }
    const krString told = parm.description() + parm.defaultString() + parm.prompt();
    EXPECT_GE(told.length(), 0);
    bool more = parm.firstValue();
    for (int i = 0; more && i < 300; ++i) {
        EXPECT_FALSE(parm.valueString().c_str() == nullptr);
        more = parm.nextValue();
    }
    return true;
}

} // namespace

TEST_F(Hostile, EveryWordListGivesNoMoreKeysThanKeyWords) {
    HostileText hostile(1);
    for (int i = 0; i < 1500; ++i) {
        std::vector<std::string> words;
        int keyWords = 0;
        for (int n = hostile.number(9); n > 0; --n) {
            words.push_back(hostile.key());
            keyWords += isKeyString(words.back().c_str()) ? 1 : 0;
        }
        krCommandList keys;
        keys.setArgs(listOf(words));
        EXPECT_EQ(keyWords, keys.size());
        for (const krCommandKey& key : keys) {
            EXPECT_TRUE(keys.isKey(key.key));
        }
    }
}

TEST_F(Hostile, EveryLineOfKeysIsSplitTheSameWayTwice) {
    HostileText hostile(2);
    for (int i = 0; i < 1000; ++i) {
        const std::string line = hostile.text(12);
        krCommandList first;
        first.setArgs(line.c_str());
        krCommandList second;
        second.setArgs(line.c_str());
        EXPECT_EQ(first.size(), second.size());
    }
}

TEST_F(Hostile, EveryCommandLineIsEchoedKeyByKey) {
    HostileText hostile(3);
    setVekEnvironment();
    for (int i = 0; i < 700; ++i) {
        std::vector<std::string> words = {m_directory.path("rig")};
        for (int n = 1 + hostile.number(7); n > 0; --n) {
            words.push_back(hostile.tameKey());
        }
        std::vector<char*> args;
        for (std::string& word : words) {
            args.push_back(word.data());
        }
        krCommandList keys;
        keys.setArgs(static_cast<int>(args.size()), args.data());
        krSession session;
        session.initSession();
        g_ostrm.addStream(m_directory.path("echo").c_str(), false);
        session.parseCommandLine(static_cast<int>(args.size()), args.data());
        session.hint(s_hintArg, s_hintHide);
        g_ostrm.close();
        for (krCStream* table : {&g_cstrm, &g_qstrm, &g_ustrm}) {
            table->close();
        }
        g_istrm.deleteIniFile();
        g_istrm.dataList().clear();
        const std::string echo = slurp("echo");
        EXPECT_NE(std::string::npos, echo.find("Command line options: \n"));
        for (const krCommandKey& key : keys) {
            const std::string start = std::string("-") + key.key + key.arg.c_str() + ": ";
            EXPECT_NE(std::string::npos, echo.find(start)) << start;
        }
    }
    s_hintArg = 0;
    s_version = false;
    krTest::m_hot = 0;
    krTest::m_cache = false;
    krTest::m_pressing = false;
    krTool::m_priority = 0;
    g_tool.m_setUse = false;
    krTestList::m_startFunc = "";
}

TEST_F(Hostile, EveryIniFileIsReadAndASecondRewriteChangesNothing) {
    HostileText hostile(4);
    for (int i = 0; i < 800; ++i) {
        std::string text;
        for (int n = hostile.number(30); n > 0; --n) {
            text += hostile.text(4) + "\n";
        }
        if (hostile.number(4) == 0) {
            text += '\0' + text;
        }
        std::ofstream("x.ini", std::ios::binary) << text;
        {
            krIniFile file;
            EXPECT_TRUE(file.open("x.ini", false));
            EXPECT_TRUE(file.read("frGood", "Size", "none").length() >= 0);
            file.eraseSection("frGood");
            EXPECT_FALSE(file.sectionExist("frGood"));
            file.deleteKey("Kelvar Rig", "Method");
            EXPECT_FALSE(file.valueExist("Kelvar Rig", "Method"));
        }
        EXPECT_EQ(text, slurp("x.ini"));
        rewrite("x.ini");
        const std::string once = slurp("x.ini");
        rewrite("x.ini");
        EXPECT_EQ(once, slurp("x.ini"));
    }
}

TEST_F(Hostile, EveryTextSplitsIntoWordsThatAreNotLongerThanIt) {
    HostileText hostile(5);
    for (int i = 0; i < 1500; ++i) {
        const std::string text = hostile.text(8);
        const std::string separators = hostile.text(2);
        krStringList words;
        const int count = krString(text.c_str()).parse(words, separators.c_str());
        EXPECT_EQ(count, words.size());
        size_t sum = 0;
        for (const krString& word : words) {
            sum += static_cast<size_t>(word.length());
        }
        EXPECT_LE(sum, strlen(text.c_str()));
        krDataList data;
        data.set(text.c_str());
        EXPECT_LE(data.size(), 1);
    }
}

TEST_F(Hostile, EveryAnswerIsTakenOrRefusedWithAMessage) {
    HostileText hostile(6);
    int taken = 0;
    int asked = 0;
    for (int i = 0; i < 1500; ++i) {
        const std::string text = hostile.text(3);
        krIterator<int> list("List");
        krStepIterator<int> step("Step");
        krStepIterator<short> shorts("Shorts");
        krStepIterator<unsigned> unsigneds("Unsigneds");
        krDefault<int> number(3, "Number");
        krMapDefault<int> map(1, "Map");
        map[1] = "Auto";
        map[2] = "Manual";
        DefaultAlign align(0, "Align");
        DefaultShift shift(512, "Shift");
        for (const bool one : {takes(list, text), takes(step, text), takes(shorts, text), takes(unsigneds, text),
                               takes(number, text), takes(map, text), takes(align, text), takes(shift, text)}) {
            taken += one ? 1 : 0;
            ++asked;
        }
        EXPECT_TRUE(align.value() > -64 && align.value() < 64);
        EXPECT_EQ(0, shift.value() % 64);
    }
    EXPECT_GT(taken, 0);
    EXPECT_LT(taken, asked);
}

TEST_F(Hostile, EveryRefusedAnswerKeepsTheFormerValues) {
    HostileText hostile(7);
    int refused = 0;
    for (int i = 0; i < 500; ++i) {
        krStepIterator<int> step("Step");
        step.set(40, 80, 10, '+');
        krIterator<int> list("List");
        list.setList({1, 2, 5});
        const std::string text = hostile.text(3);
        if (!takes(list, text)) {
            ++refused;
            EXPECT_STREQ("1; 2; 5", list.defaultString().c_str());
        }
        takes(step, text);
    }
    EXPECT_GT(refused, 50);
}

TEST_F(Hostile, EveryWordOfTheKeyFunctionsGivesBitsInRange) {
    HostileText hostile(8);
    for (int i = 0; i < 500; ++i) {
        const std::string text = hostile.text(3);
        EXPECT_TRUE(getAskLevel(text.c_str()) >= 1 && getAskLevel(text.c_str()) <= 15);
        EXPECT_TRUE(getLevel(text.c_str()) >= 0 && getLevel(text.c_str()) <= 127);
        EXPECT_TRUE(getPriority(text.c_str()) >= 0 && getPriority(text.c_str()) <= 3);
        EXPECT_GE(krCpuType::cpuType(text.c_str()), -1);
    }
}
