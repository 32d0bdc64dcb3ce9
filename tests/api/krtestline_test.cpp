// What a run keeps for its lines and its report: the counters of vectors, the times, the rows held back, the texts of
// the floating-point status, and files that are complete when a test is over.
#include "krbase.h"
#include "krctrl87.h"
#include "krinfo.h"
#include "notedtest.h"
#include "tempdir.h"

#include <cstdint>
#include <vector>

namespace {

// Three vectors a line, misaligned by the setting in units of two bytes.
class ThreeVectors : public Noted {
public:
    bool initData() override {
        numbers.push_back(m_vectorNum);
        shifts.push_back(m_vectorShift);
        for (void*& block : blocks) {
            block = krTest::allocate(100, -2);
            places.push_back(static_cast<int>(reinterpret_cast<std::uintptr_t>(block) % 64));
        }
        return true;
    }
    void flushData() override {
        for (void*& block : blocks) {
            krTest::deallocate(block);
        }
    }
    void* blocks[3] = {};
    std::vector<int> numbers;
    std::vector<int> shifts;
    std::vector<int> places;
};

class KrTestVectors : public KrTestRun {
protected:
    KrTestVectors() : m_align(krGetVectorAlign()), m_src(krGetAlignSrc()), m_shift(krGetVectorShift()) {
        krSetVectorAlign(5);
        krSetAlignSrc(true);
        krSetVectorShift(512);
    }
    ~KrTestVectors() override {
        krSetVectorAlign(m_align);
        krSetAlignSrc(m_src);
        krSetVectorShift(m_shift);
    }

private:
    int m_align;
    bool m_src;
    int m_shift;
};

using Ints = std::vector<int>;

TEST_F(KrTestVectors, EachLineCountsItsVectorsFromZero) {
    krTest::m_vectorNum = 7;
    krTest::m_vectorShift = 1024;
    ThreeVectors test;
    run(test);
    EXPECT_EQ(test.numbers, (Ints{0, 0, 0, 0}));
    EXPECT_EQ(test.shifts, (Ints{0, 0, 0, 0}));
    EXPECT_EQ(krTest::m_vectorNum, 0) << "the end of the grid was asked for";
}

TEST_F(KrTestVectors, FirstVectorOfEachLineAloneIsMisaligned) {
    ThreeVectors test;
    run(test);
    EXPECT_EQ(test.places, (Ints{10, 0, 0, 10, 0, 0, 10, 0, 0, 10, 0, 0}));
}

TEST_F(KrTestVectors, VectorsLieAtGrowingShiftsFromTheirBlocks) {
    krTest::m_vectorShift = 0;
    for (int vector = 0; vector < 3; ++vector) {
        EXPECT_EQ(krTest::m_vectorShift, 512 * vector);
        ConsoleCapture console(ERR | MEM);
        void* const block = krTest::allocate(100, 0);
        const std::string line = console.text();
        const size_t base = line.find("address:") + 8;
        const size_t aligned = line.find("alignedPointer:") + 15;
        EXPECT_EQ(std::stoull(line.substr(aligned), nullptr, 16) - std::stoull(line.substr(base), nullptr, 16),
                  512ULL * static_cast<unsigned>(vector));
        krTest::deallocate(block);
    }
}

// -------------------------------------------------------------------------------------------------------- times

time_t s_now = 0;

// Each phase takes its time.
class Clocked : public Noted {
public:
    void beginTest() override { Noted::beginTest(), s_now += 10; }
    bool canStart() override { return s_now += 100, true; }
    krResult runTiming() override { return s_now += 1000, Noted::runTiming(); }
    void flushStart() override { s_now += 10000; }
    void endTest() override { s_now += 100000; }
};

TEST_F(KrTestRun, TimesOfATestAreThoseBehindItsBeginningAndBeforeItsReport) {
    s_now = 1000000;
    krTime = [] { return s_now; };
    Clocked test;
    EXPECT_EQ(test.m_startTime, 1000000);
    EXPECT_EQ(test.m_endTime, 1000000);
    run(test);
    EXPECT_EQ(test.m_startTime, 1000010);
    EXPECT_EQ(test.m_endTime, 1014110);
    EXPECT_NE(sum.find(",TimFoo,14100,"), std::string::npos) << sum;
    for (const time_t told : {test.m_startTime, test.m_endTime}) {
        const std::string line = krTimeText(told).c_str();
        EXPECT_NE(text.find(line.substr(0, line.size() - 1)), std::string::npos) << line << text;
    }
}

TEST_F(KrTestRun, ParametersOfALineShowWithItsPerformance) {
    Noted test;
    run(test);
    EXPECT_TRUE(told("a=1 b=10 \n  "));
    run(test, ERR | WARN);
    EXPECT_FALSE(told("a=1 b=10"));
}

// --------------------------------------------------------------------------------------------- rows and files

TEST_F(KrTestRun, RowsHeldBackTakePartInTheSearchForDuplicates) {
    Noted test;
    test.a.addDeprecated(1, "old");
    test.a.addDeprecated(2, "old");
    EXPECT_EQ(run(test), krDataWrn);
    EXPECT_EQ(rows, fourRows + "veksFoo,old,10,-,deprecated,100, ,0.1,-\n"
                               "veksFoo,old,20,-,deprecated,100, ,0.1,-\n"
                               "veksFoo,old,10,-,deprecated,100, ,0.1,-\n"
                               "veksFoo,old,20,-,deprecated,100, ,0.1,-\n");
    EXPECT_TRUE(told("-- Warning: duplicate lines in performance table (csv-file)\n"));
}

TEST_F(KrTestRun, DuplicatesAreAWarningIfWarningsAreShown) {
    Noted test;
    test.a.addDeprecated(1, "old");
    test.a.addDeprecated(2, "old");
    EXPECT_EQ(run(test, WARN), krDataWrn);
    EXPECT_EQ(run(test, ERR), krOk);
}

TEST_F(KrTestRun, RowsThatDifferInOneParameterAreNoDuplicates) {
    struct LastColumn : Noted {
        void beginTest() override {
            Noted::beginTest();
            c.setList({7, 8});
            m_parms.append(&c);
        }
        krIterator<int> c{"c"};
    } test;
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 8);
}

