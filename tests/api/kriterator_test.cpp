// Iterators: the two grammars of value lists, the walk, and the admissible values.
#include "krexcept.h"
#include "kriterator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const std::string conflict = "Conflict between iterator limits and operation";

template <class T>
std::vector<long long> walk(krIterator_NSC<T>& parm) {
    std::vector<long long> values;
    for (bool more = parm.firstValue(); more && values.size() < 1000; more = parm.nextValue()) {
        values.push_back(static_cast<long long>(parm.value()));
    }
    return values;
}

template <class T>
std::string infoOf(krIterator_NSC<T>& parm, const char* text) {
    try {
        parm.translate(text);
    } catch (const krException& fault) {
        return fault.info();
    }
    return "no exception";
}

template <class T = int>
std::vector<long long> walkOf(const char* text) {
    krStepIterator<T> parm("x");
    parm.translate(text);
    return walk(parm);
}

std::string infoOfStep(const char* text) {
    krStepIterator<int> parm("x");
    return infoOf(parm, text);
}

std::string infoOfSet(int first, int last, int step, char oper) {
    krStepIterator<int> parm("x");
    try {
        parm.set(first, last, step, oper);
    } catch (const krException& fault) {
        return fault.info();
    }
    return "no exception";
}

using Values = std::vector<long long>;

} // namespace

TEST(KrIterator, EmptyListHasNoValue) {
    krIterator<int> parm("x");
    EXPECT_FALSE(parm.firstValue());
    EXPECT_EQ(parm.value(), 0);
    EXPECT_STREQ(parm.defaultString().c_str(), "");
}

TEST(KrIterator, WalksItsListAndStartsAnew) {
    krIterator<int> parm("x");
    parm.add(3);
    parm.add(-1);
    EXPECT_EQ(walk(parm), (Values{3, -1}));
    EXPECT_EQ(parm.value(), 0);
    EXPECT_EQ(walk(parm), (Values{3, -1}));
    EXPECT_STREQ(parm.defaultString().c_str(), "3; -1");
    EXPECT_STREQ(parm.description().c_str(), "x = 3; -1");
}

TEST(KrIterator, ResetEmptiesTheList) {
    krIterator<int> parm("x");
    parm.setList({1, 2});
    parm.firstValue();
    parm.reset();
    EXPECT_FALSE(parm.hasValue());
    EXPECT_EQ(parm.value(), 0);
    EXPECT_TRUE(parm.empty());
}

TEST(KrIterator, TextIsSplitAtSemicolonsAndTrimmed) {
    krIterator<int> parm("x");
    parm.translate(" 5 ;7;  0x10 ");
    EXPECT_EQ(walk(parm), (Values{5, 7, 16}));
}

TEST(KrIterator, BlankItemRaises) {
    krIterator<int> parm("x");
    parm.setList({7});
    EXPECT_EQ(infoOf(parm, "8; ;16"), "Invalid value of x = ");
    EXPECT_EQ(walk(parm), (Values{7}));
}

TEST(KrIterator, EmptyTextRaises) {
    krIterator<int> parm("x");
    EXPECT_EQ(infoOf(parm, ""), "Empty iterator definition");
    EXPECT_EQ(infoOf(parm, ";;"), "Empty iterator definition");
}

TEST(KrIterator, FailedTextLeavesTheFormerValues) {
    krIterator<int> parm("x");
    parm.setList({1, 2});
    EXPECT_EQ(infoOf(parm, "4; y"), "Invalid value of x = y");
    EXPECT_EQ(walk(parm), (Values{1, 2}));
}

TEST(KrIterator, NewListInMidWalkStartsAnew) {
    krIterator<int> parm("x");
    parm.setList({1, 2});
    parm.firstValue();
    parm.translate("8; 9");
    EXPECT_TRUE(parm.nextValue());
    EXPECT_EQ(parm.value(), 8);
}

TEST(KrStepIterator, IsEmptyAtFirst) {
    krStepIterator<int> parm;
    EXPECT_EQ(parm.oper(), stepList);
    EXPECT_EQ(static_cast<int>(parm.oper()), 63);
    EXPECT_FALSE(parm.firstValue());
}

TEST(KrStepIterator, StepsUpToTheLimitIncluded) {
    EXPECT_EQ(walkOf("1; 10; +3"), (Values{1, 4, 7, 10}));
    EXPECT_EQ(walkOf("1; 9; +3"), (Values{1, 4, 7}));
    EXPECT_EQ(walkOf("1 10 +3"), (Values{1, 4, 7, 10}));
    EXPECT_EQ(walkOf("1;10;+3"), (Values{1, 4, 7, 10}));
}

