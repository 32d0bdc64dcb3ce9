// Schur recursion of GSM full rate.
#include "vkc.h"

#include <algorithm>

namespace {

vkVector pSrc1;
vkVector pDst;
krStepIterator<int> lengthDst;
vkcGrid grid;

// The autocorrelation of the longest recursion but for its last lag, as halves of 32-bit words, low ones first.
constexpr Vek16s halves[] = {1754, 2064, 48, 1402, -50, 1172, 286, 944, -82, 698, 140, 486, 52, 240, 398, 116};

class TimSchurGSMFR : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return static_cast<double>(lengthDst.value()) * lengthDst.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
    virtual void setData();
};

bool TimSchurGSMFR::canStart() {
    vkcRebuild(lengthDst, "length Dst").set(4, 8, 2, '+');
    grid.begin({&lengthDst});
    pSrc1.init(m_func, vkArg::src);
    pDst.init(m_func, vkArg::dst);
    return true;
}

bool TimSchurGSMFR::makeData() {
    // Lag 0 comes on top of the lags of the coefficients.
    if (!pSrc1.createVector(vkcSize(lengthDst) + 1, setZero, 0, 0) ||
        !pDst.createVector(lengthDst.value(), setZero, 0, 0)) {
        return false;
    }
    setData();
    return true;
}

void TimSchurGSMFR::setData() {
    std::memcpy(pSrc1.m_32s, halves, std::min(sizeof halves, static_cast<std::size_t>(pSrc1.size())));
}

void TimSchurGSMFR::flushData() {
    for (vkVector* vector : {&pDst, &pSrc1}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimSchurGSMFR, veksSchur_GSMFR_32s16s, veksSchur_GSMFR_32s16s(pSrc1.m_32s, pDst.m_16s, lengthDst.value()))
