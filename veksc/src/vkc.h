// What all speech suites share: the binding of the library, the walk over a grid, rebuilding a parameter in place, and
// the unit words. What a suite does by itself stays visible in the suite.
#pragma once

#include "vk.h"

#include "vekcore.h"
#include "veks.h"
#include "veksc.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <type_traits>

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

/// Rebuilds a parameter that steps 0 and 1 where the function under test takes it, and has the one value 1 where not.
void vkcSwitch(krStepIterator<int>& parm, const krString& title, bool taken);

/// Adds modes to a grid, one list after the other, and to what a user may give.
template <class Mode, class... Lists>
void vkcModes(krEnumIterator<Mode>& parm, std::initializer_list<Mode> modes, Lists... more) {
    for (const Mode mode : modes) {
        parm.add(mode);
        parm.addValidation(mode);
    }
    (vkcModes(parm, more), ...);
}

/// The rates of speech of the two adaptive codecs; silence has a mode of its own.
inline const std::initializer_list<VekSpchBitRate> vkcSilence = {VEK_SPCHBR_DTX};
inline const std::initializer_list<VekSpchBitRate> vkcRatesGSMAMR = {VEK_SPCHBR_4750,  VEK_SPCHBR_5150, VEK_SPCHBR_5900,
                                                                     VEK_SPCHBR_6700,  VEK_SPCHBR_7400, VEK_SPCHBR_7950,
                                                                     VEK_SPCHBR_10200, VEK_SPCHBR_12200};
inline const std::initializer_list<VekSpchBitRate> vkcRatesAMRWB = {
    VEK_SPCHBR_6600,  VEK_SPCHBR_8850,  VEK_SPCHBR_12650, VEK_SPCHBR_14250, VEK_SPCHBR_15850,
    VEK_SPCHBR_18250, VEK_SPCHBR_19850, VEK_SPCHBR_23050, VEK_SPCHBR_23850};

/// The frames of the transform codecs: G.722.1 has two, the functions of G.722 take no length and have the short one.
void vkcFrames(krStepIterator<int>& len, const vkFunc& func);
/// Elements for such a frame; the user's value makes none shorter than the shortest.
int vkcFrame(const krStepIterator<int>& len);

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
/// reported, with the line's parameters. Nothing of the line's data stays. Gives false.
bool vkcRefuse(krTest& test);

/// Creates vectors of one size that are filled alike.
bool vkcCreate(std::initializer_list<vkVector*> vectors, long long size, SetMode mode, double first, double second);

/// Whether a call that prepares data has succeeded; an error is reported.
inline bool vkcDone(VekStatus status) {
    return vkTest::checkStatus(status, "") == krOk;
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

    void fill(long long length, const T& value) {
        for (int row = 0; row < count; ++row) {
            std::fill_n(table[row], length, value);
        }
    }

    void drop() {
        for (; count > 0; --count) {
            veksFree(table[count - 1]);
        }
        veksFree(table);
        table = nullptr;
    }
};

/// What suites of the newer form answer alike; their parameters stand in m_parms.
class vkcTest : public prTest {
public:
    using prTest::prTest;
    /// Gives back what hold, initState and initRows hold, and deletes the vectors of initVectors, the last first.
    void flushData() override;
    /// A line stands where makeData says so and one call has elements to work on.
    bool initData() override { return (makeData() && getDivisor() > 0) || vkcRefuse(*this); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    /// Creates and fills what the call of a line works on; false where the line's values allow none.
    virtual bool makeData() = 0;

protected:
    /// Takes the parameters of the function under test, outer first, as the last that canStart does. Gives true.
    bool walk(std::initializer_list<krParameter*> parms) {
        for (krParameter* parm : parms) {
            m_parms.append(parm);
        }
        return true;
    }

    /// Vectors of the test, with an element type of their own, that of an argument of the function or that of one of
    /// the types in its name.
    template <class Type>
    void initVectors(std::initializer_list<vkVector*> vectors, Type type) {
        for (vkVector* vector : vectors) {
            if constexpr (std::is_same_v<Type, vkType>) {
                vector->init(type);
            } else {
                vector->init(m_func, type);
            }
            take(vector);
        }
    }

    /// Has flushData give `memory` of a line back by `release`; false where there is none.
    template <class State>
    bool hold(State*& state, void* memory, void (*release)(void*)) {
        state = static_cast<State*>(memory);
        m_releases.append([&state, release] {
            release(state);
            state = nullptr;
        });
        return state != nullptr;
    }

    /// Library memory of the size that `sizeOf` tells, for a state that `init` brings to its start.
    template <class State, class Init>
    bool initState(State*& state, VekStatus (*sizeOf)(int*), Init init) {
        int size = 0;
        return vkcDone(sizeOf(&size)) && hold(state, veksMalloc_8u(size), veksFree) && vkcDone(init(state));
    }

    /// A table of `count` rows of `length` elements.
    template <class T>
    bool initRows(vkcRows<T>& rows, long long count, long long length, T* (*create)(int)) {
        m_releases.append([&rows] { rows.drop(); });
        return rows.make(count, length, create);
    }

private:
    void take(vkVector* vector);

    krList<vkVector*> m_vectors;
    krList<std::function<void()>> m_releases;
};

/// What suites of the older form answer alike: they walk a grid of their own, and make the data in the step to a line.
class vkcGridTest : public vkcTest {
public:
    using vkcTest::vkcTest;
    bool canContinue() override { return m_grid.next(m_isFirst) && vkcTest::initData(); }
    bool initData() override { return true; }
    double getDivisor_el() override { return getDivisor(); }
    void parmsToOstrm() override { m_grid.toOstrm(); }
    void parmsToCstrm() override { m_grid.toCstrm(); }
    void parmsNameToCstrm() override { m_grid.namesToCstrm(); }

protected:
    bool walk(std::initializer_list<krParameter*> parms) {
        m_grid.begin(parms);
        return true;
    }

    vkcGrid m_grid;
};

/// Copies `bytes` of saved input over the data that the last call has overwritten.
inline void vkcRestore(void* data, const void* saved, int bytes) {
    std::memcpy(data, saved, static_cast<std::size_t>(bytes));
}
