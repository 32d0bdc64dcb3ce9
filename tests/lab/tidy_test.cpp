// krlab tidy: the forms in which tables leave.
#include "fakerig.h"
#include "labprocess.h"
#include "store.h"

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
    directory.write("t.csv", tableHead + tableHeading + rowA + tableHead + tableHeading + rowA);
    const LabResult result = directory.run({"tidy", "t.csv", "--to", "benchmark"});
    const auto document = nlohmann::json::parse(result.out);
    ASSERT_EQ(document["benchmarks"].size(), 2u);
    const auto& second = document["benchmarks"][1];
    EXPECT_EQ(second["name"], "veksA_16s/Len/Size:160");
    EXPECT_EQ(second["repetitions"], 2);
    EXPECT_EQ(second["repetition_index"], 1);
    EXPECT_EQ(second["real_time"], 32);
    EXPECT_EQ(second["time_unit"], "ns");
    EXPECT_EQ(document["context"]["host_name"], "box");
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
