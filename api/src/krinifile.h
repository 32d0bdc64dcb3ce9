// The parameter file in memory: ordered sections of ordered keys, read once and, if asked for, written once at the end.
// Which parameters land in it is the affair of krIStream; the path comes already resolved.
#pragma once

#include "krlist.h"
#include "krstring.h"

#include <unordered_map>

struct krValueItem {
    krString key;
    krString value;   ///< "~~~" marks a key that has no "=" in the file
    krString comment; ///< only ever written, never read back
};

/// Items in the order in which they were added, each under a name of its own that finds it in constant time. They
/// belong to the krIniFile.
template <class Item>
class krNamedItems : public krList<Item*> {
public:
    /// The item of that name, or null; exact comparison.
    Item* exist(const krString& name) const {
        const auto found = m_index.find(name);
        return found == m_index.end() ? nullptr : found->second;
    }
    void add(const krString& name, Item* item) {
        krList<Item*>::append(item);
        m_index.emplace(name, item);
    }
    /// Takes the item of that name off the list and returns it, or null.
    Item* drop(const krString& name) {
        Item* const item = exist(name);
        if (item != nullptr) {
            m_index.erase(name);
            auto place = this->begin();
            while (*place != item) {
                ++place;
            }
            this->erase(place);
        }
        return item;
    }
    void clear() {
        krList<Item*>::clear();
        m_index.clear();
    }

private:
    std::unordered_map<krString, Item*, krHash> m_index;
};

/// The keys of one section.
using krValues = krNamedItems<krValueItem>;

struct krSectionItem {
    krString name;
    krValues* values; ///< owned
};

using krSections = krNamedItems<krSectionItem>;

/// One ini-file. A section head that stands twice continues the first; a key that stands twice keeps its first place
/// and its last value.
class krIniFile {
public:
    krIniFile() = default;
    krIniFile(const krIniFile&) = delete;
    krIniFile& operator=(const krIniFile&) = delete;
    /// Closes the file, and so rewrites it if it was opened for writing.
    ~krIniFile();

    /// Reads the file. With `write` a missing file is created; false if it can't be read or created.
    bool open(const krString& name, bool write);
    /// Rewrites the file if it was opened for writing, and forgets all sections. A second call writes nothing.
    void close();

    /// True if `line` is a section head, with the trimmed text between the brackets.
    static bool getSection(const krString& line, krString& name);
    /// Splits `line` at its first "="; a line without one has the value "~~~". Always true.
    static bool getValue(const krString& line, krString& key, krString& value);

    bool sectionExist(const krString& section) const;
    bool valueExist(const krString& section, const krString& key) const;
    krString read(const krString& section, const krString& key, const krString& defaultValue) const;
    /// Appends the key with its comment, or replaces the value alone if the key exists.
    void write(const krString& section, const krString& key, const krString& value, const krString& comment);
    void write(const krString& section, const krString& key);
    /// Only makes sure that the section exists.
    void write(const krString& section);
    krValues* getSectionValues(const krString& section) const;
    void eraseSection(const krString& section);
    void deleteKey(const krString& section, const krString& key);
    /// Writes the file anew; does nothing unless it was opened for writing.
    void updateFile() const;

private:
    void readLine(krString line, krString& section);

    krString m_fileName;
    krSections m_sections;
    bool m_write = false;
};
