// The items of a report: the run's title and end, a test's title and result, and the listing. Each is built from the
// test list or one test and writes itself as a framed block to the console and as cells to a table. Part of the session
// decides when; the frame is krreportformat's.
#pragma once

#include "krreportformat.h"
#include "krstream.h"

class krConditions;
class krTest;
class krTestList;

/// Processor name, count and frequency of processors, largest cache.
krString cpuInfo();

/// Keys and values alternately: processor, system, computer, libraries, start.
class krReportTitle : public krStringList {
public:
    explicit krReportTitle(const krTestList& tests);
    krString m_format = " %-9s: %s";
};

/// Keys and values alternately: the counters of the run.
class krReportEnd : public krStringList {
public:
    explicit krReportEnd(const krTestList& tests);
    krString m_format;
};

/// Triples of key, value and right-hand text.
class krReportTestTitle : public krStringList {
public:
    explicit krReportTestTitle(const krTest* test);
};

/// Cells; an entry "\n" ends a row.
class krReportList : public krStringList {
public:
    /// `mode` 0 lists the selected tests, otherwise the library functions if there are any: with a positive mode all,
    /// with a negative one those without a test.
    krReportList(krTestList& tests, krConditions& conditions, int mode);
    /// Appends the names of measurable library functions; false if there is none.
    bool createFuncList();
    static bool presentInTestList(const krString& name, krTestList& tests);

private:
    void listTests(krTestList& tests, krConditions& conditions);
    void listFunctions(krTestList& tests, int mode);
};

class krReportTestResult {
public:
    /// A null test gives the header row.
    explicit krReportTestResult(const krTest* test);
    virtual ~krReportTestResult() = default;

    krString m_resultName;
    krString m_funcName;
    krString m_endTime;
    krString m_message;
    krString m_tableRow;
};

krOStream& operator<<(krOStream& stream, const krReportTitle& title);
krCStream& operator<<(krCStream& stream, const krReportTitle& title);
krOStream& operator<<(krOStream& stream, const krReportEnd& end);
krCStream& operator<<(krCStream& stream, const krReportEnd& end);
/// The caller sets the message level.
krOStream& operator<<(krOStream& stream, const krReportTestTitle& title);
/// Two cells with no end of line: the row is finished by the test's result.
krCStream& operator<<(krCStream& stream, const krReportTestTitle& title);
krOStream& operator<<(krOStream& stream, const krReportTestResult& result);
krCStream& operator<<(krCStream& stream, const krReportTestResult& result);
krOStream& operator<<(krOStream& stream, const krReportList& list);
krCStream& operator<<(krCStream& stream, const krReportList& list);
