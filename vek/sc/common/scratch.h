// A zeroed work vector of 16-bit elements: on the stack up to the sizes of the codecs, else from the heap.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace vek {

class Scratch16 {
public:
    // len elements of src, in reverse order if asked, followed by `padding` zeros.
    Scratch16(const int16_t* src, int len, int padding, bool reversed = false) {
        m_data = m_local;
        if (len + padding > kLocal) {
            m_heap.reset(new (std::nothrow) int16_t[static_cast<size_t>(len + padding)]);
            m_data = m_heap.get();
            if (m_data == nullptr) {
                return;
            }
        }
        if (reversed) {
            for (int i = 0; i < len; ++i) {
                m_data[i] = src[len - 1 - i];
            }
        } else {
            std::memcpy(m_data, src, static_cast<size_t>(len) * sizeof(int16_t));
        }
        std::memset(m_data + len, 0, static_cast<size_t>(padding) * sizeof(int16_t));
    }

    // Null without memory.
    const int16_t* data() const { return m_data; }

private:
    static constexpr int kLocal = 1024;
    alignas(32) int16_t m_local[kLocal];
    std::unique_ptr<int16_t[]> m_heap;
    int16_t* m_data;
};

} // namespace vek
