// Prints the table of clocks beside independent open codecs; with arguments, only of the topics that they name.
#include "peers.h"

#include <cstring>
#include <map>
#include <string>

namespace {

std::map<std::string, PeerBlock>& blocks() {
    static std::map<std::string, PeerBlock> all;
    return all;
}

} // namespace

PeerBlockMark::PeerBlockMark(const char* topic, PeerBlock block) {
    blocks()[topic] = block;
}

int main(int argc, char** argv) {
    std::printf("%-45s %10s %10s %6s  %s\n", "function", "ours", "peer", "ratio", "peer's function");
    for (const auto& [topic, block] : blocks()) {
        const bool named =
            std::any_of(argv + 1, argv + argc, [&wanted = topic](const char* arg) { return wanted == arg; });
        if (argc < 2 || named) {
            block();
        }
    }
    return 0;
}
