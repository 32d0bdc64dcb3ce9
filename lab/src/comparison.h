// Verdicts from runs that were made earlier, each of one subject: tables of the rig, passes of a store. Nothing can be
// measured again here, and the runs of the two subjects were not interleaved.
#pragma once

#include "figure.h"
#include "passlist.h"
#include "verdict.h"

#include <array>
#include <vector>

namespace krlab {

struct Comparison {
    /// The runs of the old and of the new subject; each run its figures. A line that stands twice in a run counts with
    /// the smaller figure.
    std::array<std::vector<std::vector<Figure>>, 2> runs;
    double threshold = 0.03;
    double confidence = 0.99;
};

/// Compares line by line. What moved all lines of a run alike is taken out, and so is what moved those of a subject
/// alike: between runs at different times it can't be told from the machine's drift. How restless a line is comes from
/// its repeated runs, moderated by all lines; with one run of each subject from all ratios together.
///
/// The number of lines is accounted for by Holm's step-down: that any line is found slower or faster though none has
/// changed has at most the chance 1 - confidence. The remarks tell what was done.
VerdictReport compareRuns(const Comparison& comparison);

/// The same for two lists of passes, each of one subject, with identities and remarks; counts of instructions are
/// compared as such, at a threshold of their own. Throws Fault where a list holds several subjects, or only one of them
/// counts.
VerdictReport comparePasses(const PassList& older, const PassList& newer, double threshold, double confidence,
                            double countThreshold = 0.001);

} // namespace krlab
