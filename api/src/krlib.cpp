// The binding to the library: registries, fallbacks, the actions of the keys -T and -N, and the library information.
// What the harness finds out about the processor by itself stands in krcputype.
#include "krlib.h"

#include "krio.h"

int (*vek_GetCpuType)() = nullptr;
int (*vek_GetNumCoresOnDie)() = nullptr;
int (*vek_GetMaxCacheSizeB)(int* size) = nullptr;
const char* (*vek_GetStatusString)(int status) = nullptr;
int (*vek_Init)() = nullptr;
int (*vek_InitCpu)(int cpuType) = nullptr;
int (*vek_SetNumThreads)(int numThreads) = nullptr;

void (*vekEnvironment)() = nullptr;
krVekVersionList* vekVersionList = nullptr;
krStringList* g_pLibInfoList = nullptr;
krStringList* g_pLibFuncList = nullptr;

int s_cpuType = -1;
int s_numThreads = 0;

int krRegVekEnvironment(void (*bind)()) {
    vekEnvironment = bind;
    return 1;
}

int krRegVekVersion(const krVekVersion& version) {
    return krRegister(vekVersionList, version);
}

int krRegLibInfo(const krString& info) {
    const bool known = g_pLibInfoList != nullptr && g_pLibInfoList->has(info);
    return known ? 0 : krRegister(g_pLibInfoList, info);
}

int krRegLibFunc(const krString& name) {
    return name.empty() ? 0 : krRegister(g_pLibFuncList, name);
}

void setCpuType(int cpuType) {
    s_cpuType = cpuType;
}

void setNumThreadsKey(int numThreads) {
    s_numThreads = numThreads;
}

static const char* s_vekGetStatusString(int status) {
    return status < 0 ? "Error" : status == 0 ? "OK" : "Warning";
}

static int s_vekInit() {
    return s_noLibrary;
}

static int s_vekInitCpu(int /*cpuType*/) {
    return s_noLibrary;
}

static int s_vekSetNumThreads(int /*numThreads*/) {
    return s_noLibrary;
}

template <class Func>
static void fillPointer(Func& pointer, Func fallback) {
    if (pointer == nullptr) {
        pointer = fallback;
    }
}

int setVekEnvironment() {
    if (vekEnvironment != nullptr) {
        vekEnvironment();
        g_ostrm << "\nVEK Core library functions have been integrated into KR\n";
    }
    fillPointer(vek_GetCpuType, kr_vekGetCpuType);
    fillPointer(vek_GetNumCoresOnDie, kr_vekGetNumCoresOnDie);
    fillPointer(vek_GetMaxCacheSizeB, kr_vekGetMaxCacheSizeB);
    fillPointer(vek_GetStatusString, s_vekGetStatusString);
    fillPointer(vek_Init, s_vekInit);
    fillPointer(vek_InitCpu, s_vekInitCpu);
    fillPointer(vek_SetNumThreads, s_vekSetNumThreads);
    return 1;
}

static void printFailure(int status) {
    g_ostrm << (status < 0 ? "--VEK ERROR. " : "--VEK WARNING. ") << "status = " << status << ": "
            << vek_GetStatusString(status) << "\n";
}

static void printStatus(int status) {
    if (status == 0) {
        g_ostrm << "--status = vekStsNoErr\n";
    } else {
        printFailure(status);
    }
}

void initStaticCpu() {
    if (vekEnvironment == nullptr) {
        return;
    }
    if (s_cpuType == -1) {
        vek_Init();
        return;
    }
    g_ostrm << ERR << "\n"
            << "--calling vekInitCpu( vekCpu" << krCpuType::cpuLabel(s_cpuType) << "=" << s_cpuType << " )\n";
    const int status = vek_InitCpu(s_cpuType);
    printStatus(status);
    if (status < 0) {
        g_ostrm << "--calling vekInit()\n";
        const int initStatus = vek_Init();
        if (initStatus < 0) {
            printFailure(initStatus);
        }
    }
    g_ostrm << msgEnd;
}

void setNumThreads() {
    if (vekEnvironment == nullptr || s_numThreads < 1) {
        return;
    }
    g_ostrm << ERR << "\n"
            << "--calling vekSetNumThreads( " << s_numThreads << " )\n";
    printStatus(vek_SetNumThreads(s_numThreads));
    g_ostrm << msgEnd;
}

void setVekLibInfo() {
    if (vekVersionList == nullptr) {
        return;
    }
    for (const krVekVersion& version : *vekVersionList) {
        krString texts[3];
        if (version.read(version.function, texts)) {
            krRegLibInfo(texts[0] + ", " + texts[1] + ", " + texts[2]);
        }
    }
    g_ostrm << "VEK libraries information has been set into KR\n";
}
