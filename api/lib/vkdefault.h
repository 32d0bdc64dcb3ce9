// Parameters and word tables that know function names or enumerations of the library: the scale factor, and the words
// of transform flags, comparisons, hints and rounding.
#pragma once

#include "kriterator.h"
#include "vkfunc.h"

/// The scale factor of a library function: silent, with the one value 0, if the function's name says that it is not
/// scaled. It stands in the last parameter column of the table.
class vkScaleIterator : public krIterator<int> {
public:
    using krIterator<int>::krIterator;
    int colmIndex() const override;
    /// Whether the function's descriptor holds "Sfs" or "Fix".
    virtual bool isScaled(const vkFunc& function) const;

    /// The values 0, 1, 2 and -1.
    void init(const krString& function);
    /// The values listed, up to seven.
    template <class... Ints>
    void init(const krString& function, int a, Ints... more) {
        static_assert(sizeof...(more) <= 6, "a scale parameter lists up to seven values");
        initValues(function, {a, more...});
    }
    bool scaled() const { return m_scaled; }

private:
    void initValues(const krString& function, std::initializer_list<int> values);
    bool m_scaled = false;
};

/// The scale factor in the speech domain, where "Scaled" in the name counts too.
class vkcScaleIterator : public vkScaleIterator {
public:
    using vkScaleIterator::vkScaleIterator;
    bool isScaled(const vkFunc& function) const override;
};

/// "divFwdByN", "divInvByN", "divBySqrtN", "nodivByAny" for 1, 2, 4 and 8.
krString vkFftFlagString(int value);
int vkFftFlagValue(krString& text);
/// "LT", "LE", "EQ", "GE", "GT" for 0 to 4.
krString vkCompareString(int value);
int vkCompareValue(krString& text);
/// "none", "fast", "accurate" for 0 to 2.
krString vkHintString(int value);
int vkHintValue(krString& text);
/// "zero", "near" for 0 and 1.
krString vkRoundString(int value);
int vkRoundValue(krString& text);
