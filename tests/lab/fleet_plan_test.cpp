// Plans of a fleet: what is read, what follows from them, what is refused.
#include "faultof.h"
#include "fleetplan.h"
#include "slurm.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace krlab;

namespace {

nlohmann::json smallPlan() {
    return {{"schema", "krlab-fleet-1"},
            {"subjects", {{{"name", "a"}, {"path", "p"}}, {{"name", "b"}, {"path", "q"}}}},
            {"selections", {{"-fX"}, {"-fY"}}}};
}

std::string faultOf(const nlohmann::json& plan) {
    return faultIn([&] { parsePlan("plan.json", plan.dump()); });
}

} // namespace

TEST(LabFleetPlan, TheSampleIsAPlanAndComesBackAsItWasWritten) {
    const FleetPlan plan = parsePlan("sample", samplePlan());
    EXPECT_EQ(plan.tasks().size(), 4U * 3 * 2);
    EXPECT_EQ(toJson(parsePlan("again", toJson(plan).dump())), toJson(plan));
    EXPECT_EQ(plan.subjects[0].name, "before");
    EXPECT_EQ(plan.rounds(), 6);
}

TEST(LabFleetPlan, ASettingBecomesKeysOfTheRigBehindTheSelection) {
    nlohmann::json json = smallPlan();
    json["settings"] = {{{"name", "s"}, {"alignment", 3}, {"cache", "both"}, {"level", "V8"}, {"keys", {"-N2"}}}};
    const FleetPlan plan = parsePlan("p", json.dump());
    EXPECT_EQ(plan.keys(plan.tasks()[1]),
              (std::vector<std::string>{"-fY", "-dVectorAlign=3", "-dAlignVectorsBy=byte", "-C", "-TV8", "-N2"}));
}

TEST(LabFleetPlan, TasksOfOneKindOfNodesStandTogether) {
    nlohmann::json json = smallPlan();
    json["nodes"] = {{{"features", "x"}, {"tasks", 2}}, {{"features", "y"}, {"tasks", 1}}};
    const std::vector<FleetTask> tasks = parsePlan("p", json.dump()).tasks();
    ASSERT_EQ(tasks.size(), 6U);
    for (size_t i = 0; i < tasks.size(); ++i) {
        EXPECT_EQ(tasks[i].index, static_cast<int>(i));
        EXPECT_EQ(tasks[i].nodes, i < 4 ? 0U : 1U);
        EXPECT_EQ(tasks[i].selection, i % 2);
    }
}

TEST(LabFleetPlan, EachFurtherSubjectTakesTurnsWithTheFirst) {
    nlohmann::json json = smallPlan();
    json["subjects"].push_back({{"name", "c"}, {"path", "r"}});
    json["passes"] = 2;
    const FleetPlan plan = parsePlan("p", json.dump());
    ASSERT_EQ(plan.rounds(), 4);
    EXPECT_EQ(plan.partner(0), 1U);
    EXPECT_EQ(plan.partner(1), 2U);
    EXPECT_EQ(plan.partner(2), 1U);
}

TEST(LabFleetPlan, WhatIsMissingOfTheWrongKindOrUnknownIsTold) {
    EXPECT_EQ(faultOf(smallPlan()), "");
    nlohmann::json plan = smallPlan();
    plan["pases"] = 3;
    EXPECT_EQ(faultOf(plan), "plan.json: the plan has an unknown member \"pases\"; do you mean 'passes'?");
    plan = smallPlan();
    plan["passes"] = 0;
    EXPECT_EQ(faultOf(plan), "plan.json: \"passes\" of the plan is no whole number from 1 to 100000");
    plan = smallPlan();
    plan["schema"] = "x";
    EXPECT_EQ(faultOf(plan), "plan.json: is no plan of a fleet: \"schema\" is not \"krlab-fleet-1\"; krlab fleet plan "
                             "writes one to start from");
    plan = smallPlan();
    plan["subjects"][1]["name"] = "a";
    EXPECT_EQ(faultOf(plan), "plan.json: two subjects are called \"a\"");
    plan = smallPlan();
    plan["selections"] = {{"fX"}};
    EXPECT_EQ(faultOf(plan), "plan.json: an entry of \"selections\": the rig drops 'fX'");
    plan = smallPlan();
    plan["time"] = "soon";
    EXPECT_EQ(faultOf(plan), "plan.json: \"time\" of the plan: 'soon' is no time; write 90s, 2m or 1h");
    plan = smallPlan();
    plan["settings"] = {{{"name", "s"}, {"cache", "out"}}};
    EXPECT_EQ(faultOf(plan), "plan.json: \"cache\" of a setting is neither \"in\" nor \"both\"");
    plan = smallPlan();
    plan["nodes"] = {{{"tasks", 1000000}}};
    EXPECT_EQ(faultOf(plan), "plan.json: the plan has 2000000 tasks; 1000000 is the most");
    for (const nlohmann::json& odd :
         {nlohmann::json(), nlohmann::json(3), nlohmann::json::array(), nlohmann::json("x")}) {
        EXPECT_NE(faultOf(odd), "");
        for (const char* name : {"subjects", "selections", "settings", "nodes", "passes", "time", "slurm", "seed"}) {
            plan = smallPlan();
            plan[name] = odd;
            const std::string told = faultOf(plan);
            EXPECT_TRUE(told.empty() || told.starts_with("plan.json: ")) << name << " " << odd << " " << told;
        }
    }
    EXPECT_THROW(parsePlan("p", "{"), Fault);
}

TEST(LabFleetPlan, AProcessorIsOfAKindByWholeWords) {
    EXPECT_TRUE(isProcessor("family 6 model 143 stepping 8", "family 6 model 143"));
    EXPECT_TRUE(isProcessor("family 6 model 143", ""));
    EXPECT_TRUE(isProcessor("family 6 model 143", "family 6 model 143"));
    EXPECT_FALSE(isProcessor("family 6 model 143", "family 6 model 14"));
    EXPECT_FALSE(isProcessor("family 6 model 14", "family 6 model 143"));
}

TEST(LabFleetSlurm, NumbersAndTimesAreReadAsSlurmWritesThem) {
    EXPECT_EQ(rangeText({0, 1, 2, 5, 7, 8}), "0-2,5,7-8");
    EXPECT_EQ(rangeText({}), "");
    EXPECT_EQ(arrayNumbers("[3-5,8%2]"), (std::vector<int>{3, 4, 5, 8}));
    EXPECT_EQ(arrayNumbers("7"), (std::vector<int>{7}));
    EXPECT_EQ(arrayNumbers("N/A"), (std::vector<int>{}));
    EXPECT_EQ(slurmSeconds("1-02:03:04"), 93784);
    EXPECT_EQ(slurmSeconds("2:05"), 125);
    EXPECT_EQ(slurmSeconds("INVALID"), 0);
}
