// Files and console messages: opening, line reading, and the routing of messages by level.
#include "krio.h"

#include "kr.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

const char* krFileMode(int mode) {
    const bool binary = (mode & ioBinary) != 0;
    if ((mode & ioRead) != 0) {
        return binary ? "rb" : "r";
    }
    if ((mode & ioAppend) != 0) {
        return binary ? "ab" : "a";
    }
    return binary ? "wb" : "w";
}

io_stream::io_stream(const krString& name, int mode, bool reportError) : m_file(nullptr) {
    krString path = name;
    if ((mode & ioRawName) == 0) {
        path = (mode & ioRead) != 0 ? krSession::getInPath(name) : krSession::getOutPath(name);
    }
    if ((mode & (ioRead | ioWrite)) != 0) {
        m_file = std::fopen(path.c_str(), krFileMode(mode));
    }
    // A directory opens for reading, and has nothing to read.
    struct stat status = {};
    if (m_file != nullptr && fstat(fileno(m_file), &status) == 0 && S_ISDIR(status.st_mode)) {
        close();
    }
    if (m_file == nullptr && reportError) {
        const char* purpose = (mode & ioRead) != 0 ? " to read" : (mode & ioWrite) != 0 ? " to write" : "";
        g_ostrm << ERR << "-- Can't open file " << path << purpose << ": " << getLastErrorMessage() << "\n" << msgEnd;
    }
}

io_stream::~io_stream() {
    close();
}

void io_stream::close() {
    if (m_file != nullptr && m_file != stdin && m_file != stdout) {
        std::fclose(m_file);
        m_file = nullptr;
    }
}

void o_stream::flush() const {
    if (m_file != nullptr) {
        std::fflush(m_file);
    }
}

bool getlinebuf(FILE* file, char* buffer, int size, bool& eof) {
    eof = false;
    buffer[0] = '\0';
    if (file == nullptr || std::fgets(buffer, size, file) == nullptr) {
        eof = true;
        return true;
    }
    int length = 0;
    while (buffer[length] != '\0') {
        ++length;
    }
    if (length > 0 && buffer[length - 1] == '\n') {
        buffer[length - 1] = '\0';
        return true;
    }
    return length < size - 1;
}

bool i_stream::getline(krString& line) {
    line.assign("");
    if (m_file == nullptr) {
        return false;
    }
    char buffer[512];
    bool eof = false;
    bool complete = false;
    while (!complete) {
        complete = getlinebuf(m_file, buffer, static_cast<int>(sizeof buffer), eof);
        line += buffer;
    }
    return !line.empty() || !eof;
}

o_stream& operator<<(o_stream& stream, const krString& text) {
    std::fputs(text.c_str(), stream.m_file == nullptr ? stdout : stream.m_file);
    return stream;
}

o_stream* createOStream(const krString& name, bool append) {
    auto* stream = new o_stream(name, ioWrite | ioRawName | (append ? ioAppend : 0), true);
    if (stream->m_file == nullptr) {
        delete stream;
        return nullptr;
    }
    return stream;
}

krString getLastErrorMessage() {
    return "";
}

void krHoldConsole() {
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = open("/dev/null", O_RDWR);
    }
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

krOStream::~krOStream() {
    close();
}

bool krDestinations::addStream(const krString& name, bool append) {
    o_stream* stream = createOStream(name, append);
    if (stream == nullptr) {
        return false;
    }
    krList<o_stream*>::append(stream);
    return true;
}

void krDestinations::flush() {
    for (o_stream* stream : *this) {
        stream->flush();
    }
}

void krOStream::close() {
    for (o_stream* stream : *this) {
        if (stream != &c_out) {
            delete stream;
        } else if (stream->m_file != nullptr) {
            std::fclose(stream->m_file);
            stream->m_file = nullptr;
        }
    }
    clear();
}

void krOStream::setMsgLevel(MessageLevel level) {
    m_savedLevels.insert(m_savedLevels.begin(), m_msgLevel);
    m_msgLevel = level;
}

void krOStream::restoreMsgLevel() {
    if (m_savedLevels.empty()) {
        m_msgLevel = ERR;
        return;
    }
    m_msgLevel = *m_savedLevels.begin();
    m_savedLevels.erase(m_savedLevels.begin());
}

void krOStream::closeMessages(int open) {
    for (int more = openMessages() - open; more > 0; --more) {
        restoreMsgLevel();
    }
}

bool krOStream::beginMessage(MessageLevel level) {
    if (level > m_outLevel) {
        return false;
    }
    setMsgLevel(level);
    return true;
}

void krOStream::endMessageFlush() {
    restoreMsgLevel();
    flush();
}

krOStream& operator<<(krOStream& stream, MessageLevel level) {
    if (level == msgEnd) {
        stream.endMessage();
    } else if (level == msgEndFlush) {
        stream.endMessageFlush();
    } else {
        stream.setMsgLevel(level);
    }
    return stream;
}

krOStream& operator<<(krOStream& stream, const krString& text) {
    if (stream.passes()) {
        for (o_stream* destination : stream) {
            *destination << text;
        }
    }
    return stream;
}
