// The items of a report.
#include "krreport.h"

#include "krcputick.h"
#include "krinfo.h"
#include "krlib.h"
#include "krpaths.h"
#include "krtest.h"

// Place of an item at the right border of a frame, and the level up to which a test's title and result are single
// lines.
constexpr int s_right = -79;
constexpr OutputLevel s_singleLine = 2;

krString cpuInfo() {
    const int cpuType = vek_GetCpuType == nullptr ? kr_vekGetCpuType() : vek_GetCpuType();
    krString text = krCpuType::cpuName(cpuType) + ", ";
    const int processors = krGetNumOfProcessors();
    if (processors > 1) {
        text << processors << "x";
    }
    const int freq = krCpuTicker::getFreq();
    if (freq > 999) {
        text << freq / 1000.0 << " GHz";
    } else {
        text << freq << " MHz";
    }
    text << ", ";
    const int cache = krGetMaxCacheSizeB();
    if (cache != 0) {
        text << "Max cache size " << cache / 1024 << " K";
    }
    return text;
}

static krString timeLine(time_t when) {
    return cutoffNL(krTimeText(when));
}

// ---------------------------------------------------------------------------------------------------- run title

krReportTitle::krReportTitle(const krTestList& tests) {
    append("CPU");
    append(cpuInfo());
    append("OS");
    append(g_os.text());
    append("Computer");
    append(g_host.text());
    if (g_pLibInfoList != nullptr) {
        for (const krString& info : *g_pLibInfoList) {
            append("Library");
            append(info);
        }
    }
    append("Start");
    append(timeLine(tests.m_startTime));
}

krOStream& operator<<(krOStream& stream, const krReportTitle& title) {
    krReportFormat format(false, 4, 1, 11, 13, s_right, s_right, s_right);
    stream << ERR << format.firstLine();
    krStringList::const_iterator it = title.begin();
    while (!(it == title.end()) && !(*it == "Start")) {
        const krString& key = *it++;
        stream << format.getLine(key, ":", *it++, "", "", "");
    }
    stream << format.getLine("Test", ":", "Timing", "", "", "");
    if (!(it == title.end())) {
        stream << format.getLine("", "", "", *++it, "", "");
    }
    return stream << format.lastLine() << msgEndFlush;
}

// One table line for each key and value.
static void pairsToTable(krCStream& stream, const krStringList& pairs) {
    for (krStringList::const_iterator it = pairs.begin(); !(it == pairs.end());) {
        stream << *it++;
        stream << *it++ << "\n";
    }
}

krCStream& operator<<(krCStream& stream, const krReportTitle& title) {
    pairsToTable(stream, title);
    return stream;
}

// ---------------------------------------------------------------------------------------------------- run end

krReportEnd::krReportEnd(const krTestList& tests) {
    // The totals at the codes 6 and 11 stay out of both sums.
    const int successes = tests.counter(krOk);
    const int warnings = tests.counter(krAccurWrn) + tests.counter(krDataWrn) + tests.counter(krFuncWrn);
    const int badStatus = tests.counter(krBadStsWrn);
    const int failures = tests.counter(krAccurFail) + tests.counter(krDataFail) + tests.counter(krFuncFail);
    const int exceptions = tests.counter(krExcptFail);
    const int bad = failures + exceptions + warnings + badStatus;
    const struct {
        const char* key;
        int value;
    } rows[] = {
        {".Number of tests", tests.count()},
        {".Successes      ", successes},
        {".Failures       ", bad},
        {"...Fails        ", failures + exceptions},
        {".....-FAIL      ", failures},
        {".....-EXCPTFAIL ", exceptions},
        {"...Warnings     ", warnings + badStatus},
        {".....-WARNING   ", warnings},
        {".....-BADSTSWRN ", badStatus},
        {"...Undefined    ", tests.count() - successes - bad},
    };
    for (const auto& row : rows) {
        append(row.key);
        append(krFormat("%d", row.value));
    }
    append(".Total time     ");
    append(krReportFormat::getTimeStr(static_cast<int>(std::difftime(tests.m_endTime, tests.m_startTime))));
}

krOStream& operator<<(krOStream& stream, const krReportEnd& end) {
    krReportFormat format(false, 3, 1, 33, 34, s_right, s_right, s_right);
    stream << ERR << format.firstLine();
    stream << format.getLine("KR Summary", "", "", "", "", "");
    for (krStringList::const_iterator it = end.begin(); !(it == end.end());) {
        const krString key = *it++;
        stream << format.getLine(key + " : " + *it++, "", "", "", "", "");
    }
    return stream << format.lastLine() << msgEndFlush;
}

krCStream& operator<<(krCStream& stream, const krReportEnd& end) {
    stream << "END_DATA"
           << "\n";
    pairsToTable(stream, end);
    return stream;
}

// ---------------------------------------------------------------------------------------------------- test title

krReportTestTitle::krReportTestTitle(const krTest* test) {
    append("Function");
    append(test->m_name);
    append(timeLine(test->m_startTime));
    if (g_ostrm.outLevel() > 1) {
        append("Test");
        append(test->m_info.m_class);
        append("");
        append("Source");
        append(test->m_srcName);
        append("");
    }
    if (!test->m_info.m_mode.empty()) {
        append("Description");
        append(test->m_info.m_mode);
        append("");
    }
}

