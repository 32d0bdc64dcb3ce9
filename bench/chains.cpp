// Whole coders and decoders, put together as in the tests against independent codecs, frame after frame of the same
// signal: what a frame takes, and what of it the calls of the library take.
//     bench_chains [--frames N] [--repeats N] [--calls] [PART OF A NAME]...
//     bench_chains --once [--frames N] NAME      runs the frames once and measures nothing, for recorders of calls and
//                                                callgrind (chain_frame); each frame begins behind a call of vekInit
//     bench_chains --names
// Each frame is run in each of the repeats, always with the same past. Of its clocks, and of those of each call in it,
// the mean of the lowest quarter counts, less what reading the counter takes. --calls tells them by function; all is
// written as lines of words between tabs.
#include "callsites.h"

#include "vekcore.h"

#include "g729_chain.h"
#include "gsmfr_chain.h"
#include "speech_signal.h"

// Its chain counts the statuses by itself.
#define check(call) check(CALLED(call))
#include "g723_chain.h"
#undef check

#if __has_include(<opencore-amrnb/interf_enc.h>)
#include "gsmamr_coder.h"
#include "gsmamr_decoder.h"
#define HAS_AMR 1
#endif
#if __has_include(<vo-amrwbenc/enc_if.h>) && __has_include(<opencore-amrwb/dec_if.h>)
#include "amrwb_coder.h"
#include "amrwb_decoder.h"
#define HAS_AMRWB 1
#endif

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string_view>

namespace chains {

bool g_timeCalls = false;
int g_badStatuses = 0;

std::vector<CallSite*>& callSites() {
    static std::vector<CallSite*> sites;
    return sites;
}

CallSite::CallSite(const char* text) : function(text, std::string_view(text).find('(')) {
    callSites().push_back(this);
}

} // namespace chains

