// Floating-point status guard: the words, their texts and what a line left in them.
#include "krctrl87.h"

#include "krcpuid.h"
#include "krio.h"

kr87 g_ctrl87;
krSSX g_ssx;

namespace {

struct WordText {
    unsigned bits;
    const char* text;
};

constexpr WordText statusTexts[] = {{0x1, "?Invalid "},  {0x2, "?Denormal "},   {0x4, "?Zerodivide "},
                                    {0x8, "?Overflow "}, {0x10, "?Underflow "}, {0x20, "_Inexact "}};
constexpr WordText control87Texts[] = {{0x1, "Invalid "},  {0x2, "Denormal "},   {0x4, "Zerodivide "},
                                       {0x8, "Overflow "}, {0x10, "Underflow "}, {0x20, "Inexact "}};
constexpr unsigned precision87Mask = 0x300;
constexpr WordText precision87Texts[] = {{0x0, "24 "}, {0x200, "53 "}, {0x300, "64 "}};
constexpr unsigned rounding87Mask = 0xC00;
constexpr WordText rounding87Texts[] = {{0xC00, "Zero "}, {0x800, "Up "}, {0x400, "Down "}, {0x0, "Near "}};
constexpr WordText controlSSXTexts[] = {{0x80, "Invalid "},   {0x100, "Denormal "},  {0x200, "Zerodivide "},
                                        {0x400, "Overflow "}, {0x800, "Underflow "}, {0x1000, "Inexact "}};
constexpr unsigned roundingSSXMask = 0x6000;
constexpr WordText roundingSSXTexts[] = {{0x6000, "Zero "}, {0x4000, "Up "}, {0x2000, "Down "}, {0x0, "Near "}};
constexpr unsigned flushSSXMask = 0x8000;
constexpr WordText flushSSXTexts[] = {{0x8000, "FlushToZero "}, {0x0, "NoFlushToZero "}};

constexpr const char* noSSX = "cpu has not SSX extension";

// The texts of all bits that are set.
template <int N>
krString bitTexts(unsigned word, const WordText (&table)[N]) {
    krString text;
    for (const WordText& row : table) {
        if ((word & row.bits) != 0) {
            text += row.text;
        }
    }
    return text;
}

// The text of the one value that a field has.
template <int N>
krString fieldText(unsigned word, unsigned mask, const WordText (&table)[N]) {
    for (const WordText& row : table) {
        if ((word & mask) == row.bits) {
            return row.text;
        }
    }
    return "";
}

krString statusText(unsigned word) {
    const krString text = bitTexts(word, statusTexts);
    return text.empty() ? krString("Ok") : text;
}

} // namespace

unsigned kr_get_cw_fpu() {
    unsigned short word = 0;
    __asm__ volatile("fnstcw %0" : "=m"(word));
    return word;
}

unsigned kr_get_sw_fpu() {
    unsigned short word = 0;
    __asm__ volatile("fnstsw %0" : "=m"(word));
    return word;
}

void kr_set_cw_fpu(unsigned bits, unsigned mask) {
    const auto word = static_cast<unsigned short>((kr_get_cw_fpu() & ~mask) | (bits & mask));
    __asm__ volatile("fldcw %0" : : "m"(word));
}

unsigned kr_clear_fpu() {
    const unsigned word = kr_get_sw_fpu();
    __asm__ volatile("fnclex");
    return word;
}

unsigned kr_get_ssx() {
    unsigned word = 0;
    __asm__ volatile("stmxcsr %0" : "=m"(word));
    return word;
}

void kr_set_ssx(unsigned bits, unsigned mask) {
    const unsigned word = (kr_get_ssx() & ~mask) | (bits & mask);
    __asm__ volatile("ldmxcsr %0" : : "m"(word));
}

