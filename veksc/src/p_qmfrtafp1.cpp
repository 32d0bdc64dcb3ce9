// Split into two bands of the real-time audio codec.
#include "vkc.h"

namespace {

vkVector pSrc, pDstLow, pDstHigh;
krStepIterator<int> len;
VeksQMFState_RTA_32f* pQMFMem;

class QMFE_RTA_32f : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").set(20, 80, 20, '+');
        initVectors({&pSrc, &pDstLow, &pDstHigh}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        return initState(pQMFMem, veksQMFGetStateSize_RTA_32f, veksQMFInit_RTA_32f) &&
               pSrc.createVector(len.value(), setRand, -32768, 32768) &&
               pDstLow.createVector(len.value(), setZero, 0, 0) && pDstHigh.createVector(len.value(), setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG(QMFE_RTA_32f, veksQMFEncode_RTA_32f,
       veksQMFEncode_RTA_32f(pSrc.m_32f, len.value(), pDstLow.m_32f, pDstHigh.m_32f, pQMFMem))
