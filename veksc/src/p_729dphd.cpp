// Phase dispersion of G.729 Annex D.
#include "vkc.h"

namespace {

vkVector pSrcExcSignal;
vkVector pDstFltExcSignal;
vkVector pSrcDstInnovation;
krStepIterator<int> lenght;
vkcGrid grid;
Vek16s valPitchGain = 0;
Vek16s valCodebookGain = 0;
Vek16s* pPhDMem;
int dataSize;

class Tim729dphd : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return lenght.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool Tim729dphd::canStart() {
    vkcRebuild(lenght, "").set(40, 40, 1, '+');
    grid.begin({&lenght});
    for (vkVector* vector : {&pSrcExcSignal, &pDstFltExcSignal, &pSrcDstInnovation}) {
        vector->init(m_func, 1);
    }
    veksPhaseDispersionGetStateSize_G729D_16s(&dataSize);
    return true;
}

bool Tim729dphd::makeData() {
    if (!pSrcExcSignal.createVector(lenght.value(), setRand, 0, 512) ||
        !pDstFltExcSignal.createVector(lenght.value(), setZero, 0, 0) ||
        !pSrcDstInnovation.createVector(lenght.value(), setZero, 0, 0)) {
        return false;
    }
    pPhDMem = veksMalloc_16s(dataSize);
    return pPhDMem != nullptr && vkcDone(veksPhaseDispersionInit_G729D_16s(pPhDMem));
}

void Tim729dphd::flushData() {
    veksFree(pPhDMem);
    pPhDMem = nullptr;
    for (vkVector* vector : {&pSrcDstInnovation, &pDstFltExcSignal, &pSrcExcSignal}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(Tim729dphd, veksPhaseDispersion_G729D_16s,
       veksPhaseDispersion_G729D_16s(pSrcExcSignal.m_16s, pDstFltExcSignal.m_16s, valCodebookGain, valPitchGain,
                                     pSrcDstInnovation.m_16s, pPhDMem))
