// The identification instruction, the record made of it, and the sizes of caches.
#include "krcpuid.h"

#include <cpuid.h>

void krReadCpuid(unsigned function, unsigned sub, unsigned regs[4]) {
    __cpuid_count(function, sub, regs[0], regs[1], regs[2], regs[3]);
}

void (*krCpuidReader)(unsigned function, unsigned sub, unsigned regs[4]) = krReadCpuid;

constexpr unsigned s_firstExFunction = 0x80000000U;

CPUID::CPUID(unsigned function, unsigned subfunction) : m_regs{} {
    if (validFunction(function) && krCpuidReader != nullptr) {
        krCpuidReader(function, subfunction, m_regs);
    }
}

bool CPUID::validFunction(unsigned function) {
    if (function == 0 || function == s_firstExFunction) {
        return true;
    }
    return function <= (function > s_firstExFunction ? largestExFunction() : largestFunction());
}

unsigned CPUID::largestFunction() {
    return CPUID(0, 0).m_regs[EAX];
}

unsigned CPUID::largestExFunction() {
    return CPUID(s_firstExFunction, 0).m_regs[EAX];
}

unsigned CPUID::getBits(int reg, int high, int low) const {
    const unsigned width = static_cast<unsigned>(high - low + 1);
    const unsigned mask = width >= 32 ? ~0U : (1U << width) - 1U;
    return (m_regs[reg] >> low) & mask;
}

char CPUID::getByte(int reg, int index) const {
    return static_cast<char>(getBits(reg, 8 * index + 7, 8 * index));
}

bool vek_has_cpuid() {
    return krCpuidReader != nullptr;
}

unsigned vek_max_cpuid_input() {
    return CPUID::largestFunction();
}

bool vek_is_GenuineOrvan() {
    const CPUID id(0, 0);
    static const char vendor[] = "GenuineOrvan";
    static const int order[] = {CPUID::EBX, CPUID::EDX, CPUID::ECX};
    for (int i = 0; i < 12; ++i) {
        if (id.getByte(order[i / 4], i % 4) != vendor[i]) {
            return false;
        }
    }
    return true;
}

unsigned krCoresOfPackage() {
    return CPUID::validFunction(4) ? CPUID(4, 0).getBits(CPUID::EAX, 31, 26) + 1 : 1;
}

void vek_get_cyclon_ident(vekCyclonIdent* ident) {
    const CPUID one(1, 0);
    const CPUID two(2, 0);
    ident->family = one.getBits(CPUID::EAX, 11, 8);
    ident->stepping = one.getBits(CPUID::EAX, 3, 0);
    ident->model = one.getBits(CPUID::EAX, 7, 4);
    ident->type = one.getBits(CPUID::EAX, 12, 11);
    ident->feature = one.m_regs[CPUID::EDX];
    ident->cacheEax = two.m_regs[CPUID::EAX];
    ident->cacheEdx = two.m_regs[CPUID::EDX];
    ident->hasPki = one.getBit(CPUID::EDX, 23);
    ident->hasSsx = one.getBit(CPUID::EDX, 25);
    ident->hasSsx2 = one.getBit(CPUID::EDX, 26);
    ident->multiThread = one.getBit(CPUID::EDX, 28) != 0 && one.getBits(CPUID::EBX, 23, 16) > 1 ? 1 : 0;
    ident->hasSsx3 = one.getBit(CPUID::ECX, 0);
    ident->has64bit = CPUID(0x80000001U, 0).getBit(CPUID::EDX, 29);
    ident->hasSsx3s = one.getBit(CPUID::ECX, 9);
    ident->cores = krCoresOfPackage();
    ident->hasSsx41 = one.getBit(CPUID::ECX, 19);
    ident->hasSsx42 = one.getBit(CPUID::ECX, 20);
    ident->exFamily = one.getBits(CPUID::EAX, 27, 20);
    ident->exModel = one.getBits(CPUID::EAX, 19, 16);
    ident->hasMovbe = one.getBit(CPUID::ECX, 22);
    ident->hasSsx5 = one.getBit(CPUID::ECX, 28);
    ident->hasOsxsave = one.getBit(CPUID::ECX, 27);
}

krCacheParms::krCacheParms(const CPUID& leaf)
    : ways(leaf.getBits(CPUID::EBX, 31, 22) + 1), partitions(leaf.getBits(CPUID::EBX, 21, 12) + 1),
      line(leaf.getBits(CPUID::EBX, 11, 0) + 1), sets(leaf.m_regs[CPUID::ECX] + 1) {
}

int getCacheSizeB(int index) {
    const CPUID leaf(4, static_cast<unsigned>(index));
    return leaf.getBits(CPUID::EAX, 4, 0) == 0 ? -1 : static_cast<int>(krCacheParms(leaf).bytes());
}

int getMaxCacheSizeB() {
    if (!CPUID::validFunction(4)) {
        return 0;
    }
    int largest = 0;
    for (int i = 0; i < krMostCaches; ++i) {
        const int size = getCacheSizeB(i);
        if (size == -1) {
            break;
        }
        largest = size > largest ? size : largest;
    }
    return largest;
}
