// A coder and a decoder of G.728's kind put together from the library's functions: backward adaptation of the filters
// and of the gain, search, synthesis. What the coder holds for the decoder's speech is that speech, to the bit.
#include "g728_reference.h"

#include "sc/g728/tables.h"

namespace {

using namespace g728ref;
using vek::g728::kGain;
using vek::g728::kShapes;
using Window = Memory<VeksWinHybridState_G728>;

struct Block {
    int16_t samples[5] = {};
    int16_t shifts = 15;
};

// The filter of a window's correlations, if the recursion finds one.
template <int order>
struct Predictor {
    explicit Predictor(const int16_t* r) {
        int16_t first = 0;
        int32_t energy = 0;
        found = veksLevinsonDurbin_G728_16s_Sfs(r, order, a, &first, &energy, &q) == vekStsNoErr;
    }
    /// A coefficient times 2^bits.
    double at(size_t i, int bits) const { return std::ldexp(a[i], bits - q); }

    bool found = false;
    int16_t a[order];
    int16_t q = 0;
};

// The filter of order 50 and the gain, from what has been decoded.
class Adaptation {
public:
    Adaptation() : m_speech(veksWinHybridGetStateSize_G728_16s), m_gain(veksWinHybridGetStateSize_G728_16s) {
        EXPECT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(VEK_G728_WINDOW_SYNTHESIS, m_speech));
        EXPECT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(VEK_G728_WINDOW_GAIN, m_gain));
    }

    const int16_t* lpc() const { return m_lpc.data(); }

    /// The gain of the next vector.
    double gain() const {
        double dB = 32;
        for (size_t i = 0; i < 10; ++i) {
            dB -= m_gainPredictor[i] * m_levels[m_levels.size() - 1 - i];
        }
        return std::pow(10, std::min(std::max(dB, 0.0), 60.0) / 20);
    }

    /// A vector has been decoded; every fourth one ends a frame.
    void take(const Reals& excitation, const Block& speech) {
        double energy = 0;
        for (const double e : excitation) {
            energy += e * e;
        }
        const double dB = 10 * std::log10(std::max(energy / 5, 1.0)) - 32;
        m_levels.push_back(std::lround(512 * dB) / 512.0);
        std::copy(speech.samples, speech.samples + 5, m_frame + 5 * m_vectors);
        m_shifts[m_vectors] = speech.shifts;
        if (++m_vectors == 4) {
            m_vectors = 0;
            adaptFilter();
            adaptGain();
        }
    }

private:
    void adaptFilter() {
        int16_t r[51];
        ASSERT_EQ(vekStsNoErr, veksWinHybridBlock_G728_16s(0, m_frame, m_shifts, r, m_speech));
        const Predictor<50> predictor(r);
        if (!predictor.found) {
            return;
        }
        for (size_t i = 0; i < 50; ++i) {
            const double v = predictor.at(i, 14) * std::pow(253.0 / 256, static_cast<double>(i + 1));
            if (std::abs(v) > 32767) {
                return;
            }
            m_next[i] = static_cast<int16_t>(std::lround(v));
        }
        m_lpc = m_next;
    }

    void adaptGain() {
        int16_t levels[4];
        for (size_t i = 0; i < 4; ++i) {
            levels[i] = static_cast<int16_t>(512 * m_levels[m_levels.size() - 4 + i]);
        }
        int16_t r[11];
        ASSERT_EQ(vekStsNoErr, veksWinHybrid_G728_16s(0, levels, r, m_gain));
        const Predictor<10> predictor(r);
        if (predictor.found) {
            for (size_t i = 0; i < 10; ++i) {
                m_gainPredictor[i] = predictor.at(i, 0) * std::pow(29.0 / 32, static_cast<double>(i + 1));
            }
        }
    }

    Window m_speech;
    Window m_gain;
    Samples m_lpc = Samples(50);
    Samples m_next = Samples(50);
    Reals m_gainPredictor = Reals(10);
    Reals m_levels = Reals(10, -32.0);
    int16_t m_frame[20] = {};
    int16_t m_shifts[4] = {};
    int m_vectors = 0;
};

