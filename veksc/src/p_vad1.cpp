// Voice activity detector of AMR, option 1.
#include "vkc.h"

namespace {

vkVector pSrcSpch;
krStepIterator<int> len;
vkcGrid grid;
Vek8u* pSrcDstVad1State;
Vek16s pResultVadFlag;

constexpr int stateSize = 116;
constexpr Vek16s maxHpCorr = 0;
constexpr Vek16s toneFlag = 0;

class TimVAD1 : public prTest {
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
    virtual void setData();
};

bool TimVAD1::canStart() {
    vkcRebuild(len, "").setList({200});
    grid.begin({&len});
    pSrcSpch.init(m_func, vkArg::src);
    return true;
}

bool TimVAD1::makeData() {
    if (!pSrcSpch.createVector(grid.room(len), setZero, 0, 0)) {
        return false;
    }
    pSrcDstVad1State = veksMalloc_8u(stateSize);
    if (pSrcDstVad1State == nullptr) {
        return false;
    }
    setData();
    return true;
}

void TimVAD1::setData() {
    Vek16s words[stateSize / 2] = {};
    for (int i = 9; i <= 35; ++i) {
        words[i] = 150;
    }
    words[56] = 13106;
    std::memcpy(pSrcDstVad1State, words, sizeof words);
}

void TimVAD1::flushData() {
    veksFree(pSrcDstVad1State);
    pSrcDstVad1State = nullptr;
    pSrcSpch.deleteVector();
}

} // namespace

VK_REG(TimVAD1, veksVAD1_GSMAMR_16s,
       veksVAD1_GSMAMR_16s(pSrcSpch.m_16s, reinterpret_cast<VeksVAD1State_GSMAMR*>(pSrcDstVad1State), &pResultVadFlag,
                           maxHpCorr, toneFlag))
