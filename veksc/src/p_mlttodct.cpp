// The first half of the modulated lapped transform: window and fold.
#include "vkc.h"

#include <algorithm>

namespace {

vkVector pSrcSpch;
vkVector pSrcDstSpchOld;
vkVector pDstSpchDecomposed;
krStepIterator<int> len;

// The length of the functions that do not take one.
constexpr int frame = 320;

class TimMLTToDCT : public prTest {
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

bool TimMLTToDCT::canStart() {
    vkcRebuild(len, "Lenght");
    if (m_func.contains("G7221")) {
        len.set(320, 640, 320, '+');
    } else {
        len.setList({frame});
    }
    m_parms.append(&len);
    for (vkVector* vector : {&pSrcSpch, &pSrcDstSpchOld, &pDstSpchDecomposed}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimMLTToDCT::makeData() {
    return pSrcSpch.createVector(std::max(len.value(), frame), setRand, -1024, 1024) &&
           pSrcDstSpchOld.createVector(std::max(len.value(), frame), setRand, -1024, 1024) &&
           pDstSpchDecomposed.createVector(std::max(len.value(), frame), setZero, 0, 0);
}

void TimMLTToDCT::flushData() {
    for (vkVector* vector : {&pDstSpchDecomposed, &pSrcDstSpchOld, &pSrcSpch}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimMLTToDCT, veksDecomposeMLTToDCT_G7221_16s,
       veksDecomposeMLTToDCT_G7221_16s(pSrcSpch.m_16s, pSrcDstSpchOld.m_16s, pDstSpchDecomposed.m_16s, len.value()))
VK_REG(TimMLTToDCT, veksDecomposeMLTToDCT_G722_16s,
       veksDecomposeMLTToDCT_G722_16s(pSrcSpch.m_16s, pSrcDstSpchOld.m_16s, pDstSpchDecomposed.m_16s))
