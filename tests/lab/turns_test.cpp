// Who has the turn, on processes that do nothing but wait for their signals.
#include "turns.h"

#include <array>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

using namespace krlab;

namespace {

// In a process group of its own, as a rig is.
class Sleeper {
public:
    Sleeper() : m_process(::fork()) {
        if (m_process == 0) {
            for (;;) {
                ::pause();
            }
        }
        ::setpgid(m_process, m_process);
    }
    ~Sleeper() {
        ::kill(m_process, SIGKILL);
        int status = 0;
        ::waitpid(m_process, &status, 0);
    }
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

    pid_t process() const { return m_process; }
    // Waits until the system has stopped it, or let it go on; false if that does not come about within ten seconds.
    bool becomes(bool stopped) const {
        for (int tries = 0; tries < 10000; ++tries) {
            std::ifstream file("/proc/" + std::to_string(m_process) + "/stat");
            std::string text;
            std::getline(file, text);
            if ((text.at(text.rfind(')') + 2) == 'T') == stopped) {
                return true;
            }
            ::usleep(1000);
        }
        return false;
    }

private:
    pid_t m_process;
};

// Two rigs of one round.
struct Played {
    std::array<Sleeper, 2> rigs;
    std::array<std::unique_ptr<Seat>, 2> seats;
    std::array<size_t, 2> ended{};

    explicit Played(std::array<std::unique_ptr<Seat>, 2> given) : seats(std::move(given)) {
        for (size_t i = 0; i < 2; ++i) {
            seats[i]->started(rigs[i].process());
        }
    }
    // Both have come to their first test.
    void prepare() {
        for (const auto& seat : seats) {
            seat->reached(1, 0);
        }
    }
    // The one that has the turn, if one has it; both never do.
    std::optional<size_t> running() const {
        EXPECT_TRUE(seats[0] == nullptr || seats[1] == nullptr || seats[0]->stopped() || seats[1]->stopped());
        for (size_t i = 0; i < 2; ++i) {
            if (seats[i] != nullptr && !seats[i]->stopped()) {
                return i;
            }
        }
        return std::nullopt;
    }
    void endTest(size_t rig) {
        ++ended[rig];
        seats[rig]->reached(ended[rig] + 1, ended[rig]);
    }
};

cpu_set_t coresOf(pid_t process) {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    EXPECT_EQ(::sched_getaffinity(process, sizeof cores, &cores), 0);
    return cores;
}

// One round of which both rigs are ready.
class LabTurnsOfARound : public ::testing::Test {
protected:
    Turns turns{7};
    Played round{std::move(turns.addRounds(1)[0])};

    void SetUp() override { round.prepare(); }
};

} // namespace

TEST(LabTurns, NobodyMeasuresBeforeAllAreReady) {
    Turns turns(1);
    auto seats = turns.addRounds(2);
    Played first(std::move(seats[0]));
    Played second(std::move(seats[1]));
    first.prepare();
    second.seats[1]->reached(1, 0);
    EXPECT_FALSE(first.running());
    EXPECT_TRUE(second.seats[1]->stopped());
    EXPECT_FALSE(second.seats[0]->stopped()); // still learns the rate
    second.seats[0]->reached(1, 0);
    EXPECT_TRUE(first.running());
    EXPECT_FALSE(second.running());
}

TEST_F(LabTurnsOfARound, ProcessesAreStoppedAndGoOn) {
    for (const size_t rig : {round.running().value(), 1 - round.running().value()}) {
        EXPECT_TRUE(round.rigs[rig].becomes(false));
        EXPECT_TRUE(round.rigs[1 - rig].becomes(true));
        round.endTest(rig);
    }
}

TEST_F(LabTurnsOfARound, WhateverStandsStillThoughItHasTheTurnIsLetGoOn) {
    const size_t first = *round.running();
    for (const Sleeper& rig : round.rigs) {
        ::kill(-rig.process(), SIGSTOP);
        ASSERT_TRUE(rig.becomes(true));
    }
    for (const auto& seat : round.seats) {
        seat->keepGoing();
    }
    EXPECT_TRUE(round.rigs[first].becomes(false));
    EXPECT_TRUE(round.rigs[1 - first].becomes(true));
}

TEST_F(LabTurnsOfARound, BothMeasureEachTestAndEitherIsTheFirstAtTimes) {
    int newFirst = 0;
    for (int test = 0; test < 40; ++test) {
        const size_t first = round.running().value();
        newFirst += first == 1 ? 1 : 0;
        round.endTest(first);
        EXPECT_EQ(round.running(), 1 - first);
        round.endTest(1 - first);
        EXPECT_EQ(round.ended[0], round.ended[1]);
    }
    EXPECT_GT(newFirst, 8);
    EXPECT_LT(newFirst, 32);
}

TEST_F(LabTurnsOfARound, TextWithinATestEndsNoTurn) {
    const size_t first = round.running().value();
    round.seats[first]->reached(1, 0);
    round.seats[1 - first]->reached(1, 0);
    EXPECT_EQ(round.running(), first);
}

TEST_F(LabTurnsOfARound, BothMeasureOnTheSameCore) {
    const size_t first = round.running().value();
    round.endTest(first);
    const cpu_set_t one = coresOf(round.rigs[first].process());
    const cpu_set_t other = coresOf(round.rigs[1 - first].process());
    EXPECT_EQ(CPU_COUNT(&one), 1);
    EXPECT_TRUE(CPU_EQUAL(&one, &other));
}

TEST_F(LabTurnsOfARound, DeadProcessGivesItsTurnAwayAndItsNextOneIsWaitedFor) {
    const size_t dying = round.running().value();
    round.seats[dying]->exited();
    EXPECT_TRUE(round.seats[1 - dying]->stopped());
    const Sleeper again;
    round.seats[dying]->started(again.process());
    EXPECT_TRUE(round.seats[1 - dying]->stopped());
    round.seats[dying]->reached(1, 0);
    const bool turned = round.running().value() == dying;
    EXPECT_TRUE(again.becomes(!turned));
}

TEST(LabTurns, WhoseeverPassIsOverLeavesTheOtherAloneAndTheNextRoundBegins) {
    Turns turns(1);
    auto seats = turns.addRounds(2);
    Played first(std::move(seats[0]));
    Played second(std::move(seats[1]));
    first.prepare();
    second.prepare();
    first.seats[0].reset();
    for (int test = 0; test < 3; ++test) {
        EXPECT_EQ(first.running(), 1U);
        first.endTest(1);
    }
    EXPECT_FALSE(second.running());
    first.seats[1].reset();
    EXPECT_TRUE(second.running());
}
