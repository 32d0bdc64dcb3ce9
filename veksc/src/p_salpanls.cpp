// Autocorrelation of AMR, quantiser of its line spectrum pairs and their decoder.
#include "vkc.h"

namespace {

vkVector pIndex, pSrcDstPrevQLsfResidual, pSrcDstPrevQLsf, pSrcDstPrevQLsp, pDstQLsp, pSrcLsp, pSrcSpch, pDstAutoCorr;
krEnumIterator<VekSpchBitRate> mode;
krStepIterator<int> len_1, len_2;
krStepIterator<short> bfi;

class TimSalpanls : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        const bool correlation = m_func.contains("AutoCorr");
        vkcModes(vkcRebuild(mode, "BitRate"), vkcSilence, vkcRatesGSMAMR);
        vkcRebuild(len_1, "").setList({correlation ? 240 : 10});
        vkcRebuild(len_2, "").setList({correlation ? 20 : 40});
        if (m_func.contains("QuantLSPDecode")) {
            vkcRebuild(bfi, "Num bfi").set(0, 1, 1, '+');
        } else {
            vkcFix<short>(bfi, 0);
        }
        initVectors(
            {&pIndex, &pSrcDstPrevQLsfResidual, &pSrcDstPrevQLsf, &pSrcDstPrevQLsp, &pDstQLsp, &pSrcLsp, &pSrcSpch},
            vkArg::src);
        initVectors({&pDstAutoCorr}, vkArg::dst);
        return walk({&mode, &len_1, &len_2, &bfi});
    }

    bool makeData() override {
        if (!pIndex.createVector(5, setZero, 0, 0) ||
            !vkcCreate({&pSrcDstPrevQLsfResidual, &pSrcDstPrevQLsf, &pSrcDstPrevQLsp}, m_grid.room(len_1), setRand, 0,
                       2048)) {
            return false;
        }
        return pDstQLsp.createVector(m_grid.room(len_2), setZero, 0, 0) &&
               pSrcLsp.createVector(m_grid.room(len_2), setRand, -2048, 2048) &&
               pSrcSpch.createVector(m_grid.room(len_1), setRand, -2048, 2048) &&
               pDstAutoCorr.createVector(22, setZero, 0, 0);
    }

    double getDivisor() override { return len_1.value(); }
};

} // namespace

VK_REG(TimSalpanls, veksQuantLSPDecode_GSMAMR_16s,
       veksQuantLSPDecode_GSMAMR_16s(pIndex.m_16s, pSrcDstPrevQLsfResidual.m_16s, pSrcDstPrevQLsf.m_16s,
                                     pSrcDstPrevQLsp.m_16s, pDstQLsp.m_16s, bfi.value(), mode.value()))
VK_REG(TimSalpanls, veksLSPQuant_GSMAMR_16s,
       veksLSPQuant_GSMAMR_16s(pSrcLsp.m_16s, pSrcDstPrevQLsfResidual.m_16s, pDstQLsp.m_16s, pIndex.m_16s,
                               mode.value()))
VK_REG(TimSalpanls, veksAutoCorr_GSMAMR_16s32s,
       veksAutoCorr_GSMAMR_16s32s(pSrcSpch.m_16s, pDstAutoCorr.m_32s, mode.value()))
