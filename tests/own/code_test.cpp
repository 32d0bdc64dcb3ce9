// The machine code of a program of one's own: what stands between the counter readings.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

std::string outputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    char buffer[65536];
    for (size_t n = 1; n > 0;) {
        n = fread(buffer, 1, sizeof buffer, pipe.get());
        text.append(buffer, n);
    }
    return text;
}

bool holds(const std::string& line, const std::string& part) {
    return line.find(part) != std::string::npos;
}

int countIn(const Lines& lines, const std::string& part) {
    return static_cast<int>(
        std::count_if(lines.begin(), lines.end(), [&](const std::string& line) { return holds(line, part); }));
}

// The instructions of the one function whose name holds all of `parts`.
Lines functionWith(const Lines& parts) {
    static const std::string listing = outputOf("objdump -d -C --no-show-raw-insn '" OWNRIG "'");
    std::istringstream text(listing);
    Lines found;
    int functions = 0;
    bool inside = false;
    for (std::string line; std::getline(text, line);) {
        if (line.ends_with(">:")) {
            inside = std::all_of(parts.begin(), parts.end(), [&](const auto& part) { return holds(line, part); });
            functions += inside ? 1 : 0;
        } else if (line.empty()) {
            inside = false;
        } else if (inside) {
            found.push_back(line);
        }
    }
    EXPECT_EQ(1, functions) << parts.front();
    return found;
}

// The instructions between the two counter readings of the loop around `function`.
Lines measuredLoop(const std::string& function) {
    const Lines all = functionWith({"kr::detail::Site<", function, ">::loop("});
    Lines inside;
    int readings = 0;
    for (const std::string& line : all) {
        readings += holds(line, "rdtsc") ? 1 : 0;
        if (readings == 1) {
            inside.push_back(line);
        }
    }
    EXPECT_EQ(2, readings) << function;
    return inside;
}

unsigned long addressOf(const std::string& line) {
    return std::stoul(line, nullptr, 16);
}

// Whether a jump after `from` goes back to `from` or before it.
bool isLoopAround(const Lines& lines, unsigned long from) {
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
        const size_t jump = line.find("\tj");
        const size_t target = line.find_first_of(' ', jump == std::string::npos ? 0 : jump);
        return jump != std::string::npos && addressOf(line) > from &&
               std::stoul(line.substr(target), nullptr, 16) <= from;
    });
}

// What may stand between the readings beside the call: loads, the count of the calls, what the readings leave.
constexpr const char* s_plain[] = {"\trdtsc", "\tcall ", "\tmov ", "\tmovss ",  "\tadd ",  "\tsub ",
                                   "\tinc ",  "\tdec ",  "\tcmp ", "\ttest ",   "\tj",     "\tshl ",
                                   "\tor ",   "\txor ",  "\tnop",  "\tdata16 ", "\txchg ", "\tlea "};

class OwnCode : public testing::TestWithParam<const char*> {};

} // namespace

TEST_P(OwnCode, LoopHoldsOneCallThroughARegisterAndNoOther) {
    const Lines loop = measuredLoop(GetParam());
    ASSERT_EQ(1, countIn(loop, "\tcall ")) << GetParam();
    for (const std::string& line : loop) {
        if (holds(line, "\tcall ")) {
            EXPECT_TRUE(holds(line, " *%r")) << line;
            EXPECT_TRUE(isLoopAround(loop, addressOf(line))) << "the call stands outside the loop";
        }
    }
}

TEST_P(OwnCode, LoopLoadsTheArgumentsAndDoesNothingElse) {
    const Lines loop = measuredLoop(GetParam());
    for (const std::string& line : loop) {
        const bool known = std::any_of(std::begin(s_plain), std::end(s_plain),
                                       [&](const char* instruction) { return holds(line, instruction); });
        EXPECT_TRUE(known) << GetParam() << ": " << line;
    }
    EXPECT_LE(loop.size(), 24U);
}

INSTANTIATE_TEST_SUITE_P(Functions, OwnCode,
                         testing::Values("::empty", "elsewhere()", "::chain", "::square", "::gain", "energy("));

TEST(OwnCodeFunction, StandsWholeAlsoWhereTheCompilerSeesThatItComputesAConstant) {
    // The first addition may be an address computation.
    EXPECT_GE(countIn(functionWith({"(anonymous namespace)::chain("}), "\tadd "), 99);
    EXPECT_EQ(1, countIn(functionWith({"(anonymous namespace)::square("}), "\timul "));
    EXPECT_EQ(1, countIn(functionWith({"(anonymous namespace)::empty("}), "\tret"));
}
