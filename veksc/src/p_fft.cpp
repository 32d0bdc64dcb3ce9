// Fourier transform of the voice activity detector.
#include "vkc.h"

namespace {

vkVector pSrcDst, pTmp;
krStepIterator<int> lenght;
int dataSize;

class TimFFT : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({128});
        initVectors({&pSrcDst, &pTmp}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        const bool made = pSrcDst.createVector(m_grid.room(lenght), setZero, 0, 0) &&
                          pTmp.createVector(m_grid.room(lenght), setOne, 0, 0);
        dataSize = pTmp.size();
        return made;
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG_I(TimFFT, veksFFTFwd_RToPerm_GSMAMR_16s_I, veksFFTFwd_RToPerm_GSMAMR_16s_I(pSrcDst.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
