// Prints the table of clocks beside independent open codecs.
//
// usage: bench_peers [--side ours|peer|both] [--list] [--tab] [--machine] [PATTERN...]
// A pattern is a regular expression, looked for in the topic, the functions, the size and the peer of a row; with
// several a row must hold one of them. --list measures nothing. --tab writes topic, functions, size, data, peer and the
// clocks with tabs between. --machine tells what it runs on, and nothing else.
#include "peers.h"

#include "../tests/oracle/speech_signal.h"

#include "krcpuid.h"
#include "vekcore.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <regex>
#include <vector>

namespace {

struct Options {
    bool ours = true;
    bool peer = true;
    bool list = false;
    bool tab = false;
    std::vector<std::regex> patterns;
} g_options;

// What the block that runs is about.
std::string g_topic;
PeerData g_data(PeerData::Kind::numbers);
bool g_once = false;

struct Block {
    PeerBlock rows;
    bool once;
};
// By topic. Plain loops of another build have the same topics.
std::multimap<std::string, Block>& blocks() {
    static std::multimap<std::string, Block> all;
    return all;
}

[[noreturn]] void refuse(const std::string& cause) {
    std::fprintf(stderr, "bench_peers: %s\n", cause.c_str());
    std::exit(2);
}

// Calls that a batch of some 40,000 clocks holds.
int batchCalls(const PeerSide& side) {
    constexpr double batchClocks = 40000;
    return std::clamp(static_cast<int>(batchClocks / side.batch(side.call, 3)), 1, 2000);
}

// The batches less than which nothing was seen; 0 for a side that is not asked for.
struct Clocks {
    double ours = 0;
    double peer = 0;
};
Clocks measure(const PeerSide& ours, const PeerSide& theirs) {
    constexpr int rounds = 400;
    krWakeCore();
    const int ourCalls = batchCalls(ours);
    const int theirCalls = batchCalls(theirs);
    Clocks best{1e30, 1e30};
    for (int i = 0; i < rounds; ++i) {
        if (g_options.ours) {
            best.ours = std::min(best.ours, ours.batch(ours.call, ourCalls));
        }
        if (g_options.peer) {
            best.peer = std::min(best.peer, theirs.batch(theirs.call, theirCalls));
        }
    }
    krCoreWasBusy();
    return {g_options.ours ? best.ours : 0, g_options.peer ? best.peer : 0};
}

bool isWanted(const std::string& row) {
    return g_options.patterns.empty() ||
           std::any_of(g_options.patterns.begin(), g_options.patterns.end(),
                       [&](const std::regex& pattern) { return std::regex_search(row, pattern); });
}

// Speech whose stretches begin where it is loud, so that no call works on silence.
const std::vector<int16_t>& speech() {
    static const std::vector<int16_t> all = speechLike(60000);
    return all;
}
size_t loudPlace(int n, int stretch) {
    size_t place = static_cast<size_t>(stretch) * 4001 % 40000;
    const auto loudest = [&](size_t from) {
        int most = 0;
        for (size_t i = from; i < from + static_cast<size_t>(n); ++i) {
            most = std::max(most, std::abs(static_cast<int>(speech()[i])));
        }
        return most;
    };
    while (place + static_cast<size_t>(n) + 200 < speech().size() && loudest(place) < 1000) {
        place += 200;
    }
    return place;
}

// Values within -1..1, of either kind.
std::vector<double> values(bool isSpeech, int n, int stretch) {
    std::vector<double> x(static_cast<size_t>(n));
    if (isSpeech) {
        const size_t from = loudPlace(n, stretch);
        double most = 1;
        for (size_t i = 0; i < x.size(); ++i) {
            x[i] = speech()[from + i];
            most = std::max(most, std::abs(x[i]));
        }
        for (double& v : x) {
            v /= most;
        }
    } else {
        std::mt19937 random(static_cast<unsigned>(1 + stretch));
        for (double& v : x) {
            v = std::uniform_real_distribution<double>(-1, 1)(random);
        }
    }
    return x;
}

template <class T>
void fillWith(bool isSpeech, T* x, int n, double peak, int stretch) {
    const std::vector<double> from = values(isSpeech, n, stretch);
    std::transform(from.begin(), from.end(), x, [peak](double v) { return static_cast<T>(peak * v); });
}

// Counts of the counter in a microsecond, over a fifth of a second.
int counterMHz() {
    const auto begin = std::chrono::steady_clock::now();
    const unsigned long long first = vek_get_cyclon_counter();
    std::chrono::duration<double, std::micro> past{};
    while (past.count() < 200000) {
        past = std::chrono::steady_clock::now() - begin;
    }
    return static_cast<int>(std::lround(static_cast<double>(vek_get_cyclon_counter() - first) / past.count()));
}

// No names of makers or products: figures are told by what the processor can be recognised by.
void printMachine() {
    vekCyclonIdent id{};
    vek_get_cyclon_ident(&id);
    const unsigned family = id.family + (id.family == 15 ? id.exFamily : 0);
    const unsigned model = id.model + (id.family == 6 || id.family == 15 ? 16 * id.exModel : 0);
    const int bits = __builtin_cpu_supports("avx512f") ? 512 : __builtin_cpu_supports("avx2") ? 256 : 128;
#ifdef __clang__
    const char* const compiler = "Clang " __clang_version__;
#else
    const char* const compiler = "GCC " __VERSION__;
#endif
    std::printf("family\t%u\nmodel\t%u\nregister bits\t%d\ncounter MHz\t%d\nkernel level\t%d\ncompiler\t%s\n", family,
                model, bits, counterMHz(), vekGetKernelLevel(), compiler);
}

void readCommandLine(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--side" && i + 1 < argc) {
            const std::string side = argv[++i];
            if (side != "ours" && side != "peer" && side != "both") {
                refuse("--side is ours, peer or both, not " + side);
            }
            g_options.ours = side != "peer";
            g_options.peer = side != "ours";
        } else if (arg == "--list") {
            g_options.list = true;
        } else if (arg == "--tab") {
            g_options.tab = true;
        } else if (arg == "--machine") {
            printMachine();
            std::exit(0);
        } else if (arg.rfind("--", 0) == 0) {
            refuse("unknown key " + arg + ", or a key without its value");
        } else {
            try {
                g_options.patterns.emplace_back(arg);
            } catch (const std::regex_error&) {
                refuse("no regular expression: " + arg);
            }
        }
    }
}

} // namespace

