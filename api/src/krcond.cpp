// Which tests run: case-sensitive patterns on function names and class names, with no wildcards.
#include "krcond.h"

#include "krtest.h"

bool RunCondition_f::tobeRun(const krTest* test) const {
    return test->m_name.contains(m_pattern);
}

bool RunCondition_fAnd::tobeRun(const krTest* test) const {
    return test->m_name.contains(m_pattern);
}

bool RunCondition_fNot::tobeRun(const krTest* test) const {
    return !test->m_name.contains(m_pattern);
}

bool RunCondition_fEqual::tobeRun(const krTest* test) const {
    return test->m_name == m_pattern;
}

bool RunCondition_t::tobeRun(const krTest* test) const {
    return test->m_info.m_class.contains(m_pattern);
}

bool RunCondition_tAnd::tobeRun(const krTest* test) const {
    return test->m_info.m_class.contains(m_pattern);
}

bool RunCondition_tNot::tobeRun(const krTest* test) const {
    return !test->m_info.m_class.contains(m_pattern);
}

bool RunCondition_tEqual::tobeRun(const krTest* test) const {
    return test->m_info.m_class == m_pattern;
}

krConditionForm getCondition(krString& pattern) {
    if (pattern.empty()) {
        return krCondEmpty;
    }
    krConditionForm form = krCondPlain;
    switch (pattern[0]) {
    case '=':
        form = krCondEqual;
        break;
    case '+':
        form = krCondAnd;
        break;
    case '-':
        form = krCondNot;
        break;
    default:
        return krCondPlain;
    }
    pattern = pattern.substr(1);
    return pattern.empty() ? krCondEmpty : form;
}

krConditions::~krConditions() {
    for (RunCondition* condition : *this) {
        delete condition;
    }
}

bool krConditions::tobeRun(const krTest* test) const {
    bool anyOr = false;
    bool met = false;
    for (const RunCondition* condition : *this) {
        if (condition->m_isOr) {
            anyOr = true;
            met = met || condition->tobeRun(test);
        }
    }
    if (anyOr && !met) {
        return false;
    }
    for (const RunCondition* condition : *this) {
        if (!condition->m_isOr && !condition->tobeRun(test)) {
            return false;
        }
    }
    return true;
}
