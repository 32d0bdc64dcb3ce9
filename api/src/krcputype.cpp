// Processor types by name, and what the harness finds out about the processor without a library.
#include "krcpuid.h"
#include "krlib.h"

// The library's published list of processor types.
struct CpuTypeRow {
    int code;
    const char* label;
    const char* name;
};
static const CpuTypeRow cpuTypeArray[] = {
    {0, "Unknown", "Unknown processor"},
    {1, "G1", "Orvan generation 1"},
    {2, "G2", "Orvan generation 2"},
    {3, "G3", "Orvan generation 3"},
    {4, "G4", "Orvan generation 4"},
    {5, "G5", "Orvan generation 5"},
    {6, "G6", "Orvan generation 6"},
    {7, "G7", "Orvan generation 7"},
    {8, "G8", "Orvan generation 8"},
    {9, "G9", "Orvan generation 9"},
    {10, "G10", "Orvan generation 10"},
    {11, "G11", "Orvan generation 11"},
    {16, "G16", "Orvan generation 16, server line"},
    {17, "G17", "Orvan generation 17, server line"},
    {32, "G32", "Orvan generation 32"},
    {33, "G33", "Orvan generation 33, two cores"},
    {34, "G34", "Orvan generation 34, four cores"},
    {35, "G35", "Orvan generation 2 series 35"},
    {36, "G36", "Orvan generation 36, low power"},
    {37, "G37", "Orvan generation 37"},
    {38, "G38", "Orvan Next generation 38"},
    {64, "V1", "Processor supporting SSX level 1"},
    {65, "V2", "Processor supporting SSX level 2"},
    {66, "V3", "Processor supporting SSX level 3"},
    {67, "V4", "Processor supporting SSX level 4"},
    {68, "V5", "Processor supporting SSX level 5"},
    {69, "V6", "Processor supporting SSX level 6"},
    {70, "V7", "Processor supporting the 256-bit float extension"},
    {71, "V8", "Processor supporting the 256-bit integer extension"},
    {96, "X64", "Processor supporting the 64-bit extension"},
};
constexpr int s_cpuTypeCount = static_cast<int>(sizeof cpuTypeArray / sizeof cpuTypeArray[0]);

static const CpuTypeRow* findCpuType(int cpuType) {
    for (const CpuTypeRow& row : cpuTypeArray) {
        if (row.code == cpuType) {
            return &row;
        }
    }
    return nullptr;
}

int krCpuType::cpuType(const krString& label) {
    for (const CpuTypeRow& row : cpuTypeArray) {
        if (label == row.label) {
            return row.code;
        }
    }
    return -1;
}

krString krCpuType::cpuName(int cpuType) {
    const CpuTypeRow* row = findCpuType(cpuType);
    if (row == nullptr) {
        return "Unknown processor";
    }
    krString name = row->name;
    updateCpuName(cpuType, name);
    return name;
}

krString krCpuType::cpuLabel(int cpuType) {
    const CpuTypeRow* row = findCpuType(cpuType);
    return row == nullptr ? "Undefined" : row->label;
}

int krCpuType::count() {
    return s_cpuTypeCount;
}

void krCpuType::row(int index, int& cpuType, krString& label, krString& name) {
    cpuType = cpuTypeArray[index].code;
    label = cpuTypeArray[index].label;
    name = cpuTypeArray[index].name;
}

void krCpuType::updateCpuName(int cpuType, krString& name) {
    constexpr int namedByCores = 35;
    const krString mark = " 2 ";
    const int place = name.find(mark);
    if (cpuType != namedByCores || place < 0) {
        return;
    }
    const int cores = kr_vekGetNumCoresOnDie();
    const krString word = cores == 2 ? "Duo " : cores == 4 ? "Quad " : "";
    const int after = place + mark.length();
    name = name.substr(0, after) + word + name.substr(after);
}

static krString formatLabel(const krString& label) {
    return sFormat(label, -9);
}

krString krCpuType::optimizedList() {
    krString text;
    for (const CpuTypeRow& row : cpuTypeArray) {
        if (row.code == 0) {
            text += formatLabel(row.label) + ": non optimized code\n";
        } else if (krString(row.name).find("Orvan Next") != 0) {
            text += formatLabel(row.label) + ": optimized for " + row.name + "\n";
        }
    }
    return text;
}

// ---------------------------------------------------------------------------------------------------- detection

// Code of a processor of the maker by family and model, or 0.
static int orvanCpuType(const vekCyclonIdent& id, unsigned family, unsigned model) {
    if (family == 6) {
        if (model == 15 && id.hasSsx3s != 0) {
            return id.cores < 3 ? 33 : 34;
        }
        if (model == 23 && id.hasSsx41 != 0) {
            return 35;
        }
        if (model == 26 && id.hasSsx5 != 0) {
            return 70;
        }
        if (model == 26 && id.hasSsx42 != 0) {
            return 37;
        }
        if (model == 28 && id.hasSsx3s != 0 && id.hasMovbe != 0) {
            return 36;
        }
    }
    return family == 15 ? 66 : 0;
}

