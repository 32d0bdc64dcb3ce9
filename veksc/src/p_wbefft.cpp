// Fourier transforms of the extended wide-band codec.
#include "vkc.h"

namespace {

vkVector pSrc, pDst;
krStepIterator<int> length;

class krFFT_wbe : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(length, "length").setList({48, 96, 192, 288, 576, 1152});
        initVectors({&pSrc, &pDst}, vk16s);
        return walk({&length});
    }

    bool makeData() override {
        return pSrc.createVector(length.value(), setValue, 1, 0) && pDst.createVector(length.value(), setZero, 0, 0);
    }

    double getDivisor() override { return length.value(); }
};

} // namespace

VK_REG(krFFT_wbe, veksFFTInv_PermToR_AMRWBE_16s, veksFFTInv_PermToR_AMRWBE_16s(pSrc.m_16s, pDst.m_16s, length.value()))
VK_REG(krFFT_wbe, veksFFTFwd_RToPerm_AMRWBE_16s, veksFFTFwd_RToPerm_AMRWBE_16s(pSrc.m_16s, pDst.m_16s, length.value()))
