#pragma once

#include <cstddef>
#include <cstdint>

/// A check sum: FNV-1a, 64 bits.
class CheckSum {
public:
    void add(const void* data, std::size_t bytes) {
        for (std::size_t i = 0; i < bytes; ++i) {
            m_sum = (m_sum ^ static_cast<const std::uint8_t*>(data)[i]) * 0x100000001b3U;
        }
    }
    template <class T>
    void add(const T& value) {
        add(&value, sizeof value);
    }
    std::uint64_t value() const { return m_sum; }

private:
    std::uint64_t m_sum = 0xcbf29ce484222325U;
};
