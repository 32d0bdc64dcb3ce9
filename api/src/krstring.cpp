// Text: storage, searching, path pieces, the word splitter and the conversions between values and text.
#include "krstring.h"

#include <cctype>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// Grows with the number of blanks that a caller asks for.
krString blanks(int n) {
    krString text;
    text.resize(n, ' ');
    return text;
}

int lengthOf(const char* text) {
    return static_cast<int>(std::strlen(text));
}

// Numbers and letters of the program are those of the "C" locale, also after a function that has set another one.
class PlainText {
public:
    PlainText() : m_former(uselocale(plain())) {}
    PlainText(const PlainText&) = delete;
    PlainText& operator=(const PlainText&) = delete;
    ~PlainText() { uselocale(m_former); }

private:
    static locale_t plain() {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }
    locale_t m_former;
};

} // namespace

int getBufSize(int n) {
    return (n / 16 + 1) * 16;
}

krString::krString(const char* text) {
    init();
    assign(text);
}

krString::krString(char c) {
    init();
    assign(c);
}

krString::krString(const krString& other) {
    init();
    assign(other);
    m_failed = other.m_failed;
}

krString& krString::operator=(const krString& other) {
    if (this != &other) {
        assign(other);
        m_failed = other.m_failed;
    }
    return *this;
}

krString::~krString() {
    free();
}

void krString::init() {
    m_buffer = nullptr;
    m_length = 0;
    m_capacity = 0;
    m_failed = false;
}

void krString::allocate(int n) {
    if (n < 0) {
        n = 0;
    }
    const int size = getBufSize(n);
    if (size == m_capacity) {
        std::memset(m_buffer, 0, static_cast<size_t>(size)); // NOLINT(clang-analyzer-core.NonNullParamChecker)
    } else {
        std::free(m_buffer);
        m_buffer = static_cast<char*>(std::calloc(static_cast<size_t>(size), 1));
        m_capacity = size;
    }
    m_length = n;
}

void krString::free() {
    std::free(m_buffer);
    m_buffer = nullptr;
    m_length = 0;
    m_capacity = 0;
}

void krString::growBy(int n) {
    const int length = m_length + n;
    if (length < m_capacity) {
        m_length = length;
        return;
    }
    const int size = getBufSize(length);
    m_buffer = static_cast<char*>(std::realloc(m_buffer, static_cast<size_t>(size)));
    std::memset(m_buffer + m_length, 0, static_cast<size_t>(size - m_length));
    m_capacity = size;
    m_length = length;
}

void krString::assign(char c) {
    allocate(1);
    m_buffer[0] = c;
}

void krString::assign(const char* text) {
    const char* source = text == nullptr ? "" : text;
    const int length = lengthOf(source);
    if (m_buffer != nullptr && source >= m_buffer && source < m_buffer + m_capacity) {
        assign(krString(source));
        return;
    }
    allocate(length);
    std::memcpy(m_buffer, source, static_cast<size_t>(length));
}

void krString::assign(const krString& other) {
    if (this == &other) {
        return;
    }
    allocate(other.m_length);
    std::memcpy(m_buffer, other.m_buffer, static_cast<size_t>(other.m_length));
}

void krString::resize(int n, char fill) {
    if (n > m_length) {
        const int old = m_length;
        growBy(n - old);
        std::memset(m_buffer + old, fill, static_cast<size_t>(n - old));
    } else if (n < m_length) {
        assign(substr(0, n));
    }
}

krString& krString::operator+=(const krString& other) {
    const int old = m_length;
    const int added = other.m_length;
    growBy(added);
    std::memcpy(m_buffer + old, other.m_buffer, static_cast<size_t>(added));
    return *this;
}

krString krString::operator+(const krString& other) const {
    krString sum;
    sum.allocate(m_length + other.m_length);
    std::memcpy(sum.m_buffer, m_buffer, static_cast<size_t>(m_length));
    std::memcpy(sum.m_buffer + m_length, other.m_buffer, static_cast<size_t>(other.m_length));
    return sum;
}

bool krString::operator==(const krString& other) const {
    return std::strcmp(m_buffer, other.m_buffer) == 0;
}

int krString::find(const krString& pattern, int from) const {
    if (from > m_length) {
        return -1;
    }
    const char* place = std::strstr(m_buffer + from, pattern.m_buffer);
    return place == nullptr ? -1 : static_cast<int>(place - m_buffer);
}

int krString::rfind(const krString& pattern) const {
    for (int i = m_length - pattern.m_length; i >= 0; --i) {
        if (std::memcmp(m_buffer + i, pattern.m_buffer, static_cast<size_t>(pattern.m_length)) == 0) {
            return i;
        }
    }
    return -1;
}

krString krString::substr(int pos) const {
    return pos > m_length ? krString() : krString(m_buffer + pos);
}

krString krString::substr(int pos, int n) const {
    krString part;
    const int rest = m_length - pos;
    const int count = n < rest ? n : rest;
    if (count > 0) {
        part.allocate(count);
        std::memcpy(part.m_buffer, m_buffer + pos, static_cast<size_t>(count));
    }
    return part;
}

