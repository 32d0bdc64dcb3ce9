// The processor that the library runs on, and the choice of kernels that follows from it.
#include <atomic>
#include <mutex>

#include "core/cpurules.h"
#include "vekcore.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace vek::core {
namespace {

#if defined(__x86_64__) || defined(__i386__)
CpuidRegs readCpuid(uint32_t leaf, uint32_t subleaf) {
    CpuidRegs r{};
    __cpuid_count(leaf, subleaf, r.eax, r.ebx, r.ecx, r.edx);
    return r;
}

uint32_t readSavedStates() {
    if (((readCpuid(1, 0).ecx >> 27) & 1U) == 0) {
        return 0;
    }
    uint32_t low = 0;
    uint32_t high = 0;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}
#else
CpuidRegs readCpuid(uint32_t, uint32_t) {
    return {};
}

uint32_t readSavedStates() {
    return 0;
}
#endif

constexpr CpuReader kMachine = {readCpuid, readSavedStates};
constexpr int kMaxListeners = 16;

// Lifetime: the process. -1 until the first question, so that the order of loading does not matter.
std::atomic<int> g_level{-1};
std::mutex g_listenersLock;
void (*g_listeners[kMaxListeners])(int) = {};
int g_numListeners = 0;

int currentLevel() {
    int level = g_level.load(std::memory_order_relaxed);
    if (level < 0) {
        level = bestKernelLevel(kMachine);
        g_level.store(level, std::memory_order_relaxed);
    }
    return level;
}

void setLevel(int level) {
    const std::lock_guard<std::mutex> lock(g_listenersLock);
    g_level.store(level, std::memory_order_relaxed);
    for (int i = 0; i < g_numListeners; ++i) {
        g_listeners[i](level);
    }
}

} // namespace
} // namespace vek::core

using namespace vek::core;

VekCpuType vekGetCpuType(void) {
    return cpuType(kMachine);
}

int vekGetNumCoresOnDie(void) {
    return numCores(kMachine);
}

VekStatus vekGetMaxCacheSizeB(int* pSize) {
    if (pSize == nullptr) {
        return vekStsNullPtrErr;
    }
    *pSize = maxCacheSize(kMachine);
    return *pSize > 0 ? vekStsNoErr : vekStsNoCacheInfoErr;
}

VekStatus vekInit(void) {
    setLevel(bestKernelLevel(kMachine));
    return vekStsNoErr;
}

VekStatus vekInitCpu(VekCpuType cpu) {
    VekCpuType need = 0;
    switch (cpu) {
#define VEK_ROW(code, label, name, level)                                                                              \
    case code:                                                                                                         \
        need = level;                                                                                                  \
        break;
        VEK_CPU_TYPES(VEK_ROW)
#undef VEK_ROW
    default:
        return vekStsUnknownCpuErr;
    }
    if (!hasLevel(kMachine, need)) {
        return vekStsCpuNotSupportedErr;
    }
    setLevel(kernelLevel(kMachine, need));
    return vekStsNoErr;
}

int vekGetKernelLevel(void) {
    return currentLevel();
}

VekStatus vekOnKernelLevel(void (*notify)(int level)) {
    if (notify == nullptr) {
        return vekStsNullPtrErr;
    }
    const std::lock_guard<std::mutex> lock(g_listenersLock);
    if (g_numListeners == kMaxListeners) {
        return vekStsSizeErr;
    }
    g_listeners[g_numListeners++] = notify;
    notify(currentLevel());
    return vekStsNoErr;
}
