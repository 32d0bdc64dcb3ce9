// No function is without an entry in the driver's lists; and the driver sees what it is there to see.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <set>
#include <string>

#include "everyinput.h"
#include "vekcore.h"
#include "veks.h"
#include "veksc.h"

namespace {

using Names = std::set<std::string>;

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
    for (const std::string& name : functions) {
        EXPECT_EQ(1U, entries.count(name)) << name << " has no entry";
    }
    for (const std::string& name : entries) {
        EXPECT_EQ(1U, functions.count(name)) << name << " is no function of the library";
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