TEST(KrStepIterator, StepsDown) {
    EXPECT_EQ(walkOf("5; 1; -2"), (Values{5, 3, 1}));
    EXPECT_EQ(walkOf("5; 1; +-2"), (Values{5, 3, 1}));
    EXPECT_EQ(walkOf("1; 5; --2"), (Values{1, 3, 5}));
}

TEST(KrStepIterator, Multiplies) {
    EXPECT_EQ(walkOf("1; 1024; *4"), (Values{1, 4, 16, 64, 256, 1024}));
    EXPECT_EQ(walkOf("-1; -8; *2"), (Values{-1, -2, -4, -8}));
    EXPECT_EQ(walkOf("1; 1; *2"), (Values{1}));
}

TEST(KrStepIterator, OneValueEndsAndGoesUp) {
    krStepIterator<int> parm("x");
    parm.translate("1; 1; +1");
    EXPECT_EQ(walk(parm), (Values{1}));
    EXPECT_FALSE(parm.down());
}

TEST(KrStepIterator, LimitsThatTheStepCantReachConflict) {
    EXPECT_EQ(infoOfStep("1; 5; -2"), conflict);
    EXPECT_EQ(infoOfStep("5; 1; +2"), conflict);
    EXPECT_EQ(infoOfStep("1; 5; +-2"), conflict);
    EXPECT_EQ(infoOfStep("5; 1; --2"), conflict);
    EXPECT_EQ(infoOfStep("0; 8; *2"), conflict);
    EXPECT_EQ(infoOfStep("-1; 8; *2"), conflict);
    EXPECT_EQ(infoOfStep("0; -8; *2"), conflict);
    EXPECT_EQ(infoOfStep("-8; 0; *2"), conflict);
    EXPECT_EQ(infoOfStep("0; 0; *2"), conflict);
    EXPECT_EQ(infoOfStep("8; 1; *2"), conflict);
    EXPECT_EQ(infoOfStep("-8; -1; *2"), conflict);
    EXPECT_EQ(infoOfStep("1; 8; *1"), conflict);
    EXPECT_EQ(infoOfStep("1; 8; *0"), conflict);
    EXPECT_EQ(infoOfStep("1; 8; *-2"), conflict);
}

TEST(KrStepIterator, StepOfZeroConflictsEverywhere) {
    EXPECT_EQ(infoOfStep("1; 5; +0"), conflict);
    EXPECT_EQ(infoOfStep("5; 1; +0"), conflict);
    EXPECT_EQ(infoOfStep("1; 5; -0"), conflict);
    EXPECT_EQ(infoOfStep("5; 1; -0"), conflict);
    EXPECT_EQ(infoOfStep("5; 5; +0"), conflict);
}

TEST(KrStepIterator, NoOperationInTheThirdItemIsAList) {
    EXPECT_EQ(walkOf("1; 2; 3"), (Values{1, 2, 3}));
    EXPECT_EQ(infoOfStep("1;2;x"), "Invalid value of x = x");
    EXPECT_EQ(walkOf("1; 2; +3; 4"), (Values{1, 2, 3, 4}));
    EXPECT_EQ(infoOfStep(""), "Empty iterator definition");
}

TEST(KrStepIterator, BadItemsAreToldInTheirOrder) {
    EXPECT_EQ(infoOfStep("a; b; +c"), "Invalid first value = a");
    EXPECT_EQ(infoOfStep("1; b; +c"), "Invalid last value = b");
    EXPECT_EQ(infoOfStep("1; 2; +c"), "Invalid step = c");
}

TEST(KrStepIterator, FailedTextLeavesTheFormerStep) {
    krStepIterator<int> parm("x");
    parm.set(40, 80, 20, '+');
    EXPECT_EQ(infoOf(parm, "1; 5; -2"), conflict);
    EXPECT_EQ(infoOf(parm, "1; y"), "Invalid value of x = y");
    EXPECT_EQ(walk(parm), (Values{40, 60, 80}));
}

TEST(KrStepIterator, ListTextEndsTheStepForm) {
    krStepIterator<int> parm("x");
    parm.set(40, 80, 20, '+');
    parm.translate("7");
    EXPECT_EQ(parm.oper(), stepList);
    EXPECT_EQ(walk(parm), (Values{7}));
    parm.set(1, 2, 1, '+');
    parm.setList({11, 22});
    EXPECT_EQ(walk(parm), (Values{11, 22}));
}

TEST(KrStepIterator, SetValidates) {
    EXPECT_EQ(infoOfSet(40, 80, 10, '+'), "no exception");
    EXPECT_EQ(infoOfSet(80, 40, 10, '+'), conflict);
    EXPECT_EQ(infoOfSet(80, 40, 10, '/'), conflict);
}

