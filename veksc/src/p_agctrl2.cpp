// Gain control behind the formant post-filter of G.723.1.
#include "vkc.h"

namespace {

vkVector pSrcDst;
vkVector pTmp;
krStepIterator<int> lenght;
vkcGrid grid;
Vek16s gain;
int dataSize;

constexpr Vek32s energy = 1 << 24;

class TimAgctrl2 : public prTest {
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

bool TimAgctrl2::canStart() {
    vkcRebuild(lenght, "lenght").setList({60});
    grid.begin({&lenght});
    for (vkVector* vector : {&pSrcDst, &pTmp}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimAgctrl2::makeData() {
    gain = 1 << 12;
    const bool made =
        pSrcDst.createVector(grid.room(lenght), setZero, 0, 0) && pTmp.createVector(grid.room(lenght), setRand, 0, 0);
    dataSize = pTmp.size();
    return made;
}

void TimAgctrl2::flushData() {
    for (vkVector* vector : {&pTmp, &pSrcDst}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG_I(TimAgctrl2, veksGainControl_G723_16s_I, veksGainControl_G723_16s_I(energy, pSrcDst.m_16s, &gain),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
