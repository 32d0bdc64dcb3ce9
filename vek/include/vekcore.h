// Core of the Vek library: version, status texts, the processor and its caches, dispatch, threads.
// Signal functions are in veks.h and veksc.h.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Record of this library; static, never null.
VEK_API const VekLibraryVersion* vekGetLibVersion(void);

// The highest instruction level of this machine as a processor type: 64 to 71, 96, or 0 where nothing is known.
VEK_API VekCpuType vekGetCpuType(void);

// Number of cores that the processor tells for its die, at least 1.
VEK_API int vekGetNumCoresOnDie(void);

// Size in bytes of the largest data or unified cache. vekStsNullPtrErr; vekStsNoCacheInfoErr leaves 0 at pSize.
VEK_API VekStatus vekGetMaxCacheSizeB(int* pSize);

// Text of a status from the one table of vekdefs.h; "unknown status" for any other number. Never null.
VEK_API const char* vekGetStatusString(VekStatus status);

// Picks the best kernels for this machine, those with 512-bit registers too, for which no processor type stands. In
// force already when the library is loaded.
VEK_API VekStatus vekInit(void);

// Picks the kernels of a processor type: plain code below level 68, 128-bit code for 68 to 70, 256-bit code for 71.
// A generation stands for the level that it brought. vekStsUnknownCpuErr for a code outside the list,
// vekStsCpuNotSupportedErr where the machine lacks the level; the choice in force stays then.
VEK_API VekStatus vekInitCpu(VekCpuType cpu);

// Number of threads inside the library's functions. vekStsSizeErr below 1; above 1 the warning vekStsSingleThread,
// since no function of this library splits its work.
VEK_API VekStatus vekSetNumThreads(int numThreads);

// Kernel level in force: 0 plain code, 1 128-bit, 2 256-bit, 3 512-bit where a kernel gains by it.
VEK_API int vekGetKernelLevel(void);

// For the sister libraries: notify(level) is called at once and after each change of the level. Up to 16 listeners;
// vekStsNullPtrErr, vekStsSizeErr when the table is full.
VEK_API VekStatus vekOnKernelLevel(void (*notify)(int level));

#ifdef __cplusplus
}
#endif
