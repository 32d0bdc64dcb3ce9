// A test that notes what is asked of it, and a run of it with its texts and rows taken down.
#pragma once

#include "harness_state.h"
#include "kriterator.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

/// Two parameters of two values each; what it answers can be chosen.
class Noted : public krTest {
public:
    explicit Noted(const char* info = "TimFoo/some mode/KR_REG")
        : krTest(krFuncLoop(nullptr), nullptr, "veksFoo", "../dir/p_foo", info) {}
    void beginTest() override {
        log += "begin ";
        initSettings();
        if (withParms) {
            a.setList({1, 2});
            b.setList({10, 20});
            m_parms.append(&a);
            m_parms.append(&b);
        }
    }
    bool canStart() override {
        log += "start ";
        return start();
    }
    void flushStart() override { log += "stop "; }
    bool canContinue() override {
        const bool more = krTest::canContinue();
        log += more ? "line(" + std::to_string(a.value()) + "," + std::to_string(b.value()) + ") " : "end ";
        return more;
    }
    bool initData() override { return init(); }
    void flushData() override { log += "flush "; }
    void constToOstrm() override { log += "const "; }
    krResult runTiming() override {
        log += "time ";
        m_tool.m_funcClocks = 100;
        m_tool.m_comment = "nLps=1";
        m_tool.m_actualAccuracy = 0;
        return time();
    }
    void endTest() override { log += "endTest"; }

    std::string log;
    bool withParms = true;
    std::function<bool()> start = [] { return true; };
    std::function<bool()> init = [] { return true; };
    std::function<krResult()> time = [] { return krOk; };
    krIterator<int> a{"a"};
    krIterator<int> b{"b"};
};

/// The rows of a Noted test over its two values of each parameter.
inline const std::string fourRows = "veksFoo,1,10,-,nLps=1,100, ,0.1,-\n"
                                    "veksFoo,1,20,-,nLps=1,100, ,0.1,-\n"
                                    "veksFoo,2,10,-,nLps=1,100, ,0.1,-\n"
                                    "veksFoo,2,20,-,nLps=1,100, ,0.1,-\n";

/// Four parameter columns (the name and three more) and five of results.
class KrTestRun : public testing::Test {
protected:
    KrTestRun() {
        krTest::m_numParmsColm = 4;
        krTest::m_numResultColm = 5;
        g_pHotList = &hot;
    }
    krResult run(Noted& test, OutputLevel level = ERR | WARN | PERF) {
        ConsoleCapture console(level);
        TableCapture table(g_cstrm);
        TableCapture sums(g_ustrm);
        test.log = "";
        const krResult result = test.run();
        text = console.text();
        rows = table.text();
        sum = sums.text();
        EXPECT_EQ(g_ostrm.outLevel(), level);
        EXPECT_EQ(g_ostrm.msgLevel(), PERF);
        return result;
    }
    bool told(const char* line) const { return text.find(line) != std::string::npos; }

    HarnessState state;
    krStringList hot;
    std::string text;
    std::string rows;
    std::string sum;
};
