// Text: the one owned string class, its list, the conversions between values and text, and the word tables.
// Everything that the harness reads or prints is spelled through this room; files and streams are in krio.
#pragma once

#include "krlist.h"

#include <cstddef>
#include <cstdint>

/// Owned, zero-terminated text. Buffers are zero-filled multiples of 16 bytes with no geometric growth.
class krString {
public:
    krString() : krString("") {}
    krString(const char* text); // NOLINT(google-explicit-constructor): text literals are strings everywhere
    krString(char c);           // NOLINT(google-explicit-constructor)
    krString(const krString& other);
    krString& operator=(const krString& other);
    virtual ~krString();

    /// Clears all fields without releasing anything.
    void init();
    /// Sets the length (0 if `n` is negative) and gives a buffer that is zero throughout. The old text is lost.
    void allocate(int n);
    void free();
    /// Lengthens by `n` characters and keeps the old text; the new places are zero.
    void growBy(int n);
    void assign(char c);
    void assign(const char* text);
    void assign(const krString& other);
    /// Changes the length to `n`; new places get `fill`.
    void resize(int n, char fill);

    krString& operator+=(const krString& other);
    krString operator+(const krString& other) const;
    bool operator==(const krString& other) const;

    const char* c_str() const { return m_buffer; }
    char* data() { return m_buffer; }
    int length() const { return m_length; }
    int capacity() const { return m_capacity; }
    bool empty() const { return m_length == 0; }
    char operator[](int index) const { return m_buffer[index]; }

    /// Index of the first occurrence at or after `from`, else -1.
    int find(const krString& pattern, int from = 0) const;
    /// Index of the last occurrence, else -1.
    int rfind(const krString& pattern) const;
    bool contains(const krString& pattern) const { return find(pattern) >= 0; }
    krString substr(int pos) const;
    krString substr(int pos, int n) const;
    /// -1 or 1 at the first difference of signed characters, else the difference of the lengths.
    int compare(const krString& other) const;
    /// The length modifier of 64-bit integers in format strings.
    static krString prefixI64() { return "L"; }

    /// Splits a copy of the text into words; each returns the number of words found.
    int parse(class krStringList& words, const krString& seps) const;
    int parse(krString& a, krString& b, const krString& seps) const;
    int parse(krString& a, krString& b, krString& c, const krString& seps) const;

    /// Removes leading blanks, tabs and carriage returns, and trailing blanks and tabs.
    void trim();
    krString toLower() const;
    krString getFileName() const;
    krString getFileDir() const;
    krString getFileTitle() const;

    /// The names of the flags set in `value`, joined by "|"; the number itself if none is.
    static krString flagString(int value, const int* flags, const krString* names, int count);
    static int flagValue(krString& text, const int* flags, const krString* names, int count, int skip);
    static krString enumString(int value, const int* values, const krString* names, int count);
    /// Value of the first entry that `text` abbreviates; else 0, with `text.m_failed` set.
    static int enumValue(krString& text, const int* values, const krString* names, int count, int skip);

private:
    char* m_buffer;
    int m_length;
    int m_capacity;

public:
    bool m_failed; ///< the result of the last conversion from this string
};

/// A number that equal texts share, for tables that are searched by text.
struct krHash {
    std::size_t operator()(const krString& text) const { return add(14695981039346656037U, text); }
    /// The number of a text that follows others, of which `hash` is the number.
    static uint64_t add(uint64_t hash, const krString& text);
};

class krStringList : public krList<krString> {
public:
    bool has(const krString& text) const;
};

/// The word splitter. A double quote inside a word protects separators; one at the start of a word protects nothing.
class krParse {
public:
    explicit krParse(const krString& text);
    void initParse(const krString& seps);
    bool isSeparator(int index);
    void removeQuote(krString& word) const;
    bool nextWord(krString& word);
    int parse(krStringList& words, const krString& seps);
    int parse(krString& a, krString& b, const krString& seps);
    int parse(krString& a, krString& b, krString& c, const krString& seps);

private:
    krString m_text;
    krString m_seps;
    int m_position = 0;
    int m_quote = -1;
};

/// n + 1 rounded up to a multiple of 16.
int getBufSize(int n);
/// True if `word` is a case-insensitive beginning of `name`, or of `name` after its first `skip` characters.
bool fitString(const krString& word, const krString& name, int skip);

/// Pads with blanks to |width|: on the left for a positive width, on the right for a negative one. Never cuts.
krString sFormat(const krString& text, int width);
krString sFormat(double value, int width);
krString sFormat(int value, int width);
krString sFormat(long long value, int width);
inline krString sFormat(const char* text, int width) {
    return sFormat(krString(text), width);
}

/// printf into a string, for formats that are not one of the conversions below.
krString krFormat(const char* format, ...);

krString& operator<<(krString& text, const krString& value);
krString& operator<<(krString& text, const char* value);
krString& operator<<(krString& text, char value);
krString& operator<<(krString& text, const void* value);
krString& operator<<(krString& text, bool value);
krString& operator<<(krString& text, long long value);
krString& operator<<(krString& text, double value);
krString& operator<<(krString& text, float value);
krString& operator<<(krString& text, int value);
krString& operator<<(krString& text, short value);
krString& operator<<(krString& text, unsigned int value);

bool& operator<<(bool& value, krString& text);
long long& operator<<(long long& value, krString& text);
double& operator<<(double& value, krString& text);
float& operator<<(float& value, krString& text);
int& operator<<(int& value, krString& text);
short& operator<<(short& value, krString& text);
unsigned int& operator<<(unsigned int& value, krString& text);

/// The text of one value, as the conversions above spell it.
template <class T>
krString krText(const T& value) {
    krString text;
    text << value;
    return text;
}
