// Tilt compensation of G.729 Annex E and adaptive codebook search of Annex D.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pSrcImpulseResponse;
vkVector pSrcDstPrevExcitation;
vkVector pTmp;
vkVector pDstDelay;
vkVector pDst;
krStepIterator<int> subFrame;
vkcGrid grid;

constexpr int subframeLength = 40;
constexpr int excitation = 236;
constexpr Vek16s valOpenDelay = 60;
constexpr Vek16s val = -16384;

class TimSag729I : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return subframeLength; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimSag729I::canStart() {
    vkcRebuild(subFrame, "subFrame");
    if (m_func.contains("Search")) {
        subFrame.set(0, 1, 1, '+');
    } else {
        subFrame.setList({1});
    }
    grid.begin({&subFrame});
    for (vkVector* vector : {&pSrc, &pSrcImpulseResponse, &pSrcDstPrevExcitation, &pTmp, &pDstDelay, &pDst}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimSag729I::makeData() {
    return pSrc.createVector(subframeLength + 1, setRand, -2048, 2048) &&
           pSrcImpulseResponse.createVector(subframeLength, setValue, 2048, 0) &&
           pSrcDstPrevExcitation.createVector(excitation, setZero, 0, 0) &&
           pTmp.createVector(excitation, setZero, 0, 0) && pDstDelay.createVector(2, setZero, 0, 0) &&
           pDst.createVector(subframeLength, setZero, 0, 0);
}

void TimSag729I::flushData() {
    for (vkVector* vector : {&pDst, &pDstDelay, &pTmp, &pSrcDstPrevExcitation, &pSrcImpulseResponse, &pSrc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimSag729I, veksTiltCompensation_G729E_16s, veksTiltCompensation_G729E_16s(val, pSrc.m_16s, pDst.m_16s))
VK_REG(TimSag729I, veksAdaptiveCodebookSearch_G729D_16s,
       veksAdaptiveCodebookSearch_G729D_16s(valOpenDelay, pSrc.m_16s, pSrcImpulseResponse.m_16s,
                                            pSrcDstPrevExcitation.m_16s, static_cast<Vek16s>(subFrame.value()),
                                            pDstDelay.m_16s))