int krString::compare(const krString& other) const {
    const int difference = m_length - other.m_length;
    const int common = difference < 0 ? m_length : other.m_length;
    for (int i = 0; i < common; ++i) {
        const auto own = static_cast<signed char>(m_buffer[i]);
        const auto theirs = static_cast<signed char>(other.m_buffer[i]);
        if (own != theirs) {
            return own < theirs ? -1 : 1;
        }
    }
    return difference;
}

int krString::parse(krStringList& words, const krString& seps) const {
    return krParse(*this).parse(words, seps);
}

int krString::parse(krString& a, krString& b, const krString& seps) const {
    return krParse(*this).parse(a, b, seps);
}

int krString::parse(krString& a, krString& b, krString& c, const krString& seps) const {
    return krParse(*this).parse(a, b, c, seps);
}

void krString::trim() {
    int first = 0;
    while (first < m_length && (m_buffer[first] == ' ' || m_buffer[first] == '\t' || m_buffer[first] == '\r')) {
        ++first;
    }
    int last = m_length;
    // A carriage return at the end stays: files with such line ends show it in their values.
    while (last > first && (m_buffer[last - 1] == ' ' || m_buffer[last - 1] == '\t')) {
        --last;
    }
    assign(substr(first, last - first));
}

krString krString::toLower() const {
    const PlainText plain;
    krString lower(*this);
    for (int i = 0; i < lower.m_length; ++i) {
        lower.m_buffer[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(lower.m_buffer[i])));
    }
    return lower;
}

krString krString::getFileName() const {
    const int slash = rfind('/');
    const int back = rfind('\\');
    return substr((slash > back ? slash : back) + 1);
}

krString krString::getFileDir() const {
    const int slash = rfind('/');
    const int back = rfind('\\');
    return substr(0, (slash > back ? slash : back) + 1);
}

krString krString::getFileTitle() const {
    const krString name = getFileName();
    const int dot = name.rfind('.');
    return dot < 0 ? name : name.substr(0, dot);
}

krString krString::flagString(int value, const int* flags, const krString* names, int count) {
    krString text;
    for (int i = 0; i < count; ++i) {
        if ((value & flags[i]) != 0) {
            if (!text.empty()) {
                text += "|";
            }
            text += names[i];
        }
    }
    if (text.empty()) {
        text << value;
    }
    return text;
}

int krString::flagValue(krString& text, const int* flags, const krString* names, int count, int skip) {
    text.m_failed = false;
    krStringList words;
    text.parse(words, "|,; ");
    int value = 0;
    for (const krString& word : words) {
        int i = 0;
        while (i < count && !fitString(word, names[i], skip)) {
            ++i;
        }
        if (i < count) {
            value |= flags[i];
        } else {
            text.m_failed = true;
        }
    }
    return value;
}

krString krString::enumString(int value, const int* values, const krString* names, int count) {
    for (int i = 0; i < count; ++i) {
        if (values[i] == value) {
            return names[i];
        }
    }
    return krText(value);
}

int krString::enumValue(krString& text, const int* values, const krString* names, int count, int skip) {
    text.m_failed = false;
    for (int i = 0; i < count; ++i) {
        if (fitString(text, names[i], skip)) {
            return values[i];
        }
    }
    text.m_failed = true;
    return 0;
}

bool fitString(const krString& word, const krString& name, int skip) {
    const krString lowWord = word.toLower();
    const krString lowName = name.toLower();
    return lowName.substr(skip).find(lowWord) == 0 || lowName.find(lowWord) == 0;
}

// The quote states of the splitter; 0 and above is the index of the quote that opened the quoted part.
static constexpr int noQuotes = -100;
static constexpr int outside = -1;

krParse::krParse(const krString& text) : m_text(text) {
}

void krParse::initParse(const krString& seps) {
    m_position = 0;
    m_seps = seps;
    m_quote = seps.contains('"') ? noQuotes : outside;
}

bool krParse::isSeparator(int index) {
    const char c = m_text[index];
    if (m_quote >= 0) {
        if (c == '"') {
            m_quote = m_quote == index - 1 ? 0 : outside;
        }
        return false;
    }
    if (m_quote == outside && c == '"') {
        m_quote = index;
        return false;
    }
    return c != '\0' && m_seps.contains(c);
}

void krParse::removeQuote(krString& word) const {
    if (m_quote == noQuotes) {
        return;
    }
    while (word.contains("\"\"")) {
        // The place is always 1, wherever the pair stands.
        word = word.substr(0, 1) + word.substr(2);
    }
}

bool krParse::nextWord(krString& word) {
    word.assign("");
    int first = m_position;
    while (first < m_text.length() && isSeparator(first)) {
        ++first;
    }
    if (first >= m_text.length()) {
        return false;
    }
    // The first character is looked at a second time: a quote that opens a word thus closes at once.
    int last = first;
    while (last < m_text.length() && !isSeparator(last)) {
        ++last;
    }
    word = m_text.substr(first, last - first);
    removeQuote(word);
    m_position = last;
    return true;
}

