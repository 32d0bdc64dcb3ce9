#include "buildid.h"

#include "readat.h"

#include <cstring>
#include <elf.h>
#include <fmt/format.h>

using namespace std::string_view_literals;

namespace krlab {

namespace {

size_t roundedUp(size_t n) {
    return (n + 3) / 4 * 4;
}

std::string buildIdIn(std::string_view notes) {
    size_t at = 0;
    Elf64_Nhdr note;
    while (readAt(notes, at, note)) {
        const size_t name = at + sizeof note;
        const size_t text = name + roundedUp(note.n_namesz);
        if (text > notes.size() || notes.size() - text < note.n_descsz) {
            return "";
        }
        if (note.n_type == NT_GNU_BUILD_ID && notes.substr(name, note.n_namesz) == "GNU\0"sv) {
            std::string id;
            for (const char c : notes.substr(text, note.n_descsz)) {
                id += fmt::format("{:02x}", static_cast<unsigned char>(c));
            }
            return id;
        }
        at = text + roundedUp(note.n_descsz);
    }
    return "";
}

} // namespace

std::string buildIdOf(std::string_view file) {
    Elf64_Ehdr head;
    if (!readAt(file, 0, head) || std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0 ||
        head.e_ident[EI_CLASS] != ELFCLASS64) {
        return "";
    }
    for (size_t i = 0; i < head.e_phnum; ++i) {
        Elf64_Phdr segment;
        if (!readAt(file, head.e_phoff + i * sizeof segment, segment)) {
            return "";
        }
        if (segment.p_type == PT_NOTE && segment.p_offset <= file.size()) {
            if (std::string id = buildIdIn(file.substr(segment.p_offset, segment.p_filesz)); !id.empty()) {
                return id;
            }
        }
    }
    return "";
}

} // namespace krlab
