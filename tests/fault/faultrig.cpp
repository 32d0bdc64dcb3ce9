// The fault program: the harness with no library at all, and tests that crash, warn, fail and hang on purpose in every
// phase of their life. It measures nothing of interest; the program tests look at how the run gets over each of them.
#include "kr.h"
#include "krcputick.h"
#include "krctrl87.h"
#include "kriterator.h"

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// ------------------------------------------------------------------------------------------------ what is measured

int s_size = 1;
volatile unsigned s_sink = 0;

// The faults are spelled in machine instructions, so that no compiler and no sanitizer reasons them away.
int nullWrite() {
    __asm__ volatile("movl $1, (%0)" : : "r"(static_cast<int*>(nullptr)) : "memory");
    return 0;
}

int integerDivide() {
    int value = 1;
    __asm__ volatile("cltd\n\tidivl %1" : "+a"(value) : "r"(0) : "edx", "cc");
    return value;
}

int x87Divide() {
    __asm__ volatile("fldz\n\tfld1\n\tfdiv %%st(1), %%st\n\tfwait" : : : "memory");
    return 0;
}

int illegalInstruction() {
    __asm__ volatile("ud2");
    return 0;
}

volatile int s_bottom = -1;

int recurse(int depth) {
    if (depth == s_bottom) {
        return 0;
    }
    volatile char room[4096];
    room[0] = static_cast<char>(depth);
    const int below = recurse(depth + 1);
    return below + room[0];
}

int runAway() {
    return recurse(0);
}

int sum() {
    unsigned total = 0;
    for (int i = 0; i < s_size * 64; ++i) {
        total += static_cast<unsigned>(i) ^ s_sink;
    }
    s_sink = total;
    return 0;
}

int denormalFlag() {
    kr_set_ssx(0x2, 0x2);
    return 0;
}

int inexactFlag() {
    kr_set_ssx(0x20, 0x20);
    return 0;
}

int roundingMode() {
    kr_set_ssx(0x6000, 0x6000);
    kr_set_cw_fpu(0xC00, 0xC00);
    return 0;
}

// Fails if the words before the call are not those that every line starts from.
int defaultWords() {
    const bool ssx = (kr_get_ssx() & 0xFFBF) == 0x9F80;
    const bool x87 = (kr_get_cw_fpu() & 0xF3F) == 0x23B;
    return ssx && x87 ? 0 : -7;
}

int returnsError() {
    return -5;
}

int returnsWarning() {
    return 5;
}

int failsAtSixteen() {
    return s_size == 16 ? -6 : sum();
}

int crashesAtSixteen() {
    return s_size == 16 ? nullWrite() : sum();
}

// Stays in the measured call at the last line of its grid as long as the file "hold" lies beside the program.
int holds() {
    while (s_size == 32 && access((krSession::m_exePath.getFileDir() + "hold").c_str(), F_OK) == 0) {
        usleep(1000);
    }
    return sum();
}

// ------------------------------------------------------------------------------------------------ the process

// Destroyed after the streams of the harness, as the data of a suite may be.
struct LateBlock {
    ~LateBlock() { krTest::deallocate(block); }
    void* block = nullptr;
} s_late;

int endsProcess() {
    s_late.block = krTest::allocate(64, 0);
    std::exit(0);
}

int endsProcessWithFive() {
    std::exit(5);
}

int crashesInThread() {
    pthread_t thread = {};
    const auto crash = [](void* /*nothing*/) -> void* {
        nullWrite();
        return nullptr;
    };
    return pthread_create(&thread, nullptr, crash, nullptr) == 0 ? pthread_join(thread, nullptr) : -1;
}

int spoilsSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGFPE, SIGILL, SIGSEGV, SIGPIPE, SIGXFSZ}) {
        std::signal(number, SIG_DFL);
        sigaddset(&set, number);
    }
    stack_t none = {};
    none.ss_flags = SS_DISABLE;
    const bool spoiled = sigaltstack(&none, nullptr) == 0 && std::signal(SIGPIPE, SIG_DFL) != SIG_ERR;
    sigdelset(&set, SIGPIPE);
    return spoiled && sigprocmask(SIG_BLOCK, &set, nullptr) == 0 ? 0 : -1;
}

