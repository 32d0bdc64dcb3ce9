// Generated contents: limits, constants, the random generator, ramps, the Jaehne signal and single elements.
#include "vkvector.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Values = std::vector<double>;

Values valuesOf(const vkVector& vector) {
    Values values;
    for (int i = 0; i < vector.length(); ++i) {
        values.push_back(vector.getIndex(i));
    }
    return values;
}

Values filled(vkType type, int length, SetMode mode, double a, double b) {
    vkVector vector(type);
    vector.createVector(length, mode, a, b);
    return valuesOf(vector);
}

// Real and imaginary part of an element of 3 that was all 9 before.
Values indexed(vkType type, SetMode mode, double a, double b) {
    vkVector vector(type);
    vector.createVector(3, setValue, 9, 9);
    vector.setIndex(1, mode, a, b);
    EXPECT_EQ(vector.getIndex(0), 9.0);
    EXPECT_EQ(vector.getIndex(2), 9.0);
    double re = 0;
    double im = -1;
    vector.getIndex(1, re, im);
    return {re, im};
}

} // namespace

TEST(VkLimits, TableByTheRealComponent) {
    EXPECT_EQ(vkVector::getMinValue(vk16sc), -32768.0);
    EXPECT_EQ(vkVector::getMaxValue(vk16uc), 65535.0);
    EXPECT_EQ(vkVector::getMaxValue(vk8u), 255.0);
    EXPECT_EQ(vkVector::getMaxValue(vk32u), 4294967295.0);
    EXPECT_EQ(vkVector::getMaxValue(vk64u), 9223372036854775808.0);
    EXPECT_EQ(vkVector::getMaxValue(vk64s), 9223372036854775808.0);
    EXPECT_EQ(vkVector::getMinValue(vk64s), -9223372036854775808.0);
    EXPECT_EQ(vkVector::getMinValue(vk8s), -128.0);
    EXPECT_EQ(vkVector::getMaxValue(vk32s), 2147483647.0);
    EXPECT_DOUBLE_EQ(vkVector::getMaxValue(vk32f), 9.223371761976865e+18);
    EXPECT_DOUBLE_EQ(vkVector::getMinValue(vk64fc), -6.703903964971298e+153);
    for (const vkType type : {vk8u, vk16u, vk32u, vk64u, vk8s, vk16s, vk32s, vk64s}) {
        EXPECT_EQ(vkVector::getMinAbsValue(type), 1.0) << type;
    }
    EXPECT_EQ(vkVector::getMinAbsValue(vk32fc), 1.1754943508222875e-38);
    EXPECT_EQ(vkVector::getMinAbsValue(vk64f), 2.2250738585072014e-308);
}

TEST(VkLimits, OutsideTheTable) {
    EXPECT_EQ(vkVector::getMinValue(vkUndef), 0.0);
    EXPECT_EQ(vkVector::getMaxValue(vkUndef), 1.0);
    EXPECT_EQ(vkVector(vkUndef).minValue(), 1.0);
    EXPECT_EQ(vkVector(vk16sc).minValue(), -32768.0);
}

TEST(VkConst, TruncatesTowardsZero) {
    EXPECT_EQ(filled(vk16s, 1, setValue, 1.9, 0), Values{1});
    EXPECT_EQ(filled(vk16s, 1, setValue, -1.9, 0), Values{-1});
    EXPECT_EQ(filled(vk16s, 1, setValue, -32767.5, 0), Values{-32767});
    EXPECT_EQ(filled(vk64f, 1, setValue, 1.9, 0), Values{1.9});
}

TEST(VkConst, StopsAtTheTypesLimits) {
    EXPECT_EQ(filled(vk16s, 1, setValue, 1e9, 0), Values{32767});
    EXPECT_EQ(filled(vk8u, 1, setValue, -5, 0), Values{0});
    vkVector wide(vk64s);
    wide.createVector(1, setMax, 0, 0);
    EXPECT_EQ(wide.m_64s[0], 9223372036854775807LL);
}

TEST(VkConst, ModesOfWholeVectors) {
    EXPECT_EQ(filled(vk16s, 2, setDefault, 0, 0), (Values{2, 2}));
    EXPECT_EQ(filled(vk64f, 2, setDefault, 0, 0), (Values{1.00001, 1.00001}));
    EXPECT_EQ(filled(vk16s, 2, setZero, 5, 5), (Values{0, 0}));
    EXPECT_EQ(filled(vk16s, 2, setOne, 5, 5), (Values{1, 1}));
    EXPECT_EQ(filled(vk16s, 2, setMax, 5, 5), (Values{32767, 32767}));
    EXPECT_EQ(filled(vk16s, 2, setMin, 5, 5), (Values{-32768, -32768}));
    EXPECT_EQ(filled(vk16s, 2, static_cast<SetMode>(8), 5, 5), (Values{2, 2}));
}

