// Gain control behind the post filters of G.729.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pTmp;
vkVector pSrcDst;
vkVector pGain;
krStepIterator<int> lenght;
vkcGrid grid;
int dataSize;

class TimAgctrl : public prTest {
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

bool TimAgctrl::canStart() {
    vkcRebuild(lenght, "lenght").setList({40});
    grid.begin({&lenght});
    for (vkVector* vector : {&pSrc, &pTmp, &pSrcDst, &pGain}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimAgctrl::makeData() {
    const bool made = pSrc.createVector(grid.room(lenght), setValue, 10, 0) &&
                      pTmp.createVector(grid.room(lenght), setValue, 10, 0) &&
                      pSrcDst.createVector(grid.room(lenght), setZero, 0, 0) &&
                      pGain.createVector(grid.room(lenght), setValue, 100, 0);
    dataSize = pTmp.size();
    return made;
}

void TimAgctrl::flushData() {
    for (vkVector* vector : {&pGain, &pSrcDst, &pTmp, &pSrc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG_I(TimAgctrl, veksGainControl_G729A_16s_I, veksGainControl_G729A_16s_I(pSrc.m_16s, pSrcDst.m_16s, pGain.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
VK_REG_I(TimAgctrl, veksGainControl_G729_16s_I, veksGainControl_G729_16s_I(pSrc.m_16s, pSrcDst.m_16s, pGain.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
