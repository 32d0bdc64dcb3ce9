// Memory of a filter in blocks of five samples, newest first, each block with its own number of left shifts; mantissas
// have 14 bits and a sign.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/g728/tables.h"
#include "sc/kernels/g728.h"

namespace vek::g728 {

constexpr int kMostShifts = kG728MostShifts;

template <int blocks>
class BlockMemory {
public:
    static constexpr int kSize = blocks * kVector;

    BlockMemory() { std::fill_n(m_shifts, blocks, static_cast<int16_t>(kMostShifts)); }

    /// Groups of 16 mantissas, zeros behind.
    static constexpr int kPadded = (kSize + 15) / 16 * 16;
    const int16_t* mantissas() const { return m_mantissa; }

    /// What each mantissa has to be multiplied with, in Q14, for all to have one number of left shifts, which is
    /// returned. kPadded factors.
    int factors(int16_t* factor) const {
        int common = m_shifts[0];
        for (int b = 1; b < blocks; ++b) {
            common = std::min<int>(common, m_shifts[b]);
        }
        for (int b = 0; b < blocks; ++b) {
            // Five times the same, in two steps.
            const uint64_t f = (uint64_t{1} << 14) >> (m_shifts[b] - common);
            const uint64_t four = f * 0x0001000100010001;
            std::memcpy(factor + b * kVector, &four, sizeof four);
            factor[b * kVector + 4] = static_cast<int16_t>(f);
        }
        std::fill(factor + kSize, factor + kPadded, int16_t{0});
        return common;
    }

    /// The samples in the order of time, with q fraction bits.
    void values(int q, int64_t* v) const {
        for (int b = 0; b < blocks; ++b) {
            for (int i = b * kVector; i < (b + 1) * kVector; ++i) {
                v[kSize - 1 - i] = fix::scale64(m_mantissa[i], m_shifts[b] - q);
            }
        }
    }

    /// Makes room for a block, which `renew` has to write.
    void push() {
        std::memmove(m_mantissa + kVector, m_mantissa, (kSize - kVector) * sizeof(int16_t));
        std::memmove(m_shifts + 1, m_shifts, (blocks - 1) * sizeof(int16_t));
    }

    /// The newest block from five values in the order of time, with q fraction bits.
    void renew(const int64_t* v, int q) {
        m_shifts[0] = static_cast<int16_t>(g728Kernels().normalise(v, q, m_mantissa));
    }

    /// The newest block in the order of time, and its left shifts.
    int newest(int16_t* v) const {
        std::reverse_copy(m_mantissa, m_mantissa + kVector, v);
        return m_shifts[0];
    }

private:
    int16_t m_mantissa[kPadded] = {};
    int16_t m_shifts[blocks];
};

} // namespace vek::g728
