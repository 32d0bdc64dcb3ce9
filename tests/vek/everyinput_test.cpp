// No function is without an entry in the driver's lists; and the driver sees what it is there to see.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>
#include <string>

#include "everyinput.h"
#include "publicnames.h"
#include "vekcore.h"
#include "veks.h"
#include "veksc.h"

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

// Headers whose functions have no entries yet. The list only becomes shorter.
const Names kWithoutEntries = {"veksc_amrwb.h", "veksc_amrwbe.h",   "veksc_amrwberes.h", "veksc_amrwbflt.h",
                               "veksc_ec.h",    "veksc_g722.h",     "veksc_g723.h",      "veksc_g728.h",
                               "veksc_g7291.h", "veksc_g7291bwe.h", "veksc_rta.h"};

/// The functions that answer with a status.
Names calls() {
    Names names;
#define EVERY_FUNCTION(name) names.insert(#name);
#include "every_function.inc"
#undef EVERY_FUNCTION
    return names;
}

TEST(VekEveryInput, HasAnEntryForEachFunctionOnce) {
    const std::vector<std::string> listed = everyinput::Family::names();
    const Names entries(listed.begin(), listed.end());
    EXPECT_EQ(listed.size(), entries.size());
    const Names functions = calls();
    for (const fs::directory_entry& header : fs::directory_iterator(VEK_INCLUDE_DIR)) {
        std::ifstream file(header.path());
        int missing = 0;
        for (const std::string& name :
             publicnames::of({std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()})) {
            const bool lacks = functions.count(name) != 0 && entries.count(name) == 0;
            missing += lacks ? 1 : 0;
            EXPECT_TRUE(!lacks || kWithoutEntries.count(header.path().filename().string()) != 0)
                << name << " has no entry";
        }
        EXPECT_EQ(kWithoutEntries.count(header.path().filename().string()) != 0, missing > 0)
            << header.path().filename() << " is complete, take it from the list";
    }
}

/// What goes wrong in a function that the driver calls; one of them at a time.
enum class Slip { None, Outside, Input, Level, Address, InPlace, Status, Refused, NotFinite, Forgetful };
Slip g_slip = Slip::None;
int g_calls = 0;

VekStatus slipping(const Vek16s* src, Vek16s* dst, Vek32f* mean, int len) {
    ++g_calls;
    const bool inPlace = src == dst;
    for (int i = 0; i < len; ++i) {
        dst[i] = static_cast<Vek16s>(src[i] / 2);
    }
    *mean = g_slip == Slip::NotFinite ? std::numeric_limits<float>::infinity() : 0.5F;
    dst[0] = static_cast<Vek16s>(dst[0] + (g_slip == Slip::Level ? vekGetKernelLevel() : 0));
    if ((g_slip == Slip::InPlace && inPlace) || (g_slip == Slip::Forgetful && g_calls % 3 == 0) ||
        (g_slip == Slip::Address && reinterpret_cast<uintptr_t>(src) % 16 != 0)) {
        dst[0] = static_cast<Vek16s>(dst[0] ^ 1);
    }
    if (g_slip == Slip::Outside) {
        dst[len] = 7;
    }
    if (g_slip == Slip::Input && !inPlace) {
        const_cast<Vek16s*>(src)[0] = static_cast<Vek16s>(~src[0]);
    }
    return g_slip == Slip::Status ? vekStsRangeErr : g_slip == Slip::Refused ? vekStsSizeErr : vekStsNoErr;
}

std::string told(Slip slip) {
    // Its buffers in this order, whatever the compiler's.
    const auto call = [](everyinput::Run& r, int n) {
        const Vek16s* const src = r.from<Vek16s>(n);
        Vek16s* const dst = r.to<Vek16s>(n);
        return slipping(src, dst, r.out<Vek32f>(1), n);
    };
    const everyinput::Entry entry = everyinput::Entry{"slipping", {8}, call}.mayGive({vekStsSizeErr});
    g_calls = 0;
    g_slip = slip;
    const std::string text = everyinput::firstFault(entry, 8, everyinput::Kind::Random);
    return text.substr(text.rfind(": ") + 1);
}

TEST(VekEveryInput, TellsWhatAFunctionDoesWrong) {
    EXPECT_EQ("", told(Slip::None));
    EXPECT_EQ(" buffer 1 was written outside", told(Slip::Outside));
    EXPECT_EQ(" buffer 0 is an input, and was written", told(Slip::Input));
    EXPECT_EQ(" result 0, element 0 differs", told(Slip::Level));
    EXPECT_EQ(" result 0, element 0 differs", told(Slip::Address));
    EXPECT_EQ(" result 0, element 0 differs", told(Slip::InPlace));
    EXPECT_EQ(" result 0, element 0 differs", told(Slip::Forgetful));
    EXPECT_EQ(" status -14", told(Slip::Status));
    EXPECT_EQ(" an error, and yet something was written", told(Slip::Refused));
    EXPECT_EQ(" result 1 is not finite", told(Slip::NotFinite));
}

} // namespace
