// Reunion of the two bands of the real-time audio codec.
#include "vkc.h"

namespace {

vkVector pSrcLow, pSrcHigh, pDst;
krStepIterator<int> len;
VeksQMFState_RTA_32f* pQMFMem;

class QMFD_RTA_32f : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").set(10, 40, 10, '+');
        initVectors({&pSrcLow, &pSrcHigh, &pDst}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        // Two samples come out of each pair.
        return initState(pQMFMem, veksQMFGetStateSize_RTA_32f, veksQMFInit_RTA_32f) &&
               pSrcLow.createVector(len.value(), setRand, -32768, 32768) &&
               pSrcHigh.createVector(len.value(), setRand, -32768, 32768) &&
               pDst.createVector(2 * vkcSize(len), setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG(QMFD_RTA_32f, veksQMFDecode_RTA_32f,
       veksQMFDecode_RTA_32f(pSrcLow.m_32f, pSrcHigh.m_32f, len.value(), pDst.m_32f, pQMFMem))
