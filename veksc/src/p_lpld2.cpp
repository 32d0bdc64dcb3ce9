// Levinson-Durbin recursion of G.723.1.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pLPC;
krStepIterator<int> lenght;
vkcGrid grid;
Vek16s Pk2;
Vek16s pErr;

constexpr Vek16s energy = 32767;

class TimLPCLevinsonDurbin723 : public prTest {
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
    virtual void setData();
};

bool TimLPCLevinsonDurbin723::canStart() {
    vkcRebuild(lenght, "Lenght").setList({10});
    grid.begin({&lenght});
    for (vkVector* vector : {&pSrc, &pLPC}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

void TimLPCLevinsonDurbin723::setData() {
    pSrc.m_16s[0] = 16384;
}

bool TimLPCLevinsonDurbin723::makeData() {
    if (!pSrc.createVector(grid.room(lenght), setValue, 1024, 0) ||
        !pLPC.createVector(grid.room(lenght), setZero, 0, 0)) {
        return false;
    }
    setData();
    return true;
}

void TimLPCLevinsonDurbin723::flushData() {
    for (vkVector* vector : {&pLPC, &pSrc}) {
        vector->deleteVector();
    }
}

} // namespace

// The energy goes in through the same word that the error comes out of: left to itself it would fall from call to call
// until the recursion breaks off at its first step.
VK_REG_I(TimLPCLevinsonDurbin723, veksLevinsonDurbin_G723_16s,
         veksLevinsonDurbin_G723_16s(pSrc.m_16s, &Pk2, &pErr, pLPC.m_16s), pErr = energy)
