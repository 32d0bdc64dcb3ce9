// The second half of the inverse modulated lapped transform: unfolding, window and overlap.
#include "vkc.h"

#include <algorithm>

namespace {

vkVector pSrcSpchDecomposed;
vkVector pSrcDstSpchDecomposedOld;
vkVector pDstSpch;
krStepIterator<int> len;

// The length of the functions that do not take one.
constexpr int frame = 320;

class TimDCTToMLT : public prTest {
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

bool TimDCTToMLT::canStart() {
    vkcRebuild(len, "Lenght");
    if (m_func.contains("G7221")) {
        len.set(320, 640, 320, '+');
    } else {
        len.setList({frame});
    }
    m_parms.append(&len);
    for (vkVector* vector : {&pSrcSpchDecomposed, &pSrcDstSpchDecomposedOld, &pDstSpch}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimDCTToMLT::makeData() {
    return pSrcSpchDecomposed.createVector(std::max(len.value(), frame), setRand, -1024, 1024) &&
           pSrcDstSpchDecomposedOld.createVector(std::max(len.value(), frame), setRand, -1024, 1024) &&
           pDstSpch.createVector(std::max(len.value(), frame), setZero, 0, 0);
}

void TimDCTToMLT::flushData() {
    for (vkVector* vector : {&pDstSpch, &pSrcDstSpchDecomposedOld, &pSrcSpchDecomposed}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimDCTToMLT, veksDecomposeDCTToMLT_G7221_16s,
       veksDecomposeDCTToMLT_G7221_16s(pSrcSpchDecomposed.m_16s, pSrcDstSpchDecomposedOld.m_16s, pDstSpch.m_16s,
                                       len.value()))
VK_REG(TimDCTToMLT, veksDecomposeDCTToMLT_G722_16s,
       veksDecomposeDCTToMLT_G722_16s(pSrcSpchDecomposed.m_16s, pSrcDstSpchDecomposedOld.m_16s, pDstSpch.m_16s))