// Fails where the locale "comma" can't be found.
int setsLocale() {
    return std::setlocale(LC_ALL, "comma") != nullptr ? 0 : -1;
}

int changesDirectory() {
    return chdir("/");
}

int awaitChild(pid_t child) {
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child ? 0 : -1;
}

int childExits() {
    const pid_t child = fork();
    if (child == 0) {
        std::exit(0);
    }
    return awaitChild(child);
}

int childReturns() {
    const pid_t child = fork();
    return child == 0 ? 0 : awaitChild(child);
}

int childCrashes() {
    const pid_t child = fork();
    return child == 0 ? nullWrite() : awaitChild(child);
}

krResult checkStatus(int status) {
    return status < 0 ? krFuncFail : status > 0 ? krFuncWrn : krOk;
}

// ------------------------------------------------------------------------------------------------ tests

/// A test of one line.
class FrSingle : public krTest {
public:
    FrSingle(krFuncCall call, const char* name, const char* info)
        : krTest(call, nullptr, nullptr, nullptr, name, "faultrig.cpp", info) {}
};

/// A test with the grid Size = 8; 16; 32.
class FrGrid : public FrSingle {
public:
    using FrSingle::FrSingle;
    void beginTest() override {
        krTest::beginTest();
        m_size.reset();
        m_size.setName("Size");
        fillGrid();
        m_parms.append(&m_size);
    }
    bool initData() override {
        s_size = m_size.value();
        return true;
    }
    double getDivisor() override { return m_size.value(); }
    double getFlops() override { return 2.0 * m_size.value(); }
    krString getUnit() override { return "el"; }

protected:
    virtual void fillGrid() { m_size.setList({8, 16, 32}); }
    krIterator<int> m_size;
};

class FrEmptyGrid : public FrGrid {
public:
    using FrGrid::FrGrid;

protected:
    void fillGrid() override {}
};

class FrDuplicates : public FrGrid {
public:
    using FrGrid::FrGrid;

protected:
    void fillGrid() override { m_size.setList({8, 16, 8}); }
};

class FrSkipsAll : public FrGrid {
public:
    using FrGrid::FrGrid;
    bool initData() override { return false; }
};

class FrCantStart : public FrSingle {
public:
    using FrSingle::FrSingle;
    bool canStart() override { return false; }
};

class FrCrashInBegin : public FrSingle {
public:
    using FrSingle::FrSingle;
    void beginTest() override { nullWrite(); }
};

class FrCrashInStart : public FrSingle {
public:
    using FrSingle::FrSingle;
    bool canStart() override { return integerDivide() == 0; }
};

class FrCrashInData : public FrGrid {
public:
    using FrGrid::FrGrid;
    bool initData() override {
        FrGrid::initData();
        return s_size != 32 || illegalInstruction() == 0;
    }
};

/// A test without any function to call.
class FrNoFunction : public krTest {
public:
    FrNoFunction(const char* name, const char* info)
        : krTest(static_cast<krFuncLoop>(nullptr), nullptr, name, "faultrig.cpp", info) {}
};

/// A common parameter that crashes when it is given the word "crash".
class CrashingParm : public krDefault<int> {
public:
    using krDefault<int>::krDefault;
    int validItem(const krString& text) override {
        if (text == "crash") {
            nullWrite();
        }
        return krDefault<int>::validItem(text);
    }
};

CrashingParm s_common(3, "Common", "Common number");

class FrCommon : public FrSingle {
public:
    using FrSingle::FrSingle;
    void beginTest() override {
        krTest::beginTest();
        m_parms.append(&s_common);
    }
};

// ------------------------------------------------------------------------------------------------ session

/// The tables of a harness without a library: one function column and eight parameters.
class FaultSession : public krSession {
public:
    void funcTitleToCStream() override { krFuncTitleToCStream(); }
    void parmsTitleToCStream() override { krParmsTitleToCStream(); }
};

