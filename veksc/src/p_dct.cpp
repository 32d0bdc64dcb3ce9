// Cosine transform of type IV.
#include "vkc.h"

#include <algorithm>

namespace {

vkVector pSrc;
vkVector pDst;
krStepIterator<int> len;

// The length of the functions that do not take one.
constexpr int frame = 320;

class TimDCTFwd : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool initData() override { return vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
};

bool TimDCTFwd::canStart() {
    vkcRebuild(len, "Lenght");
    if (m_func.contains("G7221")) {
        len.set(320, 640, 320, '+');
    } else {
        len.setList({frame});
    }
    m_parms.append(&len);
    pSrc.init(m_func, vkArg::src);
    pDst.init(m_func, vkArg::dst);
    return true;
}

bool TimDCTFwd::makeData() {
    return pSrc.createVector(std::max(len.value(), frame), setRand, -1024, 1024) &&
           pDst.createVector(std::max(len.value(), frame), setZero, 0, 0);
}

void TimDCTFwd::flushData() {
    pDst.deleteVector();
    pSrc.deleteVector();
}

} // namespace

VK_REG(TimDCTFwd, veksDCTInv_G7221_16s, veksDCTInv_G7221_16s(pSrc.m_16s, pDst.m_16s, len.value()))
VK_REG(TimDCTFwd, veksDCTInv_G722_16s, veksDCTInv_G722_16s(pSrc.m_16s, pDst.m_16s))
VK_REG(TimDCTFwd, veksDCTFwd_G7221_16s, veksDCTFwd_G7221_16s(pSrc.m_16s, pDst.m_16s, len.value()))
VK_REG(TimDCTFwd, veksDCTFwd_G722_16s, veksDCTFwd_G722_16s(pSrc.m_16s, pDst.m_16s))
