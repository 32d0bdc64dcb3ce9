// Correlation of two vectors.
#include "vkc.h"

namespace {

vkVector pSrc1, pSrc2, pSrc3, pDst;
krStepIterator<int> lenght, lenghtDst, step, lenght1, lagMin, lagMax;
vkcScaleIterator scaleFactor;

class TimCorr : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght");
        vkcRebuild(lenghtDst, "lenght Dst");
        vkcScales(scaleFactor, "scaleFactor", m_func);
        // Lags, step and first length belong to other correlations; they keep the walk the same for all.
        vkcFix(step, 1);
        vkcFix(lenght1, 80);
        vkcFix(lagMin, 1);
        vkcFix(lagMax, 1);
        initVectors({&pSrc1, &pSrc2, &pSrc3}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        if (m_shortDst) {
            lenght.set(40, 240, 40, '+');
            lenghtDst.set(4, 12, 4, '+');
            return walk({&lenght, &lenghtDst});
        }
        vkcFix(lenghtDst, 1);
        if (m_func.contains("NormM")) {
            lenght.set(40, 80, 40, '+');
        } else {
            lenght.set(40, 100, 20, '+');
        }
        return walk({&lenght, &scaleFactor});
    }

    bool makeData() override {
        // The whole length is written where the call takes no length of the destination.
        const int written = m_shortDst ? lenghtDst.value() : lenght.value();
        return pSrc1.createVector(lenght.value(), setValue, 2098, 0) &&
               pSrc2.createVector(lenght.value(), setValue, 2098, 0) &&
               pSrc3.createVector(lenght.value(), setValue, 1024, 0) && pDst.createVector(written, setZero, 0, 0);
    }

    double getDivisor() override {
        return static_cast<double>(lenght.value()) * (m_shortDst ? lenghtDst.value() : lenght.value());
    }

private:
    const bool m_shortDst = m_func.contains("CrossCorr_NR");
};

} // namespace

VK_REG(TimCorr, veksCrossCorr_16s32s_Sfs,
       veksCrossCorr_16s32s_Sfs(pSrc1.m_16s, pSrc2.m_16s, lenght.value(), pDst.m_32s, scaleFactor.value()))
VK_REG(TimCorr, veksCrossCorr_NR_16s,
       veksCrossCorr_NR_16s(pSrc1.m_16s, pSrc2.m_16s, lenght.value(), pDst.m_16s, lenghtDst.value()))
VK_REG(TimCorr, veksCrossCorr_NormM_16s, veksCrossCorr_NormM_16s(pSrc1.m_16s, pSrc2.m_16s, lenght.value(), pDst.m_16s))
