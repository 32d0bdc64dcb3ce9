// What all speech suites share: the binding of the library, the walk over a grid, rebuilding a parameter in place, and
// the unit words. What a suite does by itself stays visible in the suite.
#pragma once

#include "vk.h"

#include "vekcore.h"
#include "veks.h"
#include "veksc.h"

#include <cstring>
#include <initializer_list>
#include <memory>

/// Hands the library's core functions to the harness.
void vkSetVekEnvironment();
const VekLibraryVersion* vkGetVekVersion_veksc();

static const bool regVekEnvironment = krRegVekEnvironment(vkSetVekEnvironment) != 0;
static const bool regVersion_veksc = krRegVekVersion(vkGetVekVersion_veksc) != 0;

// Words of the library's modes, for suites that show them.
[[maybe_unused]] static const krString RndStr[] = {"zero", "near"};
[[maybe_unused]] static const krString HintStr[] = {"none", "fast", "accurate"};
[[maybe_unused]] static const krString CmpStr[] = {"LT", "LE", "EQ", "GE", "GT"};
[[maybe_unused]] static const krString FlagStr[] = {"divFwdByN", "divInvByN", "divBySqrtN", "nodivByAny"};

/// Destroys a parameter and builds it anew in its place, empty and with a title.
template <class Parameter>
Parameter& vkcRebuild(Parameter& parm, const krString& title) {
    std::destroy_at(&parm);
    return *std::construct_at(&parm, title, title);
}

/// Rebuilds a parameter that does not apply to the function under test: silent, with one value.
template <class T>
void vkcFix(krStepIterator<T>& parm, T value) {
    vkcRebuild(parm, "").setList({value});
    parm.firstValue();
}

/// Whether a parameter's value counts rows of a table of `rows`; a user may have given another.
inline bool vkcCounts(const krStepIterator<int>& parm, std::size_t rows) {
    return parm.value() >= 0 && static_cast<std::size_t>(parm.value()) < rows;
}

/// A size of the grid in 64 bits, so that sums and products of users' sizes stay what they are.
inline long long vkcSize(const krStepIterator<int>& parm) {
    return parm.value();
}

/// The scale factors of a function under the title of its table; silent for a function that is not scaled.
template <class... Ints>
vkcScaleIterator& vkcScales(vkcScaleIterator& parm, const krString& title, const vkFunc& func, Ints... values) {
    vkcRebuild(parm, title).init(func, values...);
    if (parm.scaled()) {
        parm.setName(title);
    }
    return parm;
}

/// The parameters that a function's grid walks, outer first, and that identify a line.
class vkcGrid {
public:
    /// Takes the parameters of the function under test and the user's values for them.
    void begin(std::initializer_list<krParameter*> parms);
    /// Elements for a size of the grid. One with a single value is what the function works on: the user's value, which
    /// replaces it in the divisor, makes no vector shorter.
    long long room(const krStepIterator<int>& parm) const;
    /// Steps the grid, the last parameter fastest; false when it is exhausted.
    bool next(bool first);
    void toOstrm() const;
    void toCstrm() const;
    void namesToCstrm() const;

private:
    struct Fixed {
        const krParameter* parm;
        int size;
    };
    krList<krParameter*> m_parms;
    krList<Fixed> m_fixed;
};

/// The unit words: "e" (elements) is what speech suites answer.
enum vkcUnitIndex { vkcNoUnit, vkcElements, vkcPixels, vkcPixelChannels, vkcComplexMacs };
krString vkcUnit(int index);

/// Ends a test on values that its data or its function can't take: "test data error", or the error that the library has
/// told, with the line's parameters. Nothing of the line's data stays. Gives false.
bool vkcRefuse(krTest& test);

/// Whether a line's data stand: what the suite's makeData says, as long as one call has elements to work on.
template <class Suite>
bool vkcLine(Suite& suite) {
    return (suite.makeData() && suite.getDivisor() > 0) || vkcRefuse(suite);
}

/// Whether a call that prepares data has succeeded; an error is told.
inline bool vkcDone(VekStatus status) {
    return vkTest::checkStatus(status, "") == krOk;
}

/// Library memory of the size that `sizeOf` tells, for a state that `init` brings to its start.
template <class State, class Init>
bool vkcMakeState(State*& state, VekStatus (*sizeOf)(int*), Init init) {
    int size = 0;
    if (!vkcDone(sizeOf(&size))) {
        return false;
    }
    state = static_cast<State*>(static_cast<void*>(veksMalloc_8u(size)));
    return state != nullptr && vkcDone(init(state));
}

/// Whether a table of `rows` rows of `bytes` each is no larger than a block may be; if not, it is refused as one.
bool vkcFits(long long rows, long long bytes);

/// A table of row pointers and its rows, each from the library's memory.
template <class T>
struct vkcRows {
    T** table = nullptr;
    int count = 0;

    bool make(long long rows, long long length, T* (*allocate)(int)) {
        constexpr auto pointer = static_cast<int>(sizeof(T*));
        if (!vkcFits(rows, length * static_cast<long long>(sizeof(T)) + pointer)) {
            return false;
        }
        table = reinterpret_cast<T**>(veksMalloc_8u(static_cast<int>(rows) * pointer));
        bool made = table != nullptr;
        for (count = 0; made && count < rows; ++count) {
            table[count] = allocate(static_cast<int>(length));
            made = table[count] != nullptr;
        }
        return made;
    }

    void drop() {
        for (; count > 0; --count) {
            veksFree(table[count - 1]);
        }
        veksFree(table);
        table = nullptr;
    }
};

/// Copies `bytes` of saved input over the data that the last call has overwritten.
inline void vkcRestore(void* data, const void* saved, int bytes) {
    std::memcpy(data, saved, static_cast<std::size_t>(bytes));
}
