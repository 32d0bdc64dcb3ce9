// Which tests run: the conditions made of the -f and -t keys.
#pragma once

#include "krstring.h"

class krTest;

/// One -f or -t key.
class RunCondition {
public:
    RunCondition(bool isOr, const krString& pattern) : m_isOr(isOr), m_pattern(pattern) {}
    virtual ~RunCondition() = default;
    virtual bool tobeRun(const krTest* test) const = 0;

    bool m_isOr;
    krString m_pattern;
};

class RunCondition_f : public RunCondition {
public:
    explicit RunCondition_f(const krString& pattern) : RunCondition(true, pattern) {}
    bool tobeRun(const krTest* test) const override;
};
class RunCondition_fAnd : public RunCondition {
public:
    explicit RunCondition_fAnd(const krString& pattern) : RunCondition(false, pattern) {}
    bool tobeRun(const krTest* test) const override;
};
class RunCondition_fNot : public RunCondition {
public:
    explicit RunCondition_fNot(const krString& pattern) : RunCondition(false, pattern) {}
    bool tobeRun(const krTest* test) const override;
};
class RunCondition_fEqual : public RunCondition {
public:
    explicit RunCondition_fEqual(const krString& pattern) : RunCondition(true, pattern) {}
    bool tobeRun(const krTest* test) const override;
};
class RunCondition_t : public RunCondition {
public:
    explicit RunCondition_t(const krString& pattern) : RunCondition(true, pattern) {}
    bool tobeRun(const krTest* test) const override;
};
class RunCondition_tAnd : public RunCondition {
public:
    explicit RunCondition_tAnd(const krString& pattern) : RunCondition(false, pattern) {}
    bool tobeRun(const krTest* test) const override;
};
class RunCondition_tNot : public RunCondition {
public:
    explicit RunCondition_tNot(const krString& pattern) : RunCondition(false, pattern) {}
    bool tobeRun(const krTest* test) const override;
};
class RunCondition_tEqual : public RunCondition {
public:
    explicit RunCondition_tEqual(const krString& pattern) : RunCondition(true, pattern) {}
    bool tobeRun(const krTest* test) const override;
};

/// The form of a pattern key.
enum krConditionForm { krCondPlain = 0, krCondAnd = 1, krCondNot = 2, krCondEqual = 3, krCondEmpty = 4 };

/// Tells the form of a key's argument and takes the prefix off it.
krConditionForm getCondition(krString& pattern);

/// (any or-condition) and (all and-conditions); an empty or-group counts as met. The list owns its conditions.
class krConditions : public krList<RunCondition*> {
public:
    krConditions() = default;
    krConditions(const krConditions&) = delete;
    krConditions& operator=(const krConditions&) = delete;
    ~krConditions() override;
    bool tobeRun(const krTest* test) const;
};
