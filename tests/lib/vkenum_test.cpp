// The speech enumerations in text.
#include "krexcept.h"
#include "vkenum.h"

#include <gtest/gtest.h>

namespace {

const char* const s_rates[] = {"BR_4750",  "BR_5150",  "BR_5300",  "BR_5900",  "BR_6300",  "BR_6600",  "BR_6700",
                               "BR_7400",  "BR_7950",  "BR_8850",  "BR_9600",  "BR_10200", "BR_12200", "BR_12650",
                               "BR_12800", "BR_14250", "BR_15850", "BR_16000", "BR_18250", "BR_19850", "BR_23050",
                               "BR_23850", "BR_24000", "BR_32000", "BR_40000", "BR_DTX"};

template <class T>
T read(const char* word, bool* failed = nullptr) {
    krString text = word;
    T value{};
    value << text;
    if (failed != nullptr) {
        *failed = text.m_failed;
    }
    return value;
}

TEST(VkBitRate, EveryRateHasItsWord) {
    EXPECT_EQ(BitRateNum, 26);
    for (int i = 0; i < 26; ++i) {
        EXPECT_STREQ(krText(static_cast<VekSpchBitRate>(i)).c_str(), s_rates[i]);
        EXPECT_EQ(read<VekSpchBitRate>(s_rates[i]), i);
    }
    EXPECT_EQ(read<VekSpchBitRate>("BR_DTX"), VEK_SPCHBR_DTX);
    EXPECT_EQ(read<VekSpchBitRate>("BR_12200"), VEK_SPCHBR_12200);
}

TEST(VkBitRate, UnknownValueIsANumberAndUnknownWordFails) {
    // The largest value that the five bits of the enumeration hold.
    EXPECT_STREQ(krText(static_cast<VekSpchBitRate>(31)).c_str(), "31");
    bool failed = false;
    EXPECT_EQ(read<VekSpchBitRate>("BR_1", &failed), VEK_SPCHBR_10200) << "the first that begins so";
    EXPECT_FALSE(failed);
    EXPECT_EQ(read<VekSpchBitRate>("4750", &failed), VEK_SPCHBR_4750);
    EXPECT_TRUE(failed);
    EXPECT_EQ(read<VekSpchBitRate>("br_dtx", &failed), VEK_SPCHBR_DTX);
    EXPECT_FALSE(failed);
}

TEST(VkPcmLaw, Words) {
    EXPECT_STREQ(krText(VEK_PCM_MULAW).c_str(), "MULAW");
    EXPECT_STREQ(krText(VEK_PCM_ALAW).c_str(), "ALAW");
    EXPECT_STREQ(krText(VEK_PCM_LINEAR).c_str(), "LINEAR");
    EXPECT_STREQ(krText(static_cast<VekPCMLaw>(3)).c_str(), "3");
    EXPECT_EQ(read<VekPCMLaw>("a"), VEK_PCM_ALAW);
    EXPECT_EQ(read<VekPCMLaw>("Lin"), VEK_PCM_LINEAR);
    bool failed = false;
    read<VekPCMLaw>("x", &failed);
    EXPECT_TRUE(failed);
}

TEST(VkPcmFrequency, WordsAreTheNumbers) {
    const int values[] = {8000, 11025, 16000, 22050, 32000};
    for (const int value : values) {
        const auto frequency = static_cast<VekPCMFrequency>(value);
        EXPECT_EQ(krText(frequency).c_str(), std::to_string(value));
        EXPECT_EQ(read<VekPCMFrequency>(std::to_string(value).c_str()), frequency);
    }
    EXPECT_EQ(read<VekPCMFrequency>("1"), VEK_PCM_FREQ_11025);
    EXPECT_STREQ(krText(static_cast<VekPCMFrequency>(12345)).c_str(), "12345");
    bool failed = false;
    read<VekPCMFrequency>("44100", &failed);
    EXPECT_TRUE(failed);
}

TEST(VkBitRateIterator, BlankWordIsTheFirstNameAsAnEmptyWordFitsEvery) {
    krEnumIterator<VekSpchBitRate> rates("Rate");
    for (const char* const text : {" ", "\t", "BR_DTX; ;BR_4750", ";  ;"}) {
        rates.setList({VEK_SPCHBR_DTX});
        rates.translate(text);
        bool hasFirst = false;
        for (const VekSpchBitRate rate : rates) {
            hasFirst = hasFirst || rate == VEK_SPCHBR_4750;
        }
        EXPECT_TRUE(hasFirst) << "'" << text << "'";
    }
    EXPECT_THROW(rates.translate(""), krException);
    EXPECT_THROW(rates.translate(";"), krException);

    // Where only some rates are admissible, the first name of all may be none of them.
    rates.setList({VEK_SPCHBR_5150, VEK_SPCHBR_DTX});
    rates.initValidation();
    EXPECT_THROW(rates.translate(" "), krException);
    krEnumIterator<VekPCMLaw> laws("Law");
    laws.translate(" ");
    EXPECT_TRUE(laws.firstValue());
    EXPECT_EQ(laws.value(), VEK_PCM_MULAW);
}

TEST(VkBitRateIterator, BlankNumberIsNoNumber) {
    krEnumIterator<int> numbers("Number");
    EXPECT_THROW(numbers.translate(" "), krException);
    krIterator<int> list("List");
    EXPECT_THROW(list.translate("1; ;2"), krException);
}

TEST(VkBitRateIterator, StepsThroughWords) {
    krEnumIterator<VekSpchBitRate> rates("Rate");
    rates.setList({VEK_SPCHBR_4750, VEK_SPCHBR_DTX});
    EXPECT_TRUE(rates.firstValue());
    EXPECT_STREQ(rates.valueString().c_str(), "BR_4750");
    EXPECT_TRUE(rates.nextValue());
    EXPECT_STREQ(rates.valueString().c_str(), "BR_DTX");
    EXPECT_FALSE(rates.nextValue());
}

} // namespace
