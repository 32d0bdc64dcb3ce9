// Correlation matrix of the impulse response, as the fixed codebook searches of G.729 take it.
#include "vkc.h"

namespace {

vkVector pSrc, pDst;
krStepIterator<int> len_src, len_dst;

class TimToeplizMatrix : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len_src, "Lenght Src").setList({40});
        vkcRebuild(len_dst, "Lenght Dst").setList({616});
        initVectors({&pSrc}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        return walk({&len_src, &len_dst});
    }

    bool makeData() override {
        if (!pSrc.createVector(m_grid.room(len_src), setZero, 0, 0) ||
            !pDst.createVector(m_grid.room(len_dst), setZero, 0, 0)) {
            return false;
        }
        setData();
        return true;
    }

    double getDivisor() override { return len_dst.value(); }

    // A decaying oscillation: the shape of a weighted synthesis filter's impulse response.
    virtual void setData() {
        double sample = 4096;
        double before = 0;
        for (int i = 0; i < len_src.value(); ++i) {
            pSrc.setIndex(i, setValue, static_cast<int>(sample), 0);
            const double next = 1.4 * sample - 0.7 * before;
            before = sample;
            sample = next;
        }
    }
};

} // namespace

VK_REG(TimToeplizMatrix, veksToeplizMatrix_G729_32f, veksToeplizMatrix_G729_32f(pSrc.m_32f, pDst.m_32f))
VK_REG(TimToeplizMatrix, veksToeplizMatrix_G729_16s, veksToeplizMatrix_G729_16s(pSrc.m_16s, pDst.m_16s))
VK_REG(TimToeplizMatrix, veksToeplizMatrix_G729_16s32s, veksToeplizMatrix_G729_16s32s(pSrc.m_16s, pDst.m_32s))
