// Short-term post-filter of the real-time audio codec.
#include "vkc.h"

namespace {

vkVector pSrcLPC;
vkVector pSrcDstSpeech;
vkVector rgfltSTApfMem;
krStepIterator<int> len;
krStepIterator<int> order;
krStepIterator<int> apfIdx;
vkcGrid grid;
VeksPostFilterState_RTA_32f* pMem_32f;

class STPF_RTA : public prTest {
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

bool STPF_RTA::canStart() {
    vkcRebuild(len, "Lenght").set(80, 160, 80, '+');
    vkcRebuild(order, "Order").set(4, 17, 2, '+');
    vkcRebuild(apfIdx, "apfIdx").set(1, 3, 1, '+');
    grid.begin({&len, &order, &apfIdx});
    for (vkVector* vector : {&pSrcLPC, &pSrcDstSpeech, &rgfltSTApfMem}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool STPF_RTA::makeData() {
    // Of order n there are n + 1 coefficients.
    return vkcMakeState(pMem_32f, veksPostFilterGetStateSize_RTA_32f, veksPostFilterInit_RTA_32f) &&
           pSrcLPC.createVector(vkcSize(order) + 1, setRand, 10, 40) &&
           pSrcDstSpeech.createVector(len.value(), setZero, 0, 0) && rgfltSTApfMem.createVector(51, setZero, 0, 0);
}

void STPF_RTA::flushData() {
    veksFree(pMem_32f);
    pMem_32f = nullptr;
    for (vkVector* vector : {&rgfltSTApfMem, &pSrcDstSpeech, &pSrcLPC}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(STPF_RTA, veksPostFilter_RTA_32f_I,
       veksPostFilter_RTA_32f_I(pSrcLPC.m_32f, order.value(), pSrcDstSpeech.m_32f, len.value(), apfIdx.value(),
                                rgfltSTApfMem.m_32f, pMem_32f))
