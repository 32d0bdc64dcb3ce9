// Search of the long-term lag of GSM full rate.
#include "vkc.h"

namespace {

vkVector pSrc1, pSrc2;
krStepIterator<int> len;
Vek32s pDst;
int idx;

// The lags 40 to 120 of the codec.
constexpr int lag = 81;

class TimCCLMaxGSMFR : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "length").set(40, 60, 10, '+');
        initVectors({&pSrc1, &pSrc2}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        // The second signal reaches as far beyond the first as the longest lag.
        return pSrc1.createVector(len.value(), setValue, 0, 0) &&
               pSrc2.createVector(vkcSize(len) + lag - 1, setValue, 0, 0);
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG(TimCCLMaxGSMFR, veksCrossCorrLagMax_16s,
       veksCrossCorrLagMax_16s(pSrc1.m_16s, pSrc2.m_16s, len.value(), lag, &pDst, &idx))
