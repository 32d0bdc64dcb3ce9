// Measuring a function of your own: include this, name the parameters and the data, name the function, and link the
// harness. The rig's keys, grids, tables and fault containment then hold for it as for any other test.
//
//   #include <kelvarrig.h>
//
//   int myGain(const short* src, short* dst, int len);
//
//   static kr::Param len("len", kr::steps(40, 240, 40));
//   static kr::Vector<short> src(len, kr::random(-1024, 1024));
//   static kr::Vector<short> dst(len);
//   static auto gain = kr::measure<myGain>("myGain", src, dst, len).elements(len);
//
// What is measured is a call of the function with these arguments, at the cost of a direct call: the compiler sees
// neither what is called nor what it is called with nor what comes of it, so that nothing is folded away or moved out
// of the loop, also where the function stands in the same file. All objects here live at namespace scope or as statics.
#pragma once

#include "krbase.h"
#include "kriterator.h"
#include "krtool.h"

#include <concepts>
#include <cstddef>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <type_traits>
#include <vector>

class krOwnTest;

namespace kr {

/// A walk from a first to a last value, the limit included.
struct Steps {
    int first = 0;
    int last = 0;
    int step = 1;
    char oper = '+';
};

/// 40..240 in steps of 40 is steps(40, 240, 40); steps(240, 40, 40) goes down.
constexpr Steps steps(int first, int last, int step = 1) {
    return {first, last, step, last < first ? '-' : '+'};
}
/// 16, 32, 64 ... is powers(16, 1024); `factor` is at least 2 and the walk goes up.
constexpr Steps powers(int first, int last, int factor = 2) {
    return {first, last, factor, '*'};
}

/// A named parameter of the grid. Users may give other values by its name: -dlen=160, or in an ini-file.
class Param : public krStepIterator<int> {
public:
    /// A walk that never reaches its last value is reported when the test starts.
    Param(const char* name, const Steps& walk);
    /// A list, in this order.
    Param(const char* name, std::initializer_list<int> values);

    /// The value of the present line.
    operator int() const { return m_value; } // NOLINT(google-explicit-constructor): a parameter stands for its value
    /// Puts the values of the declaration in force.
    void define();

private:
    Steps m_walk;
    std::vector<int> m_list;
};

class Size;

namespace detail {
/// A callable without arguments that returns int, and is not a count already.
template <class F>
concept Counting = std::is_invocable_r_v<int, const F&> && !std::is_convertible_v<F, int> &&
                   !std::same_as<std::remove_cvref_t<F>, Size>;
} // namespace detail

/// A count that may hang on parameters: 160, `len`, `len + 10`, `2 * len * lags`, or a callable without arguments that
/// returns int. It is computed anew for each line.
class Size {
public:
    Size(int fixed);   // NOLINT(google-explicit-constructor): a number is a size
    Size(Param& parm); // NOLINT(google-explicit-constructor): so is a parameter
    template <detail::Counting F>
    Size(F compute) : m_value(std::move(compute)) {} // NOLINT(google-explicit-constructor)

    int value() const { return m_value(); }
    /// The parameters that it is known to hang on, in order of appearance.
    const std::vector<Param*>& params() const { return m_params; }

    /// '+', '-', '*' or '/'. What leaves the range of int stays at its limit.
    static Size combine(const Size& left, char oper, const Size& right);

private:
    std::function<int()> m_value;
    std::vector<Param*> m_params;
};

namespace detail {
template <class T>
concept LazyCount = std::same_as<T, Param> || std::same_as<T, Size>;
template <class A, class B>
concept LazyPair = (LazyCount<A> && (LazyCount<B> || std::same_as<B, const int>)) ||
                   (std::same_as<A, const int> && LazyCount<B>);
template <class T>
using Operand = std::conditional_t<std::is_same_v<std::remove_cvref_t<T>, int>, const int, std::remove_cvref_t<T>>;
} // namespace detail

template <class A, class B>
requires detail::LazyPair<detail::Operand<A>, detail::Operand<B>> Size operator+(A&& left, B&& right) {
    return Size::combine(left, '+', right);
}
template <class A, class B>
requires detail::LazyPair<detail::Operand<A>, detail::Operand<B>> Size operator-(A&& left, B&& right) {
    return Size::combine(left, '-', right);
}
template <class A, class B>
requires detail::LazyPair<detail::Operand<A>, detail::Operand<B>> Size operator*(A&& left, B&& right) {
    return Size::combine(left, '*', right);
}
template <class A, class B>
requires detail::LazyPair<detail::Operand<A>, detail::Operand<B>> Size operator/(A&& left, B&& right) {
    return Size::combine(left, '/', right);
}

/// Contents of a vector: evenly spread values of low..high, both included for integer types; the same in every run.
struct Random {
    double low = 0;
    double high = 0;
};
constexpr Random random(double low, double high) {
    return {low, high};
}

/// Contents of a vector: one value throughout.
struct Constant {
    double value = 0;
};
constexpr Constant constant(double value) {
    return {value};
}

namespace detail {
/// 0 up to, not including, 1, for element `index` of vector `stream` of a line.
double spread(int stream, int index);

template <class T>
T spreadOver(const Random& range, int stream, int index) {
    const double share = spread(stream, index);
    if constexpr (std::is_integral_v<T>) {
        // Down, not towards zero: every value of the range is equally likely.
        const double place = share * (range.high - range.low + 1);
        return static_cast<T>(static_cast<long long>(range.low) + static_cast<long long>(place));
    } else {
        return static_cast<T>(range.low + share * (range.high - range.low));
    }
}
} // namespace detail

/// A vector's memory, made anew for each line with the user's alignment settings and released after it.
class Data : public krObject {
public:
    int objectSize() const override { return m_bytes; }
    krString objectInfo() const override;
    bool reserveCopy() override;
    bool setReservedCopy() override;
    void deleteReservedCopy() override { m_copy.clear(); }

