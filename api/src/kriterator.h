// Parameters with several values: the lists and steps that a test's grid is made of. Text forms are "1; 2; 5" for a
// list and "1; 10; +1" for a step. The bodies of the templates are in kriterator.inc, for types that are not
// instantiated here.
#pragma once

#include "krdefault.h"

#include <initializer_list>

/// A parameter with a list of values, without text conversion.
template <class T>
class krIterator_NSC : public krDefault_NSC<T>, public krList<T> {
public:
    explicit krIterator_NSC(const krString& name = "", const krString& prompt = "");
    ~krIterator_NSC() override;

    void reset() override;
    krString defaultString() const override;
    bool nextValue() override;
    /// Takes the list from text; on bad text it throws krException and keeps the former list.
    void translate(const krString& text) override;
    /// Appends a value.
    virtual void add(T value);

    /// Puts `values` in place of the list.
    void setList(std::initializer_list<T> values);
    krString listDescr(const krList<T>& list, const krString& separator) const;

protected:
    typename krList<T>::iterator m_current;
};

/// A list parameter whose text form is that of the string operators.
template <class T>
class krIterator : public krIterator_NSC<T> {
public:
    using krIterator_NSC<T>::krIterator_NSC;
    krString valueToString(T value) const override;
    T stringToValue(krString& text) const override;
};

/// The operation of a step, by its character; stepList: the list form is in force.
enum StepOprtn : int { stepAdd = '+', stepSub = '-', stepMul = '*', stepList = '?' };

/// A parameter that is a list, or steps from a first to a last value, the limit included.
template <class T>
class krStepIterator : public krIterator<T> {
public:
    using krIterator<T>::krIterator;
    krString defaultString() const override;
    krString description() const override;
    krString prompt() const override;
    bool nextValue() override;
    void translate(const krString& text) override;

    /// Puts a step in force, for example set(40, 80, 10, '+'); throws krException if it can't reach its limit.
    void set(T first, T last, T step, char oper);
    /// Puts a list in force.
    void setList(std::initializer_list<T> values);
    /// Throws krException on a step that can't reach its limit; tells whether it goes down.
    void validate(T first, T last, T step, StepOprtn oper, bool& down) const;

    T first() const { return m_first; }
    T last() const { return m_last; }
    T step() const { return m_step; }
    StepOprtn oper() const { return m_oper; }
    bool down() const { return m_down; }

private:
    bool translateStep(const krString& text);
    bool makeStep();

    T m_first = T();
    T m_last = T();
    T m_step = T();
    StepOprtn m_oper = stepList;
    bool m_down = false;
};

/// A list parameter that can be held to admissible values, without text conversion.
template <class T>
class krEnumIterator_NCS : public krIterator_NSC<T> {
public:
    using krIterator_NSC<T>::krIterator_NSC;
    krString validString() const override;
    void add(T value) override;
    /// Makes the present values the admissible ones.
    virtual void initValidation();
    /// Every value is admissible again.
    virtual void resetValidation();
    /// Admits `value`, and before it the present values if there was no limit yet.
    virtual void addValidation(T value);
    virtual void addValidation(const krList<T>* values);

protected:
    bool isValid(T value) const;

    krList<T> m_valid;
    bool m_hasValid = false;
};

/// A list parameter of an enumeration, whose text form is that of the string operators.
template <class T>
class krEnumIterator : public krEnumIterator_NCS<T> {
public:
    using krEnumIterator_NCS<T>::krEnumIterator_NCS;
    krString valueToString(T value) const override;
    T stringToValue(krString& text) const override;
};

// The instances of these templates for one type; `storage` is extern where they are only declared.
#define KR_ENUM_TEMPLATES(storage, T)                                                                                  \
    storage template class krIterator_NSC<T>;                                                                          \
    storage template class krEnumIterator_NCS<T>;                                                                      \
    storage template class krEnumIterator<T>;
#define KR_STEP_TEMPLATES(storage, T)                                                                                  \
    KR_ENUM_TEMPLATES(storage, T)                                                                                      \
    storage template class krIterator<T>;                                                                              \
    storage template class krStepIterator<T>;

extern template class krDefault_NSC<short>;
extern template class krDefault_NSC<unsigned int>;
KR_STEP_TEMPLATES(extern, int)
KR_STEP_TEMPLATES(extern, short)
KR_STEP_TEMPLATES(extern, unsigned int)
