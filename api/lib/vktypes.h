// One place that goes from an element type to code for its component, shared by the vector and its generators.
#pragma once

#include "vkfunc.h"

#include "vekdefs.h"

#include <cstring>
#include <limits>
#include <type_traits>

/// Calls `work` with a value of the component's C++ type; false for a value that is no type.
template <class Work>
bool vkWithComponent(vkType type, Work&& work) {
    const auto with = [&work](auto zero) {
        work(zero);
        return true;
    };
    switch (vkRealOf(type)) {
    case vk8u:
        return with(Vek8u(0));
    case vk16u:
        return with(Vek16u(0));
    case vk32u:
        return with(Vek32u(0));
    case vk64u:
        return with(Vek64u(0));
    case vk8s:
        return with(Vek8s(0));
    case vk16s:
        return with(Vek16s(0));
    case vk32s:
        return with(Vek32s(0));
    case vk64s:
        return with(Vek64s(0));
    case vk32f:
        return with(Vek32f(0));
    case vk64f:
        return with(Vek64f(0));
    default:
        return false;
    }
}

/// One number of a vector. On request vectors lie across the boundaries of their type, so it goes byte by byte.
template <class T>
T vkLoad(const T* data, int index) {
    T value;
    std::memcpy(&value,
                reinterpret_cast<const char*>(data) + static_cast<long long>(index) * static_cast<long long>(sizeof(T)),
                sizeof value);
    return value;
}
template <class T>
void vkStore(T* data, int index, T value) {
    std::memcpy(reinterpret_cast<char*>(data) + static_cast<long long>(index) * static_cast<long long>(sizeof(T)),
                &value, sizeof value);
}

/// Truncation towards zero; what T can't hold becomes the nearest value that it can.
template <class T>
T vkConvert(double value) {
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(value);
    } else {
        using Limits = std::numeric_limits<T>;
        if (!(value > static_cast<double>(Limits::min()))) {
            return value < 0 ? Limits::min() : T();
        }
        return value >= static_cast<double>(Limits::max()) ? Limits::max() : static_cast<T>(value);
    }
}
