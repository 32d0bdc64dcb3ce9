// Voice activity detector of AMR, option 1.
#include "vkc.h"

namespace {

vkVector pSrcSpch;
krStepIterator<int> len;
Vek8u* pSrcDstVad1State;
Vek16s pResultVadFlag;

constexpr int stateSize = 116;
constexpr Vek16s maxHpCorr = 0;
constexpr Vek16s toneFlag = 0;

class TimVAD1 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "").setList({200});
        initVectors({&pSrcSpch}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        if (!pSrcSpch.createVector(m_grid.room(len), setZero, 0, 0) ||
            !hold(pSrcDstVad1State, veksMalloc_8u(stateSize), veksFree)) {
            return false;
        }
        setData();
        return true;
    }

    double getDivisor() override { return len.value(); }

    virtual void setData() {
        Vek16s words[stateSize / 2] = {};
        for (int i = 9; i <= 35; ++i) {
            words[i] = 150;
        }
        words[56] = 13106;
        std::memcpy(pSrcDstVad1State, words, sizeof words);
    }
};

} // namespace

VK_REG(TimVAD1, veksVAD1_GSMAMR_16s,
       veksVAD1_GSMAMR_16s(pSrcSpch.m_16s, reinterpret_cast<VeksVAD1State_GSMAMR*>(pSrcDstVad1State), &pResultVadFlag,
                           maxHpCorr, toneFlag))
