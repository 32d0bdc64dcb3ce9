// Autocorrelation and decoding of the adaptive codebook of G.723.1.
#include "vkc.h"

namespace {

vkVector pSrcSpch, pDstAutoCorr, pSrcPrevExcitation, pDstAdptVector;
krEnumIterator<VekSpchBitRate> mode;
krStepIterator<int> subFrame;
int pResultAutoCorrExp;

constexpr int window = 180;
constexpr int subframeLength = 60;
constexpr int excitation = 148;
constexpr Vek16s valBaseDelay = 40;
constexpr Vek16s valCloseLag = 1;
constexpr Vek16s valAdptGainIndex = 42;

class TimSAG_723 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(subFrame, "").setList({1});
        vkcRebuild(mode, "BitRate").resetValidation();
        vkcModes(mode, {VEK_SPCHBR_6300, VEK_SPCHBR_5300});
        initVectors({&pSrcSpch, &pDstAutoCorr, &pSrcPrevExcitation, &pDstAdptVector}, vkArg::src);
        return walk({&mode, &subFrame});
    }

    bool makeData() override {
        return pSrcSpch.createVector(window, setRand, -2048, 2048) && pDstAutoCorr.createVector(11, setZero, 0, 0) &&
               pSrcPrevExcitation.createVector(excitation, setRand, -2048, 2048) &&
               pDstAdptVector.createVector(subframeLength, setZero, 0, 0);
    }

    double getDivisor() override { return m_func.contains("Decode") ? subframeLength : window; }
};

} // namespace

VK_REG(TimSAG_723, veksDecodeAdaptiveVector_G723_16s,
       veksDecodeAdaptiveVector_G723_16s(valBaseDelay, valCloseLag, valAdptGainIndex, pSrcPrevExcitation.m_16s,
                                         pDstAdptVector.m_16s, mode.value()))
VK_REG(TimSAG_723, veksAutoCorr_G723_16s,
       veksAutoCorr_G723_16s(pSrcSpch.m_16s, &pResultAutoCorrExp, pDstAutoCorr.m_16s))
