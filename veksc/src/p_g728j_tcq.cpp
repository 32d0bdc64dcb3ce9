// Trellis-coded search of the excitation of G.728 Annex J.
#include "vkc.h"

namespace {

vkVector pSrcLPC, pSrc, pSrcDstWindow, pSrcDstResidual, pDst;
krStepIterator<int> len;
int pSrcDstBestNode;

constexpr int order = 50;
// A gain of 16.
constexpr Vek32s inverse = 1 << 26;
constexpr Vek16s gain = 128;
const Vek32s* const invGain = &inverse;
const Vek16s* const excGain = &gain;

class TimTCQ_G728J : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "").setList({5});
        initVectors({&pSrcLPC, &pSrc, &pSrcDstWindow, &pSrcDstResidual}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        return walk({&len});
    }

    bool makeData() override {
        pSrcDstBestNode = 0;
        return pSrcLPC.createVector(order, setOne, 0, 0) && pSrc.createVector(m_grid.room(len), setOne, 0, 0) &&
               pSrcDstWindow.createVector(m_grid.room(len), setOne, 0, 0) &&
               pSrcDstResidual.createVector(m_grid.room(len), setOne, 0, 0) &&
               pDst.createVector(m_grid.room(len), setZero, 0, 0);
    }

    double getDivisor() override { return 5; }
    krString getUnit() override { return prTest::getUnit(); }
    void parmsToOstrm() override {}
    void parmsToCstrm() override {}
    void parmsNameToCstrm() override {}
};

} // namespace

VK_REG(TimTCQ_G728J, veksCodebookSearchTCQ_G728_16s8u,
       veksCodebookSearchTCQ_G728_16s8u(pSrc.m_16s, pSrcLPC.m_16s, pDst.m_8u, pSrcDstWindow.m_16s,
                                        pSrcDstResidual.m_16s, &pSrcDstBestNode, *invGain, (*excGain)))
