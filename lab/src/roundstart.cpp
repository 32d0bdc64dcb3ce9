#include "roundstart.h"

#include <fmt/format.h>

namespace krlab {

namespace {

// A page of memory: where the stack lies within one depends on the length of names and paths, and short calls may
// depend on that.
constexpr size_t mostPadding = 4096;

} // namespace

std::vector<std::string> loopKeys(int loops) {
    return {"-dMethod=Iterative", fmt::format("-dStartNumLoops={}", loops), "-dStopNumLoops=1", "-dAccuracy=0"};
}

void startRounds(const RoundStart& start, Lanes& lanes, Turns& turns) {
    auto seats = turns.addRounds(start.count);
    for (size_t round = 0; round < start.count; ++round) {
        // Whatever a process inherits from being the second one, neither side has it more often.
        const std::uint64_t lot = start.draw(round);
        const bool newFirst = (lot & 1) != 0;
        for (const Side side : {newFirst ? sideNew : sideOld, newFirst ? sideOld : sideNew}) {
            if (start.alone && side == sideNew) {
                seats[round][side].reset();
                continue;
            }
            PassRequest request = start.request(round, side);
            request.padding = 1 + (lot >> (side == sideOld ? 16 : 32)) % mostPadding;
            request.seat = std::move(seats[round][side]);
            lanes.start(std::move(request),
                        [done = start.done, round, side](Pass pass) { done(round, side, std::move(pass)); });
        }
    }
}

} // namespace krlab
