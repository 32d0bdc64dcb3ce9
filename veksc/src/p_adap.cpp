// Closed-loop search of the adaptive codebook of G.729, and its gain.
#include "vkc.h"

namespace {

vkVector pSrcAdptTarget, pSrcAdptVector, pDstAdptVector, pSrcDstPrevExcitation, pTmp, pDstDelay, pSrcLpc,
    pSrcImpulseResponse;
krStepIterator<int> subFrame;
Vek16s pResultAdptGain;
int dataSize;

constexpr int subframeLength = 40;
constexpr int excitation = 194;
constexpr Vek16s valOpenDelay = 60;

class TimAdap : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcSwitch(subFrame, "subFrame", m_func.contains("Search"));
        initVectors({&pSrcAdptTarget, &pSrcAdptVector, &pDstAdptVector, &pSrcDstPrevExcitation, &pTmp, &pDstDelay,
                     &pSrcLpc, &pSrcImpulseResponse},
                    vkArg::src);
        return walk({&subFrame});
    }

    bool makeData() override {
        dataSize = excitation * vkVector::item(m_func);
        if (!pSrcAdptTarget.createVector(subframeLength, setOne, 0, 0) ||
            !pSrcAdptVector.createVector(subframeLength, setOne, 0, 0) ||
            !pDstAdptVector.createVector(subframeLength, setZero, 0, 0) ||
            !pSrcDstPrevExcitation.createVector(excitation, setZero, 0, 0) ||
            !pTmp.createVector(excitation, setRand, -2048, 2048) || !pDstDelay.createVector(2, setZero, 0, 0) ||
            !pSrcLpc.createVector(11, setZero, 0, 0) ||
            !pSrcImpulseResponse.createVector(subframeLength, setValue, 2048, 0)) {
            return false;
        }
        setData_LPC();
        setDataSrc();
        return true;
    }

    double getDivisor() override { return subframeLength; }

    virtual void setData_LPC() {
        static constexpr Vek16s lpc[] = {4096, 715, 703, 679, 656, 150, 132, -124, -479, -529, -845};
        std::memcpy(pSrcLpc.m_16s, lpc, sizeof lpc);
    }

    virtual void setDataSrc() { pSrcImpulseResponse.m_16s[0] = 8192; }
};

} // namespace

VK_REG_I(TimAdap, veksAdaptiveCodebookSearch_G729A_16s,
         veksAdaptiveCodebookSearch_G729A_16s(valOpenDelay, pSrcAdptTarget.m_16s, pSrcImpulseResponse.m_16s,
                                              pSrcDstPrevExcitation.m_16s, pDstDelay.m_16s, pDstAdptVector.m_16s,
                                              static_cast<Vek16s>(subFrame.value())),
         vkcRestore(pSrcDstPrevExcitation.m_16s, pTmp.m_16s, dataSize))
VK_REG_I(TimAdap, veksAdaptiveCodebookSearch_G729_16s,
         veksAdaptiveCodebookSearch_G729_16s(valOpenDelay, pSrcAdptTarget.m_16s, pSrcImpulseResponse.m_16s,
                                             pSrcDstPrevExcitation.m_16s, pDstDelay.m_16s, pDstAdptVector.m_16s,
                                             static_cast<Vek16s>(subFrame.value())),
         vkcRestore(pSrcDstPrevExcitation.m_16s, pTmp.m_16s, dataSize))
VK_REG(TimAdap, veksAdaptiveCodebookGain_G729A_16s,
       veksAdaptiveCodebookGain_G729A_16s(pSrcAdptTarget.m_16s, pSrcLpc.m_16s, pSrcAdptVector.m_16s,
                                          pDstAdptVector.m_16s, &pResultAdptGain))
VK_REG(TimAdap, veksAdaptiveCodebookGain_G729_16s,
       veksAdaptiveCodebookGain_G729_16s(pSrcAdptTarget.m_16s, pSrcImpulseResponse.m_16s, pSrcAdptVector.m_16s,
                                         pDstAdptVector.m_16s, &pResultAdptGain))
