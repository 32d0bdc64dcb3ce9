// High-pass filters of the wide-band codec.
#include "vkc.h"

namespace {

vkVector pSrcDstSignal, pSrcSignal, pSrc, pDst, pCoeff;
vkcScaleIterator scaleFactori, scaleFactor;
krStepIterator<int> leni, len, lend, valBounds;
char* pMemUpdated;
int fltSize;

class TimHPFLTwb : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        initVectors({&pSrcDstSignal, &pSrcSignal, &pSrc, &pDst, &pCoeff}, vkArg::src);
        if (m_direct) {
            vkcRebuild(lend, "lend").set(16, 256, 16, '+');
            vkcRebuild(valBounds, "valBounds").set(0, 1, 1, '+');
            return walk({&lend, &valBounds});
        }
        if (m_inPlace) {
            vkcRebuild(leni, "leni").set(16, 256, 16, '+');
            vkcScales(scaleFactori, "scaleFactor", m_func, 14);
            return walk({&leni, &scaleFactori});
        }
        vkcRebuild(len, "len").set(16, 256, 16, '+');
        vkcScales(scaleFactor, "scaleFactor", m_func, 12);
        return walk({&len, &scaleFactor});
    }

    bool makeData() override {
        if (m_direct) {
            // One sample is read on each side.
            return pDst.createVector(lend.value(), setZero, 0, 0) &&
                   pSrc.createVector(vkcSize(lend) + 2, setRand, -2048, 2048) &&
                   pCoeff.createVector(2, setRand, -2048, 2048);
        }
        if (!vkcDone(veksHighPassFilterGetSize_AMRWB_16s(&fltSize))) {
            return false;
        }
        if (!hold(pMemUpdated, krMalloc(fltSize, 0, 0, MEM_OBJECT_IS_BUFFER), krFree) ||
            !vkcDone(veksHighPassFilterInit_AMRWB_16s(pMemUpdated))) {
            return false;
        }
        return m_inPlace ? pSrcDstSignal.createVector(leni.value(), setRand, -2048, 2048)
                         : pDst.createVector(len.value(), setZero, 0, 0) &&
                               pSrcSignal.createVector(len.value(), setRand, -2048, 2048);
    }

    double getDivisor() override { return m_direct ? lend.value() : m_inPlace ? leni.value() : len.value(); }
    krString getUnit() override { return prTest::getUnit(); }

private:
    const bool m_direct = m_func.contains("Direct");
    const bool m_inPlace = m_func.contains("ISfs");
};

} // namespace

VK_REG(TimHPFLTwb, veksHighPassFilter_Direct_AMRWB_16s,
       veksHighPassFilter_Direct_AMRWB_16s(pCoeff.m_16s, pSrc.m_16s + 1, pDst.m_16s, lend.value(), valBounds.value()))
VK_REG(TimHPFLTwb, veksHighPassFilter_AMRWB_16s_ISfs,
       veksHighPassFilter_AMRWB_16s_ISfs(pSrcDstSignal.m_16s, leni.value(), pMemUpdated, scaleFactori.value()))
VK_REG(TimHPFLTwb, veksHighPassFilter_AMRWB_16s_Sfs,
       veksHighPassFilter_AMRWB_16s_Sfs(pSrcSignal.m_16s, pDst.m_16s, len.value(), pMemUpdated, scaleFactor.value()))