    /// Elements of the present line.
    int count() const { return m_bytes / m_elementBytes; }
    const Size& size() const { return m_size; }
    /// Memory of the line's size, filled; false, and reported, if there is none or the size is below 1: the test ends
    /// as a data error.
    bool create();
    void release();
    void* memory() const { return m_memory; }
    const void* copy() const { return m_copy.data(); }

protected:
    Data(Size size, int elementBytes) : m_size(std::move(size)), m_elementBytes(elementBytes) {}
    ~Data() { Data::release(); }
    virtual void fill(int stream) = 0;

    void* m_memory = nullptr;

private:
    Size m_size;
    int m_elementBytes;
    int m_bytes = 0;
    std::vector<unsigned char> m_copy;
};

/// A vector of `size` elements for the function to work on. The address is the same throughout a line.
template <class T>
class Vector : public Data {
    static_assert(std::is_trivially_copyable_v<T>, "kr::Vector holds plain data");

public:
    using Element = T;
    static constexpr bool isRestored = false;

    /// Zeros.
    explicit Vector(Size size) : Vector(std::move(size), constantZero) {}
    Vector(Size size, const Random& range) requires std::is_arithmetic_v<T>
        : Vector(
              std::move(size), [range](int stream, int index) { return detail::spreadOver<T>(range, stream, index); },
              0) {}
    Vector(Size size, const Constant& constant) requires std::is_arithmetic_v<T>
        : Vector(std::move(size), [constant](int) { return static_cast<T>(constant.value); }) {}
    /// The element at `index` is contents(index).
    template <class F>
    requires std::is_invocable_r_v<T, const F&, int> Vector(Size size, F contents)
        : Vector(
              std::move(size), [contents](int, int index) { return static_cast<T>(contents(index)); }, 0) {}

    /// The data of the present line; null between lines.
    T* data() const { return static_cast<T*>(m_memory); }
    T& operator[](int index) const { return data()[index]; }

private:
    using Contents = std::function<T(int stream, int index)>;
    static T constantZero(int /*index*/) { return T{}; }
    Vector(Size size, Contents contents, int /*tag*/)
        : Data(std::move(size), static_cast<int>(sizeof(T))), m_contents(std::move(contents)) {}
    void fill(int stream) override {
        for (int i = 0; i < count(); ++i) {
            // A vector may lie at any address: that is a setting of the rig.
            const T element = m_contents(stream, i);
            std::memcpy(static_cast<char*>(m_memory) + static_cast<std::size_t>(i) * sizeof(T), &element, sizeof(T));
        }
    }