TEST(VkConst, ComplexPartsByMode) {
    vkVector vector(vk32fc);
    double re = 0;
    double im = 0;
    vector.createVector(1, setOne, 0, 0);
    vector.getIndex(0, re, im);
    EXPECT_EQ(re, 1.0);
    EXPECT_EQ(im, 0.0);
    vector.setVector(setMax, 0, 0);
    vector.getIndex(0, re, im);
    EXPECT_EQ(re, im);
    vector.setConst();
    vector.getIndex(0, re, im);
    EXPECT_EQ(im, static_cast<double>(1.00001F));
}

TEST(VkRandom, SeedZeroGivesTheKnownNumbersAndMovesOn) {
    vkVector::m_seed = 0;
    EXPECT_EQ(filled(vk16s, 8, setRand, 0, 0), (Values{-32705, -24238, -18893, -6345, -9637, 15786, 21270, -17264}));
    EXPECT_EQ(vkVector::m_seed, 1998354204U);
    EXPECT_EQ(filled(vk16s, 4, setRand, 0, 0), (Values{-26851, -12933, 22002, -895}));
    EXPECT_EQ(vkVector::m_seed, 3548687936U);
}

TEST(VkRandom, SeedIsStoredBeforeTheFill) {
    vkVector vector(vk16s);
    vector.createVector(6, 0);
    vector.setRandom(-10, 10, 12345);
    EXPECT_EQ(valuesOf(vector), (Values{-3, 8, 0, 8, 7, 8}));
    EXPECT_EQ(vkVector::m_seed, 3961485150U);
    vector.setRandom(-10, 10, 12345);
    EXPECT_EQ(valuesOf(vector), (Values{-3, 8, 0, 8, 7, 8}));
}

TEST(VkRandom, FloatsGoFromMinusOneToOne) {
    vkVector::m_seed = 0;
    const Values values = filled(vk64f, 3, setRand, 7, 7);
    EXPECT_DOUBLE_EQ(values[0], -0.998087532818319);
    EXPECT_DOUBLE_EQ(values[1], -0.7396813230589043);
    EXPECT_DOUBLE_EQ(values[2], -0.5765874716453263);
}

TEST(VkRandom, EqualLimitsTakeTheFullRange) {
    vkVector::m_seed = 0;
    EXPECT_EQ(filled(vk8u, 8, setRand, 5, 5), (Values{0, 33, 53, 102, 90, 188, 210, 60}));
}

TEST(VkRandom, LimitsAreClippedToTheType) {
    vkVector vector(vk8u);
    vector.createVector(8, 0);
    vector.setRandom(-50, 1000, 0);
    EXPECT_EQ(valuesOf(vector), (Values{0, 33, 53, 102, 90, 188, 210, 60}));
}

TEST(VkRandom, ComplexVectorIsTwiceAsManyNumbers) {
    vkVector vector(vk16sc);
    vector.createVector(2, 0);
    vector.setRandom(-32768, 32767, 0);
    EXPECT_EQ(vector.m_16sc[0].re, -32705);
    EXPECT_EQ(vector.m_16sc[0].im, -24238);
    EXPECT_EQ(vector.m_16sc[1].re, -18893);
    EXPECT_EQ(vector.m_16sc[1].im, -6345);
}

TEST(VkRandom, StandardNumbersFill32Bits) {
    EXPECT_EQ(rndMax(), 4294967295.0);
    std::srand(1);
    const unsigned int low = static_cast<unsigned int>(std::rand()) & 0xFFFFU;
    const unsigned int high = static_cast<unsigned int>(std::rand()) & 0xFFFFU;
    std::srand(1);
    EXPECT_EQ(rnd(), low + 65536.0 * high);
}

