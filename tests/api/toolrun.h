// The timing tool with scripted functions that set their clocks themselves and note what they were asked for.
#pragma once

#include "harness_state.h"
#include "krbase.h"
#include "krtool.h"
#include "streamcapture.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

inline std::vector<int> s_asked;
inline std::function<long long(int)> s_clocks;
inline krResult s_result;
inline int s_inits;
inline int s_calls;
inline std::vector<int> s_statuses;

inline krResult loop(int loops, long long* clocks) {
    s_asked.push_back(loops);
    *clocks = s_clocks(loops);
    return s_result;
}

// Does eight calls more than asked, at 200 clocks each.
inline krResult stat(int* calls, long long* clocks) {
    s_asked.push_back(*calls);
    s_asked.push_back(static_cast<int>(*clocks));
    *calls += 8;
    *clocks = 200LL * *calls;
    return s_result;
}

inline int call() {
    const int status = s_calls < static_cast<int>(s_statuses.size()) ? s_statuses[static_cast<size_t>(s_calls)] : 0;
    ++s_calls;
    return status;
}

inline int prepare() {
    ++s_inits;
    return 0;
}

using Loops = std::vector<int>;

class KrToolRun : public testing::Test {
protected:
    KrToolRun() {
        s_asked.clear();
        s_clocks = [](int n) { return 100LL * n; };
        s_result = krOk;
        s_inits = 0;
        s_calls = 0;
        s_statuses.clear();
    }
    krResult run(krFuncLoop l, krFuncStat s = nullptr, krFuncCall c = nullptr, krFuncCall i = nullptr) {
        ConsoleCapture console(m_level);
        const krResult result = tool.timing(l, s, c, i);
        text = console.text();
        return result;
    }

    HarnessState state;
    krTool tool;
    std::string text;
    OutputLevel m_level = ERR | WARN | INFO;
};
