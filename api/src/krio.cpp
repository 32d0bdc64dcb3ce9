// Files and console messages: opening, line reading, and the routing of messages by level.
#include "krio.h"

#include "krpaths.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string>
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
        path = (mode & ioRead) != 0 ? krPaths::getInPath(name) : krPaths::getOutPath(name);
    }
    if ((mode & (ioRead | ioWrite)) != 0) {
        m_file = std::fopen(krFullPath(path).c_str(), krFileMode(mode));
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

// All bytes, or as many as the file takes.
static int writeBytes(int file, const krString& text) {
    int done = 0;
    while (done < text.length()) {
        const ssize_t more = ::write(file, text.c_str() + done, static_cast<size_t>(text.length() - done));
        if (more > 0) {
            done += static_cast<int>(more);
        } else if (more == 0 || errno != EINTR) {
            break;
        }
    }
    return done;
}

// Takes back the last `count` bytes of a file; false for a pipe and for a file that somebody else writes as well.
static bool takeBack(int file, int count) {
    struct stat status = {};
    const off_t end = lseek(file, 0, SEEK_CUR);
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size == end &&
           ftruncate(file, end - count) == 0 && lseek(file, end - count, SEEK_SET) >= 0;
}

// Past the library, which drops what a full disk does not take. False if the line, or its rest in a pipe, has to wait.
bool o_stream::sendLine(krString& line) {
    const int done = writeBytes(fileno(m_file), line);
    if (done == line.length()) {
        return true;
    }
    if (done > 0 && !takeBack(fileno(m_file), done)) {
        line = line.substr(done);
    }
    return false;
}

void o_stream::flush() {
    if (m_file == nullptr) {
        return;
    }
    std::fflush(m_file);
    while (!m_unwritten.empty() && sendLine(*m_unwritten.begin())) {
        m_unwritten.erase(m_unwritten.begin());
    }
}

void o_stream::putLine(const krString& line) {
    if (m_file == nullptr || fileno(m_file) < 0) {
        *this << line;
    } else {
        m_unwritten.append(line);
    }
    flush();
}

void o_stream::tellLosses() {
    flush();
    if (!m_unwritten.empty()) {
        g_ostrm << ERR << "-- File " << m_name << " is incomplete: " << m_unwritten.size()
                << " lines could not be written\n"
                << msgEnd;
    } else if (!m_name.empty() && m_file != nullptr && std::ferror(m_file) != 0) {
        g_ostrm << ERR << "-- File " << m_name << " is incomplete\n" << msgEnd;
    }
}

krString krFileIdentity(const krString& name) {
    const krString path = krFullPath(name);
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        return path;
    }
    return S_ISREG(status.st_mode) ? krFormat("%lu:%lu", status.st_dev, status.st_ino) : krString();
}

static bool putLines(o_stream& stream, const krStringList& lines) {
    for (const krString& line : lines) {
        stream << line;
    }
    return std::fflush(stream.m_file) == 0 && std::ferror(stream.m_file) == 0;
}

// Puts a full copy in the place of a regular file of one name that may be written; false if that is not the way here.
static bool replaceByCopy(const krString& name, const krStringList& lines) {
    const krString path = krFullPath(name);
    struct stat old = {};
    if (stat(path.c_str(), &old) != 0 || !S_ISREG(old.st_mode) || old.st_nlink != 1 ||
        access(path.c_str(), W_OK) != 0) {
        return false;
    }
    char* const target = realpath(path.c_str(), nullptr);
    const krString goal = target;
    std::free(target);
    krString copy = goal + "." + std::string(6, 'X').c_str(); // mkstemp puts letters of its own in their place
    const int file = goal.empty() ? -1 : mkstemp(copy.data());
    if (file < 0) {
        return false;
    }
    o_stream stream(fdopen(file, "w"));
    if (fchown(file, old.st_uid, old.st_gid) != 0 || fchmod(file, old.st_mode & 07777U) != 0) {
        unlink(copy.c_str());
        return false;
    }
    if (!putLines(stream, lines) || std::rename(copy.c_str(), goal.c_str()) != 0) {
        unlink(copy.c_str());
        g_ostrm << ERR << "-- Can't write file " << name << ": it stays as it was\n" << msgEnd;
    }
    return true;
}

void krReplaceFile(const krString& name, const krStringList& lines) {
    if (replaceByCopy(name, lines)) {
        return;
    }
    o_stream file(name, ioWrite | ioRawName, true);
    if (file.m_file != nullptr) {
        putLines(file, lines);
        file.tellLosses();
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

// Where relative paths begin; empty for the directory of the moment.
static krString s_startDir;

void krHoldDirectory() {
    char* const directory = getcwd(nullptr, 0);
    if (directory != nullptr) {
        s_startDir = krString(directory) + "/";
        std::free(directory);
    }
}

krString krFullPath(const krString& path) {
    return path[0] == '/' ? path : s_startDir + path;
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

void krDestinations::tellLosses() {
    for (o_stream* stream : *this) {
        stream->tellLosses();
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
