// Voice activity detector of AMR, option 2.
#include "vkc.h"

namespace {

vkVector pSrcSpch;
krStepIterator<int> len;
vkcGrid grid;
Vek8u* pSrcDstVad2State;
Vek16s pResultVadFlag;

constexpr int stateSize = 188;
constexpr Vek16s ltpFlag = 0;

class TimVAD2 : public prTest {
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

bool TimVAD2::canStart() {
    vkcRebuild(len, "").setList({160});
    grid.begin({&len});
    pSrcSpch.init(m_func, vkArg::src);
    return true;
}

bool TimVAD2::makeData() {
    if (!pSrcSpch.createVector(grid.room(len), setZero, 0, 0)) {
        return false;
    }
    pSrcDstVad2State = veksMalloc_8u(stateSize);
    if (pSrcDstVad2State == nullptr) {
        return false;
    }
    setData();
    return true;
}

void TimVAD2::setData() {
    std::memset(pSrcDstVad2State, 0, stateSize);
}

void TimVAD2::flushData() {
    veksFree(pSrcDstVad2State);
    pSrcDstVad2State = nullptr;
    pSrcSpch.deleteVector();
}

} // namespace

VK_REG(TimVAD2, veksVAD2_GSMAMR_16s,
       veksVAD2_GSMAMR_16s(pSrcSpch.m_16s, reinterpret_cast<VeksVAD2State_GSMAMR*>(pSrcDstVad2State), &pResultVadFlag,
                           ltpFlag))
