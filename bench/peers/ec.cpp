// Echo cancellation beside a telephony package's vector functions and tone detector, and a transform package.
#include "peers.h"

#include "veksc.h"

#include <algorithm>
#include <cmath>
#include <limits>

#if __has_include(<spandsp.h>) && __has_include(<fftw3.h>)
#include <fftw3.h>
#include <spandsp.h>

namespace {

constexpr int kLen = 8;
// Aligned alike in every build.
alignas(64) Vek16s ref[320];
alignas(64) Vek16s coef[256];
Vek16s speech[80], out[kLen], step[kLen], err;
alignas(64) Vek32f refF[320];
alignas(64) Vek32f coefF[256];
Vek32f speechF[80], outF[kLen], stepF[kLen], errF;

// A process of the suites' shape, at rest in aligned memory.
template <class State>
struct Shape {
    alignas(32) Vek8u state[8192];
    alignas(32) Vek8u work[1024];
    State* get() { return reinterpret_cast<State*>(state); }
};
Shape<VeksSubbandProcessState_32f> process5, process6;
Shape<VeksSubbandProcessState_16s> processFixed;
Vek32f window[128], sumsF[128];
Vek16s windowFixed[64];
Vek32fc bands[33];
Vek32sc bandsFixed[33];

// Their side: in single precision beside our floats, in double beside our integers, whose 32 bits single does not fill.
template <class T>
struct Theirs {
    T window[128], history[128], sums[128];
    T* folded;
    T (*spectrum)[2];
};
Theirs<float> theirs;
Theirs<double> theirsWide;

template <class T>
T nearest(double v) {
    constexpr double top = std::numeric_limits<T>::max();
    return static_cast<T>(std::clamp(v + (v < 0 ? -0.5 : 0.5), -top - 1, top));
}

// A frame into the history, the fold, the transform.
template <class T, class Sample, class Transform>
void analyse(Theirs<T>& t, const Sample* fresh, int points, int frame, int len, Transform transform) {
    for (int i = 0; i < len - frame; ++i) {
        t.history[i] = t.history[i + frame];
    }
    for (int i = 0; i < frame; ++i) {
        t.history[len - frame + i] = fresh[i];
    }
    for (int n = 0; n < points; ++n) {
        t.folded[n] = t.history[n] * t.window[n];
    }
    for (int b = points; b < len; b += points) {
        for (int n = 0; n < points; ++n) {
            t.folded[n] += t.history[b + n] * t.window[b + n];
        }
    }
    transform();
}

template <class T, class Band, class Transform, class Put>
void synthesise(Theirs<T>& t, const Band* from, int points, int frame, int len, Transform transform, Put put) {
    for (int k = 0; k <= points / 2; ++k) {
        t.spectrum[k][0] = from[k].re;
        t.spectrum[k][1] = from[k].im;
    }
    transform();
    for (int b = 0; b < len; b += points) {
        for (int n = 0; n < points; ++n) {
            t.sums[b + n] += t.folded[n] * t.window[b + n];
        }
    }
    for (int i = 0; i < frame; ++i) {
        put(i, t.sums[i]);
    }
    for (int i = 0; i < len - frame; ++i) {
        t.sums[i] = t.sums[i + frame];
    }
    for (int i = len - frame; i < len; ++i) {
        t.sums[i] = 0;
    }
}

void fill(const PeerData& data) {
    data.fill(ref, 300, 1000);
    for (int i = 0; i < 300; ++i) {
        refF[i] = static_cast<Vek32f>(ref[i]) / 32768;
    }
    data.fill(speech, 80, 1000, 1);
    for (int i = 0; i < 80; ++i) {
        speechF[i] = static_cast<Vek32f>(speech[i]) / 32768;
    }
    data.fill(coef, 256, 200, 2);
    for (int i = 0; i < 256; ++i) {
        coefF[i] = static_cast<Vek32f>(coef[i]) / 32768;
    }
    for (int i = 0; i < kLen; ++i) {
        step[i] = 8192;
        stepF[i] = 0.25F;
    }
    for (int n = 0; n < 128; ++n) {
        theirs.window[n] = window[n] = static_cast<Vek32f>(std::sin(3.14159265 * (n + 0.5) / 128));
    }
    for (int n = 0; n < 64; ++n) {
        windowFixed[n] = static_cast<Vek16s>(32767 * std::sin(3.14159265 * (n + 0.5) / 64));
        theirsWide.window[n] = windowFixed[n] / 32768.0;
    }
}

void fullBand(int taps) {
    peerRow(
        "veksFIR_EC_16s, 8x" + std::to_string(taps), "spandsp vec_dot_prodi16",
        [taps] { veksFIR_EC_16s(ref + taps, speech, out, kLen, coef, taps); },
        [taps] {
            for (int i = 0; i < kLen; ++i) {
                out[i] = static_cast<Vek16s>(speech[i] - (vec_dot_prodi16(coef, ref + i + 1, taps) >> 15));
            }
        });
    peerRow(
        "veksFIR_EC_32f, 8x" + std::to_string(taps), "spandsp vec_dot_prodf",
        [taps] { veksFIR_EC_32f(refF + taps, speechF, outF, kLen, coefF, taps); },
        [taps] {
            for (int i = 0; i < kLen; ++i) {
                outF[i] = speechF[i] - vec_dot_prodf(coefF, refF + i + 1, taps);
            }
        });
    peerRow(
        "veksNLMS_EC_16s, 8x" + std::to_string(taps), "spandsp vec_lmsi16, vec_dot_prodi16",
        [taps] { veksNLMS_EC_16s(ref + taps + 1, speech, step, out, kLen, coef, taps, &err); },
        [taps] {
            for (int i = 0; i < kLen; ++i) {
                vec_lmsi16(ref + i, coef, taps, static_cast<Vek16s>(err >> 6));
                err = static_cast<Vek16s>(speech[i] - (vec_dot_prodi16(coef, ref + i + 1, taps) >> 15));
                out[i] = err;
            }
        });
    peerRow(
        "veksNLMS_EC_32f, 8x" + std::to_string(taps), "spandsp vec_lmsf, vec_dot_prodf",
        [taps] { veksNLMS_EC_32f(refF + taps + 1, speechF, stepF, outF, kLen, coefF, taps, &errF); },
        [taps] {
            for (int i = 0; i < kLen; ++i) {
                vec_lmsf(refF + i, coefF, taps, 0.01F * errF);
                errF = speechF[i] - vec_dot_prodf(coefF, refF + i + 1, taps);
                outF[i] = errF;
            }
        });
}

} // namespace