    Contents m_contents;
};

/// A vector that the function overwrites: its contents are put back before every call, by a copy in the cache. As with
/// all tests of the rig that copy is inside the measured region in the methods Auto, Iterative and Manual; the method
/// Statistic (-dMethod=Statistic) leaves it out.
template <class T>
class Restored : public Vector<T> {
public:
    static constexpr bool isRestored = true;
    using Vector<T>::Vector;
};

/// The address of an element of a vector, as an argument: src + 10, src + lag.
template <class V>
struct Place {
    V* vector;
    Size offset;
};
template <class V>
requires std::derived_from<V, Data> Place<V>
operator+(V& vector, Size offset) {
    return {&vector, std::move(offset)};
}

/// The compiler must compute `value`, whatever becomes of it.
template <class T>
inline void keep(const T& value) {
    if constexpr (std::is_floating_point_v<T> && sizeof(T) <= sizeof(double)) {
        __asm__ volatile("" : : "x"(value) : "memory");
    } else if constexpr (std::is_scalar_v<T> && sizeof(T) <= sizeof(void*)) {
        __asm__ volatile("" : : "r"(value) : "memory");
    } else {
        __asm__ volatile("" : : "m"(value) : "memory");
    }
}
/// `value`, of which the compiler no longer knows where it comes from.
template <class T>
requires std::is_trivially_copyable_v<T>
inline T opaque(T value) {
    __asm__ volatile("" : "+m"(value) : : "memory");
    return value;
}

namespace detail {

/// The generated functions of one measured function, each on its own state.
struct Code {
    std::shared_ptr<void> state;
    /// Computes the arguments of the line.
    void (*resolve)(void* state) = nullptr;
    /// Counter clocks of so many calls, with what has to be put back before each; the status of the last.
    unsigned long long (*loop)(const void* state, int calls, int* status) = nullptr;
    /// Counter clocks of one call alone.
    unsigned long long (*once)(const void* state, int* status) = nullptr;
    /// One call, not timed.
    int (*call)(const void* state) = nullptr;
    /// What has to be put back before a call; null if nothing has.
    void (*prepare)(const void* state) = nullptr;
    std::vector<Param*> params;
    std::vector<Data*> data;
    bool maybeValue = false; ///< an int: a status, unless the test says otherwise
    bool optimised = true;   ///< the file was compiled with optimisation
};

/// The name of a test, and the file that registers it.
struct Name {
    Name(const char* name, const char* where = __builtin_FILE()) : text(name), file(where) {} // NOLINT
    const char* text;
    const char* file;
};

} // namespace detail

/// A registered test, to tell more about it. Everything is optional.
class [[maybe_unused]] Measure {
public:
    Measure(const detail::Name& name, detail::Code code);

    /// The parameters of the grid in this order, outer first, before those that the arguments bring. Without it they
    /// come in the order in which the arguments and the sizes of their vectors name them.
    template <class... P>
    Measure& over(P&... params) {
        return grid({&params...});
    }
    /// Elements that one call handles, at least 1, and the word for one: the table shows clocks per element.
    Measure& elements(const Size& count, const char* unit = "e");
    /// Floating-point operations of one call: the table shows MFlops.
    Measure& flops(const Size& count);
    /// Runs before the first call of each line, outside the measured region, when parameters and vectors stand; it may
    /// return bool, and a line for which it returns false is left out.
    template <class F>
    Measure& setup(F prepare) {
        if constexpr (std::is_void_v<std::invoke_result_t<F&>>) {
            return before([prepare]() mutable {
                prepare();
                return true;
            });
        } else {
            return before(std::move(prepare));
        }
    }
    /// Runs after each line that was set up.
    Measure& teardown(std::function<void()> clean);
    /// The int that the function returns is a value. Without this it is a status: 0 is good, a negative one fails the
    /// test, a positive one is a warning. Results of other types than int and enumerations are values anyway.
    Measure& returnsValue();
    /// Vectors that are no arguments but are used nevertheless, by a lambda or the set-up.
    template <class... V>
    Measure& with(V&... vectors) {
        static_assert((!V::isRestored && ...), "kr::Restored is put back where it is an argument");
        return data({&vectors...});
    }

private:
    Measure& grid(std::initializer_list<Param*> params);
    Measure& data(std::initializer_list<Data*> vectors);
    Measure& before(std::function<bool()> prepare);

    krOwnTest* m_test;
};

/// Registers a test of `Function` with these arguments under a name, which is what the keys and tables show. `Function`
/// is a function, or a lambda without captures that takes the arguments; `Before`, if given, is a function or such a
/// lambda without arguments that runs before every call, counted as the copy of a Restored vector is.
///
/// An argument is a Param or an expression of one (its value), a Vector (the address of its data), src + 10, a lambda
/// without arguments (evaluated once a line), or any other value.
template <auto Function, auto Before = nullptr, class... A>
Measure measure(const detail::Name& name, A&&... arguments);

} // namespace kr

#include "krown.inc"

template <auto Function, auto Before, class... A>
kr::Measure kr::measure(const detail::Name& name, A&&... arguments) {
    using Params = typename detail::ParamsOf<detail::Signature<decltype(Function)>, A...>::Type;
    static_assert(detail::countOf(Params()) == sizeof...(A),
                  "kr::measure: one argument for each parameter of the function");
    return {name, detail::Site<Function, Before, Params, A...>::code(arguments...)};
}
