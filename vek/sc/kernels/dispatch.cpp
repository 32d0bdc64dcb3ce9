// Takes the kernel level from the core at load time and at each change.
#include "sc/kernels/kernels.h"
#include "vekcore.h"

namespace vek {

std::atomic<int> g_level{0};

namespace {

void takeLevel(int level) {
    g_level.store(level, std::memory_order_relaxed);
}

[[maybe_unused]] const VekStatus g_listening = vekOnKernelLevel(takeLevel);

} // namespace
} // namespace vek
