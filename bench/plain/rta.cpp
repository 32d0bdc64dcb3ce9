// Searches of the real-time audio codec by their definitions: each vector of the codebook is filtered and compared.
#include "plain.h"

namespace {

// Convolution of every vector of a codebook and two sums: the search without any of its short cuts.
template <class Vector>
float plainSearch(const float* target, const float* h, int n, int count, Vector vector) {
    float best = -1;
    for (int k = 0; k < count; ++k) {
        const float* x = vector(k);
        float correlation = 0;
        float energy = 0;
        for (int i = 0; i < n; ++i) {
            float y = 0;
            for (int j = 0; j <= i; ++j) {
                y += x[j] * h[i - j];
            }
            correlation += y * target[i];
            energy += y * y;
        }
        best = std::fmax(best, correlation * correlation / energy);
    }
    return best;
}

volatile float g_found;

} // namespace

PEER_ROWS(plainrta) {
    static Vek32f target[80];
    static Vek32f h[80];
    static Vek32f past[400];
    static Vek32f y[80];
    static Vek32f lag;
    static Vek32f gain;
    static int index[5];
    static const Vek32f boundary[5] = {1, 18, 48, 86, 145};
    for (int i = 0; i < 80; ++i) {
        h[i] = static_cast<float>(std::pow(0.85, i) * std::cos(0.5 * i));
    }
    data.fill(target, 80, 4000);
    data.fill(past, 400, 4000, 1);
    peerRow(
        "veksAdaptiveCodebookSearch_RTA_32f, 40x243", PEER_PLAIN,
        [] { veksAdaptiveCodebookSearch_RTA_32f(target, h, 40, boundary, past + 200, &lag, index, y, 32, 0); },
        [] { g_found = plainSearch(target, h, 40, 243, [](int k) { return past + 155 - k / 2; }); });
    peerRow(
        "veksFixedCodebookSearchRandom_RTA_32f, 80x256", PEER_PLAIN,
        [] { veksFixedCodebookSearchRandom_RTA_32f(target, h, y, 80, index, &gain, 256, 0, 0); },
        [] { g_found = plainSearch(target, h, 80, 256, [](int k) { return past + k; }); });
}
