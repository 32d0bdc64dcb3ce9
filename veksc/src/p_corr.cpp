// Correlation of two vectors.
#include "vkc.h"

namespace {

vkVector pSrc1;
vkVector pSrc2;
vkVector pSrc3;
vkVector pDst;
krStepIterator<int> lenght;
krStepIterator<int> lenghtDst;
krStepIterator<int> step;
krStepIterator<int> lenght1;
krStepIterator<int> lagMin;
krStepIterator<int> lagMax;
vkcScaleIterator scaleFactor;
vkcGrid grid;

class TimCorr : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override;
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }

private:
    bool m_shortDst = false;
};

bool TimCorr::canStart() {
    m_shortDst = m_func.contains("CrossCorr_NR");
    vkcRebuild(lenght, "lenght");
    vkcRebuild(lenghtDst, "lenght Dst");
    vkcScales(scaleFactor, "scaleFactor", m_func);
    // Lags, step and first length belong to other correlations; they keep the walk the same for all.
    vkcFix(step, 1);
    vkcFix(lenght1, 80);
    vkcFix(lagMin, 1);
    vkcFix(lagMax, 1);
    if (m_shortDst) {
        lenght.set(40, 240, 40, '+');
        lenghtDst.set(4, 12, 4, '+');
        grid.begin({&lenght, &lenghtDst});
    } else {
        vkcFix(lenghtDst, 1);
        if (m_func.contains("NormM")) {
            lenght.set(40, 80, 40, '+');
        } else {
            lenght.set(40, 100, 20, '+');
        }
        grid.begin({&lenght, &scaleFactor});
    }
    pSrc1.init(m_func, vkArg::src);
    pSrc2.init(m_func, vkArg::src);
    pSrc3.init(m_func, vkArg::src);
    pDst.init(m_func, vkArg::dst);
    return true;
}

bool TimCorr::makeData() {
    // The whole length is written where the call takes no length of the destination.
    const int written = m_shortDst ? lenghtDst.value() : lenght.value();
    return pSrc1.createVector(lenght.value(), setValue, 2098, 0) &&
           pSrc2.createVector(lenght.value(), setValue, 2098, 0) &&
           pSrc3.createVector(lenght.value(), setValue, 1024, 0) && pDst.createVector(written, setZero, 0, 0);
}

void TimCorr::flushData() {
    for (vkVector* vector : {&pDst, &pSrc3, &pSrc2, &pSrc1}) {
        vector->deleteVector();
    }
}

double TimCorr::getDivisor() {
    return static_cast<double>(lenght.value()) * (m_shortDst ? lenghtDst.value() : lenght.value());
}

} // namespace

VK_REG(TimCorr, veksCrossCorr_16s32s_Sfs,
       veksCrossCorr_16s32s_Sfs(pSrc1.m_16s, pSrc2.m_16s, lenght.value(), pDst.m_32s, scaleFactor.value()))
VK_REG(TimCorr, veksCrossCorr_NR_16s,
       veksCrossCorr_NR_16s(pSrc1.m_16s, pSrc2.m_16s, lenght.value(), pDst.m_16s, lenghtDst.value()))
VK_REG(TimCorr, veksCrossCorr_NormM_16s, veksCrossCorr_NormM_16s(pSrc1.m_16s, pSrc2.m_16s, lenght.value(), pDst.m_16s))
