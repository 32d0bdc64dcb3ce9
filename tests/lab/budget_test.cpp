// krlab budget: files and their faults, the sum, share and channels, and a real frame.
#include "budget.h"
#include "faultof.h"
#include "labprocess.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace krlab;

namespace {

const std::string smallBudget = R"({ "schema": "krlab-budget-1", "codecs": [
    { "name": "small coder", "frame_seconds": 0.02,
      "calls": [ { "function": "veksDotProd_G729A_16s32s", "parameters": { "lenght": 80 }, "calls": 4 },
                 { "function": "veksDCTFwd_G7221_16s", "parameters": { "Lenght": "320" }, "calls": 0.5 } ],
      "missing": [ "the packing of bits" ] },
    { "name": "empty decoder", "frame_seconds": 0.01, "calls": [] } ] })";

std::string faultOf(const std::string& text) {
    return faultIn([&] { parseBudgets("b.json", text); });
}

} // namespace

TEST(LabBudget, CallsTimesClocksMakeAFrame) {
    const std::vector<Budget> budgets = parseBudgets("b.json", smallBudget);
    ASSERT_EQ(budgets.size(), 2u);
    const Budget& budget = budgets[0];
    EXPECT_EQ(budget.calls[0].line.text(), "veksDotProd_G729A_16s32s lenght=80");
    const BudgetSum sum = sumBudget(budget, {{budget.calls[0].line, 50.0}, {budget.calls[1].line, 1000.0}});
    EXPECT_EQ(sum.clocks, 700);
    EXPECT_TRUE(sum.whole);
    EXPECT_EQ(sum.shares[0].frame(), 500);
    // 700 clocks in 20 ms of a core with a million clocks a second.
    EXPECT_DOUBLE_EQ(sum.core(budget, 1e6), 0.035);
    EXPECT_FALSE(sumBudget(budget, {{budget.calls[0].line, 50.0}}).whole);
}

TEST(LabBudget, FaultsOfAFileAreToldByTheirPlace) {
    EXPECT_TRUE(faultOf("{").starts_with("b.json: is no JSON: "));
    EXPECT_EQ(faultOf("[]"), "b.json: is no budget: \"schema\" is not \"krlab-budget-1\"");
    const std::string head = R"({"schema":"krlab-budget-1","codecs":[{"name":"x","frame_seconds":)";
    EXPECT_EQ(faultOf(head + "0,\"calls\":[]}]}"), "b.json: \"frame_seconds\" of x is no number above 0");
    EXPECT_EQ(faultOf(head + "1}]}"), "b.json: x has no \"calls\"");
    EXPECT_EQ(faultOf(head + R"(1,"calls":[{"function":"f","calls":1}]}]})"),
              "b.json: call 1 of x has no \"parameters\"");
    EXPECT_EQ(faultOf(head + R"(1,"calls":[{"function":"f","calls":-1,"parameters":{}}]}]})"),
              "b.json: \"calls\" of call 1 of x is no number above 0");
    EXPECT_EQ(faultOf(head + R"(1,"calls":[{"function":"f","calls":1,"parameters":{"a":[]}}]}]})"),
              "b.json: parameter a of call 1 of x is no text");
}

TEST(LabBudget, AFrameIsMeasuredAndTold) {
    const LabDirectory directory;
    directory.write("b.json", smallBudget);
    const LabResult result =
        directory.run({"budget", "b.json", "--codec", "small", "--rate", "2GHz", "--passes", "1", "--json", "r.json"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find("% of a core at 2 GHz, at most "), std::string::npos) << result.out;
    EXPECT_NE(
        result.out.find(
            "\nThe calls of the library alone, each timed by itself with warm code and tables: inside a codec they "
            "mostly take longer.\n"),
        std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("  without the packing of bits\n"), std::string::npos) << result.out;
    const auto document = nlohmann::json::parse(directory.read("r.json"));
    ASSERT_EQ(document["codecs"].size(), 1u);
    const auto& codec = document["codecs"][0];
    EXPECT_EQ(codec["whole"], true);
    EXPECT_NEAR(codec["core"].get<double>(), codec["clocks"].get<double>() / 4e7, 1e-12);
    EXPECT_EQ(directory.run({"budget", "b.json", "--codec", "smoll coder"}).err,
              "krlab: b.json: has no codec 'smoll coder'; do you mean 'small coder'?\n");
    EXPECT_EQ(directory.run({"budget", "b.json", "--rate", "fast"}).err,
              "krlab: 'fast' is no clock rate; write 2.5GHz or 800MHz\n");
}

TEST(LabBudget, ALineThatTheRigHasNotIsToldAndTheSumIsNotWhole) {
    const LabDirectory directory;
    directory.write("b.json", R"({"schema":"krlab-budget-1","codecs":[{"name":"x","frame_seconds":1,"calls":[)"
                              R"({"function":"veksDotProd_G729A_16s32s","parameters":{"lenght":"80"},"calls":1},)"
                              R"({"function":"veksDotProd_G729A_16s32s","parameters":{"wrong":"80"},"calls":1}]}]})");
    const LabResult result = directory.run({"budget", "b.json", "--passes", "1"});
    EXPECT_EQ(result.status, 2);
    // What is not known gives neither a share nor channels.
    EXPECT_NE(result.out.find("x: not whole, at least "), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("  no figure x 1       veksDotProd_G729A_16s32s wrong=80\n"), std::string::npos)
        << result.out;
    EXPECT_EQ(result.out.find("channels"), std::string::npos) << result.out;
    EXPECT_EQ(result.err, "krlab: the rig has no figure for veksDotProd_G729A_16s32s wrong=80\n");
}
