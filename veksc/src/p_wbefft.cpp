// Fourier transforms of the extended wide-band codec.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
krStepIterator<int> length;

class krFFT_wbe : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool initData() override { return vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return length.value(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
};

bool krFFT_wbe::canStart() {
    vkcRebuild(length, "length").setList({48, 96, 192, 288, 576, 1152});
    m_parms.append(&length);
    pSrc.init(vk16s);
    pDst.init(vk16s);
    return true;
}

bool krFFT_wbe::makeData() {
    return pSrc.createVector(length.value(), setValue, 1, 0) && pDst.createVector(length.value(), setZero, 0, 0);
}

void krFFT_wbe::flushData() {
    pDst.deleteVector();
    pSrc.deleteVector();
}

} // namespace

VK_REG(krFFT_wbe, veksFFTInv_PermToR_AMRWBE_16s, veksFFTInv_PermToR_AMRWBE_16s(pSrc.m_16s, pDst.m_16s, length.value()))
VK_REG(krFFT_wbe, veksFFTFwd_RToPerm_AMRWBE_16s, veksFFTFwd_RToPerm_AMRWBE_16s(pSrc.m_16s, pDst.m_16s, length.value()))
