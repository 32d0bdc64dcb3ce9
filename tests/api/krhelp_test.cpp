// The help: its rows, its levels, and that of a single key.
#include "key_texts.h"
#include "optionsession.h"

namespace {

// The texts of the rows that a session has, in order.
std::vector<KeyTexts> rows(bool library) {
    std::vector<KeyTexts> found;
    for (const KeyTexts& row : keyTexts) {
        if (library || (row.key != 'T' && row.key != 'N')) {
            found.push_back(row);
        }
    }
    return found;
}

std::string descrOf(const KeyTexts& row) {
    std::string descr = row.descr;
    const size_t tab = descr.find('\t');
    if (tab != std::string::npos) {
        descr.replace(tab, 1, krCpuType::optimizedList().c_str());
    }
    return descr;
}

std::string quickHelp(bool hide, bool library) {
    std::string text = hide ? "QUICK HELP\n" : "QUICK HELP with hidden keys\n";
    for (const KeyTexts& row : rows(library)) {
        text += hide && row.hidden ? "" : row.help;
    }
    return text;
}

std::string fullHelp(bool hide, bool library) {
    std::string text = hide ? "EXTENDED HELP\n" : "EXTENDED HELP with hidden keys\n";
    for (const KeyTexts& row : rows(library)) {
        if (*row.help != '\0' && !(hide && row.hidden)) {
            text += std::string("\n") + row.help;
            text += row.hidden ? "This is hidden key used by developers only\n" : "";
            text += descrOf(row);
        }
    }
    return text;
}

class KrHelp : public KrOptions {
protected:
    std::string hint(const char* key) {
        parse({key});
        ConsoleCapture console;
        session.hint(s_hintArg, s_hintHide);
        return console.text();
    }
};

TEST_F(KrHelp, RowsStandInTheOrderOfTheHelp) {
    bindLibrary();
    std::string keys;
    for (const krOption* option : session.m_options) {
        keys += option->key;
        EXPECT_EQ(option->hidden, option->key == 'S' || option->key == 'C') << option->key;
    }
    EXPECT_EQ(keys, "BAdiIPoOLrRqQuUgnplftFYHTNSCsevh?");
}

TEST_F(KrHelp, QuickHelpIsTheHelpOfEveryRow) {
    EXPECT_EQ(hint("-h"), quickHelp(true, false));
    EXPECT_EQ(hint("-?"), quickHelp(false, false));
    bindLibrary();
    EXPECT_EQ(hint("-h"), quickHelp(true, true));
}

TEST_F(KrHelp, ExtendedHelpAddsTheDescriptions) {
    EXPECT_EQ(hint("-hh"), fullHelp(true, false));
    EXPECT_EQ(hint("-?\?"), fullHelp(false, false));
    bindLibrary();
    EXPECT_EQ(hint("-hh"), fullHelp(true, true));
    EXPECT_NE(fullHelp(true, true).find(": optimized for "), std::string::npos);
}

TEST_F(KrHelp, KeyHelpIsThatOfOneRow) {
    bindLibrary();
    parse({});
    for (const KeyTexts& row : keyTexts) {
        if (row.key == '?') {
            continue;
        }
        ConsoleCapture console;
        session.hint_descr(row.key);
        const std::string descr = descrOf(row);
        EXPECT_EQ(console.text(), std::string("EXTENDED KEY HELP\n") + row.help +
                                      (descr.empty() ? "No detailed description for this key\n" : descr));
    }
}

TEST_F(KrHelp, KeyHelpIsAskedWithEitherLetter) {
    const std::string expected = std::string("EXTENDED KEY HELP\n") + keyTexts[0].help + keyTexts[0].descr;
    EXPECT_EQ(hint("-hB"), expected);
    EXPECT_EQ(hint("-?B"), expected);
    EXPECT_EQ(hint("-he"), "EXTENDED KEY HELP\n-e               = enumerate tests and exit\n"
                           "No detailed description for this key\n");
    EXPECT_EQ(hint("-?h"), "EXTENDED KEY HELP\n"
                           "-h               = type short help and exit\n"
                           "-hh              = type extended help and exit\n"
                           "-h<key>          = type extended help for the key and exit\n"
                           "If several -h present in command line then only the last key is valid\n");
}

TEST_F(KrHelp, QuestionMarkIsToldToBeDeprecated) {
    EXPECT_EQ(hint("-h?"), "EXTENDED KEY HELP\nKey -? is deprecated\n"
                           "-?               = type short help with hidden keys and exit\n"
                           "-?\?              = type extended help with hidden keys and exit\n"
                           "-?<key>          = type extended help for the key and exit\n"
                           "If several -? keys present in command line then only the last key is valid\n");
}

TEST_F(KrHelp, UnknownKeyIsNotValid) {
    EXPECT_EQ(hint("-hx"), "EXTENDED KEY HELP\nKey -x is not valid\n");
    EXPECT_EQ(hint("-hT"), "EXTENDED KEY HELP\nKey -T is not valid\n");
}

TEST_F(KrHelp, LastHelpKeyWins) {
    parse({"-hh", "-?", "-hL"});
    EXPECT_EQ(s_hintArg, 'L');
    EXPECT_TRUE(s_hintHide);
    parse({"-h", "-?"});
    EXPECT_EQ(s_hintArg, 1);
    EXPECT_FALSE(s_hintHide);
}

TEST_F(KrHelp, NameKeysCanBeLeftOut) {
    qKeys = false;
    krSession other;
    other.initSession();
    EXPECT_EQ(other.getOption('q'), nullptr);
    EXPECT_EQ(other.getOption('Q'), nullptr);
    EXPECT_EQ(krRegQKeys(), 1);
    EXPECT_TRUE(qKeys);
}

TEST_F(KrHelp, ProcessorListIsAppendedWhereNoTabMarksItsPlace) {
    bindLibrary();
    session.getOption('T')->descr = "text\n";
    session.updateOptions();
    EXPECT_EQ(session.getOption('T')->descr.c_str(), std::string("text\n") + krCpuType::optimizedList().c_str());
}

} // namespace
