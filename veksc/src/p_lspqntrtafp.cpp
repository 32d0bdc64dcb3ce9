// Quantiser of the line spectral pairs of the real-time audio codec.
#include "vkc.h"

#include <iterator>

namespace {

vkVector pSrcLSP;
vkVector pSrcLPC;
vkVector pDstLSP;
vkVector pDstLSPIndex;
krStepIterator<int> step;
vkcGrid grid;
int order;
VekPCMFrequency freq;

constexpr int complexity = 4;

constexpr int orders[] = {10, 6, 4};

class TimQNTFP_RTA : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return order; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }

private:
    virtual void setData();
};

bool TimQNTFP_RTA::canStart() {
    vkcRebuild(step, "stage").set(0, 2, 1, '+');
    grid.begin({&step});
    for (vkVector* vector : {&pSrcLSP, &pSrcLPC, &pDstLSP}) {
        vector->init(m_func, vkArg::src);
    }
    pDstLSPIndex.init(vk32s); // an index is no floating number
    return true;
}

bool TimQNTFP_RTA::makeData() {
    if (!vkcCounts(step, std::size(orders))) {
        return false;
    }
    setData();
    return pSrcLSP.createVector(order, setRand, 10, 20) && pSrcLPC.createVector(order + 1, setRand, 10, 20) &&
           pDstLSP.createVector(order, setZero, 0, 0) && pDstLSPIndex.createVector(11, setZero, 0, 0);
}

void TimQNTFP_RTA::setData() {
    order = orders[step.value()];
    freq = step.value() == 0 ? VEK_PCM_FREQ_8000 : VEK_PCM_FREQ_16000;
}

void TimQNTFP_RTA::flushData() {
    for (vkVector* vector : {&pDstLSPIndex, &pDstLSP, &pSrcLPC, &pSrcLSP}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimQNTFP_RTA, veksLSPQuant_RTA_32f,
       veksLSPQuant_RTA_32f(pSrcLSP.m_32f, pSrcLPC.m_32f, pDstLSP.m_32f, order, pDstLSPIndex.m_32s, freq, complexity))
