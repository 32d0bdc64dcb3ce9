// What the tests of whole codecs share: a signal to code and a distance of two signals.
// The signal is the same at each call; what is asserted of codes and distances goes with it.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

// A lasting tone of so many radians a sample.
inline std::vector<int16_t> tone(size_t length, double frequency) {
    std::vector<int16_t> x(length);
    for (size_t i = 0; i < x.size(); ++i) {
        x[i] = static_cast<int16_t>(9000 * std::sin(frequency * static_cast<double>(i)));
    }
    return x;
}

// Speech-like: voiced stretches with a moving pitch and formants, unvoiced ones, pauses with faint noise.
inline std::vector<int16_t> speechLike(size_t length) {
    std::mt19937 random(729);
    std::normal_distribution<double> noise(0, 1);
    std::uniform_real_distribution<double> unit(0, 1);
    std::vector<int16_t> x;
    double y[5] = {};
    double formant[2] = {500, 1500};
    double aim[2] = {500, 1500};
    double period = 60;
    double left = 0;
    double level = 0;
    double last = 0;
    int kind = 0;
    int stretch = 0;
    while (x.size() < length) {
        if (stretch-- == 0) {
            const double draw = unit(random);
            kind = draw < 0.6 ? 0 : draw < 0.8 ? 1 : 2;
            stretch = 600 + static_cast<int>(1500 * unit(random));
            aim[0] = 280 + 500 * unit(random);
            aim[1] = 900 + 1500 * unit(random);
            period = 30 + 90 * unit(random);
        }
        level += ((kind == 0 ? 900.0 : kind == 1 ? 160.0 : 4.0) - level) * 0.01;
        for (int i = 0; i < 2; ++i) {
            formant[i] += (aim[i] - formant[i]) * 0.003;
        }
        double source = noise(random) * (kind == 0 ? 0.06 : 1);
        if (kind == 0 && (left -= 1) <= 0) {
            source += 4;
            period = std::clamp(period * (1 + 0.01 * noise(random)), 24.0, 130.0);
            left += period;
        }
        const double tilted = source + (kind == 0 ? 0.7 : 0.0) * last;
        last = tilted;
        double v = tilted * level;
        for (int i = 0; i < 2; ++i) {
            const double r = i == 0 ? 0.965 : 0.94;
            const double out =
                v * 0.35 + 2 * r * std::cos(2 * 3.14159265 * formant[i] / 8000) * y[2 * i] - r * r * y[2 * i + 1];
            y[2 * i + 1] = y[2 * i];
            y[2 * i] = out;
            v = out;
        }
        x.push_back(static_cast<int16_t>(std::clamp(v, -30000.0, 30000.0)));
    }
    return x;
}

// Ratio of signal and difference, mean over the frames that are no pauses, in dB.
inline double segmentalDistance(const std::vector<int16_t>& want, const std::vector<int16_t>& got, size_t frame) {
    double sum = 0;
    int count = 0;
    for (size_t f = 0; f + frame <= std::min(want.size(), got.size()); f += frame) {
        double signal = 0;
        double error = 0.01;
        for (size_t i = f; i < f + frame; ++i) {
            signal += double{1} * want[i] * want[i];
            error += double{1} * (want[i] - got[i]) * (want[i] - got[i]);
        }
        if (signal > 100.0 * 100 * static_cast<double>(frame)) {
            sum += std::clamp(10 * std::log10(signal / error), -10.0, 80.0);
            ++count;
        }
    }
    return sum / count;
}

// A rate for each frame, drawn at random.
template <size_t Frames>
std::array<int, Frames> randomRates(unsigned seed, int rates) {
    std::mt19937 random(seed);
    std::array<int, Frames> modes{};
    for (int& mode : modes) {
        mode = static_cast<int>(random() % static_cast<unsigned>(rates));
    }
    return modes;
}
