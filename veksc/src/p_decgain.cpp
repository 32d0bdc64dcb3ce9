// Gains of G.729 from their codes.
#include "vkc.h"

namespace {

vkVector quaIndex;
vkVector pSrc;
vkVector pPastEnergy;
vkVector pitchGain;
krStepIterator<int> lenght;
vkcGrid grid;
Vek32s energy;

constexpr int subframe = 40;

class TimDecGain : public prTest {
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

bool TimDecGain::canStart() {
    vkcRebuild(lenght, "lenght").setList({4});
    grid.begin({&lenght});
    for (vkVector* vector : {&quaIndex, &pSrc, &pPastEnergy, &pitchGain}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimDecGain::makeData() {
    return quaIndex.createVector(2, setValue, 86, 0) && pSrc.createVector(subframe, setValue, 8191, 0) &&
           pPastEnergy.createVector(grid.room(lenght), setValue, -14336, 0) &&
           pitchGain.createVector(2, setZero, 0, 0) &&
           vkcDone(veksDotProd_G729A_16s32s(pSrc.m_16s, pSrc.m_16s, subframe, &energy));
}

void TimDecGain::flushData() {
    for (vkVector* vector : {&pitchGain, &pPastEnergy, &pSrc, &quaIndex}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimDecGain, veksDecodeGain_G729_16s,
       veksDecodeGain_G729_16s(energy, pPastEnergy.m_16s, quaIndex.m_16s, pitchGain.m_16s))
