// Offset compensation of GSM full rate.
#include "vkc.h"

namespace {

vkVector pSrc, pDst, pMem;
krStepIterator<int> len;

class TimHighPassFilter_GSMFR_16s : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "length").set(100, 180, 10, '+');
        initVectors({&pSrc, &pDst}, vkArg::src);
        initVectors({&pMem}, vk32s);
        return walk({&len});
    }

    bool makeData() override {
        return pSrc.createVector(len.value(), setZero, 0, 0) && pDst.createVector(len.value(), setZero, 0, 0) &&
               pMem.createVector(2, setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG(TimHighPassFilter_GSMFR_16s, veksHighPassFilter_GSMFR_16s,
       veksHighPassFilter_GSMFR_16s(pSrc.m_16s, pDst.m_16s, len.value(), pMem.m_32s))
