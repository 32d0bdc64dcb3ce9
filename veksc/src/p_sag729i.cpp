// Tilt compensation of G.729 Annex E and adaptive codebook search of Annex D.
#include "vkc.h"

namespace {

vkVector pSrc, pSrcImpulseResponse, pSrcDstPrevExcitation, pTmp, pDstDelay, pDst;
krStepIterator<int> subFrame;

constexpr int subframeLength = 40;
constexpr int excitation = 236;
constexpr Vek16s valOpenDelay = 60;
constexpr Vek16s val = -16384;

class TimSag729I : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcSwitch(subFrame, "subFrame", m_func.contains("Search"));
        initVectors({&pSrc, &pSrcImpulseResponse, &pSrcDstPrevExcitation, &pTmp, &pDstDelay, &pDst}, vkArg::src);
        return walk({&subFrame});
    }

    bool makeData() override {
        return pSrc.createVector(subframeLength + 1, setRand, -2048, 2048) &&
               pSrcImpulseResponse.createVector(subframeLength, setValue, 2048, 0) &&
               pSrcDstPrevExcitation.createVector(excitation, setZero, 0, 0) &&
               pTmp.createVector(excitation, setZero, 0, 0) && pDstDelay.createVector(2, setZero, 0, 0) &&
               pDst.createVector(subframeLength, setZero, 0, 0);
    }

    double getDivisor() override { return subframeLength; }
};

} // namespace

VK_REG(TimSag729I, veksTiltCompensation_G729E_16s, veksTiltCompensation_G729E_16s(val, pSrc.m_16s, pDst.m_16s))
VK_REG(TimSag729I, veksAdaptiveCodebookSearch_G729D_16s,
       veksAdaptiveCodebookSearch_G729D_16s(valOpenDelay, pSrc.m_16s, pSrcImpulseResponse.m_16s,
                                            pSrcDstPrevExcitation.m_16s, static_cast<Vek16s>(subFrame.value()),
                                            pDstDelay.m_16s))
