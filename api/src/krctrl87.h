// Floating-point status guard: the x87 and SSX control and status words, set to a known state before each measured line
// and looked at after it.
#pragma once

#include "krstring.h"

unsigned kr_get_cw_fpu();
unsigned kr_get_sw_fpu();
void kr_set_cw_fpu(unsigned bits, unsigned mask);
/// Clears the status and returns it as it was.
unsigned kr_clear_fpu();
unsigned kr_get_ssx();
void kr_set_ssx(unsigned bits, unsigned mask);
/// Fills the vector registers with all ones, so that a function that reads one which it did not set shows it.
void kr_destroy_ssx();
bool vek_is_ssx_extension();

/// Access to the x87 words. Zero-divide is the one exception that is not masked by default.
class ts87Base {
public:
    static constexpr unsigned Precision = 0x200;
    static constexpr unsigned Rounding = 0;
    static constexpr unsigned Exception = 0x3B;

    unsigned getCW() const { return kr_get_cw_fpu(); }
    unsigned getSW() const { return kr_get_sw_fpu(); }
    void set(unsigned bits, unsigned mask) const;
    unsigned clear() const { return kr_clear_fpu(); }
    void enableExceptions() const { set(0, 63); }
    void disableExceptions() const { set(63, 63); }
    void disableInexactException() const;
    void setDefault() const;
    krString strSW(unsigned word) const;
    krString strCW(unsigned word) const;
};

/// Access to the SSX word; does nothing and gives 0 on a processor without the extension.
class tsSSXBase {
public:
    static constexpr unsigned Rounding = 0;
    static constexpr unsigned FlushZero = 0x8000;
    static constexpr unsigned Exception = 0x1F80;

    tsSSXBase();
    explicit tsSSXBase(bool present) : m_present(present) {}
    unsigned get() const { return m_present ? kr_get_ssx() : 0; }
    void set(unsigned bits, unsigned mask) const;
    void clear() const { set(0, 0x3F); }
    void enableExceptions() const { set(0, 0x1F80); }
    void disableExceptions() const { set(0x1F80, 0x1F80); }
    void disableInexactException() const { set((get() & 0x1F80) | 0x1000, 0x1F80); }
    void setDefault() const;
    void destroy() const;
    krString strExceptionState(unsigned word) const;
    krString strCW(unsigned word) const;

private:
    bool m_present;
};

/// What a line left behind in the x87 words.
class kr87 {
public:
    kr87() : m_base(new ts87Base) {}
    kr87(const kr87&) = delete;
    kr87& operator=(const kr87&) = delete;
    ~kr87() { delete m_base; }
    void init();
    void clear();
    void start() { m_base->clear(); }
    void stop();
    unsigned getCW() const { return m_cw; }
    unsigned getSW() const { return m_sw; }
    krString strCW() const { return m_base->strCW(m_cw); }
    krString strSW() const { return m_base->strSW(m_sw); }
    bool badStatus() const { return strSW().contains('?'); }

private:
    ts87Base* m_base;
    unsigned m_cw = 0;
    unsigned m_sw = 0;
};

/// What a line left behind in the SSX word.
class krSSX {
public:
    krSSX() : m_base(new tsSSXBase) {}
    explicit krSSX(bool present) : m_base(new tsSSXBase(present)) {}
    krSSX(const krSSX&) = delete;
    krSSX& operator=(const krSSX&) = delete;
    ~krSSX() { delete m_base; }
    void init();
    void clear();
    void start() { m_base->destroy(); }
    void stop() { m_status |= m_base->get(); }
    unsigned get() const { return m_status; }
    krString strCW() const { return m_base->strCW(m_status); }
    krString strExceptionState() const { return m_base->strExceptionState(m_status); }
    bool badStatus() const { return strExceptionState().contains('?'); }

private:
    tsSSXBase* m_base;
    unsigned m_status = 0;
};

extern kr87 g_ctrl87;
extern krSSX g_ssx;

/// Sets both units' control words to the default, whatever a fault left in them.
void krRestoreCtrlWords();

/// A base of the test: both units together.
class krCtrlStatus {
public:
    static void initCtrlStatus();
    /// Tells for each unit whether its status is bad; true if any is.
    static bool badCtrlStatus(bool& bad87, bool& badSSX);
    static void printCtrlStatus(bool bad87, bool badSSX);
    static void clearCtrlStatus();
};
