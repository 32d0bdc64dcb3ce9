// Levinson-Durbin recursion of G.728, from the start and from a lower order on.
#include "vkc.h"

namespace {

vkVector pSrcAutoCorr, pSrcDstLPC, pTmp, pDstLPC;
krStepIterator<int> order, numSrcLPC;
int dataSize;
Vek32s pSrcDstResidualEnergy;
Vek16s pSrcDstScaleFactor, rc1;
Vek32s residualEnergy;
Vek16s scaleFactor;
Vek16s* const pDstRC1 = &rc1;
Vek32s* const pDstResidualEnergy = &residualEnergy;
Vek16s* const pDstScaleFactor = &scaleFactor;

constexpr int longest = 50;
// The filter that the recursion goes on from: its format, and the energy that it leaves.
constexpr Vek16s startScale = 13;
constexpr Vek32s startEnergy = 1600000000;

// Autocorrelation of one signal: the near lags, and those beyond. The recursion reaches the longest filter both from
// the start and from the five coefficients below.
constexpr int near = 20;
constexpr Vek16s nearLags[near] = {32767, 9915, 15799, 4398, 5910, 8168, 6255, 4381, 6479, 1258,
                                   6377,  2862, 3486,  6848, 3349, 7990, 4267, 2940, 8943, 11829};
constexpr int far = 31;
constexpr Vek16s farLags[far] = {16996, 21861, 1120, 13659, -3303, 10508, 2642, 5292,  3876,  4418,  1896,
                                 6369,  1017,  9036, 6494,  7634,  8952,  3002, 10258, 13127, 14810, 18644,
                                 6043,  2130,  7035, -3000, 11723, -3852, 9346, 380,   6070};
constexpr Vek16s filter[longest] = {1969, -3869, -363, 1139, 211, 1028, 380,  -1465, -877, -527, 296, 686, 321,
                                    -306, -522,  -177, 289,  388, 80,   -258, -280,  -17,  220,  197, -21, -181,
                                    -133, 41,    145,  86,   -50, -113, -52,  51,    86,   29,   -48, -64, -13,
                                    43,   46,    2,    -37,  -32, 4,    30,   22,    -7,   -24,  -14};

class TimLp728 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(order, "order").set(10, 50, 40, '+');
        initVectors({&pSrcAutoCorr, &pSrcDstLPC, &pTmp, &pDstLPC}, vkArg::src);
        dataSize = pTmp.item(m_func) * longest;
        if (m_inPlace) {
            vkcRebuild(numSrcLPC, "numSrcLPC").set(0, 5, 5, '+');
            return walk({&order, &numSrcLPC});
        }
        vkcFix(numSrcLPC, 1);
        return walk({&order});
    }

    bool makeData() override {
        // The data stand for the longest filter, whatever the order is.
        if (!pSrcAutoCorr.createVector(near + far, setZero, 0, 0)) {
            return false;
        }
        if (m_inPlace ? !pSrcDstLPC.createVector(longest, setZero, 0, 0) || !pTmp.createVector(longest, setZero, 0, 0)
                      : !pDstLPC.createVector(order.value(), setZero, 0, 0)) {
            return false;
        }
        SetData();
        return true;
    }

    double getDivisor() override { return order.value(); }

    virtual void SetData() {
        std::memcpy(pSrcAutoCorr.m_16s, nearLags, sizeof nearLags);
        std::memcpy(pSrcAutoCorr.m_16s + near, farLags, sizeof farLags);
        if (m_inPlace) {
            std::memcpy(pTmp.m_16s, filter, sizeof filter);
        }
    }

private:
    const bool m_inPlace = m_func.inplace();
};

} // namespace

VK_REG_I(TimLp728, veksLevinsonDurbin_G728_16s_ISfs,
         veksLevinsonDurbin_G728_16s_ISfs(pSrcAutoCorr.m_16s, numSrcLPC.value(), order.value(), pSrcDstLPC.m_16s,
                                          &pSrcDstResidualEnergy, &pSrcDstScaleFactor),
         vkcRestore(pSrcDstLPC.m_16s, pTmp.m_16s, dataSize);
         pSrcDstResidualEnergy = startEnergy; pSrcDstScaleFactor = startScale)
VK_REG(TimLp728, veksLevinsonDurbin_G728_16s_Sfs,
       veksLevinsonDurbin_G728_16s_Sfs(pSrcAutoCorr.m_16s, order.value(), pDstLPC.m_16s, pDstRC1, pDstResidualEnergy,
                                       pDstScaleFactor))
