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
    switch (vkRealOf(type)) {
    case vk8u:
        work(Vek8u(0));
        return true;
    case vk16u:
        work(Vek16u(0));
        return true;
    case vk32u:
        work(Vek32u(0));
        return true;
    case vk64u:
        work(Vek64u(0));
        return true;
    case vk8s:
        work(Vek8s(0));
        return true;
    case vk16s:
        work(Vek16s(0));
        return true;
    case vk32s:
        work(Vek32s(0));
        return true;
    case vk64s:
        work(Vek64s(0));
        return true;
    case vk32f:
        work(Vek32f(0));
        return true;
    case vk64f:
        work(Vek64f(0));
        return true;
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