PEER_ROWS(ec) {
    fill(data);
    fullBand(128);
    fullBand(256);
    theirs.folded = fftwf_alloc_real(64);
    theirs.spectrum = fftwf_alloc_complex(33);
    theirsWide.folded = fftw_alloc_real(64);
    theirsWide.spectrum = fftw_alloc_complex(33);
    fftwf_plan forward5 = fftwf_plan_dft_r2c_1d(32, theirs.folded, theirs.spectrum, FFTW_MEASURE);
    fftwf_plan forward6 = fftwf_plan_dft_r2c_1d(64, theirs.folded, theirs.spectrum, FFTW_MEASURE);
    fftwf_plan backward5 = fftwf_plan_dft_c2r_1d(32, theirs.spectrum, theirs.folded, FFTW_MEASURE);
    fftwf_plan backward6 = fftwf_plan_dft_c2r_1d(64, theirs.spectrum, theirs.folded, FFTW_MEASURE);
    fftw_plan forwardWide = fftw_plan_dft_r2c_1d(64, theirsWide.folded, theirsWide.spectrum, FFTW_MEASURE);
    fftw_plan backwardWide = fftw_plan_dft_c2r_1d(64, theirsWide.spectrum, theirsWide.folded, FFTW_MEASURE);
    const auto putFloat = [](int i, float v) { speechF[i] = v; };
    fill(data);
    veksSubbandProcessInit_32f(process5.get(), 5, 24, 128, window, process5.work);
    veksSubbandProcessInit_32f(process6.get(), 6, 16, 64, window, process6.work);
    veksSubbandProcessInit_16s(processFixed.get(), 6, 16, 64, windowFixed, processFixed.work);
    peerRow(
        "veksSubbandAnalysis_32f32fc, 32", "fftw3f, fold by a plain loop",
        [] { veksSubbandAnalysis_32f32fc(speechF, bands, process5.get(), process5.work); },
        [=] { analyse(theirs, speechF, 32, 24, 128, [=] { fftwf_execute(forward5); }); });
    peerRow(
        "veksSubbandAnalysis_32f32fc, 64", "fftw3f, fold by a plain loop",
        [] { veksSubbandAnalysis_32f32fc(speechF, bands, process6.get(), process6.work); },
        [=] { analyse(theirs, speechF, 64, 16, 64, [=] { fftwf_execute(forward6); }); });
    peerRow(
        "veksSubbandAnalysis_16s32sc_Sfs, 64", "fftw3, fold and rounding by a plain loop",
        [] { veksSubbandAnalysis_16s32sc_Sfs(speech, bandsFixed, processFixed.get(), 0, processFixed.work); },
        [=] {
            analyse(theirsWide, speech, 64, 16, 64, [=] { fftw_execute(forwardWide); });
            for (int k = 0; k <= 32; ++k) {
                bandsFixed[k] = {nearest<Vek32s>(theirsWide.spectrum[k][0]),
                                 nearest<Vek32s>(theirsWide.spectrum[k][1])};
            }
        });
    peerRow(
        "veksSubbandSynthesis_32fc32f, 32", "fftw3f, overlap by a plain loop",
        [] { veksSubbandSynthesis_32fc32f(bands, sumsF, process5.get(), process5.work); },
        [=] {
            synthesise(
                theirs, bands, 32, 24, 128, [=] { fftwf_execute(backward5); }, putFloat);
        });
    peerRow(
        "veksSubbandSynthesis_32fc32f, 64", "fftw3f, overlap by a plain loop",
        [] { veksSubbandSynthesis_32fc32f(bands, sumsF, process6.get(), process6.work); },
        [=] {
            synthesise(
                theirs, bands, 64, 16, 64, [=] { fftwf_execute(backward6); }, putFloat);
        });
    peerRow(
        "veksSubbandSynthesis_32sc16s_Sfs, 64", "fftw3, overlap and rounding by a plain loop",
        [] { veksSubbandSynthesis_32sc16s_Sfs(bandsFixed, windowFixed, processFixed.get(), 0, processFixed.work); },
        [=] {
            synthesise(
                theirsWide, bandsFixed, 64, 16, 64, [=] { fftw_execute(backwardWide); },
                [](int i, double v) { windowFixed[i] = nearest<Vek16s>(v); });
        });
    static Shape<VeksToneDetectState_EC_16s> tone;
    static Shape<VeksToneDetectState_EC_32f> toneF;
    veksToneDetectInit_EC_16s(tone.get(), 8000);
    veksToneDetectInit_EC_32f(toneF.get(), 8000);
    static int result;
    static modem_connect_tones_rx_state_t* rx =
        modem_connect_tones_rx_init(nullptr, MODEM_CONNECT_TONES_ANS_PR, nullptr, nullptr);
    for (const int n : {64, 80}) {
        peerRow(
            "veksToneDetect_EC_16s, " + std::to_string(n), "spandsp modem_connect_tones_rx",
            [n] { veksToneDetect_EC_16s(speech, n, &result, tone.get()); },
            [n] { modem_connect_tones_rx(rx, speech, n); });
        peerRow(
            "veksToneDetect_EC_32f, " + std::to_string(n), "spandsp modem_connect_tones_rx",
            [n] { veksToneDetect_EC_32f(speechF, n, &result, toneF.get()); },
            [n] { modem_connect_tones_rx(rx, speech, n); });
    }
}
#endif
