// The filters of the resamplers, see the header.
#include "sc/amrwbe/resamplebanks.h"

#include <cmath>
#include <numbers>

#include "sc/common/kaiser.h"
#include "sc/g722/qmf.h"

namespace vek {
namespace {

constexpr int kMaxTaps = 144;

// A windowed sine cardinal: cut-off in cycles and half its length, both in samples of the lower rate.
struct Prototype {
    double cut;
    double half;
    double beta;
};

constexpr Prototype kLowBand = {0.45, 10, 4.5};
constexpr Prototype kTwelfths = {0.45, 12, 5};
constexpr Prototype kBlendedUp = {0.46, 24, 6};
constexpr double kBlendedDownCut = 0.45;

// Scales to the sum 1 and rounds.
void quantise(const double* h, int taps, int16_t* row) {
    double sum = 0;
    for (int j = 0; j < taps; ++j) {
        sum += h[j];
    }
    for (int j = 0; j < taps; ++j) {
        row[j] = static_cast<int16_t>(std::lround(h[j] / sum * (1 << kResampleQ)));
    }
}

// The place of tap j from the middle of a filter, for an output at a part of a sample behind the middle.
constexpr double placeOf(int j, int taps, double part) {
    const int middle = taps / 2;
    return j + 1 - middle - part;
}

// Rows for `count` parts of a sample, 1 / phases apart. unit: lower rate / rate of the source.
void fillRows(const Prototype& p, double unit, int taps, int phases, int count, int16_t* rows) {
    const Kaiser kaiser(p.beta);
    for (int r = 0; r < count; ++r) {
        double h[kMaxTaps];
        for (int j = 0; j < taps; ++j) {
            const double u = unit * placeOf(j, taps, static_cast<double>(r) / phases);
            const double angle = 2 * std::numbers::pi * p.cut * u;
            h[j] = (std::abs(angle) < 1e-9 ? 1 : std::sin(angle) / angle) * kaiser(u / p.half);
        }
        quantise(h, taps, rows + r * taps);
    }
}

template <int Taps, int Phases>
struct Bank {
    alignas(32) int16_t rows[Taps * Phases];
    Polyphase bank;
    Bank(const Prototype& p, double unit, int step) : bank{rows, Taps, Phases, step} {
        fillRows(p, unit, Taps, Phases, Phases, rows);
    }
    Bank(const Bank&) = delete;
};

// From the high rate to Factor twelfths of it: one output for 12 / Factor samples, filters of 24 samples of the low
// rate.
template <int Factor>
struct TwelfthsDown : Bank<24 * 12 / Factor, Factor> {
    TwelfthsDown() : Bank<24 * 12 / Factor, Factor>(kTwelfths, Factor / 12.0, 12) {}
};

struct HalfBands {
    int16_t down[2][kQmfTaps];
    int16_t up[2][kQmfTaps]; // two filters of every second tap each
    Polyphase downBank[2];
    Polyphase upBank[2];
    HalfBands() {
        for (int band = 0; band < 2; ++band) {
            for (int j = 0; j < kQmfTaps; ++j) {
                const int mirrored = band == 1 && j % 2 != 0 ? -kQmf[j] : kQmf[j];
                down[band][kQmfTaps - 1 - j] = static_cast<int16_t>(2 * mirrored);
                const int place = j % 2 * kQmfTaps / 2 + kQmfTaps / 2 - 1 - j / 2;
                up[band][place] = static_cast<int16_t>(band == 1 ? -4 * mirrored : 4 * mirrored);
            }
            downBank[band] = {down[band], kQmfTaps, 1, 2};
            upBank[band] = {up[band], kQmfTaps / 2, 2, 1};
        }
    }
    HalfBands(const HalfBands&) = delete;
};

constexpr int kBlendSize = (kBlendPhases + 1) * kBlendTaps;
constexpr int kFileRates[2] = {1440, 1323};

struct BlendedUp {
    alignas(32) int16_t rows[kBlendSize];
    BlendedUp() { fillRows(kBlendedUp, 1, kBlendTaps, kBlendPhases, kBlendPhases + 1, rows); }
};

// All ratios of both rates of files; sines by the sum of angles, which is much faster.
struct BlendedDown {
    alignas(32) int16_t rows[2][kFreqScaleCount][kBlendSize];
    BlendedDown() {
        const Kaiser kaiser(5);
        constexpr int half = kBlendTaps / 2;
        double window[kBlendPhases + 1][kBlendTaps]; // over the place
        for (int r = 0; r <= kBlendPhases; ++r) {
            for (int j = 0; j < kBlendTaps; ++j) {
                const double u = placeOf(j, kBlendTaps, static_cast<double>(r) / kBlendPhases);
                window[r][j] = u == 0 ? 0 : kaiser(u / half) / u;
            }
        }
        for (int rate = 0; rate < 2; ++rate) {
            for (int s = 0; s < kFreqScaleCount; ++s) {
                fill(window, kBlendedDownCut * 8 * kFreqScales[s] / kFileRates[rate], rows[rate][s]);
            }
        }
    }

private:
    static void fill(const double (&window)[kBlendPhases + 1][kBlendTaps], double cut, int16_t* rows) {
        const double turn = 2 * std::numbers::pi * cut;
        double sine[kBlendTaps];
        double cosine[kBlendTaps];
        for (int j = 0; j < kBlendTaps; ++j) {
            sine[j] = std::sin(turn * placeOf(j, kBlendTaps, 0));
            cosine[j] = std::cos(turn * placeOf(j, kBlendTaps, 0));
        }
        for (int r = 0; r <= kBlendPhases; ++r) {
            const double s = std::sin(turn * r / kBlendPhases);
            const double c = std::cos(turn * r / kBlendPhases);
            double h[kBlendTaps];
            for (int j = 0; j < kBlendTaps; ++j) {
                h[j] = (sine[j] * c - cosine[j] * s) * window[r][j];
            }
            // The middle of the filter, where the quotient has its limit.
            if (r == 0) {
                h[kBlendTaps / 2 - 1] = turn;
            } else if (r == kBlendPhases) {
                h[kBlendTaps / 2] = turn;
            }
            quantise(h, kBlendTaps, rows + r * kBlendTaps);
        }
    }
};

const HalfBands& halfBands() {
    static const HalfBands bands;
    return bands;
}

template <int Factor>
const Polyphase& downOf() {
    static const TwelfthsDown<Factor> bank;
    return bank.bank;
}

} // namespace

const Polyphase& lowBandDown() {
    static const Bank<128, 5> bank(kLowBand, 5.0 / 32, 32);
    return bank.bank;
}

const Polyphase& lowBandUp() {
    static const Bank<20, 32> bank(kLowBand, 1, 5);
    return bank.bank;
}

const Polyphase& halfBandDown(int band) {
    return halfBands().downBank[band];
}

const Polyphase& halfBandUp(int band) {
    return halfBands().upBank[band];
}

Polyphase twelfthsUp(int factor) {
    static const Bank<24, 12> bank(kTwelfths, 1, 1);
    Polyphase stepped = bank.bank;
    stepped.step = factor;
    return stepped;
}

Polyphase twelfthsDown(int factor) {
    switch (factor) {
    case 2:
        return downOf<2>();
    case 3:
        return downOf<3>();
    case 4:
        return downOf<4>();
    case 6:
        return downOf<6>();
    default:
        return downOf<8>();
    }
}

const int16_t* blendedDown(int freqScaleIndex, int fileRate) {
    static const BlendedDown banks;
    return banks.rows[fileRate == kFileRates[0] ? 0 : 1][freqScaleIndex];
}

const int16_t* blendedUp() {
    static const BlendedUp bank;
    return bank.rows;
}

} // namespace vek
