// Algebraic and adaptive codebooks of the wide-band codec, by rate.
#include "vkc.h"

namespace {

vkVector pSrcIdxs;
vkVector pDstFixedCodevec;
vkVector pSrcFixedTarget;
vkVector pSrcLtpResidual;
vkVector pSrcDstImpulseResponse;
vkVector pTmp;
vkVector pDstFixedVector;
vkVector pDstFltFixedVector;
vkVector pDstIndex;
vkVector pSrcDstExcitation;
vkVector pResultPrevIntPitchLagBounds;
vkVector pSrcAdptTarget;
vkVector pSrcImpulseResponse;
vkVector pSrcOpenLoopLag;
vkVector pPitchLag;
vkVector pPitchLagBounds;
vkVector pAdptIndex;
vkVector stateMemory;
krStepIterator<int> len;
krStepIterator<int> bfi;
krStepIterator<int> unusableFrame;
krStepIterator<int> Subframe;
krEnumIterator<VekSpchBitRate> mode;
vkcGrid grid;
Vek16s pFracPitchLag;
Vek16s pResultIntPitchLag;
VekAdaptiveCodebookState_AMRWB* pState;
int dataSize;

constexpr int words = 8;
constexpr int excitation = 505;
constexpr int past = 248;
// Fits the narrowest field.
constexpr int valAdptIndex = 19;

class TimACSWB : public prTest {
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
    virtual void setData();
};

bool TimACSWB::canStart() {
    vkcRebuild(len, "Lenght").setList({64});
    vkcRebuild(mode, "BitRate");
    for (const VekSpchBitRate rate :
         {VEK_SPCHBR_6600, VEK_SPCHBR_8850, VEK_SPCHBR_12650, VEK_SPCHBR_14250, VEK_SPCHBR_15850, VEK_SPCHBR_18250,
          VEK_SPCHBR_19850, VEK_SPCHBR_23050, VEK_SPCHBR_23850, VEK_SPCHBR_DTX}) {
        mode.add(rate);
        mode.addValidation(rate);
    }
    grid.begin({&len, &mode});
    for (vkVector* vector : {&pSrcIdxs, &pDstFixedCodevec, &pSrcFixedTarget, &pSrcLtpResidual, &pSrcDstImpulseResponse,
                             &pTmp, &pDstFixedVector, &pDstFltFixedVector}) {
        vector->init(m_func, vkArg::src);
    }
    // The eight words of the higher rates in four elements.
    pDstIndex.init(vk32s);
    return true;
}

bool TimACSWB::makeData() {
    if (!pSrcIdxs.createVector(words, setRand, -32768, 32767)) {
        return false;
    }
    for (vkVector* vector : {&pDstFixedCodevec, &pSrcFixedTarget, &pSrcLtpResidual, &pSrcDstImpulseResponse, &pTmp,
                             &pDstFixedVector, &pDstFltFixedVector}) {
        if (!vector->createVector(grid.room(len), setZero, 0, 0)) {
            return false;
        }
    }
    if (!pDstIndex.createVector(4, setZero, 0, 0)) {
        return false;
    }
    dataSize = pTmp.size();
    setData();
    return true;
}

// A target and a residual without order, and a decaying response.
void TimACSWB::setData() {
    for (int i = 0; i < len.value(); ++i) {
        pSrcFixedTarget.m_16s[i] = static_cast<Vek16s>(i * 7919 % 2001 - 1000);
        pSrcLtpResidual.m_16s[i] = static_cast<Vek16s>(i * 6101 % 1601 - 800);
        pTmp.m_16s[i] = static_cast<Vek16s>(i == 0 ? 4096 : (i * 4999 % 4001 - 2000) * 5 / (5 + i));
    }
}

void TimACSWB::flushData() {
    for (vkVector* vector : {&pDstIndex, &pDstFltFixedVector, &pDstFixedVector, &pTmp, &pSrcDstImpulseResponse,
                             &pSrcLtpResidual, &pSrcFixedTarget, &pDstFixedCodevec, &pSrcIdxs}) {
        vector->deleteVector();
    }
}

class TimADCSWB : public prTest {
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
    virtual bool setState();
};

bool TimADCSWB::canStart() {
    const bool decode = m_func.contains("Decode");
    vkcRebuild(len, "Lenght").setList({64});
    vkcFix(bfi, 0);
    vkcFix(unusableFrame, 0);
    if (decode) {
        vkcRebuild(bfi, "bfi").set(0, 1, 1, '+');
        vkcRebuild(unusableFrame, "unusableFrame").set(0, 1, 1, '+');
    }
    vkcRebuild(Subframe, "Subframe").set(0, 3, 1, '+');
    vkcRebuild(mode, "BitRate");
    for (const VekSpchBitRate rate :
         {VEK_SPCHBR_6600, VEK_SPCHBR_8850, VEK_SPCHBR_12650, VEK_SPCHBR_14250, VEK_SPCHBR_15850, VEK_SPCHBR_18250,
          VEK_SPCHBR_19850, VEK_SPCHBR_23050, VEK_SPCHBR_23850, VEK_SPCHBR_DTX}) {
        mode.add(rate);
        mode.addValidation(rate);
    }
    grid.begin({&len, &bfi, &unusableFrame, &Subframe, &mode});
    for (vkVector* vector : {&pSrcDstExcitation, &pResultPrevIntPitchLagBounds, &pSrcAdptTarget, &pSrcImpulseResponse,
                             &pSrcOpenLoopLag, &pPitchLag, &pPitchLagBounds, &pAdptIndex}) {
        vector->init(m_func, vkArg::src);
    }
    stateMemory.init(vk32s);
    return true;
}

bool TimADCSWB::makeData() {
    return pSrcDstExcitation.createVector(excitation, setRand, -4096, 4096) &&
           pResultPrevIntPitchLagBounds.createVector(2, setZero, 0, 0) &&
           pSrcAdptTarget.createVector(grid.room(len), setRand, -4096, 4096) &&
           pSrcImpulseResponse.createVector(grid.room(len), setRand, -4096, 4096) &&
           pSrcOpenLoopLag.createVector(2, setRand, 17, 115) && pPitchLag.createVector(2, setZero, 0, 0) &&
           pPitchLagBounds.createVector(2, setRand, 17, 115) && pAdptIndex.createVector(1, setZero, 0, 0) && setState();
}

bool TimADCSWB::setState() {
    int size = 0;
    if (!vkcDone(veksAdaptiveCodebookDecodeGetSize_AMRWB_16s(&size)) ||
        !stateMemory.createVector((size + 3) / 4, setZero, 0, 0)) {
        return false;
    }
    pState = reinterpret_cast<VekAdaptiveCodebookState_AMRWB*>(stateMemory.m_32s);
    return vkcDone(veksAdaptiveCodebookDecodeInit_AMRWB_16s(pState));
}

void TimADCSWB::flushData() {
    for (vkVector* vector :
         {&stateMemory, &pAdptIndex, &pPitchLagBounds, &pPitchLag, &pSrcOpenLoopLag, &pSrcImpulseResponse,
          &pSrcAdptTarget, &pResultPrevIntPitchLagBounds, &pSrcDstExcitation}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimACSWB, veksAlgebraicCodebookDecode_AMRWB_16s,
       veksAlgebraicCodebookDecode_AMRWB_16s(pSrcIdxs.m_16s, pDstFixedCodevec.m_16s, mode.value()))
VK_REG_I(TimACSWB, veksAlgebraicCodebookSearch_AMRWB_16s,
         veksAlgebraicCodebookSearch_AMRWB_16s(pSrcFixedTarget.m_16s, pSrcLtpResidual.m_16s,
                                               pSrcDstImpulseResponse.m_16s, pDstFixedVector.m_16s,
                                               pDstFltFixedVector.m_16s, mode.value(),
                                               reinterpret_cast<Vek16s*>(pDstIndex.m_32s)),
         vkcRestore(pSrcDstImpulseResponse.m_16s, pTmp.m_16s, dataSize))
VK_REG(TimADCSWB, veksAdaptiveCodebookDecode_AMRWB_16s,
       veksAdaptiveCodebookDecode_AMRWB_16s(valAdptIndex, &pFracPitchLag, pSrcDstExcitation.m_16s + past,
                                            &pResultIntPitchLag, pResultPrevIntPitchLagBounds.m_16s, Subframe.value(),
                                            bfi.value(), unusableFrame.value(), mode.value(), pState))
VK_REG(TimADCSWB, veksAdaptiveCodebookSearch_AMRWB_16s,
       veksAdaptiveCodebookSearch_AMRWB_16s(pSrcAdptTarget.m_16s, pSrcImpulseResponse.m_16s, pSrcOpenLoopLag.m_16s,
                                            pPitchLag.m_16s, pPitchLagBounds.m_16s, pSrcDstExcitation.m_16s + past,
                                            &pFracPitchLag, pAdptIndex.m_16s, Subframe.value(), mode.value()))
