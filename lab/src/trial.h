// How a verdict comes about while rounds come in: which lines are under suspicion, which are decided, which are to be
// measured next. Pure: it is given figures and starts nothing.
//
// Suspicion and accusation rest on different rounds. A line whose readings so far hint at a change is put under
// suspicion; from then on only rounds measured later count for it, and only a suspect can be found slower or faster.
// The chance that a comparison of a subject with its own copy accuses any line at all is at most 1 - confidence:
// - it is shared out over the looks that are taken at the growing data, in parts 1 / (k (k + 1)) (alpha spending:
//   K. K. G. Lan and D. L. DeMets, Biometrika 70, 1983), since lines are measured again until they are decided;
// - and over the suspects by Holm's step-down (S. Holm, Scandinavian Journal of Statistics 6, 1979).
// The interval of each line comes from its low readings on both sides (rounds.h).
#pragma once

#include "figure.h"
#include "rounds.h"
#include "verdict.h"

#include <map>
#include <vector>

namespace krlab {

struct TrialOptions {
    double threshold = 0.03;
    double confidence = 0.99;
};

class Trial {
public:
    explicit Trial(const TrialOptions& options) : m_options(options) {}

    /// Takes a round: one pass of each subject, measured beside each other.
    void addRound(const std::vector<Figure>& older, const std::vector<Figure>& newer);
    int rounds() const { return static_cast<int>(m_rounds.size()); }

    /// Judges the suspects whose look is due. With `all` also the lines that are not under suspicion, of which it puts
    /// some there as long as the rounds that are still to come suffice to accuse them. Each look costs some of the
    /// confidence: look at all once in a while, at suspects when a look is due, and at everything with no rounds left.
    void look(int roundsLeft, bool all);
    /// True if enough rounds came since the last look at some suspects for another to be worth its price.
    bool lookDue() const;

    /// The lines to measure next: the suspects that are not decided, if there are any, else (or with `all`) all lines
    /// that are not decided. Empty if all are decided. Lines that one side never had are not asked for again.
    std::vector<Line> wanted(bool all) const;
    /// Lines that were not decided at the last look.
    size_t undecided() const;
    size_t suspects() const;

    /// Lines with figures on both sides, as judged at the last look.
    std::vector<LineVerdict> verdicts() const;
    /// Lines that have figures on this side alone.
    std::vector<Line> onlyOn(Side side) const;
    /// What all lines have in common, from the rounds that measured all of them. It is in the ratios.
    const CommonShift& common() const { return m_common; }

private:
    // Lines that came under suspicion at the same look: they share a part of the confidence and start with fresh
    // rounds.
    struct Group {
        size_t since = 0; ///< first round that counts
        int looks = 0;    ///< taken so far
        int nextLook = 0; ///< rounds that the next one needs
        double share = 0; ///< of 1 - confidence
        size_t accused = 0;
        size_t size = 0;
    };
    struct State {
        LineVerdict result;
        int group = -1; ///< index into m_groups; -1 if never suspected
        bool paired = false;
        bool seen[2] = {false, false};
        bool decided() const { return result.verdict != Verdict::undecided; }
    };
    // A line that may have changed.
    struct Candidate {
        double weight; ///< how far it is off, in widths of its interval
        size_t line;
        int rank;   ///< among those of its function
        bool plain; ///< beyond what noise does
    };

    size_t indexOf(const Line& line);
    void addSide(const std::vector<Figure>& figures, Side side, Round& round);
    void updateCommon();
    double error(int looks) const;
    double clocksOf(size_t line, Side side) const;
    LowReadings readingsSince(size_t round, size_t line) const;
    LineVerdict resultOf(size_t line, const LowReadings& readings, double tail) const;
    std::vector<Candidate> judgeUnsuspected();
    // Hands each line of a group that is not decided to `judge`, with its readings in the rounds that count.
    template <class Judge>
    void judgeOpen(int number, const Judge& judge);
    void judgeGroup(int number);
    void accuse(Group& group, int number);
    void suspect(std::vector<Candidate> candidates, int roundsLeft);

    TrialOptions m_options;
    std::map<Line, size_t> m_index;
    std::vector<State> m_lines;
    std::vector<Round> m_rounds;
    std::vector<Group> m_groups;
    CommonShift m_common;
    int m_looks = 0; ///< at all lines
};

} // namespace krlab
