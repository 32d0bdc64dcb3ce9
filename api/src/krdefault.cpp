// Parameters: what does not depend on the type of the value, above all the asking, and the instances of the harness.
#include "krdefault.h"

#include "krdefault.inc"
#include "krexcept.h"
#include "krstream.h"

#include <csetjmp>
#include <cstdio>
#include <cstring>

template class krDefault_NSC<int>;
template class krDefault_NSC<bool>;
template class krDefault<int>;
template class krMapDefault<int>;
template class krMapDefault<bool>;

namespace {

// Keeps the mark of the test in work while a parameter is read behind a mark of its own.
class MarkKeeper {
public:
    MarkKeeper() { std::memcpy(&m_saved, &tsSignal::m_jmpbuf, sizeof m_saved); }
    MarkKeeper(const MarkKeeper&) = delete;
    MarkKeeper& operator=(const MarkKeeper&) = delete;
    ~MarkKeeper() { std::memcpy(&tsSignal::m_jmpbuf, &m_saved, sizeof m_saved); }

private:
    jmp_buf m_saved;
};

constexpr int quoted = 1;

} // namespace

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

void krParameter::ask(krIStream& stream) {
    const krString valid = validString();
    const krString question = prompt();
    const krString proposal = defaultString();
    translate(stream.getItemValue(m_name, proposal, question, valid));
}

// The only frame between the mark and the jump's end: it holds nothing that a jump could leave half done.
void krParameter::askGuarded(krIStream& stream) {
    try {
        if (setjmp(tsSignal::m_jmpbuf) != 0) {
            tsSignal::contain();
            throw krException(tsSignal::getInfo());
        }
        ask(stream);
    } catch (const krException& fault) {
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
        const MarkKeeper keeper;
        askGuarded(stream);
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
