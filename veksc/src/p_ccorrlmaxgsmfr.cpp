// Search of the long-term lag of GSM full rate.
#include "vkc.h"

namespace {

vkVector pSrc1;
vkVector pSrc2;
krStepIterator<int> len;
vkcGrid grid;
Vek32s pDst;
int idx;

// The lags 40 to 120 of the codec.
constexpr int lag = 81;

class TimCCLMaxGSMFR : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimCCLMaxGSMFR::canStart() {
    vkcRebuild(len, "length").set(40, 60, 10, '+');
    grid.begin({&len});
    for (vkVector* vector : {&pSrc1, &pSrc2}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimCCLMaxGSMFR::makeData() {
    // The second signal reaches as far behind the first as the longest lag.
    return pSrc1.createVector(len.value(), setValue, 0, 0) &&
           pSrc2.createVector(vkcSize(len) + lag - 1, setValue, 0, 0);
}

void TimCCLMaxGSMFR::flushData() {
    for (vkVector* vector : {&pSrc2, &pSrc1}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimCCLMaxGSMFR, veksCrossCorrLagMax_16s,
       veksCrossCorrLagMax_16s(pSrc1.m_16s, pSrc2.m_16s, len.value(), lag, &pDst, &idx))
