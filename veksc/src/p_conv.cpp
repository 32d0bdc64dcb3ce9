// Causal convolution.
#include "vkc.h"

namespace {

vkVector pSrc1;
vkVector pSrc2;
vkVector pDst;
krStepIterator<int> lenght;
vkcScaleIterator scaleFactor;
vkcGrid grid;

class TimConv : public prTest {
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

private:
    bool m_wide = false;
};

bool TimConv::canStart() {
    m_wide = m_func.contains("16s32s");
    vkcRebuild(lenght, "lenght");
    if (m_wide) {
        lenght.set(10, 40, 10, '+');
    } else {
        lenght.setList({40});
    }
    vkcScales(scaleFactor, "scaleFactor", m_func, 0, 12);
    grid.begin({&lenght, &scaleFactor});
    pSrc1.init(m_func, vkArg::src);
    pSrc2.init(m_func, vkArg::src);
    pDst.init(m_func, vkArg::dst);
    return true;
}

bool TimConv::makeData() {
    const bool made = m_wide ? pSrc1.createVector(grid.room(lenght), setOne, 0, 0)
                             : pSrc1.createVector(grid.room(lenght), setValue, 2048, 0);
    return made && pSrc2.createVector(grid.room(lenght), setValue, 2048, 0) &&
           pDst.createVector(grid.room(lenght), setZero, 0, 0);
}

void TimConv::flushData() {
    pDst.deleteVector();
    pSrc2.deleteVector();
    pSrc1.deleteVector();
}

} // namespace

VK_REG(TimConv, veksConvPartial_16s32s, veksConvPartial_16s32s(pSrc1.m_16s, pSrc2.m_16s, pDst.m_32s, lenght.value()))
VK_REG(TimConv, veksConvPartial_16s_Sfs,
       veksConvPartial_16s_Sfs(pSrc1.m_16s, pSrc2.m_16s, pDst.m_16s, lenght.value(), scaleFactor.value()))
