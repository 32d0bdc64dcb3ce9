// The first half of the modulated lapped transform: window and fold.
#include "vkc.h"

namespace {

vkVector pSrcSpch, pSrcDstSpchOld, pDstSpchDecomposed;
krStepIterator<int> len;

class TimMLTToDCT : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcFrames(vkcRebuild(len, "Lenght"), m_func);
        initVectors({&pSrcSpch, &pSrcDstSpchOld, &pDstSpchDecomposed}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        return pSrcSpch.createVector(vkcFrame(len), setRand, -1024, 1024) &&
               pSrcDstSpchOld.createVector(vkcFrame(len), setRand, -1024, 1024) &&
               pDstSpchDecomposed.createVector(vkcFrame(len), setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
};

} // namespace

VK_REG(TimMLTToDCT, veksDecomposeMLTToDCT_G7221_16s,
       veksDecomposeMLTToDCT_G7221_16s(pSrcSpch.m_16s, pSrcDstSpchOld.m_16s, pDstSpchDecomposed.m_16s, len.value()))
VK_REG(TimMLTToDCT, veksDecomposeMLTToDCT_G722_16s,
       veksDecomposeMLTToDCT_G722_16s(pSrcSpch.m_16s, pSrcDstSpchOld.m_16s, pDstSpchDecomposed.m_16s))
