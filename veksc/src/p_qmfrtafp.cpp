// Reunion of the two bands of the real-time audio codec.
#include "vkc.h"

namespace {

vkVector pSrcLow;
vkVector pSrcHigh;
vkVector pDst;
krStepIterator<int> len;
VeksQMFState_RTA_32f* pQMFMem;

class QMFD_RTA_32f : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").set(10, 40, 10, '+');
        m_grid.begin({&len});
        initVectors({&pSrcLow, &pSrcHigh, &pDst}, vkArg::src);
        return true;
    }

    bool makeData() override {
        // Two samples come out of each pair.
        return vkcMakeState(pQMFMem, veksQMFGetStateSize_RTA_32f, veksQMFInit_RTA_32f) &&
               pSrcLow.createVector(len.value(), setRand, -32768, 32768) &&
               pSrcHigh.createVector(len.value(), setRand, -32768, 32768) &&
               pDst.createVector(2 * vkcSize(len), setZero, 0, 0);
    }

    void flushData() override {
        vkcFree(pQMFMem);
        vkcGridTest::flushData();
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG(QMFD_RTA_32f, veksQMFDecode_RTA_32f,
       veksQMFDecode_RTA_32f(pSrcLow.m_32f, pSrcHigh.m_32f, len.value(), pDst.m_32f, pQMFMem))
