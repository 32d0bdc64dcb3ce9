#include "peers.h"

#include "plain/subband.h"

#include "veksc.h"

using namespace PLAIN_BUILD::subband;

namespace {

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
