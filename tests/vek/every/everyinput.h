// One driver for all functions of the library: each is called with full-scale, alternating, zero, tiny and random
// inputs, over its sizes, at aligned and other addresses, in place where it may be, at each level of the kernels. A
// function has an entry in the list of its family, everyinput_<family>_test.cpp: its call, with buffers of the run.
#pragma once

#include <cstddef>
#include <cstring>
#include <deque>
#include <initializer_list>
#include <string>
#include <vector>

#include "vekdefs.h"

namespace everyinput {

/// What the inputs of a run hold, within the range of each buffer.
enum class Kind { Highest, Lowest, Alternating, Zero, Tiny, Random, Quiet };

/// Least and largest value of an input.
struct Range {
    double least;
    double most;
};

enum class Element { S8, U8, S16, S32, U32, F32, F64 };

/// How the calls of a run are made.
struct Manner {
    Kind kind = Kind::Zero;
    int shift = 0; ///< elements between an aligned address and each buffer; bytes for a state
    bool inPlace = false;
};

/// The buffers of a call. They are made anew for each run; in its second call each input holds other numbers, and
/// results and states are those that the first call left.
class Run {
public:
    explicit Run(const Manner& manner) : m_manner(manner) {}

    /// What a function may read alone: `count` elements, and `past` elements before them.
    template <class T>
    const T* in(int count, int past = 0) {
        return in<T>(count, widest(element<T>()), past);
    }
    template <class T>
    const T* in(int count, Range range, int past = 0) {
        return static_cast<const T*>(input(Role::Read, element<T>(), count * parts<T>(), past * parts<T>(), range));
    }
    /// What it reads and changes.
    template <class T>
    T* both(int count, int past = 0) {
        return both<T>(count, widest(element<T>()), past);
    }
    template <class T>
    T* both(int count, Range range, int past = 0) {
        return static_cast<T*>(input(Role::Changed, element<T>(), count * parts<T>(), past * parts<T>(), range));
    }
    /// What it writes.
    template <class T>
    T* out(int count) {
        return static_cast<T*>(result(element<T>(), count * parts<T>()));
    }
    /// Source and destination that may be one vector: `from` and `to` of one call are it in a run in place.
    template <class T>
    const T* from(int count) {
        return from<T>(count, widest(element<T>()));
    }
    template <class T>
    const T* from(int count, Range range) {
        return static_cast<const T*>(pair(true, element<T>(), count * parts<T>(), range));
    }
    template <class T>
    T* to(int count) {
        return static_cast<T*>(pair(false, element<T>(), count * parts<T>(), widest(element<T>())));
    }
    /// Numbers in order: cosines fall, frequencies rise.
    template <class T>
    const T* rising(int count, Range range) {
        return static_cast<const T*>(ordered(Role::Read, element<T>(), count, range, false));
    }
    template <class T>
    const T* falling(int count, Range range) {
        return static_cast<const T*>(ordered(Role::Read, element<T>(), count, range, true));
    }
    template <class T>
    T* bothRising(int count, Range range) {
        return static_cast<T*>(ordered(Role::Changed, element<T>(), count, range, false));
    }
    /// Rows of `count` elements each.
    template <class T>
    const T* const* inRows(int rows, int count) {
        void** const list = newList(rows);
        for (int i = 0; i < rows; ++i) {
            list[i] = const_cast<T*>(in<T>(count));
        }
        return reinterpret_cast<const T* const*>(list);
    }
    template <class T>
    T** bothRows(int rows, int count) {
        void** const list = newList(rows);
        for (int i = 0; i < rows; ++i) {
            list[i] = both<T>(count);
        }
        return reinterpret_cast<T**>(list);
    }
    /// These numbers, whatever the kind of the run.
    template <class T>
    const T* given(const std::vector<T>& numbers) {
        return static_cast<const T*>(literal(Role::Read, element<T>(), numbers.data(), numbers.size() * sizeof(T)));
    }
    /// A memory that starts with these numbers and is the call's own from then on.
    template <class T>
    T* kept(const std::vector<T>& numbers) {
        return static_cast<T*>(literal(Role::Changed, element<T>(), numbers.data(), numbers.size() * sizeof(T)));
    }
    /// Memory without a start, of a size in bytes.
    template <class State = void>
    State* room(int bytes) {
        return static_cast<State*>(memory(bytes));
    }
    /// A state of the size that `size(..., int*)` tells, set up by `init(State*)` before the first call.
    template <class State, class Size, class Init>
    State* state(Size size, Init init) {
        int bytes = 0;
        says(size(&bytes));
        State* const made = room<State>(bytes);
        if (m_call == 0) {
            says(init(made));
        }
        return made;
    }

    /// Which of the two calls is being made.
    int call() const { return m_call; }
    Kind kind() const { return m_manner.kind; }
    /// A whole number that follows the kind of the run: a parameter.
    int number(int least, int most);

    /// @name For the driver.
    /// @{
    enum class Role { Read, Changed, Written, State };
    struct Buffer {
        Role role;
        Element element;
        unsigned char* begin; ///< the past included
        size_t bytes;
        std::vector<unsigned char> before; ///< what the call found
    };
    void startCall(int call);
    /// Guards around buffers that were written, and inputs that were changed.
    std::string damage() const;
    const std::vector<Buffer>& buffers() const { return m_buffers; }
    bool paired() const { return m_paired; }
    VekStatus setUp() const { return m_setUp; }
    void endCall() const;
    /// @}

private:
    template <class T>
    static constexpr Element element();
    template <class T>
    static constexpr int parts();
    static Range widest(Element element);

