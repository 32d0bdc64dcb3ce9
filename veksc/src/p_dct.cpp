// Cosine transform of type IV.
#include "vkc.h"

namespace {

vkVector pSrc, pDst;
krStepIterator<int> len;

class TimDCTFwd : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcFrames(vkcRebuild(len, "Lenght"), m_func);
        initVectors({&pSrc}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        return walk({&len});
    }

    bool makeData() override {
        return pSrc.createVector(vkcFrame(len), setRand, -1024, 1024) &&
               pDst.createVector(vkcFrame(len), setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
};

} // namespace

VK_REG(TimDCTFwd, veksDCTInv_G7221_16s, veksDCTInv_G7221_16s(pSrc.m_16s, pDst.m_16s, len.value()))
VK_REG(TimDCTFwd, veksDCTInv_G722_16s, veksDCTInv_G722_16s(pSrc.m_16s, pDst.m_16s))
VK_REG(TimDCTFwd, veksDCTFwd_G7221_16s, veksDCTFwd_G7221_16s(pSrc.m_16s, pDst.m_16s, len.value()))
VK_REG(TimDCTFwd, veksDCTFwd_G722_16s, veksDCTFwd_G722_16s(pSrc.m_16s, pDst.m_16s))
