#include "rigkeytable.h"

#include "kr.h"
#include "krinifile.h"
#include "krstream.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <set>
#include <stdexcept>

namespace pages {

namespace {

Texts listOf(const std::set<std::string>& names) {
    return Texts(names.begin(), names.end());
}

std::vector<KeyForm> formsOf(const std::string& help) {
    std::vector<KeyForm> forms;
    for (const std::string& line : linesOf(help)) {
        const size_t sign = line.find("= ");
        KeyForm form{line.substr(0, sign), sign == std::string::npos ? "" : line.substr(sign + 2)};
        form.synopsis.erase(form.synopsis.find_last_not_of(' ') + 1);
        forms.push_back(form);
    }
    return forms;
}

RigKey keyOf(const krOption& option) {
    RigKey key;
    key.letter = option.key;
    key.hidden = option.hidden;
    key.forms = formsOf(option.help.c_str());
    key.description = option.descr.c_str();
    // The key that the help does not advertise is explained by its own description alone.
    if (key.forms.empty()) {
        key.forms = {{std::string("-") + option.key, ""}};
    }
    readArgument(key);
    return key;
}

// A session that keeps what the key table and the list of tests hold when both are complete.
class TableSession : public krSession {
public:
    bool startSession() override {
        for (const krOption* option : m_options) {
            m_tables.keys.push_back(keyOf(*option));
        }
        std::set<std::string> functions;
        std::set<std::string> tests;
        for (const krTest* test : *pTestList) {
            functions.insert(test->m_name.c_str());
            tests.insert(test->m_info.m_class.c_str());
        }
        m_tables.functions = listOf(functions);
        m_tables.tests = listOf(tests);
        for (int i = 0; i < krCpuType::count(); ++i) {
            int code = 0;
            krString label;
            krString name;
            krCpuType::row(i, code, label, name);
            m_tables.processors.emplace_back(label.c_str());
        }
        return true;
    }

    RigTables m_tables;
};

// The names in a section of the ini-file that the run is about to write.
void takeNames(const krString& section, std::set<std::string>& names) {
    const krValues* values = g_istrm.iniFile()->getSectionValues(section);
    if (values == nullptr) {
        return;
    }
    for (const krValueItem* value : *values) {
        names.insert(value->key.c_str());
    }
}

} // namespace

void readArgument(RigKey& key) {
    static const std::vector<std::pair<const char*, Argument>> kinds = {
        {"<file-name>", Argument::file},     {"<dir-name>", Argument::directory},
        {"<name>=", Argument::parameter},    {"or-pattern>", Argument::function},
        {"<func-name>", Argument::function}, {"<patrn>", Argument::test},
        {"<cpu-name>", Argument::processor}, {"<key>", Argument::key},
    };
    for (const KeyForm& form : key.forms) {
        for (const auto& [sign, argument] : kinds) {
            if (form.synopsis.find(sign) != std::string::npos) {
                key.argument = argument;
                return;
            }
        }
    }
    // <one|two>, [one|two]
    const std::string& synopsis = key.forms[0].synopsis;
    for (size_t from = synopsis.find_first_of("<["); from != std::string::npos;
         from = synopsis.find_first_of("<[", from + 1)) {
        size_t to = from + 1;
        while (to < synopsis.size() &&
               (std::isalpha(static_cast<unsigned char>(synopsis[to])) || synopsis[to] == '|')) {
            ++to;
        }
        if (to > from + 1 && to < synopsis.size() && (synopsis[to] == '>' || synopsis[to] == ']')) {
            key.argument = Argument::words;
            key.words = split(synopsis.substr(from + 1, to - from - 1), '|');
            return;
        }
    }
}

RigTables readRigTables(char* program, const std::string& iniFile) {
    // What stands in an ini-file already is kept, so that none may be there.
    std::filesystem::remove(iniFile);
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        throw std::runtime_error("/dev/null: can't be opened");
    }
    std::string write = "-I" + std::filesystem::absolute(iniFile).string();
    std::string words[] = {"-B", "-LERR", write};
    char* arguments[] = {program, words[0].data(), words[1].data(), words[2].data()};
    TableSession session;
    pSession = &session;
    session.run(4, arguments);
    RigTables tables = session.m_tables;
    std::set<std::string> names;
    takeNames("Kelvar Rig", names);
    tables.common = listOf(names);
    for (const std::string& function : tables.functions) {
        takeNames(function.c_str(), names);
    }
    tables.parameters = listOf(names);
    g_istrm.deleteIniFile();
    std::filesystem::remove(iniFile);
    if (tables.common.empty() || tables.parameters.size() == tables.common.size()) {
        throw std::runtime_error(iniFile + ": the rig wrote no parameters");
    }
    return tables;
}

} // namespace pages