    void* input(Role role, Element element, int count, int past, Range range);
    void* ordered(Role role, Element element, int count, Range range, bool falls);
    void* result(Element element, int count);
    void* pair(bool source, Element element, int count, Range range);
    void* literal(Role role, Element element, const void* data, size_t bytes);
    void* memory(int bytes);
    void** newList(int rows);
    void says(VekStatus status) { m_setUp = m_setUp == 0 ? status : m_setUp; }

    Buffer& take(Role role, Element element, size_t bytes, size_t shift, bool& fresh);
    void fill(Buffer& buffer, int count, Range range);
    static void note(Buffer& buffer);
    static void guard(const Buffer& buffer, bool on);
    double value(int index, Range range);
    unsigned draw();

    Manner m_manner;
    int m_call = 0;
    size_t m_next = 0; ///< buffer that the call asks for next
    size_t m_used = 0; ///< bytes of the arena
    unsigned m_seed = 1;
    bool m_paired = false;
    static constexpr size_t kNone = static_cast<size_t>(-1);
    size_t m_pair = kNone; ///< place of the pair's source in the call
    VekStatus m_setUp = 0;
    std::vector<Buffer> m_buffers;
    std::deque<std::vector<void*>> m_lists;
};

template <class T>
constexpr int Run::parts() {
    return sizeof(T) / (element<T>() == Element::S16                                 ? 2
                        : element<T>() == Element::F64                               ? 8
                        : element<T>() == Element::S8 || element<T>() == Element::U8 ? 1
                                                                                     : 4);
}

// clang-format off
template <> constexpr Element Run::element<char>() { return Element::S8; }
template <> constexpr Element Run::element<Vek8u>() { return Element::U8; }
template <> constexpr Element Run::element<Vek16s>() { return Element::S16; }
template <> constexpr Element Run::element<Vek16sc>() { return Element::S16; }
template <> constexpr Element Run::element<Vek32s>() { return Element::S32; }
template <> constexpr Element Run::element<Vek32sc>() { return Element::S32; }
template <> constexpr Element Run::element<Vek32u>() { return Element::U32; }
template <> constexpr Element Run::element<Vek32f>() { return Element::F32; }
template <> constexpr Element Run::element<Vek32fc>() { return Element::F32; }
template <> constexpr Element Run::element<Vek64f>() { return Element::F64; }
// clang-format on

/// Autocorrelation of a process with one pole, of the kind of the run; `sharp` is the nearest one to the circle.
template <class T>
const T* lags(Run& r, int order, double first, double sharp) {
    const double poles[] = {sharp, -sharp, 0.5, 0, 1e-4, 0.9, -0.7};
    std::vector<T> values;
    for (double lag = first; static_cast<int>(values.size()) <= order; lag *= poles[static_cast<int>(r.kind())]) {
        values.push_back(static_cast<T>(lag));
    }
    return r.given(values);
}

/// A number for an argument that is a sample.
inline Vek16s sample(Run& r, int least = -32768, int most = 32767) {
    return static_cast<Vek16s>(r.number(least, most));
}

/// What the predictive quantisers of G.729 start from: four code vectors, k * pi / 11 in Q13.
inline Vek16s* lsfHistory(Run& r) {
    std::vector<Vek16s> start;
    for (int i = 0; i < 40; ++i) {
        start.push_back(static_cast<Vek16s>((i % 10 + 1) * 25736 / 11));
    }
    return r.kept(start);
}

/// A function, its sizes and its call.
struct Entry {
    const char* name;
    std::vector<int> sizes;
    VekStatus (*call)(Run& run, int n);
    double near = 0;                  ///< floats agree within this part of the largest; integers always to the bit
    double scale = 0;                 ///< or of this, if it is larger
    std::vector<VekStatus> also = {}; ///< statuses beside 0 that some inputs give
    bool levelsApart = false;         ///< near ties of a search fall otherwise at another level

    /// Where results cancel, `madeOf` is the size of what they are made of.
    Entry within(double part, double madeOf = 0) const;
    Entry mayGive(std::vector<VekStatus> statuses) const;
    Entry eachLevelForItself() const;
};

/// What the function does wrong with inputs of one kind: the first fault, told with the run in which it showed; empty
/// for none. The call is made twice in each of the runs: at each level of the kernels, at two addresses, in place.
std::string firstFault(const Entry& entry, int size, Kind kind);

/// The list of a family; all lists together are looked through for missing functions.
class Family {
public:
    Family(std::initializer_list<Entry> entries);
    /// Runs all entries and reports what fails.
    void check() const;
    static std::vector<std::string> names();

private:
    std::vector<Entry> m_entries;
};

} // namespace everyinput

/// An entry: the function, its sizes in brackets, and its arguments, made of the run `r` and the size `n`.
#define EVERY_INPUT(function, sizes, ...)                                                                              \
    everyinput::Entry {                                                                                                \
#function, std::vector < int> sizes,                                                                           \
            []([[maybe_unused]] everyinput::Run & r,                                                                   \
               [[maybe_unused]] int n) -> VekStatus { return function(__VA_ARGS__); }                                  \
    }
