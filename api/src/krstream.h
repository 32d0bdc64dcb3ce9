// Tables, answers and the call trace: comma-separated lines with their watch for identical rows, the one source of
// answers to named questions, and the trace of entered functions. Plain text and the files beneath are krio's.
#pragma once

#include "krdata.h"
#include "krinifile.h"
#include "krio.h"

#include <type_traits>

/// Cells of a table line.
constexpr int krMaxColm = 32;

/// Rows kept column by column; row k is the k-th entry of every list.
using krRowStore = krStringList[krMaxColm];
using krRowIterators = krStringList::const_iterator[krMaxColm];

/// Appends the first `colms` cells of `row`.
void addStore(krRowStore& store, const krString* row, int colms = krMaxColm);
void clearStore(krRowStore& store);
/// The number of rows.
int getStoreCount(const krRowStore& store);
void resetStoreIterator(const krRowStore& store, krRowIterators& iterators);
/// Copies the next row; false as soon as one of the first `colms` columns is at its end.
bool getStoreNext(const krRowStore& store, krString* row, krRowIterators& iterators, int colms = krMaxColm);

/// A table: lines of at most 32 cells, joined by "," with "-" for an empty one, written to all destinations.
class krCStream : public krDestinations {
public:
    krCStream() = default;
    krCStream(const krCStream&) = delete;
    krCStream& operator=(const krCStream&) = delete;
    ~krCStream() override;

    /// Closes the files of all destinations and forgets them.
    void close();

    /// Puts a cell into the next column; a 33rd is dropped. The exact text "\n" ends the line.
    void putCell(const krString& text);
    /// Writes cell `index` (0 to 31) and leaves the count alone.
    void setColm(int index, const krString& text);
    /// False if `index` is no cell.
    bool getColm(int index, krString& text) const;
    int colmCount() const { return m_colmCount; }
    /// Continues the line at a given column, 0 to 32.
    void setColmCount(int count);
    int lineNumber() const { return m_lineNumber; }

    /// Writes `n` cells of the line, or all that are filled if `n` is 0, and flushes the destinations.
    void tableOut(int n);
    /// Clears the line.
    void tableFlush();
    /// Writes the line, counts and keeps it for the search for identical ones, and clears it.
    void lineOut(int n);
    /// Holds the line back, to be written by the next linePostponeOut.
    void linePostpone();
    void linePostponeOut(int n);

    /// From here on lines with equal first `n` cells are looked for; 0 turns the search off.
    void identicalLinesStart(int n);
    /// The end of the search: true if there are identical lines, which are then reported.
    bool identicalLinesStop();
    /// Tells the first pair of identical lines in their order; the cost is linear in the lines.
    bool identicalLinesCheck() const;
    int identicalWidth() const { return m_identicalWidth; }
    static bool identicalColms(const krString* a, const krString* b, int n);

private:
    krString m_colm[krMaxColm];
    int m_colmCount = 0;
    int m_lineNumber = 0;
    int m_identicalWidth = 0;
    krRowStore m_identical; // the check columns alone
    krRowStore m_postponed;
};

inline krCStream& operator<<(krCStream& stream, const krString& text) {
    stream.putCell(text);
    return stream;
}
inline krCStream& operator<<(krCStream& stream, const char* text) {
    return stream << krString(text);
}
/// The way of every other type into a cell: through the conversions of krString.
template <class T>
krCStream& tmOutTpl(krCStream& stream, const T& value) {
    return stream << krText(value);
}
inline krCStream& operator<<(krCStream& stream, int value) {
    return tmOutTpl(stream, value);
}
inline krCStream& operator<<(krCStream& stream, long long value) {
    return tmOutTpl(stream, value);
}
inline krCStream& operator<<(krCStream& stream, double value) {
    return tmOutTpl(stream, value);
}
inline krCStream& operator<<(krCStream& stream, unsigned value) {
    return tmOutTpl(stream, value);
}
inline krCStream& operator<<(krCStream& stream, bool value) {
    return tmOutTpl(stream, value);
}
inline krCStream& operator<<(krCStream& stream, char value) {
    return tmOutTpl(stream, value);
}
inline krCStream& operator<<(krCStream& stream, const void* value) {
    return tmOutTpl(stream, value);
}

/// Where the last answer came from; ivUnknown before the first question.
enum krItemSource { ivDefault = 0, ivConsole = 1, ivIniFile = 2, ivData = 3, ivUnknown = 4 };

/// Answers to named questions: forced data, then the ini-file, then the console, then the default.
class krIStream {
public:
    krIStream() = default;
    krIStream(const krIStream&) = delete;
    krIStream& operator=(const krIStream&) = delete;
    /// Drops the stream and the ini-file, which is rewritten here if it was opened for writing.
    ~krIStream();

    /// The console to ask (owned unless it is c_in), or null to ask nobody.
    void setIStream(i_stream* stream);
    /// Opens an ini-file in place of the present one; false if it could not be opened. It stays in place all the same.
    bool setIniFile(const krString& name, bool writeBack);
    void deleteIStream();
    void deleteIniFile();
    void close() {}
    /// Makes a section of the ini-file current and returns the former one.
    krString setIniSection(const krString& section);

    /// The answer to `item`; `prompt` (`item` if empty) is shown at the console, `comment` goes to the ini-file.
    krString getItemValue(const krString& item, const krString& defaultValue, const krString& prompt,
                          const krString& comment);
    /// Asks `stream`; an empty line gives the default.
    krString getItemValue(i_stream& stream, const krString& prompt, const krString& defaultValue);

    bool interactive() const { return m_stream != nullptr; }
    /// One of krItemSource.
    int source() const { return m_source; }
    krIniFile* iniFile() const { return m_iniFile; }
    bool iniWrite() const { return m_iniWrite; }
    krDataList& dataList() { return m_dataList; }

private:
    i_stream* m_stream = nullptr;
    krIniFile* m_iniFile = nullptr;
    krDataList m_dataList;
    krString m_section = "Kelvar Rig";
    bool m_iniWrite = false;
    int m_source = ivUnknown;
};

/// The stack of entered functions, newest first. A trace that an exception left is repaired by the next traceOut of an
/// outer function.
class krTrace : public krStringList {
public:
    void traceIn(const krString& name);
    void traceOut(const krString& name);
    /// Does `work` as an entered function and gives what it gives. Holds nothing that a jump out of it would lose.
    template <class Work>
    auto trace(const char* name, Work work) {
        traceIn(name);
        if constexpr (std::is_void_v<decltype(work())>) {
            work();
            traceOut(name);
        } else {
            const auto result = work();
            traceOut(name);
            return result;
        }
    }
    /// Flushes the console if the present message passes.
    void flush() const;
    /// Forgets the functions entered since there were `depth` of them.
    void leave(int depth);
    /// The newest name, or an empty text.
    krString getCurName() const;

    krString m_log;    ///< every trace line so far; tests put it back so that it does not grow with their grid
    krString m_indent; ///< one "*" for each entered function

private:
    void put(const char* what, const krString& name);
};

extern krCStream g_cstrm; ///< performance table
extern krCStream g_qstrm; ///< function parameter names
extern krCStream g_ustrm; ///< summary
extern krCStream g_mstrm; ///< memory; no key opens a file for it
extern krIStream g_istrm;
extern krTrace g_trace;

/// Tells of each file of the run that is not complete.
void krTellLosses();
