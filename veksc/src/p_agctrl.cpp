// Gain control after the post filters of G.729.
#include "vkc.h"

namespace {

vkVector pSrc, pTmp, pSrcDst, pGain;
krStepIterator<int> lenght;
int dataSize;

class TimAgctrl : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({40});
        initVectors({&pSrc, &pTmp, &pSrcDst, &pGain}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        const bool made = pSrc.createVector(m_grid.room(lenght), setValue, 10, 0) &&
                          pTmp.createVector(m_grid.room(lenght), setValue, 10, 0) &&
                          pSrcDst.createVector(m_grid.room(lenght), setZero, 0, 0) &&
                          pGain.createVector(m_grid.room(lenght), setValue, 100, 0);
        dataSize = pTmp.size();
        return made;
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG_I(TimAgctrl, veksGainControl_G729A_16s_I, veksGainControl_G729A_16s_I(pSrc.m_16s, pSrcDst.m_16s, pGain.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
VK_REG_I(TimAgctrl, veksGainControl_G729_16s_I, veksGainControl_G729_16s_I(pSrc.m_16s, pSrcDst.m_16s, pGain.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
