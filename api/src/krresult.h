// The severity scale that every line, test and run ends on. A result is only ever raised.
#pragma once

#include "krstring.h"

enum krResult : int {
    krUndefined = 0,
    krOk = 1,
    krAccurWrn = 2,
    krBadStsWrn = 3,
    krDataWrn = 4,
    krFuncWrn = 5,
    krWarning = 6,
    krAccurFail = 7,
    krDataFail = 8,
    krFuncFail = 9,
    krExcptFail = 10,
    krFail = 11
};
constexpr int krResultCount = 12;

/// Whether the value is one of the scale; a measured function may return anything.
inline bool krIsResult(krResult result) {
    return result >= krUndefined && result < krResultCount;
}
inline bool krIsFailure(krResult result) {
    return result >= krAccurFail;
}
inline bool krIsWarning(krResult result) {
    return result >= krAccurWrn && result <= krWarning;
}
/// The greater of the two.
inline krResult krWorst(krResult a, krResult b) {
    return a < b ? b : a;
}

/// "OK", "ACCURWRN" and so on; "UNKNOWN" out of range.
krString krResultName(krResult result);
/// "successfully", "wrong measure accuracy" and so on; "unknown result" out of range.
krString krResultString(krResult result);
