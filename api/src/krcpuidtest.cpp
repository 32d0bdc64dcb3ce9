// The machine reports: processor, operating system, host.
#include "krcpuidtest.h"

#include "krinfo.h"
#include "krstream.h"

const char* doubleLine = "===============================================================================\n";
const char* singleLine = "-------------------------------------------------------------------------------\n";
const char* starLine = "*******************************************************************************\n";

__krInfoTest::__krInfoTest(const krString& name, const krString& file, const krString& info)
    : krTest(nullptr, nullptr, name, file, info) {
}

void __krInfoTest::loopData() {
    g_ostrm << ERR;
    printInformation();
    g_ostrm << msgEndFlush;
    krTest::m_currentResult = krOk;
}

void __krOSTest::printInformation() {
    g_ostrm << " OS       : " << g_os.text() << "\n";
}

void __krHostTest::printInformation() {
    g_ostrm << " Computer : " << g_host.text() << "\n";
}

void __krOrvanCpuTest::printInformation() {
    if (!vek_has_cpuid()) {
        printShortForm();
    } else {
        printHeader();
        printSignature();
        printFlags();
        printMultiThreading();
        printCacheParms();
        printL2Features();
    }
    g_ostrm << starLine;
}

// ---------------------------------------------------------------------------------------------------- lines

static void printTitle(const char* title) {
    g_ostrm << "\n" << doubleLine << "    " << title << "\n\n";
}

static void printNumber(const char* name, unsigned value) {
    g_ostrm << name << value << "\n";
}

static void printNoted(const char* name, unsigned value, const char* note) {
    g_ostrm << name << krFormat("%-4d", static_cast<int>(value)) << " - " << note << "\n";
}

static void printFlagRow(const krString& name, const FlagInfo* flag, unsigned value) {
    g_ostrm << sFormat(name, -11);
    if (flag == nullptr) {
        g_ostrm << "? - unknown flag???????\n";
    } else {
        g_ostrm << value << " - " << flag->description << "\n";
    }
}

static void printFlagRow(const krString& name, unsigned value) {
    printFlagRow(name, findFeatureFlag(name), value);
}

// ---------------------------------------------------------------------------------------------------- paragraphs

void __krOrvanCpuTest::printShortForm() {
    vekCyclonIdent id{};
    vek_get_cyclon_ident(&id);
    g_ostrm << starLine << "    Orvan Processor Identification\n" << starLine << "\n";
    g_ostrm << "    Genuine Orvan      " << (vek_is_GenuineOrvan() ? "true" : "false") << "\n";
    printNumber("Family   ", id.family + id.exFamily);
    printNumber("Model    ", 16 * id.exModel + id.model);
    printNumber("Stepping ", id.stepping);
    printFlagRow("PKI", id.hasPki);
    printFlagRow("SSX", id.hasSsx);
    printFlagRow("SSX2", id.hasSsx2);
    printFlagRow("SSX3", id.hasSsx3);
    printFlagRow("64-bit", id.has64bit);
}

static void appendBytes(krString& text, const CPUID& id, int reg) {
    for (int i = 0; i < 4; ++i) {
        const char c = id.getByte(reg, i);
        if (c != '\0') {
            text << c;
        }
    }
}

void __krOrvanCpuTest::printHeader() {
    krString vendor;
    const CPUID zero(0, 0);
    for (const int reg : {CPUID::EBX, CPUID::EDX, CPUID::ECX}) {
        appendBytes(vendor, zero, reg);
    }
    krString brand;
    if (CPUID::validFunction(0x80000004U)) {
        for (unsigned function = 0x80000002U; function <= 0x80000004U; ++function) {
            const CPUID part(function, 0);
            for (int reg = CPUID::EAX; reg <= CPUID::EDX; ++reg) {
                appendBytes(brand, part, reg);
            }
        }
    }
    g_ostrm << starLine << "    Orvan Processor Identification\n"
            << "    Got by CPUID Instruction Functions\n";
    if (!(vendor == "GenuineOrvan")) {
        g_ostrm << "\n    ATTENTION! It is not Genuine Orvan processor.\n"
                << "    Information below may be inadequate.\n";
    }
    g_ostrm << starLine << "\n";
    g_ostrm << PERF << "Largest Standard Function " << krFormat("0x%08X", CPUID::largestFunction()) << "\n"
            << "Largest Extended Function " << krFormat("0x%08X", CPUID::largestExFunction()) << "\n"
            << msgEnd;
    g_ostrm << "Vendor-ID      " << vendor << "\n";
    if (!brand.empty()) {
        g_ostrm << "Brand String   " << brand << "\n";
    }
}