#define KR_FILL_XMM(n) "pxor %%xmm" #n ", %%xmm" #n "\n\tpcmpeqd %%xmm" #n ", %%xmm" #n "\n\t"
void kr_destroy_ssx() {
    __asm__ volatile(KR_FILL_XMM(0) KR_FILL_XMM(1) KR_FILL_XMM(2) KR_FILL_XMM(3) KR_FILL_XMM(4) KR_FILL_XMM(5)
                         KR_FILL_XMM(6) KR_FILL_XMM(7) KR_FILL_XMM(8) KR_FILL_XMM(9) KR_FILL_XMM(10) KR_FILL_XMM(11)
                             KR_FILL_XMM(12) KR_FILL_XMM(13) KR_FILL_XMM(14) KR_FILL_XMM(15)
                     :
                     :
                     : "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11",
                       "xmm12", "xmm13", "xmm14", "xmm15");
}
#undef KR_FILL_XMM

bool vek_is_ssx_extension() {
    return vek_has_cpuid() && CPUID(1, 0).getBit(3, 25) != 0;
}

void ts87Base::set(unsigned bits, unsigned mask) const {
    kr_clear_fpu();
    kr_set_cw_fpu(bits, mask);
}

void ts87Base::disableInexactException() const {
    set((getSW() & 63U) | 32U, 63);
}

void ts87Base::setDefault() const {
    clear();
    set(Exception | Precision | Rounding, 0xF3F);
}

krString ts87Base::strSW(unsigned word) const {
    return statusText(word);
}

krString ts87Base::strCW(unsigned word) const {
    return fieldText(word, rounding87Mask, rounding87Texts) + fieldText(word, precision87Mask, precision87Texts) +
           bitTexts(word, control87Texts);
}

tsSSXBase::tsSSXBase() : m_present(vek_is_ssx_extension()) {
}

void tsSSXBase::set(unsigned bits, unsigned mask) const {
    if (m_present) {
        kr_set_ssx(bits, mask);
    }
}

void tsSSXBase::setDefault() const {
    // The denormals-are-zero bit stays as it was.
    set(Rounding | Exception | FlushZero, 0xFFBF);
}

void tsSSXBase::destroy() const {
    if (m_present) {
        kr_destroy_ssx();
    }
}

krString tsSSXBase::strExceptionState(unsigned word) const {
    return m_present ? statusText(word) : krString(noSSX);
}

krString tsSSXBase::strCW(unsigned word) const {
    if (!m_present) {
        return noSSX;
    }
    return fieldText(word, roundingSSXMask, roundingSSXTexts) + bitTexts(word, controlSSXTexts) +
           fieldText(word, flushSSXMask, flushSSXTexts);
}

void kr87::init() {
    m_cw = 0;
    m_sw = 0;
    m_base->setDefault();
}

void kr87::clear() {
    m_cw = 0;
    m_sw = 0;
    m_base->clear();
}

void kr87::stop() {
    m_sw |= m_base->getSW();
    m_cw |= m_base->getCW();
}

void krSSX::init() {
    m_status = 0;
    m_base->destroy();
    m_base->setDefault();
}

void krSSX::clear() {
    m_status = 0;
    m_base->destroy();
    m_base->clear();
}

void krRestoreCtrlWords() {
    // A fault can leave the x87 register stack half used.
    __asm__ volatile("fninit");
    g_ctrl87.init();
    g_ssx.init();
}

void krCtrlStatus::initCtrlStatus() {
    g_ctrl87.init();
    g_ssx.init();
}

bool krCtrlStatus::badCtrlStatus(bool& bad87, bool& badSSX) {
    bad87 = g_ctrl87.badStatus();
    badSSX = g_ssx.badStatus();
    return bad87 || badSSX;
}

void krCtrlStatus::printCtrlStatus(bool bad87, bool badSSX) {
    if (bad87) {
        g_ostrm << WARN << "-- Status    87: " << g_ctrl87.strSW() << "\n" << msgEnd;
    }
    if (badSSX) {
        g_ostrm << WARN << "-- Status    SSX: " << g_ssx.strExceptionState() << "\n" << msgEnd;
    }
}

void krCtrlStatus::clearCtrlStatus() {
    g_ctrl87.clear();
    g_ssx.clear();
}
