// The library's speech enumerations in text: their word tables and conversions.
#pragma once

#include "kriterator.h"
#include "krstring.h"
#include "vekdefs.h"

constexpr int BitRateNum = 26;
extern const krString BitRateStr[BitRateNum];
extern const int BitRateVal[BitRateNum];
constexpr int PCMLawNum = 3;
extern const krString PCMLawStr[PCMLawNum];
extern const int PCMLawVal[PCMLawNum];
constexpr int SampFreqNum = 5;
extern const krString SampFreqStr[SampFreqNum];
extern const int SampFreqVal[SampFreqNum];

krString& operator<<(krString& text, VekSpchBitRate value);
krString& operator<<(krString& text, VekPCMLaw value);
krString& operator<<(krString& text, VekPCMFrequency value);
VekSpchBitRate& operator<<(VekSpchBitRate& value, krString& text);
VekPCMLaw& operator<<(VekPCMLaw& value, krString& text);
VekPCMFrequency& operator<<(VekPCMFrequency& value, krString& text);

extern template class krDefault_NSC<VekSpchBitRate>;
extern template class krDefault_NSC<VekPCMLaw>;
KR_ENUM_TEMPLATES(extern, VekSpchBitRate)
KR_ENUM_TEMPLATES(extern, VekPCMLaw)
