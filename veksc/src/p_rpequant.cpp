// Inverse block quantisation of GSM full rate.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
krStepIterator<int> len;
vkcGrid grid;

constexpr Vek16s ampl = 3;
constexpr Vek16s amplSfs = 2;

class TimRPEQuantDecode_GSMFR_16s : public prTest {
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

bool TimRPEQuantDecode_GSMFR_16s::canStart() {
    vkcRebuild(len, "length").setList({13});
    grid.begin({&len});
    for (vkVector* vector : {&pSrc, &pDst}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimRPEQuantDecode_GSMFR_16s::makeData() {
    return pSrc.createVector(grid.room(len), setZero, 0, 0) && pDst.createVector(grid.room(len), setZero, 0, 0);
}

void TimRPEQuantDecode_GSMFR_16s::flushData() {
    for (vkVector* vector : {&pDst, &pSrc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimRPEQuantDecode_GSMFR_16s, veksRPEQuantDecode_GSMFR_16s,
       veksRPEQuantDecode_GSMFR_16s(pSrc.m_16s, ampl, amplSfs, pDst.m_16s))
