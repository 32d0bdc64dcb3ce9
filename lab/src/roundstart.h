// Starting the passes of rounds: who is the first and where its stack lies is drawn by lot, so that neither subject has
// anything more often than the other one.
#pragma once

#include "lanes.h"
#include "rounds.h"
#include "turns.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace krlab {

/// Rounds whose rigs learn the counter's rate together, at most.
inline constexpr int mostRounds = 12;

/// Keys of the rig by which a line is read in loops of equal length on both sides: from `loops` calls to four times as
/// many, up to three times.
std::vector<std::string> loopKeys(int loops);

struct RoundStart {
    size_t count = 1;   ///< rounds that are started together
    bool alone = false; ///< of one subject, whose side is the old one
    /// What a pass is to measure; seat and padding are added here.
    std::function<PassRequest(size_t round, Side side)> request;
    std::function<void(size_t round, Side side, Pass pass)> done;
    std::function<std::uint64_t(size_t round)> draw; ///< 64 bits of chance for a round
};

/// Starts the passes in `lanes`, which must have room for all of them, as they wait for each other.
void startRounds(const RoundStart& start, Lanes& lanes, Turns& turns);

} // namespace krlab
