// GSM AMR as another codec has it: coder and decoder of whole frames, the order of its bits, its tables of figures. And
// the high-pass at both ends of a codec.
// Its tables are in no public header; a test includes this one only where the package's header is found.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "samples.h"
#include "sc/common/fixmath.h"
#include "vekdefs.h"

extern "C" {
#include <opencore-amrnb/interf_dec.h>
#include <opencore-amrnb/interf_enc.h>

extern const int16_t qua_gain_code[];
extern const int16_t qua_gain_pitch[];
extern const int16_t table_gain_lowrates[];
extern const int16_t table_gain_highrates[];
extern const int16_t table_gain_MR475[];
extern const int16_t mean_lsf_5[];
extern const int16_t prmno[];
extern const int16_t* const bitno[];
extern const int16_t numOfBits[];
extern const int16_t* const reorderBits[];
extern const int16_t ph_imp_low_MR795[];
extern const int16_t ph_imp_mid_MR795[];
extern const int16_t ph_imp_low[];
extern const int16_t ph_imp_mid[];
}

namespace amr {

using Octets = std::array<uint8_t, 32>;

constexpr int kFrame = 160;
constexpr int kSub = 40;
constexpr int kRates = 8;

constexpr VekSpchBitRate kRate[kRates] = {VEK_SPCHBR_4750, VEK_SPCHBR_5150, VEK_SPCHBR_5900,  VEK_SPCHBR_6700,
                                          VEK_SPCHBR_7400, VEK_SPCHBR_7950, VEK_SPCHBR_10200, VEK_SPCHBR_12200};
enum Mode { R475, R515, R59, R67, R74, R795, R102, R122 };

// The parameters of a frame in the order of the recommendation, from octets in the order of importance.
inline Samples unpack(int mode, const Octets& octets) {
    std::vector<int> bits(static_cast<size_t>(numOfBits[mode]));
    for (int i = 0; i < numOfBits[mode]; ++i) {
        bits[static_cast<size_t>(reorderBits[mode][i])] = octets[static_cast<size_t>(1 + i / 8)] >> (7 - i % 8) & 1;
    }
    Samples p;
    size_t at = 0;
    for (int field = 0; field < prmno[mode]; ++field) {
        int value = 0;
        for (int b = 0; b < bitno[mode][field]; ++b) {
            value = 2 * value + bits[at++];
        }
        p.push_back(static_cast<int16_t>(value));
    }
    return p;
}

// The octets of a frame, with the byte of the mode that its decoder takes before them.
inline Octets pack(int mode, const Samples& p) {
    std::vector<int> bits;
    for (int field = 0; field < prmno[mode]; ++field) {
        for (int b = bitno[mode][field] - 1; b >= 0; --b) {
            bits.push_back(p[static_cast<size_t>(field)] >> b & 1);
        }
    }
    Octets octets{static_cast<uint8_t>(mode << 3 | 4)};
    for (int i = 0; i < numOfBits[mode]; ++i) {
        octets[static_cast<size_t>(1 + i / 8)] |=
            static_cast<uint8_t>(bits[static_cast<size_t>(reorderBits[mode][i])] << (7 - i % 8));
    }
    return octets;
}

class TheirCoder {
public:
    Octets frame(int mode, const int16_t* in) {
        // Its high-pass works in place.
        Samples speech(in, in + kFrame);
        Octets octets{};
        Encoder_Interface_Encode(m_state.get(), static_cast<::Mode>(mode), speech.data(), octets.data(), 0);
        return octets;
    }

private:
    std::unique_ptr<void, void (*)(void*)> m_state{Encoder_Interface_init(0), Encoder_Interface_exit};
};

class TheirDecoder {
public:
    Samples frame(const Octets& octets) {
        Samples out(kFrame);
        Decoder_Interface_Decode(m_state.get(), octets.data(), out.data(), 0);
        return out;
    }

private:
    std::unique_ptr<void, void (*)(void*)> m_state{Decoder_Interface_init(), Decoder_Interface_exit};
};

// Of second order, with outputs of 32 bits as its memory, which are 2^shift times the sums: TS 26.090 5.1, 6.2.2.
class HighPass {
public:
    HighPass(const std::array<int16_t, 3>& zeros, const std::array<int16_t, 2>& poles, int shift, int outShift)
        : m_zeros(zeros), m_poles(poles), m_shift(shift), m_outShift(outShift) {}

    void apply(int16_t* x, int n) {
        using namespace vek::fix;
        for (int i = 0; i < n; ++i) {
            m_in = {x[i], m_in[0], m_in[1]};
            int32_t sum = 0;
            for (size_t k = 0; k < 2; ++k) {
                int16_t hi = 0;
                int16_t lo = 0;
                L_Extract(m_out[k], hi, lo);
                sum = L_add(sum, Mpy_32_16(hi, lo, m_poles[k]));
            }
            for (size_t k = 0; k < 3; ++k) {
                sum = L_mac(sum, m_in[k], m_zeros[k]);
            }
            sum = L_shl(sum, m_shift);
            m_out = {sum, m_out[0]};
            x[i] = round_s(L_shl(sum, m_outShift));
        }
    }

private:
    std::array<int16_t, 3> m_zeros;
    std::array<int16_t, 2> m_poles;
    int m_shift;
    int m_outShift;
    std::array<int16_t, 3> m_in{};
    std::array<int32_t, 2> m_out{};
};

} // namespace amr
