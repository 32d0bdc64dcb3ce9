// The table of clocks beside independent open codecs: each file of peers/ tells, in one block, which of our calls
// stands beside which of theirs. Both are measured in turn, on the same data; or one of them alone, so that processes
// of both sides can take turns (bench/peers.py).
#pragma once

#include "krcputick.h"
#include "vekdefs.h"

#include <string>
#include <vector>

/// What a block fills its inputs with. A block is run once with each kind.
class PeerData {
public:
    enum class Kind { numbers, speech };
    explicit PeerData(Kind kind) : m_kind(kind) {}

    /// As the table tells it: "suite" for evenly spread random numbers, as the suites have them, or "speech".
    const char* name() const { return m_kind == Kind::numbers ? "suite" : "speech"; }
    bool isSpeech() const { return m_kind == Kind::speech; }
    /// n values within -peak..peak; the same for the same `stretch`, others for another one. Speech goes on from sample
    /// to sample at 8 kHz, its loudest sample of the stretch is near the peak.
    void fill(Vek16s* x, int n, int peak, int stretch = 0) const;
    void fill(Vek32s* x, int n, int peak, int stretch = 0) const;
    void fill(Vek32f* x, int n, float peak, int stretch = 0) const;
    /// The same stretch as samples and as numbers up to 1.
    void fill(Vek16s* x, Vek32f* numbers, int n, int peak, int stretch = 0) const {
        fill(x, n, peak, stretch);
        fill(numbers, n, 1, stretch);
    }

private:
    Kind m_kind;
};

/// Memory for a state of ours, of the size that `getSize` tells; it stays.
template <class State>
State* peerState(VekStatus (*getSize)(int*)) {
    static std::vector<char> memory;
    int size = 0;
    getSize(&size);
    memory.resize(static_cast<std::size_t>(size));
    return reinterpret_cast<State*>(memory.data());
}

using PeerBlock = void (*)(const PeerData& data);

/// Puts a block into the list; for PEER_ROWS and PEER_ROWS_ONCE alone.
struct PeerBlockMark {
    PeerBlockMark(const char* topic, PeerBlock block, bool once);
};

/// A block of rows: PEER_ROWS(g729gain) { peerRow("veksF, 80", "package step", [&] { veksF(...); }, [&] { step(...);
/// }); } `data` is what to fill inputs with.
#define PEER_ROWS(topic) PEER_BLOCK(topic, false)
/// The same for calls whose work does not hang on a signal: the block is run once.
#define PEER_ROWS_ONCE(topic) PEER_BLOCK(topic, true)
#define PEER_BLOCK(topic, once)                                                                                        \
    static void peerRows_##topic(const PeerData& data);                                                                \
    static const PeerBlockMark peerMark_##topic(#topic, peerRows_##topic, once);                                       \
    static void peerRows_##topic([[maybe_unused]] const PeerData& data)

/// One side of a row.
struct PeerSide {
    void* call;
    /// Clocks of one call: the reading of a batch of calls divided by their number.
    double (*batch)(void* call, int calls);
};

template <class Call>
PeerSide peerSide(Call& call) {
    return {&call, [](void* that, int calls) {
                Call& made = *static_cast<Call*>(that);
                const unsigned long long begin = vek_get_cyclon_counter();
                for (int i = 0; i < calls; ++i) {
                    made();
                    __asm__ volatile("" : : : "memory"); // each call reads and writes anew
                }
                return static_cast<double>(vek_get_cyclon_counter() - begin) / calls;
            }};
}

/// Measures and prints a row, unless the command line leaves it out; with `once` for the first kind of data alone.
void peerMeasure(const std::string& functions, const std::string& peer, PeerSide ours, PeerSide theirs, bool once);

/// A row. `functions`: "veksA", "veksA + veksB" for one call of each, with the size behind a comma, "veksA, 80".
/// `peer`: the package and its function. Each call has to bring its own state back, at a cost small beside its work or
/// the same on both sides. Both are called once before anything is measured.
template <class Ours, class Theirs>
void peerRow(const std::string& functions, const std::string& peer, Ours ours, Theirs theirs) {
    peerMeasure(functions, peer, peerSide(ours), peerSide(theirs), false);
}

/// The same for a call that no data of the block come into.
template <class Ours, class Theirs>
void peerRowOnce(const std::string& functions, const std::string& peer, Ours ours, Theirs theirs) {
    peerMeasure(functions, peer, peerSide(ours), peerSide(theirs), true);
}
