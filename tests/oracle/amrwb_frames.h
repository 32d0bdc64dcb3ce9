// Frames of AMR-WB as another codec's coder makes them, and the order of their bits. The tables are in no public
// header; a test includes this one only where the packages' headers are found.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "samples.h"
#include "vekdefs.h"

extern "C" {
#include <vo-amrwbenc/enc_if.h>

// Where the bits of a frame go, in the order of their importance: TS 26.201 annex B.
extern const int16_t sort_660[];
extern const int16_t sort_885[];
extern const int16_t sort_1265[];
extern const int16_t sort_1425[];
extern const int16_t sort_1585[];
extern const int16_t sort_1825[];
extern const int16_t sort_1985[];
extern const int16_t sort_2305[];
extern const int16_t sort_2385[];
}

namespace amrwb {

// The octet of the mode and those of the frame.
using Octets = std::array<uint8_t, 64>;

constexpr int kWide = 320; // samples of a frame at 16 kHz
constexpr int kRates = 9;

enum Mode { R660, R885, R1265, R1425, R1585, R1825, R1985, R2305, R2385 };

constexpr VekSpchBitRate kRate[kRates] = {VEK_SPCHBR_6600,  VEK_SPCHBR_8850,  VEK_SPCHBR_12650,
                                          VEK_SPCHBR_14250, VEK_SPCHBR_15850, VEK_SPCHBR_18250,
                                          VEK_SPCHBR_19850, VEK_SPCHBR_23050, VEK_SPCHBR_23850};

inline const int16_t* order(int mode) {
    static const int16_t* const tables[kRates] = {sort_660,  sort_885,  sort_1265, sort_1425, sort_1585,
                                                  sort_1825, sort_1985, sort_2305, sort_2385};
    return tables[mode];
}

// Bit i of a frame's octets, in the order of importance.
inline int bitOf(const Octets& octets, int i) {
    return octets[static_cast<size_t>(1 + i / 8)] >> (7 - i % 8) & 1;
}

class TheirCoder {
public:
    Octets frame(int mode, const int16_t* in) {
        const Samples speech(in, in + kWide);
        Octets octets{};
        E_IF_encode(m_state.get(), mode, speech.data(), octets.data(), 0);
        return octets;
    }

private:
    std::unique_ptr<void, void (*)(void*)> m_state{E_IF_init(), E_IF_exit};
};

// Widths of the words of a subframe's code vector: TS 26.190 5.8.2.
inline const std::vector<int>& codeWidths(int mode) {
    static const std::vector<int> widths[kRates] = {{12},
                                                    {5, 5, 5, 5},
                                                    {9, 9, 9, 9},
                                                    {13, 13, 9, 9},
                                                    {13, 13, 13, 13},
                                                    {2, 2, 2, 2, 14, 14, 14, 14},
                                                    {10, 10, 2, 2, 10, 10, 14, 14},
                                                    {11, 11, 11, 11, 11, 11, 11, 11},
                                                    {11, 11, 11, 11, 11, 11, 11, 11}};
    return widths[mode];
}

} // namespace amrwb
