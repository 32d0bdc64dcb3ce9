// Sizes of a user at the real program: what can be measured is measured, the rest is refused in the system's own words,
// and every other test of the run keeps its lines.
#include "rig_process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace {

/// A run with one loop a line.
RigResult measure(const RigDirectory& rig, std::vector<std::string> keys) {
    keys.insert(keys.begin(), {"-B", "-dMethod=Manual", "-dNumLoops=1", "-r"});
    RigConsole console;
    console.seconds = 240;
    return rig.run(keys, console);
}

/// Cells of the result table, line by line.
std::vector<std::vector<std::string>> table(const RigDirectory& rig) {
    std::vector<std::vector<std::string>> lines;
    std::istringstream text(rig.read("kelvarrig.csv"));
    for (std::string line; std::getline(text, line);) {
        std::vector<std::string> cells;
        std::istringstream row(line);
        for (std::string cell; std::getline(row, cell, ',');) {
            cells.push_back(cell);
        }
        if (cells.size() > 12 && cells[0].rfind("veks", 0) == 0) {
            lines.push_back(cells);
        }
    }
    return lines;
}

TEST(UserSize, OfAllTestsAtOnceCostsNoLineOfAnother) {
    for (const char* size : {"-dlen=0", "-dlen=-5", "-dlenght=-1", "-dlenght=65537"}) {
        SCOPED_TRACE(size);
        const RigDirectory rig(KELVARRIG, "kelvarrig");
        const RigResult run = measure(rig, {size});
        ASSERT_TRUE(run.ended()) << "signal " << run.signal;
        EXPECT_EQ(run.exitCode, 1);
        // All suites and the test of the processor.
        EXPECT_EQ(countOf(run.out, "| Function  :"), 325);
        EXPECT_EQ(countOf(run.out, "| -EXCPTFAIL"), 0);
        const auto lines = table(rig);
        EXPECT_GT(lines.size(), 1000U);
        for (const std::vector<std::string>& cells : lines) {
            // No line has a size that is none; the scale factor after the sizes may be negative.
            for (const char* none : {"-5", "-1"}) {
                EXPECT_EQ(std::count(cells.begin() + 3, cells.begin() + 8, none), 0) << cells[0];
            }
            EXPECT_GT(std::atof(cells[10].c_str()), 0) << cells[0] << ' ' << cells[3];
            EXPECT_LT(std::atof(cells[10].c_str()), 1e12) << cells[0] << ' ' << cells[3];
        }
    }
}

TEST(UserSize, ThatNoLineCanBeMadeForIsADataError) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    const RigResult fixed = measure(rig, {"-f=veksWinHybrid_G729E_16s32s", "-dlenght=0", "-LERR"});
    EXPECT_EQ(fixed.exitCode, 1);
    EXPECT_NE(fixed.out.find("-- test data error on test parameters:\nlenght=0 \n"
                             "-- One of argument list for timing is empty\n"),
              std::string::npos)
        << fixed.out;
    EXPECT_EQ(countOf(fixed.out, "| -DATAFAIL   veksWinHybrid_G729E_16s32s"), 1);
    const RigResult newer = measure(rig, {"-f=veksFFTFwd_RToPerm_AMRWBE_16s", "-dlength=-48", "-LERR"});
    EXPECT_EQ(newer.exitCode, 1);
    EXPECT_NE(newer.out.find("-- Memory error: can't allocate -96 bytes\n-- test data error on test parameters:\n"),
              std::string::npos)
        << newer.out;
    const RigResult table =
        measure(rig, {"-f=veksFIRSubbandCoeffUpdate_EC_32sc_I", "-dNum Segments=536870913", "-LERR"});
    EXPECT_EQ(table.exitCode, 1);
    EXPECT_NE(
        table.out.find("-- Memory error: can't allocate 2147483647 bytes\n-- test data error on test parameters:\n"),
        std::string::npos)
        << table.out;
}

TEST(UserSize, BehindAGoodOneEndsTheTestWithItsLine) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    const RigResult run = measure(rig, {"-f=veksDotProd_G729A_16s32s", "-dlenght=80; -5; 40", "-LERR"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.out.find("-- test data error on test parameters:\nlenght=-5 \n"), std::string::npos) << run.out;
    EXPECT_EQ(countOf(run.out, "| -DATAFAIL   veksDotProd_G729A_16s32s"), 1);
    const auto lines = table(rig);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0][3], "80");
}

// Sizes between those of the grid and the library's own limits.
TEST(UserSize, ThatTheLibraryTakesIsMeasured) {
    const RigDirectory rig(KELVARRIG, "kelvarrig");
    const RigResult run = measure(
        rig, {"-f=veksSynthesisFilter_G729E_16s", "-f=veksSynthesisFilter_G729E_16s_I",
              "-f=veksResidualFilter_G729E_16s", "-dvalLPCOrder=32; 36; 40", "-f=veksAdaptiveCodebookSearch_RTA_32f",
              "-dsubFrameSize=81; 100; 160", "-f=veksOpenLoopPitchSearch_AMRWB_16s", "-dLenght=129; 217; 256",
              "-f=veksFixedCodebookSearch_G729A_16s", "-dlenght_srcdst=617; 624; 641", "-LPERF"});
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(countOf(run.out, "| -OK "), 6);
    // Orders and lengths; lengths, ranges and flags; lengths and the switch; the matrix' sizes.
    EXPECT_EQ(table(rig).size(), 3U * 9 + 3 * 6 + 3 * 2 + 3);
}

} // namespace
