// The filters of the resamplers: sines cardinal under a Kaiser window, each scaled to the sum 1, from their formulas
// when the first of them is asked for. The filters that halve the rate are those of G.722.
#pragma once

#include <cstring>

#include "sc/kernels/resample.h"

namespace vek {

constexpr int kLongestFrame = 8192;

// The internal rates, in units of 25.6 kHz / 96, and the place of one in their list, -1 for none.
inline constexpr int kFreqScales[] = {48, 54, 60, 64, 72, 80, 90, 96, 108, 120, 128, 135, 144};
inline constexpr int kFreqScaleCount = 13;
constexpr int freqScaleIndex(int freqScale) {
    for (int i = 0; i < kFreqScaleCount; ++i) {
        if (kFreqScales[i] == freqScale) {
            return i;
        }
    }
    return -1;
}

// The very low band: 5 samples for 32.
const Polyphase& lowBandDown();
const Polyphase& lowBandUp();

// One half of the band, 0 or 1, at half the rate and back.
const Polyphase& halfBandDown(int band);
const Polyphase& halfBandUp(int band);

// Between rates whose ratio is factor : 12; factor 2, 3, 4, 6 or 8.
Polyphase twelfthsUp(int factor);
Polyphase twelfthsDown(int factor);

// For any places. Down: the band that the internal rate of that index leaves of a file's with fileRate (1440 for 48
// kHz, 1323 for 44.1 kHz) where the internal one has 8 * freqScale.
const int16_t* blendedDown(int freqScaleIndex, int fileRate);
const int16_t* blendedUp();

// The last samples of the frames before, the memory, and a frame in one piece.
template <int MemoryMax>
class Joined {
public:
    Joined(const int16_t* memory, int memoryLen, const int16_t* src, int len) : m_memoryLen(memoryLen), m_len(len) {
        std::memcpy(m_data, memory, bytes(memoryLen));
        std::memcpy(m_data + memoryLen, src, bytes(len));
    }
    const int16_t* data() const { return m_data; }
    void keep(int16_t* memory) const { std::memcpy(memory, m_data + m_len, bytes(m_memoryLen)); }

private:
    static size_t bytes(int len) { return static_cast<size_t>(len) * sizeof(int16_t); }
    int m_memoryLen;
    int m_len;
    int16_t m_data[MemoryMax + kLongestFrame];
};

} // namespace vek
