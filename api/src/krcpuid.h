// What the processor tells of itself: the identification instruction behind one replaceable reader, the table of
// feature flags, and the sizes of caches. The report that prints it is krcpuidtest's.
#pragma once

#include "krstring.h"

/// Reads one leaf into EAX, EBX, ECX, EDX. Null stands for a processor without the instruction.
extern void (*krCpuidReader)(unsigned function, unsigned sub, unsigned regs[4]);
/// The reader that runs the instruction itself.
void krReadCpuid(unsigned function, unsigned sub, unsigned regs[4]);

/// The four registers of one leaf; zeros for a leaf that the processor does not offer.
struct CPUID {
    enum Register { EAX, EBX, ECX, EDX };

    CPUID(unsigned function, unsigned subfunction);
    static bool validFunction(unsigned function);
    static unsigned largestFunction();
    static unsigned largestExFunction();
    /// Bits `high` down to `low`, both included.
    unsigned getBits(int reg, int high, int low) const;
    unsigned getBit(int reg, int bit) const { return getBits(reg, bit, bit); }
    /// Byte 0 is the lowest.
    char getByte(int reg, int index) const;

    unsigned m_regs[4];
};

/// One feature bit; a reserved one has an empty name.
struct FlagInfo {
    unsigned function;
    int reg;
    int bit;
    const char* name;
    const char* description;
};
constexpr int FeatureFlagsCount = 68;
extern const FlagInfo FeatureFlags[FeatureFlagsCount];
/// The row of that short name, or null.
const FlagInfo* findFeatureFlag(const krString& name);

/// The identification record. Flags are 0 or 1.
struct vekCyclonIdent {
    unsigned family;
    unsigned stepping;
    unsigned model;
    unsigned type;
    unsigned feature; ///< function 1 EDX
    unsigned cacheEax;
    unsigned cacheEdx;
    unsigned hasPki;
    unsigned hasSsx;
    unsigned hasSsx2;
    unsigned multiThread;
    unsigned hasSsx3;
    unsigned has64bit;
    unsigned hasSsx3s;
    unsigned cores;
    unsigned hasSsx41;
    unsigned hasSsx42;
    unsigned exFamily;
    unsigned exModel;
    unsigned hasMovbe;
    unsigned hasSsx5;
    unsigned hasOsxsave;
};

/// Deterministic parameters of one cache. A processor has a handful of caches; the bound holds against one that never
/// reports the end of its list.
struct krCacheParms {
    explicit krCacheParms(const CPUID& leaf);
    unsigned bytes() const { return sets * line * partitions * ways; }
    unsigned ways;
    unsigned partitions;
    unsigned line;
    unsigned sets;
};
constexpr int krMostCaches = 256;

bool vek_has_cpuid();
unsigned vek_max_cpuid_input();
bool vek_is_GenuineOrvan();
void vek_get_cyclon_ident(vekCyclonIdent* ident);
/// Cores that function 4 tells; 1 without it.
unsigned krCoresOfPackage();

/// Bytes of the cache of that sub-leaf; -1 if there is none.
int getCacheSizeB(int index);
/// Bytes of the largest cache of any type; 0 if the processor does not tell.
int getMaxCacheSizeB();
