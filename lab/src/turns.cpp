#include "turns.h"

#include "quietcore.h"

#include <algorithm>
#include <csignal>

namespace krlab {

Seat::~Seat() {
    const std::lock_guard lock(m_turns.m_mutex);
    m_state = State::over;
    m_turns.giveUp(*this);
}

void Seat::started(pid_t process) {
    const std::lock_guard lock(m_turns.m_mutex);
    m_process = process;
    m_ended = 0;
}

void Seat::reached(size_t begun, size_t ended) {
    const std::lock_guard lock(m_turns.m_mutex);
    if (m_process == 0) {
        return;
    }
    if (m_state == State::preparing && begun > 0) {
        m_turns.stop(*this);
        m_turns.next();
    } else if (m_state == State::running && ended > m_ended) {
        m_turns.stop(*this);
        m_turns.giveUp(*this);
    }
    m_ended = ended;
}

void Seat::exited() {
    const std::lock_guard lock(m_turns.m_mutex);
    m_process = 0;
    m_state = State::preparing;
    m_turns.giveUp(*this);
}

bool Seat::stopped() const {
    const std::lock_guard lock(m_turns.m_mutex);
    return m_state == State::waiting;
}

void Seat::keepGoing() const {
    const std::lock_guard lock(m_turns.m_mutex);
    if (m_state == State::running) {
        ::kill(-m_process, SIGCONT);
    }
}

Turns::Turns(unsigned long seed) : m_random(seed) {
    CPU_ZERO(&m_allowed);
    ::sched_getaffinity(0, sizeof m_allowed, &m_allowed);
}

std::vector<std::array<std::unique_ptr<Seat>, 2>> Turns::addRounds(size_t count) {
    std::vector<std::array<std::unique_ptr<Seat>, 2>> rounds(count);
    const std::lock_guard lock(m_mutex);
    for (auto& seats : rounds) {
        Round& round = m_rounds.emplace_back();
        for (size_t i = 0; i < seats.size(); ++i) {
            seats[i].reset(new Seat(*this));
            round[i] = seats[i].get();
        }
    }
    return rounds;
}

void Turns::stop(Seat& seat) {
    ::kill(-seat.m_process, SIGSTOP);
    seat.m_state = Seat::State::waiting;
}

void Turns::resume(Seat& seat) {
    if (m_core >= 0) {
        cpu_set_t core;
        CPU_ZERO(&core);
        CPU_SET(static_cast<size_t>(m_core), &core);
        ::sched_setaffinity(seat.m_process, sizeof core, &core);
    }
    ::kill(-seat.m_process, SIGCONT);
    seat.m_state = Seat::State::running;
}

// The turn of this seat is over, if it had one.
void Turns::giveUp(Seat& seat) {
    std::erase(m_step, &seat);
    if (seat.m_state == Seat::State::over) {
        for (Round& round : m_rounds) {
            std::replace(round.begin(), round.end(), &seat, static_cast<Seat*>(nullptr));
        }
        if (!m_rounds.empty() && m_rounds.front() == Round{}) {
            m_begun = false;
        }
        std::erase(m_rounds, Round{});
    }
    next();
}

// Gives the turn to who is due, unless somebody has it or still prepares.
void Turns::next() {
    for (const Round& round : m_rounds) {
        if (std::any_of(round.begin(), round.end(),
                        [](const Seat* seat) { return seat != nullptr && seat->m_state != Seat::State::waiting; })) {
            return;
        }
    }
    if (m_rounds.empty()) {
        return;
    }
    if (!m_begun) {
        m_core = quietCore(m_allowed, m_core);
        m_begun = true;
    }
    if (m_step.empty()) {
        m_step.assign(m_rounds.front().begin(), m_rounds.front().end());
        std::erase(m_step, nullptr);
        std::shuffle(m_step.begin(), m_step.end(), m_random);
    }
    resume(*m_step.front());
}

} // namespace krlab