// An entry of the codebook at a gain, as mantissas of 14 bits with a scale factor of 0..15.
struct Excitation {
    Excitation(int shape, int gain, double level) {
        const double factor = level * (gain < 4 ? 1 : -1) * kGain[gain % 4] / 8192.0 / 2048.0;
        double largest = 1e-6;
        for (size_t k = 0; k < 5; ++k) {
            value[k] = factor * kShapes[shape][k];
            largest = std::max(largest, std::abs(value[k]));
        }
        shifts = std::min(std::max(static_cast<int>(std::floor(14 - std::log2(largest))), 0), 15);
        for (size_t k = 0; k < 5; ++k) {
            mantissa[k] = static_cast<int16_t>(std::lround(std::ldexp(value[k], shifts)));
            value[k] = std::ldexp(mantissa[k], -shifts);
        }
    }

    Reals value = Reals(5);
    int16_t mantissa[5] = {};
    int shifts = 0;
};

struct Code {
    int16_t shape;
    int16_t gain;
};

class Coder {
public:
    explicit Coder(VekSpchBitRate rate)
        : m_rate(rate), m_filter(veksCombinedFilterGetStateSize_G728_16s), m_weighting(veksIIR16sGetStateSize_G728_16s),
          m_window(veksWinHybridGetStateSize_G728_16s) {
        EXPECT_EQ(vekStsNoErr, veksCombinedFilterInit_G728_16s(m_filter));
        EXPECT_EQ(vekStsNoErr, veksIIR16sInit_G728_16s(m_weighting));
        EXPECT_EQ(vekStsNoErr, veksWinHybridInit_G728_16s(VEK_G728_WINDOW_WEIGHTING, m_window));
    }

    Code code(const int16_t* x, Block& speech) {
        const int16_t* lpc = m_adaptation.lpc();
        int16_t weighted[5];
        int16_t response[5];
        EXPECT_EQ(vekStsNoErr, veksIIR16s_G728_16s(m_weights.data(), x, weighted, 5, m_weighting));
        EXPECT_EQ(vekStsNoErr, veksCombinedFilterZeroInput_G728_16s(lpc, m_weights.data(), response, m_filter));
        const Reals h = impulse(lpc);
        const double level = m_adaptation.gain();
        int16_t impulseQ13[5];
        int16_t energies[128];
        int16_t pn[5];
        for (size_t k = 0; k < 5; ++k) {
            impulseQ13[k] = static_cast<int16_t>(std::lround(std::min(std::max(8192 * h[k], -32768.0), 32767.0)));
            double p = 0;
            for (size_t n = k; n < 5; ++n) {
                p += (weighted[n] - response[n]) / 4.0 / level * h[n - k];
            }
            pn[k] = static_cast<int16_t>(std::lround(std::min(std::max(128 * p, -32767.0), 32767.0)));
        }
        EXPECT_EQ(vekStsNoErr, veksImpulseResponseEnergy_G728_16s(impulseQ13, energies));
        Code code{};
        int16_t word = 0;
        EXPECT_EQ(vekStsNoErr, veksCodebookSearch_G728_16s(pn, energies, &code.shape, &code.gain, &word, m_rate));
        Excitation e(code.shape, code.gain, level);
        EXPECT_EQ(vekStsNoErr, veksCombinedFilterZeroState_G728_16s(lpc, m_weights.data(), e.mantissa, e.shifts,
                                                                    speech.samples, &speech.shifts, m_filter));
        m_adaptation.take(e.value, speech);
        std::copy(x, x + 5, m_frame + 5 * m_vectors);
        if (++m_vectors == 4) {
            m_vectors = 0;
            adaptWeights();
        }
        return code;
    }

private:
    // Of synthesis and weighting filter in cascade.
    Reals impulse(const int16_t* lpc) const {
        Reals s(5);
        Reals w(5);
        for (size_t n = 0; n < 5; ++n) {
            s[n] = n == 0 ? 1 : 0;
            for (size_t i = 1; i <= n; ++i) {
                s[n] -= lpc[i - 1] / 16384.0 * s[n - i];
            }
            w[n] = s[n];
            for (size_t i = 1; i <= n; ++i) {
                w[n] += m_weights[i - 1] / 16384.0 * s[n - i] - m_weights[9 + i] / 16384.0 * w[n - i];
            }
        }
        return w;
    }

