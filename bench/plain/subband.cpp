// Filters of subbands and their updates by their definitions, in 64-bit integers and in single precision.
#include "plain.h"

namespace {

constexpr int kSegments = 12;
constexpr int kBands = 65;

PLAIN void filter(const Vek32sc* const* x, const Vek32sc* const* c, Vek32sc* y, int segments, int n) {
    int64_t re[kBands] = {};
    int64_t im[kBands] = {};
    for (int s = 0; s < segments; ++s) {
        for (int k = 0; k < n; ++k) {
            re[k] += int64_t{x[s][k].re} * c[s][k].re - int64_t{x[s][k].im} * c[s][k].im;
            im[k] += int64_t{x[s][k].re} * c[s][k].im + int64_t{x[s][k].im} * c[s][k].re;
        }
    }
    for (int k = 0; k < n; ++k) {
        y[k].re = static_cast<Vek32s>(re[k] >> 15);
        y[k].im = static_cast<Vek32s>(im[k] >> 15);
    }
}

PLAIN void update(const Vek32s* step, const Vek32sc* const* x, const Vek32sc* e, Vek32sc** c, int segments, int n) {
    Vek32sc p[kBands];
    for (int k = 0; k < n; ++k) {
        p[k].re = static_cast<Vek32s>((int64_t{step[k]} * e[k].re) >> 15);
        p[k].im = static_cast<Vek32s>((int64_t{step[k]} * e[k].im) >> 15);
    }
    for (int s = 0; s < segments; ++s) {
        for (int k = 0; k < n; ++k) {
            c[s][k].re += static_cast<Vek32s>((int64_t{x[s][k].re} * p[k].re + int64_t{x[s][k].im} * p[k].im) >> 20);
            c[s][k].im += static_cast<Vek32s>((int64_t{x[s][k].re} * p[k].im - int64_t{x[s][k].im} * p[k].re) >> 20);
        }
    }
}

PLAIN void project(const Vek64f* const* step, const Vek32fc* const* x, const Vek32fc* const* e, Vek32fc** c,
                   int segments, int n, int order) {
    for (int p = 0; p < order; ++p) {
        Vek32fc w[kBands];
        for (int k = 0; k < n; ++k) {
            w[k].re = static_cast<float>(e[p][k].re * step[p][k]);
            w[k].im = static_cast<float>(e[p][k].im * step[p][k]);
        }
        for (int s = 0; s < segments; ++s) {
            for (int k = 0; k < n; ++k) {
                c[s][k].re += x[s + p][k].re * w[k].re + x[s + p][k].im * w[k].im;
                c[s][k].im += x[s + p][k].re * w[k].im - x[s + p][k].im * w[k].re;
            }
        }
    }
}

// Rows of subbands with the pointers to them, which the calls take.
template <class T, int Rows>
struct Table {
    alignas(64) T values[Rows][kBands + 3];
    T* rows[Rows];
    const T* inputs[Rows];
    void point() {
        for (int s = 0; s < Rows; ++s) {
            rows[s] = values[s];
            inputs[s] = values[s];
        }
    }
};
Table<Vek32sc, kSegments> signal, coefs;
Table<Vek32fc, kSegments + 4> signalF, coefsF, errorsF;
Table<Vek64f, 4> stepsF;
Vek32sc error[kBands], out[kBands];
Vek32s steps[kBands];

} // namespace

PEER_ROWS(plainsubband) {
    signal.point();
    coefs.point();
    signalF.point();
    coefsF.point();
    errorsF.point();
    stepsF.point();
    for (int s = 0; s < kSegments + 4; ++s) {
        if (s < kSegments) {
            data.fill(&signal.values[s][0].re, 2 * kBands, 20000, s);
            data.fill(&coefs.values[s][0].re, 2 * kBands, 3000, 40 + s);
        }
        data.fill(&signalF.values[s][0].re, 2 * kBands, 1, s);
        data.fill(&errorsF.values[s][0].re, 2 * kBands, 1e-3F, 20 + s);
    }
    data.fill(&error[0].re, 2 * kBands, 2000, 80);
    std::fill_n(steps, kBands, 300);
    for (auto& row : stepsF.values) {
        std::fill_n(row, kBands, 1e-3);
    }
    const struct { int segments, n; } shapes[] = {{4, 33}, {kSegments, kBands}};
    for (const auto& shape : shapes) {
        const int segments = shape.segments;
        const int n = shape.n;
        const std::string size = ", " + std::to_string(segments) + "x" + std::to_string(n);
        peerRow(
            "veksFIRSubband_EC_32sc_Sfs" + size, PEER_PLAIN,
            [=] { veksFIRSubband_EC_32sc_Sfs(signal.inputs, coefs.inputs, out, segments, n, 15); },
            [=] { filter(signal.inputs, coefs.inputs, out, segments, n); });
        peerRow(
            "veksFIRSubbandLow_EC_32sc_Sfs" + size, PEER_PLAIN,
            [=] { veksFIRSubbandLow_EC_32sc_Sfs(signal.inputs, coefs.inputs, segments, out, 0, n, 15); },
            [=] { filter(signal.inputs, coefs.inputs, out, segments, n); });
        const auto theirs = [=] { update(steps, signal.inputs, error, coefs.rows, segments, n); };
        peerRow(
            "veksFIRSubbandCoeffUpdate_EC_32sc_I" + size, PEER_PLAIN,
            [=] { veksFIRSubbandCoeffUpdate_EC_32sc_I(steps, signal.inputs, error, coefs.rows, segments, n, 20); },
            theirs);
        peerRow(
            "veksFIRSubbandLowCoeffUpdate_EC_32sc_I" + size, PEER_PLAIN,
            [=] {
                veksFIRSubbandLowCoeffUpdate_EC_32sc_I(signal.inputs, error, coefs.rows, segments, out, steps, 0, n,
                                                       20);
            },
            theirs);
        for (const int order : {1, 4}) {
            peerRow(
                "veksFIRSubbandAPCoeffUpdate_EC_32fc_I" + size + " of order " + std::to_string(order), PEER_PLAIN,
                [=] {
                    veksFIRSubbandAPCoeffUpdate_EC_32fc_I(stepsF.inputs, signalF.inputs, errorsF.inputs, coefsF.rows,
                                                          segments, n, order);
                },
                [=] { project(stepsF.inputs, signalF.inputs, errorsF.inputs, coefsF.rows, segments, n, order); });
        }
    }
}
