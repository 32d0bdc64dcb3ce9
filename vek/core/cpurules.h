// What CPUID answers mean: instruction levels, cores, the largest cache.
// The rules take the reader as an argument, so that any processor can be played to them; cpu.cpp has the real one.
#pragma once

#include "vekdefs.h"

namespace vek::core {

struct CpuidRegs {
    uint32_t eax, ebx, ecx, edx;
};

// Answers of a processor: CPUID by leaf and sub-leaf, and the register of states that the system saves (0 if none).
struct CpuReader {
    CpuidRegs (*cpuid)(uint32_t leaf, uint32_t subleaf);
    uint32_t (*savedStates)();
};

inline uint32_t maxLeaf(const CpuReader& cpu) {
    return cpu.cpuid(0, 0).eax;
}

inline uint32_t maxExtendedLeaf(const CpuReader& cpu) {
    const uint32_t top = cpu.cpuid(0x80000000U, 0).eax;
    return top >= 0x80000000U ? top : 0;
}

// Does the processor have an instruction level (code 64 to 71, 96; 0 is always there)? The 256-bit levels also want a
// system that saves the wide registers.
inline bool hasLevel(const CpuReader& cpu, VekCpuType code) {
    if (code == vekCpuUnknown) {
        return true;
    }
    if (code == vekCpuX64) {
        return maxExtendedLeaf(cpu) >= 0x80000001U && ((cpu.cpuid(0x80000001U, 0).edx >> 29) & 1U) != 0;
    }
    const uint32_t top = maxLeaf(cpu);
    if (top < 1) {
        return false;
    }
    const CpuidRegs f = cpu.cpuid(1, 0);
    const auto bit = [](uint32_t word, int n) { return ((word >> n) & 1U) != 0; };
    const bool wide = bit(f.ecx, 28) && bit(f.ecx, 27) && (cpu.savedStates() & 6U) == 6U;
    switch (code) {
    case vekCpuV1:
        return bit(f.edx, 25);
    case vekCpuV2:
        return bit(f.edx, 26);
    case vekCpuV3:
        return bit(f.ecx, 0);
    case vekCpuV4:
        return bit(f.ecx, 9);
    case vekCpuV5:
        return bit(f.ecx, 19);
    case vekCpuV6:
        return bit(f.ecx, 20);
    case vekCpuV7:
        return wide;
    case vekCpuV8:
        return wide && top >= 7 && bit(cpu.cpuid(7, 0).ebx, 5);
    default:
        return false;
    }
}

// Does the processor have what kernels of 256 bits and more take beside their registers: shifts without flags, and the
// count of leading zeros?
inline bool hasBitInstructions(const CpuReader& cpu) {
    constexpr uint32_t shifts = (1U << 3) | (1U << 8);
    return maxLeaf(cpu) >= 7 && (cpu.cpuid(7, 0).ebx & shifts) == shifts && maxExtendedLeaf(cpu) >= 0x80000001U &&
           ((cpu.cpuid(0x80000001U, 0).ecx >> 5) & 1U) != 0;
}

// Does the processor have 512-bit registers as the kernels use them, with lanes of all sizes and in the shorter
// registers too, and a system that saves them? No processor type stands for these.
inline bool hasLongRegisters(const CpuReader& cpu) {
    constexpr uint32_t features = (1U << 16) | (1U << 17) | (1U << 28) | (1U << 30) | (1U << 31);
    constexpr uint32_t states = 0xe6; // the registers of each width, and the masks
    return hasLevel(cpu, vekCpuV8) && hasBitInstructions(cpu) && (cpu.cpuid(7, 0).ebx & features) == features &&
           (cpu.savedStates() & states) == states;
}

inline VekCpuType cpuType(const CpuReader& cpu) {
    for (VekCpuType code = vekCpuV8; code >= vekCpuV1; --code) {
        if (hasLevel(cpu, code)) {
            return code;
        }
    }
    return hasLevel(cpu, vekCpuX64) ? vekCpuX64 : vekCpuUnknown;
}

// The leaf that lists the caches: 4, or the extended one where 4 is empty; 0 if there is none.
inline uint32_t cacheLeaf(const CpuReader& cpu) {
    if (maxLeaf(cpu) >= 4 && (cpu.cpuid(4, 0).eax & 31U) != 0) {
        return 4;
    }
    if (maxExtendedLeaf(cpu) >= 0x8000001dU && (cpu.cpuid(0x8000001dU, 0).eax & 31U) != 0) {
        return 0x8000001dU;
    }
    return 0;
}

inline int numCores(const CpuReader& cpu) {
    const uint32_t leaf = cacheLeaf(cpu);
    if (leaf == 4) {
        return static_cast<int>(cpu.cpuid(4, 0).eax >> 26) + 1;
    }
    if (leaf != 0 && maxExtendedLeaf(cpu) >= 0x80000008U) {
        return static_cast<int>(cpu.cpuid(0x80000008U, 0).ecx & 255U) + 1;
    }
    return 1;
}

// Size of the largest cache that holds data, in bytes, or 0.
inline int maxCacheSize(const CpuReader& cpu) {
    const uint32_t leaf = cacheLeaf(cpu);
    uint64_t best = 0;
    for (uint32_t sub = 0; leaf != 0 && sub < 32; ++sub) {
        const CpuidRegs r = cpu.cpuid(leaf, sub);
        const uint32_t type = r.eax & 31U;
        if (type == 0) {
            break;
        }
        if (type == 2) {
            continue; // instructions
        }
        const uint64_t ways = (r.ebx >> 22) + 1;
        const uint64_t partitions = ((r.ebx >> 12) & 1023U) + 1;
        const uint64_t line = (r.ebx & 4095U) + 1;
        const uint64_t size = ways * partitions * line * (static_cast<uint64_t>(r.ecx) + 1);
        best = size > best ? size : best;
    }
    return best > INT32_MAX ? INT32_MAX : static_cast<int>(best);
}

// Kernels for an instruction level: 0 plain, 1 128-bit, 2 256-bit.
inline int kernelLevel(const CpuReader& cpu, VekCpuType code) {
    if (code == vekCpuV8 && hasBitInstructions(cpu)) {
        return 2;
    }
    return code >= vekCpuV5 && code <= vekCpuV8 ? 1 : 0;
}

// The best kernels of the machine: these, or 3 for 512-bit ones.
inline int bestKernelLevel(const CpuReader& cpu) {
    return hasLongRegisters(cpu) ? 3 : kernelLevel(cpu, cpuType(cpu));
}

} // namespace vek::core
