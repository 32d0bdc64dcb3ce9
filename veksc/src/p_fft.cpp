// Fourier transform of the voice activity detector.
#include "vkc.h"

namespace {

vkVector pSrcDst;
vkVector pTmp;
krStepIterator<int> lenght;
vkcGrid grid;
int dataSize;

class TimFFT : public prTest {
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
};

bool TimFFT::canStart() {
    vkcRebuild(lenght, "lenght").setList({128});
    grid.begin({&lenght});
    pSrcDst.init(m_func, vkArg::src);
    pTmp.init(m_func, vkArg::src);
    return true;
}

bool TimFFT::makeData() {
    const bool made =
        pSrcDst.createVector(grid.room(lenght), setZero, 0, 0) && pTmp.createVector(grid.room(lenght), setOne, 0, 0);
    dataSize = pTmp.size();
    return made;
}

void TimFFT::flushData() {
    pTmp.deleteVector();
    pSrcDst.deleteVector();
}

} // namespace

VK_REG_I(TimFFT, veksFFTFwd_RToPerm_GSMAMR_16s_I, veksFFTFwd_RToPerm_GSMAMR_16s_I(pSrcDst.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
