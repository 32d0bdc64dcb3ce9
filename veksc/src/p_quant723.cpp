// Quantiser of the pulses of G.723.1 for one impulse response.
#include "vkc.h"

namespace {

vkVector pImp, pVec, pDstLoc, pDstLocAmp;
krStepIterator<int> lenght, lenght_dst;
Vek32s maxErr;
Vek16s pResultGrid, amp, isBest;

constexpr Vek16s Np = 6;

class TimQuant723 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({60});
        vkcRebuild(lenght_dst, "lenght DST").setList({Np});
        initVectors({&pImp, &pVec, &pDstLoc, &pDstLocAmp}, vkArg::src);
        return walk({&lenght, &lenght_dst});
    }

    bool makeData() override {
        maxErr = INT32_MIN;
        return pImp.createVector(m_grid.room(lenght), setRand, -8192, 8192) &&
               pVec.createVector(m_grid.room(lenght), setRand, -8192, 8192) &&
               pDstLoc.createVector(m_grid.room(lenght_dst), setZero, 0, 0) &&
               pDstLocAmp.createVector(m_grid.room(lenght_dst), setZero, 0, 0);
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG(TimQuant723, veksGainQuant_G723_16s,
       veksGainQuant_G723_16s(pImp.m_16s, pVec.m_16s, pDstLoc.m_16s, pDstLocAmp.m_16s, &maxErr, &pResultGrid, &amp, Np,
                              &isBest))