namespace {

using chains::CallSite;
using Samples = std::vector<int16_t>;

/// One side of a codec.
class Side {
public:
    virtual ~Side() = default;
    virtual void frame(size_t number) = 0;
};

struct Chain {
    std::string name;
    /// Makes what the first so many frames need, and returns what makes the side at its start.
    std::function<std::function<std::unique_ptr<Side>()>(size_t frames)> prepare;
};

/// A side whose frames are calls of `work` with the codec, the input and the number of the frame.
template <class Codec, class Input, class Work>
class SideOf : public Side {
public:
    SideOf(std::unique_ptr<Codec> codec, std::shared_ptr<const Input> input, Work work)
        : m_codec(std::move(codec)), m_input(std::move(input)), m_work(work) {}
    void frame(size_t number) override { m_work(*m_codec, *m_input, number); }

private:
    std::unique_ptr<Codec> m_codec;
    std::shared_ptr<const Input> m_input;
    Work m_work;
};

template <class InputOf, class Start, class Work>
Chain chainOf(const std::string& name, InputOf inputOf, Start start, Work work) {
    return {name, [=](size_t frames) -> std::function<std::unique_ptr<Side>()> {
                using Input = decltype(inputOf(frames));
                using Codec = typename decltype(start())::element_type;
                auto input = std::make_shared<const Input>(inputOf(frames));
                return [=] { return std::make_unique<SideOf<Codec, Input, Work>>(start(), input, work); };
            }};
}

auto signalOf(size_t frame) {
    return [frame](size_t frames) { return speechLike(frames * frame); };
}

/// What `code` makes of the frames of the signal, one after the other.
template <class Code>
auto codedBy(Code code, size_t frame, size_t frames) {
    const Samples x = speechLike(frames * frame);
    std::vector<decltype(code(x.data()))> coded;
    for (size_t f = 0; f < frames; ++f) {
        coded.push_back(code(x.data() + f * frame));
    }
    return coded;
}

void addGsmFr(std::vector<Chain>& all) {
    using namespace gsmfr;
    all.push_back(chainOf(
        "GSM FR coder", signalOf(kFrame), [] { return std::make_unique<Coder>(); },
        [](Coder& coder, const Samples& x, size_t f) { coder.code(x.data() + f * kFrame); }));
    all.push_back(chainOf(
        "GSM FR decoder",
        [](size_t frames) {
            Coder coder;
            return codedBy([&](const Word* x) { return coder.code(x); }, kFrame, frames);
        },
        [] { return std::make_unique<Decoder>(); },
        [](Decoder& decoder, const std::vector<Frame>& coded, size_t f) {
            Word out[kFrame];
            decoder.decode(coded[f], out);
        }));
}

void addG729(std::vector<Chain>& all) {
    using namespace g729chain;
    all.push_back(chainOf(
        "G.729 Annex A coder", signalOf(kFrame), [] { return std::make_unique<Coder>(); },
        [](Coder& coder, const Samples& x, size_t f) {
            coder.frame(x.data() + f * kFrame);
            coder.local.clear();
        }));
    all.push_back(chainOf(
        "G.729 Annex A decoder",
        [](size_t frames) {
            Coder coder;
            return codedBy([&](const int16_t* x) { return coder.frame(x); }, kFrame, frames);
        },
        [] { return std::make_unique<Decoder>(); },
        [](Decoder& decoder, const std::vector<Parameters>& coded, size_t f) {
            decoder.frame(coded[f]);
            decoder.local.clear();
        }));
}

void addG723(std::vector<Chain>& all) {
    using namespace g723chain;
    all.push_back(chainOf(
        "G.723.1 6.3 kbit/s coder", signalOf(kFrame), [] { return std::make_unique<Coder>(VEK_SPCHBR_6300); },
        [](Coder& coder, const Samples& x, size_t f) {
            coder.code(x.data() + f * kFrame);
            chains::g_badStatuses += coder.check.bad;
        }));
    all.push_back(chainOf(
        "G.723.1 6.3 kbit/s decoder",
        [](size_t frames) {
            Coder coder(VEK_SPCHBR_6300);
            return codedBy([&](const Word* x) { return coder.code(x); }, kFrame, frames);
        },
        [] { return std::make_unique<Decoder>(true); },
        [](Decoder& decoder, const std::vector<Frame>& coded, size_t f) {
            Word out[kFrame];
            decoder.decode(coded[f], out);
            chains::g_badStatuses += decoder.check.bad;
        }));
}

void addAmr([[maybe_unused]] std::vector<Chain>& all) {
#if HAS_AMR
    using namespace amr;
    const char* const names[kRates] = {"4.75", "5.15", "5.9", "6.7", "7.4", "7.95", "10.2", "12.2"};
    for (int mode = 0; mode < kRates; ++mode) {
        const std::string name = std::string("AMR ") + names[mode] + " kbit/s ";
        all.push_back(chainOf(
            name + "coder", signalOf(kFrame), [] { return std::make_unique<amrcoder::Coder>(); },
            [mode](amrcoder::Coder& coder, const Samples& x, size_t f) { coder.frame(mode, x.data() + f * kFrame); }));
        all.push_back(chainOf(
            name + "decoder",
            [mode](size_t frames) {
                amrcoder::Coder coder;
                return codedBy([&](const int16_t* x) { return coder.frame(mode, x); }, kFrame, frames);
            },
            [] { return std::make_unique<amrdecoder::Decoder>(); },
            [mode](amrdecoder::Decoder& decoder, const std::vector<Samples>& coded, size_t f) {
                decoder.frame(mode, coded[f]);
            }));
    }
#endif
}

void addAmrWb([[maybe_unused]] std::vector<Chain>& all) {
#if HAS_AMRWB
    using namespace amrwb;
    const char* const names[kRates] = {"6.6", "8.85", "12.65", "14.25", "15.85", "18.25", "19.85", "23.05", "23.85"};
    for (int mode = 0; mode < kRates; ++mode) {
        const std::string name = std::string("AMR-WB ") + names[mode] + " kbit/s ";
        all.push_back(chainOf(
            name + "coder", signalOf(kWide), [] { return std::make_unique<Coder>(); },
            [mode](Coder& coder, const Samples& x, size_t f) { coder.frame(mode, x.data() + f * kWide); }));
        // The gain of the upper band at the highest rate is only in the other coder's frames.
        all.push_back(chainOf(
            name + "decoder",
            [mode](size_t frames) {
                TheirCoder coder;
                return codedBy([&](const int16_t* x) { return unpack(mode, coder.frame(mode, x)); }, kWide, frames);
            },
            [] { return std::make_unique<amrwbdecoder::Decoder>(); },
            [mode](amrwbdecoder::Decoder& decoder, const std::vector<Samples>& coded, size_t f) {
                decoder.frame(mode, coded[f]);
            }));
    }
#endif
}

/// What callgrind is told to look at.
__attribute__((noinline)) void chain_frame(Side& side, size_t number) {
    side.frame(number);
}

double lowQuarter(std::vector<double> values) {
    const size_t count = std::max<size_t>(1, values.size() / 4);
    std::partial_sort(values.begin(), values.begin() + static_cast<long>(count), values.end());
    double sum = 0;
    for (size_t i = 0; i < count; ++i) {
        sum += values[i];
    }
    return sum / static_cast<double>(count);
}

/// What two readings of the counter around nothing are apart.
double clocksOfReading() {
    std::vector<double> readings;
    for (int i = 0; i < 10000; ++i) {
        const std::uint64_t before = __rdtsc();
        readings.push_back(static_cast<double>(__rdtsc() - before));
    }
    return lowQuarter(std::move(readings));
}

struct Count {
    double clocks = 0; ///< of a frame
    double calls = 0;
};

struct Measured {
    double frame = 0; ///< clocks, with no call timed by itself
    std::map<std::string, Count> functions;
};

Measured measure(const Chain& chain, size_t frames, size_t repeats) {
    const double reading = clocksOfReading();
    const auto count = static_cast<double>(frames);
    Measured measured;
    std::vector<std::vector<double>> whole(frames);
    std::vector<std::map<CallSite*, std::vector<double>>> single(frames);
    const auto start = chain.prepare(frames);
    for (size_t repeat = 0; repeat < 2 * repeats; ++repeat) {
        const std::unique_ptr<Side> side = start();
        // Every second time the calls alone.
        chains::g_timeCalls = repeat % 2 == 1;
        for (size_t f = 0; f < frames; ++f) {
            for (CallSite* site : chains::callSites()) {
                site->clocks = 0;
                site->calls = 0;
            }
            const std::uint64_t before = __rdtsc();
            chain_frame(*side, f);
            const auto clocks = static_cast<double>(__rdtsc() - before);
            if (!chains::g_timeCalls) {
                whole[f].push_back(clocks - reading);
                continue;
            }
            for (CallSite* site : chains::callSites()) {
                if (site->calls > 0) {
                    const auto calls = static_cast<double>(site->calls);
                    single[f][site].push_back(static_cast<double>(site->clocks) - calls * reading);
                    measured.functions[site->function].calls += calls / count / static_cast<double>(repeats);
                }
            }
        }
        chains::g_timeCalls = false;
    }
    for (size_t f = 0; f < frames; ++f) {
        measured.frame += lowQuarter(std::move(whole[f])) / count;
        for (auto& [site, readings] : single[f]) {
            measured.functions[site->function].clocks += lowQuarter(std::move(readings)) / count;
        }
    }
    return measured;
}

struct Arguments {
    std::vector<std::string> parts;
    size_t frames = 100;
    size_t repeats = 20;
    bool once = false;
    bool calls = false;
    bool names = false;
};

bool parse(int argc, char** argv, Arguments& arguments) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if ((word == "--frames" || word == "--repeats") && i + 1 < argc) {
            const int value = std::atoi(argv[++i]);
            if (value < 1) {
                return false;
            }
            (word == "--frames" ? arguments.frames : arguments.repeats) = static_cast<size_t>(value);
        } else if (word == "--once" || word == "--calls" || word == "--names") {
            (word == "--once" ? arguments.once : word == "--calls" ? arguments.calls : arguments.names) = true;
        } else if (word.starts_with("-")) {
            return false;
        } else {
            arguments.parts.push_back(word);
        }
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    Arguments arguments;
    if (!parse(argc, argv, arguments)) {
        std::fprintf(
            stderr,
            "usage: bench_chains [--frames N] [--repeats N] [--calls | --once | --names] [PART OF A NAME]...\n");
        return 2;
    }
    std::vector<Chain> chains;
    addGsmFr(chains);
    addG729(chains);
    addG723(chains);
    addAmr(chains);
    addAmrWb(chains);
    for (const Chain& chain : chains) {
        if (!arguments.parts.empty() &&
            std::none_of(arguments.parts.begin(), arguments.parts.end(),
                         [&](const std::string& part) { return chain.name.find(part) == 0; })) {
            continue;
        }
        if (arguments.names) {
            std::printf("%s\n", chain.name.c_str());
            continue;
        }
        if (arguments.once) {
            const std::unique_ptr<Side> side = chain.prepare(arguments.frames)();
            for (size_t f = 0; f < arguments.frames; ++f) {
                vekInit();
                chain_frame(*side, f);
            }
            continue;
        }
        const Measured measured = measure(chain, arguments.frames, arguments.repeats);
        double sum = 0;
        for (const auto& [function, count] : measured.functions) {
            sum += count.clocks;
            if (arguments.calls) {
                std::printf("%s\t%s\t%.3f\t%.1f\n", chain.name.c_str(), function.c_str(), count.calls,
                            count.clocks / count.calls);
            }
        }
        std::printf("%s\tframe\t%.0f\t%.0f\n", chain.name.c_str(), measured.frame, sum);
        std::fflush(stdout);
    }
    if (chains::g_badStatuses > 0) {
        std::fprintf(stderr, "bench_chains: %d calls did not go well\n", chains::g_badStatuses);
        return 1;
    }
    return 0;
}
