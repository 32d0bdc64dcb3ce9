// The binding to the library: the harness never names a library function, it calls through seven pointers that the test
// layer fills, and every pointer has a fallback. Types of the library are plain integers here.
#pragma once

#include "krlist.h"
#include "krstring.h"

extern int (*vek_GetCpuType)();
extern int (*vek_GetNumCoresOnDie)();
extern int (*vek_GetMaxCacheSizeB)(int* size);
extern const char* (*vek_GetStatusString)(int status);
extern int (*vek_Init)();
extern int (*vek_InitCpu)(int cpuType);
extern int (*vek_SetNumThreads)(int numThreads);

/// What the pointers answer where no library is bound.
constexpr int s_noLibrary = -2;

/// A registered version function with the way to read its record, whose form is the library's own.
struct krVekVersion {
    void (*function)() = nullptr;
    /// Calls the function; false if there is no record.
    bool (*read)(void (*function)(), krString texts[3]) = nullptr;
};
using krVekVersionList = krList<krVekVersion>;

// Registries, null until the first registration. They are filled before main, live for the whole process, and so do not
// depend on the order of static construction.
extern void (*vekEnvironment)();
extern krVekVersionList* vekVersionList;
extern krStringList* g_pLibInfoList;
extern krStringList* g_pLibFuncList;

/// Each returns 1, so that a static initialiser can call it. The binder that comes last wins.
int krRegVekEnvironment(void (*bind)());
int krRegVekVersion(const krVekVersion& version);
/// A function that returns the library's record, of which the three text fields are read, or null.
template <class Record>
int krRegVekVersion(const Record* (*version)()) {
    const auto read = [](void (*function)(), krString texts[3]) {
        const Record* record = reinterpret_cast<const Record* (*)()>(function)();
        if (record != nullptr) {
            texts[0] = record->Name;
            texts[1] = record->Version;
            texts[2] = record->BuildDate;
        }
        return record != nullptr;
    };
    return krRegVekVersion(krVekVersion{reinterpret_cast<void (*)()>(version), read});
}
/// 0 if the text stands in the list already.
int krRegLibInfo(const krString& info);
/// 0 for an empty name.
int krRegLibFunc(const krString& name);

// Values of the keys -T and -N for one run: the processor code (-1: none) and the number of threads (below 1: none).
extern int s_cpuType;
extern int s_numThreads;
void setCpuType(int cpuType);
void setNumThreadsKey(int numThreads);

/// Binds the library, if a binder is registered, and gives every pointer that is still null its fallback. Returns 1.
int setVekEnvironment();
/// The dispatch of the key -T, or the library's own.
void initStaticCpu();
/// The threads of the key -N.
void setNumThreads();
/// Puts the texts of all registered versions into the information list, without doubles.
void setVekLibInfo();

/// Codes, short labels and long names of processor types.
class krCpuType {
public:
    /// The code of a label, exactly; -1 if there is none.
    static int cpuType(const krString& label);
    /// "Unknown processor" for a code that is in no row.
    static krString cpuName(int cpuType);
    /// "Undefined" for a code that is in no row.
    static krString cpuLabel(int cpuType);
    /// The lines of the help of -T.
    static krString optimizedList();
    /// Names the number of cores after " 2 " in the name of code 35.
    static void updateCpuName(int cpuType, krString& name);
    static int count();
    /// Row `index` of the table, 0 to count() - 1.
    static void row(int index, int& cpuType, krString& label, krString& name);
};

int kr_vekGetCpuType();
int kr_vekGetNumCoresOnDie();
/// Bytes of the largest data or unified cache. The processor is asked once; the status is 0, 36 (no data of such a
/// processor) or 37 (no cache found).
int kr_vekGetMaxCacheSizeB(int* size);
/// Lets the next call ask the processor again.
void kr_vekForgetMaxCacheSizeB();
/// The same with the answer of the processor report where that fails; 0 if nothing is known.
int krGetMaxCacheSizeB();
