// Post-filter of the low band: takes away, below 500 Hz, what lies between the harmonics of the pitch.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/corr.h"
#include "veksc_amrwbe.h"

using namespace vek;

namespace {

constexpr int kFrame = 1024;
constexpr int kSubframe = 64;
constexpr int kSubframes = kFrame / kSubframe;
constexpr int kHistory = 503;
constexpr int kAhead = 128; // samples that a lag may look forward
constexpr int kLongestLag = kHistory - kAhead;
constexpr int kMemory = 24;
constexpr int kDelay = kAhead + kMemory / 2;

// Low-pass filter of 500 Hz at 12.8 kHz: a sine cardinal under a raised cosine, sum 1, Q15.
std::array<Vek16s, kMemory + 1> lowPass() {
    std::array<double, kMemory + 1> h{};
    double sum = 0;
    constexpr int middle = kMemory / 2;
    for (int i = 0; i <= kMemory; ++i) {
        const double t = i - middle;
        const double phase = 2 * std::numbers::pi * t * 500 / 12800;
        const double window = 0.54 + 0.46 * std::cos(2 * std::numbers::pi * t / (kMemory + 2));
        h[static_cast<size_t>(i)] = (t == 0 ? 1 : std::sin(phase) / phase) * window;
        sum += h[static_cast<size_t>(i)];
    }
    std::array<Vek16s, kMemory + 1> taps{};
    for (size_t i = 0; i < taps.size(); ++i) {
        taps[i] = static_cast<Vek16s>(std::lround(32768 * h[i] / sum));
    }
    return taps;
}

const std::array<Vek16s, kMemory + 1> g_lowPass = lowPass();

// Half the lag if the signal repeats after half of it already.
int halved(const Vek16s* s, int lag) {
    const int half = lag / 2;
    const auto cross = static_cast<double>(corrKernels().dot16(s, s - half, kSubframe));
    const auto now = static_cast<double>(corrKernels().dot16(s, s, kSubframe));
    const auto then = static_cast<double>(corrKernels().dot16(s - half, s - half, kSubframe));
    return half > 0 && cross > 0 && cross * cross > 0.95 * 0.95 * now * then ? half : lag;
}

} // namespace

VekStatus veksPostFilterLowBand_AMRWBE_16s(const Vek16s* pSrcPitchLag, const Vek16s* pSrcPitchGain,
                                           Vek16s* pSrcDstSignal, Vek16s* pSrcDstSynth, Vek16s* pSrcDstNoise,
                                           Vek16s* pSrcDstFilterScale, int pitchAdjust) {
    if (anyNull(pSrcPitchLag, pSrcPitchGain, pSrcDstSignal, pSrcDstSynth, pSrcDstNoise, pSrcDstFilterScale)) {
        return vekStsNullPtrErr;
    }
    if (pitchAdjust < 0 || pitchAdjust > 1) {
        return vekStsRangeErr;
    }
    for (int j = 0; j < kSubframes; ++j) {
        if (pSrcPitchLag[j] < 0 || pSrcPitchLag[j] > kLongestLag) {
            return vekStsRangeErr;
        }
    }
    Vek16s signal[kHistory + kFrame];
    Vek16s noise[kMemory + kFrame];
    std::memcpy(signal, pSrcDstSynth, kHistory * sizeof(Vek16s));
    std::memcpy(signal + kHistory, pSrcDstSignal, kFrame * sizeof(Vek16s));
    std::memcpy(noise, pSrcDstNoise, kMemory * sizeof(Vek16s));
    double mean = *pSrcDstFilterScale / 256.0;
    for (int j = 0; j < kSubframes; ++j) {
        const Vek16s* s = signal + kHistory - kAhead + j * kSubframe;
        Vek16s* e = noise + kMemory + j * kSubframe;
        if (pSrcPitchLag[j] == 0) {
            std::fill_n(e, kSubframe, Vek16s{0});
            continue;
        }
        const int lag = pitchAdjust == 1 ? halved(s, pSrcPitchLag[j]) : pSrcPitchLag[j];
        float between[kSubframe];
        double energy = 0;
        for (int i = 0; i < kSubframe; ++i) {
            // Twice the difference; a long lag has no future yet.
            const int twice = 2 * s[i] - s[i - lag] - (lag <= kAhead ? s[i + lag] : s[i]);
            between[i] = 0.5F * static_cast<float>(twice);
            energy += static_cast<double>(between[i]) * between[i];
        }
        const double rms = std::sqrt(energy / kSubframe);
        mean = 0.99 * mean + 0.01 * 20 * std::log10(std::max(rms, 1.0));
        const double usual = std::pow(10.0, mean / 20);
        const double gain = std::clamp(pSrcPitchGain[j] / 16384.0, 0.0, 1.0);
        const auto weight = static_cast<float>(gain * usual / (usual + rms));
        for (int i = 0; i < kSubframe; ++i) {
            e[i] = fix::sat16(static_cast<int32_t>(std::lround(weight * between[i])));
        }
    }
    for (int i = 0; i < kFrame; ++i) {
        const int64_t low = corrKernels().dot16(g_lowPass.data(), noise + i, kMemory + 1);
        pSrcDstSignal[i] = fix::sat16_64(signal[kHistory - kDelay + i] - ((low + 0x4000) >> 15));
    }
    std::memcpy(pSrcDstSynth, signal + kFrame, kHistory * sizeof(Vek16s));
    std::memcpy(pSrcDstNoise, noise + kFrame, kMemory * sizeof(Vek16s));
    *pSrcDstFilterScale = fix::sat16(static_cast<int32_t>(std::lround(256 * mean)));
    return vekStsNoErr;
}