int registerMany() {
    static const krFuncCall faults[] = {nullWrite, integerDivide, illegalInstruction, x87Divide};
    for (int i = 0; i < 1000; ++i) {
        krRegTest(new FrSingle(faults[i % 4], krFormat("frMany%04d", i).c_str(), "FrMany"));
    }
    return krRegTest(new FrGrid(sum, "frManySurvived", "FrGrid"));
}

int registerAll() {
    krCpuTicker::m_freqMHz = 1000; // no two seconds of polling in every run
    krTool::m_pCheckStatus = checkStatus;
    krRegSession(new FaultSession);
    krRegParm(s_common);
    krRegHotFunction("frGood");

    krRegTest(new FrGrid(sum, "frGood", "FrGrid/adding up/FR_REG"));
    krRegTest(new FrSingle(nullWrite, "frNullWrite", "FrSingle"));
    krRegTest(new FrSingle(integerDivide, "frIntegerDivide", "FrSingle"));
    krRegTest(new FrSingle(x87Divide, "frX87Divide", "FrSingle"));
    krRegTest(new FrSingle(illegalInstruction, "frIllegalInstruction", "FrSingle"));
    krRegTest(new FrSingle(runAway, "frRunAway", "FrSingle"));
    krRegTest(new FrSingle(defaultWords, "frWordsAfterFaults", "FrSingle"));
    krRegTest(new FrSingle(denormalFlag, "frDenormalFlag", "FrSingle"));
    krRegTest(new FrSingle(inexactFlag, "frInexactFlag", "FrSingle"));
    krRegTest(new FrSingle(roundingMode, "frRoundingMode", "FrSingle"));
    krRegTest(new FrSingle(defaultWords, "frWordsAfterRounding", "FrSingle"));
    krRegTest(new FrSingle(returnsError, "frError", "FrSingle"));
    krRegTest(new FrSingle(returnsWarning, "frWarning", "FrSingle"));
    krRegTest(new FrCantStart(sum, "frCantStart", "FrCantStart"));
    krRegTest(new FrCrashInBegin(sum, "frCrashInBegin", "FrCrashInBegin"));
    krRegTest(new FrCrashInStart(sum, "frCrashInStart", "FrCrashInStart"));
    krRegTest(new FrCrashInData(sum, "frCrashInData", "FrCrashInData"));
    krRegTest(new FrGrid(failsAtSixteen, "frFailsAtSixteen", "FrGrid"));
    krRegTest(new FrGrid(crashesAtSixteen, "frCrashesAtSixteen", "FrGrid"));
    krRegTest(new FrEmptyGrid(sum, "frEmptyGrid", "FrEmptyGrid"));
    krRegTest(new FrDuplicates(sum, "frDuplicates", "FrDuplicates"));
    krRegTest(new FrSkipsAll(sum, "frSkipsAll", "FrSkipsAll"));
    krRegTest(new FrNoFunction("frNoFunction", "FrNoFunction"));
    krRegTest(new FrGrid(sum, "frGoodAtTheEnd", "FrGrid"));
    krRegTest(new FrCommon(sum, "cmParameter", "FrCommon"));
    krRegTest(new FrGrid(holds, "hdHolds", "FrGrid"));
    krRegTest(new FrGrid(endsProcess, "dmExits", "FrGrid"));
    krRegTest(new FrGrid(endsProcessWithFive, "dmExitsWithFive", "FrGrid"));
    krRegTest(new FrGrid(crashesInThread, "dmCrashesInThread", "FrGrid"));
    krRegTest(new FrSingle(spoilsSignals, "dmSpoilsSignals", "FrSingle"));
    krRegTest(new FrSingle(runAway, "dmRunAway", "FrSingle"));
    krRegTest(new FrSingle(setsLocale, "dmSetsLocale", "FrSingle"));
    krRegTest(new FrSingle(changesDirectory, "dmChangesDirectory", "FrSingle"));
    krRegTest(new FrSingle(childExits, "dmChildExits", "FrSingle"));
    krRegTest(new FrSingle(childReturns, "dmChildReturns", "FrSingle"));
    krRegTest(new FrSingle(childCrashes, "dmChildCrashes", "FrSingle"));
    return registerMany();
}

const int s_registered = registerAll();

} // namespace
