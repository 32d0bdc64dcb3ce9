// Autocorrelation of one vector, plain and normalised.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
krStepIterator<int> lenght;
krStepIterator<int> lenghtDst;
vkcGrid grid;
int norm[1];

class TimAutoGSMFRCorr : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return static_cast<double>(lenght.value()) * lenghtDst.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimAutoGSMFRCorr::canStart() {
    vkcRebuild(lenght, "lenght");
    vkcRebuild(lenghtDst, "lenght Dst");
    if (m_func.contains("veksAutoCorr_16s32s")) {
        lenght.set(9, 160, 151, '+');
        lenghtDst.set(5, 9, 2, '+');
    } else {
        lenght.set(40, 240, 40, '+');
        lenghtDst.set(4, 12, 4, '+');
    }
    grid.begin({&lenght, &lenghtDst});
    pSrc.init(m_func, vkArg::src);
    pDst.init(m_func, vkArg::dst);
    return true;
}

bool TimAutoGSMFRCorr::makeData() {
    return pSrc.createVector(lenght.value(), setOne, 0, 0) && pDst.createVector(lenghtDst.value(), setZero, 0, 0);
}

void TimAutoGSMFRCorr::flushData() {
    pDst.deleteVector();
    pSrc.deleteVector();
}

} // namespace

VK_REG(TimAutoGSMFRCorr, veksAutoCorr_NormE_NR_16s,
       veksAutoCorr_NormE_NR_16s(pSrc.m_16s, lenght.value(), pDst.m_16s, lenghtDst.value(), norm))
VK_REG(TimAutoGSMFRCorr, veksAutoCorr_NormE_16s32s,
       veksAutoCorr_NormE_16s32s(pSrc.m_16s, lenght.value(), pDst.m_32s, lenghtDst.value(), norm))
VK_REG(TimAutoGSMFRCorr, veksAutoCorr_16s32s,
       veksAutoCorr_16s32s(pSrc.m_16s, lenght.value(), pDst.m_32s, lenghtDst.value()))
