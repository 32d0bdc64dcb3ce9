// Vectors filtered by an impulse response, and what a search asks of them.
#pragma once

#include <algorithm>
#include <cmath>

#include "sc/kernels/floatcorr.h"
#include "sc/kernels/loops.h"
#include "sc/kernels/rta.h"

namespace vek::rta {

using namespace vek;

constexpr int kMostSubframe = 160;

// The impulse response of a subframe of n samples.
class Response {
public:
    Response(const float* h, int n) : m_n(n) {
        std::fill_n(m_h, n - 1, 0.0F);
        std::copy_n(h, n, m_h + n - 1);
        std::fill_n(m_h + 2 * n - 1, 8, 0.0F);
    }
    // The subframe, up to a multiple of eight with zeros behind.
    const float* samples() const { return m_h + m_n - 1; }
    int padded() const { return (m_n + 7) / 8 * 8; }

    // y = x filtered
    void filter(const float* x, float* y) const {
        float turned[kMostSubframe];
        std::reverse_copy(x, x + m_n, turned);
        floatCorrKernels().corr32f(turned, m_h, m_n, m_n, y);
    }

    // d[i] = correlation of x with the response from i on
    void correlate(const float* x, float* d) const {
        float behind[2 * kMostSubframe];
        std::copy_n(x, m_n, behind);
        std::fill_n(behind + m_n, m_n, 0.0F);
        floatCorrKernels().corr32f(samples(), behind, m_n, m_n, d);
    }

private:
    int m_n;
    float m_h[2 * kMostSubframe + 8];
};

// A vector that enters a filter from its front, sample by sample, and the filtered vector: what a codebook of
// overlapping vectors is made of. At most `steps` samples can follow a start.
template <int Steps>
class Sliding {
public:
    Sliding(const Response& response, int n) : m_response(response), m_n(n) {}

    void start(const float* x) {
        m_y = m_room + Steps;
        m_response.filter(x, m_y);
        std::fill_n(m_y + m_n, 8, 0.0F);
    }
    // target and other have zeros behind them up to a multiple of eight.
    CommonSums sums(const float* target, const float* other) { return add(0, target, other); }
    CommonSums push(float sample, const float* target, const float* other) {
        open();
        return add(sample, target, other);
    }
    void push(float sample) {
        open();
        loopKernels().addScaled32f(m_y, m_response.samples(), sample, m_y, m_n);
    }
    const float* filtered() const { return m_y; }

private:
    // Room at the front; what leaves at the back is forgotten.
    void open() {
        --m_y;
        m_y[0] = 0;
        m_y[m_n] = 0;
    }
    CommonSums add(float v, const float* target, const float* other) {
        return rtaKernels().addResponse(m_y, m_response.samples(), v, target, other, m_response.padded());
    }

    const Response& m_response;
    int m_n;
    float* m_y = nullptr;
    float m_room[Steps + kMostSubframe + 8];
};

// A subframe with zeros behind it.
class Padded {
public:
    explicit Padded(const float* x, int n) {
        std::copy_n(x, n, m_x);
        std::fill_n(m_x + n, 8, 0.0F);
    }
    const float* data() const { return m_x; }

private:
    float m_x[kMostSubframe + 8];
};

// How well a vector fits: its correlation with the target, with its sign, over the root of its energy; kept squared.
struct Fit {
    float correlation = 0;
    float energy = 0;
    // Signed squares over energies, without dividing. A vector without energy is worse than none.
    bool betterThan(const Fit& other) const {
        if (!(energy > 0)) {
            return false;
        }
        if (!(other.energy > 0)) {
            return true;
        }
        const double mine = static_cast<double>(correlation) * std::abs(correlation);
        const double theirs = static_cast<double>(other.correlation) * std::abs(other.correlation);
        return mine * other.energy > theirs * energy;
    }
    float gain() const { return energy > 0 ? correlation / energy : 0; }
};

} // namespace vek::rta
