// The table of clocks beside independent open codecs: each file of peers/ tells, in one block, which of our calls
// stands beside which of theirs. Both are measured in turn, in one run, on the same data.
#pragma once

#include "krcputick.h"

#include <algorithm>
#include <cstdio>

using PeerBlock = void (*)();

/// Puts a block into the list; for PEER_ROWS alone.
struct PeerBlockMark {
    PeerBlockMark(const char* topic, PeerBlock block);
};

/// A block of rows: PEER_ROWS(g729gain) { peerRow("veksF", "package step", [&] { veksF(...); }, [&] { step(...); }); }
#define PEER_ROWS(topic)                                                                                               \
    static void peerRows_##topic();                                                                                    \
    static const PeerBlockMark peerMark_##topic(#topic, peerRows_##topic);                                             \
    static void peerRows_##topic()

/// Clocks of one call: the reading of a batch of calls, less than which nothing was ever seen, divided by their number.
template <class Call>
double peerBatch(Call& call, int calls) {
    const unsigned long long begin = vek_get_cyclon_counter();
    for (int i = 0; i < calls; ++i) {
        call();
    }
    return static_cast<double>(vek_get_cyclon_counter() - begin) / calls;
}

/// Measures both in turn and prints: our function, clocks, clocks of the peer, ratio, the peer's name. Each call has to
/// bring its own state back, at a cost small beside its work or the same on both sides.
template <class Ours, class Theirs>
void peerRow(const char* function, const char* peer, Ours ours, Theirs theirs) {
    constexpr int rounds = 400;
    constexpr double batchClocks = 40000;
    const int ourCalls = std::clamp(static_cast<int>(batchClocks / peerBatch(ours, 3)), 1, 2000);
    const int theirCalls = std::clamp(static_cast<int>(batchClocks / peerBatch(theirs, 3)), 1, 2000);
    double best = 1e30;
    double theirBest = 1e30;
    for (int i = 0; i < rounds; ++i) {
        best = std::min(best, peerBatch(ours, ourCalls));
        theirBest = std::min(theirBest, peerBatch(theirs, theirCalls));
    }
    std::printf("%-45s %10.0f %10.0f %6.2f  %s\n", function, best, theirBest, best / theirBest, peer);
    std::fflush(stdout);
}
