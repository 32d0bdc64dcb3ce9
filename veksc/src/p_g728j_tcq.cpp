// Trellis-coded search of the excitation of G.728 Annex J.
#include "vkc.h"

namespace {

vkVector pSrcLPC;
vkVector pSrc;
vkVector pSrcDstWindow;
vkVector pSrcDstResidual;
vkVector pDst;
krStepIterator<int> len;
vkcGrid grid;
int pSrcDstBestNode;

constexpr int order = 50;
// A gain of 16.
constexpr Vek32s inverse = 1 << 26;
constexpr Vek16s gain = 128;
const Vek32s* const invGain = &inverse;
const Vek16s* const excGain = &gain;

class TimTCQ_G728J : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return 5; }
    double getDivisor_el() override { return getDivisor(); }
    void parmsToOstrm() override {}
    void parmsToCstrm() override {}
};

bool TimTCQ_G728J::canStart() {
    vkcRebuild(len, "").setList({5});
    grid.begin({&len});
    for (vkVector* vector : {&pSrcLPC, &pSrc, &pSrcDstWindow, &pSrcDstResidual}) {
        vector->init(m_func, vkArg::src);
    }
    pDst.init(m_func, vkArg::dst);
    return true;
}

bool TimTCQ_G728J::makeData() {
    pSrcDstBestNode = 0;
    return pSrcLPC.createVector(order, setOne, 0, 0) && pSrc.createVector(grid.room(len), setOne, 0, 0) &&
           pSrcDstWindow.createVector(grid.room(len), setOne, 0, 0) &&
           pSrcDstResidual.createVector(grid.room(len), setOne, 0, 0) &&
           pDst.createVector(grid.room(len), setZero, 0, 0);
}

void TimTCQ_G728J::flushData() {
    for (vkVector* vector : {&pDst, &pSrcDstResidual, &pSrcDstWindow, &pSrc, &pSrcLPC}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimTCQ_G728J, veksCodebookSearchTCQ_G728_16s8u,
       veksCodebookSearchTCQ_G728_16s8u(pSrc.m_16s, pSrcLPC.m_16s, pDst.m_8u, pSrcDstWindow.m_16s,
                                        pSrcDstResidual.m_16s, &pSrcDstBestNode, *invGain, (*excGain)))
