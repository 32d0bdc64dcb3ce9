// Reading result tables: what the rig writes, what a killed run leaves, and what it never writes.
#include "fakerig.h"
#include "faultof.h"
#include "table.h"

#include <gtest/gtest.h>

using namespace krlab;

namespace {

const std::string rowA = "veksAutoCorr,16s32s,-,160,9,-,-,-,-,nLps=8,0.0993,e,0.0511,-\n";
const std::string rowB = "veksDCTFwd_G7221,16s,-,320,-,-,-,-,-,nLps=16 acc=7.1%,3.27,e,0.787,12.5\n";
const std::string namesA = "veksAutoCorr,16s32s,-,lenght,lenght Dst,-,-,-,-,parmNames,-,-,-,-\n";

std::string faultOf(const std::string& text) {
    return faultIn([&] { parseTable("t.csv", text); });
}

} // namespace

TEST(LabTable, RowsBecomeFigures) {
    const Table table = parseTable("t.csv", tableHead + tableHeading + rowA + rowB);
    ASSERT_EQ(table.runs.size(), 1u);
    const TableRun& run = table.runs[0];
    EXPECT_EQ(run.processor, "Processor of a test, 2x2.5 GHz,");
    EXPECT_EQ(run.megahertz, 2500);
    EXPECT_EQ(run.computer, "box");
    EXPECT_EQ(run.libraries, std::vector<std::string>{"libveksc, 1.0.0, Nov 22 2026"});
    ASSERT_EQ(run.rows.size(), 2u);
    const Figure& a = run.rows[0].figure;
    EXPECT_EQ(a.line.text(), "veksAutoCorr_16s32s Len/Size=160 Parm1=9");
    EXPECT_EQ(a.perElement, 0.0993);
    EXPECT_DOUBLE_EQ(a.clocks, 0.0511 * 2500);
    EXPECT_EQ(a.loops, 8);
    EXPECT_EQ(a.unit, "e");
    EXPECT_LT(a.accuracy, 0);
    EXPECT_FALSE(a.exact);
    EXPECT_EQ(run.rows[0].number, 7);
    const Figure& b = run.rows[1].figure;
    EXPECT_DOUBLE_EQ(b.accuracy, 0.071);
    EXPECT_EQ(b.loops, 16);
    EXPECT_EQ(b.megaflops, 12.5);
}

TEST(LabTable, NameLinesNameTheParametersOfRowsBehindThem) {
    const Table table = parseTable("t.csv", tableHead + tableHeading + namesA + rowA + rowB);
    EXPECT_EQ(table.runs[0].rows[0].figure.line.text(), "veksAutoCorr_16s32s lenght=160 \"lenght Dst\"=9");
    EXPECT_EQ(table.runs[0].rows[1].figure.line.text(), "veksDCTFwd_G7221_16s Len/Size=320");
}

TEST(LabTable, EachRowTakesTheNamesThatStandOverItsValues) {
    const std::string names1 = "veksX,16s,-,cntFact,-,-,-,-,-,parmNames,-,-,-,-\n";
    const std::string names2 = "veksX,16s,-,cntFact,cntFS,-,-,-,-,parmNames,-,-,-,-\n";
    const std::string over = "veksX,16s,-,0,(oversamp),-,-,-,-,nLps=4,16.3,e,3.93,-\n";
    const std::string decim = "veksX,16s,-,0,1,(decimate),-,-,-,nLps=4,18.1,e,4.35,-\n";
    Table table = parseTable("t.csv", tableHead + tableHeading + over + decim);
    const Table names = parseTable("n.csv", tableHead + tableHeading + names1 + names2);
    applyNames(table, names.runs[0].names);
    EXPECT_EQ(table.runs[0].rows[0].figure.line.text(), "veksX_16s cntFact=0 Parm1=(oversamp)");
    EXPECT_EQ(table.runs[0].rows[1].figure.line.text(), "veksX_16s cntFact=0 cntFS=1 Parm2=(decimate)");
}

TEST(LabTable, AppendedRunsStayApart) {
    const Table table = parseTable("t.csv", tableHead + tableHeading + rowA + tableHead + tableHeading + rowA + rowB);
    ASSERT_EQ(table.runs.size(), 2u);
    EXPECT_EQ(table.runs[0].rows.size(), 1u);
    EXPECT_EQ(table.runs[1].rows.size(), 2u);
    EXPECT_EQ(table.rows(), 3u);
}

TEST(LabTable, AHeadingInTheMidstBeginsARun) {
    const Table table = parseTable("t.csv", tableHeading + rowA + tableHeading + rowB);
    ASSERT_EQ(table.runs.size(), 2u);
    EXPECT_EQ(table.runs[1].rows.size(), 1u);
}

TEST(LabTable, CarriageReturnsAreNoPartOfCells) {
    std::string text = tableHead + tableHeading + namesA + rowA;
    for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2)) {
        text.replace(at, 1, "\r\n");
    }
    const Table table = parseTable("t.csv", text);
    EXPECT_EQ(table.runs[0].rows[0].figure.line.text(), "veksAutoCorr_16s32s lenght=160 \"lenght Dst\"=9");
}

