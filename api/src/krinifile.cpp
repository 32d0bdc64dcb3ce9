// The parameter file in memory.
#include "krinifile.h"

#include "krio.h"

#include <sys/stat.h>
#include <unistd.h>

static const char* const s_bareKey = "~~~";

static void deleteSection(krSectionItem* section) {
    for (krValueItem* item : *section->values) {
        delete item;
    }
    delete section->values;
    delete section;
}

krIniFile::~krIniFile() {
    close();
}

// A character device other than a terminal has no end that could be reached: it counts as an empty file.
static bool isDevice(FILE* file) {
    struct stat status = {};
    return fstat(fileno(file), &status) == 0 && S_ISCHR(status.st_mode) && isatty(fileno(file)) == 0;
}

bool krIniFile::open(const krString& name, bool write) {
    m_write = write;
    m_fileName = name;
    i_stream input(name, ioRead | ioRawName, !write);
    if (input.m_file != nullptr) {
        if (isDevice(input.m_file)) {
            return true;
        }
        krString line;
        krString section;
        while (input.getline(line)) {
            readLine(line, section);
        }
        return true;
    }
    if (!write) {
        return false;
    }
    const o_stream output(name, ioWrite | ioAppend | ioRawName, true);
    m_write = output.m_file != nullptr;
    return m_write;
}

// `section` is the current one; an empty text is no section, or one whose name is empty and that exists.
void krIniFile::readLine(krString line, krString& section) {
    const int comment = line.find("//");
    if (comment >= 0) {
        line = line.substr(0, comment);
    }
    line.trim();
    if (line.empty()) {
        return;
    }
    krString name;
    if (getSection(line, name)) {
        section = name;
        write(section);
        return;
    }
    if (m_sections.exist(section) != nullptr) {
        krString key;
        krString value;
        getValue(line, key, value);
        write(section, key, value, "");
    }
}

bool krIniFile::getSection(const krString& line, krString& name) {
    const int open = line.find("[");
    if (open < 0) {
        return false;
    }
    const int close = line.find("]", open);
    if (close < 0) {
        return false;
    }
    name = line.substr(open + 1, close - open - 1);
    name.trim();
    return true;
}

bool krIniFile::getValue(const krString& line, krString& key, krString& value) {
    const int equals = line.find("=");
    if (equals < 0) {
        key = line;
        value = s_bareKey;
    } else {
        key = line.substr(0, equals);
        value = line.substr(equals + 1);
        value.trim();
    }
    key.trim();
    return true;
}

bool krIniFile::sectionExist(const krString& section) const {
    return m_sections.exist(section) != nullptr;
}

bool krIniFile::valueExist(const krString& section, const krString& key) const {
    const krValues* values = getSectionValues(section);
    return values != nullptr && values->exist(key) != nullptr;
}

krString krIniFile::read(const krString& section, const krString& key, const krString& defaultValue) const {
    const krValues* values = getSectionValues(section);
    if (values == nullptr) {
        return defaultValue;
    }
    krString name = key;
    name.trim();
    const krValueItem* item = values->exist(name);
    return item == nullptr ? defaultValue : item->value;
}

void krIniFile::write(const krString& section, const krString& key, const krString& value, const krString& comment) {
    krSectionItem* place = m_sections.exist(section);
    if (place == nullptr) {
        place = new krSectionItem{section, new krValues};
        m_sections.add(section, place);
    }
    krString name = key;
    name.trim();
    if (name.empty()) {
        return;
    }
    krValueItem* item = place->values->exist(name);
    if (item == nullptr) {
        place->values->add(name, new krValueItem{name, value, comment});
    } else {
        item->value = value;
    }
}

void krIniFile::write(const krString& section, const krString& key) {
    write(section, key, s_bareKey, "");
}

void krIniFile::write(const krString& section) {
    write(section, "", "", "");
}

krValues* krIniFile::getSectionValues(const krString& section) const {
    const krSectionItem* item = m_sections.exist(section);
    return item == nullptr ? nullptr : item->values;
}

void krIniFile::eraseSection(const krString& section) {
    krSectionItem* item = m_sections.drop(section);
    if (item != nullptr) {
        deleteSection(item);
    }
}

void krIniFile::deleteKey(const krString& section, const krString& key) {
    krValues* values = getSectionValues(section);
    if (values != nullptr) {
        delete values->drop(key);
    }
}

void krIniFile::updateFile() const {
    if (!m_write) {
        return;
    }
    krStringList lines;
    for (const krSectionItem* section : m_sections) {
        lines.append(krString("\n[") + section->name + "]\n");
        for (const krValueItem* item : *section->values) {
            krString line = item->key;
            if (!(item->value == s_bareKey)) {
                line << "=" << item->value;
                if (!item->comment.empty()) {
                    line << "\t// " << item->comment;
                }
            }
            lines.append(line << "\n");
        }
    }
    krReplaceFile(m_fileName, lines);
}

void krIniFile::close() {
    updateFile();
    for (krSectionItem* section : m_sections) {
        deleteSection(section);
    }
    m_sections.clear();
    // The sections are gone: a later close would leave an empty file in place of the one just written.
    m_write = false;
}
