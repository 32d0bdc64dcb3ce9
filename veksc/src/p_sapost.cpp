// Post filter of GSM AMR, by rate.
#include "vkc.h"

namespace {

vkVector pSrcQLpc, pSrcSpch, pTmp_1, pTmp_2, pSrcDstFormantFIRState, pSrcDstFormantIIRState, pDstFltSpch;
krEnumIterator<VekSpchBitRate> mode;
Vek16s pValResultPrevResidual[1], pValResultPrevScalingGain[1];
int dataSize;

constexpr int len = 44;
constexpr int len_1 = 160;
constexpr int order = 10;

class TimSapost : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcModes(vkcRebuild(mode, "BitRate"), vkcRatesGSMAMR, vkcSilence);
        initVectors(
            {&pSrcQLpc, &pSrcSpch, &pTmp_1, &pTmp_2, &pSrcDstFormantFIRState, &pSrcDstFormantIIRState, &pDstFltSpch},
            vkArg::src);
        return walk({&mode});
    }

    bool makeData() override {
        dataSize = order * vkVector::item(m_func);
        pValResultPrevResidual[0] = 0;
        pValResultPrevScalingGain[0] = 0;
        if (!pSrcQLpc.createVector(len, setRand, 0, 2048) || !pSrcSpch.createVector(len_1, setRand, 0, 2048) ||
            !pTmp_1.createVector(order, setRand, 0, 2048) || !pTmp_2.createVector(order, setRand, 0, 2048) ||
            !pSrcDstFormantFIRState.createVector(order, setZero, 0, 0) ||
            !pSrcDstFormantIIRState.createVector(order, setZero, 0, 0) ||
            !pDstFltSpch.createVector(len_1, setZero, 0, 0)) {
            return false;
        }
        setDataLPC();
        return true;
    }

    double getDivisor() override { return len_1; }

    virtual void setDataLPC() {
        for (int i = 0; i < 4; ++i) {
            pSrcQLpc.m_16s[11 * i] = 4096;
        }
    }
};

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
