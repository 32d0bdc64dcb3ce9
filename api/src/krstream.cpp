// Tables, answers and the call trace, and the global streams of the whole harness.
#include "krstream.h"

#include "krpaths.h"

#include <cstdint>
#include <cstring>

// All streams stand here in one order: what is used while a stream is destroyed is defined above it. The destructor of
// g_istrm writes the ini-file and may report a failure through g_ostrm to c_out.
i_stream c_in(stdin);
o_stream c_out(stdout);
krOStream g_ostrm;
krCStream g_cstrm;
krCStream g_qstrm;
krCStream g_ustrm;
krCStream g_mstrm;
krIStream g_istrm;
krTrace g_trace;

void krTellLosses() {
    for (krCStream* table : {&g_cstrm, &g_qstrm, &g_ustrm, &g_mstrm}) {
        table->tellLosses();
    }
    g_ostrm.tellLosses();
}

// ---------------------------------------------------------------------------------------------------- rows

void addStore(krRowStore& store, const krString* row, int colms) {
    for (int i = 0; i < colms; ++i) {
        store[i].append(row[i]);
    }
}

void clearStore(krRowStore& store) {
    for (krStringList& column : store) {
        column.clear();
    }
}

int getStoreCount(const krRowStore& store) {
    return store[0].size();
}

void resetStoreIterator(const krRowStore& store, krRowIterators& iterators) {
    for (int i = 0; i < krMaxColm; ++i) {
        iterators[i] = store[i].begin();
    }
}

bool getStoreNext(const krRowStore& store, krString* row, krRowIterators& iterators, int colms) {
    for (int i = 0; i < colms; ++i) {
        if (iterators[i] == store[i].end()) {
            return false;
        }
        row[i] = *iterators[i]++;
    }
    return true;
}

// ---------------------------------------------------------------------------------------------------- tables

krCStream::~krCStream() {
    close();
}

void krCStream::close() {
    for (o_stream* stream : *this) {
        if (stream != &c_out) {
            delete stream;
        }
    }
    clear();
}

void krCStream::putCell(const krString& text) {
    if (text == "\n") {
        lineOut(0);
    } else if (m_colmCount < krMaxColm) {
        m_colm[m_colmCount++] = text;
    }
}

void krCStream::setColm(int index, const krString& text) {
    if (index >= 0 && index < krMaxColm) {
        m_colm[index] = text;
    }
}

bool krCStream::getColm(int index, krString& text) const {
    if (index < 0 || index >= krMaxColm) {
        return false;
    }
    text = m_colm[index];
    return true;
}

void krCStream::setColmCount(int count) {
    m_colmCount = count < 0 ? 0 : count > krMaxColm ? krMaxColm : count;
}

void krCStream::tableOut(int n) {
    const int count = n == 0 ? m_colmCount : n;
    krString line;
    for (int i = 0; i < count; ++i) {
        if (i > 0) {
            line << ",";
        }
        line << (i < m_colmCount && !m_colm[i].empty() ? m_colm[i] : krString("-"));
    }
    line << "\n";
    // Line by line, so that a crash of a measured function leaves every finished line behind.
    for (o_stream* stream : *this) {
        stream->putLine(line);
    }
}

void krCStream::tableFlush() {
    m_colmCount = 0;
    for (krString& cell : m_colm) {
        cell.assign("");
    }
}

void krCStream::lineOut(int n) {
    tableOut(n);
    ++m_lineNumber;
    if (m_identicalWidth != 0) {
        addStore(m_identical, m_colm, m_identicalWidth > 0 ? m_identicalWidth : 1);
    }
    tableFlush();
}

void krCStream::linePostpone() {
    addStore(m_postponed, m_colm);
    tableFlush();
}

void krCStream::linePostponeOut(int n) {
    krRowIterators iterators;
    resetStoreIterator(m_postponed, iterators);
    while (getStoreNext(m_postponed, m_colm, iterators)) {
        setColmCount(n);
        lineOut(n);
    }
    clearStore(m_postponed);
}

void krCStream::identicalLinesStart(int n) {
    m_identicalWidth = n < krMaxColm ? n : krMaxColm;
    clearStore(m_identical);
}

bool krCStream::identicalLinesStop() {
    if (m_identicalWidth == 0 || getStoreCount(m_identical) == 0) {
        return false;
    }
    const bool found = identicalLinesCheck();
    m_identicalWidth = 0;
    clearStore(m_identical);
    return found;
}

bool krCStream::identicalColms(const krString* a, const krString* b, int n) {
    for (int i = 0; i < n; ++i) {
        if (!(a[i] == b[i])) {
            return false;
        }
    }
    return true;
}

static uint64_t rowHash(const krString* row, int colms) {
    uint64_t hash = 0;
    for (int i = 0; i < colms; ++i) {
        hash = krHash::add(hash, row[i]);
    }
    return hash ^ (hash >> 32);
}