void PeerData::fill(Vek16s* x, int n, int peak, int stretch) const {
    fillWith(isSpeech(), x, n, peak, stretch);
}
void PeerData::fill(Vek32s* x, int n, int peak, int stretch) const {
    fillWith(isSpeech(), x, n, peak, stretch);
}
void PeerData::fill(Vek32f* x, int n, float peak, int stretch) const {
    fillWith(isSpeech(), x, n, peak, stretch);
}

PeerBlockMark::PeerBlockMark(const char* topic, PeerBlock block, bool once) {
    blocks().emplace(topic, Block{block, once});
}

void peerMeasure(const std::string& functions, const std::string& peer, PeerSide ours, PeerSide theirs, bool once) {
    // In a row that is left out too: what later rows of the block read is what these leave.
    if (!g_options.list) {
        ours.batch(ours.call, 1);
        theirs.batch(theirs.call, 1);
    }
    const size_t comma = std::min(functions.find(", "), functions.size());
    const std::string names = functions.substr(0, comma);
    const std::string size = comma < functions.size() ? functions.substr(comma + 2) : "-";
    const std::string told = once || g_once ? "-" : g_data.name();
    std::string row;
    for (const std::string& field : {g_topic, names, size, told, peer}) {
        row += (row.empty() ? "" : "\t") + field;
    }
    if (!isWanted(row) || (once && g_data.isSpeech())) {
        return;
    }
    const Clocks clocks = g_options.list ? Clocks{} : measure(ours, theirs);
    if (g_options.tab) {
        std::printf("%s\t%.2f\t%.2f\n", row.c_str(), clocks.ours, clocks.peer);
    } else {
        const double ratio = g_options.ours && g_options.peer && !g_options.list ? clocks.ours / clocks.peer : 0;
        std::printf("%-55s %-6s %10.0f %10.0f %6.2f  %s\n", functions.c_str(), told.c_str(), clocks.ours, clocks.peer,
                    ratio, peer.c_str());
    }
    std::fflush(stdout);
}

int main(int argc, char** argv) {
    readCommandLine(argc, argv);
    vekInit();
    if (!g_options.tab) {
        std::printf("%-55s %-6s %10s %10s %6s  %s\n", "function", "data", "ours", "peer", "ratio", "peer's function");
    }
    for (const PeerData& data : {PeerData(PeerData::Kind::numbers), PeerData(PeerData::Kind::speech)}) {
        for (const auto& [topic, block] : blocks()) {
            if (!block.once || !data.isSpeech()) {
                g_topic = topic;
                g_data = data;
                g_once = block.once;
                block.rows(data);
            }
        }
    }
    return 0;
}
