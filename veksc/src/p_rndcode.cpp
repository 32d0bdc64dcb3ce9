// Noise excitation of G.729 Annex B.
#include "vkc.h"

namespace {

vkVector pSeed;
vkVector pPos;
vkVector pSign;
vkVector pExc;
krStepIterator<int> lenght;
vkcGrid grid;

class TimRndCode : public prTest {
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

bool TimRndCode::canStart() {
    vkcRebuild(lenght, "lenght").set(4, 40, 4, '+');
    grid.begin({&lenght});
    for (vkVector* vector : {&pSeed, &pPos, &pSign}) {
        vector->init(vk16s);
    }
    pExc.init(m_func.contains("_16s32f") ? vk32f : vk16s);
    return true;
}

bool TimRndCode::makeData() {
    return pSeed.createVector(1, setValue, 1000, 0) && pPos.createVector(lenght.value(), setZero, 0, 0) &&
           pSign.createVector(lenght.value(), setZero, 0, 0) && pExc.createVector(lenght.value(), setZero, 0, 0);
}

void TimRndCode::flushData() {
    for (vkVector* vector : {&pExc, &pSign, &pPos, &pSeed}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimRndCode, veksRandomNoiseExcitation_G729B_16s32f,
       veksRandomNoiseExcitation_G729B_16s32f(pSeed.m_16s, pExc.m_32f, lenght.value()))
VK_REG(TimRndCode, veksRandomNoiseExcitation_G729B_16s,
       veksRandomNoiseExcitation_G729B_16s(pSeed.m_16s, pExc.m_16s, lenght.value()))
