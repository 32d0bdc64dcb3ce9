// A session for tests of the option table.
#pragma once

#include "harness_state.h"
#include "krkeys.h"
#include "streamcapture.h"
#include "tempdir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Argv = std::vector<std::string>;

// A session whose executable is "rig.exe" in a directory of its own, written as "@/" in what is compared.
class KrOptions : public testing::Test {
protected:
    KrOptions() {
        setVekEnvironment();
        dir.write("rig.ini", "");
        dir.write("x.ini", "");
        session.initSession();
    }
    ~KrOptions() override {
        g_cstrm.close();
        g_ustrm.close();
        g_qstrm.close();
        g_mstrm.close();
    }

    void bindLibrary() {
        vekEnvironment = [] {};
        vek_Init = [] { return 0; };
        session.initSession();
    }

    // Parses the words; the echo, without its head line, in `echo`.
    bool parse(const Argv& words) {
        Argv all = {dir.path("rig.exe")};
        all.insert(all.end(), words.begin(), words.end());
        std::vector<char*> argv;
        for (std::string& word : all) {
            argv.push_back(word.data());
        }
        argv.push_back(nullptr);
        ConsoleCapture console;
        const bool good = session.parseCommandLine(static_cast<int>(all.size()), argv.data());
        dropAddedFiles();
        text = masked(console.text());
        const std::string head = "Command line options: \n";
        echo = text.compare(0, head.size(), head) == 0 ? text.substr(head.size()) : "?" + text;
        return good;
    }
    std::string echoOf(const Argv& words) {
        parse(words);
        return echo;
    }
    std::string masked(std::string s) const {
        const std::string path = dir.path("");
        for (size_t at = s.find(path); at != std::string::npos; at = s.find(path)) {
            s.replace(at, path.size(), "@/");
        }
        return s;
    }
    std::string masked(const krString& s) const { return masked(std::string(s.c_str())); }

    HarnessState state;
    TempDir dir;
    krSession session;
    std::string text;
    std::string echo;
};
