// Hybrid windows of G.728.
#include "vkc.h"

namespace {

vkVector pSrc, pDst, pSrcSfs;
krStepIterator<int> bfi;
VeksWinHybridState_G728* pMem;

constexpr int frame = 20;
constexpr int blocks = 4;
constexpr int order = 50;

class TimHwg728 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(bfi, "bfi").set(0, 1, 1, '+');
        initVectors({&pSrc, &pDst, &pSrcSfs}, vkArg::src);
        return walk({&bfi});
    }

    bool initData() override {
        const VekG728Window window = m_func.contains("Block") ? VEK_G728_WINDOW_SYNTHESIS : VEK_G728_WINDOW_WEIGHTING;
        return vkcDone(veksWinHybridInit_G728_16s(window, pMem)) && pSrc.createVector(frame, setValue, 1024, 0) &&
               pDst.createVector(order + 1, setZero, 0, 0) && pSrcSfs.createVector(blocks, setValue, 0, 0);
    }

    bool makeData() override {
        int size = 0;
        return vkcDone(veksWinHybridGetStateSize_G728_16s(&size)) && hold(pMem, veksMalloc_8u(size), veksFree) &&
               initData();
    }

    double getDivisor() override { return 10; }
};

} // namespace

VK_REG(TimHwg728, veksWinHybridBlock_G728_16s,
       veksWinHybridBlock_G728_16s(bfi.value(), pSrc.m_16s, pSrcSfs.m_16s, pDst.m_16s, pMem))
VK_REG(TimHwg728, veksWinHybrid_G728_16s, veksWinHybrid_G728_16s(bfi.value(), pSrc.m_16s, pDst.m_16s, pMem))
