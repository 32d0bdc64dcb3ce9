// The second half of the inverse modulated lapped transform: unfolding, window and overlap.
#include "vkc.h"

namespace {

vkVector pSrcSpchDecomposed, pSrcDstSpchDecomposedOld, pDstSpch;
krStepIterator<int> len;

class TimDCTToMLT : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcFrames(vkcRebuild(len, "Lenght"), m_func);
        initVectors({&pSrcSpchDecomposed, &pSrcDstSpchDecomposedOld, &pDstSpch}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        return pSrcSpchDecomposed.createVector(vkcFrame(len), setRand, -1024, 1024) &&
               pSrcDstSpchDecomposedOld.createVector(vkcFrame(len), setRand, -1024, 1024) &&
               pDstSpch.createVector(vkcFrame(len), setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
};

} // namespace

VK_REG(TimDCTToMLT, veksDecomposeDCTToMLT_G7221_16s,
       veksDecomposeDCTToMLT_G7221_16s(pSrcSpchDecomposed.m_16s, pSrcDstSpchDecomposedOld.m_16s, pDstSpch.m_16s,
                                       len.value()))
VK_REG(TimDCTToMLT, veksDecomposeDCTToMLT_G722_16s,
       veksDecomposeDCTToMLT_G722_16s(pSrcSpchDecomposed.m_16s, pSrcDstSpchDecomposedOld.m_16s, pDstSpch.m_16s))
