// Quantiser of the gains of G.729.
#include "vkc.h"

namespace {

vkVector pSrc1, pSrc2, pSrc3, pSrc4, pPastEnergy;
krStepIterator<int> tameflag;
Vek16s pDstQGain[2], indx[2];

constexpr int subframe = 40;

class TimGain : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(tameflag, "tameflag").set(0, 1, 1, '+');
        initVectors({&pSrc1, &pSrc2, &pSrc3, &pSrc4, &pPastEnergy}, vkArg::src);
        return walk({&tameflag});
    }

    bool makeData() override {
        if (!pPastEnergy.createVector(4, setRand, 1, 512) ||
            !vkcCreate({&pSrc1, &pSrc2, &pSrc3, &pSrc4}, subframe, setRand, 1, 512)) {
            return false;
        }
        setData();
        return true;
    }

    double getDivisor() override { return subframe; }

    virtual void setData() {
        for (vkVector* vector : {&pSrc1, &pSrc2, &pSrc3, &pSrc4}) {
            vector->m_16s[0] = 4096;
        }
    }
};

} // namespace

VK_REG(TimGain, veksGainQuant_G729_16s,
       veksGainQuant_G729_16s(pSrc1.m_16s, pSrc2.m_16s, pSrc3.m_16s, pSrc4.m_16s, pPastEnergy.m_16s, pDstQGain, indx,
                              static_cast<Vek16s>(tameflag.value())))
