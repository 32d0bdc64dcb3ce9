// The scale-factor parameter, and the word tables of library enumerations.
#include "vkdefault.h"

#include "krtest.h"

namespace {

// Values and words of one enumeration.
template <int Count>
struct WordTable {
    int values[Count];
    krString words[Count];

    krString text(int value) const { return krString::enumString(value, values, words, Count); }
    int value(krString& word) const { return krString::enumValue(word, values, words, Count, 0); }
};

const WordTable<4>& fftFlags() {
    static const WordTable<4> table = {{1, 2, 4, 8}, {"divFwdByN", "divInvByN", "divBySqrtN", "nodivByAny"}};
    return table;
}

const WordTable<5>& comparisons() {
    static const WordTable<5> table = {{0, 1, 2, 3, 4}, {"LT", "LE", "EQ", "GE", "GT"}};
    return table;
}

const WordTable<3>& hints() {
    static const WordTable<3> table = {{0, 1, 2}, {"none", "fast", "accurate"}};
    return table;
}

const WordTable<2>& roundings() {
    static const WordTable<2> table = {{0, 1}, {"zero", "near"}};
    return table;
}

} // namespace

int vkScaleIterator::colmIndex() const {
    return krTest::m_numParmsColm - 1;
}

bool vkScaleIterator::isScaled(const vkFunc& function) const {
    const krString descr = function.descrName();
    return descr.contains("Sfs") || descr.contains("Fix");
}

void vkScaleIterator::init(const krString& function) {
    init(function, 0, 1, 2, -1);
}

void vkScaleIterator::initValues(const krString& function, std::initializer_list<int> values) {
    m_scaled = isScaled(function);
    reset();
    if (m_scaled) {
        setName("ScaleFactor");
        setList(values);
    } else {
        setName("");
        setList({0});
    }
}

bool vkcScaleIterator::isScaled(const vkFunc& function) const {
    return function.contains("Scaled") || vkScaleIterator::isScaled(function);
}

krString vkFftFlagString(int value) {
    return fftFlags().text(value);
}

int vkFftFlagValue(krString& text) {
    return fftFlags().value(text);
}

krString vkCompareString(int value) {
    return comparisons().text(value);
}

int vkCompareValue(krString& text) {
    return comparisons().value(text);
}

krString vkHintString(int value) {
    return hints().text(value);
}

int vkHintValue(krString& text) {
    return hints().value(text);
}

krString vkRoundString(int value) {
    return roundings().text(value);
}

int vkRoundValue(krString& text) {
    return roundings().value(text);
}
