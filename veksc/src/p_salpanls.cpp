// Autocorrelation of AMR, quantiser of its line spectrum pairs and their decoder.
#include "vkc.h"

namespace {

vkVector pIndex;
vkVector pSrcDstPrevQLsfResidual;
vkVector pSrcDstPrevQLsf;
vkVector pSrcDstPrevQLsp;
vkVector pDstQLsp;
vkVector pSrcLsp;
vkVector pSrcSpch;
vkVector pDstAutoCorr;
krEnumIterator<VekSpchBitRate> mode;
krStepIterator<int> len_1;
krStepIterator<int> len_2;
krStepIterator<short> bfi;
vkcGrid grid;

class TimSalpanls : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return len_1.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimSalpanls::canStart() {
    const bool correlation = m_func.contains("AutoCorr");
    vkcRebuild(mode, "BitRate");
    for (const VekSpchBitRate rate :
         {VEK_SPCHBR_DTX, VEK_SPCHBR_4750, VEK_SPCHBR_5150, VEK_SPCHBR_5900, VEK_SPCHBR_6700, VEK_SPCHBR_7400,
          VEK_SPCHBR_7950, VEK_SPCHBR_10200, VEK_SPCHBR_12200}) {
        mode.add(rate);
        mode.addValidation(rate);
    }
    vkcRebuild(len_1, "").setList({correlation ? 240 : 10});
    vkcRebuild(len_2, "").setList({correlation ? 20 : 40});
    if (m_func.contains("QuantLSPDecode")) {
        vkcRebuild(bfi, "Num bfi").set(0, 1, 1, '+');
    } else {
        vkcFix<short>(bfi, 0);
    }
    grid.begin({&mode, &len_1, &len_2, &bfi});
    for (vkVector* vector :
         {&pIndex, &pSrcDstPrevQLsfResidual, &pSrcDstPrevQLsf, &pSrcDstPrevQLsp, &pDstQLsp, &pSrcLsp, &pSrcSpch}) {
        vector->init(m_func, vkArg::src);
    }
    pDstAutoCorr.init(m_func, vkArg::dst);
    return true;
}

bool TimSalpanls::makeData() {
    if (!pIndex.createVector(5, setZero, 0, 0)) {
        return false;
    }
    for (vkVector* vector : {&pSrcDstPrevQLsfResidual, &pSrcDstPrevQLsf, &pSrcDstPrevQLsp}) {
        if (!vector->createVector(grid.room(len_1), setRand, 0, 2048)) {
            return false;
        }
    }
    return pDstQLsp.createVector(grid.room(len_2), setZero, 0, 0) &&
           pSrcLsp.createVector(grid.room(len_2), setRand, -2048, 2048) &&
           pSrcSpch.createVector(grid.room(len_1), setRand, -2048, 2048) &&
           pDstAutoCorr.createVector(22, setZero, 0, 0);
}

void TimSalpanls::flushData() {
    for (vkVector* vector : {&pDstAutoCorr, &pSrcSpch, &pSrcLsp, &pDstQLsp, &pSrcDstPrevQLsp, &pSrcDstPrevQLsf,
                             &pSrcDstPrevQLsfResidual, &pIndex}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimSalpanls, veksQuantLSPDecode_GSMAMR_16s,
       veksQuantLSPDecode_GSMAMR_16s(pIndex.m_16s, pSrcDstPrevQLsfResidual.m_16s, pSrcDstPrevQLsf.m_16s,
                                     pSrcDstPrevQLsp.m_16s, pDstQLsp.m_16s, bfi.value(), mode.value()))
VK_REG(TimSalpanls, veksLSPQuant_GSMAMR_16s,
       veksLSPQuant_GSMAMR_16s(pSrcLsp.m_16s, pSrcDstPrevQLsfResidual.m_16s, pDstQLsp.m_16s, pIndex.m_16s,
                               mode.value()))
VK_REG(TimSalpanls, veksAutoCorr_GSMAMR_16s32s,
       veksAutoCorr_GSMAMR_16s32s(pSrcSpch.m_16s, pDstAutoCorr.m_32s, mode.value()))
