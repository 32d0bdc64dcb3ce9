// Autocorrelation of one vector, plain and normalised.
#include "vkc.h"

namespace {

vkVector pSrc, pDst;
krStepIterator<int> lenght, lenghtDst;
int norm[1];

class TimAutoGSMFRCorr : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght");
        vkcRebuild(lenghtDst, "lenght Dst");
        if (m_func.contains("veksAutoCorr_16s32s")) {
            lenght.set(9, 160, 151, '+');
            lenghtDst.set(5, 9, 2, '+');
        } else {
            lenght.set(40, 240, 40, '+');
            lenghtDst.set(4, 12, 4, '+');
        }
        initVectors({&pSrc}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        return walk({&lenght, &lenghtDst});
    }

    bool makeData() override {
        return pSrc.createVector(lenght.value(), setOne, 0, 0) && pDst.createVector(lenghtDst.value(), setZero, 0, 0);
    }

    double getDivisor() override { return static_cast<double>(lenght.value()) * lenghtDst.value(); }
};

} // namespace

VK_REG(TimAutoGSMFRCorr, veksAutoCorr_NormE_NR_16s,
       veksAutoCorr_NormE_NR_16s(pSrc.m_16s, lenght.value(), pDst.m_16s, lenghtDst.value(), norm))
VK_REG(TimAutoGSMFRCorr, veksAutoCorr_NormE_16s32s,
       veksAutoCorr_NormE_16s32s(pSrc.m_16s, lenght.value(), pDst.m_32s, lenghtDst.value(), norm))
VK_REG(TimAutoGSMFRCorr, veksAutoCorr_16s32s,
       veksAutoCorr_16s32s(pSrc.m_16s, lenght.value(), pDst.m_32s, lenghtDst.value()))
