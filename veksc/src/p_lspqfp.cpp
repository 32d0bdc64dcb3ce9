// Quantiser of the line spectral pairs of G.729 Annex E, floating.
#include "vkc.h"

namespace {

vkVector pSrcLsp;
vkVector pSrcDstPrevFreq;
vkVector pDstQLsf;
vkVector pDstQLsp;
vkVector pDstQLspIndex;
krStepIterator<int> lenght;
vkcGrid grid;

class TimingLSPQnt : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return lenght.value() * 4.0; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimingLSPQnt::canStart() {
    vkcRebuild(lenght, "lenght").setList({10});
    grid.begin({&lenght});
    for (vkVector* vector : {&pSrcLsp, &pSrcDstPrevFreq, &pDstQLsf, &pDstQLsp}) {
        vector->init(m_func, vkArg::src);
    }
    pDstQLspIndex.init(vk32s); // an index is no floating number
    return true;
}

bool TimingLSPQnt::makeData() {
    return pSrcLsp.createVector(grid.room(lenght), setRand, 0, 1) && pSrcDstPrevFreq.createVector(40, setRand, 0, 1) &&
           pDstQLsf.createVector(grid.room(lenght), setZero, 0, 0) &&
           pDstQLsp.createVector(grid.room(lenght), setZero, 0, 0) && pDstQLspIndex.createVector(2, setZero, 0, 0);
}

void TimingLSPQnt::flushData() {
    for (vkVector* vector : {&pDstQLspIndex, &pDstQLsp, &pDstQLsf, &pSrcDstPrevFreq, &pSrcLsp}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimingLSPQnt, veksLSPQuant_G729E_32f,
       veksLSPQuant_G729E_32f(pSrcLsp.m_32f, pSrcDstPrevFreq.m_32f, pDstQLsf.m_32f, pDstQLsp.m_32f,
                              pDstQLspIndex.m_32s))
