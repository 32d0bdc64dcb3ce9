// Search of the algebraic codebook of GSM AMR, by rate and subframe.
#include "vkc.h"

namespace {

vkVector pSrcFixedTarget;
vkVector pSrcLtpResidual;
vkVector pSrcDstImpulseResponse;
vkVector pDstFixedVector;
vkVector pDstFltFixedVector;
vkVector pDstEncPosSign;
vkVector pTmp;
krStepIterator<int> subFrame;
krEnumIterator<VekSpchBitRate> mode;
vkcGrid grid;
int dataSize;

constexpr int subframeLength = 40;
constexpr int responseLength = 80;
// Elements before the response that the call takes.
constexpr int before = 40;
constexpr Vek16s valIntPitchLag = 30;
constexpr Vek16s valBoundQAdptGain = 8192;

class TimAfc : public prTest {
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
    virtual void setDataImpulse();
};

bool TimAfc::canStart() {
    vkcRebuild(subFrame, "SubFrame").set(0, 3, 1, '+');
    vkcRebuild(mode, "BitRate");
    for (const VekSpchBitRate rate :
         {VEK_SPCHBR_4750, VEK_SPCHBR_5150, VEK_SPCHBR_5900, VEK_SPCHBR_6700, VEK_SPCHBR_7400, VEK_SPCHBR_7950,
          VEK_SPCHBR_10200, VEK_SPCHBR_12200, VEK_SPCHBR_DTX}) {
        mode.add(rate);
        mode.addValidation(rate);
    }
    grid.begin({&mode, &subFrame});
    for (vkVector* vector : {&pSrcFixedTarget, &pSrcLtpResidual, &pSrcDstImpulseResponse, &pDstFixedVector,
                             &pDstFltFixedVector, &pDstEncPosSign, &pTmp}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimAfc::makeData() {
    dataSize = responseLength * vkVector::item(m_func);
    if (!pSrcFixedTarget.createVector(subframeLength, setRand, -2048, 2048) ||
        !pSrcLtpResidual.createVector(subframeLength, setRand, -2048, 2048) ||
        !pSrcDstImpulseResponse.createVector(responseLength, setZero, 0, 0) ||
        !pDstFixedVector.createVector(subframeLength, setZero, 0, 0) ||
        !pDstFltFixedVector.createVector(subframeLength, setZero, 0, 0) ||
        !pDstEncPosSign.createVector(10, setZero, 0, 0) || !pTmp.createVector(responseLength, setRand, -2048, 2048)) {
        return false;
    }
    setDataImpulse();
    return true;
}

// What each call finds: the response is restored from here.
void TimAfc::setDataImpulse() {
    Vek16s* const response = pTmp.m_16s + before;
    veksZero_16s(response, responseLength - before);
    response[0] = 4096;
}

void TimAfc::flushData() {
    for (vkVector* vector : {&pTmp, &pDstEncPosSign, &pDstFltFixedVector, &pDstFixedVector, &pSrcDstImpulseResponse,
                             &pSrcLtpResidual, &pSrcFixedTarget}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG_I(TimAfc, veksAlgebraicCodebookSearch_GSMAMR_16s,
         veksAlgebraicCodebookSearch_GSMAMR_16s(valIntPitchLag, valBoundQAdptGain, pSrcFixedTarget.m_16s,
                                                pSrcLtpResidual.m_16s, pSrcDstImpulseResponse.m_16s + before,
                                                pDstFixedVector.m_16s, pDstFltFixedVector.m_16s, pDstEncPosSign.m_16s,
                                                static_cast<Vek16s>(subFrame.value()), mode.value()),
         vkcRestore(pSrcDstImpulseResponse.m_16s, pTmp.m_16s, dataSize))
