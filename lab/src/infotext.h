// Reading the rig's console text at level INFO as it comes: tests, their lines with the exact counts, results, remarks.
#pragma once

#include "figure.h"

#include <string>
#include <string_view>
#include <vector>

namespace krlab {

/// One measured line, as the console tells it.
struct InfoLine {
    std::string parameters; ///< "lenght=160 lenght Dst=9", as printed
    double clocks = 0;      ///< per call
    bool exact = false;     ///< from whole counts; otherwise from the three digits of the line
    long long loops = 0;
    double accuracy = -1; ///< fraction; negative if the method has none
    double elements = 0;  ///< three digits
    double perElement = 0;
};

/// One test, from its title to its result.
struct InfoTest {
    TestEnd end; ///< `result` is empty as long as the test is in work
    std::string description;
    std::vector<std::string> grid; ///< " for (lenght = 9; ...)" and "name = value" lines, trimmed
    std::vector<InfoLine> lines;
};

/// Takes the text piece by piece; pieces may end anywhere.
class InfoParser {
public:
    void feed(std::string_view piece);
    /// Takes the last line even if no newline follows it.
    void finish();

    const std::vector<InfoTest>& tests() const { return m_tests; }
    /// The test in work: its title was told and its result was not. Null between tests.
    const InfoTest* current() const;
    size_t ended() const { return m_ended; }
    bool summarised() const { return m_summarised; } ///< the summary at the end was told
    long long summaryTests() const { return m_summaryTests; }
    const std::string& library() const { return m_library; }     ///< text of the head
    const std::string& processor() const { return m_processor; } ///< text of the head
    /// "-Invalid value of ...", "-- Can't open file ...", "FATAL ERROR: ..." and the like outside of tests.
    const std::vector<std::string>& remarks() const { return m_remarks; }
    /// Echo lines of the keys: "-LINFO: write ...".
    const std::vector<std::string>& echo() const { return m_echo; }

private:
    enum class Stage { none, prior, iteration, simple };

    void readLine(std::string_view line);
    void readFramed(std::string_view text);
    void readCourse(std::string_view text);
    void readPerformance(std::string_view text);
    void beginMeasuring();
    void takeCount();

    std::string m_rest;
    std::vector<InfoTest> m_tests;
    std::vector<std::string> m_remarks;
    std::vector<std::string> m_echo;
    std::string m_library;
    std::string m_processor;
    size_t m_ended = 0;
    bool m_summarised = false;
    bool m_inKeys = false;
    long long m_summaryTests = 0;

    // The measurement in work.
    std::string m_parameters;
    Stage m_stage = Stage::none;
    double m_loops = 0;
    double m_count = 0;
    double m_best = 0;  ///< clocks per call from whole counts
    std::string m_told; ///< the rounded clocks per call that the rig prints behind the counts
};

/// A double as the rig prints it: three significant digits.
std::string threeDigits(double value);

} // namespace krlab
