// States at any address: the object stands at the first multiple of 32 in the caller's memory, with a mark that Init
// sets. Who uses what a state holds is each function's affair.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vek::ec {

constexpr std::size_t kStateAlign = 32;

template <typename T>
T* placeOf(void* memory) {
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    return reinterpret_cast<T*>((address + kStateAlign - 1) / kStateAlign * kStateAlign);
}

// Bytes of an object and `extra` bytes behind it, wherever the memory lies.
template <typename T>
int bytesOf(std::size_t extra) {
    return static_cast<int>(sizeof(T) + extra + kStateAlign - 1);
}

constexpr bool knownRate(int sampleFreq) {
    return sampleFreq == 8000 || sampleFreq == 16000;
}

} // namespace vek::ec
