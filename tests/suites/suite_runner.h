// Runs registered tests as a session does, one loop a line, and gives the lines of the result table.
#pragma once

#include "tempdir.h"
#include "vkc.h"

#include <cstdlib>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

/// The lines that `work` writes to the result table, in a directory of its own.
template <class Work>
std::vector<std::string> tableLines(const Work& work, const TempDir& directory = TempDir()) {
    setVekEnvironment();
    krCpuTicker::m_freqMHz = 2400;
    krTest::m_numParmsColm = 9;
    krTest::m_numResultColm = 5;
    g_cstrm.addStream(directory.path("table").c_str(), false);
    work();
    g_cstrm.close();
    std::vector<std::string> lines;
    std::istringstream table(directory.read("table"));
    for (std::string line; std::getline(table, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// Runs a test over its whole grid with one loop a line.
inline std::vector<std::string> runOnce(krTest& test, krResult& result, const TempDir& directory = TempDir()) {
    g_ostrm.setOutLevel(ERR);
    krSession::m_nameExit = false;
    g_tool.setMethodLoop(1);
    return tableLines([&] { result = test.run(); }, directory);
}

/// The test of a function, or null.
inline krTest* findTest(const char* name) {
    for (krTest* test : *pTestList) {
        if (test->m_name == name) {
            return test;
        }
    }
    return nullptr;
}

/// Cells `first` to `last` of a table line.
inline std::string cells(const std::string& line, int first, int last) {
    std::string part;
    int index = 0;
    for (const char c : line) {
        if (c == ',' && index++ == last) {
            break;
        }
        if (index > first || (index == first && c != ',')) {
            part += c;
        }
    }
    return part;
}

/// What a run of one function over its grid came to.
struct SuiteRun {
    krResult result = krUndefined;
    std::vector<std::string> lines;

    /// Cells `first` to `last` of each line.
    std::vector<std::string> columns(int first, int last) const {
        std::vector<std::string> values;
        for (const std::string& line : lines) {
            values.push_back(cells(line, first, last));
        }
        return values;
    }
};

/// The same with the values that a user gives, as "title=value".
inline SuiteRun runOnce(const char* function, std::initializer_list<const char*> values = {}) {
    for (const char* value : values) {
        g_istrm.dataList().set(value);
    }
    SuiteRun run;
    if (krTest* test = findTest(function); test != nullptr) {
        run.lines = runOnce(*test, run.result);
    }
    g_istrm.dataList().clear();
    return run;
}
