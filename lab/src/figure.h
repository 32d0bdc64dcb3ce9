// What the rig told of lines, tests and whole passes: the data that every command works on.
#pragma once

#include "line.h"

#include <string>
#include <vector>

namespace krlab {

/// One measured line of one pass.
struct Figure {
    Line line;
    double clocks = 0;       ///< processor clocks per call
    double perElement = 0;   ///< clocks per element as the table states them, with its three or four digits
    std::string unit;        ///< what an element is: "e" mostly; empty if the table does not say
    double elements = 0;     ///< elements that one call handles; 0 if unknown
    long long loops = 0;     ///< calls in the measurement that was kept; 0 if unknown
    double accuracy = -1;    ///< agreement of the rig's successive measurements, as a fraction; negative if not told
    bool exact = false;      ///< `clocks` comes from the rig's whole counts, not from rounded text
    double microseconds = 0; ///< per call, as the table states it; 0 if unknown
    double megaflops = 0;    ///< as the table states it; 0 if the function has no such figure
    std::string comment;     ///< the table's comment, such as "nLps=16"
};

/// How one test (a function with its grid) of a pass ended.
struct TestEnd {
    std::string function;
    std::string test;                  ///< name of the test in the rig, such as TimAutoCorr
    std::string source;                ///< its source file, without extension
    std::string result;                ///< OK, ACCURWRN, FUNCFAIL ...
    std::vector<std::string> messages; ///< what the rig said about errors and warnings, a line each
    /// True for the results that make the rig's exit status 1, and for the rig's "error" and for no measurement at all.
    bool failed() const;
    /// The message that says why it failed: the first that neither warns nor names a result once more, else the last.
    /// Empty without messages.
    std::string reason() const;
};

} // namespace krlab
