// The rig's own measurement of the subjects: name, clocks per call, microseconds of wall time for the line. The
// argument is the method: "auto", or "iterative" from 64 loops. With "asleep" the core is not woken before the first
// line.
#include "vkreg.h"

#include "krstream.h"
#include "subjects.h"

#include <cstdio>
#include <ctime>

VK_REG(vkTest, subjectEmpty, subjectEmpty())
VK_REG(vkTest, subjectDot40, subjectDot40())
VK_REG(vkTest, subjectDot240, subjectDot240())
VK_REG(vkTest, subjectAutoCorr, subjectAutoCorr())
VK_REG(vkTest, subjectMatrix, subjectMatrix())
VK_REG(vkTest, subjectSynthesis, subjectSynthesis())
VK_REG(vkTest, subjectLong, subjectLong())

static double nowUs() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) * 1e-3;
}

static void sleep50ms() {
    const timespec pause = {0, 50000000};
    nanosleep(&pause, nullptr);
}

int main(int argc, char** argv) {
    const krString mode = argc > 1 ? argv[1] : "auto";
    if (mode == "iterative") {
        g_tool.setMethodBest(64, 65536, 100);
    }
    krCpuTicker::m_freqMHz = 1000;
    g_ostrm.setOutLevel(ERR);
    krWakeCore();
    int i = 0;
    for (krTest* test : *pTestList) {
        if (mode == "asleep" || mode == "woken") {
            sleep50ms();
        }
        if (mode == "asleep") {
            // The tool takes the core for awake and does not wake it.
            krCoreWasBusy();
        }
        const double begin = nowUs();
        test->m_tool = g_tool;
        krTest::initCtrlStatus();
        test->runTiming();
        const double end = nowUs();
        std::printf("%s;%.3f;%.2f\n", subjects[i++].name, test->m_tool.m_funcClocks, end - begin);
    }
    return 0;
}
