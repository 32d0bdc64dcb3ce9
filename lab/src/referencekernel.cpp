#include "referencekernel.h"

#include "signedrank.h"

#include <chrono>
#include <vector>
#include <x86intrin.h>

namespace krlab {

__attribute__((noinline)) unsigned long long referenceKernel(unsigned long long count) {
    unsigned long long sum = 0;
    for (unsigned long long i = 0; i < count; i += 8) {
        asm volatile("add $1, %0\n\tadd $1, %0\n\tadd $1, %0\n\tadd $1, %0\n\t"
                     "add $1, %0\n\tadd $1, %0\n\tadd $1, %0\n\tadd $1, %0"
                     : "+r"(sum));
    }
    return sum;
}

double referenceClocks(double seconds) {
    using Clock = std::chrono::steady_clock;
    constexpr unsigned long long additions = 40000;
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    std::vector<double> readings;
    do {
        const unsigned long long from = __rdtsc();
        referenceKernel(additions);
        readings.push_back(static_cast<double>(__rdtsc() - from) * 1000 / additions);
    } while (Clock::now() < end);
    return medianOf(readings);
}

} // namespace krlab
