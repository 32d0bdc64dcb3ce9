// Running the rig: one process over a selection of lines, all that it told, and how it ended.
#pragma once

#include "figure.h"
#include "identity.h"
#include "subject.h"
#include "turns.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace krlab {

/// What one pass is to measure and under which bounds.
struct PassRequest {
    Subject subject;
    std::vector<std::string> keys; ///< the user's keys for the rig, as behind "--"
    /// Only these lines; empty for all that the keys select. One process measures, for each function, the smallest grid
    /// that holds its lines; figures of other lines of that grid are dropped unless `keepOthers` is set.
    std::vector<Line> lines;
    bool keepOthers = false;
    int repeats = 1;                   ///< of each of `lines` in one process; the smallest of its figures is kept
    std::vector<std::string> launcher; ///< as in RigCall
    double timeLimit = 600;            ///< seconds of its own for each rig process; one that takes longer is ended
    std::shared_ptr<Seat> seat;        ///< where rigs take turns; none if this one has the machine to itself
    /// Bytes added to the rig's environment, which move its stack; also the number from which the rig draws where its
    /// data lie. 0 leaves both as they are.
    size_t padding = 0;
    std::vector<FileIdentity> copied; ///< shared objects of which each rig process gets copies of its own
    bool goOn = true;                 ///< after a rig process that died, measure what stood behind the test in work
    bool record = true;               ///< false leaves all but the start out of the identity: the caller knows it
    /// Called a few times a second with the number of tests that the process in work has ended and its test in work.
    std::function<void(size_t ended, const std::string& function)> progress;
};

/// How one rig process ended.
struct ProcessEnd {
    enum class How {
        complete,   ///< it ran to its end, with status 0 or 1
        failed,     ///< another status, or its end without a summary
        signalled,  ///< a signal ended it
        timeLimit,  ///< it was ended at its time limit
        interrupted ///< it was ended since the user wants to stop
    };
    How how = How::complete;
    int status = 0;
    int signal = 0;
    std::string function; ///< the test in work when it ended, if it was not complete
    std::string text;     ///< one line for the user, such as "killed by signal 6 (Aborted) in veksX_16s"
};

/// One pass: normally one process, more if some died on the way.
struct Pass {
    Identity identity;
    std::vector<Figure> figures;      ///< in the rig's order
    std::vector<TestEnd> tests;       ///< the tests that ended
    std::vector<ProcessEnd> ends;     ///< one for each process
    std::vector<std::string> remarks; ///< what the rig said outside of tests: values and files that it refused
    /// True if every process ran to its end.
    bool complete() const;
    /// The processes that did not, as text for the user; empty if complete.
    std::vector<std::string> failures() const;
};

/// Runs one pass. Throws Fault if the rig can't be started at all; what goes wrong inside is told in `ends`.
Pass runPass(const PassRequest& request);

/// One test that the rig has: what `-e` lists.
struct TestName {
    std::string function;
    std::string test;
    std::string source;
};
/// The tests that the keys select, in the order in which the rig runs them.
std::vector<TestName> listTests(const Subject& subject, const std::vector<std::string>& keys);
/// The same. Throws Fault if there is none.
std::vector<TestName> listChosenTests(const Subject& subject, const std::vector<std::string>& keys);

/// The parameters of one test.
struct TestParameters {
    std::string function;
    std::vector<std::string> names;   ///< all that -d and ini-files reach, in the order of the grid
    std::vector<std::string> columns; ///< names by column; empty where a column has none
};
/// The parameters of the selected tests; nothing is measured.
std::vector<TestParameters> listParameters(const Subject& subject, const std::vector<std::string>& keys);

} // namespace krlab
