// The project of someone else, and the installed tree that it builds with.
#include "consumer.h"

#include <cstdlib>
#include <gtest/gtest.h>

const char* const quickKeys = " -B -LPERF -dMethod=Manual -dNumLoops=64 -l\"$PWD\" -rout.csv ";

std::string inQuotes(const std::string& text) {
    return "\"" + text + "\"";
}

bool isInstalled(const std::string& program) {
    return std::system(("command -v '" + program + "' >/dev/null 2>&1").c_str()) == 0;
}

Consumer::Consumer() {
    std::filesystem::create_directory(m_parent.path(s_name));
    write("mygain.cpp", R"(int myGain(const short* src, short* dst, int len) {
    for (int i = 0; i < len; ++i) {
        dst[i] = static_cast<short>(src[i] * 3 / 2);
    }
    return 0;
}
)");
    write("mygain_rig.cpp", R"(#include <kelvarrig.h>

int myGain(const short* src, short* dst, int len);

static kr::Param len("len", kr::steps(40, 240, 40));
static kr::Vector<short> src(len, kr::random(-1024, 1024));
static kr::Vector<short> dst(len);
static auto gain = kr::measure<myGain>("myGain", src, dst, len).elements(len);
)");
}

double Consumer::clocks(const std::string& table, const std::string& function) const {
    const std::string text = read(table);
    const size_t at = text.find("\n" + function + ",");
    if (at == std::string::npos) {
        return -1;
    }
    const std::string row = text.substr(at + 1, text.find('\n', at + 1) - at - 1);
    const size_t loops = row.find("nLps=");
    const size_t comma = row.find(',', loops == std::string::npos ? 0 : loops);
    return std::strtod(row.c_str() + comma + 1, nullptr);
}

const std::string& installedPrefix() {
    static const TempDir home;
    static const std::string prefix = [] {
        const ShellResult installed =
            runShellScript(home, "cmake --install '" KELVARRIG_BUILD "' --prefix \"$PWD/the prefix\"\n");
        EXPECT_EQ(0, installed.exitCode) << installed.out;
        return home.path("the prefix");
    }();
    return prefix;
}