TEST(VkSequence, ReachesTheLastValue) {
    vkVector vector(vk16s);
    vector.createVector(11, 0);
    vector.setSequence(0, 10);
    EXPECT_EQ(valuesOf(vector), (Values{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST(VkSequence, OneElementIsTheFirst) {
    vkVector vector(vk16sc);
    vector.createVector(1, 0);
    vector.setSequence(7, 10);
    double re = 0;
    double im = 5;
    vector.getIndex(0, re, im);
    EXPECT_EQ(re, 7.0);
    EXPECT_EQ(im, 0.0);
}

TEST(VkSequence, ModeStepsByAtLeastOneForIntegers) {
    Values expected;
    for (int i = 0; i < 100; ++i) {
        expected.push_back(i % 2);
    }
    EXPECT_EQ(filled(vk16s, 100, setSeq, 0, 1), expected);
    EXPECT_EQ(filled(vk64f, 4, setSeq, 0, 1), (Values{0, 0.25, 0.5, 0.75}));
    EXPECT_EQ(filled(vk16s, 4, setSeq, 0, 12), (Values{0, 3, 6, 9}));
}

TEST(VkSequence, TailStaysAtLastWithoutWrap) {
    vkVector vector(vk16s);
    vector.createVector(6, 0);
    vector.setSequence(0, 5, 2, false);
    EXPECT_EQ(valuesOf(vector), (Values{0, 2, 4, 5, 5, 5}));
    vector.setSequence(0, 5, 2, true);
    EXPECT_EQ(valuesOf(vector), (Values{0, 2, 4, 0, 2, 4}));
}

TEST(VkSequence, LimitsAreClippedAndNegativeStepRunsOn) {
    vkVector vector(vk8u);
    vector.createVector(3, 0);
    vector.setSequence(-5, 300, 200, true);
    EXPECT_EQ(valuesOf(vector), (Values{0, 200, 0}));
    vkVector down(vk16s);
    down.createVector(4, 0);
    down.setSequence(3, 3, -2, true);
    EXPECT_EQ(valuesOf(down), (Values{3, 1, -1, -3}));
}

TEST(VkSequence, ComplexPartsAreEqual) {
    vkVector vector(vk16sc);
    vector.createVector(3, 0);
    vector.setSequence(1, 3);
    EXPECT_EQ(vector.m_16sc[1].re, 2);
    EXPECT_EQ(vector.m_16sc[1].im, 2);
}

TEST(VkJaehne, DefaultFillsTheRange) {
    vkVector shorts(vk16s);
    shorts.createVector(8, 0);
    shorts.setJaehne();
    EXPECT_EQ(valuesOf(shorts), (Values{0, 6392, 23170, 32137, 0, -32137, 23170, -6392}));
    vkVector bytes(vk8u);
    bytes.createVector(8, 0);
    bytes.setJaehne();
    EXPECT_EQ(valuesOf(bytes), (Values{127, 152, 217, 252, 127, 2, 217, 102}));
}

TEST(VkJaehne, FloatsHaveMagnitudeOne) {
    vkVector vector(vk64f);
    vector.createVector(4, 0);
    vector.setJaehne();
    const Values values = valuesOf(vector);
    EXPECT_EQ(values[0], 0.0);
    EXPECT_DOUBLE_EQ(values[1], 0.38268343236508976);
    EXPECT_EQ(values[2], 1.0);
    EXPECT_DOUBLE_EQ(values[3], -0.3826834323650896);
}

TEST(VkJaehne, NegativeMagnitudeLeavesTheVector) {
    vkVector vector(vk16s);
    vector.createVector(3, 0);
    vector.setJaehne(-1);
    EXPECT_EQ(valuesOf(vector), (Values{2, 2, 2}));
}

TEST(VkJaehne, MagnitudeIsLimitedToHalfTheRange) {
    vkVector vector(vk16s);
    vector.createVector(8, 0);
    vector.setJaehne(1e9);
    EXPECT_EQ(valuesOf(vector), (Values{0, 6392, 23170, 32137, 0, -32137, 23170, -6392}));
}

TEST(VkJaehne, ComplexPartsAreEqual) {
    vkVector vector(vk16sc);
    vector.createVector(8, 0);
    vector.setJaehne();
    EXPECT_EQ(vector.m_16sc[1].re, 6392);
    EXPECT_EQ(vector.m_16sc[1].im, 6392);
}

TEST(VkIndex, ModesOfOneElement) {
    EXPECT_EQ(indexed(vk16sc, setDefault, 5, 6), (Values{0, 0}));
    EXPECT_EQ(indexed(vk16sc, setZero, 5, 6), (Values{0, 0}));
    EXPECT_EQ(indexed(vk16sc, setOne, 5, 6), (Values{1, 0}));
    EXPECT_EQ(indexed(vk16sc, setMax, 5, 6), (Values{32767, 32767}));
    EXPECT_EQ(indexed(vk16sc, setMin, 5, 6), (Values{-32768, -32768}));
    EXPECT_EQ(indexed(vk16sc, setValue, 5, 6), (Values{5, 6}));
    EXPECT_EQ(indexed(vk16sc, setSeq, 5, 6), (Values{5, 0}));
    EXPECT_EQ(indexed(vk16sc, static_cast<SetMode>(8), 5, 6), (Values{9, 9}));
    EXPECT_EQ(indexed(vk16sc, static_cast<SetMode>(-1), 5, 6), (Values{9, 9}));
}

TEST(VkIndex, RandomElement) {
    vkVector::m_seed = 0;
    EXPECT_EQ(indexed(vk16s, setRand, 5, 5)[0], -32705.0);
    vkVector::m_seed = 12345;
    EXPECT_EQ(indexed(vk16s, setRand, -10, 10)[0], -3.0);
}
