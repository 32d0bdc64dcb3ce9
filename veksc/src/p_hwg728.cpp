// Hybrid windows of G.728.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
vkVector pSrcSfs;
krStepIterator<int> bfi;
vkcGrid grid;
VeksWinHybridState_G728* pMem;

constexpr int frame = 20;
constexpr int blocks = 4;
constexpr int order = 50;

class TimHwg728 : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool initData() override;
    bool makeData();
    void flushData() override;
    double getDivisor() override { return 10; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }

private:
    bool m_block = false;
};

bool TimHwg728::canStart() {
    m_block = m_func.contains("Block");
    vkcRebuild(bfi, "bfi").set(0, 1, 1, '+');
    grid.begin({&bfi});
    for (vkVector* vector : {&pSrc, &pDst, &pSrcSfs}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimHwg728::makeData() {
    int size = 0;
    if (!vkcDone(veksWinHybridGetStateSize_G728_16s(&size))) {
        return false;
    }
    pMem = reinterpret_cast<VeksWinHybridState_G728*>(veksMalloc_8u(size));
    return pMem != nullptr && initData();
}

bool TimHwg728::initData() {
    const VekG728Window window = m_block ? VEK_G728_WINDOW_SYNTHESIS : VEK_G728_WINDOW_WEIGHTING;
    return vkcDone(veksWinHybridInit_G728_16s(window, pMem)) && pSrc.createVector(frame, setValue, 1024, 0) &&
           pDst.createVector(order + 1, setZero, 0, 0) && pSrcSfs.createVector(blocks, setValue, 0, 0);
}

void TimHwg728::flushData() {
    for (vkVector* vector : {&pSrcSfs, &pDst, &pSrc}) {
        vector->deleteVector();
    }
    veksFree(pMem);
    pMem = nullptr;
}

} // namespace

VK_REG(TimHwg728, veksWinHybridBlock_G728_16s,
       veksWinHybridBlock_G728_16s(bfi.value(), pSrc.m_16s, pSrcSfs.m_16s, pDst.m_16s, pMem))
VK_REG(TimHwg728, veksWinHybrid_G728_16s, veksWinHybrid_G728_16s(bfi.value(), pSrc.m_16s, pDst.m_16s, pMem))
