// What all controllers of echo cancellers share: whether the near end talks, how far to learn, which of two filters is
// the better one, how much of the residual to let through. Levels are mean squares; the scale is the caller's.
#pragma once

#include <cmath>
#include <cstdint>

#include "sc/common/fixmath.h"
#include "vekdefs.h"

namespace vek::ec {

// Longest frame of a controller.
constexpr int kMaxFrame = 4096;

// How samples of a kind stand to a full scale of 1.
template <typename S>
struct Form;
template <>
struct Form<Vek16s> {
    static constexpr double unit = 1.0 / 32768;
    static Vek16s fraction(double v) { return fix::sat16(static_cast<int32_t>(std::lround(v * 32768))); }
};
template <>
struct Form<Vek32f> {
    static constexpr double unit = 1;
    static Vek32f fraction(double v) { return static_cast<Vek32f>(v); }
};

constexpr double kLargestStep = 0.5;
constexpr double kSilence = 1e-7; // -70 dB of a full scale of 1
constexpr double kNothing = 1e-30;

// A mean over about 32 ms.
class Mean {
public:
    void add(double v, double keep) { m_value = keep * m_value + (1 - keep) * v; }
    void set(double v) { m_value = v; }
    double value() const { return m_value; }

private:
    double m_value = 0;
};

enum class Move { none, toFixed, toAdaptive };

// Which way coefficients go, by the errors of the adaptive and the fixed filter.
inline Move betterOf(const Mean& adaptive, const Mean& fixed, bool doubleTalk) {
    if (!doubleTalk && adaptive.value() < 0.7 * fixed.value()) {
        return Move::toFixed;
    }
    return adaptive.value() > 2 * fixed.value() ? Move::toAdaptive : Move::none;
}

class Judge {
public:
    void init(int frameSize, int sampleFreq) {
        *this = Judge{};
        const double seconds = static_cast<double>(frameSize) / sampleFreq;
        m_pace.keep = std::exp(-seconds / 0.032);
        m_pace.tail = std::exp(-seconds / 0.1);
        m_pace.rise = std::exp(seconds / 4);
        m_pace.hold = static_cast<int>(std::ceil(0.06 / seconds));
        m_pace.anew = static_cast<int>(std::ceil(1 / seconds));
    }

    // A frame: powers of both ends, the near end's peak against the most that the far end could make of it.
    // Gives the step, 0..kLargestStep.
    double step(double far, double near, double nearPeak, double farPeak) {
        m_near.add(near, m_pace.keep);
        m_farPeak = std::fmax(farPeak, m_farPeak * m_pace.tail);
        m_silent = far < kSilence;
        bool sign = nearPeak > 0.9 * m_farPeak && near > kSilence;
        // Above the best result once reached: talk, or, when it lasts, another path.
        const double left = m_near.value() > kNothing ? std::fmin(m_fixed.value() / m_near.value(), 1) : 1;
        if (!m_silent && !sign) {
            const bool worse = m_best < 0.25 && left > 6 * m_best + 0.01;
            m_worseFrames = worse ? m_worseFrames + 1 : 0;
            sign = worse;
            if (m_worseFrames > m_pace.anew) {
                m_best = 1;
                m_worseFrames = 0;
                m_hold = 0;
                sign = false;
            }
        }
        m_hold = sign ? m_pace.hold : m_hold > 0 ? m_hold - 1 : 0;
        if (m_hold == 0 && !m_silent && m_judged) {
            m_best = std::fmin(left, std::fmin(m_best * m_pace.rise, 1));
        }
        m_factor = m_hold > 0 ? std::fmax(m_factor * 0.35, 1.0 / 64) : std::fmin(m_factor * 1.5, 1);
        return m_silent ? 0 : kLargestStep * m_factor;
    }

    // What the fixed filter has left of the frame.
    void leave(double fixedError) {
        m_fixed.add(fixedError, m_pace.keep);
        m_judged = true;
    }

    // Amplitude of the residual to let through, 0.1..1.
    double gain() {
        double target = 1;
        if (!doubleTalk() && !m_silent && m_near.value() > kNothing) {
            target = std::fmin(std::fmax(std::sqrt(m_fixed.value() / m_near.value()), 0.1), 1);
        }
        m_gain = m_pace.keep * m_gain + (1 - m_pace.keep) * target;
        return m_gain;
    }

    bool doubleTalk() const { return m_hold > 0; }
    bool silent() const { return m_silent; }
    double keep() const { return m_pace.keep; }

private:
    // By the length of a frame: what stays of a mean and of a peak, how fast the best result is forgotten, and for how
    // many frames talk is held and a worse result lasts before all begins anew.
    struct Pace {
        double keep = 0, tail = 0, rise = 0;
        int hold = 0, anew = 0;
    };

    Pace m_pace;
    Mean m_near;
    Mean m_fixed;
    double m_farPeak = 0;
    double m_best = 1;
    double m_factor = 1.0 / 64;
    double m_gain = 1;
    int m_hold = 0;
    int m_worseFrames = 0;
    bool m_silent = true;
    bool m_judged = false;
};

// Mean square and peak of a frame of full scale 1.
struct Level {
    double power = 0;
    double peak = 0;
};

template <typename S>
Level levelOf(const S* x, int n, double unit) {
    Level level;
    for (int i = 0; i < n; ++i) {
        const double v = unit * x[i];
        level.power += v * v;
        level.peak = std::fmax(level.peak, std::fabs(v));
    }
    level.power /= n;
    return level;
}

} // namespace vek::ec
