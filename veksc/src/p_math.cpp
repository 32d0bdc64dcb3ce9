// Element-wise arithmetic: products, interpolation, inverse square root, lag window, powers of a constant.
#include "vkc.h"

namespace {

vkVector pSrc1, pSrc2, pDst, pSrcDst, pTmp;
vkcScaleIterator scaleFactor;
krEnumIterator<int> lenght_1;
krStepIterator<int> lenght;
int dataSize;

constexpr Vek16s val = 16384;
constexpr Vek32f valFloat = 0.5F;
constexpr int powerBase = 16;

class TimMath : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        const bool interpolatesLsp = m_func.contains("veksInterpolate_G729_16s");
        const bool interpolatesNR = m_func.contains("InterpolateC_NR");
        m_listed = interpolatesLsp || interpolatesNR;
        vkcScales(scaleFactor, "scaleFactor", m_func, 0, 8, 15);
        if (interpolatesLsp) {
            vkcRebuild(lenght_1, "length").setList({8, 10, 31, 32, 64});
        } else if (interpolatesNR) {
            vkcRebuild(lenght_1, "lenght").setList({11, 39, 40, 60, 80, 120});
            lenght_1.initValidation();
            for (const int longest : {180, 223}) {
                lenght_1.add(longest);
                lenght_1.addValidation(longest);
            }
        } else {
            vkcRebuild(lenght_1, "lenght").setList({10, 40, 60});
        }
        vkcRebuild(lenght, "lenght");
        if (m_func.contains("LagWindow")) {
            lenght.set(2, 12, 4, '+');
        } else {
            lenght.set(40, 240, 40, '+');
        }
        initVectors({&pSrc1, &pSrc2, &pDst, &pSrcDst, &pTmp}, vkArg::src);
        return m_listed ? walk({&lenght_1, &scaleFactor}) : walk({&lenght, &scaleFactor});
    }

    bool makeData() override {
        const bool made =
            pSrc1.createVector(elements(), setZero, 0, 0) && pSrc2.createVector(elements(), setRand, -4092, 4092) &&
            pDst.createVector(elements(), setZero, 0, 0) && pSrcDst.createVector(elements(), setZero, 0, 0) &&
            pTmp.createVector(elements(), setValue, 10, 0);
        dataSize = pTmp.size();
        return made;
    }

    double getDivisor() override { return elements(); }

private:
    int elements() const { return m_listed ? lenght_1.value() : lenght.value(); }

    bool m_listed = false;
};

class krMulPowerC : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcScales(scaleFactor, "scaleFactor", m_func, 0, 8, 15);
        vkcRebuild(lenght_1, "length").setList({9, 11, 17, 32, 64, 128});
        initVectors({&pSrc1}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        return walk({&lenght_1, &scaleFactor});
    }

    bool makeData() override {
        return pSrc1.createVector(lenght_1.value(), setValue, 1, 0) &&
               pDst.createVector(lenght_1.value(), setValue, 1, 0);
    }

    double getDivisor() override { return lenght_1.value(); }
};

} // namespace

VK_REG_I(TimMath, veksInvSqrt_32s_I, veksInvSqrt_32s_I(pSrcDst.m_32s, lenght.value()),
         vkcRestore(pSrcDst.m_32s, pTmp.m_32s, dataSize))
VK_REG(TimMath, veksInterpolateC_NR_G729_16s_Sfs,
       veksInterpolateC_NR_G729_16s_Sfs(pSrc1.m_16s, val, pSrc2.m_16s, val, pDst.m_16s, lenght_1.value(),
                                        scaleFactor.value()))
VK_REG(TimMath, veksInterpolateC_G729_32f,
       veksInterpolateC_G729_32f(pSrc1.m_32f, pSrc2.m_32f, pDst.m_32f, lenght.value(), valFloat, valFloat))
VK_REG(TimMath, veksInterpolateC_G729_16s_Sfs,
       veksInterpolateC_G729_16s_Sfs(pSrc1.m_16s, val, pSrc2.m_16s, val, pDst.m_16s, lenght.value(),
                                     scaleFactor.value()))
VK_REG(TimMath, veksInterpolate_G729_16s,
       veksInterpolate_G729_16s(pSrc1.m_16s, pSrc2.m_16s, pDst.m_16s, lenght_1.value()))
VK_REG_I(TimMath, veksLagWindow_G729_32s_I, veksLagWindow_G729_32s_I(pSrcDst.m_32s, lenght.value()),
         vkcRestore(pSrcDst.m_32s, pTmp.m_32s, dataSize))
VK_REG_I(TimMath, veksMulC_NR_16s_ISfs, veksMulC_NR_16s_ISfs(val, pSrcDst.m_16s, lenght.value(), scaleFactor.value()),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
VK_REG_I(TimMath, veksMul_NR_16s_ISfs,
         veksMul_NR_16s_ISfs(pSrc1.m_16s, pSrcDst.m_16s, lenght.value(), scaleFactor.value()),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
VK_REG(TimMath, veksMulC_NR_16s_Sfs,
       veksMulC_NR_16s_Sfs(pSrc1.m_16s, val, pDst.m_16s, lenght.value(), scaleFactor.value()))
VK_REG(TimMath, veksMul_NR_16s_Sfs,
       veksMul_NR_16s_Sfs(pSrc1.m_16s, pSrc2.m_16s, pDst.m_16s, lenght.value(), scaleFactor.value()))
VK_REG(krMulPowerC, veksMulPowerC_NR_16s_Sfs,
       veksMulPowerC_NR_16s_Sfs(pSrc1.m_16s, powerBase, pDst.m_16s, lenght_1.value(), scaleFactor.value()))
