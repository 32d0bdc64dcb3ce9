// Rigs that take turns. The two passes of a round measure the same tests on the same core; each test is measured by one
// rig while the other one is stopped, and then by the other. So the figures that are compared lie a few milliseconds
// apart, and what the machine does for longer than that is the same for both.
//
// The rigs of several rounds learn the counter's rate at the same time, for which each alone would need two seconds; no
// round is measured before all of them have done so.
#pragma once

#include <array>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <random>
#include <sched.h>
#include <sys/types.h>
#include <vector>

namespace krlab {

class Turns;

/// The seat of one pass among those that take turns. A rig process runs freely while it learns the counter's rate; from
/// its first test on it runs only when it has the turn. Each function may be called from any thread.
class Seat {
public:
    /// The pass is over: its partner goes on alone.
    ~Seat();
    Seat(const Seat&) = delete;
    Seat& operator=(const Seat&) = delete;

    /// A process of this pass was started.
    void started(pid_t process);
    /// What that process has told so far: tests begun and tests ended.
    void reached(size_t begun, size_t ended);
    /// It has ended, or is about to be ended.
    void exited();
    /// True while it is stopped.
    bool stopped() const;
    /// Lets it go on once more, if it has the turn. What it was just forking when it was stopped and let go on at once
    /// stays stopped: Linux forgets the second one of the two signals.
    void keepGoing() const;

private:
    friend class Turns;
    enum class State { preparing, waiting, running, over };
    explicit Seat(Turns& turns) : m_turns(turns) {}

    Turns& m_turns;
    // Under the lock of m_turns.
    State m_state = State::preparing;
    pid_t m_process = 0;
    size_t m_ended = 0;
};

/// The rounds, in the order in which they were added: the first one that is not over has the machine.
class Turns {
public:
    /// `seed` draws who is the first in each step.
    explicit Turns(unsigned long seed);
    Turns(const Turns&) = delete;
    Turns& operator=(const Turns&) = delete;

    /// Seats for the two passes of each of the next rounds. They must not outlive this object.
    std::vector<std::array<std::unique_ptr<Seat>, 2>> addRounds(size_t count);

private:
    friend class Seat;
    using Round = std::array<Seat*, 2>;

    void stop(Seat& seat);
    void resume(Seat& seat);
    void giveUp(Seat& seat);
    void next();

    mutable std::mutex m_mutex;
    std::mt19937_64 m_random;
    std::list<Round> m_rounds;
    std::vector<Seat*> m_step; ///< who has still to measure its test before a new step begins
    int m_core = -1;           ///< where the first round measures
    bool m_begun = false;      ///< the first round has had its first turn
    cpu_set_t m_allowed;       ///< the cores that this program may use
};

} // namespace krlab