int kr_vekGetCpuType() {
    if (!vek_has_cpuid()) {
        return 0;
    }
    vekCyclonIdent id{};
    vek_get_cyclon_ident(&id);
    const bool extended = id.family == 6 || id.family == 15;
    const unsigned model = id.model + (extended ? 16 * id.exModel : 0);
    const unsigned family = id.family == 15 ? id.exFamily + 15 : id.family;
    const int cpuType = vek_is_GenuineOrvan() ? orvanCpuType(id, family, model) : 0;
    if (cpuType != 0) {
        return cpuType;
    }
    const struct {
        unsigned flag;
        int code;
    } levels[] = {{id.hasSsx5, 70}, {id.hasSsx42, 69}, {id.hasSsx41, 68}, {id.hasSsx3s, 67},
                  {id.hasSsx3, 66}, {id.hasSsx2, 65},  {id.hasSsx, 64},   {id.has64bit, 96}};
    for (const auto& level : levels) {
        if (level.flag != 0) {
            return level.code;
        }
    }
    return 0;
}

int kr_vekGetNumCoresOnDie() {
    return static_cast<int>(krCoresOfPackage());
}

// ---------------------------------------------------------------------------------------------------- cache size

// Descriptors of function 2, in falling order of size. A descriptor of 0 ends the table.
struct CacheRow {
    unsigned char descriptor;
    int kilobytes;
};
static const CacheRow tableCache[] = {
    {0xEC, 24576}, {0xEB, 18432}, {0x4D, 16384}, {0xEA, 12288}, {0x4C, 12288}, {0xE4, 8192}, {0xDE, 8192}, {0x4B, 8192},
    {0x47, 8192},  {0x4E, 6144},  {0x4A, 6144},  {0xE3, 4096},  {0xDD, 4096},  {0xD8, 4096}, {0x49, 4096}, {0x29, 4096},
    {0x46, 4096},  {0x48, 3072},  {0xE2, 2048},  {0xDC, 2048},  {0xD7, 2048},  {0xD2, 2048}, {0x25, 2048}, {0x7D, 2048},
    {0x85, 2048},  {0x45, 2048},  {0xD6, 1024},  {0xD1, 1024},  {0x23, 1024},  {0x87, 1024}, {0x7C, 1024}, {0x78, 1024},
    {0x84, 1024},  {0x44, 1024},  {0xD0, 512},   {0x22, 512},   {0x7B, 512},   {0x80, 512},  {0x86, 512},  {0x3E, 512},
    {0x7F, 512},   {0x83, 512},   {0x43, 512},   {0x3D, 384},   {0x21, 256},   {0x7A, 256},  {0x82, 256},  {0x3C, 256},
    {0x3F, 256},   {0x42, 256},   {0x3A, 192},   {0x79, 128},   {0x39, 128},   {0x3B, 128},  {0x41, 128},  {0, 0},
};

// Bytes of the largest cache that function 2 describes, or -1.
static int lookUpCacheSize() {
    const CPUID leaf(2, 0);
    if (leaf.getBits(CPUID::EAX, 7, 0) != 1) {
        return -1;
    }
    unsigned char bytes[16];
    int count = 0;
    for (int reg = CPUID::EAX; reg <= CPUID::EDX; ++reg) {
        if (leaf.getBit(reg, 31) == 0 && leaf.m_regs[reg] != 0) {
            for (int i = 0; i < 4; ++i) {
                bytes[count++] = static_cast<unsigned char>(leaf.getByte(reg, i));
            }
        }
    }
    for (const CacheRow* row = tableCache; row->descriptor != 0; ++row) {
        for (int i = 1; i < count; ++i) { // the first byte counts the reads of the leaf
            if (bytes[i] == row->descriptor) {
                return row->kilobytes * 1024;
            }
        }
    }
    return -1;
}

// Bytes of the largest cache that function 4 tells and that holds data, or 0.
static int largestDataCache() {
    unsigned largest = 0;
    for (int i = 0; i < 32; ++i) {
        const unsigned type = CPUID(4, static_cast<unsigned>(i)).getBits(CPUID::EAX, 4, 0);
        if (type == 0) {
            break;
        }
        const unsigned size = type == 2 ? 0 : static_cast<unsigned>(getCacheSizeB(i));
        largest = size > largest ? size : largest;
    }
    return static_cast<int>(largest);
}

constexpr int s_cacheNotAsked = 1;
constexpr int s_cacheOtherCpu = 36;
constexpr int s_cacheNotFound = 37;

// Of the process: what the first call found.
static int s_cacheStatus = s_cacheNotAsked;
static int s_cacheSize = 0;

static void findCacheSize() {
    s_cacheSize = 0;
    if (!vek_has_cpuid() || vek_max_cpuid_input() <= 1 || !vek_is_GenuineOrvan()) {
        s_cacheStatus = s_cacheOtherCpu;
        return;
    }
    const int size = vek_max_cpuid_input() < 4 ? lookUpCacheSize() : largestDataCache();
    s_cacheStatus = s_cacheNotFound;
    if (size > 0) {
        s_cacheStatus = 0;
        s_cacheSize = size;
    }
}

int kr_vekGetMaxCacheSizeB(int* size) {
    if (s_cacheStatus == s_cacheNotAsked) {
        findCacheSize();
    }
    *size = s_cacheSize;
    return s_cacheStatus;
}

void kr_vekForgetMaxCacheSizeB() {
    s_cacheStatus = s_cacheNotAsked;
}

int krGetMaxCacheSizeB() {
    int size = 0;
    if (kr_vekGetMaxCacheSizeB(&size) == 0 && size > 0) {
        return size;
    }
    return getMaxCacheSizeB();
}
