// Parameters: what does not depend on the type of the value, above all the asking, and the instances of the harness.
#include "krdefault.h"

#include "krdefault.inc"
#include "krexcept.h"
#include "krstream.h"

#include <csetjmp>
#include <cstdio>

template class krDefault_NSC<int>;
template class krDefault_NSC<bool>;
template class krDefault<int>;
template class krMapDefault<int>;
template class krMapDefault<bool>;

// The column flag of a value in quotes.
static constexpr int quoted = 1;

krParameter::krParameter(const krString& name, const krString& prompt) {
    setName(name, prompt);
}

void krParameter::setName(const krString& name, const krString& prompt) {
    m_name = name;
    m_prompt = prompt.empty() ? name : prompt;
}

void krParameter::reset() {
    m_hasValue = false;
}

krString krParameter::valueString() const {
    return krString();
}

krString krParameter::defaultString() const {
    return valueString();
}

krString krParameter::validString() const {
    return krString();
}

krString krParameter::description() const {
    return m_name + " = " + defaultString();
}

krString krParameter::prompt() const {
    const krString valid = validString();
    return valid.empty() ? m_prompt : m_prompt + " {" + valid + "}";
}

void krParameter::resetIterator() {
    m_hasValue = false;
}

bool krParameter::firstValue() {
    resetIterator();
    return nextValue();
}

bool krFirstValues(const krList<krParameter*>& parms) {
    for (krParameter* parm : parms) {
        if (!parm->firstValue()) {
            return false;
        }
    }
    return true;
}

bool krParameter::nextValue() {
    m_hasValue = !m_hasValue;
    return m_hasValue;
}

bool krParameter::isDeprecatedParm() {
    return false;
}

bool krParameter::isDeprecatedValue() {
    return m_deprecatedNow;
}

bool krParameter::setDeprecatedFlag(bool /*deprecated*/) {
    m_deprecatedNow = false;
    return false;
}

void krParameter::toOStream(krOStream& stream) const {
    if (!m_name.empty()) {
        stream << m_name << "=" << valueString() << " ";
    }
}

int krParameter::colmIndex() const {
    return -1;
}

static void putCell(krCStream& stream, int index, const krString& text) {
    if (index < 0) {
        stream << text;
    } else {
        stream.setColm(index, text);
    }
}

void krParameter::toCStream(krCStream& stream) const {
    krString text = valueString();
    if (m_name.empty()) {
        text.assign("");
    }
    if (m_deprecatedNow) {
        text = m_deprecatedText;
    }
    if ((m_columnFlags & quoted) != 0) {
        text = krString(" \"") + text + "\"";
    }
    putCell(stream, colmIndex(), text);
}

void krParameter::nameToCStream(krCStream& stream) const {
    putCell(stream, colmIndex(), m_name);
}

// The texts of one question, and what was open before it. They outlive a jump out of the reading, so that a fault
// leaves none of them behind.
struct krParameter::Dialogue {
    int openMessages = g_ostrm.openMessages();
    krString valid;
    krString question;
    krString proposal;
    krString answer;
};

void krParameter::ask(krIStream& stream, Dialogue& dialogue) {
    dialogue.valid = validString();
    dialogue.question = prompt();
    dialogue.proposal = defaultString();
    dialogue.answer = stream.getItemValue(m_name, dialogue.proposal, dialogue.question, dialogue.valid);
    translate(dialogue.answer);
}

void krParameter::askGuarded(krIStream& stream, Dialogue& dialogue) {
    try {
        if (setjmp(tsSignal::m_jmpbuf) != 0) {
            tsSignal::contain();
            throw krException(tsSignal::getInfo());
        }
        ask(stream, dialogue);
    } catch (const krException& fault) {
        g_ostrm.closeMessages(dialogue.openMessages);
        const bool conversion = fault.info()[0] != '\0';
        g_ostrm << "-" << (conversion ? fault.info() : fault.msg()) << "\n";
    }
}

void krParameter::fromIStream(krIStream& stream) {
    if (m_name.empty()) {
        return;
    }
    if (!m_enabled) {
        g_ostrm << " " << description() << "\n";
        return;
    }
    const OutputLevel oldLevel = g_ostrm.outLevel();
    if (stream.interactive()) {
        g_ostrm.setOutLevel(oldLevel | ERR | WARN | PERF);
    }
    {
        Dialogue dialogue;
        const krFaultMark keeper;
        askGuarded(stream, dialogue);
    }
    g_ostrm << " " << description() << "\n";
    if (stream.source() == 1 && c_out.m_file) {
        std::fflush(c_out.m_file);
    }
    g_ostrm.setOutLevel(oldLevel);
}

void krParameter::translate(const krString& /*text*/) {
}

int DefaultAlign::validItem(const krString& text) {
    return krDefault<int>::validItem(text) % 64;
}

int DefaultShift::validItem(const krString& text) {
    return krDefault<int>::validItem(text) & ~63;
}