void __krOrvanCpuTest::printSignature() {
    if (!CPUID::validFunction(1)) {
        return;
    }
    const CPUID id(1, 0);
    printTitle("Processor Identification Signature");
    printNumber("Family   ", id.getBits(CPUID::EAX, 11, 8) + id.getBits(CPUID::EAX, 27, 20));
    printNumber("Model    ", 16 * id.getBits(CPUID::EAX, 19, 16) + id.getBits(CPUID::EAX, 7, 4));
    printNumber("Stepping ", id.getBits(CPUID::EAX, 3, 0));
    printNumber("Type     ", id.getBits(CPUID::EAX, 13, 12));
    const unsigned brand = id.getBits(CPUID::EBX, 7, 0);
    if (brand != 0) {
        g_ostrm << "Brand ID " << krFormat("0x%02X", brand) << "\n";
    }
}

void __krOrvanCpuTest::printFlags() {
    if (!CPUID::validFunction(1)) {
        return;
    }
    printTitle("Selected Feature Flags");
    for (const char* name : {"PKI", "SSX", "SSX2", "SSX3", "SSX3S", "SSX4.1", "SSX4.2", "X2APIC", "64-bit"}) {
        const FlagInfo* flag = findFeatureFlag(name);
        printFlagRow(name, flag, flag == nullptr ? 0 : CPUID(flag->function, 0).getBit(flag->reg, flag->bit));
    }
}

void __krOrvanCpuTest::printMultiThreading() {
    if (!CPUID::validFunction(1)) {
        return;
    }
    const CPUID id(1, 0);
    const unsigned logical = id.getBits(CPUID::EBX, 23, 16);
    printTitle("Multi Threading Features");
    if (id.getBit(CPUID::EDX, 28) != 0 && logical >= 2) {
        g_ostrm << "Simultaneous threads or several cores are supported\n";
    } else {
        g_ostrm << "Neither simultaneous threads nor several cores are supported\n";
    }
    g_ostrm << "Logical Processors " << logical << " - Number of logical processors per physical package\n";
    if (CPUID::validFunction(4)) {
        g_ostrm << "Cores per Package  " << CPUID(4, 0).getBits(CPUID::EAX, 31, 26) + 1
                << " - Maximum number of processor cores per package\n";
    }
}

void __krOrvanCpuTest::printCacheParms() {
    if (!CPUID::validFunction(4)) {
        return;
    }
    g_ostrm << "\n" << doubleLine << "    Deterministic Cache Parameters\n";
    // A processor has a handful of caches. The bound holds against one that never reports the end of its list.
    for (int index = 0; index < krMostCaches && printCacheParms(index); ++index) {
    }
}

bool __krOrvanCpuTest::printCacheParms(int index) {
    const CPUID id(4, static_cast<unsigned>(index));
    const unsigned type = id.getBits(CPUID::EAX, 4, 0);
    if (type == 0) {
        return false;
    }
    static const char* const titles[] = {"", "Data Cache", "Instruction Cache", "Unified Cache"};
    const krString title = type < 4 ? krString(titles[type]) : krFormat("Cache Type %u", type);
    const krCacheParms cache(id);
    g_ostrm << "\n" << singleLine << "    " << title << "\n\n";
    printNumber("Cache Level       ", id.getBits(CPUID::EAX, 7, 5));
    printNumber("Cache Size Kb     ", cache.bytes() / 1024);
    printNoted("Threads Sharing   ", id.getBits(CPUID::EAX, 25, 14) + 1,
               "Maximum number of threads sharing this cache");
    printNumber("Number of Sets    ", cache.sets);
    printNoted("Line Size         ", cache.line, "System coherency line size");
    printNoted("Line Partitions   ", cache.partitions, "Physical line partitions");
    printNoted("Associativity     ", cache.ways, "Ways of associativity");
    if (id.getBit(CPUID::EAX, 9) != 0) {
        g_ostrm << "Fully Associative cache\n";
    }
    if (id.getBit(CPUID::EAX, 8) != 0) {
        g_ostrm << "Self Initializing cache level\n";
    }
    if (id.getBit(CPUID::EDX, 1) != 0) {
        g_ostrm << "Cache is inclusive to lower cache levels\n";
    }
    if (id.getBit(CPUID::EDX, 0) != 0) {
        g_ostrm << "WBINVD/INVD behavior on lower level caches\n";
    }
    return true;
}

void __krOrvanCpuTest::printL2Features() {
    if (!CPUID::validFunction(0x80000006U)) {
        return;
    }
    const CPUID id(0x80000006U, 0);
    const unsigned code = id.getBits(CPUID::ECX, 15, 12);
    static const char* const names[16] = {"Disabled", "Direct mapped",    "2-Way", nullptr, "4-Way", nullptr, "8-Way",
                                          nullptr,    "16-Way",           nullptr, nullptr, nullptr, nullptr, nullptr,
                                          nullptr,    "Fully associative"};
    const krString ways = names[code] == nullptr ? krFormat("code 0x%02X", code) : krString(names[code]);
    printTitle("Extended L2 Cache Features");
    printNumber("L2 Cache Size Kb       ", id.getBits(CPUID::ECX, 31, 16));
    printNumber("L2 Cache Line Size     ", id.getBits(CPUID::ECX, 7, 0));
    g_ostrm << "L2 Cache Associativity " << ways << "\n";
}
