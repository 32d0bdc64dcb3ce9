// The filters of resamplers by formula in double precision, tones and their levels. Used by the tests of the resampling
// room; shares no code with the library.
#pragma once

#include <cmath>
#include <map>

#include "lp_reference.h"

namespace resref {

// A signal with zeros before it.
struct Past {
    const Samples& x;
    double operator[](long i) const { return i < 0 ? 0 : x[static_cast<size_t>(i)]; }
};

// The filters by formula: `taps` samples around a place, the cut-off in cycles of the source's rate, a Kaiser window.
struct Formula {
    int taps;
    double cut;
    double beta;
    // Those of a part of a sample, made when it is met first.
    mutable std::map<double, std::vector<double>> filters{};

    const std::vector<double>& filterAt(double part) const {
        std::vector<double>& h = filters[part];
        for (int j = 1 - taps / 2; h.size() < static_cast<size_t>(taps); j++) {
            const double u = j - part;
            const double w = 1 - 4 * u * u / taps / taps;
            const double window = w < 0 ? 1 : lpref::bessel(beta * std::sqrt(w));
            const double angle = 2 * M_PI * cut * u;
            h.push_back(std::abs(angle) < 1e-9 ? window : std::sin(angle) / angle * window);
        }
        return h;
    }

    // The value of the signal at the sample `whole` and `part` of one more, and the room that rounding the filter and
    // the result needs.
    double at(const Past& x, long whole, double part, double* room) const {
        double sum = 0;
        double gain = 0;
        double magnitude = 0;
        long j = whole - taps / 2 + 1;
        for (const double h : filterAt(part)) {
            sum += h * x[j];
            gain += h;
            magnitude += std::abs(x[j]);
            j++;
        }
        *room = 0.501 + magnitude / 32768;
        return sum / gain;
    }
};

inline double toneAt(double frequency, double i) {
    return 10000 * std::sin(2 * M_PI * frequency * i + 0.3);
}

// frequency: in cycles of the rate.
inline Samples tone(double frequency, size_t n) {
    Samples x(n);
    for (size_t i = 0; i < n; i++) {
        x[i] = static_cast<int16_t>(std::lround(toneAt(frequency, static_cast<double>(i))));
    }
    return x;
}

// Level of a tone in a signal in dB below 10000, under a Hann window, without the first samples.
inline double level(const Samples& x, double frequency, size_t skip = 400) {
    double re = 0;
    double im = 0;
    const auto n = static_cast<double>(x.size() - skip);
    for (size_t i = skip; i < x.size(); i++) {
        const auto t = static_cast<double>(i - skip);
        const double w = 1 - std::cos(2 * M_PI * t / n);
        re += w * x[i] * std::cos(2 * M_PI * frequency * t);
        im += w * x[i] * std::sin(2 * M_PI * frequency * t);
    }
    return 20 * std::log10(std::hypot(re, im) * 2 / n / 10000 + 1e-9);
}

// Power of the signal in dB below a tone of 10000.
inline double power(const Samples& x, size_t skip = 400) {
    double sum = 0;
    for (size_t i = skip; i < x.size(); i++) {
        sum += static_cast<double>(x[i]) * x[i];
    }
    return 10 * std::log10(sum * 2 / static_cast<double>(x.size() - skip) / 1e8 + 1e-12);
}

} // namespace resref
