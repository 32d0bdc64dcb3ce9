// Split into two bands of the real-time audio codec.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDstLow;
vkVector pDstHigh;
krStepIterator<int> len;
vkcGrid grid;
VeksQMFState_RTA_32f* pQMFMem;

class QMFE_RTA_32f : public prTest {
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

bool QMFE_RTA_32f::canStart() {
    vkcRebuild(len, "Lenght").set(20, 80, 20, '+');
    grid.begin({&len});
    for (vkVector* vector : {&pSrc, &pDstLow, &pDstHigh}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool QMFE_RTA_32f::makeData() {
    return vkcMakeState(pQMFMem, veksQMFGetStateSize_RTA_32f, veksQMFInit_RTA_32f) &&
           pSrc.createVector(len.value(), setRand, -32768, 32768) && pDstLow.createVector(len.value(), setZero, 0, 0) &&
           pDstHigh.createVector(len.value(), setZero, 0, 0);
}

void QMFE_RTA_32f::flushData() {
    veksFree(pQMFMem);
    pQMFMem = nullptr;
    for (vkVector* vector : {&pDstHigh, &pDstLow, &pSrc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(QMFE_RTA_32f, veksQMFEncode_RTA_32f,
       veksQMFEncode_RTA_32f(pSrc.m_32f, len.value(), pDstLow.m_32f, pDstHigh.m_32f, pQMFMem))
