// The names and texts of the severity scale.
#include "krresult.h"

struct ResultText {
    const char* name;
    const char* text;
};

static const ResultText resultTexts[krResultCount] = {{"UNDEFINED", "was not run"},
                                                      {"OK", "successfully"},
                                                      {"ACCURWRN", "wrong measure accuracy"},
                                                      {"BADSTSWRN", "modified control status"},
                                                      {"DATAWRN", "test data warning"},
                                                      {"FUNCWRN", "lib function warning"},
                                                      {"WARNING", "warning"},
                                                      {"ACCURFAIL", "accuracy error"},
                                                      {"DATAFAIL", "test data error"},
                                                      {"FUNCFAIL", "lib function error"},
                                                      {"EXCPTFAIL", "exception"},
                                                      {"FAIL", "error"}};

static bool inRange(krResult result) {
    return result >= 0 && result < krResultCount;
}

krString krResultName(krResult result) {
    return inRange(result) ? resultTexts[result].name : "UNKNOWN";
}

krString krResultString(krResult result) {
    return inRange(result) ? resultTexts[result].text : "unknown result";
}