TEST(LabTable, ARowThatIsCutOffIsLeftOutAndTold) {
    const std::string text = tableHead + tableHeading + rowA + rowB;
    for (size_t cut = 1; cut < rowB.size(); ++cut) {
        const Table table = parseTable("t.csv", text.substr(0, text.size() - cut));
        EXPECT_EQ(table.runs[0].rows.size(), 1u) << cut;
        EXPECT_TRUE(table.runs[0].cutOff) << cut;
    }
    EXPECT_FALSE(parseTable("t.csv", text).runs[0].cutOff);
}

TEST(LabTable, ARunAddedBehindACutOffRowIsRead) {
    const Table table =
        parseTable("t.csv", tableHead + tableHeading + rowA + rowB.substr(0, 20) + tableHead + tableHeading + rowB);
    ASSERT_EQ(table.runs.size(), 2u);
    EXPECT_TRUE(table.runs[0].cutOff);
    EXPECT_EQ(table.runs[0].rows.size(), 1u);
    EXPECT_EQ(table.runs[1].rows.size(), 1u);
    EXPECT_EQ(table.runs[1].computer, "box");
}

TEST(LabTable, QuotedCellsMayHoldCommas) {
    const Table table =
        parseTable("t.csv", tableHead + tableHeading + "veksX,16s,-, \"a,b\",-,-,-,-,-,nLps=4,16.3,e,3.93,-\n");
    EXPECT_EQ(table.runs[0].rows[0].figure.line.text(), "veksX_16s Len/Size=a,b");
}

TEST(LabTable, TheInterestColumnIsRead) {
    std::string heading = tableHeading;
    heading.insert(heading.size() - 1, ",Interest");
    std::string row = rowA;
    row.insert(row.size() - 1, ",Hot");
    EXPECT_TRUE(parseTable("t.csv", tableHead + heading + row).runs[0].rows[0].hot);
}

TEST(LabTable, RowsOfTheHarnessAloneHaveOneCellForTheFunction) {
    const Table table = parseTable("t.csv", "function,Parm1,Comment,Clocks,per,Time (usec),MFlops\n"
                                            "myFunc,5,nLps=16,2.50,e,-,-\n");
    EXPECT_EQ(table.runs[0].rows[0].figure.line.text(), "myFunc Parm1=5");
    EXPECT_EQ(table.runs[0].rows[0].figure.clocks, 2.5);
}

TEST(LabTable, CacheStatesTellLinesApart) {
    const Table table =
        parseTable("t.csv", tableHead + tableHeading + "veksX,16s,-,8,-,-,-,-,-,inCache nLps=4,16.3,e,3.93,-\n");
    EXPECT_EQ(table.runs[0].rows[0].figure.line.text(), "veksX_16s Len/Size=8 cache=inCache");
    EXPECT_EQ(table.runs[0].rows[0].figure.loops, 4);
}

TEST(LabTable, WhatNoRigWritesIsToldByFileAndLine) {
    EXPECT_EQ(faultOf(""), "t.csv: this is no table of the rig: it is empty");
    EXPECT_EQ(faultOf("hello\n"),
              "t.csv:1: a row stands before any heading; this is no table of the rig (funcBase,funcDataType,...)");
    EXPECT_EQ(faultOf(tableHead + tableHeading + rowA + "a,b,c\n"), "t.csv:8: 3 cells where the heading has 14");
    EXPECT_EQ(faultOf(tableHead + tableHeading + "veksX,16s,-,8,-,-,-,-,-,nLps=4,abc,e,3.93,-\n"),
              "t.csv:7: 'abc' in column Clocks is no figure");
    EXPECT_EQ(faultOf(tableHead + tableHeading + "veksX,16s,-,8,-,-,-,-,-,nLps=4,nan,e,3.93,-\n"),
              "t.csv:7: 'nan' in column Clocks is no figure");
    EXPECT_EQ(faultOf(tableHead + tableHeading + "-,-,-,8,-,-,-,-,-,nLps=4,1,e,3.93,-\n"),
              "t.csv:7: the row names no function");
    EXPECT_EQ(faultOf(tableHead + "funcBase,funcDataType,funcDescriptor,Len/Size,Parm1\n"),
              "t.csv:6: the heading lacks Comment, Clocks, per and Time (usec); is it cut off?");
    EXPECT_EQ(faultOf(std::string("CPU,\0\n", 6)), "t.csv: this is no table of the rig: it holds zero bytes");
}

TEST(LabTable, NamesBesideATableAreUsed) {
    const TempDir directory;
    directory.write("t.csv", tableHead + tableHeading + rowA);
    directory.write("t_name.csv", tableHead + tableHeading + namesA);
    EXPECT_EQ(readTable(directory.path("t.csv")).runs[0].rows[0].figure.line.text(),
              "veksAutoCorr_16s32s lenght=160 \"lenght Dst\"=9");
    EXPECT_THROW(readTable(directory.path("none.csv")), Fault);
    EXPECT_THROW(readTable(directory.path()), Fault);
}

TEST(LabTable, TheSecondParameterOfANameIsMarked) {
    const Table table =
        parseTable("t.csv", tableHead + tableHeading + "veksX,16s,-,len,len,-,-,-,-,parmNames,-,-,-,-\n" +
                                "veksX,16s,-,208,60,-,-,-,-,nLps=4,16.3,e,3.93,-\n");
    EXPECT_EQ(table.runs[0].rows[0].figure.line.text(), "veksX_16s len=208 \"len (2)\"=60");
}

TEST(LabTable, DevicesAreNotRead) {
    EXPECT_THROW(readTable("/dev/zero"), Fault);
}
