// Dispatch of the arithmetic kernels: plain code (level 0), 128-bit (1), 256-bit (2), 512-bit (3).
//
// A topic has a header <topic>.h with a struct of function pointers and a file k_<topic>.cpp, which the build compiles
// once per level; for 512 bits only where the file ends with VEK_KERNEL_TABLE_512 in place of VEK_KERNEL_TABLE and is
// named in vek/CMakeLists.txt. The file ends with VEK_KERNEL_TABLE(Topic, topic) = {...}; and the header with
// VEK_KERNEL_PICK(Topic, topic), after which `topic()` is the table in force:
//
//     struct DotKernels { int64_t (*dot16)(const int16_t* a, const int16_t* b, int n); };
//     VEK_KERNEL_PICK(DotKernels, dotKernels)                      // dot.h, in namespace vek
//     VEK_KERNEL_TABLE(DotKernels, dotKernels) = {dot16};          // k_dot.cpp, in namespace vek
//     dotKernels().dot16(a, b, n);                                 // users
//
// Code in a k_ file lives in an unnamed namespace and calls no inline function of outside but those of fixmath.h and
// of the headers of registers: what the linker could share between levels must not exist.
#pragma once

#include <atomic>

#include "sc/common/level_ns.h"

namespace vek {

// The level that vekInit or vekInitCpu set; kept up to date by vekOnKernelLevel (dispatch.cpp). Told to be hidden here
// too, as the list of tables below: -fvisibility leaves declarations alone, and then each look takes an address first.
[[gnu::visibility("hidden")]] extern std::atomic<int> g_level;

inline int level() {
    return g_level.load(std::memory_order_relaxed);
}

} // namespace vek

#define VEK_KERNEL_PICK(Type, name)                                                                                    \
    extern const Type name##_L0;                                                                                       \
    extern const Type name##_L1;                                                                                       \
    extern const Type name##_L2;                                                                                       \
    extern const Type name##_L3;                                                                                       \
    [[gnu::visibility("hidden")]] extern const Type* const name##_all[4];                                              \
    inline const Type& name() {                                                                                        \
        return *name##_all[::vek::level()];                                                                            \
    }

// The list of the tables is defined with the plain one. Without a table for 512 bits that for 256 takes its place, as
// it does in a build that leaves those out.
#if defined(VEK_LEVEL)
#if VEK_LEVEL == 0
#define VEK_KERNEL_TABLE(Type, name)                                                                                   \
    const Type* const name##_all[4] = {&name##_L0, &name##_L1, &name##_L2, &name##_L2};                                \
    const Type name##_L0
#if defined(VEK_WITHOUT_512)
#define VEK_KERNEL_TABLE_512 VEK_KERNEL_TABLE
#else
#define VEK_KERNEL_TABLE_512(Type, name)                                                                               \
    const Type* const name##_all[4] = {&name##_L0, &name##_L1, &name##_L2, &name##_L3};                                \
    const Type name##_L0
#endif
#elif VEK_LEVEL == 1
#define VEK_KERNEL_TABLE(Type, name) const Type name##_L1
#define VEK_KERNEL_TABLE_512(Type, name) const Type name##_L1
#elif VEK_LEVEL == 2
#define VEK_KERNEL_TABLE(Type, name) const Type name##_L2
#define VEK_KERNEL_TABLE_512(Type, name) const Type name##_L2
#else
#define VEK_KERNEL_TABLE_512(Type, name) const Type name##_L3
#endif
#endif
