// AMR-WB as other codecs have it: coder and decoder of whole frames, the order of its bits, their tables of figures,
// the decoder's record. And signals to code. Their tables are in no public header; a test includes this one only where
// the packages' headers are found.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "amrwb_frames.h"
#include "speech_signal.h"

extern "C" {
#include <opencore-amrwb/dec_if.h>

// The decoder without its wrapper, on bits of -127 and 127 in the order of the recommendation.
void pvDecoder_AmrWb_Init(void** state, void* memory, int16_t** scratch);
int32_t pvDecoder_AmrWbMemRequirements();
int32_t pvDecoder_AmrWb(int16_t mode, int16_t* bits, int16_t* out, int16_t* length, void* state, int16_t type,
                        int16_t* scratch);
}

namespace amrwb {

constexpr const char* kName[kRates] = {"6.60", "8.85", "12.65", "14.25", "15.85", "18.25", "19.85", "23.05", "23.85"};

// Widths of a frame's parameters: voice activity, spectrum, and for each subframe lag, filter of the adaptive vector
// (from 12.65 on), code, gains, gain of the high band (23.85).
inline std::vector<int> widths(int mode) {
    std::vector<int> all{1, 8, 8};
    for (const int w : mode == R660 ? std::vector<int>{7, 7, 6} : std::vector<int>{6, 7, 7, 5, 5}) {
        all.push_back(w);
    }
    for (int sub = 0; sub < 4; ++sub) {
        const bool relative = sub % 2 == 1 || (sub == 2 && mode == R660);
        all.push_back((relative ? 5 : 8) + (mode > R885 ? 1 : 0));
        if (mode > R885) {
            all.push_back(1);
        }
        all.insert(all.end(), codeWidths(mode).begin(), codeWidths(mode).end());
        all.push_back(mode > R885 ? 7 : 6);
        if (mode == R2385) {
            all.push_back(4);
        }
    }
    return all;
}

inline std::vector<int> bitsOf(int mode, const Samples& p) {
    const std::vector<int> w = widths(mode);
    std::vector<int> bits;
    for (size_t field = 0; field < w.size(); ++field) {
        for (int b = w[field] - 1; b >= 0; --b) {
            bits.push_back(p[field] >> b & 1);
        }
    }
    return bits;
}

// The parameters of a frame in the order of the recommendation, from octets in the order of importance.
inline Samples unpack(int mode, const Octets& octets) {
    const std::vector<int> w = widths(mode);
    size_t count = 0;
    for (const int v : w) {
        count += static_cast<size_t>(v);
    }
    std::vector<int> bits(count);
    for (size_t i = 0; i < count; ++i) {
        bits[static_cast<size_t>(order(mode)[i])] = bitOf(octets, static_cast<int>(i));
    }
    Samples p;
    size_t at = 0;
    for (const int v : w) {
        int value = 0;
        for (int b = 0; b < v; ++b) {
            value = 2 * value + bits[at++];
        }
        p.push_back(static_cast<int16_t>(value));
    }
    return p;
}

// The octets of a frame, with the byte of the mode before them.
inline Octets pack(int mode, const Samples& p) {
    const std::vector<int> bits = bitsOf(mode, p);
    Octets octets{static_cast<uint8_t>(mode << 3 | 4)};
    for (size_t i = 0; i < bits.size(); ++i) {
        octets[1 + i / 8] |= static_cast<uint8_t>(bits[static_cast<size_t>(order(mode)[i])] << (7 - i % 8));
    }
    return octets;
}

class TheirDecoder {
public:
    Samples frame(const Octets& octets) {
        Samples out(kWide);
        D_IF_decode(m_state.get(), octets.data(), out.data(), 0);
        return out;
    }

private:
    std::unique_ptr<void, void (*)(void*)> m_state{D_IF_init(), D_IF_exit};
};

// What their decoder remembers from frame to frame, as it lies in its memory.
struct DecoderRecord {
    int16_t excitation[248];
    int16_t isp[16];
    int16_t isf[16];
    int16_t isfHistory[48];
    int16_t residual[16];
    int16_t tilt;
    int16_t scale;
    int16_t room[4];
    int32_t threshold;
    int16_t synthesisHigh[16];
    int16_t synthesisLow[16];
    int16_t deemphasis;
    int16_t highPass[6];
    int16_t speech[24];
};

class TheirInnerDecoder {
public:
    TheirInnerDecoder() : m_memory(static_cast<size_t>(pvDecoder_AmrWbMemRequirements())) {
        pvDecoder_AmrWb_Init(&m_state, m_memory.data(), &m_scratch);
    }
    TheirInnerDecoder(const TheirInnerDecoder&) = delete;
    TheirInnerDecoder& operator=(const TheirInnerDecoder&) = delete;

    const DecoderRecord& frame(int mode, const Samples& p, Samples& out) {
        Samples bits;
        for (const int bit : bitsOf(mode, p)) {
            bits.push_back(static_cast<int16_t>(bit == 1 ? 127 : -127));
        }
        out.resize(kWide);
        int16_t length = 0;
        pvDecoder_AmrWb(static_cast<int16_t>(mode), bits.data(), out.data(), &length, m_state, 0, m_scratch);
        return *static_cast<const DecoderRecord*>(m_state);
    }

private:
    std::vector<char> m_memory;
    void* m_state = nullptr;
    int16_t* m_scratch = nullptr;
};

// Stretches of noise of any loudness.
inline Samples bursts(size_t length) {
    std::mt19937 random(26190);
    Samples x;
    while (x.size() < length) {
        const double level = std::pow(10.0, std::uniform_real_distribution<double>(0.5, 3.9)(random));
        std::normal_distribution<double> noise(0, level);
        for (int i = 0; i < 1300; ++i) {
            x.push_back(static_cast<int16_t>(std::clamp(noise(random), -32000.0, 32000.0)));
        }
    }
    return x;
}

// One or two tones, of which one glides.
inline Samples tones(size_t length) {
    Samples x;
    double phase = 0;
    for (size_t i = 0; i < length; ++i) {
        const double t = static_cast<double>(i) / 16000;
        phase += 2 * 3.14159265 * (1500 + 1300 * std::sin(2.1 * t)) / 16000;
        const double steady = std::fmod(t, 1.0) < 0.6 ? std::sin(2 * 3.14159265 * 440 * t) : 0;
        x.push_back(static_cast<int16_t>(7000 * std::sin(phase) + 7000 * steady));
    }
    return x;
}

} // namespace amrwb
