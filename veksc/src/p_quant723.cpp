// Quantiser of the pulses of G.723.1 for one impulse response.
#include "vkc.h"

namespace {

vkVector pImp;
vkVector pVec;
vkVector pDstLoc;
vkVector pDstLocAmp;
krStepIterator<int> lenght;
krStepIterator<int> lenght_dst;
vkcGrid grid;
Vek32s maxErr;
Vek16s pResultGrid;
Vek16s amp;
Vek16s isBest;

constexpr Vek16s Np = 6;

class TimQuant723 : public prTest {
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

bool TimQuant723::canStart() {
    vkcRebuild(lenght, "lenght").setList({60});
    vkcRebuild(lenght_dst, "lenght DST").setList({Np});
    grid.begin({&lenght, &lenght_dst});
    for (vkVector* vector : {&pImp, &pVec, &pDstLoc, &pDstLocAmp}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimQuant723::makeData() {
    maxErr = INT32_MIN;
    return pImp.createVector(grid.room(lenght), setRand, -8192, 8192) &&
           pVec.createVector(grid.room(lenght), setRand, -8192, 8192) &&
           pDstLoc.createVector(grid.room(lenght_dst), setZero, 0, 0) &&
           pDstLocAmp.createVector(grid.room(lenght_dst), setZero, 0, 0);
}

void TimQuant723::flushData() {
    for (vkVector* vector : {&pDstLocAmp, &pDstLoc, &pVec, &pImp}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimQuant723, veksGainQuant_G723_16s,
       veksGainQuant_G723_16s(pImp.m_16s, pVec.m_16s, pDstLoc.m_16s, pDstLocAmp.m_16s, &maxErr, &pResultGrid, &amp, Np,
                              &isBest))
