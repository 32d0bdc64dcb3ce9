// Phase dispersion of G.729 Annex D.
#include "vkc.h"

namespace {

vkVector pSrcExcSignal, pDstFltExcSignal, pSrcDstInnovation;
krStepIterator<int> lenght;
Vek16s valPitchGain = 0;
Vek16s valCodebookGain = 0;
Vek16s* pPhDMem;
int dataSize;

class Tim729dphd : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "").set(40, 40, 1, '+');
        initVectors({&pSrcExcSignal, &pDstFltExcSignal, &pSrcDstInnovation}, 1);
        veksPhaseDispersionGetStateSize_G729D_16s(&dataSize);
        return walk({&lenght});
    }

    bool makeData() override {
        if (!pSrcExcSignal.createVector(lenght.value(), setRand, 0, 512) ||
            !pDstFltExcSignal.createVector(lenght.value(), setZero, 0, 0) ||
            !pSrcDstInnovation.createVector(lenght.value(), setZero, 0, 0)) {
            return false;
        }
        return hold(pPhDMem, veksMalloc_16s(dataSize), veksFree) && vkcDone(veksPhaseDispersionInit_G729D_16s(pPhDMem));
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG(Tim729dphd, veksPhaseDispersion_G729D_16s,
       veksPhaseDispersion_G729D_16s(pSrcExcSignal.m_16s, pDstFltExcSignal.m_16s, valCodebookGain, valPitchGain,
                                     pSrcDstInnovation.m_16s, pPhDMem))
