// Reunion of the two bands of the real-time audio codec.
#include "vkc.h"

namespace {

vkVector pSrcLow;
vkVector pSrcHigh;
vkVector pDst;
krStepIterator<int> len;
vkcGrid grid;
VeksQMFState_RTA_32f* pQMFMem;

class QMFD_RTA_32f : public prTest {
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

bool QMFD_RTA_32f::canStart() {
    vkcRebuild(len, "Lenght").set(10, 40, 10, '+');
    grid.begin({&len});
    for (vkVector* vector : {&pSrcLow, &pSrcHigh, &pDst}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool QMFD_RTA_32f::makeData() {
    // Two samples come out of each pair.
    return vkcMakeState(pQMFMem, veksQMFGetStateSize_RTA_32f, veksQMFInit_RTA_32f) &&
           pSrcLow.createVector(len.value(), setRand, -32768, 32768) &&
           pSrcHigh.createVector(len.value(), setRand, -32768, 32768) &&
           pDst.createVector(2 * vkcSize(len), setZero, 0, 0);
}

void QMFD_RTA_32f::flushData() {
    veksFree(pQMFMem);
    pQMFMem = nullptr;
    for (vkVector* vector : {&pDst, &pSrcHigh, &pSrcLow}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(QMFD_RTA_32f, veksQMFDecode_RTA_32f,
       veksQMFDecode_RTA_32f(pSrcLow.m_32f, pSrcHigh.m_32f, len.value(), pDst.m_32f, pQMFMem))
