// Offset compensation of GSM full rate.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
vkVector pMem;
krStepIterator<int> len;
vkcGrid grid;

class TimHighPassFilter_GSMFR_16s : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimHighPassFilter_GSMFR_16s::canStart() {
    vkcRebuild(len, "length").set(100, 180, 10, '+');
    grid.begin({&len});
    pSrc.init(m_func, vkArg::src);
    pDst.init(m_func, vkArg::src);
    pMem.init(vk32s);
    return true;
}

bool TimHighPassFilter_GSMFR_16s::makeData() {
    return pSrc.createVector(len.value(), setZero, 0, 0) && pDst.createVector(len.value(), setZero, 0, 0) &&
           pMem.createVector(2, setZero, 0, 0);
}

void TimHighPassFilter_GSMFR_16s::flushData() {
    for (vkVector* vector : {&pMem, &pDst, &pSrc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimHighPassFilter_GSMFR_16s, veksHighPassFilter_GSMFR_16s,
       veksHighPassFilter_GSMFR_16s(pSrc.m_16s, pDst.m_16s, len.value(), pMem.m_32s))
