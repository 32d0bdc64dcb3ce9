// Dot products.
#include "vkc.h"

namespace {

vkVector pSrc1, pSrc2;
krStepIterator<int> lenght;
Vek32s dp;
Vek32f dpFloat;
int sfs[1];

class TimDotProd : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght");
        if (m_func.contains("veksDotProd_G729A_32f64f")) {
            lenght.setList({40, 60, 80, 100});
        } else if (m_func.contains("veksDotProd_G729A_16s32s")) {
            lenght.setList({80, 223});
        } else {
            lenght.setList({12, 21, 22, 40, 80});
        }
        initVectors({&pSrc1, &pSrc2}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        return pSrc1.createVector(lenght.value(), setOne, 0, 0) && pSrc2.createVector(lenght.value(), setOne, 0, 0);
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG(TimDotProd, veksDotProdAutoScale_16s32s_Sfs,
       veksDotProdAutoScale_16s32s_Sfs(pSrc1.m_16s, pSrc2.m_16s, lenght.value(), &dp, sfs))
VK_REG(TimDotProd, veksDotProd_G729A_32f, veksDotProd_G729A_32f(pSrc1.m_32f, pSrc2.m_32f, lenght.value(), &dpFloat))
VK_REG(TimDotProd, veksDotProd_G729A_16s32s, veksDotProd_G729A_16s32s(pSrc1.m_16s, pSrc2.m_16s, lenght.value(), &dp))
