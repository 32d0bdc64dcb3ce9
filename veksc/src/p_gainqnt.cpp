// Quantiser of the gains of G.729.
#include "vkc.h"

namespace {

vkVector pSrc1;
vkVector pSrc2;
vkVector pSrc3;
vkVector pSrc4;
vkVector pPastEnergy;
krStepIterator<int> tameflag;
vkcGrid grid;
Vek16s pDstQGain[2];
Vek16s indx[2];

constexpr int subframe = 40;

class TimGain : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return subframe; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
    virtual void setData();
};

bool TimGain::canStart() {
    vkcRebuild(tameflag, "tameflag").set(0, 1, 1, '+');
    grid.begin({&tameflag});
    for (vkVector* vector : {&pSrc1, &pSrc2, &pSrc3, &pSrc4, &pPastEnergy}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

void TimGain::setData() {
    for (vkVector* vector : {&pSrc1, &pSrc2, &pSrc3, &pSrc4}) {
        vector->m_16s[0] = 4096;
    }
}

bool TimGain::makeData() {
    if (!pPastEnergy.createVector(4, setRand, 1, 512)) {
        return false;
    }
    for (vkVector* vector : {&pSrc1, &pSrc2, &pSrc3, &pSrc4}) {
        if (!vector->createVector(subframe, setRand, 1, 512)) {
            return false;
        }
    }
    setData();
    return true;
}

void TimGain::flushData() {
    for (vkVector* vector : {&pPastEnergy, &pSrc4, &pSrc3, &pSrc2, &pSrc1}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimGain, veksGainQuant_G729_16s,
       veksGainQuant_G729_16s(pSrc1.m_16s, pSrc2.m_16s, pSrc3.m_16s, pSrc4.m_16s, pPastEnergy.m_16s, pDstQGain, indx,
                              static_cast<Vek16s>(tameflag.value())))
