// Weighted sum of two vectors: the excitation of the wide-band codec.
#include "vkc.h"

namespace {

vkVector pSrc1, pSrc2, pDst;
krStepIterator<int> len, scalefactor;

constexpr Vek16s val = 4096;

class TimINTWB : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").set(16, 128, 16, '+');
        vkcRebuild(scalefactor, "Sfs").set(2, 7, 5, '+');
        initVectors({&pSrc1, &pSrc2, &pDst}, vkArg::src);
        return walk({&len, &scalefactor});
    }

    bool makeData() override {
        return pSrc1.createVector(len.value(), setRand, -4096, 4096) &&
               pSrc2.createVector(len.value(), setRand, -4096, 4096) && pDst.createVector(len.value(), setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG(TimINTWB, veksInterpolateC_NR_16s,
       veksInterpolateC_NR_16s(pSrc1.m_16s, val, scalefactor.value(), pSrc2.m_16s, val,
                               static_cast<int>(9LL - scalefactor.value()), pDst.m_16s, len.value()))
