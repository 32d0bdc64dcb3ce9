// Dot products.
#include "vkc.h"

namespace {

vkVector pSrc1;
vkVector pSrc2;
krStepIterator<int> lenght;
vkcGrid grid;
Vek32s dp;
Vek32f dpFloat;
int sfs[1];

class TimDotProd : public prTest {
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
    bool m_long = false;
};

bool TimDotProd::canStart() {
    m_long = m_func.contains("veksDotProd_G729A_16s32s");
    vkcRebuild(lenght, "lenght");
    if (m_func.contains("veksDotProd_G729A_32f64f")) {
        lenght.setList({40, 60, 80, 100});
    } else if (m_long) {
        lenght.setList({80, 223});
    } else {
        lenght.setList({12, 21, 22, 40, 80});
    }
    grid.begin({&lenght});
    pSrc1.init(m_func, vkArg::src);
    pSrc2.init(m_func, vkArg::src);
    return true;
}

bool TimDotProd::makeData() {
    return pSrc1.createVector(lenght.value(), setOne, 0, 0) && pSrc2.createVector(lenght.value(), setOne, 0, 0);
}

void TimDotProd::flushData() {
    pSrc2.deleteVector();
    pSrc1.deleteVector();
}

} // namespace

VK_REG(TimDotProd, veksDotProdAutoScale_16s32s_Sfs,
       veksDotProdAutoScale_16s32s_Sfs(pSrc1.m_16s, pSrc2.m_16s, lenght.value(), &dp, sfs))
VK_REG(TimDotProd, veksDotProd_G729A_32f, veksDotProd_G729A_32f(pSrc1.m_32f, pSrc2.m_32f, lenght.value(), &dpFloat))
VK_REG(TimDotProd, veksDotProd_G729A_16s32s, veksDotProd_G729A_16s32s(pSrc1.m_16s, pSrc2.m_16s, lenght.value(), &dp))
