// Parameters: named values that are asked for, kept, printed and stepped through. A plain parameter has one value;
// those with several are in kriterator. The bodies of the templates are in krdefault.inc, for types that are not
// instantiated here.
#pragma once

#include "krio.h"
#include "krlist.h"
#include "krstring.h"

class krIStream;
class krCStream;

/// A named value, whatever its type. An empty name makes it silent: neither asked for nor printed.
class krParameter {
public:
    /// Without `prompt` the question is the name.
    explicit krParameter(const krString& name = "", const krString& prompt = "");
    krParameter(const krParameter&) = delete;
    krParameter& operator=(const krParameter&) = delete;

    /// Back to the state before the first value, with nothing to step through.
    virtual void reset();
    virtual krString valueString() const;
    /// The text that an empty answer stands for.
    virtual krString defaultString() const;
    /// The admissible words, joined by "|"; blank if there is no such limit.
    virtual krString validString() const;
    virtual krString description() const;
    virtual krString prompt() const;
    virtual void resetIterator();
    /// Goes to the first value; false if there is none.
    virtual bool firstValue();
    /// Goes to the next value; false after the last.
    virtual bool nextValue();
    /// Whether some values of this parameter have a deprecated name.
    virtual bool isDeprecatedParm();
    /// Whether the table shows the deprecated name at present.
    virtual bool isDeprecatedValue();
    virtual bool setDeprecatedFlag(bool deprecated);
    virtual void toOStream(krOStream& stream) const;
    /// The fixed table column of this parameter, -1 for none.
    virtual int colmIndex() const;
    virtual void toCStream(krCStream& stream) const;
    virtual void nameToCStream(krCStream& stream) const;
    /// Asks for the value. Bad input and faults are reported in a line and leave the value as it was.
    virtual void fromIStream(krIStream& stream);
    /// Takes the value from text; throws krException on bad text.
    virtual void translate(const krString& text);

    const krString& name() const { return m_name; }
    /// Names the parameter anew; without `prompt` the question is the name.
    void setName(const krString& name, const krString& prompt = "");
    bool hasValue() const { return m_hasValue; }
    /// False: the value is printed, but not asked for. Also the used mark of the common parameters.
    bool enabled() const { return m_enabled; }
    void setEnabled(bool enabled) { m_enabled = enabled; }
    /// 1: the table form of the value is put in quotes.
    void setColumnFlags(int flags) { m_columnFlags = flags; }

protected:
    ~krParameter() = default;

    krString m_name;
    krString m_prompt;
    bool m_hasValue = false;
    bool m_enabled = true;
    int m_columnFlags = 0;
    bool m_deprecatedNow = false;
    krString m_deprecatedText;

private:
    struct Dialogue;
    void ask(krIStream& stream, Dialogue& dialogue);
    void askGuarded(krIStream& stream, Dialogue& dialogue);
};

/// Goes to the first value of each parameter; false at the first one that has none.
bool krFirstValues(const krList<krParameter*>& parms);

/// A parameter with a value of type T, without text conversion.
template <class T>
class krDefault_NSC : public krParameter {
public:
    explicit krDefault_NSC(T value = T(), const krString& name = "", const krString& prompt = "");

    void reset() override;
    krString valueString() const override;
    bool isDeprecatedParm() override;
    bool setDeprecatedFlag(bool deprecated) override;
    void translate(const krString& text) override;

    virtual T value() const;
    virtual krString valueToString(T value) const;
    /// Sets the error mark of `text` if it spells no value.
    virtual T stringToValue(krString& text) const;
    /// The value that `text` spells; throws krException if it spells none.
    virtual T validItem(const krString& text);
    virtual ~krDefault_NSC();

    void setValue(T value) { m_value = value; }
    /// From now on the deprecated table form of `value` is `text`.
    void addDeprecated(T value, const krString& text);

protected:
    T m_value;
    krList<T> m_deprecatedValues;
    krStringList m_deprecatedTexts;
};

/// A parameter whose text form is that of the string operators.
template <class T>
class krDefault : public krDefault_NSC<T> {
public:
    using krDefault_NSC<T>::krDefault_NSC;
    krString valueToString(T value) const override;
    T stringToValue(krString& text) const override;
};

/// A parameter whose values have words: `parm[value] = "word"`. A beginning of a word, in any case, stands for it.
template <class T>
class krMapDefault : public krDefault_NSC<T> {
public:
    using krDefault_NSC<T>::krDefault_NSC;
    krString validString() const override;
    krString valueToString(T value) const override;
    T stringToValue(krString& text) const override;
    /// The word of `value`, which is added with an empty word if it is new.
    krString& operator[](T value);

private:
    krList<T> m_mapValues;
    krStringList m_mapWords;
};

extern template class krDefault_NSC<int>;
extern template class krDefault_NSC<bool>;
extern template class krDefault<int>;
extern template class krMapDefault<int>;
extern template class krMapDefault<bool>;

/// The misalignment of vectors: held to the remainder by 64.
class DefaultAlign : public krDefault<int> {
public:
    using krDefault<int>::krDefault;
    int validItem(const krString& text) override;
};

/// The mutual shift of vectors: held to multiples of 64.
class DefaultShift : public krDefault<int> {
public:
    using krDefault<int>::krDefault;
    int validItem(const krString& text) override;
};