TEST(KrStepIterator, TextsOfTheStepForm) {
    krStepIterator<int> parm("x", "the size");
    parm.translate("1; 1024; *2");
    EXPECT_STREQ(parm.description().c_str(), "for (x = 1; x <= 1024; x *= 2)");
    EXPECT_STREQ(parm.defaultString().c_str(), "1; 1024; *2");
    EXPECT_STREQ(parm.prompt().c_str(), "for x");
    parm.translate("5; 1; -2");
    EXPECT_STREQ(parm.description().c_str(), "for (x = 5; x >= 1; x -= 2)");
}

TEST(KrStepIterator, TextsOfTheListForm) {
    krStepIterator<int> parm("x", "the size");
    parm.translate("4; 8");
    EXPECT_STREQ(parm.description().c_str(), "x = 4; 8");
    EXPECT_STREQ(parm.defaultString().c_str(), "4; 8");
    EXPECT_STREQ(parm.prompt().c_str(), "x");
}

TEST(KrStepIterator, WalkEndsWhereTheTypeEnds) {
    EXPECT_EQ(walkOf("2147483646; 2147483647; +1"), (Values{2147483646, 2147483647}));
    EXPECT_EQ(walkOf("-2147483647; -2147483648; -1"), (Values{-2147483647LL, -2147483648LL}));
    EXPECT_EQ(walkOf("1073741824; 2147483647; *2"), (Values{1073741824}));
    EXPECT_EQ(walkOf<short>("32766; 32767; +1"), (Values{32766, 32767}));
    EXPECT_EQ(walkOf<unsigned int>("2; 0; -1"), (Values{2, 1, 0}));
    EXPECT_EQ(walkOf<unsigned int>("1; 3; +1"), (Values{1, 2, 3}));
}

TEST(KrStepIterator, BaseListKeepsThePlaceInTheGrid) {
    krStepIterator<short> outer("a");
    krStepIterator<short> inner("b");
    outer.setList({1, 2});
    inner.set(5, 6, 1, '+');
    Values pairs;
    for (bool more = outer.firstValue() && inner.firstValue(); more;) {
        pairs.push_back(outer.value() * 10 + inner.value());
        more = inner.nextValue() || (inner.firstValue() && outer.nextValue());
    }
    EXPECT_EQ(pairs, (Values{15, 16, 25, 26}));
}

TEST(KrEnumIterator, AnyValueIsAdmissibleAtFirst) {
    krEnumIterator<int> parm("x");
    parm.add(1);
    EXPECT_STREQ(parm.validString().c_str(), "");
    parm.translate("77");
    EXPECT_EQ(walk(parm), (Values{77}));
}

TEST(KrEnumIterator, ValueOutsideTheAdmissibleRaises) {
    krEnumIterator<int> parm("x");
    parm.setList({1, 2});
    parm.initValidation();
    EXPECT_STREQ(parm.validString().c_str(), "1|2");
    EXPECT_STREQ(parm.prompt().c_str(), "x {1|2}");
    EXPECT_EQ(infoOf(parm, "2; 3"), "Invalid value of x = 3");
    EXPECT_EQ(walk(parm), (Values{1, 2}));
    krString outside = "3";
    EXPECT_EQ(parm.stringToValue(outside), 0);
    EXPECT_TRUE(outside.m_failed);
    parm.translate("2");
    EXPECT_EQ(walk(parm), (Values{2}));
}

TEST(KrEnumIterator, AddedValueIsAdmissibleToo) {
    krEnumIterator<int> parm("x");
    parm.add(1);
    parm.initValidation();
    parm.add(4);
    EXPECT_STREQ(parm.validString().c_str(), "1|4");
}

TEST(KrEnumIterator, NewLimitTakesThePlaceOfTheFormerOne) {
    krEnumIterator<int> parm("x");
    parm.setList({1, 2});
    parm.initValidation();
    parm.initValidation();
    EXPECT_STREQ(parm.validString().c_str(), "1|2");
    parm.translate("2");
    parm.initValidation();
    EXPECT_STREQ(parm.validString().c_str(), "2");
    EXPECT_EQ(infoOf(parm, "1"), "Invalid value of x = 1");
}

TEST(KrEnumIterator, AdmittingStartsFromThePresentValuesWithoutDoubles) {
    krEnumIterator<int> parm("x");
    parm.setList({1, 2});
    parm.addValidation(3);
    parm.addValidation(2);
    EXPECT_STREQ(parm.validString().c_str(), "1|2|3");
    krList<int> more;
    more.append(3);
    more.append(9);
    parm.addValidation(&more);
    EXPECT_STREQ(parm.validString().c_str(), "1|2|3|9");
    parm.resetValidation();
    EXPECT_STREQ(parm.validString().c_str(), "");
    krString any = "77";
    EXPECT_EQ(parm.stringToValue(any), 77);
    EXPECT_FALSE(any.m_failed);
}