TEST_F(KrTestRun, RowsThatDifferInResultsAloneAreDuplicates) {
    struct Twice : Noted {
        void beginTest() override {
            Noted::beginTest();
            a.setList({1, 1});
        }
        krResult runTiming() override {
            Noted::runTiming();
            m_tool.m_funcClocks = ++clocks;
            return krOk;
        }
        int clocks = 100;
    } test;
    EXPECT_EQ(run(test), krDataWrn);
}

// A file of its own among the destinations of a stream.
class AddedFile {
public:
    AddedFile(krDestinations& stream, const TempDir& dir, const char* name)
        : m_dir(dir), m_name(name), m_file(dir.path(name).c_str(), ioWrite | ioRawName, true) {
        stream.insert(stream.end(), &m_file);
    }
    void write(const char* unflushed) { m_file << unflushed; }
    std::string onDisk() const { return m_dir.read(m_name); }

private:
    const TempDir& m_dir;
    const char* m_name;
    o_stream m_file;
};

TEST_F(KrTestRun, FilesAreCompleteWhenTheReportOfATestIsWritten) {
    const TempDir dir;
    ConsoleCapture console;
    TableCapture table(g_cstrm);
    TableCapture sums(g_ustrm);
    AddedFile files[] = {{g_ostrm, dir, "text"}, {g_cstrm, dir, "table"}, {g_ustrm, dir, "sums"}};
    struct AtTheEnd : Noted {
        explicit AtTheEnd(AddedFile* added) : all(added) {}
        void flushStart() override {
            for (int i = 0; i < 3; ++i) {
                all[i].write("late\n");
            }
        }
        void endTest() override {
            for (int i = 0; i < 3; ++i) {
                seen.push_back(all[i].onDisk());
            }
        }
        AddedFile* all;
        std::vector<std::string> seen;
    } test(files);
    EXPECT_EQ(test.run(), krOk);
    ASSERT_EQ(test.seen.size(), 3U);
    EXPECT_NE(test.seen[0].find("late\n"), std::string::npos);
    EXPECT_NE(test.seen[0].find("| -OK         veksFoo "), std::string::npos);
    EXPECT_NE(test.seen[1].find("late\n"), std::string::npos);
    EXPECT_NE(test.seen[2].find("late\n"), std::string::npos);
    EXPECT_NE(test.seen[2].find(",OK,"), std::string::npos);
}

// ------------------------------------------------------------------------------------------- status of the units

TEST_F(KrTestRun, StatusOfTheX87IsToldBeforeThatOfTheVectorUnit) {
    krTest::initCtrlStatus();
    krTool::ctrlStart();
    const double denormal = 4.9406564584124654e-324;
    __asm__ volatile("fldl %0\n\tfstp %%st(0)" : : "m"(denormal));
    kr_set_ssx(4, 0x3F);
    krTool::ctrlStop();
    Noted test;
    ConsoleCapture console;
    EXPECT_EQ(test.checkCtrlStatus(), krBadStsWrn);
    EXPECT_EQ(console.text(), "-- Status    87: ?Denormal \n-- Status    SSX: ?Zerodivide \n");
}

TEST_F(KrTestRun, LineStartsFromKnownWordsWhateverTheLastLineLeft) {
    struct Words : Noted {
        krResult runTiming() override {
            seen.push_back(static_cast<int>(kr_get_cw_fpu() & 0xF3F));
            seen.push_back(static_cast<int>(kr_get_ssx() & 0xFFBF));
            kr_set_cw_fpu(0x43F, 0xF3F);
            kr_set_ssx(0x7F84, 0xFFBF);
            return Noted::runTiming();
        }
        std::vector<int> seen;
    } test;
    EXPECT_EQ(run(test), krOk) << "the guard looks at measurements alone";
    EXPECT_EQ(test.seen, (Ints{0x23B, 0x9F80, 0x23B, 0x9F80, 0x23B, 0x9F80, 0x23B, 0x9F80}));
}

} // namespace
