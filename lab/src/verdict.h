// What is said about a line of two subjects, and all of it as a report: the rule of the threshold, the counts, the
// JSON.
#pragma once

#include "identity.h"
#include "line.h"

#include <nlohmann/json_fwd.hpp>
#include <set>
#include <string>
#include <vector>

namespace krlab {

enum class Verdict { slower, faster, same, undecided };

/// "slower", "faster", "same", "undecided".
const char* verdictText(Verdict verdict);

/// The rule, with threshold t: slower if low > 1 and ratio > 1 + t; faster if high < 1 and ratio < 1 / (1 + t); same if
/// the whole interval lies within 1 / (1 + t) .. 1 + t; else undecided.
Verdict judge(double ratio, double low, double high, double threshold);

/// One line with figures of both subjects.
struct LineVerdict {
    Line line;
    double older = 0; ///< clocks per call of the old subject
    double newer = 0; ///< of the new one; newer / older is the ratio
    double ratio = 1;
    double low = 0; ///< interval of the ratio; 0 and infinity if the passes are too few for any
    double high = 0;
    int passes = 0; ///< passes of each subject that the ratio rests on
    Verdict verdict = Verdict::undecided;
};

struct VerdictCounts {
    size_t lines = 0;
    size_t slower = 0;
    size_t faster = 0;
    size_t same = 0;
    size_t undecided = 0;
    double geometricMean = 1; ///< of the ratios
};
VerdictCounts countVerdicts(const std::vector<LineVerdict>& lines);

/// The verdicts on one kind of machine, of a fleet.
struct KindVerdicts {
    std::string machine;  ///< "family 6 model 143 stepping 8", with the features where these alone tell kinds apart
    std::string features; ///< as in Machine
    std::string setting;  ///< of the plan; empty where it has only one
    std::vector<std::string> hosts;
    int rounds = 0;
    std::vector<LineVerdict> lines;
    /// Both in one word or two.
    std::string name() const;
};

/// What `ab` and `compare` say.
struct VerdictReport {
    Identity older;
    Identity newer;
    std::string unit = "clocks"; ///< of the figures: "clocks" or "instructions"
    double threshold = 0;
    double confidence = 0; ///< 1 for counts, which know no noise
    std::vector<LineVerdict> lines;
    std::vector<KindVerdicts> kinds; ///< of a fleet; `lines` are then over all of its machines
    std::set<long long> runs;        ///< of a fleet: numbers of its runs in the store
    std::vector<Line> onlyOld;
    std::vector<Line> onlyNew;
    /// What moved all lines alike: the ratio new / old.
    double commonRatio = 1;
    bool commonReal = false;          ///< the rounds tell it from the machine's drift
    bool commonRemoved = false;       ///< it was taken out of the lines' ratios
    int rounds = 0;                   ///< of `ab`; 0 for `compare`
    bool incomplete = false;          ///< lines that should have been measured are missing
    std::vector<std::string> remarks; ///< what the reader must know: a line each
};

/// The form "krlab-verdict-1". An interval that is not known is null.
nlohmann::json toJson(const VerdictReport& report);

/// The report for the terminal: what was measured, lines that changed, functions, families, what is missing, the
/// counts.
std::string describe(const VerdictReport& report);

/// 2 if the report is incomplete or lines of the old subject are missing in the new one; 1 if a line is slower, over
/// all or on one kind of machine; 3 if `strict` and lines are undecided; else 0.
int exitStatus(const VerdictReport& report, bool strict);

} // namespace krlab
