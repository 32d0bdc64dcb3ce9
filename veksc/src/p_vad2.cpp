// Voice activity detector of AMR, option 2.
#include "vkc.h"

namespace {

vkVector pSrcSpch;
krStepIterator<int> len;
Vek8u* pSrcDstVad2State;
Vek16s pResultVadFlag;

constexpr int stateSize = 188;
constexpr Vek16s ltpFlag = 0;

class TimVAD2 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "").setList({160});
        initVectors({&pSrcSpch}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        if (!pSrcSpch.createVector(m_grid.room(len), setZero, 0, 0) ||
            !hold(pSrcDstVad2State, veksMalloc_8u(stateSize), veksFree)) {
            return false;
        }
        setData();
        return true;
    }

    double getDivisor() override { return len.value(); }
    virtual void setData() { std::memset(pSrcDstVad2State, 0, stateSize); }
};

} // namespace

VK_REG(TimVAD2, veksVAD2_GSMAMR_16s,
       veksVAD2_GSMAMR_16s(pSrcSpch.m_16s, reinterpret_cast<VeksVAD2State_GSMAMR*>(pSrcDstVad2State), &pResultVadFlag,
                           ltpFlag))
