// The library's speech enumerations in text.
#include "vkenum.h"

#include "krdefault.inc"
#include "kriterator.inc"

const krString BitRateStr[BitRateNum] = {
    "BR_4750",  "BR_5150",  "BR_5300",  "BR_5900",  "BR_6300",  "BR_6600",  "BR_6700",  "BR_7400",  "BR_7950",
    "BR_8850",  "BR_9600",  "BR_10200", "BR_12200", "BR_12650", "BR_12800", "BR_14250", "BR_15850", "BR_16000",
    "BR_18250", "BR_19850", "BR_23050", "BR_23850", "BR_24000", "BR_32000", "BR_40000", "BR_DTX"};
const int BitRateVal[BitRateNum] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12,
                                    13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25};
const krString PCMLawStr[PCMLawNum] = {"MULAW", "ALAW", "LINEAR"};
const int PCMLawVal[PCMLawNum] = {0, 1, 2};
const krString SampFreqStr[SampFreqNum] = {"8000", "11025", "16000", "22050", "32000"};
const int SampFreqVal[SampFreqNum] = {8000, 11025, 16000, 22050, 32000};

krString& operator<<(krString& text, VekSpchBitRate value) {
    return text << krString::enumString(value, BitRateVal, BitRateStr, BitRateNum);
}

krString& operator<<(krString& text, VekPCMLaw value) {
    return text << krString::enumString(value, PCMLawVal, PCMLawStr, PCMLawNum);
}

krString& operator<<(krString& text, VekPCMFrequency value) {
    return text << krString::enumString(value, SampFreqVal, SampFreqStr, SampFreqNum);
}

VekSpchBitRate& operator<<(VekSpchBitRate& value, krString& text) {
    value = static_cast<VekSpchBitRate>(krString::enumValue(text, BitRateVal, BitRateStr, BitRateNum, 0));
    return value;
}

VekPCMLaw& operator<<(VekPCMLaw& value, krString& text) {
    value = static_cast<VekPCMLaw>(krString::enumValue(text, PCMLawVal, PCMLawStr, PCMLawNum, 0));
    return value;
}

VekPCMFrequency& operator<<(VekPCMFrequency& value, krString& text) {
    value = static_cast<VekPCMFrequency>(krString::enumValue(text, SampFreqVal, SampFreqStr, SampFreqNum, 0));
    return value;
}

template class krDefault_NSC<VekSpchBitRate>;
template class krDefault_NSC<VekPCMLaw>;
KR_ENUM_TEMPLATES(, VekSpchBitRate)
KR_ENUM_TEMPLATES(, VekPCMLaw)
