// How a library was built, read from its exported functions: see BuildQuality.
#include "machinestate.h"
#include "readat.h"

#include <cstring>
#include <elf.h>

namespace krlab {

namespace {

/// Place in the file of an address in the loaded image.
bool placeOf(std::string_view file, const Elf64_Ehdr& head, Elf64_Addr address, size_t& place) {
    for (size_t i = 0; i < head.e_phnum; ++i) {
        Elf64_Phdr segment;
        if (!readAt(file, head.e_phoff + i * sizeof segment, segment)) {
            return false;
        }
        if (segment.p_type == PT_LOAD && address >= segment.p_vaddr && address - segment.p_vaddr < segment.p_filesz) {
            place = segment.p_offset + (address - segment.p_vaddr);
            return true;
        }
    }
    return false;
}

/// "push %rbp; mov %rsp,%rbp", with the landing mark of indirect branches before it or not.
bool setsFrame(std::string_view code) {
    if (code.starts_with("\xf3\x0f\x1e\xfa")) {
        code.remove_prefix(4);
    }
    return code.starts_with("\x55\x48\x89\xe5");
}

} // namespace

BuildQuality buildQualityOf(std::string_view file) {
    BuildQuality quality;
    Elf64_Ehdr head;
    if (!readAt(file, 0, head) || std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0) {
        return quality;
    }
    for (size_t i = 0; i < head.e_shnum; ++i) {
        Elf64_Shdr section;
        if (!readAt(file, head.e_shoff + i * sizeof section, section)) {
            break;
        }
        if (section.sh_type != SHT_DYNSYM || section.sh_offset > file.size()) {
            continue;
        }
        for (size_t at = 0; at + sizeof(Elf64_Sym) <= section.sh_size; at += sizeof(Elf64_Sym)) {
            Elf64_Sym symbol;
            if (!readAt(file, section.sh_offset + at, symbol)) {
                break;
            }
            size_t place = 0;
            if (ELF64_ST_TYPE(symbol.st_info) == STT_FUNC && symbol.st_shndx != SHN_UNDEF &&
                placeOf(file, head, symbol.st_value, place) && place <= file.size()) {
                ++quality.functions;
                quality.framed += setsFrame(file.substr(place, 8)) ? 1 : 0;
            }
        }
    }
    quality.sanitized = file.find("libasan.so") != std::string_view::npos ||
                        file.find("libtsan.so") != std::string_view::npos ||
                        file.find("libubsan.so") != std::string_view::npos;
    return quality;
}

} // namespace krlab
