#include "peers.h"

#include "plain/rta.h"

#include "veksc.h"

using namespace PLAIN_BUILD::rta;

namespace {

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
        [] { g_found = searchDelays(target, h, 40, past + 155, 243); });
    peerRow(
        "veksFixedCodebookSearchRandom_RTA_32f, 80x256", PEER_PLAIN,
        [] { veksFixedCodebookSearchRandom_RTA_32f(target, h, y, 80, index, &gain, 256, 0, 0); },
        [] { g_found = searchVectors(target, h, 80, past, 256); });
}
