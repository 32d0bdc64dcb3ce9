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

krString krResultName(krResult result) {
    return krIsResult(result) ? resultTexts[result].name : "UNKNOWN";
}

krString krResultString(krResult result) {
    return krIsResult(result) ? resultTexts[result].text : "unknown result";
}
