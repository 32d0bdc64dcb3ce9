// The calls of a chain, each with the clocks that it took: in place of what a test does with a status.
#pragma once

#include "vekdefs.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <x86intrin.h>

namespace chains {

/// One place of the source that calls the library.
class CallSite {
public:
    /// `text` is the call as it is written.
    explicit CallSite(const char* text);

    std::string function;
    std::uint64_t clocks = 0; ///< since they were last taken
    std::uint64_t calls = 0;
};

/// All places that were reached.
std::vector<CallSite*>& callSites();

/// Whether calls are timed by themselves. What that costs is in the clocks of the frame.
extern bool g_timeCalls;
/// Calls that ended with an error.
extern int g_badStatuses;

/// Makes the call at its place, and returns its status.
template <class Call>
VekStatus callAt(CallSite& site, Call call) {
    if (!g_timeCalls) {
        return call();
    }
    const std::uint64_t before = __rdtsc();
    const VekStatus status = call();
    site.clocks += __rdtsc() - before;
    ++site.calls;
    return status;
}

} // namespace chains

#define CALLED(call)                                                                                                   \
    [&] {                                                                                                              \
        static_assert(std::string_view(#call).starts_with("veks"), "a call is known by its function's name");          \
        static chains::CallSite site(#call);                                                                           \
        return chains::callAt(site, [&] { return call; });                                                             \
    }()
#define GOOD(call) chains::g_badStatuses += CALLED(call) != vekStsNoErr ? 1 : 0
#define DONE(call) static_cast<void>(CALLED(call))
#define SAME(one, other) chains::g_badStatuses += (one) != (other) ? 1 : 0
