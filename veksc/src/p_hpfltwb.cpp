// High-pass filters of the wide-band codec.
#include "vkc.h"

namespace {

vkVector pSrcDstSignal;
vkVector pSrcSignal;
vkVector pSrc;
vkVector pDst;
vkVector pCoeff;
vkcScaleIterator scaleFactori;
vkcScaleIterator scaleFactor;
krStepIterator<int> leni;
krStepIterator<int> len;
krStepIterator<int> lend;
krStepIterator<int> valBounds;
char* pMemUpdated;
int fltSize;

class TimHPFLTwb : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        m_direct = m_func.contains("Direct");
        m_inPlace = m_func.contains("ISfs");
        if (m_direct) {
            vkcRebuild(lend, "lend").set(16, 256, 16, '+');
            vkcRebuild(valBounds, "valBounds").set(0, 1, 1, '+');
            m_grid.begin({&lend, &valBounds});
        } else if (m_inPlace) {
            vkcRebuild(leni, "leni").set(16, 256, 16, '+');
            vkcScales(scaleFactori, "scaleFactor", m_func, 14);
            m_grid.begin({&leni, &scaleFactori});
        } else {
            vkcRebuild(len, "len").set(16, 256, 16, '+');
            vkcScales(scaleFactor, "scaleFactor", m_func, 12);
            m_grid.begin({&len, &scaleFactor});
        }
        initVectors({&pSrcDstSignal, &pSrcSignal, &pSrc, &pDst, &pCoeff}, vkArg::src);
        return true;
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
        pMemUpdated = static_cast<char*>(krMalloc(fltSize, 0, 0, MEM_OBJECT_IS_BUFFER));
        if (pMemUpdated == nullptr || !vkcDone(veksHighPassFilterInit_AMRWB_16s(pMemUpdated))) {
            return false;
        }
        return m_inPlace ? pSrcDstSignal.createVector(leni.value(), setRand, -2048, 2048)
                         : pDst.createVector(len.value(), setZero, 0, 0) &&
                               pSrcSignal.createVector(len.value(), setRand, -2048, 2048);
    }

    void flushData() override {
        krFree(pMemUpdated);
        pMemUpdated = nullptr;
        vkcGridTest::flushData();
    }

    double getDivisor() override { return m_direct ? lend.value() : m_inPlace ? leni.value() : len.value(); }
    krString getUnit() override { return prTest::getUnit(); }

private:
    bool m_direct = false;
    bool m_inPlace = false;
};

} // namespace

VK_REG(TimHPFLTwb, veksHighPassFilter_Direct_AMRWB_16s,
       veksHighPassFilter_Direct_AMRWB_16s(pCoeff.m_16s, pSrc.m_16s + 1, pDst.m_16s, lend.value(), valBounds.value()))
VK_REG(TimHPFLTwb, veksHighPassFilter_AMRWB_16s_ISfs,
       veksHighPassFilter_AMRWB_16s_ISfs(pSrcDstSignal.m_16s, leni.value(), pMemUpdated, scaleFactori.value()))
VK_REG(TimHPFLTwb, veksHighPassFilter_AMRWB_16s_Sfs,
       veksHighPassFilter_AMRWB_16s_Sfs(pSrcSignal.m_16s, pDst.m_16s, len.value(), pMemUpdated, scaleFactor.value()))
