// Autocorrelation and decoding of the adaptive codebook of G.723.1.
#include "vkc.h"

namespace {

vkVector pSrcSpch;
vkVector pDstAutoCorr;
vkVector pSrcPrevExcitation;
vkVector pDstAdptVector;
krEnumIterator<VekSpchBitRate> mode;
krStepIterator<int> subFrame;
vkcGrid grid;
int pResultAutoCorrExp;

constexpr int window = 180;
constexpr int subframeLength = 60;
constexpr int excitation = 148;
constexpr Vek16s valBaseDelay = 40;
constexpr Vek16s valCloseLag = 1;
constexpr Vek16s valAdptGainIndex = 42;

class TimSAG_723 : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return m_decode ? subframeLength : window; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }

private:
    bool m_decode = false;
};

bool TimSAG_723::canStart() {
    m_decode = m_func.contains("Decode");
    vkcRebuild(subFrame, "").setList({1});
    vkcRebuild(mode, "BitRate").resetValidation();
    for (const VekSpchBitRate rate : {VEK_SPCHBR_6300, VEK_SPCHBR_5300}) {
        mode.add(rate);
        mode.addValidation(rate);
    }
    grid.begin({&mode, &subFrame});
    for (vkVector* vector : {&pSrcSpch, &pDstAutoCorr, &pSrcPrevExcitation, &pDstAdptVector}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimSAG_723::makeData() {
    return pSrcSpch.createVector(window, setRand, -2048, 2048) && pDstAutoCorr.createVector(11, setZero, 0, 0) &&
           pSrcPrevExcitation.createVector(excitation, setRand, -2048, 2048) &&
           pDstAdptVector.createVector(subframeLength, setZero, 0, 0);
}

void TimSAG_723::flushData() {
    for (vkVector* vector : {&pDstAdptVector, &pSrcPrevExcitation, &pDstAutoCorr, &pSrcSpch}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimSAG_723, veksDecodeAdaptiveVector_G723_16s,
       veksDecodeAdaptiveVector_G723_16s(valBaseDelay, valCloseLag, valAdptGainIndex, pSrcPrevExcitation.m_16s,
                                         pDstAdptVector.m_16s, mode.value()))
VK_REG(TimSAG_723, veksAutoCorr_G723_16s,
       veksAutoCorr_G723_16s(pSrcSpch.m_16s, &pResultAutoCorrExp, pDstAutoCorr.m_16s))