// The first two of equal rows are enough: the pair with the smallest first row is a pair of those.
bool krCStream::identicalLinesCheck() const {
    const int count = getStoreCount(m_identical);
    const int colms = m_identicalWidth > 0 ? m_identicalWidth : 1;
    auto* rows = new krString[static_cast<size_t>(count) * static_cast<size_t>(colms)];
    krRowIterators iterators;
    resetStoreIterator(m_identical, iterators);
    size_t slots = 16;
    while (slots < 2 * static_cast<size_t>(count)) {
        slots *= 2;
    }
    int* table = new int[slots]();
    int first = count;
    int second = count;
    for (int j = 0; j < count; ++j) {
        krString* row = rows + static_cast<size_t>(j) * static_cast<size_t>(colms);
        getStoreNext(m_identical, row, iterators, colms);
        size_t slot = m_identicalWidth > 0 ? rowHash(row, colms) & (slots - 1) : 0;
        while (table[slot] != 0) {
            const int i = table[slot] - 1;
            const krString* other = rows + static_cast<size_t>(i) * static_cast<size_t>(colms);
            if (identicalColms(other, row, m_identicalWidth)) {
                if (i < first) {
                    first = i;
                    second = j;
                }
                break;
            }
            slot = (slot + 1) & (slots - 1);
        }
        if (table[slot] == 0) {
            table[slot] = j + 1;
        }
    }
    delete[] table;
    delete[] rows;
    if (first == count) {
        return false;
    }
    const int base = m_lineNumber - count + 1;
    g_ostrm << WARN << " Performance table warning:\n"
            << " Lines " << base + first << " & " << base + second << " have identical parameters\n"
            << msgEndFlush;
    return true;
}

// ---------------------------------------------------------------------------------------------------- answers

krIStream::~krIStream() {
    deleteIStream();
    deleteIniFile();
}

void krIStream::deleteIStream() {
    if (m_stream != &c_in) {
        delete m_stream;
    }
    m_stream = nullptr;
}

void krIStream::setIStream(i_stream* stream) {
    if (stream != m_stream) {
        deleteIStream();
        m_stream = stream;
    }
}

void krIStream::deleteIniFile() {
    delete m_iniFile;
    m_iniFile = nullptr;
}

bool krIStream::setIniFile(const krString& name, bool writeBack) {
    deleteIniFile();
    m_iniFile = new krIniFile;
    m_iniWrite = writeBack;
    return m_iniFile->open(krPaths::getInPath(name), writeBack);
}

krString krIStream::setIniSection(const krString& section) {
    krString former = m_section;
    m_section = section;
    return former;
}

krString krIStream::getItemValue(const krString& item, const krString& defaultValue, const krString& prompt,
                                 const krString& comment) {
    krString result;
    m_source = m_stream != nullptr ? ivConsole : ivDefault;
    if (m_dataList.get(item, result)) {
        m_source = ivData;
    } else if (m_iniFile != nullptr) {
        result = m_iniFile->read(m_section, item, "");
        if (!result.empty()) {
            m_source = ivIniFile;
        }
    }
    if (m_source == ivConsole) {
        result = getItemValue(*m_stream, prompt.empty() ? item : prompt, defaultValue);
    } else if (m_source == ivDefault) {
        result = defaultValue;
    }
    if (m_iniWrite && m_iniFile != nullptr) {
        m_iniFile->write(m_section, item, result, comment);
    }
    return result;
}

krString krIStream::getItemValue(i_stream& stream, const krString& prompt, const krString& defaultValue) {
    c_out << krString("\n ") + prompt + " [" + defaultValue + "] = ";
    c_out.flush(); // a person may sit behind a pipe
    krString line;
    stream.getline(line);
    if (line.empty()) {
        m_source = ivDefault;
        return defaultValue;
    }
    m_source = ivConsole;
    return line;
}

// ---------------------------------------------------------------------------------------------------- trace

static void cutIndent(krString& indent) {
    if (!indent.empty()) {
        indent = indent.substr(1);
    }
}

void krTrace::put(const char* what, const krString& name) {
    // Composed in one piece: a trace line is made some fifty times for each line of a grid.
    krString line;
    line.allocate(m_indent.length() + 5 + static_cast<int>(std::strlen(what)) + name.length() + 1);
    std::snprintf(line.data(), static_cast<size_t>(line.capacity()), "%s*****%s%s\n", m_indent.c_str(), what,
                  name.c_str());
    if (g_ostrm.passes()) {
        g_ostrm << line;
    }
    m_log += line;
    flush();
}

void krTrace::traceIn(const krString& name) {
    g_ostrm << TRACE;
    m_indent += "*";
    put(" trace into   ", name);
    g_ostrm << msgEnd;
    insert(begin(), name);
}

void krTrace::traceOut(const krString& name) {
    g_ostrm << TRACE;
    put(" trace out of ", name);
    g_ostrm << msgEnd;
    for (iterator it = begin(); !(it == end()); ++it) {
        cutIndent(m_indent);
        if (*it == name) {
            erase(begin(), ++it);
            return;
        }
    }
}

void krTrace::leave(int depth) {
    for (int more = size() - depth; more > 0; --more) {
        erase(begin());
        cutIndent(m_indent);
    }
}

void krTrace::flush() const {
    if (g_ostrm.msgLevel() <= g_ostrm.outLevel()) {
        g_ostrm.flush();
    }
}

krString krTrace::getCurName() const {
    return empty() ? krString("") : *begin();
}
