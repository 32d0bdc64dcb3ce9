// krlab tidy: the forms in which tables leave.
#include "fakerig.h"
#include "labprocess.h"
#include "store.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace krlab;

namespace {

const std::string rowA = "veksA,16s,-,160,-,-,-,-,-,nLps=8,0.50,e,0.032,-\n";
const std::string rowB = "veksB_G729,32f,I, \"a,b\",-,-,-,-,-,nLps=16 acc=7.1%,3.27,e,0.8,12.5\n";
const std::string summary = tableHead +
                            "Function,Class,Control87,Status87,ControlSSX,StatusSSX,Test,Time (sec.),SrcName,"
                            "Result,ExeName\nveksA_16s,Timing,-,-,-,-,TimA,0,p_a,OK,kelvarrig\n"
                            "veksB_G729_32f_I,Timing,-,-,-,-,TimB,0,p_b,ACCURWRN,kelvarrig\nEND_DATA\n";

} // namespace

TEST(LabTidy, CsvHoldsOneRecordARow) {
    const LabDirectory directory;
    directory.write("t.csv",
                    tableHead + tableHeading + "veksA,16s,-,len gth,-,-,-,-,-,parmNames,-,-,-,-\n" + rowA + rowB);
    directory.write("t_sum.csv", summary);
    const LabResult result = directory.run({"tidy", "t.csv"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(
        result.out,
        "run,file,row,start,function,family,parameters,clocks_per_call,clocks_per_element,unit,elements,microseconds,"
        "mflops,calls,accuracy,result,processor,computer,system,library\n"
        "1,t.csv,8,Sun Nov 22 02:25:47 2026,veksA_16s,common,\"\"\"len gth\"\"=160\",80,0.5,e,160,0.032,,8,,OK,"
        "\"Processor of a test, 2x2.5 GHz,\",box,\"Linux (1, x86_64)\",\"libveksc, 1.0.0, Nov 22 2026\"\n"
        "1,t.csv,9,Sun Nov 22 02:25:47 2026,veksB_G729_32f_I,G729,\"Len/Size=a,b\",2000,3.27,e,"
        "611.6207951070336,0.8,12.5,16,0.071,ACCURWRN,\"Processor of a test, 2x2.5 GHz,\",box,\"Linux (1, x86_64)\","
        "\"libveksc, 1.0.0, Nov 22 2026\"\n");
}

TEST(LabTidy, RunsBecomeRepetitionsOfABenchmark) {
    const LabDirectory directory;
    const std::string again = "veksA,16s,-,160,-,-,-,-,-,nLps=8,0.50,e,0.036,-\n";
    const std::string failed = "veksA,16s,-,160,-,-,-,-,-,-,-,-,-,-\n";
    directory.write("t.csv", tableHead + tableHeading + rowA + rowB + tableHead + tableHeading + again + tableHead +
                                 tableHeading + failed);
    const LabResult result = directory.run({"tidy", "t.csv", "--to", "benchmark"});
    const auto document = nlohmann::ordered_json::parse(result.out);
    const auto& entries = document["benchmarks"];
    ASSERT_EQ(entries.size(), 7u);
    // The row without a figure is no repetition.
    EXPECT_EQ(entries[1].dump(),
              R"({"name":"veksA_16s/Len/Size:160","family_index":0,"per_family_instance_index":0,)"
              R"("run_name":"veksA_16s/Len/Size:160","run_type":"iteration","repetitions":2,"repetition_index":1,)"
              R"("threads":1,"iterations":8,"real_time":36.0,"cpu_time":36.0,"time_unit":"ns","clocks":90.0})");
    EXPECT_EQ(entries[3].dump(),
              R"({"name":"veksA_16s/Len/Size:160_median","family_index":0,"per_family_instance_index":0,)"
              R"("run_name":"veksA_16s/Len/Size:160","run_type":"aggregate","repetitions":2,"threads":1,)"
              R"("aggregate_name":"median","aggregate_unit":"time","iterations":2,"real_time":34.0,"cpu_time":34.0,)"
              R"("time_unit":"ns","clocks":85.0})");
    EXPECT_EQ(entries[2]["real_time"], 34);
    EXPECT_NEAR(entries[4]["real_time"], 2.8284271, 1e-6);
    EXPECT_NEAR(entries[5]["real_time"], 2.8284271 / 34, 1e-6);
    EXPECT_EQ(entries[5]["aggregate_unit"], "percentage");
    EXPECT_EQ(entries[6]["run_type"], "iteration");
    EXPECT_EQ(document["context"].dump(),
              R"({"date":"2026-11-22T02:25:47","host_name":"box","executable":"libveksc, 1.0.0, Nov 22 2026",)"
              R"("num_cpus":2,"mhz_per_cpu":2500,"caches":[]})");
}

TEST(LabTidy, CompareScriptOfTheBenchmarkLibraryReadsTheForm) {
    constexpr const char* script = "/usr/share/benchmark/compare.py";
    if (!std::filesystem::exists(script) || std::system("/usr/bin/python3 -c 'import scipy' 2>/dev/null") != 0) {
        GTEST_SKIP() << "libbenchmark-tools or python3-scipy is missing";
    }
    const LabDirectory directory;
    directory.write("a.csv", tableHead + tableHeading + rowA + tableHead + tableHeading + rowA);
    const std::string slower = "veksA,16s,-,160,-,-,-,-,-,nLps=8,0.50,e,0.048,-\n";
    directory.write("b.csv", tableHead + tableHeading + slower + tableHead + tableHeading + slower);
    directory.run({"tidy", "a.csv", "--to", "benchmark", "-o", "a.json"});
    directory.run({"tidy", "b.csv", "--to", "benchmark", "-o", "b.json"});
    const std::string command = "cd '" + directory.path() + "' && /usr/bin/python3 " + script +
                                " --no-color benchmarks a.json b.json >compared 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    const std::string text = directory.read("compared");
    EXPECT_NE(text.find("veksA_16s/Len/Size:160 "), std::string::npos) << text;
    EXPECT_NE(text.find("veksA_16s/Len/Size:160_median "), std::string::npos) << text;
    EXPECT_NE(text.find("+0.5000         +0.5000            32            48"), std::string::npos) << text;
    EXPECT_NE(text.find("pvalue"), std::string::npos) << text;
}

TEST(LabTidy, SeveralFormsAtOnceShareAStem) {
    const LabDirectory directory;
    directory.write("t.csv", tableHead + tableHeading + rowA + rowB);
    const LabResult result = directory.run({"tidy", "t.csv", "--to", "csv,json,sqlite,benchmark", "-o", "x"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(directory.exists("x.csv") && directory.exists("x.bench.json"));
    const auto document = nlohmann::json::parse(directory.read("x.json"));
    EXPECT_EQ(document["rows"][0]["parameters"]["Len/Size"], "160");
    EXPECT_EQ(document["rows"][0]["mflops"], nullptr);
    EXPECT_EQ(document["runs"][0]["computer"], "box");
    const Store store(directory.path("x.db"));
    const FigureTable figures = store.figures();
    ASSERT_EQ(figures.entries.size(), 1u);
    EXPECT_EQ(figures.entries[0][1].clocks, 2000);
    EXPECT_EQ(figures.passes[0].identity.machine.host, "box");
}

TEST(LabTidy, DamageIsToldByFileAndLine) {
    const LabDirectory directory;
    directory.write("t.csv", tableHead + tableHeading + rowA + "a,b\n");
    const LabResult result = directory.run({"tidy", "t.csv"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "krlab: t.csv:8: 2 cells where the heading has 14\n");
    EXPECT_EQ(directory.run({"tidy", "t.csv", "--to", "xml"}).status, 2);
    EXPECT_EQ(directory.run({"tidy"}).status, 2);
    directory.write("g.csv", tableHead + tableHeading + rowA);
    EXPECT_EQ(directory.run({"tidy", "g.csv", "--to", "sqlite"}).err,
              "krlab: --to sqlite and several forms at once need -o FILE\n");
    EXPECT_EQ(directory.run({"tidy", "g.csv", "-o", "/nowhere/x"}).err,
              "krlab: /nowhere/x: can't be written: No such file or directory\n");
}