    void adaptWeights() {
        int16_t r[11];
        ASSERT_EQ(vekStsNoErr, veksWinHybrid_G728_16s(0, m_frame, r, m_window));
        const Predictor<10> predictor(r);
        if (!predictor.found) {
            return;
        }
        Samples next(20);
        for (size_t i = 0; i < 10; ++i) {
            const double v = predictor.at(i, 14);
            const double zero = v * std::pow(0.9, static_cast<double>(i + 1));
            if (std::abs(zero) > 32767) {
                return;
            }
            next[i] = static_cast<int16_t>(std::lround(zero));
            next[i + 10] = static_cast<int16_t>(std::lround(v * std::pow(0.6, static_cast<double>(i + 1))));
        }
        m_weights = next;
    }

    VekSpchBitRate m_rate;
    Adaptation m_adaptation;
    Memory<VeksCombinedFilterState_G728> m_filter;
    Memory<VeksIIRState_G728> m_weighting;
    Window m_window;
    Samples m_weights = Samples(20);
    int16_t m_frame[20] = {};
    int m_vectors = 0;
};

class Decoder {
public:
    Decoder() : m_filter(veksSynthesisFilterGetStateSize_G728_16s) {
        EXPECT_EQ(vekStsNoErr, veksSynthesisFilterInit_G728_16s(m_filter));
    }

    Block decode(const Code& code) {
        Excitation e(code.shape, code.gain, m_adaptation.gain());
        Block speech;
        EXPECT_EQ(vekStsNoErr, veksSyntesisFilterZeroInput_G728_16s(m_adaptation.lpc(), e.mantissa, e.shifts,
                                                                    speech.samples, &speech.shifts, m_filter));
        m_adaptation.take(e.value, speech);
        return speech;
    }

private:
    Adaptation m_adaptation;
    Memory<VeksSynthesisFilterState_G728> m_filter;
};

// Segmental ratio over frames of 160 samples that are no pauses.
double segmental(const Reals& want, const Reals& got) {
    double sum = 0;
    int count = 0;
    for (size_t f = 0; f + 160 <= want.size(); f += 160) {
        const Reals w(want.begin() + static_cast<std::ptrdiff_t>(f),
                      want.begin() + static_cast<std::ptrdiff_t>(f + 160));
        const Reals g(got.begin() + static_cast<std::ptrdiff_t>(f), got.begin() + static_cast<std::ptrdiff_t>(f + 160));
        double energy = 0;
        for (const double v : w) {
            energy += v * v;
        }
        if (energy > 160.0 * 20 * 20) {
            sum += std::min(std::max(snr(w, g), -10.0), 60.0);
            ++count;
        }
    }
    EXPECT_GT(count, 100);
    return sum / count;
}

double coded(VekSpchBitRate rate) {
    const Reals s = speech(32000);
    Samples x(s.size());
    for (size_t i = 0; i < x.size(); ++i) {
        x[i] = static_cast<int16_t>(std::lround(4 * s[i]));
    }
    Coder coder(rate);
    Decoder decoder;
    Reals got;
    for (size_t n = 0; n + 5 <= x.size(); n += 5) {
        Block own;
        const Code code = coder.code(x.data() + n, own);
        const Block speech = decoder.decode(code);
        for (size_t k = 0; k < 5; ++k) {
            if (own.samples[k] != speech.samples[k] || own.shifts != speech.shifts) {
                ADD_FAILURE() << "vector " << n / 5;
                return 0;
            }
            got.push_back(std::ldexp(speech.samples[k], -speech.shifts));
        }
    }
    return segmental(s, got);
}

TEST(VekG728Chain, DecoderHoldsTheCodersSpeechAndSpeechIsCodedAtEachRate) {
    double at[3][3] = {};
    size_t level = 0;
    atEveryLevel([&] {
        at[level][0] = coded(VEK_SPCHBR_16000);
        at[level][1] = coded(VEK_SPCHBR_12800);
        at[level][2] = coded(VEK_SPCHBR_9600);
        RecordProperty("dB", std::to_string(at[level][0]) + " " + std::to_string(at[level][1]) + " " +
                                 std::to_string(at[level][2]));
        EXPECT_GT(at[level][0], 16);
        EXPECT_GT(at[level][1], 11);
        EXPECT_GT(at[level][2], 7);
        EXPECT_GT(at[level][0], at[level][1] + 1);
        EXPECT_GT(at[level][1], at[level][2] + 1);
        // The levels of the kernels give the same bits.
        EXPECT_EQ(at[level][0], at[0][0]);
        EXPECT_EQ(at[level][2], at[0][2]);
        ++level;
    });
}

} // namespace
