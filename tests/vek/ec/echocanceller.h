// A canceller of echoes put together from the library's full-band functions, and scenes for it: shared by the tests of
// its controllers and by those beside an open canceller.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "veksc.h"

namespace echocanceller {

constexpr int kRate = 8000;
constexpr int kTaps = 128;
constexpr int kFrame = 8;

struct Scene {
    std::vector<double> far, near, echo;
};

// Far end for `seconds`; the near end talks, 6 dB above the echo's 12 dB of loss, from `from` to `to`; at `change`
// the path turns its sign.
inline Scene scene(double seconds, double from, double to, double change = 1e9) {
    std::mt19937 random(21);
    std::normal_distribution<double> normal;
    std::vector<double> path(kTaps);
    double energy = 0;
    for (int j = 0; j < kTaps; j++) {
        path[j] = normal(random) * std::exp(-j / 20.0);
        energy += path[j] * path[j];
    }
    for (double& p : path) {
        p *= 0.25 / std::sqrt(energy);
    }
    const int n = static_cast<int>(seconds * kRate);
    Scene s;
    s.far.resize(static_cast<size_t>(n) + kTaps + 1);
    for (double& v : s.far) {
        v = 0.1 * normal(random);
    }
    for (int i = 0; i < n; i++) {
        double sum = 0;
        for (int j = 0; j < kTaps; j++) {
            sum += path[j] * s.far[kTaps + 1 + i - j];
        }
        const double t = static_cast<double>(i) / kRate;
        s.echo.push_back(t < change ? sum : -sum);
        s.near.push_back(t >= from && t < to ? 0.05 * normal(random) : 0);
    }
    return s;
}

// How one form of a controller is called.
template <class S, auto getSize, auto initialise, auto updateState, auto call>
struct Controller {
    using State = S;
    static constexpr auto size = getSize;
    static constexpr auto init = initialise;
    static constexpr auto update = updateState;
    static constexpr auto control = call;
};

template <class S>
struct Full;
template <>
struct Full<float> : Controller<VeksFullbandControllerState_EC_32f, veksFullbandControllerGetSize_EC_32f,
                                veksFullbandControllerInit_EC_32f, veksFullbandControllerUpdate_EC_32f,
                                veksFullbandController_EC_32f> {
    static constexpr double scale = 1;
    static constexpr auto fir = veksFIR_EC_32f;
    static constexpr auto nlms = veksNLMS_EC_32f;
};
template <>
struct Full<int16_t> : Controller<VeksFullbandControllerState_EC_16s, veksFullbandControllerGetSize_EC_16s,
                                  veksFullbandControllerInit_EC_16s, veksFullbandControllerUpdate_EC_16s,
                                  veksFullbandController_EC_16s> {
    static constexpr double scale = 32768;
    static constexpr auto fir = veksFIR_EC_16s;
    static constexpr auto nlms = veksNLMS_EC_16s;
};

struct Track {
    std::vector<double> step, gain, loss; // per frame: relative step, gain; loss: echo over what is left of it, powers
    std::vector<double> echo, left;

    // Return loss of the fixed filter from t0 to t1, in dB.
    double lossOf(double t0, double t1) const {
        double e = 0;
        double l = 1e-20;
        for (auto i = static_cast<size_t>(t0 * kRate / kFrame); i < static_cast<size_t>(t1 * kRate / kFrame); i++) {
            e += echo[i];
            l += left[i];
        }
        return 10 * std::log10(e / l);
    }
    static double mean(const std::vector<double>& v, double t0, double t1) {
        double sum = 0;
        int n = 0;
        for (auto i = static_cast<size_t>(t0 * kRate / kFrame); i < static_cast<size_t>(t1 * kRate / kFrame); i++) {
            sum += v[i];
            n++;
        }
        return sum / n;
    }
};

template <class S>
Track cancel(const Scene& s) {
    using F = Full<S>;
    int size = 0;
    EXPECT_EQ(vekStsNoErr, F::size(kFrame, kTaps, kRate, &size));
    std::vector<Vek8u> memory(static_cast<size_t>(size) + 1);
    auto* state = reinterpret_cast<typename F::State*>(memory.data() + 1);
    EXPECT_EQ(vekStsNoErr, F::init(state, kFrame, kTaps, kRate));
    const auto to = [](double v) { return static_cast<S>(F::scale == 1 ? v : std::lround(v * F::scale)); };
    std::vector<S> far;
    for (const double v : s.far) {
        far.push_back(to(v));
    }
    std::vector<S> adaptive(kTaps);
    std::vector<S> fixed(kTaps);
    S err = 0;
    Track track;
    for (size_t i = 0; i + kFrame <= s.echo.size(); i += kFrame) {
        const S* ref = far.data() + kTaps + 1 + i;
        S sin[kFrame];
        S step[kFrame];
        S errA[kFrame];
        S errF[kFrame];
        S gain = 0;
        for (int k = 0; k < kFrame; k++) {
            sin[k] = to(s.echo[i + k] + s.near[i + k]);
        }
        EXPECT_EQ(vekStsNoErr, F::update(ref, sin, step, state));
        EXPECT_EQ(vekStsNoErr, F::nlms(ref, sin, step, errA, kFrame, adaptive.data(), kTaps, &err));
        EXPECT_EQ(vekStsNoErr, F::fir(ref, sin, errF, kFrame, fixed.data(), kTaps));
        EXPECT_EQ(vekStsNoErr, F::control(errA, errF, adaptive.data(), fixed.data(), &gain, state));
        double e = 0;
        double l = 0;
        for (int k = 0; k < kFrame; k++) {
            e += s.echo[i + k] * s.echo[i + k];
            const double left = errF[k] / F::scale - s.near[i + k];
            l += left * left;
            EXPECT_GE(step[k], 0);
            EXPECT_LE(step[k] / F::scale, 0.5);
        }
        EXPECT_GE(gain / F::scale, 0.0999);
        EXPECT_LE(gain / F::scale, 1);
        track.echo.push_back(e);
        track.left.push_back(l);
        track.step.push_back(step[0] / F::scale);
        track.gain.push_back(gain / F::scale);
    }
    return track;
}

} // namespace echocanceller
