// The filtered excitation of the next delay, in floating point.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pSrcDst;
krStepIterator<int> lenght;
vkcGrid grid;

constexpr Vek32f val = 0.5F;

class TimMathfp : public prTest {
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

bool TimMathfp::canStart() {
    vkcRebuild(lenght, "lenght");
    if (m_func.contains("FilteredExcitation")) {
        lenght.set(80, 90, 1, '+');
    } else {
        lenght.set(10, 40, 10, '+');
    }
    grid.begin({&lenght});
    pSrc.init(m_func, vkArg::src);
    pSrcDst.init(m_func, vkArg::src);
    return true;
}

bool TimMathfp::makeData() {
    return pSrc.createVector(lenght.value(), setOne, 0, 0) && pSrcDst.createVector(lenght.value(), setZero, 0, 0);
}

void TimMathfp::flushData() {
    pSrcDst.deleteVector();
    pSrc.deleteVector();
}

} // namespace

VK_REG(TimMathfp, veksFilteredExcitation_G729_32f,
       veksFilteredExcitation_G729_32f(pSrc.m_32f, pSrcDst.m_32f, lenght.value(), val))
