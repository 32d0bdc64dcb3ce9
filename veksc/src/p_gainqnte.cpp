// Gains of G.729 Annexes D and I: quantiser, and decoder for lost frames.
#include "vkc.h"

namespace {

vkVector pSrc1, pSrc2, pSrc3, pSrc4, pPastEnergy, quaIndex, pGain;
krStepIterator<int> tameflag;
Vek16s pDstQGain[2], indx[2];
Vek32s energy;

constexpr Vek16s valGainAttenuation = 32113; // 0.98
constexpr int subframe = 40;

class TimGainQnte : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(tameflag, "tameflag").set(0, 1, 1, '+');
        initVectors({&pSrc1, &pSrc2, &pSrc3, &pSrc4, &pPastEnergy, &quaIndex, &pGain}, vkArg::src);
        return walk({&tameflag});
    }

    bool makeData() override {
        if (!pPastEnergy.createVector(4, setRand, 1, 512) || !quaIndex.createVector(2, setOne, 0, 0) ||
            !pGain.createVector(2, setRand, 1, 512) ||
            !vkcCreate({&pSrc1, &pSrc2, &pSrc3, &pSrc4}, subframe, setRand, 1, 512)) {
            return false;
        }
        setData();
        return vkcDone(veksDotProd_G729A_16s32s(pSrc3.m_16s, pSrc3.m_16s, subframe, &energy));
    }

    double getDivisor() override { return subframe; }

    virtual void setData() {
        for (vkVector* vector : {&pSrc1, &pSrc2, &pSrc3, &pSrc4}) {
            vector->m_16s[0] = 4096;
        }
    }
};

} // namespace

VK_REG(TimGainQnte, veksDecodeGain_G729I_16s,
       veksDecodeGain_G729I_16s(energy, valGainAttenuation, pPastEnergy.m_16s, quaIndex.m_16s, pGain.m_16s))
VK_REG(TimGainQnte, veksGainQuant_G729D_16s,
       veksGainQuant_G729D_16s(pSrc1.m_16s, pSrc2.m_16s, pSrc3.m_16s, pSrc4.m_16s, pPastEnergy.m_16s, pDstQGain, indx,
                               static_cast<Vek16s>(tameflag.value())))
