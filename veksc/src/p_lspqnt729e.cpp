// Quantiser of the line spectral pairs of G.729 Annex E.
#include "vkc.h"

namespace {

vkVector pSrcLpc;
vkVector pSrcPrevFreq;
vkVector pDstQLsf;
vkVector pDstQLsp;
vkVector pDstQLspIndex;
krStepIterator<int> lenght;
vkcGrid grid;

constexpr int rows = 4;
constexpr int freqCount = 10;
const Vek16s freq_prev_reset[freqCount] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};

class TimLspQnt729e : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return lenght.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
    virtual bool setData();
};

bool TimLspQnt729e::canStart() {
    vkcRebuild(lenght, "").setList({freqCount});
    grid.begin({&lenght});
    for (vkVector* vector : {&pSrcLpc, &pSrcPrevFreq, &pDstQLsf, &pDstQLsp, &pDstQLspIndex}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimLspQnt729e::setData() {
    for (int row = 0; row < rows; ++row) {
        if (!vkcDone(veksCopy_16s(freq_prev_reset, pSrcPrevFreq.m_16s + row * freqCount, freqCount))) {
            return false;
        }
    }
    return true;
}

bool TimLspQnt729e::makeData() {
    return pSrcLpc.createVector(grid.room(lenght), setRand, -512, 512) &&
           pSrcPrevFreq.createVector(rows * freqCount, setRand, -512, 512) &&
           pDstQLsf.createVector(grid.room(lenght), setZero, 0, 0) &&
           pDstQLsp.createVector(grid.room(lenght), setZero, 0, 0) && pDstQLspIndex.createVector(2, setRand, 0, 6) &&
           setData();
}

void TimLspQnt729e::flushData() {
    for (vkVector* vector : {&pDstQLspIndex, &pDstQLsp, &pDstQLsf, &pSrcPrevFreq, &pSrcLpc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimLspQnt729e, veksLSPQuant_G729E_16s,
       veksLSPQuant_G729E_16s(pSrcLpc.m_16s, pSrcPrevFreq.m_16s, pDstQLsf.m_16s, pDstQLsp.m_16s, pDstQLspIndex.m_16s))