krOStream& operator<<(krOStream& stream, const krReportTestTitle& title) {
    krReportFormat format(true, 4, 1, 12, 14, s_right, s_right, s_right);
    const bool block = stream.outLevel() > s_singleLine;
    if (block) {
        stream << format.firstLine();
    }
    for (krStringList::const_iterator it = title.begin(); !(it == title.end());) {
        const krString& key = *it++;
        const krString& value = *it++;
        stream << format.getLine(key, ":", value, *it++, "", "");
        if (!block) {
            break;
        }
    }
    if (block) {
        stream << format.lastLine();
    }
    stream.flush();
    return stream;
}

krCStream& operator<<(krCStream& stream, const krReportTestTitle& title) {
    krStringList::const_iterator name = title.begin();
    ++name;
    stream << *name << (name->find("__kr") == 0 ? "Information" : "Timing");
    stream.flush();
    return stream;
}

// ---------------------------------------------------------------------------------------------------- test result

krReportTestResult::krReportTestResult(const krTest* test) {
    if (test == nullptr) {
        m_tableRow = "Function,Class,Control87,Status87,ControlSSX,StatusSSX,Test,Time (sec.),SrcName,Result,ExeName";
        return;
    }
    m_resultName = krResultName(test->m_result);
    m_funcName = test->m_name;
    m_endTime = timeLine(test->m_endTime);
    if (test->m_result == krUndefined) {
        m_message = "--No measurements have been done\n";
    }
    m_tableRow << "-," << (test->m_bad87 ? "?" : "-") << ",-," << (test->m_badSSX ? "?" : "-") << ","
               << test->m_info.m_class << "," << static_cast<int>(std::difftime(test->m_endTime, test->m_startTime))
               << "," << test->m_srcName << "," << m_resultName << "," << krPaths::m_exePath.getFileName();
}

krOStream& operator<<(krOStream& stream, const krReportTestResult& result) {
    krReportFormat format(true, 3, 1, 14, s_right, s_right, s_right, s_right);
    const bool block = stream.outLevel() > s_singleLine;
    stream << ERR;
    if (block) {
        stream << format.firstLine();
    }
    stream << format.getLine(krString("-") + result.m_resultName, result.m_funcName, result.m_endTime, "", "", "");
    if (block) {
        stream << format.lastLine();
    }
    return stream << msgEndFlush;
}

krCStream& operator<<(krCStream& stream, const krReportTestResult& result) {
    if (!result.m_tableRow.empty()) {
        stream << result.m_tableRow;
        stream.lineOut(0);
    }
    return stream;
}

// ---------------------------------------------------------------------------------------------------- listing

krReportList::krReportList(krTestList& tests, krConditions& conditions, int mode) {
    if (mode != 0 && createFuncList()) {
        listFunctions(tests, mode);
    } else {
        listTests(tests, conditions);
    }
}

void krReportList::listTests(krTestList& tests, krConditions& conditions) {
    append("   #");
    append("Function");
    append("Test");
    append("Source");
    append("\n");
    int number = 0;
    for (krTest* test : tests) {
        if (test->tobeRun(conditions)) {
            append(krFormat("%4d", ++number));
            append(test->m_name);
            append(test->m_info.m_class);
            append(test->m_srcName);
            append("\n");
        }
    }
}

// Set-up and service functions of the library, which nobody would measure.
static bool isMeasurable(const krString& name) {
    for (const char* word :
         {"Init", "Close", "Alloc", "Malloc", "Free", "PutVal", "RotateCenter", "ResizeShift", "DrawText"}) {
        if (name.contains(word)) {
            return false;
        }
    }
    return (!name.contains("Get") || name.contains("Get_")) && (!name.contains("Set") || name.contains("Set_"));
}

bool krReportList::createFuncList() {
    if (g_pLibFuncList != nullptr) {
        for (const krString& name : *g_pLibFuncList) {
            if (isMeasurable(name)) {
                append(name);
            }
        }
    }
    return !empty();
}

bool krReportList::presentInTestList(const krString& name, krTestList& tests) {
    for (const krTest* test : tests) {
        if (test->m_name == name) {
            return true;
        }
    }
    return false;
}

// Turns the names into rows in place.
void krReportList::listFunctions(krTestList& tests, int mode) {
    for (iterator it = begin(); !(it == end());) {
        const bool present = presentInTestList(*it, tests);
        if (present && mode < 0) {
            it = erase(it);
            continue;
        }
        insert(it, present ? "+" : "-");
        insert(++it, "\n");
    }
    const iterator head = begin();
    insert(head, "Exist");
    insert(head, "Function");
    insert(head, "\n");
}

krOStream& operator<<(krOStream& stream, const krReportList& list) {
    if (stream.passes()) {
        for (const krString& cell : list) {
            stream << (cell == "\n" ? cell : cell + "\t");
        }
    }
    return stream;
}

krCStream& operator<<(krCStream& stream, const krReportList& list) {
    for (const krString& cell : list) {
        stream << cell;
    }
    return stream;
}
