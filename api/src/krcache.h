// The cache-state iterator: stands in the grid in the place of a size parameter, and changes that parameter until the
// data of a line fit into the cache, or fall out of it. Two-dimensional sizes are the library-aware layer's.
#pragma once

#include "krbase.h"
#include "kriterator.h"

/// Changes the size parameter: `size` bytes were found, `bound` is the limit that they missed; `stepwise` asks for one
/// doubling or halving instead of an estimate. False if there is no further value to try.
using krCacheSetFunc = bool (*)(krParameter* parm, int size, int bound, bool stepwise);

/// The states 0 (in cache) and 1 (out of cache) around a size parameter, which alone shows to the user.
class krCacheIterator : public krIterator<int> {
public:
    /// `object` is the one whose size counts, or null for all blocks.
    krCacheIterator(krParameter& parm, krObject* object, krCacheSetFunc setFunc);

    krString valueString() const override;
    krString defaultString() const override;
    krString validString() const override;
    krString description() const override;
    krString prompt() const override;
    bool nextValue() override;
    void toOStream(krOStream& stream) const override;
    void toCStream(krCStream& stream) const override;
    void fromIStream(krIStream& stream) override;

    /// Counts a retry and changes the size parameter; false when the retries have run out.
    virtual bool repeatValue();
    /// Changes the size parameter by its type; false here, where the type is not known.
    virtual bool setNewValueToParm(int size, int bound, bool stepwise);

    /// Whether the blocks of the present line fit the state; says at level PERF why not.
    bool validateSize();
    /// "inCache", "outofCache", or blank.
    krString getComment() const;
    /// Writes the failed checks, unless the output level has let them through already.
    void outputInfo() const;

    /// Bytes of the largest cache, 0 if not known.
    int cacheSize() const;
    int getObjectSize() const;
    int getTotalSize() const;
    /// Bytes below which data are too small for the state.
    int lowSize() const;
    /// Bytes above which data are too big for the state.
    int highSize() const;

    krParameter* parm() const { return m_parm; }

protected:
    /// The net number of doublings that bring `size` just below `bound`, counted by `doubled` and `halved`.
    template <class Doubled, class Halved>
    static void estimate(int size, int bound, Doubled doubled, Halved halved);
    /// `value` times 2 to the power `count`; 0 if an int can't hold it.
    static int shifted(int value, int count);

    krParameter* m_parm;

private:
    bool setNewValue();
    bool dropLowFactor();

    krObject* m_object;
    int m_tries = 0;
    int m_objectSize = 0;
    int m_totalSize = 0;
    bool m_wasTooBig = false;
    double m_lowFactor;
    krString m_info;
    krCacheSetFunc m_setFunc;
};

template <class Doubled, class Halved>
void krCacheIterator::estimate(int size, int bound, Doubled doubled, Halved halved) {
    long long bytes = size;
    while (bytes > 0 && bytes <= bound) {
        bytes *= 2;
        doubled();
    }
    // A bound of 0 can't be undercut: halving ends with the bytes.
    while (bytes > 0 && bytes >= bound) {
        bytes /= 2;
        halved();
    }
}

/// The iterator around a size parameter of type T, whose values updateValue steps.
template <class T>
class krCacheIteratorOf : public krCacheIterator {
public:
    krCacheIteratorOf(krDefault_NSC<T>& parm, krObject* object, krCacheSetFunc setFunc)
        : krCacheIterator(parm, object, setFunc) {}

    bool setNewValueToParm(int size, int bound, bool stepwise) override {
        krDefault_NSC<T>& parm = static_cast<krDefault_NSC<T>&>(*m_parm);
        T value = parm.value();
        if (!updateValue(value, size, bound, stepwise)) {
            return false;
        }
        parm.setValue(value);
        return true;
    }

    static bool updateValue(T& value, int size, int bound, bool stepwise);
};

template <>
bool krCacheIteratorOf<int>::updateValue(int& value, int size, int bound, bool stepwise);
using krCacheIteratorInt = krCacheIteratorOf<int>;
