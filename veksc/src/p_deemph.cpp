// De-emphasis of GSM full rate.
#include "vkc.h"

namespace {

vkVector pSrcDst;
vkVector pMem;
krStepIterator<int> len;
vkcGrid grid;

class TimDeemph_GSMFR_16s_I : public prTest {
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

bool TimDeemph_GSMFR_16s_I::canStart() {
    vkcRebuild(len, "length").set(100, 180, 10, '+');
    grid.begin({&len});
    for (vkVector* vector : {&pSrcDst, &pMem}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimDeemph_GSMFR_16s_I::makeData() {
    return pSrcDst.createVector(len.value(), setZero, 0, 0) && pMem.createVector(1, setZero, 0, 0);
}

void TimDeemph_GSMFR_16s_I::flushData() {
    for (vkVector* vector : {&pMem, &pSrcDst}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimDeemph_GSMFR_16s_I, veksDeemphasize_GSMFR_16s_I,
       veksDeemphasize_GSMFR_16s_I(pSrcDst.m_16s, len.value(), pMem.m_16s))
