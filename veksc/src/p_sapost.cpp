// Post filter of GSM AMR, by rate.
#include "vkc.h"

namespace {

vkVector pSrcQLpc;
vkVector pSrcSpch;
vkVector pTmp_1;
vkVector pTmp_2;
vkVector pSrcDstFormantFIRState;
vkVector pSrcDstFormantIIRState;
vkVector pDstFltSpch;
krEnumIterator<VekSpchBitRate> mode;
vkcGrid grid;
Vek16s pValResultPrevResidual[1];
Vek16s pValResultPrevScalingGain[1];
int dataSize;

constexpr int len = 44;
constexpr int len_1 = 160;
constexpr int order = 10;

class TimSapost : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return len_1; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
    virtual void setDataLPC();
};

bool TimSapost::canStart() {
    vkcRebuild(mode, "BitRate");
    for (const VekSpchBitRate rate :
         {VEK_SPCHBR_4750, VEK_SPCHBR_5150, VEK_SPCHBR_5900, VEK_SPCHBR_6700, VEK_SPCHBR_7400, VEK_SPCHBR_7950,
          VEK_SPCHBR_10200, VEK_SPCHBR_12200, VEK_SPCHBR_DTX}) {
        mode.add(rate);
        mode.addValidation(rate);
    }
    grid.begin({&mode});
    for (vkVector* vector :
         {&pSrcQLpc, &pSrcSpch, &pTmp_1, &pTmp_2, &pSrcDstFormantFIRState, &pSrcDstFormantIIRState, &pDstFltSpch}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimSapost::makeData() {
    dataSize = order * vkVector::item(m_func);
    if (!pSrcQLpc.createVector(len, setRand, 0, 2048) || !pSrcSpch.createVector(len_1, setRand, 0, 2048) ||
        !pTmp_1.createVector(order, setRand, 0, 2048) || !pTmp_2.createVector(order, setRand, 0, 2048) ||
        !pSrcDstFormantFIRState.createVector(order, setZero, 0, 0) ||
        !pSrcDstFormantIIRState.createVector(order, setZero, 0, 0) || !pDstFltSpch.createVector(len_1, setZero, 0, 0)) {
        return false;
    }
    setDataLPC();
    return true;
}

void TimSapost::setDataLPC() {
    for (int i = 0; i < 4; ++i) {
        pSrcQLpc.m_16s[11 * i] = 4096;
    }
}

void TimSapost::flushData() {
    for (vkVector* vector :
         {&pDstFltSpch, &pSrcDstFormantIIRState, &pSrcDstFormantFIRState, &pTmp_2, &pTmp_1, &pSrcSpch, &pSrcQLpc}) {
        vector->deleteVector();
    }
}

void restore() {
    vkcRestore(pSrcDstFormantFIRState.m_16s, pTmp_1.m_16s, dataSize);
    vkcRestore(pSrcDstFormantIIRState.m_16s, pTmp_2.m_16s, dataSize);
}

} // namespace

VK_REG_I(TimSapost, veksPostFilter_GSMAMR_16s,
         veksPostFilter_GSMAMR_16s(pSrcQLpc.m_16s, pSrcSpch.m_16s, pValResultPrevResidual, pValResultPrevScalingGain,
                                   pSrcDstFormantFIRState.m_16s, pSrcDstFormantIIRState.m_16s, pDstFltSpch.m_16s,
                                   mode.value()),
         restore())
