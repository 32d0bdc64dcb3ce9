// Causal convolution.
#include "vkc.h"

namespace {

vkVector pSrc1, pSrc2, pDst;
krStepIterator<int> lenght;
vkcScaleIterator scaleFactor;

class TimConv : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght");
        if (m_wide) {
            lenght.set(10, 40, 10, '+');
        } else {
            lenght.setList({40});
        }
        vkcScales(scaleFactor, "scaleFactor", m_func, 0, 12);
        initVectors({&pSrc1, &pSrc2}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        return walk({&lenght, &scaleFactor});
    }

    bool makeData() override {
        const bool made = m_wide ? pSrc1.createVector(m_grid.room(lenght), setOne, 0, 0)
                                 : pSrc1.createVector(m_grid.room(lenght), setValue, 2048, 0);
        return made && pSrc2.createVector(m_grid.room(lenght), setValue, 2048, 0) &&
               pDst.createVector(m_grid.room(lenght), setZero, 0, 0);
    }

    double getDivisor() override { return lenght.value(); }

private:
    const bool m_wide = m_func.contains("16s32s");
};

} // namespace

VK_REG(TimConv, veksConvPartial_16s32s, veksConvPartial_16s32s(pSrc1.m_16s, pSrc2.m_16s, pDst.m_32s, lenght.value()))
VK_REG(TimConv, veksConvPartial_16s_Sfs,
       veksConvPartial_16s_Sfs(pSrc1.m_16s, pSrc2.m_16s, pDst.m_16s, lenght.value(), scaleFactor.value()))
