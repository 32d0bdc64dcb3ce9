// Weighted sum of two vectors: the excitation of the wide-band codec.
#include "vkc.h"

namespace {

vkVector pSrc1;
vkVector pSrc2;
vkVector pDst;
krStepIterator<int> len;
krStepIterator<int> scalefactor;
vkcGrid grid;

constexpr Vek16s val = 4096;

class TimINTWB : public prTest {
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

bool TimINTWB::canStart() {
    vkcRebuild(len, "Lenght").set(16, 128, 16, '+');
    vkcRebuild(scalefactor, "Sfs").set(2, 7, 5, '+');
    grid.begin({&len, &scalefactor});
    for (vkVector* vector : {&pSrc1, &pSrc2, &pDst}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimINTWB::makeData() {
    return pSrc1.createVector(len.value(), setRand, -4096, 4096) &&
           pSrc2.createVector(len.value(), setRand, -4096, 4096) && pDst.createVector(len.value(), setZero, 0, 0);
}

void TimINTWB::flushData() {
    for (vkVector* vector : {&pDst, &pSrc2, &pSrc1}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimINTWB, veksInterpolateC_NR_16s,
       veksInterpolateC_NR_16s(pSrc1.m_16s, val, scalefactor.value(), pSrc2.m_16s, val,
                               static_cast<int>(9LL - scalefactor.value()), pDst.m_16s, len.value()))