int krParse::parse(krStringList& words, const krString& seps) {
    initParse(seps);
    words.clear();
    int count = 0;
    for (krString word; nextWord(word); ++count) {
        words.append(word);
    }
    return count;
}

int krParse::parse(krString& a, krString& b, const krString& seps) {
    krString surplus;
    return parse(a, b, surplus, seps);
}

int krParse::parse(krString& a, krString& b, krString& c, const krString& seps) {
    krString* const outputs[] = {&a, &b, &c};
    for (krString* output : outputs) {
        output->assign("");
    }
    krStringList words;
    const int count = parse(words, seps);
    int i = 0;
    for (const krString& word : words) {
        if (i == 3) {
            break;
        }
        *outputs[i++] = word;
    }
    return count;
}

uint64_t krHash::add(uint64_t hash, const krString& text) {
    constexpr uint64_t prime = 1099511628211U;
    for (const char* c = text.c_str(); *c != '\0'; ++c) {
        hash = (hash ^ static_cast<unsigned char>(*c)) * prime;
    }
    return (hash ^ 0x100U) * prime; // the end of a text
}

bool krStringList::has(const krString& text) const {
    for (const krString& entry : *this) {
        if (entry == text) {
            return true;
        }
    }
    return false;
}

krString sFormat(const krString& text, int width) {
    const int size = width < 0 ? -width : width;
    if (text.length() >= size) {
        return text;
    }
    const krString pad = blanks(size - text.length());
    return width < 0 ? text + pad : pad + text;
}

krString sFormat(double value, int width) {
    return sFormat(krText(value), width);
}

krString sFormat(int value, int width) {
    const krString text = krText(value);
    if (text.length() > std::abs(width) && text.length() > 9) {
        return sFormat(static_cast<double>(value), width);
    }
    return sFormat(text, width);
}

krString sFormat(long long value, int width) {
    if (value >= INT_MIN && value <= INT_MAX) {
        return sFormat(static_cast<int>(value), width);
    }
    return sFormat(static_cast<double>(value), width);
}

krString krFormat(const char* format, ...) {
    const PlainText plain;
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, args);
    va_end(args);
    krString text;
    if (length > 0) {
        text.allocate(length);
        std::vsnprintf(text.data(), static_cast<size_t>(length) + 1, format, again);
    }
    va_end(again);
    return text;
}

krString& operator<<(krString& text, const krString& value) {
    return text += value;
}

krString& operator<<(krString& text, const char* value) {
    return text += value;
}

krString& operator<<(krString& text, char value) {
    return text += value;
}

krString& operator<<(krString& text, const void* value) {
    return text += value == nullptr ? krString("NULL") : krFormat("%lX", reinterpret_cast<unsigned long>(value));
}

krString& operator<<(krString& text, bool value) {
    return text += value ? "yes" : "no";
}

krString& operator<<(krString& text, long long value) {
    return text += krFormat((krString("%") + krString::prefixI64() + "d").c_str(), value);
}

krString& operator<<(krString& text, double value) {
    return text += krFormat("%.3g", value);
}

krString& operator<<(krString& text, float value) {
    return text << static_cast<double>(value);
}

krString& operator<<(krString& text, int value) {
    return text += krFormat("%d", value);
}

krString& operator<<(krString& text, short value) {
    return text << static_cast<int>(value);
}

krString& operator<<(krString& text, unsigned int value) {
    return text += krFormat("%u", value);
}

bool& operator<<(bool& value, krString& text) {
    text.m_failed = false;
    krString word = text.toLower();
    word.trim();
    value = false;
    const char first = word[0];
    if (first == 'y' || first == 't' || word == "1") {
        value = true;
    } else if (first != 'n' && first != 'f' && !(word == "0")) {
        text.m_failed = true;
    }
    return value;
}

namespace {

// Scans one number; the text fails when something stands there that is no number, and not when nothing stands there.
template <class T>
void scanText(T& value, krString& text, const char* format) {
    const PlainText plain;
    text.m_failed = std::sscanf(text.c_str(), format, &value) == 0;
}

// "%d" with the length modifier, or the hexadecimal form in the letter of the text's own prefix.
template <class T>
void scanInteger(T& value, krString& text, const krString& modifier, const char* decimal) {
    const bool hex = text.length() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const krString format = krString("%") + modifier + (hex ? krString(text[1]) : krString(decimal));
    scanText(value, text, format.c_str());
}

} // namespace

long long& operator<<(long long& value, krString& text) {
    scanInteger(value, text, krString::prefixI64(), "d");
    return value;
}

double& operator<<(double& value, krString& text) {
    scanText(value, text, "%lf");
    return value;
}

float& operator<<(float& value, krString& text) {
    auto wide = static_cast<double>(value);
    wide << text;
    value = static_cast<float>(wide);
    return value;
}

int& operator<<(int& value, krString& text) {
    scanInteger(value, text, "", "d");
    return value;
}

short& operator<<(short& value, krString& text) {
    scanInteger(value, text, "h", "d");
    return value;
}

unsigned int& operator<<(unsigned int& value, krString& text) {
    scanInteger(value, text, "", "u");
    return value;
}
