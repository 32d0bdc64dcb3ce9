// Reading what callgrind writes: who called whom, how often, and how many instructions that took. Knows nothing of the
// rig.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace krlab {

/// All calls from one place of a function to another function.
struct CallEdge {
    std::string callerObject; ///< path of the program or library
    std::string caller;
    std::string callee;
    long long calls = 0;
    long long instructions = 0; ///< of the callee with all that it calls
};

/// The edges of one dump, in their order. `file` is for messages. Throws Fault with file and line for what is no dump.
std::vector<CallEdge> parseCallgraph(const std::string& file, std::string_view text);

} // namespace krlab
