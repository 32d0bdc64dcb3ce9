// Correlation matrix of the impulse response, as the fixed codebook searches of G.729 take it.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
krStepIterator<int> len_src;
krStepIterator<int> len_dst;
vkcGrid grid;

class TimToeplizMatrix : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return len_dst.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
    virtual void setData();
};

bool TimToeplizMatrix::canStart() {
    vkcRebuild(len_src, "Lenght Src").setList({40});
    vkcRebuild(len_dst, "Lenght Dst").setList({616});
    grid.begin({&len_src, &len_dst});
    pSrc.init(m_func, vkArg::src);
    pDst.init(m_func, vkArg::dst);
    return true;
}

// A decaying oscillation: the shape of a weighted synthesis filter's impulse response.
void TimToeplizMatrix::setData() {
    double sample = 4096;
    double before = 0;
    for (int i = 0; i < len_src.value(); ++i) {
        pSrc.setIndex(i, setValue, static_cast<int>(sample), 0);
        const double next = 1.4 * sample - 0.7 * before;
        before = sample;
        sample = next;
    }
}

bool TimToeplizMatrix::makeData() {
    if (!pSrc.createVector(grid.room(len_src), setZero, 0, 0) ||
        !pDst.createVector(grid.room(len_dst), setZero, 0, 0)) {
        return false;
    }
    setData();
    return true;
}

void TimToeplizMatrix::flushData() {
    pDst.deleteVector();
    pSrc.deleteVector();
}

} // namespace

VK_REG(TimToeplizMatrix, veksToeplizMatrix_G729_32f, veksToeplizMatrix_G729_32f(pSrc.m_32f, pDst.m_32f))
VK_REG(TimToeplizMatrix, veksToeplizMatrix_G729_16s, veksToeplizMatrix_G729_16s(pSrc.m_16s, pDst.m_16s))
VK_REG(TimToeplizMatrix, veksToeplizMatrix_G729_16s32s, veksToeplizMatrix_G729_16s32s(pSrc.m_16s, pDst.m_32s))
