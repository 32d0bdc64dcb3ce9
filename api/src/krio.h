// Files and console messages: the thin layer over stdio, the message levels, and the stream of everything that a person
// reads. Tables, answers and the trace are in krstream.
#pragma once

#include "krstring.h"

#include <cstdio>

/// Mode bits of a file.
enum krIoMode { ioRead = 1, ioWrite = 2, ioAppend = 4, ioBinary = 8, ioRawName = 256 };

/// The mode of fopen for these bits.
const char* krFileMode(int mode);

/// A file of the standard input and output library; null if it could not be opened.
class io_stream {
public:
    explicit io_stream(FILE* file) : m_file(file) {}
    /// Opens `name`; without ioRawName it goes through the default directories of the session first.
    io_stream(const krString& name, int mode, bool reportError);
    io_stream(const io_stream&) = delete;
    io_stream& operator=(const io_stream&) = delete;
    virtual ~io_stream();

    /// Closes the file unless it is null or a console handle.
    void close();
    FILE* m_file;
};

class i_stream : public io_stream {
public:
    using io_stream::io_stream;
    /// Reads a line of any length without its newline; false at the end of the file.
    bool getline(krString& line);
};

class o_stream : public io_stream {
public:
    explicit o_stream(FILE* file) : io_stream(file) {}
    o_stream(const krString& name, int mode, bool reportError) : io_stream(name, mode, reportError), m_name(name) {}
    /// Does nothing without a file.
    void flush();
    /// Writes a line, whole or not at all: what the file does not take now is kept and tried again before the next line
    /// and at each flush.
    void putLine(const krString& line);
    /// Tells at level ERR that the file lacks lines or text.
    void tellLosses();

private:
    bool sendLine(krString& line);

    krString m_name;
    krStringList m_unwritten;
};

/// Reads one piece of a line. True when the line is complete (or the file ended), false when more of it follows.
bool getlinebuf(FILE* file, char* buffer, int size, bool& eof);

o_stream& operator<<(o_stream& stream, const krString& text);
/// Writes `lines` over a file; one that can't take them stays as it was. A failure is reported at level ERR.
void krReplaceFile(const krString& name, const krStringList& lines);
/// What two names of the same file have in common; empty for a device, which any number may share.
krString krFileIdentity(const krString& name);
/// A new text file, or null after the report of the failure.
o_stream* createOStream(const krString& name, bool append);
krString getLastErrorMessage();
/// Relative paths mean the directory of this moment from here on, wherever a measured function goes.
void krHoldDirectory();
/// The path as it is opened.
krString krFullPath(const krString& path);
/// Puts the null device where the console is closed; else the first file opened would take its descriptor, and its
/// text.
void krHoldConsole();

extern i_stream c_in;
extern o_stream c_out;

/// Levels of a message; the two negative values are commands.
enum MessageLevel : int {
    ERR = 1,
    WARN = 2,
    PERF = 4,
    INFO = 8,
    TRACE = 16,
    MEM = 32,
    DATA = 64,
    msgEnd = -10,
    msgEndFlush = -11
};
/// Mask of the message levels that are let through.
using OutputLevel = int;

/// The destinations of a stream.
class krDestinations : public krList<o_stream*> {
public:
    /// Adds a text file; false if it could not be opened.
    bool addStream(const krString& name, bool append);
    void flush();
    /// Tells of each file that is not complete.
    void tellLosses();
};

/// Human-readable text with a level filter, written to all its destinations.
class krOStream : public krDestinations {
public:
    krOStream() = default;
    krOStream(const krOStream&) = delete;
    krOStream& operator=(const krOStream&) = delete;
    ~krOStream() override;

    /// Closes the files of all destinations and forgets them.
    void close();

    void setOutLevel(OutputLevel level) { m_outLevel = level; }
    OutputLevel outLevel() const { return m_outLevel; }
    MessageLevel msgLevel() const { return m_msgLevel; }
    void setMsgLevel(MessageLevel level);
    void restoreMsgLevel();
    /// False if `level` is numerically above the output level; otherwise opens the message.
    bool beginMessage(MessageLevel level);
    void endMessage() { restoreMsgLevel(); }
    void endMessageFlush();
    int openMessages() const { return m_savedLevels.size(); }
    /// Closes the messages that were opened since there were `open` of them, as after a fault in the middle of one.
    void closeMessages(int open);
    /// Whether text sent now would be written.
    bool passes() const { return (m_msgLevel & m_outLevel) != 0; }

private:
    OutputLevel m_outLevel = ERR;
    MessageLevel m_msgLevel = PERF;
    krList<MessageLevel> m_savedLevels;
};

extern krOStream g_ostrm;

krOStream& operator<<(krOStream& stream, MessageLevel level);
krOStream& operator<<(krOStream& stream, const krString& text);

/// The way of every other type to the stream: through the conversions of krString.
template <class T>
krOStream& tsOutTpl(krOStream& stream, const T& value) {
    return stream << krText(value);
}
inline krOStream& operator<<(krOStream& stream, const char* text) {
    return stream << krString(text);
}
inline krOStream& operator<<(krOStream& stream, char value) {
    return tsOutTpl(stream, value);
}
inline krOStream& operator<<(krOStream& stream, bool value) {
    return tsOutTpl(stream, value);
}
inline krOStream& operator<<(krOStream& stream, int value) {
    return tsOutTpl(stream, value);
}
inline krOStream& operator<<(krOStream& stream, unsigned value) {
    return tsOutTpl(stream, value);
}
inline krOStream& operator<<(krOStream& stream, long long value) {
    return tsOutTpl(stream, value);
}
inline krOStream& operator<<(krOStream& stream, double value) {
    return tsOutTpl(stream, value);
}
inline krOStream& operator<<(krOStream& stream, const void* value) {
    return tsOutTpl(stream, value);
}
