// Gain control after the formant post-filter of G.723.1.
#include "vkc.h"

namespace {

vkVector pSrcDst, pTmp;
krStepIterator<int> lenght;
Vek16s gain;
int dataSize;

constexpr Vek32s energy = 1 << 24;

class TimAgctrl2 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({60});
        initVectors({&pSrcDst, &pTmp}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        gain = 1 << 12;
        const bool made = pSrcDst.createVector(m_grid.room(lenght), setZero, 0, 0) &&
                          pTmp.createVector(m_grid.room(lenght), setRand, 0, 0);
        dataSize = pTmp.size();
        return made;
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG_I(TimAgctrl2, veksGainControl_G723_16s_I, veksGainControl_G723_16s_I(energy, pSrcDst.m_16s, &gain),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
