// Residual filters of the wide-band codec and the convolution of a subframe.
#include "vkc.h"

namespace {

vkVector pSrc1, pSrc2, pDst, pSrcLpc, pSrcSpeech, pDstResidualSignal;
krStepIterator<int> len_c, valLPCOrder, len;
vkcScaleIterator scaleFactor;

class TimFiltwb : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcScales(scaleFactor, "scaleFactor", m_func, 10);
        initVectors({&pSrc1, &pSrc2, &pDst, &pSrcLpc, &pSrcSpeech, &pDstResidualSignal}, vkArg::src);
        if (m_residual) {
            vkcFix(len_c, 32);
            vkcRebuild(valLPCOrder, "LPCOrder").setList({8, 10, 16, 22, 28, 34, 40});
            vkcRebuild(len, "len").set(64, 256, 32, '+');
            return walk({&valLPCOrder, &len, &scaleFactor});
        }
        vkcRebuild(len_c, "len_c").set(32, 256, 32, '+');
        vkcFix(valLPCOrder, 8);
        vkcFix(len, 64);
        return walk({&len_c});
    }

    bool makeData() override {
        // The residual takes a coefficient more than its order, and reads the samples of its order before the first.
        const long long order = vkcSize(valLPCOrder);
        return pSrc1.createVector(len_c.value(), setValue, 4000, 0) &&
               pSrc2.createVector(len_c.value(), setValue, 4000, 0) &&
               pDst.createVector(len_c.value(), setZero, 0, 0) && pSrcLpc.createVector(order + 1, setValue, 4000, 0) &&
               pSrcSpeech.createVector(order + 1 + vkcSize(len), setValue, 4000, 0) &&
               pDstResidualSignal.createVector(len.value(), setZero, 0, 0);
    }

    double getDivisor() override {
        return m_residual ? static_cast<double>(len.value()) * valLPCOrder.value()
                          : static_cast<double>(len_c.value()) * len_c.value();
    }

private:
    const bool m_residual = m_func.contains("Residual");
};

} // namespace

VK_REG(TimFiltwb, veksConvPartial_NR_16s, veksConvPartial_NR_16s(pSrc1.m_16s, pSrc2.m_16s, pDst.m_16s, len_c.value()))
VK_REG(TimFiltwb, veksResidualFilter_Low_16s_Sfs,
       veksResidualFilter_Low_16s_Sfs(pSrcLpc.m_16s, valLPCOrder.value(), pSrcSpeech.m_16s + valLPCOrder.value() + 1,
                                      pDstResidualSignal.m_16s, len.value(), scaleFactor.value()))
VK_REG(TimFiltwb, veksResidualFilter_AMRWB_16s_Sfs,
       veksResidualFilter_AMRWB_16s_Sfs(pSrcLpc.m_16s, valLPCOrder.value(), pSrcSpeech.m_16s + valLPCOrder.value() + 1,
                                        pDstResidualSignal.m_16s, len.value(), scaleFactor.value()))
