#include "everyinput.h"

#include <gtest/gtest.h>
#include <sanitizer/asan_interface.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "kernellevels.h"

namespace everyinput {

namespace {

constexpr size_t kLine = 64;
constexpr unsigned char kGuard = 0xA5;
constexpr unsigned char kUnwritten = 0x5A;
constexpr int kCalls = 2;
// Above this size two kinds of input do.
constexpr int kLong = 5000;

alignas(kLine) std::array<unsigned char, 48 << 20> g_arena;

size_t sizeOf(Element element) {
    switch (element) {
    case Element::S8:
    case Element::U8:
        return 1;
    case Element::S16:
        return 2;
    case Element::F64:
        return 8;
    default:
        return 4;
    }
}

void store(Element element, unsigned char* at, double value) {
    const auto put = [&](auto number) { std::memcpy(at, &number, sizeof number); };
    switch (element) {
    case Element::S8:
        put(static_cast<int8_t>(value));
        break;
    case Element::U8:
        put(static_cast<uint8_t>(value));
        break;
    case Element::S16:
        put(static_cast<int16_t>(value));
        break;
    case Element::S32:
        put(static_cast<int32_t>(value));
        break;
    case Element::U32:
        put(static_cast<uint32_t>(value));
        break;
    case Element::F32:
        put(static_cast<float>(value));
        break;
    case Element::F64:
        put(value);
        break;
    }
}

double real(Element element, const unsigned char* at) {
    float single = 0;
    double full = 0;
    if (element == Element::F32) {
        std::memcpy(&single, at, sizeof single);
        return single;
    }
    std::memcpy(&full, at, sizeof full);
    return full;
}

bool isReal(Element element) {
    return element == Element::F32 || element == Element::F64;
}

/// What a run leaves: statuses and contents of its buffers after each call.
struct Outcome {
    std::vector<VekStatus> statuses;
    std::vector<std::vector<unsigned char>> contents;
    std::vector<Element> elements;
    std::string damage;
    bool paired = false;
};

Outcome perform(const Entry& entry, int size, const Manner& manner) {
    Outcome outcome;
    Run run(manner);
    for (int call = 0; call < kCalls && outcome.damage.empty(); ++call) {
        run.startCall(call);
        const VekStatus status = entry.call(run, size);
        run.endCall();
        outcome.statuses.push_back(run.setUp() != 0 ? run.setUp() : status);
        outcome.damage = run.damage();
        for (const Run::Buffer& buffer : run.buffers()) {
            const bool shown = buffer.role == Run::Role::Changed || buffer.role == Run::Role::Written;
            if (shown) {
                outcome.contents.emplace_back(buffer.begin, buffer.begin + buffer.bytes);
                outcome.elements.push_back(buffer.element);
            }
            if (status < 0 && shown && outcome.contents.back() != buffer.before && outcome.damage.empty()) {
                outcome.damage = "an error, and yet something was written";
            }
        }
    }
    outcome.paired = run.paired();
    return outcome;
}

std::string nameOf(Kind kind) {
    const char* const names[] = {"highest", "lowest", "alternating", "zero", "tiny", "random", "quiet"};
    return names[static_cast<int>(kind)];
}

/// Where two contents differ by more than they may; empty if nowhere.
std::string difference(Element element, const std::vector<unsigned char>& want, const std::vector<unsigned char>& got,
                       const Entry& entry) {
    if (want == got) {
        return "";
    }
    const size_t step = sizeOf(element);
    double largest = entry.scale;
    for (size_t i = 0; isReal(element) && i < want.size(); i += step) {
        largest = std::max(largest, std::fabs(real(element, &want[i])));
    }
    for (size_t i = 0; i < want.size(); i += step) {
        if (std::memcmp(&want[i], &got[i], step) == 0) {
            continue;
        }
        const bool close =
            isReal(element) && std::fabs(real(element, &want[i]) - real(element, &got[i])) <= entry.near * largest;
        if (!close) {
            return "element " + std::to_string(i / step) + " differs" +
                   (isReal(element) ? ": " + std::to_string(real(element, &want[i])) + " and " +
                                          std::to_string(real(element, &got[i])) + " of " + std::to_string(largest)
                                    : "");
        }
    }
    return "";
}

/// Empty where the second outcome is as the first.
std::string difference(const Outcome& want, const Outcome& got, const Entry& entry) {
    if (!got.damage.empty()) {
        return got.damage;
    }
    if (want.statuses != got.statuses) {
        return "other statuses";
    }
    for (size_t i = 0; i < want.contents.size(); ++i) {
        const std::string text = difference(want.elements[i], want.contents[i], got.contents[i], entry);
        if (!text.empty()) {
            return "result " + std::to_string(i) + ", " + text;
        }
    }
    return "";
}

/// Empty where statuses are those that the function may give, and all floats finite.
std::string fault(const Entry& entry, const Outcome& outcome) {
    for (const VekStatus status : outcome.statuses) {
        if (status != vekStsNoErr && std::count(entry.also.begin(), entry.also.end(), status) == 0) {
            return "status " + std::to_string(status);
        }
    }
    for (size_t k = 0; k < outcome.contents.size(); ++k) {
        const Element element = outcome.elements[k];
        for (size_t i = 0; isReal(element) && i < outcome.contents[k].size(); i += sizeOf(element)) {
            if (!std::isfinite(real(element, &outcome.contents[k][i]))) {
                return "result " + std::to_string(k) + " is not finite";
            }
        }
    }
    return outcome.damage;
}

std::vector<std::string>& allNames() {
    static std::vector<std::string> names;
    return names;
}

} // namespace

Range Run::widest(Element element) {
    const auto limits = [](auto number) {
        return Range{static_cast<double>(std::numeric_limits<decltype(number)>::min()),
                     static_cast<double>(std::numeric_limits<decltype(number)>::max())};
    };
    switch (element) {
    case Element::S8:
        return limits(int8_t{});
    case Element::U8:
        return limits(uint8_t{});
    case Element::S32:
        return limits(int32_t{});
    case Element::U32:
        return limits(uint32_t{});
    default:
        return limits(int16_t{}); // floats too: the scale of samples
    }
}

unsigned Run::draw() {
    m_seed = m_seed * 1664525U + 1013904223U;
    return m_seed >> 8;
}

int Run::number(int least, int most) {
    const int pick = static_cast<int>(m_manner.kind) + m_call;
    return least + static_cast<int>(static_cast<int64_t>(most - least) * (pick % 8) / 7);
}

double Run::value(int index, Range range) {
    const double random = range.least + (range.most - range.least) * (draw() / 16777215.0);
    double value = 0;
    switch (m_manner.kind) {
    case Kind::Highest:
        value = range.most;
        break;
    case Kind::Lowest:
        value = range.least;
        break;
    case Kind::Alternating:
        value = index % 2 == 0 ? range.most : range.least;
        break;
    case Kind::Zero:
        value = 0;
        break;
    case Kind::Tiny:
        value = 1 - static_cast<int>(draw() % 3);
        break;
    case Kind::Random:
        value = random;
        break;
    case Kind::Quiet:
        value = random / 64;
        break;
    }
    return std::clamp(value, range.least, range.most);
}

Run::Buffer& Run::take(Role role, Element element, size_t bytes, size_t shift, bool& fresh) {
    fresh = m_next == m_buffers.size();
    if (fresh) {
        const size_t begin = m_used + kLine + shift;
        m_used = (begin + bytes + 2 * kLine - 1) / kLine * kLine;
        if (m_used + kLine > g_arena.size()) {
            throw std::length_error("the arena is too small");
        }
        m_buffers.push_back({role, element, &g_arena[begin], bytes, {}});
        std::fill_n(&g_arena[begin] - kLine, kLine, kGuard);
        std::fill_n(&g_arena[begin] + bytes, kLine, kGuard);
        guard(m_buffers.back(), true);
    }
    return m_buffers[m_next++];
}

void Run::note(Buffer& buffer) {
    buffer.before.assign(buffer.begin, buffer.begin + buffer.bytes);
}

void Run::guard(const Buffer& buffer, bool on) {
    if (on) {
        ASAN_POISON_MEMORY_REGION(buffer.begin - kLine, kLine);
        ASAN_POISON_MEMORY_REGION(buffer.begin + buffer.bytes, kLine);
    } else {
        ASAN_UNPOISON_MEMORY_REGION(buffer.begin - kLine, buffer.bytes + 2 * kLine);
    }
}

void Run::startCall(int call) {
    m_call = call;
    m_next = 0;
    m_pair = kNone;
    for (const Buffer& buffer : m_buffers) {
        guard(buffer, true);
    }
}

void Run::endCall() const {
    for (const Buffer& buffer : m_buffers) {
        guard(buffer, false);
    }
}

std::string Run::damage() const {
    for (size_t i = 0; i < m_buffers.size(); ++i) {
        const Buffer& buffer = m_buffers[i];
        const std::string which = "buffer " + std::to_string(i);
        const auto whole = [](const unsigned char* from) {
            return std::all_of(from, from + kLine, [](unsigned char c) { return c == kGuard; });
        };
        if (!whole(buffer.begin - kLine) || !whole(buffer.begin + buffer.bytes)) {
            return which + " was written outside";
        }
        if (buffer.role == Role::Read && !std::equal(buffer.before.begin(), buffer.before.end(), buffer.begin)) {
            return which + " is an input, and was written";
        }
    }
    return "";
}

void Run::fill(Buffer& buffer, int count, Range range) {
    const size_t step = sizeOf(buffer.element);
    for (int i = 0; i < count; ++i) {
        double number = value(i, range);
        if (isReal(buffer.element) && m_manner.kind == Kind::Tiny && range.least <= 0) {
            number *= 1e-40; // denormal in single precision
        }
        store(buffer.element, buffer.begin + static_cast<size_t>(i) * step, number);
    }
    note(buffer);
}

void* Run::input(Role role, Element element, int count, int past, Range range) {
    const size_t step = sizeOf(element);
    const size_t all = static_cast<size_t>(count) + static_cast<size_t>(past);
    bool fresh = false;
    Buffer& buffer = take(role, element, all * step, static_cast<size_t>(m_manner.shift) * step, fresh);
    if (fresh || role == Role::Read) {
        fill(buffer, static_cast<int>(all), range);
    }
    note(buffer);
    return buffer.begin + static_cast<size_t>(past) * step;
}

void* Run::ordered(Role role, Element element, int count, Range range, bool falls) {
    const size_t step = sizeOf(element);
    bool fresh = false;
    Buffer& buffer =
        take(role, element, static_cast<size_t>(count) * step, static_cast<size_t>(m_manner.shift) * step, fresh);
    if (!fresh && role != Role::Read) {
        note(buffer);
        return buffer.begin;
    }
    std::vector<double> numbers(static_cast<size_t>(count));
    // Crowded at an end, spread evenly, or drawn.
    const double narrow =
        std::min(range.most - range.least, isReal(element) ? 1e-3 * (range.most - range.least) : count);
    for (int i = 0; i < count; ++i) {
        const double place = (i + 1.0) / (count + 1);
        double number = range.least + (range.most - range.least) * place;
        if (m_manner.kind == Kind::Highest) {
            number = range.most - narrow * (1 - place);
        } else if (m_manner.kind == Kind::Lowest) {
            number = range.least + narrow * place;
        } else if (m_manner.kind == Kind::Random || m_manner.kind == Kind::Quiet) {
            number = range.least + (range.most - range.least) * (draw() / 16777215.0);
        }
        numbers[static_cast<size_t>(i)] = number;
    }
    std::sort(numbers.begin(), numbers.end());
    if (falls) {
        std::reverse(numbers.begin(), numbers.end());
    }
    for (size_t i = 0; i < numbers.size(); ++i) {
        store(element, buffer.begin + i * step, numbers[i]);
    }
    note(buffer);
    return buffer.begin;
}

void* Run::result(Element element, int count) {
    bool fresh = false;
    const size_t step = sizeOf(element);
    Buffer& buffer = take(Role::Written, element, static_cast<size_t>(count) * step,
                          static_cast<size_t>(m_manner.shift) * step, fresh);
    if (fresh) {
        std::fill_n(buffer.begin, buffer.bytes, isReal(element) ? 0 : kUnwritten);
    }
    note(buffer);
    return buffer.begin;
}

void* Run::pair(bool source, Element element, int count, Range range) {
    const size_t step = sizeOf(element);
    const size_t bytes = static_cast<size_t>(count) * step;
    const size_t shift = static_cast<size_t>(m_manner.shift) * step;
    m_paired = true;
    // The order in which arguments are made is the compiler's: whichever of both comes first makes both.
    if (m_pair == kNone) {
        bool fresh = false;
        m_pair = m_next;
        Buffer& from = take(Role::Read, element, bytes, shift, fresh);
        if (fresh) {
            std::fill_n(from.begin, bytes, kUnwritten);
        }
        note(from);
        result(element, count);
    }
    Buffer& from = m_buffers[m_pair];
    Buffer& to = m_buffers[m_pair + 1];
    Buffer& taken = m_manner.inPlace ? to : from;
    if (source) {
        fill(taken, count, range);
    }
    return source ? taken.begin : to.begin;
}

void* Run::literal(Role role, Element element, const void* data, size_t bytes) {
    bool fresh = false;
    Buffer& buffer = take(role, element, bytes, static_cast<size_t>(m_manner.shift) * sizeOf(element), fresh);
    if (fresh) {
        std::memcpy(buffer.begin, data, bytes);
    }
    note(buffer);
    return buffer.begin;
}

void* Run::memory(int bytes) {
    bool fresh = false;
    Buffer& buffer =
        take(Role::State, Element::U8, static_cast<size_t>(bytes), static_cast<size_t>(m_manner.shift), fresh);
    if (fresh) {
        std::fill_n(buffer.begin, buffer.bytes, kUnwritten);
    }
    return buffer.begin;
}

void** Run::newList(int rows) {
    m_lists.emplace_back(static_cast<size_t>(rows));
    return m_lists.back().data();
}

Entry Entry::within(double part, double madeOf) const {
    Entry entry = *this;
    entry.near = part;
    entry.scale = madeOf;
    return entry;
}

Entry Entry::mayGive(std::vector<VekStatus> statuses) const {
    Entry entry = *this;
    entry.also = std::move(statuses);
    return entry;
}

Entry Entry::eachLevelForItself() const {
    Entry entry = *this;
    entry.levelsApart = true;
    return entry;
}

std::string firstFault(const Entry& entry, int size, Kind kind) {
    Outcome want;
    std::string told;
    const auto tell = [&](const Manner& manner, const std::string& what) {
        told = what.empty() ? ""
                            : std::string(entry.name) + ", size " + std::to_string(size) + ", " + nameOf(kind) +
                                  ", kernel level " + std::to_string(vekGetKernelLevel()) + ", shift " +
                                  std::to_string(manner.shift) + (manner.inPlace ? ", in place: " : ": ") + what;
    };
    bool first = true;
    atEveryLevel([&] {
        const Manner plain{kind, 0, false};
        if (told.empty() && (first || entry.levelsApart)) {
            want = perform(entry, size, plain);
            tell(plain, fault(entry, want));
        } else if (told.empty()) {
            tell(plain, difference(want, perform(entry, size, plain), entry));
        }
        first = false;
        for (const Manner& other : {Manner{kind, 3, false}, Manner{kind, 0, true}, Manner{kind, 3, true}}) {
            if (told.empty() && (want.paired || !other.inPlace)) {
                tell(other, difference(want, perform(entry, size, other), entry));
            }
        }
    });
    return told;
}

Family::Family(std::initializer_list<Entry> entries) : m_entries(entries) {
    for (const Entry& entry : m_entries) {
        allNames().emplace_back(entry.name);
    }
}

std::vector<std::string> Family::names() {
    return allNames();
}

void Family::check() const {
    for (const Entry& entry : m_entries) {
        for (const int size : entry.sizes) {
            for (const Kind kind :
                 {Kind::Highest, Kind::Random, Kind::Lowest, Kind::Alternating, Kind::Zero, Kind::Tiny, Kind::Quiet}) {
                if (size <= kLong || kind == Kind::Highest || kind == Kind::Random) {
                    EXPECT_EQ("", firstFault(entry, size, kind));
                }
            }
        }
    }
}

} // namespace everyinput
